'use strict';

// Which keys reach the menu, the page and script, and in which order: with keys that are really pressed, as far as
// there are any.

const assert = require('assert');
const { test } = require('node:test');

const { shift, control, option, command, keyCodes: key, pressing } = require('./support/keys');
const { scenarios } = require('./support/scenario');

const [keyDown, keyUp, flagsChanged, mouseDown] = [10, 11, 12, 1];

const inSession = scenarios({
  display: true,
  uses: ['keys'],
  fixture({ host }) {
    const happened = [];
    const told = {
      TsDispatchNotificationName: ({ action }) => action,
      TsAppMenuWillOpen: ({ menu }) => `will open ${menu}`,
    };
    host.on('notification', ({ name, userInfo }) => happened.push(told[name]?.(userInfo) ?? name));
    host.on('command', ({ commandId }) => happened.push(commandId));
    host.on('page-key', ({ isUsed }) => happened.push(isUsed ? 'page uses' : 'page'));
    /** What happens while something is done, in order. */
    const during = async (act) => {
      happened.length = 0;
      const result = await act();
      return result === undefined ? [...happened] : [result, ...happened];
    };
    return { happened, during };
  },
});

// ---- Predicates

const event = (modifiers, { type = keyDown, keyCode = key.n, ignoring = 'n' } = {}) => ({
  type,
  modifiers,
  keyCode,
  ignoring,
  characters: ignoring,
  x: 5,
});

test('key combinations', async (t) => {
  const names = ['Command', 'CommandOption', 'CommandControl', 'CommandShift'];
  const holds = {
    Command: (flags) => flags === command || flags === (command | shift),
    CommandOption: (flags) => (flags & ~shift) === (command | option),
    CommandControl: (flags) => (flags & ~shift) === (command | control),
    CommandShift: (flags) => flags === (command | shift),
  };
  const bits = [shift, control, option, command];
  const combinations = Array.from({ length: 16 }, (_, i) =>
    bits.reduce((sum, bit, n) => sum | (i & (1 << n) && bit), 0),
  );
  const results = await inSession(
    t,
    ({ menus }, events) => events.map(menus.predicates),
    combinations.map((flags) => event(flags)),
  );
  combinations.forEach((flags, i) => {
    const expected = { other: false };
    for (const name of names) {
      expected[`Is${name}KeyPressed`] = holds[name](flags);
      expected[`Is${name}AndKeyCodeKey`] = holds[name](flags);
    }
    expected.IsCommandAndStringKey = holds.Command(flags);
    expected.IsCommandShiftAndStringKey = holds.CommandShift(flags);
    expected.IsEventForKeyEquivalent = (flags & (command | control)) !== 0;
    expected.TsIsSpecialEvent = false;
    assert.deepStrictEqual(results[i], expected, flags.toString(16));
  });
});

test('special events', async (t) => {
  const everyKey = Object.values(key);
  const special = {
    [command]: [key.comma, key.left, key.right, key.down, key.up],
    [command | shift]: [key.comma, key.left, key.right, key.down, key.up, key.d],
    [command | option]: [key.down, key.up, key.left, key.right],
    [command | option | shift]: [key.down, key.up, key.left, key.right],
    [command | control]: [key.space, key.left, key.right],
    [command | control | shift]: [key.space, key.left, key.right],
    [command | control | option]: [],
    [option]: [],
    [0]: [],
  };
  const rows = Object.keys(special).flatMap((flags) =>
    everyKey.map((keyCode) => [event(Number(flags), { keyCode, ignoring: 'x' }), special[flags].includes(keyCode)]),
  );
  rows.push(
    // By its character, wherever it is on the layout in use, but with Shift only.
    [event(command | shift, { keyCode: key.n, ignoring: 'D' }), true],
    [event(command | shift, { keyCode: key.n, ignoring: 'd' }), false],
    [event(command, { keyCode: key.d, ignoring: 'd' }), false],
    [event(command | shift | control, { keyCode: key.d, ignoring: 'D' }), false],
    [event(command, { keyCode: key.comma, type: keyUp }), false],
    [event(command, { keyCode: key.comma, type: flagsChanged }), false],
    [event(command, { type: mouseDown }), false],
  );
  await inSession.table(t, rows, ({ menus }, each) => menus.predicates(each).TsIsSpecialEvent);
});

