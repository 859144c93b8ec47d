'use strict';

const fs = require('fs');
const path = require('path');

const { followHome } = require('./gnustepHome');

const name = `${process.env.TESSARO_HOST_ADDON || 'TessaroHost'}.node`;
const candidates = [
  process.env.TESSARO_BUILD_DIR && path.resolve(process.env.TESSARO_BUILD_DIR, name),
  path.resolve(__dirname, '..', 'build', 'release', name),
].filter(Boolean);

// What other processes of the host run: a sanitized build needs a Node.js with the sanitizers' run time.
const node = process.env.TESSARO_NODE || process.execPath;

/** Loads the host's native part, and GNUstep with it. */
function loadAddon() {
  const file = candidates.find((candidate) => fs.existsSync(candidate));
  if (file === undefined) throw new Error(`The host is not built. Looked for:\n  ${candidates.join('\n  ')}`);
  followHome();
  return require(file);
}

module.exports = { loadAddon, node };
