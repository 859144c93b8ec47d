'use strict';

// Alerts on the screens of common notification servers, clicked with the real mouse.

const { assert, execute, test } = require('./support');
const { eventually, startClient, startDesktopServer, useSession } = require('./support');

const session = useSession();
const environment = () => ({ ...process.env, ...session.env, NO_AT_BRIDGE: '1', GSETTINGS_BACKEND: 'memory' });
const run = (command, ...args) =>
  execute(command, args.map(String), { env: environment() }).then(
    ({ stdout }) => stdout,
    () => '',
  );

/** Clicks into a window, at a place counted from its left or, when negative, from its right. */
async function click(name, x, y, button = 1) {
  const geometryOf = async () => {
    const [id] = (await run('xdotool', 'search', '--onlyvisible', '--name', name)).match(/\d+(?=\n$)/) ?? [];
    return id && (await run('xdotool', 'getwindowgeometry', '--shell', id));
  };
  // Windows come on screen before they have their size.
  const geometry = await eventually(async () => {
    const before = await geometryOf();
    return before === (await geometryOf()) && before;
  }, `${name} is on screen`);
  const [left, top, width] = geometry.match(/(?<=(X|Y|WIDTH)=)\d+/g).map(Number);
  await run('xdotool', 'mousemove', left + x + (x < 0 ? width : 0), top + y, 'click', button);
}

const servers = [
  {
    command: '/usr/lib/notification-daemon/notification-daemon',
    gestures: [
      ['its button', () => click('Notification', -87, 104), 'action-button-clicked'],
      ['its text', () => click('Notification', 136, 56), 'contents-clicked'],
      ['its cross', () => click('Notification', -24, 29), 'dismissed'],
    ],
  },
  {
    command: '/usr/lib/x86_64-linux-gnu/xfce4/notifyd/xfce4-notifyd',
    gestures: [
      ['its second button', () => click('xfce4-notifyd', -57, 89), 'action-button-clicked'],
      ['its first button', () => click('xfce4-notifyd', 57, 89), 'contents-clicked'],
      ['its text', () => click('xfce4-notifyd', 30, 22), 'dismissed'],
    ],
  },
  {
    // dunst has no buttons, and leaves an alert on screen after its action was invoked.
    command: 'dunst',
    gestures: [
      ['dunstctl', () => run('dunstctl', 'action', 0), 'contents-clicked'],
      ['a middle click', () => click('Dunst', 60, 20, 2), 'contents-clicked'],
      ['a click', () => click('Dunst', 60, 20), 'dismissed'],
    ],
  },
];

for (const { command, gestures } of servers) {
  test(`alerts on the screen of ${command}`, async (t) => {
    await startDesktopServer(t, environment(), command);
    const client = await startClient(t, { env: session.env });
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
