'use strict';

const { scenarios, test } = require('./support');

const inSession = scenarios({
  display: true,
  uses: ['accounts'],
  fixture({ get, getAll, host, native, sendMessage: send, translations }) {
    const controller = send('TsStatusItemController', 'sharedInstance');
    const application = send('NSApplication', 'sharedApplication');
    const answer = (text) => native.setStatusItemMenuNeedsUpdateCallbackFunction(() => text);
    const fill = (type, hasMessages) => {
      const menu = send('NSMenu', 'new');
      send(controller, 'menuNeedsUpdate:type:includeMessage:', menu, type, hasMessages);
      return menu;
    };
    const titles = (menu) => {
      const isSeparator = get(menu, 'itemArray.isSeparatorItem');
      return get(menu, 'itemArray.title').map((title, i) => (isSeparator[i] ? '-' : title));
    };
    const byte = (component) => Math.round(component * 255).toString(16).padStart(2, '0'); // prettier-ignore
    const hex = (color) => getAll(color, 'redComponent', 'greenComponent', 'blueComponent').map(byte).join('');
    return {
      ...{ answer, controller, fill, hex, titles },
      commands: ['Get New Mail', 'Do Not Disturb', 'New Message'],
      describe: (menu) => answer(JSON.stringify(menu)),
      describeAccounts: (accounts, more) =>
        answer(JSON.stringify({ translations: { ...translations, ...more }, accounts })),
      full: () => fill('status-item', true),
      compact: () => fill('dock', false),
      dockMenu: () => send(get(application, 'delegate'), 'applicationDockMenu:', application),
      actionOf: (item) => send(item, 'action'),
      /** A badge's row: colour, count, whether the account is in error. */
      badge: (item) => [hex(get(item, 'color')), ...getAll(item, 'count', 'isInError')],
      isEnabled: (item) => send(controller, 'validateMenuItem:', item),
      performOnDelegate: (action) => send(get(application, 'delegate'), action),
      accounts: (count) => host.postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': count }),
      hasItem: () => get(controller, 'statusItem') !== null,
    };
  },
});

inSession.test('the full form has the commands, then each account with its messages', (fixture) => {
  const { account, badge, commands, describeAccounts, equal, full, get, sendMessage, titles } = fixture;
  const second = account('b', { signIn: true, messages: 1, count: 4 });
  describeAccounts([account(7, { count: 2, messages: 2, color: 'C0392B' }), second]);
  const menu = full();
  const messages = ['Sender 7-0 - Subject 7-0', 'Sender 7-1 - Subject 7-1'];
  equal(titles(menu), [...commands, '-', 'Account 7', ...messages, '-', 'Account b', 'Sign In…']);
  const rows = get(menu, 'itemArray').filter((item) => !get(item, 'isSeparatorItem'));
  const sizeOf = (row) => {
    const font = sendMessage(get(row, 'attributedTitle'), 'attribute:atIndex:effectiveRange:', 'NSFont', 0, null);
    return get(font, 'pointSize');
  };
  const [small, other] = [rows[4], rows[3]].map(sizeOf);
  equal([small, other !== small, get(rows[4], 'toolTip')], [10, true, 'Snippet 7-0']);
  equal([badge(rows[3]), badge(rows[6])], [['c0392b', 2, 0], ['2980b9', 4, 1]]); // prettier-ignore
});

inSession.test('the compact form has one row an account, and the Dock shows it', (fixture) => {
  const { account, actionOf, badge, commands, compact, dockMenu, equal, get, native, titles, translations } = fixture;
  const accounts = [account(1, { count: 3, messages: 3 }), account(2), account(3, { signIn: true, count: 5 })];
  const text = JSON.stringify({ translations, accounts });
  const asked = [];
  native.setStatusItemMenuNeedsUpdateCallbackFunction((...args) => asked.push(args) && text);
  const menu = compact();
  equal(titles(menu), [...commands, '-', 'Open Account 1 (3)', 'Open Account 2', 'Sign in to Account 3']);
  const rows = get(menu, 'itemArray').slice(4);
  const described = rows.map((row) => [actionOf(row), get(row, 'representedObject'), ...badge(row).slice(1)]);
  equal(described, [['showTabViewItem:', 1, 3, 0], ['showTabViewItem:', 2, 0, 0], ['loginOAuth:', 3, 0, 1]]); // prettier-ignore
  // Each request of the Dock builds a menu of its own.
  for (let requests = 0; requests < 2; ++requests) equal(titles(dockMenu()), titles(menu));
  equal(asked, Array(3).fill(['dock', false]));
});

