'use strict';

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { evaluate, runScript, temporaryDirectory } = require('./support/child');
const { Applications } = require('./support/applications');

const call = (t, applications, source) =>
  evaluate(
    t,
    `const { module: m } = probe();
     const entries = (text) => JSON.parse(text);
     (async () => console.log(JSON.stringify(await (async () => { ${source} })())))();`,
    { env: applications.env, home: applications.home },
  );

/** Width and height of a PNG file. */
function pngSize(file) {
  const bytes = fs.readFileSync(file);
  assert.strictEqual(bytes.toString('latin1', 1, 4), 'PNG');
  return [bytes.readUInt32BE(16), bytes.readUInt32BE(20)];
}

const svg = '<svg xmlns="http://www.w3.org/2000/svg" width="20" height="10"><rect width="20" height="10"/></svg>';

test('entries for an extension, the default first, with icons', async (t) => {
  const applications = new Applications(t);
  const icon = path.join(applications.home, 'icon.svg');
  fs.writeFileSync(icon, svg);
  const lines = [`Icon=${icon}`, 'Name[de]=Betrachter'];
  applications.add('org.example.A', { name: 'Viewer A', types: ['application/pdf'], lines });
  const second = applications.add('org.example.B', { name: 'Viewer B', types: ['application/pdf'] });
  applications.add('org.example.Missing', { types: ['application/pdf'], lines: ['TryExec=/none'] });
  applications.add('org.example.Hidden', { types: ['application/pdf'], lines: ['Hidden=true'] });
  fs.writeFileSync(path.join(applications.folder, 'broken.desktop'), 'MimeType=application/pdf;\n\0[');
  applications.mimeApps('[Default Applications]\napplication/pdf=org.example.B.desktop;\n');
  const icons = path.join(applications.home, 'made', 'icons');
  const seen = await call(
    t,
    applications,
    `const first = entries(m.applicationsForFileExtension('.PDF', 48, ${JSON.stringify(icons)}));
     const ours = (list) => list.filter((entry) => entry['bundle-id'].startsWith('org.example'));
     return [ours(first), ours(entries(m.applicationsForFileExtension('pdf', 48, null))),
       ['no-such-extension', '', '..', 'a/b', null, '\\0'].map((x) => m.applicationsForFileExtension(x, 16, ''))];`,
  );
  const entry = (letter, imagePath) => ({
    path: path.join(applications.folder, `org.example.${letter}.desktop`),
    name: `Viewer ${letter}`,
    'bundle-id': `org.example.${letter}`,
    'default?': letter === 'B',
    'our-entry?': false,
    'image-path': imagePath,
  });
  const file = (letter) => path.join(icons, `org.example.${letter}.png`);
  assert.deepStrictEqual(seen[0], [entry('B', file('B')), entry('A', file('A'))]);
  assert.deepStrictEqual(seen[1], [entry('B', ''), entry('A', '')]);
  assert.deepStrictEqual(seen[2], ['[]', '[]', '[]', '[]', '[]', '[]']);
  assert.strictEqual(second, seen[0][0].path);
  assert.deepStrictEqual(pngSize(file('A')), [48, 48]);
});

test('an existing icon is reused by the lists, and replaced by iconForApplication', async (t) => {
  const applications = new Applications(t);
  const icon = path.join(applications.home, 'icon.svg');
  fs.writeFileSync(icon, svg);
  applications.add('org.example.A', { types: ['x-scheme-handler/example'], lines: [`Icon=${icon}`] });
  const folder = JSON.stringify(applications.home);
  const seen = await call(
    t,
    applications,
    `m.applicationsForScheme('example', 16, ${folder});
     m.applicationsForScheme('EXAMPLE', 64, ${folder});
     const kept = require('fs').readFileSync(${folder} + '/org.example.A.png').readUInt32BE(16);
     return [kept, m.iconForApplication('org.example.A', 64, ${folder}), m.iconForFileExtension('pdf', 32, ${folder} + '/new'),
       m.iconForApplication('org.example.None', 64, ${folder}), m.iconForApplication('org.example.A', 0, ${folder}),
       m.iconForApplication('org.example.A', 2147483647, ${folder}), m.iconForFileExtension('../../x', 16, ${folder} + '/new')];`,
  );
  const made = path.join(applications.home, 'org.example.A.png');
  const inside = path.join(applications.home, 'new', '..-..-x.png');
  assert.deepStrictEqual(seen, [16, made, path.join(applications.home, 'new', 'pdf.png'), null, null, null, inside]);
  assert.deepStrictEqual(pngSize(made), [64, 64]);
});

