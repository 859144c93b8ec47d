'use strict';

// The status item in a real tray, and its menu as a program on the bus reads it.

const assert = require('assert');
const path = require('path');
const { test } = require('node:test');

const { startBus } = require('./support/bus');
const { evaluate, startScript, temporaryDirectory } = require('./support/child');
const { useSession } = require('./support/session');

const session = useSession();

const prelude = `
  const { execFile, spawn } = require('child_process');
  const fs = require('fs');
  const { promisify } = require('util');
  const host = require('./host');
  const Panel = require('./host/desktop/panel');
  const { translations, account, message } = require('./tests/support/accountMenu');
  const { eventually } = require('./tests/support/child');
  host.start();
  host.setKeepAlive(true);
  const { module: m, statusItem } = probe();

  const print = (value) => console.log(JSON.stringify(value));
  const run = async (...command) => (await promisify(execFile)(command[0], command.slice(1))).stdout;
  const bus = async (...args) =>
    JSON.parse((await run('busctl', '--address=' + process.env.DBUS_SESSION_BUS_ADDRESS, '--json=short', '--', ...args.map(String))) || '{}');
  const own = 'org.kde.StatusNotifierItem-' + process.pid + '-1';
  const call = async (method, ...args) =>
    (await bus('call', own, '/StatusNotifierItem/Menu', 'com.canonical.dbusmenu', method, ...args)).data;
  const property = async (name) => (await bus('get-property', own, '/StatusNotifierItem', 'org.kde.StatusNotifierItem', name)).data;
  const values = (properties) => Object.fromEntries(Object.entries(properties).map(([key, { data }]) => [key, data]));
  const row = ([id, properties, children]) => ({ id, ...values(properties), ...(children.length > 0 && { rows: children.map(({ data }) => row(data)) }) });
  const layout = async () => { const [revision, root] = await call('GetLayout', 'iias', 0, -1, 0); return { revision, rows: row(root).rows || [] }; };
  const trayItems = async () => {
    try {
      return (await bus('get-property', 'org.kde.StatusNotifierWatcher', '/StatusNotifierWatcher', 'org.kde.StatusNotifierWatcher', 'RegisteredStatusNotifierItems')).data;
    } catch { return []; }
  };
  const inTray = async () => (await trayItems()).some((name) => name.startsWith(own));

  let contents = { translations, accounts: [] };
  const asked = [];
  m.setStatusItemMenuNeedsUpdateCallbackFunction((...args) => { asked.push(args); return JSON.stringify(contents); });
  const notifications = [];
  host.on('notification', ({ name, userInfo }) => name !== 'TsNumberOfAccountsChanged' && notifications.push([name, userInfo]));
  const showItem = (count = 1) => host.postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': count });

  // What the process sends from now on, as [signal, arguments].
  const watchSignals = async () => {
    const seen = [];
    const monitor = spawn('busctl', ['--address=' + process.env.DBUS_SESSION_BUS_ADDRESS, '--json=short', 'monitor',
      "--match=type='signal',interface='com.canonical.dbusmenu'", "--match=type='signal',interface='org.kde.StatusNotifierItem'"]);
    let text = '';
    let listening = false;
    monitor.stderr.on('data', () => (listening = true));
    monitor.stdout.setEncoding('utf8').on('data', (more) => {
      listening = true;
      const lines = (text += more).split('\\n');
      text = lines.pop();
      for (const line of lines) if (line) { const { type, member, payload } = JSON.parse(line); if (type === 'signal') seen.push([member, payload.data]); }
    });
    await eventually(() => listening, 'the monitor');
    return { seen, stop: () => monitor.kill() };
  };
  const scenario = (work) => work().then((result) => { print(result); host.setKeepAlive(false); process.exit(); }, (error) => { console.error(error); process.exit(1); });
`;

const inSession = (t, source, env = session.env) => evaluate(t, prelude + source, { env });

