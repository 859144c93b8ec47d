'use strict';

// Toolbars: their definitions, the questions and reports to script, and real clicks.

const { assert, eventually, scenarios, temporaryDirectory, test } = require('./support');

const inWindows = scenarios({
  display: true,
  uses: ['windows'],
  fixture({ get, native, open, sendMessage: send }) {
    const image = 'SB_Default_Template';
    const shown = { 'default?': true };
    const texts = { 'palette-label': 'Archive messages', tooltip: 'Archive them' };
    const definition = {
      identifier: 'main',
      items: [
        { identifier: 'inbox', label: 'Inbox', 'image-name': image, 'selectable?': true, ...shown },
        { identifier: 'archive', label: 'Archive', 'image-name': image, 'button?': true, ...texts, ...shown },
        { type: 'flexible-space', ...shown },
        { type: 'separator', ...shown },
        { identifier: 'plain', label: 'Plain', 'selectable?': true, 'selected?': true, ...shown },
        { identifier: 'spare', label: 'Spare', 'image-name': 'missing', 'default?': 'true' },
        { type: 'cloud-sharing' },
      ],
      options: { 'allows-user-customization?': true, 'allows-extension-items?': 1 },
    };
    const calls = [];
    const controller = (id = 7) => send('TsToolbarController', 'toolbarControllerForWindowId:', id);
    const toolbar = (id) => get(controller(id), 'toolbar');
    const identifiers = (id) => get(toolbar(id), 'items.itemIdentifier');
    const item = (name) => get(toolbar(), 'items')[identifiers().indexOf(name)];
    const add = (handle, id = 7, items = definition) => native.addToolbarToWindow(handle, id, JSON.stringify(items));
    return {
      ...{ add, calls, controller, definition, identifiers, image, item, toolbar },
      addTab: () => get(get(controller(), 'window.titlebarAccessoryViewControllers').at(-1), 'view'),
      list: (kind, id) => send(controller(id), `toolbar${kind}ItemIdentifiers:`, toolbar(id)),
      insert: (name, index) => send(toolbar(), 'insertItemWithItemIdentifier:atIndex:', name, index),
      /** The rectangle of a view in its window. */
      placeOf: (view) => send(view, 'convertRect:toView:', send(view, 'bounds'), null),
      /** Opens a window with a toolbar, whose callbacks note their calls. */
      async openWithToolbar(items) {
        native.setToolbarCallbackFunctions(
          (id, name) => calls.push(['validation', id, name]) && name !== 'inbox',
          (...action) => calls.push(['action', ...action]),
          (...addTab) => calls.push(['addTab', ...addTab]),
        );
        const handle = await open({ title: 'First', width: 700, height: 300 });
        add(handle, 7, items);
        return handle;
      },
    };
  },
});

