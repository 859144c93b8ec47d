'use strict';

// Which keys reach the menu, the page and script, and in which order: with keys that are really pressed, as far as
// there are any.

const { assert, scenarios, test } = require('./support');
const { shift, control, option, command, keyCodes: key } = require('./support/keys');

const [keyUp, flagsChanged, mouseDown] = [11, 12, 1];

const inSession = scenarios({
  display: true,
  uses: ['keys'],
  fixture({ get, host, native, sendMessage }) {
    const application = sendMessage('NSApplication', 'sharedApplication');
    const happened = [];
    const texts = {
      TsDispatchNotificationName: ({ action }) => action,
      TsAppMenuWillOpen: ({ menu }) => `will open ${menu}`,
    };
    host.on('notification', ({ name, userInfo }) => happened.push(texts[name]?.(userInfo) ?? name));
    host.on('command', ({ commandId }) => happened.push(commandId));
    host.on('page-key', ({ isUsed }) => happened.push(isUsed ? 'page uses' : 'page'));
    return {
      application,
      performKeyEquivalent: (event) => sendMessage(get(application, 'mainMenu'), 'performKeyEquivalent:', event),
      /** An action's result, followed by all that happens during the action, in order. */
      async during(act) {
        happened.length = 0;
        const result = await act();
        return result === undefined ? [...happened] : [result, ...happened];
      },
      /** The reports of the modifier keys, each as eight digits. */
      modifierReports() {
        const reports = [];
        native.setKeyboardModifierKeysCallbackFunction((...values) => reports.push(values.map(Number).join('')));
        return reports;
      },
    };
  },
});

inSession.test('an inherited method is replaced in the heir alone', ({ equal, menus, sendMessage }) => {
  const [heir, base] = ['NSSecureTextField', 'NSTextField'].map((name) => sendMessage(name, 'new'));
  const [inherited, own] = [heir, base].map((control) => sendMessage(control, 'tag'));
  for (let times = 0; times < 2; ++times) {
    equal(menus.replaceMethod('NSSecureTextField', 'tag', 'ts_previousTag'), true);
    const tags = [sendMessage(heir, 'tag'), sendMessage(heir, 'ts_previousTag'), sendMessage(base, 'tag')];
    equal(tags, [7, inherited, own]);
  }
  equal(menus.replaceMethod('NSSecureTextField', 'noSuchMethod', 'ts_previous'), false);
});

// ---- Keys that are pressed

inSession.test('special keys reach the menu first, others after the page with their key press', async (fixture) => {
  const { during, equal, host, native, openKeyWindow, press } = fixture;
  const menu = 'will open TessaroHost';
  const [previous, next] = ['window/set-previous-tab-active', 'window/set-next-tab-active'];
  const table = [
    ...[['ctrl+comma', menu, 101], ['ctrl+Left', menu, 405], ['ctrl+Right', menu, 406], ['ctrl+Down', menu, 408]],
    ...[['ctrl+Up', menu, 407], ['ctrl+alt+Down', menu, 505], ['ctrl+alt+Up', menu, 504]],
    ...[['ctrl+super+space', menu, 307], ['ctrl+shift+d', menu, 205]],
    ...[['ctrl+super+Left', previous], ['ctrl+super+Right', next], ['ctrl+alt+Left', previous], ['ctrl+alt+Right', next]],
    // Special, but nothing of the menu: the page gets it after all.
    ...[['ctrl+shift+Left', menu, 'page uses'], ['ctrl+shift+comma', menu, 'page', menu], ['ctrl+shift+Down', menu, 'page uses']],
    ...[['ctrl+shift+alt+Up', menu, 'page uses'], ['ctrl+shift+super+Right', next]],
    // Not special: the page first; a key that it does not use comes back to the menu.
    ...[['ctrl+d', 'page', menu], ['ctrl+n', 'page', menu, 200], ['ctrl+shift+s', 'page', menu, 203]],
    ...[['ctrl+shift+bracketleft', 'page', previous], ['ctrl+shift+bracketright', 'page', next]],
    ...[['ctrl+alt+bracketleft', 'page', previous], ['ctrl+alt+bracketright', 'page', next]],
    ...[['ctrl+shift+alt+bracketleft', 'page', previous], ['ctrl+y', 'page', menu], ['super+y', 'page', menu], ['y']],
  ]; // prettier-ignore
  const window = await openKeyWindow();
  for (const [keys, ...expected] of table) equal([keys, ...(await during(() => press(window, keys)))], [keys, ...expected]); // prettier-ignore
  const events = [];
  const note = ({ event }) => event && events.push([event, JSON.parse(native.modifierKeys())]);
  host.on('notification', ({ userInfo }) => note(userInfo));
  await press(window, 'ctrl+n');
  await press(window, 'ctrl+Left');
  const off = Object.fromEntries(['mouse', 'function-modifier', 'control-modifier', 'option-modifier', 'shift-modifier'].map((name) => [`${name}?`, false])); // prettier-ignore
  const keys = { ...off, 'keyboard?': true, 'command-modifier?': true };
  const arrow = { ...keys, 'function-modifier?': true };
  equal(events[0][0], { ...keys, 'key-code': 45, chars: 'n' });
  equal(events[1], [{ ...arrow, 'key-code': 123, chars: '\uf702' }, arrow]);
});