test('virtual key codes follow the place of the key', (t) => {
  const codes =
    '38 0,40 2,57 45,59 43,65 49,113 123,114 124,116 125,111 126,36 36,9 53,67 122,95 103,34 33,35 30,94 10,24 12,' +
    '21 24,90 82,104 76,66 57,37 59,133 55,0 65535,255 65535,65535 65535';
  const rows = codes.split(',').map((pair) => pair.split(' ').map(Number));
  return inSession.table(t, rows, ({ menus }, code) => menus.virtualKeyCode(code));
});

// ---- The patch

test('the methods of application and menus are replaced under their aliases, not those of superclasses', async (t) => {
  const result = await inSession(t, ({ menus }) => [menus.patch(), menus.replaceInherited()]);
  assert.deepStrictEqual(result, [
    {
      'tsOrigSendEvent:': 'V@:@',
      'tsHandleKeyboardEvent:': '@@:@',
      tsPasteIfPossible: 'B@:',
      'tsOrigPerformKeyEquivalent:': 'V@:@',
      superclass: false,
      handledEventIsTheSame: true,
    },
    // Base, heir, heir's alias, what was given back; twice; and for a method that is not there.
    [1, 2, 1, true, 1, 3, 1, true, true],
  ]);
});

// ---- Keys that are pressed

test('special keys reach the menu before the page', async (t) => {
  const first = (id) => ['will open TessaroHost', id];
  const cases = [
    ['ctrl+comma', first(101)],
    ['ctrl+Left', first(405)],
    ['ctrl+Right', first(406)],
    ['ctrl+Down', first(408)],
    ['ctrl+Up', first(407)],
    ['ctrl+alt+Down', first(505)],
    ['ctrl+alt+Up', first(504)],
    ['ctrl+super+space', first(307)],
    ['ctrl+shift+d', first(205)],
    ['ctrl+super+Left', ['window/set-previous-tab-active']],
    ['ctrl+super+Right', ['window/set-next-tab-active']],
    ['ctrl+alt+Left', ['window/set-previous-tab-active']],
    ['ctrl+alt+Right', ['window/set-next-tab-active']],
    // Special, but nothing of the menu: the page gets it after all.
    ['ctrl+shift+Left', ['will open TessaroHost', 'page uses']],
    // Not special: the page first, and what it has no use for comes back to the menu.
    ['ctrl+n', ['page', 'will open TessaroHost', 200]],
    ['ctrl+shift+s', ['page', 'will open TessaroHost', 203]],
    ['ctrl+shift+bracketleft', ['page', 'window/set-previous-tab-active']],
    ['ctrl+shift+bracketright', ['page', 'window/set-next-tab-active']],
    ['ctrl+alt+bracketleft', ['page', 'window/set-previous-tab-active']],
    ['ctrl+alt+bracketright', ['page', 'window/set-next-tab-active']],
    ['ctrl+shift+alt+bracketleft', ['page', 'window/set-previous-tab-active']],
    ['ctrl+y', ['page', 'will open TessaroHost']],
    ['super+y', ['page', 'will open TessaroHost']],
    ['y', []],
  ];
  const results = await inSession(
    t,
    async ({ during, openKeyWindow, press }, keys) => {
      const window = await openKeyWindow();
      const results = [];
      for (const each of keys) results.push([each, await during(() => press(window, each))]);
      return results;
    },
    cases.map(([name]) => name),
  );
  assert.deepStrictEqual(results, cases);
});

test('a returned shortcut is handled with the key code and modifiers of its key press', async (t) => {
  const result = await inSession(t, async ({ host, native, openKeyWindow, press }) => {
    const window = await openKeyWindow();
    const events = [];
    const note = ({ event }) => event && events.push([event, JSON.parse(native.modifierKeys())]);
    host.on('notification', ({ userInfo }) => note(userInfo));
    await press(window, 'ctrl+n');
    await press(window, 'ctrl+Left');
    return events;
  });
  const keys = {
    'mouse?': false,
    'keyboard?': true,
    'function-modifier?': false,
    'control-modifier?': false,
    'option-modifier?': false,
    'command-modifier?': true,
    'shift-modifier?': false,
  };
  const arrow = { ...keys, 'function-modifier?': true };
  assert.deepStrictEqual(
    result.map(([description]) => description),
    [
      { ...keys, 'key-code': 45, chars: 'n' },
      { ...arrow, 'key-code': 123, chars: '\uf702' },
    ],
  );
  assert.deepStrictEqual(result[1][1], arrow);
});

