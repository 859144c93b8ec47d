'use strict';

// The account menu as it is built, and the status item as it follows accounts, defaults and script.

const assert = require('assert');
const { test } = require('node:test');

const { translations, account } = require('./support/accountMenu');
const { scenarios } = require('./support/scenario');

const inSession = scenarios({
  display: true,
  fixture({ host, native, statusItem }) {
    const answer = (text) => native.setStatusItemMenuNeedsUpdateCallbackFunction(() => text);
    return {
      answer,
      describe: (menu) => answer(JSON.stringify(menu)),
      full: () => statusItem.fill('status-item', true),
      compact: () => statusItem.fill('dock', false),
      accounts: (count) => host.postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': count }),
    };
  },
});

/** The items of a menu that script describes, in both forms. */
const both = ({ describe, full, compact }, menu) => {
  describe(menu);
  return [full(), compact()];
};

const titles = (items) => items.map((item) => (item.separator ? '-' : item.title));
const commands = ['Get New Mail', 'Do Not Disturb', 'New Message'];

test('the full form has the commands, then each account with its messages', async (t) => {
  const mails = [
    account(7, { count: 2, messages: 2, color: 'C0392B' }),
    account('b', { signIn: true, messages: 1, count: 4 }),
  ];
  const [items] = await inSession(t, both, { translations, accounts: mails });
  assert.deepStrictEqual(titles(items), [
    ...commands,
    '-',
    'Account 7',
    'Sender 7-0 - Subject 7-0',
    'Sender 7-1 - Subject 7-1',
    '-',
    'Account b',
    'Sign In…',
  ]);
  const rows = items.filter((item) => !item.separator);
  assert.ok(rows.every(({ key, isControllers, isEnabled, isOn }) => key === '' && isControllers && isEnabled && !isOn));
  assert.deepStrictEqual(
    rows.map((row) => [row.class, row.action, row.represented, row.toolTip, row.fontSize]),
    [
      ['NSMenuItem', 'checkForNewMessages:', null, null, 0],
      ['NSMenuItem', 'toggleDoNotDisturb:', null, null, 0],
      ['NSMenuItem', 'composeNewMessage:', null, null, 0],
      ['TsAccountStatusMenuItem', 'showTabViewItem:', 7, null, 0],
      ['TsStatusItemMessageMenuItem', 'openMessage:', 'message-7-0', 'Snippet 7-0', 10],
      ['TsStatusItemMessageMenuItem', 'openMessage:', 'message-7-1', 'Snippet 7-1', 10],
      ['TsAccountStatusMenuItem', 'showTabViewItem:', 'b', null, 0],
      ['TsStatusItemSmallMenuItem', 'loginOAuth:', 'b', null, 10],
    ],
  );
  const badges = rows.filter(({ color }) => color).map(({ color, count, isInError }) => [color, count, isInError]);
  assert.deepStrictEqual(badges, [
    ['C0392B', 2, false],
    ['2980B9', 4, true],
  ]);
});

test('the compact form has one row an account, and the Dock shows it', async (t) => {
  const accounts = [account(1, { count: 3, messages: 3 }), account(2), account(3, { signIn: true, count: 5 })];
  const { items, dock, asked } = await inSession(
    t,
    ({ compact, native, statusItem }, text) => {
      const asked = [];
      native.setStatusItemMenuNeedsUpdateCallbackFunction((...args) => asked.push(args) && text);
      return { items: compact(), dock: statusItem.dockMenu(), asked };
    },
    JSON.stringify({ translations, accounts }),
  );
  const rows = ['Open Account 1 (3)', 'Open Account 2', 'Sign in to Account 3'];
  assert.deepStrictEqual(titles(items), [...commands, '-', ...rows]);
  assert.deepStrictEqual(
    items.slice(4).map(({ action, represented, count, isInError }) => [action, represented, count, isInError]),
    [
      ['showTabViewItem:', 1, 3, false],
      ['showTabViewItem:', 2, 0, false],
      ['loginOAuth:', 3, 0, true],
    ],
  );
  assert.deepStrictEqual(dock, items);
  assert.deepStrictEqual(asked, [
    ['dock', false],
    ['dock', false],
  ]);
});

