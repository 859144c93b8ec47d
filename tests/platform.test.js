'use strict';

const net = require('net');
const { assert, atEnd, os, path, scenarios, startBus, temporaryDirectory, test } = require('./support');

const plain = scenarios();
const onBus = (address) => plain.with({ env: { DBUS_SESSION_BUS_ADDRESS: address } });

// ---- Queues

plain.test('the main queue runs tasks in order, on later turns, and never starves the event loop', async (fixture) => {
  const { assert, equal, eventually, platform } = fixture;
  const seen = [];
  const note = (name) => (where) => seen.push(`${name} ${where}`.trim());
  platform.postDelayed(30, note('delayed 30'));
  platform.postDelayed(10, note('delayed 10'));
  platform.post(note('first'));
  platform.post(note('second'));
  seen.push('posted');
  const counts = { posts: 0, immediates: 0 };
  let isDone = false;
  const postAgain = () => isDone || (++counts.posts && platform.post(postAgain));
  const countImmediate = () => isDone || (++counts.immediates && setImmediate(countImmediate));
  postAgain();
  countImmediate();
  await new Promise((resolve) => platform.postDelayed(100, resolve));
  isDone = true;
  equal(seen, ['posted', 'first main', 'second main', 'delayed 10', 'delayed 30']);
  assert.ok(counts.posts <= counts.immediates * 3 + 10, `${counts.posts} posts, ${counts.immediates} immediates`);
  // Each thread's tasks run in its order, beside one that raises.
  const next = [0, 0, 0, 0];
  platform.raiseOnMainQueue();
  platform.postFromThreads(10000, (text) => {
    const [thread, number] = text.split(':').map(Number);
    equal(number, next[thread]++);
  });
  await eventually(() => next.every((count) => count === 10000), 'all tasks');
});

plain.test('hanging tasks of the background queue and connections accepted twice stop nothing', async (fixture) => {
  const { equal, eventually, platform } = fixture;
  platform.receiveNoConnection();
  const seen = [];
  platform.background(600000, () => seen.push('never'));
  for (let i = 0; i < 8; ++i) platform.background(1, (where) => seen.push(where));
  await eventually(() => seen.length === 8, 'the tasks');
  equal(seen, Array(8).fill('other'));
});

test('waiting tasks do not keep the process alive, and may post when they are destroyed at its end', async (t) => {
  const wait = ({ platform }) => {
    platform.postDelayed(600000, () => {});
    platform.postFromDestructor();
  };
  const { code, stderr } = await plain.ends(t, wait);
  assert.deepStrictEqual([code, stderr], [0, '']);
});

// ---- The system

test('the log folder is below XDG_STATE_HOME', (t) => {
  const passwdHome = os.userInfo().homedir;
  const rows = [
    ['/state', '/home/x', 'Mail', '/state/Mail/logs'],
    ['', '/home/x', 'Mail', '/home/x/.local/state/Mail/logs'],
    ['relative', '/home/x', 'a/../b', '/home/x/.local/state/a_.._b/logs'],
    ['', '', '..', `${passwdHome}/.local/state/_../logs`],
    ['', 'relative', '', `${passwdHome}/.local/state/_/logs`],
  ];
  return plain.table(t, rows, ({ env, platform }, XDG_STATE_HOME, HOME, name) => {
    Object.assign(env, { XDG_STATE_HOME, HOME });
    return platform.logDirectory(name);
  });
});

test('the preferred languages are those of the environment, as BCP 47 identifiers', async (t) => {
  const rows = [
    [{ LANG: 'de_AT.UTF-8@euro' }, ['de-AT']],
    [{ LANG: 'fr_FR.UTF-8', LC_ALL: 'pt_BR' }, ['pt-BR']],
    [{ LANG: 'fr_FR.UTF-8', LC_MESSAGES: 'it' }, ['it']],
    [{ LANG: 'de_AT.UTF-8', LANGUAGE: 'de_AT:de::en_GB:de' }, ['de-AT', 'de', 'en-GB']],
    [{ LANG: 'C.UTF-8', LANGUAGE: 'de' }, ['en']],
    [{ LC_ALL: 'POSIX', LANG: 'de' }, ['en']],
    [{}, ['en']],
  ];
  await plain.table(t, rows, ({ env, native }, environment) => {
    Object.assign(env, { LANG: '', LANGUAGE: '', LC_ALL: '', LC_MESSAGES: '' }, environment);
    return JSON.parse(native.getPreferredLanguages());
  });
});

// ---- The session bus

test('without a session bus a call fails at once, with a reason', async (t) => {
  for (const address of [undefined, '', 'disabled:', 'unix:path=/nonexistent', 'tcp:host=127.0.0.1,port=1']) {
    const [reason, ...rest] = await onBus(address)(t, ({ bus, native }) => {
      let events = 0;
      bus.listen(() => ++events);
      return [bus.uniqueName(), native.isDarkMode(), events];
    });
    assert.match(reason, /^[\w.]*Error[\w.]*: ./, `${address}`);
    assert.deepStrictEqual(rest, [false, 0]);
  }
});

/** A process that reports the connection's events. */
async function listener(t, address) {
  const child = await onBus(address).resident(t);
  await child.tell(({ bus, report }) => bus.listen(report));
  return child;
}

test('a silent bus delays only the first call, and its replacement is connected to', async (t) => {
  const directory = temporaryDirectory(t);
  const sockets = [];
  const mute = net.createServer((socket) => sockets.push(socket)).listen(path.join(directory, 'bus'));
  atEnd(t, () => mute.close());
  const child = await listener(t, `unix:path=${directory}/bus`);
  const [reason, milliseconds] = await child.tell(({ bus }) => {
    const start = Date.now();
    for (let i = 0; i < 100; ++i) bus.uniqueName();
    return [bus.uniqueName(), Date.now() - start];
  });
  assert.strictEqual(reason, 'The bus has taken the connection, but does not answer.');
  assert.ok(milliseconds < 1000, `${milliseconds} ms`);
  sockets.forEach((socket) => socket.destroy());
  await new Promise((resolve) => mute.close(resolve));
  await startBus(t, directory);
  assert.strictEqual(await child.report(0), 'connected');
});

test('a connection does not keep the process alive, or a call waiting for more than two seconds', async (t) => {
  const bus = await startBus(t, temporaryDirectory(t));
  assert.strictEqual((await onBus(bus.address).ends(t, ({ bus }) => bus.listen(() => {}))).code, 0);
  const child = await listener(t, bus.address);
  await child.report(0);
  bus.pause();
  const milliseconds = await child.tell(({ native }) => {
    const start = Date.now();
    native.deliverUserNotification('', '', '', '', '', '', '', '', '', undefined);
    return Date.now() - start;
  });
  assert.ok(milliseconds < 2000, `${milliseconds} ms`);
});

test('the appearance follows the desktop’s settings', async (t) => {
  const { address } = await startBus(t, temporaryDirectory(t));
  const inSession = plain.with({ env: { DBUS_SESSION_BUS_ADDRESS: address, GTK_THEME: 'Adwaita:dark' } });
  const asking = await inSession.resident(t);
  const isDark = (expected) => asking.until(({ native }, value) => native.isDarkMode() === value, expected);
  // First only the theme is known; then a portal appears, says light, dark and light, and ends.
  await isDark(true);
  const portal = await inSession.resident(t);
  for (const scheme of [0, 1, 2]) {
    await portal.tell(({ bus }, value) => bus.setPortalScheme(value), scheme);
    await isDark(scheme === 1);
  }
  await portal.kill();
  await isDark(true);
});
