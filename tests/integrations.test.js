'use strict';

const assert = require('assert');
const { execFile, execFileSync } = require('child_process');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');
const { promisify } = require('util');

const { evaluate, eventually, runScript, startScript, temporaryDirectory } = require('./support/child');
const { Applications } = require('./support/applications');
const { useSession } = require('./support/session');

const session = useSession();

const page = {
  url: 'tessaro://mail/1?a=b&c="d"',
  'web-url': 'https://mail.example.org/#1',
  title: 'Lunch? 100% \'of\' us\n& "more"',
  html: '<html><head><title>no</title></head><body>  <p>Grüße &amp; <b>more</b></p>  </body></html>',
  account: 'ann@example.org',
};
const text = 'Grüße & more';

/** A process that runs `source`, with `m` as the module, until the test ends. */
const act = (t, applications, source) =>
  startScript(
    t,
    `const { module: m } = probe();
     setInterval(() => {}, 1000);
     const page = ${JSON.stringify(page)};
     ${source}`,
    { env: { ...session.env, ...applications.env, TESSARO_NATIVE_LOG: 'stderr' }, home: applications.home },
  );

test('installedClipperApps names the installed applications in a fixed order', async (t) => {
  const applications = new Applications(t);
  const options = { env: applications.env, home: applications.home };
  const ask = () => evaluate(t, `console.log(probe().module.installedClipperApps());`, options);
  assert.deepStrictEqual(await ask(), ['clipboard']);
  for (const id of ['com.culturedcode.ThingsMac', 'com.todoist.mac.Todoist', 'com.omnigroup.OmniFocus2']) {
    applications.add(id);
  }
  assert.deepStrictEqual(await ask(), ['omnifocus', 'todoist', 'things', 'clipboard']);
  for (const id of ['com.evernote.Evernote', 'com.devon-technologies.thinkpro2', 'com.apperdeck.mac.Receipts']) {
    applications.add(id);
  }
  const all = ['evernote', 'devonthink', 'omnifocus', 'receipts', 'todoist', 'things', 'clipboard'];
  assert.deepStrictEqual(await ask(), all);
});

test('task managers get their URL as one argument, escaped, without "(null)" for missing texts', async (t) => {
  const links = [page.url, page['web-url']];
  const table = [
    [
      'omnifocus',
      'com.omnigroup.OmniFocus3',
      'omnifocus:///add',
      { name: page.title, note: `${links.join('\n')}\n\n${text}` },
    ],
    [
      'todoist',
      'com.todoist.mac.Todoist',
      'todoist://addtask',
      {
        content: `${page.title} [Web](${links[1]}) | [Tessaro](${links[0]})`,
        comment: `${text}\n\n${links.join('\n')}`,
      },
    ],
    [
      'things',
      'com.culturedcode.ThingsMac',
      'things:///add',
      { title: page.title, notes: `${text}\n\n${links.join('\n')}`, 'show-quick-entry': 'true' },
    ],
    ['omnifocus', 'com.omnigroup.OmniFocus3', 'omnifocus:///add', { name: '', note: '\n\n\n' }, {}],
    ['things', 'com.culturedcode.ThingsMac', 'things:///add', { title: '', notes: '\n\n\n', 'show-quick-entry': 'true' }, {}],
  ]; // prettier-ignore
  for (const [name, identifier, address, parameters, clipped = page] of table) {
    const applications = new Applications(t);
    applications.add(identifier, { types: [`x-scheme-handler/${name}`] });
    act(t, applications, `m.clipPage(${JSON.stringify(name)}, ${JSON.stringify(clipped)});`);
    const words = await applications.wordsOf(identifier);
    assert.strictEqual(words.length, 1);
    assert.match(words[0], /^[\w:/?&=%.~-]+$/);
    const [before, query] = words[0].split('?');
    assert.strictEqual(before, address);
    const values = query.split('&').map((pair) => pair.split('=').map(decodeURIComponent));
    assert.deepStrictEqual(Object.fromEntries(values), parameters);
  }
});