test('do-not-disturb hides messages and counts, and disables the getting of mail', async (t) => {
  const menu = { translations, accounts: [account(1, { count: 3, messages: 3 }), account(2, { signIn: true })] };
  const [whole, short] = await inSession(
    t,
    ({ compact, describe, full, host }, contents) => {
      describe(contents);
      host.setDefault('DoNotDisturb', true);
      return [full(), compact()];
    },
    menu,
  );
  assert.deepStrictEqual(titles(whole), [...commands, '-', 'Account 1', '-', 'Account 2', 'Sign In…']);
  assert.deepStrictEqual(titles(short).slice(4), ['Open Account 1', 'Sign in to Account 2']);
  assert.strictEqual(short[4].count, 3);
  for (const items of [whole, short]) {
    assert.deepStrictEqual(
      items.slice(0, 3).map(({ isEnabled, isOn }) => [isEnabled, isOn]),
      [
        [false, false],
        [true, true],
        [true, false],
      ],
    );
  }
});

test('a message’s title is cut after 60 characters, and not within one', (t) => {
  const whole = (length) => 'x'.repeat(length - 4);
  const fifty = 'x'.repeat(55);
  const rows = [
    ...[59, 60].map((length) => [whole(length), `F - ${whole(length)}`]),
    ...[61, 500].map((length) => [whole(length), `F - ${whole(60)}...`]),
    ...['😀😀', 'e\u0301 and more'].map((end) => [fifty + end, `F - ${fifty}...`]),
    // A character without end is cut.
    [`${fifty}${'\u0301'.repeat(70)}`, `F - ${'x'.repeat(54)}...`],
  ];
  return inSession.table(t, rows, ({ describe, full }, subject) => {
    describe({ accounts: [{ 'unread-messages': [{ 'from-line': 'F', subject }] }] });
    return full().at(-1).title;
  });
});

// What script says instead of a proper menu, and the rows below the commands that come of it in both forms.
const oddMenus = {
  'no accounts': [{ translations, accounts: [] }, [], []],
  'accounts that are no list': [{ accounts: { 0: 'x' } }, [], []],
  'accounts that are none': [{ accounts: [null, 1, 'x', [], true] }, [], []],
  'an account without anything': [{ accounts: [{}] }, ['-', ''], ['']],
  'an account of nulls': [
    { accounts: [{ id: null, label: null, 'unread-counter-value': null, 'hex-color': null, 'unread-messages': null }] },
    ['-', ''],
    [''],
  ],
  'values of other types': [
    {
      accounts: [
        {
          id: {},
          label: 5,
          'unread-counter-value': 'x',
          'hex-color': 3,
          'requires-oauth?': 'yes',
          'unread-messages': 'x',
        },
      ],
    },
    ['-', ''],
    [''],
  ],
  'messages without anything': [
    { accounts: [{ label: 'A', 'unread-messages': [{}, null, 'x', { subject: 's' }] }] },
    ['-', 'A', '(null) - (null)', '(null) - s'],
    [''],
  ],
  'formats that ask for too much': [
    { accounts: [{ label: 'A' }], translations: { 'open-format': '%@ %s %n' } },
    ['-', 'A'],
    ['%@ %s %n'],
  ],
};

test('odd menus of script’s making', async (t) => {
  for (const [what, [menu, ...expected]] of Object.entries(oddMenus)) {
    const [full, compact] = await inSession(t, both, menu);
    assert.deepStrictEqual([titles(full.slice(3)), titles(compact.slice(4))], expected, what);
  }
});

