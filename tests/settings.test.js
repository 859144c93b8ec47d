'use strict';

const { assert, execFileSync, fs, path, test } = require('./support');
const { eventually, scenarios, temporaryDirectory, temporaryFiles } = require('./support');

function inHome(t) {
  const { folder: home, at, write } = temporaryFiles(t);
  const env = { XDG_CONFIG_HOME: at('config'), XDG_CONFIG_DIRS: at('xdg'), XDG_CURRENT_DESKTOP: 'Test:XFCE' };
  return Object.assign(scenarios({ home, env }), { home, at, write, autostart: at('config/autostart') });
}

const document = (contents) => `<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0">${contents}</plist>`;

test('synchronised values survive a crash, and read back with their types', async (t) => {
  const run = inHome(t);
  const numbers = [true, false, 2, -1, 2147483647, -2147483648];
  const long = 'x'.repeat(1e5);
  const texts = ['', '  spaces ', 'Grüße <&> "x" \'y\'', '😀 \u{10ffff}', 'a\r\nb\tc', 'nul\0\u0001\u001f', long];
  const table = [
    [0, false],
    [1, true],
    ['lone \ud800 surrogate', 'lone \ufffd surrogate'],
    ...[...numbers, ...texts, '\\U0041 \\UD83D\\UDE00 \\\\'].map((value) => [value, value]),
  ].map(([value, expected], i) => [`${i} key 😀 / .`, value, expected]);
  const write = ({ native }, rows) => {
    for (const [key, value] of rows) native.setUserDefault(key, value);
    for (const key of ['removed', 'nulled']) native.setUserDefault(key, 'x');
    native.removeUserDefault('removed');
    native.setUserDefault('nulled', null);
    native.synchronizeUserDefaults();
    process.kill(process.pid, 'SIGKILL');
  };
  assert.strictEqual((await run.ends(t, write, table)).signal, 'SIGKILL');
  const rows = [...table, ['removed', null, null], ['nulled', null, null]];
  await run.table(t, rows, ({ native }, key) => native.getUserDefault(key));
});

test('unsupported values are neither set nor read', async (t) => {
  const run = inHome(t);
  const rows = [
    ['half', '<real>0.5</real>', 0],
    ['twoPointSeven', '<real>2.7</real>', 2],
    ['wide', '<integer>4294967298</integer>', 2],
    ['array', '<array><string>x</string></array>', null],
    ['dictionary', '<dict/>', null],
    ['data', '<data>AAAA</data>', null],
  ];
  const entries = rows.map(([key, xml]) => `<key>${key}</key>${xml}`);
  run.write('GNUstep/Defaults/node.plist', document(`<dict>${entries.join('')}</dict>`));
  await run.table(t, rows, ({ native }, key) => native.getUserDefault(key));
  const [unset, errors] = await run(t, ({ captureLog, log, native }) => {
    captureLog();
    for (const value of [1.5, undefined, {}, [], 2 ** 31, NaN, Symbol('x'), 10n]) native.setUserDefault('unset', value);
    return [native.getUserDefault('unset'), log(1)];
  });
  assert.deepStrictEqual([unset, errors], [null, Array(8).fill('Unknown type - cannot set value for key unset')]);
});

const ours = `"${process.execPath}"`;
const entry = (exec, more = '') => `[Desktop Entry]\nType=Application\nName=Mail\nExec=${exec}\n${more}`;

const isOn = ({ native }) => native.getStartAtLogin();
const switchOn = ({ native }) => native.setStartAtLogin(true);
const switchOff = ({ native }) => [native.getStartAtLogin(), native.setStartAtLogin(false)];

/** Runs a scenario with these autostart files, and gives its result and the files that are there then. */
async function withAutostart(t, { user = {}, system = {} }, scenario) {
  const run = inHome(t);
  for (const [name, text] of Object.entries(user)) run.write(`config/autostart/${name}`, text);
  for (const [name, text] of Object.entries(system)) run.write(`xdg/autostart/${name}`, text);
  const result = await run(t, scenario);
  const names = fs.existsSync(run.autostart) ? fs.readdirSync(run.autostart).sort() : [];
  const read = (name) => [name, fs.readFileSync(path.join(run.autostart, name), 'utf8')];
  return { result, names, files: Object.fromEntries(names.map(read)) };
}

