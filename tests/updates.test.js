'use strict';

const { assert, fs, path, test } = require('./support');
const { eventually, feed, item, makeAppImage, makeBundle, makeKeys, scenarios, serve } = require('./support');
const { temporaryDirectory, vocabulary } = require('./support');

const keys = makeKeys();
const signed = keys.sign(Buffer.from('anything'));
const somewhere = 'https://example.org/file';

const plain = scenarios();

test('versions are compared by their numbers and words', (t) => {
  const pairs =
    '1.0 < 1.1; 1.9 < 1.10; 0.0.1 < 0.1; 1.0 < 1.0.0; 1.0b < 1.0b2; 1.0b9 < 1.0b10; 1.0a1 < 1.0b1; 1.0b1 < 1.0; ' +
    '1.0-rc.2 < 1.0; 1.0 beta < 1.0.1; 0.9 < 1.0a1; 1.0b1 (1234) < 1.0 (1234); 1.0 (1234) < 1.0 (1235);  < 0; beta < ; ' +
    `99999999999999999999999998 < 99999999999999999999999999; 999 < ${'1'.repeat(5000)}`;
  const ascending = pairs.split('; ').map((pair) => pair.split(' < '));
  const equal = ['1.0,1.0', '1.0,01.00', '1-0, 1..0.', ',.-'].map((pair) => [...pair.split(','), 0]);
  const rows = [...ascending.map((pair) => [...pair, -1]), ...ascending.map(([a, b]) => [b, a, 1]), ...equal];
  return plain.table(t, rows, ({ updates }, one, other) => updates.compareVersions(one, other));
});

test('addresses are trusted over TLS and on this machine', (t) => {
  const trusted = 'https://a HTTPS://a.example/b?c http://127.0.0.1 http://localhost:80/x Http://[::1]:1/';
  const others =
    'https:// https://?a https:///b http://a.example/ ftp://127.0.0.1/ file:///etc/passwd //127.0.0.1 http://127.0.0.1.example.org/ ' +
    'http://localhost@a.example/ http://localhost:1@a.example http://[::1].a';
  const rows = [
    ...trusted.split(' ').map((url) => [url, true]),
    ...['', ' https://a', ...others.split(' ')].map((url) => [url, false]),
  ];
  return plain.table(t, rows, ({ updates }, url) => updates.isTrustworthyAddress(url));
});

// Decisions are those of an application of version 2.0 on a system of version 12, in channel "test"; 3.7 is skipped.
const deciding = scenarios({
  fixture: ({ updates }) => ({ decide: (feed) => updates.decide(Buffer.from(feed), '2.0', '12', 'test') }),
});

test('an item is an update if it is newer, suits the system and the channel, and has a signed file', async (t) => {
  const good = { version: '3', url: somewhere, signature: signed };
  const needs = (name, value) => ({ ...good, inside: `<sparkle:${name}>${value}</sparkle:${name}>` });
  const judgements = [
    ...['no version', 'not newer', 'skipped', 'other system', 'system too old', 'system too new'],
    ...['other channel', 'no file', 'not signed', 'suitable'],
  ];
  const table = [
    ['suitable', good],
    ['suitable', { ...good, version: undefined, inside: '<sparkle:version> 3 </sparkle:version>' }],
    ['suitable', { ...good, os: 'linux' }],
    ['suitable', { ...good, url: 'http://localhost/file' }],
    ['suitable', needs('minimumSystemVersion', '12'), needs('minimumSystemVersion', '')],
    ['suitable', needs('maximumSystemVersion', '12'), needs('channel', 'test'), needs('channel', 'stable')],
    ['no version', { ...good, version: undefined }, { ...good, version: ' ' }],
    ['not newer', ...['2.0', '2.0b1', '1.9.9'].map((version) => ({ ...good, version }))],
    ['skipped', { ...good, version: '3.7' }],
    ['other system', { ...good, os: 'windows' }],
    ['system too old', needs('minimumSystemVersion', '12.1')],
    ['system too new', needs('maximumSystemVersion', '11.9')],
    ['other channel', needs('channel', 'nightly')],
    ['no file', ...[undefined, 'http://example.org/file', 'file:///bin/sh'].map((url) => ({ ...good, url }))],
    ['not signed', { ...good, signature: undefined }, { ...good, signature: '' }],
    ['not signed', { ...good, signature: signed.slice(0, -4) }, { ...good, signature: `${signed}AAAA` }],
    ['not signed', { ...good, signature: 'ä'.repeat(88) }],
  ].flatMap(([judgement, ...items]) => items.map((properties) => [judgement, properties]));
  const feedOfAll = feed(...table.map(([, properties]) => item(properties)));
  const decision = await deciding(t, ({ decide }, text) => decide(text), feedOfAll);
  decision.judgements.forEach((each, i) => assert.strictEqual(judgements.at(each), table[i][0], `row ${i}`));
});

