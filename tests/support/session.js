'use strict';

// A virtual desktop, for tests that need to see windows and to click on them; the tests of a file share one.

const { spawn } = require('child_process');
const { before, after } = require('node:test');
const path = require('path');

const { root } = require('./addon');
const { eventually, paced } = require('./pace');

/** Starts a session. `env` is the environment of everything in it; `end()` ends it. */
async function startDisplaySession({ wayland = false } = {}) {
  const script = 'console.log(JSON.stringify(process.env)); process.stdin.resume();';
  const args = [wayland ? '--wayland' : '--own-display', process.execPath, '-e', script];
  const env = { ...process.env, TESSARO_SESSION_DEADLINE: Math.ceil(paced(20)) };
  const session = spawn(path.join(root, 'scripts/display-session'), args, { env, stdio: ['pipe', 'pipe', 'inherit'] });
  let output = '';
  session.stdout.setEncoding('utf8').on('data', (text) => (output += text));
  const hasEnded = () => session.exitCode !== null || session.signalCode !== null;
  await eventually(() => output.endsWith('\n') || hasEnded(), 'the session', 60000);
  if (hasEnded()) throw new Error(`the display session ended with ${session.exitCode ?? session.signalCode}`);

  return {
    env: JSON.parse(output),
    async end() {
      session.stdin.end();
      await eventually(hasEnded, 'the end of the session').catch(() => session.kill('SIGTERM'));
    },
  };
}

/** The environment that puts a child on the session's display; its home stays its own. */
const belonging = ['DISPLAY', 'DBUS_SESSION_BUS_ADDRESS', 'TMPDIR', 'TMP', 'TEMP', 'TESSARO_SESSION'];
const belongingToWayland = ['WAYLAND_DISPLAY', 'XDG_SESSION_TYPE', 'SEAT_DISPLAY'];

let session;

/**
 * The session for all tests of the file, which its first call describes. `env` of the result is there when they run.
 * @param {{wayland?: boolean}} [options] `wayland` for a compositor's session.
 */
function useSession(options = {}) {
  if (session !== undefined) return session;
  session = { env: {} };
  let started;
  before(async () => {
    started = await startDisplaySession(options);
    const names = options.wayland ? [...belonging, ...belongingToWayland] : belonging;
    for (const name of names) session.env[name] = started.env[name];
  });
  after(() => started?.end());
  return session;
}

module.exports = { startDisplaySession, useSession };
