'use strict';

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { evaluate, eventually, runScript, startScript, temporaryDirectory } = require('./support/child');
const { serve } = require('./support/requests');
const { useSession } = require('./support/session');
const { feed, item, makeAppImage, makeBundle, makeKeys, vocabulary } = require('./support/updates');

const session = useSession();
const keys = makeKeys();
const signed = keys.sign(Buffer.from('anything'));
const somewhere = 'https://example.org/file';

// ---- The choice

const inProbe = (t, expression) =>
  evaluate(t, `const { updates } = probe(); console.log(JSON.stringify(${expression}));`);

test('versions are compared by their numbers and words', async (t) => {
  const ascending = [
    ['1.0', '1.1'],
    ['1.9', '1.10'],
    ['0.0.1', '0.1'],
    ['1.0', '1.0.0'],
    ['1.0', '1.0.1'],
    ['1.0b', '1.0b2'],
    ['1.0b9', '1.0b10'],
    ['1.0a1', '1.0b1'],
    ['1.0b1', '1.0'],
    ['1.0-rc.2', '1.0'],
    ['1.0 beta', '1.0.1'],
    ['0.9', '1.0a1'],
    ['1.0b1 (1234)', '1.0 (1234)'],
    ['1.0 (1234)', '1.0 (1235)'],
    ['201210251627', '201211051041'],
    ['99999999999999999999999998', '99999999999999999999999999'],
    ['999', '1'.repeat(5000)],
    ['', '0'],
    ['beta', ''],
  ];
  const equal = [
    ['1.0', '1.0'],
    ['1.0', '01.00'],
    ['1-0', ' 1..0.'],
    ['', '.-'],
  ];
  const cases = [...ascending, ...ascending.map(([older, newer]) => [newer, older]), ...equal];
  const answers = await inProbe(t, `${JSON.stringify(cases)}.map((pair) => updates.compareVersions(...pair))`);
  const expected = [...ascending.map(() => -1), ...ascending.map(() => 1), ...equal.map(() => 0)];
  cases.forEach((pair, i) => assert.strictEqual(answers[i], expected[i], JSON.stringify(pair)));
});

test('addresses are trusted over TLS and on this machine', async (t) => {
  const trusted = [
    'https://a',
    'HTTPS://a.example/b?c',
    'http://127.0.0.1',
    'http://localhost:80/x',
    'Http://[::1]:1/',
  ];
  const others = [
    ...['', 'https://', 'http://a.example/', 'ftp://127.0.0.1/', 'file:///etc/passwd', '//127.0.0.1', ' https://a'],
    ...[
      'http://127.0.0.1.example.org/',
      'http://localhost@a.example/',
      'http://localhost:1@a.example',
      'http://[::1].a',
    ],
  ];
  const all = [...trusted, ...others];
  const answers = await inProbe(t, `${JSON.stringify(all)}.map(updates.isTrustworthyAddress)`);
  all.forEach((url, i) => assert.strictEqual(answers[i], i < trusted.length, url));
});

/** The decision on each feed, in an application of version 2.0 on a system of version 12, in channel "test"; 3.7 is skipped. */
const decideAll = async (t, feeds) => {
  const directory = temporaryDirectory(t);
  feeds.forEach((text, i) => fs.writeFileSync(path.join(directory, String(i)), text));
  const answers = await evaluate(
    t,
    `const { updates: { decide } } = probe();
     const read = (i) => require('fs').readFileSync(${JSON.stringify(directory)} + '/' + i);
     console.log(JSON.stringify(Array.from({ length: ${feeds.length} }, (_, i) => decide(read(i), '2.0', '12', 'test'))));`,
  );
  return answers.map((text) => (text.startsWith('{') ? JSON.parse(text) : text));
};

test('an item is an update if it is newer, suits the system and the channel, and has a signed file', async (t) => {
  const good = { version: '3', url: somewhere, signature: signed };
  const needs = (name, value) => ({ ...good, inside: `<sparkle:${name}>${value}</sparkle:${name}>` });
  const table = [
    ['suitable', good],
    ['suitable', { ...good, version: undefined, inside: '<sparkle:version> 3 </sparkle:version>' }],
    ['suitable', { ...good, os: 'linux' }],
    ['suitable', { ...good, url: 'http://localhost/file' }],
    ['suitable', needs('minimumSystemVersion', '12')],
    ['suitable', needs('minimumSystemVersion', '')],
    ['suitable', needs('maximumSystemVersion', '12')],
    ['suitable', needs('channel', 'test')],
    ['suitable', needs('channel', 'stable')],
    ['no version', { ...good, version: undefined }],
    ['no version', { ...good, version: ' ' }],
    ['not newer', { ...good, version: '2.0' }],
    ['not newer', { ...good, version: '2.0b1' }],
    ['not newer', { ...good, version: '1.9.9' }],
    ['skipped', { ...good, version: '3.7' }],
    ['other system', { ...good, os: 'windows' }],
    ['system too old', needs('minimumSystemVersion', '12.1')],
    ['system too new', needs('maximumSystemVersion', '11.9')],
    ['other channel', needs('channel', 'nightly')],
    ['no file', { ...good, url: undefined }],
    ['no file', { ...good, url: 'http://example.org/file' }],
    ['no file', { ...good, url: 'file:///bin/sh' }],
    ['not signed', { ...good, signature: undefined }],
    ['not signed', { ...good, signature: '' }],
    ['not signed', { ...good, signature: signed.slice(0, -4) }],
    ['not signed', { ...good, signature: `${signed}AAAA` }],
    ['not signed', { ...good, signature: 'ä'.repeat(88) }],
  ];
  const [together] = await decideAll(t, [feed(...table.map(([, properties]) => item(properties)))]);
  assert.deepStrictEqual(
    together.judgements,
    table.map(([judgement]) => judgement),
  );
});