inWindows.test('a definition makes a toolbar; its selection, visibility and images change', async (fixture) => {
  const { equal, get, getAll, identifiers, image, item, list, native, openWithToolbar, sendMessage, toolbar } = fixture;
  await openWithToolbar();
  const flexible = 'NSToolbarFlexibleSpaceItem';
  const shown = ['inbox', 'archive', flexible, 'NSToolbarSeparatorItem', 'plain'];
  equal(identifiers(), shown);
  equal(list('Default'), shown);
  equal(list('Selectable'), ['inbox', 'plain']);
  // Of the items of the system the first one only.
  equal(list('Allowed'), ['inbox', 'archive', 'plain', 'spare', flexible]);
  equal(getAll(toolbar(), 'identifier', 'selectedItemIdentifier'), ['main', 'plain']);
  const options = ['allowsUserCustomization', 'allowsExtensionItems', 'autosavesConfiguration'];
  equal(getAll(toolbar(), ...options, 'showsBaselineSeparator'), [1, 0, 0, 0]);
  const texts = ['label', 'paletteLabel', 'toolTip', 'menuFormRepresentation.title'];
  const look = [...texts, 'view.className', 'view.image.name'];
  equal(getAll(item('inbox'), ...look), ['Inbox', 'Inbox', 'Inbox', null, null, null]);
  const archive = ['Archive', 'Archive messages', 'Archive them', 'Archive', 'NSButton', image];
  equal(getAll(item('archive'), ...look), archive);
  equal(sendMessage(item('archive'), 'minSize'), [48, 32]);
  equal(getAll(item('inbox'), 'image.name', 'image.isTemplate', 'className'), [image, 1, 'TsToolbarItem']);
  for (const name of ['inbox', 'unknown']) {
    native.selectToolbarItem(7, name);
    equal(get(toolbar(), 'selectedItemIdentifier'), name);
  }
  for (const isVisible of [true, false]) {
    equal(native.isToolbarVisible(7), isVisible);
    native.toggleToolbarVisibility(7);
  }
  equal(native.isToolbarVisible(7), true);
  for (const name of ['archive', 'inbox', 'unknown']) native.changeImageOfToolbarItem(7, name, 'SB_InError_Template');
  equal([get(item('archive'), 'view.image.name'), get(item('inbox'), 'image.name')], ['SB_InError_Template', image]);
  equal(identifiers().length, 5);
  const answers = [
    ...[native.validateToolbarItems(1), native.selectToolbarItem(1, 'x'), native.toggleToolbarVisibility(1)],
    ...[native.isToolbarVisible(-1), native.customizeToolbar(1), native.changeImageOfToolbarItem(1, 'x', 'y')],
    ...[native.showAddTabButton(1), native.hideAddTabButton(2147483647)],
  ];
  equal(answers, [undefined, undefined, undefined, false, ...Array(4).fill(undefined)]);
});

inWindows.test('script enables items, and gets the actions of items, views and menus', async (fixture) => {
  const { add, assert, calls, captureLog, controller, equal, get, getAll, item, log, native, open } = fixture;
  const { openWithToolbar, sendMessage, thrownBy } = fixture;
  const enabled = () => [get(item('inbox'), 'isEnabled'), ...getAll(item('archive'), 'isEnabled', 'view.isEnabled')];
  add(await open({ title: 'First' }));
  native.validateToolbarItems(7);
  sendMessage(controller(), 'toolbarAction:', item('archive'));
  equal(enabled(), [0, 0, 0]);
  native.closeKeyWindow();
  await openWithToolbar();
  native.validateToolbarItems(7);
  equal(enabled(), [0, 1, 1]);
  assert.ok(calls.some((call) => call.join() === 'validation,7,archive'));
  equal(sendMessage(controller(), 'validateMenuItem:', get(item('archive'), 'menuFormRepresentation')), true);
  captureLog();
  const archive = item('archive');
  const senders = [archive, ...getAll(archive, 'view', 'menuFormRepresentation'), sendMessage('NSView', 'new')];
  for (const sender of senders) sendMessage(controller(), 'toolbarAction:', sender);
  const actions = calls.filter(([kind]) => kind === 'action');
  equal([actions, log(2)], [Array(3).fill(['action', 7, 'archive']), ['Need item identifier.']]);
  const answerWith = (validate) => native.setToolbarCallbackFunctions(validate, () => {}, () => {}); // prettier-ignore
  answerWith(() => 5);
  native.validateToolbarItems(7);
  equal(enabled(), [0, 0, 0]);
  assert.ok(log(2).includes('Unknown result from callback function! 5'));
  answerWith(() => {
    throw new Error('mine');
  });
  equal(thrownBy(() => native.validateToolbarItems(7)), 'mine'); // prettier-ignore
});

