'use strict';

// Loads the native module. It must be loaded on the main thread; a worker gets an error.

const fs = require('fs');

const { abi, candidates } = require('./lib/binary');

function load() {
  const files = candidates();
  const file = files.find((candidate) => fs.existsSync(candidate));
  if (file === undefined) {
    throw new Error(`TessaroNative is not built for ${abi}. Looked for:\n  ${files.join('\n  ')}`);
  }
  try {
    return require(file);
  } catch (error) {
    // Not before: it loads child_process, which takes 10 ms and 2 MB.
    const { missingPackages } = require('./lib/packages');
    const missing = missingPackages('running');
    if (missing.length > 0)
      error.message += `\nTessaroNative needs more packages: apt-get install ${missing.join(' ')}`;
    throw error;
  }
}

module.exports = load();