test('start at login is switched on once, and off again', async (t) => {
  const { result, names, files } = await withAutostart(t, {}, ({ native: m }) => {
    const off = [m.getStartAtLogin(), m.setStartAtLogin(false)];
    return [...off, m.setStartAtLogin(true), m.setStartAtLogin(true), m.getStartAtLogin()];
  });
  assert.deepStrictEqual([result, names], [[false, false, true, true, true], ['node.desktop']]);
  assert.match(files['node.desktop'], new RegExp(`^Exec=${ours}$`, 'm'));
  const off = await withAutostart(t, { user: files }, switchOff);
  assert.deepStrictEqual([off.result, off.names], [[true, false], []]);
});

test('an entry is recognised by its program, and counts only if the session would start it', async (t) => {
  const run = inHome(t);
  const off = 'Hidden=true X-GNOME-Autostart-enabled=false OnlyShowIn=KDE; NotShowIn=Test; TryExec=/none';
  const rows = [
    [entry(ours), true],
    [entry(`${process.execPath} --hidden %U`), true],
    [entry('node'), true],
    [entry(ours, 'OnlyShowIn=XFCE;GNOME;'), true],
    ...off.split(' ').map((line) => [entry(ours, line), false]),
    [entry('/bin/sh'), false],
    [entry('"unfinished'), false],
    ['[Desktop Entry]\nName=Mail\n', false],
    ['not an entry at all \0', false],
    [`#${'x'.repeat(2 << 20)}\n${entry(ours)}`, false],
  ];
  const ask = ({ fs, native }, text, file) => {
    fs.writeFileSync(file, text);
    return native.getStartAtLogin();
  };
  fs.mkdirSync(run.autostart, { recursive: true });
  await run.table(t, rows, ask, path.join(run.autostart, 'mail.desktop'));
});

test('foreign keys are kept, and system-wide entries and those of other programs are left alone', async (t) => {
  const kept = ['# kept', 'X-Foreign=kept\nName[de]=Post', '[Desktop Action x]\nName=kept'];
  const text = `# kept\n${entry(ours, `Hidden=true\n${kept[1]}\n`)}\n${kept[2]}\n`;
  const { result, names, files } = await withAutostart(t, { user: { 'mine.desktop': text } }, switchOn);
  assert.deepStrictEqual([result, names], [true, ['mine.desktop']]);
  for (const part of kept) assert.ok(files['mine.desktop'].includes(part), part);
  assert.ok(!files['mine.desktop'].includes('Hidden'));

  const system = { 'mail.desktop': entry(ours) };
  const off = await withAutostart(t, { system }, switchOff);
  assert.deepStrictEqual(off.result, [true, false]);
  assert.match(off.files['mail.desktop'], /^Hidden=true$/m);
  const on = await withAutostart(t, { system, user: off.files }, switchOn);
  assert.deepStrictEqual([on.result, on.names], [true, ['mail.desktop']]);
  const bare = await withAutostart(t, { system, user: { 'mail.desktop': '[Desktop Entry]\nHidden=true\n' } }, switchOn);
  assert.deepStrictEqual([bare.result, bare.names], [true, []]);

  const foreign = entry('/bin/sh');
  const added = await withAutostart(t, { user: { 'node.desktop': foreign } }, switchOn);
  assert.deepStrictEqual([added.result, added.names], [true, ['node-2.desktop', 'node.desktop']]);
  assert.strictEqual(added.files['node.desktop'], foreign);

  const previous = foreign.replace('Name=Mail', 'Name=Tessaro 3');
  const user = { 'a.desktop': previous.replace('3', '33'), 'b.desktop': previous, 'c.desktop': previous };
  const migrated = await withAutostart(t, { user }, ({ native: m }) => [m.migrateStartAtLogin(), m.getStartAtLogin()]);
  assert.deepStrictEqual([...migrated.result, ...migrated.names], [null, false, 'a.desktop', 'c.desktop']);
});