inWindows.test('clicks on items and on the add-tab button reach script', async (fixture) => {
  const { addTab, calls, clickUntil, equal, eventually, get, host, item, middle, native } = fixture;
  const { openWithToolbar, placeOf, run } = fixture;
  const handle = await openWithToolbar();
  const { systemWindow } = host.windowInfo(handle);
  const clickOn = async (view, kind, name) => {
    const isReported = () => calls.some((call) => call[0] === kind && (name === undefined || call[2] === name));
    await clickUntil(systemWindow, () => middle(handle, placeOf(view())), isReported, kind);
  };
  const button = () => get(item('archive'), 'view');
  const isHovering = () => get(addTab(), 'isHovering') === 1;
  await eventually(() => placeOf(button())[2] > 0, 'the button');
  native.validateToolbarItems(7);
  native.showAddTabButton(7);
  await clickOn(button, 'action');
  await clickOn(addTab, 'addTab');
  await eventually(isHovering, 'hovering');
  await run('xdotool', 'mousemove', 5, 5);
  await eventually(() => !isHovering(), 'the end of hovering');
  const reports = calls.filter(([kind]) => kind !== 'validation').map((call) => call.join());
  equal([...new Set(reports)], ['action,7,archive', 'addTab,7']);
  native.hideAddTabButton(7);
  // An item has moved there.
  await clickOn(addTab, 'action', 'plain');
});

inWindows.test('the add-tab button has one space, and is hidden while the palette is open', async (fixture) => {
  const { addTab, controller, equal, eventually, get, getAll, host } = fixture;
  const { identifiers, insert, native, openWithToolbar, sendMessage, toolbar } = fixture;
  const handle = await openWithToolbar();
  const [space, flexible] = ['NSToolbarSpaceItem', 'NSToolbarFlexibleSpaceItem'];
  const [spare, more] = ['spare', flexible].map((name) => () => insert(name, identifiers().length));
  const show = () => native.showAddTabButton(7);
  const hide = () => native.hideAddTabButton(7);
  const table = [
    [[hide]],
    [[show, show], space],
    [[hide]],
    [[show, spare, hide], space, 'spare'],
    [[more, show, hide], space, 'spare', flexible],
  ];
  for (const [changes, ...added] of table) {
    for (const change of changes) change();
    equal(identifiers().slice(5), added);
  }
  equal(sendMessage(addTab(), 'acceptsFirstMouse:', null), false);

  const isShowing = () => get(controller(), 'isAddTabViewShowing');
  const state = () => [...getAll(toolbar(), 'customizationPaletteIsRunning', 'needToShowAddTabButton'), isShowing()];
  show();
  native.customizeToolbar(7);
  equal(state(), [1, 1, 0]);
  hide();
  equal(state(), [1, 0, 0]);
  show();
  equal(state(), [1, 1, 0]);
  await eventually(() => native.hasKeyWindow() && !host.windowInfo(handle).isKey, 'the palette');
  native.closeKeyWindow();
  await eventually(isShowing, 'the button');
  equal(state(), [0, 1, 1]);
});

test('images follow the appearance while windows are open', async (t) => {
  // No real portal runs without a desktop.
  const portal = await scenarios({ display: true }).resident(t);
  const app = await inWindows.resident(t);
  await app.tell(async ({ add, definition, open, openWithToolbar }) => {
    for (const each of definition.items) if (each['image-name']) each['image-name'] = 'TB_Archive';
    await openWithToolbar();
    add(await open({ title: 'Second' }), 8);
  });
  const look = () =>
    app.tell(({ addTab, get, item, toolbar }) => [
      ...[get(item('inbox'), 'image.name'), get(item('archive'), 'view.image.name')],
      ...[get(get(toolbar(8), 'items')[0], 'image.name'), get(addTab(), 'isDarkMode')],
    ]);
  const looks = { light: ['TB_Archive', 0], dark: ['TB_Archive--wdark', 1] };
  for (const [name, scheme] of [['light'], ['dark', 1], ['light', 2]]) {
    if (scheme) await portal.tell(({ bus }, each) => bus.setPortalScheme(each), scheme);
    const [picture, isDark] = looks[name];
    // They change one after the other.
    const expected = [picture, picture, picture, isDark].join();
    await eventually(async () => (await look()).join() === expected, `the ${name} look`);
  }
});

