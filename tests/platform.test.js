'use strict';

const assert = require('assert');
const fs = require('fs');
const net = require('net');
const os = require('os');
const path = require('path');
const { test } = require('node:test');

const { startBus } = require('./support/bus');
const { evaluate, runScript, startScript, temporaryDirectory } = require('./support/child');
const { atEnd } = require('./support/cleanup');

test('the main queue runs tasks in order, on later turns, and never starves the event loop', async (t) => {
  const result = await evaluate(
    t,
    `const { platform } = probe();
     const seen = [];
     const note = (name) => (where) => seen.push(name + (where ? ' ' + where : ''));
     platform.postDelayed(30, note('delayed 30'));
     platform.postDelayed(10, note('delayed 10'));
     platform.post(note('first'));
     platform.post(note('second'));
     seen.push('posted');
     let posts = 0, immediates = 0, done = false;
     const postAgain = () => { if (!done) { ++posts; platform.post(postAgain); } };
     const countImmediate = () => { ++immediates; if (!done) setImmediate(countImmediate); };
     postAgain(); countImmediate();
     setTimeout(() => { done = true; console.log(JSON.stringify({ seen, starved: posts > immediates * 3 + 10 })); }, 200);`,
  );
  assert.deepStrictEqual(result, {
    seen: ['posted', 'first main', 'second main', 'delayed 10', 'delayed 30'],
    starved: false,
  });
});

test('tasks from four threads all run, in the order of each thread', async (t) => {
  const result = await evaluate(
    t,
    `const { platform } = probe();
     const next = [0, 0, 0, 0];
     let ordered = true, total = 0;
     platform.postFromThreads(10000, (text) => {
       const [thread, number] = text.split(':').map(Number);
       ordered = ordered && next[thread]++ === number;
       if (++total === 40000) { clearInterval(alive); console.log(JSON.stringify({ ordered, next })); }
     });
     const alive = setInterval(() => {}, 1000);`,
  );
  assert.deepStrictEqual(result, { ordered: true, next: [10000, 10000, 10000, 10000] });
});

test('the background queue runs tasks on other threads, and a hanging task delays no other', async (t) => {
  const result = await evaluate(
    t,
    `const { platform } = probe();
     const seen = [];
     platform.background(600000, () => seen.push('never'));
     let left = 8;
     for (let i = 0; i < 8; ++i) platform.background(1, (where) => { seen.push(where); if (--left === 0) finish(); });
     const alive = setInterval(() => {}, 1000);
     // The process ends although a task is still running.
     function finish() { clearInterval(alive); console.log(JSON.stringify(seen)); process.exit(0); }`,
  );
  assert.deepStrictEqual(result, Array(8).fill('other'));
});

test('an Objective-C exception ends its task only', async (t) => {
  const result = await evaluate(
    t,
    `const { platform } = probe();
     platform.raiseOnMainQueue();
     platform.post(() => { clearInterval(alive); console.log('"still running"'); });
     const alive = setInterval(() => {}, 1000);`,
  );
  assert.strictEqual(result, 'still running');
});

test('waiting tasks do not keep the process alive, and may post when they are destroyed at its end', async (t) => {
  for (const source of ['postDelayed(600000, () => {})', 'postFromDestructor()']) {
    const result = await runScript(t, `probe().platform.${source};`, { deadline: 20000 });
    assert.deepStrictEqual([result.code, result.stderr], [0, ''], source);
  }
});

test('a kernel variable is read by its name; other files are not', async (t) => {
  const { ENOENT, EINVAL } = os.constants.errno;
  const cases = [
    ['kernel.ngroups_max', Number(fs.readFileSync('/proc/sys/kernel/ngroups_max', 'utf8'))],
    ['sysctl.proc_translated', -ENOENT],
    ['kernel.ostype', -EINVAL],
    ['../../etc/passwd', -EINVAL],
    ['kernel/ngroups_max', -EINVAL],
    ['', -EINVAL],
  ];
  const values = await evaluate(
    t,
    `const { platform } = probe();
     console.log(JSON.stringify(${JSON.stringify(cases)}.map(([name]) => platform.kernelVariable(name))));`,
  );
  cases.forEach(([name, expected], index) => assert.strictEqual(values[index], expected, name));
});

