'use strict';

// Loads the native module. It must be loaded on the main thread; a worker gets an error.

const fs = require('fs');
const os = require('os');
const path = require('path');

// The module talks to the script engine directly, so each engine version has a binary of its own.
const abi = `${process.platform}-${process.arch}-${process.versions.modules}`;
const candidates = [
  process.env.TESSARO_BUILD_DIR && path.resolve(process.env.TESSARO_BUILD_DIR, 'TessaroNative.node'),
  path.join(__dirname, 'prebuilds', abi, 'TessaroNative.node'),
  path.join(__dirname, 'build', 'release', 'TessaroNative.node'),
].filter(Boolean);

// Node.js exports its own copies of OpenSSL, nghttp2 and zlib, and the libraries below the module must find theirs
// instead. AddressSanitizer, which has to come first for every symbol, refuses to load anything that way.
function openFlags() {
  const { RTLD_NOW, RTLD_DEEPBIND } = os.constants.dlopen;
  const isSanitized = (process.env.LD_PRELOAD || '').includes('asan');
  return isSanitized || RTLD_DEEPBIND === undefined ? RTLD_NOW : RTLD_NOW | RTLD_DEEPBIND;
}

function load() {
  const file = candidates.find((candidate) => fs.existsSync(candidate));
  if (file === undefined) {
    throw new Error(`TessaroNative is not built for ${abi}. Looked for:\n  ${candidates.join('\n  ')}`);
  }
  process.dlopen(module, file, openFlags());
}

load();
