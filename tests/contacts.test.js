'use strict';

const { assert, eventually, fs, scenarios, temporaryDirectory, test } = require('./support');
const { startPerson } = require('./support/dialogs');

const plain = scenarios({
  fixture({ fs, home, native, sendMessage: send }) {
    // Makes the module correct the framework's classes.
    native.recipientsForGroupName('');
    const multipleStrings = 0x101;
    const set = (record, property, value) => send(record, 'setValue:forProperty:', value, property);
    /** A record of the address book with these properties. */
    const person = ({ emails = [], ...properties }) => {
      const made = send('ADPerson', 'new');
      const addresses = send(send('ADMutableMultiValue', 'alloc'), 'initWithType:', multipleStrings);
      for (const each of emails) send(addresses, 'addValue:withLabel:', each, 'Work');
      set(made, 'Email', addresses);
      for (const [name, value] of Object.entries(properties)) set(made, name, String(value));
      return made;
    };
    const folder = `${home}/GNUstep/Library/Addresses`;
    return {
      person,
      /** Fills the address book; groups name people and groups by their numbers. */
      makeBook({ people, groups }) {
        fs.mkdirSync(folder, { recursive: true });
        send('ADLocalAddressBook', 'makeLocalAddressBookAtLocation:', folder);
        const all = send('ADAddressBook', 'sharedAddressBook');
        const add = (record) => send(all, 'addRecord:', record) && record;
        const persons = people.map((each) => add(person(each)));
        const lists = groups.map(() => add(send('ADGroup', 'new')));
        groups.forEach(({ name, members = [], subgroups = [] }, i) => {
          set(lists[i], 'GroupName', name);
          for (const each of members) send(lists[i], 'addMember:', persons[each]);
          for (const each of subgroups) send(lists[i], 'addSubgroup:', lists[each]);
        });
        return send(all, 'save');
      },
    };
  },
});
const inSession = scenarios({ display: true });

test('headers are split at every comma, and what stands in brackets is the address', async (t) => {
  // prettier-ignore
  const cases = {
    '': [],
    ',,': [],
    'a@x': [['', 'a@x']],
    'John <a@x>, b@x': [['John', 'a@x'], ['', ' b@x']],
    '"Doe, John" <a@x>': [['', '"Doe'], ['John"', 'a@x']],
    '>a<': [['', '>a<']],
    '<a@x': [['', '<a@x']],
    '<>': [['', '']],
    ' \t John\u00a0\u3000< a@x >rest': [['John', ' a@x ']],
    '\nJohn\n<a@x>': [['\nJohn\n', 'a@x']],
    'a<b<c>d>': [['a', 'b<c']],
    'Zoë 😀 <ä@x>,日本 <b@x>': [['Zoë 😀', 'ä@x'], ['日本', 'b@x']],
    ' ': [['', ' ']],
  };
  await plain.table(t, Object.entries(cases), ({ sendMessage: send }, text) =>
    send('TsRecipient', 'fromString:', text).map((each) => [send(each, 'name'), send(each, 'address')]),
  );
});

plain.test('recipients are written as items of a header', ({ equal, sendMessage: send }) => {
  const items = [
    ['', 'a@x', '<a@x>'],
    [null, 'b@x', '<b@x>'],
    ['Ann', 'a@x', '"Ann" <a@x>'],
    ['A <B>', 'a@x', '"A <B>" '],
    ['"Q\\', 'a<x', '""Q\\" <a<x>'],
    ['日本 😀', 'ü@x', '"日本 😀" <ü@x>'],
    ['B', '', '"B" <>'],
  ];
  const recipients = items.map(([name, address]) => send('TsRecipient', 'recipient:name:', address, name));
  const texts = items.map(([, , text]) => text);
  recipients.forEach((recipient, i) => equal(send(recipient, 'stringForEmail'), texts[i]));
  equal(send('TsRecipient', 'toString:', recipients), texts.join(', '));
  equal(send('TsRecipient', 'toString:', []), '');
});

test('people go by their names in their order, and companies by their organization', async (t) => {
  const name = { Title: 'Dr.', FirstName: 'Ann', MiddleName: 'M.', LastName: 'Lee', Suffix: 'Jr.' };
  const full = { ...name, Organization: 'ACME', emails: ['a@x', 'b@x'] };
  const cases = [
    ['a@x', full, ['Dr. Ann M. Lee Jr.', 'a@x']],
    ['b@x', { ...full, ABPersonFlags: 16 }, ['Dr. Lee Ann M. Jr.', 'b@x']],
    ['a@x', { ...full, ABPersonFlags: 32 }, ['Dr. Ann M. Lee Jr.', 'a@x']],
    ['a@x', { ...full, ABPersonFlags: 1 }, ['ACME', 'a@x']],
    ['a@x', { ...full, ABPersonFlags: 17 }, ['ACME', 'a@x']],
    ['a@x', { emails: ['a@x'], ABPersonFlags: 1 }, ['', 'a@x']],
    ['a@x', { emails: ['a@x'] }, ['', 'a@x']],
    ['A@x', full, null],
    ['a@x', { FirstName: 'Nobody' }, null],
  ];
  await plain.table(t, cases, ({ get, person, sendMessage: send }, address, properties) => {
    const found = send('TsRecipient', 'recipient:person:', address, person(properties));
    return found && [get(found, 'name'), get(found, 'address')];
  });
});

