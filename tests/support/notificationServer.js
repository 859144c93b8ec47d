'use strict';

// Notification servers for tests: one that does what it is told, and Debian's own.

const { spawn } = require('child_process');
const { execFile } = require('child_process');
const { promisify } = require('util');

const { startScript } = require('./child');
const { endWith } = require('./cleanup');
const { eventually } = require('./pace');

const run = promisify(execFile);

const everything = ['actions', 'body', 'body-markup', 'inline-reply', 'persistence', 'sound'];

const source = (capabilities) => `
  const { notificationServer: server } = probe();
  server.serve(${JSON.stringify(capabilities)});
  console.log('[]');
  setInterval(() => {
    const calls = server.takeCalls();
    if (calls.length > 0) console.log(JSON.stringify(calls));
  }, 2);
  require('readline').createInterface({ input: process.stdin }).on('line', (line) => {
    const [command, ...args] = JSON.parse(line);
    server[command](...args);
  });`;

/**
 * Starts a server that notes what it is asked for. It ends with the test, or with `kill()`.
 * @returns `command(name, …)` has it answer or emit something; `calls(method)` are the calls so far.
 */
async function startNotificationServer(test, bus, capabilities = everything) {
  const child = startScript(test, source(capabilities), { env: { DBUS_SESSION_BUS_ADDRESS: bus.address } });
  const calls = (method) =>
    child.output.stdout
      .slice(0, child.output.stdout.lastIndexOf('\n') + 1)
      .split('\n')
      .filter((line) => line !== '')
      .flatMap((line) => JSON.parse(line))
      .filter((call) => call.method === method);
  await eventually(() => child.output.stdout.includes('\n'), 'the server listens').catch((error) => {
    throw new Error(`${error.message}: ${child.output.stderr}`);
  });
  return {
    calls,
    command: (...command) => child.process.stdin.write(`${JSON.stringify(command)}\n`),
    /** The call that shows the alert with this title, as soon as there is one. */
    shown: (title) =>
      eventually(() => calls('Notify').findLast(({ summary }) => summary === title), `${title} is shown`),
    pause: () => child.process.kill('SIGSTOP'),
    resume: () => child.process.kill('SIGCONT'),
    async kill() {
      child.process.kill('SIGKILL');
      await child.ended;
    },
  };
}

/** Starts a server of the distribution's on a display. It ends with the test. */
async function startDesktopServer(test, env, command, ...args) {
  const server = spawn(command, args, { env, stdio: 'ignore' });
  endWith(test, server);
  const hasOwner = () =>
    run(
      'dbus-send',
      [
        '--session',
        '--print-reply',
        '--dest=org.freedesktop.DBus',
        '/',
        'org.freedesktop.DBus.NameHasOwner',
        'string:org.freedesktop.Notifications',
      ],
      { env },
    ).then(({ stdout }) => stdout.includes('true'));
  await eventually(hasOwner, `${command} serves`);
}

module.exports = { startNotificationServer, startDesktopServer, everything };
