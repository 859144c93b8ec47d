'use strict';

// Changes of the main menu's items, and the news that its menus open and close.

const assert = require('assert');
const { execFileSync } = require('child_process');
const path = require('path');
const { test } = require('node:test');

const { buildDirectory } = require('./support/addon');
const { shift, control, option, command } = require('./support/keys');
const { scenarios } = require('./support/scenario');

// GNUstep would add an application menu, if there were none of the process's name, and move items of the bar that have no
// submenu into it.
const applicationMenu = 'TessaroHost';
const menu = [
  {
    title: applicationMenu,
    items: [
      { title: 'About', commandId: 1 },
      { title: 'Twice', commandId: 7 },
    ],
  },
  {
    title: 'Mail',
    items: [
      { title: 'New', commandId: 2, key: 'n', modifiers: command },
      {
        title: 'Move',
        commandId: 3,
        items: [
          { title: 'Archive', commandId: 4 },
          { title: 'Twice', commandId: 7 },
        ],
      },
      { title: 'Marker' },
      { title: 'Behind', commandId: 5 },
      { title: 'Second behind', commandId: 6 },
    ],
  },
  { title: 'Empty', items: [] },
];

const inSession = scenarios({
  display: true,
  fixture: ({ captureLog, log, menus, native }) => ({
    byId: (id, attributes) => native.updateMainMenuMenuItemWithCommandId(id, JSON.stringify(attributes)),
    byPath: (path, attributes) => native.updateMainMenuMenuItem(JSON.stringify(path), JSON.stringify(attributes)),
    errors: () => log(1),
    /** Sets the main menu, and begins to listen to the log. */
    begin: (items) => menus.setMainMenu(items) ?? captureLog(),
  }),
});

test('accelerators', async (t) => {
  const cases = [
    ['Cmd+Shift+N', 'N', command | shift],
    ['Cmd+n', 'n', command],
    ['Ctrl+Opt+Cmd+Shift+x', 'x', command | shift | control | option],
    ['F5', 'F5', 0],
    ['cmd+SHIFT+N', 'N', 0],
    ['Command+N', 'N', 0],
    ['Cmd+', '', 0],
    ['Cmd++', '', 0],
    ['', '', 0],
    [null, '', 0],
    ['Shift+ä', 'ä', shift],
    ['Shift', 'Shift', shift],
  ];
  const results = await inSession(
    t,
    ({ begin, byId, menus }, accelerators, items) => {
      begin(items);
      return accelerators.map((accelerator) => {
        const answers = [byId(2, { accelerator: 'Cmd+Opt+q' }), byId(2, { accelerator })];
        const { key, modifiers } = menus.mainMenu()[1].items[0];
        return [...answers, key, modifiers];
      });
    },
    cases.map(([accelerator]) => accelerator),
    menu,
  );
  results.forEach((result, i) => assert.deepStrictEqual([cases[i][0], ...result.slice(2)], cases[i]));
  assert.ok(results.every(([first, second]) => first === 1 && second === 1));
});

test('titles reach the submenu, hidden items keep their place, and unknown attributes are logged and skipped', async (t) => {
  const result = await inSession(
    t,
    ({ begin, byPath, errors, menus }, items) => {
      begin(items);
      const seen = [byPath([1], { title: 'Post 😀', visible: false, colour: 'red' }), menus.mainMenu()[1]];
      seen.push(byPath([1], { visible: true }), menus.mainMenu()[1].hidden, byPath([1, 1], { title: 'Put' }));
      const none = { title: 5, visible: 'no', accelerator: 1, other: null };
      seen.push(byPath([1, 0], none), menus.mainMenu()[1].items[0]);
      return [seen, errors().map((text) => text.replace(/0x[0-9a-f]+/, '0x'))];
    },
    menu,
  );
  const [seen, errors] = result;
  assert.strictEqual(seen[0], 1);
  assert.deepStrictEqual([seen[1].title, seen[1].submenuTitle, seen[1].hidden], ['Post 😀', 'Post 😀', true]);
  assert.strictEqual(seen[1].items.length, 5);
  assert.deepStrictEqual(seen.slice(2, 6), [1, false, 1, 1]);
  assert.deepStrictEqual(seen[6], { title: 'New', key: 'n', modifiers: command, hidden: false });
  const message = (name, value) => `<NSMenuItem: 0x> Cannot set menuItems item attribute ${name} to ${value}`;
  assert.deepStrictEqual(errors.sort(), [
    message('accelerator', '1'),
    message('colour', 'red'),
    message('other', '<null>'),
    message('title', '5'),
    message('visible', 'no'),
  ]);
});

