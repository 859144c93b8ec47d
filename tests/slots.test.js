'use strict';

const assert = require('assert');
const { test } = require('node:test');

const { scenarios } = require('./support/scenario');

const plain = scenarios();
const collecting = plain.with({ nodeOptions: ['--expose-gc'] });

test('the page state keeps three texts and forgets missing ones', (t) => {
  const rows = [
    [
      ['u', 'w', 't'],
      ['u', 'w', 't'],
    ],
    [
      [1, true, 'x'],
      ['1', 'true', 'x'],
    ],
    [[], [null, null, null]],
    [
      [null, undefined, ''],
      [null, null, ''],
    ],
  ];
  return plain.table(t, rows, ({ native, pageState }, args) => native.setCurrentURL(...args) ?? pageState());
});

test('the message text is what the current-state callback returns', async (t) => {
  const [before, texts, received] = await plain(t, ({ currentMessageText, native }) => {
    const before = currentMessageText();
    let received;
    const texts = ['text', 42, undefined, null, ''].map((answer) => {
      native.setCurrentStateCallbackFunction(function (...args) {
        received = [this === null, args];
        return answer;
      });
      return currentMessageText();
    });
    return [before, texts, received];
  });
  assert.deepStrictEqual([before, ...texts], [null, 'text', '42', null, null, '']);
  assert.deepStrictEqual(received, [true, ['current-message-text']]);
});

test('a slot keeps only the last function and releases the earlier one', async (t) => {
  const [seen, isReleased] = await collecting(t, async ({ callReachability, native, nextTurn }) => {
    const seen = [];
    let first = (value) => seen.push(['first', value]);
    const weak = new WeakRef(first);
    native.setNetworkReachabilityCallbackFunction(first);
    first = null;
    callReachability(true);
    native.setNetworkReachabilityCallbackFunction((value) => seen.push(['second', value]));
    callReachability(false);
    await nextTurn();
    gc();
    await nextTurn();
    return [seen, weak.deref() === undefined];
  });
  assert.deepStrictEqual(seen, [['first', true], ['second', false]]); // prettier-ignore
  assert.ok(isReleased);
});

test('a callback may replace itself, call the module and be called again meanwhile', async (t) => {
  const seen = await collecting(t, ({ callReachability, currentMessageText, native }) => {
    const seen = [];
    native.setCurrentStateCallbackFunction(() => 'inner');
    native.setNetworkReachabilityCallbackFunction((value) => {
      native.setNetworkReachabilityCallbackFunction((later) => seen.push(['later', later]));
      gc();
      seen.push(['now', value, currentMessageText()]);
      callReachability(!value);
    });
    callReachability(true);
    return seen;
  });
  assert.deepStrictEqual(seen, [['now', true, 'inner'], ['later', false]]); // prettier-ignore
});

test('what a callback throws reaches the script that caused the call', async (t) => {
  const caught = await plain(t, ({ callReachability, currentMessageText, native, thrownBy }) => {
    const fail = () => {
      throw new Error('mine');
    };
    native.setNetworkReachabilityCallbackFunction(fail);
    native.setCurrentStateCallbackFunction(fail);
    return [thrownBy(() => callReachability(true)), thrownBy(currentMessageText)];
  });
  assert.deepStrictEqual(caught, ['mine', 'mine']);
});

test('what a callback throws in a call from the event loop is an uncaught exception', async (t) => {
  const throwLater = ({ callReachabilityLater, native, print }, isHandled) => {
    if (isHandled) process.on('uncaughtException', ({ message }) => print(message) ?? process.exit(7));
    native.setNetworkReachabilityCallbackFunction(() => {
      throw new Error('mine');
    });
    callReachabilityLater(true);
    setInterval(() => {}, 1000);
  };
  const handled = await plain.ends(t, throwLater, true);
  assert.deepStrictEqual([handled.code, handled.stdout], [7, '"mine"\n']);
  const unhandled = await plain.ends(t, throwLater, false);
  assert.strictEqual(unhandled.code, 1);
  assert.match(unhandled.stderr, /Error: mine/);
});

