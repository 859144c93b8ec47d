'use strict';

// What loading the module costs: time of require and Init, and memory, in fresh processes.

const { spawnSync } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const { root } = require('../tests/support/addon');
const { redirectGNUstep } = require('../host/gnustepHome');
const { report, summary } = require('./support');

const source = (load) => `
  const before = process.memoryUsage.rss();
  const start = process.hrtime.bigint();
  ${load}
  const elapsed = Number(process.hrtime.bigint() - start);
  console.log(JSON.stringify({ elapsed, memory: process.memoryUsage.rss() - before }));`;

const peers = {
  'Node-API stub': source(`require('./tests/support/addon').open('CallStub');`),
  'module: require and Init': source(`require(${JSON.stringify(root)});`),
};

const home = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-bench-'));
const env = redirectGNUstep(home, { ...process.env, HOME: home });
const samples = Object.fromEntries(Object.keys(peers).map((name) => [name, { elapsed: [], memory: [] }]));
for (let round = 0; round < 11; ++round) {
  for (const [name, script] of Object.entries(peers)) {
    const { stdout } = spawnSync(process.execPath, ['-e', script], {
      cwd: root,
      env,
      stdio: ['ignore', 'pipe', 'ignore'],
    });
    const { elapsed, memory } = JSON.parse(stdout.toString());
    samples[name].elapsed.push(elapsed);
    samples[name].memory.push(memory);
  }
}
fs.rmSync(home, { recursive: true, force: true });

const column = (key) =>
  Object.fromEntries(Object.entries(samples).map(([name, values]) => [name, summary(values[key])]));
report('Loading, time', column('elapsed'), { unit: 'ms', scale: 1e6 });
report('Loading, memory', column('memory'), { unit: 'MB', scale: 1048576 });
