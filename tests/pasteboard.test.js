'use strict';

const assert = require('assert');
const { execFileSync, spawn } = require('child_process');
const crypto = require('crypto');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { eventually, temporaryDirectory } = require('./support/child');
const { endWith } = require('./support/cleanup');
const { scenarios } = require('./support/scenario');

const inSession = scenarios({
  display: true,
  host: false,
  fixture: () => ({
    /** What another program reads from the clipboard. */
    readByXclip: (target) =>
      new Promise((resolve) => {
        const args = ['-selection', 'clipboard', '-o', '-t', target];
        const options = { encoding: 'buffer', maxBuffer: 100 << 20 };
        require('child_process').execFile('xclip', args, options, (error, out) => resolve(out));
      }),
    digest: (bytes) => require('crypto').createHash('sha256').update(bytes).digest('hex'),
  }),
});
const { session } = inSession;

const selection = ['-selection', 'clipboard'];

/** Another program at the same clipboard. It owns what it has put there until the test ends, or another program takes over. */
async function putByXclip(t, content, target = 'UTF8_STRING') {
  const child = spawn('xclip', [...selection, '-i', '-quiet', '-t', target], {
    env: { ...process.env, ...session.env },
    stdio: ['pipe', 'ignore', 'ignore'],
  });
  endWith(t, child);
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

test('a snapshot is taken once, survives later contents, and is restored once', async (t) => {
  await putByXclip(t, 'Grüße 😀\nfrom another program');
  const seen = await inSession(t, async ({ native, pasteboard, readByXclip }) => {
    const value = () => native.getValueOfPasteboardType('NSStringPboardType');
    const seen = [native.restoreGeneralPasteboard(), native.saveGeneralPasteboard()];
    pasteboard.put({ text: 'of the module' });
    seen.push(native.saveGeneralPasteboard(), value());
    seen.push(native.restoreGeneralPasteboard(), native.restoreGeneralPasteboard(), value());
    return [...seen, `${await readByXclip('UTF8_STRING')}`];
  });
  const text = 'Grüße 😀\nfrom another program';
  assert.deepStrictEqual(seen, [false, true, false, '["of the module"]', true, false, JSON.stringify([text]), text]);
});

test('a snapshot of the application’s own contents restores every type, byte by byte', async (t) => {
  const types = { a: '', b: 'AAH+/w==', 'public.html': 'PGI+' };
  const contents = [{ types }, { files: ['/tmp/a b', '/tmp/%41'] }, { types: {} }];
  const seen = await inSession(
    t,
    ({ native, pasteboard }, all) =>
      all.flatMap((content) => {
        pasteboard.put(content);
        const isSaved = native.saveGeneralPasteboard();
        pasteboard.put({ text: 'between' });
        const isRestored = native.restoreGeneralPasteboard();
        return [isSaved, isRestored, pasteboard.data(), native.getValueOfPasteboardType('public.file-url')];
      }),
    contents,
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
    async ({ digest, native, pasteboard, readByXclip }, image) => {
      const seen = [pasteboard.largeValueSurvives(64 << 20)];
      seen.push(native.writeFileContentsToGeneralPasteboard(image), native.doesPasteboardContainImage());
      native.setFindStringToPasteboard('still there');
      return [...seen, native.getFindStringFromPasteboard(), digest(await readByXclip('image/png'))];
    },
    file,
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
      async ({ digest, native, pasteboard, readByXclip }, kind, isSmall, asked) => {
        const before = pasteboard.types();
        const seen = [native.doesPasteboardContainImage(), before.includes(kind)];
        const strings = isSmall ? JSON.parse(native.getValueOfPasteboardType(kind)) : [];
        seen.push(native.saveGeneralPasteboard());
        pasteboard.put({ text: 'between' });
        seen.push(native.restoreGeneralPasteboard(), pasteboard.types().join() === before.join());
        return [...seen, digest(await readByXclip(asked)), strings];
      },
      type,
      bytes.length < 1024,
      target,
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
  const seen = await inSession(t, ({ native }) => native.getValueOfPasteboardType('public.file-url'));
  assert.deepStrictEqual(JSON.parse(seen), ['file:///tmp/a%20b', 'file:///tmp/%2541']);
});

test('a list of a million files holds script for two seconds at most', async (t) => {
  await putByXclip(t, Buffer.from('file:///tmp/a\r\n'.repeat(1e6)), 'text/uri-list');
  const [count, elapsed] = await inSession(t, ({ native }) => {
    const start = Date.now();
    const files = JSON.parse(native.getValueOfPasteboardType('public.file-url'));
    return [files.length, Date.now() - start];
  });
  assert.strictEqual(count, 20000);
  assert.ok(elapsed < 2000, `${elapsed} ms`);
});

test('data with a provider are provided on the first request, once', async (t) => {
  const seen = await inSession(t, async ({ native, pasteboard, readByXclip }) => {
    const ask = async (target) => `${await readByXclip(target)}`;
    pasteboard.offerLazily();
    const seen = [(await ask('TARGETS')).includes('image/png'), pasteboard.timesProvided()];
    seen.push(await ask('image/png'), await ask('image/png'), pasteboard.timesProvided());
    return [
      ...seen,
      await ask('text/html'),
      native.getValueOfPasteboardType('public.html'),
      pasteboard.timesProvided(),
    ];
  });
  const [html, png] = ['of public.html', 'of public.png'];
  assert.deepStrictEqual(seen, [true, 0, png, png, 1, html, JSON.stringify([html]), 2]);
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
    ({ native, pasteboard }, written, refused, unreadable) => {
      const write = native.writeFileContentsToGeneralPasteboard;
      const seen = written.map((file) => [write(file), pasteboard.data(), native.doesPasteboardContainImage()]);
      const before = JSON.stringify(pasteboard.data());
      seen.push(
        refused.map((file) => write(file)),
        JSON.stringify(pasteboard.data()) === before,
      );
      seen.push(unreadable.map((file) => write(file)));
      pasteboard.put({ text: 'x' });
      return [...seen, native.doesPasteboardContainImage()];
    },
    table.map(([name]) => path.join(folder, name)),
    refused,
    unreadable,
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
  const first = await inSession(t, ({ native }) => {
    native.setFindStringToPasteboard('nä\0chste 😀');
    return native.getFindStringFromPasteboard();
  });
  const second = await inSession(t, ({ native }) => native.getFindStringFromPasteboard());
  assert.deepStrictEqual([first, second], ['nä\0chste 😀', 'nä\0chste 😀']);
});

test('a program that does not answer leaves the clipboard unread, and holds script for two seconds at most', async (t) => {
  const owner = await putByXclip(t, 'from a program that hangs');
  owner.kill('SIGSTOP');
  const [elapsed, ...seen] = await inSession(t, ({ native }) => {
    const start = Date.now();
    const value = native.getValueOfPasteboardType;
    const seen = [value('no.such.type'), value('NSStringPboardType'), native.saveGeneralPasteboard()];
    return [Date.now() - start, ...seen];
  });
  assert.deepStrictEqual(seen, [null, null, false]);
  assert.ok(elapsed < 2500, `${elapsed} ms`);
});

test('a program that ends while it is read fails the snapshot at once', async (t) => {
  const owner = await putByXclip(t, 'from a program that ends');
  owner.kill('SIGSTOP');
  const asking = await inSession.resident(t);
  const asked = asking.tell(({ native, report }) => {
    report('asking');
    const start = Date.now();
    return [native.saveGeneralPasteboard(), Date.now() - start];
  });
  await asking.report(0);
  // The read is under way when the process waits; nothing else shows that it has begun.
  const isWaiting = () => /poll|select/.test(fs.readFileSync(`/proc/${asking.process.pid}/wchan`, 'latin1'));
  await eventually(isWaiting, 'the read', 500).catch(() => {});
  owner.kill('SIGKILL');
  const [isSaved, elapsed] = await asked;
  assert.strictEqual(isSaved, false);
  assert.ok(elapsed < 2500, `${elapsed} ms`);
});

test('addresses are written in all forms that other programs take', async (t) => {
  const two = ['https://a.example/', 'https://b.example/'];
  const seen = await inSession(t, ({ pasteboard }, all) => all.map((urls) => pasteboard.putURLs(...urls)), [
    [['https://a.example/?q=1'], ['Tïtle']],
    [two],
    [[]],
  ]);
  const url = 'https://a.example/?q=1';
  assert.deepStrictEqual(seen, [
    [[[url], ['Tïtle']], url, url, 'Tïtle', true],
    [[two, ['', '']], two.join('\n'), two[0], '', false],
    [[[], []], null, null, null, false],
  ]);
});
