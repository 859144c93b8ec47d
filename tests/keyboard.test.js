'use strict';

// Which keys reach the menu, the page and script, and in which order: with keys that are really pressed, as far as
// there are any.

const assert = require('assert');
const { test } = require('node:test');

const { evaluate } = require('./support/child');
const { useSession } = require('./support/session');

const session = useSession();

const shift = 0x20000;
const control = 0x40000;
const option = 0x80000;
const command = 0x100000;

// X key codes of the virtual display, whose keyboard is an American one.
const key = { d: 40, n: 57, comma: 59, space: 65, up: 111, left: 113, right: 114, down: 116, leftBracket: 34 };

const [keyDown, keyUp, flagsChanged, mouseDown] = [10, 11, 12, 1];

const prelude = `
  const { execFile, spawn } = require('child_process');
  const { promisify } = require('util');
  const host = require('./host');
  const { eventually } = require('./tests/support/child');
  host.start();
  const { module: native, menus } = probe();
  const run = promisify(execFile);
  const call = (name, value) => {
    const result = menus[name](value === undefined ? undefined : JSON.stringify(value));
    return result === undefined ? undefined : JSON.parse(result);
  };
  const print = (value) => console.log(JSON.stringify(value));

  // What happened, in order.
  const happened = [];
  const told = {
    TsDispatchNotificationName: ({ action }) => action,
    TsAppMenuWillOpen: ({ menu }) => 'will open ' + menu,
  };
  host.on('notification', ({ name, userInfo }) => happened.push(told[name]?.(userInfo) ?? name));
  host.on('command', ({ commandId }) => happened.push(commandId));
  host.on('page-key', ({ isUsed }) => happened.push(isUsed ? 'page uses' : 'page'));

  const openWindow = async () => {
    host.setKeepAlive(true);
    const window = host.createWindow({ title: 'Keys' });
    await eventually(() => host.windowInfo(window).isVisible, 'the window');
    await run('xdotool', ['windowactivate', '--sync', String(host.windowInfo(window).systemWindow)]);
    await eventually(() => host.windowInfo(window).isKey, 'the keyboard');
    // The window manager may still be at work on the window of the test before.
    await eventually(async () => {
      await run('xdotool', ['key', '2']);
      return host.windowInfo(window).typedText.includes('2');
    }, 'the first key');
    return window;
  };
  // Presses keys and waits until the last of them has gone all its way: until a key pressed after them is typed, one that
  // is the same in all layouts.
  const press = async (window, ...keys) => {
    const ends = () => host.windowInfo(window).typedText.split('1').length;
    const before = ends();
    await run('xdotool', ['key', ...keys]);
    await run('xdotool', ['key', '1']);
    await eventually(() => ends() > before, 'the last key');
  };
`;

const inSession = (t, source) => evaluate(t, prelude + source, { env: session.env });

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
    `print(${JSON.stringify(combinations.map((flags) => event(flags)))}.map((event) => call('predicates', event)));`,
  );
  combinations.forEach((flags, i) => {
    const expected = { IsCommandAndOtherStringKey: false, IsCommandAndOtherKeyCodeKey: false };
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
  const events = Object.keys(special).flatMap((flags) =>
    everyKey.map((keyCode) => event(Number(flags), { keyCode, ignoring: 'x' })),
  );
  const others = [
    // By its character, wherever it is on the layout in use, but with Shift only.
    [event(command | shift, { keyCode: key.n, ignoring: 'D' }), true],
    [event(command | shift, { keyCode: key.n, ignoring: 'd' }), false],
    [event(command, { keyCode: key.d, ignoring: 'd' }), false],
    [event(command | shift | control, { keyCode: key.d, ignoring: 'D' }), false],
    [event(command, { keyCode: key.comma, type: keyUp }), false],
    [event(command, { keyCode: key.comma, type: flagsChanged }), false],
    [event(command, { type: mouseDown }), false],
  ];
  const results = await inSession(
    t,
    `print(${JSON.stringify([...events, ...others.map(([other]) => other)])}.map((event) => call('predicates', event).TsIsSpecialEvent));`,
  );
  events.forEach(({ modifiers, keyCode }, i) =>
    assert.strictEqual(results[i], special[modifiers].includes(keyCode), `${modifiers.toString(16)} ${keyCode}`),
  );
  assert.deepStrictEqual(
    results.slice(events.length),
    others.map(([, expected]) => expected),
  );
});

