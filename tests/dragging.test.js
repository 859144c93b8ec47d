'use strict';

// Files dragged over the page and dropped on it, by another process and by script; the drag of a title.

const { scenarios } = require('./support');

const inWindows = scenarios({
  display: true,
  uses: ['windows'],
  fixture: ({ host, native, open }) => ({
    /** Opens a window, and notes the drags that are reported to script. */
    async openListening() {
      const events = [];
      const note = (name, handle, paths) => events.push([name, handle.toString('hex'), JSON.parse(paths)]);
      native.setDragAndDropCallbackFunction(note);
      const handle = await open({ title: 'First', width: 600, height: 300 });
      return { events, handle, dropped: () => host.windowInfo(handle).droppedFiles };
    },
  }),
});

inWindows.test('files of other programs reach script, then the page; dropped by script, the page', async (fixture) => {
  const { assert, captureLog, equal, eventually, host, log, native, openListening, settled } = fixture;
  const { events, handle, dropped } = await openListening();
  await settled(handle);
  const { frame } = host.windowInfo(handle);
  const drag = (paths) => host.dragFiles(frame.x + 200, 800 - frame.y - 100, paths);
  const files = ['/tmp/ä b%ü', '/etc/hosts'];
  equal(await drag(files), 'accepted');
  await eventually(() => dropped().length > 0, 'the drop');
  equal(dropped(), files);
  equal([events[0][0], events.at(-1)[0]], ['dragging-entered', 'perform-drag-operation']);
  for (const event of events) equal(event.slice(1), [handle.toString('hex'), files]);
  equal(await host.dragFiles(1, 1, ['/x']), 'no target');
  // Nothing of the earlier drag is left when the next one brings no file of this machine.
  events.length = 0;
  await drag([]);
  captureLog();
  const point = '{"x":10,"y":20}';
  const many = Array.from({ length: 1000 }, (_, i) => `/tmp/file ${i}`);
  const table = [
    [point, '["/no/such file"]', true],
    ['{"x":-1,"y":5000}', JSON.stringify(many), true],
    ['{"x":"left","y":null}', '["/a"]', true],
    ['{}', '[]', false],
    ...[['no JSON', '[]', false], ['[1]', '["/a"]', false], ['"x"', '["/a"]', false]],
    ...['no JSON', '{}', '[1]', '[null]'].map((paths) => [point, paths, false]),
  ]; // prettier-ignore
  for (const [place, paths, answer] of table) equal(native.dropFiles(handle, place, paths), answer);
  equal(dropped().slice(files.length), ['/no/such file', ...many, '/a']);
  equal(events, []);
  const outside = log(4).find((line) => line.startsWith('Unable'));
  assert.match(outside, /^Unable to drop files as \{.*\} is not in \{.*300\}/);
  assert.match(log(1)[0], /^Couldn't parse point no JSON because of /);
  assert.match(log(1)[3], /^Couldn't parse paths parameter no JSON because of /);
});

inWindows.test('each phase is reported to script before the page answers, and for files only', async (fixture) => {
  const { equal, get, host, native, open, sendMessage: send, windowNamed } = fixture;
  const handle = await open({ title: 'First' });
  const dropped = () => host.windowInfo(handle).droppedFiles.length;
  const phases = [];
  native.setDragAndDropCallbackFunction((name) => phases.push([name, dropped()]));
  const page = get(windowNamed('First'), 'webContentsView');
  const messages = ['draggingEntered:', 'draggingUpdated:', 'draggingExited:', 'performDragOperation:'];
  const drag = (type, contents) => {
    const info = send(send('TsDraggingInfo', 'alloc'), 'initWithLocation:', [1, 1]);
    send(get(info, 'pasteboard'), 'declareTypes:owner:', [type], null);
    send(get(info, 'pasteboard'), 'setPropertyList:forType:', contents, type);
    return messages.map((message) => send(page, message, info) ?? null);
  };
  equal([drag('NSStringPboardType', 'text'), phases], [[1, 1, null, false], []]);
  equal([drag('NSFilenamesPboardType', ['/a']), dropped()], [[1, 1, null, true], 1]);
  const reported = ['dragging-entered', 'dragging-updated', 'dragging-exited', 'perform-drag-operation'];
  equal(phases, reported.map((name) => [name, 0])); // prettier-ignore
});

inWindows.test('the drag of a title carries the page’s address, with Option its web address', async (fixture) => {
  const { application, equal, get, mouseEvent, native, open, sendMessage: send, windowNamed } = fixture;
  await open({ title: 'First' });
  const [url, webUrl, title] = ['tessaro://message/1', 'https://mail.example.org/1', 'Hello'];
  const optionKey = 0x80000;
  const window = windowNamed('First');
  const drag = (modifiers = 0) => {
    const event = mouseEvent(window, 6, [1, 1], modifiers);
    const pasteboard = send('NSPasteboard', 'pasteboardWithUniqueName');
    // Makes it the application's current event.
    send(application, 'postEvent:atStart:', event, true);
    send(application, 'nextEventMatchingMask:untilDate:inMode:dequeue:', 1 << 6, null, 'NSDefaultRunLoopMode', true);
    const begin = 'window:shouldDragDocumentWithEvent:from:withPasteboard:';
    if (!send(get(window, 'delegate'), begin, window, event, [1, 1], pasteboard)) return null;
    const addresses = send(pasteboard, 'propertyListForType:', 'WebURLsWithTitlesPboardType');
    return [send(pasteboard, 'stringForType:', 'NSStringPboardType'), addresses];
  };
  equal(drag(), null);
  native.setCurrentURL(url, webUrl, title);
  equal(drag(), [url, [[url], [title]]]);
  equal(drag(optionKey), [webUrl, [[webUrl], [title]]]);
  native.setCurrentURL(null, webUrl, title);
  equal(drag(), null);
  native.setCurrentURL(url, null, null);
  equal(drag(), null);
});
