'use strict';

// The reference host: that its event loop is as good as Cocoa's own, and that it ends well whatever happens.

const assert = require('assert');
const { spawn } = require('child_process');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { root } = require('./support/addon');
const { evaluate, eventually, node, runScript, temporaryDirectory } = require('./support/child');
const { endWith } = require('./support/cleanup');
const { paced } = require('./support/pace');
const { useSession } = require('./support/session');

const displaySession = path.join(root, 'scripts', 'display-session');

const prelude = `
  const { execFile } = require('child_process');
  const { once } = require('events');
  const { promisify } = require('util');
  const host = require('./host');
  const run = promisify(execFile);
  const { eventually } = require('./tests/support/child');
  const print = (value) => console.log(JSON.stringify(value));
  const openWindow = async () => {
    host.setKeepAlive(true);
    const window = host.createWindow({ title: 'Window under test' });
    await run('xdotool', ['windowactivate', '--sync', String(host.windowInfo(window).systemWindow)]);
    await eventually(() => host.windowInfo(window).isKey, 'the keyboard');
    return window;
  };
  const probes = (count) => new Promise((resolve) => {
    const answers = [];
    host.on('probe', (answer) => answers.push(answer) === count && resolve(answers));
  });
`;

// One session for all tests that only look at the application.
const session = useSession();

const inSession = (t, source, options = {}) =>
  evaluate(t, prelude + source, { ...options, env: { ...session.env, ...options.env } });

/** Runs `source` in a display session of its own, which it may damage. */
function inOwnSession(t, source, { deadline = 30000, signal } = {}) {
  const home = temporaryDirectory(t);
  const child = spawn(displaySession, ['--own-display', node, '-e', prelude + source], {
    cwd: root,
    env: { ...process.env, HOME: home },
    stdio: ['ignore', 'pipe', 'pipe'],
  });
  let stdout = '';
  let stderr = '';
  child.stdout.setEncoding('utf8').on('data', (text) => {
    stdout += text;
    if (signal !== undefined) child.kill(signal);
  });
  child.stderr.setEncoding('utf8').on('data', (text) => (stderr += text));
  endWith(t, child);
  const timer = setTimeout(() => child.kill('SIGTERM'), paced(deadline));
  return new Promise((resolve) => {
    child.on('close', (code) => {
      clearTimeout(timer);
      resolve({ code, stdout, stderr });
    });
  });
}

const processesOf = (directory) =>
  fs.readdirSync('/proc').filter((pid) => {
    if (!/^\d+$/.test(pid)) return false;
    try {
      return fs.readFileSync(`/proc/${pid}/environ`, 'latin1').includes(`TESSARO_SESSION=${directory}`);
    } catch {
      return false;
    }
  });

// ---- The application

test('a window is on screen and has the focus, and its handle is the reference itself', async (t) => {
  const { display, window, handle } = await inSession(
    t,
    `const display = host.start();
     openWindow().then((handle) => {
       print({ display, handle: [...handle], window: host.windowInfo(handle) });
       host.closeWindow(handle);
       host.setKeepAlive(false);
     });`,
  );
  assert.deepStrictEqual(display, { display: true });
  assert.strictEqual(handle.length, 8);
  const { isVisible, isKey, isMain, isPageFocused, title, content } = window;
  assert.deepStrictEqual(
    [isVisible, isKey, isMain, isPageFocused, title],
    [true, true, true, true, 'Window under test'],
  );
  assert.deepStrictEqual([content.width, content.height], [800, 500]);
});

test('the closing of a window is reported to script, and its handle is refused afterwards', async (t) => {
  const result = await inSession(
    t,
    `host.start();
     const handle = host.createWindow();
     let closed;
     host.on('window-closed', (which) => (closed = which));
     host.closeWindow(handle);
     try { host.windowInfo(handle); } catch ({ code, message }) { print({ same: closed.equals(handle), code, message }); }`,
  );
  assert.deepStrictEqual(result, {
    same: true,
    code: 'NSInvalidArgumentException',
    message: 'There is no such window',
  });
});

test('every command of the main menu has its own id', async (t) => {
  const menus = await inSession(t, `host.start(); print(host.mainMenuDescription());`);
  assert.deepStrictEqual(
    menus.map(({ title }) => title),
    ['TessaroHost', 'File', 'Edit', 'View', 'Window', 'Help'],
  );
  const commands = menus.flatMap(({ items }) => items).filter(({ commandId }) => commandId !== undefined);
  assert.ok(commands.length > 20);
  assert.strictEqual(new Set(commands.map(({ commandId }) => commandId)).size, commands.length);
});

