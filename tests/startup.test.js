'use strict';

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { root } = require('./support/addon');
const { evaluate, runScript } = require('./support/child');

const logOf = (home) => {
  const directory = path.join(home, 'state', 'node', 'logs');
  return fs
    .readdirSync(directory)
    .map((name) => fs.readFileSync(path.join(directory, name), 'utf8'))
    .join('');
};

test('the start-up steps run in their order, once, however often the module is loaded', async (t) => {
  const result = await evaluate(
    t,
    `const { startUpSteps, startUpStepsRun } = probe();
     const { open } = require('./tests/support/addon');
     const again = open('TessaroNativeProbe');
     console.log(JSON.stringify({ steps: startUpSteps(), run: startUpStepsRun(), again: typeof again.loadFScript }));`,
  );
  const steps = [
    'TsSetupLogging',
    'TsSetApplicationIsolate',
    'TsInstallApplicationPatch',
    'TsDisableGPUIfNeeded',
    'TsDisableNativeTabs',
    'TsInstallDockMenuPatch',
    'TsInstallWebContentsViewPatch',
    'TsInstallDelegateMethods',
    'TsListenForWindowNotifications',
    'TsListenForComposeOutgoingMessage',
    'TsListenForServiceProviderSearch',
    'TsMonitorReachability',
    'TsRegisterServices',
    'TsActivateStatusItem',
    'TsListenForStatusItemMenuNeedsUpdate',
    'PFMoveToApplicationsFolderIfNecessary',
    'TsInstallPDFServices',
    'TsCreateUserNotification',
    'TsLogAppearance',
  ];
  assert.deepStrictEqual(result, { steps, run: steps, again: 'function' });
});

test('a clean load through the package writes its log, and nothing to standard error', async (t) => {
  const result = await runScript(t, `const m = require(${JSON.stringify(root)}); console.log(typeof m.loadFScript);`);
  assert.deepStrictEqual([result.code, result.stdout, result.stderr], [0, 'function\n', '']);
  const lines = logOf(result.home).trim().split('\n');
  const texts = lines.map((line) => line.replace(/^\S+ \S+ \[(\w+)\] (.*) \(src\/\S+:\d+ .*\)$/, '$1 $2'));
  assert.deepStrictEqual(
    texts.map((text) => text.replace(/Dark Mode: \d \S+ \(0\)/, 'Dark Mode')),
    [
      'info Native Module logging initialized!',
      "error Cannot patch as I didn't find application class",
      'info Process is running natively, keeping DisableGPU unchanged',
      "error Cannot patch as I didn't find application class",
      "error Cannot patch as I didn't find application class",
      'debug Dark Mode',
      'info *** Tessaro Native Module Started ***',
    ],
  );
});

test('the GPU is disabled unless the process is known to run natively', async (t) => {
  const result = await evaluate(
    t,
    `const { translationState, disableGPUUnlessNative } = probe();
     const { ENOENT, EPERM } = require('os').constants.errno;
     console.log(JSON.stringify({
       states: [[1, 0], [0, 0], [0, ENOENT], [0, EPERM]].map((args) => translationState(...args)),
       disabled: [0, 1, -1].map((state) => disableGPUUnlessNative(state)),
     }));`,
  );
  assert.deepStrictEqual(result, { states: [1, 0, 0, -1], disabled: [false, true, true] });
});

