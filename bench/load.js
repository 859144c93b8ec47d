'use strict';

// The cost of loading the module: time of require and Init, and memory, in fresh processes. GNUstep alone is what is
// below it: nothing that is written against Cocoa can cost less.

const { spawnSync } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const { root } = require('../tests/support/addon');
const { redirectGNUstep } = require('../host/gnustepHome');
const { report, summaries, takeTurns } = require('./support');

const source = (load) => `
  const before = process.memoryUsage.rss();
  const start = process.hrtime.bigint();
  ${load}
  const elapsed = Number(process.hrtime.bigint() - start);
  console.log(JSON.stringify({ elapsed, memory: process.memoryUsage.rss() - before }));`;

const contestants = {
  'Node-API stub': source(`require('./tests/support/addon').open('CallStub');`),
  // RTLD_NODELETE keeps what is no add-on.
  'GNUstep alone': source(`try { process.dlopen({ exports: {} }, 'libgnustep-gui.so', 0x1002); } catch {}`),
  'module: require and Init': source(`require(${JSON.stringify(root)});`),
};

const home = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-bench-'));
const env = redirectGNUstep(home, { ...process.env, HOME: home });

function load(script) {
  const options = { cwd: root, env, stdio: ['ignore', 'pipe', 'ignore'] };
  return JSON.parse(spawnSync(process.execPath, ['-e', script], options).stdout.toString());
}

async function main() {
  const samples = await takeTurns(contestants, { rounds: 15, sample: load });
  fs.rmSync(home, { recursive: true, force: true });
  const column = (key) =>
    summaries(
      Object.fromEntries(Object.entries(samples).map(([name, values]) => [name, values.map((each) => each[key])])),
    );
  report('Loading, time', column('elapsed'), { unit: 'ms', scale: 1e6 });
  report('Loading, memory', column('memory'), { unit: 'MB', scale: 1048576 });
}

main();
