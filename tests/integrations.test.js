'use strict';

const { assert, execFileSync, execute, fs, path, test } = require('./support');
const { Applications, eventually, scenarios, startScript, temporaryDirectory, temporaryFiles } = require('./support');

const inSession = scenarios({ display: true, host: false, fixture: ({ captureLog }) => captureLog() ?? {} });
const { session } = inSession;
const run = (command, args) =>
  execute(command, args, { env: { ...process.env, ...session.env } }).then(({ stdout }) => stdout);

const page = {
  url: 'tessaro://mail/1?a=b&c="d"',
  'web-url': 'https://mail.example.org/#1',
  title: 'Lunch? 100% \'of\' us\n& "more"',
  html: '<html><head><title>no</title></head><body>  <p>Grüße &amp; <b>more</b></p>  </body></html>',
  account: 'ann@example.org',
};
const text = 'Grüße & more';

/** A process among these applications: `call(name, …)` calls a function of the module's there. */
async function startAmong(t, applications) {
  const resident = await inSession.with({ env: applications.env, home: applications.home }).resident(t);
  const call = (...args) => resident.tell(({ native }, name, ...values) => native[name](...values), ...args);
  return { call, tell: (...scenario) => resident.tell(...scenario), log: () => resident.tell(({ log }) => log()) };
}

test('installedClipperApps names the installed applications in a fixed order', async (t) => {
  const applications = new Applications(t);
  const { call } = await startAmong(t, applications);
  const first = ['com.culturedcode.ThingsMac', 'com.todoist.mac.Todoist', 'com.omnigroup.OmniFocus2'];
  const second = ['com.evernote.Evernote', 'com.devon-technologies.thinkpro2', 'com.apperdeck.mac.Receipts'];
  const steps = [
    [[], 'clipboard'],
    [first, 'omnifocus todoist things clipboard'],
    [second, 'evernote devonthink omnifocus receipts todoist things clipboard'],
  ];
  for (const [installed, names] of steps) {
    for (const identifier of installed) applications.add(identifier);
    await eventually(async () => JSON.parse(await call('installedClipperApps')).join(' ') === names, names);
  }
});

test('task managers get their URL as one argument, escaped, without "(null)" for missing texts', async (t) => {
  const [link, web] = [page.url, page['web-url']];
  const comment = `${text}\n\n${link}\n${web}`;
  const content = `${page.title} [Web](${web}) | [Tessaro](${link})`;
  const entry = { 'show-quick-entry': 'true' };
  const [omnifocus, todoist, things] = ['com.omnigroup.OmniFocus3', 'com.todoist.mac.Todoist', 'com.culturedcode.ThingsMac']; // prettier-ignore
  const identifiers = { omnifocus, todoist, things };
  const table = [
    ['omnifocus', page, 'omnifocus:///add', { name: page.title, note: `${link}\n${web}\n\n${text}` }],
    ['todoist', page, 'todoist://addtask', { content, comment }],
    ['things', page, 'things:///add', { title: page.title, notes: comment, ...entry }],
    ['omnifocus', {}, 'omnifocus:///add', { name: '', note: '\n\n\n' }],
    ['things', {}, 'things:///add', { title: '', notes: '\n\n\n', ...entry }],
  ];
  const applications = new Applications(t);
  for (const [name, id] of Object.entries(identifiers)) applications.add(id, { types: [`x-scheme-handler/${name}`] });
  const { call } = await startAmong(t, applications);
  for (const [name, clipped, address, parameters] of table) {
    await call('clipPage', name, clipped);
    const words = await applications.wordsOf(identifiers[name]);
    assert.strictEqual(words.length, 1);
    assert.match(words[0], /^[\w:/?&=%.~-]+$/);
    const [before, query] = words[0].split('?');
    const values = query.split('&').map((pair) => pair.split('=').map(decodeURIComponent));
    assert.deepStrictEqual([before, Object.fromEntries(values)], [address, parameters]);
  }
});

