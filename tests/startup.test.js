'use strict';

const { assert, fs, path, root, runScript, scenarios, test } = require('./support');

const plain = scenarios();

plain.test('the start-up steps run once, however often the module is loaded', (fixture) => {
  const { equal, load, startUpSteps, startUpStepsRun } = fixture;
  equal(typeof load('tests/support/addon').open('TessaroNativeProbe').loadFScript, 'function');
  equal(startUpStepsRun(), startUpSteps());
});

test('a clean load through the package writes its log, and nothing to standard error', async (t) => {
  const result = await runScript(t, `const m = require(${JSON.stringify(root)}); console.log(typeof m.loadFScript);`);
  assert.deepStrictEqual([result.code, result.stdout, result.stderr], [0, 'function\n', '']);
  const folder = path.join(result.home, 'state', 'node', 'logs');
  const [log] = fs.readdirSync(folder).map((name) => fs.readFileSync(path.join(folder, name), 'utf8'));
  const lines = log.trim().split('\n').map((line) => line.replace(/^\S+ \S+ \[(\w+)\] (.*) \(src\/\S+:\d+ .*\)$/, '$1 $2')); // prettier-ignore
  const texts = lines.map((line) => line.replace(/Dark Mode: \d \S+ \(0\)/, 'Dark Mode'));
  const unpatched = "error Cannot patch as I didn't find application class";
  const expected = [
    ...['info Native Module logging initialized!', unpatched],
    ...['info Process is running natively, keeping DisableGPU unchanged', unpatched, unpatched],
    ...['debug Dark Mode', 'info *** Tessaro Native Module Started ***'],
  ];
  assert.deepStrictEqual(texts, expected);
});

plain.test('the GPU is disabled unless the process is known to run natively', (fixture) => {
  const { equal, disableGPUUnlessNative, translationState } = fixture;
  const { ENOENT, EPERM } = require('os').constants.errno;
  const states = [[1, 0], [0, 0], [0, ENOENT], [0, EPERM]].map(([value, error]) => translationState(value, error)); // prettier-ignore
  equal(states, [1, 0, 0, -1]);
  equal([0, 1, -1].map(disableGPUUnlessNative), [false, true, true]);
});

plain.test('without a window server, functions that need one say so and answer "nothing"', (fixture) => {
  const { captureLog, equal, log, native } = fixture;
  captureLog();
  equal([native.closeMainWindow(), native.hasMainWindow()], [undefined, false]);
  const needy = ['closeMainWindow', 'hasMainWindow'];
  equal(log(), needy.map((name) => `${name} needs a window server, and there is none`)); // prettier-ignore
});

test('a worker is refused with an error, before and after the main thread has loaded the module', async (t) => {
  const message = 'TessaroNative works on the main thread only, not in a worker';
  for (const first of ['', `require(${JSON.stringify(root)});`]) {
    const source = `const { Worker } = require('worker_threads');
      ${first}
      const worker = new Worker('require(' + ${JSON.stringify(JSON.stringify(root))} + ')', { eval: true });
      worker.on('error', ({ message }) => process.stdout.write(message));
      worker.on('exit', () => { if (typeof require(${JSON.stringify(root)}).loadFScript !== 'function') process.exit(9); });`;
    const { code, stdout } = await runScript(t, source);
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
