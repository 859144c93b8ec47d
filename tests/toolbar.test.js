'use strict';

// Toolbars: what a definition makes of one, how script is asked and told, and real clicks.

const assert = require('assert');
const { test } = require('node:test');

const { eventually, temporaryDirectory } = require('./support/child');
const { scenarios } = require('./support/scenario');

const image = 'SB_Default_Template';

const definition = {
  identifier: 'main',
  items: [
    { identifier: 'inbox', label: 'Inbox', 'image-name': image, 'default?': true, 'selectable?': true },
    {
      identifier: 'archive',
      label: 'Archive',
      'palette-label': 'Archive messages',
      tooltip: 'Archive them',
      'image-name': image,
      'button?': true,
      'default?': true,
    },
    { type: 'flexible-space', 'default?': true },
    { type: 'separator', 'default?': true },
    { identifier: 'plain', label: 'Plain', 'default?': true, 'selectable?': true, 'selected?': true },
    { identifier: 'spare', label: 'Spare', 'image-name': 'missing', 'default?': 'true' },
    { type: 'cloud-sharing' },
  ],
  options: { 'allows-user-customization?': true, 'allows-extension-items?': 1 },
};

const inWindows = scenarios({
  display: true,
  uses: ['windows'],
  fixture({ native, open, windows }) {
    const calls = [];
    const state = (id = 7) => windows.toolbarState(id) ?? null;
    const itemOf = (name) => state().items.find(({ identifier }) => identifier === name);
    return {
      ...{ calls, state, itemOf },
      identifiers: () => state().items.map(({ identifier }) => identifier),
      add: (handle, id, items) => native.addToolbarToWindow(handle, id, JSON.stringify(items)),
      /** Opens a window with a toolbar, whose callbacks note their calls. */
      async openWithToolbar(items) {
        native.setToolbarCallbackFunctions(
          (id, name) => calls.push(['validation', id, name]) && name !== 'inbox',
          (...action) => calls.push(['action', ...action]),
          (...addTab) => calls.push(['addTab', ...addTab]),
        );
        const handle = await open({ title: 'First', width: 700, height: 300 });
        native.addToolbarToWindow(handle, 7, JSON.stringify(items));
        return handle;
      },
    };
  },
});

test('a definition makes a toolbar', async (t) => {
  const state = await inWindows(
    t,
    async ({ openWithToolbar, state }, items) => (await openWithToolbar(items)) && state(),
    definition,
  );
  const flexible = 'NSToolbarFlexibleSpaceItem';
  assert.deepStrictEqual(state.default, ['inbox', 'archive', flexible, 'NSToolbarSeparatorItem', 'plain']);
  assert.deepStrictEqual(state.selectable, ['inbox', 'plain']);
  // Of the items of the system the first one only.
  assert.deepStrictEqual(state.allowed, ['inbox', 'archive', 'plain', 'spare', flexible]);
  assert.deepStrictEqual(
    state.items.map(({ identifier }) => identifier),
    state.default,
  );
  assert.strictEqual(state.identifier, 'main');
  assert.strictEqual(state.selected, 'plain');
  assert.deepStrictEqual(
    [state.allowsUserCustomization, state.allowsExtensionItems, state.autosavesConfiguration],
    [true, false, false],
  );
  assert.strictEqual(state.showsBaselineSeparator, false);
  const [inbox, archive] = state.items;
  const described = (item) =>
    ['label', 'paletteLabel', 'toolTip', 'view', 'menuTitle', 'buttonImage', 'minSize'].map((name) => item[name]);
  assert.deepStrictEqual(described(inbox), ['Inbox', 'Inbox', 'Inbox', null, null, null, [0, 0]]);
  const shown = ['Archive', 'Archive messages', 'Archive them', 'NSButton', 'Archive', image, [48, 32]];
  assert.deepStrictEqual(described(archive), shown);
  assert.deepStrictEqual([inbox.image, inbox.isTemplate, inbox.class], [image, true, 'TsToolbarItem']);
});

