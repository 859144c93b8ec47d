'use strict';

// Scenarios: functions that run in a process of their own, in which the module is. They see nothing of the test's file
// but their arguments; their first one is a fixture, with all that inside.js offers.

const assert = require('assert');
const fs = require('fs');
const { test } = require('node:test');
const path = require('path');
const v8 = require('v8');

const { evaluate, eventually, runScript, startScript } = require('./child');
const { useSession } = require('./session');

let count = 0;

/** A method's source has no `function` before its name. */
const sourceOf = (scenario) => String(scenario).replace(/^(async )?fixture\(/, '$1function fixture(');

/** Writes what the process runs: a file, because a command line has no room for large arguments. */
const program = (entry, settings, functions, args) => (home) => {
  const file = path.join(home, `scenario-${process.pid}-${++count}.js`);
  const data = v8.serialize({ settings, args }).toString('base64');
  const inside = JSON.stringify(path.join(__dirname, 'inside.js'));
  const sources = functions.map((each) => `(${sourceOf(each ?? (() => ({})))})`);
  fs.writeFileSync(file, `'use strict';\nrequire(${inside}).${entry}('${data}', ${sources.join(',\n')});\n`);
  return [file];
};

/** A running process that runs scenarios one after the other. */
class Resident {
  #asked = 0;

  constructor(child) {
    Object.assign(this, child);
  }

  #lines(kind) {
    const complete = this.output.stdout.split('\n').slice(0, -1);
    return complete.map((line) => JSON.parse(line)).filter((line) => kind in line);
  }

  async #answer(number, description) {
    const hasEnded = () => this.process.exitCode !== null || this.process.signalCode !== null;
    const answers = () => this.#lines('answer');
    await eventually(() => answers().length > number || hasEnded(), description);
    if (answers().length <= number) throw new Error(`the process has ended: ${this.output.stderr}`);
    const { answer, error } = answers()[number];
    if (error !== undefined) throw new Error(error);
    return answer;
  }

  isReady = () => this.#answer(this.#asked++, 'the process is ready');

  /** Runs a scenario in the process, and gives its value. */
  tell(scenario, ...args) {
    const data = v8.serialize({ source: `(${scenario})`, args }).toString('base64');
    this.process.stdin.write(`${data}\n`);
    return this.#answer(this.#asked++, String(scenario));
  }

  /** Waits until a scenario's value is true. */
  until = (scenario, ...args) => eventually(() => this.tell(scenario, ...args), String(scenario));

  /** The reports of the process so far. */
  get reports() {
    return this.#lines('report').map(({ report }) => report);
  }

  /** Waits for the report of a number, and gives it. */
  async report(number) {
    await eventually(() => this.reports.length > number, `report ${number}`);
    return this.reports[number];
  }

  async kill() {
    this.process.kill('SIGKILL');
    await this.ended;
  }
}

/**
 * Gives a function that runs a scenario, and gives its value: `run(t, scenario, ...args)`. Settings as in startScript(),
 * and: `display`, whether the process is in a desktop session; `host`, whether the reference host is started (with this
 * object's options, if it is one); `uses`, further parts of the fixture, which inside.js names; `fixture`, a function
 * that makes more members of the fixture from it.
 */
function scenarios({ display = false, host = display, uses = [], fixture, env, ...options } = {}) {
  const session = display ? useSession() : { env: {} };
  const inside = { host, uses };
  const outside = () => ({ ...options, env: { ...session.env, ...env } });
  const run = (t, scenario, ...args) => evaluate(t, program('run', inside, [fixture, scenario], args), outside());
  const more = (other) => {
    const merged = { display, host, uses, fixture, env, ...options, ...other };
    return { ...merged, env: { ...env, ...other.env } };
  };
  return Object.assign(run, {
    session,
    /** Declares a test: a scenario that makes its own assertions, all the way to its end. */
    test: (title, scenario, ...args) =>
      test(title, (t) => evaluate(t, program('check', inside, [fixture, scenario], args), outside())),
    /** The same in another environment. */
    with: (other) => scenarios(more(other)),
    /** Runs the process to its end, however it ends: code, signal, stdout, stderr. */
    ends: (t, scenario, ...args) => runScript(t, program('run', inside, [fixture, scenario], args), outside()),
    /** Starts the process, without waiting for its end. */
    start: (t, scenario, ...args) => startScript(t, program('run', inside, [fixture, scenario], args), outside()),
    /** Starts a process that stays. */
    async resident(t) {
      const resident = new Resident(startScript(t, program('stay', inside, [fixture], []), outside()));
      await resident.isReady();
      return resident;
    },
    /** Runs the scenario for each row, which ends with the value that is expected of the others. */
    async table(t, rows, scenario, ...args) {
      const inputs = rows.map((row) => row.slice(0, -1));
      const results = await evaluate(t, program('each', inside, [fixture, scenario], [inputs, ...args]), outside());
      rows.forEach((row, i) => {
        const text = JSON.stringify(inputs[i])?.slice(0, 200);
        assert.deepStrictEqual(results[i], JSON.parse(JSON.stringify(row.at(-1) ?? null)), text);
      });
    },
  });
}

module.exports = { scenarios };