test('the newest suitable item is the update, wherever it stands; of several the first', async (t) => {
  const version = (number, more) => item({ version: number, url: somewhere, signature: signed, ...more });
  const otherPrefix = feed(version('3')).replaceAll('sparkle:', 'x:').replace('xmlns:sparkle', 'xmlns:x');
  const table = [
    [feed(version('2.1'), version('3', { length: 12 }), version('2.9')), { update: '3', url: somewhere, length: 12 }],
    [feed(version('3', { url: `${somewhere}?1` }), version('3.')), { update: '3', url: `${somewhere}?1` }],
    [feed(version('4', { os: 'windows' }), version('3')), { update: '3', url: somewhere }],
    [feed(version('3', { length: -1 })), { update: '3', url: somewhere }],
    [feed(version('3', { length: 0 })), { update: '3', url: somewhere }],
    [
      feed(
        version('3', {
          url: `${somewhere}.dmg`,
          os: 'macos',
          inside: '<enclosure url="https://a" sparkle:os="windows"/>',
        }).replace(
          '</item>',
          `<enclosure url="${somewhere}" sparkle:os="linux" sparkle:version="3" sparkle:edSignature="${signed}"/></item>`,
        ),
      ),
      { update: '3', url: somewhere },
    ],
    [feed(version('1')), {}],
    [feed(), {}],
    [otherPrefix, { update: '3', url: somewhere }],
    [feed(version('3')).replace(`xmlns:sparkle="${vocabulary}"`, ''), { update: '3', url: somewhere }],
    [Buffer.from(`\ufeff${feed(version('3'))}`, 'utf16le'), { update: '3', url: somewhere }],
  ];
  const answers = await decideAll(
    t,
    table.map(([text]) => text),
  );
  const chosen = answers.map(({ judgements: _, versions: __, ...update }) => update);
  assert.deepStrictEqual(
    chosen,
    table.map(([, expected]) => expected),
  );
});

test('malformed feeds fail with a reason, and hostile feeds are harmless', async (t) => {
  const good = item({ version: '3', url: somewhere, signature: signed });
  const entities = Array.from({ length: 30 }, (_, i) => `<!ENTITY e${i + 1} "&e${i};&e${i};">`).join('');
  const bomb = `<!DOCTYPE rss [<!ENTITY e0 "2">${entities}]>`;
  const external = '<!DOCTYPE rss [<!ENTITY file SYSTEM "file:///etc/passwd">]>';
  const deep = 500000;
  const table = [
    ['', /^no XML: No document element found/],
    ['not XML at all', /^no XML/],
    [feed(good).slice(0, -20), /^no XML/],
    ['<rss></rss>', /^no channel/],
    ['<feed><channel/></feed>', /^no channel/],
    ['<channel><item/></channel>', /^no channel/],
    [feed('<item/>'.repeat(10001)), /^more than 10000 items/],
    ['<a>'.repeat(deep), /^no XML/],
    ['<a>'.repeat(deep) + '</a>'.repeat(deep), /^no channel/],
  ];
  const harmless = [
    [`${bomb}${feed(item({ version: '&e30;', url: somewhere, signature: signed }))}`.replace(/<\?.*?\?>/, ''), '&e30;'],
    [
      `${external}${feed(item({ version: '&file;', url: somewhere, signature: signed }))}`.replace(/<\?.*?\?>/, ''),
      '&file;',
    ],
    [feed(`<item>${'<a>'.repeat(deep)}${'</a>'.repeat(deep)}</item>`, good), ''],
    [feed(`<item>${Array.from({ length: 100000 }, (_, i) => `<a${i}/>`).join('')}</item>`, good), ''],
    [feed(`<item><enclosure ${Array.from({ length: 100000 }, (_, i) => `a${i}=""`).join(' ')}/></item>`, good), ''],
    [feed('<item/>', '<item><item/></item>', '<item><enclosure/></item>', good), ''],
  ];
  const answers = await decideAll(
    t,
    [...table, ...harmless].map(([text]) => text),
  );
  table.forEach(([text, reason], i) => assert.match(answers[i], reason, text.slice(0, 50)));
  harmless.forEach(([text, version], i) => {
    const { versions, update } = answers[table.length + i];
    assert.deepStrictEqual([versions[0], update], [version, versions[0] === '' ? '3' : undefined], text.slice(0, 50));
  });
});

