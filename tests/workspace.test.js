'use strict';

const sharp = require('sharp');
const { Applications, assert, fs, path, scenarios, temporaryDirectory, test } = require('./support');

const plain = scenarios();
/** Scenarios in the home and environment of these applications. */
const among = ({ env, home }) => plain.with({ env, home });

/** Writes a picture for `Icon=`, and gives that line. */
function iconLine({ home }) {
  const file = path.join(home, 'icon.svg');
  const size = 'width="20" height="10"';
  fs.writeFileSync(file, `<svg xmlns="http://www.w3.org/2000/svg" ${size}><rect ${size}/></svg>`);
  return `Icon=${file}`;
}

test('entries for an extension, the default first, with icons', async (t) => {
  const applications = new Applications(t);
  const types = ['application/pdf'];
  const lines = [iconLine(applications), 'Name[de]=Betrachter'];
  applications.add('org.example.A', { name: 'Viewer A', types, lines });
  applications.add('org.example.B', { name: 'Viewer B', types });
  applications.add('org.example.Missing', { types, lines: ['TryExec=/none'] });
  applications.add('org.example.Hidden', { types, lines: ['Hidden=true'] });
  fs.writeFileSync(path.join(applications.folder, 'broken.desktop'), 'MimeType=application/pdf;\n\0[');
  applications.mimeApps('[Default Applications]\napplication/pdf=org.example.B.desktop;\n');
  const icons = path.join(applications.home, 'made', 'icons');
  const entry = (letter, more) => ({
    path: path.join(applications.folder, `org.example.${letter}.desktop`),
    name: `Viewer ${letter}`,
    'bundle-id': `org.example.${letter}`,
    'default?': letter === 'B',
    'our-entry?': false,
    'image-path': '',
    ...more,
  });
  const entries = ['B', 'A'].map((letter) => entry(letter));
  const withIcons = ['B', 'A'].map((letter) => entry(letter, { 'image-path': `${icons}/org.example.${letter}.png` }));
  const list = async ({ equal, native }, folder, expected) => {
    const all = JSON.parse(native.applicationsForFileExtension('.PDF', 48, folder));
    equal(all.filter((each) => each['bundle-id'].startsWith('org.example')), expected); // prettier-ignore
    for (const extension of ['no-such-extension', '', '..', 'a/b', null, '\0']) {
      equal(native.applicationsForFileExtension(extension, 16, ''), '[]');
    }
  };
  await among(applications)(t, list, icons, withIcons);
  await among(applications)(t, list, null, entries);
  const { format, width, height } = await sharp(withIcons[1]['image-path']).metadata();
  assert.deepStrictEqual([format, width, height], ['png', 48, 48]);
});

test('an application has a name and an icon, which the lists reuse and iconForApplication replaces', async (t) => {
  const applications = new Applications(t);
  const lines = [iconLine(applications), 'Name[de]=Ein Name'];
  applications.add('org.example.A', { name: 'A plain name', types: ['x-scheme-handler/example'], lines });
  applications.add('org.example.B', { lines: ['NoDisplay=true'] });
  applications.env.LANGUAGE = 'de';
  const work = async ({ equal, fs, native: m }, folder) => {
    const icon = `${folder}/org.example.A.png`;
    m.applicationsForScheme('example', 16, folder);
    m.applicationsForScheme('EXAMPLE', 64, folder);
    equal(fs.readFileSync(icon).readUInt32BE(16), 16);
    equal(m.iconForApplication('org.example.None', 64, folder) ?? null, null);
    for (const size of [0, 2147483647]) equal(m.iconForApplication('org.example.A', size, folder) ?? null, null);
    equal(m.iconForApplication('org.example.A', 64, folder), icon);
    equal(fs.readFileSync(icon).readUInt32BE(16), 64);
    equal(m.iconForFileExtension('pdf', 32, `${folder}/new`), `${folder}/new/pdf.png`);
    equal(m.iconForFileExtension('../../x', 16, `${folder}/new`), `${folder}/new/..-..-x.png`);
    equal(m.applicationName('org.example.A'), 'A plain name');
    equal(m.isApplicationInstalled('org.example.B'), true);
    for (const id of ['org.example.None', '', '../applications/org.example.A', 'a\0b']) {
      equal([m.applicationName(id) ?? null, m.isApplicationInstalled(id)], [null, false]);
    }
    equal(m.bundleId() ?? null, null);
  };
  await among(applications)(t, work, applications.home);
});

