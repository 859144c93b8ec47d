'use strict';

// File dialogs: the desktop's, shown by the real portal, and GNUstep's where there is none. With real clicks and keys.

const { assert, execute, fs, path, spawn, test } = require('./support');
const { endWith, eventually, scenarios, startBus, temporaryDirectory, useSession } = require('./support');
const { startPerson } = require('./support/dialogs');

const session = useSession();

const title = 'Files';
const portal = 'org.freedesktop.portal.Desktop';

function makeFiles(t) {
  const folder = temporaryDirectory(t);
  for (const name of ['a.png', 'b.PNG', 'Report.pdf']) fs.writeFileSync(path.join(folder, name), name);
  return folder;
}

const ask = (person, options) =>
  person.tell(
    ({ native, report, window }, text) => native.showFileDialog(window, text, report),
    JSON.stringify({ title, ...options }),
  );

/** The X window of the desktop's dialog, once it is there; undefined for `isThere` false, once it is gone. */
async function dialog(person, isThere = true, name = title) {
  const find = async () =>
    (await person.xdotool('search', '--onlyvisible', '--name', `^${name}$`).catch(() => '')).trim();
  let id;
  await eventually(async () => ((id = await find()) !== '') === isThere, `${isThere ? '' : 'no '}dialog “${name}”`);
  return id;
}

async function open(person, options) {
  await ask(person, options);
  const id = await dialog(person);
  await person.xdotool('windowactivate', '--sync', id);
  return id;
}

/** Types until a number of reports has come: a dialog misses keys before it has the keyboard. */
const answer = (person, number, ...keys) =>
  person.until(
    () => person.reports.length > number,
    () => person.key(...keys).catch(() => {}),
    `report ${number}`,
  );

/** Types a path into the entry that "/" opens. */
async function enterPath(person, file) {
  await person.key('ctrl+a');
  await person.type(file);
  await person.key('Return');
}

/** Follows the portal's requests. Gives a function that returns those so far, with their options. */
async function watchPortal(t) {
  const address = session.env.DBUS_SESSION_BUS_ADDRESS;
  const match = "type='method_call',interface='org.freedesktop.portal.FileChooser'";
  const monitor = spawn('busctl', [`--address=${address}`, '--json=short', `--match=${match}`, 'monitor']);
  endWith(t, monitor);
  let output = '';
  for (const stream of [monitor.stdout, monitor.stderr]) {
    stream.setEncoding('utf8').on('data', (text) => (output += text));
  }
  await eventually(() => output.includes('Monitoring'), 'the monitor listens');
  const read = (line) => {
    const { member, payload } = JSON.parse(line);
    const [parent, shownTitle, options] = payload.data;
    const values = Object.entries(options).map(([key, { data }]) => [key, data]);
    return { member, parent, title: shownTitle, ...Object.fromEntries(values) };
  };
  const isRequest = (line) => line.includes('"interface":"org.freedesktop.portal.FileChooser"');
  return () => output.split('\n').filter(isRequest).map(read);
}

const bytes = (text) => [...Buffer.from(`${text}\0`)];