test('a customised toolbar is restored in the next process only if it autosaves', async (t) => {
  const [flexible, separator] = ['NSToolbarFlexibleSpaceItem', 'NSToolbarSeparatorItem'];
  const before = ['inbox', 'archive', flexible, separator, 'plain'];
  const after = ['spare', 'inbox', flexible, separator, 'plain'];
  const inHome = inWindows.with({ home: temporaryDirectory(t) });
  const open = async ({ add, definition, identifiers, insert, open, sendMessage, toolbar }, autosaves, changes) => {
    const options = { 'autosaves-configuration?': autosaves };
    add(await open({ title: 'First', width: 700, height: 300 }), 7, { ...definition, identifier: 'saved', options });
    const found = identifiers();
    if (changes) insert('spare', 0);
    if (changes) sendMessage(toolbar(), 'removeItemAtIndex:', 2);
    return [found, identifiers()];
  };
  for (const [autosaves, changes, ...expected] of [
    [false, true, before, after],
    [false, false, before, before],
    [true, true, before, after],
    [true, false, after, after],
  ]) {
    assert.deepStrictEqual(await inHome(t, open, autosaves, changes), expected, `${autosaves} ${changes}`);
  }
});

test('malformed items are skipped or reduced to their valid parts', async (t) => {
  const shown = { 'default?': true };
  const none = [[], []];
  const space = 'NSToolbarSpaceItem';
  const twice = { identifier: 'twice', label: 'Twice', ...shown };
  const odd = { identifier: 'odd', label: 5, tooltip: [], 'image-name': {}, 'button?': 'x', ...shown };
  const table = [
    ['no list', 'x', none],
    ['an empty list', [], none],
    ['no definitions', [null, 1, 'x', [], true], none],
    ['definitions without anything', [{}, shown, { type: 'unknown', ...shown }], none],
    ['values of other types', [{ identifier: 5, ...shown }, odd, { type: {}, ...shown }], [['odd'], ['odd']]],
    ['a number for a truth value', [{ identifier: 'one', label: 'One', 'default?': 1 }], [['one'], []]],
    ['an identifier and a type', [{ identifier: 'both', type: 'space', ...shown }], [['both', space], [space]]],
    ['the same identifier twice', [twice, twice], [Array(2).fill('twice'), Array(2).fill('twice')]],
  ];
  await inWindows.table(t, table, ({ add, calls, host, list }, identifier, items) => {
    const id = calls.push('a row');
    add(host.createWindow({ title: 'First' }), id, { identifier, items, options: {} });
    return [list('Allowed', id), list('Default', id)];
  });
});

test('an incomplete definition ends the process', async (t) => {
  const sentences = { identifier: 'need an identifier', items: 'need toolbar items.', options: 'need a dictionary of options.' }; // prettier-ignore
  for (const [missing, sentence] of Object.entries(sentences)) {
    const addWithout = ({ add, definition, host }, key) =>
      add(host.createWindow(), 1, { ...definition, [key]: undefined });
    const result = await inWindows.ends(t, addWithout, missing);
    assert.strictEqual(result.signal, 'SIGABRT');
    assert.ok(result.stderr.includes(sentence), result.stderr);
  }
});

inWindows.test('a window may close during validation, customisation or a click', async (fixture) => {
  const { add, controller, equal, host, item, native, nextTurn, open, openWithToolbar, sendMessage } = fixture;
  const handle = await openWithToolbar();
  native.setToolbarCallbackFunctions(() => true, () => host.closeWindow(handle), () => {}); // prettier-ignore
  sendMessage(controller(), 'toolbarAction:', item('archive'));
  equal([controller(), native.isToolbarVisible(7)], [null, false]);
  const other = await open({ title: 'Second' });
  add(other, 8);
  native.showAddTabButton(8);
  native.customizeToolbar(8);
  host.closeWindow(other);
  for (let i = 0; i < 50; ++i) await nextTurn();
  add(await open({ title: 'Third' }), 9);
  equal([controller(8), native.isToolbarVisible(9)], [null, true]);
});
