'use strict';

// Loads the built add-ons.

const path = require('path');

const root = path.resolve(__dirname, '..', '..');
const buildDirectory = path.resolve(root, process.env.TESSARO_BUILD_DIR || path.join('build', 'release'));

const open = (name) => require(path.join(buildDirectory, `${name}.node`));

let probeExports;

/** The module with what tests reach behind its surface: `module` is the script surface, the rest are probes. */
function probe() {
  if (probeExports === undefined) probeExports = open('TessaroNativeProbe');
  return { module: probeExports, ...probeExports.probe };
}

module.exports = { root, buildDirectory, open, probe };
