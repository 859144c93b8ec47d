'use strict';

// Figures of the reference host's event loop, which is the module's too.

const { once } = require('events');

const host = require('../host');

const kKeycodeA = 38;
const kKeys = 200;
const kTimers = 40;
const kCalls = 100;
const kTurns = 20000;
const kIdleSeconds = 5;

const pause = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

const row = (what, figures) => console.log(`${what.padEnd(44)}${figures}`);

function distribution(nanoseconds) {
  const sorted = nanoseconds.map((value) => value / 1e6).sort((a, b) => a - b);
  const at = (share) => sorted[Math.min(sorted.length - 1, Math.floor(sorted.length * share))].toFixed(3);
  return `median ${at(0.5)} ms   p95 ${at(0.95)} ms   worst ${at(1)} ms   (${sorted.length})`;
}

async function answersOf(count, start) {
  const answers = [];
  const receive = (answer) => answers.push(answer);
  host.on('probe', receive);
  await start();
  while (answers.length < count) await once(host, 'probe');
  host.off('probe', receive);
  return answers;
}

async function idle() {
  await pause(1500);
  const before = { cpu: process.cpuUsage(), time: process.hrtime.bigint(), ...host.stats() };
  await pause(kIdleSeconds * 1000);
  const { user, system } = process.cpuUsage(before.cpu);
  const percent = ((user + system) * 1000 * 100) / Number(process.hrtime.bigint() - before.time);
  row(
    'Idle, one window',
    `${percent.toFixed(3)} % of a processor, ${host.stats().turns - before.turns} turns in ${kIdleSeconds} s`,
  );
}

async function keys(window) {
  const delays = [];
  const { systemWindow } = host.windowInfo(window);
  for (let i = 0; i < kKeys; ++i) {
    const [{ sent }] = await answersOf(1, () => host.probe('sendKey', { window: systemWindow, keycode: kKeycodeA }));
    let last = 0;
    while (last < sent) {
      await pause(2);
      last = host.keyArrivals().at(-1)?.arrival ?? 0;
    }
    delays.push(last - sent);
  }
  row('Key through the X server to sendEvent:', distribution(delays));
}

async function timers() {
  const answers = await answersOf(kTimers, () => host.probe('startTimer', { interval: 0.02, count: kTimers }));
  row('NSTimer, lateness', distribution(answers.map(({ due, fired }) => fired - due)));
}

async function threadCalls() {
  const answers = await answersOf(kCalls, async () => {
    for (let i = 0; i < kCalls; ++i) {
      await pause(3);
      host.probe('callFromThread');
    }
  });
  row('Call from another thread to a sleeping loop', distribution(answers.map(({ sent, arrived }) => arrived - sent)));
}

async function busyLoop() {
  const before = host.stats();
  for (let i = 0; i < kTurns; ++i) await new Promise((resolve) => setImmediate(resolve));
  const after = host.stats();
  const nanoseconds = after.nanoseconds - before.nanoseconds;
  const turns = after.turns - before.turns;
  row('Cost of a turn of Cocoa’s loop', `mean ${(nanoseconds / turns / 1000).toFixed(1)} µs   (${turns})`);
  row('Cost per turn of Node’s, kept busy', `mean ${(nanoseconds / kTurns / 1000).toFixed(2)} µs   (${kTurns})`);
}

async function main() {
  const start = process.hrtime.bigint();
  const { display, reason } = host.start();
  row('Start of the application', `${(Number(process.hrtime.bigint() - start) / 1e6).toFixed(0)} ms`);
  host.setKeepAlive(true);
  if (display) {
    const window = host.createWindow({ title: 'Benchmark' });
    await idle();
    await keys(window);
  } else {
    console.log(`No display, so no windows and no keys: ${reason}`);
  }
  await timers();
  await threadCalls();
  await busyLoop();
  row('Memory', `${(process.memoryUsage.rss() / 1048576).toFixed(0)} MB`);
  host.setKeepAlive(false);
}

main();