test('the newest suitable item is the update, wherever it stands; of several the first', async (t) => {
  const version = (number, more) => item({ version: number, url: somewhere, signature: signed, ...more });
  const more = `<enclosure url="https://a" sparkle:os="windows"/>
    <enclosure url="${somewhere}" sparkle:os="linux" sparkle:version="3" sparkle:edSignature="${signed}"/></item>`;
  const otherPrefix = feed(version('3')).replaceAll('sparkle:', 'x:').replace('xmlns:sparkle', 'xmlns:x');
  const three = `3 ${somewhere}`;
  const table = [
    [feed(version('2.1'), version('3', { length: 12 }), version('2.9')), `${three} 12`],
    [feed(version('3', { url: `${somewhere}?1` }), version('3.')), `${three}?1`],
    [feed(version('4', { os: 'windows' }), version('3')), three],
    ...[-1, 0].map((length) => [feed(version('3', { length })), three]),
    [feed(version('3', { url: `${somewhere}.dmg`, os: 'macos' }).replace('</item>', more)), three],
    ...[feed(version('1')), feed()].map((none) => [none, '']),
    [otherPrefix, three],
    [feed(version('3')).replace(`xmlns:sparkle="${vocabulary}"`, ''), three],
    [Buffer.from(`\ufeff${feed(version('3'))}`, 'utf16le'), three],
  ];
  await deciding.table(t, table, ({ decide }, text) => {
    const { update, url, length } = decide(text);
    return [update, url, length].filter((value) => value !== undefined).join(' ');
  });
});

test('malformed feeds fail with a reason, and hostile feeds are harmless', async (t) => {
  const good = item({ version: '3', url: somewhere, signature: signed });
  const entities = Array.from({ length: 30 }, (_, i) => `<!ENTITY e${i + 1} "&e${i};&e${i};">`).join('');
  const bomb = `<!DOCTYPE rss [<!ENTITY e0 "2">${entities}]>`;
  const external = '<!DOCTYPE rss [<!ENTITY file SYSTEM "file:///etc/passwd">]>';
  const ofVersion = (version) => feed(item({ version, url: somewhere, signature: signed })).replace(/<\?.*?\?>/, '');
  const deep = 500000;
  const many = (make) => Array.from({ length: 100000 }, (_, i) => make(i)).join(' ');
  const rows = [
    ...['', 'not XML at all', feed(good).slice(0, -20), '<a>'.repeat(deep)].map((text) => [text, 'no XML']),
    ...['<rss></rss>', '<feed><channel/></feed>', '<channel><item/></channel>'].map((text) => [text, 'no channel']),
    ['<a>'.repeat(deep) + '</a>'.repeat(deep), 'no channel'],
    [feed('<item/>'.repeat(10001)), 'more than 10000 items'],
    [bomb + ofVersion('&e30;'), '&e30;,none'],
    [external + ofVersion('&file;'), '&file;,none'],
    [feed(`<item>${'<a>'.repeat(deep)}${'</a>'.repeat(deep)}</item>`, good), ',3'],
    [feed(`<item>${many((i) => `<a${i}/>`)}</item>`, good), ',3'],
    [feed(`<item><enclosure ${many((i) => `a${i}=""`)}/></item>`, good), ',3'],
    [feed('<item/>', '<item><item/></item>', '<item><enclosure/></item>', good), ',3'],
  ];
  await deciding.table(t, rows, ({ decide }, text) => {
    const decision = decide(text);
    if (typeof decision === 'string') return decision.match(/^(no XML|no channel|more than 10000 items)/)?.[0];
    return [decision.versions[0], decision.update ?? 'none'].join();
  });
});

