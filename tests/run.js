'use strict';

// Runs the test files, a few at a time, each in a process and a home of its own, and ends with one line that counts
// everything. `node tests/run.js json log` runs the named ones only. With `--repeat`, a file that has failed runs once
// more, alone, and the first failure is shown as well.

const { spawn } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const fileDeadline = 10 * 60 * 1000;
// Most files wait for a desktop more than they compute.
const filesAtOnce = os.cpus().length + 1;

const words = process.argv.slice(2);
const repeats = words.includes('--repeat');
const named = words.filter((word) => word !== '--repeat');
const sizeOf = (name) => fs.statSync(path.join(__dirname, name)).size;
const files = fs
  .readdirSync(__dirname)
  .filter((name) => name.endsWith('.test.js'))
  .filter((name) => named.length === 0 || named.includes(name.replace('.test.js', '')))
  .sort((a, b) => sizeOf(b) - sizeOf(a)); // long files first, so that none is left for the end

const totals = { pass: 0, fail: 0, skipped: 0 };

/** Everything a test may write to lies below `home`. */
function environmentFor(home) {
  const temporary = path.join(home, 'tmp');
  // GNUstep asks for TEMP and TMP, everybody else for TMPDIR.
  const folders = {
    HOME: home,
    TMPDIR: temporary,
    TMP: temporary,
    TEMP: temporary,
    XDG_RUNTIME_DIR: path.join(home, 'run'),
  };
  for (const folder of Object.values(folders)) fs.mkdirSync(folder, { recursive: true, mode: 0o700 });
  const environment = { ...process.env, ...folders };
  for (const name of ['XDG_CONFIG_HOME', 'XDG_DATA_HOME', 'XDG_STATE_HOME', 'XDG_CACHE_HOME']) delete environment[name];
  return environment;
}

function run(file) {
  // The names of Unix sockets below it are limited to 107 bytes.
  const home = fs.mkdtempSync(path.join(os.tmpdir(), 'ts-'));
  const child = spawn(process.execPath, ['--test-reporter=tap', path.join(__dirname, file)], {
    env: environmentFor(home),
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  let output = '';
  child.stdout.setEncoding('utf8').on('data', (text) => (output += text));
  const timer = setTimeout(() => child.kill('SIGKILL'), fileDeadline);
  return new Promise((resolve) =>
    child.on('close', (code, signal) => {
      clearTimeout(timer);
      fs.rmSync(home, { recursive: true, force: true });
      resolve({ output, code, signal });
    }),
  );
}

const count = (output, what) => Number(output.match(new RegExp(`^# ${what} (\\d+)$`, 'm'))?.[1] ?? 0);

/** The lines of a TAP text that tell of failures, with what follows each of them. */
function failures(output) {
  const lines = output.split('\n');
  const kept = [];
  let block = null;
  for (const line of lines) {
    const failed = line.match(/^(\s*)not ok /);
    if (failed) block = failed[1];
    if (block === null) continue;
    kept.push(line);
    if (line === `${block}  ...`) block = null;
  }
  return kept.join('\n');
}

function countsOf({ output, code }) {
  const counts = {
    pass: count(output, 'pass'),
    fail: count(output, 'fail') + count(output, 'cancelled'),
    skipped: count(output, 'skipped'),
  };
  // A file that ended otherwise than by its own summary has failed, whatever it printed before.
  if (code !== 0 && counts.fail === 0) counts.fail = 1;
  return counts;
}

const whatFailed = ({ output, code, signal }) =>
  failures(output) || `ended with ${code ?? signal}:\n${output.slice(-4000)}`;

function report(file, result, seconds) {
  const counts = countsOf(result);
  for (const [kind, number] of Object.entries(counts)) totals[kind] += number;
  const skipped = counts.skipped > 0 ? `, ${counts.skipped} skipped` : '';
  console.log(
    `${file.padEnd(22)} ${String(counts.pass).padStart(4)} passed, ${counts.fail} failed${skipped}  (${seconds.toFixed(1)} s)`,
  );
  const { output } = result;
  for (const line of output.match(/^ *# (?!Subtest|tests|suites|pass|fail|cancelled|skipped|todo|duration_ms).+$/gm) ||
    []) {
    console.log(`    ${line.trim().slice(2)}`);
  }
  for (const line of output.match(/^.* # SKIP.*$/gm) || []) console.log(`    ${line.trim()}`);
  if (counts.fail > 0) console.log(whatFailed(result));
}

const failed = [];

async function runAndReport(file, isLastTry) {
  const start = Date.now();
  const result = await run(file);
  if (!isLastTry && countsOf(result).fail > 0) {
    console.log(`${file}: failed, and runs once more\n${whatFailed(result)}`);
    failed.push(file);
    return;
  }
  report(file, result, (Date.now() - start) / 1000);
}

async function main() {
  const waiting = [...files];
  const worker = async () => {
    for (let file = waiting.shift(); file !== undefined; file = waiting.shift()) await runAndReport(file, !repeats);
  };
  await Promise.all(Array.from({ length: filesAtOnce }, worker));
  for (const file of failed) await runAndReport(file, true);
  if (totals.pass + totals.fail === 0) totals.fail = 1;
  process.exitCode = totals.fail > 0 ? 1 : 0;
  console.log(`${totals.pass} passed, ${totals.fail} failed${totals.skipped > 0 ? `, ${totals.skipped} skipped` : ''}`);
}

main();