test('a corrupted feed never offers an older or unsigned update', async (t) => {
  const seed = Math.floor(Math.random() * 2 ** 32);
  t.diagnostic(`seed ${seed}`);
  const original = feed(
    item({
      version: '3',
      url: somewhere,
      signature: signed,
      inside: '<description><![CDATA[<b>New</b>]]></description>',
    }),
    item({ version: '1.9', url: 'http://example.org', signature: signed, os: 'linux' }),
    item({ version: '2.5', url: somewhere, inside: '<sparkle:minimumSystemVersion>12</sparkle:minimumSystemVersion>' }),
  );
  const updates = await inProbe(t, `updates.fuzz(Buffer.from(${JSON.stringify(original)}), 30000, ${seed})`);
  assert.ok(updates > 1000 && updates < 29000, `${updates} of 30000`);
});

// ---- Applications

const prelude = (bundle) => `
  const host = require('./host');
  host.start({ bundlePath: ${JSON.stringify(bundle)} });
  host.setKeepAlive(true);
  const { module: m, updates, captureLog, flushLog, capturedLog } = probe();
  const { eventually } = require('./tests/support/child');
  captureLog();
  const posted = [];
  host.on('notification', ({ name, object, userInfo }) => posted.push([name, object, userInfo]));
  const print = (value) => console.log(JSON.stringify(value));
  // The log since the last call.
  let told = 0;
  const news = () => { flushLog(); const all = capturedLog().map(({ text }) => text); const since = all.slice(told); told = all.length; return since; };
  const upTo = async (pattern) => {
    const lines = [];
    await eventually(() => { lines.push(...news()); return lines.some((line) => pattern.test(line)); }, String(pattern))
      .catch((error) => { throw new Error(error.message + ': ' + JSON.stringify(lines)); });
    return lines;
  };
  const appcasts = () => posted.filter(([name]) => name === 'TsReceivedAppcastNotification').length;
  const run = async (body) => { try { await body(); process.exit(); } catch (error) { console.error(error); process.exit(1); } };
`;

/** Makes an application, version 2.0 by default, and gives what `body`, script in a process of it, prints. */
async function inApplication(t, information, body, options) {
  const bundle = makeBundle(temporaryDirectory(t), { version: '2.0', publicKey: keys.publicKey, ...information });
  return evaluate(t, `${prelude(bundle)}\nrun(async () => {\n${body}\n});`, options);
}

/** Serves a feed that is empty, and notes the questions for it. */
async function serveEmptyFeed(t) {
  const questions = [];
  const url = await serve(t, (question, answer) => {
    questions.push(question.url);
    answer.end(feed());
  });
  return { url, questions };
}

const parametersOf = (question) => [...new URL(question, 'http://a').searchParams];

test('the build number and the release are those of the bundle', async (t) => {
  const ask = 'print([m.getBuildNumber(), m.getReleaseString(), m.getReleaseString(), ...news()]);';
  const missing = "Couldn't get build number";
  assert.deepStrictEqual(await inApplication(t, { version: '412', shortVersion: '3.1' }, ask), [
    '412',
    '3.1 (412)',
    '3.1 (412)',
  ]);
  const nothing = await inApplication(t, { version: undefined }, ask);
  assert.deepStrictEqual(nothing, [null, '(null) ((null))', '(null) ((null))', missing]);
});

test("each feed request has the script's parameters, then the four built-in ones", async (t) => {
  const { url, questions } = await serveEmptyFeed(t);
  const builtIn = [
    ['osVersion', '12'],
    ['appVersion', '2.0'],
    ['shortVersionString', '2.0.1 Ä'],
    ['selectedLanguage', 'en'],
  ];
  const entry = (key, value) => ({ key, value, displayKey: 'Shown', displayValue: value });
  const noText = "Couldn't get parameters from callback because result wasn't a string";
  const noArray = /^Couldn't get parameters from callback because of /;
  const table = [
    [
      `() => ${JSON.stringify(JSON.stringify([entry('a b', 'c&d=ü'), entry('e', '')]))}`,
      [
        ['a b', 'c&d=ü'],
        ['e', ''],
      ],
    ],
    [`() => '[]'`, []],
    [`() => 7`, [], noText],
    [`() => ['[]']`, [], noText],
    [`() => undefined`, [], noText],
    [`() => '[{'`, [], noArray],
    [`() => '{"key": "a"}'`, [], noArray],
    [`() => ''`, [], noArray],
    [`() => '[1, null, "a", [], {"value": "b"}, {"key": 1}, {"key": "c", "value": 2}]'`, [['c', '']]],
  ];
  const logs = await inApplication(
    t,
    { feed: `${url}/feed?fixed=1#part`, shortVersion: '2.0.1 Ä' },
    `m.fetchAppcast();
     await eventually(() => appcasts() === 1, 'the first feed');
     const logs = [];
     news();
     for (const callback of [${table.map(([callback]) => callback).join(', ')}]) {
       const before = appcasts();
       m.setAppcastParameterCallback(callback);
       m.fetchAppcast();
       await eventually(() => appcasts() > before, 'the feed');
       logs.push(news());
     }
     print(logs);`,
  );
  assert.deepStrictEqual(parametersOf(questions[0]), [['fixed', '1'], ...builtIn]);
  table.forEach(([callback, expected, warning], i) => {
    assert.deepStrictEqual(parametersOf(questions[i + 1]), [['fixed', '1'], ...expected, ...builtIn], callback);
    const [check, ...warnings] = logs[i];
    assert.strictEqual(check, 'Check for updates. (buildType=stable, sendingProfile=NO)');
    assert.strictEqual(warnings.length, warning === undefined ? 0 : 1, callback);
    if (warning instanceof RegExp) assert.match(warnings[0], warning);
    else assert.strictEqual(warnings[0], warning);
  });
});

