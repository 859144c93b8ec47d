'use strict';

// Loads the native module. It must be loaded on the main thread; a worker gets an error.

const fs = require('fs');
const path = require('path');

// The module talks to the script engine directly, so each engine version has a binary of its own.
const abi = `${process.platform}-${process.arch}-${process.versions.modules}`;
const candidates = [
  process.env.TESSARO_BUILD_DIR && path.resolve(process.env.TESSARO_BUILD_DIR, 'TessaroNative.node'),
  path.join(__dirname, 'prebuilds', abi, 'TessaroNative.node'),
  path.join(__dirname, 'build', 'release', 'TessaroNative.node'),
].filter(Boolean);

function load() {
  const file = candidates.find((candidate) => fs.existsSync(candidate));
  if (file === undefined) {
    throw new Error(`TessaroNative is not built for ${abi}. Looked for:\n  ${candidates.join('\n  ')}`);
  }
  return require(file);
}

module.exports = load();
