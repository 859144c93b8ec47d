'use strict';

const { spawn } = require('child_process');

const { ok, failed, notOffered } = require('./rows');

exports.title = 'Pasteboard';
exports.needs = ['module', 'display'];

const foreign = 'copied in another program';

/** Another program puts a text on the clipboard; it has it until somebody else does. */
function copyElsewhere(text) {
  const program = spawn('xclip', ['-selection', 'clipboard', '-i'], { stdio: ['pipe', 'ignore', 'ignore'] });
  program.on('error', () => {});
  program.stdin.on('error', () => {});
  program.stdin.end(text);
}

exports.run = async (stage) => {
  if ((await stage.run('xclip', '-version')) === undefined) return notOffered(exports.title, 'xclip is missing');
  const { module } = stage;
  const paste = () => stage.run('xclip', '-selection', 'clipboard', '-o');
  copyElsewhere(foreign);
  await stage.until(async () => (await paste()) === foreign);
  // GNUstep's server notices the copy a moment later, without a notification, and drops anything written before that.
  await new Promise((resolve) => setTimeout(resolve, 300));
  const isSaved = module.saveGeneralPasteboard();
  const page = { title: 'Lunch?', account: 'ann@example.org', html: '<p>At <b>one</b>?</p>', url: 'tessaro://mail/1' };
  module.clipPage('clipboard', page);
  const clipped = await stage.until(async () => (await paste())?.startsWith('# Lunch? [ann@example.org]\n\nAt one?'));
  const isRestored = module.restoreGeneralPasteboard();
  const back = await stage.until(async () => (await paste()) === foreign);
  return [
    clipped
      ? ok('Page to the clipboard', 'another program pastes it as Markdown')
      : failed('Page to the clipboard', 'no'),
    isSaved && isRestored && back
      ? ok('Clipboard saved and restored', `“${foreign}” is back`)
      : failed('Clipboard saved and restored', `saved ${isSaved}, restored ${isRestored}`),
  ];
};
