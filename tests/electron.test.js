'use strict';

// The module built against headers of an engine that is not the running one.

const { assert, buildDirectory, execFileSync, fs, path, root, temporaryDirectory, test } = require('./support');

const isSanitized = process.env.TESSARO_NODE !== undefined;

const run = (...command) => execFileSync(command[0], command.slice(1), { cwd: root, encoding: 'utf8', stdio: 'pipe' });

const cacheValue = (name) =>
  fs.readFileSync(path.join(buildDirectory, 'CMakeCache.txt'), 'utf8').match(new RegExp(`^${name}:\\w+=(.*)$`, 'm'))[1];

/** A copy of the engine's headers, with other settings of V8. */
function headersWith(settings, folder) {
  const original = cacheValue('NODE_INCLUDE_DIR');
  fs.mkdirSync(folder);
  for (const name of fs.readdirSync(original)) {
    if (name !== 'config.gypi') fs.symlinkSync(path.join(original, name), path.join(folder, name));
  }
  const config = Object.entries(settings).map(([name, value]) => `'${name}': ${value},\n`);
  fs.writeFileSync(path.join(folder, 'config.gypi'), `{ 'variables': {\n${config.join('')}} }\n`);
}

const symbolsOf = (object) => run('nm', '-C', object);

test('V8’s settings come from the config.gypi of its headers', { skip: isSanitized }, (t) => {
  const folder = temporaryDirectory(t);
  const [headers, build] = ['include', 'build'].map((name) => path.join(folder, name));
  headersWith({ v8_enable_pointer_compression: 1, v8_enable_sandbox: 1, v8_enable_map_packing: 0 }, headers);
  run('cmake', '--preset', 'release', '-B', build, `-DTESSARO_NODE_HEADERS=${headers}`);

  // The commands compile several files at once, with a precompiled header that would take most of the time.
  const commands = JSON.parse(fs.readFileSync(path.join(build, 'compile_commands.json'), 'utf8'));
  const { command } = commands.find(({ command: each, file }) => /script_given/.test(each) && file.endsWith('.cc'));
  const definitions = [...command.matchAll(/-D(V8_\w+)/g)].map((match) => match[1]).sort();
  const compression = ['V8_COMPRESS_POINTERS', 'V8_COMPRESS_POINTERS_IN_MULTIPLE_CAGES'];
  assert.deepStrictEqual(definitions, ['V8_31BIT_SMIS_ON_64BIT_ARCH', ...compression, 'V8_ENABLE_SANDBOX']);

  // The sandbox takes no memory of ours, so a response's body is copied instead of handed over.
  const source = 'TessaroNative/TsNetworkRequest.cc';
  const object = path.join(folder, 'object.o');
  const compiler = command.replace(/ -Xclang -include-pch -Xclang \S+| -o .*/g, '').split(/ +/);
  run(...compiler, '-g0', '-c', path.join('src', source), '-o', object);
  const movesMemory = /v8::ArrayBuffer::NewBackingStore\(void\*/;
  const builtObject = path.join(buildDirectory, 'src/CMakeFiles/tessaro_script_own.dir', `${source}.o`);
  assert.match(symbolsOf(builtObject), movesMemory);
  assert.doesNotMatch(symbolsOf(object), movesMemory);
});
