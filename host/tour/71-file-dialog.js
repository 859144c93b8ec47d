'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');

const { ok, notOffered, failed } = require('./rows');

exports.title = 'File dialog';
exports.needs = ['display', 'module'];

function makeFiles() {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tour-'));
  fs.mkdirSync(path.join(folder, 'Invoices'));
  for (const [name, size] of [
    ['Agenda.txt', 900],
    ['Holiday 9.png', 70000],
    ['Holiday 10.png', 80000],
    ['Report.pdf', 2500000],
  ]) {
    fs.writeFileSync(path.join(folder, name), Buffer.alloc(size));
  }
  return folder;
}

// Asks, has the keyboard answer, and gives the answer.
async function ask(stage, options, ...keys) {
  let answer;
  stage.module.showFileDialog(stage.window, JSON.stringify(options), (paths) => (answer = paths ?? 'nothing'));
  const find = async () => (await stage.run('xdotool', 'search', '--onlyvisible', '--name', options.title))?.trim();
  const id = await stage.until(find);
  if (!id) return 'no panel';
  await stage.run('xdotool', 'windowactivate', '--sync', id);
  // Files appear a little later than their panel.
  await stage.run('sleep', '0.5');
  for (const place of options.clicks ?? []) {
    // By one program: this one waits as long as the button is down.
    const press = ['sleep', 0.2, 'mousedown', 1, 'sleep', 0.1, 'mouseup', 1, 'sleep', 0.2];
    await stage.run('xdotool', ...['mousemove', '--window', id, ...place, ...press].map(String));
  }
  const picture = await stage.screenshot(options.type);
  await stage.run('xdotool', 'key', '--delay', '80', ...keys);
  await stage.until(() => answer !== undefined);
  return { answer, picture };
}

exports.run = async (stage) => {
  if ((await stage.run('xdotool', 'version')) === undefined)
    return notOffered(exports.title, 'xdotool is not installed');
  const folder = makeFiles();
  try {
    const filters = [
      { name: 'All Files', extensions: ['*'] },
      { name: 'Pictures', extensions: ['png', 'jpg'] },
    ];
    const opened = await ask(
      stage,
      {
        type: 'open',
        title: 'Attach Files',
        message: 'Choose what goes along',
        folder,
        filters,
        'allow-multiple?': true,
        clicks: [[100, 140]],
      },
      'Return',
    );
    const saved = await ask(stage, { type: 'save', title: 'Save Attachment', folder, name: '../Letter.eml' }, 'Return');
    const isRight = [opened, saved].every(({ answer }) => answer?.startsWith('["'));
    const detail = [opened, saved].map(({ answer, picture }) => `${answer} (${picture ?? 'no picture'})`).join(', ');
    return (isRight ? ok : failed)(exports.title, detail.replaceAll(folder, '…'));
  } finally {
    fs.rmSync(folder, { recursive: true });
  }
};