test('dangling links, pipes and a folder that cannot be written are harmless', async (t) => {
  const run = inHome(t);
  const mine = run.write('dotfiles/mail.desktop', entry(ours, 'Hidden=true'));
  fs.mkdirSync(run.autostart, { recursive: true });
  const links = { 'a.desktop': 'b.desktop', 'b.desktop': 'a.desktop', 'mail.desktop': mine };
  for (const [name, target] of Object.entries(links)) fs.symlinkSync(target, path.join(run.autostart, name));
  execFileSync('mkfifo', [path.join(run.autostart, 'c.desktop')]);
  assert.deepStrictEqual([await run(t, isOn), await run(t, switchOn)], [false, true]);
  assert.ok(fs.lstatSync(path.join(run.autostart, 'mail.desktop')).isSymbolicLink());
  assert.ok(!fs.readFileSync(mine, 'utf8').includes('Hidden'));

  const unwritable = inHome(t);
  fs.writeFileSync(path.dirname(unwritable.autostart), 'a file where the folder should be');
  assert.deepStrictEqual([await unwritable(t, switchOn), await unwritable(t, isOn)], [false, false]);
});

test('a program path may have any characters', async (t) => {
  // A backslash is missing here: GNUstep takes it for a separator of folders.
  const folder = path.join(temporaryDirectory(t), 'It\'s "mine" $HOME `x` ü;& (1)');
  const executable = path.join(folder, 'the mail');
  fs.mkdirSync(folder);
  fs.copyFileSync(fs.realpathSync(process.execPath), executable);
  const run = inHome(t);
  assert.strictEqual(await run.with({ executable })(t, switchOn), true);
  const started = path.join(run.home, 'started');
  const script = run.write('started.js', `require('fs').writeFileSync(${JSON.stringify(started)}, process.execPath)`);
  const env = { ...process.env, NODE_OPTIONS: `--require=${script}` };
  execFileSync('gio', ['launch', path.join(run.autostart, 'the mail.desktop')], { env });
  await eventually(() => fs.existsSync(started) && fs.readFileSync(started, 'utf8') === executable, 'the program');

  // A per cent sign is doubled as the standard wants it, but GLib looks for such a program without halving it.
  const percent = path.join(folder, '100%u');
  fs.renameSync(executable, percent);
  assert.strictEqual(await run.with({ executable: percent })(t, switchOn), true);
  assert.match(fs.readFileSync(path.join(run.autostart, '100%u.desktop'), 'utf8'), /^Exec=.*\/100%%u"$/m);
});

test('text replacements and substitution switches', async (t) => {
  const global = (contents) => document(`<dict>${contents}</dict>`);
  const items = (value) => `<key>NSUserDictionaryReplacementItems</key>${value}`;
  const item =
    '<dict><key>on</key><integer>1</integer><key>replace</key><string>omw</string><key>with</key><string>On my way 😀</string></dict>';
  const all = global(
    `${items(`<array>${item}</array>`)}<key>NSAutomaticDashSubstitutionEnabled</key><true/>
     <key>NSAutomaticPeriodSubstitutionEnabled</key><false/>`,
  );
  const replacements = [{ on: 1, replace: 'omw', with: 'On my way 😀' }];
  const everything = { 'text-replacements': replacements, 'dash-substitution?': true, 'period-substitution?': false };
  const [texts, dashes] = ['WebAutomaticTextReplacementEnabled', 'WebAutomaticDashSubstitutionEnabled'];
  const rows = [
    [null, null, null, {}],
    [null, texts, false, { 'text-replacements': [] }],
    [all, null, null, everything],
    [all, texts, false, { ...everything, 'text-replacements': [] }],
    [all, texts, true, everything],
    [all, dashes, false, { ...everything, 'dash-substitution?': false }],
    [global(items('<string>x</string>')), null, null, { 'text-replacements': 'x' }],
    [global(items('<array><date>2020-01-01T00:00:00Z</date></array>')), null, null, null],
    ['no property list \0', null, null, {}],
    [all.slice(0, 200), null, null, {}],
  ];
  const run = inHome(t);
  const read = ({ fs, native }, text, key, value, file) => {
    if (text !== null) fs.writeFileSync(file, text);
    if (key !== null) native.setUserDefault(key, value);
    const found = native.getTextReplacements();
    if (key !== null) native.removeUserDefault(key);
    return JSON.parse(found);
  };
  const file = run.at('Library/Preferences/.GlobalPreferences.plist');
  fs.mkdirSync(path.dirname(file), { recursive: true });
  await run.table(t, rows, read, file);
});
