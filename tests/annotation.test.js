'use strict';

// The editor that draws on images, with a real mouse, and films of the screen.

const sharp = require('sharp');
const { assert, eventually, execFileSync, fs, path, scenarios } = require('./support');
const { spawnSync, temporaryDirectory, test } = require('./support');

const inWindows = scenarios({
  display: true,
  uses: ['windows'],
  fixture(base) {
    const { application, dialogs, eventually, fs, get, host, mouseEvent, native, path, run, shown } = base;
    const { sendMessage: send } = base;
    const pause = ['sleep', 0.15];
    const ends = [];
    host.on('notification', (notification) => ends.push(notification));
    const postedAs = (kind) => ends.filter(({ name }) => name === kind).map(({ userInfo }) => userInfo);
    class Editor {
      answers = [];

      static async open(file) {
        const editor = new Editor();
        editor.title = path.basename(file);
        native.annotateImage(file, (...args) => editor.answers.push(args));
        editor.id = await shown(editor.title);
        return editor;
      }

      press(button) {
        if (!dialogs.pressButton(this.title, button)) throw new Error(`no button ${button}`);
      }

      get canUndo() {
        const { views } = dialogs.windows().find(({ title }) => title === this.title);
        return views.find(({ title }) => title === 'Undo').isEnabled;
      }

      get window() {
        const isShown = (window) => get(window, 'title') === this.title && send(window, 'isVisible');
        return get(application, 'windows').find(isShown);
      }

      /** On the canvas, between points that an image in its own size has from the upper left. */
      drag(from, to) {
        const find = (view) =>
          view.class === 'TsAnnotationView' ? view : get(view, 'subviews').map(find).find(Boolean);
        const canvas = find(get(this.window, 'contentView'));
        const height = send(canvas, 'bounds')[3];
        const press = (handler, kind, [x, y]) => {
          const point = send(canvas, 'convertPoint:toView:', [x, height - y], null);
          send(canvas, handler, mouseEvent(this.window, kind, point));
        };
        press('mouseDown:', 1, from);
        press('mouseDragged:', 6, to);
        press('mouseUp:', 2, to);
      }

      write(point, text) {
        this.press('Text');
        this.drag(point, point);
        send(send(this.window, 'fieldEditor:forObject:', false, null), 'insertText:', text);
      }

      /** With a real mouse, in the window's coordinates from the upper left. */
      moveTo = ([x, y]) => ['mousemove', '--window', this.id, x, y, ...pause];
      dragByMouse = (from, to) =>
        run('xdotool', this.moveTo(from), 'mousedown', 1, pause, this.moveTo(to), 'mouseup', 1, pause);
      ended = () => eventually(() => this.answers.length > 0, 'the end').then(() => this.answers);
    }
    const films = [];
    return {
      ...{ Editor, ends, films, pause, postedAs },
      record: (folder) => native.takeScreenRecording(folder, (...args) => films.push(args)),
      pressPanel: (button) => eventually(() => dialogs.pressButton('Screen Recording', button), `the button ${button}`),
      isRecording: (folder) => fs.readdirSync(folder).some((name) => name.endsWith('.part')),
      /** A film of nothing has no frames. */
      recordABit: () => run('sleep', 1),
    };
  },
});

const imageSize = [660, 400];

