'use strict';

const { scenarios, test } = require('./support');

const inSession = scenarios({
  display: true,
  fixture({ captureLog, get, log, menus, native, sendMessage: send }) {
    // GNUstep would add an application menu, if there were none of the process's name, and move items of the bar that
    // have no submenu into it.
    const applicationMenu = 'TessaroHost';
    const twice = { title: 'Twice', commandId: 7 };
    const move = { title: 'Move', commandId: 3, items: [{ title: 'Archive', commandId: 4 }, twice] };
    const behind = ['Behind', 'Second behind'].map((title, i) => ({ title, commandId: 5 + i }));
    const mail = [{ title: 'New', commandId: 2, key: 'n', modifiers: 0x100000 }, move, { title: 'Marker' }, ...behind];
    const about = { title: applicationMenu, items: [{ title: 'About', commandId: 1 }, twice] };
    const menu = [about, { title: 'Mail', items: mail }, { title: 'Empty', items: [] }];
    const described = (list) =>
      get(list, 'itemArray').map((item) => {
        const [title, key, submenu] = ['title', 'keyEquivalent', 'submenu'].map((name) => get(item, name));
        const modifiers = send(item, 'keyEquivalentModifierMask');
        const below = submenu && { submenuTitle: get(submenu, 'title'), items: described(submenu) };
        return { title, key, modifiers, hidden: send(item, 'isHidden'), ...below };
      });
    const application = send('NSApplication', 'sharedApplication');
    return {
      ...{ application, applicationMenu },
      mainMenu: () => described(send(application, 'mainMenu')),
      byId: (id, attributes) => native.updateMainMenuMenuItemWithCommandId(id, JSON.stringify(attributes)),
      byPath: (path, attributes) => native.updateMainMenuMenuItem(JSON.stringify(path), JSON.stringify(attributes)),
      errors: () => log(1),
      /** Sets the main menu, and begins to listen to the log. */
      begin: (items = menu) => menus.setMainMenu(items) ?? captureLog(),
    };
  },
});

inSession.test('an accelerator sets an item’s key and modifiers', ({ begin, byId, equal, mainMenu }) => {
  const [shift, control, option, command] = [0x20000, 0x40000, 0x80000, 0x100000];
  const table = [
    ['Cmd+Shift+N', 'N', command | shift],
    ['Cmd+n', 'n', command],
    ['Ctrl+Opt+Cmd+Shift+x', 'x', command | shift | control | option],
    ['F5', 'F5', 0],
    ['cmd+SHIFT+N', 'N', 0],
    ['Command+N', 'N', 0],
    ...['Cmd+', 'Cmd++', '', null].map((none) => [none, '', 0]),
    ['Shift+ä', 'ä', shift],
    ['Shift', 'Shift', shift],
  ];
  begin();
  for (const [accelerator, ...expected] of table) {
    equal([byId(2, { accelerator: 'Cmd+Opt+q' }), byId(2, { accelerator })], [1, 1]);
    const { key, modifiers } = mainMenu()[1].items[0];
    equal([key, modifiers], expected, accelerator);
  }
});

inSession.test('titles reach the submenu, hidden items stay, other attributes are logged', (fixture) => {
  const { begin, byPath, equal, errors, mainMenu } = fixture;
  begin();
  const mail = () => mainMenu()[1];
  equal(byPath([1], { title: 'Post 😀', visible: false, colour: 'red' }), 1);
  equal([mail().title, mail().submenuTitle, mail().hidden, mail().items.length], ['Post 😀', 'Post 😀', true, 5]);
  equal([byPath([1], { visible: true }), mail().hidden, byPath([1, 1], { title: 'Put' })], [1, false, 1]);
  equal(byPath([1, 0], { title: 5, visible: 'no', accelerator: 1, other: null }), 1);
  equal(mail().items[0], { title: 'New', key: 'n', modifiers: 0x100000, hidden: false });
  const refused = ['accelerator to 1', 'colour to red', 'other to <null>', 'title to 5', 'visible to no'];
  const described = errors().map((text) => text.replace(/0x[0-9a-f]+/, '0x'));
  equal(described.sort(), refused.map((each) => `<NSMenuItem: 0x> Cannot set menuItems item attribute ${each}`)); // prettier-ignore
});

