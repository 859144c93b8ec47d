'use strict';

// Writing files from script: what ends up on the disk, and what is told when it can't.

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { evaluate, temporaryDirectory } = require('./support/child');

const prelude = `
  const fs = require('fs');
  const { module: m } = probe();
  const print = (value) => console.log(JSON.stringify(value ?? null));
`;

const write = (t, folder, source, options) =>
  evaluate(t, `${prelude} const folder = ${JSON.stringify(folder)}; ${source}`, options);

// A root who has lost the right to pass over permissions is like anybody else.
const likeAnybody =
  process.getuid() === 0 ? { within: ['setpriv', '--bounding-set=-dac_override,-dac_read_search'] } : {};

const temporaries = (folder) => fs.readdirSync(folder).filter((name) => name.startsWith('.new-'));

test('Buffers, typed arrays and ArrayBuffers are written, other values refused', async (t) => {
  const folder = temporaryDirectory(t);
  const cases = [
    ['Buffer.from("Zoë\\0!")', 'Zoë\0!'],
    ['Buffer.alloc(0)', ''],
    ['new Uint8Array([65, 66])', 'AB'],
    ['new Uint8Array(new Uint8Array([1, 2, 65, 66, 3]).buffer, 2, 2)', 'AB'],
    ['new Uint16Array([0x4241])', 'AB'],
    ['new DataView(new Uint8Array([67, 65, 66]).buffer, 1)', 'AB'],
    ['new Uint8Array([65, 66]).buffer', 'AB'],
    ['new Uint8Array(new SharedArrayBuffer(2)).fill(65)', 'AA'],
  ];
  const file = path.join(folder, 'file');
  for (const [data, contents] of cases) {
    const result = await write(t, folder, `print(m.writeFile(folder + '/file', ${data}, false));`);
    assert.deepStrictEqual([result, fs.readFileSync(file, 'utf8')], [null, contents], data);
  }
  const refused = await write(
    t,
    folder,
    `print([{}, [65], new Date(), () => 1, new String('AB'), new Map()].map((data) => m.writeFile(folder + '/other', data, false)));`,
  );
  assert.ok(refused.every((text) => /Only a Buffer/.test(text)));
  assert.deepStrictEqual(fs.readdirSync(folder), ['file']);
});

test('replacing keeps the permissions, and writes through links', async (t) => {
  const folder = temporaryDirectory(t);
  const at = (name) => path.join(folder, name);
  fs.writeFileSync(at('private'), 'old and longer', { mode: 0o640 });
  fs.mkdirSync(at('elsewhere'));
  fs.symlinkSync('private', at('link'));
  fs.symlinkSync('elsewhere/new', at('dangling'));
  fs.symlinkSync('loop', at('loop'));
  const results = await write(
    t,
    folder,
    `process.umask(0o027);
     print(['private', 'link', 'dangling', 'fresh', 'loop', 'elsewhere/../up'].map((name) => m.writeFile(folder + '/' + name, Buffer.from(name), false) ?? null));`,
  );
  assert.deepStrictEqual(results.slice(0, 4), [null, null, null, null]);
  assert.match(results[4], /Too many levels/);
  assert.strictEqual(results[5], null);
  assert.ok(fs.lstatSync(at('link')).isSymbolicLink() && fs.lstatSync(at('dangling')).isSymbolicLink());
  assert.strictEqual(fs.readFileSync(at('private'), 'utf8'), 'link');
  assert.strictEqual(fs.readFileSync(at('elsewhere/new'), 'utf8'), 'dangling');
  assert.strictEqual(fs.readFileSync(at('up'), 'utf8'), 'elsewhere/../up');
  assert.strictEqual(fs.statSync(at('private')).mode & 0o777, 0o640);
  assert.strictEqual(fs.statSync(at('fresh')).mode & 0o777, 0o640);
  assert.deepStrictEqual(temporaries(folder), []);
});

test('appending adds to the end, or creates the file', async (t) => {
  const folder = temporaryDirectory(t);
  fs.symlinkSync('log', path.join(folder, 'link'));
  const results = await write(
    t,
    folder,
    `print(['log', 'link', 'log'].map((name, i) => m.writeFile(folder + '/' + name, Buffer.from(String(i)), true) ?? null));`,
  );
  assert.deepStrictEqual(results, [null, null, null]);
  assert.strictEqual(fs.readFileSync(path.join(folder, 'log'), 'utf8'), '012');
});

test('names of the longest length and in any language are written', async (t) => {
  const folder = temporaryDirectory(t);
  const names = ['x'.repeat(255), 'é'.repeat(127), '日本 "$(touch pwned)";\n.txt', '-rf', ' '];
  const results = await write(
    t,
    folder,
    `print(${JSON.stringify(names)}.map((name) => m.writeFile(folder + '/' + name, Buffer.from('x'), false) ?? null));`,
  );
  assert.deepStrictEqual(
    results,
    names.map(() => null),
  );
  assert.deepStrictEqual(new Set(fs.readdirSync(folder)), new Set(names));
});