test('clipping to the clipboard copies a Markdown document', async (t) => {
  const applications = new Applications(t);
  act(
    t,
    applications,
    `m.clipPage('clipboard', { ...page, title: 'T', account: 'A', html: '  x\\n ', url: 'U', 'web-url': 'W' });`,
  );
  const read = () =>
    promisify(execFile)('xclip', ['-selection', 'clipboard', '-o'], { env: { ...process.env, ...session.env } }).then(
      ({ stdout }) => stdout,
      () => null,
    );
  await eventually(async () => (await read()) === '# T [A]\n\nx\n\n- <U>\n- <W>', 'the document is on the clipboard');
});

test('unknown targets and odd pages are logged', async (t) => {
  const applications = new Applications(t);
  const child = act(
    t,
    applications,
    `m.clipPage('Evernote', page);
     m.clipPage('clipboard', { get title() { throw new Error('no'); }, html: 5, attachments: [null, {}, Symbol.iterator] });
     m.importIntoApplication('org.example.None', '/x');
     m.printPath('/no/such/file');
     m.clipPage('evernote', {});
     m.clipPage('devonthink', []);
     m.clipPage('receipts', () => {});`,
  );
  const expected = [
    'Unknown application Evernote',
    "Don't know how to handle bundleId org.example.None for /x",
    "com.apple.Preview doesn't know how to print.",
    "Couldn't create Evernote note because of missing AppleScript support",
    "This version of Evernote doesn't support AppleScript. Please use Evernote 7.x",
  ];
  await eventually(() => expected.every((line) => child.output.stderr.includes(line)), 'the log has all of it').catch(
    (error) => assert.fail(`${error.message}\n${child.output.stderr}`),
  );
});

// ---- Applications that are scripted

/** Starts an application that writes the messages it gets to a file. */
async function startStandIn(t, applications, identifier) {
  const record = path.join(applications.home, 'messages.json');
  applications.add(identifier);
  const child = startScript(
    t,
    `const ok = probe().integrations.serve(${JSON.stringify(identifier)}, ${JSON.stringify(record)});`,
    {
      env: { ...session.env, ...applications.env },
    },
  );
  const messages = () => (fs.existsSync(record) ? JSON.parse(fs.readFileSync(record, 'utf8')) : []);
  messages.hang = () => child.process.kill('SIGSTOP');
  const names = path.join(session.env.TMPDIR, 'NSMessagePort', 'names', Buffer.from(identifier).toString('base64'));
  await eventually(() => fs.existsSync(names), 'the application can be scripted');
  return messages;
}

const zip = (folder, archive) =>
  execFileSync('python3', [
    '-c',
    'import sys, zipfile, os\nz = zipfile.ZipFile(sys.argv[2], "w", zipfile.ZIP_DEFLATED)\n' +
      'for n in sorted(os.listdir(sys.argv[1])): z.write(os.path.join(sys.argv[1], n), n)',
    folder,
    archive,
  ]);

test('a note in Evernote gets the page and its attachments, with archives unpacked', async (t) => {
  const applications = new Applications(t);
  const messages = await startStandIn(t, applications, 'com.evernote.Evernote');
  const folder = temporaryDirectory(t);
  const inside = path.join(folder, 'inside');
  fs.mkdirSync(inside);
  fs.writeFileSync(path.join(inside, 'one.txt'), '1');
  zip(inside, path.join(folder, 'files.ZIP'));
  const attachments = JSON.stringify([path.join(folder, 'a b.pdf'), path.join(folder, 'files.ZIP')]);
  act(t, applications, `m.clipPage('evernote', { url: 'u', html: '<p>x</p>', attachments: ${attachments} });`);
  await eventually(() => messages().at(-1)?.[0] === 'open', 'the note is opened');
  const [create, source, html, plain, unpacked, open] = messages();
  assert.deepStrictEqual(
    [create, source, html, plain, open],
    [
      ['create', ['', 'Tessaro', null]],
      ['sourceURL', ['u']],
      ['append', ['<p>x</p>', null]],
      ['append', [null, path.join(folder, 'a b.pdf')]],
      ['open', []],
    ],
  );
  assert.match(unpacked[1][1], /\/files\.ZIP.*\/one\.txt$/);
  assert.strictEqual(fs.existsSync(unpacked[1][1]), false);
});