test('virtual key codes follow the place of the key', async (t) => {
  const result = await inSession(
    t,
    `const codes = [38, 40, 57, 59, 65, 113, 114, 116, 111, 36, 9, 67, 95, 34, 35, 94, 24, 21, 90, 104, 66, 37, 133, 0, 255, 65535];
     print(call('virtualKeyCodes', codes));`,
  );
  const none = 0xffff;
  assert.deepStrictEqual(result, [
    0,
    2,
    45,
    43,
    49,
    123,
    124,
    125,
    126,
    36,
    53,
    122,
    103,
    33,
    30,
    10,
    12,
    24,
    82,
    76,
    57,
    59,
    55,
    none,
    none,
    none,
  ]);
});

// ---- The patch

test('the methods of application and menus are replaced under their aliases, not those of superclasses', async (t) => {
  const result = await inSession(t, `print([call('patch'), call('replaceInherited')]);`);
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
    `(async () => {
       const window = await openWindow();
       const results = [];
       for (const key of ${JSON.stringify(cases.map(([name]) => name))}) {
         happened.length = 0;
         await press(window, key);
         results.push([key, [...happened]]);
       }
       print(results);
       process.exit();
     })();`,
  );
  assert.deepStrictEqual(results, cases);
});

test('a returned shortcut is handled with the key code and modifiers of its key press', async (t) => {
  const result = await inSession(
    t,
    `(async () => {
       const window = await openWindow();
       const events = [];
       host.on('notification', ({ userInfo }) => userInfo.event && events.push([userInfo.event, JSON.parse(native.modifierKeys())]));
       await press(window, 'ctrl+n');
       await press(window, 'ctrl+Left');
       print(events);
       process.exit();
     })();`,
  );
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
  const result = await inSession(
    t,
    `(async () => {
       const window = await openWindow();
       const reports = [];
       native.setKeyboardModifierKeysCallbackFunction((...values) => reports.push(values.map(Number).join('')));
       await press(window, 'ctrl+shift+alt+super+F5');
       await press(window, 'Caps_Lock');
       await press(window, 'Caps_Lock');
       print(reports);
       process.exit();
     })();`,
  );
  // Function, Control, Option, Command, Shift, Caps Lock, Help, numeric pad.
  assert.deepStrictEqual(result, [
    '00010000',
    '00011000',
    '00111000',
    '01111000',
    '01110000',
    '01100000',
    '01000000',
    '00000000',
    '00000100',
    '00000100',
    '00000100',
    '00000000',
  ]);
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
    `(async () => {
       const window = await openWindow();
       const results = [];
       for (const { accelerator, ...layouts } of ${JSON.stringify(cases)}) {
         call('setMainMenu', [{ title: 'TessaroHost', items: [{ title: 'It', commandId: 1 }] }]);
         native.updateMainMenuMenuItem('[0,0]', JSON.stringify({ accelerator }));
         const result = { accelerator };
         for (const [layout, keys] of Object.entries(layouts)) {
           await run('setxkbmap', [layout]);
           result[layout] = {};
           for (const key of Object.keys(keys)) {
             happened.length = 0;
             await press(window, key);
             result[layout][key] = happened.includes(1);
           }
         }
         await run('setxkbmap', ['us']);
         results.push(result);
       }
       native.updateMainMenuMenuItem('[0,0]', '{"accelerator":"Cmd+u"}');
       await run('xdotool', ['key', 'Caps_Lock']);
       happened.length = 0;
       await press(window, 'ctrl+u');
       results.push(happened.includes(1));
       await run('xdotool', ['key', 'Caps_Lock']);
       print(results);
       process.exit();
     })();`,
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
    `(async () => {
       call('setMainMenu', [{ title: 'TessaroHost', items: ${JSON.stringify(items)} }]);
       const texts = [call('shortcutTexts')];
       call('setUserDefaults', { GSFirstCommandKey: 'Super_L', GSFirstControlKey: 'Control_L' });
       texts.push(call('shortcutTexts'));
       const window = await openWindow();
       await press(window, 'super+n');
       const [commandPressed] = happened.slice(-1);
       happened.length = 0;
       await press(window, 'ctrl+n');
       print([texts, commandPressed, happened.includes(1)]);
       process.exit();
     })();`,
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
  const result = await inSession(
    t,
    `(async () => {
       const window = await openWindow();
       await run('setxkbmap', ['de']);
       await press(window, 'dead_circumflex', 'a', 'ISO_Level3_Shift+q', 'ISO_Level3_Shift', 'ssharp', 'ctrl+ISO_Level3_Shift');
       await run('setxkbmap', ['us']);
       print(host.windowInfo(window).typedText);
       process.exit();
     })();`,
  );
  assert.match(result, /â.*@ß/);
});

