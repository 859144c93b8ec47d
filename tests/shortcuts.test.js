'use strict';

// Global shortcuts: recorded with keys that are really pressed, heard while other windows have the keyboard, and told
// apart from everything that can be wrong with them.

const assert = require('assert');
const { test } = require('node:test');

const { evaluate, eventually, runScript, startScript } = require('./support/child');
const { useSession } = require('./support/session');

const session = useSession();

const shift = 0x20000;
const control = 0x40000;
const option = 0x80000;
const command = 0x100000;

const prelude = `
  const { execFile } = require('child_process');
  const fs = require('fs');
  const path = require('path');
  const { promisify } = require('util');
  const host = require('./host');
  const { eventually } = require('./tests/support/child');
  const { display } = host.start();
  const { module: native, shortcuts, menus, captureLog, flushLog, capturedLog } = probe();
  const run = promisify(execFile);
  const ask = (name, value = null) => JSON.parse(shortcuts[name](JSON.stringify([value])))[0];
  const print = (value) => console.log(JSON.stringify(value));
  const pause = (ms) => new Promise((resolve) => setTimeout(resolve, ms));
  const log = () => { flushLog(); return capturedLog().map(({ text }) => text); };

  // What the module has told, in order.
  const statuses = [];
  const actions = [];
  host.on('notification', ({ name, userInfo }) => {
    if (name === 'TsKeyboardShortcutMonitorUpdated') statuses.push(userInfo);
    if (name === 'TsGlobalShortcutAction') actions.push(userInfo['defaults-key']);
  });
  const isHere = (text) => statuses.some(({ shortcut }) => shortcut === text);

  const archive = (keyCode, modifiers) => Buffer.from(ask('archives', [keyCode, modifiers])[0], 'base64');
  const key = (...names) => run('xdotool', ['key', ...names]);

  let window;
  const openWindow = async () => {
    host.setKeepAlive(true);
    window = host.createWindow({ title: 'Shortcuts' });
    await eventually(() => host.windowInfo(window).isKey, 'the keyboard');
    // The window manager may still be at work on the window of the test before.
    await eventually(async () => {
      await key('2');
      return host.windowInfo(window).typedText.includes('2');
    }, 'the first key');
  };
  // What the keys bring about: until a key that is neither recorded nor heard has come through to the page.
  const press = async (...keys) => {
    const count = () => host.keyArrivals().length;
    const before = count();
    await key(...keys);
    await key('Tab');
    await eventually(() => count() > before && host.keyArrivals().at(-1).keyCode === 23, 'the last key');
  };
  // A key that is heard anywhere is heard some time after it is pressed, and nothing else tells when.
  const hear = async (keys, count) => {
    actions.length = 0;
    for (const each of keys) await key(each);
    await eventually(() => actions.length >= count, keys + ' heard');
    return [...actions];
  };
  setImmediate(() => main().then(() => process.exit(), (error) => { console.error(error); process.exit(1); }));
`;

const inSession = (t, body, options = {}) =>
  evaluate(t, `${prelude}\nasync function main() {\n${body}\n}`, {
    ...options,
    env: { ...session.env, ...options.env },
  });

const status = (shortcut, more = {}) => ({
  shortcut,
  error: '',
  'existing?': false,
  'valid?': true,
  'monitoring?': true,
  ...more,
});

// ---- Values

test('names of shortcuts', async (t) => {
  const names = [
    [[46, command | shift], '⇧⌘M'],
    [[46, command | shift | option | control], '⌃⌥⇧⌘M'],
    [[46, 0], 'M'],
    [[0xffff, control | option], '⌃⌥'],
    [[0xffff, 0], ''],
    [[49, option], '⌥Space'],
    [[36, command], '⌘↩'],
    [[122, 0], 'F1'],
    [[90, shift], '⇧F20'],
    [[123, command], '⌘←'],
    [[87, control], '⌃Keypad 5'],
    [[43, command], '⌘,'],
    // Caps Lock and the keypad are no part of a shortcut, and no key has this number.
    [[46, command | 0x10000 | 0x200000], '⌘M'],
    [[200, command], '⌘'],
  ];
  const list = JSON.stringify(names.map(([shortcut]) => shortcut));
  const described = `print(${list}.map((each) => ask('describe', each)));`;
  const expected = names.map(([, name]) => name);
  assert.deepStrictEqual(await inSession(t, described), expected);
  // Without a display the keyboard is taken for an American one.
  const result = await runScript(t, `${prelude}\nasync function main() { ${described} }`);
  assert.deepStrictEqual(JSON.parse(result.stdout), expected, result.stderr);
});

