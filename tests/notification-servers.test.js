'use strict';

// Alerts on the screens of common notification servers, clicked with the real mouse.

const { after, assert, before, execFile, promisify, test } = require('./support/node');
const { startClient, startDesktopServer, startDisplaySession } = require('./support');

const run = promisify(execFile);

let session;

before(async () => {
  session = await startDisplaySession();
  session.env.NO_AT_BRIDGE = '1';
  session.env.GSETTINGS_BACKEND = 'memory';
});

after(() => session.end());

const servers = [
  {
    command: '/usr/lib/notification-daemon/notification-daemon',
    gestures: [
      ['its button', () => session.click('Notification', -87, 104), 'action-button-clicked'],
      ['its text', () => session.click('Notification', 136, 56), 'contents-clicked'],
      ['its cross', () => session.click('Notification', -24, 29), 'dismissed'],
    ],
  },
  {
    command: '/usr/lib/x86_64-linux-gnu/xfce4/notifyd/xfce4-notifyd',
    gestures: [
      ['its second button', () => session.click('xfce4-notifyd', -57, 89), 'action-button-clicked'],
      ['its first button', () => session.click('xfce4-notifyd', 57, 89), 'contents-clicked'],
      ['its text', () => session.click('xfce4-notifyd', 30, 22), 'dismissed'],
    ],
  },
  {
    // dunst has no buttons, and leaves an alert on screen after its action was invoked.
    command: 'dunst',
    gestures: [
      ['dunstctl', () => run('dunstctl', ['action', '0'], { env: session.env }), 'contents-clicked'],
      ['a middle click', () => session.click('Dunst', 60, 20, 2), 'contents-clicked'],
      ['a click', () => session.click('Dunst', 60, 20), 'dismissed'],
    ],
  },
];

for (const { command, gestures } of servers) {
  test(`alerts on the screen of ${command}`, async (t) => {
    await startDesktopServer(t, session.env, command);
    const { DISPLAY, DBUS_SESSION_BUS_ADDRESS } = session.env;
    const client = await startClient(t, { env: { DISPLAY, DBUS_SESSION_BUS_ADDRESS } });
    const texts = { title: 'Ann Example', subtitle: 'Lunch & more', text: 'Today at 1 <ok>?' };
    const alert = { ...texts, action: true, actionTitle: 'Archive' };
    for (const [index, [name, gesture, type]] of gestures.entries()) {
      await client.deliver(name, alert);
      await client.isDelivered();
      await gesture();
      assert.deepStrictEqual((await client.ends(index + 1))[index], [name, type, '']);
    }
    // Replacing and withdrawing call nothing.
    await client.deliver('a', alert);
    await client.deliver('a', { ...alert, title: 'Bob' });
    await client.isDelivered();
    await client.remove('a');
    await client.deliver('b', alert);
    await client.isDelivered();
    await client.removeAll();
    assert.strictEqual((await client.ends()).length, gestures.length);
    assert.deepStrictEqual(await client.warnings(), []);
  });
}
