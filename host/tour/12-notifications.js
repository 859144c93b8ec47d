'use strict';

const { spawn } = require('child_process');
const { once } = require('events');
const fs = require('fs');
const os = require('os');
const path = require('path');

const { startAudioServer } = require('../../tests/support/audio');
const { startNotificationServer } = require('../../tests/support/notificationServer');
const { ok, failed, notOffered } = require('./rows');

exports.title = 'User notifications and sounds';
exports.needs = ['module'];

const program = '/usr/lib/notification-daemon/notification-daemon';
const alert = (module, identifier, ...rest) =>
  module.deliverUserNotification(identifier, 'Ann Example', 'Lunch & more', 'Today at one?', 'New Mail', ...rest, null);

const hasServer = async (stage) => {
  const call = ['--session', '--print-reply', '--dest=org.freedesktop.DBus', '/', 'org.freedesktop.DBus.ListNames'];
  return ((await stage.run('dbus-send', ...call)) ?? '').includes('"org.freedesktop.Notifications"');
};

/** A notification server with buttons, in a session that has none; undefined where that can't be. */
async function startServer(stage) {
  if (!process.env.DBUS_SESSION_BUS_ADDRESS || !fs.existsSync(program) || (await hasServer(stage))) return undefined;
  const env = { ...process.env, NO_AT_BRIDGE: '1', GSETTINGS_BACKEND: 'memory' };
  const server = spawn(program, { stdio: 'ignore', env });
  // Otherwise the bus would start one by itself.
  return (await stage.until(() => hasServer(stage))) ? server : undefined;
}

/** Where the alert is. Where there is a tray, the server has an icon of the same name in it. */
async function clickable(stage) {
  const found = (await stage.run('xdotool', 'search', '--onlyvisible', '--name', 'Notification')) ?? '';
  for (const window of found.split('\n').filter((line) => line !== '')) {
    const geometry = (await stage.run('xdotool', 'getwindowgeometry', '--shell', window)) ?? '';
    const [x, y, width] = ['X', 'Y', 'WIDTH'].map((key) =>
      Number(geometry.match(new RegExp(`^${key}=(\\d+)`, 'm'))?.[1]),
    );
    if (width > 200) return { x, y, width };
  }
  return undefined;
}

async function clickButton(stage) {
  const place = await clickable(stage);
  if (place === undefined) return false;
  const { x, y, width } = place;
  return stage.run('xdotool', 'mousemove', String(x + width - 87), String(y + 104), 'click', '1');
}

async function clicked(stage, told) {
  const delivered = once(stage.host, 'notification', { signal: AbortSignal.timeout(10000) });
  alert(stage.module, 'message-1', false, null, true, 'Archive');
  await delivered;
  await stage.until(() => clickable(stage));
  const picture = await stage.screenshot();
  await stage.until(async () => {
    await clickButton(stage);
    return told.length > 0;
  });
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

/** Where nobody listens, into a sink that is recorded. */
async function preview(stage) {
  const { module } = stage;
  const name = 'New Mail';
  const hasAudio = fs.existsSync(path.join(process.env.XDG_RUNTIME_DIR ?? '/', 'pulse', 'native'));
  const cleaning = [];
  const directory = fs.mkdtempSync(path.join(os.tmpdir(), 'audio-'));
  const audio = hasAudio
    ? undefined
    : await startAudioServer({ after: (step) => cleaning.push(step) }, directory).catch(() => {});
  Object.assign(process.env, audio?.env);
  const isPlayed = module.playSoundWithName(name);
  const isHeard = audio !== undefined && (await stage.until(() => audio.peak() > 1000));
  for (const step of cleaning) await step();
  fs.rmSync(directory, { recursive: true, force: true });
  if (!isPlayed) return failed('Sounds', `“${name}” of the host is not among ${module.getSoundNames().join(', ')}`);
  if (audio === undefined) return ok('Sounds', `“${name}” of ${module.getSoundNames().length} sounds is played`);
  return isHeard
    ? ok('Sounds', `“${name}” of ${module.getSoundNames().length} sounds was played, and heard in a recording`)
    : failed('Sounds', `“${name}” was played, but not heard`);
}

exports.run = async (stage) => {
  const rows = [await preview(stage)];
  const server = await startServer(stage);
  if (!server) {
    return [
      ...rows,
      notOffered('Alerts', 'there is no session bus, or the server there is not the tour’s to click on'),
    ];
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