inSession.test('every change of the modifier keys is reported, those in the background on return', async (fixture) => {
  const { equal, eventually, host, modifierReports, openKeyWindow, press, run, spawn } = fixture;
  const window = await openKeyWindow();
  const reports = modifierReports();
  await press(window, 'ctrl+shift+alt+super+F5');
  // Function, Control, Option, Command, Shift, Caps Lock, Help, numeric pad.
  equal(reports.splice(0).join(' '), '00010000 00011000 00111000 01111000 01110000 01100000 01000000 00000000');
  // The lock's state is that of the moment of the report: each report comes before the next event.
  for (const [count, act] of ['keydown', 'keyup', 'keydown', 'keyup'].entries()) {
    await run('xdotool', act, 'Caps_Lock');
    await eventually(() => reports.length > count, act);
  }
  equal(reports.join(' '), '00000100 00000100 00000100 00000000');
  const isKey = () => host.windowInfo(window).isKey;
  const away = async (...keys) => {
    const other = spawn('xev', ['-name', 'Other'], { stdio: 'ignore' });
    await eventually(() => !isKey(), 'the background');
    await run('xdotool', ...keys);
    reports.length = 0;
    await run('xdotool', 'windowactivate', host.windowInfo(window).systemWindow);
    await eventually(() => isKey() && reports.length > 0, 'the foreground');
    other.kill();
    return reports.at(-1);
  };
  const up = ['keyup', 'shift', 'keyup', 'alt'];
  try {
    equal(await away('keydown', 'shift', 'keydown', 'alt'), '00101000');
    equal(await away(...up), '00000000');
  } finally {
    await run('xdotool', ...up);
  }
});

inSession.test('shortcuts work with Shift, Caps Lock and other layouts, and dead keys still type', async (fixture) => {
  const { assert, during, equal, host, key, menus, native, openKeyWindow, press, run } = fixture;
  // Each with layouts, and keys that choose the item there or don't.
  const table = [
    // Lower or upper case: Shift is what the accelerator says.
    ['Cmd+Shift+u', { us: { 'ctrl+shift+u': true, 'ctrl+u': false }, ru: { 'ctrl+shift+30': true, 'ctrl+30': false } }],
    ['Cmd+U', { us: { 'ctrl+shift+u': true, 'ctrl+u': false } }],
    ['Cmd+Shift+7', { us: { 'ctrl+shift+7': true, 'ctrl+7': false }, de: { 'ctrl+shift+16': true } }],
    ['Cmd+&', { us: { 'ctrl+shift+7': true }, de: { 'ctrl+shift+16': false } }],
    ['Cmd+/', { us: { 'ctrl+slash': true }, de: { 'ctrl+shift+16': true } }],
    ['Cmd+Shift+F5', { us: { 'ctrl+F5': false } }],
    // Letters are where the layout has them: the key right of T. Letters of other scripts: by the user's Latin layout.
    ['Cmd+z', { us: { 'ctrl+29': false }, de: { 'ctrl+29': true }, 'ru,de': { 'ctrl+29': true } }],
    ['Cmd+u', { ru: { 'ctrl+30': true, 'ctrl+29': false }, gr: { 'ctrl+30': true }, us: { 'ctrl+shift+u': false, 'ctrl+u': true } }],
  ]; // prettier-ignore
  const window = await openKeyWindow();
  const isChosen = async (name) => (await during(() => press(window, name))).includes(1);
  for (const [accelerator, layouts] of table) {
    menus.setMainMenu([{ title: 'TessaroHost', items: [{ title: 'It', commandId: 1 }] }]);
    native.updateMainMenuMenuItem('[0,0]', JSON.stringify({ accelerator }));
    for (const [layout, keys] of Object.entries(layouts)) {
      await run('setxkbmap', layout);
      for (const [name, isItem] of Object.entries(keys)) equal(await isChosen(name), isItem, `${accelerator} ${layout} ${name}`); // prettier-ignore
    }
  }
  await key('Caps_Lock');
  equal(await isChosen('ctrl+u'), true);
  await key('Caps_Lock');
  await run('setxkbmap', 'de');
  const third = ['ISO_Level3_Shift+q', 'ISO_Level3_Shift', 'ssharp', 'ctrl+ISO_Level3_Shift'];
  await press(window, 'dead_circumflex', 'a', ...third);
  await run('setxkbmap', 'us');
  assert.match(host.windowInfo(window).typedText, /â.*@ß/);
});

