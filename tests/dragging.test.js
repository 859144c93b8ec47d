'use strict';

// Files dragged over the page and dropped on it, by another process and by script; the drag of a title.

const assert = require('assert');
const { test } = require('node:test');

const { scenarios } = require('./support/scenario');

const inWindows = scenarios({
  display: true,
  uses: ['windows'],
  fixture: ({ host, native, open }) => ({
    /** Opens a window whose drags script hears of. */
    async openListening() {
      const events = [];
      const note = (name, handle, paths) => events.push([name, handle.toString('hex'), JSON.parse(paths)]);
      native.setDragAndDropCallbackFunction(note);
      const handle = await open({ title: 'First', width: 600, height: 300 });
      return { events, handle, dropped: () => host.windowInfo(handle).droppedFiles };
    },
  }),
});

test('files that another program drags reach script, and then the page', async (t) => {
  const { events, name, outcomes, dropped, stale } = await inWindows(
    t,
    async ({ eventually, host, openListening, settled }) => {
      const { events, handle, dropped } = await openListening();
      await settled(handle);
      const { frame } = host.windowInfo(handle);
      const drag = (paths) => host.dragFiles(frame.x + 200, 800 - frame.y - 100, paths);
      const outcomes = [await drag(['/tmp/ä b%ü', '/etc/hosts'])];
      await eventually(() => dropped().length > 0, 'the drop');
      outcomes.push(await host.dragFiles(1, 1, ['/x']));
      // Nothing of the earlier drag is left when the next one brings no file of this machine.
      const heard = events.splice(0);
      await drag([]);
      return { events: heard, name: handle.toString('hex'), outcomes, dropped: dropped(), stale: events };
    },
  );
  assert.deepStrictEqual(outcomes, ['accepted', 'no target']);
  const files = ['/tmp/ä b%ü', '/etc/hosts'];
  assert.deepStrictEqual(dropped, files);
  assert.strictEqual(events[0][0], 'dragging-entered');
  assert.strictEqual(events.at(-1)[0], 'perform-drag-operation');
  for (const event of events) assert.deepStrictEqual(event.slice(1), [name, files]);
  assert.deepStrictEqual(stale, []);
});

test('script learns of each phase before the page does, and of files only', async (t) => {
  const { files, text, phases } = await inWindows(t, async ({ native, open, windows }) => {
    const phases = [];
    native.setDragAndDropCallbackFunction((name) => phases.push([name, windows.pageDrags()]));
    await open({ title: 'First' });
    const files = windows.dragOverPage('First', ['/a']);
    const count = phases.length;
    const text = windows.dragOverPage('First');
    return { files, text, phases: [...phases, phases.length - count, windows.pageDrags()] };
  });
  assert.deepStrictEqual(files, [1, 1, true]);
  assert.deepStrictEqual(text, [1, 1, false]);
  const calls = ['draggingEntered_:', 'draggingUpdated_:', 'draggingExited_:', 'performDragOperation_:'];
  const names = ['dragging-entered', 'dragging-updated', 'dragging-exited', 'perform-drag-operation'];
  assert.deepStrictEqual(phases, [...names.map((name, i) => [name, calls.slice(0, i)]), 0, [...calls, ...calls]]);
});

test('files that script drops reach the page, and are not reported to script', async (t) => {
  const { answers, dropped, events, infos } = await inWindows(t, async ({ captureLog, log, native, openListening }) => {
    const { events, handle, dropped } = await openListening();
    const many = Array.from({ length: 1000 }, (_, i) => `/tmp/file ${i}`);
    captureLog();
    const answers = [
      native.dropFiles(handle, '{"x":10,"y":20}', '["/no/such file"]'),
      native.dropFiles(handle, '{"x":-1,"y":5000}', JSON.stringify(many)),
      native.dropFiles(handle, '{}', '[]'),
    ];
    return { answers, dropped: dropped(), events, infos: log(4) };
  });
  assert.deepStrictEqual(answers, [true, true, false]);
  assert.deepStrictEqual([dropped.length, dropped[0], dropped[1000]], [1001, '/no/such file', '/tmp/file 999']);
  assert.deepStrictEqual(events, []);
  assert.match(
    infos.find((line) => line.startsWith('Unable')),
    /^Unable to drop files as \{.*\} is not in \{.*300\}/,
  );
});

test('dropFiles refuses malformed points and paths', async (t) => {
  const point = '{"x":1,"y":1}';
  const calls = [
    ...[['no JSON', '[]'], ['[1]', '["/a"]'], ['"x"', '["/a"]']],
    ...['no JSON', '{}', '[1]', '[null]'].map((paths) => [point, paths]),
    ['{"x":"left","y":null}', '["/a"]'],
  ]; // prettier-ignore
  const { answers, errors, dropped } = await inWindows(
    t,
    async ({ captureLog, log, native, openListening }, all) => {
      const { handle, dropped } = await openListening();
      captureLog();
      return { answers: all.map((args) => native.dropFiles(handle, ...args)), errors: log(1), dropped: dropped() };
    },
    calls,
  );
  assert.deepStrictEqual(answers, [...Array(7).fill(false), true]);
  assert.match(errors[0], /^Couldn't parse point no JSON because of /);
  assert.match(errors[3], /^Couldn't parse paths parameter no JSON because of /);
  assert.deepStrictEqual(dropped, ['/a']);
});

test('the dragging information of a programmatic drop', async (t) => {
  const info = await inWindows(t, async ({ windows }) => windows.draggingInfo());
  assert.deepStrictEqual(info, {
    window: null,
    mask: 1,
    location: info.location,
    imageLocation: info.location,
    image: null,
    pasteboard: info.pasteboard,
    isItsOwnSource: true,
    sequence: 0,
    promised: [],
    formation: 0,
    animates: false,
    valid: 0,
  });
  assert.match(info.location, /^\{ ?x ?= ?3; y ?= ?4 ?\}$|^\{3, 4\}$/);
});

test('the drag of a title carries the page’s address and title, with Option held its address on the web', async (t) => {
  const drags = await inWindows(t, async ({ native, open, windows }) => {
    await open({ title: 'First' });
    const drag = (modifiers = 0) => windows.dragTitle('First', modifiers);
    const drags = [drag()];
    native.setCurrentURL('tessaro://message/1', 'https://mail.example.org/1', 'Hello');
    drags.push(drag(), drag(0x80000));
    native.setCurrentURL(null, 'https://mail.example.org/1', 'Hello');
    drags.push(drag());
    native.setCurrentURL('tessaro://message/1', null, null);
    return [...drags, drag()];
  });
  const none = { begins: false, text: null, titles: null };
  const page = (url) => ({ begins: true, text: url, titles: [[url], ['Hello']] });
  assert.deepStrictEqual(drags, [none, page('tessaro://message/1'), page('https://mail.example.org/1'), none, none]);
});
