'use strict';

const assert = require('assert');
const { test } = require('node:test');

const { evaluate, runScript } = require('./support/child');

test('the page state keeps three texts and forgets missing ones', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m, pageState } = probe();
     const seen = [pageState()];
     for (const args of [['u', 'w', 't'], [1, true, 'x'], [], [null, undefined, '']]) seen.push(m.setCurrentURL(...args), pageState());
     console.log(JSON.stringify(seen));`,
  );
  assert.deepStrictEqual(result, [
    [null, null, null],
    null,
    ['u', 'w', 't'],
    null,
    ['1', 'true', 'x'],
    null,
    [null, null, null],
    null,
    [null, null, ''],
  ]);
});

test('the message text is what the current-state callback returns', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m, currentMessageText } = probe();
     const seen = [currentMessageText()];
     let received;
     for (const answer of ['text', 42, undefined, null, '']) {
       seen.push(m.setCurrentStateCallbackFunction(function (...args) { received = [this === globalThis || this == null, args]; return answer; }));
       seen.push(currentMessageText());
     }
     console.log(JSON.stringify([seen, received]));`,
  );
  assert.deepStrictEqual(result, [
    [null, null, 'text', null, '42', null, null, null, null, null, ''],
    [true, ['current-message-text']],
  ]);
});

test('the receiver is null', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m, currentMessageText } = probe();
     m.setCurrentStateCallbackFunction(function () { 'use strict'; return this === null; });
     console.log(JSON.stringify(currentMessageText()));`,
  );
  assert.strictEqual(result, 'true');
});

test('a slot keeps only the last function and releases the earlier one', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m, callReachability } = probe();
     const seen = [];
     let first = (value) => seen.push(['first', value]);
     const weak = new WeakRef(first);
     m.setNetworkReachabilityCallbackFunction(first);
     first = null;
     callReachability(true);
     m.setNetworkReachabilityCallbackFunction((value) => seen.push(['second', value]));
     callReachability(false);
     setImmediate(() => { gc(); setImmediate(() => console.log(JSON.stringify([seen, weak.deref() === undefined]))); });`,
    { nodeOptions: ['--expose-gc'] },
  );
  assert.deepStrictEqual(result, [
    [
      ['first', true],
      ['second', false],
    ],
    true,
  ]);
});

test('a callback may replace itself, call the module and be called again meanwhile', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m, callReachability, currentMessageText } = probe();
     const seen = [];
     m.setCurrentStateCallbackFunction(() => 'inner');
     m.setNetworkReachabilityCallbackFunction((value) => {
       m.setNetworkReachabilityCallbackFunction((later) => seen.push(['later', later]));
       gc();
       seen.push(['now', value, currentMessageText()]);
       callReachability(!value);
     });
     callReachability(true);
     console.log(JSON.stringify(seen));`,
    { nodeOptions: ['--expose-gc'] },
  );
  assert.deepStrictEqual(result, [
    ['now', true, 'inner'],
    ['later', false],
  ]);
});

test('what a callback throws reaches the script that caused the call', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m, callReachability, currentMessageText } = probe();
     m.setNetworkReachabilityCallbackFunction(() => { throw new Error('mine'); });
     m.setCurrentStateCallbackFunction(() => { throw new Error('mine too'); });
     const caught = [];
     for (const call of [() => callReachability(true), () => currentMessageText()]) {
       try { call(); caught.push('nothing'); } catch (error) { caught.push(error.message); }
     }
     console.log(JSON.stringify(caught));`,
  );
  assert.deepStrictEqual(result, ['mine', 'mine too']);
});

test('what a callback throws in a call from the event loop is an uncaught exception', async (t) => {
  const source = (handler) => `const { module: m, callReachabilityLater } = probe();
     ${handler}
     m.setNetworkReachabilityCallbackFunction(() => { throw new Error('mine'); });
     callReachabilityLater(true);
     const alive = setTimeout(() => {}, 30000);`;
  const handled = await runScript(
    t,
    source(
      `process.on('uncaughtException', (error) => { console.log('handled ' + error.message); process.exit(7); });`,
    ),
  );
  assert.deepStrictEqual([handled.code, handled.stdout], [7, 'handled mine\n']);
  const unhandled = await runScript(t, source(''));
  assert.strictEqual(unhandled.code, 1);
  assert.match(unhandled.stderr, /Error: mine/);
});

