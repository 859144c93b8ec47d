'use strict';

// Lets each system and library call of some scenarios fail once, and prints what came of that: see CONTRIBUTING.md.
// `node torture/run.js request logging` runs the named scenarios only.

const { execFileSync } = require('child_process');
const fs = require('fs');
const path = require('path');

const { root } = require('../tests/support/addon');
const { startScript } = require('../tests/support/child');
const scenarios = require('./scenarios');

const library = path.join(root, 'build', 'torture', 'libTessaroFailures.so');
const patience = 60000; // for one act and its check
const mostCalls = 500;
const mostFindings = 20;

function buildLibrary() {
  const source = path.join(__dirname, 'Failures.cc');
  fs.mkdirSync(path.dirname(library), { recursive: true });
  execFileSync('clang++', ['-std=c++20', '-O2', '-shared', '-fPIC', '-fvisibility=hidden', '-o', library, source]);
}

/** Stands for the context of a test: what is started ends with the scenario. */
function makeContext() {
  const hooks = [];
  return {
    after: (hook) => hooks.push(hook),
    async end() {
      for (const hook of hooks.reverse()) await hook();
    },
  };
}

// The script of a process. `act(i)` runs while a call may fail, and gives the module's reports; `check(i, result)` runs
// when no call fails any more, and throws when something is lost.
const loop = ({ source, kinds, mostOf = {}, leastOf = {} }, begin) => `
  const fs = require('fs');
  const { eventually } = require('./tests/support/child');
  const arm = (kind, number) => { try { fs.openSync('/torture/' + kind + '/' + number); } catch { /* never opens */ } };
  const say = (message) => fs.writeSync(1, JSON.stringify(message) + '\\n');
  let round = 0;
  (async () => {
    ${source}
    const once = async (kind, number) => {
      ++round;
      say({ began: [kind, number] });
      arm(kind, number);
      let result;
      try { result = await act(round); } catch (error) { result = { error: String(error) }; }
      const [calls, failures] = fs.readlinkSync('/torture/count').split(' ').map(Number);
      arm('none', 0);
      await check(round, result);
      say({ ended: [kind, number], calls, failures });
      return failures > 0;
    };
    await once('none', 0);
    const begin = ${JSON.stringify(begin)};
    const kinds = ${JSON.stringify(kinds)};
    for (const kind of kinds.slice(kinds.indexOf(begin[0]))) {
      const most = ${JSON.stringify(mostOf)}[kind] ?? ${mostCalls};
      const least = ${JSON.stringify(leastOf)}[kind] ?? 0;
      for (let n = kind === begin[0] ? begin[1] : 1; n <= most && ((await once(kind, n)) || n < least); ++n);
    }
    say({ done: true });
    process.exit(0);
  })().catch((error) => { say({ lost: String(error.message ?? error) }); process.exit(1); });`;

/** Runs one process until it has done everything, or has failed. Gives the place where it did. */
async function runProcess(context, scenario, surroundings, begin, failed) {
  const child = startScript(context, loop({ ...scenario, source: surroundings.source }, begin), {
    home: surroundings.home,
    env: { ...surroundings.env, LD_PRELOAD: library },
  });
  let seen = 0;
  let last = Date.now();
  let place = begin;
  let lost;
  const read = () => {
    const lines = child.output.stdout.split('\n').slice(0, -1);
    for (const line of lines.slice(seen)) {
      const message = JSON.parse(line);
      last = Date.now();
      if (message.began) place = message.began;
      if (message.lost) lost = message.lost;
      if (message.ended) failed(message);
    }
    seen = lines.length;
  };
  let hung = false;
  const watch = setInterval(() => {
    read();
    if (Date.now() - last < patience) return;
    hung = true;
    child.process.kill('SIGKILL');
  }, 20);
  const { code, signal, stderr } = await child.ended;
  clearInterval(watch);
  read();
  if (code === 0) return undefined;
  return { place, reason: hung ? 'hangs' : (lost ?? `ends with ${signal ?? code}: ${stderr.slice(-300)}`) };
}

async function runScenario(name) {
  const context = makeContext();
  const counts = {};
  const findings = [];
  try {
    const scenario = scenarios[name];
    const surroundings = await scenario.setUp(context);
    const note = ({ ended: [kind], failures }) => (counts[kind] = (counts[kind] ?? 0) + failures);
    for (let begin = [scenario.kinds[0], 1]; begin !== undefined; ) {
      const finding = await runProcess(context, scenario, surroundings, begin, note);
      if (finding !== undefined) findings.push(finding);
      if (findings.length === mostFindings) break;
      // A process that can't even act without failures would be started for ever.
      if (finding?.place[0] === 'none') break;
      begin = finding && [finding.place[0], finding.place[1] + 1];
    }
    const lost = await surroundings.atEnd?.();
    if (lost) findings.push({ place: ['end', 0], reason: lost });
  } catch (error) {
    findings.push({ place: ['surroundings', 0], reason: error.message });
  } finally {
    await context.end();
  }
  return { name, counts, findings };
}

const kinds = ['open', 'write', 'sync', 'rename', 'connect', 'send', 'receive', 'memory', 'x'];

function print({ name, counts, findings }) {
  const cells = kinds.map((kind) => String(counts[kind] ?? '-').padStart(8));
  console.log(`${name.padEnd(18)}${cells.join('')}  ${findings.length === 0 ? 'passed' : `${findings.length} FAILED`}`);
  for (const { place, reason } of findings) console.log(`    ${place.join(' ')}: ${reason}`);
}

async function main() {
  const named = process.argv.slice(2);
  buildLibrary();
  const results = [];
  for (const name of Object.keys(scenarios).filter((each) => named.length === 0 || named.includes(each))) {
    results.push(await runScenario(name));
    for (const { place, reason } of results.at(-1).findings)
      console.error(`torture: ${name}: ${place.join(' ')}: ${reason}`);
  }
  console.log(`${'failed calls'.padEnd(18)}${kinds.map((kind) => kind.padStart(8)).join('')}`);
  results.forEach(print);
  process.exitCode = results.some(({ findings }) => findings.length > 0) ? 1 : 0;
}

main();
