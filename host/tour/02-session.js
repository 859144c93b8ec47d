'use strict';

const { ok, notOffered } = require('./rows');

exports.title = 'Desktop session';

const services = {
  Keyring: 'org.freedesktop.secrets',
  'Notification service': 'org.freedesktop.Notifications',
  'Status bar': 'org.kde.StatusNotifierWatcher',
};

const callBus = (stage, method) =>
  stage.run(
    'dbus-send',
    '--session',
    '--print-reply',
    '--dest=org.freedesktop.DBus',
    '/',
    `org.freedesktop.DBus.${method}`,
  );

exports.run = async (stage) => {
  // Without an address, a client of the bus would start one by itself.
  const names = process.env.DBUS_SESSION_BUS_ADDRESS && (await callBus(stage, 'ListNames'));
  if (!names) return notOffered('Message bus', 'there is no session bus: nothing that needs one will be there');
  const startable = (await callBus(stage, 'ListActivatableNames')) ?? '';
  const rows = Object.entries(services).map(([capability, name]) => {
    if (names.includes(`"${name}"`)) return ok(capability, `${name} is running`);
    return notOffered(
      capability,
      startable.includes(`"${name}"`) ? `${name} is not running yet` : `no ${name} on the bus`,
    );
  });
  return [ok('Message bus', 'the session bus answers'), ...rows];
};