// Stripes of two pixels, as fine as letters are.
async function stripes(folder) {
  const [width, height] = imageSize;
  const pixels = Buffer.alloc(width * height * 3);
  for (let i = 0; i < width * height; ++i) pixels.fill(i % width & 2 ? 255 : 0, i * 3, i * 3 + 3);
  const file = path.join(folder, 'stripes.png');
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
  const scenario = async ({ Editor, atRest, clickUntil, eventually, pause, postedAs, run }, image) => {
    const editor = await Editor.open(image);
    await run('xdotool', 'windowactivate', '--sync', editor.id);
    const geometry = () => run('xdotool', 'getwindowgeometry', '--shell', editor.id);
    await atRest(geometry);
    const width = Number((await geometry()).match(/WIDTH=(\d+)/)[1]);
    const undo = [editor.canUndo];
    editor.press('Box');
    editor.drag([220, 220], [280, 330]);
    undo.push(editor.canUndo);
    await eventually(async () => {
      await run('xdotool', 'windowactivate', '--sync', editor.id, 'key', 'ctrl+z', pause);
      return !editor.canUndo;
    }, 'undo by key');
    editor.press('Arrow');
    const bar = 60;
    await editor.dragByMouse([40, bar + 350], [200, bar + 350]);
    editor.press('Box');
    editor.drag([300, 40], [600, 160]);
    editor.press('Blur');
    editor.drag([320, 60], [580, 140]);
    editor.write([40, 60], 'WWWW');
    editor.press('Box');
    editor.drag([300, 200], [600, 380]);
    editor.press('Undo');
    // A click draws nothing.
    editor.drag([300, 300], [300, 300]);
    await clickUntil(editor.id, [width - 51, 30], () => editor.answers.length > 0, 'the end, after a click on Save');
    return { answers: editor.answers, posted: postedAs('TsImageAnnotated'), undo };
  };
  const { answers, posted, undo } = await inWindows(t, scenario, file);
  const copy = path.join(folder, 'stripes annotated.png');
  assert.deepStrictEqual([answers, posted], [[[copy]], [{ original: file, path: copy }]]);
  assert.deepStrictEqual(undo, [false, true]);
  assert.deepStrictEqual(fs.readFileSync(file), before);
  const { info, at, hasInk } = await reader(copy);
  assert.deepStrictEqual([info.width, info.height], imageSize);
  const arrow = { 'the shaft': [60, 350], 'the head': [190, 350] };
  const box = { 'the upper side': [450, 40], 'the left side': [300, 100], 'the right side': [600, 100] };
  const inked = { ...arrow, ...box, 'the plate of the text': [44, 60] };
  for (const [part, place] of Object.entries(inked)) assert.ok(hasInk(...place), `${part}: ${at(...place)}`);
  const untouched = { 'the undone box': [450, 200], 'its left side': [300, 300], 'the box undone by key': [220, 270] };
  for (const [part, place] of Object.entries(untouched)) assert.ok(!hasInk(...place), `${part}: ${at(...place)}`);
  for (let x = 340; x < 560; ++x) {
    const [grey] = at(x, 100);
    assert.ok(grey > 90 && grey < 165, `${grey} at ${x}: stripes are still visible`);
  }
});

test('the copy has the format of the image and a new name; cancelling and closing write none', async (t) => {
  const folder = temporaryDirectory(t);
  const jpeg = path.join(folder, 'photo.jpg');
  await sharp({ create: { width: 3000, height: 2000, channels: 3, background: '#fff' } })
    .withMetadata({ orientation: 6 })
    .jpeg()
    .toFile(jpeg);
  fs.writeFileSync(path.join(folder, 'photo annotated.jpg'), 'another file');
  const scenario = async ({ Editor, sendMessage }, image) => {
    const answers = [];
    for (const end of ['Save', 'Cancel', 'close']) {
      const editor = await Editor.open(image);
      editor.press('Box');
      editor.drag([100, 100], [200, 300]);
      if (end === 'close') sendMessage(editor.window, 'performClose:', null);
      else editor.press(end);
      answers.push(...(await editor.ended()));
    }
    return answers;
  };
  const copy = path.join(folder, 'photo annotated 2.jpg');
  assert.deepStrictEqual(await inWindows(t, scenario, jpeg), [[copy], [null], [null]]);
  const { format, width, height } = await sharp(copy).metadata();
  assert.deepStrictEqual([format, width, height], ['jpeg', 2000, 3000]);
  assert.strictEqual(fs.readdirSync(folder).length, 3);
});

inWindows.test('a file that is no image can’t be edited, and an unwritable copy is reported', async (fixture) => {
  const { Editor, ends, equal, eventually, fs, home, native, run } = fixture;
  const [text, folder] = [`${home}/a.png`, `${home}/images`];
  fs.writeFileSync(text, 'no image');
  fs.mkdirSync(folder);
  await run('convert', '-size', '300x200', 'xc:red', `${folder}/b.png`);
  const answers = [];
  for (const each of [text, '/nowhere/a.png', '']) native.annotateImage(each, (...args) => answers.push(args));
  native.annotateImage('/nowhere/a.png', null);
  await eventually(() => answers.length === 3 && ends.length === 4, 'all ends');
  const editor = await Editor.open(`${folder}/b.png`);
  fs.rmSync(folder, { recursive: true });
  editor.press('Save');
  equal([...answers, ...(await editor.ended())], Array(4).fill([null]));
});

// ---- Films

const question = '-v error -show_entries stream=codec_name,width,height -of csv=p=0'.split(' ');
const facts = (file) => execFileSync('ffprobe', [...question, file], { encoding: 'utf8' }).trim();

