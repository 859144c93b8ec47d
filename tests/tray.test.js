'use strict';

const { assert, scenarios, startBus, temporaryDirectory, test } = require('./support');

const inSession = scenarios({
  display: true,
  uses: ['accounts'],
  fixture({ account, env, eventually, host, load, message, native, run, spawn, translations }) {
    host.setKeepAlive(true);
    const contents = { translations, accounts: [] };
    const asked = [];
    native.setStatusItemMenuNeedsUpdateCallbackFunction((...args) => asked.push(args) && JSON.stringify(contents));
    const posted = [];
    host.on('notification', ({ name, userInfo }) => {
      if (name !== 'TsNumberOfAccountsChanged') posted.push([name, userInfo]);
    });
    const showItem = (count = 1) => host.postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': count });

    const own = `org.kde.StatusNotifierItem-${process.pid}-1`;
    const address = `--address=${env.DBUS_SESSION_BUS_ADDRESS}`;
    const busctl = async (...args) =>
      JSON.parse((await run('busctl', address, '--json=short', '--', args.flat())) || '{}');
    const property = async (name, of = own, at = '/StatusNotifierItem', kind = 'org.kde.StatusNotifierItem') =>
      (await busctl('get-property', of, at, kind, name)).data;
    const call = async (method, ...args) =>
      (await busctl('call', own, '/StatusNotifierItem/Menu', 'com.canonical.dbusmenu', method, ...args)).data;
    const click = (id, event = 'clicked') => call('Event', 'isvu', id, event, 's', '', 0);

    const values = (properties) => Object.fromEntries(Object.entries(properties).map(([key, { data }]) => [key, data]));
    const layout = async () => {
      const [, [, , rows]] = await call('GetLayout', 'iias', 0, -1, 0);
      return rows.map(({ data: [id, properties] }) => ({ id, ...values(properties) }));
    };
    const watcher = ['org.kde.StatusNotifierWatcher', '/StatusNotifierWatcher', 'org.kde.StatusNotifierWatcher'];
    const trayItems = () => property('RegisteredStatusNotifierItems', ...watcher).catch(() => []);
    const isInTray = async () => (await trayItems()).some((name) => name.startsWith(own));

    /** The signals of the menu from now on, as [name, arguments]. */
    const watchSignals = async () => {
      const seen = [];
      const matches = ['com.canonical.dbusmenu', 'org.kde.StatusNotifierItem'];
      const rules = matches.map((name) => `--match=type='signal',interface='${name}'`);
      const monitor = spawn('busctl', [address, '--json=short', 'monitor', ...rules]);
      let text = '';
      let isListening = false;
      for (const stream of ['stdout', 'stderr']) monitor[stream].on('data', () => (isListening = true));
      monitor.stdout.setEncoding('utf8').on('data', (more) => {
        const lines = (text + more).split('\n');
        text = lines.pop();
        const messages = lines.filter(Boolean).map((line) => JSON.parse(line));
        for (const { type, member, payload } of messages) if (type === 'signal') seen.push([member, payload.data]);
      });
      await eventually(() => isListening, 'the monitor');
      return { seen, stop: () => monitor.kill() };
    };
    const openPanel = (directory) => new (load('host/desktop/panel'))(directory);
    const menu = { account, asked, contents, layout, message, posted, showItem, values };
    return { ...menu, busctl, call, click, isInTray, openPanel, own, property, trayItems, watchSignals };
  },
});

inSession.test('a program on the bus reads the item', async ({ assert, equal, native, property, showItem }) => {
  showItem();
  native.setStatusItemTitle('3', false);
  const expected = {
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
  };
  for (const [name, value] of Object.entries(expected)) equal(await property(name), value);
  const icon = async () => (await property('IconPixmap'))[0];
  const [width, height, argb] = await icon();
  equal([width, height, argb.length], [22, 22, 22 * 22 * 4]);
  native.setStatusItemTitle(null, false);
  assert.notDeepStrictEqual((await icon())[2], argb);
  native.setStatusItemTitle(null, true);
  assert.notDeepStrictEqual((await icon())[2], argb);
  equal([await property('XAyatanaLabel'), (await property('ToolTip'))[2]], ['', 'TessaroHost']);
});

inSession.test('a flood of requests leaves the event loop its turns', async (fixture) => {
  const { account, asked, assert, bus, call, contents, equal, eventually, layout, posted, showItem } = fixture;
  contents.accounts = Array.from({ length: 20 }, (_, id) => account(id, { count: 50, messages: 50 }));
  showItem(20);
  const ask = (method) => new Promise((resolve) => bus.callMenu(method, 0, resolve));
  await ask('AboutToShow');
  const turns = [Date.now()];
  setInterval(() => turns.push(Date.now()), 1);
  await Promise.all(Array.from({ length: 300 }, () => ask('GetLayout')));
  turns.push(Date.now());
  const longest = Math.max(...turns.map((turn, index) => turn - (turns[index - 1] ?? turn)));
  assert.ok(longest < 1000, `${longest} ms`);
  // A row that a request names many times is shown and clicked once.
  contents.accounts = [account(1, { count: 1 })];
  await ask('AboutToShow');
  const [{ id }] = await layout();
  asked.length = 0;
  await call('AboutToShowGroup', 'ai', 200, Array(200).fill(0));
  await call('EventGroup', 'a(isvu)', 200, Array(200).fill([id, 'clicked', 'i', 0, 0]).flat());
  await eventually(() => posted.length > 0, 'the click');
  equal([asked.length, posted.length], [1, 1]);
});

