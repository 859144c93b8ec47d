'use strict';

// The menu of sharing targets, with real clicks: every target is a program that records its arguments.

const { fileURLToPath } = require('url');
const { Applications, assert, eventually, fs, path, temporaryDirectory, test } = require('./support');
const { startPerson } = require('./support/dialogs');

const place = { x: 100, y: 60, width: 40, height: 20 };
const rowHeight = 20;

const isStarted = (applications, name) => fs.existsSync(applications.recordOf(name));

async function openMenu(person, ...values) {
  // Menus are windows without a name.
  const count = async () => (await person.xdotool('search', '--onlyvisible', '--name', '.*')).split('\n').length;
  const before = await count();
  const texts = values.map((value) => JSON.stringify(value));
  await person.tell(({ native, window }, all) => native.shareFiles(window, ...all), texts);
  await eventually(async () => (await count()) > before, 'the menu is open');
}

/** Opens the menu and chooses the item of a number. */
async function choose(person, paths, number, isDone) {
  const [content] = (await person.window('Mail', () => true)).views;
  const [left, top] = content.centre.map((middle, axis) => middle - content.size[axis] / 2);
  const corner = [left + place.x, top + place.y + place.height];
  const attempt = async () => {
    await openMenu(person, paths, place);
    await person.click([corner[0] + 20, corner[1] + rowHeight * (number + 0.5)]);
  };
  await person.until(isDone, attempt, `item ${number} is chosen`);
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
  const defaults = { 'x-scheme-handler/mailto': 'Mail', 'text/plain': 'Editor', 'image/png': 'Both' };
  const lines = Object.entries(defaults).map(([type, name]) => `${type}=org.example.${name}.desktop\n`);
  applications.mimeApps(`[Default Applications]\n${lines.join('')}`);
  return applications;
}

test('the menu of sharing targets', async (t) => {
  const applications = install(t);
  const folder = temporaryDirectory(t);
  const hostile = `-a,b'c "$(touch pwned)" & é?#%20.txt`;
  const [text, other, picture] = [hostile, 'b.txt', 'b.png'].map((name) => path.join(folder, name));
  const files = [text, other];
  for (const file of [...files, picture]) fs.writeFileSync(file, 'x');
  const person = await startPerson(t, { env: applications.env });

  await t.test('mail programs, Bluetooth and applications get the files, without a shell', async () => {
    const chosen = async (number, name) => {
      await choose(person, files, number, () => isStarted(applications, name));
      return applications.wordsOf(name);
    };
    const [link, ...more] = await chosen(0, 'org.example.Mail');
    const url = new URL(link);
    assert.deepStrictEqual([url.protocol, url.searchParams.getAll('attach'), more], ['mailto:', files, []]);

    const words = await chosen(1, 'org.mozilla.Thunderbird');
    const [, list] = words[2].match(/^attachment='([^']*)'$/);
    const attached = list.split(',').map((uri) => fileURLToPath(uri));
    assert.deepStrictEqual([words.slice(0, 2), attached], [['--new', '-compose'], files]);

    assert.deepStrictEqual(await chosen(2, 'bluetooth-sendto'), files);
    // Below the separator.
    assert.deepStrictEqual(await chosen(4, 'org.example.Editor'), files);
    assert.deepStrictEqual(await chosen(5, 'org.example.Both'), files);
    assert.ok(!fs.existsSync('pwned') && !fs.existsSync(path.join(folder, 'pwned')));
  });

  await t.test('only targets that take every file are offered', async () => {
    const paths = [text, path.join(folder, 'missing'), 7, picture];
    await choose(person, paths, 4, () => isStarted(applications, 'org.example.Both'));
    assert.deepStrictEqual(await applications.wordsOf('org.example.Both'), [text, picture]);
    const log = await person.log();
    for (const name of [path.join(folder, 'missing'), '7']) {
      assert.ok(log.includes(`There is no file ${name} to share`), log.join('\n'));
    }
  });

  await t.test('a click elsewhere closes the menu without starting a program', async () => {
    const [content] = (await person.window('Mail', () => true)).views;
    for (const rectangle of [place, { x: 1e9, y: -1e9 }, { x: 'left' }, {}]) {
      await openMenu(person, files, rectangle);
      await person.click(content.centre);
      await person.goesOn();
    }
    const started = fs.readdirSync(applications.home).filter((name) => name.endsWith('.words'));
    assert.deepStrictEqual(started, []);
  });
});
