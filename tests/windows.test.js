'use strict';

// Windows as script sees them: their events, the questions about them, their content.

const { scenarios } = require('./support');

const inWindows = scenarios({
  display: true,
  uses: ['windows'],
  fixture: ({ getAll, sendMessage: send, windowNamed }) => ({
    openPanel() {
      const titledAndBuffered = [1, 2];
      const selector = 'initWithContentRect:styleMask:backing:defer:';
      const panel = send(send('NSPanel', 'alloc'), selector, [0, 0, 100, 100], ...titledAndBuffered, false);
      send(panel, 'setTitle:', 'Panel');
      send(panel, 'makeKeyAndOrderFront:', null);
      return panel;
    },
    /** Opacity and visibility of a window's content, and the class of the first responder. */
    contentOf: (title) =>
      getAll(windowNamed(title), 'contentView.alphaValue', 'contentView.isHidden', 'firstResponder.className'),
  }),
});

inWindows.test('changes of main and key browser windows, and of no others, reach script', async (fixture) => {
  const { assert, captureLog, equal, eventually, host, log, native } = fixture;
  const { open, openPanel, sendMessage, windowNamed } = fixture;
  const events = [];
  native.setWindowNotificationCallbackFunction((name, handle) => events.push([name, handle.toString('hex')]));
  const opened = [await open({ title: 'First' }), await open({ title: 'Second' })];
  const [first, second] = opened.map((handle) => handle.toString('hex'));
  const before = events.length;
  openPanel();
  await eventually(() => !host.windowInfo(opened[1]).isKey, 'the panel');
  const names = (handle) => events.filter(([, each]) => each === handle).map(([name]) => name);
  equal(names(first).sort(), ['did-become-key', 'did-become-main', 'did-resign-key', 'did-resign-main']);
  equal(names(second).slice(0, 2).sort(), ['did-become-key', 'did-become-main']);
  // The panel takes the keyboard, and only the loss of it is reported.
  equal(events[before], ['did-resign-key', second]);
  assert.ok(events.every(([, handle]) => [first, second].includes(handle)));
  events.length = 0;
  captureLog();
  const other = sendMessage('NSNotification', 'notificationWithName:object:', 'Other', windowNamed('First'));
  sendMessage(sendMessage('TsWindowUtils', 'sharedInstance'), 'windowNotification:', other);
  equal([events, log(2)], [[], ['Unknown notification Other']]);
});

const inElectron = inWindows.with({ env: { TESSARO_HOST_ADDON: 'TessaroElectronHost' } });

inElectron.test('a host whose classes have the names of current Electron works as well', async (fixture) => {
  const { equal, host, native, open } = fixture;
  const events = [];
  native.setWindowNotificationCallbackFunction((name) => events.push(name));
  const handle = await open({ title: 'First' });
  native.hideWindowContent(handle, 1000);
  equal(events.sort(), ['did-become-key', 'did-become-main']);
  const drag = 'window:shouldDragDocumentWithEvent:from:withPasteboard:';
  equal([host.hasMethod('AtomNSWindow', 'close'), host.hasMethod('ElectronNSWindowDelegate', drag)], [false, true]);
  equal(native.dropFiles(handle, '{"x":10,"y":10}', '["/etc/hostname"]'), true);
});

inWindows.test('a backing change of a browser window is posted again once, after five seconds', async (fixture) => {
  const { assert, equal, eventually, notifications, open, openPanel, postNotification, windowNamed } = fixture;
  await open({ title: 'First' });
  const name = 'NSWindowDidChangeBackingPropertiesNotification';
  const posted = () => notifications.takeRecorded().map(([, , userInfo]) => userInfo);
  const copy = { scale: 1, TsDelayedNotification: true };
  notifications.record(name);
  const start = Date.now();
  // Neither a panel's change nor a copy is posted again: these would come before the next one's.
  postNotification(name, openPanel(), null);
  postNotification(name, windowNamed('First'), copy);
  postNotification(name, windowNamed('First'), { scale: 2 });
  equal(posted(), [null, copy, { scale: 2 }]);
  equal(await eventually(() => posted()[0], 'the copy'), { scale: 2, TsDelayedNotification: true });
  assert.ok(Date.now() - start >= 4990, `${Date.now() - start} ms`);
});

inWindows.test('main and key windows and their sheets are reported; hidden content reappears', async (fixture) => {
  const { contentOf, equal, eventually, host, native, open, openPanel, sendMessage, windowNamed } = fixture;
  const look = () => [native.hasMainWindow(), native.hasKeyWindow()];
  equal(look(), [false, false]);
  native.closeMainWindow();
  native.closeKeyWindow();
  native.reenableWindowUpdates();
  for (const close of ['closeMainWindow', 'closeKeyWindow']) {
    await open({ title: 'First' });
    equal(look(), [true, true]);
    native[close]();
    await eventually(() => !look().includes(true), 'the end of the window');
  }
  const handle = await open({ title: 'Second' });
  const panel = openPanel();
  for (const sheet of [null, panel, null]) {
    // As GNUstep shows a sheet, without waiting for the sheet's end.
    sendMessage(windowNamed('Second'), 'setAttachedSheet:', sheet);
    equal(native.hasSheets(handle), sheet !== null);
  }
  const hidden = await open({ title: 'Hidden' });
  equal(contentOf('Hidden'), [1, 0, 'WebContentsViewCocoa']);
  native.hideWindowContent(hidden, 0);
  equal(contentOf('Hidden'), [0, 1, 'AtomNSWindow']);
  await eventually(() => contentOf('Hidden')[0] === 1, 'the content');
  equal(contentOf('Hidden'), [1, 0, 'AtomContentView']);
  // The window is closed before its content would come back, and another one's content after that.
  const other = await open({ title: 'Third' });
  native.hideWindowContent(hidden, 50);
  host.closeWindow(hidden);
  native.hideWindowContent(other, 50);
  await eventually(() => contentOf('Third')[0] === 1, 'the other content');
});

