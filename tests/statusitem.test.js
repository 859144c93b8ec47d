'use strict';

// The account menu as it is built, and the status item as it follows accounts, defaults and script.

const assert = require('assert');
const { test } = require('node:test');

const { translations } = require('./support/accountMenu');
const { evaluate } = require('./support/child');
const { useSession } = require('./support/session');

const session = useSession();

const prelude = `
  const host = require('./host');
  const { translations, account, message } = require('./tests/support/accountMenu');
  host.start();
  const { module: m, statusItem, captureLog, flushLog, capturedLog } = probe();
  const describe = (menu) => m.setStatusItemMenuNeedsUpdateCallbackFunction(() => JSON.stringify(menu));
  const answer = (text) => m.setStatusItemMenuNeedsUpdateCallbackFunction(() => text);
  const full = () => JSON.parse(statusItem.fill('status-item', true));
  const compact = () => JSON.parse(statusItem.fill('dock', false));
  const state = () => JSON.parse(statusItem.state());
  const accounts = (count) => host.postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': count });
  const print = (value) => console.log(JSON.stringify(value));
`;

const inSession = (t, source) => evaluate(t, prelude + source, { env: session.env });

const titles = (items) => items.map((item) => (item.separator ? '-' : item.title));
const commands = ['Get New Mail', 'Do Not Disturb', 'New Message'];