test('DEVONthink imports the mail, or the page when there is no mail', async (t) => {
  const applications = new Applications(t);
  const messages = await startStandIn(t, applications, 'com.devon-technologies.think3');
  const record = (file) => [
    ['import', [file, page.title, 0x616c6c20]],
    ['URL', [page.url]],
    ['thumbnail', []],
    ['aliases', [page['web-url']]],
    ['open', []],
  ];
  act(t, applications, `m.clipPage('devonthink', { ...page, 'eml-path': '/a.eml', 'html-path': '/a.html' });`);
  await eventually(() => messages().length >= 5, 'the first record is opened');
  act(t, applications, `m.clipPage('devonthink', { ...page, 'html-path': '/a.html' });`);
  await eventually(() => messages().length >= 10, 'the second record is opened');
  assert.deepStrictEqual(messages(), [...record('/a.eml'), ...record('/a.html')]);
});

test('an application that hangs delays neither script nor other applications', async (t) => {
  const applications = new Applications(t);
  const messages = await startStandIn(t, applications, 'com.evernote.Evernote');
  applications.add('com.todoist.mac.Todoist', { types: ['x-scheme-handler/todoist'] });
  messages.hang();
  const child = act(
    t,
    applications,
    `const start = Date.now();
     for (let i = 0; i < 4; ++i) m.clipPage('evernote', page);
     m.importIntoApplication('com.evernote.Evernote', '/etc/hostname');
     console.log(Date.now() - start < 2000);
     m.clipPage('todoist', page);`,
  );
  await child.printed('true\n');
  assert.strictEqual((await applications.wordsOf('com.todoist.mac.Todoist')).length, 1);
});

test('Photos and Receipts get files; archives are unpacked beside themselves', async (t) => {
  const applications = new Applications(t);
  const folder = temporaryDirectory(t);
  const inside = path.join(folder, 'inside');
  fs.mkdirSync(inside);
  for (const name of ['a.JPG', 'b.tiff', 'c.txt', 'd.png']) fs.writeFileSync(path.join(inside, name), name);
  zip(inside, path.join(folder, 'photos.zip'));
  for (const id of ['com.apple.Photos', 'com.apperdeck.mac.Receipts']) applications.add(id, { argument: '%f' });
  const file = (name) => path.join(folder, name);
  fs.writeFileSync(file('mail.eml'), '');
  fs.writeFileSync(file('x.png'), '\x89PNG\r\n\x1a\n', 'latin1');
  const importing = (id, name) =>
    act(t, applications, `m.importIntoApplication('${id}', ${JSON.stringify(file(name))});`);
  importing('com.apple.Photos', 'photos.zip');
  assert.deepStrictEqual(await applications.wordsOf('com.apple.Photos'), [file('photos')]);
  assert.deepStrictEqual(fs.readdirSync(file('photos')).sort(), ['a.JPG', 'b.tiff']);
  // Imported again, the archive brings back what is missing and keeps what the user has changed.
  fs.writeFileSync(file('photos/a.JPG'), 'changed');
  fs.rmSync(file('photos/b.tiff'));
  importing('com.apple.Photos', 'photos.zip');
  assert.deepStrictEqual(await applications.wordsOf('com.apple.Photos'), [file('photos')]);
  const contents = ['a.JPG', 'b.tiff'].map((name) => fs.readFileSync(file(`photos/${name}`), 'utf8'));
  assert.deepStrictEqual(contents, ['changed', 'b.tiff']);
  importing('com.apple.Photos', 'x.png');
  assert.deepStrictEqual(await applications.wordsOf('com.apple.Photos'), [file('x.png')]);
  importing('com.apperdeck.mac.Receipts', 'mail.eml');
  assert.deepStrictEqual(await applications.wordsOf('com.apperdeck.mac.Receipts'), [file('mail.eml')]);
  act(t, applications, `m.clipPage('receipts', { 'eml-path': ${JSON.stringify(file('mail.eml'))} });`);
  assert.deepStrictEqual(await applications.wordsOf('com.apperdeck.mac.Receipts'), [file('mail.eml')]);
});

