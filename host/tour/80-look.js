'use strict';

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

// Each window with its place and a key that closes it.
const support = {
  title: 'Support and Feedback',
  open: ({ module }) => module.openSupportAndFeedbackWindow('Zoë Lee', 'zoe@example.org', 'Hello', null, null),
  at: [40, 30],
};
const contacts = {
  title: 'Pick Recipients',
  open: ({ module, window }) => module.pickEmailAddresses(window, picker),
  at: [640, 30],
};
const update = { title: 'Software Update', open: ({ module }) => module.checkForUpdates(false, false), at: [60, 20] };

const pictures = [
  { name: 'light', windows: [contacts, support] },
  { name: 'dark', isDark: true, windows: [contacts, support] },
  { name: 'light-2x', scale: 2, windows: [update] },
  { name: 'dark-2x', isDark: true, scale: 2, windows: [update] },
];

async function show(stage, { title, open, at }) {
  open(stage);
  const find = async () =>
    (await stage.run('xdotool', 'search', '--onlyvisible', '--name', `^${title}$`))?.trim().split('\n').at(-1);
  const id = await stage.until(find, 15000);
  if (!id) return false;
  await stage.run('xdotool', 'windowactivate', '--sync', id, 'windowmove', id, ...at.map(String), 'sleep', '0.5');
  return true;
}

async function picture(stage, look, { name, windows, ...values }) {
  const isSet = await look.set(values);
  let areShown = true;
  for (const window of windows) areShown &&= await show(stage, window);
  const file = await stage.screenshot(name);
  for (const { title } of windows) {
    await stage.run('xdotool', 'search', '--onlyvisible', '--name', `^${title}$`, 'windowactivate', '--sync');
    stage.module.closeKeyWindow();
    await stage.until(async () => !(await stage.run('xdotool', 'search', '--onlyvisible', '--name', `^${title}$`)));
  }
  return isSet && areShown && file;
}

exports.run = async (stage) => {
  const missing = await Look.missing(stage);
  if (missing) return notOffered(exports.title, missing);
  const look = new Look(stage);
  try {
    const files = [];
    for (const each of pictures) files.push(await picture(stage, look, each));
    return (files.every(Boolean) ? ok : failed)(exports.title, files.join(', '));
  } finally {
    look.end();
  }
};
