'use strict';

// The account menu on its way from script to the tray, and a click on its way back. Everything runs in one process, on
// a message bus that is a real one.

const { once } = require('events');

const host = require('../host');
const { account, translations } = require('../tests/support/accountMenu');
const { probe } = require('../tests/support/addon');
const { report, summary } = require('./support');

const rounds = 21;
const ms = { unit: 'ms', scale: 1e6 };

host.start();
host.setKeepAlive(true);
const { module: native, bench, bus } = probe();

const since = (start) => Number(process.hrtime.bigint() - start);

async function call(method, row) {
  const start = process.hrtime.bigint();
  const answer = await new Promise((resolve) => bus.callMenu(method, row, resolve));
  if (answer !== 'answered') throw new Error(`${method} ${answer}`);
  return since(start);
}

async function click(row) {
  const heard = once(host, 'notification');
  const start = process.hrtime.bigint();
  const answered = call('Event', row);
  await heard;
  const time = since(start);
  await answered;
  return time;
}

async function repeat(work) {
  await work();
  const samples = [];
  for (let round = 0; round < rounds; ++round) samples.push(await work());
  return samples;
}

async function measureMenu(accounts, messages) {
  const contents = {
    translations,
    accounts: Array.from({ length: accounts }, (_, id) => account(id, { count: messages, messages, color: '2980B9' })),
  };
  native.setStatusItemMenuNeedsUpdateCallbackFunction(() => JSON.stringify(contents));
  host.postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': accounts });

  const steps = await repeat(() => bench.timeRebuild());
  const step = (index) => summary(steps.map((times) => times[index]));
  const rebuild = await repeat(() => call('AboutToShow', 0));
  const layout = await repeat(() => call('GetLayout', 0));
  const clicks = await repeat(() => click(1));
  report(
    `The menu of ${accounts} accounts with ${messages} messages each`,
    {
      'everything: AboutToShow, then GetLayout': summary(rebuild.map((time, index) => time + layout[index])),
      '  asking script': step(0),
      '  reading its JSON': step(1),
      '  making the NSMenu': step(2),
      '  all of AboutToShow: these, and the rows for the bus': summary(rebuild),
      '  GetLayout: the layout on the bus': summary(layout),
      'a click, from the tray to the host’s script': summary(clicks),
    },
    ms,
  );
}

async function main() {
  await measureMenu(5, 20);
  await measureMenu(50, 100);
  host.setKeepAlive(false);
  process.exit();
}

main();
