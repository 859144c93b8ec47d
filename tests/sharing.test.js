'use strict';

// The menu of sharing targets, with real clicks: every target is a program that records its arguments.

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { Applications } = require('./support/applications');
const { eventually, temporaryDirectory } = require('./support/child');
const { startPerson } = require('./support/dialogs');

const place = { x: 100, y: 60, width: 40, height: 20 };
const rowHeight = 20;

const share = (person, paths, rectangle = place) =>
  person.tell(
    ({ native, window }, ...texts) => native.shareFiles(window, ...texts),
    JSON.stringify(paths),
    JSON.stringify(rectangle),
  );

const isStarted = (applications, name) => fs.existsSync(applications.recordOf(name));

// Menus have no names, but they are windows like others.
const countWindows = async (person) =>
  (await person.xdotool('search', '--onlyvisible', '--name', '.*')).split('\n').length;

/** Opens the menu and chooses the item of a number. */
async function choose(person, paths, number, isDone) {
  const [content] = (await person.window('Mail', () => true)).views;
  const [left, top] = content.centre.map((middle, axis) => middle - content.size[axis] / 2);
  const corner = [left + place.x, top + place.y + place.height];
  await person.until(
    isDone,
    async () => {
      const before = await countWindows(person);
      await share(person, paths);
      await eventually(async () => (await countWindows(person)) > before, 'the menu is open');
      await person.click([corner[0] + 20, corner[1] + rowHeight * (number + 0.5)]);
    },
    `item ${number} is chosen`,
  );
}

function install(t) {
  const applications = new Applications(t);
  const mail = ['x-scheme-handler/mailto'];
  applications.add('org.example.Mail', { name: 'Mailer', types: mail });
  applications.add('org.mozilla.Thunderbird', { name: 'Thunderbird', types: mail, argument: '--new %u' });
  applications.addProgram('bluetooth-sendto');
  applications.add('org.example.Editor', { name: 'Editor', types: ['text/plain'], argument: '%F' });
  applications.add('org.example.Both', { name: 'Both', types: ['text/plain', 'image/png'], argument: '%U' });
  // Takes no files, whatever types it lists.
  applications.add('org.example.Nothing', { name: 'Nothing', types: ['text/plain', 'image/png'], argument: '' });
  applications.mimeApps(
    '[Default Applications]\nx-scheme-handler/mailto=org.example.Mail.desktop\ntext/plain=org.example.Editor.desktop\nimage/png=org.example.Both.desktop\n',
  );
  return applications;
}

const hostile = `-a,b'c "$(touch pwned)" & é?#%20.txt`;

test('mail programs, Bluetooth and applications get the files, without a shell', async (t) => {
  const applications = install(t);
  const folder = temporaryDirectory(t);
  const files = [hostile, 'b.txt'].map((name) => path.join(folder, name));
  for (const file of files) fs.writeFileSync(file, 'x');
  const person = await startPerson(t, { env: applications.env });
  const chosen = async (number, name, paths = files) => {
    await choose(person, paths, number, () => isStarted(applications, name));
    return applications.wordsOf(name);
  };

  const [link, ...more] = await chosen(0, 'org.example.Mail');
  assert.deepStrictEqual(more, []);
  const url = new URL(link);
  assert.deepStrictEqual([url.protocol, url.searchParams.getAll('attach')], ['mailto:', files]);

  const words = await chosen(1, 'org.mozilla.Thunderbird');
  assert.deepStrictEqual(words.slice(0, 2), ['--new', '-compose']);
  const [, list] = words[2].match(/^attachment='([^']*)'$/);
  assert.deepStrictEqual(
    list.split(',').map((uri) => require('url').fileURLToPath(uri)),
    files,
  );

  assert.deepStrictEqual(await chosen(2, 'bluetooth-sendto'), files);
  // Below the separator.
  assert.deepStrictEqual(await chosen(4, 'org.example.Editor'), files);
  assert.deepStrictEqual(await chosen(5, 'org.example.Both'), files);
  assert.ok(!fs.existsSync('pwned') && !fs.existsSync(path.join(folder, 'pwned')));
});

test('only targets that take every file are offered', async (t) => {
  const applications = install(t);
  const folder = temporaryDirectory(t);
  const files = ['a.txt', 'b.png'].map((name) => path.join(folder, name));
  for (const file of files) fs.writeFileSync(file, 'x');
  const person = await startPerson(t, { env: applications.env });
  await choose(person, [files[0], path.join(folder, 'missing'), 7, files[1]], 4, () =>
    isStarted(applications, 'org.example.Both'),
  );
  assert.ok(!isStarted(applications, 'org.example.Editor'));
  const log = await person.log();
  assert.ok(log.some((text) => /There is no file .*missing to share/.test(text)));
  assert.ok(log.some((text) => /There is no file 7 to share/.test(text)));
});

test('a click elsewhere closes the menu without starting anything', async (t) => {
  const applications = install(t);
  const file = path.join(temporaryDirectory(t), 'a.txt');
  fs.writeFileSync(file, 'x');
  const person = await startPerson(t, { env: applications.env });
  const [content] = (await person.window('Mail', () => true)).views;
  for (const rectangle of [place, { x: 1e9, y: -1e9 }, { x: 'left' }, {}]) {
    const before = await countWindows(person);
    await share(person, [file], rectangle);
    await eventually(async () => (await countWindows(person)) > before, 'the menu is open');
    await person.click(content.centre);
    await person.goesOn();
  }
  assert.deepStrictEqual(
    fs.readdirSync(applications.home).filter((name) => name.endsWith('.words')),
    [],
  );
});

test('requests that can’t be shared are logged', async (t) => {
  const person = await startPerson(t);
  await person.tell(({ native, window }) => {
    native.shareFiles(Buffer.alloc(8), '[]', '{}');
    native.shareFiles(window, '{"a', '{}');
    native.shareFiles(window, '["/x"]', '[]');
    native.shareFiles(window, '["/no/such/file"]', '{}');
  });
  const log = (await person.log()).filter((text) => /share|parse/.test(text));
  const expected = [
    /^Need a window to share files from$/,
    /^Couldn't parse paths {"a because of /,
    /^Couldn't parse rectangle \[\] because of /,
    /^There is no file \/no\/such\/file to share$/,
    /^There are no files to share$/,
  ];
  expected.forEach((pattern, i) => assert.match(log[i], pattern));
});
