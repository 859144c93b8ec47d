'use strict';

const assert = require('assert');
const { execFile } = require('child_process');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');
const { promisify } = require('util');

const { evaluate, eventually, runScript, temporaryDirectory } = require('./support/child');

/** A home that several processes share. */
function sharedHome(t) {
  const home = temporaryDirectory(t);
  const env = { XDG_CONFIG_HOME: path.join(home, 'config'), XDG_CONFIG_DIRS: path.join(home, 'xdg') };
  return { home, env };
}

const defaultsFile = (home) => path.join(home, 'GNUstep', 'Defaults', 'node.plist');

const document = (contents) => `<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0">${contents}</plist>`;

function writeFile(file, contents) {
  fs.mkdirSync(path.dirname(file), { recursive: true });
  fs.writeFileSync(file, contents);
}

// ---- User defaults

test('synchronised values survive a crash, and read back with their types', async (t) => {
  const { home, env } = sharedHome(t);
  const texts = [
    '',
    'plain',
    '  spaces ',
    'Grüße <&> "x" \'y\'',
    '😀 \u{10ffff}',
    'a\r\nb\tc',
    'nul\0\u0001\u001f',
    '\\U0041 \\UD83D\\UDE00 \\\\',
  ];
  const table = [
    [true, true],
    [false, false],
    [0, false],
    [1, true],
    [2, 2],
    [-1, -1],
    [2147483647, 2147483647],
    [-2147483648, -2147483648],
    ...texts.map((text) => [text, text]),
    ['lone \ud800 surrogate', 'lone \ufffd surrogate'],
    ['x'.repeat(100000), 'x'.repeat(100000)],
  ];
  const values = JSON.stringify(table.map(([value]) => value));
  const keys = "(i) => i + ' key 😀 / .'";
  const crashed = await runScript(
    t,
    `const { module: m } = probe();
     ${values}.forEach((value, i) => m.setUserDefault((${keys})(i), value));
     m.setUserDefault('removed', 'x');
     m.removeUserDefault('removed');
     m.setUserDefault('nulled', 'x');
     m.setUserDefault('nulled', null);
     m.synchronizeUserDefaults();
     process.kill(process.pid, 'SIGKILL');`,
    { home, env },
  );
  assert.strictEqual(crashed.signal, 'SIGKILL');
  const read = await evaluate(
    t,
    `const { module: m } = probe();
     const all = ${values}.map((_, i) => m.getUserDefault((${keys})(i)));
     console.log(JSON.stringify([...all, m.getUserDefault('removed'), m.getUserDefault('nulled')]));`,
    { home, env },
  );
  assert.deepStrictEqual(read, [...table.map(([, expected]) => expected), null, null]);
});

test('unsupported values are neither set nor read', async (t) => {
  const { home, env } = sharedHome(t);
  const stored = {
    half: ['<real>0.5</real>', 0],
    oneAndAHalf: ['<real>1.5</real>', true],
    twoPointSeven: ['<real>2.7</real>', 2],
    wide: ['<integer>4294967298</integer>', 2],
    array: ['<array><string>x</string></array>', null],
    dictionary: ['<dict/>', null],
    date: ['<date>2020-01-01T00:00:00Z</date>', null],
    data: ['<data>AAAA</data>', null],
  };
  const entries = Object.entries(stored).map(([key, [xml]]) => `<key>${key}</key>${xml}`);
  writeFile(defaultsFile(home), document(`<dict>${entries.join('')}</dict>`));
  const { values, unset, log } = await evaluate(
    t,
    `const { module: m, captureLog, capturedLog, flushLog } = probe();
     captureLog();
     const values = ${JSON.stringify(Object.keys(stored))}.map((key) => m.getUserDefault(key));
     for (const value of [1.5, undefined, {}, [], 2 ** 31, NaN, Symbol('x'), 10n]) m.setUserDefault('unset', value);
     flushLog();
     const log = capturedLog().map(({ flag, text }) => [flag, text]);
     console.log(JSON.stringify({ values, unset: m.getUserDefault('unset'), log }));`,
    { home, env },
  );
  assert.deepStrictEqual(
    values,
    Object.values(stored).map(([, expected]) => expected),
  );
  assert.strictEqual(unset, null);
  assert.deepStrictEqual(log, Array(8).fill([1, 'Unknown type - cannot set value for key unset']));
});

