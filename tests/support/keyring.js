'use strict';

// A gnome-keyring of the test's own, on a bus of its own.

const { spawn } = require('child_process');
const fs = require('fs');
const path = require('path');

const { startBus } = require('./bus');
const { eventually, execute } = require('./child');
const { killable } = require('./cleanup');

const collection = '/org/freedesktop/secrets/collection/login';
// The daemon makes this alias of the login collection after the collection itself.
const defaultCollection = '/org/freedesktop/secrets/aliases/default';

function dbusSend(environment, object, method, ...args) {
  const call = ['--session', '--print-reply', '--dest=org.freedesktop.secrets', object, method, ...args];
  return execute('dbus-send', call, { env: environment }).then(({ stdout }) => stdout);
}

/**
 * Starts a keyring, which ends with the test. In `directory` it keeps its file: a keyring started there again has the
 * same items. Without `isUnlocked` an existing keyring stays as it is after login without its password.
 */
async function startKeyring(test, directory, bus, isUnlocked = true) {
  const ownBus = bus || (await startBus(test, directory));
  const data = path.join(directory, 'keyring');
  fs.mkdirSync(data, { recursive: true, mode: 0o700 });
  const environment = { ...process.env, DBUS_SESSION_BUS_ADDRESS: ownBus.address, XDG_DATA_HOME: data };
  delete environment.DISPLAY;
  const args = ['--foreground', '--components=secrets', `--control-directory=${data}`];
  if (isUnlocked) args.push('--unlock');
  const daemon = spawn('gnome-keyring-daemon', args, { env: environment, stdio: ['pipe', 'ignore', 'ignore'] });
  daemon.stdin.end('keyring');
  const kill = killable(test, daemon);
  const send = (...call) => dbusSend(environment, ...call);
  const service = (method, ...args) =>
    send('/org/freedesktop/secrets', `org.freedesktop.Secret.Service.${method}`, ...args);
  const isLocked = async () => {
    const question = ['string:org.freedesktop.Secret.Collection', 'string:Locked'];
    const answer = send(defaultCollection, 'org.freedesktop.DBus.Properties.Get', ...question);
    return (await answer.catch(() => '')).match(/boolean (\w+)/)?.[1];
  };
  await eventually(async () => (await isLocked()) === String(!isUnlocked), 'the keyring is there');
  return {
    ...{ address: ownBus.address, bus: ownBus, kill },
    pause: () => daemon.kill('SIGSTOP'),
    resume: () => daemon.kill('SIGCONT'),
    lock: () => service('Lock', `array:objpath:${collection}`),
    /** Keeps items in memory only from now on, which is a hundred times quicker. */
    useMemory: () => service('SetAlias', 'string:default', 'objpath:/org/freedesktop/secrets/collection/session'),
    /** Runs `secret-tool` at the keyring, and gives its output. */
    async secretTool(args, input = '') {
      const child = execute('secret-tool', args, { env: environment, encoding: 'buffer' });
      // A lookup reads no input, and may have ended.
      child.child.stdin.on('error', () => {}).end(input);
      // Without an item secret-tool fails, and says nothing.
      const { stdout, stderr } = await child.catch((error) => error);
      if (stderr.length > 0) throw new Error(`secret-tool ${args}: ${stderr}`);
      return stdout;
    },
  };
}

module.exports = { startKeyring };