test('the log folder is below XDG_STATE_HOME', async (t) => {
  const passwdHome = os.userInfo().homedir;
  const cases = [
    [{ XDG_STATE_HOME: '/state', HOME: '/home/x' }, 'Mail', '/state/Mail/logs'],
    [{ XDG_STATE_HOME: '', HOME: '/home/x' }, 'Mail', '/home/x/.local/state/Mail/logs'],
    [{ XDG_STATE_HOME: 'relative', HOME: '/home/x' }, 'a/../b', '/home/x/.local/state/a_.._b/logs'],
    [{ XDG_STATE_HOME: '', HOME: '' }, '..', `${passwdHome}/.local/state/_../logs`],
    [{ XDG_STATE_HOME: '', HOME: 'relative' }, '', `${passwdHome}/.local/state/_/logs`],
  ];
  for (const [environment, name, expected] of cases) {
    const directory = await evaluate(
      t,
      `const p = probe();
       Object.assign(process.env, ${JSON.stringify(environment)});
       console.log(JSON.stringify(p.platform.logDirectory(${JSON.stringify(name)})));`,
    );
    assert.strictEqual(directory, expected);
  }
});

test('the preferred languages are those of the environment, as BCP 47 identifiers', async (t) => {
  const cases = [
    [{ LANG: 'de_AT.UTF-8@euro' }, 'de-AT'],
    [{ LANG: 'fr_FR.UTF-8', LC_ALL: 'pt_BR' }, 'pt-BR'],
    [{ LANG: 'fr_FR.UTF-8', LC_MESSAGES: 'it' }, 'it'],
    [{ LANG: 'de_AT.UTF-8', LANGUAGE: 'de_AT:de::en_GB:de' }, 'de-AT,de,en-GB'],
    [{ LANG: 'C.UTF-8', LANGUAGE: 'de' }, 'en'],
    [{ LC_ALL: 'POSIX', LANG: 'de' }, 'en'],
    [{}, 'en'],
  ];
  for (const [environment, expected] of cases) {
    const env = { LANG: '', LANGUAGE: '', LC_ALL: '', LC_MESSAGES: '', ...environment };
    const script = 'console.log(JSON.stringify(probe().platform.preferredLanguages()))';
    assert.strictEqual(await evaluate(t, script, { env }), expected, JSON.stringify(environment));
  }
});

test('without a session bus a call fails at once, with a reason', async (t) => {
  for (const address of [
    undefined,
    '',
    'disabled:',
    'unix:path=/nonexistent',
    'nonsense',
    'tcp:host=127.0.0.1,port=1',
  ]) {
    const env = address === undefined ? {} : { DBUS_SESSION_BUS_ADDRESS: address };
    const result = await evaluate(
      t,
      `const { bus, module: m } = probe();
       let events = 0;
       bus.listen(() => ++events);
       console.log(JSON.stringify([bus.uniqueName(), m.isDarkMode(), events]));`,
      { env, deadline: 10000 },
    );
    assert.match(result[0], /^[\w.]*Error[\w.]*: ./, `${address}`);
    assert.deepStrictEqual(result.slice(1), [false, 0]);
  }
});

test('the connection is restored when the bus restarts', async (t) => {
  const directory = temporaryDirectory(t);
  const first = await startBus(t, directory);
  const child = startScript(
    t,
    `const { bus } = probe();
     bus.listen((event) => console.log(event === 'connected' ? event + ' ' + bus.uniqueName().startsWith(':1.') : event));
     process.stdin.on('data', () => process.exit(0));`,
    { env: { DBUS_SESSION_BUS_ADDRESS: first.address } },
  );
  await child.printed('connected true\n');
  await first.stop();
  await child.printed('connected true\ndisconnected\n');
  await startBus(t, directory);
  await child.printed('connected true\ndisconnected\nconnected true\n');
  child.process.stdin.write('end');
  assert.deepStrictEqual(await child.ended, { code: 0, signal: null, stderr: '' });
});