test('every change of the modifier keys is reported, Caps Lock with the state it has then', async (t) => {
  const result = await inSession(t, async ({ native, openKeyWindow, press }) => {
    const window = await openKeyWindow();
    const reports = [];
    native.setKeyboardModifierKeysCallbackFunction((...values) => reports.push(values.map(Number).join('')));
    await press(window, 'ctrl+shift+alt+super+F5');
    await press(window, 'Caps_Lock');
    await press(window, 'Caps_Lock');
    return reports;
  });
  // Function, Control, Option, Command, Shift, Caps Lock, Help, numeric pad.
  const held = ['00010000', '00011000', '00111000', '01111000', '01110000', '01100000', '01000000', '00000000'];
  const capsLock = ['00000100', '00000100', '00000100', '00000000'];
  assert.deepStrictEqual(result, [...held, ...capsLock]);
});

test('shortcuts with Shift, with Caps Lock on, and on other layouts', async (t) => {
  const cases = [
    // Lower or upper case: Shift is what the accelerator says.
    { accelerator: 'Cmd+Shift+u', us: { 'ctrl+shift+u': true, 'ctrl+u': false } },
    { accelerator: 'Cmd+U', us: { 'ctrl+shift+u': true, 'ctrl+u': false } },
    { accelerator: 'Cmd+u', us: { 'ctrl+shift+u': false, 'ctrl+u': true } },
    { accelerator: 'Cmd+Shift+7', us: { 'ctrl+shift+7': true, 'ctrl+7': false }, de: { 'ctrl+shift+16': true } },
    { accelerator: 'Cmd+&', us: { 'ctrl+shift+7': true }, de: { 'ctrl+shift+16': false } },
    { accelerator: 'Cmd+/', us: { 'ctrl+slash': true }, de: { 'ctrl+shift+16': true } },
    { accelerator: 'Cmd+Shift+F5', us: { 'ctrl+F5': false } },
    // Letters are where the layout has them: the key right of T.
    { accelerator: 'Cmd+z', us: { 'ctrl+29': false }, de: { 'ctrl+29': true } },
    // Letters of other scripts: by the user's Latin layout, or the American one.
    { accelerator: 'Cmd+u', ru: { 'ctrl+30': true, 'ctrl+29': false }, gr: { 'ctrl+30': true } },
    { accelerator: 'Cmd+z', 'ru,de': { 'ctrl+29': true } },
    { accelerator: 'Cmd+Shift+u', ru: { 'ctrl+shift+30': true, 'ctrl+30': false } },
  ];
  const results = await inSession(
    t,
    async ({ during, key, menus, native, openKeyWindow, press, run }, table) => {
      const window = await openKeyWindow();
      const isChosen = async (name) => (await during(() => press(window, name))).includes(1);
      const results = [];
      for (const { accelerator, ...layouts } of table) {
        menus.setMainMenu([{ title: 'TessaroHost', items: [{ title: 'It', commandId: 1 }] }]);
        native.updateMainMenuMenuItem('[0,0]', JSON.stringify({ accelerator }));
        const result = { accelerator };
        for (const [layout, keys] of Object.entries(layouts)) {
          await run('setxkbmap', layout);
          result[layout] = {};
          for (const name of Object.keys(keys)) result[layout][name] = await isChosen(name);
        }
        await run('setxkbmap', 'us');
        results.push(result);
      }
      native.updateMainMenuMenuItem('[0,0]', '{"accelerator":"Cmd+u"}');
      await key('Caps_Lock');
      results.push(await isChosen('ctrl+u'));
      await key('Caps_Lock');
      return results;
    },
    cases,
  );
  assert.deepStrictEqual(results, [...cases, true]);
});

test('menus show the user’s own keys for Command and Option', async (t) => {
  const items = [
    { title: 'New', key: 'n', modifiers: command, commandId: 1 },
    { title: 'Shifted', key: 'N', modifiers: command | option },
    { title: 'Arrow', key: '\uf702', modifiers: command | control | shift },
    { title: 'Function', key: '\uf708', modifiers: 0 },
    { title: 'Enter', key: '\r', modifiers: option },
    { title: 'None' },
  ];
  const result = await inSession(
    t,
    async ({ during, menus, openKeyWindow, press, sendMessage }, all) => {
      menus.setMainMenu([{ title: 'TessaroHost', items: all }]);
      const texts = [menus.shortcutTexts()];
      const defaults = sendMessage('NSUserDefaults', 'standardUserDefaults');
      sendMessage(defaults, 'setObject:forKey:', 'Super_L', 'GSFirstCommandKey');
      sendMessage(defaults, 'setObject:forKey:', 'Control_L', 'GSFirstControlKey');
      texts.push(menus.shortcutTexts());
      const window = await openKeyWindow();
      const [commandPressed] = (await during(() => press(window, 'super+n'))).slice(-1);
      return [texts, commandPressed, (await during(() => press(window, 'ctrl+n'))).includes(1)];
    },
    items,
  );
  assert.deepStrictEqual(result, [
    [
      ['Ctrl+N', 'Ctrl+Alt+Shift+N', 'Super+Ctrl+Shift+←', 'F5', 'Alt+Enter', ''],
      ['Super+N', 'Super+Alt+Shift+N', 'Ctrl+Super+Shift+←', 'F5', 'Alt+Enter', ''],
    ],
    1,
    false,
  ]);
});

