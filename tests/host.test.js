'use strict';

// The reference host: its event loop is as good as Cocoa's own, and it ends well in every case.

const { assert, endWith, eventually, execFileSync, fs, paced } = require('./support');
const { path, root, scenarios, spawn, test } = require('./support');

const ownDisplay = [path.join(root, 'scripts', 'display-session'), '--own-display'];

const plain = scenarios({
  host: true,
  fixture: ({ eventually, host, run }) => ({
    openWindow: async () => {
      host.setKeepAlive(true);
      const window = host.createWindow({ title: 'Window under test' });
      await run('xdotool', 'windowactivate', '--sync', host.windowInfo(window).systemWindow);
      await eventually(() => host.windowInfo(window).isKey, 'the keyboard');
      return window;
    },
    /** Waits for answers of the host's probes. */
    answers: (count) =>
      new Promise((resolve) => {
        const answers = [];
        host.setKeepAlive(true);
        host.on('probe', (answer) => answers.push(answer) === count && resolve([...answers]));
      }),
    /** Milliseconds of processor time, and turns of the loop, in a second. */
    useInASecond: async () => {
      const [cpu, { turns }] = [process.cpuUsage(), host.stats()];
      await new Promise((resolve) => setTimeout(resolve, 1000));
      const { user, system } = process.cpuUsage(cpu);
      return { milliseconds: (user + system) / 1000, turns: host.stats().turns - turns };
    },
    /** Ends the display of a display session of the process's own. */
    killDisplay: async () => {
      const processes = await run('ps', '--ppid', process.ppid, '-o', 'pid=,comm=');
      process.kill(Number(processes.match(/(\d+) Xvfb/)[1]), 'SIGKILL');
    },
  }),
});
const inSession = plain.with({ display: true });
const inOwnSession = plain.with({ within: ownDisplay });

// ---- The application

inSession.test('a window has the focus, and Objective-C exceptions become errors of script', async (fixture) => {
  const { assert, equal, host, openWindow } = fixture;
  const window = await openWindow();
  equal(host.windowInfo(window).isPageFocused, true);
  let closed;
  host.on('window-closed', (handle) => (closed = handle));
  host.closeWindow(window);
  equal(closed, window);
  const refusal = { code: 'NSInvalidArgumentException', message: 'There is no such window' };
  assert.throws(() => host.windowInfo(window), refusal);
  assert.throws(() => host.probe('raise'), { code: 'NSGenericException', message: 'raised by a probe' });
});

// ---- The event loop

test('an idle application uses no processor time; timers fire when due, and calls from threads wake it', async (t) => {
  const [use, timers, [{ sent, arrived }]] = await inSession(t, async (fixture) => {
    const { answers, bus, eventually, host, openWindow, useInASecond } = fixture;
    await openWindow();
    let isConnected = false;
    bus.listen((event) => (isConnected = event === 'connected'));
    await eventually(() => isConnected, 'the bus');
    // The window manager and the first drawing may not have done with the window yet.
    let use;
    await eventually(async () => (use = await useInASecond()).milliseconds < 10, 'rest').catch(() => {});
    const fired = answers(10);
    host.probe('startTimer', { interval: 0.05, count: 10 });
    const timers = await fired;
    const called = answers(1);
    setTimeout(() => host.probe('callFromThread'), 100);
    return [use, timers, await called];
  });
  t.diagnostic(`${use.milliseconds.toFixed(3)} ms of a processor, ${use.turns} turns of the loop in a second`);
  assert.ok(use.milliseconds < 10, `${use.milliseconds} ms`);
  const late = timers.map(({ due, fired }) => (fired - due) / 1e6);
  t.diagnostic(`at most ${Math.max(...late).toFixed(2)} ms late; ${((arrived - sent) / 1e6).toFixed(2)} ms to wake`);
  for (const milliseconds of late) assert.ok(milliseconds > -1 && milliseconds < paced(100), `${milliseconds} ms late`);
  assert.ok(arrived - sent < 1e9);
});

// ---- Objective-C exceptions

test('an exception raised in the event loop is logged, shows no panel, and the loop goes on', async (t) => {
  const { code, stdout, stderr } = await inSession.ends(t, async ({ answers, host }) => {
    host.probe('raiseOnNotification', 'TsProbe');
    host.probe('postLater', 'TsProbe');
    host.probe('raiseInLoop');
    const fired = answers(1);
    host.probe('startTimer', { interval: 0.2, count: 1 });
    return (await fired).length;
  });
  assert.deepStrictEqual([code, stdout, stderr.match(/raised by a probe/g).length], [0, '1\n', 2]);
});

