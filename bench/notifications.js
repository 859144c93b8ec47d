'use strict';

// Alerts beside a package of npm: from the call until the server has given the alert its id, one at a time on a real
// server's screen, and a thousand at once on a server that draws nothing, as drawing them would be all that is measured.

const notifier = require('node-notifier');

const { module: native, notifications } = require('../tests/support/addon').probe();
const { startDesktopServer, startNotificationServer } = require('../tests/support/notificationServer');
const { report, summaries, takeTurns } = require('./support');

const rounds = 100;
const many = 1000;

const text = { title: 'Ann Example', message: 'Lunch & more: today at one?' };
const deliver = (identifier) =>
  native.deliverUserNotification(identifier, text.title, null, text.message, null, false, null, true, 'Archive', null);

const untilDelivered = async (count) => {
  for (let seen = 0; seen < count; await new Promise(setImmediate)) {
    seen += notifications.takeRecorded().filter(([name]) => name === 'TsNotificationDidDeliver').length;
  }
};

// The peer starts a process for each alert, which ends when the server has answered.
const notify = () =>
  new Promise((resolve, reject) => notifier.notify(text, (error) => (error ? reject(error) : resolve())));

const peers = {
  async module(i) {
    deliver(`id ${i}`);
    await untilDelivered(1);
  },
  'node-notifier': notify,
};

async function time(work) {
  const start = process.hrtime.bigint();
  await work();
  return Number(process.hrtime.bigint() - start) / 1e6;
}

async function latency() {
  report('An alert, from the call to its id', summaries(await takeTurns(peers, { rounds })), {
    unit: 'ms',
    scale: 1e6,
  });
}

async function thousand() {
  const identifiers = Array.from({ length: many }, (_, i) => `of many ${i}`);
  const delivered = await time(async () => {
    identifiers.forEach(deliver);
    await untilDelivered(many);
  });
  // An alert is removed when a later one has come through.
  const removed = await time(async () => {
    identifiers.forEach((identifier) => native.removeUserNotification(identifier));
    deliver('last');
    await untilDelivered(1);
  });
  const peer = await time(async () => {
    for (let i = 0; i < many; i += 8) await Promise.all(Array.from({ length: 8 }, notify));
  });
  console.log(`\n${many} alerts (ms in all)`);
  console.log(`  module         delivered ${delivered.toFixed(0)}, removed ${removed.toFixed(0)}`);
  console.log(`  node-notifier  delivered ${peer.toFixed(0)}, eight at a time; it can't remove any`);
}

/** Runs `work` with a server; `start` is given what tests have for cleaning up after themselves. */
async function withServer(start, work) {
  const cleaning = [];
  await start({ after: (step) => cleaning.push(step) });
  await work();
  native.removeUserNotifications();
  for (const step of cleaning) await step();
}

async function main() {
  notifications.record('TsNotification');
  await withServer((test) => startDesktopServer(test, process.env, 'dunst'), latency);
  const bus = { address: process.env.DBUS_SESSION_BUS_ADDRESS };
  await withServer((test) => startNotificationServer(test, bus), thousand);
}

main();
