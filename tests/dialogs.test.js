'use strict';

// The panel for files, with real clicks and keys.

const assert = require('assert');
const { execFileSync } = require('child_process');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { eventually, evaluate, temporaryDirectory } = require('./support/child');
const { startPerson } = require('./support/dialogs');
const { useSession } = require('./support/session');

const session = useSession();

// A root who has lost the right to pass over permissions is like anybody else.
const likeAnybody =
  process.getuid() === 0 ? { within: ['setpriv', '--bounding-set=-dac_override,-dac_read_search'] } : {};

function makeFiles(t) {
  const folder = temporaryDirectory(t);
  for (const name of ['a10.png', 'a9.PNG', 'Report.pdf', 'zoë "x" $(y).txt', '.hidden']) {
    fs.writeFileSync(path.join(folder, name), name);
  }
  fs.mkdirSync(path.join(folder, 'Sub'));
  fs.writeFileSync(path.join(folder, 'Sub', 'inner.txt'), '');
  execFileSync('mkfifo', [path.join(folder, 'pipe')]);
  fs.symlinkSync('nowhere', path.join(folder, 'dangling'));
  fs.writeFileSync(Buffer.from(`${folder}/\xff.txt`, 'latin1'), '');
  return folder;
}

const title = 'Files';
const ask = (person, options) =>
  person.tell(`m.showFileDialog(window, ${JSON.stringify(JSON.stringify({ title, ...options }))}, report)`);

async function open(person, options) {
  // The window manager must have seen the end of the last one.
  await person.isGone(title);
  await eventually(async () => (await person.windows()).some(({ isKey }) => isKey), 'a window has the keyboard');
  await ask(person, options);
  await person.window(title);
}

/** Closes the panel by the keyboard, and waits for the report of a number. */
const escape = (person, number) =>
  person.until(
    () => person.reports.length > number,
    () => person.key('Escape'),
    `report ${number}`,
  );

const names = async (person) => (await person.rows(title)).map(({ texts }) => texts[1]);
const shows = (person, expected) =>
  eventually(async () => (await names(person)).join() === expected.join(), `showing ${expected}`).catch(
    async (error) => {
      throw new Error(`${error.message}, but ${await names(person)}`);
    },
  );
const notice = async (person) =>
  (await person.windows())
    .find((window) => window.title === title)
    .views.filter(({ text }) => text)
    .map(({ text }) => text);

test('folders come first, names are in order, and filters say which files there are', async (t) => {
  const folder = makeFiles(t);
  const person = await startPerson(t, session);
  const filters = [
    { name: 'Everything', extensions: ['*'] },
    { name: 'Images', extensions: ['png', '.jpg'] },
  ];
  await open(person, { folder, filters });
  const all = ['Sub', 'Report.pdf', 'a9.PNG', 'a10.png', 'zoë "x" $(y).txt'];
  await shows(person, all);

  const hidden = await person.button(title, 'Show Hidden');
  await person.until(
    async () => (await names(person)).includes('.hidden'),
    () => person.click(hidden.centre),
    'hidden files are shown',
  );
  await person.until(
    async () => !(await names(person)).includes('.hidden'),
    () => person.click(hidden.centre),
    'hidden files are not shown',
  );

  const isFiltered = async () => (await names(person)).join() === ['Sub', 'a9.PNG', 'a10.png'].join();
  const filter = await person.view(title, ({ items }) => items?.includes('Images'));
  await person.until(isFiltered, () => person.chooseBelow(filter.centre), 'images only');
  await person.clickButton(title, 'Cancel', () => person.reports.length > 0);
  assert.deepStrictEqual(person.reports, [null]);
});