test('no callback and answers that are no menus give the commands alone, without titles', async (t) => {
  const { menus, errors } = await inSession(
    t,
    ({ answer, captureLog, compact, full, log }, texts) => {
      captureLog();
      const menus = [full(), compact(), ...texts.map((text) => answer(text) ?? full())];
      return { menus, errors: log(1) };
    },
    ['not JSON', '', '[1]', '"x"', null, undefined, 5],
  );
  assert.deepStrictEqual(
    menus.map(titles),
    menus.map((_, index) => (index === 1 ? ['', '', '', '-'] : ['', '', ''])),
  );
  assert.strictEqual(errors.length, 7);
  assert.match(errors[0], /^Couldn't update status item menu with not JSON because of ./);
  assert.match(errors[4], /^Couldn't update status item menu with \(null\) because of ./);
});

test('a callback that throws: the exception reaches script, the menu has the commands', async (t) => {
  const result = await inSession(t, ({ full, native, thrownBy }) => {
    native.setStatusItemMenuNeedsUpdateCallbackFunction(() => {
      throw new Error('mine');
    });
    const caught = thrownBy(full);
    native.setStatusItemMenuNeedsUpdateCallbackFunction(() => '{}');
    return [caught, full().length];
  });
  assert.deepStrictEqual(result, ['mine', 3]);
});

test('titles of commands are looked up in the main bundle, and shown as they are where it has none', async (t) => {
  const ownWords = { ...translations, 'compose-new-message': 'Unknown to the bundle' };
  const inGerman = inSession.with({ env: { LANGUAGE: 'de', LANG: 'de_DE.UTF-8' } });
  const [german] = await inGerman(t, both, { translations: ownWords });
  assert.deepStrictEqual(titles(german), ['Neue E-Mails abrufen', 'Nicht stören', 'Unknown to the bundle']);
});

test('a badge shows counts from 1 to 99, an exclamation mark for an error, and else the colour alone', async (t) => {
  const table = [
    [0, false, null],
    [1, false, '1'],
    [99, false, '99'],
    [100, false, null],
    [-1, false, null],
    [0, true, '!'],
    [100, true, '!'],
  ];
  const badges = await inSession(
    t,
    ({ statusItem }, rows) => rows.map((row) => statusItem.badge('00FF00', ...row)),
    table,
  );
  badges.forEach(([{ width, height, colors }, isOfText], i) => {
    assert.deepStrictEqual([width, height, isOfText], [16, 16, true], `${table[i]}`);
    assert.ok(colors['00FF00'] > 120 && colors.clear > 20, JSON.stringify(colors));
    assert.strictEqual(Object.keys(colors).length === 2, table[i][2] === null, `${table[i]}`);
  });
});

test('colours are six hexadecimal digits, and black where they are none', (t) => {
  const rows = ['4F8CF8 4F8CF8', 'ff0000 FF0000', ' 000000', 'none 000000', '12 000012', '#00FF00 000000'];
  return inSession.table(
    t,
    rows.map((row) => row.split(' ')),
    ({ statusItem }, text) => statusItem.hexColor(text),
  );
});

test('formats from outside are filled in, or left alone when they ask for other arguments', (t) => {
  const cases = [
    ['%@', 'x', 'x'],
    ['100 %% %@', 'x', '100 % x'],
    ['none', 'x', 'none'],
    ['%@ (%ld)', 'x', 5, 'x (5)'],
    ['%2$d × %1$@', 'x', -5, '-5 × x'],
    ['%@ %3u', 'x', 5, 'x   5'],
    ['%ld', 'x', 5, '%ld'],
    ['%@ %@', 'x', '%@ %@'],
    ['%@ %s', 'x', 5, '%@ %s'],
    ['%@ %*d', 'x', 5, '%@ %*d'],
    ['%3$@', 'x', 5, '%3$@'],
    ['%', 'x', '%'],
    ['%n', 'x', '%n'],
  ];
  return inSession.table(
    t,
    cases.map((row) => (row.length === 3 ? [row[0], row[1], undefined, row[2]] : row)),
    ({ statusItem }, ...args) => statusItem.format(...args),
  );
});

test('the item is there while there are accounts and the defaults allow it', async (t) => {
  const shown = await inSession(t, ({ accounts, host, native, statusItem }) => {
    const steps = [
      () => {},
      () => native.setStatusItemTitle('3', false),
      () => accounts(0),
      () => accounts(1),
      () => accounts(2),
      () => {
        // The controller compares with what the defaults said when they changed last.
        host.setDefault('Other', true);
        host.setDefault('DisplayStatusItem', false);
      },
      () => accounts(3),
      () => host.setDefault('DisplayStatusItem', true),
      () => host.setDefault('DisplayStatusItem', null),
      () => accounts(-1),
      () => accounts(1) ?? accounts('x'),
      () => host.postNotification('TsNumberOfAccountsChanged', null, null),
    ];
    return steps.map((step) => [step(), statusItem.hasItem()][1]);
  });
  assert.deepStrictEqual(shown, [false, false, false, true, true, false, false, true, true, false, false, false]);
});

test('icon, title and width follow what script says', async (t) => {
  const { states, width } = await inSession(t, ({ accounts, host, native, statusItem }) => {
    accounts(1);
    const steps = {
      'at first': () => {},
      unread: () => native.setStatusItemTitle('3', false),
      read: () => native.setStatusItemTitle('', false),
      error: () => native.setStatusItemTitle(null, true),
      'error and unread': () => native.setStatusItemTitle('3', true),
      'do not disturb': () => host.setDefault('DoNotDisturb', true),
      disturb: () => host.setDefault('DoNotDisturb', false),
      nothing: () => native.setStatusItemTitle(null, null),
    };
    const states = Object.entries(steps).map(([name, step]) => [name, [step(), statusItem.state()][1]]);
    return { states: Object.fromEntries(states), width: statusItem.titleWidth('3') };
  });
  const main = (colors) =>
    Object.entries(colors)
      .filter(([name]) => name !== 'clear')
      .sort((a, b) => b[1] - a[1])[0][0];
  const seen = Object.fromEntries(
    Object.entries(states).map(([name, { title, length, image }]) => [
      name,
      [title, length, main(image.colors), image.isTemplate],
    ]),
  );
  assert.deepStrictEqual(seen, {
    'at first': [null, 29, '000000', true],
    unread: ['3', width + 29, '4F8CF8', false],
    read: ['', seen.read[1], '000000', true],
    error: [null, 35, '000000', true],
    'error and unread': ['3', width + 35, '000000', true],
    'do not disturb': ['', 26, 'AAAAAA', false],
    disturb: ['3', width + 35, '000000', true],
    nothing: [null, 29, '000000', true],
  });
  assert.notDeepStrictEqual(states.error.image.colors, states['at first'].image.colors);
});

test('the menu’s actions reach the host as notifications', async (t) => {
  const received = await inSession(t, ({ host, statusItem }) => {
    const received = [];
    host.on('notification', ({ name, userInfo }) => received.push([name, userInfo]));
    const rows = [
      'checkForNewMessages:',
      'toggleDoNotDisturb:',
      'composeNewMessage:',
      'showTabViewItem:',
      'loginOAuth:',
    ];
    for (const action of [...rows, 'openMessage:']) statusItem.perform(action, 'id 1');
    for (const action of ['showTabViewItem:', 'openMessage:']) statusItem.perform(action, null);
    for (const action of rows.slice(0, 3)) statusItem.performOnDelegate(`ts_${action}`);
    return received;
  });
  assert.deepStrictEqual(received, [
    ['TsGetNewMessagesNotification', null],
    ['TsToggleDoNotDisturbNotification', null],
    ['TsComposeNewMessageNotification', null],
    ['TsActivateTabForAccountNotification', { 'account-db-id': 'id 1' }],
    ['TsOpenOAuthWindowForAccountNotification', { 'account-db-id': 'id 1' }],
    ['TsOpenMessageWithUniqueNotificationId', { 'unique-id': 'id 1' }],
    ['TsActivateTabForAccountNotification', {}],
    ['TsOpenMessageWithUniqueNotificationId', {}],
    ['TsGetNewMessagesNotification', null],
    ['TsToggleDoNotDisturbNotification', null],
    ['TsComposeNewMessageNotification', null],
  ]);
});

test('200 accounts with 500 messages each are a menu like any other', async (t) => {
  const accounts = Array.from({ length: 200 }, (_, id) => account(id, { count: 500, messages: 500 }));
  const result = await inSession(
    t,
    ({ describe, full }, menu) => {
      describe(menu);
      const items = full();
      return [items.length, items.at(-1).represented];
    },
    { translations, accounts },
  );
  assert.deepStrictEqual(result, [3 + 200 * (2 + 500), 'message-199-499']);
});

test('without a window server there is no item, and the log says so', async (t) => {
  const [lines, shown] = await scenarios()(t, ({ captureLog, log, postNotification, statusItem }) => {
    captureLog();
    postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': 1 });
    return [log(), statusItem.hasItem()];
  });
  assert.deepStrictEqual([[...new Set(lines)], shown], [['The status item needs a window server'], false]);
});
