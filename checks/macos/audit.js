'use strict';

// Audits a linked image: the library of each imported name, the selectors that it sends, and the deprecated names of the
// system that it uses.

const { execFileSync } = require('child_process');
const fs = require('fs');
const path = require('path');

// Names that no stub lists, because they belong to the C++ library and to the portable libraries. Which of the C++
// library's are in macOS 11 the compiler has checked already.
const families = [
  {
    library: 'libc++',
    names:
      /^__Z(N?K?N?St3__1|N?K?St|NKSt|NSt|T[ISV]N?St|T[hv]\w*_?N(K?)St|TVN10__cxxabiv1|T[IS][a-zP]|n[wa]|d[la])|^___(cxa|gxx)_/,
  },
  { library: 'spdlog and fmt', names: /^__Z\w*(6spdlog|3fmt)/ },
  { library: 'pugixml', names: /^__Z\w*4pugi/ },
  { library: 'clang', names: /^___(isPlatformVersionAtLeast|u(div|mod)ti3)$/ },
  { library: 'libsodium', names: /^_(sodium|crypto_sign|crypto_hash)_/ },
  { library: 'libxml2', names: /^_(xml|html)[A-Z]/ },
  { library: 'minizip', names: /^_unz/ },
  // musl's way of saying what Darwin says otherwise; the image is never shipped.
  {
    library: 'stand-ins',
    names: /^_(__errno_location|stdout|stderr|stdin|__assert_fail)$/,
  },
];

function run(program, ...args) {
  return execFileSync(program, args, { maxBuffer: 1 << 28 }).toString();
}

/** @returns {{imports: Map<string, number>, faults: string[]}} How many names each library gives, and what is wrong. */
function auditImports(image, engine) {
  const imports = new Map();
  const faults = [];
  const add = (library) => imports.set(library, (imports.get(library) || 0) + 1);
  for (const line of run('llvm-nm-19', '-m', '--undefined-only', image).split('\n')) {
    const match = line.match(/external (\S+) \((dynamically looked up|from ([^)]+))\)/);
    if (match === null) continue;
    const [, name, , library] = match;
    const family = families.find(({ names }) => names.test(name));
    if (library !== undefined) add(library);
    else if (engine.has(name)) add('Node.js');
    else if (family !== undefined) add(family.library);
    else faults.push(nameOfFault(name));
  }
  return { imports, faults };
}

function nameOfFault(name) {
  const readable = run('llvm-cxxfilt-19', '--no-strip-underscore', name.replace(/^_/, '')).trim();
  if (readable.includes('tessaro::platform::')) return `unwritten: ${readable}`;
  if (/^(v8|node)::|^(napi|uv)_/.test(readable)) return `not exported by Node.js: ${readable}`;
  return `not on any list: ${name} ${readable}`;
}

/** @returns {string[]} Deprecated names that are not agreed on, and agreed ones that nobody uses any more. */
function auditDeprecations(diagnostics, { complete = true } = {}) {
  const agreed = new Set(
    fs
      .readFileSync(path.join(__dirname, 'deprecations.txt'), 'utf8')
      .split('\n')
      .map((line) => line.replace(/#.*/, '').trim())
      .filter((line) => line !== ''),
  );
  const used = new Set(Array.from(diagnostics.matchAll(/'([^']+)' is deprecated/g), (match) => match[1]));
  const fresh = [...used].filter((name) => !agreed.has(name)).map((name) => `deprecated: ${name}`);
  const stale = [...agreed].filter((name) => complete && !used.has(name));
  return [...fresh, ...stale.map((name) => `deprecations.txt: nothing uses ${name}`)];
}

/** @returns {string[]} Selectors that no declaration has and that are not the module's own. */
function auditSelectors(diagnostics) {
  const unknown = new Set(Array.from(diagnostics.matchAll(/undeclared selector '([^']+)'/g), (match) => match[1]));
  return [...unknown].filter((name) => !/^ts[A-Z_]/.test(name)).map((name) => `undeclared selector: ${name}`);
}

/** How many different selectors the image sends or has. */
function countSelectors(image) {
  const section = run('llvm-objdump-19', '--macho', '--section=__TEXT,__objc_methname', image);
  return section.split('\n').filter((line) => /^[0-9a-f]{16} {2}\S/.test(line)).length;
}

module.exports = { auditDeprecations, auditImports, auditSelectors, countSelectors };
