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

const barHeight = 48;
const imageSize = [660, 400];

// What a person does in the editor, whose image is shown in its own size.
const prelude = `
  const search = async (name) => ((await run('xdotool', 'search', '--onlyvisible', '--name', '^' + name + '$')) ?? '').trim().split('\\n').at(-1);
  const pause = ['sleep', 0.15];
  const places = { arrow: 0, box: 1, text: 2, blur: 3, undo: 5 };
  const ends = [];
  host.on('notification', (notification) => ends.push(notification));
  class Editor {
    static async open(file) {
      const editor = new Editor();
      editor.answers = [];
      m.annotateImage(file, (...args) => editor.answers.push(args));
      editor.id = await eventually(() => search(require('path').basename(file)), 'the editor');
      await run('xdotool', 'windowactivate', '--sync', editor.id);
      // The window manager places it some time after it has been opened.
      let last;
      await eventually(async () => {
        const now = await run('xdotool', 'getwindowgeometry', '--shell', editor.id);
        await new Promise((resolve) => setTimeout(resolve, 200));
        const isSame = now === last;
        last = now;
        return isSame;
      }, 'an editor at rest');
      editor.width = Number(last.match(/WIDTH=(\\d+)/)[1]);
      return editor;
    }
    do = (...words) => run('xdotool', ...words.flat());
    to = (x, y) => ['mousemove', '--window', this.id, x, y, ...pause];
    press = (x, y) => this.do(this.to(x, y), 'mousedown', 1, pause, 'mouseup', 1, pause);
    button = (place) => this.press(place < 0 ? this.width - 10 - 36 + (place + 1) * 77 : 10 + 36 + place * 77, 24);
    tool = (name) => this.button(places[name]);
    // The button that the window manager draws, in the corner.
    close = async () => {
      const [x, y] = (await run('xwininfo', '-id', this.id)).match(/Absolute upper-left [XY]: +(\\d+)/g).map((text) => Number(text.split(':')[1]));
      await this.do('mousemove', x + this.width - 10, y - 10, pause, 'click', 1, pause);
    };
    save = () => this.button(-1);
    cancel = () => this.button(-2);
    drag = async ([fromX, fromY], [toX, toY]) => {
      await this.do(this.to(fromX, ${barHeight} + fromY), 'mousedown', 1, pause, this.to((fromX + toX) / 2, ${barHeight} + (fromY + toY) / 2));
      await this.do(this.to(toX, ${barHeight} + toY), 'mouseup', 1, pause);
    };
    write = async ([x, y], text) => {
      await this.press(x, ${barHeight} + y);
      await this.do('type', '--delay', 30, text);
      await this.do('key', 'Return', pause);
    };
    ended = () => eventually(() => this.answers.length > 0, 'the end').then(() => this.answers);
  }
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

test('what is drawn is in the copy, in its place; what is undone is not', async (t) => {
  const folder = temporaryDirectory(t);
  const file = await stripes(folder);
  const before = fs.readFileSync(file);
  const { answers, told } = await inWindows(
    t,
    `${prelude}
     const editor = await Editor.open(${JSON.stringify(file)});
     await editor.drag([40, 350], [200, 350]);
     await editor.tool('box');
     await editor.drag([300, 40], [600, 160]);
     await editor.tool('blur');
     await editor.drag([320, 60], [580, 140]);
     await editor.tool('text');
     await editor.write([40, 60], 'WWWW');
     await editor.tool('box');
     await editor.drag([300, 200], [600, 380]);
     await editor.tool('undo');
     await editor.save();
     const answers = await editor.ended();
     print({ answers, told: ends.filter(({ name }) => name === 'TsImageAnnotated').map(({ userInfo }) => userInfo) });`,
  );
  const copy = path.join(folder, 'stripes annotated.png');
  assert.deepStrictEqual(answers, [[copy]]);
  assert.deepStrictEqual(told, [{ original: file, path: copy }]);
  assert.deepStrictEqual(fs.readFileSync(file), before);
  const { info, at, hasInk } = await reader(copy);
  assert.deepStrictEqual([info.width, info.height], imageSize);
  for (const [x, y, what] of [
    [60, 350, 'the shaft'],
    [190, 350, 'the head'],
    [450, 40, 'the upper side'],
    [300, 100, 'the left side'],
    [600, 100, 'the right side'],
    [44, 60, 'the plate of the text'],
  ]) {
    assert.ok(hasInk(x, y), `${what}: ${at(x, y)}`);
  }
  for (let x = 340; x < 560; ++x) {
    const [grey] = at(x, 100);
    assert.ok(grey > 90 && grey < 165, `${grey} at ${x}: stripes can be told apart`);
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

test('undo takes one thing back at a time, by button and by key', async (t) => {
  const folder = temporaryDirectory(t);
  const file = await stripes(folder);
  const answers = await inWindows(
    t,
    `${prelude}
     const editor = await Editor.open(${JSON.stringify(file)});
     await editor.tool('undo');
     await editor.tool('box');
     await editor.drag([50, 50], [150, 150]);
     await editor.drag([200, 50], [300, 150]);
     await editor.drag([350, 50], [450, 150]);
     await editor.do('key', 'ctrl+z', pause);
     await editor.tool('undo');
     // A click draws nothing, and is nothing to undo.
     await editor.press(500, 300);
     await editor.save();
     print(await editor.ended());`,
  );
  const { hasInk } = await reader(answers[0][0]);
  assert.deepStrictEqual([hasInk(50, 100), hasInk(200, 100), hasInk(350, 100)], [true, false, false]);
});

test('the copy has the format of the image, and a name of its own; cancelled there is none', async (t) => {
  const folder = temporaryDirectory(t);
  const jpeg = path.join(folder, 'photo.jpg');
  await sharp({ create: { width: 3000, height: 2000, channels: 3, background: '#fff' } })
    .withMetadata({ orientation: 6 })
    .jpeg()
    .toFile(jpeg);
  fs.writeFileSync(path.join(folder, 'photo annotated.jpg'), 'what was there');
  const { saved, cancelled, closed } = await inWindows(
    t,
    `${prelude}
     const draw = async () => {
       const editor = await Editor.open(${JSON.stringify(jpeg)});
       await editor.tool('box');
       await editor.drag([editor.width / 2 - 80, 100], [editor.width / 2 + 80, 300]);
       return editor;
     };
     const first = await draw();
     await first.save();
     const saved = await first.ended();
     const second = await draw();
     await second.cancel();
     const cancelled = await second.ended();
     const third = await draw();
     await third.close();
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

