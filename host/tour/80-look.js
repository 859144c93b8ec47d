'use strict';

const os = require('os');
const path = require('path');

const Look = require('./Look');
const { ok, notOffered, failed } = require('./rows');

exports.title = 'The desktop’s look';
exports.needs = ['display', 'module'];

// The picker's window keeps the texts of its first opening, in an earlier scene.
const picker = JSON.stringify({
  'window-title': 'Pick Recipients',
  'accept-button-label': 'Add',
  'cancel-button-label': 'Cancel',
  'edit-in-contacts-button-label': 'Edit in Contacts…',
});

const image = path.join(__dirname, '..', '..', 'docs', 'images', 'tour.png');

// Every window of the module, with keys for the focus and the selection, and its place in the picture.
const windows = {
  support: {
    title: 'Support and Feedback',
    open({ module }) {
      module.openSupportAndFeedbackWindow('Zoë Lee', 'zoe@example.org', 'Hello', 'The list is empty.', null);
      module.attachFilesToSupportAndFeedbackWindow(JSON.stringify([image]));
    },
    keys: ['Tab', 'Tab'],
    at: [30, 30],
  },
  contacts: {
    title: 'Pick Recipients',
    open: ({ module, window }) => module.pickEmailAddresses(window, picker),
    keys: ['Tab', 'Down'],
    at: [640, 30],
  },
  update: { title: 'Software Update', open: ({ module }) => module.checkForUpdates(false, false), at: [60, 30] },
  preview: {
    title: 'tour.png',
    open: ({ module, window }) => module.quickLook(window, JSON.stringify([image]), 0, () => {}),
    end: 'Escape',
    at: [620, 30],
  },
  annotation: {
    title: 'tour.png',
    open: ({ module }) => module.annotateImage(image, () => {}),
    keys: ['Control_L+2', 'Tab'],
    end: 'Escape',
    at: [30, 30],
  },
  recorder: {
    title: 'Screen Recording',
    open: ({ module }) => module.takeScreenRecording(os.tmpdir(), () => {}),
    keys: ['Tab'],
    end: 'Escape',
    at: [700, 560],
  },
};

// Windows of one picture lie beside each other. At 2× a window has the display for itself.
const pictures = {
  1: [
    ['support', 'contacts'],
    ['update', 'preview'],
    ['annotation', 'recorder'],
  ],
};
pictures[2] = Object.keys(windows).map((name) => [name]);

const search = async (stage, title) =>
  (await stage.run('xdotool', 'search', '--onlyvisible', '--name', `^${title}$`))?.trim().split('\n').at(-1);

/** Waits until two pictures of a window in turn are the same. */
function isStill(stage, id) {
  let last;
  return stage.until(async () => {
    const now = await stage.run('import', '-window', id, '-format', '%# %k', 'info:');
    const isSame = now !== undefined && now === last && !now.endsWith(' 1');
    last = now;
    return isSame;
  });
}

async function show(stage, { title, open, keys = [], at }, isAlone) {
  open(stage);
  const id = await stage.until(() => search(stage, title), 15000);
  if (!id) return false;
  await stage.run(
    'xdotool',
    'windowactivate',
    '--sync',
    id,
    'windowmove',
    id,
    ...(isAlone ? [20, 20] : at).map(String),
  );
  if (keys.length > 0) await stage.run('xdotool', 'key', '--delay', '50', ...keys);
  return isStill(stage, id);
}

async function close(stage, { title, end }) {
  await stage.until(async () => {
    const id = await search(stage, title);
    if (!id) return true;
    await stage.run('xdotool', 'windowactivate', '--sync', id);
    if (end) await stage.run('xdotool', 'key', end);
    else stage.module.closeKeyWindow();
    return stage.until(async () => !(await search(stage, title)), 1000);
  });
}

async function picture(stage, name, windowNames) {
  const shown = windowNames.map((each) => windows[each]);
  let areShown = true;
  for (const window of shown) areShown = (await show(stage, window, shown.length === 1)) && areShown;
  const file = await stage.screenshot([name, ...windowNames].join('-'));
  for (const window of shown) await close(stage, window);
  return areShown ? file : undefined;
}

async function scene(stage, look, { isDark, scale }) {
  const name = `${isDark ? 'dark' : 'light'}-${scale}x`;
  const isSet = await look.set({ isDark, scale });
  const files = [];
  for (const windowNames of pictures[scale]) files.push(await picture(stage, name, windowNames));
  return (isSet && files.every(Boolean) ? ok : failed)(`${exports.title}, ${name}`, files.join(', '));
}

exports.run = async (stage) => {
  const missing = await Look.missing(stage);
  if (missing) return notOffered(exports.title, missing);
  const look = new Look(stage);
  const rows = [];
  try {
    for (const scale of [1, 2]) {
      for (const isDark of [false, true]) rows.push(await scene(stage, look, { isDark, scale }));
    }
    return rows;
  } finally {
    look.end();
  }
};
