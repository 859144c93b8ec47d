'use strict';

// Runs every benchmark, each in a process of its own; `make bench ARGS=calls` runs the named ones.

const { spawnSync } = require('child_process');
const path = require('path');

const benchmarks = [
  'calls',
  'json',
  'load',
  'menus',
  'host',
  'windows',
  'keyring',
  'statusItem',
  'network',
  'migration',
  'notifications',
  'applications',
  'composition',
  'updates',
  'shortcuts',
  'files',
  'images',
];
const chosen = process.argv.length > 2 ? process.argv.slice(2) : benchmarks;

let failed = 0;
for (const name of chosen) {
  const { status } = spawnSync(process.execPath, ['--expose-gc', path.join(__dirname, `${name}.js`)], {
    stdio: 'inherit',
  });
  if (status !== 0) {
    console.error(`bench ${name} ended with ${status}`);
    ++failed;
  }
}
process.exitCode = failed === 0 ? 0 : 1;
