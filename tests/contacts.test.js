'use strict';

// Recipients as text, groups of the address book, and the picker with real clicks.

const assert = require('assert');
const { execFile } = require('child_process');
const fs = require('fs');
const { test } = require('node:test');
const { promisify } = require('util');

const { eventually, temporaryDirectory } = require('./support/child');
const { scenarios } = require('./support/scenario');
const { press } = require('./support/windows');

const run = promisify(execFile);
const plain = scenarios();
const inSession = scenarios({ display: true });

test('headers are split at every comma, and what stands in brackets is the address', async (t) => {
  const cases = [
    ['', []],
    [',,', []],
    ['a@x', [['', 'a@x']]],
    [
      'John <a@x>, b@x',
      [
        ['John', 'a@x'],
        ['', ' b@x'],
      ],
    ],
    [
      '"Doe, John" <a@x>',
      [
        ['', '"Doe'],
        ['John"', 'a@x'],
      ],
    ],
    ['>a<', [['', '>a<']]],
    ['<a@x', [['', '<a@x']]],
    ['<>', [['', '']]],
    [' \t John\u00a0\u3000< a@x >rest', [['John', ' a@x ']]],
    ['\nJohn\n<a@x>', [['\nJohn\n', 'a@x']]],
    ['a<b<c>d>', [['a', 'b<c']]],
    [
      'Zoë 😀 <ä@x>,日本 <b@x>',
      [
        ['Zoë 😀', 'ä@x'],
        ['日本', 'b@x'],
      ],
    ],
    [' ', [['', ' ']]],
  ];
  await plain.table(t, cases, ({ contacts }, text) => contacts.parse(text));
});

test('recipients are written as items of a header', async (t) => {
  const cases = [
    [[], '', []],
    [[['Ann', 'a@x']], '"Ann" <a@x>', ['"Ann" <a@x>']],
    [
      [
        ['', 'a@x'],
        [null, 'b@x'],
      ],
      '<a@x>, <b@x>',
      ['<a@x>', '<b@x>'],
    ],
    [[['A <B>', 'a@x']], '"A <B>" ', ['"A <B>" ']],
    [[['"Q\\', 'a<x']], '""Q\\" <a<x>', ['""Q\\" <a<x>']],
    [
      [
        ['Zoë', 'a@x'],
        ['日本 😀', 'ü@x'],
        ['B', ''],
      ],
      '"Zoë" <a@x>, "日本 😀" <ü@x>, "B" <>',
      ['"Zoë" <a@x>', '"日本 😀" <ü@x>', '"B" <>'],
    ],
  ];
  const rows = cases.map(([pairs, ...texts]) => [pairs, texts]);
  await plain.table(t, rows, ({ contacts }, pairs) => contacts.format(pairs));
});

test('people go by their names in their order, and companies by their organization', async (t) => {
  const full = {
    title: 'Dr.',
    first: 'Ann',
    middle: 'M.',
    last: 'Lee',
    suffix: 'Jr.',
    organization: 'ACME',
    emails: ['a@x', 'b@x'],
  };
  const cases = [
    ['a@x', full, [['Dr. Ann M. Lee Jr.', 'a@x']]],
    ['b@x', { ...full, flags: 16 }, [['Dr. Lee Ann M. Jr.', 'b@x']]],
    ['a@x', { ...full, flags: 32 }, [['Dr. Ann M. Lee Jr.', 'a@x']]],
    ['a@x', { ...full, flags: 1 }, [['ACME', 'a@x']]],
    ['a@x', { ...full, flags: 17 }, [['ACME', 'a@x']]],
    ['a@x', { emails: ['a@x'], flags: 1 }, [['', 'a@x']]],
    ['a@x', { emails: ['a@x'] }, [['', 'a@x']]],
    ['A@x', full, []],
    ['a@x', { first: 'Nobody' }, []],
  ];
  await plain.table(t, cases, ({ contacts }, address, person) => contacts.recipient(address, person));
});

const book = {
  people: [
    { first: 'Ann', last: 'Lee', emails: ['ann@x', 'ann@y', 'ann@z'] },
    { first: 'Bob', emails: ['bob@x'] },
    { first: 'No', last: 'Address' },
    { emails: ['nameless@x'] },
    { organization: 'ACME', flags: 1, emails: ['info@acme'] },
  ],
  groups: [
    { name: 'Friends', members: [1, 0, 2], subgroups: [1, 2] },
    { name: 'Family', members: [0, 3], subgroups: [0] },
    { name: 'Work', members: [4] },
    { name: 'Empty' },
  ],
};

test('a group is its members, then those of its subgroups, even if it is in itself', async (t) => {
  const names = ['Friends', 'Work', 'Empty', 'friends', '', 'Nobody'];
  const child = await plain(
    t,
    ({ contacts, native }, all, groups) => {
      contacts.make(all);
      return groups.map((name) => JSON.parse(native.recipientsForGroupName(name)));
    },
    book,
    names,
  );
  const ann = { name: 'Ann Lee', email: 'ann@x' };
  const acme = { name: 'ACME', email: 'info@acme' };
  assert.deepStrictEqual(child, [
    [{ name: 'Bob', email: 'bob@x' }, ann, ann, { email: 'nameless@x' }, acme],
    [acme],
    [],
    null,
    null,
    null,
  ]);
});