test('dead keys, the third level and input methods type as before, and keys without characters do no harm', async (t) => {
  const result = await inSession(t, async ({ host, openKeyWindow, press, run }) => {
    const window = await openKeyWindow();
    await run('setxkbmap', 'de');
    const third = ['ISO_Level3_Shift+q', 'ISO_Level3_Shift', 'ssharp', 'ctrl+ISO_Level3_Shift'];
    await press(window, 'dead_circumflex', 'a', ...third);
    await run('setxkbmap', 'us');
    return host.windowInfo(window).typedText;
  });
  assert.match(result, /â.*@ß/);
});

// ---- Events that nobody presses

test('synthetic events repeat the remembered key press, or are refused', async (t) => {
  const down = event(command, { keyCode: key.n, ignoring: 'n' });
  const madeUp = { ...down, keyCode: 0, modifiers: 0, isSynthetic: true };
  const searched = [false, 'will open TessaroHost'];
  // Whether a key press is remembered first, what comes then, and what comes of that.
  const rows = [
    [false, madeUp, [false]],
    [true, madeUp, searched],
    [false, madeUp, [false]],
    [true, { ...madeUp, characters: 'm' }, [false]],
    [false, madeUp, [false]],
    [true, { ...madeUp, isSynthetic: false }, [false]],
    [true, { ...madeUp, type: keyUp, characters: 'x' }, [false]],
    [true, { ...madeUp, type: mouseDown }, [false], event(0, { ignoring: 'q' })],
  ];
  const results = await inSession(
    t,
    async ({ during, menus }, table, press) => {
      menus.setMainMenu([{ title: 'TessaroHost', items: [{ title: 'Nothing' }] }]);
      const results = [];
      for (const [isRemembered, next, , between] of table) {
        if (isRemembered) menus.sendEvent(press);
        if (between) menus.sendEvent(between);
        results.push(await during(() => menus.performKeyEquivalent(next)));
      }
      return results;
    },
    rows,
    down,
  );
  results.forEach((result, i) => assert.deepStrictEqual(result, rows[i][2], `${i}`));
});

test('tab switching consumes and reports the right events', async (t) => {
  const [previous, next] = ['window/set-previous-tab-active', 'window/set-next-tab-active'];
  const bracket = (modifiers, ignoring, type) => event(modifiers, { ignoring, type, keyCode: key.leftBracket });
  const arrow = (modifiers, keyCode, type) => event(modifiers, { keyCode, type, ignoring: 'x' });
  const cases = [
    [bracket(command | shift, '{'), true, previous],
    [bracket(command | shift, '}'), true, next],
    [bracket(command | shift, '{', keyUp), true],
    [bracket(command | option, '['), true, previous],
    [bracket(command | option, ']'), true, next],
    [bracket(command | option | shift, '['), true, previous],
    [bracket(command | option | control, ']'), true, next],
    [bracket(command | shift, '['), false],
    [bracket(command | option, '{'), false],
    [bracket(command, '['), false],
    [bracket(shift, '{'), false],
    [bracket(command | shift, '{', flagsChanged), false],
    [arrow(command | control, key.left), true, previous],
    [arrow(command | control, key.right, keyUp), true, next],
    [arrow(command | option | shift, key.right), true, next],
    [arrow(command | control | option, key.left), false],
    [arrow(command, key.left), false],
    [arrow(command, key.left, mouseDown), false],
  ];
  const rows = cases.map(([each, ...expected]) => [each, expected]);
  await inSession.table(t, rows, ({ during, menus }, each) => during(() => menus.processKey(each)));
});

test('every event after the bracket check is written to the system log', async (t) => {
  const { stderr } = await inSession.ends(t, ({ menus }, events) => events.forEach(menus.processKey), [
    event(command | option),
    event(command),
    event(command | shift, { ignoring: '{' }),
  ]);
  const lines = stderr.match(/>>> command\+option: .*/g);
  assert.strictEqual(lines.length, 2);
  assert.match(lines[0], /^>>> command\+option: 1 45 NSEvent: /);
  assert.match(lines[1], /^>>> command\+option: 0 45 NSEvent: /);
});

