'use strict';

// The support and feedback window, with real clicks and keys.

const { assert, eventually, fs, path, temporaryDirectory, test } = require('./support');
const { startPerson } = require('./support/dialogs');

const title = 'Support and Feedback';

async function start(t) {
  const person = await startPerson(t);
  await person.tell(({ host, report }) => {
    const isMessage = ({ name }) => name === 'TsSupportAndFeedbackMessageNotification';
    host.on('notification', (posted) => isMessage(posted) && report(posted.userInfo));
  });
  return person;
}

const attach = (person, text) =>
  person.tell(({ native }, files) => native.attachFilesToSupportAndFeedbackWindow(files), text);

async function open(person, ...values) {
  await person.tell(({ native }, all) => native.openSupportAndFeedbackWindow(...all), values);
  await person.window(title);
}

async function contents(person) {
  const { views } = await person.window(title, () => true);
  const texts = views.filter(({ class: kind, text }) => /^NSText(Field|View)$/.test(kind) && !text.endsWith(':'));
  const list = views.find(({ rows }) => rows !== undefined).rows.map((row) => row.texts[0]);
  return [...texts.map(({ text }) => text), list];
}

const isEnabled = async (person, button) => (await person.button(title, button)).isEnabled;

const chooser = 'Attach Files';

async function openChooser(person) {
  const isOpen = () => person.xdotool('search', '--onlyvisible', '--name', chooser).then(Boolean, () => false);
  await person.pressButton(title, 'Attach Files...');
  await eventually(isOpen, 'the dialog');
  await person.xdotool('search', '--onlyvisible', '--name', chooser, 'windowactivate', '--sync');
  return isOpen;
}

test('the support window', async (t) => {
  const person = await start(t);

  await t.test('a sent message reaches the host with its texts and attachments', async () => {
    const folder = temporaryDirectory(t);
    const names = ['a "1".txt', 'zoë.png', 'c'];
    const files = names.map((name) => path.join(folder, name));
    for (const file of files) fs.writeFileSync(file, 'x');
    const attached = JSON.stringify([files[0], folder, files[0], '/none', 7]);
    await open(person, 'Zoë Lee', 'zoe@example.org', null, null, attached);
    assert.deepStrictEqual(await contents(person), ['Zoë Lee', 'zoe@example.org', '', '', ['a "1".txt']]);
    assert.strictEqual(await isEnabled(person, 'Send'), false);

    // The first empty field has the keyboard.
    await person.type('It crashes');
    await person.key('Tab');
    await person.type('When I click.');
    await person.key('Return');
    await person.type('Twice.');
    await eventually(() => isEnabled(person, 'Send'), 'Send can be clicked');
    await attach(person, JSON.stringify(files));
    assert.deepStrictEqual((await contents(person)).at(-1), names);

    const select = async () => person.click((await person.row(title, 'zoë.png')).centre);
    await person.until(() => isEnabled(person, 'Remove'), select, 'an attachment is selected');
    await person.pressButton(title, 'Remove');
    assert.strictEqual((await contents(person)).at(-1).length, 2);
    await person.clickButton(title, 'Send', () => person.reports.length > 0);
    const { log, attachments, ...texts } = await person.report(0);
    const message = 'When I click.\nTwice.';
    assert.deepStrictEqual(texts, { name: 'Zoë Lee', email: 'zoe@example.org', subject: 'It crashes', message });
    assert.deepStrictEqual(JSON.parse(attachments), [files[0], files[2]]);
    assert.match(fs.readFileSync(log, 'utf8'), /There is no file \/none to attach/);
    await person.isGone(title);
    assert.strictEqual(person.reports.length, 1);
  });

  await t.test('opening the window again keeps its contents; cancelling clears them', async () => {
    const file = path.join(temporaryDirectory(t), 'a.txt');
    fs.writeFileSync(file, 'x');
    await open(person, 'A', 'a@x', 'First', 'Text', null);
    await open(person, 'B', 'b@x', 'Second', 'Other', JSON.stringify([file]));
    assert.deepStrictEqual(await contents(person), ['A', 'a@x', 'First', 'Text', ['a.txt']]);
    assert.strictEqual((await person.windows()).filter((window) => window.title === title).length, 1);
    await person.pressButton(title, 'Cancel');
    await person.isGone(title);

    await open(person, 'B', 'b@x', 'Second', null, null);
    assert.deepStrictEqual(await contents(person), ['B', 'b@x', 'Second', '', []]);
    await person.closeWindow(title);
    await person.isGone(title);

    // Attaching opens it too.
    await attach(person, JSON.stringify([file]));
    await person.window(title);
    assert.deepStrictEqual(await contents(person), ['', '', '', '', ['a.txt']]);
    assert.strictEqual(person.reports.length, 1);
    await person.pressButton(title, 'Cancel');
    await person.isGone(title);
  });

  await t.test('files are chosen in a dialog, which closes with its window; malformed lists are logged', async () => {
    const file = path.join(temporaryDirectory(t), 'picture.png');
    fs.writeFileSync(file, 'x');
    await open(person, 'A', 'a@x', null, 'Text', null);
    const isOpen = await openChooser(person);
    const choose = async () => {
      if (!(await isOpen())) return;
      await person.key('ctrl+a');
      await person.type(file);
      await person.key('Return');
    };
    // The dialog misses keys while it is new.
    await person.until(async () => (await contents(person)).at(-1).length === 1, choose, 'the file is attached');
    await person.pressButton(title, 'Attach the log file');
    await person.pressButton(title, 'Send');
    const { log, attachments } = await person.report(1);
    assert.strictEqual(log, undefined);
    assert.deepStrictEqual(JSON.parse(attachments), [file]);
    await person.isGone(title);

    await open(person, 'A', 'a@x', null, 'Text', '{"no": "list"}');
    const isOpenAgain = await openChooser(person);
    await person.closeWindow(title);
    await eventually(async () => !(await isOpenAgain()), 'the dialog is gone');
    assert.strictEqual(await attach(person, '[1'), null);
    assert.strictEqual((await person.log()).filter((text) => /^Couldn't parse attachments /.test(text)).length, 2);
    await person.isGone(title);
  });
});
