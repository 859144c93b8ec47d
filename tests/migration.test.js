'use strict';

const assert = require('assert');
const { execFileSync } = require('child_process');
const { XMLParser } = require('fast-xml-parser');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { evaluate, startScript, temporaryDirectory } = require('./support/child');
const { startKeyring } = require('./support/keyring');
const {
  Store,
  accountsStore,
  workspacesStore,
  manyAccounts,
  reported,
  inOrder,
  previousVersion,
} = require('./support/stores');

/** Evaluates `expression` with the module `m`, `send` to the stores, and `log()`: what has been logged since. */
const inModule = (t, home, expression, options = {}) =>
  evaluate(
    t,
    `const { module: m, sendMessage: send, keychain, captureLog, capturedLog, flushLog } = probe();
     const levels = { 1: 'error', 2: 'warning', 4: 'info' };
     captureLog();
     const log = () => {
       flushLog();
       return capturedLog().map(({ flag, text }) => levels[flag] + ' ' + text);
     };
     const open = (type, path) => send(send(type, 'alloc'), 'initWithPath:', path);
     console.log(JSON.stringify((() => { ${expression} })()));`,
    { home, ...options },
  );

const report = (t, home, selection, options) =>
  inModule(t, home, `return JSON.parse(m.getMigrationInfo(${JSON.stringify(selection)}));`, options).then(inOrder);

/** A home with these files of the previous version in it. */
function homeWith(t, contents) {
  const home = temporaryDirectory(t);
  previousVersion(home).write(contents);
  return home;
}

const ann = {
  order: 2,
  username: 'ann@example.org',
  nickname: 'Ann <&> "Ä" 😀 \\ \\u0041',
  detectUnreadCountType: false,
  defaultInboxType: 3,
  customInboxLabelName: '  ',
  autoAuthenticate: true,
  unreadMessagesLocation: 1,
  autoBCC: ' x@example.org , , y@example.org ',
  notificationSound: 'Glass',
  notificationUseGrowl: false,
  loadRapportivePlugin: true,
  loadStreakPlugin: false,
  isGmailChatBlocked: true,
  bookmarks: [
    { order: 20, title: 'Zweites', url: 'https://example.org/?a=1&b=<2>' },
    { order: 10, title: '', url: 'https://example.org/' },
  ],
  downloadItems: [{ path: '/tmp/a' }, { path: '/tmp/b', createdAt: new Date() }],
};
const bob = { order: 1, username: 'bob@example.org' };
const bella = { order: 1, username: 'bella@example.org', nickname: 'Bella' };
const nobody = {};

const workspaces = [
  {
    active: false,
    lastUpdatedAt: new Date('2014-05-06T07:08:09Z'),
    appStates: [{ identifier: 'Ts_Contacts_bob@example.org' }],
  },
  {
    active: true,
    lastUpdatedAt: new Date('2015-01-01T00:00:00Z'),
    appStates: ['GoogleInbox_ann@example.org', 'Gmail_bob@example.org', 'Calendar_'].map((text) => ({
      identifier: `Ts_${text}`,
      url: 'https://example.org/',
    })),
  },
  { active: 3, appStates: [] },
];

const reportedWorkspaces = [
  {
    'active?': true,
    tabs: [
      { email: 'ann@example.org', app: 'GoogleInbox' },
      { email: 'bob@example.org', app: 'Gmail' },
      { email: '', app: 'Calendar' },
    ],
  },
  { 'active?': false, tabs: [{ email: 'bob@example.org', app: 'Contacts' }] },
  { 'active?': 3, tabs: [] },
];

const plist = (entries) =>
  `<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict>${Object.entries(entries)
    .map(([key, value]) => `<key>${key}</key>${value}`)
    .join('')}</dict></plist>`;

/** A binary property list of one dictionary, with values that are texts, booleans or integers below 128. */
function binaryPlist(entries) {
  const texts = (text) => Buffer.concat([Buffer.from([0x5f, 0x10, text.length]), Buffer.from(text, 'ascii')]);
  const value = (v) =>
    typeof v === 'string' ? texts(v) : Buffer.from(typeof v === 'boolean' ? [v ? 9 : 8] : [0x10, v]);
  const count = Object.keys(entries).length;
  const objects = [
    Buffer.from([0xd0 | count, ...Array.from({ length: 2 * count }, (_, i) => i + 1)]),
    ...Object.keys(entries).map(texts),
    ...Object.values(entries).map(value),
  ];
  let offset = 8;
  const offsets = objects.map((object) => (offset += object.length) - object.length);
  const trailer = Buffer.alloc(32);
  trailer.set([1, 1], 6);
  trailer.set([objects.length], 15);
  trailer.set([offset], 31);
  return Buffer.concat([Buffer.from('bplist00'), ...objects, Buffer.from(offsets), trailer]);
}