test('names follow the layout, or the user’s first Latin layout', async (t) => {
  const layouts = {
    fr: 'A W É',
    de: 'Q Y 2',
    ru: 'Q Z 2',
    cz: 'Q Y Ě',
    gr: '; Z 2',
    'ru,de': 'Q Y 2',
    us: 'Q Z 2',
  };
  await inSession(
    t,
    `const described = () => [12, 6, 19].map((each) => ask('describe', [each, 0])).join(' ');
     for (const [layout, names] of Object.entries(${JSON.stringify(layouts)})) {
       await run('setxkbmap', [layout]);
       // The application learns of it when the server says so.
       await eventually(() => described() === names, layout + ' is ' + names + ', not ' + described());
     }
     print(null);`,
  );
});

test('which shortcuts are valid', async (t) => {
  const cases = [
    [[46, 0], false],
    [[46, shift], false],
    [[46, option], false],
    [[46, option | shift], false],
    [[46, command], true],
    [[46, control], true],
    [[46, command | option], true],
    [[49, 0], false],
    [[49, shift], false],
    [[49, option], true],
    [[53, option], true],
    [[123, 0], false],
    [[96, 0], true],
    [[96, shift], true],
    [[87, option], false],
    [[0xffff, command], false],
  ];
  const result = await inSession(
    t,
    `print(${JSON.stringify(cases.map(([shortcut]) => shortcut))}.map((each) => ask('valid', each)));`,
  );
  cases.forEach(([shortcut, expected], i) => assert.strictEqual(result[i], expected, JSON.stringify(shortcut)));
});

test('archives are read back in each form, and everything else is refused', async (t) => {
  // Of Apple's binary form: the values, where each begins, and what is known of both; the first value is the list.
  const binary = (...values) => {
    const number = (value) => [0, 0, 0, 0, 0, 0, 0, value];
    const starts = values.map((_, i) => 8 + values.slice(0, i).flat().length);
    const end = 8 + values.flat().length;
    const trailer = [0, 0, 0, 0, 0, 0, 1, 1, ...number(values.length), ...number(0), ...number(end)];
    return String.fromCharCode(...Buffer.from('bplist00'), ...values.flat(), ...starts, ...trailer);
  };
  const broken = [
    '',
    'text',
    '<?xml version="1.0"?><plist><dict/></plist>',
    `<?xml version="1.0"?>${'<array>'.repeat(2000)}`,
    '{"$objects"=("$null"); "$top"={root={"CF$UID"=7;};};}',
    '('.repeat(15000),
    '\0\x01\x02\x03'.repeat(50),
    'bplist00',
    `bplist00${'\xff'.repeat(40)}`,
    // An array that contains itself, arrays a dozen deep with more ways than can be gone, a text and data beyond the end.
    binary([0xa1, 0]),
    binary(...Array.from({ length: 12 }, (_, i) => [0xaf, 0x10, 20, ...Array(20).fill(i + 1)]), [0x08]),
    binary([0x5f, 0x13, 0x7f, 0, 0, 0, 0, 0, 0, 0]),
    binary([0x4f, 0x12, 0x00, 0xff, 0xff, 0xff]),
  ].map((text) => Buffer.from(text, 'latin1').toString('base64'));
  const result = await inSession(
    t,
    `const archives = ask('archives', [46, ${command}]);
     print({
       read: archives.map((each) => ask('unarchive', each)),
       others: [...ask('archivesOfOthers'), ...${JSON.stringify(broken)}].map((each) => ask('unarchive', each)),
       damaged: ask('unarchiveDamaged', archives[0]) > 0,
     });`,
  );
  assert.deepStrictEqual(result.read, ['⌘M', '⌘M', '⌘M']);
  assert.deepStrictEqual(
    result.others,
    result.others.map(() => null),
  );
  // One with a wrong number is a shortcut still; that the others are not, and that nothing has happened, is the point.
  assert.strictEqual(result.damaged, true);
});

