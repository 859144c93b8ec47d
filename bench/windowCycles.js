'use strict';

// Whether windows with toolbars leave memory behind: opens and closes many, and tells what the process holds.
//
//   node bench/windowCycles.js [CYCLES]

const fs = require('fs');

const host = require('../host');
const { probe } = require('../tests/support/addon');

const cycles = Number(process.argv[2] || 10000);
const reports = 10;

const { display } = host.start();
const { module: native } = probe();

const item = (_, i) => ({ identifier: `item-${i}`, label: `${i}`, 'image-name': 'TB_Inbox', 'button?': true });
const definition = JSON.stringify({
  identifier: 'cycle',
  items: Array.from({ length: 5 }, item).map((each) => ({ ...each, 'default?': true })),
  options: { 'allows-user-customization?': true },
});

const turn = () => new Promise(setImmediate);

function memory() {
  global.gc?.();
  const status = fs.readFileSync('/proc/self/status', 'utf8');
  return Number(status.match(/VmRSS:\s+(\d+)/)[1]) / 1024;
}

async function cycle() {
  const window = host.createWindow({ title: 'Cycle', width: 600, height: 300 });
  native.addToolbarToWindow(window, 1, definition);
  native.showAddTabButton(1);
  native.validateToolbarItems(1);
  await turn();
  host.closeWindow(window);
  await turn();
}

async function main() {
  if (!display) return console.log('No display, so no windows.');
  host.setKeepAlive(true);
  native.setToolbarCallbackFunctions(
    () => true,
    () => {},
    () => {},
  );
  const start = Date.now();
  for (let done = 0; done <= cycles; ++done) {
    if (done % Math.ceil(cycles / reports) === 0) {
      console.log(`${String(done).padStart(6)} windows  ${memory().toFixed(1).padStart(7)} MB`);
    }
    await cycle();
  }
  console.log(`${((Date.now() - start) / cycles).toFixed(1)} ms a window`);
  process.exit();
}

main();