test('setting the handler of a scheme changes nothing else, and no list that can’t be parsed', async (t) => {
  const applications = new Applications(t);
  for (const name of ['Mail', 'Other']) applications.add(`org.example.${name}`, { types: ['x-scheme-handler/mailto'] });
  const others =
    '# kept\n\n[Added Associations]\ntext/plain=a.desktop;\n\n[Default Applications]\nx-scheme-handler/http=b.desktop\n';
  const list = (mail) => `${others}x-scheme-handler/mailto=${mail}\n\n[Else]\nkey=value\n`;
  applications.mimeApps(list('org.example.Other.desktop;'));
  await among(applications)(t, async ({ equal, native: m }) => {
    const describe = (entry) => `${entry['bundle-id']} ${entry['default?']}`;
    const entries = () => JSON.parse(m.applicationsForScheme('mailto', 16, '')).map(describe);
    const set = (scheme, application) => m.setDefaultApplicationForScheme(scheme, `org.example.${application}`);
    equal(m.defaultApplicationForScheme('mailto'), 'org.example.Other');
    equal(set('mailto', 'Mail'), 1);
    for (const scheme of ['mailto', 'MAILTO']) equal(m.defaultApplicationForScheme(scheme), 'org.example.Mail');
    equal(entries(), ['org.example.Mail true', 'org.example.Other false']);
    equal([set('mailto', 'None'), set('a\n[b]', 'Mail'), set('', 'Mail')], [0, 0, 0]);
    equal(m.defaultApplicationForScheme('no-such-scheme') ?? null, null);
  });
  assert.strictEqual(applications.mimeApps(), list('org.example.Mail.desktop;org.example.Other.desktop;'));

  applications.mimeApps('no key file\n');
  await among(applications)(t, async ({ equal, native: m }) => {
    equal(m.setDefaultApplicationForScheme('mailto', 'org.example.Mail'), 0);
  });
  assert.strictEqual(applications.mimeApps(), 'no key file\n');
});

test('files with hostile names are opened without a shell', async (t) => {
  const applications = new Applications(t);
  const desktopFile = applications.add('org.example.A', { types: ['text/plain'], argument: '%f' });
  applications.mimeApps('[Default Applications]\ntext/plain=org.example.A.desktop\n');
  const folder = temporaryDirectory(t);
  const open = ({ native }, ...args) => native.openFile(...args, true);
  const child = await among(applications).resident(t);
  for (const name of ['plain.txt', '-rf.txt', 'a "b" \'c\' $(touch x) `d` %f;&.txt', 'new\nline.txt', 'ü😀.txt']) {
    const file = path.join(folder, name);
    fs.writeFileSync(file, '');
    for (const by of [desktopFile, 'org.example.A', '']) {
      assert.strictEqual(await child.tell(open, file, by), 1);
      assert.deepStrictEqual(await applications.wordsOf('org.example.A'), [file]);
    }
  }
  const refused = [
    ['/no/such/file', desktopFile],
    [folder, '/no/such/application.desktop'],
    [folder, '/bin/sh'],
    ['', desktopFile],
    [`${folder}/plain.txt\0`, desktopFile],
    [null, null],
  ];
  for (const args of refused) assert.strictEqual(await child.tell(open, ...args), 0, String(args));
});

test('without an image folder or a file manager the results are empty or false', async (t) => {
  const applications = new Applications(t);
  applications.add('org.example.A', { types: ['x-scheme-handler/example'] });
  const folder = path.join(applications.folder, 'org.example.A.desktop', 'icons');
  const scenario = ({ captureLog, equal, log, native: m }, at) => {
    captureLog();
    equal(JSON.parse(m.applicationsForScheme('example', 16, at))[0]['bundle-id'], 'org.example.A');
    equal(m.iconForApplication('org.example.A', 16, at) ?? m.iconForFileExtension('pdf', 16, at) ?? null, null);
    for (const file of ['/etc/passwd', '']) equal(m.openInfoForFile(file), false);
    return log().join('\n');
  };
  const lines = await among(applications)(t, scenario, folder);
  const failures = ['create directory at path', 'create target dir for target dir', 'write icon file'];
  for (const failure of failures) assert.ok(lines.includes(`Couldn't ${failure}`), lines);
});
