'use strict';

// The editor that draws on images, with a real mouse, and films of the screen.

const assert = require('assert');
const { execFileSync } = require('child_process');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');
const sharp = require('sharp');

const { evaluate, eventually, temporaryDirectory } = require('./support/child');
const { useWindows } = require('./support/windows');

const inWindows = useWindows();

const imageSize = [660, 400];

const prelude = `
  const { capture } = probe();
  const search = async (name) => ((await run('xdotool', 'search', '--onlyvisible', '--name', '^' + name + '$')) ?? '').trim().split('\\n').at(-1);
  const pause = ['sleep', 0.15];
  const ends = [];
  host.on('notification', (notification) => ends.push(notification));
  class Editor {
    static async open(file) {
      const editor = new Editor();
      editor.answers = [];
      editor.title = require('path').basename(file);
      m.annotateImage(file, (...args) => editor.answers.push(args));
      editor.id = await eventually(() => search(editor.title), 'the editor');
      return editor;
    }
    press = (button) => { if (!capture.press(this.title, button)) throw new Error('no button ' + button); };
    drag = (from, to) => capture.drag(this.title, ...from, ...to);
    write = (point, text) => {
      this.press('Text');
      this.drag(point, point);
      capture.write(this.title, text);
    };
    // By a real mouse, in the window's own coordinates from the upper left.
    moveTo = ([x, y]) => ['mousemove', '--window', this.id, x, y, ...pause];
    dragByMouse = (from, to) => run('xdotool', ...this.moveTo(from), 'mousedown', 1, ...pause, ...this.moveTo(to), 'mouseup', 1, ...pause);
    ended = () => eventually(() => this.answers.length > 0, 'the end').then(() => this.answers);
  }
  // The window manager places and sizes a window some time after it has been opened.
  const atRest = async (id) => {
    let last;
    return eventually(async () => {
      const now = await run('xdotool', 'getwindowgeometry', '--shell', id);
      await new Promise((resolve) => setTimeout(resolve, 200));
      const isSame = now === last;
      last = now;
      return isSame && Number(now.match(/WIDTH=(\\d+)/)[1]);
    }, 'a window at rest');
  };
`;

// Stripes of two pixels, as fine as letters are.
async function stripes(folder, name = 'stripes.png') {
  const [width, height] = imageSize;
  const pixels = Buffer.alloc(width * height * 3);
  for (let i = 0; i < width * height; ++i) pixels.fill(i % width & 2 ? 255 : 0, i * 3, i * 3 + 3);
  const file = path.join(folder, name);
  await sharp(pixels, { raw: { width, height, channels: 3 } }).toFile(file);
  return file;
}

async function reader(file) {
  const { data, info } = await sharp(file).removeAlpha().raw().toBuffer({ resolveWithObject: true });
  const at = (x, y) => [...data.subarray((y * info.width + x) * 3, (y * info.width + x) * 3 + 3)];
  const isInk = ([red, green, blue]) => red > 180 && green < 90 && blue < 90;
  return { info, at, hasInk: (x, y) => isInk(at(x, y)) };
}

test('the copy has the annotations in their places, without those that were undone', async (t) => {
  const folder = temporaryDirectory(t);
  const file = await stripes(folder);
  const before = fs.readFileSync(file);
  const { answers, posted } = await inWindows(
    t,
    `${prelude}
     const editor = await Editor.open(${JSON.stringify(file)});
     await run('xdotool', 'windowactivate', '--sync', editor.id);
     const width = await atRest(editor.id);
     const bar = 52;
     await editor.dragByMouse([40, bar + 350], [200, bar + 350]);
     editor.press('Box');
     editor.drag([300, 40], [600, 160]);
     editor.press('Blur');
     editor.drag([320, 60], [580, 140]);
     editor.write([40, 60], 'WWWW');
     editor.press('Box');
     editor.drag([300, 200], [600, 380]);
     editor.press('Undo');
     await eventually(async () => {
       await editor.dragByMouse([width - 49, 26], [width - 49, 26]);
       return editor.answers.length > 0;
     }, 'the end, after a click on Save');
     const answers = await editor.ended();
     print({ answers, posted: ends.filter(({ name }) => name === 'TsImageAnnotated').map(({ userInfo }) => userInfo) });`,
  );
  const copy = path.join(folder, 'stripes annotated.png');
  assert.deepStrictEqual(answers, [[copy]]);
  assert.deepStrictEqual(posted, [{ original: file, path: copy }]);
  assert.deepStrictEqual(fs.readFileSync(file), before);
  const { info, at, hasInk } = await reader(copy);
  assert.deepStrictEqual([info.width, info.height], imageSize);
  for (const [x, y, part] of [
    [60, 350, 'the shaft'],
    [190, 350, 'the head'],
    [450, 40, 'the upper side'],
    [300, 100, 'the left side'],
    [600, 100, 'the right side'],
    [44, 60, 'the plate of the text'],
  ]) {
    assert.ok(hasInk(x, y), `${part}: ${at(x, y)}`);
  }
  for (let x = 340; x < 560; ++x) {
    const [grey] = at(x, 100);
    assert.ok(grey > 90 && grey < 165, `${grey} at ${x}: stripes are still visible`);
  }
  for (const [x, y] of [
    [450, 200],
    [300, 300],
    [600, 300],
    [250, 250],
  ]) {
    assert.ok(!hasInk(x, y), `${x}, ${y} should be as it was`);
  }
});

