'use strict';

// A display session for tests that need to see windows and to click on them.

const { spawn } = require('child_process');
const path = require('path');

const { root } = require('./addon');
const { eventually, paced } = require('./pace');

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

  return {
    env: JSON.parse(output),
    async end() {
      session.stdin.end();
      await eventually(hasEnded, 'the end of the session').catch(() => session.kill('SIGTERM'));
    },
  };
}

module.exports = { startDisplaySession };