for (const style of ['framework', 'model']) {
  test(`the report tells everything, with names as in the ${style} and passwords out of the keyring`, async (t) => {
    const home = homeWith(t, {
      accounts: accountsStore([ann, bob, bella, nobody], style).text(),
      workspaces: workspacesStore(workspaces, style).text(),
      preferences: plist({ HideTabBar: '<true/>', Other: '<true/>', WebViewTextSizeMultiplier: '<real>1.5</real>' }),
    });
    const keyring = await startKeyring(t, temporaryDirectory(t));
    const store = (account, password, service = 'Tessaro 3') =>
      keyring.secretTool(['store', '--label=x', 'service', service, 'account', account], password);
    await store('ann@example.org', 'gänse 😀');
    await store('ann@example.org (oauth)', 'token');
    await store('bob@example.org', 'of another service', 'Kolvar');
    await store('', 'of nobody');
    const result = await inModule(
      t,
      home,
      `keychain.setTransient('ann@example.org', 'not this one');
       keychain.setTransient('bob@example.org', 'in memory');
       return { has: m.hasPreviousVersion(), report: JSON.parse(m.getMigrationInfo(null)), log: log() };`,
      { env: { DBUS_SESSION_BUS_ADDRESS: keyring.address } },
    );
    assert.deepStrictEqual(
      { ...result, report: inOrder(result.report) },
      {
        has: true,
        report: {
          'has-previous-version?': true,
          accounts: [reported(nobody), reported(bella), reported(bob, 'in memory'), reported(ann, 'gänse 😀')],
          workspaces: reportedWorkspaces,
          prefs: { HideTabBar: true, WebViewTextSizeMultiplier: 1.5 },
        },
        log: [],
      },
    );
  });
}

test('the selection is a text that contains the names of sections', async (t) => {
  const home = homeWith(t, {
    accounts: accountsStore([bob]).text(),
    workspaces: workspacesStore(workspaces).text(),
    preferences: plist({ HideTabBar: '<true/>' }),
  });
  const table = [
    [null, ['accounts', 'prefs', 'workspaces']],
    ['', []],
    ['prefs', ['prefs']],
    ['accounts,prefs', ['accounts', 'prefs']],
    ['myworkspaces2', ['workspaces']],
    ['Prefs', []],
  ];
  const results = await inModule(
    t,
    home,
    `return ${JSON.stringify(table)}.map(([selection]) => Object.keys(JSON.parse(m.getMigrationInfo(selection))).sort());`,
  );
  assert.deepStrictEqual(
    results,
    table.map(([, sections]) => [...sections, 'has-previous-version?'].sort()),
  );
});

test('what is missing is empty', async (t) => {
  const nothing = { accounts: [], workspaces: [], prefs: {} };
  const cases = [
    [{}, false, { 'has-previous-version?': false, ...nothing }],
    [
      // Workspaces alone are no previous version; preferences are read all the same.
      { workspaces: workspacesStore(workspaces).text(), preferences: plist({ DoNotDisturb: '<false/>' }) },
      false,
      { 'has-previous-version?': false, ...nothing, prefs: { DoNotDisturb: false } },
    ],
    [{ accounts: accountsStore([]).text() }, false, { 'has-previous-version?': true, ...nothing }],
  ];
  for (const [contents, has, expected] of cases) {
    const home = homeWith(t, contents);
    const result = await inModule(
      t,
      home,
      'return [m.hasPreviousVersion(), JSON.parse(m.getMigrationInfo(undefined))];',
    );
    assert.deepStrictEqual(result, [has, expected]);
  }
});

test('preferences are read in either format, or not at all', async (t) => {
  const texts = { DownloadDestinationPath: '/home/ann/Downloads', HideTabBar: true, ShowStatusBar: 7 };
  const xml = plist({
    DownloadDestinationPath: '<string>/home/ann/Downloads</string>',
    HideTabBar: '<true/>',
    ShowStatusBar: '<integer>7</integer>',
  });
  const cases = [
    ['XML', xml, texts],
    ['binary', binaryPlist({ ...texts, Unknown: 1 }), texts],
    ['nothing', '', {}],
    ['truncated', xml.slice(0, 200), {}],
    ['truncated binary', binaryPlist(texts).subarray(0, 60), {}],
    ['garbage', Buffer.from([0x62, 0x70, 0x6c, 0x69, 0x73, 0x74, 0xff, 0x00]), {}],
    ['no dictionary', '<plist version="1.0"><array><true/></array></plist>', {}],
    ['a binary text beyond the end', Buffer.from(binaryPlist(texts)).fill(0xec, 19, 20), {}],
    ['deep XML', xml.replace('<true/>', '<array>'.repeat(1e5) + '</array>'.repeat(1e5)), {}],
    ['deep text', `{HideTabBar = ${'('.repeat(1e5)}${')'.repeat(1e5)};}`, {}],
  ];
  for (const [name, preferences, prefs] of cases) {
    const result = await report(t, homeWith(t, { preferences }), 'prefs');
    assert.deepStrictEqual(result, { 'has-previous-version?': false, prefs }, name);
  }
  const piped = temporaryDirectory(t);
  const { preferences: pipe } = previousVersion(piped);
  fs.mkdirSync(path.dirname(pipe), { recursive: true });
  execFileSync('mkfifo', [pipe]);
  assert.deepStrictEqual((await report(t, piped, 'prefs')).prefs, {}, 'a pipe');
  const home = homeWith(t, { preferences: plist({ ShowStatusBar: '<date>2015-01-01T00:00:00Z</date>' }) });
  const [value, log] = await inModule(t, home, "return [m.getMigrationInfo('prefs'), log()];");
  assert.strictEqual(value, null);
  assert.ok(log.includes("warning Couldn't convert to JSON"), log.join('\n'));
});