test('a silent bus delays only the first call, and its replacement is connected to', async (t) => {
  const directory = temporaryDirectory(t);
  const sockets = [];
  const mute = net.createServer((socket) => sockets.push(socket)).listen(path.join(directory, 'bus'));
  atEnd(t, () => mute.close());
  const child = startScript(
    t,
    `const { bus } = probe();
     bus.listen((event) => console.log(event));
     const start = process.hrtime.bigint();
     for (let i = 0; i < 100; ++i) bus.uniqueName();
     console.log(bus.uniqueName(), process.hrtime.bigint() - start < 1000000000n);
     process.stdin.on('data', () => process.exit());`,
    { env: { DBUS_SESSION_BUS_ADDRESS: `unix:path=${directory}/bus` } },
  );
  const refusal = 'The bus has taken the connection, but does not answer. true\n';
  await child.printed(refusal);
  sockets.forEach((socket) => socket.destroy());
  await new Promise((resolve) => mute.close(resolve));
  await startBus(t, directory);
  await child.printed(`${refusal}connected\n`);
  child.process.stdin.write('end');
  assert.deepStrictEqual(await child.ended, { code: 0, signal: null, stderr: '' });
});

test('a bus that stops answering holds a call for two seconds at most', async (t) => {
  const bus = await startBus(t, temporaryDirectory(t));
  const child = startScript(
    t,
    `const { module: m, bus } = probe();
     bus.listen((event) => event === 'connected' && console.log(event));
     process.stdin.on('data', () => {
       const start = Date.now();
       m.deliverUserNotification('', '', '', '', '', '', '', '', '', undefined);
       console.log(Date.now() - start < 2000);
       process.exit();
     });`,
    { env: { DBUS_SESSION_BUS_ADDRESS: bus.address } },
  );
  await child.printed('connected\n');
  bus.pause();
  child.process.stdin.write('ask');
  await child.printed('connected\ntrue\n');
});

test('an idle connection uses no processor time and does not keep the process alive', async (t) => {
  const { address } = await startBus(t, temporaryDirectory(t));
  const env = { DBUS_SESSION_BUS_ADDRESS: address };
  const share = await evaluate(
    t,
    `const { bus } = probe();
     bus.listen(() => {});
     setTimeout(() => {
       const before = process.cpuUsage();
       setTimeout(() => {
         const { user, system } = process.cpuUsage(before);
         console.log(JSON.stringify((user + system) / 2e6));
       }, 2000);
     }, 300);`,
    { env },
  );
  t.diagnostic(`${(share * 100).toFixed(3)} % of a processor`);
  assert.ok(share < 0.02, `${share}`);
  const result = await runScript(t, 'probe().bus.listen(() => {});', { env, deadline: 20000 });
  assert.strictEqual(result.code, 0);
});

test('the appearance follows the desktop’s settings', async (t) => {
  const { address } = await startBus(t, temporaryDirectory(t));
  const env = { DBUS_SESSION_BUS_ADDRESS: address, GTK_THEME: 'Adwaita:dark' };
  const asking = startScript(
    t,
    `const { module: m } = probe();
     let last;
     setInterval(() => { if (m.isDarkMode() !== last) console.log(last = m.isDarkMode()); }, 5);
     process.stdin.on('data', () => process.exit(0));`,
    { env },
  );
  // First only the theme is known; then a portal appears, says light, dark and light, and ends.
  await asking.printed('true\n');
  const portal = startScript(
    t,
    `const { bus } = probe();
     bus.setPortalScheme(0);
     process.stdin.on('data', (data) => bus.setPortalScheme(Number(data)));
     process.stdin.on('end', () => process.exit(0));`,
    { env },
  );
  await asking.printed('true\nfalse\n');
  portal.process.stdin.write('1');
  await asking.printed('true\nfalse\ntrue\n');
  portal.process.stdin.write('2');
  await asking.printed('true\nfalse\ntrue\nfalse\n');
  portal.process.stdin.end();
  await portal.ended;
  await asking.printed('true\nfalse\ntrue\nfalse\ntrue\n');
  asking.process.stdin.write('end');
  await asking.ended;
});