inWindows.test('content is resized below its top edge, also after impossible sizes', async (fixture) => {
  const { atRest, equal, eventually, native, open, sendMessage, windowNamed } = fixture;
  const handle = await open({ title: 'First', width: 600, height: 300 });
  const frame = (title) => sendMessage(windowNamed(title), 'frame');
  const content = (title) => sendMessage(windowNamed(title), 'contentRectForFrameRect:', frame(title));
  const corner = ([x, y, , height]) => [x, y + height];
  for (const [state, size] of Object.entries({ visible: [480, 220], hidden: [400, 200] })) {
    if (state === 'hidden') sendMessage(windowNamed('First'), 'orderOut:', null);
    const before = corner(frame('First'));
    native.resizeWindowContent(handle, ...size);
    // Resizing is animated, and the window manager decides the size.
    if (state === 'visible') await atRest(() => (content('First')[3] === size[1] ? frame('First') : Math.random()));
    equal([content('First').slice(2), corner(frame('First'))], [size, before]);
  }
  const other = await open({ title: 'Second' });
  const largest = 2147483647;
  for (const size of [[largest, largest], [0, 0], [-largest - 1, 5]]) native.resizeWindowContent(other, ...size); // prettier-ignore
  // The window manager's answers to the earlier ones may still come in.
  const isLast = () => native.resizeWindowContent(other, 400, 200) ?? content('Second').slice(2).join() === '400,200';
  await eventually(isLast, 'the last size');
});

inWindows.test('handles that are not of a living window are refused', async (fixture) => {
  const { captureLog, equal, eventually, host, log, native, nextTurn, open } = fixture;
  const closed = await open({ title: 'First' });
  host.closeWindow(closed);
  await eventually(() => !native.hasKeyWindow(), 'the end of the window');
  // A handle of a window that the host has released: the memory may hold anything.
  for (let i = 0; i < 200; ++i) host.closeWindow(host.createWindow({ title: 'Filler' }));
  for (let i = 0; i < 20; ++i) await nextTurn();
  const eight = [Array(8).fill(0), Array(8).fill(0xff), [1, 0, 0, 0, 0, 0, 0, 0]];
  const bytes = [[], Array(7).fill(1), Array(9).fill(1), ...eight];
  const others = [{}, [], new Float64Array([1.5]), new Date(), () => {}];
  captureLog();
  for (const handle of [closed, ...others, ...bytes.map((each) => Buffer.from(each))]) {
    const answers = [native.hasSheets(handle), native.hideWindowContent(handle, 1)];
    answers.push(native.resizeWindowContent(handle, 1, 1), native.dropFiles(handle, '{"x":1,"y":1}', '[]'));
    answers.push(native.addToolbarToWindow(handle, 1, '{}'), native.shareFiles(handle, '[]', '{}'));
    equal(answers, [false, ...Array(5).fill(undefined)]);
  }
  equal(log(1).slice(0, 5), [
    'Need a view with a window to to hide window content: (null)',
    'Need a window to change content size',
    'Need a window to attach files.',
    'Need a view with a window to add a toolbar: (null)',
    'Need a window to share files from',
  ]);
});

inWindows.test('malformed texts from script are logged, and have no effect', async (fixture) => {
  const { assert, captureLog, equal, native, news, open } = fixture;
  const window = await open({ title: 'First' });
  captureLog();
  const table = [
    ['addToolbarToWindow', [window, 1, 'no JSON'], /^error parsing options no JSON \(/],
    ['addToolbarToWindow', [window, 1, '[1]'], /^toolbar options must be a NSDictionary \(/],
    ['updateMainMenuMenuItem', ['[0]', '{'], /^error parsing attributeMap \{ \(/],
    ['updateMainMenuMenuItem', ['[0]', '[1]'], /^attributemMap must be an NSDictionary \(\(1\)\)$/],
    ['updateMainMenuMenuItem', ['[0', '{}'], /^error navigationPath \[0 \(/],
    ['updateMainMenuMenuItem', ['{}', '{'], /^navigationPath must be an NSArray \(\{\}\)$/],
    ['updateMainMenuMenuItemWithCommandId', [101, ''], /^error parsing attributeMap {2}\(/],
    ['updateMainMenuMenuItemWithCommandId', [101, '[]'], /^attributemMap must be an NSDictionary \(\(\)\)$/],
    ['shareFiles', [window, '{"a', '{}'], /^Couldn't parse paths {"a because of /],
    ['shareFiles', [window, '["/x"]', '[]'], /^Couldn't parse rectangle \[\] because of /],
    ['shareFiles', [window, '["/none"]', '{}'], /^There is no file \/none to share$/, /^There are no files to share$/],
    ...[{}, Buffer.alloc(0)].map((handle) => ['pickEmailAddresses', [handle, '{}'], /^Need a view with a window to /]),
    ['pickEmailAddresses', [window, '[]'], /^Couldn't parse translations JSON \[\] because of it is no object$/],
    ['pickEmailAddresses', [window, '{ "a'], /^Couldn't parse translations JSON { "a because of /],
    ['pickEmailAddresses', [window, '{"window-title":null}'], ...Array(4).fill(/^No translation for [a-z-]+ in /)],
  ];
  for (const [name, args, ...expected] of table) {
    equal(native[name](...args), name.startsWith('update') ? 0 : undefined);
    const lines = news();
    equal(lines.length, expected.length, lines.join('\n'));
    expected.forEach((pattern, i) => assert.match(lines[i], pattern));
  }
  equal(native.isToolbarVisible(1), false);
});
