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

/** Opens a dialog, types `text` into it, accepts, and gives the answer. */
async function ask(stage, options, text) {
  let answer;
  stage.module.showFileDialog(stage.window, JSON.stringify(options), (paths) => (answer = paths ?? 'nothing'));
  // The first request starts the desktop's portal.
  const find = async () => (await stage.run('xdotool', 'search', '--onlyvisible', '--name', options.title))?.trim();
  const id = await stage.until(find);
  if (!id) return { answer: 'no dialog' };
  await stage.run('xdotool', 'windowactivate', '--sync', id);
  let picture;
  // A dialog that has just appeared misses keys.
  for (let i = 0; i < 5 && answer === undefined; ++i) {
    if (text) await stage.run('xdotool', 'key', 'ctrl+a', 'type', '--delay', '40', text);
    picture ??= await stage.screenshot(options.type);
    await stage.run('xdotool', 'key', 'Return');
    await stage.until(() => answer !== undefined, 3000);
  }
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
    const open = { type: 'open', title: 'Attach Files', folder, filters, 'button-label': 'Attach' };
    const opened = await ask(stage, open, path.join(folder, 'Report.pdf'));
    const saved = await ask(stage, { type: 'save', title: 'Save Attachment', folder, name: '../Letter.eml' });
    const isRight = [opened, saved].every(({ answer }) => answer?.startsWith('["'));
    const detail = [opened, saved].map(({ answer, picture }) => `${answer} (${picture ?? 'no picture'})`).join(', ');
    return (isRight ? ok : failed)(exports.title, detail.replaceAll(folder, '…'));
  } finally {
    fs.rmSync(folder, { recursive: true });
  }
};
