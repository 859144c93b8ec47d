'use strict';

// A process with windows of the module's, and a person in front of it, who sees and clicks.

const { eventually, execute } = require('./child');
const { scenarios } = require('./scenario');
const { press } = require('./windows');

const people = scenarios({
  display: true,
  fixture({ captureLog, host }) {
    host.setKeepAlive(true);
    captureLog();
    const clock = { ticks: 0 };
    setInterval(() => ++clock.ticks, 5).unref();
    return { clock, window: host.createWindow({ title: 'Mail' }) };
  },
});

class Person {
  constructor(resident, environment) {
    this.resident = resident;
    this.environment = environment;
  }

  get reports() {
    return this.resident.reports;
  }

  report = (number) => this.resident.report(number);
  tell = (...scenario) => this.resident.tell(...scenario);
  log = () => this.tell(({ log }) => log());
  windows = () => this.tell(({ dialogs }) => dialogs.windows());
  closeWindow = (title) => this.tell(({ dialogs }, name) => dialogs.closeWindow(name), title);

  xdotool(...args) {
    return execute('xdotool', args.flat(2).map(String), { env: this.environment }).then(({ stdout }) => stdout);
  }

  /** Mouse and keyboard: under a Wayland compositor they are at the compositor's display. */
  hands(...args) {
    const env = { ...this.environment, DISPLAY: this.environment.SEAT_DISPLAY ?? this.environment.DISPLAY };
    return execute('xdotool', args.flat(2).map(String), { env }).then(({ stdout }) => stdout);
  }

  type = (text) => this.hands('type', '--delay', 40, text);
  key = (...keys) => this.hands('key', '--delay', 60, ...keys);

  /** The application goes on: its timers run. */
  async goesOn() {
    const ticks = () => this.tell(({ clock }) => clock.ticks);
    const before = await ticks();
    await eventually(async () => (await ticks()) > before + 50, 'timers run');
  }

  /** The window of a title, once it is there and, unless said otherwise, has the keyboard. */
  window(title, isReady = ({ isKey }) => isKey) {
    return eventually(
      async () => (await this.windows()).find((window) => window.title === title && isReady(window)),
      `the window “${title}”`,
    );
  }

  /** The X window of a title, once it is shown. */
  async onDisplay(title) {
    const search = () => this.xdotool('search', '--onlyvisible', '--name', `^${title}$`).catch(() => '');
    return (await eventually(search, `the window “${title}” on the display`)).trim().split('\n').at(-1);
  }

  // The window manager moves the keyboard to the window below, sometimes only when the user goes there. A move that is
  // still under way would take the keyboard from the next window.
  async returnToMail() {
    const mail = await this.onDisplay('Mail');
    await eventually(async () => {
      const active = await this.xdotool('getactivewindow').catch(() => '');
      if (active.trim() === mail) return true;
      await this.xdotool('windowactivate', '--sync', mail);
      return false;
    }, 'the window below has the keyboard');
    // The application notices later than the window manager, and sometimes not at all.
    const isKey = async () => (await this.windows()).some((each) => each.title === 'Mail' && each.isKey);
    await eventually(isKey, 'the application notices', 5000).catch(() => {});
  }

  isGone = (title) =>
    eventually(async () => !(await this.windows()).some((window) => window.title === title), `the end of “${title}”`);

  async view(title, matches) {
    return (await this.window(title, () => true)).views.find(matches);
  }

  button = (title, button) => this.view(title, (view) => view.title === button);

  row = (title, text) =>
    eventually(async () => {
      const { rows } = await this.view(title, (view) => view.rows !== undefined);
      return rows.find((row) => row.texts.includes(text));
    }, `the row “${text}”`);

  click = ([x, y]) => this.hands('mousemove', Math.round(x), Math.round(y), press);

  /** Does something until it has been noticed: GNUstep misses clicks on new windows. */
  until = (isDone, act, description) =>
    eventually(
      async () => {
        await act();
        return eventually(isDone, description, 3000).catch(() => false);
      },
      description,
      60000,
    );

  clickButton = (title, button, isDone, description = `“${button}” has been clicked`) =>
    this.until(isDone, async () => this.click((await this.button(title, button)).centre), description);

  /** Presses a button of a window without the mouse. */
  pressButton = (...names) =>
    eventually(() => this.tell(({ dialogs }, ...each) => dialogs.pressButton(...each), ...names), names.at(-1));
}

/** Starts the process. */
async function startPerson(test, options = {}) {
  const resident = await people.with(options).resident(test);
  const person = new Person(resident, { ...process.env, ...people.session.env });
  await person.window('Mail', () => true);
  return person;
}

module.exports = { startPerson };
