'use strict';

// The engine comes first where the dynamic linker looks for a symbol. A library of ours that imports something which
// the engine exports gets the engine's copy, in the engine's version.

const { assert, buildDirectory, execFileSync, fs, path, test } = require('./support');

// The engine's own interfaces, and the C and C++ run times, of which a process has one.
const wanted = [
  /^_ZT?[VTISC]?N?[KR]?(2v8|4node|S[abdiost]|10__cxxabiv1)/,
  /^node_|^napi_|^uv_/,
  /^_Z(nw|na|dl|da)|^__cxa_|^__gxx_|^__dynamic_cast$|^_Unwind_/,
  /^(__)?environ$|^std(in|out|err)$|^in6addr_any$/,
];

const run = (...command) => execFileSync(command[0], command.slice(1), { encoding: 'utf8', maxBuffer: 1 << 28 });

const libraries = (file) => [...run('ldd', file).matchAll(/=> (\/\S+)/g)].map((match) => match[1]);

const addon = path.join(buildDirectory, 'TessaroNative.node');
const transfers = path.join(buildDirectory, 'TessaroTransfers.so');
const engineFiles = [process.execPath, ...libraries(process.execPath).filter((file) => /\/libnode\./.test(file))];
const allFiles = [...engineFiles, ...[addon, transfers].flatMap((file) => [file, ...libraries(file)])];

/** The dynamic symbols of each file, by whether they are defined there. */
const memory = new Map(allFiles.map((file) => [file, { defined: new Set(), undefined: new Set() }]));
// One run of nm for many files is quicker than one for each.
const lines = run('nm', '-D', '-A', ...memory.keys()).matchAll(/^(\S+?):.* (\w) ([^@\s]+)\S*$/gm);
for (const [, file, kind, name] of lines) {
  memory.get(file)[/[Uvw]/.test(kind) ? 'undefined' : 'defined'].add(name);
}
const symbols = (file, kind) => memory.get(file)[kind];
const engine = new Set(engineFiles.flatMap((file) => [...symbols(file, 'defined')]));

const foreign = (file) =>
  [...symbols(file, 'undefined')].filter((name) => engine.has(name) && !wanted.some((known) => known.test(name)));

test('the module takes only V8, Node.js, libuv and the C++ run time from the engine', () => {
  assert.ok(engine.has('inflate') && symbols(addon, 'undefined').has('uv_close'), 'symbols are read');
  // Other add-ons observe the notification by this name.
  assert.ok(symbols(addon, 'defined').has('TsAppMenuWillOpenNotificationName'));
  assert.deepStrictEqual(foreign(addon), []);
});

// RTLD_DEEPBIND binds the libraries that are loaded with it, not those that are in the process already.
test('the library for transfers brings what it takes from other libraries', () => {
  const before = new Set(libraries(addon));
  const brought = libraries(transfers).filter((file) => !before.has(file));
  const own = [transfers, ...brought];
  const isOwn = (name) => own.some((file) => symbols(file, 'defined').has(name));
  assert.deepStrictEqual(own.flatMap(foreign).filter((name) => !isOwn(name)), []); // prettier-ignore
});

test('a shared library gets all that it imports of another from the engine, or nothing', () => {
  // GNUstep's libraries use zlib, brotli and zstd; objects that one copy has made must not reach the other.
  const runTime = /\/lib(c|m|stdc\+\+|gcc_s)\.so/;
  const files = libraries(addon).filter((file) => !runTime.test(file));
  const doubled = files.filter((file) => [...symbols(file, 'defined')].some((name) => engine.has(name)));
  const mixed = [];
  for (const user of files) {
    for (const provider of doubled.filter((file) => file !== user)) {
      const imports = [...symbols(user, 'undefined')].filter((name) => symbols(provider, 'defined').has(name));
      const fromEngine = imports.filter((name) => engine.has(name));
      if (fromEngine.length > 0 && fromEngine.length < imports.length) mixed.push([user, provider, fromEngine]);
    }
  }
  assert.deepStrictEqual(mixed, []);
});
