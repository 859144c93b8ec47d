'use strict';

// Windows as script sees them: their events, the questions about them, their content.

const assert = require('assert');
const { test } = require('node:test');

const { scenarios } = require('./support/scenario');

const inWindows = scenarios({ display: true, uses: ['windows'] });

test('changes of main and key browser windows, and of no others, reach script', async (t) => {
  const { events, handles } = await inWindows(t, async ({ eventually, host, native, open, windows }) => {
    const events = [];
    native.setWindowNotificationCallbackFunction((name, handle) => events.push([name, handle.toString('hex')]));
    const opened = [await open({ title: 'First' }), await open({ title: 'Second' })];
    const before = events.length;
    windows.openPanel();
    await eventually(() => !host.windowInfo(opened[1]).isKey, 'the panel');
    return { events: events.slice(0, before + 1), handles: opened.map((handle) => handle.toString('hex')) };
  });
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
  const { events, methods, dropped } = await inWindows.with({ env: { TESSARO_HOST_ADDON: 'TessaroElectronHost' } })(
    t,
    async ({ host, native, open }) => {
      const events = [];
      native.setWindowNotificationCallbackFunction((name) => events.push(name));
      const handle = await open({ title: 'First' });
      native.hideWindowContent(handle, 1000);
      const drag = 'window:shouldDragDocumentWithEvent:from:withPasteboard:';
      return {
        events,
        methods: [host.hasMethod('AtomNSWindow', 'close'), host.hasMethod('ElectronNSWindowDelegate', drag)],
        dropped: native.dropFiles(handle, '{"x":10,"y":10}', '["/etc/hostname"]'),
      };
    },
  );
  assert.deepStrictEqual(events.sort(), ['did-become-key', 'did-become-main']);
  assert.deepStrictEqual([methods, dropped], [[false, true], true]);
});

test('an unknown notification is logged and not reported', async (t) => {
  const { events, warnings } = await inWindows(t, async ({ captureLog, log, native, open, windows }) => {
    await open({ title: 'First' });
    const events = [];
    native.setWindowNotificationCallbackFunction((...event) => events.push(event));
    captureLog();
    windows.notifyDirectly('First', 'Other');
    return { events, warnings: log(2) };
  });
  assert.deepStrictEqual([events, warnings], [[], ['Unknown notification Other']]);
});

test('a backing change is posted again once, after five seconds', async (t) => {
  const { seen, waited, panels } = await inWindows(t, async ({ eventually, open, windows }) => {
    await open({ title: 'First' });
    windows.openPanel();
    windows.observeBackingChanges();
    windows.postBackingChange('Panel');
    windows.postBackingChange('First', { scale: 2 });
    const panels = windows.backingChanges().length;
    const start = Date.now();
    await eventually(() => windows.backingChanges().length === 3, 'the second announcement');
    const waited = Date.now() - start;
    // A third one would come as late as the second one of this change.
    windows.postBackingChange('First', { scale: 1 });
    await eventually(() => windows.backingChanges().length >= 5, 'the next announcement');
    return { seen: windows.backingChanges(), waited, panels };
  });
  assert.strictEqual(panels, 2);
  const twice = (scale) => [{ scale }, { scale, TsDelayedNotification: true }];
  assert.deepStrictEqual(seen.slice(1), [...twice(2), ...twice(1)]);
  assert.ok(waited >= 4990, `${waited} ms`);
});

test('main and key windows are reported and can be closed', async (t) => {
  const answers = await inWindows(t, async ({ eventually, native, open }) => {
    const look = () => [native.hasMainWindow(), native.hasKeyWindow()];
    const answers = [look()];
    native.closeMainWindow();
    native.closeKeyWindow();
    native.reenableWindowUpdates();
    for (const close of ['closeMainWindow', 'closeKeyWindow']) {
      await open({ title: 'First' });
      answers.push(look());
      native[close]();
      await eventually(() => !look().includes(true), 'the end of the window');
    }
    return [...answers, look()];
  });
  assert.deepStrictEqual(answers, [
    [false, false],
    [true, true],
    [true, true],
    [false, false],
  ]);
});

test('a window has sheets while one is attached', async (t) => {
  const answers = await inWindows(t, async ({ native, open, windows }) => {
    const handle = await open({ title: 'First' });
    windows.openPanel();
    const attached = (isAttached) => windows.attachSheet('First', isAttached) ?? native.hasSheets(handle);
    return [native.hasSheets(handle), attached(true), attached(false)];
  });
  assert.deepStrictEqual(answers, [false, true, false]);
});