test('who has no contacts has no groups, and no folder is made for them', async (t) => {
  const [group, made] = await plain(t, ({ fs, home, native }) => [
    native.recipientsForGroupName('Friends'),
    fs.existsSync(`${home}/GNUstep/Library/Addresses`),
  ]);
  assert.deepStrictEqual([group, made], [null, false]);
});

test('members that are gone are passed over, and a damaged record is told by the log', async (t) => {
  const home = temporaryDirectory(t);
  await plain.with({ home })(t, ({ contacts }, all) => contacts.make(all), book);
  const folder = `${home}/GNUstep/Library/Addresses`;

  fs.rmSync(`${folder}/2.mfaddr`);
  const friends = ({ native }) => JSON.parse(native.recipientsForGroupName('Friends'));
  assert.deepStrictEqual(
    (await plain.with({ home })(t, friends)).map(({ email }) => email),
    ['ann@x', 'ann@x', 'nameless@x', 'info@acme'],
  );

  fs.writeFileSync(`${folder}/1.mfaddr`, '{ no property list');
  const [group, log, shown] = await inSession.with({ home })(t, async ({ captureLog, contacts, host, log, native }) => {
    captureLog();
    const group = native.recipientsForGroupName('Friends');
    const lines = log().join('\n');
    native.pickEmailAddresses(host.createWindow(), '{}');
    return [group, lines, contacts.picker().isVisible];
  });
  assert.strictEqual(group, null);
  assert.match(log, /Parse failed/);
  assert.ok(shown);
});

test('groups may be nested deeply', async (t) => {
  const depth = 300;
  const deep = {
    people: [{ emails: ['deep@x'] }],
    groups: Array.from({ length: depth }, (_, index) => ({
      name: `Level ${index}`,
      subgroups: index + 1 < depth ? [index + 1] : [],
      members: index + 1 < depth ? [] : [0],
    })),
  };
  const recipients = await plain(
    t,
    ({ contacts, native }, all) => contacts.make(all) && JSON.parse(native.recipientsForGroupName('Level 0')),
    deep,
  );
  assert.deepStrictEqual(recipients, [{ email: 'deep@x' }]);
});

// ---- Picker

const translations = {
  'window-title': 'Pick Recipients',
  'accept-button-label': 'Add Recipients',
  'cancel-button-label': 'Cancel',
  'edit-in-contacts-button-label': 'Edit in Contacts…',
};

const pickers = inSession.with({
  fixture({ host, report }) {
    host.setKeepAlive(true);
    const isPicked = ({ name }) => name === 'TsContactEmailAddressesPicked';
    host.on('notification', (posted) => isPicked(posted) && report(JSON.parse(posted.userInfo.addresses)));
    return { window: host.createWindow() };
  },
});

async function startPicker(t) {
  const picker = await pickers.resident(t);
  await picker.tell(({ contacts }, all) => contacts.make(all) && undefined, book);
  const env = { ...process.env, ...inSession.session.env };
  const xdotool = (...args) => run('xdotool', args.flat(2).map(String), { env });
  const click = (at, before = [], after = []) =>
    xdotool('mousemove', ...at.map(Math.round), 'sleep', 0.15, before, press, after);
  const state = () => picker.tell(({ contacts }) => contacts.picker());
  const button = async (title) => (await state()).views.find((view) => view.title === title).centre;
  const rows = async (table) => (await state()).tables[table];
  /** GNUstep misses clicks on new windows. */
  const clickUntil = (isDone, act, description) =>
    eventually(async () => {
      if (await isDone()) return true;
      await act();
      return eventually(isDone, description, 1500).catch(() => false);
    }, description);
  return Object.assign(picker, {
    ...{ xdotool, click, clickUntil, button, state },
    async open() {
      await picker.tell(
        ({ native, window }, texts) => native.pickEmailAddresses(window, texts),
        JSON.stringify(translations),
      );
      await picker.until(({ contacts }) => contacts.picker().isVisible && contacts.picker().isKey);
    },
    group: async (name) => (await rows(0)).find(({ texts }) => texts[0] === name).centre,
    select(address, ...keys) {
      const row = async () => (await rows(1)).find(({ texts }) => texts[1] === address);
      const isSelected = async () => (await row()).isSelected;
      return clickUntil(isSelected, async () => click((await row()).centre, ...keys), `${address} is selected`);
    },
    isHidden: () => picker.until(({ contacts }) => !contacts.picker().isVisible),
  });
}

