'use strict';

// Where the built add-ons are, and how tests load them.

const os = require('os');
const path = require('path');

const root = path.resolve(__dirname, '..', '..');
const buildDirectory = path.resolve(root, process.env.TESSARO_BUILD_DIR || path.join('build', 'release'));

// The same flags as the module's own loader.
function openFlags() {
  const { RTLD_NOW, RTLD_DEEPBIND } = os.constants.dlopen;
  return (process.env.LD_PRELOAD || '').includes('asan') ? RTLD_NOW : RTLD_NOW | RTLD_DEEPBIND;
}

function open(name) {
  const loaded = { exports: {} };
  process.dlopen(loaded, path.join(buildDirectory, `${name}.node`), openFlags());
  return loaded.exports;
}

let probeExports;

/** The module with what tests reach behind its surface: `module` is the script surface, the rest are probes. */
function probe() {
  if (probeExports === undefined) probeExports = open('TessaroNativeProbe');
  return { module: probeExports, ...probeExports.probe };
}

module.exports = { root, buildDirectory, open, probe };