test('printing opens a viewer, and never prints without a dialog', async (t) => {
  const applications = new Applications(t);
  const file = path.join(temporaryDirectory(t), '-p.pdf');
  fs.writeFileSync(file, '');
  for (const name of ['lp', 'lpr']) applications.addProgram(name);
  applications.add('org.example.Viewer', { types: ['application/pdf'], argument: '%f' });
  applications.mimeApps('[Default Applications]\napplication/pdf=org.example.Viewer.desktop\n');
  const print = () => act(t, applications, `m.printPath(${JSON.stringify(file)});`);
  print();
  assert.deepStrictEqual(await applications.wordsOf('org.example.Viewer'), [file]);
  applications.addProgram('evince-previewer');
  print();
  assert.deepStrictEqual(await applications.wordsOf('evince-previewer'), [file]);
  assert.deepStrictEqual(
    ['lp', 'lpr'].filter((name) => fs.existsSync(applications.recordOf(name))),
    [],
  );
});

// ---- HTML and archives

test('HTML is converted to plain text', async (t) => {
  const table = [
    ['', ''],
    ['plain', 'plain'],
    ['<p>a<p>b', 'a\n\nb'],
    ['<div>a</div><div>b</div>', 'a\nb'],
    ['a<br>b<br/><br>c', 'a\nb\n\nc'],
    ['<ul><li>one<li>two</ul>', '• one\n• two'],
    ['<table><tr><td>1<td>2<tr><td>3</table>', '1\t2\n3'],
    ['<pre>a\n  b</pre>', 'a\n  b'],
    ['  a \n\t b  ', 'a b'],
    ['<script>x</script><style>y</style><title>z</title>t', 't'],
    ['&lt;b&gt; &amp; &#128512; &euro;', '<b> & 😀 €'],
    ['<b>un<i>closed', 'unclosed'],
    ['\u0000<<>&;<!-- x', null],
  ];
  const seen = await evaluate(
    t,
    `const { integrations } = probe();
     const texts = ${JSON.stringify(table.map(([html]) => html))}.map(integrations.textFromHTML);
     const deep = integrations.textFromHTML('<div>'.repeat(200000) + 'x');
     const large = integrations.textFromHTML('<p>line</p>'.repeat(1000000)).length;
     console.log(JSON.stringify([texts, deep, large]));`,
  );
  table.forEach(([html, expected], i) => expected === null || assert.strictEqual(seen[0][i], expected, html));
  assert.deepStrictEqual(seen.slice(1), ['x', 6000000 - 2]);
});

test('hostile archives write nothing outside of their folder, and end at a limit', async (t) => {
  const folder = temporaryDirectory(t);
  const archives = path.join(folder, 'archives');
  fs.mkdirSync(archives);
  execFileSync('python3', [
    '-c',
    `import zipfile, sys
def make(name, entries):
    z = zipfile.ZipFile(sys.argv[1] + '/' + name, 'w', zipfile.ZIP_DEFLATED)
    for n, d in entries: z.writestr(n, d)
    z.close()
link = zipfile.ZipInfo('link'); link.external_attr = 0o120777 << 16; link.create_system = 3
make('up.zip', [('../up.txt', 'x'), ('a/../../up2.txt', 'x'), ('/tmp/ts-absolute.txt', 'x'), ('in.txt', 'y')])
make('link.zip', [(link, '/tmp'), ('link/ts-through.txt', 'x')])
make('many.zip', [(str(i), '') for i in range(10050)])
make('bomb.zip', [(str(i), b'\\0' * (200 << 20)) for i in range(6)])
open(sys.argv[1] + '/damaged.zip', 'wb').write(open(sys.argv[1] + '/up.zip', 'rb').read()[:60])`,
    archives,
  ]);
  const names = ['up', 'link', 'many', 'bomb', 'damaged', 'missing'];
  const results = await evaluate(
    t,
    `const { integrations } = probe();
     console.log(JSON.stringify(${JSON.stringify(names)}.map((name) =>
       integrations.unpackZip(${JSON.stringify(archives)} + '/' + name + '.zip', ${JSON.stringify(folder)} + '/out/' + name))));`,
  );
  assert.deepStrictEqual(results, [true, true, false, false, false, false]);
  assert.deepStrictEqual(fs.readdirSync(path.join(folder, 'out', 'up')), ['in.txt']);
  assert.deepStrictEqual(fs.readdirSync(path.join(folder, 'out')).sort(), ['bomb', 'link', 'many', 'up']);
  for (const file of ['/tmp/ts-absolute.txt', '/tmp/ts-through.txt']) assert.ok(!fs.existsSync(file));
});

