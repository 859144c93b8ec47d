'use strict';

const assert = require('assert');
const { execFileSync, spawn } = require('child_process');
const crypto = require('crypto');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { evaluate, eventually, startScript, temporaryDirectory } = require('./support/child');
const { useSession } = require('./support/session');

const session = useSession();

const selection = ['-selection', 'clipboard'];

/** Another program at the same clipboard. It owns what it has put there until the test ends, or another program takes over. */
async function putByXclip(t, content, target = 'UTF8_STRING') {
  const child = spawn('xclip', [...selection, '-i', '-quiet', '-t', target], {
    env: { ...process.env, ...session.env },
    stdio: ['pipe', 'ignore', 'ignore'],
  });
  t.after(() => child.kill('SIGKILL'));
  child.stdin.end(content);
  await eventually(() => readByXclip(target)?.equals(Buffer.from(content)), 'xclip has the clipboard');
  return child;
}

function readByXclip(target = 'UTF8_STRING') {
  try {
    return execFileSync('xclip', [...selection, '-o', '-t', target], {
      env: { ...process.env, ...session.env },
      maxBuffer: 100 << 20,
      stdio: ['ignore', 'pipe', 'ignore'],
      timeout: 20000,
    });
  } catch {
    return null;
  }
}

const digest = (bytes) => crypto.createHash('sha256').update(bytes).digest('hex');

const prelude = `
  const { execFile } = require('child_process');
  const digest = (bytes) => require('crypto').createHash('sha256').update(bytes).digest('hex');
  const large = { encoding: 'buffer', maxBuffer: 100 << 20 };
  const { module: m, menus } = probe();`;

const inSession = (t, source) => evaluate(t, `${prelude}\n${source}`, { env: session.env });

test('a snapshot is taken once, survives later contents, and is restored once', async (t) => {
  await putByXclip(t, 'Grüße 😀\nfrom another program');
  const seen = await inSession(
    t,
    `const seen = [m.restoreGeneralPasteboard(), m.saveGeneralPasteboard()];
     menus.putOnPasteboard(JSON.stringify({ text: 'of the module' }));
     seen.push(m.saveGeneralPasteboard(), m.getValueOfPasteboardType('NSStringPboardType'));
     seen.push(m.restoreGeneralPasteboard(), m.restoreGeneralPasteboard(), m.getValueOfPasteboardType('NSStringPboardType'));
     execFile('xclip', ['-selection', 'clipboard', '-o', '-t', 'UTF8_STRING'], (error, out) => {
       console.log(JSON.stringify([...seen, out]));
       process.exit();
     });`,
  );
  const text = 'Grüße 😀\nfrom another program';
  assert.deepStrictEqual(seen, [false, true, false, '["of the module"]', true, false, JSON.stringify([text]), text]);
});

test('a snapshot of the application’s own contents restores every type, byte by byte', async (t) => {
  const types = { a: '', b: 'AAH+/w==', 'public.html': 'PGI+' };
  const seen = await inSession(
    t,
    `const seen = [];
     for (const content of [{ types: ${JSON.stringify(types)} }, { files: ['/tmp/a b', '/tmp/%41'] }, { types: {} }]) {
       menus.putOnPasteboard(JSON.stringify(content));
       seen.push(m.saveGeneralPasteboard());
       menus.putOnPasteboard(JSON.stringify({ text: 'between' }));
       seen.push(m.restoreGeneralPasteboard(), JSON.parse(menus.pasteboardTypes('null')), m.getValueOfPasteboardType('public.file-url'));
     }
     console.log(JSON.stringify(seen));`,
  );
  const [[fileType]] = seen[6];
  const files = JSON.stringify(['file:///tmp/a%20b', 'file:///tmp/%2541']);
  assert.deepStrictEqual(seen.slice(0, 5), [true, true, Object.entries(types), '[]', true]);
  assert.deepStrictEqual([fileType, seen[7]], ['NSFilenamesPboardType', files]);
  assert.deepStrictEqual(seen.slice(8), [true, true, [], '[]']);
});

test('64 MiB come back whole, and go to other programs in pieces', async (t) => {
  const file = path.join(temporaryDirectory(t), 'large.png');
  const bytes = crypto.randomBytes(64 << 20);
  fs.writeFileSync(file, bytes);
  const seen = await inSession(
    t,
    `const seen = [...JSON.parse(menus.largeValueSurvives(JSON.stringify({ bytes: ${64 << 20} })))];
     seen.push(m.writeFileContentsToGeneralPasteboard(${JSON.stringify(file)}), m.doesPasteboardContainImage());
     m.setFindStringToPasteboard('still there');
     seen.push(m.getFindStringFromPasteboard());
     execFile('xclip', ['-selection', 'clipboard', '-o', '-t', 'image/png'], large, (error, out) => {
       console.log(JSON.stringify([...seen, digest(out)]));
       process.exit();
     });`,
  );
  assert.deepStrictEqual(seen, [true, true, 1, 'still there', digest(bytes)]);
});

