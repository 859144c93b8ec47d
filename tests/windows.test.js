'use strict';

// Windows as script sees them: their events, the questions about them, their content.

const assert = require('assert');
const { test } = require('node:test');

const { useWindows } = require('./support/windows');

const inWindows = useWindows();

test('changes of main and key browser windows, and of no others, reach script', async (t) => {
  const { events, handles } = await inWindows(
    t,
    `const events = [];
     m.setWindowNotificationCallbackFunction((name, handle) => events.push([name, handle.toString('hex')]));
     const first = await open({ title: 'First' });
     const second = await open({ title: 'Second' });
     const before = events.length;
     ask('openPanel');
     await eventually(() => !host.windowInfo(second).isKey, 'the panel');
     print({ events: events.slice(0, before + 1), handles: [first, second].map((handle) => handle.toString('hex')) });`,
  );
  const [first, second] = handles;
  const names = (handle) => events.filter(([, each]) => each === handle).map(([name]) => name);
  assert.deepStrictEqual(names(first).sort(), [
    'did-become-key',
    'did-become-main',
    'did-resign-key',
    'did-resign-main',
  ]);
  // The panel takes the keys; that it has them is nobody's business.
  assert.deepStrictEqual(names(second).slice(0, 2).sort(), ['did-become-key', 'did-become-main']);
  assert.ok(events.every(([, handle]) => handles.includes(handle)));
  assert.deepStrictEqual(events.at(-1), ['did-resign-key', second]);
});

test('a host whose classes have the names of current Electron works as well', async (t) => {
  const { events, methods, dropped } = await inWindows(
    t,
    `const events = [];
     m.setWindowNotificationCallbackFunction((name) => events.push(name));
     const handle = await open({ title: 'First' });
     m.hideWindowContent(handle, 1000);
     print({
       events,
       methods: [
         host.hasMethod('AtomNSWindow', 'close'),
         host.hasMethod('ElectronNSWindowDelegate', 'window:shouldDragDocumentWithEvent:from:withPasteboard:'),
       ],
       dropped: m.dropFiles(handle, '{"x":10,"y":10}', '["/etc/hostname"]'),
     });`,
    { TESSARO_HOST_ADDON: 'TessaroElectronHost' },
  );
  assert.deepStrictEqual(events.sort(), ['did-become-key', 'did-become-main']);
  assert.deepStrictEqual([methods, dropped], [[false, true], true]);
});

test('an unknown notification is logged and not reported', async (t) => {
  const { events, warnings } = await inWindows(
    t,
    `await open({ title: 'First' });
     const events = [];
     m.setWindowNotificationCallbackFunction((...event) => events.push(event));
     captureLog();
     ask('notifyDirectly', { window: 'First', name: 'Other' });
     print({ events, warnings: log(2) });`,
  );
  assert.deepStrictEqual([events, warnings], [[], ['Unknown notification Other']]);
});

test('a backing change is posted again once, after five seconds', async (t) => {
  const { seen, waited, panels } = await inWindows(
    t,
    `await open({ title: 'First' });
     ask('openPanel');
     ask('observeBackingChanges');
     ask('postBackingChange', { window: 'Panel' });
     ask('postBackingChange', { window: 'First', userInfo: { scale: 2 } });
     const panels = ask('backingChanges').length;
     const start = Date.now();
     await eventually(() => ask('backingChanges').length === 3, 'the second announcement');
     const waited = Date.now() - start;
     await new Promise((resolve) => setTimeout(resolve, 5500));
     print({ seen: ask('backingChanges'), waited, panels });`,
  );
  assert.strictEqual(panels, 2);
  assert.deepStrictEqual(seen.slice(1), [{ scale: 2 }, { scale: 2, TsDelayedNotification: true }]);
  assert.ok(waited >= 4990 && waited < 7000, `${waited} ms`);
});

test('main and key windows are reported and can be closed', async (t) => {
  const answers = await inWindows(
    t,
    `const answers = [];
     const note = () => answers.push([m.hasMainWindow(), m.hasKeyWindow()]);
     note();
     m.closeMainWindow(); m.closeKeyWindow(); m.reenableWindowUpdates();
     await open({ title: 'First' });
     note();
     m.closeMainWindow();
     await eventually(() => !m.hasMainWindow() && !m.hasKeyWindow(), 'the end of the window');
     await open({ title: 'Second' });
     note();
     m.closeKeyWindow();
     await eventually(() => !m.hasMainWindow() && !m.hasKeyWindow(), 'the end of the window');
     note();
     print(answers);`,
  );
  assert.deepStrictEqual(answers, [
    [false, false],
    [true, true],
    [true, true],
    [false, false],
  ]);
});