// ---- The PDF entry and Timing

const withHost = `const host = require(${JSON.stringify(path.join(__dirname, '..', 'host'))}); host.start();`;

test('the PDF entry is an alias of this application, removed with its empty folder', async (t) => {
  const home = temporaryDirectory(t);
  const services = path.join(home, 'Library', 'PDF Services');
  const entry = path.join(services, 'Mail PDF with Tessaro');
  const bundle = path.join(__dirname, '..', 'host', 'TessaroHost.app');
  fs.mkdirSync(path.join(home, 'Tessaro 3.app'));
  fs.mkdirSync(services, { recursive: true });
  fs.symlinkSync(path.join(home, 'Tessaro 3.app'), path.join(services, 'previous'));
  fs.symlinkSync(bundle, path.join(services, 'renamed'));
  fs.symlinkSync('/no/such/place', entry);
  fs.writeFileSync(path.join(services, 'foreign'), '');
  const run = (source) =>
    runScript(t, `${withHost} const { module: m } = probe(); ${source}`, { home, env: session.env });
  await run('process.exit();');
  assert.deepStrictEqual(fs.readdirSync(services).sort(), ['Mail PDF with Tessaro', 'foreign']);
  assert.strictEqual(fs.realpathSync(entry), fs.realpathSync(bundle));
  await run('m.uninstallPDFServices(); process.exit();');
  assert.deepStrictEqual(fs.readdirSync(services), ['foreign']);
  fs.rmSync(path.join(services, 'foreign'));
  await run('m.uninstallPDFServices(); process.exit();');
  assert.strictEqual(fs.existsSync(services), false);
});

test('Timing gets the callback’s list, or an empty one', async (t) => {
  const child = startScript(
    t,
    `${withHost} const { module: m } = probe();
     setInterval(() => {}, 1000);
     const answers = ['["Inbox – ann","tessaro://1"]', 'no JSON', undefined, '{}'];
     m.registerAppleEventForTimingApp(() => answers.shift());
     m.registerAppleEventForTimingApp(() => '["second"]');
     console.log('ready');`,
    { env: { ...session.env, TESSARO_NATIVE_LOG: 'stderr' } },
  );
  await child.printed('ready\n');
  const ask = async () => {
    const question = ['--session', '--print-reply=literal', '--dest=org.tessaro.TessaroHost', '/org/tessaro/Timing'];
    const { stdout } = await promisify(execFile)('dbus-send', [...question, 'org.tessaro.Timing.List'], {
      env: { ...process.env, ...session.env },
    });
    return stdout.replace(/\s+/g, ' ').trim();
  };
  assert.match(await ask(), /^array \[ Inbox – ann tessaro:\/\/1 \]$/);
  for (let i = 0; i < 3; ++i) assert.match(await ask(), /^array \[ \]$/);
  assert.match(child.output.stderr, /Cannot register app event listener twice/);
  assert.match(child.output.stderr, /Couldn't get valid result from sCallback/);
});