const inApplications = scenarios({
  host: true,
  fixture({ assert, captureLog, eventually, host, news, sendMessage }) {
    host.setKeepAlive(true);
    captureLog();
    const posted = [];
    host.on('notification', ({ name, userInfo }) => posted.push([name, userInfo]));
    const appcasts = () => posted.filter(([name]) => name === 'TsReceivedAppcastNotification').length;
    const upTo = async (pattern) => {
      const lines = [];
      const isThere = () => lines.push(...news()) && lines.some((line) => pattern.test(line));
      const fail = ({ message }) => assert.fail(`${message}: ${JSON.stringify(lines)}`);
      await eventually(isThere, `${pattern}`).catch(fail);
      return lines;
    };
    /** Does something, and waits for the feed. */
    const fetched = async (act) => {
      const before = appcasts();
      await act();
      await eventually(() => appcasts() > before, 'the feed');
    };
    const tellUpdater = (...message) => sendMessage(sendMessage('TsApplicationUpdate', 'sharedInstance'), ...message);
    // Dates in the user defaults, in seconds since 1970; the probe counts from 2001.
    const defaults = sendMessage('NSUserDefaults', 'standardUserDefaults');
    const date = (key) => {
      const seconds = sendMessage(defaults, 'objectForKey:', key);
      return seconds && seconds + Date.UTC(2001) / 1000;
    };
    const setDate = (key, seconds) =>
      sendMessage(defaults, 'setObject:forKey:', sendMessage('NSDate', 'dateWithTimeIntervalSince1970:', seconds), key);
    return { posted, appcasts, date, setDate, upTo, fetched, tellUpdater };
  },
});
const onDisplay = inApplications.with({ display: true });

const bundleOf = (t, information, directory = temporaryDirectory(t)) => ({
  host: { bundlePath: makeBundle(directory, { version: '2.0', publicKey: keys.publicKey, ...information }) },
});

/** Scenarios in an application, version 2.0 by default. */
const application = (t, information, more) => inApplications.with({ ...bundleOf(t, information), ...more });

/** Serves a feed, an empty one by default, and notes the questions for it. */
async function serveFeed(t, ...items) {
  const questions = [];
  const url = await serve(t, (question, answer) => {
    questions.push(question.url);
    answer.end(feed(...items));
  });
  return { url, questions };
}

const cut = (answer, length, start) =>
  answer.writeHead(200, { 'content-length': length }).write(start, () => answer.destroy());

const parametersOf = (question) => new URL(question, 'http://a').searchParams;
const update = (more) => item({ version: '3', url: somewhere, signature: signed, ...more });

test('the build number and the release are those of the bundle', async (t) => {
  const ask = async ({ native, news }) => [native.getBuildNumber(), native.getReleaseString(), ...news()];
  assert.deepStrictEqual(await application(t, { version: '412', shortVersion: '3.1' })(t, ask), ['412', '3.1 (412)']);
  const nothing = await application(t, { version: undefined })(t, ask);
  assert.deepStrictEqual(nothing, [null, '(null) ((null))', "Couldn't get build number"]);
});