test('what other programs copy is saved and restored byte by byte', async (t) => {
  const html = '<p>Grüße &amp; <b>😀</b></p>';
  const table = [
    ['text/html', 'public.html', Buffer.from(html)],
    ['image/png', 'public.png', crypto.randomBytes(64 << 20)],
    ['image/jpeg', 'public.jpeg', Buffer.from([0xff, 0xd8, 0, 10, 255])],
    ['application/x-of-its-own', 'application/x-of-its-own', Buffer.from([0, 1, 2])],
    ['text/uri-list', 'text/uri-list', Buffer.from('file:///tmp/a%20b\r\nhttps://a.example/\r\n')],
    ['UTF8_STRING', 'UTF8_STRING', Buffer.from('\ufeffwith a byte order mark')],
    ['UTF8_STRING', 'UTF8_STRING', Buffer.from([0x61, 0xff, 0xc3, 0x28, 0x62])],
    ['UTF8_STRING', 'UTF8_STRING', Buffer.alloc(0)],
    ['STRING', 'STRING', Buffer.from([0x47, 0x72, 0xfc, 0xdf, 0x65])],
  ];
  for (const [target, type, bytes] of table) {
    const owner = await putByXclip(t, bytes, target);
    const seen = await inSession(
      t,
      `const types = () => menus.typesOnPasteboard('null');
       const before = types();
       const seen = [m.doesPasteboardContainImage(), JSON.parse(before).includes(${JSON.stringify(type)})];
       const strings = ${bytes.length < 1024} ? JSON.parse(m.getValueOfPasteboardType(${JSON.stringify(type)})) : [];
       seen.push(m.saveGeneralPasteboard());
       menus.putOnPasteboard(JSON.stringify({ text: 'between' }));
       seen.push(m.restoreGeneralPasteboard(), types() === before);
       execFile('xclip', ['-selection', 'clipboard', '-o', '-t', ${JSON.stringify(target)}], large, (error, out) => {
         console.log(JSON.stringify([...seen, digest(out), strings]));
         process.exit();
       });`,
    );
    const strings = target.startsWith('text/') ? [bytes.toString()] : seen.at(-1);
    const isImage = target.startsWith('image/') ? 1 : 0;
    assert.deepStrictEqual(seen, [isImage, true, true, true, true, digest(bytes), strings], target);
    owner.kill('SIGKILL');
  }
});

test('files of this machine that a file manager copies are items', async (t) => {
  const list =
    'file:///tmp/a%20b\r\n#file:///no\r\nfile://elsewhere/no\r\nhttps://a.example/\r\nfile://localhost/tmp/%2541\r\n';
  await putByXclip(t, Buffer.from(list), 'text/uri-list');
  const seen = await inSession(t, "console.log(m.getValueOfPasteboardType('public.file-url'));");
  assert.deepStrictEqual(seen, ['file:///tmp/a%20b', 'file:///tmp/%2541']);
});

test('a list of a million files holds script for two seconds at most', async (t) => {
  await putByXclip(t, Buffer.from('file:///tmp/a\r\n'.repeat(1e6)), 'text/uri-list');
  const [count, isQuick] = await inSession(
    t,
    `const start = Date.now();
     const files = JSON.parse(m.getValueOfPasteboardType('public.file-url'));
     console.log(JSON.stringify([files.length, Date.now() - start < 2000]));
     process.exit();`,
  );
  assert.deepStrictEqual([count, isQuick], [20000, true]);
});

test('data with a provider are provided on the first request, once', async (t) => {
  const seen = await inSession(
    t,
    `const seen = [menus.offerLazily('null')];
     const ask = (target) => new Promise((resolve) =>
       execFile('xclip', ['-selection', 'clipboard', '-o', '-t', target], large, (error, out) => resolve(out.toString())));
     (async () => {
       seen.push((await ask('TARGETS')).includes('image/png'), menus.timesProvided('null'));
       seen.push(await ask('image/png'), await ask('image/png'), menus.timesProvided('null'));
       seen.push(await ask('text/html'), m.getValueOfPasteboardType('public.html'), menus.timesProvided('null'));
       console.log(JSON.stringify(seen));
       process.exit();
     })();`,
  );
  const [html, png] = ['of public.html', 'of public.png'];
  assert.deepStrictEqual(seen, ['[]', true, '[0]', png, png, '[1]', html, JSON.stringify([html]), '[2]']);
});