test('a program on the bus reads the item', async (t) => {
  const { read, plain, error } = await inSession(
    t,
    `scenario(async () => {
       showItem();
       m.setStatusItemTitle('3', false);
       const read = {};
       for (const name of ['Category', 'Id', 'Title', 'Status', 'ItemIsMenu', 'Menu', 'IconName', 'IconPixmap', 'ToolTip', 'XAyatanaLabel', 'WindowId']) read[name] = await property(name);
       m.setStatusItemTitle(null, false);
       const plain = (await property('IconPixmap'))[0][2];
       m.setStatusItemTitle(null, true);
       return { read, plain, error: { icon: await property('IconPixmap'), label: await property('XAyatanaLabel'), toolTip: await property('ToolTip') } };
     });`,
  );
  const [[width, height, argb]] = read.IconPixmap;
  delete read.IconPixmap;
  assert.deepStrictEqual(read, {
    Category: 'Communications',
    Id: 'TessaroHost',
    Title: 'TessaroHost',
    Status: 'Active',
    ItemIsMenu: true,
    Menu: '/StatusNotifierItem/Menu',
    IconName: '',
    ToolTip: ['', [], 'TessaroHost: 3', ''],
    XAyatanaLabel: '3',
    WindowId: 0,
  });
  assert.deepStrictEqual([width, height, argb.length], [22, 22, 22 * 22 * 4]);
  const pixel = (x, y, pixels = argb) => pixels.slice((y * width + x) * 4, (y * width + x) * 4 + 4);
  assert.deepStrictEqual(
    [pixel(0, 0), pixel(11, 15)],
    [
      [0, 0, 0, 0],
      [255, 0x4f, 0x8c, 0xf8],
    ],
  );
  // A template image: dark, in a light rim.
  const [alphaOfRim, ...rim] = pixel(11, 3, plain);
  assert.deepStrictEqual(
    [pixel(11, 15, plain), rim],
    [
      [255, 38, 38, 38],
      [255, 255, 255],
    ],
  );
  assert.ok(alphaOfRim > 50, `${alphaOfRim}`);
  assert.deepStrictEqual([error.label, error.toolTip[2]], ['', 'TessaroHost']);
  assert.notDeepStrictEqual(error.icon[0][2], argb);
});

test('a flood of requests leaves the event loop its turns', async (t) => {
  const longest = await inSession(
    t,
    `scenario(async () => {
       contents.accounts = Array.from({ length: 20 }, (_, id) => account(id, { count: 50, messages: 50 }));
       showItem(20);
       const ask = (method) => new Promise((resolve) => probe().bus.callMenu(method, 0, resolve));
       await ask('AboutToShow');
       const turns = [Date.now()];
       setInterval(() => turns.push(Date.now()), 1);
       await Promise.all(Array.from({ length: 300 }, () => ask('GetLayout')));
       turns.push(Date.now());
       return Math.max(...turns.map((turn, index) => turn - (turns[index - 1] ?? turn)));
     });`,
  );
  assert.ok(longest < 1000, `${longest} ms`);
});

test('a row that a request names many times is shown and clicked once', async (t) => {
  const counts = await inSession(
    t,
    `scenario(async () => {
       contents.accounts = [account(1, { count: 1 })];
       showItem();
       const [{ id }] = (await layout()).rows;
       asked.length = 0;
       await call('AboutToShowGroup', 'ai', 200, ...Array(200).fill(0));
       await call('EventGroup', 'a(isvu)', 200, ...Array(200).fill([id, 'clicked', 'i', 0, 0]).flat());
       await eventually(() => notifications.length > 0, 'the click');
       return [asked.length, notifications.length];
     });`,
  );
  assert.deepStrictEqual(counts, [1, 1]);
});