// ---- Events that nobody presses

test('synthetic events repeat the remembered key press, or are refused', async (t) => {
  const down = event(command, { keyCode: key.n, ignoring: 'n' });
  const madeUp = { ...down, keyCode: 0, modifiers: 0, isSynthetic: true };
  const results = await inSession(
    t,
    `const [down, madeUp] = ${JSON.stringify([down, madeUp])};
     const handled = (event) => {
       happened.length = 0;
       return [...call('performKeyEquivalent', event), ...happened];
     };
     const menu = { title: 'TessaroHost', items: [{ title: 'Nothing' }] };
     call('setMainMenu', [menu]);
     const results = { unknown: handled(madeUp) };
     const remember = () => call('sendEvent', down);
     remember();
     results.repeated = handled(madeUp);
     results.forgotten = handled(madeUp);
     remember();
     results.otherCharacters = handled({ ...madeUp, characters: 'm' });
     results.forgottenAnyway = handled(madeUp);
     remember();
     results.withLocation = handled({ ...madeUp, isSynthetic: false });
     remember();
     results.keyUp = handled({ ...madeUp, type: ${keyUp}, characters: 'x' });
     remember();
     call('sendEvent', ${JSON.stringify(event(0, { ignoring: 'q' }))});
     results.mouse = handled({ ...madeUp, type: ${mouseDown} });
     print(results);`,
  );
  const searched = [false, 'will open TessaroHost'];
  assert.deepStrictEqual(results, {
    unknown: [false],
    repeated: searched,
    forgotten: [false],
    otherCharacters: [false],
    forgottenAnyway: [false],
    withLocation: [false],
    keyUp: [false],
    mouse: [false],
  });
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
  const results = await inSession(
    t,
    `print(${JSON.stringify(cases.map(([each]) => each))}.map((event) => {
       happened.length = 0;
       return [...call('processKey', event), ...happened];
     }));`,
  );
  assert.deepStrictEqual(
    results,
    cases.map(([, ...expected]) => expected),
  );
});

test('every event after the bracket check is written to the system log', async (t) => {
  const source = `${prelude}
    for (const event of ${JSON.stringify([event(command | option), event(command), event(command | shift, { ignoring: '{' })])}) call('processKey', event);`;
  const { runScript } = require('./support/child');
  const { stderr } = await runScript(t, source, { env: session.env });
  const lines = stderr.match(/>>> command\+option: .*/g);
  assert.strictEqual(lines.length, 2);
  assert.match(lines[0], /^>>> command\+option: 1 45 NSEvent: /);
  assert.match(lines[1], /^>>> command\+option: 0 45 NSEvent: /);
});

test('of two items with one shortcut a later menu’s wins over the application menu’s', async (t) => {
  const menu = (title, commandId) => ({ title, items: [{ title, key: 'j', modifiers: command, commandId }] });
  const results = await inSession(
    t,
    `const results = [];
     const search = () => {
       happened.length = 0;
       call('performKeyEquivalent', ${JSON.stringify(event(command, { ignoring: 'j' }))});
       results.push(happened.pop());
     };
     call('setMainMenu', ${JSON.stringify([menu('TessaroHost', 1), menu('Second', 2), menu('Third', 3)])});
     search();
     native.updateMainMenuMenuItem('[1]', '{"visible":false}');
     search();
     native.updateMainMenuMenuItem('[2,0]', '{"visible":false}');
     search();
     native.updateMainMenuMenuItem('[0,0]', '{"accelerator":null}');
     search();
     print(results);`,
  );
  assert.deepStrictEqual(results, [2, 3, 1, 'will open TessaroHost']);
});