test('a path of indices and titles leads to an item', async (t) => {
  const noItem = 'No menuItems item found';
  const outOfRange = 'Index out of range 18446744073709551615 for items';
  const noSubmenu = "isn't valid as it points to a menuItems item without submenu";
  // A path, the item found, and how the error begins.
  const rows = [
    ...[[[0], 'TessaroHost'], [[0, 1], 'Twice'], [[1, 1, 0], 'Archive'], [['Mail', 0, 'Marker', 2], 'Second behind']],
    ...[[['Mail', 0, 'Marker', 0], 'Marker'], [['Mail', 'Empty', 0], 'Empty'], [[1.9, 0], 'New'], [[-0.5], 'TessaroHost']],
    // The item chosen last counts, even when the path goes on to a title.
    [[1, 'Marker'], 'Mail'],
    ...[[['Mail'], null, noItem], [[], null, noItem], [[3], null, 'Index out of range 3 for items ('], [[1, 5], null, 'Index out of range 5 for items (']],
    ...[[['Mail', 0, 'Marker', 3], null, 'Index out of range 3 for items ('], [[2, 0], null, 'Index out of range 0 for items ()']],
    ...[[-1], [1e300], [18446744073709551615]].map((each) => [each, null, outOfRange]),
    ...[[['mail', 0], null, "Didn't find marker item with name mail"], [[1, 'Mail'], null, "Didn't find marker item with name Mail"]],
    [[1, 0, 4], null, `Path element 4 ${noSubmenu} ((1, 0, 4)).`],
    [[1, 0, 'x'], null, `Path element x ${noSubmenu} ((1, 0, x)).`],
    ...[[[true], null, '[ERROR] Unknown navigation item 1 in (1)'], [[0, false], null, '[ERROR] Unknown navigation item 0 in (0, 0)']],
    ...[[null, '<null>'], [[0], '(0)'], [{}, '{}']].map(([each, text]) => [[each], null, `[ERROR] Unknown navigation item ${text} in`]),
  ]; // prettier-ignore
  const followed = ({ begin, byPath, errors, mainMenu }, path, error = '') => {
    const titles = (list) => list.flatMap(({ title, items: below = [] }) => [title, ...titles(below)]);
    begin();
    const before = titles(mainMenu());
    const isFound = byPath(path, { title: 'changed' });
    const changed = titles(mainMenu()).indexOf('changed');
    return [isFound, before[changed] ?? null, errors().map((text) => text.slice(0, error.length))];
  };
  const expectations = rows.map(([each, title, error]) => [each, error, [title ? 1 : 0, title, error ? [error] : []]]);
  await inSession.table(t, expectations, followed);
});

inSession.test('identifiers are collected once: the later of two wins, later items are not found', (fixture) => {
  const { applicationMenu, begin, byId, byPath, equal, errors, mainMenu, menus } = fixture;
  begin();
  equal(byId(7, { title: 'seven' }), 1);
  equal([mainMenu()[0].items[1].title, mainMenu()[1].items[1].items[1].title], ['Twice', 'seven']);
  equal([byId(99, { title: 'none' }), byId(-1, {}), byId(4, { visible: false })], [0, 0, 1]);
  const later = [{ title: 'Late', commandId: 8 }, { title: 'Same', commandId: 2 }]; // prettier-ignore
  menus.setMainMenu([{ title: applicationMenu, items: later }]);
  equal([byId(8, { title: 'x' }), byId(2, { title: 'y' }), mainMenu()[0].items[1].title], [0, 1, 'Same']);
  equal([byPath([0, 0], { title: 'z' }), errors()], [1, []]);
  // A new item at a hidden item’s address is visible.
  const items = Array.from({ length: 200 }, (_, i) => ({ title: `Item ${i}` }));
  for (let round = 0; round < 5; ++round) {
    menus.setMainMenu([{ title: applicationMenu, items }]);
    equal(mainMenu()[0].items.filter((item) => item.hidden).length, 0);
    for (let i = 0; i < items.length; ++i) byPath([0, i], { visible: false });
  }
});

inSession.test('all menus of the bar have one delegate; later menus get it with another call', (fixture) => {
  const { application, begin, equal, get, native } = fixture;
  const delegates = () => [
    get(application, 'mainMenu.delegate'),
    ...get(application, 'mainMenu.itemArray.submenu.delegate'),
  ];
  for (let round = 0; round < 2; ++round) {
    begin();
    equal(delegates(), Array(4).fill(null));
    native.setupMenuWillShowNotification();
    const [shared, ...others] = delegates();
    equal([shared.class, others], ['TsAppMenuDelegate', Array(3).fill(shared)]);
  }
});

// As with a mouse: each action follows from the report of the one before. GNUstep looks where the mouse is a hundred
// times a second, so a moment passes before each click.
inSession.test('menus report when they open and close, and may change then', async (fixture) => {
  const { byPath, equal, eventually, host, native, spawn } = fixture;
  host.setKeepAlive(true);
  const window = host.createWindow({ title: 'Menus' });
  const { systemWindow } = host.windowInfo(window);
  const moment = ['sleep', 0.2];
  // With the button held: whether a click keeps a menu open depends on how fast it is.
  const press = ['mousedown', 1];
  const release = ['mouseup', 1];
  const to = (x, y) => ['mousemove', '--window', systemWindow, x, y, ...moment];
  const hands = (...actions) => spawn('xdotool', actions.flat().map(String), { stdio: 'ignore' });
  const reports = [];
  const next = [
    () => hands(moment, to(150, 10)), // from "File" to "Edit"
    () => {},
    () => hands(moment, to(160, 30), release), // chooses "Undo"
  ];
  host.on('notification', ({ name, userInfo }) => {
    reports.push([name, userInfo.menu ?? null, userInfo.event ?? null]);
    if (userInfo.menu === 'Edit') byPath([2, 0], { title: 'Undo typing' });
    next.shift()?.();
  });
  host.on('command', ({ title }) => reports.push(title));
  await eventually(() => host.windowInfo(window).isVisible && host.windowInfo(window).isKey, 'the keyboard');
  // The menu opens and closes before it reports.
  const unheard = hands(to(120, 10), press, moment, to(120, 400), release);
  await eventually(() => unheard.exitCode !== null, 'the hands');
  equal(reports, []);
  native.setupMenuWillShowNotification();
  hands(to(120, 10), press);
  await eventually(() => reports.length >= 5, 'a choice');
  const opens = (menu) => ['TsAppMenuWillOpen', menu, {}];
  const closes = ['TsAppMenuDidClose', null, null];
  equal(reports, [opens('File'), closes, opens('Edit'), closes, 'Undo typing']);
});
