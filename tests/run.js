'use strict';

// Runs the test files, a few at a time, each in a process and a home of its own, and ends with one line that counts
// everything. `node tests/run.js json log` runs the named ones only.

const { spawn } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const { paced } = require('./support/pace');

const fileDeadline = 5 * 60 * 1000;
// Most files wait for a desktop more than they compute.
const filesAtOnce = os.cpus().length + 1;
// Longer than their size lets expect.
const longest = ['tour', 'wayland', 'dialogs', 'look', 'toolbar', 'keyboard', 'integrations', 'annotation'];

const named = process.argv.slice(2);
const nameOf = (file) => file.replace('.test.js', '');
const order = (file) => {
  const place = longest.indexOf(nameOf(file));
  return place >= 0 ? place - Number.MAX_SAFE_INTEGER : -fs.statSync(path.join(__dirname, file)).size;
};
const files = fs
  .readdirSync(__dirname)
  .filter((file) => file.endsWith('.test.js'))
  .filter((file) => named.length === 0 || named.includes(nameOf(file)))
  .sort((a, b) => order(a) - order(b));

const totals = { pass: 0, fail: 0, skipped: 0 };

/** Everything a test may write to lies below `home`. */
function environmentFor(home) {
  const temporary = path.join(home, 'tmp');
  // GNUstep reads TEMP and TMP, other programs read TMPDIR.
  const folders = {
    HOME: home,
    TMPDIR: temporary,
    TMP: temporary,
    TEMP: temporary,
    XDG_RUNTIME_DIR: path.join(home, 'run'),
  };
  for (const folder of Object.values(folders)) fs.mkdirSync(folder, { recursive: true, mode: 0o700 });
  const environment = { ...process.env, ...folders, TESSARO_TEST_HOME: home };
  for (const name of ['XDG_CONFIG_HOME', 'XDG_DATA_HOME', 'XDG_STATE_HOME', 'XDG_CACHE_HOME']) delete environment[name];
  return environment;
}

/** The processes that a file has started, and those that they have started, whoever is their parent now. */
function processesOf(home) {
  const isOurs = (pid) => {
    try {
      return fs.readFileSync(`/proc/${pid}/environ`, 'latin1').includes(`TESSARO_TEST_HOME=${home}\0`);
    } catch {
      return false; // it has just ended, or is another user's
    }
  };
  return fs.readdirSync('/proc').filter((pid) => /^\d+$/.test(pid) && Number(pid) !== process.pid && isOurs(pid));
}

function killAll(home) {
  for (const pid of processesOf(home)) {
    try {
      process.kill(Number(pid), 'SIGKILL');
    } catch {
      // The process has ended since.
    }
  }
}

const homes = new Set();

function endFile(home) {
  killAll(home);
  fs.rmSync(home, { recursive: true, force: true, maxRetries: 5, retryDelay: 100 });
  homes.delete(home);
}

for (const signal of ['SIGINT', 'SIGTERM', 'SIGHUP']) {
  process.on(signal, () => {
    homes.forEach(endFile);
    process.exit(1);
  });
}

function run(file) {
  // The names of Unix sockets below it are limited to 107 bytes.
  const home = fs.mkdtempSync(path.join(os.tmpdir(), 'ts-'));
  homes.add(home);
  const child = spawn(
    process.env.TESSARO_NODE || process.execPath,
    ['--test-reporter=spec', path.join(__dirname, file)],
    {
      env: environmentFor(home),
      stdio: ['ignore', 'pipe', 'inherit'],
    },
  );
  let output = '';
  child.stdout.setEncoding('utf8').on('data', (text) => (output += text));
  const closed = new Promise((resolve) => child.stdout.on('close', resolve));
  const timer = setTimeout(() => killAll(home), paced(fileDeadline));
  return new Promise((resolve) =>
    child.on('exit', async (code, signal) => {
      clearTimeout(timer);
      // Left-over processes of the file would keep the output open.
      endFile(home);
      await closed;
      resolve({ output, code, signal });
    }),
  );
}

const count = (output, what) => Number(output.match(new RegExp(`^ℹ ${what} (\\d+)$`, 'm'))?.[1] ?? 0);

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

/** The failed tests, which the runner lists at the end; of a file that has ended early, the end of its output. */
const whatFailed = ({ output, code, signal }) =>
  output.split('✖ failing tests:')[1] ?? `ended with ${code ?? signal}:\n${output.slice(-4000)}`;

function report(file, result, seconds) {
  const counts = countsOf(result);
  for (const [kind, number] of Object.entries(counts)) totals[kind] += number;
  const skipped = counts.skipped > 0 ? `, ${counts.skipped} skipped` : '';
  console.log(
    `${file.padEnd(22)} ${String(counts.pass).padStart(4)} passed, ${counts.fail} failed${skipped}  (${seconds.toFixed(1)} s)`,
  );
  const { output } = result;
  const remarks = /^ *ℹ (?!tests|suites|pass|fail|cancelled|skipped|todo|duration_ms).+$|^.* # .*$/gm;
  for (const line of output.split('✖ failing tests:')[0].match(remarks) || []) console.log(`    ${line.trim()}`);
  if (counts.fail > 0) console.log(whatFailed(result));
}

async function main() {
  const waiting = [...files];
  const worker = async () => {
    for (let file = waiting.shift(); file !== undefined; file = waiting.shift()) {
      const start = Date.now();
      report(file, await run(file), (Date.now() - start) / 1000);
    }
  };
  await Promise.all(Array.from({ length: filesAtOnce }, worker));
  if (totals.pass + totals.fail === 0) totals.fail = 1;
  process.exitCode = totals.fail > 0 ? 1 : 0;
  console.log(`${totals.pass} passed, ${totals.fail} failed${totals.skipped > 0 ? `, ${totals.skipped} skipped` : ''}`);
}

main();