const book = {
  people: [
    { FirstName: 'Ann', LastName: 'Lee', emails: ['ann@x', 'ann@y', 'ann@z'] },
    { FirstName: 'Bob', emails: ['bob@x'] },
    { FirstName: 'No', LastName: 'Address' },
    { emails: ['nameless@x'] },
    { Organization: 'ACME', ABPersonFlags: 1, emails: ['info@acme'] },
    { emails: ['deep@x'] },
  ],
  groups: [
    { name: 'Friends', members: [1, 0, 2], subgroups: [1, 2] },
    { name: 'Family', members: [0, 3], subgroups: [0] },
    { name: 'Work', members: [4] },
    { name: 'Empty' },
  ],
};

test('a group is its members, then those of its subgroups, even if it is in itself', async (t) => {
  const depth = 300;
  const first = book.groups.length;
  const level = (_, i) => ({ name: `Level ${i}`, subgroups: [first + i + 1] });
  const nested = Array.from({ length: depth }, level);
  nested[depth - 1] = { name: 'deepest', members: [5] };
  const ann = { name: 'Ann Lee', email: 'ann@x' };
  const acme = { name: 'ACME', email: 'info@acme' };
  const expected = {
    Friends: [{ name: 'Bob', email: 'bob@x' }, ann, ann, { email: 'nameless@x' }, acme],
    Work: [acme],
    Empty: [],
    'Level 0': [{ email: 'deep@x' }],
    friends: null,
    '': null,
    Nobody: null,
  };
  const scenario = ({ makeBook, native }, all, names) => {
    makeBook(all);
    return names.map((name) => JSON.parse(native.recipientsForGroupName(name)));
  };
  const groups = await plain(t, scenario, { ...book, groups: [...book.groups, ...nested] }, Object.keys(expected));
  assert.deepStrictEqual(groups, Object.values(expected));
});

plain.test('without contacts there is no group, and no folder is made for them', ({ equal, fs, home, native }) => {
  equal(native.recipientsForGroupName('Friends'), null);
  equal(fs.existsSync(`${home}/GNUstep/Library/Addresses`), false);
});

test('missing members are skipped, and a damaged record is logged', async (t) => {
  const home = temporaryDirectory(t);
  await plain.with({ home })(t, ({ makeBook }, all) => makeBook(all), book);
  const folder = `${home}/GNUstep/Library/Addresses`;

  fs.rmSync(`${folder}/2.mfaddr`);
  const emails = ({ native }) => JSON.parse(native.recipientsForGroupName('Friends')).map(({ email }) => email);
  assert.deepStrictEqual(await plain.with({ home })(t, emails), ['ann@x', 'ann@x', 'nameless@x', 'info@acme']);

  fs.writeFileSync(`${folder}/1.mfaddr`, '{ no property list');
  const [group, log, titles] = await inSession.with({ home })(t, ({ captureLog, dialogs, host, log, native }) => {
    captureLog();
    native.pickEmailAddresses(host.createWindow(), '{}');
    return [native.recipientsForGroupName('Friends'), log().join('\n'), dialogs.windows().map(({ title }) => title)];
  });
  assert.strictEqual(group, null);
  assert.match(log, /Parse failed/);
  assert.ok(titles.includes('window-title'), titles.join());
});

const title = 'Pick Recipients';
const accept = 'Add Recipients';
const translations = {
  'window-title': title,
  'accept-button-label': accept,
  'cancel-button-label': 'Cancel',
  'edit-in-contacts-button-label': 'Edit in Contacts…',
};