inSession.test('menus show the user’s own keys for Command and Option', async (fixture) => {
  const { command, control, during, equal, menus, openKeyWindow, option, press, sendMessage, shift } = fixture;
  const items = [
    { title: 'New', key: 'n', modifiers: command, commandId: 1 },
    { title: 'Shifted', key: 'N', modifiers: command | option },
    { title: 'Arrow', key: '\uf702', modifiers: command | control | shift },
    { title: 'Function', key: '\uf708', modifiers: 0 },
    { title: 'Enter', key: '\r', modifiers: option },
    { title: 'None' },
  ];
  menus.setMainMenu([{ title: 'TessaroHost', items }]);
  equal(menus.shortcutTexts().join(), 'Ctrl+N,Ctrl+Alt+Shift+N,Super+Ctrl+Shift+←,F5,Alt+Enter,');
  const defaults = sendMessage('NSUserDefaults', 'standardUserDefaults');
  sendMessage(defaults, 'setObject:forKey:', 'Super_L', 'GSFirstCommandKey');
  sendMessage(defaults, 'setObject:forKey:', 'Control_L', 'GSFirstControlKey');
  equal(menus.shortcutTexts().join(), 'Super+N,Super+Alt+Shift+N,Ctrl+Super+Shift+←,F5,Alt+Enter,');
  const window = await openKeyWindow();
  equal((await during(() => press(window, 'super+n'))).at(-1), 1);
  equal((await during(() => press(window, 'ctrl+n'))).includes(1), false);
});

inSession.test('the application is hidden from its command until it shows a window', async (fixture) => {
  const { equal, eventually, host, key, native, openKeyWindow } = fixture;
  const window = await openKeyWindow();
  equal(native.isAppHidden(), false);
  await key('ctrl+h');
  await eventually(() => native.isAppHidden(), 'hiding');
  await eventually(() => !host.windowInfo(window).isKey, 'a window without the keyboard');
  await openKeyWindow();
  await eventually(() => !native.isAppHidden(), 'a window');
});

// ---- Made-up events

inSession.test('synthetic events repeat the remembered key press, or are refused', async (fixture) => {
  const { application, command, during, equal, event, menus, performKeyEquivalent, sendMessage } = fixture;
  menus.setMainMenu([{ title: 'TessaroHost', items: [{ title: 'Nothing' }] }]);
  const down = event(command);
  const madeUp = (more) => event(0, { keyCode: 0, isSynthetic: true, ...more });
  const [refused, searched] = [[false], [false, 'will open TessaroHost']];
  // The key presses before an event, and the outcome.
  const table = [
    [[], madeUp(), refused],
    [[down], madeUp(), searched],
    [[], madeUp(), refused],
    [[down], madeUp({ characters: 'm' }), refused],
    [[], madeUp(), refused],
    [[down], madeUp({ isSynthetic: false }), refused],
    [[down], madeUp({ type: 11, characters: 'x' }), refused],
    [[down, event(0, { ignoring: 'q' })], madeUp({ type: 1 }), refused],
  ];
  for (const [presses, next, expected] of table) {
    for (const each of presses) sendMessage(application, 'sendEvent:', each);
    equal(await during(() => performKeyEquivalent(next)), expected);
  }
});

