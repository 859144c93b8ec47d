'use strict';

// Notification servers for tests: one that obeys a test, and those of the distribution.

const { spawn } = require('child_process');

const { eventually, execute } = require('./child');
const { endWith } = require('./cleanup');
const { scenarios } = require('./scenario');

const everything = ['actions', 'body', 'body-markup', 'inline-reply', 'persistence', 'sound'];

/**
 * Starts a server that notes the requests it gets. It ends with the test, or with `kill()`.
 * @returns `command(name, …)` has it answer or emit something; `calls(method)` are the calls so far.
 */
async function startNotificationServer(test, bus, capabilities = everything) {
  const server = await scenarios({ env: { DBUS_SESSION_BUS_ADDRESS: bus.address } }).resident(test);
  await server.tell(({ notificationServer, report }, list) => {
    notificationServer.serve(list);
    setInterval(() => {
      const calls = notificationServer.takeCalls();
      if (calls.length > 0) report(calls);
    }, 2);
  }, capabilities);
  const calls = (method) => server.reports.flat().filter((call) => call.method === method);
  const obey = ({ notificationServer }, command, ...args) => notificationServer[command](...args);
  return {
    calls,
    // A server that is stopped or killed answers late or never.
    command: (...command) => void server.tell(obey, ...command).catch(() => {}),
    /** The call that shows the alert with this title, as soon as there is one. */
    shown: (title) =>
      eventually(() => calls('Notify').findLast(({ summary }) => summary === title), `${title} is shown`),
    pause: () => server.process.kill('SIGSTOP'),
    resume: () => server.process.kill('SIGCONT'),
    kill: () => server.kill(),
  };
}

/** Starts a server of the distribution's on a display. It ends with the test. */
async function startDesktopServer(test, env, command, ...args) {
  endWith(test, spawn(command, args, { env, stdio: 'ignore' }));
  const question = ['--dest=org.freedesktop.DBus', '/', 'org.freedesktop.DBus.NameHasOwner'];
  const ask = () =>
    execute('dbus-send', ['--session', '--print-reply', ...question, 'string:org.freedesktop.Notifications'], { env });
  await eventually(async () => (await ask()).stdout.includes('true'), `${command} serves`);
}

module.exports = { startNotificationServer, startDesktopServer, everything };