test('script says which items are enabled', async (t) => {
  const result = await inWindows(
    t,
    async ({ calls, captureLog, itemOf, log, native, openWithToolbar, thrownBy, windows }, items) => {
      await openWithToolbar(items);
      native.validateToolbarItems(7);
      const enabled = () => [itemOf('inbox').isEnabled, itemOf('archive').isEnabled, itemOf('archive').isButtonEnabled];
      const asked = calls.some((call) => call.join() === 'validation,7,archive');
      const first = enabled();
      const inMenu = windows.validateMenuItem(7, 'archive');
      captureLog();
      const answerWith = (validate) => native.setToolbarCallbackFunctions(validate, () => {}, () => {}); // prettier-ignore
      answerWith(() => 5);
      native.validateToolbarItems(7);
      const numbers = enabled();
      answerWith(() => {
        throw new Error('mine');
      });
      const thrown = thrownBy(() => native.validateToolbarItems(7));
      return { asked, first, inMenu, numbers, thrown, warnings: [...new Set(log(2))] };
    },
    definition,
  );
  assert.deepStrictEqual(result.first, [false, true, true]);
  assert.deepStrictEqual([result.asked, result.inMenu, result.thrown], [true, true, 'mine']);
  assert.deepStrictEqual(result.numbers, [false, false, false]);
  assert.ok(result.warnings.includes('Unknown result from callback function! 5'), JSON.stringify(result.warnings));
});

test('without callbacks every item is disabled, and actions do nothing', async (t) => {
  const result = await inWindows(
    t,
    async ({ add, native, open, state, windows }, items) => {
      add(await open({ title: 'First' }), 7, items);
      native.validateToolbarItems(7);
      windows.activate(7, 'archive', 'item');
      return state()
        .items.filter((each) => each.class === 'TsToolbarItem')
        .map((each) => each.isEnabled);
    },
    definition,
  );
  assert.deepStrictEqual(result, [false, false, false]);
});

test('actions come from items, views and menus', async (t) => {
  const { calls, warnings } = await inWindows(
    t,
    async ({ calls, captureLog, log, openWithToolbar, windows }, items) => {
      await openWithToolbar(items);
      captureLog();
      for (const by of ['item', 'view', 'menu', 'nothing']) windows.activate(7, 'archive', by);
      return { calls: calls.filter(([kind]) => kind === 'action'), warnings: log(2) };
    },
    definition,
  );
  assert.deepStrictEqual(calls, Array(3).fill(['action', 7, 'archive']));
  assert.deepStrictEqual(warnings, ['Need item identifier.']);
});

test('clicks on items and on the add-tab button reach script', async (t) => {
  const told = await inWindows(
    t,
    async (fixture, items) => {
      const { calls, clickUntil, eventually, host, itemOf, middle, native, openWithToolbar, run, state } = fixture;
      const handle = await openWithToolbar(items);
      const { systemWindow } = host.windowInfo(handle);
      const button = () => state().addTab.frame;
      const clickOn = async (rectangle, kind, name) => {
        const isTold = () => calls.some((call) => call[0] === kind && (name === undefined || call[2] === name));
        await clickUntil(systemWindow, () => middle(handle, rectangle()), isTold, kind);
      };
      await eventually(() => itemOf('archive').viewFrame[2] > 0, 'the button');
      native.validateToolbarItems(7);
      native.showAddTabButton(7);
      await clickOn(() => itemOf('archive').viewFrame, 'action');
      await clickOn(button, 'addTab');
      await eventually(() => state().addTab.isHovering, 'hovering');
      await run('xdotool', 'mousemove', 5, 5);
      await eventually(() => !state().addTab.isHovering, 'the end of hovering');
      native.hideAddTabButton(7);
      const told = calls.filter(([kind]) => kind !== 'validation').splice(0);
      // An item has moved there.
      await clickOn(button, 'action', 'plain');
      return [...new Set(told.map((call) => call.join()))];
    },
    definition,
  );
  assert.deepStrictEqual(told, ['action,7,archive', 'addTab,7']);
});

