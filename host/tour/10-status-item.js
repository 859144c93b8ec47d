'use strict';

const { once } = require('events');
const path = require('path');

const Launcher = require('../desktop/launcher');
const Panel = require('../desktop/panel');
const { ok, notOffered, failed } = require('./rows');

exports.title = 'Status item';
exports.needs = ['display', 'module'];

const translations = {
  'get-new-mail': 'Get New Mail',
  'do-not-disturb?': 'Do Not Disturb',
  'compose-new-message': 'New Message',
  'sign-in': 'Sign In…',
  'sign-in-format': 'Sign in to %@…',
  'open-format': 'Open %@',
  'open-with-counter-format': 'Open %@ (%ld)',
};

const accounts = [
  {
    id: 1,
    label: 'ann@example.org',
    'hex-color': 'C0392B',
    'unread-counter-value': 2,
    'unread-messages': [
      { 'from-line': 'Bob', subject: 'Lunch?', snippet: 'Dear Ann, …', 'unique-id': 'message-1' },
      {
        'from-line': 'Carla Example',
        subject: 'The minutes of our last meeting, and what is left to do until the next',
        snippet: 'Hello all, …',
        'unique-id': 'message-2',
      },
    ],
  },
  { id: 2, label: 'Choir', 'hex-color': '27AE60', 'unread-counter-value': 120, 'unread-messages': [] },
  { id: 3, label: 'Office', 'hex-color': '2980B9', 'requires-oauth?': true },
];

const watcher = 'org.kde.StatusNotifierWatcher';

const trayItems = (stage) =>
  stage.run(
    'dbus-send',
    '--session',
    '--print-reply',
    `--dest=${watcher}`,
    '/StatusNotifierWatcher',
    'org.freedesktop.DBus.Properties.Get',
    `string:${watcher}`,
    'string:RegisteredStatusNotifierItems',
  );

const isInTray = async (stage) => (await trayItems(stage))?.includes(`StatusNotifierItem-${process.pid}-`);

const isOwnSession = () =>
  process.env.TESSARO_SESSION !== undefined && process.env.HOME.startsWith(process.env.TESSARO_SESSION);

// A session of our own gets a panel, which ends with it; the user's desktop is left alone.
async function provideTray(stage) {
  if ((await trayItems(stage)) !== undefined) return {};
  const reason = isOwnSession() ? Panel.whyNot() : 'this desktop has no tray; the item appears when there is one';
  if (reason !== undefined) return { reason };
  return { panel: new Panel(path.join(process.env.TESSARO_SESSION, 'panel')) };
}

// The rows of the menu, by the rows above them.
const quietRow = [false];
const messageRow = [false, false, false, true, false];

async function openMenu(stage, panel) {
  await stage.until(async () => !(await panel.menu()));
  await panel.clickIcon();
  return stage.until(() => panel.menu());
}

/** Chooses a row by a click, and returns the host's notification. */
async function choose(stage, panel, row) {
  const chosen = once(stage.host, 'notification', { signal: AbortSignal.timeout(20000) });
  const [[notification]] = await Promise.all([chosen, panel.clickRow(row)]);
  return notification;
}

async function useMenu(stage, panel) {
  const { host, module } = stage;
  if (!(await openMenu(stage, panel))) return [failed('Account menu', 'it does not open')];
  const picture = await stage.screenshot('menu');
  const message = await choose(stage, panel, messageRow);

  await openMenu(stage, panel);
  const toggled = await choose(stage, panel, quietRow);
  if (toggled.name === 'TsToggleDoNotDisturbNotification') host.setDefault('DoNotDisturb', true);
  await openMenu(stage, panel);
  const quietPicture = await stage.screenshot('do-not-disturb');
  await panel.closeMenu();
  host.setDefault('DoNotDisturb', null);

  module.setStatusItemTitle('122', true);
  await openMenu(stage, panel);
  const errorPicture = await stage.screenshot('error');
  await panel.closeMenu();

  return [
    message.name === 'TsOpenMessageWithUniqueNotificationId'
      ? ok('Account menu', `a message was clicked, the host received ${JSON.stringify(message.userInfo)}, ${picture}`)
      : failed('Account menu', `a message was clicked, the host received ${message.name}`),
    toggled.name === 'TsToggleDoNotDisturbNotification'
      ? ok('Do not disturb', `the host received ${toggled.name} and set the default, ${quietPicture}`)
      : failed('Do not disturb', `the host received ${toggled.name}`),
    ok('Account in error', errorPicture ?? 'no picture: ImageMagick is missing'),
  ];
}

async function useTray(stage, panel) {
  if (!(await stage.until(() => isInTray(stage), 10000))) return [failed('Status item', 'it is not in the tray')];
  const row = ok('Status item', 'it is in the tray');
  // The place of the icon in another tray is unknown.
  if (panel === undefined) return [row];
  if (!(await stage.until(() => panel.icon()))) return [failed('Status item', 'the tray does not show it')];
  return [row, ...(await useMenu(stage, panel))];
}

const titlesOf = (host) => {
  const titles = host.dockMenu().map(({ title }) => title ?? '–');
  return titles.slice(titles.indexOf('–') + 1).join(', ');
};

function startDock() {
  const reason = isOwnSession() ? Launcher.whyNot() : 'on your desktop it is where your launcher shows it';
  return reason === undefined
    ? { launcher: new Launcher(path.join(process.env.TESSARO_SESSION, 'launcher')) }
    : { reason };
}

async function useDock(stage, { launcher, reason }) {
  if (launcher === undefined) return notOffered('Dock menu', `${reason}; it has: ${titlesOf(stage.host)}`);
  await stage.until(() => launcher.isRunning());
  const opened = await stage.until(async () => {
    await launcher.openMenu();
    return stage.until(() => launcher.isMenuOpen(), 1000);
  }, 15000);
  const picture = await stage.screenshot('dock');
  await launcher.stop();
  return opened ? ok('Dock menu', `${titlesOf(stage.host)}, ${picture}`) : failed('Dock menu', 'it does not open');
}

exports.run = async (stage) => {
  const { host, module } = stage;
  module.setStatusItemMenuNeedsUpdateCallbackFunction(() => JSON.stringify({ accounts, translations }));
  host.postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': accounts.length });
  module.setStatusItemTitle('122', false);

  // Starts while the tray is in use.
  const dock = startDock();
  const { panel, reason } = await provideTray(stage);
  const rows = reason === undefined ? await useTray(stage, panel) : [notOffered('Status item', reason)];
  return [...rows, await useDock(stage, dock)];
};
