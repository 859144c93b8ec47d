'use strict';

// Run by npm after it has unpacked the package: builds the module where the package has no binary for this engine, or
// says in one sentence what that needs.

const { spawnSync } = require('child_process');
const fs = require('fs');
const path = require('path');

const { candidates, abi } = require('../lib/binary');
const { missingPackages } = require('../lib/packages');

const root = path.join(__dirname, '..');

function hasHeaders() {
  const beside = path.resolve(fs.realpathSync(process.execPath), '../../include/node/node_version.h');
  return [beside, '/usr/include/node/node_version.h', '/usr/include/nodejs/src/node_version.h'].some(fs.existsSync);
}

/** @returns {string|undefined} Why the module can't be built here. */
function obstacle() {
  const missing = missingPackages('running', 'building');
  if (missing.length > 0) return `building it needs more packages: apt-get install ${missing.join(' ')}`;
  return hasHeaders() ? undefined : `building it needs the headers of Node.js ${process.version}`;
}

function main() {
  if (candidates().some(fs.existsSync)) {
    const missing = missingPackages('running');
    if (missing.length > 0) console.warn(`TessaroNative needs more packages: apt-get install ${missing.join(' ')}`);
    return;
  }
  const reason = obstacle();
  if (reason !== undefined) {
    console.error(`TessaroNative has no binary for ${abi}, and ${reason}`);
    process.exitCode = 1;
    return;
  }
  process.exitCode = spawnSync(path.join(root, 'scripts', 'build'), ['release'], { stdio: 'inherit' }).status ?? 1;
}

main();