// ---- Start at login

const entry = (exec, more = '') => `[Desktop Entry]\nType=Application\nName=Mail\nExec=${exec}\n${more}`;
const ours = `"${process.execPath}"`;

/** Runs `calls` with these autostart files, and gives their results and the files that are there then. */
async function withAutostart(t, { user = {}, system = {} }, calls) {
  const { home, env } = sharedHome(t);
  const userFolder = path.join(home, 'config', 'autostart');
  for (const [name, text] of Object.entries(user)) writeFile(path.join(userFolder, name), text);
  for (const [name, text] of Object.entries(system)) writeFile(path.join(home, 'xdg', 'autostart', name), text);
  const results = await evaluate(
    t,
    `const { module: m } = probe(); console.log(JSON.stringify([${calls}].map((result) => result ?? null)));`,
    { home, env: { ...env, XDG_CURRENT_DESKTOP: 'Test:XFCE' } },
  );
  const names = fs.existsSync(userFolder) ? fs.readdirSync(userFolder).sort() : [];
  const files = Object.fromEntries(names.map((name) => [name, fs.readFileSync(path.join(userFolder, name), 'utf8')]));
  return { results, files };
}

test('start at login is switched on once, and off again', async (t) => {
  const { results, files } = await withAutostart(
    t,
    {},
    'm.getStartAtLogin(), m.setStartAtLogin(false), m.setStartAtLogin(true), m.setStartAtLogin(true), m.getStartAtLogin()',
  );
  assert.deepStrictEqual(results, [false, false, true, true, true]);
  assert.deepStrictEqual(Object.keys(files), ['node.desktop']);
  assert.match(files['node.desktop'], new RegExp(`^Exec=${ours}$`, 'm'));
  const off = await withAutostart(t, { user: files }, 'm.getStartAtLogin(), m.setStartAtLogin(false)');
  assert.deepStrictEqual([off.results, off.files], [[true, false], {}]);
});

test('an entry is recognised by its program, and counts only if the session would start it', async (t) => {
  const table = [
    [entry(ours), true],
    [entry(`${process.execPath} --hidden %U`), true],
    [entry('node'), true],
    [entry(ours, 'Hidden=true'), false],
    [entry(ours, 'X-GNOME-Autostart-enabled=false'), false],
    [entry(ours, 'OnlyShowIn=XFCE;GNOME;'), true],
    [entry(ours, 'OnlyShowIn=KDE;'), false],
    [entry(ours, 'NotShowIn=Test;'), false],
    [entry(ours, 'TryExec=/nonexistent/program'), false],
    [entry('/bin/sh'), false],
    [entry('/nonexistent/program'), false],
    [entry('"unfinished'), false],
    ['[Desktop Entry]\nName=Mail\n', false],
    ['not an entry at all \0', false],
    [`#${'x'.repeat(2 << 20)}\n${entry(ours)}`, false],
  ];
  for (const [text, expected] of table) {
    const { results } = await withAutostart(t, { user: { 'mail.desktop': text } }, 'm.getStartAtLogin()');
    assert.deepStrictEqual([text.slice(0, 100), ...results], [text.slice(0, 100), expected]);
  }
});

test('foreign keys of an entry are kept', async (t) => {
  const text = `# kept\n${entry(ours, 'Hidden=true\nX-Foreign=kept\nName[de]=Post\n')}\n[Desktop Action x]\nName=kept\n`;
  const { results, files } = await withAutostart(t, { user: { 'mine.desktop': text } }, 'm.setStartAtLogin(true)');
  assert.deepStrictEqual([results, Object.keys(files)], [[true], ['mine.desktop']]);
  for (const kept of ['# kept', 'X-Foreign=kept', 'Name[de]=Post', '[Desktop Action x]']) {
    assert.ok(files['mine.desktop'].includes(kept), kept);
  }
  assert.ok(!files['mine.desktop'].includes('Hidden'));
});

