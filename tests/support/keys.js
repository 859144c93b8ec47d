'use strict';

// Keys that are really pressed: modifier flags, X key codes of the virtual display, whose keyboard is an American one,
// and the fixture of scenarios that press keys in a window.

const shift = 0x20000;
const control = 0x40000;
const option = 0x80000;
const command = 0x100000;

const keyCodes = { d: 40, n: 57, comma: 59, space: 65, up: 111, left: 113, right: 114, down: 116, leftBracket: 34 };

/** Makes an event: of the mouse, or of a key, which is a press unless said otherwise. Synthetic ones have no place. */
const eventsWith = (send) =>
  function event(flags, { type = 10, keyCode = keyCodes.n, ignoring = 'n', characters = ignoring, isSynthetic } = {}) {
    const message = 'location:modifierFlags:timestamp:windowNumber:context:';
    const start = [type, isSynthetic ? [0, 0] : [5, 1], flags, 0, 0, null];
    if (type === 1)
      return send('NSEvent', `mouseEventWithType:${message}eventNumber:clickCount:pressure:`, ...start, 0, 1, 0);
    const keys = 'characters:charactersIgnoringModifiers:isARepeat:keyCode:';
    return send('NSEvent', `keyEventWithType:${message}${keys}`, ...start, characters, ignoring, false, keyCode);
  };

function pressing({ eventually, host, run, sendMessage }) {
  const key = (...names) => run('xdotool', 'key', ...names);
  const typed = (window) => host.windowInfo(window).typedText;
  return {
    ...{ shift, control, option, command, key, event: eventsWith(sendMessage) },
    /** Opens a window that has the keyboard. */
    async openKeyWindow() {
      host.setKeepAlive(true);
      const window = host.createWindow({ title: 'Keys' });
      await eventually(() => host.windowInfo(window).isVisible, 'the window');
      await run('xdotool', 'windowactivate', '--sync', host.windowInfo(window).systemWindow);
      // The window manager may still be at work on the window of the test before.
      await eventually(async () => (await key('2')) || typed(window).includes('2'), 'the first key');
      await eventually(() => host.windowInfo(window).isKey, 'the keyboard');
      return window;
    },
    /** Presses keys and waits for the last of them: until a key after them is typed, one that all layouts have. */
    async press(window, ...keys) {
      const ends = () => typed(window).split('1').length;
      const before = ends();
      await key(...keys);
      await key('1');
      await eventually(() => ends() > before, 'the last key');
    },
  };
}

module.exports = { shift, control, option, command, keyCodes, eventsWith, pressing };