inSession.test('do-not-disturb hides messages and counts, and disables the getting of mail', (fixture) => {
  const { account, badge, commands, compact, describeAccounts, equal, full, get, host, isEnabled, titles } = fixture;
  describeAccounts([account(1, { count: 3, messages: 3 }), account(2, { signIn: true })]);
  host.setDefault('DoNotDisturb', true);
  equal(titles(full()), [...commands, '-', 'Account 1', '-', 'Account 2', 'Sign In…']);
  equal(titles(compact()), [...commands, '-', 'Open Account 1', 'Sign in to Account 2']);
  equal(badge(get(compact(), 'itemArray')[4])[1], 3);
  for (const menu of [full(), compact()]) {
    equal(get(menu, 'itemArray').slice(0, 3).map(isEnabled), [false, true, true]);
    equal(get(menu, 'itemArray.state').slice(0, 3), [0, 1, 0]);
  }
});

test('a message’s title is cut after 60 characters, and not within one', (t) => {
  const whole = (length) => 'x'.repeat(length - 4);
  const fifty = 'x'.repeat(55);
  const rows = [
    ...[59, 60].map((length) => [whole(length), `F - ${whole(length)}`]),
    ...[61, 500].map((length) => [whole(length), `F - ${whole(60)}...`]),
    ...['😀😀', 'e\u0301 and more'].map((end) => [fifty + end, `F - ${fifty}...`]),
    // A grapheme of any length is cut.
    [`${fifty}${'\u0301'.repeat(70)}`, `F - ${'x'.repeat(54)}...`],
  ];
  return inSession.table(t, rows, ({ describe, full, titles }, subject) => {
    describe({ accounts: [{ 'unread-messages': [{ 'from-line': 'F', subject }] }] });
    return titles(full()).at(-1);
  });
});

test('malformed menus from script lose only their malformed parts', (t) => {
  const nulls = { id: null, label: null, 'unread-counter-value': null, 'hex-color': null, 'unread-messages': null };
  const others = { id: {}, label: 5, 'unread-counter-value': 'x', 'hex-color': 3, 'requires-oauth?': 'yes', 'unread-messages': 'x' }; // prettier-ignore
  const messages = [{}, null, 'x', { subject: 's' }];
  // Each with the rows after the commands in both forms.
  const rows = [
    [{ accounts: [] }, [[], []]],
    [{ accounts: { 0: 'x' } }, [[], []]],
    [{ accounts: [null, 1, 'x', [], true] }, [[], []]],
    ...[{}, nulls, others].map((account) => [{ accounts: [account] }, [['-', ''], ['']]]),
    [{ accounts: [{ label: 'A', 'unread-messages': messages }] }, [['-', 'A', '(null) - (null)', '(null) - s'], ['']]],
  ];
  return inSession.table(t, rows, ({ compact, describe, full, titles }, menu) => {
    describe(menu);
    return [titles(full()).slice(3), titles(compact()).slice(4)];
  });
});

