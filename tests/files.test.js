'use strict';

// Writing files from script: the contents of the disk afterwards, and the reason when they can't be written.

const { assert, execFileSync, fs, path, scenarios, temporaryDirectory, temporaryFiles, test } = require('./support');

const plain = scenarios();
// Root without the right to bypass permissions is an ordinary user.
const isRoot = process.getuid() === 0;
const unprivileged = isRoot ? { within: ['setpriv', '--bounding-set=-dac_override,-dac_read_search'] } : {};

/** Writes files, [path, text or number of zero bytes, append] each, in one process; gives the results. */
const write = (t, files, options = {}) => {
  const scenario = ({ native }, all) => {
    process.umask(0o027);
    const bytes = (data) => (typeof data === 'number' ? Buffer.alloc(data) : Buffer.from(data));
    return all.map(([file, data, append = false]) => native.writeFile(file, bytes(data), append) ?? null);
  };
  return plain.with(options)(t, scenario, files);
};

const temporaries = (folder) => fs.readdirSync(folder).filter((name) => name.startsWith('.new-'));

test('Buffers, typed arrays and ArrayBuffers are written, other values refused', async (t) => {
  const folder = temporaryDirectory(t);
  const scenario = ({ fs, native }, file) => {
    const bytes = new Uint8Array([65, 66]);
    const part = new Uint8Array(new Uint8Array([1, 2, 65, 66, 3]).buffer, 2, 2);
    const view = new DataView(new Uint8Array([67, 65, 66]).buffer, 1);
    const shared = new Uint8Array(new SharedArrayBuffer(2)).fill(65);
    const views = [Buffer.from('Zoë\0!'), Buffer.alloc(0), bytes, part, view, new Uint16Array([0x4241]), shared];
    const contents = (data) => native.writeFile(file, data, false) ?? fs.readFileSync(file, 'utf8');
    const others = [{}, [65], new Date(), () => 1, new String('AB'), new Map()];
    const refusal = (data) => native.writeFile(`${file}-other`, data, false);
    return [[...views, bytes.buffer].map(contents), others.map(refusal)];
  };
  const [written, refused] = await plain(t, scenario, path.join(folder, 'file'));
  assert.deepStrictEqual(written, ['Zoë\0!', '', 'AB', 'AB', 'AB', 'AB', 'AA', 'AB']);
  for (const reason of refused) assert.match(reason, /Only a Buffer/);
  assert.deepStrictEqual(fs.readdirSync(folder), ['file']);
});

test('replacing keeps the permissions, appending adds to the end, both write through links, and any name is taken', async (t) => {
  const { at, folder } = temporaryFiles(t);
  fs.writeFileSync(at('private'), 'old and longer', { mode: 0o640 });
  fs.mkdirSync(at('elsewhere'));
  const links = { link: 'private', dangling: 'elsewhere/new', loop: 'loop', logLink: 'log' };
  for (const [name, target] of Object.entries(links)) fs.symlinkSync(target, at(name));
  const names = ['x'.repeat(255), 'é'.repeat(127), '日本 "$(touch pwned)";\n.txt', '-rf', ' '];
  const replacing = [...names, 'private', 'link', 'dangling', 'fresh', 'elsewhere/../up', 'loop'];
  const appending = ['log', 'logLink', 'log'];
  const results = await write(t, [
    ...appending.map((name, i) => [at(name), String(i), true]),
    ...replacing.map((name) => [`${folder}/${name}`, name]),
  ]);
  assert.match(results.pop(), /Too many levels/);
  assert.deepStrictEqual(results, Array(13).fill(null));
  assert.ok(fs.lstatSync(at('link')).isSymbolicLink() && fs.lstatSync(at('dangling')).isSymbolicLink());
  const contents = [...names, 'private', 'elsewhere/new', 'up', 'log'].map((name) => fs.readFileSync(at(name), 'utf8'));
  assert.deepStrictEqual(contents, [...names, 'link', 'dangling', 'elsewhere/../up', '012']);
  for (const name of ['private', 'fresh']) assert.strictEqual(fs.statSync(at(name)).mode & 0o777, 0o640, name);
  assert.deepStrictEqual(temporaries(folder), []);
});

test('a failed write returns its reason and changes nothing', async (t) => {
  const { at, folder } = temporaryFiles(t);
  fs.mkdirSync(at('folder'));
  fs.mkdirSync(at('closed'), { mode: 0o555 });
  fs.writeFileSync(at('closed/file'), 'old', { mode: 0o644 });
  fs.writeFileSync(at('protected'), 'old', { mode: 0o444 });
  fs.writeFileSync(at('plain'), 'old');
  execFileSync('mkfifo', [at('pipe')]);
  const table = [
    ['', /No such file/],
    [at('missing/file'), /No such file/],
    [at('plain/file'), /Not a directory/],
    [at('folder'), /Is a directory/],
    [at('closed/new'), /Permission denied/],
    [at('protected'), /Permission denied/],
    [at('plain\0.txt'), /Invalid argument/],
    [at('x'.repeat(256)), /File name too long/],
    // A write would wait for a reader, or be swallowed.
    [at('pipe'), /not supported/],
    ['/dev/full', /not supported/],
  ].flatMap(([file, reason]) => [false, true].map((append) => [file, 'new', append, reason]));
  // In a folder without write permission a file can be appended to, but not replaced.
  table.push([at('closed/file'), '+', true, /^null$/], [at('closed/file'), '+', false, /Permission denied/]);
  const files = table.map((row) => row.slice(0, 3));
  const results = await write(t, files, unprivileged);
  table.forEach(([file, , append, reason], i) => assert.match(`${results[i]}`, reason, `${file}, append ${append}`));
  const contents = ['closed/file', 'protected', 'plain'].map((name) => fs.readFileSync(at(name), 'utf8'));
  assert.deepStrictEqual([...contents, ...temporaries(folder)], ['old+', 'old', 'old']);
  assert.ok(fs.statSync('/dev/full').isCharacterDevice());
});

test('at a limit of file sizes the old contents stay, and no temporary file is left', async (t) => {
  const { folder, write: prepare } = temporaryFiles(t);
  const file = prepare('file', 'old');
  const both = (name) => [false, true].map((append) => [`${folder}/${name}`, 1 << 20, append]);
  const results = await write(t, ['file', 'new'].flatMap(both), { within: ['prlimit', '--fsize=300000'] });
  for (const text of results) assert.match(String(text), /File too large/);
  assert.strictEqual(fs.readFileSync(file, 'utf8'), 'old');
  assert.deepStrictEqual(fs.readdirSync(folder), ['file']);
});

test('64 MiB are written, and a reader sees the old file or the new one', async (t) => {
  const file = path.join(temporaryDirectory(t), 'big');
  fs.writeFileSync(file, 'old');
  const sizes = new Set();
  let isWriting = true;
  const watching = (async () => {
    while (isWriting) {
      sizes.add(fs.statSync(file).size);
      await new Promise(setImmediate);
    }
  })();
  const write = ({ fs, native }, name) => {
    const data = Buffer.alloc(64 << 20, 'mail');
    return [native.writeFile(name, data, false) ?? null, fs.readFileSync(name).equals(data)];
  };
  assert.deepStrictEqual(await plain(t, write, file), [null, true]);
  isWriting = false;
  await watching;
  for (const size of sizes) assert.ok(size === 3 || size === 64 << 20, `${size} bytes were seen`);
});
