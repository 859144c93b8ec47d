'use strict';

// The paths of the native binary. The module uses the script engine directly, so each engine version has its own binary.

const path = require('path');

const root = path.join(__dirname, '..');
const abi = `${process.platform}-${process.arch}-${process.versions.modules}`;

const candidates = () =>
  [
    process.env.TESSARO_BUILD_DIR && path.resolve(process.env.TESSARO_BUILD_DIR),
    path.join(root, 'prebuilds', abi),
    path.join(root, 'build', 'release'),
  ]
    .filter(Boolean)
    .map((folder) => path.join(folder, 'TessaroNative.node'));

module.exports = { abi, candidates };