test('shortcuts as dictionaries', async (t) => {
  const values = [{ keyCode: 46, modifierFlags: command }, { keyCode: 46 }, { keyCode: 'a', modifierFlags: [] }, [1]];
  const result = await inSession(t, `print(${JSON.stringify(values)}.map((each) => ask('transform', each)));`);
  assert.deepStrictEqual(result, [
    ['⌘M', { keyCode: 46, modifierFlags: command }],
    [null, null],
    [null, null],
    [null, null],
  ]);
});

// ---- Recording

test('a recording shows held modifiers, refuses invalid shortcuts and accepts a valid one', async (t) => {
  const result = await inSession(
    t,
    `captureLog();
     await openWindow();
     native.startMonitoringKeyboardShortcuts('first');
     native.startMonitoringKeyboardShortcuts('second');
     const typed = host.windowInfo(window).typedText;
     const told = {};
     for (const keys of ['', 'ctrl', 'ctrl+w', 'ctrl+q', 'm', 'ctrl+n', 'ctrl+shift+k']) {
       if (keys !== '') await press(keys);
       told[keys] = statuses.splice(0);
     }
     print({
       told,
       log: log().filter((text) => text.startsWith('Already')),
       untyped: host.windowInfo(window).typedText.replaceAll('\\t', '') === typed,
       stored: ['first', 'second'].map((name) => native.globalShortcutDescriptionForDefaultsKey(name)),
     });`,
  );
  const refused = { error: '⌘N is the shortcut of the menu item “New Message”.', 'valid?': false };
  assert.deepStrictEqual(result, {
    told: {
      '': [status('')],
      ctrl: [status('⌘'), status('')],
      'ctrl+w': [status('⌘'), status('')],
      'ctrl+q': [status('⌘'), status('')],
      m: [],
      'ctrl+n': [status('⌘'), status('⌘N', refused), status('')],
      'ctrl+shift+k': [status('⌘'), status('⇧⌘'), status('⇧⌘K', { 'monitoring?': false })],
    },
    log: ['Already monitoring: Cannot turn on monitor for shortcuts.'],
    untyped: true,
    stored: ['⇧⌘K', null],
  });
});

test('Escape, Delete, Forward Delete and a stop restore the earlier shortcut', async (t) => {
  const result = await inSession(
    t,
    `await openWindow();
     const ways = { Escape: () => key('Escape'), BackSpace: () => key('BackSpace'), Delete: () => key('Delete'),
       stop: () => native.stopMonitoringKeyboardShortcuts() };
     const told = {};
     for (const [name, end] of Object.entries(ways)) {
       host.setDefault(name, archive(46, ${command | shift}));
       native.startMonitoringKeyboardShortcuts(name);
       const during = native.globalShortcutDescriptionForDefaultsKey(name);
       await end();
       await eventually(() => statuses.length > 1, name);
       native.stopMonitoringKeyboardShortcuts();
       told[name] = [during, statuses.splice(0), native.globalShortcutDescriptionForDefaultsKey(name)];
     }
     // With nothing to bring back, and with what is no shortcut.
     native.startMonitoringKeyboardShortcuts('none');
     native.stopMonitoringKeyboardShortcuts();
     host.setDefault('text', 'as it was');
     native.startMonitoringKeyboardShortcuts('text');
     native.stopMonitoringKeyboardShortcuts();
     print({ told, others: statuses, text: native.getUserDefault('text') });`,
  );
  const restored = [
    null,
    [status('', { 'existing?': true }), status('⇧⌘M', { 'existing?': true, 'monitoring?': false })],
    '⇧⌘M',
  ];
  const ended = status('', { 'existing?': true, 'monitoring?': false });
  assert.deepStrictEqual(result, {
    told: { Escape: restored, BackSpace: restored, Delete: restored, stop: restored },
    others: [status(''), ended, status('', { 'existing?': true }), ended],
    text: 'as it was',
  });
});

test('an accepted shortcut stays until a stop, which restores the earlier one', async (t) => {
  const result = await inSession(
    t,
    `await openWindow();
     host.setDefault('key', archive(46, ${command | shift}));
     native.startMonitoringKeyboardShortcuts('key');
     await press('ctrl+alt+k');
     const accepted = native.globalShortcutDescriptionForDefaultsKey('key');
     native.startMonitoringKeyboardShortcuts('other');
     native.stopMonitoringKeyboardShortcuts();
     const beside = native.globalShortcutDescriptionForDefaultsKey('key');
     native.startMonitoringKeyboardShortcuts('key');
     await press('ctrl+alt+j');
     native.stopMonitoringKeyboardShortcuts();
     print([accepted, beside, native.globalShortcutDescriptionForDefaultsKey('key')]);`,
  );
  assert.deepStrictEqual(result, ['⌥⌘K', '⌥⌘K', '⌥⌘K']);
});