test('a tab of an unknown application spoils the report, and not the process', async (t) => {
  for (const identifier of ['Ts_Drive_ann@example.org', 'Ts_Gmail', '', undefined]) {
    const home = homeWith(t, {
      accounts: accountsStore([bob]).text(),
      workspaces: workspacesStore([{ active: true, appStates: [{ identifier }] }]).text(),
    });
    const [value, log, rest] = await inModule(
      t,
      home,
      "return [m.getMigrationInfo('workspaces'), log(), m.getMigrationInfo('')];",
    );
    assert.strictEqual(value, null, identifier);
    assert.ok(
      log.some((line) => line.includes('UnknownIdentifier')),
      log.join('\n'),
    );
    assert.strictEqual(rest, '{"has-previous-version?":true}');
  }
});

test('a file that is no store is told by the log, and has no accounts', async (t) => {
  const good = accountsStore([ann, bob]).text();
  const bomb = `<!DOCTYPE database [${Array.from({ length: 20 }, (_, i) => `<!ENTITY e${i + 1} "${`&e${i};`.repeat(20)}">`).join('')}]>`;
  const write = (contents) => (file) => fs.writeFileSync(file, contents);
  const cases = {
    empty: write(''),
    'of one byte': write('<'),
    truncated: write(good.slice(0, -30)),
    'truncated in an object': write(good.slice(0, good.length / 2)),
    'of another root': write(good.replace(/database>/g, 'databank>')),
    'no XML': write(Buffer.from([0, 1, 2, 0xff, 0xfe])),
    'of an unknown encoding': write(good.replace('?>', ' encoding="EBCDIC-US"?>')),
    'nested too deeply': write(good.replace('</database>', `${'<a>'.repeat(1e6)}${'</a>'.repeat(1e6)}</database>`)),
    'of two roots': write(`${good}<object`),
    'an entity bomb without objects': write(`${bomb}<databases>&e20;</databases>`),
    'a folder': (file) => fs.mkdirSync(file),
    'a pipe': (file) => execFileSync('mkfifo', [file]),
    'a device': (file) => fs.symlinkSync('/dev/zero', file),
    'too large': (file) => execFileSync('truncate', ['--size=1G', file]),
  };
  for (const [name, make] of Object.entries(cases)) {
    const home = temporaryDirectory(t);
    const { folder, accounts } = previousVersion(home);
    fs.mkdirSync(folder, { recursive: true });
    make(accounts);
    const [has, found, log] = await inModule(
      t,
      home,
      `return [m.hasPreviousVersion(), JSON.parse(m.getMigrationInfo('accounts')), log()];`,
    );
    assert.deepStrictEqual([has, found.accounts], [false, []], name);
    const attach = log.filter((line) => line.startsWith("warning Couldn't attach persistence. "));
    const query = log.filter((line) => line.startsWith('warning Could not execute TsAccounts#all query. ('));
    assert.deepStrictEqual([attach.length, query.length, log.length], [2, 2, 4], `${name}: ${log.join('\n')}`);
  }
});

