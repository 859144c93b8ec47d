'use strict';

const assert = require('assert');
const { execFileSync, spawn } = require('child_process');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { evaluate, eventually, temporaryDirectory } = require('./support/child');
const { useSession } = require('./support/session');

const session = useSession();

const selection = ['-selection', 'clipboard'];

/** Another program at the same clipboard. It owns what it has put there until the test ends, or somebody else does. */
async function putByXclip(t, text) {
  const child = spawn('xclip', [...selection, '-i', '-quiet'], {
    env: { ...process.env, ...session.env },
    stdio: ['pipe', 'ignore', 'ignore'],
  });
  t.after(() => child.kill('SIGKILL'));
  child.stdin.end(text);
  await eventually(() => readByXclip() === text, 'xclip has the clipboard');
  return child;
}

function readByXclip() {
  try {
    return execFileSync('xclip', [...selection, '-o'], {
      env: { ...process.env, ...session.env },
      encoding: 'utf8',
      stdio: ['ignore', 'pipe', 'ignore'],
      timeout: 5000,
    });
  } catch {
    return null;
  }
}

const inSession = (t, source) => evaluate(t, `const { module: m, menus } = probe();\n${source}`, { env: session.env });

test('a snapshot is taken once, survives what comes after it, and is put back once', async (t) => {
  await putByXclip(t, 'Grüße 😀\nfrom another program');
  const seen = await inSession(
    t,
    `const seen = [m.restoreGeneralPasteboard(), m.saveGeneralPasteboard()];
     menus.putOnPasteboard(JSON.stringify({ text: 'of the module' }));
     seen.push(m.saveGeneralPasteboard(), m.getValueOfPasteboardType('NSStringPboardType'));
     seen.push(m.restoreGeneralPasteboard(), m.restoreGeneralPasteboard(), m.getValueOfPasteboardType('NSStringPboardType'));
     console.log(JSON.stringify(seen));`,
  );
  const text = JSON.stringify(['Grüße 😀\nfrom another program']);
  assert.deepStrictEqual(seen, [false, true, false, '["of the module"]', true, false, text]);
  assert.strictEqual(readByXclip(), 'Grüße 😀\nfrom another program');
});

test('all types come back byte by byte, files one by one', async (t) => {
  const seen = await inSession(
    t,
    `const types = () => JSON.parse(menus.pasteboardTypes('null'));
     const seen = [];
     for (const content of [{ types: { b: 'AAH+/w==', a: '', 'public.html': 'PGI+' } }, { files: ['/tmp/a b', '/tmp/%41'] }, { types: {} }]) {
       menus.putOnPasteboard(JSON.stringify(content));
       const before = types();
       seen.push(m.saveGeneralPasteboard());
       menus.putOnPasteboard(JSON.stringify({ text: 'between' }));
       seen.push(m.restoreGeneralPasteboard(), JSON.stringify(types()) === JSON.stringify(before), before.length);
     }
     menus.putOnPasteboard(JSON.stringify({ files: ['/tmp/a b', '/tmp/%41'] }));
     seen.push(m.getValueOfPasteboardType('public.file-url'));
     console.log(JSON.stringify(seen));`,
  );
  const files = JSON.stringify(['file:///tmp/a%20b', 'file:///tmp/%2541']);
  assert.deepStrictEqual(seen, [true, true, true, 3, true, true, true, 1, true, true, true, 0, files]);
});

test('a large value comes back whole, one that is too large is refused', async (t) => {
  const file = path.join(temporaryDirectory(t), 'large.png');
  fs.writeFileSync(file, Buffer.alloc(64 << 20));
  const seen = await inSession(
    t,
    `const seen = [...JSON.parse(menus.largeValueSurvives(JSON.stringify({ bytes: 12 << 20 })))];
     seen.push(m.writeFileContentsToGeneralPasteboard(${JSON.stringify(file)}));
     m.setFindStringToPasteboard('still there');
     seen.push(m.getFindStringFromPasteboard());
     console.log(JSON.stringify(seen));`,
  );
  assert.deepStrictEqual(seen, [true, false, 'still there']);
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

test('the find string is everybody’s', async (t) => {
  const [first] = await inSession(
    t,
    `m.setFindStringToPasteboard('nä\\0chste 😀');
     console.log(JSON.stringify([m.getFindStringFromPasteboard()]));`,
  );
  const [second] = await inSession(t, 'console.log(JSON.stringify([m.getFindStringFromPasteboard()]));');
  assert.deepStrictEqual([first, second], ['nä\0chste 😀', 'nä\0chste 😀']);
});

test('values of a type nobody has, and a program that doesn’t answer', async (t) => {
  const owner = await putByXclip(t, 'from a program that hangs');
  owner.kill('SIGSTOP');
  const start = Date.now();
  const seen = await inSession(
    t,
    `console.log(JSON.stringify([m.getValueOfPasteboardType('no.such.type'), m.getValueOfPasteboardType('NSStringPboardType'),
       m.saveGeneralPasteboard()]));`,
  );
  assert.deepStrictEqual(seen, ['[]', null, false]);
  assert.ok(Date.now() - start < 30000);
  owner.kill('SIGKILL');
});

test('addresses are written in all forms that others take', async (t) => {
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
