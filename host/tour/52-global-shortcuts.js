'use strict';

const { spawn } = require('child_process');

const { ok, notOffered, failed } = require('./rows');

exports.title = 'Global shortcuts';
exports.needs = ['display', 'module'];

const key = 'TourShortcut';
const modifiers = ['ctrl', 'alt', 'shift'];

// The window's title shows the module's notifications, as a settings view would.
class Witness {
  constructor(stage) {
    this.stage = stage;
    this.statuses = [];
    this.actions = 0;
    this.listener = ({ name, userInfo }) => this.notice(name, userInfo);
    stage.host.on('notification', this.listener);
  }

  notice(name, info) {
    if (name === 'TsGlobalShortcutAction') this.actions += info['defaults-key'] === key ? 1 : 0;
    if (name !== 'TsKeyboardShortcutMonitorUpdated') return;
    this.statuses.push(info);
    this.show(`${info['monitoring?'] ? 'Recording' : 'Shortcut'}: ${info.shortcut || '–'}`);
  }

  show(title) {
    this.stage.host.setWindowTitle(this.stage.window, title);
  }

  until(isAwaited) {
    return this.stage.until(() => this.statuses.find(isAwaited));
  }

  leave() {
    this.stage.host.off('notification', this.listener);
  }
}

async function record(stage, witness) {
  stage.module.startMonitoringKeyboardShortcuts(key);
  await stage.run('xdotool', ...modifiers.flatMap((name) => ['keydown', name]));
  const held = await witness.until(({ shortcut }) => shortcut.length === modifiers.length);
  const picture = await stage.screenshot();
  await stage.run('xdotool', 'key', 'F9', ...modifiers.flatMap((name) => ['keyup', name]));
  const typed = await witness.until(({ shortcut }) => shortcut.length > modifiers.length);
  stage.module.stopMonitoringKeyboardShortcuts();
  if (!held || !typed)
    return failed('Recording', `held “${held && held.shortcut}”, typed “${typed && typed.shortcut}”`);
  if (typed.error) return notOffered('Recording', typed.error);
  return ok('Recording', `“${held.shortcut}” was held, “${typed.shortcut}” is stored; ${picture}`);
}

// Presses the shortcut while another application's window has the keyboard.
async function fire(stage, witness) {
  stage.module.bindGlobalShortcutWithDefaultsKey(key);
  const other = spawn('xev', ['-name', 'Another application'], { stdio: 'ignore' });
  other.on('error', () => {});
  try {
    const isAway = await stage.until(async () => {
      await stage.run('xdotool', 'search', '--name', 'Another application', 'windowactivate', '--sync');
      return !stage.host.windowInfo(stage.window).isKey;
    });
    if (!isAway) return notOffered('Global shortcut', 'no other application came to the front');
    await stage.run('xdotool', 'key', [...modifiers, 'F9'].join('+'));
    const isHeard = await stage.until(() => witness.actions > 0);
    return isHeard
      ? ok('Global shortcut', 'heard while another application had the keyboard')
      : failed('Global shortcut', 'pressed in another application it was not heard');
  } finally {
    other.kill();
  }
}

exports.run = async (stage) => {
  if ((await stage.run('xdotool', 'version')) === undefined)
    return notOffered(exports.title, 'xdotool is not installed');
  if (!(await stage.focusWindow()))
    return notOffered(exports.title, 'the window manager does not give the window the keyboard');
  const witness = new Witness(stage);
  const { title } = stage.host.windowInfo(stage.window);
  try {
    const recorded = await record(stage, witness);
    return recorded.result === 'ok' ? [recorded, await fire(stage, witness)] : recorded;
  } finally {
    witness.leave();
    stage.module.removeUserDefault(key);
    witness.show(title);
    await stage.focusWindow();
  }
};