async function startPicker(t) {
  const home = temporaryDirectory(t);
  await plain.with({ home })(t, ({ makeBook }, all) => makeBook(all), book);
  const person = await startPerson(t, { home });
  await person.tell(({ host, report }) => {
    const isPicked = ({ name }) => name === 'TsContactEmailAddressesPicked';
    host.on('notification', (posted) => isPicked(posted) && report(JSON.parse(posted.userInfo.addresses)));
  });
  const tables = async () => (await person.window(title, () => true)).views.filter(({ rows }) => rows !== undefined);
  const row = async (table, text) => (await tables())[table].rows.find(({ texts }) => texts.includes(text));
  const isOpen = async () => (await person.windows()).some((window) => window.title === title);
  return Object.assign(person, {
    isOpen,
    async open() {
      const ask = ({ native, window }, texts) => native.pickEmailAddresses(window, texts);
      await person.tell(ask, JSON.stringify(translations));
      // After clicks on other windows, the window manager leaves it to the user to go to the picker.
      const hasKeyboard = async () => (await person.windows()).some((each) => each.title === title && each.isKey);
      const activate = () =>
        person.xdotool('search', '--onlyvisible', '--name', title, 'windowactivate').catch(() => {});
      await person.until(hasKeyboard, activate, 'the picker has the keyboard');
    },
    group: (name) => row(0, name),
    addresses: async () => (await tables())[1].rows,
    select: (address, ...keys) =>
      person.until(
        async () => (await row(1, address)).isSelected,
        async () => {
          for (const key of keys) await person.hands('keydown', key);
          await person.click((await row(1, address)).centre);
          for (const key of keys) await person.hands('keyup', key);
        },
        `${address} is selected`,
      ),
    /** Acts until the report of a number is there; a picker that has just been closed gets no second click. */
    async picks(number, act) {
      const isPicked = () => person.reports.length > number;
      await person.until(isPicked, async () => (await isOpen()) && act(), `report ${number}`);
      return person.reports[number];
    },
  });
}

test('the picker', async (t) => {
  const picker = await startPicker(t);

  await t.test('the list grows with the picker, and the buttons stay in their corners', async () => {
    await picker.open();
    /** The distances of a view's edges from the left, the bottom, the right and the top of the window. */
    const edges = async (name) => {
      const { size, views } = await picker.window(title);
      const corner = views[0].centre.map((middle, i) => middle - size[i] / 2);
      const view = views.find((each) => [each.title, each.class].includes(name));
      const [left, top] = view.centre.map((middle, i) => middle - view.size[i] / 2 - corner[i]);
      return [left, size[1] - top - view.size[1], size[0] - left - view.size[0], top];
    };
    const all = async () => {
      const [list, add, edit] = [
        await edges('ABPeoplePickerView'),
        await edges(accept),
        await edges('Edit in Contacts…'),
      ];
      return [list, add.slice(1, 3), edit.slice(0, 2)].join('; ');
    };
    assert.strictEqual(await all(), '20,70,20,20; 20,20; 20,20');
    await picker.xdotool('search', '--onlyvisible', '--name', title, 'windowsize', 600, 700);
    await eventually(async () => (await picker.window(title)).size[1] === 700, 'the new size');
    assert.strictEqual(await all(), '20,70,20,20; 20,20; 20,20');
    await picker.pressButton(title, 'Cancel');
    await picker.isGone(title);
  });

  await t.test('nothing, addresses and groups are picked by hand', async () => {
    await picker.open();
    const none = await picker.picks(0, async () => picker.click((await picker.button(title, accept)).centre));
    assert.deepStrictEqual(none, []);
    await picker.isGone(title);

    await picker.open();
    await picker.select('bob@x');
    await picker.select('ann@y', 'Shift_L');
    const addresses = await picker.picks(1, () => picker.key('Return'));
    assert.ok(addresses.includes('"Bob" <bob@x>') && addresses.includes('"Ann Lee" <ann@y>'), addresses.join());

    await picker.open();
    // Two clicks are one double click only if they are quick enough, which on a busy machine they may not be.
    const twice = Array(2).fill(['mousedown', 1, 'sleep', 0.05, 'mouseup', 1, 'sleep', 0.05]);
    const group = await picker.picks(2, async () =>
      picker.hands('mousemove', (await picker.group('Work')).centre.map(Math.round), 'sleep', 0.15, twice),
    );
    assert.deepStrictEqual(group, ['"ACME" <info@acme>']);
    await picker.isGone(title);
  });

  await t.test('with groups, single addresses do not count', async () => {
    await picker.open();
    const family = () => picker.group('Family');
    const isSelected = async () => (await family()).isSelected && (await picker.addresses()).length === 4;
    await picker.until(
      isSelected,
      async () => picker.click((await family()).centre),
      'the group’s addresses are shown',
    );
    await picker.select('ann@z');
    await picker.pressButton(title, accept);
    const inFamily = ['"Ann Lee" <ann@x>', '<nameless@x>'];
    const friends = ['"Bob" <bob@x>', '"Ann Lee" <ann@x>', '"ACME" <info@acme>'];
    assert.deepStrictEqual(await picker.report(3), [...inFamily, ...friends]);
  });

  await t.test('Cancel hides the picker without a notification; Escape leaves it open', async () => {
    await picker.open();
    await picker.key('Escape');
    await picker.select('nameless@x');
    assert.ok(await picker.isOpen());
    await picker.pressButton(title, 'Cancel');
    await picker.isGone(title);
    assert.strictEqual(picker.reports.length, 4);
  });
});
