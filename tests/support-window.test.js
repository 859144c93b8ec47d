'use strict';

// The support and feedback window, with real clicks and keys.

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { eventually, temporaryDirectory } = require('./support/child');
const { startPerson } = require('./support/dialogs');
const { useSession } = require('./support/session');

const session = useSession();
const title = 'Support and Feedback';
const notification = 'TsSupportAndFeedbackMessageNotification';

const script = `host.on('notification', ({ name, userInfo }) => name === '${notification}' && report(userInfo));`;
const start = (t) => startPerson(t, session, script);

async function open(person, ...values) {
  await person.tell(`m.openSupportAndFeedbackWindow(${values.map((value) => JSON.stringify(value)).join()})`);
  await person.window(title);
}

async function contents(person) {
  const { views } = await person.window(title, () => true);
  const texts = views.filter(({ class: kind, text }) => /^NSText(Field|View)$/.test(kind) && !text.endsWith(':'));
  const list = views.find(({ rows }) => rows !== undefined).rows.map((row) => row.texts[0]);
  return [...texts.map(({ text }) => text), list];
}

const isEnabled = async (person, button) => (await person.button(title, button)).isEnabled;

test('a sent message reaches the host with its texts and attachments', async (t) => {
  const folder = temporaryDirectory(t);
  const files = ['a "1".txt', 'zoë.png', 'c'].map((name) => path.join(folder, name));
  for (const file of files) fs.writeFileSync(file, 'x');
  const person = await start(t);
  await open(
    person,
    'Zoë Lee',
    'zoe@example.org',
    null,
    null,
    JSON.stringify([files[0], folder, files[0], '/none', 7]),
  );
  assert.deepStrictEqual(await contents(person), ['Zoë Lee', 'zoe@example.org', '', '', ['a "1".txt']]);
  assert.strictEqual(await isEnabled(person, 'Send'), false);

  // The first empty field has the keyboard.
  await person.type('It crashes');
  await person.key('Tab');
  await person.type('When I click.');
  await person.key('Return');
  await person.type('Twice.');
  await eventually(() => isEnabled(person, 'Send'), 'Send can be clicked');
  await person.tell(`m.attachFilesToSupportAndFeedbackWindow(${JSON.stringify(JSON.stringify(files))})`);
  assert.deepStrictEqual(
    (await contents(person)).at(-1),
    files.map((file) => path.basename(file)),
  );

  await person.until(
    () => isEnabled(person, 'Remove'),
    async () => person.click((await person.row(title, 'zoë.png')).centre),
    'an attachment is selected',
  );
  await person.clickButton(title, 'Remove', async () => (await contents(person)).at(-1).length === 2);
  await person.clickButton(title, 'Send', () => person.reports.length > 0);
  const { log, attachments, ...texts } = await person.report(0);
  assert.deepStrictEqual(texts, {
    name: 'Zoë Lee',
    email: 'zoe@example.org',
    subject: 'It crashes',
    message: 'When I click.\nTwice.',
  });
  assert.deepStrictEqual(JSON.parse(attachments), [files[0], files[2]]);
  assert.match(fs.readFileSync(log, 'utf8'), /There is no file \/none to attach/);
  await person.isGone(title);
  assert.strictEqual(person.reports.length, 1);
});

test('opening the window again keeps its contents; cancelling clears them', async (t) => {
  const file = path.join(temporaryDirectory(t), 'a.txt');
  fs.writeFileSync(file, 'x');
  const person = await start(t);
  await open(person, 'A', 'a@x', 'First', 'Text', null);
  await open(person, 'B', 'b@x', 'Second', 'Other', JSON.stringify([file]));
  assert.deepStrictEqual(await contents(person), ['A', 'a@x', 'First', 'Text', ['a.txt']]);
  assert.strictEqual((await person.windows()).filter((window) => window.title === title).length, 1);
  await person.clickButton(
    title,
    'Cancel',
    async () => !(await person.windows()).some((window) => window.title === title),
  );

  await open(person, 'B', 'b@x', 'Second', null, null);
  assert.deepStrictEqual(await contents(person), ['B', 'b@x', 'Second', '', []]);
  await person.tell(`dialogs.closeWindow('${title}')`);
  await person.isGone(title);

  // Attaching opens it too.
  await person.tell(`m.attachFilesToSupportAndFeedbackWindow(${JSON.stringify(JSON.stringify([file]))})`);
  await person.window(title);
  assert.deepStrictEqual(await contents(person), ['', '', '', '', ['a.txt']]);
  assert.deepStrictEqual(person.reports, []);
});

const chooser = 'Attach Files';

async function openChooser(person) {
  const isOpen = () => person.xdotool('search', '--onlyvisible', '--name', chooser).then(Boolean, () => false);
  await person.clickButton(title, 'Attach Files...', isOpen);
  await person.xdotool('search', '--onlyvisible', '--name', chooser, 'windowactivate', '--sync');
  return isOpen;
}

test('files are chosen in a dialog, and the log is attached only if ticked', async (t) => {
  const file = path.join(temporaryDirectory(t), 'picture.png');
  fs.writeFileSync(file, 'x');
  const person = await start(t);
  await open(person, 'A', 'a@x', null, 'Text', null);
  await openChooser(person);
  await person.key('ctrl+a');
  await person.type(file);
  await person.until(
    async () => (await contents(person)).at(-1).length === 1,
    () => person.key('Return'),
    'the file is attached',
  );
  await person.click((await person.button(title, 'Attach the log file')).centre);
  await person.clickButton(title, 'Send', () => person.reports.length > 0);
  const { log, attachments } = await person.report(0);
  assert.strictEqual(log, undefined);
  assert.deepStrictEqual(JSON.parse(attachments), [file]);
});

test('closing the window closes its dialog, and malformed lists of files are logged', async (t) => {
  const person = await start(t);
  await open(person, 'A', 'a@x', null, 'Text', '{"no": "list"}');
  const isOpen = await openChooser(person);
  await person.tell(`dialogs.closeWindow('${title}')`);
  await eventually(async () => !(await isOpen()), 'the dialog is gone');
  assert.strictEqual(await person.tell(`m.attachFilesToSupportAndFeedbackWindow('[1')`), null);
  const log = await person.tell('log()');
  assert.strictEqual(log.filter((text) => /^Couldn't parse attachments /.test(text)).length, 2);
  await person.isGone(title);
});