test('undo removes the last annotation, by button and by key', async (t) => {
  const folder = temporaryDirectory(t);
  const file = await stripes(folder);
  const answers = await inWindows(
    t,
    `${prelude}
     const editor = await Editor.open(${JSON.stringify(file)});
     editor.press('Undo');
     editor.press('Box');
     editor.drag([200, 50], [300, 150]);
     await eventually(async () => {
       await run('xdotool', 'windowactivate', '--sync', editor.id, 'key', 'ctrl+z', ...pause);
       return !capture.isEnabled(editor.title, 'Undo');
     }, 'undo by key');
     editor.drag([50, 50], [150, 150]);
     editor.drag([350, 50], [450, 150]);
     editor.press('Undo');
     // A click draws nothing, and is nothing to undo.
     editor.drag([500, 300], [500, 300]);
     editor.press('Save');
     print(await editor.ended());`,
  );
  const { hasInk } = await reader(answers[0][0]);
  assert.deepStrictEqual([hasInk(50, 100), hasInk(200, 100), hasInk(350, 100)], [true, false, false]);
});

test('the copy has the format of the image and a new name; cancelling and closing write none', async (t) => {
  const folder = temporaryDirectory(t);
  const jpeg = path.join(folder, 'photo.jpg');
  await sharp({ create: { width: 3000, height: 2000, channels: 3, background: '#fff' } })
    .withMetadata({ orientation: 6 })
    .jpeg()
    .toFile(jpeg);
  fs.writeFileSync(path.join(folder, 'photo annotated.jpg'), 'another file');
  const { saved, cancelled, closed } = await inWindows(
    t,
    `${prelude}
     const draw = async () => {
       const editor = await Editor.open(${JSON.stringify(jpeg)});
       editor.press('Box');
       editor.drag([100, 100], [200, 300]);
       return editor;
     };
     const first = await draw();
     first.press('Save');
     const saved = await first.ended();
     const second = await draw();
     second.press('Cancel');
     const cancelled = await second.ended();
     const third = await draw();
     probe().dialogs.closeWindow(third.title);
     print({ saved, cancelled, closed: await third.ended() });`,
  );
  assert.deepStrictEqual(
    [saved, cancelled, closed],
    [[[path.join(folder, 'photo annotated 2.jpg')]], [[null]], [[null]]],
  );
  const { format, width, height } = await sharp(saved[0][0]).metadata();
  assert.deepStrictEqual([format, width, height], ['jpeg', 2000, 3000]);
  assert.strictEqual(fs.readdirSync(folder).length, 3);
});

test('a file that is no image can’t be edited, and an unwritable copy is reported', async (t) => {
  const folder = temporaryDirectory(t);
  const text = path.join(folder, 'a.png');
  fs.writeFileSync(text, 'no image');
  const file = await stripes(folder, 'b.png');
  const answers = await inWindows(
    t,
    `${prelude}
     const answers = [];
     const annotate = (...args) => m.annotateImage(...args);
     for (const path of [${JSON.stringify(text)}, '/nowhere/a.png', '']) annotate(path, (...args) => answers.push(args));
     annotate('/nowhere/a.png', null);
     await eventually(() => answers.length === 3 && ends.length === 4, 'all ends');
     const editor = await Editor.open(${JSON.stringify(file)});
     require('fs').rmSync(${JSON.stringify(folder)}, { recursive: true });
     editor.press('Save');
     print([...answers, ...(await editor.ended())]);`,
  );
  assert.deepStrictEqual(answers, [[null], [null], [null], [null]]);
});

// ---- Films

const film = `
  const panelTitle = 'Screen Recording';
  const press = (button) => eventually(() => capture.press(panelTitle, button), 'the button ' + button);
  const isRecording = (folder) => require('fs').readdirSync(folder).some((name) => name.endsWith('.part'));
  // Long enough for a few frames.
  const recordABit = (folder) => eventually(() => isRecording(folder), 'the recording').then(() => new Promise((resolve) => setTimeout(resolve, 1000)));
  const answers = [];
  const record = (folder) => m.takeScreenRecording(folder, (...args) => answers.push(args));
`;

const facts = (file) =>
  execFileSync('ffprobe', ['-v', 'error', '-show_entries', 'stream=codec_name,width,height', '-of', 'csv=p=0', file])
    .toString()
    .trim();

