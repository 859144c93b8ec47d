'use strict';

// Compiles every source of the module for macOS 11, on both architectures, against the declarations in include/, links
// them against the names in stubs/, and audits what the image would ask of the system and of Node.js. Nothing is run.
//
//   node checks/macos/check.js [--self-test] [--strict] [arm64] [x86_64]

const { execFile, execFileSync } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const { auditDeprecations, auditImports, auditSelectors, countSelectors } = require('./audit');
const toolchain = require('./toolchain');

function sources() {
  const listed = execFileSync('git', ['ls-files', '-co', '--exclude-standard', '--', 'src/*.cc', 'src/*.mm'], {
    cwd: toolchain.root,
  });
  return listed
    .toString()
    .trim()
    .split('\n')
    .filter((file) => !file.startsWith('src/Platform/Linux/') && fs.existsSync(path.join(toolchain.root, file)));
}

function hasCompilerCache() {
  return (process.env.PATH || '').split(':').some((one) => fs.existsSync(path.join(one, 'ccache')));
}

/** @returns {Promise<{file: string, object: string, failed: boolean, text: string}>} */
function compile(architecture, file) {
  const object = path.join(toolchain.folder, architecture, file.replaceAll('/', '-') + '.o');
  fs.mkdirSync(path.dirname(object), { recursive: true });
  const command = [...(hasCompilerCache() ? ['ccache'] : []), 'clang++-19'];
  const all = [...command, ...toolchain.compilerArguments(architecture, path.join(toolchain.root, file), object)];
  return new Promise((resolve) => {
    const options = {
      cwd: toolchain.root,
      maxBuffer: 1 << 26,
      env: { ...process.env, CCACHE_SLOPPINESS: 'pch_defines,time_macros' },
    };
    execFile(all[0], all.slice(1), options, (error, _, text) =>
      resolve({ file, object, failed: error !== null, text }),
    );
  });
}

/** Compiles `files`, as many at a time as there are processors. */
async function compileAll(architecture, files) {
  const waiting = [...files];
  const results = [];
  const work = async () => {
    for (let file = waiting.shift(); file !== undefined; file = waiting.shift())
      results.push(await compile(architecture, file));
  };
  await Promise.all(Array.from({ length: os.availableParallelism() }, work));
  return results;
}

function link(architecture, objects, name) {
  const image = path.join(toolchain.folder, `${name}-${architecture}.node`);
  execFileSync('ld64.lld-19', toolchain.linkerArguments(architecture, objects, image), { stdio: 'inherit' });
  return image;
}

function report(architecture, image, compiled, imports) {
  const bodies = compiled.filter(({ file }) => file.startsWith('src/Platform/macOS/')).length;
  const common = compiled.filter(({ file }) => file.startsWith('src/Platform/Common/')).length;
  const shared = compiled.length - bodies - common;
  const listed = [...imports].sort(([left], [right]) => left.localeCompare(right));
  console.log(`${architecture}: ${shared} shared sources, ${common} common bodies, ${bodies} macOS bodies`);
  console.log(`  imports: ${listed.map(([library, count]) => `${library} ${count}`).join(', ')}`);
  console.log(`  ${countSelectors(image)} selectors, an image of ${fs.statSync(image).size} bytes`);
}

/** @returns {Promise<string[]>} What is wrong. */
async function check(architecture, files) {
  toolchain.prepareHeadersOf(architecture);
  const compiled = await compileAll(architecture, files);
  const failures = compiled.filter(({ failed }) => failed);
  if (failures.length > 0) return failures.map(({ file, text }) => `${architecture}: ${file}:\n${text}`);
  const image = link(
    architecture,
    compiled.map(({ object }) => object),
    'TessaroNative',
  );
  const { imports, faults } = auditImports(image, toolchain.engineNames(architecture));
  report(architecture, image, compiled, imports);
  const diagnostics = compiled.map(({ text }) => text).join('\n');
  return [...faults, ...auditSelectors(diagnostics), ...auditDeprecations(diagnostics)];
}

/** Each file in faults/ begins with a comment: the words with which it has to be refused. */
async function selfTest() {
  toolchain.prepareHeadersOf('arm64');
  const faults = [];
  for (const name of fs.readdirSync(path.join(__dirname, 'faults'))) {
    const file = `checks/macos/faults/${name}`;
    const expected = fs.readFileSync(path.join(toolchain.root, file), 'utf8').split('\n')[0].replace('// ', '');
    const [{ object, failed, text }] = await compileAll('arm64', [file]);
    const told = failed ? text : auditOne(object, text).join('\n');
    const found = told.includes(expected);
    console.log(`${name}: ${found ? 'refused' : 'NOT REFUSED'}`);
    if (!found) faults.push(`${file} must be refused with "${expected}", and there was: ${told || 'nothing'}`);
  }
  return faults;
}

function auditOne(object, text) {
  const { faults } = auditImports(link('arm64', [object], 'fault'), toolchain.engineNames('arm64'));
  return [...faults, ...auditSelectors(text), ...auditDeprecations(text, { complete: false })];
}

async function main() {
  toolchain.prepareHeaders();
  toolchain.architectures.forEach(toolchain.prepareEngine);
  const named = toolchain.architectures.filter((one) => process.argv.includes(one));
  const wanted = named.length > 0 ? named : toolchain.architectures;
  const faults = [];
  if (process.argv.includes('--self-test')) {
    faults.push(...(await selfTest()));
  } else {
    for (const architecture of wanted) faults.push(...(await check(architecture, sources())));
  }
  for (const fault of new Set(faults)) console.error(fault);
  process.exitCode = faults.length > 0 ? 1 : 0;
  if (faults.length === 0) console.log('Compiled and linked for macOS 11; nothing was run.');
}

main();