inSession.test('a program on the bus reads the menu: titles, images and descriptions', async (fixture) => {
  const { account, asked, assert, contents, equal, layout, showItem } = fixture;
  const read = async () =>
    (await layout()).map(({ id, 'icon-data': icon, ...row }) => {
      assert.ok(id > 0, `row ${id}`);
      return icon ? { ...row, image: Buffer.from(icon).toString('latin1', 1, 4) } : row;
    });
  const commands = ['Get New Mail', 'Do Not Disturb', 'New Message'].map((label) => ({ label }));
  const separator = { type: 'separator' };
  const [first, second] = ['A__b', 'Account 2'].map((label) => ({ label, image: 'PNG' }));
  contents.accounts = [account(1, { count: 3, label: 'A_b', messages: 1 }), account(2, { signIn: true })];
  showItem();
  const text = 'Sender 1-0 - Subject 1-0';
  const message = { label: text, 'accessible-desc': `${text}, Snippet 1-0` };
  equal(await read(), [...commands, separator, first, message, separator, second, { label: 'Sign In…' }]);
  equal(asked, [['status-item', true]]);
});

inSession.test('rows keep their ids in a rebuilt menu, and only changes are announced', async (fixture) => {
  const { account, assert, call, contents, equal, eventually } = fixture;
  const { host, layout, message, showItem, values, watchSignals } = fixture;
  contents.accounts = [account(1, { count: 1, messages: 1 }), account(2)];
  showItem();
  const labelled = async () => (await layout()).filter(({ label }) => label);
  const read = async () => Object.fromEntries((await labelled()).map(({ label, id }) => [label, id]));
  const first = await read();
  const { seen, stop } = await watchSignals();
  const rebuild = async (isChanged) => {
    equal(await call('AboutToShow', 'i', 0), [isChanged]);
    return read();
  };
  equal(await rebuild(false), first);
  contents.accounts[0] = account(1, { count: 2, messages: 1, label: 'Renamed' });
  const renamed = await rebuild(false);
  const { 'Account 1': account1, ...others } = first;
  equal(renamed, { ...others, Renamed: account1 });
  contents.accounts[0]['unread-messages'].unshift(message('new'));
  const { 'Sender new - Subject new': added, ...rest } = await rebuild(true);
  equal(rest, renamed);
  assert.ok(!Object.values(first).includes(added));
  contents.accounts.shift();
  equal((await rebuild(true))['Account 2'], first['Account 2']);
  await eventually(() => seen.length >= 3, 'the signals');
  const [[name, [[[id, { label }]], removed]], ...layouts] = seen;
  equal([name, id, label.data, removed], ['ItemsPropertiesUpdated', account1, 'Renamed', []]);
  equal(layouts.map(String), ['LayoutUpdated,2,0', 'LayoutUpdated,3,0']);
  // A mark is announced without a new layout.
  const [get, quiet] = (await layout()).map((row) => row.id);
  seen.length = 0;
  for (const value of [true, false]) {
    host.setDefault('DoNotDisturb', value);
    await call('AboutToShow', 'i', 0);
  }
  const updates = () => seen.filter(([each]) => each === 'ItemsPropertiesUpdated').map(([, data]) => data);
  await eventually(() => updates().length === 2, 'the signals');
  stop();
  const mark = { 'toggle-type': 'checkmark', 'toggle-state': 1 };
  const readUpdate = ([updated, gone]) => [updated.map(([row, all]) => [row, values(all)]), gone];
  const [disturbed, normal] = updates().map(readUpdate);
  const [getLabel, quietLabel] = [{ label: 'Get New Mail' }, { label: 'Do Not Disturb' }]; // prettier-ignore
  const noMarks = [[get, ['enabled']], [quiet, ['toggle-type', 'toggle-state']]]; // prettier-ignore
  equal(disturbed, [[[get, { ...getLabel, enabled: false }], [quiet, { ...quietLabel, ...mark }]], []]); // prettier-ignore
  equal(normal, [[[get, getLabel], [quiet, quietLabel]], noMarks]); // prettier-ignore
});

