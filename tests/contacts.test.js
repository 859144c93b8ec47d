'use strict';

// Recipients as text, groups of the address book, and the picker with real clicks.

const assert = require('assert');
const { execFile } = require('child_process');
const fs = require('fs');
const { test } = require('node:test');
const { promisify } = require('util');

const { evaluate, startScript, eventually } = require('./support/child');
const { useSession } = require('./support/session');

const run = promisify(execFile);
const session = useSession();

const prelude = `
  const { module: m, contacts, captureLog, flushLog, capturedLog } = probe();
  const print = (value) => console.log(JSON.stringify(value));
  const make = (book) => contacts.make(JSON.stringify(book));
`;

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
  const results = await evaluate(
    t,
    `${prelude} print(${JSON.stringify(cases.map(([text]) => text))}.map((text) => JSON.parse(contacts.parse(text))));`,
  );
  assert.deepStrictEqual(
    results,
    cases.map(([, recipients]) => recipients),
  );
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
  const results = await evaluate(
    t,
    `${prelude} print(${JSON.stringify(cases.map(([pairs]) => JSON.stringify(pairs)))}.map((pairs) => JSON.parse(contacts.format(pairs))));`,
  );
  assert.deepStrictEqual(
    results,
    cases.map(([, ...texts]) => texts),
  );
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
  const results = await evaluate(
    t,
    `${prelude} print(${JSON.stringify(cases.map(([address, person]) => [address, JSON.stringify(person)]))}.map((args) => JSON.parse(contacts.recipient(...args))));`,
  );
  assert.deepStrictEqual(
    results,
    cases.map(([, , recipients]) => recipients),
  );
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
  const source = `print(${JSON.stringify(names)}.map((name) => JSON.parse(m.recipientsForGroupName(name))));`;
  const child = await evaluate(t, `${prelude} make(${JSON.stringify(book)}); ${source}`);
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
  const [group, made] = await evaluate(
    t,
    `${prelude} print([m.recipientsForGroupName('Friends'), require('fs').existsSync(process.env.HOME + '/GNUstep/Library/Addresses')]);`,
  );
  assert.deepStrictEqual([group, made], [null, false]);
});