test('an exception of the parameter callback reaches the caller, and the request goes on', async (t) => {
  const { url, questions } = await serveEmptyFeed(t);
  const result = await inApplication(
    t,
    { feed: url },
    `m.setAppcastParameterCallback(() => { throw new Error('no parameters'); });
     let thrown;
     try { m.checkForUpdates(false, false); } catch (error) { thrown = error.message; }
     await eventually(() => appcasts() === 1, 'the feed');
     print([thrown, updates.promptsForPermission()]);`,
  );
  assert.deepStrictEqual(result, ['no parameters', false]);
  assert.strictEqual(parametersOf(questions[0]).length, 4);
});

test('the language is "None" when the user has none', async (t) => {
  const { url, questions } = await serveEmptyFeed(t);
  await inApplication(
    t,
    { feed: url },
    `updates.forgetLanguages();
     m.fetchAppcast();
     await eventually(() => appcasts() === 1, 'the feed');
     print(null);`,
  );
  assert.deepStrictEqual(parametersOf(questions[0]).at(-1), ['selectedLanguage', 'None']);
});

test('the system profile is announced once a week, if the user wants it', async (t) => {
  const { url } = await serveEmptyFeed(t);
  const result = await inApplication(
    t,
    { feed: url },
    `const asked = [];
     m.setAppcastParameterCallback((sending) => { asked.push(sending); return '[]'; });
     const check = async () => { const before = appcasts(); m.fetchAppcast(); await eventually(() => appcasts() > before, 'the feed'); };
     const key = 'SULastProfileSubmissionDate';
     const now = Date.now() / 1000;
     await check();
     m.setUserDefault('SUSendProfileInfo', true);
     await check();
     const sent = updates.dateDefault(key) - now;
     await check();
     updates.setDateDefault(key, now - 8 * 86400);
     await check();
     updates.resetLastProfileSubmissionDate();
     const forgotten = updates.dateDefault(key);
     await check();
     print([asked, sent > -5 && sent < 60, forgotten]);`,
  );
  assert.deepStrictEqual(result, [[false, true, false, true, true], true, null]);
});

test('an item of the feed has its children, whole texts, and the language and file of the user', async (t) => {
  const inside = `
    <description xml:lang="fr">Nouveau</description><description>New</description>
    <description xml:lang="en-GB">News <![CDATA[a]]]]><![CDATA[> b]]></description><description xml:lang="de">Neu</description>
    <sparkle:tags><sparkle:criticalUpdate/><sparkle:level at="2">high</sparkle:level></sparkle:tags>
    <sparkle:deltas><enclosure url="1"/><enclosure url="2"/></sparkle:deltas>`;
  const one = `<item><enclosure url="m" sparkle:os="macos"/><enclosure url="l" sparkle:os="linux"/>${inside}</item>`;
  const url = await serve(t, (_question, answer) => answer.end(feed(one)));
  const items = await inApplication(
    t,
    { feed: url },
    `m.fetchAppcast();
     await eventually(() => appcasts() === 1, 'the feed');
     print(posted.find(([name]) => name === 'TsReceivedAppcastNotification')[2].appcast);`,
  );
  assert.deepStrictEqual(items, [
    {
      enclosure: { url: 'l', 'sparkle:os': 'linux' },
      description: 'News a]]> b',
      'sparkle:tags': { 'sparkle:criticalUpdate': '', 'sparkle:level': 'high' },
      'sparkle:deltas': { enclosure: [{ url: '1' }, { url: '2' }] },
    },
  ]);
});

test('control characters of a feed are escaped in the log', async (t) => {
  const version = '3&#10;2026/01/01 [error] forged&#27;[2J';
  const found = feed(item({ version, url: somewhere, signature: signed }));
  const url = await serve(t, (_question, answer) => answer.end(found));
  const lines = await inApplication(t, { feed: url }, 'm.fetchAppcast(); print(await upTo(/Did find/));');
  assert.strictEqual(lines.at(-1), 'Did find update 3\\n2026/01/01 [error] forged\\x1b[2J.');
});

