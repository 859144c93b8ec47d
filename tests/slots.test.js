'use strict';

const { assert, scenarios, test } = require('./support');

const plain = scenarios();
const collecting = plain.with({ nodeOptions: ['--expose-gc'] });

test('the page state keeps three texts and forgets missing ones', (t) => {
  const rows = [
    [['u', 'w', 't'], '["u","w","t"]'],
    [[1, true, 'x'], '["1","true","x"]'],
    [[], '[null,null,null]'],
    [[null, undefined, ''], '[null,null,""]'],
  ];
  return plain.table(t, rows, ({ native, pageState }, args) => {
    native.setCurrentURL(...args);
    return JSON.stringify(pageState());
  });
});

plain.test('the message text is the result of the current-state callback', ({ currentMessageText, equal, native }) => {
  equal(currentMessageText(), null);
  const texts = ['text', 42, undefined, null, ''].map((answer) => {
    native.setCurrentStateCallbackFunction(function (...args) {
      equal([this, args], [null, ['current-message-text']]);
      return answer;
    });
    return currentMessageText();
  });
  equal(texts, ['text', '42', null, null, '']);
});

collecting.test('a slot keeps only the last function and releases the earlier one', async (fixture) => {
  const { callReachability, currentMessageText, equal, native, nextTurn } = fixture;
  const seen = [];
  let first = (value) => seen.push(`first ${value}`);
  const weak = new WeakRef(first);
  native.setNetworkReachabilityCallbackFunction(first);
  first = null;
  callReachability(true);
  native.setNetworkReachabilityCallbackFunction((value) => seen.push(`second ${value}`));
  callReachability(false);
  await nextTurn();
  gc();
  await nextTurn();
  equal([seen, weak.deref()], [['first true', 'second false'], undefined]);
  // A callback may replace itself, call the module and be called again at the same time.
  seen.length = 0;
  native.setCurrentStateCallbackFunction(() => 'inner');
  native.setNetworkReachabilityCallbackFunction((value) => {
    native.setNetworkReachabilityCallbackFunction((later) => seen.push(`later ${later}`));
    gc();
    seen.push(`now ${value} ${currentMessageText()}`);
    callReachability(!value);
  });
  callReachability(true);
  equal(seen, ['now true inner', 'later false']);
});

test('an exception of a callback reaches the calling script, or is an uncaught exception in the event loop', async (t) => {
  const callLater = (fixture, isHandled) => {
    const { assert, callReachability, callReachabilityLater, currentMessageText, native, print } = fixture;
    const fail = () => {
      throw new Error('mine');
    };
    native.setNetworkReachabilityCallbackFunction(fail);
    native.setCurrentStateCallbackFunction(fail);
    for (const call of [() => callReachability(true), currentMessageText]) assert.throws(call, /^Error: mine$/);
    if (isHandled) process.on('uncaughtException', ({ message }) => print(message) ?? process.exit(7));
    callReachabilityLater(true);
    setInterval(() => {}, 1000);
  };
  const handled = await plain.ends(t, callLater, true);
  assert.deepStrictEqual([handled.code, handled.stdout], [7, '"mine"\n']);
  const unhandled = await plain.ends(t, callLater, false);
  assert.strictEqual(unhandled.code, 1);
  assert.match(unhandled.stderr, /Error: mine/);
});

plain.test('promises and ticks of a callback have settled when the event loop goes on', async (fixture) => {
  const { callReachabilityLater, equal, eventually, native, platform } = fixture;
  const seen = [];
  native.setNetworkReachabilityCallbackFunction(() => {
    seen.push('call');
    Promise.resolve().then(() => seen.push('promise'));
    process.nextTick(() => seen.push('tick'));
  });
  // Both run in the same turn of the loop, one right behind the other.
  callReachabilityLater(true);
  platform.post(() => seen.push('end of the turn'));
  await eventually(() => seen.includes('end of the turn'), 'the turn');
  equal(seen, ['call', 'tick', 'promise', 'end of the turn']);
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
});

plain.test('composed messages and searches of other applications reach their callbacks', async (fixture) => {
  const { captureLog, equal, eventually, log, native, postNotification, postNotificationFromThread } = fixture;
  const [compose, search] = ['TsComposeOutgoingMessageNotification', 'TsServiceProviderSearchNotification'];
  captureLog();
  postNotification(compose, null, { message: {}, options: {} });
  postNotification(search, 'unheard');
  const seen = [];
  native.setComposeOutgoingMessageCallbackFunction((...args) => seen.push(args));
  native.setSearchServiceCallbackFunction((...args) => seen.push(args));
  postNotification(compose, null, { message: { subject: 'Grüße 😀' }, options: { 'directly-send?': true } });
  for (const userInfo of [{ message: {} }, null]) postNotification(compose, null, userInfo);
  for (const text of ['text to find', null]) postNotification(search, text);
  const expected = [['{"subject":"Grüße 😀"}', '{"directly-send?":true}'], ['text to find'], [null]];
  equal(seen, expected);
  postNotificationFromThread(search, 'from a thread');
  await eventually(() => seen.length > 3, 'the search');
  equal(seen, [...expected, ['from a thread']]);
  equal(log(2), Array(2).fill('Could get message or options'));
});