test('a program on the bus reads the menu: titles, marks, images, what is enabled', async (t) => {
  const { rows, asked } = await inSession(
    t,
    `scenario(async () => {
       host.setDefault('DoNotDisturb', true);
       contents.accounts = [account(1, { count: 3, label: 'A_b' }), account(2, { signIn: true })];
       showItem();
       const disturbed = await layout();
       host.setDefault('DoNotDisturb', false);
       contents.accounts[0] = account(1, { count: 3, label: 'A_b', messages: 1 });
       await call('AboutToShow', 'i', 0);
       return { rows: [disturbed.rows, (await layout()).rows], asked };
     });`,
  );
  const [quiet, full] = rows.map((list) =>
    list.map(({ id, 'icon-data': png, ...rest }) => {
      assert.ok(id > 0);
      return png ? { ...rest, png: Buffer.from(png).toString('latin1', 1, 4) } : rest;
    }),
  );
  const checked = { 'toggle-type': 'checkmark', 'toggle-state': 1 };
  const separator = { type: 'separator' };
  assert.deepStrictEqual(quiet, [
    { label: 'Get New Mail', enabled: false },
    { label: 'Do Not Disturb', ...checked },
    { label: 'New Message' },
    separator,
    { label: 'A__b', png: 'PNG' },
    separator,
    { label: 'Account 2', png: 'PNG' },
    { label: 'Sign In…' },
  ]);
  assert.deepStrictEqual(full.slice(0, 6), [
    { label: 'Get New Mail' },
    { label: 'Do Not Disturb' },
    { label: 'New Message' },
    separator,
    { label: 'A__b', png: 'PNG' },
    { label: 'Sender 1-0 - Subject 1-0', 'accessible-desc': 'Sender 1-0 - Subject 1-0, Snippet 1-0' },
  ]);
  assert.deepStrictEqual(asked, [
    ['status-item', true],
    ['status-item', true],
  ]);
});

test('rows keep their ids in a rebuilt menu, and only changes are announced', async (t) => {
  const { ids, answers, seen } = await inSession(
    t,
    `scenario(async () => {
       contents.accounts = [account(1, { count: 1, messages: 1 }), account(2)];
       showItem();
       const ids = async () => Object.fromEntries((await layout()).rows.filter((r) => r.label).map((r) => [r.label, r.id]));
       const result = { ids: [await ids()], answers: [] };
       const { seen, stop } = await watchSignals();
       const rebuild = async () => { result.answers.push((await call('AboutToShow', 'i', 0))[0]); result.ids.push(await ids()); };
       await rebuild();
       contents.accounts[0] = account(1, { count: 2, messages: 1, label: 'Renamed' });
       await rebuild();
       contents.accounts[0]['unread-messages'].unshift(message('new'));
       await rebuild();
       contents.accounts.shift();
       await rebuild();
       await eventually(() => seen.length >= 3, 'the signals');
       stop();
       return { ...result, seen };
     });`,
  );
  assert.deepStrictEqual(answers, [false, false, true, true]);
  const [first, same, renamed, longer, shorter] = ids;
  assert.deepStrictEqual(same, first);
  const { 'Account 1': account1, ...others } = first;
  assert.deepStrictEqual(renamed, { ...others, Renamed: account1 });
  const { 'Sender new - Subject new': added, ...rest } = longer;
  assert.deepStrictEqual(rest, renamed);
  assert.ok(!Object.values(first).includes(added));
  assert.deepStrictEqual(shorter['Account 2'], first['Account 2']);
  assert.deepStrictEqual(
    seen.map(([name]) => name),
    ['ItemsPropertiesUpdated', 'LayoutUpdated', 'LayoutUpdated'],
  );
  const [[[updated], removed]] = [seen[0][1]];
  assert.deepStrictEqual([updated[0], updated[1].label.data, removed], [account1, 'Renamed', []]);
  assert.deepStrictEqual(
    [seen[1][1], seen[2][1]],
    [
      [2, 0],
      [3, 0],
    ],
  );
});