test('the screen, or an area of it, is recorded until the user stops', async (t) => {
  const folder = path.join(temporaryDirectory(t), 'films');
  const { answers, second, posted } = await inWindows(
    t,
    `${prelude}${film}
     const folder = ${JSON.stringify(folder)};
     record(folder);
     const second = [];
     m.takeScreenRecording(folder, (...args) => second.push(args));
     await press('Whole Screen');
     await recordABit(folder);
     // By a real mouse.
     const panel = await eventually(() => search(panelTitle), 'the panel');
     await eventually(async () => {
       await run('xdotool', 'mousemove', '--window', panel, 72, 70, ...pause, 'mousedown', 1, ...pause, 'mouseup', 1);
       return eventually(() => answers.length === 1, 'the first film', 3000).catch(() => false);
     }, 'the end of the first film, after a click on Stop');
     record(folder);
     await press('Area…');
     const drag = ['mousemove', 100, 80, ...pause, 'mousedown', 1, ...pause, 'mousemove', 200, 100, ...pause, 'mousemove', 401, 281, ...pause, 'mouseup', 1];
     // A picture of the screen covers it a moment later.
     await eventually(async () => {
       await run('xdotool', ...drag);
       return eventually(() => isRecording(folder), 'the recording of the area', 1000).catch(() => false);
     }, 'the recording of the area');
     await recordABit(folder);
     await press('Stop');
     await eventually(() => answers.length === 2, 'the second film');
     print({ answers, second, posted: ends.filter(({ name }) => name === 'TsScreenRecorded').map(({ userInfo }) => userInfo.path ?? null) });`,
  );
  const [[screen], [area]] = answers;
  assert.match(path.basename(screen), /^Screen Recording \d{4}-\d\d-\d\d at \d\d\.\d\d\.\d\d\.mp4$/);
  assert.deepStrictEqual([facts(screen), facts(area)], ['h264,1280,800', 'h264,300,200']);
  assert.deepStrictEqual(second, [[null]]);
  assert.deepStrictEqual(posted, [null, screen, area]);
  assert.strictEqual(fs.readdirSync(folder).length, 2);
});

test('no film is made when the user cancels, or the screen can’t be recorded', async (t) => {
  const folder = temporaryDirectory(t);
  const file = path.join(folder, 'file');
  fs.writeFileSync(file, '');
  const { answers, warnings } = await inWindows(
    t,
    `${prelude}${film}
     captureLog();
     record(${JSON.stringify(folder)});
     await press('Cancel');
     await eventually(() => answers.length === 1, 'the end');
     record(${JSON.stringify(file)});
     const path = process.env.PATH;
     process.env.PATH = '/nowhere';
     record(${JSON.stringify(folder)});
     process.env.PATH = path;
     await eventually(() => answers.length === 3, 'the refusals');
     process.env.XDG_SESSION_TYPE = 'wayland';
     record(${JSON.stringify(folder)});
     await eventually(() => answers.length === 4, 'all ends');
     print({ answers, warnings: log(2) });`,
  );
  assert.deepStrictEqual(answers, [[null], [null], [null], [null]]);
  assert.deepStrictEqual(
    warnings.filter((text) => text.startsWith('Couldn’t') || text.startsWith("Couldn't record")),
    [
      "Couldn't record the screen: there is no folder for it",
      "Couldn't record the screen: ffmpeg is not installed",
      "Couldn't record the screen: screen capture is not available under Wayland",
    ],
  );
  assert.deepStrictEqual(fs.readdirSync(folder), ['file']);
});

test('the recorder program ends with the process that started it', async (t) => {
  const folder = temporaryDirectory(t);
  const recorder = await inWindows(
    t,
    `${prelude}${film}
     record(${JSON.stringify(folder)});
     await press('Whole Screen');
     await eventually(() => isRecording(${JSON.stringify(folder)}), 'the recording');
     const processes = (await run('pgrep', '-P', process.pid, 'ffmpeg')).trim().split('\\n').map(Number);
     print(processes);`,
  );
  assert.strictEqual(recorder.length, 1);
  const isAlive = () => {
    try {
      return !/^State:\s+Z/m.test(fs.readFileSync(`/proc/${recorder[0]}/status`, 'utf8'));
    } catch {
      return false;
    }
  };
  await eventually(() => !isAlive(), 'the end of the recorder');
});

test('without a display both callbacks receive null', async (t) => {
  const folder = temporaryDirectory(t);
  const file = await stripes(folder);
  const answers = await evaluate(
    t,
    `const { module: m } = probe();
     const answers = [];
     const wait = setInterval(() => {
       if (answers.length < 2) return;
       clearInterval(wait);
       console.log(JSON.stringify(answers));
     }, 10);
     m.annotateImage(${JSON.stringify(file)}, (...args) => answers.push(args));
     m.takeScreenRecording(${JSON.stringify(folder)}, (...args) => answers.push(args));`,
  );
  assert.deepStrictEqual(answers, [[null], [null]]);
});