test('the full form has the commands, then each account with its messages', async (t) => {
  const items = await inSession(
    t,
    `describe({ translations, accounts: [account(7, { count: 2, messages: 2, color: 'C0392B' }), account('b', { signIn: true, messages: 1, count: 4 })] });
     print(full());`,
  );
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
    rows.map(({ class: name, action, represented, toolTip, fontSize }) => [
      name,
      action,
      represented,
      toolTip,
      fontSize,
    ]),
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
  const { items, dock, asked } = await inSession(
    t,
    `const asked = [];
     const menu = { translations, accounts: [account(1, { count: 3, messages: 3 }), account(2), account(3, { signIn: true, count: 5 })] };
     m.setStatusItemMenuNeedsUpdateCallbackFunction((...args) => { asked.push(args); return JSON.stringify(menu); });
     print({ items: compact(), dock: JSON.parse(statusItem.dockMenu()), asked });`,
  );
  assert.deepStrictEqual(titles(items), [
    ...commands,
    '-',
    'Open Account 1 (3)',
    'Open Account 2',
    'Sign in to Account 3',
  ]);
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
  const { whole, short } = await inSession(
    t,
    `describe({ translations, accounts: [account(1, { count: 3, messages: 3 }), account(2, { signIn: true })] });
     host.setDefault('DoNotDisturb', true);
     print({ whole: full(), short: compact() });`,
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

test('a message’s title is cut after 60 characters', async (t) => {
  const lengths = [59, 60, 61, 500];
  const shown = await inSession(
    t,
    `print(${JSON.stringify(lengths)}.map((length) => {
       const line = { 'from-line': 'F', subject: 'x'.repeat(length - 4) };
       describe({ accounts: [{ 'unread-messages': [line] }] });
       return full().at(-1).title;
     }));`,
  );
  const whole = (length) => `F - ${'x'.repeat(length - 4)}`;
  assert.deepStrictEqual(shown, [whole(59), whole(60), `${whole(60)}...`, `${whole(60)}...`]);
});

test('a message’s title is not cut within a character', async (t) => {
  const before = 'x'.repeat(55);
  const cases = { '😀😀': `${before}...`, 'e\u0301 and more': `${before}...`, [`${'\u0301'.repeat(70)}`]: null };
  const shown = await inSession(
    t,
    `print(${JSON.stringify(Object.keys(cases))}.map((end) => {
       describe({ accounts: [{ 'unread-messages': [{ 'from-line': 'F', subject: '${before}' + end }] }] });
       return full().at(-1).title;
     }));`,
  );
  Object.values(cases).forEach((title, index) => {
    if (title !== null) return assert.strictEqual(shown[index], `F - ${title}`);
    return assert.ok(shown[index].length <= 63, 'a character without end is cut');
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
  const menus = Object.values(oddMenus).map(([menu]) => menu);
  const results = await inSession(
    t,
    `print(${JSON.stringify(menus)}.map((menu) => { describe(menu); return [full().slice(3), compact().slice(4)]; }));`,
  );
  for (const [index, [what, [, ...expected]]] of Object.entries(oddMenus).entries()) {
    await t.test(what, () => assert.deepStrictEqual(results[index].map(titles), expected));
  }
});

test('no callback and answers that are no menus give the commands alone, without titles', async (t) => {
  const { menus, log } = await inSession(
    t,
    `captureLog();
     const menus = [full(), compact()];
     for (const text of ['not JSON', '', '[1]', '"x"', null, undefined, 5]) { answer(text); menus.push(full()); }
     flushLog();
     print({ menus, log: capturedLog().filter(({ flag }) => flag === 1).map(({ text }) => text) });`,
  );
  assert.deepStrictEqual(
    menus.map(titles),
    menus.map((_, index) => (index === 1 ? ['', '', '', '-'] : ['', '', ''])),
  );
  assert.strictEqual(log.length, 7);
  assert.match(log[0], /^Couldn't update status item menu with not JSON because of ./);
  assert.match(log[4], /^Couldn't update status item menu with \(null\) because of ./);
});

test('a callback that throws: the exception reaches script, the menu has the commands', async (t) => {
  const result = await inSession(
    t,
    `m.setStatusItemMenuNeedsUpdateCallbackFunction(() => { throw new Error('mine'); });
     let caught;
     try { full(); } catch ({ message: text }) { caught = text; }
     describe({ translations });
     print([caught, full().length]);`,
  );
  assert.deepStrictEqual(result, ['mine', 3]);
});

test('titles of commands are looked up in the main bundle, and shown as they are where it has none', async (t) => {
  const german = await evaluate(
    t,
    `${prelude} describe({ translations: { ...translations, 'compose-new-message': 'Unknown to the bundle' } }); print(full());`,
    { env: { ...session.env, LANGUAGE: 'de', LANG: 'de_DE.UTF-8' } },
  );
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
    `print(${JSON.stringify(table)}.map((row) => JSON.parse(statusItem.badge('00FF00', ...row))));`,
  );
  badges.forEach(([{ width, height, colors }, isOfText], i) => {
    assert.deepStrictEqual([width, height, isOfText], [16, 16, true], `${table[i]}`);
    assert.ok(colors['00FF00'] > 120 && colors.clear > 20, JSON.stringify(colors));
    assert.strictEqual(Object.keys(colors).length === 2, table[i][2] === null, `${table[i]}`);
  });
});

test('colours are six hexadecimal digits, and black where they are none', async (t) => {
  const cases = {
    '4F8CF8': '4F8CF8',
    ff0000: 'FF0000',
    '': '000000',
    'no colour': '000000',
    12: '000012',
    '#00FF00': '000000',
  };
  const result = await inSession(
    t,
    `print(${JSON.stringify(Object.keys(cases))}.map((text) => JSON.parse(statusItem.hexColor(text))[0]));`,
  );
  assert.deepStrictEqual(Object.fromEntries(Object.keys(cases).map((text, index) => [text, result[index]])), cases);
});

test('formats from outside are filled in, or left alone when they ask for other arguments', async (t) => {
  const cases = [
    [['%@', 'x'], 'x'],
    [['100 %% %@', 'x'], '100 % x'],
    [['none', 'x'], 'none'],
    [['%@ (%ld)', 'x', 5], 'x (5)'],
    [['%2$d × %1$@', 'x', -5], '-5 × x'],
    [['%@ %3u', 'x', 5], 'x   5'],
    [['%ld', 'x', 5], '%ld'],
    [['%@ %@', 'x'], '%@ %@'],
    [['%@ %s', 'x', 5], '%@ %s'],
    [['%@ %*d', 'x', 5], '%@ %*d'],
    [['%3$@', 'x', 5], '%3$@'],
    [['%', 'x'], '%'],
    [['%n', 'x'], '%n'],
  ];
  const result = await inSession(
    t,
    `print(${JSON.stringify(cases.map(([args]) => args))}.map((args) => JSON.parse(statusItem.format(...args))[0]));`,
  );
  assert.deepStrictEqual(
    result,
    cases.map(([, expected]) => expected),
  );
});

test('the item is there while there are accounts and the defaults allow it', async (t) => {
  const shown = await inSession(
    t,
    `const shown = [];
     const note = () => shown.push(state().isShown);
     note();
     m.setStatusItemTitle('3', false); note();
     accounts(0); note();
     accounts(1); note();
     accounts(2); note();
     // The controller compares with what the defaults said when they changed last.
     host.setDefault('Other', true);
     host.setDefault('DisplayStatusItem', false); note();
     accounts(3); note();
     host.setDefault('DisplayStatusItem', true); note();
     host.setDefault('DisplayStatusItem', null); note();
     accounts(-1); note();
     accounts(1); accounts('x'); note();
     host.postNotification('TsNumberOfAccountsChanged', null, null); note();
     print(shown);`,
  );
  assert.deepStrictEqual(shown, [false, false, false, true, true, false, false, true, true, false, false, false]);
});

test('icon, title and width follow what script says', async (t) => {
  const { states, widths } = await inSession(
    t,
    `accounts(1);
     const states = {};
     const widths = { 3: statusItem.titleWidth('3'), none: 0 };
     const note = (name) => { states[name] = state(); };
     note('at first');
     m.setStatusItemTitle('3', false); note('unread');
     m.setStatusItemTitle('', false); note('read');
     m.setStatusItemTitle(null, true); note('error');
     m.setStatusItemTitle('3', true); note('error and unread');
     host.setDefault('DoNotDisturb', true); note('do not disturb');
     host.setDefault('DoNotDisturb', false); note('disturb');
     m.setStatusItemTitle(null, null); note('nothing');
     print({ states, widths });`,
  );
  const width = widths['3'];
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
  const received = await inSession(
    t,
    `const received = [];
     host.on('notification', ({ name, userInfo }) => received.push([name, userInfo]));
     for (const action of ['checkForNewMessages:', 'toggleDoNotDisturb:', 'composeNewMessage:', 'showTabViewItem:', 'loginOAuth:', 'openMessage:']) {
       statusItem.perform(action, 'id 1');
     }
     for (const action of ['showTabViewItem:', 'openMessage:']) statusItem.perform(action, null);
     for (const action of ['ts_checkForNewMessages:', 'ts_toggleDoNotDisturb:', 'ts_composeNewMessage:']) statusItem.performOnDelegate(action);
     print(received);`,
  );
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
  const result = await inSession(
    t,
    `describe({ translations, accounts: Array.from({ length: 200 }, (_, id) => account(id, { count: 500, messages: 500 })) });
     const items = full();
     print([items.length, items.at(-1).represented]);`,
  );
  assert.deepStrictEqual(result, [3 + 200 * (2 + 500), 'message-199-499']);
});

test('without a window server there is no item, and the log says so', async (t) => {
  const { log, shown } = await evaluate(
    t,
    `const { statusItem, postNotification, captureLog, flushLog, capturedLog } = probe();
     captureLog();
     postNotification('TsNumberOfAccountsChanged', null, '{"num-accounts":1}');
     flushLog();
     console.log(JSON.stringify({ log: capturedLog().map(({ text }) => text), shown: statusItem.hasItem() }));`,
  );
  assert.deepStrictEqual([[...new Set(log)], shown], [['The status item needs a window server'], false]);
});
