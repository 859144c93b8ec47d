'use strict';

// A virtual desktop that the tests of one file share.

const { spawn } = require('child_process');
const path = require('path');
const { before, after } = require('node:test');

const { root } = require('./addon');
const { eventually, node } = require('./child');

/** What a child needs to be on the session's display; its home stays its own. */
const belonging = ['DISPLAY', 'DBUS_SESSION_BUS_ADDRESS', 'TMPDIR', 'TMP', 'TEMP', 'TESSARO_SESSION'];

/** Starts a session for all tests of the file. `env` of the result is there when they run. */
function useSession() {
  const session = { env: {} };
  let child;
  before(async () => {
    const script = 'console.log(JSON.stringify(process.env)); process.stdin.resume();';
    child = spawn(path.join(root, 'scripts', 'display-session'), ['--own-display', node, '-e', script], {
      stdio: ['pipe', 'pipe', 'inherit'],
    });
    let output = '';
    child.stdout.setEncoding('utf8').on('data', (text) => (output += text));
    await eventually(() => output.endsWith('\n') || child.exitCode !== null, 'the session');
    const environment = JSON.parse(output);
    for (const name of belonging) session.env[name] = environment[name];
  });
  after(async () => {
    child.stdin.end();
    await eventually(() => child.exitCode !== null, 'the end of the session');
  });
  return session;
}

module.exports = { useSession };