test('members that are gone are passed over, and a damaged record is told by the log', async (t) => {
  const child = startScript(t, `${prelude} make(${JSON.stringify(book)});`);
  await child.ended;
  const read = (source) => evaluate(t, `${prelude} captureLog(); ${source}`, { home: child.home, env: session.env });
  const folder = `${child.home}/GNUstep/Library/Addresses`;

  fs.rmSync(`${folder}/2.mfaddr`);
  const recipients = await read(`print(JSON.parse(m.recipientsForGroupName('Friends')));`);
  assert.deepStrictEqual(
    recipients.map(({ email }) => email),
    ['ann@x', 'ann@x', 'nameless@x', 'info@acme'],
  );

  fs.writeFileSync(`${folder}/1.mfaddr`, '{ no property list');
  const [group, log, shown] = await read(`
    const host = require('./host');
    host.start();
    const group = m.recipientsForGroupName('Friends');
    flushLog();
    m.pickEmailAddresses(host.createWindow(), '{}');
    print([group, capturedLog().map(({ text }) => text).join('\\n'), JSON.parse(contacts.picker()).isVisible]);
    process.exit();`);
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
  const recipients = await evaluate(
    t,
    `${prelude} make(${JSON.stringify(deep)}); print(JSON.parse(m.recipientsForGroupName('Level 0')));`,
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

const pickerScript = `
  const host = require('./host');
  host.start();
  host.setKeepAlive(true);
  ${prelude}
  host.on('notification', ({ name, userInfo }) => name === 'TsContactEmailAddressesPicked' && print({ picked: JSON.parse(userInfo.addresses) }));
  require('readline').createInterface({ input: process.stdin }).on('line', (line) => print({ answer: eval(line) ?? null }));
  make(${JSON.stringify(book)});
  const window = host.createWindow();
  const open = (texts = ${JSON.stringify(translations)}) => m.pickEmailAddresses(window, JSON.stringify(texts));
  const state = () => JSON.parse(contacts.picker());
  print({ answer: 'ready' });
`;

async function startPicker(t) {
  const child = startScript(t, pickerScript, { env: session.env });
  const lines = () =>
    child.output.stdout
      .split('\n')
      .slice(0, -1)
      .map((line) => JSON.parse(line));
  const answers = () => lines().filter((line) => 'answer' in line);
  await eventually(() => answers().length > 0, 'the application is ready').catch((error) => {
    throw new Error(`${error.message}: ${child.output.stderr}`);
  });
  const tell = async (line) => {
    const before = answers().length;
    child.process.stdin.write(`${line}\n`);
    await eventually(() => answers().length > before, line);
    return answers()[before].answer;
  };
  const xdotool = (...args) => run('xdotool', args.flat().map(String), { env: { ...process.env, ...session.env } });
  // As long as a finger takes: while a view follows the mouse, the application runs a loop of its own.
  const press = ['mousedown', 1, 'sleep', 0.15, 'mouseup', 1, 'sleep', 0.15];
  const click = (at, before = [], after = []) =>
    xdotool('mousemove', ...at.map(Math.round), 'sleep', 0.15, before, press, after);
  const button = async (title) => (await tell('state()')).views.find((view) => view.title === title).centre;
  const rows = async (table) => (await tell('state()')).tables[table];
  return {
    tell,
    xdotool,
    click,
    button,
    state: () => tell('state()'),
    open: async (texts) => {
      await tell(`open(${texts === undefined ? '' : JSON.stringify(texts)})`);
      await eventually(async () => (await tell('state().isVisible && state().isKey')) === true, 'the picker is shown');
    },
    group: async (name) => (await rows(0)).find(({ texts }) => texts[0] === name).centre,
    // GNUstep misses clicks on a window that has just appeared: click until the row is selected.
    select: async (address, ...keys) => {
      const row = async () => (await rows(1)).find(({ texts }) => texts[1] === address);
      for (let attempt = 0; attempt < 8 && !(await row()).isSelected; ++attempt) {
        await click((await row()).centre, ...keys);
      }
      assert.ok((await row()).isSelected, `${address} is selected`);
    },
    isHidden: () => eventually(async () => !(await tell('state().isVisible')), 'the picker is hidden'),
    picked: (count) =>
      eventually(() => {
        const all = lines().filter((line) => 'picked' in line);
        return all.length >= count && all.map(({ picked }) => picked);
      }, `${count} times something is picked`),
    pickedSoFar: () => lines().filter((line) => 'picked' in line).length,
  };
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

  await picker.tell('contacts.resizePicker()');
  const [grown, moved, , still] = (await picker.state()).views;
  assert.deepStrictEqual(grown.frame, [20, 70, 560, 610]);
  assert.deepStrictEqual(moved.frame.slice(0, 2), [accept.frame[0] + 100, 20]);
  assert.deepStrictEqual(still.frame, edit.frame);
});

test('addresses, groups and nothing are picked by hand', async (t) => {
  const picker = await startPicker(t);
  await picker.open();
  const accept = await picker.button('Add Recipients');
  // On a busy machine GNUstep misses a click on a window that has just appeared.
  for (let attempt = 0; attempt < 8 && picker.pickedSoFar() < 1; ++attempt) {
    await picker.click(accept, [], ['sleep', 0.5]);
  }
  assert.deepStrictEqual(await picker.picked(1), [[]]);
  await picker.isHidden();

  await picker.open();
  await picker.select('bob@x');
  await picker.select('ann@y', ['keydown', 'Shift_L'], ['keyup', 'Shift_L']);
  await picker.xdotool('key', 'Return');
  const [, addresses] = await picker.picked(2);
  assert.ok(addresses.includes('"Bob" <bob@x>') && addresses.includes('"Ann Lee" <ann@y>'), addresses.join());

  await picker.open();
  const work = await picker.group('Work');
  // Two clicks are one double click only if they are quick enough, which on a busy machine they may not be.
  for (let attempt = 0; attempt < 8 && picker.pickedSoFar() < 3; ++attempt) {
    await picker.click(work, ['mousedown', 1, 'sleep', 0.05, 'mouseup', 1, 'sleep', 0.05], ['sleep', 0.5]);
  }
  assert.deepStrictEqual((await picker.picked(3))[2], ['"ACME" <info@acme>']);
  await picker.isHidden();
});

test('with groups, single addresses do not count', async (t) => {
  const picker = await startPicker(t);
  await picker.open();
  await picker.click(await picker.group('Family'));
  await eventually(async () => (await picker.state()).tables[1].length === 4, 'the group’s addresses are shown');
  await picker.select('ann@z');
  await picker.click(await picker.button('Add Recipients'));
  const [recipients] = await picker.picked(1);
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
  await picker.click(await picker.button('Cancel'));
  await picker.isHidden();
  assert.strictEqual(picker.pickedSoFar(), 0);
});

test('bad arguments and missing translations are logged', async (t) => {
  const { log, title } = await evaluate(
    t,
    `const host = require('./host');
     host.start();
     ${prelude}
     const window = host.createWindow();
     captureLog();
     m.pickEmailAddresses({}, '{}');
     m.pickEmailAddresses(Buffer.alloc(0), '{}');
     m.pickEmailAddresses(window, '[]');
     m.pickEmailAddresses(window, '{ "window-title');
     m.pickEmailAddresses(window, '{"window-title":null,"accept-button-label":"Add"}');
     m.pickEmailAddresses(window, '{"window-title":"Too late"}');
     flushLog();
     print({ log: capturedLog().map(({ text }) => text), title: JSON.parse(contacts.picker()).title });
     process.exit();`,
    { env: session.env },
  );
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
