'use strict';

const { XMLParser } = require('fast-xml-parser');
const { assert, execFileSync, fs, path, test } = require('./support');
const { accountsStore, previousVersion, reported, scenarios, startKeyring, Store } = require('./support');
const { eventually, temporaryDirectory, workspacesStore } = require('./support');

const migrating = scenarios({
  fixture({ captureLog, native, sendMessage: send }) {
    captureLog();
    return {
      ...{ send, transient: send('TsTransientKeychain', 'sharedInstance') },
      open: (type, path) => send(send(type, 'alloc'), 'initWithPath:', path),
      /** The report, with the bookmarks in their order: it promises none. */
      report: (selection) => {
        const report = JSON.parse(native.getMigrationInfo(selection));
        for (const { bookmarks } of report?.accounts ?? []) bookmarks.sort((a, b) => a.order - b.order);
        return report;
      },
    };
  },
});

/** Scenarios in a home with these files of the previous version. */
function inHome(t, contents = {}, env = {}) {
  const home = temporaryDirectory(t);
  const files = previousVersion(home);
  files.write(contents);
  return Object.assign(migrating.with({ home, env }), files);
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
const empty = {};

const tabs = (...texts) => texts.map((text) => ({ identifier: `Ts_${text}`, url: 'https://example.org/' }));
const annsTabs = tabs('GoogleInbox_ann@example.org', 'Gmail_bob@example.org', 'Calendar_');
const workspaces = [
  { active: false, lastUpdatedAt: new Date('2014-05-06T07:08:09Z'), appStates: tabs('Contacts_bob@example.org') },
  { active: true, lastUpdatedAt: new Date('2015-01-01T00:00:00Z'), appStates: annsTabs },
  { active: 3, appStates: [] },
];

const tab = (email, app) => ({ email, app });
const ofBob = (app) => tab('bob@example.org', app);
const reportedWorkspaces = [
  { 'active?': true, tabs: [tab('ann@example.org', 'GoogleInbox'), ofBob('Gmail'), tab('', 'Calendar')] },
  { 'active?': false, tabs: [ofBob('Contacts')] },
  { 'active?': 3, tabs: [] },
];

const plist = (entries) => {
  const contents = Object.entries(entries).map(([key, value]) => `<key>${key}</key>${value}`);
  return `<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict>${contents.join('')}</dict></plist>`;
};

// { DownloadDestinationPath: '/home/ann/Downloads', HideTabBar: true, ShowStatusBar: 7, Unknown: 1 }
const binaryPreferences = Buffer.from(
  'YnBsaXN0MDDUAQIDBAUGBwhfEBdEb3dubG9hZERlc3RpbmF0aW9uUGF0aF8QCkhpZGVUYWJCYXJfEA1TaG93U3RhdHVzQmFyXxAHVW5r' +
    'bm93bl8QEy9ob21lL2Fubi9Eb3dubG9hZHMJEAcQAQgRKzhIUmhpawAAAAAAAAEBAAAAAAAAAAkAAAAAAAAAAAAAAAAAAABt',
  'base64',
);

for (const style of ['framework', 'model']) {
  test(`the report has everything, with names as in the ${style} and passwords out of the keyring`, async (t) => {
    const keyring = await startKeyring(t, temporaryDirectory(t));
    const files = {
      accounts: accountsStore([ann, bob, bella, empty], style).text(),
      workspaces: workspacesStore(workspaces, style).text(),
      preferences: plist({ HideTabBar: '<true/>', Other: '<true/>', WebViewTextSizeMultiplier: '<real>1.5</real>' }),
    };
    const run = inHome(t, files, { DBUS_SESSION_BUS_ADDRESS: keyring.address });
    const store = (account, password, service = 'Tessaro 3') =>
      keyring.secretTool(['store', '--label=x', 'service', service, 'account', account], password);
    await store('ann@example.org', 'gänse 😀');
    await store('ann@example.org (oauth)', 'token');
    await store('bob@example.org', 'of another service', 'Kolvar');
    await store('', 'of no account');
    const result = await run(t, ({ log, native, report, send, transient }) => {
      const passwords = { 'ann@example.org': 'not this one', 'bob@example.org': 'in memory' };
      for (const [account, password] of Object.entries(passwords))
        send(transient, 'setPassword:forAccount:', password, account);
      return { has: native.hasPreviousVersion(), report: report(null), log: log() };
    });
    const report = {
      'has-previous-version?': true,
      accounts: [reported(empty), reported(bella), reported(bob, 'in memory'), reported(ann, 'gänse 😀')],
      workspaces: reportedWorkspaces,
      prefs: { HideTabBar: true, WebViewTextSizeMultiplier: 1.5 },
    };
    assert.deepStrictEqual(result, { has: true, report, log: [] });
  });
}

test('the selection is a text that contains the names of sections', (t) => {
  const run = inHome(t, {
    accounts: accountsStore([bob]).text(),
    workspaces: workspacesStore(workspaces).text(),
    preferences: plist({ HideTabBar: '<true/>' }),
  });
  const rows = [
    [null, 'accounts has-previous-version? prefs workspaces'],
    ['', 'has-previous-version?'],
    ['prefs', 'has-previous-version? prefs'],
    ['accounts,prefs', 'accounts has-previous-version? prefs'],
    ['myworkspaces2', 'has-previous-version? workspaces'],
    ['Prefs', 'has-previous-version?'],
  ];
  return run.table(t, rows, ({ report }, selection) => Object.keys(report(selection)).sort().join(' '));
});

test('missing files are empty sections', async (t) => {
  const run = inHome(t);
  const report = (has, more) => ({ 'has-previous-version?': has, accounts: [], workspaces: [], prefs: {}, ...more });
  const prefs = { DoNotDisturb: false };
  const states = [run.workspaces, workspacesStore(workspaces).text()];
  const preferences = [run.preferences, plist({ DoNotDisturb: '<false/>' })];
  const rows = [
    [[], report(false)],
    // Workspaces alone are no previous version; preferences are read all the same.
    [[states, preferences], report(false, { prefs })],
    [[[run.accounts, accountsStore([]).text()]], report(true, { prefs, workspaces: reportedWorkspaces })],
  ];
  await run.table(t, rows, ({ equal, fs, native, report }, contents) => {
    for (const [file, text] of contents) fs.writeFileSync(file, text);
    equal(native.hasPreviousVersion(), false);
    return report(undefined);
  });
});

test('preferences are read in either format, or not at all', async (t) => {
  const run = inHome(t);
  const prefs = { DownloadDestinationPath: '/home/ann/Downloads', HideTabBar: true, ShowStatusBar: 7 };
  const texts = { HideTabBar: '<true/>', ShowStatusBar: '<integer>7</integer>' };
  const xml = plist({ DownloadDestinationPath: '<string>/home/ann/Downloads</string>', ...texts });
  const rows = [
    ['XML', xml, prefs],
    ['binary', binaryPreferences, prefs],
    ['nothing', '', {}],
    ['truncated', xml.slice(0, 200), {}],
    ['truncated binary', binaryPreferences.subarray(0, 60), {}],
    ['garbage', Buffer.from('bplist\xff\0', 'latin1'), {}],
    ['no dictionary', '<plist version="1.0"><array><true/></array></plist>', {}],
    ['a binary text beyond the end', Buffer.from(binaryPreferences).fill(0xec, 19, 20), {}],
    ['40 UTF-16 units beyond the end', Buffer.from(binaryPreferences).fill(0x6f, 82, 83).fill(40, 84, 85), {}],
    ['deep XML', xml.replace('<true/>', '<array>'.repeat(1e5) + '</array>'.repeat(1e5)), {}],
    ['deep text', `{HideTabBar = ${'('.repeat(1e5)}${')'.repeat(1e5)};}`, {}],
    ['a date, which JSON cannot hold', plist({ ShowStatusBar: '<date>2015-01-01T00:00:00Z</date>' }), null],
  ];
  const read = ({ fs, report }, _, contents, file) => {
    fs.writeFileSync(file, contents);
    return report('prefs')?.prefs;
  };
  await run.table(t, rows, read, run.preferences);
  const [value, warnings] = await run(t, ({ log, native }) => [native.getMigrationInfo('prefs'), log(2)]);
  assert.deepStrictEqual([value, ...warnings], [null, "Couldn't convert to JSON"]);
  const expectNone = async () => assert.deepStrictEqual(await run(t, ({ report }) => report('prefs').prefs), {});
  fs.writeFileSync(run.preferences, xml.replace('</plist>', `${' '.repeat(16 << 20)}</plist>`));
  await expectNone();
  fs.rmSync(run.preferences);
  execFileSync('mkfifo', [run.preferences]);
  await expectNone();
});

test('a tab of an unknown application spoils the report, and not the process', async (t) => {
  const run = inHome(t, { accounts: accountsStore([bob]).text() });
  const rows = ['Ts_Drive_ann@example.org', 'Ts_Gmail', '', undefined].map((identifier) => [
    workspacesStore([{ active: true, appStates: [{ identifier }] }]).text(),
    [null, true, '{"has-previous-version?":true}'],
  ]);
  const ask = ({ fs, native, news }, text, file) => {
    fs.writeFileSync(file, text);
    const value = native.getMigrationInfo('workspaces');
    return [value, news().some((line) => line.includes('UnknownIdentifier')), native.getMigrationInfo('')];
  };
  await run.table(t, rows, ask, run.workspaces);
});

test('a file that is no store is reported in the log, and has no accounts', async (t) => {
  const run = inHome(t);
  const good = accountsStore([ann, bob]).text();
  const bomb = `<!DOCTYPE database [${Array.from({ length: 20 }, (_, i) => `<!ENTITY e${i + 1} "${`&e${i};`.repeat(20)}">`).join('')}]>`;
  const contents = {
    empty: '',
    'of one byte': '<',
    truncated: good.slice(0, -30),
    'truncated in an object': good.slice(0, good.length / 2),
    'of another root': good.replace(/database>/g, 'databank>'),
    'no XML': Buffer.from([0, 1, 2, 0xff, 0xfe]),
    'of an unknown encoding': good.replace('?>', ' encoding="EBCDIC-US"?>'),
    'nested too deeply': good.replace('</database>', `${'<a>'.repeat(1e6)}${'</a>'.repeat(1e6)}</database>`),
    'of two roots': `${good}<object`,
    'an entity bomb without objects': `${bomb}<databases>&e20;</databases>`,
  };
  const commands = {
    'a folder': ['mkdir'],
    'a pipe': ['mkfifo'],
    'a device': ['ln', '-s', '/dev/zero'],
    'too large': ['truncate', '--size=1G'],
  };
  const at = (name) => path.join(run.folder, name);
  for (const [name, text] of Object.entries(contents)) fs.writeFileSync(at(name), text);
  for (const [name, [command, ...args]] of Object.entries(commands)) execFileSync(command, [...args, at(name)]);
  const ask = ({ fs, native, news, report }, name, folder, file) => {
    fs.renameSync(`${folder}/${name}`, file);
    const answers = [native.hasPreviousVersion(), report('accounts').accounts];
    fs.rmSync(file, { recursive: true });
    const lines = news().map((line) => line.replace(/[.] .*/s, ''));
    return [...answers, ...lines.sort()];
  };
  const failures = ['Could not execute TsAccounts#all query', "Couldn't attach persistence"];
  const expected = [false, [], ...failures.flatMap((line) => [line, line])];
  const rows = Object.keys({ ...contents, ...commands }).map((name) => [name, expected]);
  await run.table(t, rows, ask, run.folder, run.accounts);
});

test('a store of any size is read behind a link, whatever else it contains', async (t) => {
  const run = inHome(t);
  fs.symlinkSync(path.join(temporaryDirectory(t), 'elsewhere.xml'), run.accounts);
  const many = manyAccounts(5000, 10);
  const plain = accountsStore([ann, bob]).text();
  const changed = (...change) => plain.replace(...change);
  const dangling = new Store();
  const one = dangling.add('Account', { order: 1, username: 'ann@example.org' });
  const other = dangling.add('Account', { order: 2, username: 'bob@example.org' });
  const bookmark = dangling.add('Bookmark', { order: 1, title: 'a', url: 'b' });
  // Missing, of another entity, itself, twice.
  dangling.relate(one, 'bookmarks', 'Bookmark', ['z999', other, one, bookmark, bookmark]);
  dangling.relate(other, 'bookmarks', 'Bookmark', [bookmark]);
  dangling.relate(bookmark, 'account', 'Account', bookmark);
  const bookmarks = [{ order: 1, title: 'a', url: 'b' }];
  const both = [reported(bob), reported(ann)];
  const bobAs = (username) => [reported({ ...bob, username }), reported(ann)];
  const annAs = (values) => [reported(bob), reported({ ...ann, ...values })];
  const withType = (type) => changed(/<!DOCTYPE[^>]*>/, `<!DOCTYPE database [${type}]>`);
  const atEnd = (text) => changed('</database>', `${text}</database>`);
  const future = '<object type="FUTURE" id="z7"><attribute name="order" type="int32">1</attribute></object><object';
  const property = '<attribute name="future" type="string">x</attribute></object>';
  const numbers = changed(/(name="defaultinboxtype" type=")[^<]*/, '$1int32">NaN').replace('"bool">1', '"bool">maybe');
  const number = changed(/(name="detectunreadcounttype" type=")[^<]*/, '$1int16">2');
  const sections = '<!-- </object> -->bob<![CDATA[@example.org</object>]]>';
  const escapes = '>\\u3c00b\\u2600\\u0a00\\u4e00ob\\u@';
  const bomb = '<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;">';
  const inLatin = accountsStore([{ ...bob, username: 'bób' }]).text().replace('?>', ' encoding="ISO-8859-1"?>'); // prettier-ignore
  const names = ['ann@example.org', 'bob@example.org'];
  const related = names.map((username, i) => reported({ order: i + 1, username, bookmarks }));
  const rows = [
    ['an unknown entity', changed('<object', future), both],
    ['an unknown property', changed('</object>', property), both],
    ['malformed numbers', numbers, annAs({ defaultInboxType: undefined, autoAuthenticate: undefined })],
    ['a number where the model has a boolean', number, annAs({ detectUnreadCountType: 2 })],
    ['comments and sections', changed('bob@example.org', sections), bobAs('bob@example.org</object>')],
    ['escapes', changed('>bob@', escapes), bobAs('<b&\n\\u4e00ob\\u@example.org')],
    ['an entity bomb', withType(bomb).replace('bob@', '&b;'), bobAs('&b;example.org')],
    ['a file', withType('<!ENTITY a SYSTEM "file:///etc/passwd">').replace('bob@', '&a;'), bobAs('&a;example.org')],
    ['dangling references', dangling.text(), related],
    ['the same identifier twice', atEnd('<object type="ACCOUNT" id="z102"></object>'), both],
    ['a self-closed object at the end', atEnd('<object type="ACCOUNT" id="z900"/>'), [reported(empty), ...both]],
    ['line ends of another system', changed(/\n/g, '\r\n'), both],
    ['another declared encoding', Buffer.from(inLatin, 'latin1'), [reported({ ...bob, username: 'bób' })]],
    ['a byte order mark', `\ufeff${plain}`, both],
    ['UTF-16', Buffer.from(`\ufeff${plain}`, 'utf16le'), both],
  ];
  const read = ({ fs, report }, _, contents, file) => {
    fs.writeFileSync(file, contents);
    return report('accounts').accounts;
  };
  await run.table(t, rows, read, run.accounts);
  fs.writeFileSync(run.accounts, accountsStore(many).text());
  const result = await run(t, ({ report }) => report('accounts').accounts);
  assert.deepStrictEqual(result, many.map((account) => reported(account))); // prettier-ignore
});

const manyAccounts = (count, bookmarksEach) => {
  const bookmark = (_, order) => ({ order, title: `Bookmark ${order}`, url: 'https://example.org/' });
  const bookmarks = Array.from({ length: bookmarksEach }, bookmark);
  return Array.from({ length: count }, (_, order) => ({ order, username: `${order}@x`, bookmarks }));
};

test('a store that is being written is read as a whole or not at all', async (t) => {
  const texts = [accountsStore(manyAccounts(3, 40)).text(), accountsStore(manyAccounts(40, 3)).text()];
  const run = inHome(t, { accounts: texts[0] });
  const overwrite = ({ fs, print }, file, [one, other]) => {
    print('ready');
    for (;;) for (const text of [other, one]) fs.writeFileSync(file, text);
  };
  const { output } = run.start(t, overwrite, run.accounts, texts);
  await eventually(() => output.stdout !== '', 'the first text');
  const counts = await run(t, ({ report }) => {
    const counts = { 0: 0, 3: 0, 40: 0 };
    const end = Date.now() + 20000;
    for (let i = 0; i < 200 || (Math.min(counts[3], counts[40]) === 0 && Date.now() < end); ++i) {
      ++counts[report('accounts').accounts.length];
    }
    return counts;
  });
  assert.ok(counts[3] > 0 && counts[40] > 0, JSON.stringify(counts));
  assert.deepStrictEqual(Object.keys(counts), ['0', '3', '40']);
});

const parser = new XMLParser({ ignoreAttributes: false, parseTagValue: false, trimValues: false });
const parsed = (file) => parser.parse(fs.readFileSync(file, 'utf8')).database;

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
  const future = '    <object type="FUTURE" id="z500"><attribute name="x" type="string"> </attribute></object>\n';
  // The object that is deleted below: the second one of its name must not take its place.
  const twice = '    <object type="WORKSPACESTATE" id="z108"></object>\n';
  const run = inHome(t, { workspaces: workspacesStore(workspaces).text(future + twice) });
  const { workspaces: file } = run;
  fs.chmodSync(file, 0o640);
  const before = objectsIn(file);
  const info = parsed(file).databaseInfo;
  const change = ({ equal, log, open, send }, path) => {
    const states = open('TsWorkspaceStates', path);
    const context = send(states, 'context');
    const all = send(states, 'all');
    const [first, second, third] = all;
    const active = () => all.map((state) => send(state, 'active'));
    equal(send(context, 'hasChanges'), false);
    equal(send(states, 'activeWorkspaceState'), first);

    send(states, 'setActiveWorkspaceState:', second);
    equal([...active(), send(context, 'hasChanges')], [false, true, 0, true]);
    send(context, 'rollback');
    equal([...active(), send(context, 'hasChanges')], [true, false, 3, false]);

    const gmail = send('TsGoogleAppIdentifier', 'gmailIdentifierWithAccountIdentifier:', 'cleo <&>\u0001');
    const forgotten = send(states, 'insertNewWorkspaceState');
    send(forgotten, 'addAppStateWithIdentifier:', gmail);
    send(context, 'rollback');
    equal([send(states, 'all').length, send(forgotten, 'lastUpdatedAt')], [3, null]);

    send(states, 'setActiveWorkspaceState:', second);
    const added = send(second, 'addAppStateWithIdentifier:', gmail);
    send(added, 'setUrl:', 'https://example.org/?a&b');
    send(send(states, 'insertNewWorkspaceState'), 'addAppStateWithIdentifier:', gmail);
    equal(send(states, 'findFirstGoogleAppStateByAppIdentifier:', gmail), added);
    send(states, 'deleteGoogleAppState:', send(first, 'appStates')[1]);
    send(states, 'deleteWorkspaceState:', third);
    send(states, 'store:', null);
    equal([send(context, 'hasChanges'), log()], [false, []]);
    return send(open('TsWorkspaceStates', path), 'all').map((state) => [
      send(state, 'active'),
      ...send(state, 'appStates').flatMap((app) => Object.entries(send(app, 'dictionaryWithValues')).sort().flat()),
    ]);
  };
  const saved = (identifier, url = null) => ['identifier', identifier, 'url', url];
  const url = 'https://example.org/';
  const cleo = 'Ts_Gmail_cleo <&>\u0001';
  assert.deepStrictEqual(await run(t, change, file), [
    [null, ...saved(cleo)],
    [false, ...saved('Ts_GoogleInbox_ann@example.org', url), ...saved('Ts_Calendar_', url)],
    [true, ...saved('Ts_Contacts_bob@example.org', url), ...saved(cleo, 'https://example.org/?a&b')],
  ]);

  // In the file untouched objects are as before, and the others as the framework writes them.
  const after = objectsIn(file);
  assert.strictEqual(fs.statSync(file).mode & 0o777, 0o640);
  assert.deepStrictEqual(fs.readdirSync(path.dirname(file)), ['WorkspaceStates.xml']);
  const text = fs.readFileSync(file, 'utf8');
  for (const part of [
    '<?xml version="1.0"?>\n<!DOCTYPE database SYSTEM "file:///System/Library/DTDs/CoreData.dtd">\n',
    '\n    <object type="WORKSPACESTATE" id="z102">\n        <attribute name="active" type="bool">1<',
    'type="1/1" destination="WORKSPACESTATE" idrefs="z102"></relationship>',
  ]) {
    assert.ok(text.includes(part), part);
  }
  const { nextObjectID, ...rest } = parsed(file).databaseInfo;
  const trimmed = (value) => JSON.parse(JSON.stringify(value).replace(/(\\[nt]| )+/g, ' '));
  assert.deepStrictEqual(trimmed(rest), trimmed({ ...info, nextObjectID: undefined }));
  assert.deepStrictEqual(after.z500, before.z500);
  const added = Object.keys(after).filter((id) => !(id in before));
  const numbers = added.map((id) => Number(id.slice(1)));
  assert.ok(numbers.length === 3 && numbers.every((id) => id > 500 && id < Number(nextObjectID)), numbers.join());
  const gone = Object.keys(before).filter((id) => !(id in after));
  assert.deepStrictEqual(gone, ['z106', 'z108']);
  const references = Object.values(after).flatMap(({ appstates, workspacestate }) => appstates || workspacestate || []);
  for (const id of references) assert.ok(id in after, id);
});

test('an active workspace is made when there is none; a failed save is undone', async (t) => {
  const run = inHome(t, { workspaces: workspacesStore([{ active: false, appStates: [] }]).text() });
  const change = ({ assert, equal, fs, news, open, send }, file) => {
    const states = open('TsWorkspaceStates', file);
    const active = send(states, 'activeWorkspaceState');
    equal([send(active, 'active'), send(states, 'all').length], [true, 2]);
    equal(send(states, 'activeWorkspaceState'), active);
    fs.renameSync(file, `${file}.away`);
    fs.mkdirSync(file);
    send(states, 'deleteWorkspaceState:', active);
    send(states, 'store:', null);
    equal(send(states, 'all').length, 2);
    assert.match(news().join(), /^Is a directory\n\(/);

    const none = open('TsWorkspaceStates', file);
    const find = (...message) => send(none, ...message);
    equal([find('all'), find('activeWorkspaceState'), find('insertNewWorkspaceState')], [[], null, null]);
    equal(find('findFirstGoogleAppStateByAppIdentifier:', null), null);
    return news();
  };
  const lines = await run(t, change, run.workspaces);
  const query = (name) => `Could not execute TsWorkspaceStates#${name}`;
  const queries = ['all query. (', 'activeWorkspaceState query. (', 'findFirstGoogleAppStateByAppIdentifier:'];
  const failed = ["Couldn't attach persistence. ", ...queries.map(query)];
  failed.forEach((start, i) => assert.ok(lines[i].startsWith(start), lines[i]));
  assert.strictEqual(lines.length, failed.length);
  assert.strictEqual(Object.keys(objectsIn(`${run.workspaces}.away`)).length, 2);
});

test('accounts are found, changed and saved', async (t) => {
  const keyring = await startKeyring(t, temporaryDirectory(t));
  const other = { ...bob, order: 3, nickname: 'Bob', colorData: Buffer.alloc(0) };
  const accounts = accountsStore([{ ...ann, colorData: Buffer.from('bplist00garbage') }, bob, other]).text();
  const run = inHome(t, { accounts }, { DBUS_SESSION_BUS_ADDRESS: keyring.address });
  const work = async ({ equal, get, open, send, transient }, file, annsBookmarks) => {
    const accounts = open('TsAccounts', file);
    const find = (...message) => send(accounts, ...message);
    const [bob, ann, other] = find('all');
    equal(find('findByUsername:', 'bob@example.org'), bob);
    equal(find('findByUsername:sender:', 'bob@example.org', bob), other);
    equal(find('findByUsername:', 'Bob@example.org'), null);
    equal(find('findByNickname:', 'Bob'), other);
    equal(find('findByNickname:sender:', 'Bob', other), null);
    equal([find('hasBookmarks'), find('isAccessible:', ann)], [true, true]);
    equal(send(open('TsAccounts', file), 'isAccessible:', ann), false);

    const getEach = (account, ...names) => names.map((name) => send(account, name));
    const ofEach = (all, name) => all.map((each) => send(each, name));
    const blocked = ['isGmailChatBlockedAsBOOL', 'isGoogleDriveBlockedAsBOOL'];
    const switches = ['detectUnreadCountTypeAsBOOL', ...blocked, 'isNotificationEnabled', 'isNotifyNewMessages'];
    equal(getEach(ann, ...switches), [false, true, false, true, false]);
    equal(getEach(bob, ...switches), [true, false, false, null, null]);
    send(bob, 'setDetectUnreadCountTypeAsBOOL:', false);
    const recipients = (account) =>
      send(account, 'autoBccRecipients').flatMap((each) => getEach(each, 'address', 'name'));
    equal([ann, bob].map(recipients), [['x@example.org', '', 'y@example.org', ''], []]);

    const described = (color) => send(send(color, 'colorUsingColorSpaceName:', 'NSDeviceRGBColorSpace'), 'description');
    const colorOf = (account) => described(send(account, 'color'));
    const red = send('NSColor', 'colorWithDeviceRed:green:blue:alpha:', 1, 0, 0.5, 1);
    const blue = described(send('NSColor', 'systemBlueColor'));
    // Also without a colour, or with a malformed one.
    equal([bob, ann, other].map(colorOf), [blue, blue, blue]);
    send(bob, 'setColor:', red);

    equal(ofEach(send(ann, 'bookmarksOrdered'), 'order'), [10, 20]);
    send(ann, 'addBookmarkForUrl:title:', 'https://example.org/new', 'New & <good>');
    send(bob, 'addBookmarkForUrl:title:', 'https://example.org/', 'First');

    const [mine, others] = ['b@example.org', 'other@example.org'];
    for (const name of ['One', 'Two']) send(bob, 'addSignatureForEmail:name:', mine, name);
    send(bob, 'addSignatureForEmail:name:', others, 'Two');
    const nameOfDefault = () => send(send(bob, 'defaultSignatureForEmail:', mine), 'name');
    equal(nameOfDefault(), 'One');
    send(send(bob, 'signatureForEmail:name:', mine, 'Two'), 'setUseByDefault:', true);
    equal(nameOfDefault(), 'Two');
    equal(ofEach(send(bob, 'signaturesForEmail:', mine), 'name'), ['One', 'Two']);
    equal(send(bob, 'defaultSignatureForEmail:', 'nobody'), null);
    equal(send(bob, 'signatureForEmail:name:', others, 'One'), null);

    const item = send(bob, 'addDownloadItemWithPath:', '/tmp/report.pdf');
    const count = (account) => send(account, 'numberOfDownloadItems');
    send(item, 'setBytesExpected:', 2000);
    send(item, 'setBytesReceived:', 500);
    const pending = getEach(item, 'name', 'isFinished', 'progressInPercents', 'sizeHumanReadable');
    equal(pending, ['report.pdf', false, 25, '2 KB']);
    send(bob, 'deleteFinishedDownloadItems');
    equal(count(bob), 1);
    send(item, 'setBytesReceived:', 2000);
    send(bob, 'deletePendingDownloadItems');
    equal([send(item, 'isFinished'), count(bob)], [true, 1]);
    send(bob, 'deleteFinishedDownloadItems');
    send(ann, 'deleteAllDownloadItems');
    equal([count(bob), send(item, 'path'), count(ann)], [0, null, 0]);

    for (const isStored of [false, true]) {
      send(bob, 'setPassword:storeInKeychain:', `stored: ${isStored}`, isStored);
      const inMemory = isStored ? {} : { 'bob@example.org': 'stored: false' };
      equal([send(bob, 'password'), get(transient, 'passwordsByAccount')], [`stored: ${isStored}`, inMemory]);
    }
    send(bob, 'setOauthRefreshToken:', 'token');
    for (const isEnabled of [true, false]) {
      send(bob, 'setIsNotificationEnabled:', isEnabled);
      equal(send(bob, 'oauthRefreshToken'), isEnabled ? 'token' : null);
    }

    const context = send(accounts, 'context');
    send(context, 'deleteObject:', other);
    equal([send(context, 'save:', null), find('isAccessible:', other), send(other, 'username')], [true, false, null]);
    const [savedBob, savedAnn, ...rest] = send(open('TsAccounts', file), 'all');
    const saved = ['username', 'detectUnreadCountTypeAsBOOL', 'isNotificationEnabled'];
    equal(getEach(savedBob, ...saved), ['bob@example.org', false, false]);
    equal(getEach(savedAnn, ...saved), ['ann@example.org', false, true]);
    equal([colorOf(savedBob), colorOf(savedAnn), rest], [described(red), blue, []]);
    equal([send(savedBob, 'signatures').length, send(savedAnn, 'signatures').length], [3, 0]);
    const bookmarks = (account) => ofEach(send(account, 'bookmarksOrdered'), 'dictionaryWithValues');
    equal(bookmarks(savedBob), [{ order: 10, title: 'First', url: 'https://example.org/' }]);
    const added = { order: 30, title: 'New & <good>', url: 'https://example.org/new' };
    equal(bookmarks(savedAnn), [...annsBookmarks, added]);

    find('detachPersistence:', null);
    equal([find('all').length, ...getEach(ann, 'username', 'dictionaryWithValues')], [0, null, null]);
  };
  await run(t, work, run.accounts, [...ann.bookmarks].reverse());
});

test('identifiers of applications', async (t) => {
  const rows = [
    ['Ts_Gmail_a@b.c', 'Gmail a@b.c Ts_Gmail_a@b.c'],
    ['Ts_GoogleInbox_a@b.c', 'GoogleInbox a@b.c Ts_GoogleInbox_a@b.c'],
    ['Ts_Calendar_', 'Calendar  Ts_Calendar_'],
    ['Ts_Contacts_Ts_Gmail_x', 'Contacts Ts_Gmail_x Ts_Contacts_Ts_Gmail_x'],
    ...['Ts_Mail_x', 'Ts_Gmail', 'ts_gmail_a@b.c', ''].map((text) => [text, `UnknownIdentifier ${text}`]),
  ];
  await migrating.table(t, rows, ({ send }, text) => {
    const identifier = send('TsGoogleAppIdentifier', 'identifierWithDescription:', text);
    if (identifier.raised) return `${identifier.raised} ${identifier.reason}`;
    return ['type', 'accountIdentifier', 'description'].map((name) => send(identifier, name)).join(' ');
  });
});
