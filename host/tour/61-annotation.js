'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');

const { ok, failed, notOffered } = require('./rows');

exports.title = 'Annotating an image';
exports.needs = ['display', 'module'];

// In the window, from its upper left: a button's middle by its place in the row, and below the row the image.
const button = (place) => [16 + 35 + place * 78, 30];
const tools = { arrow: 0, box: 1, text: 2, blur: 3, undo: 4 };
const imageTop = 60;

class Editor {
  constructor(stage, id) {
    this.stage = stage;
    this.id = id;
  }

  do = (...words) => this.stage.run('xdotool', ...words.map(String));

  press = (place) => this.do(...this.stage.clickIn(this.id, place));

  tool = (name) => this.press(button(tools[name]));

  async drag([fromX, fromY], [toX, toY]) {
    const move = (x, y) => ['mousemove', '--window', this.id, x, imageTop + y, 'sleep', 0.1];
    await this.do(...move(fromX, fromY), 'mousedown', 1, ...move((fromX + toX) / 2, (fromY + toY) / 2));
    await this.do(...move(toX, toY), 'mouseup', 1, 'sleep', 0.2);
  }
}

async function annotate(stage, file) {
  const saved = new Promise((resolve) => stage.module.annotateImage(file, resolve));
  const name = path.basename(file);
  const id = await stage.until(async () =>
    (await stage.run('xdotool', 'search', '--onlyvisible', '--name', `^${name}$`))?.trim(),
  );
  if (!id) return failed('Annotation', 'no editor');
  await stage.run('xdotool', 'windowactivate', '--sync', id);
  const editor = new Editor(stage, id);
  await editor.drag([100, 320], [290, 210]);
  await editor.tool('box');
  await editor.drag([300, 130], [600, 220]);
  await editor.tool('blur');
  await editor.drag([310, 140], [590, 210]);
  await editor.tool('text');
  await editor.press([60, imageTop + 350]);
  await editor.do('type', '--delay', '40', 'Keep this secret');
  await editor.do('key', 'Return');
  await editor.tool('box');
  await editor.drag([20, 20], [200, 100]);
  await editor.tool('undo');
  const picture = await stage.screenshot();
  const width = Number((await stage.run('xdotool', 'getwindowgeometry', '--shell', id)).match(/WIDTH=(\d+)/)[1]);
  await editor.press([width - 16 - 35, 30]);
  const copy = await Promise.race([saved, stage.until(() => false)]);
  return copy
    ? ok('Annotation', `arrow, box, blur, text, undo: ${path.basename(copy)}; ${picture ?? 'no picture'}`)
    : failed('Annotation', `nothing was saved; ${picture}`);
}

exports.run = async (stage) => {
  if ((await stage.run('xdotool', 'version')) === undefined) {
    return notOffered('Annotation', 'xdotool is not installed');
  }
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tour-'));
  try {
    const file = path.join(folder, 'account.png');
    const draw = ['-size', '700x400', 'gradient:#eef3f7-#c9d6e2', '-pointsize', '32'];
    const words = ['-annotate', '+60+180', 'Password:', '-annotate', '+320+180', 'correct horse 42'];
    if ((await stage.run('convert', ...draw, ...words, file)) === undefined) {
      return notOffered('Annotation', 'ImageMagick is not installed');
    }
    return await annotate(stage, file);
  } finally {
    fs.rmSync(folder, { recursive: true, force: true });
  }
};
