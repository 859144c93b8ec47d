'use strict';

// Files dragged over the page and dropped on it, by hands of another process and by script; the drag of a title.

const assert = require('assert');
const { test } = require('node:test');

const { useWindows } = require('./support/windows');

const inWindows = useWindows();

const listening = `
  const events = [];
  m.setDragAndDropCallbackFunction((name, handle, paths) => events.push([name, handle.toString('hex'), JSON.parse(paths)]));
  const handle = await open({ title: 'First', width: 600, height: 300 });
  const dropped = () => host.windowInfo(handle).droppedFiles;
  const name = handle.toString('hex');`;

test('files that another process drags are reported before the page has them', async (t) => {
  const { events, name, outcome, dropped } = await inWindows(
    t,
    `${listening}
     await settled(handle);
     const { frame } = host.windowInfo(handle);
     const outcome = await host.dragFiles(frame.x + 200, 800 - frame.y - 100, ['/tmp/ä b', '/etc/hosts']);
     await eventually(() => dropped().length > 0, 'the drop');
     print({ events, name, outcome, dropped: dropped() });`,
  );
  assert.strictEqual(outcome, 'accepted');
  const files = ['/tmp/ä b', '/etc/hosts'];
  assert.deepStrictEqual(dropped, files);
  assert.strictEqual(events[0][0], 'dragging-entered');
  assert.strictEqual(events.at(-1)[0], 'perform-drag-operation');
  for (const event of events) assert.deepStrictEqual(event.slice(1), [name, files]);
});

test('phases of a drag reach script first, and what is no file does not', async (t) => {
  const { files, text, names } = await inWindows(
    t,
    `${listening}
     // These drags come from nowhere, so there is no window to tell.
     const files = ask('dragOverPage', { window: 'First', files: ['/a'] });
     const names = events.map(([phase]) => phase);
     const text = ask('dragOverPage', { window: 'First' });
     print({ files, text, names: [names, events.length] });`,
  );
  assert.deepStrictEqual(files, [1, 1, true]);
  assert.deepStrictEqual(text, [1, 1, false]);
  const phases = ['dragging-entered', 'dragging-updated', 'dragging-exited', 'perform-drag-operation'];
  assert.deepStrictEqual(names, [phases, 4]);
});

test('script drops files on the page, unreported', async (t) => {
  const { answers, dropped, events, infos } = await inWindows(
    t,
    `${listening}
     const many = Array.from({ length: 1000 }, (_, i) => '/tmp/file ' + i);
     captureLog();
     const answers = [
       m.dropFiles(handle, '{"x":10,"y":20}', '["/no/such file"]'),
       m.dropFiles(handle, '{"x":-1,"y":5000}', JSON.stringify(many)),
       m.dropFiles(handle, '{}', '[]'),
     ];
     print({ answers, dropped: dropped(), events, infos: log(4) });`,
  );
  assert.deepStrictEqual(answers, [true, true, false]);
  assert.deepStrictEqual([dropped.length, dropped[0], dropped[1000]], [1001, '/no/such file', '/tmp/file 999']);
  assert.deepStrictEqual(events, []);
  assert.match(
    infos.find((line) => line.startsWith('Unable')),
    /^Unable to drop files as \{.*\} is not in \{.*300\}/,
  );
});

test('what is no point and no list of paths is refused', async (t) => {
  const { answers, errors, dropped } = await inWindows(
    t,
    `${listening}
     captureLog();
     const point = '{"x":1,"y":1}';
     const answers = [['no JSON', '[]'], ['[1]', '["/a"]'], ['"x"', '["/a"]'], [point, 'no JSON'], [point, '{}'], [point, '[1]'], [point, '[null]']]
       .map(([where, paths]) => m.dropFiles(handle, where, paths));
     answers.push(m.dropFiles(handle, '{"x":"left","y":null}', '["/a"]'));
     print({ answers, errors: log(1), dropped: dropped() });`,
  );
  assert.deepStrictEqual(answers, [...Array(7).fill(false), true]);
  assert.match(errors[0], /^Couldn't parse point no JSON because of /);
  assert.match(errors[3], /^Couldn't parse paths parameter no JSON because of /);
  assert.deepStrictEqual(dropped, ['/a']);
});

test('a drag of script’s making comes from nowhere, as a copy', async (t) => {
  const info = await inWindows(t, "print(ask('draggingInfo'));");
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

test('a drag of the title carries the page’s address', async (t) => {
  const drags = await inWindows(
    t,
    `await open({ title: 'First' });
     const drag = () => ask('dragTitle', { window: 'First' });
     const drags = [drag()];
     m.setCurrentURL('tessaro://message/1', 'https://mail.example.org/1', 'Hello');
     drags.push(drag());
     m.setCurrentURL(null, 'https://mail.example.org/1', 'Hello');
     drags.push(drag());
     m.setCurrentURL('tessaro://message/1', null, null);
     drags.push(drag());
     print(drags);`,
  );
  const none = { begins: false, text: null, titles: null };
  assert.deepStrictEqual(drags, [
    none,
    { begins: true, text: 'tessaro://message/1', titles: [['tessaro://message/1'], ['Hello']] },
    none,
    none,
  ]);
});