test('paths', async (t) => {
  const cases = [
    [[0], applicationMenu],
    [[0, 1], 'Twice'],
    [[1, 1, 0], 'Archive'],
    [['Mail', 0, 'Marker', 2], 'Second behind'],
    [['Mail', 0, 'Marker', 0], 'Marker'],
    [['Mail', 'Empty', 0], 'Empty'],
    [[1.9, 0], 'New'],
    [[-0.5], applicationMenu],
    // The item chosen last counts, even when the path goes on to a title.
    [[1, 'Marker'], 'Mail'],
    [['Mail'], null, /^No menuItems item found$/],
    [[], null, /^No menuItems item found$/],
    [[3], null, /^Index out of range 3 for items \(/],
    [[1, 5], null, /^Index out of range 5 for items \(/],
    [['Mail', 0, 'Marker', 3], null, /^Index out of range 3 for items \(/],
    [[-1], null, /^Index out of range 18446744073709551615 for items \(/],
    [[1e300], null, /^Index out of range 18446744073709551615 for items \(/],
    [[18446744073709551615], null, /^Index out of range 18446744073709551615 for items \(/],
    [['mail', 0], null, /^Didn't find marker item with name mail$/],
    [[1, 'Mail'], null, /^Didn't find marker item with name Mail$/],
    [
      [1, 0, 4],
      null,
      /^Path element 4 isn't valid as it points to a menuItems item without submenu \(\(1, 0, 4\)\)\.$/,
    ],
    [
      [1, 0, 'x'],
      null,
      /^Path element x isn't valid as it points to a menuItems item without submenu \(\(1, 0, x\)\)\.$/,
    ],
    [[2, 0], null, /^Index out of range 0 for items \(\)$/],
    [[true], null, /^\[ERROR\] Unknown navigation item 1 in \(1\)$/],
    [[0, false], null, /^\[ERROR\] Unknown navigation item 0 in \(0, 0\)$/],
    [[null], null, /^\[ERROR\] Unknown navigation item <null> in/],
    [[[0]], null, /^\[ERROR\] Unknown navigation item \(0\) in/],
    [[{}], null, /^\[ERROR\] Unknown navigation item \{\} in/],
  ];
  const results = await inSession(
    t,
    ({ begin, byPath, errors, menus }, paths, items) => {
      const titles = (list) => list.flatMap(({ title, items: below = [] }) => [title, ...titles(below)]);
      return paths.map((path) => {
        begin(items);
        const before = titles(menus.mainMenu());
        const answer = byPath(path, { title: 'changed' });
        const changed = titles(menus.mainMenu()).findIndex((title) => title === 'changed');
        return [answer, before[changed] ?? null, errors()];
      });
    },
    cases.map(([path]) => path),
    menu,
  );
  results.forEach(([answer, changed, logged], i) => {
    const [path, title, error] = cases[i];
    assert.deepStrictEqual([answer, changed, logged.length], [title === null ? 0 : 1, title, error ? 1 : 0], path);
    if (error) assert.match(logged[0], error);
  });
});

test('malformed JSON is logged and answered with 0', async (t) => {
  const cases = [
    ['[0]', '{', /^error parsing attributeMap \{ \(/],
    ['[0]', '', /^error parsing attributeMap {2}\(/],
    ['[0]', '[1]', /^attributemMap must be an NSDictionary \(\(1\)\)$/],
    ['[0', '{}', /^error navigationPath \[0 \(/],
    ['0', '{}', /^error navigationPath 0 \(/],
    ['{}', '{', /^navigationPath must be an NSArray \(\{\}\)$/],
    [2, 'nonsense', /^error parsing attributeMap nonsense \(/],
    [2, '[]', /^attributemMap must be an NSDictionary \(\(\)\)$/],
  ];
  const [answers, errors] = await inSession(
    t,
    ({ begin, errors, native }, items, calls) => {
      begin(items);
      const update = (id) => `updateMainMenuMenuItem${typeof id === 'number' ? 'WithCommandId' : ''}`;
      return [calls.map(([id, attributes]) => native[update(id)](id, attributes)), errors()];
    },
    menu,
    cases,
  );
  assert.deepStrictEqual(answers, Array(cases.length).fill(0));
  assert.strictEqual(errors.length, cases.length);
  cases.forEach(([, , error], i) => assert.match(errors[i], error));
});

test('identifiers are collected once: the later of two wins, later items are not found', async (t) => {
  const result = await inSession(
    t,
    ({ begin, byId, byPath, errors, menus }, items, later) => {
      begin(items);
      const all = () => menus.mainMenu();
      const seen = [byId(7, { title: 'seven' }), all()[0].items[1].title, all()[1].items[1].items[1].title];
      seen.push(byId(99, { title: 'none' }), byId(-1, {}), byId(4, { visible: false }));
      menus.setMainMenu(later);
      seen.push(
        byId(8, { title: 'x' }),
        byId(2, { title: 'y' }),
        all()[0].items[1].title,
        byPath([0, 0], { title: 'z' }),
      );
      return [seen, errors()];
    },
    menu,
    [{ title: applicationMenu, items: [{ title: 'Late', commandId: 8 }, { title: 'Same', commandId: 2 }] }], // prettier-ignore
  );
  assert.deepStrictEqual(result, [[1, 'Twice', 'seven', 0, 0, 1, 0, 1, 'Same', 1], []]);
});

test('menus that contain each other, and 5 000 items', async (t) => {
  const result = await inSession(t, ({ byId, byPath, menus }) => {
    const items = Array.from({ length: 5000 }, (_, i) => ({ title: `Item ${i}`, commandId: i }));
    const seen = [menus.identifiersOfCyclicMenus()];
    menus.setMainMenu([{ title: 'TessaroHost', items }]);
    seen.push(byId(4999, { title: 'last', visible: false }), byPath([0, 'Item 4000', 998], { title: 'last but one' }));
    const all = menus.mainMenu()[0].items;
    return [...seen, all.length, all[4999].title, all[4999].hidden, all[4998].title];
  });
  assert.deepStrictEqual(result, [[1, 2], 1, 1, 5000, 'last', true, 'last but one']);
});

test('a new item at a hidden item’s address is visible', async (t) => {
  const result = await inSession(t, ({ byPath, menus }) => {
    const items = Array.from({ length: 200 }, (_, i) => ({ title: `Item ${i}` }));
    let hidden = 0;
    for (let round = 0; round < 5; ++round) {
      menus.setMainMenu([{ title: 'TessaroHost', items }]);
      hidden += menus.mainMenu()[0].items.filter((item) => item.hidden).length;
      for (let i = 0; i < items.length; ++i) byPath([0, i], { visible: false });
    }
    return hidden;
  });
  assert.strictEqual(result, 0);
});

test('the notification’s name is exported', () => {
  const symbols = execFileSync('nm', ['-D', '--defined-only', path.join(buildDirectory, 'TessaroNative.node')], {
    encoding: 'utf8',
  });
  assert.match(symbols, /\bTsAppMenuWillOpenNotificationName$/m);
});

test('all menus of the bar have one delegate; later menus get it with another call', async (t) => {
  const result = await inSession(
    t,
    ({ menus, native }, items) =>
      [1, 2].flatMap(() => {
        menus.setMainMenu(items);
        const before = menus.delegateClasses();
        native.setupMenuWillShowNotification();
        return [before, menus.delegateClasses()];
      }),
    menu,
  );
  const shared = ['TsAppMenuDelegate', 'shared', 'shared', 'shared'];
  const none = Array(4).fill('none');
  assert.deepStrictEqual(result, [none, shared, none, shared]);
});

// What a person does with the mouse: each action follows from the news of the one before. GNUstep looks where the mouse
// is a hundred times a second, so a person takes a moment before each click.
test('menus report when they open and close, and may change then', async (t) => {
  const result = await inSession(t, async ({ byPath, eventually, host, native, spawn }) => {
    host.setKeepAlive(true);
    const window = host.createWindow({ title: 'Menus' });
    const { systemWindow } = host.windowInfo(window);
    const moment = ['sleep', 0.2];
    const click = ['mousedown', 1, 'sleep', 0.1, 'mouseup', 1];
    const to = (x, y) => ['mousemove', '--window', systemWindow, x, y, ...moment];
    const hands = (...actions) => spawn('xdotool', actions.flat().map(String), { stdio: 'ignore' });
    const told = [];
    const next = [
      () => hands(moment, to(150, 10)), // from "File" to "Edit"
      () => {},
      () => hands(moment, to(160, 30), click), // chooses "Undo"
    ];
    host.on('notification', ({ name, userInfo }) => {
      told.push([name, userInfo.menu ?? null, userInfo.event ?? null]);
      if (userInfo.menu === 'Edit') byPath([2, 0], { title: 'Undo typing' });
      next.shift()?.();
    });
    host.on('command', ({ title }) => told.push(title));
    await eventually(() => host.windowInfo(window).isVisible && host.windowInfo(window).isKey, 'the keyboard');
    // The menu opens and closes before the questions.
    const unasked = hands(to(120, 10), click, moment, to(120, 400), click);
    await eventually(() => unasked.exitCode !== null, 'the hands');
    told.push('asked');
    native.setupMenuWillShowNotification();
    hands(to(120, 10), click);
    await eventually(() => told.length >= 6, 'a choice');
    return told;
  });
  assert.deepStrictEqual(result, [
    'asked',
    ['TsAppMenuWillOpen', 'File', {}],
    ['TsAppMenuDidClose', null, null],
    ['TsAppMenuWillOpen', 'Edit', {}],
    ['TsAppMenuDidClose', null, null],
    'Undo typing',
  ]);
});