// ---- Binding

test('a bound shortcut works in every application, with any locks on', async (t) => {
  const result = await inSession(
    t,
    `await openWindow();
     host.setDefault('key', archive(46, ${command | shift}));
     host.setDefault('alone', archive(96, 0));
     native.bindGlobalShortcutWithDefaultsKey('key');
     native.bindGlobalShortcutWithDefaultsKey('key');
     native.bindGlobalShortcutWithDefaultsKey('alone');
     native.bindGlobalShortcutWithDefaultsKey('empty');
     const heard = {};
     heard.inWindow = await hear(['ctrl+shift+m', 'F5'], 2);
     const stillTypes = await eventually(async () => { await key('3'); return host.windowInfo(window).typedText.includes('3'); }, 'typing');
     host.closeWindow(window);
     heard.elsewhere = await hear(['ctrl+shift+m', 'F5'], 2);
     for (const locks of [['Num_Lock'], ['Caps_Lock'], ['Num_Lock', 'Caps_Lock'], ['Scroll_Lock']]) {
       for (const lock of locks) await key(lock);
       heard[locks] = await hear(['ctrl+shift+m', 'F5'], 2);
       for (const lock of locks) await key(lock);
     }
     heard.others = await hear(['ctrl+m', 'ctrl+shift+alt+m', 'shift+m', 'shift+F5', 'F5'], 1);
     print({ heard, stillTypes });`,
  );
  const both = ['key', 'alone'];
  assert.deepStrictEqual(result, {
    heard: {
      inWindow: both,
      elsewhere: both,
      Num_Lock: both,
      Caps_Lock: both,
      'Num_Lock,Caps_Lock': both,
      Scroll_Lock: both,
      others: ['alone'],
    },
    stillTypes: true,
  });
});

test('a held key is one press, also the key just recorded', async (t) => {
  const result = await inSession(
    t,
    `await openWindow();
     // The server repeats a key after 0.66 s.
     const hold = async (name) => {
       await run('xdotool', ['keydown', name, 'sleep', '1.2', 'keyup', name]);
       await press('3');
     };
     native.bindGlobalShortcutWithDefaultsKey('key');
     native.startMonitoringKeyboardShortcuts('key');
     await hold('F6');
     const recorded = [native.globalShortcutDescriptionForDefaultsKey('key'), actions.length];
     await hold('F6');
     const held = actions.length;
     native.startMonitoringKeyboardShortcuts('key');
     await key('F7');
     await eventually(() => isHere('F7'), 'another shortcut');
     print({ recorded, held, atOnce: await hear(['F7', 'F7', 'F6'], 2) });`,
  );
  assert.deepStrictEqual(result, { recorded: ['F6', 0], held: 1, atOnce: ['key', 'key'] });
});

test('the binding follows the stored shortcut, and is inactive while recording', async (t) => {
  const result = await inSession(
    t,
    `await openWindow();
     const heard = {};
     native.bindGlobalShortcutWithDefaultsKey('key');
     native.startMonitoringKeyboardShortcuts('key');
     await press('ctrl+shift+m');
     heard.recorded = await hear(['ctrl+shift+m'], 1);
     actions.length = 0;
     native.startMonitoringKeyboardShortcuts('key');
     await press('ctrl+shift+m');
     heard.duringRecording = [...actions];
     heard.again = await hear(['ctrl+shift+m'], 1);
     host.setDefault('key', archive(96, 0));
     heard.changed = await hear(['ctrl+shift+m', 'F5'], 1);
     host.setDefault('key', 'no shortcut');
     await press('F5');
     heard.broken = [...actions.splice(1)];
     host.setDefault('same', archive(96, 0));
     host.setDefault('key', archive(96, 0));
     native.bindGlobalShortcutWithDefaultsKey('same');
     heard.ofTwo = await hear(['F5'], 2);
     native.removeUserDefault('key');
     heard.ofTheOther = await hear(['F5'], 1);
     print(heard);`,
  );
  assert.deepStrictEqual(result, {
    recorded: ['key'],
    duringRecording: [],
    again: ['key'],
    changed: ['key'],
    broken: [],
    ofTwo: ['key', 'same'],
    ofTheOther: ['same'],
  });
});

