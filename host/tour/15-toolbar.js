'use strict';

const Look = require('./Look');
const { ok, notOffered, failed } = require('./rows');

exports.title = 'Toolbar';
exports.needs = ['display', 'module'];

const button = (identifier, label, image) => ({
  identifier,
  label,
  'image-name': image,
  'button?': true,
  'default?': true,
});

const definition = JSON.stringify({
  identifier: 'mail',
  items: [
    button('compose', 'Compose', 'TB_Compose'),
    button('archive', 'Archive', 'TB_Archive'),
    { type: 'flexible-space', 'default?': true },
    {
      identifier: 'inbox',
      label: 'Inbox',
      'image-name': 'TB_Inbox',
      'default?': true,
      'selectable?': true,
      'selected?': true,
    },
  ],
  options: { 'allows-user-customization?': true },
});

const windowId = 1;

// The first item is at the left end, below the menu, and as wide as a button with its margins.
const composeButton = [32, 45];

async function clickInWindow(stage, handle, [x, y]) {
  const { systemWindow } = stage.host.windowInfo(handle);
  // A late answer of the window manager to the closing of the previous window may move the focus.
  await stage.run('xdotool', 'windowactivate', String(systemWindow));
  await stage.until(() => stage.host.windowInfo(handle).isKey, 1000);
  const move = ['mousemove', '--window', String(systemWindow), String(x), String(y), 'sleep', '0.1'];
  // GNUstep's buttons miss a press without any length.
  await stage.run('xdotool', ...move, 'mousedown', '1', 'sleep', '0.1', 'mouseup', '1');
}

/** Waits until the right end of the strip below the menu bar shows an item: the page has no text there. */
function toolbarIsDrawn(stage, handle) {
  const { systemWindow } = stage.host.windowInfo(handle);
  const strip = ['-crop', '150x60+400+24', '-format', '%k', 'info:'];
  return stage.until(async () => Number(await stage.run('import', '-window', String(systemWindow), ...strip)) > 30);
}

/** Opens a window with a toolbar in one look. Gives its handle, its picture, and whether the picture shows the toolbar. */
async function show(stage, look) {
  const handle = stage.host.createWindow({ title: look, width: 560, height: 240 });
  await stage.until(() => stage.host.windowInfo(handle).isKey);
  stage.module.addToolbarToWindow(handle, windowId, definition);
  stage.module.showAddTabButton(windowId);
  stage.module.validateToolbarItems(windowId);
  const isDrawn = await toolbarIsDrawn(stage, handle);
  const picture = await stage.screenshot(look);
  return { handle, picture, isDrawn };
}

/** The toolbar on a dark desktop, for a moment. */
async function showDark(stage) {
  const missing = await Look.missing(stage);
  if (missing) return notOffered('Toolbar, dark', missing);
  const look = new Look(stage);
  try {
    const isSet = await look.set({ isDark: true });
    const dark = await show(stage, 'dark');
    stage.host.closeWindow(dark.handle);
    return (isSet && dark.isDrawn ? ok : failed)('Toolbar, dark', dark.picture);
  } finally {
    look.end();
  }
}

async function palette(stage, handle) {
  stage.module.customizeToolbar(windowId);
  const opened = await stage.until(() => !stage.host.windowInfo(handle).isKey);
  await new Promise((resolve) => setTimeout(resolve, 300));
  const picture = await stage.screenshot('palette');
  stage.module.closeKeyWindow();
  return (opened ? ok : failed)('Toolbar palette', `${picture}`);
}

exports.run = async (stage) => {
  const clicks = [];
  stage.module.setToolbarCallbackFunctions(
    (_, item) => item !== 'archive',
    (id, item) => clicks.push(`${item} in window ${id}`),
    (id) => clicks.push(`add tab in window ${id}`),
  );
  const dark = await showDark(stage);
  await stage.until(() => !stage.module.isDarkMode());
  const light = await show(stage, 'light');
  const toolbar = (light.isDrawn ? ok : failed)('Toolbar', `${light.picture}; script has disabled “Archive”`);
  const clicked = await stage.until(async () => {
    await clickInWindow(stage, light.handle, composeButton);
    return stage.until(() => clicks.length > 0, 500);
  });
  const hands = await stage.run('xdotool', 'version');
  const click = hands
    ? (clicked ? ok : failed)('Toolbar click', clicks[0] ?? 'nothing arrived')
    : notOffered('Toolbar click', 'xdotool is not installed');
  const palettes = await palette(stage, light.handle);
  stage.host.closeWindow(light.handle);
  await stage.focusWindow();
  return [dark, toolbar, click, palettes];
};
