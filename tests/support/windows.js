'use strict';

// The part of the fixture for scenarios that open windows, and press what is in them.

const { paced } = require('./pace');

/** Presses as long as a finger does: GNUstep's buttons miss the end of a press that has no length. */
const moment = ['sleep', paced(100) / 1000];
const press = [...moment, 'mousedown', 1, ...moment, 'mouseup', 1, ...moment];

function windowing({ eventually, get, host, run, sendMessage }) {
  host.setKeepAlive(true);
  const application = sendMessage('NSApplication', 'sharedApplication');
  const attempt = (...command) => run(...command).catch(() => undefined);
  const geometry = async (systemWindow) => {
    const text = await run('xwininfo', '-id', systemWindow);
    const [height] = text.match(/(?<=Height: )\d+/);
    const [left, top] = ['X', 'Y'].map((axis) => text.match(`Absolute upper-left ${axis}: +(-?[0-9]+)`)[1]);
    return { text, left: Number(left), top: Number(top), height: Number(height) };
  };
  /** The window manager answers to a change of a window in its own time: two looks have to be the same. */
  const atRest = (look) => {
    let last;
    return eventually(async () => {
      const now = JSON.stringify(await look());
      const isSame = now === last;
      last = now;
      // The window manager may be about to begin.
      await run('sleep', 0.1);
      return isSame;
    }, 'a window at rest');
  };
  const settled = (handle) =>
    atRest(async () => {
      const { systemWindow, frame, content } = host.windowInfo(handle);
      return [frame, content, (await geometry(systemWindow)).text];
    });
  const search = async (name) => {
    const found = await attempt('xdotool', 'search', '--onlyvisible', '--name', `^${name}$`);
    return (found ?? '').trim().split('\n').at(-1);
  };
  return {
    application,
    attempt,
    windowNamed: (title) => get(application, 'windows').find((window) => get(window, 'title') === title) ?? null,
    atRest,
    settled,
    search,
    /** The X window of a title, once it is there. */
    shown: (name) => eventually(() => search(name), `${name} is shown`),
    async open(options) {
      const handle = host.createWindow(options);
      await eventually(() => host.windowInfo(handle).isKey && host.windowInfo(handle).frame.y !== 0, 'the window');
      return handle;
    },
    /** Clicks into an X window until a condition holds: GNUstep misses clicks on new windows, which may still move. */
    clickUntil: (id, place, isDone, description) =>
      eventually(async () => {
        const [x, y] = typeof place === 'function' ? await place() : place;
        await attempt('xdotool', 'mousemove', '--window', id, Math.round(x), Math.round(y), press);
        return eventually(isDone, description, 1500).catch(() => false);
      }, description),
    /** An event of a mouse button, which no window has got. Kinds: 1 press, 2 release, 6 drag. */
    mouseEvent(window, kind, point, modifiers = 0) {
      const where = 'location:modifierFlags:timestamp:windowNumber:context:eventNumber:clickCount:pressure:';
      const rest = [modifiers, 0, get(window, 'windowNumber'), null, 0, 1, 0];
      return sendMessage('NSEvent', `mouseEventWithType:${where}`, kind, point, ...rest);
    },
    /** The middle of a rectangle in a window's coordinates, counted as X does. */
    async middle(handle, [x, y, width, height]) {
      await settled(handle);
      const { systemWindow, content } = host.windowInfo(handle);
      const { height: shown } = await geometry(systemWindow);
      return [x + width / 2 - content.x, shown - (y + height / 2 - content.y)];
    },
  };
}

module.exports = { windowing, press };
