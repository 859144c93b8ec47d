'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');

const { ok, notOffered, failed } = require('./rows');

exports.title = 'Support and feedback';
exports.needs = ['display', 'module'];

const name = 'TsSupportAndFeedbackMessageNotification';
// From its upper left.
const send = [489, 470];

exports.run = async (stage) => {
  if ((await stage.run('xdotool', 'version')) === undefined)
    return notOffered(exports.title, 'xdotool is not installed');
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tour-'));
  const file = path.join(folder, 'Screenshot.png');
  fs.writeFileSync(file, '');
  let message;
  const listen = (notification) => notification.name === name && (message = notification.userInfo);
  stage.host.on('notification', listen);
  try {
    stage.module.openSupportAndFeedbackWindow('Zoë Lee', 'zoe@example.org', 'Feedback', null, null);
    stage.module.attachFilesToSupportAndFeedbackWindow(JSON.stringify([file]));
    const id = await stage.until(async () =>
      (await stage.run('xdotool', 'search', '--onlyvisible', '--name', 'Support and Feedback'))?.trim(),
    );
    if (!id) return failed(exports.title, 'no window');
    await stage.run('xdotool', 'windowactivate', '--sync', id);
    await stage.run('xdotool', 'type', '--delay', '40', 'The new search is a joy.');
    const picture = await stage.screenshot();
    const click = ['mousemove', '--window', id, ...send, 'sleep', 0.2, 'mousedown', 1, 'sleep', 0.1, 'mouseup', 1];
    await stage.run('xdotool', ...click.map(String));
    await stage.until(() => message !== undefined);
    return message?.message === 'The new search is a joy.' && message.log !== undefined
      ? ok(exports.title, `the host gets “${message.message}” with 1 file and the log; ${picture ?? 'no picture'}`)
      : failed(exports.title, JSON.stringify(message));
  } finally {
    stage.host.off('notification', listen);
    fs.rmSync(folder, { recursive: true });
  }
};
