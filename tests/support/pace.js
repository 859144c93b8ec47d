'use strict';

// Deadlines follow the machine: on one that is slow, busy or runs sanitized code they are later. This is the only place
// that knows by how much.

const { spawnSync } = require('child_process');

/** Milliseconds that an idle machine takes to start Node.js. */
const usual = 60;
// Whatever takes longer than this hangs.
const most = 5;
const sanitizerFactor = process.env.TESSARO_SANITIZER_RUNTIME ? 4 : 1;

// A test's own processes take over the pace of the test.
let slowness = Number(process.env.TESSARO_PACE) || undefined;

function measure() {
  const start = process.hrtime.bigint();
  spawnSync(process.execPath, ['-e', '0'], { stdio: 'ignore' });
  slowness = Math.min(Math.max(Number(process.hrtime.bigint() - start) / 1e6 / usual, 1), most);
  process.env.TESSARO_PACE = String(slowness);
  return slowness;
}

/** A deadline for this machine, from one for an idle machine, in milliseconds. */
const paced = (milliseconds) => milliseconds * (slowness ?? measure()) * sanitizerFactor;

/** Whether that much time has passed since `start`. The machine is measured again before the answer is yes. */
function hasPassed(start, milliseconds) {
  if (Date.now() - start <= paced(milliseconds)) return false;
  measure();
  return Date.now() - start > paced(milliseconds);
}

/** Waits until `condition()` is true or an object, and gives that. */
async function eventually(condition, description, milliseconds = 20000) {
  const start = Date.now();
  for (;;) {
    const value = await condition();
    if (value) return value;
    if (hasPassed(start, milliseconds)) throw new Error(`${description}: not within ${Date.now() - start} ms`);
    await new Promise((resolve) => setTimeout(resolve, 10));
  }
}

module.exports = { paced, hasPassed, eventually };