test('the dialog’s options become those of the portal’s request', async (t) => {
  const folder = makeFiles(t);
  const person = await startPerson(t);
  const requests = await watchPortal(t);
  const images = { name: 'Images', extensions: ['png', '.j2k'] };
  const globs = ['Images', [[0, '*.[pP][nN][gG]'], [0, '*.[jJ]2[kK]']]]; // prettier-ignore
  const everything = ['All', [[0, '*']]];
  const table = [
    [{ folder, filters: [images, { name: 'All', extensions: ['*'] }] }, { member: 'OpenFile', multiple: false, directory: false, current_folder: bytes(folder), current_filter: globs, filters: [globs, everything] }],
    [{ 'allow-multiple?': true, 'button-label': 'Attach' }, { member: 'OpenFile', multiple: true, accept_label: 'Attach' }],
    [{ 'choose-folders?': true, 'choose-files?': false }, { directory: true }],
    [{ 'choose-folders?': true }, { directory: false }],
    [{ type: 'save', folder, name: '../../etc/passwd', filters: [images] }, { member: 'SaveFile', current_name: '-..-etc-passwd.png', current_file: undefined, directory: undefined }],
    [{ type: 'save', folder, name: 'b.PNG', filters: [images] }, { current_name: 'b.PNG', current_file: bytes(`${folder}/b.PNG`) }],
    [{ type: 'save', folder: '/none', name: '..' }, { current_folder: undefined, current_name: undefined }],
    [{ folder: 7, name: {}, filters: [1, {}], 'allow-multiple?': 'no', type: [] }, { member: 'OpenFile', multiple: false, filters: [['*', [[0, '*']]]] }],
  ]; // prettier-ignore
  await person.tell(({ host, native, report }, all) => {
    for (const [number, [options]] of all.entries()) {
      const window = host.createWindow({ title: `Window ${number}` });
      native.showFileDialog(window, JSON.stringify({ title: `Files ${number}`, ...options }), report);
    }
  }, table);
  for (const [number, [, expected]] of table.entries()) {
    await dialog(person, true, `Files ${number}`);
    const find = () => requests().find((request) => request.title === `Files ${number}`);
    const seen = await eventually(find, 'the request');
    for (const [key, value] of Object.entries(expected)) assert.deepStrictEqual(seen[key], value, `${number} ${key}`);
    assert.match(seen.parent, /^x11:[0-9a-f]+$/);
  }
  // Each closed window answers its request.
  for (const number of table.keys()) await person.closeWindow(`Window ${number}`);
  await person.report(table.length - 1);
  assert.deepStrictEqual(person.reports, Array(table.length).fill(null));
});

test('files are chosen in the desktop’s dialog while the application goes on', async (t) => {
  const folder = makeFiles(t);
  const person = await startPerson(t);
  const id = await open(person, {});
  const [mail] = (await person.xdotool('search', '--onlyvisible', '--name', '^Mail$')).trim().split('\n');
  const { stdout } = await execute('xprop', ['-id', id, 'WM_TRANSIENT_FOR'], { env: person.environment });
  assert.strictEqual(parseInt(stdout.split('# ')[1], 16), Number(mail));
  await person.goesOn();

  const enter = () => enterPath(person, path.join(folder, 'Report.pdf'));
  await person.until(() => person.reports.length > 0, enter, 'report 0');
  assert.deepStrictEqual(JSON.parse(person.reports[0]), [path.join(folder, 'Report.pdf')]);
  await dialog(person, false);

  // Several: the folder first, then everything in it.
  await open(person, { 'allow-multiple?': true });
  let attempts = 0;
  // The dialog may have missed the path.
  const choose = () => (attempts++ % 4 === 0 ? enterPath(person, `${folder}/`) : person.key('ctrl+a', 'Return'));
  await person.until(() => person.reports.length > 1, choose, 'report 1');
  const several = ['Report.pdf', 'a.png', 'b.PNG'].map((name) => path.join(folder, name));
  assert.deepStrictEqual(JSON.parse(person.reports[1]).sort(), several);
});

test('saving gives the path that the user has accepted', async (t) => {
  const folder = makeFiles(t);
  const person = await startPerson(t);
  await open(person, { type: 'save', folder, name: 'new.pdf' });
  await answer(person, 0, 'Return');
  assert.deepStrictEqual(JSON.parse(person.reports[0]), [path.join(folder, 'new.pdf')]);
  await dialog(person, false);
});