test('bindings survive changes of the layout and of modifier keys', async (t) => {
  const result = await inSession(
    t,
    `host.setDefault('key', archive(6, ${command | shift}));
     host.setDefault('super', archive(6, ${control}));
     native.bindGlobalShortcutWithDefaultsKey('key');
     native.bindGlobalShortcutWithDefaultsKey('super');
     const heard = {};
     // The key right of the left Shift key, whatever is on it.
     const place = '52';
     const switchTo = {
       de: () => run('setxkbmap', ['de']),
       ru: () => run('setxkbmap', ['ru']),
       'us,ru': () => run('setxkbmap', ['us,ru']),
       'another bit for Super': async () => {
         const { stdout } = await run('xkbcomp', [process.env.DISPLAY, '-']);
         const file = path.join(process.env.HOME, 'moved.xkb');
         fs.writeFileSync(file, stdout.replace(/modifier_map Mod4/g, 'modifier_map Mod3'));
         await run('xkbcomp', ['-w', '0', file, process.env.DISPLAY]);
       },
       us: () => run('setxkbmap', ['us']),
     };
     for (const [name, make] of Object.entries(switchTo)) {
       await make();
       // The grabs are made anew when the server tells of the keyboard, and there is no other sign of that.
       await eventually(async () => {
         actions.length = 0;
         await key('ctrl+shift+' + place);
         await key('super+' + place);
         await pause(50);
         heard[name] = [...actions];
         return actions.length >= 2;
       }, name + ' ' + JSON.stringify(heard));
     }
     print(heard);`,
  );
  for (const [layout, heard] of Object.entries(result)) assert.deepStrictEqual(heard, ['key', 'super'], layout);
});

// ---- What is in the way

test('a shortcut of another process is refused and logged, and works there only', async (t) => {
  const other = startScript(
    t,
    `${prelude}
     async function main() {
       host.setDefault('theirs', archive(46, ${command | shift}));
       native.bindGlobalShortcutWithDefaultsKey('theirs');
       host.on('notification', ({ name }) => name === 'TsGlobalShortcutAction' && process.stdout.write('heard\\n'));
       host.setKeepAlive(true);
       process.stdout.write('ready\\n');
       await new Promise((resolve) => process.stdin.on('end', resolve).resume());
     }`,
    { env: session.env },
  );
  await other.printed('ready\n');
  const result = await inSession(
    t,
    `captureLog();
     await openWindow();
     host.setDefault('ours', archive(46, ${command | shift}));
     native.bindGlobalShortcutWithDefaultsKey('ours');
     const why = ask('whyTaken', [46, ${command | shift}]);
     // A key that is sent to the window reaches it whoever has grabbed it.
     native.startMonitoringKeyboardShortcuts('new');
     statuses.length = 0;
     host.probe('sendKey', { window: host.windowInfo(window).systemWindow, keycode: 58, held: [37, 50] });
     const refused = await eventually(() => statuses.find(({ shortcut }) => shortcut === '⇧⌘M'), 'the refusal');
     native.stopMonitoringKeyboardShortcuts();
     await key('ctrl+shift+m');
     await press('3');
     print({ why, refused, actions, log: log().filter((text) => text.includes('ours')) });`,
  );
  const why = '⇧⌘M is already used by another application or by the system.';
  assert.deepStrictEqual(result, {
    why,
    refused: status('⇧⌘M', { error: why, 'valid?': false }),
    actions: [],
    log: [`The shortcut stored under ours is not heard: ${why}`],
  });
  await eventually(() => other.output.stdout === 'ready\nheard\n', 'their shortcut');

  // When they are gone it can be had.
  other.process.stdin.end();
  assert.strictEqual((await other.ended).code, 0);
  const after = await inSession(
    t,
    `host.setDefault('ours', archive(46, ${command | shift}));
     native.bindGlobalShortcutWithDefaultsKey('ours');
     print([ask('whyTaken', [46, ${command | shift}]), await hear(['ctrl+shift+m'], 1)]);`,
  );
  assert.deepStrictEqual(after, [null, ['ours']]);
});

