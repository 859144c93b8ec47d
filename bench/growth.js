'use strict';

// How costs grow with the size of the work: 1, 10 and 100 times as much as usual.

const fs = require('fs');
const path = require('path');
const sharp = require('sharp');

const { accountsStore, previousVersion } = require('../tests/support/stores');
const manyAccounts = require('./accounts');
const day = require('./mailDay');
const { digits, record, summary, takeTurns } = require('./support');

const { native, probes } = day;
const rounds = 5;
// The limit for the last step, to 10 times the size.
const linear = 12;

const reading = (count) => {
  const text = JSON.stringify(Array.from({ length: count }, (_, id) => ({ id, from: 'Ann', subject: `Lunch ${id}?` })));
  return () => probes.bench.reads(text);
};

async function pictures(count) {
  // Sides, so that the number of pixels grows with the count.
  const [width, height] = [600, 400].map((side) => Math.round(side * Math.sqrt(count)));
  const file = path.join(day.home, `${count}.jpg`);
  const noise = { type: 'gaussian', mean: 128, sigma: 40 };
  await sharp({ create: { width, height, channels: 3, background: '#000', noise } })
    .jpeg()
    .toFile(file);
  return () => native.scaleImage(file, `${file}.scaled.jpg`, 300, 300);
}

function menuOf(count) {
  const items = Array.from({ length: count }, (_, i) => ({ title: `Item ${i}`, commandId: 10000 + i }));
  let turn = 0;
  return () => {
    probes.menus.setMainMenu([{ title: 'TessaroHost', items }]);
    for (let i = 0; i < 100; ++i) {
      native.updateMainMenuMenuItemWithCommandId(10000 + ((i * 37) % count), `{"title":"${(turn += 1)}"}`);
    }
  };
}

function passwords(count) {
  const names = Array.from({ length: count }, (_, i) => `growth-${i}@example.org`);
  for (const name of names) native.setPasswordForAccount('password', name);
  return () => {
    const { length } = probes.sendMessage(probes.sendMessage('TsKeychain', 'sharedInstance'), 'allAccounts');
    if (length < count) throw new Error('passwords are missing');
  };
}

function previousAccounts(count) {
  previousVersion(day.home).write({ accounts: accountsStore(manyAccounts(count, 10)).text() });
  return () => native.getMigrationInfo('accounts');
}

function recipients(count) {
  probes.bench.prepareMessage(count);
  return () =>
    new Promise((resolve) => {
      native.setComposeOutgoingMessageCallbackFunction(resolve);
      probes.bench.composeMessage();
    });
}

function logMessages(count) {
  return () => {
    for (let i = 0; i < count; ++i) probes.logText(8, 'Something of the usual length has happened to account 17');
    probes.flushLog();
  };
}

async function works() {
  const request = await day.startRequests();
  await day.startAlerts();
  return {
    'log messages': [1000, logMessages],
    'objects of JSON': [1000, reading],
    'items of the main menu, made, and 100 of them updated': [50, menuOf],
    'rows of the tray’s menu, opened': [
      50,
      (count) => {
        day.showMenu(5, count / 5);
        return day.openMenu;
      },
    ],
    alerts: [10, (count) => () => day.showAlerts(count)],
    requests: [100, (count) => () => request(count)],
    'recipients of a message': [100, recipients],
    'pixels of a picture (of 600 × 400)': [1, pictures],
    'accounts of the previous version': [10, previousAccounts],
    'passwords, listed': [10, passwords],
  };
}

/** Prints what one work costs at each size. Processor time is judged: others may be working on the machine. */
async function measure(title, usual, make) {
  const results = {};
  const processor = [];
  for (const size of [usual, 10 * usual, 100 * usual]) {
    const run = await make(size);
    const samples = (await takeTurns({ run }, { rounds, sample: milliseconds })).run;
    results[size] = summary(samples.map(({ passed }) => passed));
    processor.push(summary(samples.map(({ used }) => used)).median);
  }
  const steps = [processor[1] / processor[0], processor[2] / processor[1]];
  const judged = steps[1] > linear ? 'faster than linear' : '';
  const sizes = Object.entries(results).map(([size, { median }]) => `${size}: ${digits(median)} ms`);
  console.log(`  ${title}\n    ${sizes.join('   ')}   (processor × ${steps.map(digits).join(', × ')}) ${judged}`);
  record({ title: `Growth: ${title}`, unit: 'ms', results, steps });
}

/** What a run takes by the clock, and of this process's processor time. */
async function milliseconds(run) {
  const start = process.hrtime.bigint();
  const before = process.cpuUsage();
  await run();
  const { user, system } = process.cpuUsage(before);
  return { passed: Number(process.hrtime.bigint() - start) / 1e6, used: (user + system) / 1e3 };
}

async function main() {
  if (!day.display) return console.log('No display, so no growth.');
  const chosen = process.argv[2];
  console.log('\nGrowth: the cost of 1, 10 and 100 times the usual size');
  for (const [title, [usual, make]] of Object.entries(await works())) {
    if (chosen === undefined || title.includes(chosen)) await measure(title, usual, make);
    fs.rmSync(path.join(day.home, 'Library'), { recursive: true, force: true });
  }
  return day.end();
}

main();