test('clipping to the clipboard copies a Markdown document, unknown targets and odd pages are logged', async (t) => {
  const { call, log, tell } = await startAmong(t, new Applications(t));
  await call('clipPage', 'clipboard', { title: 'T', account: 'A', html: '  x\n ', url: 'U', 'web-url': 'W' });
  const read = () => run('xclip', ['-selection', 'clipboard', '-o']).catch(() => null);
  await eventually(async () => (await read()) === '# T [A]\n\nx\n\n- <U>\n- <W>', 'the document is on the clipboard');

  await tell(({ native }, page) => {
    const thrower = { get title() { throw new Error('no'); }, html: 5, attachments: [null, {}, Symbol.iterator] }; // prettier-ignore
    native.clipPage('Evernote', page);
    native.clipPage('clipboard', thrower);
    native.importIntoApplication('org.example.None', '/x');
    native.printPath('/no/such/file');
    native.clipPage('evernote', {});
    native.clipPage('devonthink', []);
    native.clipPage('receipts', () => {});
  }, page);
  const expected = [
    'Unknown application Evernote',
    "Don't know how to handle bundleId org.example.None for /x",
    "com.apple.Preview doesn't know how to print.",
    "Couldn't create Evernote note because of missing AppleScript support",
    "This version of Evernote doesn't support AppleScript. Please use Evernote 7.x",
  ];
  const isLogged = async () => {
    const lines = (await log()).join('\n');
    return expected.every((sentence) => lines.includes(sentence));
  };
  await eventually(isLogged, expected.join('; '));
});

async function startStandIn(t, applications, identifier) {
  const record = path.join(applications.home, 'messages.json');
  applications.add(identifier);
  const source = `probe().integrations.serve(${JSON.stringify(identifier)}, ${JSON.stringify(record)});`;
  const child = startScript(t, source, { env: { ...session.env, ...applications.env } });
  const messages = () => (fs.existsSync(record) ? JSON.parse(fs.readFileSync(record, 'utf8')) : []);
  messages.hang = () => child.process.kill('SIGSTOP');
  const names = path.join(session.env.TMPDIR, 'NSMessagePort', 'names', Buffer.from(identifier).toString('base64'));
  await eventually(() => fs.existsSync(names), 'the application can be scripted');
  return messages;
}

/** Writes archives: a Python program with `make(name, entries)`. */
const writeArchives = (folder, source) =>
  execFileSync('python3', [
    '-c',
    `import os, sys, zipfile
os.chdir(sys.argv[1])
def make(name, entries):
    with zipfile.ZipFile(name, 'w', zipfile.ZIP_DEFLATED) as z:
        for entry, data in entries: z.writestr(entry, data)
${source}`,
    folder,
  ]);

test('a note in Evernote gets the page and its attachments, with archives unpacked', async (t) => {
  const applications = new Applications(t);
  const messages = await startStandIn(t, applications, 'com.evernote.Evernote');
  const folder = temporaryDirectory(t);
  writeArchives(folder, "make('files.ZIP', [('one.txt', '1')])");
  const attachments = [path.join(folder, 'a b.pdf'), path.join(folder, 'files.ZIP')];
  const { call } = await startAmong(t, applications);
  await call('clipPage', 'evernote', { url: 'u', html: '<p>x</p>', attachments });
  await eventually(() => messages().at(-1)?.[0] === 'open', 'the note is opened');
  const [create, source, html, plain, unpacked, open] = messages();
  assert.deepStrictEqual(create, ['create', ['', 'Tessaro', null]]);
  assert.deepStrictEqual(source, ['sourceURL', ['u']]);
  assert.deepStrictEqual([html, plain], [['append', ['<p>x</p>', null]], ['append', [null, attachments[0]]]]); // prettier-ignore
  assert.match(unpacked[1][1], /\/files\.ZIP.*\/one\.txt$/);
  assert.strictEqual(fs.existsSync(unpacked[1][1]), false);
  assert.deepStrictEqual(open, ['open', []]);
});

test('DEVONthink imports the mail, or the page when there is no mail', async (t) => {
  const applications = new Applications(t);
  const messages = await startStandIn(t, applications, 'com.devon-technologies.think3');
  const { call } = await startAmong(t, applications);
  const record = (file) => [
    ['import', [file, page.title, 0x616c6c20]],
    ['URL', [page.url]],
    ['thumbnail', []],
    ['aliases', [page['web-url']]],
    ['open', []],
  ];
  await call('clipPage', 'devonthink', { ...page, 'eml-path': '/a.eml', 'html-path': '/a.html' });
  await eventually(() => messages().length >= 5, 'the first record is opened');
  await call('clipPage', 'devonthink', { ...page, 'html-path': '/a.html' });
  await eventually(() => messages().length >= 10, 'the second record is opened');
  assert.deepStrictEqual(messages(), [...record('/a.eml'), ...record('/a.html')]);
});

