'use strict';

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { root } = require('./support/addon');
const { runScript } = require('./support/child');
const { scenarios } = require('./support/scenario');

const plain = scenarios();

test('the start-up steps run in their order, once, however often the module is loaded', async (t) => {
  const result = await plain(t, ({ load, startUpSteps, startUpStepsRun }) => {
    const again = load('tests/support/addon').open('TessaroNativeProbe');
    return { steps: startUpSteps().join(' '), run: startUpStepsRun().join(' '), again: typeof again.loadFScript };
  });
  const steps =
    'TsSetupLogging TsSetApplicationIsolate TsInstallApplicationPatch TsDisableGPUIfNeeded TsDisableNativeTabs ' +
    'TsInstallDockMenuPatch TsInstallWebContentsViewPatch TsInstallDelegateMethods TsListenForWindowNotifications ' +
    'TsListenForComposeOutgoingMessage TsListenForServiceProviderSearch TsMonitorReachability TsRegisterServices ' +
    'TsActivateStatusItem TsListenForStatusItemMenuNeedsUpdate PFMoveToApplicationsFolderIfNecessary ' +
    'TsInstallPDFServices TsCreateUserNotification TsLogAppearance';
  assert.deepStrictEqual(result, { steps, run: steps, again: 'function' });
});

test('a clean load through the package writes its log, and nothing to standard error', async (t) => {
  const result = await runScript(t, `const m = require(${JSON.stringify(root)}); console.log(typeof m.loadFScript);`);
  assert.deepStrictEqual([result.code, result.stdout, result.stderr], [0, 'function\n', '']);
  const folder = path.join(result.home, 'state', 'node', 'logs');
  const text = fs
    .readdirSync(folder)
    .map((name) => fs.readFileSync(path.join(folder, name), 'utf8'))
    .join('');
  const lines = text
    .trim()
    .split('\n')
    .map((line) => line.replace(/^\S+ \S+ \[(\w+)\] (.*) \(src\/\S+:\d+ .*\)$/, '$1 $2'));
  assert.deepStrictEqual(
    lines.map((line) => line.replace(/Dark Mode: \d \S+ \(0\)/, 'Dark Mode')),
    [
      'info Native Module logging initialized!',
      "error Cannot patch as I didn't find application class",
      'info Process is running natively, keeping DisableGPU unchanged',
      ...Array(2).fill("error Cannot patch as I didn't find application class"),
      'debug Dark Mode',
      'info *** Tessaro Native Module Started ***',
    ],
  );
});

plain.test(
  'the GPU is disabled unless the process is known to run natively',
  ({ equal, disableGPUUnlessNative, translationState }) => {
    const { ENOENT, EPERM } = require('os').constants.errno;
    const states = [[1, 0], [0, 0], [0, ENOENT], [0, EPERM]].map(([value, error]) => translationState(value, error)); // prettier-ignore
    equal(states, [1, 0, 0, -1]);
    equal([0, 1, -1].map(disableGPUUnlessNative), [false, true, true]);
  },
);

plain.test('core questions have answers without a display or a bus', ({ assert, equal, native: m, path }) => {
  equal([m.loadFScript(), m.isDarkMode(), path.isAbsolute(m.getBundlePath())], [undefined, false, true]);
  assert.match(m.macOSVersion(), /^\d/);
});

plain.test('an Objective-C exception ends at the boundary, is logged, and answers "nothing"', (fixture) => {
  const { captureLog, equal, log } = fixture;
  captureLog();
  const kinds = ['Undefined', 'Null', 'False', 'Zero', 'EmptyText', 'EmptyArray'];
  equal(
    kinds.map((kind) => fixture[`raise${kind}`]()),
    [undefined, null, false, 0, '', []],
  );
  equal(
    log(1),
    kinds.map((kind) => `raise${kind} failed with TsProbeException: raised by a test`),
  );
});

plain.test(
  'without a window server, functions that need one say so and answer "nothing"',
  ({ captureLog, equal, log, native, windowOnly }) => {
    captureLog();
    equal([windowOnly(), native.hasMainWindow()], [null, false]);
    equal(
      log(),
      ['windowOnly', 'hasMainWindow'].map((name) => `${name} needs a window server, and there is none`),
    );
  },
);

test('a worker is refused with an error, before and after the main thread has loaded the module', async (t) => {
  const message = 'TessaroNative works on the main thread only, not in a worker';
  for (const first of ['', `require(${JSON.stringify(root)});`]) {
    const { code, stdout } = await runScript(
      t,
      `const { Worker } = require('worker_threads');
       ${first}
       const worker = new Worker('require(' + ${JSON.stringify(JSON.stringify(root))} + ')', { eval: true });
       worker.on('error', ({ message }) => process.stdout.write(message));
       worker.on('exit', () => { if (typeof require(${JSON.stringify(root)}).loadFScript !== 'function') process.exit(9); });`,
    );
    assert.deepStrictEqual([code, stdout], [0, message], first);
  }
});

test('the process ends well: by itself, by exit during a callback, and with exceptions pending', async (t) => {
  const end = ({ callReachability, callReachabilityLater, native, postNotificationFromThread }, how) => {
    const onReachability = (callback) => native.setNetworkReachabilityCallbackFunction(callback);
    const endings = {
      'by itself': () => {},
      'in a callback': () => {
        onReachability(() => process.exit(1));
        callReachability(true);
      },
      'in a callback from the event loop': () => {
        onReachability(() => process.exit(2));
        callReachabilityLater(true);
        setTimeout(() => {}, 30000);
      },
      'with a call still queued': () => {
        onReachability(() => process.exit(9));
        callReachabilityLater(true);
        process.exit(3);
      },
      'with native events after exit has begun': () => {
        onReachability(() => {});
        process.on('exit', () => [callReachabilityLater(true), callReachability(true)]);
        process.exit(4);
      },
      'with posts from threads': () => {
        for (let i = 0; i < 1000; ++i) postNotificationFromThread('Ts', 'x');
        process.exit(5);
      },
    };
    Object.values(endings)[how]();
  };
  for (const expected of [0, 1, 2, 3, 4, 5]) {
    const { code, signal, stderr } = await plain.ends(t, end, expected);
    assert.deepStrictEqual([code, signal, stderr], [expected, null, '']);
  }
});

test('10 000 callbacks set and called leave no memory behind', async (t) => {
  // AddressSanitizer would keep what was freed.
  const env = { ASAN_OPTIONS: 'detect_leaks=0:quarantine_size_mb=1' };
  const run = plain.with({ nodeOptions: ['--expose-gc'], env });
  const growth = await run(t, ({ callReachability, echoAutoreleased, native }) => {
    const work = (rounds) => {
      for (let i = 0; i < rounds * 10000; ++i) {
        native.setNetworkReachabilityCallbackFunction(() => i);
        callReachability(true);
        native.setCurrentURL(`https://example.org/${i}`, 'x'.repeat(1000), 'title 你好');
        echoAutoreleased('y'.repeat(1000));
        if (i % 10000 === 9999) gc();
      }
      return process.memoryUsage.rss();
    };
    const before = work(2);
    return (work(3) - before) / 1048576;
  });
  // Three rounds move 60 MB of text: a leak of any of it would show.
  assert.ok(growth < 15, `${growth} MB`);
});
