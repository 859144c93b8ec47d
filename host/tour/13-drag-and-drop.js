'use strict';

const { spawn } = require('child_process');
const path = require('path');

const { ok, failed } = require('./rows');

exports.title = 'Drag and drop';
exports.needs = ['display', 'module'];

const files = ['README.md', 'LICENSE'].map((name) => path.resolve(__dirname, '..', '..', name));

/** Where the window's inside is on the screen. */
async function placeOf(stage) {
  const { systemWindow } = stage.host.windowInfo(stage.window);
  const geometry = await stage.run('xwininfo', '-id', String(systemWindow));
  const number = (name) => Number(geometry?.match(`${name}: +(-?\\d+)`)?.[1]);
  return { left: number('Absolute upper-left X'), top: number('Absolute upper-left Y'), height: number('Height') };
}

/** Drags the icon of the window's document to another program, with the mouse. Gives what that program got. */
async function dragTitle(stage) {
  const { host, module } = stage;
  host.setRepresentedFilename(stage.window, files[0]);
  module.setCurrentURL('https://mail.example.org/1', null, 'Lunch?');
  const program = path.join(__dirname, '..', 'receiveDrop.js');
  const place = [1060, 480];
  const other = spawn(process.execPath, [program, 'Another program', ...place, 'accept', 'text/uri-list'], {
    stdio: ['ignore', 'pipe', 'ignore'],
  });
  let said = '';
  other.stdout.on('data', (text) => (said += text));
  try {
    await stage.until(() => stage.run('xdotool', 'search', '--onlyvisible', '--name', 'Another program'));
    const { accessories, content } = host.windowInfo(stage.window);
    const icon = accessories.at(-1);
    const { left, top, height } = await placeOf(stage);
    const mouse = (...args) => stage.run('xdotool', ...args.map(String));
    const press = [left + icon.x + icon.width / 2 - content.x, top + height - (icon.y + icon.height / 2 - content.y)];
    await mouse(
      'mousemove',
      ...press.map(Math.round),
      'sleep',
      0.2,
      'mousedown',
      1,
      'sleep',
      0.1,
      'mousemove_relative',
      6,
      6,
    );
    await mouse('mousemove', 1140, 580, 'sleep', 0.2, 'mousemove', 1150, 590, 'sleep', 0.2);
    const picture = await stage.screenshot('title');
    await mouse('mouseup', 1);
    await stage.until(() => said.endsWith('\n'));
    return { got: said && JSON.parse(said)?.contents['text/uri-list']?.trim(), picture };
  } finally {
    other.kill('SIGKILL');
    host.setRepresentedFilename(stage.window, '');
  }
}

exports.run = async (stage) => {
  const { host, module } = stage;
  const phases = [];
  module.setDragAndDropCallbackFunction((phase) => phases.push(phase));
  const { left, top } = await placeOf(stage);
  const outcome = await host.dragFiles(left + 200, top + 200, files);
  const dropped = () => host.windowInfo(stage.window).droppedFiles.length;
  await stage.until(() => dropped() >= files.length, 2000);
  const byHand = dropped();
  const byScript = module.dropFiles(stage.window, '{"x":10,"y":20}', JSON.stringify([__filename]));
  await stage.windowIsDrawn();
  const picture = await stage.screenshot();
  const title = await dragTitle(stage);
  return [
    (byHand >= files.length && phases.includes('perform-drag-operation') ? ok : failed)(
      'Files dragged here',
      `${outcome}, by another process; script heard ${phases.join(', ')}; ${picture}`,
    ),
    (byScript && dropped() === byHand + 1 ? ok : failed)('Files dropped by script', `the page answers ${byScript}`),
    (title.got === 'https://mail.example.org/1' ? ok : failed)(
      'The title dragged out',
      `another program got ${title.got}; ${title.picture}`,
    ),
  ];
};
