'use strict';

const { assert, scenarios, test } = require('./support');

const inSession = scenarios({
  display: true,
  host: false,
  fixture({ eventually, spawn }) {
    const selection = ['-selection', 'clipboard'];
    /** Contents that another program reads from the clipboard, or null. */
    const read = (target) =>
      new Promise((resolve) => {
        const options = { encoding: 'buffer', maxBuffer: 100 << 20 };
        const args = [...selection, '-o', '-t', target];
        require('child_process').execFile('xclip', args, options, (error, bytes) => resolve(error ? null : bytes));
      });
    return {
      read,
      /** Starts another program that owns these contents until it ends, or another program takes over. */
      async copy(content, target = 'UTF8_STRING') {
        const stdio = ['pipe', 'ignore', 'ignore'];
        const owner = spawn('xclip', [...selection, '-i', '-quiet', '-t', target], { stdio });
        process.on('exit', () => owner.kill('SIGKILL'));
        owner.stdin.end(content);
        await eventually(async () => (await read(target))?.equals(Buffer.from(content)), 'xclip has the clipboard');
        return owner;
      },
    };
  },
});

inSession.test('a snapshot is taken and restored once, with every type', async (fixture) => {
  const { copy, equal, native, pasteboard, read } = fixture;
  const text = 'Grüße 😀\nfrom another program';
  const value = () => JSON.parse(native.getValueOfPasteboardType('NSStringPboardType'));
  await copy(text);
  equal([native.restoreGeneralPasteboard(), native.saveGeneralPasteboard()], [false, true]);
  pasteboard.put({ text: 'of the module' });
  equal([native.saveGeneralPasteboard(), value()], [false, ['of the module']]);
  equal([native.restoreGeneralPasteboard(), native.restoreGeneralPasteboard()], [true, false]);
  equal([value(), `${await read('UTF8_STRING')}`], [[text], text]);
  // The application's own contents are saved byte by byte.
  const types = { a: '', b: 'AAH+/w==', 'public.html': 'PGI+' };
  const table = [
    [{ types }, Object.keys(types), '[]'],
    [{ files: ['/tmp/a b', '/tmp/%41'] }, ['NSFilenamesPboardType'], '["file:///tmp/a%20b","file:///tmp/%2541"]'],
    [{ types: {} }, [], '[]'],
  ];
  for (const [content, names, files] of table) {
    pasteboard.put(content);
    const before = pasteboard.data();
    if (content.types) equal(before, Object.entries(content.types));
    equal(native.saveGeneralPasteboard(), true);
    pasteboard.put({ text: 'between' });
    equal(native.restoreGeneralPasteboard(), true);
    equal(pasteboard.types(), names);
    equal([pasteboard.data(), native.getValueOfPasteboardType('public.file-url')], [before, files]);
  }
});

inSession.test('64 MiB come back whole, and go to other programs in pieces', async (fixture) => {
  const { assert, equal, fs, home, native, pasteboard, read } = fixture;
  const bytes = require('crypto').randomBytes(64 << 20);
  fs.writeFileSync(`${home}/large.png`, bytes);
  const isWritten = native.writeFileContentsToGeneralPasteboard(`${home}/large.png`);
  equal([isWritten, native.doesPasteboardContainImage(), native.saveGeneralPasteboard()], [true, 1, true]);
  pasteboard.put({ text: 'between' });
  equal([native.restoreGeneralPasteboard(), pasteboard.types()], [true, ['public.png']]);
  native.setFindStringToPasteboard('still there');
  equal(native.getFindStringFromPasteboard(), 'still there');
  assert.ok((await read('image/png')).equals(bytes));
});

inSession.test('contents of other programs are saved and restored byte by byte', async (fixture) => {
  const { assert, copy, equal, eventually, native, pasteboard, read } = fixture;
  const table = [
    ['text/html', 'public.html', '<p>Grüße &amp; <b>😀</b></p>'],
    ['image/png', 'public.png', require('crypto').randomBytes(4 << 20)],
    ['image/jpeg', 'public.jpeg', [0xff, 0xd8, 0, 10, 255]],
    ['application/x-of-its-own', 'application/x-of-its-own', [0, 1, 2]],
    ['text/uri-list', 'text/uri-list', 'file:///tmp/a%20b\r\nhttps://a.example/\r\n'],
    ['UTF8_STRING', 'UTF8_STRING', '\ufeffwith a byte order mark'],
    ['UTF8_STRING', 'UTF8_STRING', [0x61, 0xff, 0xc3, 0x28, 0x62]],
    ['UTF8_STRING', 'UTF8_STRING', ''],
    ['STRING', 'STRING', [0x47, 0x72, 0xfc, 0xdf, 0x65]],
  ];
  for (const [target, type, content] of table) {
    const bytes = Buffer.from(content);
    const owner = await copy(bytes, target);
    const before = pasteboard.types();
    equal([native.doesPasteboardContainImage(), before.includes(type)], [target.startsWith('image/') ? 1 : 0, true]);
    if (target.startsWith('text/')) equal(JSON.parse(native.getValueOfPasteboardType(type)), [content]);
    // A busy machine may need more than the two seconds that script waits for another program.
    await eventually(() => native.saveGeneralPasteboard(), 'the snapshot');
    pasteboard.put({ text: 'between' });
    equal(native.restoreGeneralPasteboard(), true);
    equal(pasteboard.types(), before);
    assert.ok((await read(target)).equals(bytes), target);
    owner.kill('SIGKILL');
  }
});