test('a feed that cannot be fetched or read is logged, and does not affect the next check', async (t) => {
  const good = feed(item({ version: '3', url: somewhere, signature: signed }));
  const answers = [
    [/can't be fetched: the server answers 404/, (answer) => answer.writeHead(404).end(good)],
    [
      /can't be fetched: .*Code=-1005/,
      (answer) => answer.writeHead(200, { 'content-length': 9999 }).write('<rss>', () => answer.destroy()),
    ],
    [/can't be fetched: it is longer than 4194304 bytes/, (answer) => answer.end(' '.repeat(5 * 1024 * 1024))],
    [
      /can't be fetched: it is redirected to http:\/\/example.org\/feed, which is not secure/,
      (answer) => answer.writeHead(302, { location: 'http://example.org/feed' }).end(),
    ],
    [
      /can't be fetched: it is redirected to file:/,
      (answer) => answer.writeHead(302, { location: 'file:///etc/passwd' }).end(),
    ],
    [
      /can't be fetched: too many redirects/,
      (answer, question) => answer.writeHead(302, { location: `${question.url}&again` }).end(),
    ],
    [/can't be fetched: the server answers 302/, (answer) => answer.writeHead(302).end(good)],
    [/can't be read: no XML/, (answer) => answer.end('<html>')],
    [
      /^Did find update 3\.$/,
      (answer, question) =>
        question.url === '/moved' ? answer.end(good) : answer.writeHead(302, { location: '/moved' }).end('not this'),
    ],
  ];
  let step = -1;
  const url = await serve(t, (question, answer) => {
    if (question.url.startsWith('/feed?os') && !question.url.endsWith('&again')) ++step;
    answers[step][1](answer, question);
  });
  const patterns = answers.map(([pattern]) => pattern);
  await inApplication(
    t,
    { feed: `${url}/feed` },
    `for (const pattern of [${patterns.join(', ')}]) { m.fetchAppcast(); await upTo(pattern); }
     print(null);`,
  );
  const [missing, insecure] = await Promise.all(
    [undefined, 'http://example.org/feed'].map((address) =>
      inApplication(t, { feed: address }, 'm.fetchAppcast(); print((await upTo(/not secure/)).at(-1));'),
    ),
  );
  assert.strictEqual(missing, "The feed's address is missing or not secure: ");
  assert.match(insecure, /not secure: http:\/\/example\.org\/feed$/);
});

// ---- Installations

/** An application in an AppImage, version 2.0 of it, whose feed has what `items` makes of the server's address. */
async function makeImage(t, answerFile) {
  const directory = temporaryDirectory(t);
  const image = path.join(directory, 'Tessaro.AppImage');
  fs.writeFileSync(image, makeAppImage('2.0'), { mode: 0o750 });
  const state = { items: () => [], image, env: { APPDIR: directory, APPIMAGE: image } };
  const url = await serve(t, (question, answer) => {
    if (question.url.startsWith('/feed')) return answer.end(feed(...state.items(url)));
    return answerFile(question, answer);
  });
  state.information = { feed: `${url}/feed`, publicKey: keys.publicKey };
  state.bundle = (version, more) => makeBundle(directory, { version, ...state.information, ...more });
  return state;
}

test('only a signed AppImage of the version that the feed lists is installed', async (t) => {
  const file = makeAppImage('3', 'x'.repeat(450000));
  const forged = Buffer.from(file.toString('latin1').replace('xxx', 'yyy'), 'latin1');
  const signature = keys.sign(file);
  const notSigned = /^Update 3 is not installed: its file doesn't match the feed's signature$/;
  const table = [
    ['/forged', { signature }, notSigned],
    ['/file', { signature: makeKeys().sign(file) }, notSigned],
    ['/short', { signature }, notSigned],
    ['/empty', { signature }, notSigned],
    ['/broken', { signature, length: file.length }, /not installed: .*Code=-1005/],
    ['/long', { signature, length: file.length }, new RegExp(`not installed: it is longer than ${file.length} bytes`)],
    ['/missing', { signature }, /not installed: the server answers 404/],
    ['/away', { signature }, /not installed: it is redirected to http:\/\/example.org\/file, which is not secure/],
    ['/text', {}, /not installed: its file is no AppImage$/],
    ['/other', {}, /not installed: its file is for another processor$/],
    ['/old', {}, /not installed: its file is version 1\.9$/],
    ['/unnamed', {}, /not installed: its file names no version$/],
    ['/file', { signature: undefined }, null],
    ['/moved', { signature, length: 0 }, /^Will install update 3\.$/],
  ];
  const contents = {
    '/file': file,
    '/forged': forged,
    '/short': file.subarray(1),
    '/empty': '',
    '/long': Buffer.concat([file, file]),
    '/text': 'Tessaro 3',
    '/other': makeAppImage('3', '', { machine: 8 }),
    '/old': makeAppImage('1.9'),
    '/unnamed': makeAppImage(undefined),
  };
  const answers = {
    '/broken': (answer) =>
      answer.writeHead(200, { 'content-length': file.length }).write(file.subarray(9), () => answer.destroy()),
    '/missing': (answer) => answer.writeHead(404).end(file),
    '/away': (answer) => answer.writeHead(301, { location: 'http://example.org/file' }).end(),
    '/moved': (answer) => answer.writeHead(301, { location: '/file' }).end('x'.repeat(file.length)),
  };
  const application = await makeImage(t, (question, answer) => {
    const answerSpecially = answers[question.url];
    return answerSpecially ? answerSpecially(answer) : answer.end(contents[question.url]);
  });
  let step = -1;
  application.items = (url) => {
    const [address, more] = table[Math.min(++step, table.length - 1)];
    return [
      item({ version: '3', url: url + address, signature: keys.sign(Buffer.from(contents[address] ?? '')), ...more }),
    ];
  };
  const bundle = application.bundle('2.0');
  const installed = await evaluate(
    t,
    `${prelude(bundle)}
     const size = () => require('fs').statSync(process.env.APPIMAGE).size;
     run(async () => {
       m.setUserDefault('SUAutomaticallyUpdate', true);
       const before = size();
       const sizes = [];
       for (const pattern of [${table.map(([, , pattern]) => pattern).join(', ')}]) {
         const earlier = appcasts();
         m.checkForUpdates(true, true);
         if (pattern) await upTo(pattern); else await eventually(() => appcasts() > earlier, 'the feed');
         sizes.push(size() === before);
       }
       await eventually(() => size() === ${file.length}, 'the new version');
       // Until the file is in its place, another check is left out.
       await eventually(() => { m.checkForUpdates(true, true); return news().some((line) => /is installed already/.test(line)); }, 'no second installation');
       print(sizes.slice(0, -1).every((same) => same));
     });`,
    { env: application.env },
  );
  assert.strictEqual(installed, true);
  assert.deepStrictEqual(fs.readFileSync(application.image), file);
  assert.strictEqual(fs.statSync(application.image).mode & 0o777, 0o750);
  const left = fs.readdirSync(path.dirname(application.image));
  assert.deepStrictEqual(left.sort(), ['Tessaro.AppImage', 'TessaroHost.app']);
});

test('the first launch of an installed version is reported once', async (t) => {
  const file = makeAppImage('3');
  const application = await makeImage(t, (_question, answer) => answer.end(file));
  application.items = (url) => [item({ version: '3', url: `${url}/file`, signature: keys.sign(file) })];
  const home = temporaryDirectory(t);
  const inVersion = (version, body) =>
    evaluate(t, `${prelude(application.bundle(version))} run(async () => { ${body} });`, {
      env: application.env,
      home,
    });
  const tell = `m.setAppcastParameterCallback(() => '[]');
    for (let i = 0; i < 20; ++i) await new Promise(setImmediate);
    print(posted.filter(([name]) => name.includes('Relaunch')).map(([name]) => name));`;
  await inVersion(
    '2.0',
    `m.setUserDefault('SUAutomaticallyUpdate', true);
     m.checkForUpdates(true, false);
     await eventually(() => require('fs').readFileSync(process.env.APPIMAGE).at(-1) === 0x33, 'the installation');
     print(null);`,
  );
  assert.deepStrictEqual(await inVersion('2.0', tell), []);
  assert.deepStrictEqual(await inVersion('3', tell), ['TsApplicationDidRelaunchAfterUpdateNotification']);
  assert.deepStrictEqual(await inVersion('3', tell), []);
});

test('nothing is installed without a key, an AppImage, or the consent of the user', async (t) => {
  const file = makeAppImage('3');
  const questions = [];
  const application = await makeImage(t, (question, answer) => {
    questions.push(question.url);
    answer.end(file);
  });
  application.items = (url) => [item({ version: '3', url: `${url}/file`, signature: keys.sign(file) })];
  const checkAs = async (more, env, call, pattern) => {
    const bundle = application.bundle('2.0', more);
    return evaluate(t, `${prelude(bundle)} run(async () => { ${call}; print((await upTo(${pattern})).slice(1)); });`, {
      env,
    });
  };
  const user = 'm.checkForUpdates(false, false)';
  const found = 'Did find update 3.';
  const noImage = 'Update 3 is not installed: the application is not an AppImage, so its package manager updates it';
  const noDisplay = 'Update 3 is not installed: there is no display to ask the user on';
  const noKey = 'No update can be verified: the public key is missing or malformed';
  const otherImage = {
    APPIMAGE: application.image,
    APPDIR: path.join(path.dirname(application.image), 'TessaroHost.app', 'Resources'),
  };
  const cases = [
    [{ publicKey: undefined }, application.env, user, '/verified/', [noKey]],
    [{ publicKey: 'AAAA' }, application.env, user, '/verified/', [noKey]],
    [{}, {}, user, '/not installed/', [found, noImage]],
    [{}, otherImage, user, '/not installed/', [found, noImage]],
    [{}, application.env, user, '/not installed/', [found, noDisplay]],
    [{}, application.env, 'm.checkForUpdates(true, false)', '/Did find/', [found]],
    [{}, application.env, 'm.fetchAppcast()', '/Did find/', [found]],
  ];
  for (const [more, env, call, pattern, expected] of cases) {
    assert.deepStrictEqual(await checkAs(more, env, call, pattern), expected, `${JSON.stringify(more)} ${call}`);
  }
  assert.deepStrictEqual(questions, []);
  await checkAs(
    {},
    application.env,
    "m.setUserDefault('SUAutomaticallyUpdate', true); m.checkForUpdates(true, false)",
    '/Will install/',
  );
  assert.deepStrictEqual(questions, ['/file']);
});

// ---- When

test('automatic checks continue in later processes when they are due', async (t) => {
  const { url, questions } = await serveEmptyFeed(t);
  const home = temporaryDirectory(t);
  const inProcess = (body) => inApplication(t, { feed: url }, body, { home });
  const quiet = (setUp) => `${setUp} m.setAppcastParameterCallback(() => '[]');
    await new Promise((resolve) => setTimeout(resolve, 300)); print(updates.dateDefault('SULastCheckTime'));`;
  const now = Math.floor(Date.now() / 1000);
  const never = await inProcess(quiet(''));
  assert.deepStrictEqual([never, questions.length], [null, 0]);
  const checked = await inProcess(
    `m.checkForUpdates(true, true); await eventually(() => appcasts() === 1, 'the feed'); print(updates.dateDefault('SULastCheckTime'));`,
  );
  assert.ok(checked >= now && checked < now + 600, `${checked} ${now}`);
  assert.strictEqual(await inProcess(quiet('')), checked);
  assert.strictEqual(questions.length, 1);

  const due = (last) => `updates.setDateDefault('SULastCheckTime', ${last}); m.setAppcastParameterCallback(() => '[]');
    await eventually(() => appcasts() === 1, 'the feed'); print(null);`;
  await inProcess(due(now - 43201));
  // Later than the moment at which the clock was set back.
  await inProcess(due(now + 1e6));
  assert.strictEqual(questions.length, 3);
  // The interval passes while the process runs.
  await inProcess(due(Math.ceil(Date.now() / 1000) - 43199));
  assert.strictEqual(questions.length, 4);

  await inProcess(`m.checkForUpdates(true, false); await eventually(() => appcasts() === 1, 'the feed'); print(null);`);
  await inProcess(quiet(`updates.setDateDefault('SULastCheckTime', ${now - 1e6});`));
  assert.strictEqual(questions.length, 5);
});

test('a check replaces one that waits for its feed, unless it does less, and the log says both', async (t) => {
  const waiting = [];
  let isAnswering = false;
  const url = await serve(t, (question, answer) => {
    waiting.push([parametersOf(question.url)[0][1], answer]);
    if (isAnswering) answer.end(feed());
  });
  const child = startScript(
    t,
    `${prelude(makeBundle(temporaryDirectory(t), { version: '2.0', feed: url, publicKey: keys.publicKey }))}
     let kind;
     m.setAppcastParameterCallback(() => JSON.stringify([{ key: 'kind', value: kind }]));
     const check = { information: () => m.fetchAppcast(), background: () => m.checkForUpdates(true, false), user: () => m.checkForUpdates(false, false) };
     for (kind of ['background', 'information', 'user', 'background', 'user']) check[kind]();
     process.stdin.once('data', () => run(async () => { await eventually(() => appcasts() > 0, 'the feed'); print([appcasts(), kind, news().filter((line) => /^A check/.test(line)).map((line) => line.split(' ')[5])]); }));`,
  );
  // Connections of checks that were given up may never have been asked for anything.
  await eventually(() => waiting.some(([kind]) => kind === 'user'), 'the request');
  isAnswering = true;
  for (const [, answer] of waiting) answer.end(feed());
  child.process.stdin.end('go');
  const { code, stderr } = await child.ended;
  const log = ['left', 'replaced', 'left', 'replaced'];
  assert.deepStrictEqual([code, child.output.stdout], [0, `${JSON.stringify([1, 'user', log])}\n`], stderr);
  const asked = waiting.map(([kind]) => kind);
  assert.ok(!asked.includes('information'), JSON.stringify(asked));
});

test('a check neither keeps the process alive nor prevents its exit', async (t) => {
  const url = await serve(t, () => {});
  const bundle = makeBundle(temporaryDirectory(t), { version: '2.0', feed: url, publicKey: keys.publicKey });
  for (const end of ['process.exit()', 'host.setKeepAlive(false)']) {
    const { code, signal, stderr } = await runScript(
      t,
      `${prelude(bundle)} m.checkForUpdates(true, true); setTimeout(() => ${end}, 50);`,
    );
    assert.deepStrictEqual([code, signal], [0, null], stderr);
  }
});

// ---- On a display

test('holding Option checks the test channel once; results activate the application unless only fetching the feed', async (t) => {
  const questions = [];
  const url = await serve(t, (question, answer) => {
    questions.push(parametersOf(question.url).filter(([key]) => key === 'buildType'));
    answer.end(
      feed(
        item({ version: '3', url: somewhere, signature: signed, inside: '<sparkle:channel>test</sparkle:channel>' }),
      ),
    );
  });
  const found = feed(item({ version: '3', url: somewhere, signature: signed }));
  const always = await serve(t, (_question, answer) => answer.end(found));
  const inFront = (body) => `
    const { spawn } = require('child_process');
    const window = host.createWindow({ title: 'Updates' });
    const isInFront = () => host.windowInfo(window).isKey;
    await eventually(isInFront, 'the window');
    ${body}`;
  const lines = await inApplication(
    t,
    { feed: url },
    inFront(
      `const { execFileSync } = require('child_process');
       // No event of these keys has been handled when the check begins.
       execFileSync('xdotool', ['keydown', 'alt']);
       news();
       m.checkForUpdates(false, false);
       const first = await upTo(/not installed/);
       execFileSync('xdotool', ['keyup', 'alt']);
       const before = appcasts();
       m.checkForUpdates(false, false);
       await eventually(() => appcasts() > before, 'the feed');
       print([...first, ...news()]);`,
    ),
    { env: session.env },
  );
  assert.deepStrictEqual(questions, [[['buildType', 'test']], []]);
  assert.deepStrictEqual(lines, [
    'Check for updates. (buildType=test, sendingProfile=NO)',
    'Did find update 3.',
    'Update 3 is not installed: the application is not an AppImage, so its package manager updates it',
    'Check for updates. (buildType=stable, sendingProfile=NO)',
  ]);

  const result = await inApplication(
    t,
    { feed: always },
    inFront(
      `const other = spawn('xev', ['-name', 'Other'], { stdio: 'ignore' });
       await eventually(() => !isInFront(), 'the other window');
       m.fetchAppcast();
       await upTo(/Did find/);
       await new Promise((resolve) => setTimeout(resolve, 300));
       const afterFeed = isInFront();
       m.checkForUpdates(true, false);
       await eventually(isInFront, 'the window in front');
       other.kill();
       print([afterFeed, appcasts()]);`,
    ),
    { env: session.env },
  );
  assert.deepStrictEqual(result, [false, 2]);
});

test('the update window offers an update, shows its installation and its failures', async (t) => {
  const file = makeAppImage('3');
  let items = () => [];
  const application = await makeImage(t, (_question, answer) => answer.end(file));
  const update = (url, more) => item({ version: '3', url: `${url}/file`, signature: keys.sign(file), ...more });
  const notes = '<description><![CDATA[<p>New &amp; <b>better</b></p>]]></description>';
  const steps = [
    () => [],
    (url) => [update(url, { inside: notes })],
    (url) => [update(url, { signature: signed })],
    update,
  ];
  let step = 0;
  application.items = (url) => [items(url)].flat();
  items = (url) => steps[Math.min(step, steps.length - 1)](url);
  const control = await serve(t, (question, answer) => {
    step = Number(question.url.slice(1));
    answer.end();
  });
  const result = await evaluate(
    t,
    `${prelude(application.bundle('2.0', { shortVersion: '2.0' }))}
     const { dialogs } = probe();
     const title = 'Software Update';
     const views = () => JSON.parse(dialogs.windows()).find((window) => window.title === title)?.views ?? [];
     const texts = () => views().map(({ text }) => text).filter((text) => text !== undefined);
     const showing = (text) => eventually(() => texts().some((each) => each.includes(text)), text)
       .catch((error) => { throw new Error(error.message + ': ' + JSON.stringify([texts(), news()])); });
     const press = (button) => eventually(() => dialogs.pressButton(title, button), button);
     const check = async (step) => { await fetch('${control}/' + step); m.checkForUpdates(false, false); };
     const version = () => String.fromCharCode(require('fs').readFileSync(process.env.APPIMAGE).at(-1));
     run(async () => {
       const result = [];
       await check(0);
       await showing('You have the newest version.');
       await press('OK');
       await eventually(() => views().length === 0, 'closed');

       await check(1);
       await showing('Version 3 is available. You have version 2.0.');
       result.push(texts());
       await press('Later');
       await check(1);
       await showing('Version 3 is available');
       await press('Skip This Version');
       await eventually(() => views().length === 0, 'closed');
       news();
       m.checkForUpdates(true, false);
       const before = appcasts();
       await eventually(() => appcasts() > before, 'the feed');
       result.push(news().some((line) => /Did find/.test(line)), views().length, version());

       await check(2);
       await showing('Version 3 is available');
       await press('Install');
       await showing("its file doesn't match the feed's signature");
       result.push(version());

       await check(3);
       await showing('Version 3 is available');
       await press('Install');
       await showing('Version 3 is installed.');
       result.push(version());
       print(result);
     });`,
    { env: { ...session.env, ...application.env } },
  );
  const shown = ['Version 3 is available. You have version 2.0.', 'New & better'];
  assert.deepStrictEqual(result, [shown, false, 0, '0', '0', '3']);
});

test('fetching the feed beside another check does not make that check a dry run', async (t) => {
  const waiting = [];
  const url = await serve(t, (_question, answer) => waiting.push(answer));
  const child = startScript(
    t,
    `${prelude(makeBundle(temporaryDirectory(t), { version: '2.0', feed: url, publicKey: keys.publicKey }))}
     m.checkForUpdates(true, false);
     m.fetchAppcast();
     print(updates.isDryRun());
     m.checkForUpdates(true, false);
     print(updates.isDryRun());
     process.exit();`,
  );
  const { code, stderr } = await child.ended;
  assert.deepStrictEqual([code, child.output.stdout], [0, 'false\nfalse\n'], stderr);
});
