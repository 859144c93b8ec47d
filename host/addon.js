'use strict';

const fs = require('fs');
const path = require('path');

const { followHome } = require('./gnustepHome');

const name = `${process.env.TESSARO_HOST_ADDON || 'TessaroHost'}.node`;
const candidates = [
  process.env.TESSARO_BUILD_DIR && path.resolve(process.env.TESSARO_BUILD_DIR, name),
  path.resolve(__dirname, '..', 'build', 'release', name),
].filter(Boolean);

// The Node.js program for the host's other processes: a sanitized build needs the one with the sanitizers' run time.
const node = process.env.TESSARO_NODE || process.execPath;

/** Loads the host's native part, and GNUstep with it. */
function loadAddon() {
  const file = candidates.find((candidate) => fs.existsSync(candidate));
  if (file === undefined) throw new Error(`The host is not built. Looked for:\n  ${candidates.join('\n  ')}`);
  followHome();
  return require(file);
}

module.exports = { loadAddon, node };