test('a window has sheets while one is attached', async (t) => {
  const answers = await inWindows(
    t,
    `const handle = await open({ title: 'First' });
     const answers = [m.hasSheets(handle)];
     ask('openPanel');
     for (const isAttached of [true, false]) {
       ask('attachSheet', { window: 'First', isAttached });
       answers.push(m.hasSheets(handle));
     }
     print(answers);`,
  );
  assert.deepStrictEqual(answers, [false, true, false]);
});

test('hidden content reappears focused', async (t) => {
  const states = await inWindows(
    t,
    `const handle = await open({ title: 'First' });
     const state = () => { const { alpha, isContentHidden, firstResponder, isContentFocused } = ask('windowState', { window: 'First' }); return [alpha, isContentHidden, firstResponder, isContentFocused]; };
     const states = [state()];
     m.hideWindowContent(handle, 0);
     states.push(state());
     await eventually(() => state()[0] === 1, 'the content');
     states.push(state());
     // The window is closed before its content would come back.
     m.hideWindowContent(handle, 50);
     host.closeWindow(handle);
     await new Promise((resolve) => setTimeout(resolve, 200));
     print(states);`,
  );
  assert.deepStrictEqual(states, [
    [1, false, 'WebContentsViewCocoa', false],
    [0, true, 'AtomNSWindow', false],
    [1, false, 'AtomContentView', true],
  ]);
});

const top = ([, y, , height]) => y + height;

const resizing = (prepare, settle) => `
  const handle = await open({ title: 'First', width: 600, height: 300 });
  const state = () => ask('windowState', { window: 'First' });
  ${prepare}
  const before = state();
  m.resizeWindowContent(handle, 480, 220);
  ${settle}
  print({ before, after: state() });`;

for (const [what, prepare, settle] of [
  // It is animated, and the window manager has the last word.
  [
    'a visible',
    '',
    `await eventually(() => state().content[3] === 220, 'the size');
     await new Promise((resolve) => setTimeout(resolve, 300));`,
  ],
  ['a hidden', "ask('orderOut', { window: 'First' });", ''],
]) {
  test(`${what} window's content is resized below its top edge`, async (t) => {
    const { before, after } = await inWindows(t, resizing(prepare, settle));
    assert.deepStrictEqual(after.content.slice(2), [480, 220]);
    assert.strictEqual(top(after.frame), top(before.frame));
    assert.strictEqual(after.frame[0], before.frame[0]);
  });
}

test('impossible sizes are harmless', async (t) => {
  const sizes = await inWindows(
    t,
    `const handle = await open({ title: 'First' });
     for (const [width, height] of [[2147483647, 2147483647], [0, 0], [-2147483648, 5]]) m.resizeWindowContent(handle, width, height);
     // The window manager's answers to the earlier ones may still come in.
     await eventually(() => {
       m.resizeWindowContent(handle, 400, 200);
       return ask('windowState', { window: 'First' }).content[3] === 200;
     }, 'the last size');
     await eventually(() => ask('windowState', { window: 'First' }).content[2] === 400, 'the last width');
     print(ask('windowState', { window: 'First' }).content.slice(2));`,
  );
  assert.deepStrictEqual(sizes, [400, 200]);
});

test('handles that are not of a living window are refused', async (t) => {
  const { answers, errors } = await inWindows(
    t,
    `const closed = await open({ title: 'First' });
     host.closeWindow(closed);
     await eventually(() => !m.hasKeyWindow(), 'the end of the window');
     // What a host that lets go of its windows leaves behind: the memory may be anything by now.
     for (let i = 0; i < 200; ++i) host.closeWindow(host.createWindow({ title: 'Filler' }));
     await new Promise((resolve) => setTimeout(resolve, 100));
     const handles = [closed, {}, [], Buffer.alloc(0), Buffer.alloc(7, 1), Buffer.alloc(9, 1), Buffer.alloc(8),
       Buffer.alloc(8, 0xff), Buffer.from([1, 0, 0, 0, 0, 0, 0, 0]), new Float64Array([1.5]), new Date(), () => {}];
     captureLog();
     const answers = handles.map((handle) => [m.hasSheets(handle), m.hideWindowContent(handle, 1),
       m.resizeWindowContent(handle, 1, 1), m.dropFiles(handle, '{"x":1,"y":1}', '[]'), m.addToolbarToWindow(handle, 1, '{}')]);
     print({ answers: answers.map((row) => row.map((value) => value === undefined ? null : value)), errors: log(1) });`,
  );
  for (const row of answers) assert.deepStrictEqual(row, [false, null, null, null, null]);
  assert.deepStrictEqual(errors.slice(0, 4), [
    'Need a view with a window to to hide window content: (null)',
    'Need a window to change content size',
    'Need a window to attach files.',
    'Need a view with a window to add a toolbar: (null)',
  ]);
});
