'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');

const { ok, failed, notOffered } = require('./rows');

exports.title = 'Screen recording';
exports.needs = ['display', 'module'];

const title = 'Screen Recording';

// In the panel, from its upper left.
const area = [16 + 124 + 58, 66];
const stop = [16 + 58, 66];

const move = (x, y) => ['mousemove', x, y, 'sleep', 0.2].map(String);

async function panel(stage) {
  const search = async () => (await stage.run('xdotool', 'search', '--onlyvisible', '--name', `^${title}$`))?.trim();
  const id = await stage.until(search);
  if (!id) return undefined;
  const press = (x, y) =>
    ['mousemove', '--window', id, x, y, 'sleep', 0.3, 'mousedown', 1, 'sleep', 0.1, 'mouseup', 1, 'sleep', 0.2].map(
      String,
    );
  return { press: ([x, y]) => stage.run('xdotool', ...press(x, y)) };
}

async function chooseArea(stage) {
  const choice = await panel(stage);
  if (!choice) return undefined;
  await choice.press(area);
  await new Promise((resolve) => setTimeout(resolve, 1200));
  await stage.run('xdotool', ...move(240, 200), 'mousedown', '1', ...move(300, 300), ...move(740, 500));
  const picture = await stage.screenshot('area');
  await stage.run('xdotool', 'mouseup', '1');
  return picture;
}

async function record(stage, folder) {
  const recorded = new Promise((resolve) => stage.module.takeScreenRecording(folder, resolve));
  // A refusal comes at once, the panel otherwise.
  if ((await Promise.race([recorded, panel(stage)])) === null) return notOffered(title, 'the log says why');
  const picture = await chooseArea(stage);
  const recording = await stage.until(() => fs.readdirSync(folder).length > 0);
  if (!recording) return failed(title, 'it does not begin');
  for (let x = 300; x < 700; x += 50) await stage.run('xdotool', ...move(x, 400));
  const running = await stage.screenshot();
  await (await panel(stage)).press(stop);
  const film = await Promise.race([recorded, stage.until(() => false, 20000)]);
  if (!film) return failed(title, 'there is no film');
  const facts = await stage.run(
    'ffprobe',
    '-v',
    'error',
    '-show_entries',
    'stream=codec_name,width,height,duration',
    '-of',
    'csv=p=0',
    film,
  );
  return ok(title, `${path.basename(film)}: ${facts?.trim()}; ${[picture, running].join(', ')}`);
}

exports.run = async (stage) => {
  if ((await stage.run('xdotool', 'version')) === undefined) return notOffered(title, 'xdotool is not installed');
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tour-'));
  try {
    return await record(stage, folder);
  } finally {
    fs.rmSync(folder, { recursive: true, force: true });
  }
};
