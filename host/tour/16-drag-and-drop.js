'use strict';

const path = require('path');

const { ok, failed } = require('./rows');

exports.title = 'Drag and drop';
exports.needs = ['display', 'module'];

const files = ['README.md', 'LICENSE'].map((name) => path.resolve(__dirname, '..', '..', name));

/** The upper left corner of the window's content on the screen. */
async function placeOf(stage) {
  const { systemWindow } = stage.host.windowInfo(stage.window);
  const geometry = await stage.run('xwininfo', '-id', String(systemWindow));
  const number = (name) => Number(geometry?.match(`${name}: +(-?\\d+)`)?.[1]);
  return { left: number('Absolute upper-left X'), top: number('Absolute upper-left Y') };
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
  return [
    (byHand >= files.length && phases.includes('perform-drag-operation') ? ok : failed)(
      'Files dragged here',
      `${outcome}, by another process; script received ${phases.join(', ')}; ${picture}`,
    ),
    (byScript && dropped() === byHand + 1 ? ok : failed)('Files dropped by script', `the page answers ${byScript}`),
  ];
};