test('of two items with one shortcut a later menu’s wins over the application menu’s', async (t) => {
  const menu = (title, commandId) => ({ title, items: [{ title, key: 'j', modifiers: command, commandId }] });
  const results = await inSession(
    t,
    async ({ during, menus, native }, menu, press) => {
      menus.setMainMenu(menu);
      const steps = [
        [],
        ['[1]', '{"visible":false}'],
        ['[2,0]', '{"visible":false}'],
        ['[0,0]', '{"accelerator":null}'],
      ];
      const results = [];
      for (const step of steps) {
        if (step.length > 0) native.updateMainMenuMenuItem(...step);
        results.push((await during(() => menus.performKeyEquivalent(press))).pop());
      }
      return results;
    },
    [menu('TessaroHost', 1), menu('Second', 2), menu('Third', 3)],
    event(command, { ignoring: 'j' }),
  );
  assert.deepStrictEqual(results, [2, 3, 1, 'will open TessaroHost']);
});

test('modifier reports leave out synthetic events and include mouse events', async (t) => {
  const changed = event(command, { type: flagsChanged });
  const results = await inSession(
    t,
    ({ menus, native }, unheard, ...events) => {
      menus.processModifiers(unheard);
      const reports = [];
      native.setKeyboardModifierKeysCallbackFunction((...values) => reports.push(values));
      events.forEach(menus.processModifiers);
      return reports;
    },
    changed,
    { ...changed, isSynthetic: true },
    event(0xff0000 & ~0x10000, { type: flagsChanged, keyCode: 50 }),
    event(shift, { type: mouseDown }),
  );
  assert.deepStrictEqual(results, [
    [true, true, true, true, true, false, true, true],
    [false, false, false, false, true, false, false, false],
  ]);
});

test('events are described for menus; without an event the description is empty', async (t) => {
  const results = await inSession(
    t,
    ({ menus, native }, events) => [
      ...events.map(menus.menuEventDescription),
      native.modifierKeys(),
      native.isAppHidden(),
    ],
    [null, event(control | shift, { ignoring: 'N' }), event(command, { type: mouseDown })],
  );
  const none = { 'function-modifier?': false, 'option-modifier?': false };
  assert.deepStrictEqual(results, [
    {},
    {
      ...none,
      'mouse?': false,
      'keyboard?': true,
      'control-modifier?': true,
      'command-modifier?': false,
      'shift-modifier?': true,
      'key-code': 45,
      chars: 'N',
    },
    {
      ...none,
      'mouse?': true,
      'keyboard?': false,
      'control-modifier?': false,
      'command-modifier?': true,
      'shift-modifier?': false,
      'key-code': 0,
      chars: '',
    },
    null,
    false,
  ]);
});

test('pasting asks for files', async (t) => {
  const rows = [
    [{ text: 'words' }, [[false, true, false]]],
    [{ files: ['/etc/hosts', '/etc/pass wd'] }, [[true, false, true], 'TsPasteFilesIntoCurrentWebContents']],
    [{ files: [] }, [[false, false, false]]],
  ];
  await inSession.table(t, rows, ({ during, menus, pasteboard }, content) => {
    pasteboard.put(content);
    return during(menus.pasteIfPossible);
  });
});

test('modifiers pressed or released in the background are reported when the application becomes active', async (t) => {
  const result = await inSession(t, async ({ eventually, host, native, openKeyWindow, run, spawn }) => {
    const window = await openKeyWindow();
    const reports = [];
    native.setKeyboardModifierKeysCallbackFunction((...values) => reports.push(values.map(Number).join('')));
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
      return [await away('keydown', 'shift', 'keydown', 'alt'), await away(...up)];
    } finally {
      await run('xdotool', ...up);
    }
  });
  assert.deepStrictEqual(result, ['00101000', '00000000']);
});

test('the application is hidden from its command until it shows a window', async (t) => {
  const result = await inSession(t, async ({ eventually, host, key, native, openKeyWindow }) => {
    const window = await openKeyWindow();
    const before = native.isAppHidden();
    await key('ctrl+h');
    await eventually(() => native.isAppHidden(), 'hiding');
    await eventually(() => !host.windowInfo(window).isKey, 'a window without the keyboard');
    await openKeyWindow();
    await eventually(() => !native.isAppHidden(), 'a window');
    return before;
  });
  assert.strictEqual(result, false);
});