test('the contents of image files', async (t) => {
  const folder = temporaryDirectory(t);
  const bytes = Buffer.from([0x89, 0x50, 0x4e, 0x47, 0, 255, 10]);
  const table = [
    ['a.png', 'public.png'],
    ['a.JPEG', 'public.jpg'],
    ['a.jpg', 'public.jpg'],
    ['a.GIF', 'public.gif'],
  ];
  for (const [name] of table) fs.writeFileSync(path.join(folder, name), bytes);
  fs.writeFileSync(path.join(folder, 'a.tiff'), bytes);
  execFileSync('mkfifo', [path.join(folder, 'pipe.png')]);
  const refused = ['a.tiff', 'missing', ''].map((name) => path.join(folder, name));
  const unreadable = ['pipe.png', 'missing.gif'].map((name) => path.join(folder, name));
  const seen = await inSession(
    t,
    `const types = () => JSON.parse(menus.pasteboardTypes('null'));
     const seen = ${JSON.stringify(table)}.map(([name, type]) => {
       const written = m.writeFileContentsToGeneralPasteboard(${JSON.stringify(folder)} + '/' + name);
       return [written, types(), m.doesPasteboardContainImage()];
     });
     const before = types();
     seen.push(${JSON.stringify(refused)}.map((file) => m.writeFileContentsToGeneralPasteboard(file)), JSON.stringify(types()) === JSON.stringify(before));
     seen.push(${JSON.stringify(unreadable)}.map((file) => m.writeFileContentsToGeneralPasteboard(file)));
     menus.putOnPasteboard(JSON.stringify({ text: 'x' }));
     seen.push(m.doesPasteboardContainImage());
     console.log(JSON.stringify(seen));`,
  );
  assert.deepStrictEqual(seen, [
    ...table.map(([, type]) => [true, [[type, bytes.toString('base64')]], 1]),
    [false, false, false],
    true,
    [false, false],
    0,
  ]);
});

test('the find string is shared by all applications', async (t) => {
  const [first] = await inSession(
    t,
    `m.setFindStringToPasteboard('nä\\0chste 😀');
     console.log(JSON.stringify([m.getFindStringFromPasteboard()]));`,
  );
  const [second] = await inSession(t, 'console.log(JSON.stringify([m.getFindStringFromPasteboard()]));');
  assert.deepStrictEqual([first, second], ['nä\0chste 😀', 'nä\0chste 😀']);
});

test('a program that does not answer leaves the clipboard unread, and holds script for two seconds at most', async (t) => {
  const owner = await putByXclip(t, 'from a program that hangs');
  owner.kill('SIGSTOP');
  const seen = await inSession(
    t,
    `const start = Date.now();
     console.log(JSON.stringify([m.getValueOfPasteboardType('no.such.type'), m.getValueOfPasteboardType('NSStringPboardType'),
       m.saveGeneralPasteboard(), Date.now() - start < 2500]));`,
  );
  assert.deepStrictEqual(seen, [null, null, false, true]);
});

test('a program that ends while it is read fails the snapshot at once', async (t) => {
  const owner = await putByXclip(t, 'from a program that ends');
  owner.kill('SIGSTOP');
  const asking = startScript(
    t,
    `const { module: m } = probe();
     require('fs').writeSync(1, 'asking ');
     const start = Date.now();
     require('fs').writeSync(1, JSON.stringify([m.saveGeneralPasteboard(), Date.now() - start < 2500]));`,
    { env: session.env },
  );
  await eventually(() => asking.output.stdout.startsWith('asking'), 'the question');
  // The read is under way by then; nothing on this side shows when it begins.
  await new Promise((resolve) => setTimeout(resolve, 200));
  owner.kill('SIGKILL');
  await asking.printed('asking [false,true]');
});

test('addresses are written in all forms that other programs take', async (t) => {
  const seen = await inSession(
    t,
    `const seen = [[['https://a.example/?q=1'], ['Tïtle']], [['https://a.example/', 'https://b.example/'], null], [[], null]].map(
       (urls) => JSON.parse(menus.putURLs(JSON.stringify(urls))));
     console.log(JSON.stringify(seen));`,
  );
  const url = 'https://a.example/?q=1';
  assert.deepStrictEqual(seen, [
    [[[url], ['Tïtle']], url, url, 'Tïtle', true],
    [
      [
        ['https://a.example/', 'https://b.example/'],
        ['', ''],
      ],
      'https://a.example/\nhttps://b.example/',
      'https://a.example/',
      '',
      false,
    ],
    [[[], []], null, null, null, false],
  ]);
});