test('setting the handler of a scheme changes nothing else', async (t) => {
  const applications = new Applications(t);
  applications.add('org.example.Mail', { types: ['x-scheme-handler/mailto'] });
  applications.add('org.example.Other', { types: ['x-scheme-handler/mailto'] });
  const before =
    '# kept\n\n[Added Associations]\ntext/plain=a.desktop;\n\n[Default Applications]\nx-scheme-handler/mailto=org.example.Other.desktop;\nx-scheme-handler/http=b.desktop\n\n[Else]\nkey=value\n';
  applications.mimeApps(before);
  const seen = await call(
    t,
    applications,
    `return [m.defaultApplicationForScheme('mailto'), m.setDefaultApplicationForScheme('mailto', 'org.example.Mail'),
       m.defaultApplicationForScheme('mailto'), m.defaultApplicationForScheme('MAILTO'),
       entries(m.applicationsForScheme('mailto', 16, '')).map((entry) => [entry['bundle-id'], entry['default?']]),
       m.setDefaultApplicationForScheme('mailto', 'org.example.None'), m.setDefaultApplicationForScheme('a\\n[b]', 'org.example.Mail'),
       m.setDefaultApplicationForScheme('', 'org.example.Mail'), m.defaultApplicationForScheme('no-such-scheme') ?? null];`,
  );
  assert.deepStrictEqual(seen, [
    'org.example.Other',
    1,
    'org.example.Mail',
    'org.example.Mail',
    [
      ['org.example.Mail', true],
      ['org.example.Other', false],
    ],
    0,
    0,
    0,
    null,
  ]);
  const after = before.replace('mailto=', 'mailto=org.example.Mail.desktop;');
  assert.strictEqual(applications.mimeApps(), after);
});

test('a list of defaults that can’t be parsed is not overwritten', async (t) => {
  const applications = new Applications(t);
  applications.add('org.example.Mail', { types: ['x-scheme-handler/mailto'] });
  applications.mimeApps('no key file\n');
  assert.deepStrictEqual(
    await call(
      t,
      applications,
      `return [m.setDefaultApplicationForScheme('mailto', 'org.example.Mail'), m.defaultApplicationForScheme('mailto')];`,
    ),
    [0, 'org.example.Mail'],
  );
  assert.strictEqual(applications.mimeApps(), 'no key file\n');
});

test('applicationName, isApplicationInstalled and bundleId', async (t) => {
  const applications = new Applications(t);
  applications.add('org.example.A', { name: 'A plain name', lines: ['Name[de]=Ein Name', 'NoDisplay=true'] });
  applications.env.LANGUAGE = 'de';
  const seen = await call(
    t,
    applications,
    `const ids = ['org.example.A', 'org.example.None', '', '../applications/org.example.A', 'a\\0b'];
     return [ids.map((id) => m.applicationName(id)), ids.map((id) => m.isApplicationInstalled(id)), m.bundleId()];`,
  );
  assert.deepStrictEqual(seen, [['A plain name', null, null, null, null], [true, false, false, false, false], null]);
});

test('files with hostile names are opened without a shell', async (t) => {
  const applications = new Applications(t);
  const desktopFile = applications.add('org.example.A', { types: ['text/plain'], argument: '%f' });
  applications.mimeApps('[Default Applications]\ntext/plain=org.example.A.desktop\n');
  const folder = temporaryDirectory(t);
  const names = ['plain.txt', '-rf.txt', 'a "b" \'c\' $(touch x) `d` %f;&.txt', 'new\nline.txt', 'ü😀.txt'];
  for (const name of names) {
    const file = path.join(folder, name);
    fs.writeFileSync(file, '');
    for (const by of [desktopFile, 'org.example.A', '']) {
      const opening = `return m.openFile(${JSON.stringify(file)}, ${JSON.stringify(by)}, true);`;
      assert.strictEqual(await call(t, applications, opening), 1);
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
  const results = await call(
    t,
    applications,
    `return ${JSON.stringify(refused)}.map((args) => m.openFile(...args, false));`,
  );
  assert.deepStrictEqual(results, [0, 0, 0, 0, 0, 0]);
});

test('without an image folder or a file manager the results are empty or false', async (t) => {
  const applications = new Applications(t);
  applications.add('org.example.A', { types: ['x-scheme-handler/example'] });
  const folder = JSON.stringify(path.join(applications.folder, 'org.example.A.desktop', 'icons'));
  const result = await runScript(
    t,
    `const { module: m } = probe();
     const [entry] = JSON.parse(m.applicationsForScheme('example', 16, ${folder}));
     console.log(JSON.stringify([entry['bundle-id'], m.iconForApplication('org.example.A', 16, ${folder}) ?? null,
       m.iconForFileExtension('pdf', 16, ${folder}) ?? null, m.openInfoForFile('/etc/passwd'), m.openInfoForFile('')]));`,
    { env: { ...applications.env, TESSARO_NATIVE_LOG: 'stderr' }, home: applications.home },
  );
  assert.deepStrictEqual(JSON.parse(result.stdout), ['org.example.A', null, null, false, false]);
  for (const line of [
    "Couldn't create directory at path",
    "Couldn't create target dir for target dir",
    "Couldn't write icon file",
  ]) {
    assert.ok(result.stderr.includes(line), line);
  }
});