test('what is no image is not edited, and what can’t be written is no copy', async (t) => {
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
     await editor.save();
     print([...answers, ...(await editor.ended())]);`,
  );
  assert.deepStrictEqual(answers, [[null], [null], [null], [null]]);
});

// ---- Films

const film = `
  const panelTitle = 'Screen Recording';
  const panel = () => eventually(() => search(panelTitle), 'the panel');
  // At the place of the button that was pressed another one appears.
  const pressUntil = async (place, condition, description) => eventually(async () => {
    const id = await search(panelTitle);
    if (id) await run('xdotool', 'mousemove', '--window', id, 12 + 60 + place * 126, 70, ...pause, 'mousedown', 1, ...pause, 'mouseup', 1);
    return eventually(condition, description, 5000).catch(() => false);
  }, description, 30000);
  const isRecording = (folder) => require('fs').readdirSync(folder).some((name) => name.endsWith('.part'));
  const answers = [];
  const record = (folder) => m.takeScreenRecording(folder, (...args) => answers.push(args));
`;

const facts = (file) =>
  execFileSync('ffprobe', ['-v', 'error', '-show_entries', 'stream=codec_name,width,height', '-of', 'csv=p=0', file])
    .toString()
    .trim();

test('the screen, or an area of it, is recorded until it is stopped', async (t) => {
  const folder = path.join(temporaryDirectory(t), 'films');
  const { answers, second, told } = await inWindows(
    t,
    `${prelude}${film}
     const folder = ${JSON.stringify(folder)};
     record(folder);
     await panel();
     const second = [];
     m.takeScreenRecording(folder, (...args) => second.push(args));
     await pressUntil(0, () => isRecording(folder), 'the recording');
     await new Promise((resolve) => setTimeout(resolve, 1500));
     await pressUntil(0, () => answers.length === 1, 'the first film');
     record(folder);
     await panel();
     await pressUntil(1, async () => !(await search(panelTitle)), 'the choice');
     // A picture of the screen covers it a moment later.
     const drag = ['mousemove', 100, 80, ...pause, 'mousedown', 1, ...pause, 'mousemove', 200, 100, ...pause, 'mousemove', 401, 281, ...pause, 'mouseup', 1];
     await eventually(async () => {
       await run('xdotool', ...drag);
       await new Promise((resolve) => setTimeout(resolve, 500));
       return isRecording(folder);
     }, 'the recording of the area');
     await new Promise((resolve) => setTimeout(resolve, 1500));
     await pressUntil(0, () => answers.length === 2, 'the second film');
     print({ answers, second, told: ends.filter(({ name }) => name === 'TsScreenRecorded').map(({ userInfo }) => userInfo.path ?? null) });`,
  );
  const [[screen], [area]] = answers;
  assert.match(path.basename(screen), /^Screen Recording \d{4}-\d\d-\d\d at \d\d\.\d\d\.\d\d\.mp4$/);
  assert.deepStrictEqual([facts(screen), facts(area)], ['h264,1280,800', 'h264,300,200']);
  assert.deepStrictEqual(second, [[null]]);
  assert.deepStrictEqual(told, [null, screen, area]);
  assert.strictEqual(fs.readdirSync(folder).length, 2);
});

test('cancelled, there is no film; and none where nothing can be recorded', async (t) => {
  const folder = temporaryDirectory(t);
  const file = path.join(folder, 'file');
  fs.writeFileSync(file, '');
  const { answers, warnings } = await inWindows(
    t,
    `${prelude}${film}
     captureLog();
     record(${JSON.stringify(folder)});
     await panel();
     await pressUntil(2, () => answers.length === 1, 'the end');
     record(${JSON.stringify(file)});
     const path = process.env.PATH;
     process.env.PATH = '/nowhere';
     record(${JSON.stringify(folder)});
     process.env.PATH = path;
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
      "Couldn't record the screen: a Wayland session shows its screen to nobody but itself",
    ],
  );
  assert.deepStrictEqual(fs.readdirSync(folder), ['file']);
});

test('a recording ends with its process', async (t) => {
  const folder = temporaryDirectory(t);
  const recorder = await inWindows(
    t,
    `${prelude}${film}
     record(${JSON.stringify(folder)});
     await panel();
     await pressUntil(0, () => isRecording(${JSON.stringify(folder)}), 'the recording');
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

test('without a display there is neither editor nor film', async (t) => {
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