test('a failed write returns its reason and changes nothing', async (t) => {
  const folder = temporaryDirectory(t);
  const at = (name) => path.join(folder, name);
  fs.mkdirSync(at('folder'));
  fs.mkdirSync(at('closed'), { mode: 0o555 });
  fs.writeFileSync(at('closed/file'), 'old', { mode: 0o644 });
  fs.writeFileSync(at('protected'), 'old', { mode: 0o444 });
  fs.writeFileSync(at('plain'), 'old');
  require('child_process').execFileSync('mkfifo', [at('pipe')]);
  const cases = [
    ['""', /No such file/],
    ['folder + "/missing/file"', /No such file/],
    ['folder + "/plain/file"', /Not a directory/],
    ['folder + "/folder"', /Is a directory/],
    ['folder + "/closed/new"', /Permission denied/],
    ['folder + "/protected"', /Permission denied/],
    ['folder + "/plain\\0.txt"', /Invalid argument/],
    ['folder + "/" + "x".repeat(256)', /File name too long/],
    // A write would wait for a reader, or be swallowed.
    ['folder + "/pipe"', /not supported/],
    ['"/dev/full"', /not supported/],
    ['"/dev/null"', /not supported/],
  ];
  for (const append of [false, true]) {
    const texts = await write(
      t,
      folder,
      `print([${cases.map(([file]) => file).join()}].map((file) => m.writeFile(file, Buffer.from('new'), ${append}) ?? null));`,
      likeAnybody,
    );
    cases.forEach(([file, reason], i) => assert.match(String(texts[i]), reason, `${file}, append ${append}`));
  }
  // Its folder may not be written, but it may.
  const results = await write(
    t,
    folder,
    `print([true, false].map((append) => m.writeFile(folder + '/closed/file', Buffer.from('+'), append) ?? null));`,
    likeAnybody,
  );
  assert.strictEqual(results[0], null);
  assert.match(results[1], /Permission denied/);
  assert.strictEqual(fs.readFileSync(at('closed/file'), 'utf8'), 'old+');
  for (const name of ['protected', 'plain']) assert.strictEqual(fs.readFileSync(at(name), 'utf8'), 'old');
  assert.deepStrictEqual(temporaries(folder), []);
  assert.ok(fs.statSync('/dev/full').isCharacterDevice());
});

test('on a full disk the old contents stay, and no temporary file is left', async (t) => {
  const folder = temporaryDirectory(t);
  fs.writeFileSync(path.join(folder, 'file'), 'old');
  // No file may grow beyond this, which to a program looks much like a full disk.
  const results = await write(
    t,
    folder,
    `print([['file', false], ['file', true], ['new', false], ['added', true]].map(([name, append]) => m.writeFile(folder + '/' + name, Buffer.alloc(1 << 20), append) ?? null));`,
    { within: ['prlimit', '--fsize=300000'] },
  );
  for (const text of results) assert.match(String(text), /File too large/);
  assert.strictEqual(fs.readFileSync(path.join(folder, 'file'), 'utf8'), 'old');
  assert.deepStrictEqual(fs.readdirSync(folder), ['file']);
});

test('a full disk is reported as such', async (t) => {
  const folder = temporaryDirectory(t);
  const mount = `mount -t tmpfs -o size=128k none ${folder} && exec "$@"`;
  const within = ['unshare', '--map-root-user', '--mount', 'sh', '-c', mount, 'sh'];
  const { execFileSync } = require('child_process');
  try {
    execFileSync(within[0], [...within.slice(1), 'true'], { stdio: 'ignore' });
  } catch {
    return t.skip('no file system of its own may be mounted here');
  }
  const [full, fits, names] = await write(
    t,
    folder,
    `const big = m.writeFile(folder + '/big', Buffer.alloc(1 << 20), false);
     const small = m.writeFile(folder + '/small', Buffer.alloc(1 << 10), false);
     print([big, small ?? null, fs.readdirSync(folder)]);`,
    { within },
  );
  assert.match(full, /No space left on device/);
  assert.deepStrictEqual([fits, names], [null, ['small']]);
});

test('64 MiB are written, and a reader sees the old file or the new one', async (t) => {
  const folder = temporaryDirectory(t);
  const file = path.join(folder, 'big');
  fs.writeFileSync(file, 'old');
  const seen = new Set();
  let isWriting = true;
  const watching = (async () => {
    while (isWriting) {
      seen.add(fs.statSync(file).size);
      await new Promise(setImmediate);
    }
  })();
  const [result, isSame] = await write(
    t,
    folder,
    `const data = Buffer.alloc(64 << 20, 'mail');
     const result = m.writeFile(folder + '/big', data, false);
     print([result ?? null, fs.readFileSync(folder + '/big').equals(data)]);`,
  );
  isWriting = false;
  await watching;
  assert.deepStrictEqual([result, isSame], [null, true]);
  for (const size of seen) assert.ok(size === 3 || size === 64 << 20, `${size} bytes were seen`);
});
