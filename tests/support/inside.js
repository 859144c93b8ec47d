'use strict';

// The other end of scenario.js: the fixture of scenarios, in their processes.

const assert = require('assert');
const { execFile, spawn } = require('child_process');
const events = require('events');
const fs = require('fs');
const path = require('path');
const readline = require('readline');
const { promisify } = require('util');
const v8 = require('v8');

const { probe, root } = require('./addon');
const { eventually, hasPassed } = require('./pace');

const execute = promisify(execFile);
const print = (value) => void process.stdout.write(`${JSON.stringify(value ?? null)}\n`);

/** Ends the process when what was printed is written: a pipe takes no more than 200 KB at once. */
const end = () => void process.stdout.write('', () => process.exit());

/** The texts logged since captureLog(), of one level or of all. */
const log = (flag) => {
  const { flushLog, capturedLog } = probe();
  flushLog();
  return capturedLog()
    .filter((line) => flag === undefined || line.flag === flag)
    .map(({ text }) => text);
};

let linesRead = 0;

const pieces = {
  ...{ assert, events, fs, path, spawn, print, eventually, hasPassed, log },
  equal: assert.deepStrictEqual,
  /** A script of the project. */
  load: (name) => require(path.join(root, name)),
  env: process.env,
  home: process.env.HOME,
  report: (value) => print({ report: value ?? null }),
  nextTurn: () => new Promise(setImmediate),
  /** Runs a program, and gives what it prints. */
  run: (command, ...args) => execute(command, args.flat().map(String)).then(({ stdout }) => stdout),
  /** The value of an object's key path, as `get(menu, 'itemArray.title')`. Gives null where there is none. */
  get: (target, keyPath) => probe().sendMessage(target, 'valueForKeyPath:', keyPath) ?? null,
  getAll: (target, ...keyPaths) => keyPaths.map((keyPath) => pieces.get(target, keyPath)),
  /** The texts logged since the last call. */
  news: () => log().slice(linesRead, (linesRead = log().length)),
  /** The message of what a function throws. */
  thrownBy: (act) => {
    try {
      act();
    } catch (error) {
      return error.message;
    }
    return undefined;
  },
};

// Members that are loaded on demand: the host, the module and its probes.
const elsewhere = { host: () => require('../../host'), native: () => probe().module };

// Further parts, as scenarios() names them.
const parts = {
  keys: () => require('./keys').pressing,
  windows: () => require('./windows').windowing,
  requests: () => require('./requests').requesting,
  accounts: () => () => require('./accountMenu'),
};

function makeFixture({ host, uses }, more) {
  const display = host ? elsewhere.host().start(host === true ? undefined : host) : undefined;
  // After the host, whose classes the module changes.
  const probes = probe();
  const base = { ...pieces, display };
  const fixture = new Proxy(base, { get: (_, name) => base[name] ?? elsewhere[name]?.() ?? probes[name] });
  for (const part of [...uses.map((name) => parts[name]()), more]) Object.assign(base, part(fixture));
  return fixture;
}

const read = (data) => v8.deserialize(Buffer.from(data, 'base64'));

function fail(error) {
  console.error(error);
  process.exit(1);
}

// Not in this turn: the host's event loop has to run first, as it does in an application.
const start = (work) =>
  setImmediate(() => {
    try {
      work();
    } catch (error) {
      fail(error);
    }
  });

/** A scenario that takes its time ends the process; after another the process has to end by itself. */
function run(data, more, scenario) {
  const { settings, args } = read(data);
  start(() => {
    const value = scenario(makeFixture(settings, more), ...args);
    if (!(value instanceof Promise)) return value === undefined || print(value);
    return value.then(print).then(end, fail);
  });
}

/** A scenario without a value: the print shows that it has come to its end. */
const check = (data, more, scenario) => run(data, more, async (...all) => void (await scenario(...all)));

const each = (data, more, scenario) =>
  run(data, more, async (fixture, rows, ...args) => {
    const results = [];
    for (const row of rows) results.push((await scenario(fixture, ...row, ...args)) ?? null);
    return results;
  });

function stay(data, more) {
  const { settings } = read(data);
  start(() => {
    const fixture = makeFixture(settings, more);
    const answer = (value) => print({ answer: value ?? null });
    readline.createInterface({ input: process.stdin }).on('line', async (line) => {
      const { source, args } = read(line);
      try {
        answer(await eval(source)(fixture, ...args));
      } catch (error) {
        print({ answer: null, error: error.stack });
      }
    });
    answer('ready');
  });
}

module.exports = { run, check, each, stay };
