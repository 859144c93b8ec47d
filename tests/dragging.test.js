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

// A window with the icon of a document, and another program's window beside it.
const besideTarget = (answer, types = []) => `
  ${listening}
  host.setRepresentedFilename(handle, '/etc/hosts');
  await settled(handle);
  const { spawn } = require('child_process');
  const [title, x, y] = ['Drop target', 1000, 500];
  const node = process.env.TESSARO_NODE || process.execPath;
  const other = spawn(node, ['host/receiveDrop.js', title, x, y, ${JSON.stringify(answer)}, ...${JSON.stringify(types)}], {
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  process.on('exit', () => other.kill('SIGKILL'));
  let said = '';
  other.stdout.on('data', (text) => (said += text));
  const shown = () => run('xdotool', 'search', '--onlyvisible', '--name', title);
  await eventually(shown, 'the other window');
  const received = () => eventually(() => said.endsWith('\\n') && JSON.parse(said), 'the report');
  // The mouse of a person: presses, moves a little, then all the way, and lets go.
  const icon = () => onScreen(handle, host.windowInfo(handle).accessories[0]);
  const dragTo = async (steps) => {
    const [left, top] = await icon();
    await run('xdotool', 'mousemove', left, top, 'sleep', 0.1, 'mousedown', 1, 'sleep', 0.1, 'mousemove_relative', 5, 5);
    for (const [across, down] of steps) await run('xdotool', 'mousemove', across, down, 'sleep', 0.2);
    await run('xdotool', 'mouseup', 1);
  };
  const onTarget = [[1050, 600], [1090, 590], [1095, 595]];`;

test('the icon of the document, dragged by the mouse, brings another program the page’s address', async (t) => {
  const types = ['text/uri-list', 'text/x-moz-url', 'UTF8_STRING', 'no/such-type'];
  const { offered, contents } = await inWindows(
    t,
    `${besideTarget('accept', types)}
     m.setCurrentURL('https://a.example/?q=1', 'https://mail.example.org/1', 'Tïtle');
     await dragTo(onTarget);
     print(await received());`,
  );
  const url = 'https://a.example/?q=1';
  assert.deepStrictEqual(
    types.map((type) => offered.includes(type)),
    [true, true, true, false],
  );
  assert.strictEqual(contents['text/uri-list'], `${url}\r\n`);
  assert.strictEqual(contents.UTF8_STRING, url);
  assert.strictEqual(Buffer.from(contents['text/x-moz-url'], 'latin1').toString('utf16le'), `${url}\nTïtle`);
});

test('a program that refuses and no program at all end the drag', async (t) => {
  const { refused, dropped } = await inWindows(
    t,
    `${besideTarget('refuse')}
     m.setCurrentURL('https://a.example/', null, 'Title');
     await dragTo(onTarget);
     const refused = await received();
     await dragTo([[640, 790], [640, 795]]);
     // Nothing of it is left: the next drag, to the page of the window itself, arrives.
     const before = dropped().length;
     const { frame } = host.windowInfo(handle);
     await dragTo([[frame.x + 200, 800 - frame.y - 100], [frame.x + 205, 800 - frame.y - 105]]);
     print({ refused, dropped: dropped().slice(before) });`,
  );
  assert.ok(refused.offered.includes('text/uri-list'));
  assert.deepStrictEqual(refused.contents, {});
  assert.deepStrictEqual(dropped, []);
});

test('without a page there is no drag', async (t) => {
  const { received, isAlone } = await inWindows(
    t,
    `${besideTarget('accept', ['text/uri-list'])}
     await dragTo(onTarget);
     m.setCurrentURL('https://second.example/', null, 'Second');
     await dragTo(onTarget);
     print({ received: await received(), isAlone: host.windowInfo(handle).accessories.length === 1 });`,
  );
  assert.deepStrictEqual(received.contents, { 'text/uri-list': 'https://second.example/\r\n' });
  assert.ok(isAlone);
});

test('a window may close in the middle of a drag', async (t) => {
  const { offered, contents } = await inWindows(
    t,
    `${besideTarget('refuse')}
     m.setCurrentURL('https://a.example/', null, 'Title');
     const [left, top] = await icon();
     await run('xdotool', 'mousemove', left, top, 'sleep', 0.1, 'mousedown', 1, 'sleep', 0.1, 'mousemove_relative', 5, 5);
     for (const [across, down] of onTarget) await run('xdotool', 'mousemove', across, down, 'sleep', 0.2);
     host.closeWindow(handle);
     const report = await received();
     await run('xdotool', 'mouseup', 1);
     await open({ title: 'Second' });
     print(report);`,
  );
  assert.ok(offered.includes('text/uri-list'));
  assert.deepStrictEqual(contents, {});
});

test('a program that hangs has no drag hanging', async (t) => {
  const { report } = await inWindows(
    t,
    `${besideTarget('accept', ['text/uri-list'])}
     m.setCurrentURL('https://first.example/', null, 'First');
     other.kill('SIGSTOP');
     await dragTo(onTarget);
     // Only the drag waits, and not for ever.
     await new Promise((resolve) => setTimeout(resolve, 5500));
     other.kill('SIGCONT');
     m.setCurrentURL('https://second.example/', null, 'Second');
     await dragTo(onTarget);
     print({ report: await received() });`,
  );
  assert.deepStrictEqual(report.contents, { 'text/uri-list': 'https://second.example/\r\n' });
});