test('an application that hangs delays neither script nor other applications', async (t) => {
  const applications = new Applications(t);
  const messages = await startStandIn(t, applications, 'com.evernote.Evernote');
  applications.add('com.todoist.mac.Todoist', { types: ['x-scheme-handler/todoist'] });
  messages.hang();
  const { call, tell } = await startAmong(t, applications);
  const isLate = await tell(({ hasPassed, native }, page) => {
    const start = Date.now();
    for (let i = 0; i < 4; ++i) native.clipPage('evernote', page);
    native.importIntoApplication('com.evernote.Evernote', '/etc/hostname');
    return hasPassed(start, 2000);
  }, page);
  assert.strictEqual(isLate, false);
  await call('clipPage', 'todoist', page);
  assert.strictEqual((await applications.wordsOf('com.todoist.mac.Todoist')).length, 1);
});

test('Photos and Receipts get files; archives are unpacked beside themselves', async (t) => {
  const applications = new Applications(t);
  const { at: file, folder, write } = temporaryFiles(t);
  writeArchives(folder, "make('photos.zip', [(name, name) for name in ('a.JPG', 'b.tiff', 'c.txt', 'd.png')])");
  const [photos, receipts] = ['com.apple.Photos', 'com.apperdeck.mac.Receipts'];
  for (const id of [photos, receipts]) applications.add(id, { argument: '%f' });
  write('mail.eml', '');
  write('x.png', Buffer.from('\x89PNG\r\n\x1a\n', 'latin1'));
  const { call } = await startAmong(t, applications);
  const imports = async (id, name, opened = name) => {
    await call('importIntoApplication', id, file(name));
    assert.deepStrictEqual(await applications.wordsOf(id), [file(opened)]);
  };
  await imports(photos, 'photos.zip', 'photos');
  assert.deepStrictEqual(fs.readdirSync(file('photos')).sort(), ['a.JPG', 'b.tiff']);
  // Imported again, the archive brings back what is missing and keeps what the user has changed.
  fs.writeFileSync(file('photos/a.JPG'), 'changed');
  fs.rmSync(file('photos/b.tiff'));
  await imports(photos, 'photos.zip', 'photos');
  const contents = ['a.JPG', 'b.tiff'].map((name) => fs.readFileSync(file(`photos/${name}`), 'utf8'));
  assert.deepStrictEqual(contents, ['changed', 'b.tiff']);
  await imports(photos, 'x.png');
  await imports(receipts, 'mail.eml');
  await call('clipPage', 'receipts', { 'eml-path': file('mail.eml') });
  assert.deepStrictEqual(await applications.wordsOf(receipts), [file('mail.eml')]);
});

test('printing opens a viewer, and never prints without a dialog', async (t) => {
  const applications = new Applications(t);
  const file = temporaryFiles(t).write('-p.pdf', '');
  for (const name of ['lp', 'lpr']) applications.addProgram(name);
  applications.add('org.example.Viewer', { types: ['application/pdf'], argument: '%f' });
  applications.mimeApps('[Default Applications]\napplication/pdf=org.example.Viewer.desktop\n');
  const { call } = await startAmong(t, applications);
  for (const viewer of ['org.example.Viewer', 'evince-previewer']) {
    if (viewer === 'evince-previewer') applications.addProgram(viewer);
    await call('printPath', file);
    assert.deepStrictEqual(await applications.wordsOf(viewer), [file]);
  }
  for (const name of ['lp', 'lpr']) assert.ok(!fs.existsSync(applications.recordOf(name)), name);
});

const withoutDisplay = scenarios();