test('promises and ticks of a callback called from the event loop have settled when it returns', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m, callReachabilityLater, platform } = probe();
     const seen = [];
     m.setNetworkReachabilityCallbackFunction((value) => {
       seen.push('call');
       Promise.resolve().then(() => seen.push('promise'));
       process.nextTick(() => seen.push('tick'));
     });
     // Both run in the same turn of the loop, one right behind the other.
     callReachabilityLater(true);
     platform.post(() => { console.log(JSON.stringify(seen)); clearInterval(alive); });
     const alive = setInterval(() => {}, 1000);`,
  );
  assert.deepStrictEqual(result, ['call', 'tick', 'promise']);
});

test('values that are no functions are kept, and fail inside the engine when they are called', async (t) => {
  for (const value of ['"text"', '1', '({})', 'null', '']) {
    await t.test(`setDragAndDropCallbackFunction(${value})`, async (subtest) => {
      const result = await evaluate(
        subtest,
        `const { module: m, callDragAndDrop } = probe();
         for (const set of ['setNotificationCallbackFunction', 'setWindowNotificationCallbackFunction',
                            'setKeyboardModifierKeysCallbackFunction', 'setDragAndDropCallbackFunction']) m[set](${value});
         m.setQueryWindowTraitCallbackFunction(1);
         m.setToolbarCallbackFunctions(1, null, 'x');
         try { callDragAndDrop(); console.log('"called"'); } catch (error) { console.log(JSON.stringify(error.name)); }`,
      );
      assert.strictEqual(result, 'TypeError');
    });
  }
  const later = await runScript(
    t,
    `const { module: m, callDragAndDropLater } = probe();
     process.on('uncaughtException', (error) => { console.log(error.name); process.exit(0); });
     m.setDragAndDropCallbackFunction('text');
     callDragAndDropLater();
     setTimeout(() => process.exit(1), 30000);`,
  );
  assert.deepStrictEqual([later.code, later.stdout], [0, 'TypeError\n']);
});

test('arguments arrive in order: texts, handles, truth values', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m, callDragAndDrop, describeHandle } = probe();
     let seen;
     m.setDragAndDropCallbackFunction((...args) => { seen = args.map((a) => (Buffer.isBuffer(a) ? describeHandle(a) : a)); });
     callDragAndDrop();
     console.log(JSON.stringify(seen));`,
  );
  assert.deepStrictEqual(result, ['drop', 'main bundle', '[]']);
});

test('composed messages and searches of other applications reach their callbacks', async (t) => {
  const result = await evaluate(
    t,
    `const { module: m, postNotification, postNotificationFromThread, captureLog, capturedLog, flushLog } = probe();
     const compose = 'TsComposeOutgoingMessageNotification', search = 'TsServiceProviderSearchNotification';
     captureLog();
     postNotification(compose, null, { message: {}, options: {} });
     postNotification(search, 'unheard');
     const seen = [];
     m.setComposeOutgoingMessageCallbackFunction((...args) => seen.push(args));
     m.setSearchServiceCallbackFunction((...args) => seen.push(args));
     postNotification(compose, null, { message: { subject: 'Grüße 😀' }, options: { 'directly-send?': true } });
     postNotification(compose, null, { message: {} });
     postNotification(compose, null, null);
     postNotification(search, 'text to find');
     postNotification(search, null);
     const sync = seen.length;
     postNotificationFromThread(search, 'from a thread');
     const poll = setInterval(() => {
       if (seen.length === sync) return;
       clearInterval(poll);
       flushLog();
       console.log(JSON.stringify({ seen, sync, warnings: capturedLog().filter((m) => m.flag === 2).map((m) => m.text) }));
     }, 1);`,
  );
  assert.deepStrictEqual(result, {
    seen: [['{"subject":"Grüße 😀"}', '{"directly-send?":true}'], ['text to find'], [null], ['from a thread']],
    sync: 3,
    warnings: ['Could get message or options', 'Could get message or options'],
  });
});