test('a released key of tab switching is consumed too, and similar events are not', async (t) => {
  const next = 'window/set-next-tab-active';
  const bracket = (modifiers, ignoring, type) => [modifiers, { ignoring, type, keyCode: key.leftBracket }];
  const arrow = (modifiers, keyCode, type) => [modifiers, { keyCode, type, ignoring: 'x' }];
  const rows = [
    [...bracket(command | shift, '{', keyUp), [true]],
    [...arrow(command | control, key.right, keyUp), [true, next]],
    [...bracket(command | option | control, ']'), [true, next]],
    [...bracket(command | shift, '['), [false]],
    [...bracket(command | option, '{'), [false]],
    [...bracket(command, '['), [false]],
    [...bracket(shift, '{'), [false]],
    [...bracket(command | shift, '{', flagsChanged), [false]],
    [...arrow(command | control | option, key.left), [false]],
    [...arrow(command, key.left, mouseDown), [false]],
  ];
  await inSession.table(t, rows, ({ during, event, menus }, ...each) => during(() => menus.processKey(event(...each))));
});

test('every event after the bracket check is written to the system log', async (t) => {
  const { stderr } = await inSession.ends(t, ({ command, event, menus, option, shift }) => {
    const events = [event(command | option), event(command), event(command | shift, { ignoring: '{' })];
    for (const each of events) menus.processKey(each);
  });
  const [first, second, ...others] = stderr.match(/>>> command\+option: .*/g);
  assert.match(first, /^>>> command\+option: 1 45 NSEvent: /);
  assert.match(second, /^>>> command\+option: 0 45 NSEvent: /);
  assert.deepStrictEqual(others, []);
});

inSession.test('of two items with one shortcut a later menu’s wins over the application menu’s', async (fixture) => {
  const { command, during, equal, event, menus, native, performKeyEquivalent } = fixture;
  const menu = (title, commandId) => ({ title, items: [{ title, key: 'j', modifiers: command, commandId }] });
  menus.setMainMenu([menu('TessaroHost', 1), menu('Second', 2), menu('Third', 3)]);
  const chosen = async () => (await during(() => performKeyEquivalent(event(command, { ignoring: 'j' })))).pop();
  equal(await chosen(), 2);
  const table = [
    ['[1]', '{"visible":false}', 3],
    ['[2,0]', '{"visible":false}', 1],
    ['[0,0]', '{"accelerator":null}', 'will open TessaroHost'],
  ];
  for (const [path, attributes, expected] of table) {
    native.updateMainMenuMenuItem(path, attributes);
    equal(await chosen(), expected);
  }
});

inSession.test('events are described for menus, and reported for their modifiers unless synthetic', (fixture) => {
  const { command, control, equal, event, menus, modifierReports, native, shift } = fixture;
  const described = (isKey, isControl, isCommand, isShift, keyCode, chars) => ({
    ...{ 'mouse?': !isKey, 'keyboard?': isKey, 'function-modifier?': false, 'option-modifier?': false },
    ...{ 'control-modifier?': isControl, 'command-modifier?': isCommand, 'shift-modifier?': isShift },
    ...{ 'key-code': keyCode, chars },
  });
  equal(menus.menuEventDescription(null), {});
  const key = event(control | shift, { ignoring: 'N' });
  equal(menus.menuEventDescription(key), described(true, true, false, true, 45, 'N'));
  equal(menus.menuEventDescription(event(command, { type: 1 })), described(false, false, true, false, 0, ''));
  equal(native.modifierKeys(), null);
  const [flagsChanged, mouseDown] = [12, 1];
  menus.processModifiers(event(command, { type: flagsChanged }));
  const reports = modifierReports();
  menus.processModifiers(event(command, { type: flagsChanged, isSynthetic: true }));
  menus.processModifiers(event(0xff0000 & ~0x10000, { type: flagsChanged, keyCode: 50 }));
  menus.processModifiers(event(shift, { type: mouseDown }));
  equal(reports, ['11111011', '00001000']);
});

test('pasting is taken over only when the clipboard holds files', async (t) => {
  const rows = [
    [{ text: 'words' }, [[false, true, false]]],
    [{ files: ['/etc/hosts', '/etc/pass wd'] }, [[true, false, true], 'TsPasteFilesIntoCurrentWebContents']],
    [{ files: [] }, [[false, false, false]]],
  ];
  await inSession.table(t, rows, ({ during, menus, pasteboard, sendMessage }, content) => {
    pasteboard.put(content);
    const paste = () => sendMessage(sendMessage('NSApplication', 'sharedApplication'), 'tsPasteIfPossible');
    return during(() => [paste(), menus.hasFiles('NSStringPboardType'), menus.hasFiles('public.file-url')]);
  });
});
