'use strict';

// A display session for tests that need to see windows and to click on them.

const { execFile, spawn } = require('child_process');
const path = require('path');
const { promisify } = require('util');

const { root } = require('./addon');
const { eventually, paced } = require('./pace');

const run = promisify(execFile);

/** Starts a session. `env` is the environment of everything in it; `end()` ends it. */
async function startDisplaySession({ wayland = false } = {}) {
  const script = 'console.log(JSON.stringify(process.env)); process.stdin.resume();';
  const session = spawn(
    path.join(root, 'scripts', 'display-session'),
    [wayland ? '--wayland' : '--own-display', process.execPath, '-e', script],
    { env: { ...process.env, TESSARO_SESSION_DEADLINE: Math.ceil(paced(20)) }, stdio: ['pipe', 'pipe', 'inherit'] },
  );
  let output = '';
  session.stdout.setEncoding('utf8').on('data', (text) => (output += text));
  const hasEnded = () => session.exitCode !== null || session.signalCode !== null;
  await eventually(() => output.endsWith('\n') || hasEnded(), 'the session', 60000);
  if (hasEnded()) throw new Error(`the display session ended with ${session.exitCode ?? session.signalCode}`);
  const env = JSON.parse(output);
  const xdotool = async (...args) => (await run('xdotool', args, { env }).catch(() => ({ stdout: '' }))).stdout;

  async function geometryOf(name) {
    const window = (await xdotool('search', '--onlyvisible', '--name', name)).trim().split('\n').at(-1);
    if (window === '') return undefined;
    const text = await xdotool('getwindowgeometry', '--shell', window);
    const lines = text.toLowerCase().trim().split('\n');
    return Object.fromEntries(lines.map((line) => line.split('=')));
  }

  return {
    env,
    /** Clicks into a window, at a place counted from its left or, when negative, from its right. */
    async click(name, x, y, button = 1) {
      let before;
      // Windows come on screen before they have their size.
      const settled = await eventually(async () => {
        const now = JSON.stringify(await geometryOf(name));
        if (now !== undefined && now === before) return JSON.parse(now);
        before = now;
        return undefined;
      }, `${name} is on screen`);
      const left = Number(settled.x) + x + (x < 0 ? Number(settled.width) : 0);
      await xdotool('mousemove', String(left), String(Number(settled.y) + y), 'click', String(button));
    },
    async end() {
      session.stdin.end();
      await eventually(hasEnded, 'the end of the session').catch(() => session.kill('SIGTERM'));
    },
  };
}

module.exports = { startDisplaySession };
