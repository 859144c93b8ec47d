'use strict';

const { ok, failed } = require('./rows');

exports.title = 'Windows';
exports.needs = ['display', 'module'];

async function switchWindows(stage) {
  const events = [];
  stage.module.setWindowNotificationCallbackFunction((event) => events.push(event));
  const other = stage.host.createWindow({ title: 'Compose', width: 420, height: 260 });
  await stage.until(() => stage.host.windowInfo(other).isKey);
  // The window manager may move the keyboard back and forth before it stays.
  const changesFrom = (first) => stage.until(() => events.includes('did-become-main', first));
  const isOpenReported = await changesFrom(0);
  const picture = await stage.screenshot();
  const opening = events.length;
  stage.module.closeKeyWindow();
  await stage.focusWindow();
  const told = isOpenReported && (await changesFrom(opening));
  return (told ? ok : failed)('Window events', `${events.join(', ')}; ${picture}`);
}

async function resize(stage) {
  const { width, height } = stage.host.windowInfo(stage.window).content;
  stage.module.resizeWindowContent(stage.window, 640, 300);
  const isResized = await stage.until(() => stage.host.windowInfo(stage.window).content.width === 640);
  stage.module.resizeWindowContent(stage.window, width, height);
  await stage.until(() => stage.host.windowInfo(stage.window).content.width === width);
  return (isResized ? ok : failed)('Content size', `${width} × ${height} to 640 × 300 and back`);
}

exports.run = async (stage) => [await switchWindows(stage), await resize(stage)];
