'use strict';

// A session bus of the test's own.

const { spawn } = require('child_process');
const fs = require('fs');
const path = require('path');

const { killable } = require('./cleanup');
const { eventually } = require('./pace');

const configuration = (socket) => `<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
    "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
  <busconfig>
    <type>session</type>
    <listen>unix:path=${socket}</listen>
    <policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
  </busconfig>`;

/** Starts a bus in `directory`; it ends with the test, or with `stop()`. Started again, it has the same address. */
async function startBus(test, directory) {
  const socket = path.join(directory, 'bus');
  const file = path.join(directory, 'bus.conf');
  fs.rmSync(socket, { force: true });
  fs.writeFileSync(file, configuration(socket));
  const options = ['--nofork', '--nosyslog', '--print-address', `--config-file=${file}`];
  const daemon = spawn('dbus-daemon', options, { stdio: ['ignore', 'pipe', 'ignore'] });
  const stop = killable(test, daemon);
  // The socket is there before the bus listens, the address afterwards.
  let isListening = false;
  daemon.stdout.once('data', () => (isListening = true));
  await eventually(() => isListening, 'the bus listens');
  return { address: `unix:path=${socket}`, stop, pause: () => daemon.kill('SIGSTOP') };
}

module.exports = { startBus };
