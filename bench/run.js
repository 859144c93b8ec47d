'use strict';

// Runs benchmarks, each in a process and a display session of its own, and ends with a table of what matters: `make bench
// ARGS=calls` runs the named ones. With --summary the table is all that is printed; of all benchmarks it goes into
// docs/performance.md.

const { spawnSync } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const { summarise } = require('./summary');

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
  'growth',
  'day',
];

/** @returns {boolean} Whether it ended well. */
function run(name, isQuiet, record) {
  if (isQuiet) console.error(name);
  const script = path.join(__dirname, `${name}.js`);
  const output = isQuiet ? 'pipe' : 'inherit';
  const command = ['--own-display', process.execPath, '--expose-gc', script];
  const { status, signal, stderr } = spawnSync(path.join(__dirname, '..', 'scripts', 'display-session'), command, {
    stdio: ['inherit', output, output],
    maxBuffer: Infinity,
    env: { ...process.env, TESSARO_BENCH_RECORD: record },
  });
  if (status !== 0) console.error(`${stderr ?? ''}bench ${name} ended with ${status ?? signal}`);
  return status === 0;
}

function main() {
  const isQuiet = process.argv.includes('--summary');
  const named = process.argv.slice(2).filter((argument) => argument !== '--summary');
  const chosen = named.length > 0 ? named : benchmarks;
  process.env.TESSARO_BENCH_LOAD = os.loadavg()[0].toFixed(1);
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-bench-'));
  const record = path.join(folder, 'record');
  fs.writeFileSync(record, '');
  const failed = chosen.filter((name) => !run(name, isQuiet, record));
  const entries = fs.readFileSync(record, 'utf8').split('\n').filter(Boolean).map(JSON.parse);
  fs.rmSync(folder, { recursive: true });
  summarise(entries, { failed, writes: isQuiet && named.length === 0 });
  process.exitCode = failed.length === 0 ? 0 : 1;
}

main();