test('a store is read whatever else stands in it', async (t) => {
  const plain = accountsStore([ann, bob]).text();
  const dangling = (() => {
    const store = new Store();
    const one = store.add('Account', { order: 1, username: 'ann@example.org' });
    const other = store.add('Account', { order: 2, username: 'bob@example.org' });
    const bookmark = store.add('Bookmark', { order: 1, title: 'a', url: 'b' });
    // Missing, of another entity, itself, twice.
    store.relate(one, 'bookmarks', 'Bookmark', ['z999', other, one, bookmark, bookmark]);
    store.relate(other, 'bookmarks', 'Bookmark', [bookmark]);
    store.relate(bookmark, 'account', 'Account', bookmark);
    return store.text();
  })();
  const bookmarks = [{ order: 1, title: 'a', url: 'b' }];
  const expected = [reported(bob), reported(ann)];
  const cases = {
    'unknown entities and properties': [
      plain
        .replace('</object>', '<attribute name="future" type="string">x</attribute></object>')
        .replace(
          '<object',
          '<object type="FUTURE" id="z7"><attribute name="order" type="int32">1</attribute></object><object',
        ),
      expected,
    ],
    'numbers that are none': [
      plain.replace(/(name="defaultinboxtype" type=")[^<]*/, '$1int32">NaN').replace('"bool">1', '"bool">maybe'),
      [reported(bob), reported({ ...ann, defaultInboxType: undefined, autoAuthenticate: undefined })],
    ],
    'comments and sections': [
      plain.replace('bob@example.org', '<!-- </object> -->bob<![CDATA[@example.org</object>]]>'),
      [reported({ ...bob, username: 'bob@example.org</object>' }), reported(ann)],
    ],
    'escapes of the framework': [
      plain.replace('>bob@', '>\\u3c00b\\u2600\\u0a00\\u4e00ob\\u@'),
      [reported({ ...bob, username: '<b&\n\\u4e00ob\\u@example.org' }), reported(ann)],
    ],
    'an entity bomb': [
      plain
        .replace(/<!DOCTYPE[^>]*>/, '<!DOCTYPE database [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;">]>')
        .replace('bob@', '&b;'),
      [reported({ ...bob, username: '&b;example.org' }), reported(ann)],
    ],
    'a file of the system as an entity': [
      plain
        .replace(/<!DOCTYPE[^>]*>/, '<!DOCTYPE database [<!ENTITY a SYSTEM "file:///etc/passwd">]>')
        .replace('bob@', '&a;'),
      [reported({ ...bob, username: '&a;example.org' }), reported(ann)],
    ],
    'references that lead nowhere': [
      dangling,
      [
        reported({ order: 1, username: 'ann@example.org', bookmarks }),
        reported({ order: 2, username: 'bob@example.org', bookmarks }),
      ],
    ],
    'the same identifier twice': [
      plain.replace('</database>', '<object type="ACCOUNT" id="z102"></object></database>'),
      expected,
    ],
    'line ends of another system': [plain.replace(/\n/g, '\r\n'), expected],
    'a self-closed object at the end': [
      plain.replace('</database>', '<object type="ACCOUNT" id="z900"/></database>'),
      [reported(nobody), ...expected],
    ],
    'another declared encoding': [
      Buffer.from(
        accountsStore([{ ...bob, username: 'bób' }])
          .text()
          .replace('?>', ' encoding="ISO-8859-1"?>'),
        'latin1',
      ),
      [reported({ ...bob, username: 'bób' })],
    ],
    'a number where the model has a boolean': [
      plain.replace(/(name="detectunreadcounttype" type=")[^<]*/, '$1int16">2'),
      [reported(bob), reported({ ...ann, detectUnreadCountType: 2 })],
    ],
    'a byte order mark': [`\ufeff${plain}`, expected],
    'UTF-16': [Buffer.from(`\ufeff${plain}`, 'utf16le'), expected],
  };
  for (const [name, [text, accounts]] of Object.entries(cases)) {
    const result = await report(t, homeWith(t, { accounts: text }), 'accounts');
    assert.deepStrictEqual(result.accounts, accounts, name);
  }
});

test('a store of 5,000 accounts and 50,000 bookmarks, behind a link', async (t) => {
  const home = temporaryDirectory(t);
  const { folder, accounts: file } = previousVersion(home);
  const accounts = manyAccounts(5000, 10);
  fs.mkdirSync(folder, { recursive: true });
  fs.writeFileSync(path.join(home, 'elsewhere.xml'), accountsStore(accounts).text());
  fs.symlinkSync(path.join(home, 'elsewhere.xml'), file);
  const result = await report(t, home, 'accounts');
  assert.deepStrictEqual(
    result.accounts,
    accounts.map((account) => reported(account)),
  );
});

test('a store that is being written is read as a whole or not at all', async (t) => {
  const home = temporaryDirectory(t);
  const { folder, accounts: file } = previousVersion(home);
  fs.mkdirSync(folder, { recursive: true });
  const texts = [accountsStore(manyAccounts(3, 40)).text(), accountsStore(manyAccounts(40, 3)).text()];
  texts.forEach((text, i) => fs.writeFileSync(path.join(home, `${i}.xml`), text));
  fs.writeFileSync(file, texts[0]);
  const writer = startScript(
    t,
    `const fs = require('fs');
     const texts = [0, 1].map((i) => fs.readFileSync(process.env.HOME + '/' + i + '.xml'));
     console.log('ready');
     for (let i = 0; ; ++i) fs.writeFileSync(${JSON.stringify(file)}, texts[i % 2]);`,
    { home },
  );
  await writer.printed('ready\n');
  const counts = await inModule(
    t,
    home,
    `const counts = { 3: 0, 40: 0 };
     const end = Date.now() + 20000;
     for (let i = 0; i < 200 || (Math.min(counts[3], counts[40]) === 0 && Date.now() < end); ++i) {
       const count = JSON.parse(m.getMigrationInfo('accounts')).accounts.length;
       counts[count] = (counts[count] || 0) + 1;
     }
     return counts;`,
  );
  const seen = Object.keys(counts).map(Number);
  assert.ok(
    seen.every((count) => [0, 3, 40].includes(count)),
    JSON.stringify(counts),
  );
  assert.ok(counts[3] > 0 && counts[40] > 0, JSON.stringify(counts));
});

const parsed = (file) =>
  new XMLParser({ ignoreAttributes: false, parseTagValue: false, trimValues: false }).parse(
    fs.readFileSync(file, 'utf8'),
  ).database;

/** The objects of a store by their identifiers: { type, attribute: text, relationship: [identifiers] }. */
function objectsIn(file) {
  const objects = [parsed(file).object || []].flat().map((object) => {
    const found = { type: object['@_type'] };
    for (const attribute of [object.attribute || []].flat()) found[attribute['@_name']] = attribute['#text'] ?? '';
    for (const relationship of [object.relationship || []].flat())
      found[relationship['@_name']] = (relationship['@_idrefs'] || '').split(' ').filter(Boolean);
    return [object['@_id'], found];
  });
  return Object.fromEntries(objects);
}

test('workspaces are changed, saved and rolled back', async (t) => {
  const home = homeWith(t, {
    workspaces: workspacesStore(workspaces).text(
      '    <object type="FUTURE" id="z500"><attribute name="x" type="string"> </attribute></object>\n',
    ),
  });
  const { workspaces: file } = previousVersion(home);
  fs.chmodSync(file, 0o640);
  const before = objectsIn(file);
  const info = parsed(file).databaseInfo;
  const result = await inModule(
    t,
    home,
    `const states = open('TsWorkspaceStates', ${JSON.stringify(file)});
     const context = send(states, 'context');
     const text = (state) => state && send(send(state, 'dictionaryWithValues'), 'description') && send(state, 'identifier');
     const [first, second, third] = send(states, 'all');
     const steps = {};
     steps.changedAtFirst = send(context, 'hasChanges');
     steps.activeIsFirst = send(states, 'activeWorkspaceState').handle === first.handle;

     send(states, 'setActiveWorkspaceState:', second);
     steps.active = [first, second, third].map((state) => send(state, 'active'));
     steps.changed = send(context, 'hasChanges');
     send(context, 'rollback');
     steps.activeAgain = [first, second, third].map((state) => send(state, 'active'));
     steps.changedAgain = send(context, 'hasChanges');

     const gmail = send('TsGoogleAppIdentifier', 'gmailIdentifierWithAccountIdentifier:', 'cleo <&>\\u0001');
     const forgotten = send(states, 'insertNewWorkspaceState');
     send(forgotten, 'addAppStateWithIdentifier:', gmail);
     send(context, 'rollback');
     steps.forgotten = [send(states, 'all').length, send(forgotten, 'lastUpdatedAt')];

     send(states, 'setActiveWorkspaceState:', second);
     const added = send(second, 'addAppStateWithIdentifier:', gmail);
     send(added, 'setUrl:', 'https://example.org/?a&b');
     const inserted = send(states, 'insertNewWorkspaceState');
     send(inserted, 'addAppStateWithIdentifier:', gmail);
     steps.found = send(states, 'findFirstGoogleAppStateByAppIdentifier:', gmail).handle === added.handle;
     send(states, 'deleteGoogleAppState:', send(first, 'appStates')[1]);
     send(states, 'deleteWorkspaceState:', third);
     send(states, 'store:', null);
     steps.changedAfter = send(context, 'hasChanges');
     steps.tabs = send(second, 'appStates').map((state) => send(state, 'identifier'));
     const again = open('TsWorkspaceStates', ${JSON.stringify(file)});
     steps.read = send(again, 'all').map((state) => [
       send(state, 'active'),
       send(state, 'appStates').map((app) => send(app, 'dictionaryWithValues')),
     ]);
     steps.log = log();
     return steps;`,
  );
  const cleo = 'Ts_Gmail_cleo <&>\u0001';
  const url = 'https://example.org/';
  assert.deepStrictEqual(result, {
    changedAtFirst: false,
    activeIsFirst: true,
    active: [false, true, 0],
    changed: true,
    activeAgain: [true, false, 3],
    changedAgain: false,
    forgotten: [3, null],
    found: true,
    changedAfter: false,
    tabs: ['Ts_Contacts_bob@example.org', cleo],
    read: [
      [null, [{ identifier: cleo, url: null }]],
      [
        false,
        [
          { identifier: 'Ts_GoogleInbox_ann@example.org', url },
          { identifier: 'Ts_Calendar_', url },
        ],
      ],
      [
        true,
        [
          { identifier: 'Ts_Contacts_bob@example.org', url: null },
          { identifier: cleo, url: 'https://example.org/?a&b' },
        ],
      ],
    ],
    log: [],
  });

  // The file: what nobody has touched is as it was, and the rest is as the framework would have written it.
  const after = objectsIn(file);
  assert.strictEqual(fs.statSync(file).mode & 0o777, 0o640);
  assert.deepStrictEqual(fs.readdirSync(path.dirname(file)), ['WorkspaceStates.xml']);
  const text = fs.readFileSync(file, 'utf8');
  assert.ok(
    text.startsWith('<?xml version="1.0"?>\n<!DOCTYPE database SYSTEM "file:///System/Library/DTDs/CoreData.dtd">\n'),
    text.slice(0, 120),
  );
  assert.ok(
    text.includes('\n    <object type="WORKSPACESTATE" id="z102">\n        <attribute name="active" type="bool">1<'),
  );
  assert.ok(text.includes('type="1/1" destination="WORKSPACESTATE" idrefs="z102"></relationship>'));
  const { nextObjectID, ...rest } = parsed(file).databaseInfo;
  const trimmed = (value) => JSON.parse(JSON.stringify(value).replace(/(\\[nt]| )+/g, ' '));
  assert.deepStrictEqual(trimmed(rest), trimmed({ ...info, nextObjectID: undefined }));
  assert.deepStrictEqual(after.z500, before.z500);
  const newOnes = Object.keys(after).filter((id) => !(id in before));
  const gone = Object.keys(before).filter((id) => !(id in after));
  assert.strictEqual(newOnes.length, 3);
  assert.ok(
    newOnes.every((id) => Number(id.slice(1)) > 500 && Number(id.slice(1)) < Number(nextObjectID)),
    newOnes.join(),
  );
  assert.deepStrictEqual(gone, ['z106', 'z108']);
  const references = Object.values(after).flatMap(({ appstates, workspacestate }) => appstates || workspacestate || []);
  assert.deepStrictEqual(
    references.filter((id) => !(id in after)),
    [],
  );
});

test('an active workspace is made when there is none; what cannot be saved is undone', async (t) => {
  const home = homeWith(t, { workspaces: workspacesStore([{ active: false, appStates: [] }]).text() });
  const { workspaces: file } = previousVersion(home);
  const result = await inModule(
    t,
    home,
    `const fs = require('fs');
     const file = ${JSON.stringify(file)};
     const states = open('TsWorkspaceStates', file);
     const active = send(states, 'activeWorkspaceState');
     const made = [send(active, 'active'), send(states, 'all').length, send(states, 'activeWorkspaceState').handle === active.handle];
     fs.renameSync(file, file + '.away');
     fs.mkdirSync(file);
     send(states, 'deleteWorkspaceState:', active);
     send(states, 'store:', null);
     const undone = send(states, 'all').length;
     const failure = log();
     const none = open('TsWorkspaceStates', file);
     return {
       made, undone, failure,
       none: [send(none, 'all'), send(none, 'activeWorkspaceState'), send(none, 'insertNewWorkspaceState'),
              send(none, 'findFirstGoogleAppStateByAppIdentifier:', null)],
       log: log().slice(failure.length).map((line) => line.slice(0, 70)),
     };`,
  );
  assert.deepStrictEqual([result.made, result.undone, result.none], [[true, 2, true], 2, [[], null, null, null]]);
  assert.strictEqual(result.failure.length, 1);
  assert.match(result.failure[0], /^error Is a directory\n\(/);
  assert.deepStrictEqual(
    result.log,
    [
      "warning Couldn't attach persistence. ",
      'warning Could not execute TsWorkspaceStates#all query. (',
      'warning Could not execute TsWorkspaceStates#activeWorkspaceState query. (',
      'warning Could not execute TsWorkspaceStates#findFirstGoogleAppStateByAppIdentifier:',
    ].map((start, i) => (result.log[i].startsWith(start.slice(0, 70)) ? result.log[i] : start)),
  );
  assert.strictEqual(Object.keys(objectsIn(`${file}.away`)).length, 2);
});

test('accounts are found, changed and saved', async (t) => {
  const home = homeWith(t, { accounts: accountsStore([ann, bob, { ...bob, order: 3, nickname: 'Bob' }]).text() });
  const { accounts: file } = previousVersion(home);
  const keyring = await startKeyring(t, temporaryDirectory(t));
  const result = await inModule(
    t,
    home,
    `const file = ${JSON.stringify(file)};
     const accounts = open('TsAccounts', file);
     const [bob, ann, other] = send(accounts, 'all');
     const same = (a, b) => (a && a.handle) === (b && b.handle);
     const steps = {};
     steps.found = [
       same(send(accounts, 'findByUsername:', 'bob@example.org'), bob),
       same(send(accounts, 'findByUsername:sender:', 'bob@example.org', bob), other),
       send(accounts, 'findByUsername:', 'Bob@example.org'),
       same(send(accounts, 'findByNickname:', 'Bob'), other),
       send(accounts, 'findByNickname:sender:', 'Bob', other),
       send(accounts, 'hasBookmarks'),
       send(accounts, 'isAccessible:', ann),
       send(open('TsAccounts', file), 'isAccessible:', ann),
     ];
     steps.switches = ['detectUnreadCountTypeAsBOOL', 'isGmailChatBlockedAsBOOL', 'isGoogleDriveBlockedAsBOOL',
       'isNotificationEnabled', 'isNotifyNewMessages'].map((name) => [send(ann, name), send(bob, name)]);
     send(bob, 'setDetectUnreadCountTypeAsBOOL:', false);
     steps.recipients = [ann, bob].map((account) => send(account, 'autoBccRecipients').map((recipient) =>
       [send(recipient, 'address'), send(recipient, 'name')]));

     const components = (account) => {
       const rgb = send(send(account, 'color'), 'colorUsingColorSpaceName:', 'NSDeviceRGBColorSpace');
       return send(rgb, 'description');
     };
     const red = send('NSColor', 'colorWithDeviceRed:green:blue:alpha:', 1, 0, 0.5, 1);
     steps.blue = components(bob) === send(send(send('NSColor', 'systemBlueColor'), 'colorUsingColorSpaceName:', 'NSDeviceRGBColorSpace'), 'description');
     send(bob, 'setColor:', red);

     steps.bookmarks = send(ann, 'bookmarksOrdered').map((bookmark) => send(bookmark, 'order'));
     send(ann, 'addBookmarkForUrl:title:', 'https://example.org/new', 'New & <good>');
     send(bob, 'addBookmarkForUrl:title:', 'https://example.org/', 'First');

     for (const name of ['One', 'Two']) send(bob, 'addSignatureForEmail:name:', 'b@example.org', name);
     send(bob, 'addSignatureForEmail:name:', 'other@example.org', 'Two');
     const name = (signature) => signature && send(signature, 'name');
     steps.firstSignature = name(send(bob, 'defaultSignatureForEmail:', 'b@example.org'));
     send(send(bob, 'signatureForEmail:name:', 'b@example.org', 'Two'), 'setUseByDefault:', true);
     steps.signatures = [
       send(bob, 'signaturesForEmail:', 'b@example.org').map(name),
       name(send(bob, 'defaultSignatureForEmail:', 'b@example.org')),
       send(bob, 'defaultSignatureForEmail:', 'nobody'),
       send(bob, 'signatureForEmail:name:', 'other@example.org', 'One'),
     ];

     const item = send(bob, 'addDownloadItemWithPath:', '/tmp/report.pdf');
     send(item, 'setBytesExpected:', 2000);
     send(item, 'setBytesReceived:', 500);
     steps.pending = ['name', 'isFinished', 'progressInPercents', 'sizeHumanReadable'].map((key) => send(item, key));
     send(bob, 'deleteFinishedDownloadItems');
     steps.kept = send(bob, 'numberOfDownloadItems');
     send(item, 'setBytesReceived:', 2000);
     send(bob, 'deletePendingDownloadItems');
     steps.finished = [send(item, 'isFinished'), send(bob, 'numberOfDownloadItems')];
     send(bob, 'deleteFinishedDownloadItems');
     steps.deleted = [send(bob, 'numberOfDownloadItems'), send(item, 'path')];
     send(ann, 'deleteAllDownloadItems');
     steps.annsItems = send(ann, 'numberOfDownloadItems');

     send(bob, 'setPassword:storeInKeychain:', 'stored', true);
     steps.passwords = [send(bob, 'password'), keychain.countTransient()];
     send(bob, 'setPassword:storeInKeychain:', 'not stored', false);
     steps.passwords.push(send(bob, 'password'), keychain.countTransient());
     send(bob, 'setOauthRefreshToken:', 'token');
     send(bob, 'setIsNotificationEnabled:', true);
     steps.token = [send(bob, 'oauthRefreshToken')];
     send(bob, 'setIsNotificationEnabled:', false);
     steps.token.push(send(bob, 'oauthRefreshToken'));

     const context = send(accounts, 'context');
     send(context, 'deleteObject:', other);
     steps.saved = [send(context, 'save:', null), send(accounts, 'isAccessible:', other), send(other, 'username')];
     const again = send(open('TsAccounts', file), 'all');
     steps.again = again.map((account) => [
       send(account, 'username'),
       send(account, 'detectUnreadCountTypeAsBOOL'),
       components(account) === send(red, 'description'),
       send(account, 'bookmarksOrdered').map((bookmark) => send(bookmark, 'dictionaryWithValues')),
       send(account, 'signatures').length,
       send(account, 'isNotificationEnabled'),
     ]);
     send(accounts, 'detachPersistence:', null);
     steps.detached = [send(accounts, 'all').length, send(ann, 'username'), send(ann, 'dictionaryWithValues')];
     return steps;`,
    { env: { DBUS_SESSION_BUS_ADDRESS: keyring.address } },
  );
  const [, second] = ann.bookmarks;
  assert.deepStrictEqual(result, {
    found: [true, true, null, true, null, true, true, false],
    switches: [
      [false, true],
      [true, false],
      [false, false],
      [true, null],
      [false, null],
    ],
    recipients: [
      [
        ['x@example.org', ''],
        ['y@example.org', ''],
      ],
      [],
    ],
    blue: true,
    bookmarks: [10, 20],
    firstSignature: 'One',
    signatures: [['One', 'Two'], 'Two', null, null],
    pending: ['report.pdf', false, 25, '2 KB'],
    kept: 1,
    finished: [true, 1],
    deleted: [0, null],
    annsItems: 0,
    passwords: ['stored', 0, 'not stored', 1],
    token: ['token', null],
    saved: [true, false, null],
    again: [
      ['bob@example.org', false, true, [{ order: 10, title: 'First', url: 'https://example.org/' }], 3, false],
      [
        'ann@example.org',
        false,
        false,
        [second, ann.bookmarks[0], { order: 30, title: 'New & <good>', url: 'https://example.org/new' }],
        0,
        true,
      ],
    ],
    detached: [0, null, null],
  });
});

test('a colour that is none is the default', async (t) => {
  const archives = [Buffer.from('bplist00garbage'), Buffer.alloc(0)];
  const home = homeWith(t, { accounts: accountsStore(archives.map((colorData) => ({ colorData }))).text() });
  const { accounts: file } = previousVersion(home);
  const colors = await inModule(
    t,
    home,
    `return send(open('TsAccounts', ${JSON.stringify(file)}), 'all').map((account) =>
       send(send(account, 'color'), 'isEqual:', send('NSColor', 'systemBlueColor')));`,
  );
  assert.deepStrictEqual(colors, [true, true]);
});

test('identifiers of applications', async (t) => {
  const texts = {
    'Ts_Gmail_a@b.c': ['Gmail', 'a@b.c'],
    'Ts_GoogleInbox_a@b.c': ['GoogleInbox', 'a@b.c'],
    Ts_Calendar_: ['Calendar', ''],
    Ts_Contacts_Ts_Gmail_x: ['Contacts', 'Ts_Gmail_x'],
    Ts_Mail_x: 'UnknownIdentifier',
    Ts_Gmail: 'UnknownIdentifier',
    'ts_gmail_a@b.c': 'UnknownIdentifier',
    '': 'UnknownIdentifier',
  };
  const result = await inModule(
    t,
    temporaryDirectory(t),
    `const type = 'TsGoogleAppIdentifier';
     const read = (text) => send(type, 'identifierWithDescription:', text);
     const texts = ${JSON.stringify(Object.keys(texts))}.map((text) => {
       const identifier = read(text);
       if (identifier.raised) return identifier.reason === text && identifier.raised;
       return [send(identifier, 'type'), send(identifier, 'accountIdentifier'), send(identifier, 'description') === text];
     });
     const all = send(type, 'allWithAccountIdentifier:', 'a');
     const inbox = send(all[0], 'toGoogleInboxIdentifier');
     return {
       texts,
       all: all.map((each) => [send(each, 'description'), ...['isGmail', 'isGoogleInbox', 'isCalendar', 'isContacts'].map((is) => send(each, is))]),
       equal: [send(inbox, 'isEqual:', all[1]), send(inbox, 'hash') === send(all[1], 'hash'), send(inbox, 'isEqual:', all[0]),
               send(inbox, 'isEqual:', read('Ts_GoogleInbox_b')), send(inbox, 'isEqual:', type)],
     };`,
  );
  assert.deepStrictEqual(result, {
    texts: Object.values(texts).map((parts) => (Array.isArray(parts) ? [...parts, true] : parts)),
    all: [
      ['Ts_Gmail_a', true, false, false, false],
      ['Ts_GoogleInbox_a', false, true, false, false],
      ['Ts_Calendar_a', false, false, true, false],
      ['Ts_Contacts_a', false, false, false, true],
    ],
    equal: [true, true, false, false, false],
  });
});
