'use strict';

// Another process of the application, without a display.
//
//   node host/tour/anotherProcess.js crash           crashes
//   node host/tour/anotherProcess.js update BUNDLE   installs what it finds, and ends with its standard input
//
// Prints the names of the module's notifications, a line each.

const host = require('..');

const [task, bundlePath] = process.argv.slice(2);
host.start(bundlePath && { bundlePath });
host.setKeepAlive(true);
const native = require('../..');
host.on('notification', ({ name }) => console.log(name));

const tasks = {
  crash() {
    native.setupCrashReporter();
    native.testCrash();
  },
  update() {
    process.stdin.resume().on('end', () => process.exit());
    native.setUserDefault('SUAutomaticallyUpdate', true);
    native.checkForUpdates(true, false);
  },
};
tasks[task]();