test('one file, several, and those of another folder are chosen', async (t) => {
  const folder = makeFiles(t);
  const person = await startPerson(t, session);

  await open(person, { folder, 'button-label': 'Attach' });
  await person.row(title, 'Report.pdf');
  assert.strictEqual((await person.button(title, 'Attach')).isEnabled, false);
  await person.click((await person.row(title, 'a9.PNG')).centre);
  await person.click((await person.row(title, 'Report.pdf')).centre, { modifier: 'Shift_L' });
  await person.clickButton(title, 'Attach', () => person.reports.length > 0);
  assert.deepStrictEqual(JSON.parse(await person.report(0)), [path.join(folder, 'Report.pdf')]);
  await person.isGone(title);

  await open(person, { folder, 'allow-multiple?': true });
  await person.click((await person.row(title, 'a9.PNG')).centre);
  await person.click((await person.row(title, 'Report.pdf')).centre, { modifier: 'Shift_L' });
  await person.key('Return');
  const several = JSON.parse(await person.report(1));
  assert.deepStrictEqual(several.sort(), [path.join(folder, 'Report.pdf'), path.join(folder, 'a9.PNG')]);

  await open(person, { folder });
  await person.until(
    async () => (await names(person)).join() === 'inner.txt',
    async () => person.doubleClick((await person.row(title, 'Sub')).centre),
    'the folder is entered',
  );
  await person.clickButton(title, 'Up', async () => (await names(person)).includes('Sub'));
  await person.until(
    async () => (await names(person)).join() === 'inner.txt',
    async () => person.doubleClick((await person.row(title, 'Sub')).centre),
    'the folder is entered again',
  );
  await person.until(
    () => person.reports.length > 2,
    async () => person.doubleClick((await person.row(title, 'inner.txt')).centre),
    'the file is chosen',
  );
  assert.deepStrictEqual(JSON.parse(person.reports[2]), [path.join(folder, 'Sub', 'inner.txt')]);

  // The folder is remembered.
  await open(person, { folder: path.join(folder, 'missing') });
  await shows(person, ['inner.txt']);
  await escape(person, 3);
  assert.strictEqual(person.reports[3], null);
});

test('a folder is chosen: the selected one, or the one that is shown', async (t) => {
  const folder = makeFiles(t);
  const person = await startPerson(t, session);
  const options = { folder, 'choose-folders?': true, 'choose-files?': false };
  await open(person, options);
  await shows(person, ['Sub']);
  await person.click((await person.row(title, 'Sub')).centre);
  await person.clickButton(title, 'Open', () => person.reports.length > 0);
  await open(person, options);
  await shows(person, ['Sub']);
  await person.clickButton(title, 'Open', () => person.reports.length > 1);
  assert.deepStrictEqual(
    person.reports.map((text) => JSON.parse(text)),
    [[path.join(folder, 'Sub')], [folder]],
  );
});

test('a file is saved under the suggested name, another, and in the place of one', async (t) => {
  const folder = makeFiles(t);
  const person = await startPerson(t, session);
  const filters = [{ name: 'PDF', extensions: ['pdf'] }];
  const save = async (options) => {
    await open(person, { type: 'save', folder, filters, ...options });
    await shows(person, ['Sub', 'Report.pdf']);
  };

  await save({ name: '../../../etc/passwd' });
  const suggestion = await person.view(title, ({ class: kind, text }) => kind === 'NSTextField' && /passwd/.test(text));
  assert.strictEqual(suggestion.text, '-..-..-etc-passwd');
  await person.clickButton(title, 'Save', () => person.reports.length > 0);
  assert.deepStrictEqual(JSON.parse(person.reports[0]), [path.join(folder, '-..-..-etc-passwd.pdf')]);

  await save({ name: 'x' });
  await person.key('ctrl+a');
  await person.type('Bill "7".PDF');
  await person.key('Return');
  assert.deepStrictEqual(JSON.parse(await person.report(1)), [path.join(folder, 'Bill "7".PDF')]);

  await save({ name: 'other' });
  await person.click((await person.row(title, 'Report.pdf')).centre);
  const isAsked = async () => (await notice(person)).some((text) => /"Report.pdf" is there already/.test(text));
  await person.clickButton(title, 'Save', isAsked);
  assert.strictEqual(person.reports.length, 2);
  await person.clickButton(title, 'Save', () => person.reports.length > 2);
  assert.deepStrictEqual(JSON.parse(person.reports[2]), [path.join(folder, 'Report.pdf')]);
  assert.strictEqual(fs.readFileSync(path.join(folder, 'Report.pdf'), 'utf8'), 'Report.pdf');
});

test('a folder is made and named where the file is to be saved', async (t) => {
  const folder = temporaryDirectory(t);
  fs.mkdirSync(path.join(folder, 'New Folder'));
  const person = await startPerson(t, session);
  await open(person, { type: 'save', folder, name: 'mail.eml' });
  await shows(person, ['New Folder']);
  await person.clickButton(title, 'New Folder', () => fs.existsSync(path.join(folder, 'New Folder 2')));
  await person.row(title, 'New Folder 2');
  await person.type('Letters');
  await person.key('Return');
  await person.row(title, 'Letters');
  assert.deepStrictEqual(fs.readdirSync(folder).sort(), ['Letters', 'New Folder']);
  await person.clickButton(title, 'Save', async () => (await names(person)).length === 0);
  await person.clickButton(title, 'Save', () => person.reports.length > 0);
  assert.deepStrictEqual(JSON.parse(person.reports[0]), [path.join(folder, 'Letters', 'mail.eml')]);
});

