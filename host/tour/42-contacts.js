'use strict';

const { once } = require('events');
const fs = require('fs');
const path = require('path');

const { ok, notOffered, failed } = require('./rows');

exports.title = 'Contacts';
exports.needs = ['display', 'module'];

const folder = () => path.join(process.env.HOME, 'GNUstep', 'Library', 'Addresses');

const isOwnSession = () =>
  process.env.TESSARO_SESSION !== undefined && process.env.HOME.startsWith(process.env.TESSARO_SESSION);

const person = (id, first, last, address) =>
  `{ Type = Person; UID = ${id}; FirstName = ${first}; LastName = ${last};
     Email = ({ ID = 1; Label = WorkEmail; Value = "${address}"; }); }`;

const records = [
  person(1, 'Ann', 'Adler', 'ann@example.org'),
  person(2, 'Bob', 'Baker', 'bob@example.org'),
  person(3, 'Carla', 'Cole', 'carla@example.org'),
  '{ Type = Group; UID = 4; GroupName = Choir; Members = (1, 3, 5); }',
  '{ Type = Group; UID = 5; GroupName = Basses; Members = (2); }',
];

// The contacts of a user of GNUstep's address manager.
function makeContacts() {
  fs.mkdirSync(folder(), { recursive: true });
  records.forEach((record, index) => fs.writeFileSync(path.join(folder(), `${index + 1}.mfaddr`), record));
  fs.writeFileSync(path.join(folder(), 'NEXTID'), String(records.length + 1));
}

const translations = {
  'window-title': 'Pick Recipients',
  'accept-button-label': 'Add',
  'cancel-button-label': 'Cancel',
  'edit-in-contacts-button-label': 'Edit in Contacts…',
};

// In the window's content, from its upper left: the first two addresses, and the button that accepts.
const firstAddress = [342, 56];
const secondAddress = [342, 78];
const accept = [455, 467];
const contentHeight = 500;

/** How far the menu, which the window has while it is the main one, moves the content. */
async function menuHeight(stage, id) {
  const height = async () =>
    Number((await stage.run('xdotool', 'getwindowgeometry', '--shell', id))?.match(/HEIGHT=(\d+)/)?.[1]);
  await stage.until(async () => (await height()) > contentHeight, 1000);
  return (await height()) - contentHeight;
}

async function pick(stage) {
  const { host, module } = stage;
  module.pickEmailAddresses(stage.window, JSON.stringify(translations));
  const id = await stage.until(async () =>
    (await stage.run('xdotool', 'search', '--onlyvisible', '--name', translations['window-title']))?.trim(),
  );
  if (!id) return failed('Contact picker', 'it does not appear');
  await stage.run('xdotool', 'windowactivate', '--sync', id);
  const menu = await menuHeight(stage, id);
  const click = ([x, y]) => stage.clickIn(id, [x, y + menu]);
  await stage.run('xdotool', ...click(firstAddress), 'keydown', 'Shift_L', ...click(secondAddress), 'keyup', 'Shift_L');
  const picture = await stage.screenshot();
  const picked = once(host, 'notification', { signal: AbortSignal.timeout(20000) });
  const [[{ userInfo }]] = await Promise.all([picked, stage.run('xdotool', ...click(accept))]);
  const addresses = JSON.parse(userInfo.addresses);
  const result = addresses.length === 2 ? ok : failed;
  return result('Contact picker', `two clicks and Add: ${addresses.join(', ')}; ${picture ?? 'no picture'}`);
}

exports.run = async (stage) => {
  if (!isOwnSession()) return notOffered('Contacts', 'your own are left alone');
  makeContacts();
  const choir = stage.module.recipientsForGroupName('Choir');
  const group =
    choir !== null && JSON.parse(choir).length === 3
      ? ok(
          'Contact group',
          `Choir is ${JSON.parse(choir)
            .map(({ name }) => name)
            .join(', ')}`,
        )
      : failed('Contact group', `Choir is ${choir}`);
  if ((await stage.run('xdotool', 'version')) === undefined) {
    return [group, notOffered('Contact picker', 'xdotool is not installed')];
  }
  return [group, await pick(stage)];
};