test('core questions have answers without a display or a bus', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m } = probe();
     m.loadFScript();
     console.log(JSON.stringify([m.getBundlePath(), JSON.parse(m.getPreferredLanguages()), m.isDarkMode(), m.macOSVersion()]));`,
    { env: { LANGUAGE: 'de_AT:fr', LANG: 'de_AT.UTF-8' } },
  );
  assert.ok(path.isAbsolute(result[0]), result[0]);
  assert.deepStrictEqual(result[1].slice(0, 2), ['de-AT', 'fr']);
  assert.strictEqual(result[2], false);
  assert.match(result[3], /^\d/);
});

test('an Objective-C exception ends at the boundary, is logged, and answers "nothing"', async (t) => {
  const result = await evaluate(
    t,
    `const p = probe();
     p.captureLog();
     const answers = ['Undefined', 'Null', 'False', 'Zero', 'EmptyText', 'EmptyArray'].map((kind) => p['raise' + kind]());
     answers[0] = answers[0] === undefined ? 'undefined' : answers[0];
     p.flushLog();
     console.log(JSON.stringify({ answers, log: p.capturedLog().map((m) => [m.flag, m.text]) }));`,
  );
  assert.deepStrictEqual(result.answers, ['undefined', null, false, 0, '', []]);
  assert.strictEqual(result.log.length, 6);
  assert.deepStrictEqual(result.log[1], [1, 'raiseNull failed with TsProbeException: raised by a test']);
});

test('without a window server, what needs one says so and answers "nothing"', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m, windowOnly, captureLog, capturedLog, flushLog } = probe();
     captureLog();
     const answers = [windowOnly(), m.hasMainWindow()];
     flushLog();
     console.log(JSON.stringify({ answers, log: capturedLog().map((m) => m.text) }));`,
  );
  assert.deepStrictEqual(result, {
    answers: [null, false],
    log: [
      'windowOnly needs a window server, and there is none',
      'hasMainWindow needs a window server, and there is none',
    ],
  });
});

test('a worker is refused with an error, before and after the main thread has loaded the module', async (t) => {
  for (const first of ['', `require(${JSON.stringify(root)});`]) {
    const result = await evaluate(
      t,
      `const { Worker } = require('worker_threads');
       ${first}
       const worker = new Worker(
         'const { parentPort } = require("worker_threads");' +
         'try { require(' + ${JSON.stringify(JSON.stringify(root))} + '); parentPort.postMessage("loaded"); }' +
         'catch (error) { parentPort.postMessage(error.message); }', { eval: true });
       worker.on('message', (message) => { console.log(JSON.stringify(message)); });
       worker.on('exit', () => { if (typeof require(${JSON.stringify(root)}).loadFScript !== 'function') process.exit(9); });`,
    );
    assert.strictEqual(result, 'TessaroNative works on the main thread only, not in a worker');
  }
});

test('the process ends well: by itself, by exit during a callback, and with exceptions pending', async (t) => {
  const cases = [
    ['by itself', '', 0],
    [
      'exit in a callback',
      `m.setNetworkReachabilityCallbackFunction(() => process.exit(3)); p.callReachability(true);`,
      3,
    ],
    [
      'exit in a callback from the event loop',
      `m.setNetworkReachabilityCallbackFunction(() => process.exit(4)); p.callReachabilityLater(true); setTimeout(() => {}, 30000);`,
      4,
    ],
    [
      'exit with a call still queued',
      `m.setNetworkReachabilityCallbackFunction(() => process.exit(9)); p.callReachabilityLater(true); process.exit(5);`,
      5,
    ],
    [
      'native events after exit has begun',
      `m.setNetworkReachabilityCallbackFunction(() => {}); process.on('exit', () => { p.callReachabilityLater(true); p.callReachability(true); });`,
      0,
    ],
    [
      'posts from a thread at exit',
      `for (let i = 0; i < 1000; ++i) p.postNotificationFromThread('Ts', 'x'); process.exit(6);`,
      6,
    ],
  ];
  for (const [name, script, code] of cases) {
    await t.test(name, async (subtest) => {
      const result = await runScript(subtest, `const p = probe(); const m = p.module; ${script}`);
      assert.deepStrictEqual([result.code, result.signal, result.stderr], [code, null, '']);
    });
  }
});

test('10 000 callbacks set and called leave no memory behind', async (t) => {
  const growth = await evaluate(
    t,
    `const { module: m, callReachability, echoAutoreleased } = probe();
     const round = () => {
       for (let i = 0; i < 10000; ++i) {
         m.setNetworkReachabilityCallbackFunction(() => i);
         callReachability(true);
         m.setCurrentURL('https://example.org/' + i, 'x'.repeat(1000), 'title 你好');
         echoAutoreleased('y'.repeat(1000));
       }
       gc();
     };
     round(); round();
     const before = process.memoryUsage.rss();
     round(); round(); round();
     console.log(JSON.stringify((process.memoryUsage.rss() - before) / 1048576));`,
    // AddressSanitizer would keep what was freed.
    { nodeOptions: ['--expose-gc'], env: { ASAN_OPTIONS: 'detect_leaks=0:quarantine_size_mb=1' } },
  );
  // Three rounds move 60 MB of text: a leak of any of it would show.
  assert.ok(growth < 15, `${growth} MB`);
});