test("each feed request has the script's parameters, then the four built-in ones", async (t) => {
  const { url, questions } = await serveFeed(t);
  const builtIn = 'osVersion=12&appVersion=2.0&shortVersionString=2.0.1+%C3%84&selectedLanguage=';
  const entry = (key, value) => ({ key, value, displayKey: 'Shown', displayValue: value });
  const noText = "Couldn't get parameters from callback because result wasn't a string";
  const noArray = "Couldn't get parameters from callback because of ";
  const table = [
    [JSON.stringify([entry('a b', 'c&d=ü'), entry('e', '')]), 'a+b=c%26d%3D%C3%BC&e=&'],
    ['[]', ''],
    ...[7, ['[]'], undefined].map((answer) => [answer, '', noText]),
    ...['[{', '{"key": "a"}', ''].map((answer) => [answer, '', noArray]),
    ['[1, null, "a", [], {"value": "b"}, {"key": 1}, {"key": "c", "value": 2}]', 'c=&'],
  ];
  const askEach = async ({ assert, equal, fetched, native, news, tellUpdater }, answers) => {
    await fetched(() => native.fetchAppcast());
    const logs = [];
    news();
    for (const answer of answers) {
      native.setAppcastParameterCallback(() => answer);
      await fetched(() => native.fetchAppcast());
      logs.push(news());
    }
    native.setAppcastParameterCallback(() => {
      throw new Error('no parameters');
    });
    await fetched(() => assert.throws(() => native.checkForUpdates(false, false), /^Error: no parameters$/));
    equal(tellUpdater('updaterShouldPromptForPermissionToCheckForUpdates:', null), false);
    return logs;
  };
  const inApplication = application(t, { feed: `${url}/feed?fixed=1#part`, shortVersion: '2.0.1 Ä' });
  const answers = table.map(([answer]) => answer);
  const logs = await inApplication(t, askEach, answers);
  const parameters = questions.map((question) => String(parametersOf(question)));
  // After an exception, which reaches the caller, the request goes on.
  assert.strictEqual(parameters.pop(), `fixed=1&${builtIn}en`);
  const expected = ['', ...table.map(([, added]) => added)].map((added) => `fixed=1&${added}${builtIn}en`);
  assert.deepStrictEqual(parameters, expected);
  table.forEach(([callback, , warning], i) => {
    const [check, ...warnings] = logs[i];
    assert.strictEqual(check, 'Check for updates. (buildType=stable, sendingProfile=NO)');
    const starts = warnings.map((line) => line.slice(0, warning?.length));
    assert.deepStrictEqual(starts, warning === undefined ? [] : [warning], callback);
  });
});

test('the system profile is announced once a week, if the user wants it', async (t) => {
  const { url } = await serveFeed(t);
  await application(t, { feed: url })(t, async ({ assert, date, equal, fetched, native, setDate, tellUpdater }) => {
    const asked = [];
    native.setAppcastParameterCallback((sending) => asked.push(sending) && '[]');
    const check = () => fetched(() => native.fetchAppcast());
    const key = 'SULastProfileSubmissionDate';
    const now = Date.now() / 1000;
    await check();
    native.setUserDefault('SUSendProfileInfo', true);
    await check();
    const sent = date(key) - now;
    assert.ok(sent > -5 && sent < 600, `${sent}`);
    await check();
    setDate(key, now - 8 * 86400);
    await check();
    tellUpdater('resetLastProfileSubmissionDate');
    equal(date(key), null);
    await check();
    equal(asked, [false, true, false, true, true]);
  });
});

test('an item of the feed has its children, whole texts, and the language and file of the user', async (t) => {
  const inside = `
    <enclosure url="m" sparkle:os="macos"/><enclosure url="l" sparkle:os="linux"/>
    <description xml:lang="fr">Nouveau</description><description>New</description>
    <description xml:lang="en-GB">News <![CDATA[a]]]]><![CDATA[> b]]></description><description xml:lang="de">Neu</description>
    <sparkle:tags><sparkle:criticalUpdate/><sparkle:level at="2">high</sparkle:level></sparkle:tags>
    <sparkle:deltas><enclosure url="1"/><enclosure url="2"/></sparkle:deltas>`;
  const { url } = await serveFeed(t, `<item>${inside}</item>`);
  await application(t, { feed: url })(t, async ({ equal, fetched, native, posted }) => {
    await fetched(() => native.fetchAppcast());
    const item = {
      enclosure: { url: 'l', 'sparkle:os': 'linux' },
      description: 'News a]]> b',
      'sparkle:tags': { 'sparkle:criticalUpdate': '', 'sparkle:level': 'high' },
      'sparkle:deltas': { enclosure: [{ url: '1' }, { url: '2' }] },
    };
    equal(posted.at(-1)[1].appcast, [item]);
  });
});