test('the picker has its layout, and keeps it when it is resized', async (t) => {
  const picker = await startPicker(t);
  await picker.open();
  const { title, size, views } = await picker.state();
  assert.deepStrictEqual([title, size], ['Pick Recipients', [500, 500]]);
  const [people, accept, cancel, edit] = views;
  assert.deepStrictEqual([people.class, people.frame], ['ABPeoplePickerView', [20, 70, 460, 410]]);
  assert.deepStrictEqual(
    [accept, cancel, edit].map((view) => [view.title, view.key]),
    [
      ['Add Recipients', '\r'],
      ['Cancel', '\u0017'],
      ['Edit in Contacts…', ''],
    ],
  );
  assert.deepStrictEqual([accept.frame[0] + accept.frame[2], accept.frame[1]], [480, 20]);
  assert.deepStrictEqual([cancel.frame[0] + cancel.frame[2], cancel.frame[1]], [accept.frame[0], 20]);
  assert.deepStrictEqual(edit.frame.slice(0, 2), [20, 20]);

  await picker.tell(({ contacts }) => contacts.resizePicker());
  const [grown, moved, , still] = (await picker.state()).views;
  assert.deepStrictEqual(grown.frame, [20, 70, 560, 610]);
  assert.deepStrictEqual(moved.frame.slice(0, 2), [accept.frame[0] + 100, 20]);
  assert.deepStrictEqual(still.frame, edit.frame);
});

test('addresses, groups and nothing are picked by hand', async (t) => {
  const picker = await startPicker(t);
  await picker.open();
  const picked = (count) => () => picker.reports.length >= count;
  await picker.clickUntil(
    picked(1),
    async () => picker.click(await picker.button('Add Recipients')),
    'nothing is picked',
  );
  assert.deepStrictEqual(picker.reports, [[]]);
  await picker.isHidden();

  await picker.open();
  await picker.select('bob@x');
  await picker.select('ann@y', ['keydown', 'Shift_L'], ['keyup', 'Shift_L']);
  await picker.xdotool('key', 'Return');
  const addresses = await picker.report(1);
  assert.ok(addresses.includes('"Bob" <bob@x>') && addresses.includes('"Ann Lee" <ann@y>'), addresses.join());

  await picker.open();
  // Two clicks are one double click only if they are quick enough, which on a busy machine they may not be.
  const twice = ['mousedown', 1, 'sleep', 0.05, 'mouseup', 1, 'sleep', 0.05];
  await picker.clickUntil(
    picked(3),
    async () => picker.xdotool('mousemove', (await picker.group('Work')).map(Math.round), 'sleep', 0.15, twice, twice),
    'the group is picked',
  );
  assert.deepStrictEqual(picker.reports[2], ['"ACME" <info@acme>']);
  await picker.isHidden();
});

test('with groups, single addresses do not count', async (t) => {
  const picker = await startPicker(t);
  await picker.open();
  const isShown = async () => {
    const [groups, addresses] = (await picker.state()).tables;
    return groups.find(({ texts }) => texts[0] === 'Family').isSelected && addresses.length === 4;
  };
  await picker.clickUntil(
    isShown,
    async () => picker.click(await picker.group('Family')),
    'the group’s addresses are shown',
  );
  await picker.select('ann@z');
  await picker.tell(({ dialogs }) => dialogs.pressButton('Pick Recipients', 'Add Recipients'));
  const recipients = await picker.report(0);
  assert.deepStrictEqual(recipients, [
    '"Ann Lee" <ann@x>',
    '<nameless@x>',
    '"Bob" <bob@x>',
    '"Ann Lee" <ann@x>',
    '"ACME" <info@acme>',
  ]);
});

test('Cancel hides the picker and tells nothing, Escape does not even that', async (t) => {
  const picker = await startPicker(t);
  await picker.open();
  await picker.xdotool('key', 'Escape');
  await picker.select('bob@x');
  assert.ok((await picker.state()).isVisible);
  await picker.tell(({ dialogs }) => dialogs.pressButton('Pick Recipients', 'Cancel'));
  await picker.isHidden();
  assert.deepStrictEqual(picker.reports, []);
});

test('bad arguments and missing translations are logged', async (t) => {
  const { log, title } = await inSession(t, async ({ captureLog, contacts, host, log, native }) => {
    const window = host.createWindow();
    captureLog();
    native.pickEmailAddresses({}, '{}');
    native.pickEmailAddresses(Buffer.alloc(0), '{}');
    const partly = ['{"window-title":null,"accept-button-label":"Add"}', '{"window-title":"Too late"}'];
    for (const texts of ['[]', '{ "window-title', ...partly]) native.pickEmailAddresses(window, texts);
    return { log: log(), title: contacts.picker().title };
  });
  assert.strictEqual(log[0], 'Need a view with a window to add a toolbar: (null)');
  assert.strictEqual(log[1], log[0]);
  assert.strictEqual(log[2], "Couldn't parse translations JSON [] because of it is no object");
  assert.match(log[3], /^Couldn't parse translations JSON { "window-title because of /);
  assert.match(log[4], /^No translation for window-title in /);
  assert.deepStrictEqual(
    log.slice(4).map((text) => text.match(/for (\S+)/)?.[1]),
    ['window-title', 'cancel-button-label', 'edit-in-contacts-button-label'],
  );
  assert.strictEqual(title, 'window-title');
});