test('the add-tab button adds its space once, and removes it again', async (t) => {
  const result = await inWindows(
    t,
    async ({ identifiers, native, openWithToolbar, state, windows }, items) => {
      await openWithToolbar(items);
      const append = (name) => windows.insertItem(7, name, identifiers().length);
      const show = () => native.showAddTabButton(7);
      const hide = () => native.hideAddTabButton(7);
      const changes = [
        hide,
        () => show() ?? show(),
        hide,
        () => show() ?? append('spare'),
        hide,
        () => append('NSToolbarFlexibleSpaceItem') ?? show(),
        hide,
      ];
      const steps = changes.map((change) => [change(), identifiers().slice(5)][1]);
      return { steps, firstMouse: state().addTab.acceptsFirstMouse };
    },
    definition,
  );
  const [space, flexible] = ['NSToolbarSpaceItem', 'NSToolbarFlexibleSpaceItem'];
  assert.deepStrictEqual(result.steps, [
    [],
    [space],
    [],
    [space, 'spare'],
    [space, 'spare'],
    [space, 'spare', flexible],
    [space, 'spare', flexible],
  ]);
  assert.strictEqual(result.firstMouse, false);
});

test('the add-tab button is hidden while the palette is open', async (t) => {
  const steps = await inWindows(
    t,
    async ({ eventually, host, native, openWithToolbar, state }, items) => {
      const handle = await openWithToolbar(items);
      const step = () => ['isPaletteRunning', 'needToShowAddTabButton', 'isAddTabShowing'].map((name) => state()[name]);
      native.showAddTabButton(7);
      native.customizeToolbar(7);
      const steps = [step()];
      for (const change of ['hideAddTabButton', 'showAddTabButton']) {
        native[change](7);
        steps.push(step());
      }
      await eventually(() => native.hasKeyWindow() && !host.windowInfo(handle).isKey, 'the palette');
      native.closeKeyWindow();
      await eventually(() => state().isAddTabShowing, 'the button');
      return [...steps, step()];
    },
    definition,
  );
  assert.deepStrictEqual(steps, [
    [true, true, false],
    [true, false, false],
    [true, true, false],
    [false, true, true],
  ]);
});

test('selection, visibility and images change', async (t) => {
  const result = await inWindows(
    t,
    async ({ identifiers, itemOf, native, openWithToolbar, state }, items) => {
      await openWithToolbar(items);
      const selected = ['inbox', 'nobody'].map((name) => native.selectToolbarItem(7, name) ?? state().selected);
      const visible = [native.isToolbarVisible(7)];
      for (let i = 0; i < 2; ++i) visible.push(native.toggleToolbarVisibility(7) ?? native.isToolbarVisible(7));
      for (const name of ['archive', 'inbox', 'nobody'])
        native.changeImageOfToolbarItem(7, name, 'SB_InError_Template');
      const images = [itemOf('archive').buttonImage, itemOf('inbox').image];
      return { selected, visible, images, identifiers: identifiers() };
    },
    definition,
  );
  assert.deepStrictEqual(result.selected, ['inbox', 'nobody']);
  assert.deepStrictEqual(result.visible, [true, false, true]);
  assert.deepStrictEqual(result.images, ['SB_InError_Template', image]);
  assert.strictEqual(result.identifiers.length, 5);
});

const withLooks = {
  ...definition,
  items: definition.items.map((each) => (each['image-name'] ? { ...each, 'image-name': 'TB_Archive' } : each)),
};

test('images follow the appearance', async (t) => {
  const images = await inWindows(
    t,
    async ({ env, eventually, itemOf, openWithToolbar, state, windows }, items) => {
      await openWithToolbar(items);
      const look = () => [itemOf('inbox').image, itemOf('archive').buttonImage, state().addTab.isDarkMode];
      const seen = [look()];
      for (const theme of ['Adwaita:dark', 'Adwaita']) {
        env.GTK_THEME = theme;
        windows.postThemeChange();
        await eventually(() => look().every((each, i) => each !== seen.at(-1)[i]), 'other images');
        seen.push(look());
      }
      return seen;
    },
    withLooks,
  );
  const [light, dark] = ['TB_Archive', 'TB_Archive--wdark'].map((name, i) => [name, name, i === 1]);
  assert.deepStrictEqual(images, [light, dark, light]);
});

