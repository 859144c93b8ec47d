'use strict';

const { spawn } = require('child_process');
const { once } = require('events');
const fs = require('fs');

const { startNotificationServer } = require('../../tests/support/notificationServer');
const { ok, failed, notOffered } = require('./rows');

exports.title = 'User notifications and sounds';
exports.needs = ['module'];

const program = '/usr/lib/notification-daemon/notification-daemon';
const alert = (module, identifier, ...rest) =>
  module.deliverUserNotification(identifier, 'Ann Example', 'Lunch & more', 'Today at one?', 'New Mail', ...rest, null);

/** A notification server with buttons, in a session that has none. */
async function startServer(stage) {
  const names = await stage.run('dbus-send', '--session', '--print-reply', '--dest=org.freedesktop.DBus', '/', 'org.freedesktop.DBus.ListNames');
  if (names?.includes('"org.freedesktop.Notifications"') || !fs.existsSync(program)) return undefined;
  return spawn(program, { stdio: 'ignore', env: { ...process.env, NO_AT_BRIDGE: '1', GSETTINGS_BACKEND: 'memory' } });
}

const clickable = async (stage) =>
  (await stage.run('xdotool', 'search', '--onlyvisible', '--name', '^Notification$'))?.trim().split('\n').at(-1);

async function clickButton(stage) {
  const window = await clickable(stage);
  if (!window) return false;
  const geometry = (await stage.run('xdotool', 'getwindowgeometry', '--shell', window)) ?? '';
  const [x, y, width] = ['X', 'Y', 'WIDTH'].map((key) => Number(geometry.match(new RegExp(`^${key}=(\\d+)`, 'm'))?.[1]));
  return stage.run('xdotool', 'mousemove', String(x + width - 87), String(y + 104), 'click', '1');
}

async function clicked(stage, told) {
  const delivered = once(stage.host, 'notification', { signal: AbortSignal.timeout(10000) });
  alert(stage.module, 'message-1', false, null, true, 'Archive');
  await delivered;
  await stage.until(() => clickable(stage));
  const picture = await stage.screenshot();
  await stage.until(async () => (await clickButton(stage)) && stage.until(() => told.length > 0, 300));
  return told[0]?.join() === 'message-1,action-button-clicked,'
    ? ok('Alert, clicked', `its “Archive” button was clicked and script was told, ${picture ?? 'no picture'}`)
    : failed('Alert, clicked', `script was told ${JSON.stringify(told)}`);
}

/** No server of Debian's has a field for replies: one of the tests' stands in, and types one. */
async function replied(stage, told) {
  const cleaning = [];
  const bus = { address: process.env.DBUS_SESSION_BUS_ADDRESS };
  const replies = await startNotificationServer({ after: (step) => cleaning.push(step) }, bus);
  alert(stage.module, 'message-2', true, 'Dear Ann …', false, null);
  const { id } = await replies.shown('Ann Example');
  replies.command('reply', id, 'Yes, gladly 😀');
  await stage.until(() => told.length > 0);
  for (const step of cleaning) await step();
  return told[0]?.join() === 'message-2,replied,Yes, gladly 😀'
    ? ok('Alert, replied to', `script was told “${told[0][2]}”`)
    : failed('Alert, replied to', `script was told ${JSON.stringify(told)}`);
}

function preview({ module }) {
  const name = 'New Mail';
  return module.playSoundWithName(name)
    ? ok('Sounds', `${module.getSoundNames().length} sounds, “${name}” is played where there is an audio device`)
    : failed('Sounds', `“${name}” of the host is not among ${module.getSoundNames().join(', ')}`);
}

exports.run = async (stage) => {
  const rows = [preview(stage)];
  const server = process.env.DBUS_SESSION_BUS_ADDRESS && (await startServer(stage));
  if (!server) {
    return [...rows, notOffered('Alerts', 'there is no session bus, or the server there is not the tour’s to click on')];
  }
  const told = [];
  stage.module.setNotificationCallbackFunction((...what) => told.push(what));
  rows.push(await clicked(stage, told));
  server.kill();
  await once(server, 'exit');
  told.length = 0;
  rows.push(await replied(stage, told));
  stage.module.removeUserNotifications();
  return rows;
};