test('the classes that the module looks up have the methods that it replaces', async (t) => {
  const methods = {
    AtomApplication: ['sendEvent:'],
    HostApplicationDelegate: ['performCommand:'],
    AtomNSWindow: ['makeFirstResponder:'],
    AtomNSWindowDelegate: ['windowWillClose:'],
    BRYInspectableWebContentsView: ['subviews'],
    WebContentsViewCocoa: ['draggingEntered:', 'draggingUpdated:', 'draggingExited:', 'performDragOperation:'],
  };
  const pairs = Object.entries(methods).flatMap(([name, selectors]) => selectors.map((selector) => [name, selector]));
  const missing = await inSession(
    t,
    `host.start(); print(${JSON.stringify(pairs)}.filter(([name, selector]) => !host.hasMethod(name, selector)));`,
  );
  assert.deepStrictEqual(missing, []);
});

test('typed keys arrive in the page, and shortcuts choose menu items', async (t) => {
  const { typedText, command } = await inSession(
    t,
    `host.start();
     openWindow().then(async (window) => {
       await run('xdotool', ['type', 'Hello you']);
       await eventually(() => host.windowInfo(window).typedText.length >= 9, 'keys');
       const chosen = once(host, 'command');
       await run('xdotool', ['key', 'ctrl+shift+s']);
       const [command] = await chosen;
       print({ ...host.windowInfo(window), command });
       host.setKeepAlive(false);
     });`,
    { deadline: 30000 },
  );
  assert.strictEqual(typedText, 'Hello you');
  assert.deepStrictEqual(command, { commandId: 203, title: 'Save as PDF…' });
});

test('only the module’s notifications reach script, with object and user information', async (t) => {
  const notifications = await evaluate(
    t,
    `${prelude}
     host.start();
     const received = [];
     host.on('notification', (notification) => received.push(notification));
     host.postNotification('TsWithAll', 'object', { text: 'ü🌍\\0', number: 1.5, list: [true, null, { deep: -1 }] });
     host.postNotification('kTsWithNothing');
     host.postNotification('OtherNotification');
     print(received);`,
  );
  assert.deepStrictEqual(notifications, [
    { name: 'TsWithAll', object: 'object', userInfo: { text: 'ü🌍\0', number: 1.5, list: [true, null, { deep: -1 }] } },
    { name: 'kTsWithNothing', object: null, userInfo: null },
  ]);
});

test('the main bundle is the host’s own, in the language of the environment', async (t) => {
  const cases = [
    [{ LANG: 'de_AT.UTF-8' }, 'Ablage'],
    [{ LANG: 'de_DE.UTF-8', LC_ALL: 'en_GB.UTF-8' }, 'File'],
    [{ LANG: 'en_US.UTF-8', LANGUAGE: 'de:en' }, 'Ablage'],
    [{ LANG: 'C', LANGUAGE: 'de' }, 'File'],
    [{ LANG: 'xx_YY.UTF-8' }, 'File'],
    [{}, 'File'],
  ];
  for (const [env, file] of cases) {
    const bare = { LANG: '', LC_ALL: '', LC_MESSAGES: '', LANGUAGE: '', ...env };
    const result = await evaluate(
      t,
      `${prelude} host.start(); print([host.localized('File'), host.bundleInfo().identifier, host.bundleInfo().path]);`,
      { env: bare },
    );
    const expected = [file, 'org.tessaro.TessaroHost', path.join(root, 'host', 'TessaroHost.app')];
    assert.deepStrictEqual(result, expected, JSON.stringify(env));
  }
});

test('languages that the user has chosen in the defaults win', async (t) => {
  const text = await evaluate(
    t,
    `const fs = require('fs');
     fs.mkdirSync(process.env.HOME + '/GNUstep/Defaults', { recursive: true });
     fs.writeFileSync(process.env.HOME + '/GNUstep/Defaults/NSGlobalDomain.plist', '{ NSLanguages = (German); }');
     ${prelude} host.start(); print(host.localized('File'));`,
    { env: { LANG: 'en_US.UTF-8' } },
  );
  assert.strictEqual(text, 'Ablage');
});

// ---- The event loop

test('an idle application uses no processor time', async (t) => {
  const { percent, turns } = await inSession(
    t,
    `host.start();
     openWindow().then(async () => {
       const measure = async () => {
         const cpu = process.cpuUsage(), start = process.hrtime.bigint(), { turns } = host.stats();
         await new Promise((resolve) => setTimeout(resolve, 2000));
         const { user, system } = process.cpuUsage(cpu);
         const percent = (user + system) / Number(process.hrtime.bigint() - start) * 1e5;
         return { percent, turns: host.stats().turns - turns };
       };
       // The window manager and the first drawing may not have done with the window yet.
       let measured;
       await eventually(async () => (measured = await measure()).percent < 1, 'rest').catch(() => {});
       print(measured);
       host.setKeepAlive(false);
     });`,
  );
  t.diagnostic(`${percent.toFixed(3)} % of a processor, ${turns} turns of the loop in 2 s`);
  assert.ok(percent < 1, `${percent} %`);
});