test('images follow the desktop’s settings while windows are open', async (t) => {
  // No real portal runs without a desktop.
  const portal = await scenarios({ display: true }).resident(t);
  const app = await inWindows.resident(t);
  await app.tell(async ({ add, open, openWithToolbar }, items) => {
    await openWithToolbar(items);
    add(await open({ title: 'Second' }), 8, items);
  }, withLooks);
  const look = () =>
    app.tell(({ itemOf, state }) => [
      itemOf('inbox').image,
      itemOf('archive').buttonImage,
      state(8).items[0].image,
      state().addTab.isDarkMode,
    ]);
  const looks = { light: ['TB_Archive', false], dark: ['TB_Archive--wdark', true] };
  for (const [name, scheme] of [['light'], ['dark', 1], ['light', 2]]) {
    if (scheme) await portal.tell(({ bus }, each) => bus.setPortalScheme(each), scheme);
    const [picture, isDark] = looks[name];
    // They change one after the other.
    const expected = [picture, picture, picture, isDark].join();
    await eventually(async () => (await look()).join() === expected, `the ${name} look`);
  }
});

test('a customised toolbar is restored in the next process only if it autosaves', async (t) => {
  const home = temporaryDirectory(t);
  const sets = [];
  for (const [isChanged, autosaves] of [
    [true, true],
    [false, true],
    [true, false],
    [false, false],
  ]) {
    // prettier-ignore
    const options = { 'autosaves-configuration?': autosaves };
    const set = await inWindows.with({ home })(
      t,
      async ({ add, identifiers, open, windows }, items, change) => {
        add(await open({ title: 'First', width: 700, height: 300 }), 7, items);
        const before = identifiers();
        if (change) windows.insertItem(7, 'spare', 0);
        if (change) windows.removeItem(7, 2);
        return [before, identifiers()];
      },
      { ...definition, identifier: `saved ${autosaves}`, options },
      isChanged,
    );
    sets.push(set);
  }
  const [flexible, separator] = ['NSToolbarFlexibleSpaceItem', 'NSToolbarSeparatorItem'];
  const before = ['inbox', 'archive', flexible, separator, 'plain'];
  const after = ['spare', 'inbox', flexible, separator, 'plain'];
  assert.deepStrictEqual(sets, [
    [before, after],
    [after, after],
    [before, after],
    [before, before],
  ]);
});

test('the add-tab button is drawn in the colours of its window', async (t) => {
  const looks = await inWindows(
    t,
    async ({ eventually, host, native, open, openWithToolbar, windows }, items) => {
      const handle = await openWithToolbar(items);
      native.showAddTabButton(7);
      await eventually(() => host.windowInfo(handle).isMain, 'the main window');
      const look = (isHovering, isDarkMode) => Object.keys(windows.addTabColors(7, isHovering, isDarkMode));
      const looks = { hovering: look(true, false), dark: look(false, true) };
      await open({ title: 'Second' });
      return { ...looks, quiet: look(false, false) };
    },
    definition,
  );
  assert.ok(looks.hovering.includes('696869') && looks.hovering.includes('b4b2b4'), looks.hovering.join());
  assert.ok(looks.dark.includes('828282') && looks.dark.includes('212121'), looks.dark.join());
  assert.ok(looks.quiet.includes('cecece') && looks.quiet.includes('e5e4e5'), looks.quiet.join());
});