test('an uncaught exception on another thread ends the process', async (t) => {
  const { code, stderr } = await inSession.ends(t, ({ host }) => {
    host.setKeepAlive(true);
    host.probe('raiseOnThread');
  });
  assert.notStrictEqual(code, 0);
  assert.match(stderr, /uncaught NSGenericException: raised by a probe/);
});

// ---- The end

test('the process ends by itself and in the middle of an event, with its code', async (t) => {
  const keepAlive = ({ host }) => host.setKeepAlive(true);
  const inEvent = ({ host }, end) => {
    host.on('notification', () => (end === 'exit' ? process.exit(4) : host.stop()));
    host.probe('postLater', 'TsProbe');
    host.setKeepAlive(true);
  };
  const cases = [
    ['by itself', 0, ({ host }) => [true, false].forEach((value) => host.setKeepAlive(value))],
    ['by process.exit()', 3, ({ host }) => setTimeout(() => process.exit(3), 50) && host.setKeepAlive(true)],
    ['in an event', 4, inEvent, 'exit'],
    ['by host.stop() in an event', 0, inEvent, 'stop'],
    ['with windows open', 0, ({ host }) => void [host.createWindow(), host.createWindow()]],
  ];
  for (const [name, expected, ...scenario] of cases) {
    const { code, stderr } = await inSession.ends(t, ...scenario);
    assert.deepStrictEqual([code, stderr], [expected, ''], name);
  }
});

test('without a display the host reports that, and everything without windows works', async (t) => {
  for (const DISPLAY of [undefined, ':9999']) {
    const env = DISPLAY && { DISPLAY };
    const { display, names } = await plain.with({ env })(t, async ({ answers, assert, display, host }) => {
      assert.throws(() => host.createWindow(), { code: 'NoDisplay' });
      const answered = answers(2);
      host.probe('startTimer', { interval: 0.01, count: 1 });
      host.probe('callFromThread');
      return { display, names: (await answered).map(({ name }) => name).sort() };
    });
    assert.strictEqual(display.display, false);
    assert.ok(display.reason.includes(DISPLAY ?? ''), display.reason);
    assert.deepStrictEqual(names, ['thread-call', 'timer']);
  }
});

test('the loss of the display ends the process with code 1', async (t) => {
  const { code, stderr } = await inOwnSession.ends(t, async ({ killDisplay, openWindow }) => {
    await openWindow();
    await killDisplay();
    await new Promise(() => {});
  });
  assert.strictEqual(code, 1, stderr);
  assert.match(stderr, /display is lost/);
});

test('script may outlive the display, and the loop does not spin', async (t) => {
  const work = async ({ answers, assert, events, host, killDisplay, openWindow, useInASecond }) => {
    const window = await openWindow();
    const lost = events.once(host, 'display-lost');
    await killDisplay();
    await lost;
    assert.throws(() => host.windowInfo(window), { code: 'NoDisplay' });
    const answered = answers(1);
    host.probe('callFromThread');
    await answered;
    return useInASecond();
  };
  const { milliseconds, turns } = await inOwnSession(t, work);
  assert.ok(milliseconds < 100 && turns < 20, `${milliseconds} ms, ${turns} turns`);
});

// ---- scripts/display-session

test('a display session passes input, output and the exit code, ends by a signal, and leaves nothing behind', async (t) => {
  const script = 'echo $TESSARO_SESSION; cat; gdnc --daemon; exit 7';
  // A signal may come when the command runs, and the session does not know that yet: then the code is the signal's.
  const codes = { none: [7], SIGTERM: [143], SIGINT: [130, 143] };
  for (const signal of Object.keys(codes)) {
    const child = spawn(ownDisplay[0], [ownDisplay[1], 'sh', '-c', script], { stdio: ['pipe', 'pipe', 'inherit'] });
    endWith(t, child);
    let output = '';
    child.stdout.on('data', (bytes) => (output += bytes));
    await eventually(() => output.includes('\n'), 'the session');
    if (signal === 'none') child.stdin.end('through');
    else child.kill(signal);
    await eventually(() => child.exitCode !== null, 'the end of the session');
    const [directory, rest] = output.split('\n');
    const find = ['-c', 'grep -ls "$0" /proc/*/environ || test $? -le 2', `TESSARO_SESSION=${directory}`];
    const processes = execFileSync('sh', find, { encoding: 'utf8' });
    assert.ok(codes[signal].includes(child.exitCode), `${signal}: ${child.exitCode}`);
    const expected = [signal === 'none' ? 'through' : '', '', false];
    assert.deepStrictEqual([rest, processes, fs.existsSync(directory)], expected, signal);
  }
});