test('hidden content reappears focused', async (t) => {
  const states = await inWindows(t, async ({ eventually, host, native, open, windows }) => {
    const handle = await open({ title: 'First' });
    const state = () => {
      const { alpha, isContentHidden, firstResponder, isContentFocused } = windows.windowState('First');
      return [alpha, isContentHidden, firstResponder, isContentFocused];
    };
    const states = [state()];
    native.hideWindowContent(handle, 0);
    states.push(state());
    await eventually(() => state()[0] === 1, 'the content');
    states.push(state());
    // The window is closed before its content would come back, and another one's content after that.
    const other = await open({ title: 'Second' });
    native.hideWindowContent(handle, 50);
    host.closeWindow(handle);
    native.hideWindowContent(other, 50);
    await eventually(() => windows.windowState('Second').alpha === 1, 'the other content');
    return states;
  });
  assert.deepStrictEqual(states, [
    [1, false, 'WebContentsViewCocoa', false],
    [0, true, 'AtomNSWindow', false],
    [1, false, 'AtomContentView', true],
  ]);
});

const top = ([, y, , height]) => y + height;

for (const isVisible of [true, false]) {
  test(`a ${isVisible ? 'visible' : 'hidden'} window's content is resized below its top edge`, async (t) => {
    const { before, after } = await inWindows(
      t,
      async ({ atRest, native, open, windows }, shown) => {
        const handle = await open({ title: 'First', width: 600, height: 300 });
        const state = () => windows.windowState('First');
        if (!shown) windows.orderOut('First');
        const before = state();
        native.resizeWindowContent(handle, 480, 220);
        // Resizing is animated, and the window manager decides the size.
        if (shown) await atRest(() => (state().content[3] === 220 ? state() : Math.random()));
        return { before, after: state() };
      },
      isVisible,
    );
    assert.deepStrictEqual(after.content.slice(2), [480, 220]);
    assert.strictEqual(top(after.frame), top(before.frame));
    assert.strictEqual(after.frame[0], before.frame[0]);
  });
}

test('impossible sizes are harmless', async (t) => {
  const sizes = await inWindows(t, async ({ eventually, native, open, windows }) => {
    const handle = await open({ title: 'First' });
    const size = () => windows.windowState('First').content.slice(2);
    for (const each of [[2147483647, 2147483647], [0, 0], [-2147483648, 5]]) native.resizeWindowContent(handle, ...each); // prettier-ignore
    // The window manager's answers to the earlier ones may still come in.
    const isLast = () => native.resizeWindowContent(handle, 400, 200) ?? size().join() === '400,200';
    await eventually(isLast, 'the last size');
    return size();
  });
  assert.deepStrictEqual(sizes, [400, 200]);
});

test('handles that are not of a living window are refused', async (t) => {
  const { answers, errors } = await inWindows(
    t,
    async ({ captureLog, eventually, host, log, native, nextTurn, open }) => {
      const closed = await open({ title: 'First' });
      host.closeWindow(closed);
      await eventually(() => !native.hasKeyWindow(), 'the end of the window');
      // A handle of a window that the host has released: the memory may hold anything.
      for (let i = 0; i < 200; ++i) host.closeWindow(host.createWindow({ title: 'Filler' }));
      for (let i = 0; i < 20; ++i) await nextTurn();
      const bytes = [
        [],
        Array(7).fill(1),
        Array(9).fill(1),
        Array(8).fill(0),
        Array(8).fill(0xff),
        [1, 0, 0, 0, 0, 0, 0, 0],
      ];
      const others = [{}, [], new Float64Array([1.5]), new Date(), () => {}];
      captureLog();
      const answers = [closed, ...others, ...bytes.map((each) => Buffer.from(each))].map((handle) => [
        native.hasSheets(handle),
        native.hideWindowContent(handle, 1),
        native.resizeWindowContent(handle, 1, 1),
        native.dropFiles(handle, '{"x":1,"y":1}', '[]'),
        native.addToolbarToWindow(handle, 1, '{}'),
      ]);
      return { answers, errors: log(1) };
    },
  );
  for (const row of answers) assert.deepStrictEqual(row, [false, null, null, null, null]);
  assert.deepStrictEqual(errors.slice(0, 4), [
    'Need a view with a window to to hide window content: (null)',
    'Need a window to change content size',
    'Need a window to attach files.',
    'Need a view with a window to add a toolbar: (null)',
  ]);
});
