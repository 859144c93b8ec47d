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

/** Ends the processes that a file has started, and those that they have started, whoever is their parent now. */
function killAll(home) {
  for (const pid of fs.readdirSync('/proc').filter((name) => Number(name) > 0 && Number(name) !== process.pid)) {
    try {
      const environment = fs.readFileSync(`/proc/${pid}/environ`, 'latin1');
      if (environment.includes(`TESSARO_TEST_HOME=${home}\0`)) process.kill(Number(pid), 'SIGKILL');
    } catch {
      // The process has just ended, or is another user's.
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
  const args = ['--test-reporter=spec', path.join(__dirname, file)];
  const options = { env: environmentFor(home), stdio: ['ignore', 'pipe', 'inherit'] };
  const child = spawn(process.env.TESSARO_NODE || process.execPath, args, options);
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

function report(file, { output, code, signal }, seconds) {
  const count = (kind) => Number(output.match(new RegExp(`^ℹ ${kind} (\\d+)$`, 'm'))?.[1] ?? 0);
  const counts = { pass: count('pass'), fail: count('fail') + count('cancelled'), skipped: count('skipped') };
  // A file that ended otherwise than by its own summary has failed, whatever it printed before.
  if (code !== 0 && counts.fail === 0) counts.fail = 1;
  for (const [kind, number] of Object.entries(counts)) totals[kind] += number;
  const skipped = counts.skipped > 0 ? `, ${counts.skipped} skipped` : '';
  const results = `${String(counts.pass).padStart(4)} passed, ${counts.fail} failed${skipped}`;
  console.log(`${file.padEnd(22)} ${results}  (${seconds.toFixed(1)} s)`);
  // The runner lists the failed tests at the end.
  const [before, failures] = output.split('✖ failing tests:');
  const remarks = /^ *ℹ (?!tests|suites|pass|fail|cancelled|skipped|todo|duration_ms).+$|^.* # .*$/gm;
  for (const line of before.match(remarks) || []) console.log(`    ${line.trim()}`);
  if (counts.fail > 0) console.log(failures ?? `ended with ${code ?? signal}:\n${output.slice(-4000)}`);
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