test('formats from outside are filled in, or left alone when they ask for other arguments', (t) => {
  const rows = [
    ['%@', 0, 'x'],
    ['100 %% %@', 0, '100 % x'],
    ['none', 0, 'none'],
    ['%@ (%ld)', 5, 'x (5)'],
    ['%2$d × %1$@', 5, '5 × x'],
    ['%@ %3u', 5, 'x   5'],
    ...['%ld', '%@ %s', '%@ %*d', '%3$@'].map((format) => [format, 5, format]),
    ...['%@ %@', '%', '%n', '%@ %s %n'].map((format) => [format, 0, format]),
  ];
  return inSession.table(t, rows, ({ compact, describe, titles }, format, count) => {
    const translations = { 'open-format': format, 'open-with-counter-format': format };
    describe({ translations, accounts: [{ label: 'x', 'unread-counter-value': count }] });
    return titles(compact()).at(-1);
  });
});

inSession.test('without a menu from script there are the commands alone, without titles', async (fixture) => {
  const { answer, assert, captureLog, compact, equal, full, log, native, thrownBy, titles } = fixture;
  captureLog();
  const commands = ['', '', ''];
  equal([titles(full()), titles(compact())], [commands, [...commands, '-']]);
  for (const text of ['not JSON', '', '[1]', '"x"', null, undefined, 5]) {
    answer(text);
    equal(titles(full()), commands);
  }
  equal(log(1).length, 7);
  assert.match(log(1)[0], /^Couldn't update status item menu with not JSON because of ./);
  assert.match(log(1)[4], /^Couldn't update status item menu with \(null\) because of ./);
  native.setStatusItemMenuNeedsUpdateCallbackFunction(() => {
    throw new Error('mine');
  });
  equal(thrownBy(full), 'mine');
});

const inGerman = inSession.with({ env: { LANGUAGE: 'de', LANG: 'de_DE.UTF-8' } });

inGerman.test('titles of commands are looked up in the main bundle', ({ describeAccounts, equal, full, titles }) => {
  describeAccounts([], { 'compose-new-message': 'Unknown to the bundle' });
  equal(titles(full()), ['Neue E-Mails abrufen', 'Nicht stören', 'Unknown to the bundle']);
});

inSession.test('a badge shows counts from 1 to 99, “!” for an error, or the colour alone', async (fixture) => {
  const { assert, colorsOf, equal, getAll, sendMessage } = fixture;
  const green = sendMessage('NSColor', 'ts_colorWithHexColorString:', '00FF00');
  const badge = (count, isInError) => {
    const item = sendMessage('TsAccountStatusMenuItem', 'alloc');
    sendMessage(item, 'initWithTitle:color:action:keyEquivalent:', 'Account', green, 'showTabViewItem:', '');
    sendMessage(item, 'setCount:', count);
    sendMessage(item, 'setIsInError:', isInError);
    return getAll(item, 'badgeText', 'image');
  };
  const [bare, error, one] = [badge(0, false), badge(0, true), badge(1, false)];
  const [two, most] = [badge(2, false), badge(99, false)];
  const shown = [bare, error, one, two, most];
  equal(shown.map(([text]) => text), [null, '!', '1', '2', '99']); // prettier-ignore
  // Badges that look the same are one picture.
  equal([badge(100, false), badge(-1, false), badge(100, true)], [bare, bare, error]);
  const looks = new Set();
  for (const [text, image] of shown) {
    const colors = colorsOf(image);
    equal(sendMessage(image, 'size'), [16, 16]);
    assert.ok(colors['00FF00'] > 120 && colors.clear > 20, JSON.stringify(colors));
    equal(Object.keys(colors).length === 2, text === null);
    looks.add(Object.entries(colors).sort().join());
  }
  equal(looks.size, shown.length);
});

test('colours are six hexadecimal digits, and black where they are none', (t) => {
  const rows = ['4F8CF8 4f8cf8', 'ff0000 ff0000', ' 000000', 'none 000000', '12 000012', '#00FF00 000000'];
  const pairs = rows.map((row) => row.split(' '));
  const colorOf = ({ hex, sendMessage }, text) => hex(sendMessage('NSColor', 'ts_colorWithHexColorString:', text));
  return inSession.table(t, pairs, colorOf);
});

inSession.test('the item is there while there are accounts, and follows the defaults and script', async (fixture) => {
  const { accounts, assert, colorsOf, controller, equal, get, getAll, hasItem, host, native } = fixture;
  const presence = [
    [() => {}, false],
    [() => native.setStatusItemTitle('3', false), false],
    [() => accounts(0), false],
    [() => accounts(1), true],
    [() => accounts(2), true],
    // The controller compares with the defaults at their last change.
    [() => host.setDefault('Other', true), true],
    [() => host.setDefault('DisplayStatusItem', false), false],
    [() => accounts(3), false],
    [() => host.setDefault('DisplayStatusItem', true), true],
    [() => host.setDefault('DisplayStatusItem', null), true],
    [() => accounts(-1), false],
    [() => accounts(1), true],
    [() => accounts('x'), false],
    [() => accounts(1), true],
    [() => host.postNotification('TsNumberOfAccountsChanged', null, null), false],
  ];
  for (const [step, isShown] of presence) {
    step();
    equal(hasItem(), isShown, `${step}`);
  }
  // Icon, title and width follow script.
  accounts(1);
  native.setStatusItemTitle('3', false);
  const width = get(controller, 'statusItem.length') - 29;
  assert.ok(width > 0, `${width}`);
  native.setStatusItemTitle(null, false);
  const image = () => get(controller, 'statusItem.image');
  const atFirst = colorsOf(image());
  const [black, blue, grey] = ['000000', '4F8CF8', 'AAAAAA'];
  const steps = [
    [() => {}, [null, 29, 1, black]],
    [() => native.setStatusItemTitle('3', false), ['3', width + 29, 0, blue]],
    [() => native.setStatusItemTitle(null, true), [null, 35, 1, black]],
    [() => native.setStatusItemTitle('3', true), ['3', width + 35, 1, black]],
    [() => host.setDefault('DoNotDisturb', true), ['', 26, 0, grey]],
    [() => host.setDefault('DoNotDisturb', false), ['3', width + 35, 1, black]],
    [() => native.setStatusItemTitle(null, null), [null, 29, 1, black]],
  ];
  for (const [step, expected] of steps) {
    step();
    const { clear, ...colors } = colorsOf(image());
    const [[main]] = Object.entries(colors).sort((a, b) => b[1] - a[1]);
    equal([...getAll(get(controller, 'statusItem'), 'title', 'length', 'image.isTemplate'), main], expected, `${step}`);
  }
  native.setStatusItemTitle(null, true);
  assert.notDeepStrictEqual(colorsOf(image()), atFirst);
  native.setStatusItemTitle('', false);
  equal(getAll(get(controller, 'statusItem'), 'title', 'image.isTemplate'), ['', 1]);
});

inSession.test('commands of the Dock, and rows without an identifier, reach the host as notifications', (fixture) => {
  const { controller, equal, host, performOnDelegate, sendMessage } = fixture;
  const received = [];
  host.on('notification', ({ name, userInfo }) => received.push([name, userInfo]));
  for (const command of ['checkForNewMessages:', 'toggleDoNotDisturb:', 'composeNewMessage:']) {
    performOnDelegate(`ts_${command}`);
  }
  for (const action of ['showTabViewItem:', 'loginOAuth:', 'openMessage:']) {
    sendMessage(controller, action, sendMessage('NSMenuItem', 'new'));
  }
  equal(received, [
    ['TsGetNewMessagesNotification', null],
    ['TsToggleDoNotDisturbNotification', null],
    ['TsComposeNewMessageNotification', null],
    ['TsActivateTabForAccountNotification', {}],
    ['TsOpenOAuthWindowForAccountNotification', {}],
    ['TsOpenMessageWithUniqueNotificationId', {}],
  ]);
});

scenarios().test('without a window server there is no item, and the log says so', async (fixture) => {
  const { captureLog, equal, get, log, postNotification, sendMessage } = fixture;
  captureLog();
  postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': 1 });
  equal([...new Set(log())], ['The status item needs a window server']);
  equal(get(sendMessage('TsStatusItemController', 'sharedInstance'), 'statusItem'), null);
});