withoutDisplay.test('HTML is converted to plain text', ({ equal, integrations }) => {
  const table = [
    ['', ''],
    ['<p>a<p>b', 'a\n\nb'],
    ['<div>a</div><div>b</div>', 'a\nb'],
    ['a<br>b<br/><br>c', 'a\nb\n\nc'],
    ['<ul><li>one<li>two</ul>', '• one\n• two'],
    ['<table><tr><td>1<td>2<tr><td>3</table>', '1\t2\n3'],
    ['<pre>a\n  b</pre>', 'a\n  b'],
    ['  a \n\t b  ', 'a b'],
    ['<script>x</script><style>y</style><title>z</title>t', 't'],
    ['&lt;b&gt; &amp; &#128512; &euro;', '<b> & 😀 €'],
    [`${'<div>'.repeat(200000)}x`, 'x'],
  ];
  for (const [html, plain] of table) equal(integrations.textFromHTML(html), plain);
  integrations.textFromHTML('\u0000<<>&;<!-- x');
  equal(integrations.textFromHTML('<p>line</p>'.repeat(1000000)).length, 6000000 - 2);
});

test('hostile archives write nothing outside of their folder, and end at a limit', async (t) => {
  const folder = temporaryDirectory(t);
  const hostile = `link = zipfile.ZipInfo('link'); link.external_attr = 0o120777 << 16; link.create_system = 3
make('up.zip', [('../up.txt', 'x'), ('a/../../up2.txt', 'x'), ('/tmp/ts-absolute.txt', 'x'), ('in.txt', 'y')])
make('link.zip', [(link, '/tmp'), ('link/ts-through.txt', 'x')])
make('many.zip', [(str(i), '') for i in range(10050)])
make('bomb.zip', [(str(i), b'\\0' * (200 << 20)) for i in range(6)])
open('damaged.zip', 'wb').write(open('up.zip', 'rb').read()[:60])
make('whole.zip', [(zipfile.ZipInfo('in.txt'), 'content')])
open('changed.zip', 'wb').write(open('whole.zip', 'rb').read().replace(b'content', b'changed'))`;
  writeArchives(folder, hostile);
  const rows = ['up', 'link', 'many', 'bomb', 'changed', 'damaged', 'missing'].map((name, i) => [name, i < 2]);
  const unpack = ({ integrations }, name, within) =>
    integrations.unpackZip(`${within}/${name}.zip`, `${within}/out/${name}`);
  await withoutDisplay.table(t, rows, unpack, folder);
  assert.deepStrictEqual(fs.readdirSync(path.join(folder, 'out', 'up')), ['in.txt']);
  assert.deepStrictEqual(fs.readdirSync(path.join(folder, 'out')).sort(), ['bomb', 'changed', 'link', 'many', 'up']);
  assert.deepStrictEqual(fs.readdirSync(path.join(folder, 'out', 'changed')), []);
  for (const file of ['/tmp/ts-absolute.txt', '/tmp/ts-through.txt']) assert.ok(!fs.existsSync(file));
});

const withHost = scenarios({ display: true, fixture: ({ captureLog }) => captureLog() ?? {} });

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
  const inHome = withHost.with({ home });
  const uninstall = async ({ native }) => native.uninstallPDFServices();
  await inHome(t, async () => {});
  assert.deepStrictEqual(fs.readdirSync(services).sort(), ['Mail PDF with Tessaro', 'foreign']);
  assert.strictEqual(fs.realpathSync(entry), fs.realpathSync(bundle));
  await inHome(t, uninstall);
  assert.deepStrictEqual(fs.readdirSync(services), ['foreign']);
  fs.rmSync(path.join(services, 'foreign'));
  await inHome(t, uninstall);
  assert.strictEqual(fs.existsSync(services), false);
});

test('Timing gets the callback’s list, or an empty one', async (t) => {
  const application = await withHost.resident(t);
  await application.tell(({ host, native }) => {
    host.setKeepAlive(true);
    const answers = ['["Inbox – ann","tessaro://1"]', 'no JSON', undefined, '{}'];
    native.registerAppleEventForTimingApp(() => answers.shift());
    native.registerAppleEventForTimingApp(() => '["second"]');
  });
  const question = ['--session', '--print-reply=literal', '--dest=org.tessaro.TessaroHost', '/org/tessaro/Timing'];
  const ask = async () =>
    (await run('dbus-send', [...question, 'org.tessaro.Timing.List'])).replace(/\s+/g, ' ').trim();
  assert.strictEqual(await ask(), 'array [ Inbox – ann tessaro://1 ]');
  for (let i = 0; i < 3; ++i) assert.strictEqual(await ask(), 'array [ ]');
  const lines = (await application.tell(({ log }) => log())).join('\n');
  assert.match(lines, /Cannot register app event listener twice/);
  assert.match(lines, /Couldn't get valid result from sCallback/);
});