test('timers fire when they are due', async (t) => {
  const answers = await inSession(
    t,
    `host.start();
     host.setKeepAlive(true);
     const answered = probes(10);
     host.probe('startTimer', { interval: 0.05, count: 10 });
     answered.then((answers) => { print(answers); host.setKeepAlive(false); });`,
  );
  const late = answers.map(({ due, fired }) => (fired - due) / 1e6);
  t.diagnostic(`at most ${Math.max(...late).toFixed(2)} ms late`);
  for (const milliseconds of late) assert.ok(milliseconds > -1 && milliseconds < 100, `${milliseconds} ms late`);
});

test('calls from other threads wake the sleeping main thread at once', async (t) => {
  const [{ sent, arrived }] = await inSession(
    t,
    `host.start();
     host.setKeepAlive(true);
     const answered = probes(1);
     setTimeout(() => host.probe('callFromThread'), 200);
     answered.then((answers) => { print(answers); host.setKeepAlive(false); });`,
  );
  t.diagnostic(`${((arrived - sent) / 1e6).toFixed(2)} ms`);
  assert.ok(arrived - sent < 1e9);
});

test('promises and ticks settle right after a native callback', async (t) => {
  const order = await inSession(
    t,
    `host.start();
     host.setKeepAlive(true);
     const order = [];
     host.on('notification', () => {
       order.push('event');
       Promise.resolve().then(() => order.push('promise'));
       process.nextTick(() => order.push('tick'));
     });
     host.probe('postLater', 'TsProbe');
     eventually(() => order.length === 3, 'all of it').then(() => { print(order); host.setKeepAlive(false); });`,
  );
  assert.deepStrictEqual(order, ['event', 'tick', 'promise']);
});

test('an exception of a handler is an uncaught exception of the process', async (t) => {
  const result = await inSession(
    t,
    `host.start();
     host.setKeepAlive(true);
     process.on('uncaughtException', ({ message }) => { print(message); host.setKeepAlive(false); });
     host.on('notification', () => { throw new Error('thrown by a handler'); });
     host.probe('postLater', 'TsProbe');`,
  );
  assert.strictEqual(result, 'thrown by a handler');
});

// ---- Objective-C exceptions

test('an exception raised under a call from script becomes an error there', async (t) => {
  const result = await inSession(
    t,
    `host.start();
     try { host.probe('raise'); } catch ({ code, message }) { print({ code, message }); }`,
  );
  assert.deepStrictEqual(result, { code: 'NSGenericException', message: 'raised by a probe' });
});

test('an exception raised in the event loop is logged, shows no panel, and the loop goes on', async (t) => {
  const result = await runScript(
    t,
    `${prelude}
     host.start();
     host.setKeepAlive(true);
     host.probe('raiseOnNotification', 'TsProbe');
     host.probe('postLater', 'TsProbe');
     host.probe('raiseInLoop');
     const answered = probes(1);
     host.probe('startTimer', { interval: 0.2, count: 1 });
     answered.then(() => { print('goes on'); host.setKeepAlive(false); });`,
    { env: session.env, deadline: 20000 },
  );
  assert.deepStrictEqual([result.code, result.stdout], [0, '"goes on"\n']);
  assert.strictEqual(result.stderr.match(/raised by a probe/g).length, 2);
});

test('an uncaught exception on another thread ends the process', async (t) => {
  const result = await runScript(t, `${prelude} host.start(); host.setKeepAlive(true); host.probe('raiseOnThread');`, {
    env: session.env,
    deadline: 20000,
  });
  assert.notStrictEqual(result.code, 0);
  assert.match(result.stderr, /uncaught NSGenericException: raised by a probe/);
});

// ---- The end

const exits = {
  'by itself': [0, `host.setKeepAlive(true); host.setKeepAlive(false);`],
  'when it is told to': [3, `host.setKeepAlive(true); setTimeout(() => process.exit(3), 50);`],
  'in the middle of an event': [
    4,
    `host.on('notification', () => process.exit(4)); host.probe('postLater', 'TsProbe'); host.setKeepAlive(true);`,
  ],
  'when the host is stopped in the middle of an event': [
    0,
    `host.on('notification', () => host.stop()); host.probe('postLater', 'TsProbe'); host.setKeepAlive(true);`,
  ],
  'with windows open': [0, `host.createWindow(); host.createWindow();`],
};