test('malformed archives in the user defaults are logged and ignored', async (t) => {
  const result = await inSession(
    t,
    `captureLog();
     const sound = archive(46, ${command});
     const values = { truncated: sound.subarray(0, 100), text: 'a text', number: 7, list: [sound], empty: Buffer.alloc(0),
       wrongClass: Buffer.from(ask('archivesOfOthers')[1], 'base64') };
     const answers = {};
     for (const [name, value] of Object.entries(values)) {
       host.setDefault(name, value);
       native.bindGlobalShortcutWithDefaultsKey(name);
       answers[name] = [native.globalShortcutDescriptionForDefaultsKey(name), log().some((text) => text.includes('stored under ' + name))];
     }
     print([answers, native.globalShortcutDescriptionForDefaultsKey('nothing')]);`,
  );
  const none = [null, true];
  assert.deepStrictEqual(result, [
    { truncated: none, text: none, number: none, list: none, empty: none, wrongClass: none },
    null,
  ]);
});

test('listeners may throw, and may stop or restart the recording', async (t) => {
  const result = await inSession(
    t,
    `await openWindow();
     const thrown = [];
     process.on('uncaughtException', ({ message }) => thrown.push(message));
     host.setDefault('key', archive(96, 0));
     native.bindGlobalShortcutWithDefaultsKey('key');
     host.on('notification', ({ name }) => {
       if (name === 'TsGlobalShortcutAction') throw new Error('from the listener');
     });
     const heard = await hear(['F5', 'F5'], 2);
     host.once('notification', () => { throw new Error('from the recording'); });
     let caught;
     try { native.startMonitoringKeyboardShortcuts('one'); } catch ({ message }) { caught = message; }
     // Another recording begins as soon as one has ended.
     host.once('notification', () => native.startMonitoringKeyboardShortcuts('two'));
     native.stopMonitoringKeyboardShortcuts();
     await press('ctrl+alt+k');
     host.removeAllListeners('notification');
     print({ heard, thrown: [...thrown, caught].filter(Boolean).sort(), stored: ['one', 'two'].map((name) => native.globalShortcutDescriptionForDefaultsKey(name)) });`,
  );
  assert.deepStrictEqual(result, {
    heard: ['key', 'key'],
    thrown: ['from the listener', 'from the listener', 'from the recording'],
    stored: [null, '⌥⌘K'],
  });
});

test('a session without system-wide keys is reported as unsupported', async (t) => {
  const body = `
    captureLog();
    await openWindow();
    host.setDefault('key', archive(96, 0));
    native.bindGlobalShortcutWithDefaultsKey('key');
    native.startMonitoringKeyboardShortcuts('other');
    await press('F6');
    print([statuses.at(-1), native.globalShortcutDescriptionForDefaultsKey('key'), log().filter((text) => text.includes('key is not'))]);`;
  const why = 'This session doesn’t let applications have shortcuts outside their own windows.';
  for (const env of [{ XDG_SESSION_TYPE: 'wayland' }, { WAYLAND_DISPLAY: 'wayland-0' }]) {
    assert.deepStrictEqual(await inSession(t, body, { env }), [
      status('F6', { error: why, 'valid?': false }),
      'F5',
      [`The shortcut stored under key is not heard: ${why}`],
    ]);
  }
});

test('without a display nothing is recorded, and stored shortcuts keep their names', async (t) => {
  const result = await runScript(
    t,
    `${prelude}
     async function main() {
       host.setDefault('key', archive(46, ${command | shift}));
       native.bindGlobalShortcutWithDefaultsKey('key');
       native.startMonitoringKeyboardShortcuts('key');
       native.stopMonitoringKeyboardShortcuts();
       print([display, statuses, native.globalShortcutDescriptionForDefaultsKey('key')]);
     }`,
  );
  assert.deepStrictEqual(JSON.parse(result.stdout), [false, [], '⇧⌘M'], result.stderr);
});

test('registered keys don’t keep the process alive, and are released at its end', async (t) => {
  const source = `
    host.setDefault('key', archive(96, 0));
    native.bindGlobalShortcutWithDefaultsKey('key');
    print(ask('whyTaken', [96, 0]));`;
  for (let round = 0; round < 2; ++round) {
    const result = await runScript(t, `${prelude.replace(/setImmediate\(.*\n/, '')}\n${source}`, { env: session.env });
    assert.deepStrictEqual([result.code, result.stdout], [0, 'null\n'], result.stderr);
  }
});
