'use strict';

const { ok, notOffered, failed } = require('./rows');

exports.title = 'Keyboard routing';
exports.needs = ['display', 'module'];

const tabs = ['Inbox', 'Calendar', 'Contacts'];

const steps = { 'window/set-next-tab-active': 1, 'window/set-previous-tab-active': -1 };

// All effects of a key press, in order; the window shows the chosen tab.
class Witness {
  constructor(stage) {
    this.stage = stage;
    this.events = [];
    this.tab = 0;
    this.listeners = {
      notification: ({ name, userInfo }) => this.notice(name, userInfo),
      command: ({ title }) => this.events.push(`the menu chooses “${title}”`),
      'page-key': ({ isUsed }) => this.events.push(isUsed ? 'the page uses it' : 'the page sees it'),
    };
    for (const [name, listener] of Object.entries(this.listeners)) stage.host.on(name, listener);
  }

  notice(name, { action }) {
    if (name === 'TsAppMenuWillOpen') this.events.push('the menu is searched');
    if (name !== 'TsDispatchNotificationName') return;
    this.tab = (this.tab + steps[action] + tabs.length) % tabs.length;
    this.stage.host.setWindowTitle(this.stage.window, tabs[this.tab]);
    this.events.push(`tab “${tabs[this.tab]}” is shown`);
  }

  /** The effects of a key press, up to `last`. */
  async press(key, last) {
    this.events.length = 0;
    await this.stage.run('xdotool', 'key', key);
    const found = await this.stage.until(() => this.events.some((event) => event.includes(last)));
    return { found, told: `${key}: ${this.events.join(', then ') || 'nothing'}` };
  }

  leave() {
    for (const [name, listener] of Object.entries(this.listeners)) this.stage.host.off(name, listener);
  }
}

const row = (capability, { found, told }, more = '') => (found ? ok : failed)(capability, told + more);

exports.run = async (stage) => {
  if ((await stage.run('xdotool', 'version')) === undefined)
    return notOffered(exports.title, 'xdotool is not installed');
  if (!(await stage.focusWindow()))
    return notOffered(exports.title, 'the window manager does not give the window the keyboard');

  const reports = [];
  stage.module.setKeyboardModifierKeysCallbackFunction((...keys) => reports.push(keys));
  const witness = new Witness(stage);
  const { title } = stage.host.windowInfo(stage.window);
  try {
    const menuFirst = await witness.press('ctrl+comma', 'chooses');
    const pageFirst = await witness.press('ctrl+n', 'chooses');
    const next = await witness.press('ctrl+shift+bracketright', 'is shown');
    const picture = await stage.screenshot();
    const previous = await witness.press('ctrl+alt+Left', 'is shown');
    return [
      row('Menu before page', menuFirst),
      row('Page before menu', pageFirst),
      row('Next tab', next, `; ${picture}`),
      row('Previous tab', previous),
      reports.length > 0
        ? ok('Modifier keys', `${reports.length} changes reported`)
        : failed('Modifier keys', 'no change was reported'),
    ];
  } finally {
    witness.leave();
    stage.host.setWindowTitle(stage.window, title);
  }
};