for (const [when, [code, source]] of Object.entries(exits)) {
  test(`the process ends ${when}`, async (t) => {
    const result = await runScript(t, `${prelude} host.start(); ${source}`, { env: session.env, deadline: 20000 });
    assert.deepStrictEqual([result.code, result.stderr], [code, '']);
  });
}

test('without a display the host reports that, and everything without windows works', async (t) => {
  for (const [display, reason] of [
    [undefined, /./],
    [':9999', /:9999/],
  ]) {
    const result = await evaluate(
      t,
      `${prelude}
       const display = host.start();
       let refusal;
       try { host.createWindow(); } catch ({ code }) { refusal = code; }
       host.setKeepAlive(true);
       const answered = probes(2);
       host.probe('startTimer', { interval: 0.01, count: 1 });
       host.probe('callFromThread');
       answered.then((answers) => {
         print({ display, refusal, answers: answers.map(({ name }) => name).sort() });
         host.setKeepAlive(false);
       });`,
      { env: display === undefined ? {} : { DISPLAY: display }, deadline: 20000 },
    );
    assert.strictEqual(result.display.display, false);
    assert.match(result.display.reason, reason);
    assert.deepStrictEqual([result.refusal, result.answers], ['NoDisplay', ['thread-call', 'timer']]);
  }
});

const killDisplay = `
  const { stdout } = await run('ps', ['--ppid', String(process.ppid), '-o', 'pid=,comm=']);
  process.kill(Number(stdout.match(/(\\d+) Xvfb/)[1]), 'SIGKILL');`;

test('the loss of the display ends the process with code 1', async (t) => {
  const { code, stderr } = await inOwnSession(t, `host.start(); openWindow().then(async () => {${killDisplay}});`);
  assert.strictEqual(code, 1, stderr);
  assert.match(stderr, /display is lost/);
});

test('script may outlive the display, and the loop does not spin', async (t) => {
  const { code, stdout, stderr } = await inOwnSession(
    t,
    `host.start();
     openWindow().then(async (window) => {
       const lost = once(host, 'display-lost');
       ${killDisplay}
       await lost;
       let refusal;
       try { host.windowInfo(window); } catch ({ code }) { refusal = code; }
       const answered = probes(1);
       host.probe('callFromThread');
       await answered;
       const cpu = process.cpuUsage(), { turns } = host.stats();
       await new Promise((resolve) => setTimeout(resolve, 1000));
       const { user, system } = process.cpuUsage(cpu);
       print({ refusal, milliseconds: (user + system) / 1000, turns: host.stats().turns - turns });
       host.setKeepAlive(false);
     });`,
  );
  assert.strictEqual(code, 0, stderr);
  const { refusal, milliseconds, turns } = JSON.parse(stdout);
  assert.strictEqual(refusal, 'NoDisplay');
  assert.ok(milliseconds < 100 && turns < 20, stdout);
});

test('a worker is refused', async (t) => {
  const message = await evaluate(
    t,
    `const { Worker } = require('worker_threads');
     new Worker("require('./host')", { eval: true }).on('error', ({ message }) => console.log(JSON.stringify(message)));`,
  );
  assert.match(message, /main thread only/);
});

// ---- scripts/display-session

test('a display session passes input, output and the exit code, and leaves nothing behind', async (t) => {
  const child = spawn(
    displaySession,
    ['--own-display', 'sh', '-c', 'echo $TESSARO_SESSION; cat; gdnc --daemon; exit 7'],
    {
      stdio: ['pipe', 'pipe', 'inherit'],
    },
  );
  let output = '';
  child.stdout.on('data', (text) => (output += text));
  child.stdin.end('through');
  await eventually(() => child.exitCode !== null, 'the end of the session');
  const [directory, rest] = output.split('\n');
  assert.deepStrictEqual([child.exitCode, rest], [7, 'through']);
  assert.deepStrictEqual([fs.existsSync(directory), processesOf(directory)], [false, []]);
});

for (const [signal, code] of [
  ['SIGTERM', 143],
  ['SIGINT', 143],
]) {
  test(`a display session ends well by ${signal}`, async (t) => {
    const { code: ended, stdout } = await inOwnSession(
      t,
      `process.stdout.write(process.env.TESSARO_SESSION); setInterval(() => {}, 1000);`,
      { signal },
    );
    assert.deepStrictEqual([ended, fs.existsSync(stdout), processesOf(stdout)], [code, false, []]);
  });
}

test('functions that need a window server work with one', async (t) => {
  const answer = await inSession(
    t,
    `host.start();
     const { windowOnly } = require('./tests/support/addon').probe();
     print(windowOnly());`,
  );
  assert.strictEqual(answer, true);
});
