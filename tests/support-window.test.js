'use strict';

// The window in which people write to the makers of the application, with real clicks and keys.

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

test('what is written and attached goes to the host', async (t) => {
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

test('there is one window: asked again, it keeps what was written; cancelled, it forgets', async (t) => {
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

test('files are chosen in a panel of the window, and the log stays behind when it shall', async (t) => {
  const folder = temporaryDirectory(t);
  fs.writeFileSync(path.join(folder, 'picture.png'), 'x');
  const person = await start(t);
  await person.tell(`m.setUserDefault('NSDefaultOpenDirectory', ${JSON.stringify(folder)})`);
  await open(person, 'A', 'a@x', null, 'Text', null);
  const panel = 'Attach Files';
  await person.clickButton(title, 'Attach Files...', async () =>
    (await person.windows()).some((window) => window.title === panel),
  );
  await person.click((await person.row(panel, 'picture.png')).centre);
  await person.clickButton(panel, 'Attach', async () => (await contents(person)).at(-1).length === 1);
  await person.isGone(panel);
  await person.click((await person.button(title, 'Attach the log file')).centre);
  await person.clickButton(title, 'Send', () => person.reports.length > 0);
  const { log, attachments } = await person.report(0);
  assert.strictEqual(log, undefined);
  assert.deepStrictEqual(JSON.parse(attachments), [path.join(folder, 'picture.png')]);
});

test('its panel goes with it, and bad lists of files are logged', async (t) => {
  const person = await start(t);
  await open(person, 'A', 'a@x', null, 'Text', '{"no": "list"}');
  await person.clickButton(title, 'Attach Files...', async () => (await person.windows()).length === 3);
  await person.tell(`dialogs.closeWindow('${title}')`);
  await person.isGone('Attach Files');
  assert.strictEqual(await person.tell(`m.attachFilesToSupportAndFeedbackWindow('[1')`), null);
  const log = await person.tell('log()');
  assert.strictEqual(log.filter((text) => /^Couldn't parse attachments /.test(text)).length, 2);
  await person.isGone(title);
});
