'use strict';

const { once } = require('events');

const { ok, notOffered, failed } = require('./rows');

exports.title = 'Keyboard';
exports.needs = ['display'];

const text = 'Hello';

// The server stamps events with whole milliseconds, of the same clock where it runs on this machine.
function delay({ arrival, serverTime }) {
  const milliseconds = arrival / 1e6 - serverTime;
  return milliseconds >= 0 && milliseconds < 5000
    ? `${milliseconds.toFixed(1)} ms after the server's time stamp`
    : 'in time';
}

async function type(stage) {
  const typed = () => stage.host.windowInfo(stage.window).typedText;
  await stage.run('xdotool', 'type', text);
  if (!(await stage.until(() => typed().includes(text)))) return failed('Keys', `typed “${text}”, got “${typed()}”`);
  const picture = await stage.screenshot();
  return ok(
    'Keys',
    `“${text}” arrived in the page, the last key ${delay(stage.host.keyArrivals().at(-1))}, ${picture}`,
  );
}

async function pressShortcut(stage) {
  const chosen = once(stage.host, 'command', { signal: AbortSignal.timeout(20000) });
  try {
    const [[{ commandId, title }]] = await Promise.all([chosen, stage.run('xdotool', 'key', 'ctrl+n')]);
    return ok('Menu shortcut', `Control-N chose “${title}” (command ${commandId})`);
  } catch {
    return failed('Menu shortcut', 'Control-N chose nothing');
  }
}

exports.run = async (stage) => {
  if ((await stage.run('xdotool', 'version')) === undefined) return notOffered('Keys', 'xdotool is not installed');
  if (!(await stage.focusWindow()))
    return notOffered('Keys', 'the window manager does not give the window the keyboard');
  return [await type(stage), await pressShortcut(stage)];
};