test('the screen, or an area of it, is recorded until the user stops', async (t) => {
  const folder = path.join(temporaryDirectory(t), 'films');
  const scenario = async (fixture, target) => {
    const { clickUntil, eventually, films, isRecording, native, pause, postedAs } = fixture;
    const { pressPanel, record, recordABit, run, shown } = fixture;
    record(target);
    const second = [];
    native.takeScreenRecording(target, (...args) => second.push(args));
    await pressPanel('Whole Screen');
    await eventually(() => isRecording(target), 'the recording');
    await recordABit();
    const panel = await shown('Screen Recording');
    await clickUntil(panel, [72, 70], () => films.length === 1, 'the end of the first film, after a click on Stop');
    record(target);
    await pressPanel('Area…');
    const moves = [[200, 100], [401, 281]].map((point) => ['mousemove', ...point, pause]); // prettier-ignore
    // A picture of the screen covers it a moment later.
    await eventually(async () => {
      await run('xdotool', 'mousemove', 100, 80, pause, 'mousedown', 1, pause, moves.flat(2), 'mouseup', 1);
      return eventually(() => isRecording(target), 'the recording of the area', 1000).catch(() => false);
    }, 'the recording of the area');
    await recordABit();
    await pressPanel('Stop');
    await eventually(() => films.length === 2, 'the second film');
    return { films, second, posted: postedAs('TsScreenRecorded').map((each) => each.path ?? null) };
  };
  const { films, second, posted } = await inWindows(t, scenario, folder);
  const [[screen], [area]] = films;
  assert.match(path.basename(screen), /^Screen Recording \d{4}-\d\d-\d\d at \d\d\.\d\d\.\d\d\.mp4$/);
  assert.deepStrictEqual([facts(screen), facts(area)], ['h264,1280,800', 'h264,300,200']);
  assert.deepStrictEqual(second, [[null]]);
  assert.deepStrictEqual(posted, [null, screen, area]);
  assert.strictEqual(fs.readdirSync(folder).length, 2);
});

inWindows.test('no film is made when the user cancels, or the screen can’t be recorded', async (fixture) => {
  const { captureLog, env, equal, eventually, films, fs, home, log, pressPanel, record } = fixture;
  const folder = `${home}/films`;
  captureLog();
  record(folder);
  await pressPanel('Cancel');
  await eventually(() => films.length === 1, 'the end');
  fs.writeFileSync(`${home}/file`, '');
  record(`${home}/file`);
  const { PATH } = env;
  env.PATH = '/nowhere';
  record(folder);
  env.PATH = PATH;
  await eventually(() => films.length === 3, 'the refusals');
  env.XDG_SESSION_TYPE = 'wayland';
  record(folder);
  await eventually(() => films.length === 4, 'all ends');
  equal(films, [[null], [null], [null], [null]]);
  const warnings = log(2).filter((text) => text.startsWith("Couldn't record"));
  equal(warnings, [
    "Couldn't record the screen: there is no folder for it",
    "Couldn't record the screen: ffmpeg is not installed",
    "Couldn't record the screen: screen capture is not available under Wayland",
  ]);
  equal(fs.existsSync(folder) ? fs.readdirSync(folder) : [], []);
});

test('the recorder program ends with the process that started it', async (t) => {
  const scenario = async ({ eventually, isRecording, pressPanel, record, run }, target) => {
    record(target);
    await pressPanel('Whole Screen');
    await eventually(() => isRecording(target), 'the recording');
    return (await run('pgrep', '-P', process.pid, 'ffmpeg')).trim();
  };
  const recorder = await inWindows(t, scenario, temporaryDirectory(t));
  assert.match(recorder, /^\d+$/);
  const state = () => spawnSync('ps', ['-o', 'stat=', '-p', recorder], { encoding: 'utf8' }).stdout;
  await eventually(() => /^(Z|$)/.test(state()), 'the end of the recorder');
});

scenarios().test('without a display the callbacks receive null', async ({ equal, eventually, home, native, run }) => {
  const image = `${home}/a.png`;
  await run('convert', '-size', '30x20', 'xc:red', image);
  const answers = [];
  const answered = (...args) => answers.push(args);
  native.annotateImage(image, answered);
  native.takeScreenRecording(home, answered);
  native.quickLook(Buffer.alloc(8), JSON.stringify([image]), 0, answered);
  native.showFileDialog(Buffer.alloc(8), '{}', answered);
  await eventually(() => answers.length === 4, 'the answers');
  equal(answers, Array(4).fill([null]));
});
