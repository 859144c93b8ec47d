'use strict';

// A process with windows of the module's, and a person in front of it, who sees and clicks.

const { execFile } = require('child_process');
const { promisify } = require('util');

const { eventually, startScript } = require('./child');

const run = promisify(execFile);

const prelude = `
  const host = require('./host');
  host.start();
  host.setKeepAlive(true);
  const { module: m, dialogs, captureLog, flushLog, capturedLog } = probe();
  const print = (value) => console.log(JSON.stringify(value));
  const report = (value) => print({ report: value ?? null });
  const log = () => { flushLog(); return capturedLog().map(({ text }) => text); };
  const window = host.createWindow({ title: 'Mail' });
  require('readline').createInterface({ input: process.stdin }).on('line', (line) => print({ answer: eval(line) ?? null }));
  captureLog();
`;

class Person {
  constructor(child, environment) {
    this.child = child;
    this.environment = environment;
  }

  get #lines() {
    return this.child.output.stdout
      .split('\n')
      .slice(0, -1)
      .map((line) => JSON.parse(line));
  }

  /** What script has reported so far. */
  get reports() {
    return this.#lines.filter((line) => 'report' in line).map(({ report }) => report);
  }

  #answers() {
    return this.#lines.filter((line) => 'answer' in line);
  }

  /** Waits for the report of a number, and gives it. */
  async report(number) {
    await eventually(() => this.reports.length > number, `report ${number}`);
    return this.reports[number];
  }

  async isReady() {
    await eventually(() => this.#answers().length > 0, 'the application is ready').catch((error) => {
      throw new Error(`${error.message}: ${this.child.output.stderr}`);
    });
  }

  /** Has the process run a line of script, and gives its value. */
  async tell(line) {
    const before = this.#answers().length;
    this.child.process.stdin.write(`${line}\n`);
    await eventually(() => this.#answers().length > before, line);
    return this.#answers()[before].answer;
  }

  xdotool(...args) {
    return run('xdotool', args.flat().map(String), { env: this.environment }).then(({ stdout }) => stdout);
  }

  type = (text) => this.xdotool('type', '--delay', 40, text);
  key = (...keys) => this.xdotool('key', '--delay', 60, ...keys);

  async windows() {
    return JSON.parse(await this.tell('JSON.parse(dialogs.windows())').then(JSON.stringify));
  }

  /** The window of a title, once it is there and, unless said otherwise, has the keyboard. */
  window(title, isReady = ({ isKey }) => isKey) {
    return eventually(
      async () => (await this.windows()).find((window) => window.title === title && isReady(window)),
      `the window “${title}”`,
    );
  }

  isGone = (title) =>
    eventually(async () => !(await this.windows()).some((window) => window.title === title), `the end of “${title}”`);

  async view(title, matches) {
    return (await this.window(title, () => true)).views.find(matches);
  }

  button = (title, button) => this.view(title, (view) => view.title === button);

  async rows(title) {
    return (await this.view(title, (view) => view.rows !== undefined)).rows;
  }

  row = (title, text) =>
    eventually(async () => (await this.rows(title)).find((row) => row.texts.includes(text)), `the row “${text}”`);

  /** Presses as long as a finger does: GNUstep's buttons miss the end of a press that has no length. */
  async click([x, y], { button = 1, modifier } = {}) {
    const press = ['sleep', 0.1, 'mousedown', button, 'sleep', 0.1, 'mouseup', button, 'sleep', 0.1];
    const [before, after] =
      modifier === undefined
        ? [[], []]
        : [
            ['keydown', modifier],
            ['keyup', modifier],
          ];
    await this.xdotool('mousemove', Math.round(x), Math.round(y), before, press, after);
  }

  /** Chooses the item below the one that a pop-up button shows, without letting go in between. */
  chooseBelow = ([x, y]) =>
    this.xdotool(
      ['mousemove', Math.round(x), Math.round(y), 'sleep', 0.1, 'mousedown', 1, 'sleep', 0.3],
      ['mousemove', Math.round(x), Math.round(y) + 24, 'sleep', 0.3, 'mouseup', 1],
    );

  async doubleClick([x, y]) {
    const press = ['mousedown', 1, 'sleep', 0.05, 'mouseup', 1, 'sleep', 0.05];
    await this.xdotool('mousemove', Math.round(x), Math.round(y), 'sleep', 0.1, press, press);
  }

  /** Does something until it has been noticed: on a busy machine a click may be missed. */
  async until(isDone, act, description) {
    for (let attempt = 0; attempt < 8; ++attempt) {
      await act();
      try {
        return await eventually(isDone, description, 3000);
      } catch (error) {
        if (attempt === 7) throw error;
      }
    }
    return undefined;
  }

  clickButton = (title, button, isDone, description = `“${button}” has been clicked`) =>
    this.until(isDone, async () => this.click((await this.button(title, button)).centre), description);
}

/** Starts the process; `source` is more script for it. */
async function startPerson(test, session, source = '', { env = {}, ...options } = {}) {
  const child = startScript(test, `${prelude}\n${source}\nprint({ answer: 'ready' });`, {
    ...options,
    env: { ...session.env, ...env },
  });
  const person = new Person(child, { ...process.env, ...session.env });
  await person.isReady();
  await person.window('Mail', () => true);
  return person;
}

module.exports = { startPerson };
