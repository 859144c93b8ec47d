'use strict';

// Tests that open windows: what they run in the session, and how they reach behind the module.

const { evaluate } = require('./child');
const { useSession } = require('./session');

const prelude = `
  const { execFile } = require('child_process');
  const host = require('./host');
  const { eventually } = require('./tests/support/child');
  host.start();
  host.setKeepAlive(true);
  const { module: m, windows, captureLog, flushLog, capturedLog } = probe();
  const ask = (name, argument = {}) => {
    const answer = windows[name](JSON.stringify(argument));
    return answer === undefined ? undefined : JSON.parse(answer);
  };
  const print = (value) => console.log(JSON.stringify(value));
  const log = (flag) => { flushLog(); return capturedLog().filter((line) => line.flag === flag).map(({ text }) => text); };
  const run = (program, ...args) => new Promise((resolve) => execFile(program, args.map(String), (error, out) => resolve(error ? undefined : out)));
  // The window manager decorates and places a window some time after it has been opened.
  const open = async (options) => {
    const handle = host.createWindow(options);
    await eventually(() => host.windowInfo(handle).isKey && host.windowInfo(handle).frame.y !== 0, 'the window');
    return handle;
  };
  // The window manager answers to a change of size in its own time.
  const settled = async (handle) => {
    let last;
    await eventually(async () => {
      const { systemWindow, frame, content } = host.windowInfo(handle);
      const now = JSON.stringify([frame, content, await run('xwininfo', '-id', systemWindow)]);
      const isSame = now === last;
      last = now;
      await new Promise((resolve) => setTimeout(resolve, 100));
      return isSame;
    }, 'a window at rest');
  };
  // Presses the button in the middle of a rectangle of the window, in its own coordinates, as a person would.
  const click = async (handle, rectangle) => {
    await settled(handle);
    const [x, y, width, height] = rectangle();
    const { systemWindow, content } = host.windowInfo(handle);
    const shown = Number((await run('xwininfo', '-id', systemWindow)).match(/Height: (\\d+)/)[1]);
    const [across, down] = [x + width / 2 - content.x, shown - (y + height / 2 - content.y)].map(Math.round);
    // GNUstep's buttons miss the end of a press that has no length.
    await run('xdotool', 'mousemove', '--window', systemWindow, across, down, 'sleep', 0.1, 'mousedown', 1, 'sleep', 0.1, 'mouseup', 1);
  };
  // The middle of a rectangle of the window, in its own coordinates, on the screen.
  const onScreen = async (handle, { x, y, width, height }) => {
    const { systemWindow, content } = host.windowInfo(handle);
    const geometry = await run('xwininfo', '-id', systemWindow);
    const [left, top] = ['X', 'Y'].map((axis) => Number(geometry.match('Absolute upper-left ' + axis + ': +(-?[0-9]+)')[1]));
    const shown = Number(geometry.match(/Height: (\\d+)/)[1]);
    return [left + x + width / 2 - content.x, top + shown - (y + height / 2 - content.y)].map(Math.round);
  };
  const main = async () => { try { await body(); process.exit(); } catch (error) { console.error(error); process.exit(1); } };
  setImmediate(main);
`;

/** Gives a function that runs `body`, script with a display, and gives what it prints. */
function useWindows() {
  const session = useSession();
  return (t, body, env = {}, options = {}) =>
    evaluate(t, `${prelude}\nasync function body() {\n${body}\n}`, { ...options, env: { ...session.env, ...env } });
}

module.exports = { useWindows };