test('every request is answered once: Escape’s, the second one of a window, and that of a closed window', async (t) => {
  const person = await startPerson(t);
  await open(person, {});
  await ask(person, { title: 'Second' });
  assert.strictEqual(await person.report(0), null);
  await answer(person, 1, 'Escape');
  await dialog(person, false);
  await ask(person, { title: 'Third' });
  await dialog(person, true, 'Third');
  await person.closeWindow('Mail');
  await person.report(2);
  await dialog(person, false, 'Third');
  assert.deepStrictEqual(person.reports, [null, null, null]);
});

// ---- GNUstep's panel

async function chooseInPanel(person, kind, name) {
  await person.window(kind);
  await person.type(name);
  await answer(person, person.reports.length, 'Return');
  await person.isGone(kind);
  return JSON.parse(person.reports.at(-1));
}

async function killPortal(person) {
  const call = ['call', 'org.freedesktop.DBus', '/', 'org.freedesktop.DBus', 'GetConnectionUnixProcessID', 's', portal];
  const { stdout } = await execute('busctl', [`--address=${session.env.DBUS_SESSION_BUS_ADDRESS}`, ...call]);
  process.kill(Number(stdout.split(' ')[1]), 'SIGKILL');
}

/** A process on a bus without a portal, and files to choose from. */
async function startWithoutPortal(t) {
  const { address } = await startBus(t, temporaryDirectory(t));
  const env = { DBUS_SESSION_BUS_ADDRESS: address };
  return { env, folder: makeFiles(t), person: await startPerson(t, { env }) };
}

test('without a portal, and when it is gone, GNUstep’s panel takes its place', async (t) => {
  const { folder, person } = await startWithoutPortal(t);
  await ask(person, { folder });
  await person.window('NSOpenPanel');
  await person.goesOn();
  assert.deepStrictEqual(await chooseInPanel(person, 'NSOpenPanel', 'Report.pdf'), [path.join(folder, 'Report.pdf')]);
  await person.returnToMail();

  await ask(person, { type: 'save', folder, name: 'x' });
  await person.window('NSSavePanel');
  await answer(person, 1, 'Return');
  assert.deepStrictEqual(JSON.parse(person.reports[1]), [path.join(folder, 'x')]);
  await person.returnToMail();

  await ask(person, { folder });
  await person.window('NSOpenPanel');
  await answer(person, 2, 'Escape');
  assert.strictEqual(person.reports[2], null);

  const other = await startPerson(t);
  await open(other, { folder });
  await killPortal(other);
  assert.deepStrictEqual(await chooseInPanel(other, 'NSOpenPanel', 'Report.pdf'), [path.join(folder, 'Report.pdf')]);
  assert.ok((await other.log()).some((text) => /No file dialog of the desktop's: the portal went away/.test(text)));
});

test('a portal that never replies gives way to GNUstep’s panel', async (t) => {
  const { env, folder, person } = await startWithoutPortal(t);
  const silent = await scenarios({ env }).resident(t);
  await silent.tell(({ bus }) => bus.setPortalScheme(0));
  silent.process.kill('SIGSTOP');
  await ask(person, { folder });
  await person.goesOn();
  assert.deepStrictEqual(await chooseInPanel(person, 'NSOpenPanel', 'Report.pdf'), [path.join(folder, 'Report.pdf')]);
});

test('requests that can’t be shown are answered, and the log says why', async (t) => {
  const cases = [['none'], [{}], ['window', '[]'], ['window', '{"title']];
  const person = await startPerson(t);
  await person.tell(({ native, report, window }, all) => {
    for (const [name, options = '{}'] of all) {
      const handle = { window, none: Buffer.alloc(8) }[name] ?? {};
      native.showFileDialog(handle, options, (...values) => report(values));
    }
  }, cases);
  await person.report(cases.length - 1);
  assert.deepStrictEqual(person.reports, Array(cases.length).fill([null])); // prettier-ignore
  const log = await person.log();
  for (const sentence of [/Need a window to choose files for/, /Couldn't parse file dialog options/]) {
    assert.strictEqual(log.filter((text) => sentence.test(text)).length, 2);
  }
});
