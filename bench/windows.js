'use strict';

// The cost of making and validating a toolbar, and of a drop of many files.

const host = require('../host');
const { probe } = require('../tests/support/addon');
const { measure, report, toolbarOf } = require('./support');

const { display } = host.start();
const { module: native } = probe();
const ms = { unit: 'ms', scale: 1e6 };

async function main() {
  if (!display) return console.log('No display, so no windows.');
  host.setKeepAlive(true);
  native.setToolbarCallbackFunctions(
    () => true,
    () => {},
    () => {},
  );
  const window = host.createWindow({ title: 'Benchmark', width: 1200 });
  while (!host.windowInfo(window).isKey) await new Promise((resolve) => setTimeout(resolve, 10));

  const [small, large] = [toolbarOf(5), toolbarOf(50)];
  const make = (text) => {
    const handle = host.createWindow({ title: 'Toolbar' });
    if (text !== undefined) native.addToolbarToWindow(handle, 2, text);
    host.closeWindow(handle);
  };
  report(
    'A window opened and closed',
    measure(
      { 'without a toolbar': () => make(), '5 items': () => make(small), '50 items': () => make(large) },
      { rounds: 9, calls: 1 },
    ),
    ms,
  );

  native.addToolbarToWindow(window, 1, large);
  report(
    'Validation of 50 items by script',
    measure({ all: () => native.validateToolbarItems(1) }, { rounds: 21, calls: 1 }),
    ms,
  );

  const paths = JSON.stringify(Array.from({ length: 1000 }, (_, i) => `/home/ann/Documents/attachment ${i}.pdf`));
  report(
    'Drop of 1 000 paths',
    measure({ dropFiles: () => native.dropFiles(window, '{"x":10,"y":20}', paths) }, { rounds: 21, calls: 1 }),
    ms,
  );
  process.exit();
}

main();