test('a mark is announced without a new layout', async (t) => {
  const { seen, rows } = await inSession(
    t,
    `scenario(async () => {
       showItem();
       const { rows } = await layout();
       const { seen, stop } = await watchSignals();
       for (const value of [true, false]) { host.setDefault('DoNotDisturb', value); await call('AboutToShow', 'i', 0); }
       const told = () => seen.filter(([name]) => name === 'ItemsPropertiesUpdated').map(([, data]) => data);
       await eventually(() => told().length === 2, 'the signals');
       stop();
       return { seen: told().map(([updated, removed]) => [updated.map(([id, all]) => [id, values(all)]), removed]), rows };
     });`,
  );
  const [get, quiet] = rows.map(({ id }) => id);
  const label = { [get]: { label: 'Get New Mail' }, [quiet]: { label: 'Do Not Disturb' } };
  assert.deepStrictEqual(seen, [
    [
      [
        [get, { ...label[get], enabled: false }],
        [quiet, { ...label[quiet], 'toggle-type': 'checkmark', 'toggle-state': 1 }],
      ],
      [],
    ],
    [
      [
        [get, label[get]],
        [quiet, label[quiet]],
      ],
      [
        [get, ['enabled']],
        [quiet, ['toggle-type', 'toggle-state']],
      ],
    ],
  ]);
});

test('choosing rows over the bus', async (t) => {
  const { received, errors } = await inSession(
    t,
    `scenario(async () => {
       host.setDefault('DoNotDisturb', false);
       contents.accounts = [account('a b', { messages: 1 }), account(2, { signIn: true })];
       showItem();
       const { rows } = await layout();
       const errors = [];
       const event = (id, name) => call('Event', 'isvu', id, name, 's', '', 0).catch((error) => errors.push(/There is no row \\d+/.exec(error.message)?.[0] ?? error.message));
       for (const { id } of rows) { await event(id, 'hovered'); await event(id, 'clicked'); }
       await event(0, 'clicked');
       await event(4711, 'clicked');
       await call('EventGroup', 'a(isvu)', 2, rows[2].id, 'clicked', 's', '', 0, 4712, 'clicked', 's', '', 0).then(([unknown]) => errors.push(unknown));
       host.setDefault('DoNotDisturb', true);
       await call('AboutToShow', 'i', 0);
       await event(rows[0].id, 'clicked');
       await event(rows[5].id, 'clicked');
       return { received: notifications, errors };
     });`,
  );
  assert.deepStrictEqual(received, [
    ['TsGetNewMessagesNotification', null],
    ['TsToggleDoNotDisturbNotification', null],
    ['TsComposeNewMessageNotification', null],
    ['TsActivateTabForAccountNotification', { 'account-db-id': 'a b' }],
    ['TsOpenMessageWithUniqueNotificationId', { 'unique-id': 'message-a b-0' }],
    ['TsActivateTabForAccountNotification', { 'account-db-id': 2 }],
    ['TsOpenOAuthWindowForAccountNotification', { 'account-db-id': 2 }],
    ['TsComposeNewMessageNotification', null],
  ]);
  assert.strictEqual(errors[0], 'There is no row 4711');
  assert.deepStrictEqual(errors[1], [4712]);
  assert.match(errors[2], /^There is no row/);
});

test('a row may remove its own status item', async (t) => {
  const gone = await inSession(
    t,
    `scenario(async () => {
       showItem();
       const { rows } = await layout();
       host.on('notification', ({ name }) => name === 'TsComposeNewMessageNotification' && showItem(0));
       await call('Event', 'isvu', rows[2].id, 'clicked', 's', '', 0);
       return eventually(async () => !(await bus('list')).some(({ name }) => name === own), 'the name to go');
     });`,
  );
  assert.strictEqual(gone, true);
});

test('the item appears in a tray that starts later, or again, and leaves it', async (t) => {
  const directory = temporaryDirectory(t);
  const result = await inSession(
    t,
    `scenario(async () => {
       showItem();
       const before = await trayItems();
       let panel = new Panel(${JSON.stringify(directory)});
       await eventually(inTray, 'the item in the tray');
       await panel.stop();
       panel = new Panel(${JSON.stringify(directory)});
       await eventually(inTray, 'the item in the tray that has come back');
       showItem(0);
       await eventually(async () => !(await inTray()), 'the item to leave');
       await panel.stop();
       return { before };
     });`,
  );
  assert.deepStrictEqual(result, { before: [] });
});