test('promises and ticks of a callback called from the event loop have settled when it returns', async (t) => {
  const seen = await plain(t, async ({ callReachabilityLater, native, platform }) => {
    const seen = [];
    native.setNetworkReachabilityCallbackFunction(() => {
      seen.push('call');
      Promise.resolve().then(() => seen.push('promise'));
      process.nextTick(() => seen.push('tick'));
    });
    // Both run in the same turn of the loop, one right behind the other.
    callReachabilityLater(true);
    let then;
    const alive = setInterval(() => {}, 1000);
    await new Promise((resolve) => platform.post(() => resolve((then = [...seen]))));
    clearInterval(alive);
    return then;
  });
  assert.deepStrictEqual(seen, ['call', 'tick', 'promise']);
});

test('values that are no functions are kept, and fail inside the engine when they are called', async (t) => {
  const rows = ['text', 1, {}, null, undefined].map((value) => [value, 'TypeError']);
  await plain.table(t, rows, ({ callDragAndDrop, native }, value) => {
    for (const name of ['Notification', 'WindowNotification', 'KeyboardModifierKeys', 'DragAndDrop']) {
      native[`set${name}CallbackFunction`](value);
    }
    native.setQueryWindowTraitCallbackFunction(1);
    native.setToolbarCallbackFunctions(1, null, 'x');
    try {
      return callDragAndDrop();
    } catch ({ name }) {
      return name;
    }
  });
  const later = await plain.ends(t, ({ callDragAndDropLater, native, print }) => {
    process.on('uncaughtException', ({ name }) => print(name) ?? process.exit(0));
    native.setDragAndDropCallbackFunction('text');
    callDragAndDropLater();
    setInterval(() => {}, 1000);
  });
  assert.deepStrictEqual([later.code, later.stdout], [0, '"TypeError"\n']);
});

test('arguments arrive in order: texts, handles, truth values', async (t) => {
  const seen = await plain(t, ({ callDragAndDrop, describeHandle, native }) => {
    let seen;
    native.setDragAndDropCallbackFunction((...args) => {
      seen = args.map((each) => (Buffer.isBuffer(each) ? describeHandle(each) : each));
    });
    callDragAndDrop();
    return seen;
  });
  assert.deepStrictEqual(seen, ['drop', 'main bundle', '[]']);
});

test('composed messages and searches of other applications reach their callbacks', async (t) => {
  const { seen, sync, warnings } = await plain(
    t,
    async ({ captureLog, eventually, log, native, postNotification, postNotificationFromThread }) => {
      const [compose, search] = ['TsComposeOutgoingMessageNotification', 'TsServiceProviderSearchNotification'];
      captureLog();
      postNotification(compose, null, { message: {}, options: {} });
      postNotification(search, 'unheard');
      const seen = [];
      native.setComposeOutgoingMessageCallbackFunction((...args) => seen.push(args));
      native.setSearchServiceCallbackFunction((...args) => seen.push(args));
      postNotification(compose, null, { message: { subject: 'Grüße 😀' }, options: { 'directly-send?': true } });
      postNotification(compose, null, { message: {} });
      postNotification(compose, null, null);
      postNotification(search, 'text to find');
      postNotification(search, null);
      const sync = seen.length;
      postNotificationFromThread(search, 'from a thread');
      await eventually(() => seen.length > sync, 'the search');
      return { seen, sync, warnings: log(2) };
    },
  );
  const composed = ['{"subject":"Grüße 😀"}', '{"directly-send?":true}'];
  assert.deepStrictEqual(seen, [composed, ['text to find'], [null], ['from a thread']]);
  assert.strictEqual(sync, 3);
  assert.deepStrictEqual(warnings, Array(2).fill('Could get message or options'));
});