test('a system-wide entry is hidden and shown again, never changed', async (t) => {
  const system = { 'mail.desktop': entry(ours) };
  const off = await withAutostart(t, { system }, 'm.getStartAtLogin(), m.setStartAtLogin(false)');
  assert.deepStrictEqual(off.results, [true, false]);
  assert.match(off.files['mail.desktop'], /^Hidden=true$/m);
  const on = await withAutostart(t, { system, user: off.files }, 'm.setStartAtLogin(true)');
  assert.deepStrictEqual([on.results, Object.keys(on.files)], [[true], ['mail.desktop']]);
  const bare = await withAutostart(
    t,
    { system, user: { 'mail.desktop': '[Desktop Entry]\nHidden=true\n' } },
    'm.getStartAtLogin(), m.setStartAtLogin(true)',
  );
  assert.deepStrictEqual([bare.results, bare.files], [[false, true], {}]);
});

test("another program's entry and the previous version's second item are left alone", async (t) => {
  const foreign = { 'node.desktop': entry('/bin/sh') };
  const added = await withAutostart(t, { user: foreign }, 'm.setStartAtLogin(true)');
  assert.deepStrictEqual([added.results, Object.keys(added.files)], [[true], ['node-2.desktop', 'node.desktop']]);
  assert.strictEqual(added.files['node.desktop'], foreign['node.desktop']);

  const previous = entry('/bin/sh').replace('Name=Mail', 'Name=Tessaro 3');
  const user = { 'a.desktop': previous.replace('3', '33'), 'b.desktop': previous, 'c.desktop': previous };
  const migrated = await withAutostart(t, { user }, 'm.migrateStartAtLogin(), m.getStartAtLogin()');
  assert.deepStrictEqual(
    [migrated.results, Object.keys(migrated.files)],
    [
      [null, false],
      ['a.desktop', 'c.desktop'],
    ],
  );
});

test('an unwritable folder changes nothing', async (t) => {
  const { home, env } = sharedHome(t);
  fs.writeFileSync(path.join(home, 'config'), 'a file where the folder should be');
  const results = await evaluate(
    t,
    'const { module: m } = probe(); console.log(JSON.stringify([m.setStartAtLogin(true), m.getStartAtLogin()]));',
    { home, env },
  );
  assert.deepStrictEqual(results, [false, false]);
});

test('dangling links and pipes are ignored', async (t) => {
  const { home, env } = sharedHome(t);
  const folder = path.join(home, 'config', 'autostart');
  fs.mkdirSync(folder, { recursive: true });
  fs.symlinkSync(path.join(folder, 'b.desktop'), path.join(folder, 'a.desktop'));
  fs.symlinkSync(path.join(folder, 'a.desktop'), path.join(folder, 'b.desktop'));
  await promisify(execFile)('mkfifo', [path.join(folder, 'c.desktop')]);
  writeFile(path.join(home, 'dotfiles', 'mail.desktop'), entry(ours, 'Hidden=true'));
  fs.symlinkSync(path.join(home, 'dotfiles', 'mail.desktop'), path.join(folder, 'mail.desktop'));
  const results = await evaluate(
    t,
    'const { module: m } = probe(); console.log(JSON.stringify([m.getStartAtLogin(), m.setStartAtLogin(true)]));',
    { home, env },
  );
  assert.deepStrictEqual(results, [false, true]);
  assert.ok(fs.lstatSync(path.join(folder, 'mail.desktop')).isSymbolicLink());
  assert.ok(!fs.readFileSync(path.join(home, 'dotfiles', 'mail.desktop'), 'utf8').includes('Hidden'));
});

