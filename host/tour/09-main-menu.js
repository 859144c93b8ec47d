'use strict';

const path = require('path');

const { ok, notOffered, failed } = require('./rows');

exports.title = 'Main menu updates';
exports.needs = ['display', 'module'];

const viewMenu = 3;
const reload = 400;
const hideItem = 403;
const showToolbar = 404;

// GNUstep may miss a click without any length.
const click = ['mousedown', 1, 'sleep', '0.1', 'mouseup', 1];

// Opens a menu of the window's bar, takes a picture and closes the menu. Script is blocked while the menu is open, so one
// external program does all of that.
async function lookAtMenu(stage, index) {
  const { systemWindow, menuBar } = stage.host.windowInfo(stage.window);
  const picture = path.join(stage.screenshots, `${stage.scene}.png`);
  const to = (x, y) => ['mousemove', '--window', systemWindow, x, y, 'sleep', '0.2'];
  const hasEyes = (await stage.run('import', '-version')) !== undefined;
  const takePicture = ['exec', '--sync', '--args', 4, 'import', '-window', 'root', picture];
  const look = ['sleep', '0.3', ...(hasEyes ? takePicture : [])];
  const { x, y } = menuBar[index];
  const close = [to(x, y + 400), click, 'sleep', '0.2', click];
  await stage.run('xdotool', ...[to(x, y), click, look, close].flat(2).map(String));
  return hasEyes ? path.basename(picture) : 'no picture: ImageMagick is missing';
}

exports.run = async (stage) => {
  const { host, module } = stage;
  const news = [];
  const renew = ({ name, userInfo }) => {
    if (name === 'TsAppMenuWillOpen') news.push(`“${userInfo.menu}” opens`);
    if (name === 'TsAppMenuDidClose') news.push('closes');
    // Updated in the last moment, as script does with its tabs.
    module.updateMainMenuMenuItemWithCommandId(reload, JSON.stringify({ title: 'Reload “Inbox”' }));
  };

  const updates = [
    module.updateMainMenuMenuItemWithCommandId(
      showToolbar,
      JSON.stringify({ title: 'Hide Toolbar', accelerator: 'Cmd+Shift+B' }),
    ),
    module.updateMainMenuMenuItemWithCommandId(hideItem, JSON.stringify({ visible: false })),
    module.updateMainMenuMenuItem(
      JSON.stringify([viewMenu, host.localized('Actual Size'), 1]),
      JSON.stringify({ title: 'Larger' }),
    ),
    module.updateMainMenuMenuItem('[99]', '{}'),
  ];
  if (updates.join() !== '1,1,1,0') return failed('Main menu updates', `the updates answered ${updates}`);
  if ((await stage.run('xdotool', 'version')) === undefined) return notOffered('Menu news', 'xdotool is not installed');

  module.setupMenuWillShowNotification();
  host.on('notification', renew);
  await stage.focusWindow();
  const picture = await lookAtMenu(stage, viewMenu);
  await stage.until(() => news.length >= 2);
  host.off('notification', renew);

  const titles = host.mainMenuDescription()[viewMenu].items.map(({ title }) => title);
  const change = ok(
    'Main menu updates',
    `“${titles[0]}”, “${titles[2]}” and “${titles[5]}”, one item hidden; ${picture}`,
  );
  return [
    change,
    news.length === 2 ? ok('Menu news', news.join(', ')) : failed('Menu news', news.join(', ') || 'none'),
  ];
};
