'use strict';

// The end of what tests start: the latest first, so that processes die before their folders are removed.

const fs = require('fs');
const os = require('os');
const path = require('path');

const { paced } = require('./pace');

const stacks = new WeakMap();

function withDeadline(promise) {
  let timer;
  const late = new Promise((_, reject) => {
    timer = setTimeout(() => reject(new Error('an end of the test takes too long')), paced(15000));
  });
  return Promise.race([promise, late]).finally(() => clearTimeout(timer));
}

async function endAll(ends) {
  const failures = [];
  while (ends.length > 0) {
    const end = ends.pop();
    await withDeadline(Promise.resolve().then(end)).catch((error) => failures.push(error));
  }
  if (failures.length > 0) throw failures[0];
}

/** Runs `end` after the test, whatever the test and other ends do. */
function atEnd(test, end) {
  if (!stacks.has(test)) {
    const ends = [];
    stacks.set(test, ends);
    test.after(() => endAll(ends));
  }
  stacks.get(test).push(end);
}

/** Ends a process with the test, and waits until the process is gone. Gives a promise of its end. */
function endWith(test, child) {
  const ended = new Promise((resolve) => child.on('exit', (code, signal) => resolve({ code, signal })));
  const failed = new Promise((resolve) => child.on('error', resolve));
  atEnd(test, () => {
    child.kill('SIGKILL');
    return Promise.race([ended, failed]);
  });
  return Promise.race([ended, failed]);
}

/** Ends a process with the test. Gives a function that ends the process at once, and waits until it is gone. */
function killable(test, child) {
  const ended = endWith(test, child);
  return () => {
    child.kill('SIGKILL');
    return ended;
  };
}

/** A directory that is gone when the test has ended. */
function temporaryDirectory(test) {
  const directory = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-test-'));
  // A process of a process may still be writing.
  atEnd(test, () => fs.rmSync(directory, { recursive: true, force: true, maxRetries: 5, retryDelay: 100 }));
  return directory;
}

/** Such a directory: its path, `at(name)` for what is in it, and `write(name, contents)`, which gives the path. */
function temporaryFiles(test) {
  const folder = temporaryDirectory(test);
  const at = (name) => path.join(folder, name);
  const write = (name, contents) => {
    fs.mkdirSync(path.dirname(at(name)), { recursive: true });
    fs.writeFileSync(at(name), contents);
    return at(name);
  };
  return { folder, at, write };
}

module.exports = { atEnd, endWith, killable, temporaryDirectory, temporaryFiles };