inSession.test('files of this machine are items; values are bounded in time and size', async (fixture) => {
  const { assert, copy, equal, hasPassed, native, pasteboard } = fixture;
  const read = () => JSON.parse(native.getValueOfPasteboardType('public.file-url'));
  const foreign = '#file:///no\r\nfile://elsewhere/no\r\nhttps://a.example/\r\n';
  await copy(`file:///tmp/a%20b\r\n${foreign}file://localhost/tmp/%2541\r\n`, 'text/uri-list');
  equal(read(), ['file:///tmp/a%20b', 'file:///tmp/%2541']);
  await copy('file:///tmp/a\r\n'.repeat(1e6), 'text/uri-list');
  const start = Date.now();
  equal(read().length, 20000);
  assert.ok(!hasPassed(start, 2000), `${Date.now() - start} ms`);
  // Also a value that comes in one piece.
  await copy('x'.repeat(2000));
  equal([pasteboard.lengthWithin(2000), pasteboard.lengthWithin(1999)], [2000, -1]);
});

inSession.test('data with a provider are provided on the first request, once', async (fixture) => {
  const { assert, equal, native, pasteboard, read } = fixture;
  const ask = async (target) => `${await read(target)}`;
  pasteboard.offerLazily();
  assert.ok((await ask('TARGETS')).includes('image/png'));
  equal(pasteboard.timesProvided(), 0);
  equal([await ask('image/png'), await ask('image/png')], Array(2).fill('of public.png'));
  equal(pasteboard.timesProvided(), 1);
  const html = 'of public.html';
  equal([await ask('text/html'), native.getValueOfPasteboardType('public.html')], [html, JSON.stringify([html])]);
  equal(pasteboard.timesProvided(), 2);
});

inSession.test('image files are copied by their extensions, and others are refused', async (fixture) => {
  const { equal, fs, home, native, pasteboard, run } = fixture;
  await run('mkfifo', `${home}/pipe.png`);
  const content = Buffer.from([0x89, 0x50, 0x4e, 0x47, 0, 255, 10]);
  const write = (name) => native.writeFileContentsToGeneralPasteboard(`${home}/${name}`);
  const types = { 'a.png': 'public.png', 'a.JPEG': 'public.jpg', 'a.jpg': 'public.jpg', 'a.GIF': 'public.gif' };
  for (const name of [...Object.keys(types), 'a.tiff']) fs.writeFileSync(`${home}/${name}`, content);
  for (const [name, type] of Object.entries(types)) {
    equal([write(name), native.doesPasteboardContainImage()], [true, 1]);
    equal(pasteboard.data(), [[type, content.toString('base64')]]);
  }
  const before = pasteboard.data();
  for (const name of ['a.tiff', 'missing', '']) equal([write(name), pasteboard.data()], [false, before]);
  fs.writeFileSync(`${home}/huge.png`, '');
  fs.truncateSync(`${home}/huge.png`, (256 << 20) + 1);
  for (const name of ['pipe.png', 'missing.gif', 'huge.png']) equal(write(name), false);
  pasteboard.put({ text: 'x' });
  equal(native.doesPasteboardContainImage(), 0);
});

test('the find string is shared by all applications', async (t) => {
  const set = ({ native }) => native.setFindStringToPasteboard('nä\0chste 😀') ?? native.getFindStringFromPasteboard();
  for (const run of [set, ({ native }) => native.getFindStringFromPasteboard()]) {
    assert.strictEqual(await inSession(t, run), 'nä\0chste 😀');
  }
});

inSession.test('a program that hangs holds script for two seconds at most', async (fixture) => {
  const { assert, copy, equal, hasPassed, native, nextTurn, spawn } = fixture;
  const owner = await copy('from a program that hangs');
  owner.kill('SIGSTOP');
  let start = Date.now();
  const value = native.getValueOfPasteboardType;
  equal([value('no.such.type'), value('NSStringPboardType'), native.saveGeneralPasteboard()], [null, null, false]);
  assert.ok(!hasPassed(start, 2500), `${Date.now() - start} ms`);
  await nextTurn();
  // The same when the program ends while it is read.
  spawn('sh', ['-c', `sleep 0.2; kill -KILL ${owner.pid}`], { stdio: 'ignore' });
  start = Date.now();
  equal(native.saveGeneralPasteboard(), false);
  assert.ok(!hasPassed(start, 2500), `${Date.now() - start} ms`);
});

inSession.test('addresses are written in all forms that other programs take', ({ equal, sendMessage: send }) => {
  const general = send('NSPasteboard', 'generalPasteboard');
  const bytesOf = (type) => {
    const base64 = send(general, 'dataForType:', `CorePasteboardFlavorType ${type}`);
    return base64 && `${Buffer.from(base64, 'base64')}`;
  };
  const url = 'https://a.example/?q=1';
  const two = ['https://a.example/', 'https://b.example/'];
  const table = [
    [[url], ['Tïtle'], ['Tïtle'], url, url, 'Tïtle', true],
    [two, null, ['', ''], two.join('\n'), two[0], '', false],
    [[], null, [], null, null, null, false],
  ];
  for (const [urls, titles, written, text, first, title, isUrl] of table) {
    send(general, 'ts_declareURLPasteboardWithAdditionalTypes:owner:', ['org.tessaro.more'], null);
    send(general, 'ts_setURLs:withTitles:', urls, titles);
    equal(send(general, 'propertyListForType:', 'WebURLsWithTitlesPboardType'), [urls, written]);
    equal([send(general, 'stringForType:', 'NSStringPboardType'), bytesOf('0x75726C20'), bytesOf('0x75726C6E')], [text, first, title]); // prettier-ignore
    equal(send('NSURL', 'URLFromPasteboard:', general) !== null, isUrl);
  }
});