test('a feed that cannot be fetched or read is logged, escaped, and does not affect the next check', async (t) => {
  const good = feed(update());
  const forged = update({ version: '3&#10;2026 [error] forged&#27;[2J' });
  const moved = (location) => (answer) => answer.writeHead(302, { location }).end();
  const answers = [
    [/fetched: the server answers 404/, (answer) => answer.writeHead(404).end(good)],
    [/fetched: .*Code=-1005/, (answer) => cut(answer, 9, '<')],
    [/fetched: it is longer than 4194304 bytes/, (answer) => answer.end(' '.repeat(5 * 1024 * 1024))],
    [/fetched: it is redirected to http:\/\/a\.example\/, which is not secure/, moved('http://a.example/')],
    [/fetched: it is redirected to file:/, moved('file:///etc/passwd')],
    [/fetched: too many redirects/, (answer, question) => moved(`${question.url}&again`)(answer)],
    [/fetched: the server answers 302/, (answer) => answer.writeHead(302).end(good)],
    [/can't be read: no XML/, (answer) => answer.end('<html>')],
    [/^Did find update 3\\n2026 \[error\] forged\\x1b\[2J\.$/, (answer) => answer.end(feed(forged))],
    [/^Did find update 3\.$/, (answer, { url }) => (url === '/moved' ? answer.end(good) : moved('/moved')(answer))],
  ];
  let step = -1;
  const url = await serve(t, (question, answer) => {
    if (question.url.startsWith('/feed?os') && !question.url.endsWith('&again')) ++step;
    answers[step][1](answer, question);
  });
  const fetchEach = async ({ native, upTo }, patterns) => {
    let lines;
    for (const pattern of patterns) {
      native.fetchAppcast();
      lines = await upTo(pattern);
    }
    return lines.at(-1);
  };
  const patterns = answers.map(([pattern]) => pattern);
  await application(t, { feed: `${url}/feed` })(t, fetchEach, patterns);
  for (const address of [undefined, 'http://example.org/feed']) {
    const line = await application(t, { feed: address })(t, fetchEach, [/not secure/]);
    assert.strictEqual(line, `The feed's address is missing or not secure: ${address ?? ''}`);
  }
});

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
  state.in = (information, more) => ({
    ...bundleOf(t, { feed: `${url}/feed`, ...information }, directory),
    env: state.env,
    ...more,
  });
  return state;
}

test('only a signed AppImage of the version in the feed is installed, and its first launch is reported', async (t) => {
  const file = makeAppImage('3', 'x'.repeat(450000));
  const forged = Buffer.from(file.toString('latin1').replace('xxx', 'yyy'), 'latin1');
  const signature = keys.sign(file);
  const notSigned = /^Update 3 is not installed: its file doesn't match the feed's signature$/;
  const whole = { signature, length: file.length };
  const moved = (status, location) => (answer) => answer.writeHead(status, { location }).end('x'.repeat(file.length));
  // The server's answer, the attributes of the feed's item, and the log line.
  const table = [
    [forged, { signature }, notSigned],
    [file, { signature: makeKeys().sign(file) }, notSigned],
    [file.subarray(1), { signature }, notSigned],
    ['', { signature }, notSigned],
    [(answer) => cut(answer, file.length, file.subarray(9)), whole, /not installed: .*Code=-1005/],
    [Buffer.concat([file, file]), whole, new RegExp(`not installed: it is longer than ${file.length} bytes`)],
    [(answer) => answer.writeHead(404).end(file), { signature }, /not installed: the server answers 404/],
    [moved(301, 'http://a.b/'), { signature }, /not installed: it is redirected to http:\/\/a\.b\/, which is not /],
    ['Tessaro 3', {}, /not installed: its file is no AppImage$/],
    [makeAppImage('3', '', { machine: 8 }), {}, /not installed: its file is for another processor$/],
    [makeAppImage('1.9'), {}, /not installed: its file is version 1\.9$/],
    [makeAppImage(undefined), {}, /not installed: its file names no version$/],
    [file, { signature: undefined }, null],
    [moved(301, '/file'), { signature, length: 0 }, /^Will install update 3\.$/],
  ];
  const image = await makeImage(t, (question, answer) => {
    const content = question.url === '/file' ? file : table[Number(question.url.slice(1))][0];
    return typeof content === 'function' ? content(answer) : answer.end(content);
  });
  let step = -1;
  image.items = (url) => {
    step = Math.min(step + 1, table.length - 1);
    const [content, more] = table[step];
    const own = keys.sign(Buffer.from(typeof content === 'function' ? '' : content));
    return [item({ version: '3', url: `${url}/${step}`, signature: own, ...more })];
  };
  const home = temporaryDirectory(t);
  const installEach = async ({ env, equal, eventually, fetched, fs, native, news, upTo }, patterns, length) => {
    const size = () => fs.statSync(env.APPIMAGE).size;
    const check = () => native.checkForUpdates(true, true);
    native.setUserDefault('SUAutomaticallyUpdate', true);
    const before = size();
    for (const pattern of patterns) {
      equal(size(), before);
      await fetched(check);
      if (pattern) await upTo(pattern);
    }
    await eventually(() => size() === length, 'the new version');
    // Until the file is in its place, another check is left out.
    const isKnown = () => check() || news().some((line) => /is installed already/.test(line));
    await eventually(isKnown, 'no second installation');
  };
  const patterns = table.map(([, , pattern]) => pattern);
  await inApplications.with(image.in({}, { home }))(t, installEach, patterns, file.length);
  assert.deepStrictEqual(fs.readFileSync(image.image), file);
  assert.strictEqual(fs.statSync(image.image).mode & 0o777, 0o750);
  assert.deepStrictEqual(fs.readdirSync(path.dirname(image.image)).sort(), ['Tessaro.AppImage', 'TessaroHost.app']);

  const relaunches = async ({ native, nextTurn, posted }) => {
    native.setAppcastParameterCallback(() => '[]');
    for (let i = 0; i < 20; ++i) await nextTurn();
    return posted.map(([name]) => name).filter((name) => name.includes('Relaunch'));
  };
  const launches = [];
  for (const version of ['2.0', '3', '3']) {
    launches.push(await inApplications.with(image.in({ version }, { home }))(t, relaunches));
  }
  assert.deepStrictEqual(launches, [[], ['TsApplicationDidRelaunchAfterUpdateNotification'], []]);
});

test('nothing is installed without a key, an AppImage, or the consent of the user', async (t) => {
  const file = makeAppImage('3');
  const questions = [];
  const image = await makeImage(t, (question, answer) => {
    questions.push(question.url);
    answer.end(file);
  });
  image.items = (url) => [item({ version: '3', url: `${url}/file`, signature: keys.sign(file) })];
  const found = 'Did find update 3.';
  const noImage = 'Update 3 is not installed: the application is not an AppImage, so its package manager updates it';
  const noDisplay = 'Update 3 is not installed: there is no display to ask the user on';
  const noKey = 'No update can be verified: the public key is missing or malformed';
  const resources = path.join(path.dirname(image.image), 'TessaroHost.app', 'Resources');
  const otherImage = { APPIMAGE: image.image, APPDIR: resources };
  const user = [false, false];
  const cases = [
    [{ publicKey: undefined }, image.env, user, /verified/, [noKey]],
    [{ publicKey: 'AAAA' }, image.env, user, /verified/, [noKey]],
    [{}, {}, user, /not installed/, [found, noImage]],
    [{}, otherImage, user, /not installed/, [found, noImage]],
    [{}, image.env, user, /not installed/, [found, noDisplay]],
    [{}, image.env, [true, false], /Did find/, [found]],
    [{}, image.env, null, /Did find/, [found]],
    [{}, image.env, [true, false, true], /Will install/, [found, 'Will install update 3.']],
  ];
  for (const [information, env, check, pattern, expected] of cases) {
    assert.deepStrictEqual(questions, []);
    const scenario = async ({ native, upTo }, flags, last) => {
      const [silently, onlyCheck, automatically] = flags ?? [];
      if (automatically) native.setUserDefault('SUAutomaticallyUpdate', true);
      if (flags) native.checkForUpdates(silently, onlyCheck);
      else native.fetchAppcast();
      return (await upTo(last)).slice(1);
    };
    const lines = await inApplications.with(image.in(information, { env }))(t, scenario, check, pattern);
    assert.deepStrictEqual(lines, expected, `${JSON.stringify(information)} ${check}`);
  }
  assert.deepStrictEqual(questions, ['/file']);
});

test('automatic checks continue in later processes when they are due', async (t) => {
  const { url, questions } = await serveFeed(t);
  const inProcess = application(t, { feed: url }, { home: temporaryDirectory(t) });
  // Once the process is ready a check that was due has begun; another request shows that none has.
  const quiet = async ({ date, native, nextTurn, setDate }, last) => {
    if (last) setDate('SULastCheckTime', last);
    native.setAppcastParameterCallback(() => '[]');
    for (let i = 0; i < 100; ++i) await nextTurn();
    return date('SULastCheckTime');
  };
  const now = Math.floor(Date.now() / 1000);
  assert.strictEqual(await inProcess(t, quiet), null);
  const checked = await inProcess(t, async ({ date, fetched, native }) => {
    await fetched(() => native.checkForUpdates(true, true));
    return date('SULastCheckTime');
  });
  assert.ok(checked >= now && checked < now + 600, `${checked} ${now}`);
  assert.strictEqual(await inProcess(t, quiet), checked);
  assert.strictEqual(questions.length, 1);

  const due = async ({ fetched, native, setDate }, last) => {
    setDate('SULastCheckTime', last);
    await fetched(() => native.setAppcastParameterCallback(() => '[]'));
  };
  await inProcess(t, due, now - 43201);
  // Later than the moment at which the clock was set back.
  await inProcess(t, due, now + 1e6);
  assert.strictEqual(questions.length, 3);
  // The interval passes while the process runs.
  await inProcess(t, due, Math.ceil(Date.now() / 1000) - 43199);
  assert.strictEqual(questions.length, 4);

  await inProcess(t, async ({ fetched, native }) => fetched(() => native.checkForUpdates(true, false)));
  await inProcess(t, quiet, now - 1e6);
  assert.strictEqual(questions.length, 5);
});

test('a check replaces one that waits for its feed, unless it does less, and the log says both', async (t) => {
  const waiting = [];
  let isAnswering = false;
  const url = await serve(t, (question, answer) => {
    waiting.push([parametersOf(question.url).get('kind'), answer]);
    if (isAnswering) answer.end(feed());
  });
  const child = await application(t, { feed: url }).resident(t);
  const isDryRun = await child.tell(({ native, tellUpdater }) => {
    let kind;
    native.setAppcastParameterCallback(() => JSON.stringify([{ key: 'kind', value: kind }]));
    const check = (each) => {
      kind = each;
      if (kind === 'information') native.fetchAppcast();
      else native.checkForUpdates(kind === 'background', false);
      return tellUpdater('dryRun');
    };
    return ['background', 'information', 'user', 'background', 'user'].map(check).includes(true);
  });
  assert.strictEqual(isDryRun, false);
  // Connections of checks that were given up may never have been asked for anything.
  await eventually(() => waiting.some(([kind]) => kind === 'user'), 'the request');
  isAnswering = true;
  for (const [, answer] of waiting) answer.end(feed());
  await child.until(({ appcasts }) => appcasts() === 1);
  const log = (await child.tell(({ news }) => news())).filter((line) => /^A check/.test(line));
  assert.strictEqual(log.map((line) => line.split(' ')[5]).join(), 'left,replaced,left,replaced');
  assert.ok(!waiting.some(([kind]) => kind === 'information'));
});

test('a check neither keeps the process alive nor prevents its exit', async (t) => {
  let asked = 0;
  const url = await serve(t, () => ++asked);
  for (const how of ['exit', 'no windows']) {
    const scenario = ({ host, native }, end) => {
      native.checkForUpdates(true, true);
      setImmediate(() => (end === 'exit' ? process.exit() : host.setKeepAlive(false)));
    };
    const { code, signal, stderr } = await application(t, { feed: url }).ends(t, scenario, how);
    assert.deepStrictEqual([code, signal], [0, null], stderr);
  }
});

test('holding Option checks the test channel once', async (t) => {
  const { url, questions } = await serveFeed(t, update({ inside: '<sparkle:channel>test</sparkle:channel>' }));
  await onDisplay.with(bundleOf(t, { feed: url }))(t, async (fixture) => {
    const { equal, eventually, fetched, host, native, news, run, upTo } = fixture;
    const window = host.createWindow({ title: 'Updates' });
    await eventually(() => host.windowInfo(window).isKey, 'the window');
    await run('xdotool', 'keydown', 'alt');
    news();
    native.checkForUpdates(false, false);
    equal(await upTo(/not installed/), [
      'Check for updates. (buildType=test, sendingProfile=NO)',
      'Did find update 3.',
      'Update 3 is not installed: the application is not an AppImage, so its package manager updates it',
    ]);
    await run('xdotool', 'keyup', 'alt');
    await fetched(() => native.checkForUpdates(false, false));
    equal(news(), ['Check for updates. (buildType=stable, sendingProfile=NO)']);
  });
  const kinds = questions.map((question) => parametersOf(question).get('buildType'));
  assert.deepStrictEqual(kinds, ['test', null]);
});

test('results activate the application unless only the feed was fetched', async (t) => {
  const { url } = await serveFeed(t, update());
  await onDisplay.with(bundleOf(t, { feed: url }))(t, async (fixture) => {
    const { appcasts, equal, eventually, fetched, host, native, run, spawn, upTo } = fixture;
    const window = host.createWindow({ title: 'Updates' });
    const isInFront = () => host.windowInfo(window).isKey;
    await eventually(isInFront, 'the window');
    const other = spawn('xev', ['-name', 'Other'], { stdio: 'ignore' });
    // The window manager gives a new window the focus unless it takes the user for busy in the old one.
    const activate = () => run('xdotool', 'search', '--name', '^Other$', 'windowactivate').catch(() => {});
    await eventually(async () => !isInFront() || activate().then(() => false), 'the other window');
    await fetched(() => native.fetchAppcast());
    await upTo(/Did find/);
    equal(isInFront(), false);
    native.checkForUpdates(true, false);
    await eventually(isInFront, 'the window in front');
    other.kill();
    equal(appcasts(), 2);
  });
});

test('the update window offers an update, shows its installation and its failures', async (t) => {
  const file = makeAppImage('3');
  const image = await makeImage(t, (_question, answer) => answer.end(file));
  const offered = (url, more) => item({ version: '3', url: `${url}/file`, signature: keys.sign(file), ...more });
  const inside = '<description><![CDATA[<p>New &amp; <b>better</b></p>]]></description>';
  const child = await onDisplay.with(image.in({ shortVersion: '2.0' }, { env: image.env })).resident(t);
  const title = 'Software Update';
  const views = async () =>
    (await child.tell(({ dialogs }) => dialogs.windows())).find((window) => window.title === title)?.views ?? [];
  const texts = async () => (await views()).map(({ text }) => text).filter((text) => text !== undefined);
  const showing = (text) => eventually(async () => (await texts()).some((each) => each.includes(text)), text);
  const press = (button) => child.until(({ dialogs }, ...names) => dialogs.pressButton(...names), title, button);
  const version = () => String.fromCharCode(fs.readFileSync(image.image).at(-1));
  const check = async (items, text) => {
    image.items = items;
    await child.tell(({ native }) => native.checkForUpdates(false, false));
    await showing(text);
  };
  const isClosed = () => eventually(async () => (await views()).length === 0, 'the end of the window');

  await check(() => [], 'You have the newest version.');
  await press('OK');
  await isClosed();

  const available = 'Version 3 is available. You have version 2.0.';
  await check((url) => [offered(url, { inside })], available);
  assert.deepStrictEqual(await texts(), [available, 'New & better']);
  await press('Later');
  const long = '<description>'.concat('New and better. '.repeat(5000), '</description>');
  await check((url) => [offered(url, { inside: long })], 'Version 3 is available');
  assert.deepStrictEqual((await texts()).map((text) => text.length), [available.length, 20000]); // prettier-ignore
  await press('Skip This Version');
  await isClosed();
  await child.tell(({ news }) => news());
  await child.tell(async ({ fetched, native }) => fetched(() => native.checkForUpdates(true, false)));
  const lines = await child.tell(({ news }) => news());
  assert.ok(!lines.some((line) => /Did find/.test(line)), lines.join('\n'));
  assert.deepStrictEqual([await views(), version()], [[], '0']);

  await check((url) => [offered(url, { signature: signed })], 'Version 3 is available');
  await press('Install');
  await showing("its file doesn't match the feed's signature");
  assert.strictEqual(version(), '0');

  await check((url) => [offered(url)], 'Version 3 is available');
  await press('Install');
  await showing('Version 3 is installed.');
  assert.strictEqual(version(), '3');
});