inSession.test('rows are chosen over the bus, and may remove their own status item', async (fixture) => {
  const { account, assert, busctl, call, click, contents, equal, eventually } = fixture;
  const { host, layout, own, posted, showItem } = fixture;
  host.setDefault('DoNotDisturb', false);
  contents.accounts = [account('a b', { messages: 1 }), account(2, { signIn: true })];
  showItem();
  const rows = await layout();
  for (const { id } of rows) for (const event of ['hovered', 'clicked']) await click(id, event);
  await click(0);
  await assert.rejects(click(4711), /There is no row 4711/);
  const events = [rows[2].id, 4712].flatMap((id) => [id, 'clicked', 's', '', 0]);
  equal(await call('EventGroup', 'a(isvu)', 2, events), [[4712]]);
  host.setDefault('DoNotDisturb', true);
  await call('AboutToShow', 'i', 0);
  await click(rows[0].id);
  await assert.rejects(click(rows[5].id), /There is no row/);
  const [open, compose] = ['TsActivateTabForAccountNotification', 'TsComposeNewMessageNotification'];
  equal(posted, [
    ['TsGetNewMessagesNotification', null],
    ['TsToggleDoNotDisturbNotification', null],
    [compose, null],
    [open, { 'account-db-id': 'a b' }],
    ['TsOpenMessageWithUniqueNotificationId', { 'unique-id': 'message-a b-0' }],
    [open, { 'account-db-id': 2 }],
    ['TsOpenOAuthWindowForAccountNotification', { 'account-db-id': 2 }],
    [compose, null],
  ]);
  host.on('notification', ({ name }) => name === compose && showItem(0));
  await click((await layout())[2].id);
  await eventually(async () => !(await busctl('list')).some(({ name }) => name === own), 'the name to go');
});

inSession.test('the item appears in a tray that starts later, or again, and leaves it', async (fixture) => {
  const { equal, eventually, home, isInTray, openPanel, showItem, trayItems } = fixture;
  showItem();
  equal(await trayItems(), []);
  for (const isLast of [false, true]) {
    const panel = openPanel(home);
    await eventually(isInTray, 'the item in the tray');
    if (isLast) showItem(0);
    if (isLast) await eventually(async () => !(await isInTray()), 'the item to leave');
    await panel.stop();
  }
});

inSession.test('a launcher shows the menu, follows its changes and chooses rows', async (fixture) => {
  const { account, asked, contents, equal, events, eventually, home, host, load, native } = fixture;
  contents.accounts = [account(1, { count: 3 })];
  native.setStatusItemTitle('3', false);
  equal(asked, []);
  const launcher = new (load('host/desktop/launcher'))(home);
  await eventually(() => asked.length === 1, 'the launcher to read the menu');
  contents.accounts = [account(2, { signIn: true })];
  native.setStatusItemTitle('4', true);
  native.setStatusItemTitle('5', true);
  await eventually(() => asked.length === 2, 'the menu to be asked for again');
  const isOpen = () => eventually(() => launcher.isMenuOpen(), 'it', 1000).catch(() => false);
  await eventually(() => launcher.openMenu().then(isOpen), 'the menu');
  const chosen = events.once(host, 'notification', { signal: AbortSignal.timeout(10000) });
  await launcher.press('Up', 'Return');
  const [{ name, userInfo }] = await chosen;
  await launcher.stop();
  equal([name, userInfo], ['TsOpenOAuthWindowForAccountNotification', { 'account-db-id': 2 }]);
  equal(asked, Array(2).fill(['dock', false]));
});

test('the item returns with the bus', async (t) => {
  const directory = temporaryDirectory(t);
  const first = await startBus(t, directory);
  const child = await inSession.with({ env: { DBUS_SESSION_BUS_ADDRESS: first.address } }).resident(t);
  await child.tell(({ account, contents, showItem }) => {
    contents.accounts = [account(1)];
    showItem();
  });
  const isAnswering = async ({ layout }, value) => ((await layout().catch(() => [])).length === 5) === value;
  const isThere = (expected) => child.until(isAnswering, expected);
  await isThere(true);
  await first.stop();
  await isThere(false);
  await startBus(t, directory);
  await isThere(true);
});

test('the process may exit in the turn in which the item is removed, and in a click on its menu', async (t) => {
  const removed = await inSession.ends(t, async ({ property, showItem }) => {
    showItem();
    await property('Id');
    showItem(0);
    process.exit(7);
  });
  const clicked = await inSession.ends(t, async ({ click, host, layout, showItem }) => {
    showItem();
    host.on('notification', () => process.exit(8));
    await click((await layout()).find(({ label }) => label === 'New Message').id);
    await new Promise(() => {});
  });
  assert.deepStrictEqual([removed.code, clicked.code], [7, 8], removed.stderr + clicked.stderr);
});

const withoutBus = inSession.with({ env: { DBUS_SESSION_BUS_ADDRESS: 'unix:path=/nonexistent/bus' } });
withoutBus.test('without a bus the item exists, and only a log line says that it waits', (fixture) => {
  const { captureLog, equal, get, log, native, sendMessage, showItem } = fixture;
  captureLog();
  showItem();
  native.setStatusItemTitle('3', false);
  equal(get(sendMessage('TsStatusItemController', 'sharedInstance'), 'statusItem.title'), '3');
  equal(log(), ['The desktop shows no status items yet; the status item appears when it does']);
});