test('modifier reports leave out synthetic events and include mouse events', async (t) => {
  const results = await inSession(
    t,
    `const reports = [];
     const report = (event) => call('processModifiers', event);
     report(${JSON.stringify(event(command, { type: flagsChanged }))});
     native.setKeyboardModifierKeysCallbackFunction((...values) => reports.push(values));
     report(${JSON.stringify({ ...event(command, { type: flagsChanged }), isSynthetic: true })});
     report(${JSON.stringify(event(0xff0000 & ~0x10000, { type: flagsChanged, keyCode: 50 }))});
     report(${JSON.stringify(event(shift, { type: mouseDown }))});
     print(reports);`,
  );
  assert.deepStrictEqual(results, [
    [true, true, true, true, true, false, true, true],
    [false, false, false, false, true, false, false, false],
  ]);
});

test('events are described for menus; without an event the description is empty', async (t) => {
  const results = await inSession(
    t,
    `print([null, ${JSON.stringify(event(control | shift, { ignoring: 'N' }))}, ${JSON.stringify(event(command, { type: mouseDown }))}].map((event) =>
       event === null ? JSON.parse(menus.menuEventDescription()) : call('menuEventDescription', event)).concat([native.modifierKeys(), native.isAppHidden()]));`,
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
  const results = await inSession(
    t,
    `const results = [];
     for (const content of [{ text: 'words' }, { files: ['/etc/hosts', '/etc/pass wd'] }, { files: [] }]) {
       happened.length = 0;
       call('putOnPasteboard', content);
       results.push([...call('pasteIfPossible'), ...happened]);
     }
     print(results);`,
  );
  assert.deepStrictEqual(results, [
    [false, true, false],
    [true, false, true, 'TsPasteFilesIntoCurrentWebContents'],
    [false, false, false],
  ]);
});

test('modifiers pressed or released in the background are reported when the application becomes active', async (t) => {
  const result = await inSession(
    t,
    `(async () => {
       const window = await openWindow();
       const reports = [];
       native.setKeyboardModifierKeysCallbackFunction((...values) => reports.push(values.map(Number).join('')));
       const system = host.windowInfo(window).systemWindow;
       const isKey = () => host.windowInfo(window).isKey;
       const away = async (keys) => {
         const other = spawn('xev', ['-name', 'Other'], { stdio: 'ignore' });
         await eventually(() => !isKey(), 'the background');
         await run('xdotool', keys);
         reports.length = 0;
         await run('xdotool', ['windowactivate', String(system)]);
         await eventually(() => isKey() && reports.length > 0, 'the foreground');
         other.kill();
         return reports.at(-1);
       };
       const seen = [];
       try {
         seen.push(await away(['keydown', 'shift', 'keydown', 'alt']));
         seen.push(await away(['keyup', 'shift', 'keyup', 'alt']));
       } finally {
         await run('xdotool', ['keyup', 'shift', 'keyup', 'alt']);
       }
       print(seen);
       process.exit();
     })();`,
  );
  assert.deepStrictEqual(result, ['00101000', '00000000']);
});

test('the application is hidden from its command until it shows a window', async (t) => {
  const result = await inSession(
    t,
    `(async () => {
       const window = await openWindow();
       const seen = [native.isAppHidden()];
       await run('xdotool', ['key', 'ctrl+h']);
       await eventually(() => native.isAppHidden(), 'hiding');
       seen.push(host.windowInfo(window).isKey);
       await openWindow();
       await eventually(() => !native.isAppHidden(), 'a window');
       print(seen);
       process.exit();
     })();`,
  );
  assert.deepStrictEqual(result, [false, false]);
});