test('a program path may have any characters', async (t) => {
  // A backslash is missing here: GNUstep takes it for a separator of folders.
  const folder = path.join(temporaryDirectory(t), 'It\'s "mine" $HOME `x` ü;& (1)');
  const executable = path.join(folder, 'the mail');
  fs.mkdirSync(folder);
  fs.copyFileSync(fs.realpathSync(process.execPath), executable);
  const { home, env } = sharedHome(t);
  const source = 'const { module: m } = probe(); console.log(JSON.stringify([m.setStartAtLogin(true)]));';
  assert.deepStrictEqual(await evaluate(t, source, { home, env, executable }), [true]);
  const file = path.join(env.XDG_CONFIG_HOME, 'autostart', 'the mail.desktop');
  // What a desktop makes of it.
  const started = path.join(home, 'started');
  const script = path.join(home, 'started.js');
  fs.writeFileSync(script, `require('fs').writeFileSync(${JSON.stringify(started)}, process.execPath)`);
  await promisify(execFile)('gio', ['launch', file], { env: { ...process.env, NODE_OPTIONS: `--require=${script}` } });
  await eventually(() => fs.existsSync(started), 'the program is started');
  await eventually(() => fs.readFileSync(started, 'utf8') !== '', 'it tells its name');
  assert.strictEqual(fs.readFileSync(started, 'utf8'), executable);

  // A per cent sign is doubled as the standard wants it, but GLib looks for such a program without halving it.
  const percent = path.join(folder, '100%u');
  fs.renameSync(executable, percent);
  assert.deepStrictEqual(await evaluate(t, source, { home, env, executable: percent }), [true]);
  assert.match(fs.readFileSync(path.join(path.dirname(file), '100%u.desktop'), 'utf8'), /^Exec=.*\/100%%u"$/m);
});

// ---- Text replacements

test('text replacements and substitution switches', async (t) => {
  const items =
    '<array><dict><key>on</key><integer>1</integer><key>replace</key><string>omw</string><key>with</key><string>On my way 😀</string></dict></array>';
  const global = (contents) => document(`<dict>${contents}</dict>`);
  const all = global(
    `<key>NSUserDictionaryReplacementItems</key>${items}
     <key>NSAutomaticDashSubstitutionEnabled</key><true/><key>NSAutomaticPeriodSubstitutionEnabled</key><false/>`,
  );
  const replacements = [{ on: 1, replace: 'omw', with: 'On my way 😀' }];
  const everything = { 'text-replacements': replacements, 'dash-substitution?': true, 'period-substitution?': false };
  const table = [
    ['no file', null, '', {}],
    ['everything', all, '', everything],
    ['nothing set', global(''), '', {}],
    [
      'switched off here',
      all,
      "m.setUserDefault('WebAutomaticTextReplacementEnabled', false)",
      { ...everything, 'text-replacements': [] },
    ],
    ['switched on here', all, "m.setUserDefault('WebAutomaticTextReplacementEnabled', true)", everything],
    [
      'off, without a file',
      null,
      "m.setUserDefault('WebAutomaticTextReplacementEnabled', false)",
      { 'text-replacements': [] },
    ],
    [
      'dashes as here',
      all,
      "m.setUserDefault('WebAutomaticDashSubstitutionEnabled', false)",
      { ...everything, 'dash-substitution?': false },
    ],
    [
      'dashes of another type',
      all,
      "m.setUserDefault('WebAutomaticDashSubstitutionEnabled', 'maybe')",
      { ...everything, 'dash-substitution?': 'maybe' },
    ],
    [
      'other classes',
      global('<key>NSUserDictionaryReplacementItems</key><string>x</string>'),
      '',
      { 'text-replacements': 'x' },
    ],
    [
      'what JSON can not hold',
      global('<key>NSUserDictionaryReplacementItems</key><array><date>2020-01-01T00:00:00Z</date></array>'),
      '',
      null,
    ],
    ['an array', document('<array/>'), '', {}],
    ['no property list', 'rubbish \0', '', {}],
    ['cut off', all.slice(0, 200), '', {}],
    ['empty', '', '', {}],
  ];
  for (const [name, file, before, expected] of table) {
    const { home, env } = sharedHome(t);
    const preferences = path.join(home, 'Library', 'Preferences', '.GlobalPreferences.plist');
    if (file !== null) writeFile(preferences, file);
    const result = await evaluate(
      t,
      `const { module: m } = probe(); ${before}; console.log(m.getTextReplacements());`,
      { home, env },
    );
    assert.deepStrictEqual([name, result], [name, expected]);
  }
});
