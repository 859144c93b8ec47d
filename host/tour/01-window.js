'use strict';

const { ok, failed } = require('./rows');

exports.title = 'Window and main menu';
exports.needs = ['display'];

exports.run = async (stage) => {
  const { host } = stage;
  stage.window = host.createWindow({ title: 'TessaroNative', width: 820, height: 460 });
  if (!(await stage.until(() => host.windowInfo(stage.window).isVisible))) {
    return failed('Window', 'it does not come on screen');
  }
  // The window is drawn after the window manager has decorated and placed it.
  await stage.focusWindow();
  await stage.windowIsDrawn();
  const picture = await stage.screenshot();
  const { width, height } = host.windowInfo(stage.window).frame;
  const menus = host.mainMenuDescription().map(({ title }) => title);
  return [
    ok(
      'Window',
      `${width} × ${height} on display ${process.env.DISPLAY}, ${picture ?? 'no picture: ImageMagick is missing'}`,
    ),
    ok('Main menu', menus.join(', ')),
  ];
};