test('what can’t be saved there is told in the panel, and files may vanish', async (t) => {
  const folder = makeFiles(t);
  const person = await startPerson(t, session, '', likeAnybody);
  await open(person, { type: 'save', folder: '/proc', name: 'x' });
  await person.clickButton(title, 'Save', async () => (await notice(person)).includes('You can\'t save in "proc".'));
  await escape(person, 0);

  await open(person, { folder });
  await person.click((await person.row(title, 'Report.pdf')).centre);
  fs.rmSync(path.join(folder, 'Report.pdf'));
  await person.clickButton(title, 'Open', async () =>
    (await notice(person)).some((text) => /no longer there/.test(text)),
  );
  await escape(person, 1);
  assert.strictEqual(person.reports[1], null);
});

test('the application goes on meanwhile, and every question is answered once', async (t) => {
  const folder = makeFiles(t);
  const person = await startPerson(
    t,
    session,
    `let ticks = 0; setInterval(() => ++ticks, 5);
     const other = host.createWindow({ title: 'Other' });`,
  );
  await open(person, { folder });
  await person.row(title, 'Report.pdf');
  const before = await person.tell('ticks');
  await eventually(async () => (await person.tell('ticks')) > before + 50, 'timers run');

  // A second question for the same window gets no panel.
  await ask(person, { folder, title: 'Second' });
  assert.strictEqual(await person.report(0), null);
  assert.ok(!(await person.windows()).some((window) => window.title === 'Second'));
  // But another window has one of its own.
  await person.tell(`m.showFileDialog(other, '{"title":"Third"}', (paths) => report(['third', paths]))`);
  await person.window('Third');
  await person.tell(`dialogs.closeWindow('Other')`);
  assert.deepStrictEqual(await person.report(1), ['third', null]);
  await person.isGone('Third');

  await person.tell(`dialogs.closeWindow('${title}')`);
  assert.strictEqual(await person.report(2), null);
  await person.isGone(title);
  assert.strictEqual(await person.tell('ticks > 0'), true);
  assert.strictEqual(person.reports.length, 3);
});

test('what nobody can be asked is answered too, and the log says why', async (t) => {
  const cases = [
    [`Buffer.alloc(8)`, '{}'],
    [`{}`, '{}'],
    [`window`, '[]'],
    [`window`, '{"title'],
  ];
  const person = await startPerson(t, session);
  for (const [handle, options] of cases) {
    await person.tell(`m.showFileDialog(${handle}, ${JSON.stringify(options)}, (...values) => report(values))`);
  }
  await person.report(cases.length - 1);
  assert.deepStrictEqual(
    person.reports,
    cases.map(() => [null]),
  );
  const log = await person.tell('log()');
  assert.strictEqual(log.filter((text) => /Need a window to choose files for/.test(text)).length, 2);
  assert.strictEqual(log.filter((text) => /Couldn't parse file dialog options/.test(text)).length, 2);
  // Values of other types than they should have are as good as none.
  await ask(person, {
    folder: 7,
    name: {},
    filters: [1, {}, { name: 2, extensions: [3] }],
    'show-hidden?': 'no',
    type: [],
  });
  await person.window(title);
  await escape(person, cases.length);
});

test('without a display nothing is chosen', async (t) => {
  const answers = await evaluate(
    t,
    `const { module: m } = probe();
     const keep = setTimeout(() => {}, 60000);
     const result = m.showFileDialog(Buffer.alloc(8), '{}', (paths) => { clearTimeout(keep); console.log(JSON.stringify([result ?? 'nothing', paths])); });`,
  );
  assert.deepStrictEqual(answers, ['nothing', null]);
});

test('twenty thousand files are shown while the application goes on', async (t) => {
  const folder = temporaryDirectory(t);
  for (let i = 0; i < 20000; ++i) fs.writeFileSync(path.join(folder, `file ${i}.txt`), '');
  const person = await startPerson(
    t,
    session,
    `let longest = 0, last = performance.now();
     setInterval(() => { const now = performance.now(); longest = Math.max(longest, now - last); last = now; }, 5);`,
  );
  await open(person, { folder });
  await person.tell('longest = 0');
  await person.tell(`m.showFileDialog(window, '{}', report)`);
  await eventually(
    async () =>
      (await person.tell(
        `JSON.parse(dialogs.windows()).find(({ title }) => title === '${title}').views.find(({ rows }) => rows).rows.length`,
      )) === 20000,
    'all are shown',
  );
  await escape(person, 1);
});