test('rows chosen in the tray post their notifications', async (t) => {
  const directory = temporaryDirectory(t);
  const { received, asked } = await inSession(
    t,
    `scenario(async () => {
       contents.accounts = [account(1, { count: 3, messages: 2 }), account(2, { signIn: true })];
       showItem();
       m.setStatusItemTitle('3', false);
       const panel = new Panel(${JSON.stringify(directory)});
       await eventually(inTray, 'the item in the tray');
       await eventually(() => panel.icon(), 'the icon');
       const { rows } = await layout();
       asked.length = 0;
       for (const index of [0, 1, 2, 4, 5, rows.length - 1]) {
         const count = notifications.length;
         await panel.clickIcon();
         await eventually(() => panel.menu(), 'the menu');
         await panel.clickRow(rows.slice(0, index).map(({ type }) => type === 'separator'));
         await eventually(() => notifications.length > count, 'the choice of row ' + index);
         await eventually(async () => !(await panel.menu()), 'the menu to close');
       }
       await panel.stop();
       return { received: notifications, asked: asked.length };
     });`,
  );
  assert.deepStrictEqual(received, [
    ['TsGetNewMessagesNotification', null],
    ['TsToggleDoNotDisturbNotification', null],
    ['TsComposeNewMessageNotification', null],
    ['TsActivateTabForAccountNotification', { 'account-db-id': 1 }],
    ['TsOpenMessageWithUniqueNotificationId', { 'unique-id': 'message-1-0' }],
    ['TsOpenOAuthWindowForAccountNotification', { 'account-db-id': 2 }],
  ]);
  assert.ok(asked >= 6, `asked ${asked} times`);
});

test('the item returns with the bus', async (t) => {
  const directory = temporaryDirectory(t);
  const first = await startBus(t, directory);
  const child = startScript(
    t,
    `${prelude}
     contents.accounts = [account(1)];
     showItem();
     const isThere = () => layout().then(({ rows }) => rows.length === 5, () => false);
     eventually(isThere, 'the menu').then(async () => {
       console.log('there');
       await eventually(async () => !(await isThere()), 'the end of the bus');
       console.log('gone');
       await eventually(isThere, 'the menu again');
       console.log('back');
       process.exit();
     });`,
    { env: { ...session.env, DBUS_SESSION_BUS_ADDRESS: first.address } },
  );
  await child.printed('there\n');
  await first.stop();
  await child.printed('there\ngone\n');
  await startBus(t, directory);
  await child.printed('there\ngone\nback\n');
});

test('the process may exit in the turn in which the item is removed, and in a click on its menu', async (t) => {
  const cases = {
    removed: 'showItem(0); return "removed";',
    clicked: `
      host.on('notification', () => { print('clicked'); process.exit(); });
      const { rows } = await layout();
      await call('Event', 'isvu', rows.find(({ label }) => label === 'New Message').id, 'clicked', 's', '', 0).catch(() => {});`,
  };
  for (const [name, work] of Object.entries(cases)) {
    assert.strictEqual(
      await inSession(t, `scenario(async () => { showItem(); await property('Id'); ${work} });`),
      name,
    );
  }
});

test('without a bus the item exists, and only a log line says that it waits', async (t) => {
  const { DISPLAY, ...rest } = session.env;
  const state = await evaluate(
    t,
    `const host = require('./host');
     host.start();
     const { module: m, statusItem, captureLog, capturedLog, flushLog } = probe();
     captureLog();
     host.postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': 1 });
     m.setStatusItemTitle('3', false);
     flushLog();
     console.log(JSON.stringify({ ...statusItem.state(), log: capturedLog().map(({ text }) => text) }));`,
    { env: { ...rest, DISPLAY, DBUS_SESSION_BUS_ADDRESS: `unix:path=${path.join(temporaryDirectory(t), 'none')}` } },
  );
  assert.deepStrictEqual(
    [state.isShown, state.title, state.log],
    [true, '3', ['The desktop shows no status items yet; the status item appears when it does']],
  );
});