test('malformed definitions are logged and ignored', async (t) => {
  const { errors, visible } = await inWindows(t, async ({ captureLog, log, native, open }) => {
    const handle = await open({ title: 'First' });
    captureLog();
    for (const text of ['', 'no JSON', '[1]', '"x"', 'null']) native.addToolbarToWindow(handle, 1, text);
    return { errors: log(1), visible: native.isToolbarVisible(1) };
  });
  assert.strictEqual(errors.length, 5);
  assert.match(errors[1], /^error parsing options no JSON \(/);
  assert.match(errors[2], /^toolbar options must be a NSDictionary \(/);
  assert.strictEqual(visible, false);
});

test('malformed items are skipped or reduced to their valid parts', async (t) => {
  const shown = { 'default?': true };
  const none = [[], []];
  const space = 'NSToolbarSpaceItem';
  const twice = { identifier: 'twice', label: 'Twice', ...shown };
  const table = [
    ['no list', 'x', none],
    ['an empty list', [], none],
    ['no definitions', [null, 1, 'x', [], true], none],
    ['definitions without anything', [{}, shown, { type: 'unknown', ...shown }], none],
    [
      'values of other types',
      [
        { identifier: 5, ...shown },
        { identifier: 'odd', label: 5, tooltip: [], 'image-name': {}, 'button?': 'x', ...shown },
        { type: {}, ...shown },
      ],
      [['odd'], ['odd']],
    ],
    ['a number for a truth value', [{ identifier: 'one', label: 'One', 'default?': 1 }], [['one'], []]],
    ['an identifier and a type', [{ identifier: 'both', type: 'space', ...shown }], [['both', space], [space]]],
    ['the same identifier twice', [twice, twice], [Array(2).fill('twice'), Array(2).fill('twice')]],
  ];
  await inWindows.table(t, table, async ({ add, calls, host, state }, identifier, items) => {
    const id = calls.push('a row');
    add(host.createWindow({ title: 'First' }), id, { identifier, items, options: {} });
    return [state(id).allowed, state(id).default];
  });
});

for (const [missing, text] of [
  ['identifier', 'need an identifier'],
  ['items', 'need toolbar items.'],
  ['options', 'need a dictionary of options.'],
]) {
  test(`a definition without ${missing} ends the process`, async (t) => {
    const result = await inWindows.ends(t, ({ add, host }, broken) => add(host.createWindow(), 1, broken), {
      ...definition,
      [missing]: undefined,
    });
    assert.strictEqual(result.signal, 'SIGABRT');
    assert.ok(result.stderr.includes(text), result.stderr);
  });
}

test('unknown window ids are ignored', async (t) => {
  const answers = await inWindows(t, async ({ native, open }) => {
    await open({ title: 'First' });
    return [
      ...[native.validateToolbarItems(1), native.selectToolbarItem(1, 'x'), native.toggleToolbarVisibility(1)],
      ...[native.isToolbarVisible(-1), native.customizeToolbar(1), native.changeImageOfToolbarItem(1, 'x', 'y')],
      ...[native.showAddTabButton(1), native.hideAddTabButton(2147483647)],
    ];
  });
  assert.deepStrictEqual(answers, [null, null, null, false, null, null, null, null]);
});

test('a window may close during validation, customisation or a click', async (t) => {
  const result = await inWindows(
    t,
    async ({ add, host, native, nextTurn, open, openWithToolbar, state, windows }, items) => {
      const handle = await openWithToolbar(items);
      native.setToolbarCallbackFunctions(() => true, () => host.closeWindow(handle), () => {}); // prettier-ignore
      windows.activate(7, 'archive', 'item');
      const afterClick = [state(), native.isToolbarVisible(7)];
      const other = await open({ title: 'Second' });
      add(other, 8, items);
      native.showAddTabButton(8);
      native.customizeToolbar(8);
      host.closeWindow(other);
      for (let i = 0; i < 50; ++i) await nextTurn();
      add(await open({ title: 'Third' }), 9, items);
      return [...afterClick, state(8), native.isToolbarVisible(9)];
    },
    definition,
  );
  assert.deepStrictEqual(result, [null, false, null, true]);
});

test('windows with toolbars leave nothing behind', async (t) => {
  const { growth, left } = await inWindows(
    t,
    async ({ add, host, native, nextTurn, windows }, items) => {
      native.setToolbarCallbackFunctions(() => true, () => {}, () => {}); // prettier-ignore
      const cycles = async (count) => {
        for (let i = 0; i < count; ++i) {
          const handle = host.createWindow({ title: 'Cycle', width: 600, height: 300 });
          add(handle, 7, items);
          native.showAddTabButton(7);
          await nextTurn();
          host.closeWindow(handle);
          await nextTurn();
        }
        return [process.memoryUsage().rss / 2 ** 20, windows.numberOfWindows()];
      };
      const before = await cycles(50);
      const after = await cycles(100);
      return { growth: after[0] - before[0], left: after[1] - before[1] };
    },
    definition,
  );
  assert.strictEqual(left, 0);
  // The pixels of each window alone are 0.7 MB. The address sanitizer holds back what has been freed.
  if (!process.env.TESSARO_SANITIZER_RUNTIME) assert.ok(growth < 15, `${growth} MB in 100 windows`);
});
