'use strict';

const { assert, fs, path, test } = require('./support');
const { eventually, scenarios, startBus, startKeyring, temporaryDirectory, temporaryFiles } = require('./support');

const status = { parameter: -50, unavailable: -25291, notFound: -25300, locked: -25308, decode: -26275 };
const service = 'Tessaro 3';
const environmentOf = ({ address }) => ({ DBUS_SESSION_BUS_ADDRESS: address });

const keyringOf = (t) => startKeyring(t, temporaryDirectory(t));

const plain = scenarios({
  fixture: ({ sendMessage: send }) => ({ send, shared: send('TsKeychain', 'sharedInstance') }),
});
const at = (bus) => plain.with({ env: environmentOf(bus) });

/** Stores an item with another program. */
const store = (keyring, account, secret, of = service, ...more) =>
  keyring.secretTool(['store', '--label=x', 'service', of, 'account', account, ...more], secret);

/** Makes each call, [selector or function, …arguments], and gives its result and the messages it logs: "level text". */
const callEach = ({ captureLog, capturedLog, flushLog, native, send, shared }, calls) => {
  const levels = { 1: 'error', 2: 'warning', 4: 'info' };
  captureLog();
  let before = 0;
  return calls.map(([name, ...args]) => {
    const call = native[`${name}ForAccount`];
    const result = call ? call(...args) : send(shared, name, ...args);
    flushLog();
    const log = capturedLog();
    const messages = log.slice(before).map(({ flag, text }) => `${levels[flag]} ${text}`);
    before = log.length;
    return [typeof result === 'string' ? JSON.parse(result) : (result ?? null), ...messages];
  });
};
const [write, erase, list] = ['setPassword:forAccount:', 'removePasswordForAccount:', 'allAccounts'];

/** A table's rows are [call, result, …messages]. */
async function expectCalls(t, run, table) {
  const calls = table.map(([call]) => call);
  (await run(t, callEach, calls)).forEach((result, i) => assert.deepStrictEqual([table[i][0], ...result], table[i]));
}

test('script stores, reads, changes and removes passwords', async (t) => {
  const keyring = await keyringOf(t);
  const removed = 'info Removed keychain entry for account ann';
  const notDeleted = `error Could not find keychain item in order to delete it. (account=true, error=${status.notFound})`;
  const [get, set, remove] = ['getPassword', 'setPassword', 'removePassword'];
  const ok = { 'ok?': true };
  const notSet = 'error Not setting password as either password or account parameters are nil';
  await expectCalls(t, at(keyring), [
    [[get, 'ann'], { password: null, ...ok }],
    [[set, 'gänse', 'ann'], ok, 'info Added password to keychain. (account=ann, passwordLength=5)'],
    [[get, 'ann'], { password: 'gänse', ...ok }],
    [[set, '😀', 'ann', { ignored: true }], ok, 'info Modified password in keychain. (account=ann, passwordLength=2)'],
    [[get, 'ann'], { password: '😀', ...ok }],
    [[set, 17, true], ok, 'info Added password to keychain. (account=true, passwordLength=2)'],
    [[set, null, 'ann'], null, notSet],
    [[set, 'secret', null], null, notSet],
    [[remove, 'ann'], null, "info Removed keychain entry 'ann' (Tessaro 3).", removed],
    [[remove, 'ann'], null, removed],
    [[write, null, 'true'], ok, 'info Deleted password from keychain. (account=true)'],
    [[write, null, 'true'], { error: status.notFound, 'ok?': false }, notDeleted],
    [[erase, 'true'], false],
  ]);
});

test('passwords are shared with other programs byte for byte, in both directions', async (t) => {
  const keyring = await keyringOf(t);
  const secrets = {
    empty: '',
    'with\u00a0space and / = "quotes"': 'two words',
    nul: 'a\0b\0',
    emoji: '👩‍👩‍👧 \u{10ffff}',
    mark: '\ufeffafter a mark',
    lines: 'a\r\nb\n',
    long: 'ü'.repeat(32768),
    '': 'of an account without a name',
    ['a'.repeat(2000)]: 'long account',
  };
  const child = await at(keyring).resident(t);
  const calls = Object.entries(secrets).map(([account, secret]) => ['setPassword', secret, account]);
  for (const [result, ...messages] of await child.tell(callEach, calls)) {
    assert.deepStrictEqual(result, { 'ok?': true }, messages.join());
  }
  for (const [account, secret] of Object.entries(secrets)) {
    const seen = await keyring.secretTool(['lookup', 'service', service, 'account', account]);
    assert.strictEqual(seen.toString(), secret, account);
  }
  await store(keyring, 'emoji', 'changed');
  await store(keyring, 'foreign', 'new');
  const expected = { ...secrets, emoji: 'changed', foreign: 'new' };
  const readEach = ({ native }, names) => names.map((name) => JSON.parse(native.getPasswordForAccount(name)).password);
  assert.deepStrictEqual(await child.tell(readEach, Object.keys(expected)), Object.values(expected));
});

test('malformed items are failures; of two items of one account, one is read, written and removed', async (t) => {
  const keyring = await keyringOf(t);
  await store(keyring, 'bytes', Buffer.from([0xff, 0xfe, 0x00, 0x41]));
  for (const secret of ['second', 'first']) await store(keyring, 'ann', secret, service, 'kind', secret);
  const [read, written, ...results] = await at(keyring)(t, callEach, [
    ['getPassword', 'ann'],
    ['setPassword', 'written', 'ann'],
    [list],
    ...Array(3).fill([erase, 'ann']),
    ['getPassword', 'bytes'],
    ['getPassword', 'a\0b'],
    ['setPassword', 'x', 'a\0b'],
  ]);
  assert.ok(['first', 'second'].includes(read[0].password));
  assert.match(written[1], /^info Modified/);
  const failure = (error) => ({ 'ok?': false, error });
  const answers = results.map(([result]) => (Array.isArray(result) ? result.sort() : result));
  const codes = [failure(status.decode), failure(status.parameter)];
  assert.deepStrictEqual(answers, [['ann', 'bytes'], true, true, false, ...codes, { 'ok?': true }]);
});

test('two hundred accounts are listed and removed; other services keep theirs', async (t) => {
  const keyring = await keyringOf(t);
  await keyring.useMemory();
  const others = ['Kolvar', 'Tessaro'];
  for (const other of others) await store(keyring, 'ann', other, other);
  const counts = await at(keyring)(t, ({ native, send, shared }) => {
    // The keyring takes longer for each account the more there are.
    for (let i = 0; i < 200; ++i) native.setPasswordForAccount('secret', `account-${i}`);
    const all = send(shared, 'allAccounts');
    native.removeAllPasswords();
    return [new Set(all).size, send(shared, 'allAccounts').length];
  });
  assert.deepStrictEqual(counts, [200, 0]);
  for (const other of others) {
    assert.strictEqual(String(await keyring.secretTool(['lookup', 'service', other, 'account', 'ann'])), other);
  }
});

// Every operation of a store that is unavailable or locked, with its log lines.
async function expectRefusal(t, code, env, more, isKnown = false) {
  const failed = { 'ok?': false, error: code };
  const because = `(account=ann, error=${code})`;
  const notFound = `error Could not find keychain item in order to delete it. ${because}`;
  const notDeleted = `warning Could not delete keychain item. ${because}`;
  await expectCalls(t, plain.with({ env }), [
    [['getPassword', 'ann'], failed, `warning Could not read password from keychain. ${because}`],
    [[erase, 'ann'], false],
    [['removeAllPasswords'], !isKnown],
    [[write, null, 'ann'], isKnown ? { 'ok?': true } : failed, isKnown ? notDeleted : notFound],
    ...more,
  ]);
}

const listing = 'warning Error while querying all accounts in Keychain.';
const noReply = `${listing} (error=The secret service is unavailable or did not reply in time.)`;
const notFound = `warning Could not find keychain item. (account=ann, error=${status.unavailable})`;

test('without bus or secret service every operation reports that the keychain is unavailable', async (t) => {
  const empty = environmentOf(await startBus(t, temporaryDirectory(t)));
  const dead = { DBUS_SESSION_BUS_ADDRESS: 'unix:path=/nonexistent/bus' };
  const more = [[['setPassword', 'x', 'ann'], { 'ok?': true }, notFound], [[list], null, noReply]]; // prettier-ignore
  for (const env of [{}, dead, empty]) await expectRefusal(t, status.unavailable, env, more);
});

test('a locked keyring is never taken for an empty one', async (t) => {
  const directory = temporaryDirectory(t);
  const keyring = await startKeyring(t, directory);
  await store(keyring, 'ann', 'hidden');
  const failed = { 'ok?': false, error: status.locked };
  const warning = (text) => `warning Could not ${text}, error=${status.locked})`;
  const calls = [
    [['getPassword', 'nobody'], failed, warning('read password from keychain. (account=nobody')],
    [['setPassword', '12345', 'ann'], failed, warning('modify keychain item. (account=ann, passwordLength=5')],
    [['setPassword', '12345', 'bob'], failed, warning('add password to keychain. (account=bob, passwordLength=5')],
  ];
  const expectLocked = (accounts) =>
    expectRefusal(t, status.locked, environmentOf(keyring), [...calls, [[list], ...accounts]], true);
  await keyring.lock();
  await expectLocked([['ann']]);
  await keyring.kill();
  await startKeyring(t, directory, keyring.bus, false);
  // Unlike a keyring that was locked again, one that was never unlocked doesn't know its accounts.
  await expectLocked([null, `${listing} (error=The keyring is locked and was not unlocked in time.)`]);
});

test('reply timeouts of a hanging service halve, and the first reply resets them', async (t) => {
  const keyring = await keyringOf(t);
  const child = await at(keyring).resident(t);
  const ask = ({ native }, count) => {
    const start = Date.now();
    const answer = () => JSON.parse(native.getPasswordForAccount('ann')).error ?? 'answered';
    const answers = Array.from({ length: count }, answer);
    return [[...new Set(answers)], Date.now() - start];
  };
  keyring.pause();
  const [answers, elapsed] = await child.tell(ask, 50);
  assert.deepStrictEqual(answers, [status.unavailable]);
  // Five seconds, half of them for the next call, and so on.
  assert.ok(elapsed < 30000, `${elapsed} ms`);
  keyring.resume();
  await eventually(async () => (await child.tell(ask, 1))[0][0] === 'answered', 'an answer');
});

test('the keychain reconnects after its service or the bus was killed', async (t) => {
  const directory = temporaryDirectory(t);
  const bus = await startBus(t, directory);
  const first = await startKeyring(t, directory, bus);
  const child = await at(bus).resident(t);
  const ask = (answer = 'x') => {
    const asked = child.tell(({ native, report }) => {
      report('asking');
      const { password, error } = JSON.parse(native.getPasswordForAccount('ann'));
      return error ?? password;
    });
    return asked.then((given) => assert.strictEqual(given, answer));
  };
  await child.tell(({ native }) => native.setPasswordForAccount('x', 'ann'));
  first.pause();
  const asked = ask(status.unavailable);
  await child.report(0);
  await first.kill();
  await asked;
  const second = await startKeyring(t, directory, bus);
  await ask();
  await bus.stop();
  await ask(status.unavailable);
  await second.kill();
  await startKeyring(t, directory, await startBus(t, directory));
  await ask();
});

test('the bundle name selects the service', async (t) => {
  const { at: within, write } = temporaryFiles(t);
  const executable = within('Mail.app/Mail');
  fs.mkdirSync(within('Mail.app'));
  fs.copyFileSync(fs.realpathSync(process.execPath), executable);
  for (const [bundleName, expected] of Object.entries({ Kolvar: 'Kolvar', kolvar: service, Tessaro: service })) {
    write('Mail.app/Resources/Info-gnustep.plist', `{ CFBundleName = "${bundleName}"; }`);
    const found = await plain.with({ executable })(t, ({ send, shared }) => send(shared, 'service'));
    assert.strictEqual(found, expected, bundleName);
  }
});

test('no password gets into the log or onto the terminal', async (t) => {
  const keyring = await keyringOf(t);
  const { code, stderr, home } = await at(keyring).ends(t, ({ native }) => {
    for (const account of ['ann', 'a\0b', 'ann']) native.setPasswordForAccount('hush-hush', account);
    native.getPasswordForAccount('ann');
    native.removePasswordForAccount('ann');
  });
  const logs = path.join(home, 'state', 'node', 'logs');
  const log = fs.readdirSync(logs).map((name) => fs.readFileSync(path.join(logs, name), 'utf8'));
  assert.deepStrictEqual([code, stderr, log.join().includes('hush')], [0, '', false]);
  assert.match(log.join(), /Removed keychain entry 'ann'/);
});

const onDisplay = scenarios({ display: true, host: false });

onDisplay.test('the user is prompted to unlock the keyring', async ({ equal, native, run, spawn }) => {
  native.setPasswordForAccount('opened', 'ann');
  const secrets = ['--session', '--print-reply', '--dest=org.freedesktop.secrets', '/org/freedesktop/secrets'];
  const login = 'array:objpath:/org/freedesktop/secrets/collection/login';
  const asked = async (...keys) => {
    await run('dbus-send', ...secrets, 'org.freedesktop.Secret.Service.Lock', login);
    // Script blocks until the prompt ends: another process presses the keys, again if the first were too early.
    const press =
      'shown() { xdotool search --onlyvisible --class gcr-prompter; }; until shown; do sleep 0.05; done; ' +
      'while shown; do xdotool key ctrl+a "$@"; sleep 1; done';
    const user = spawn('sh', ['-c', press, 'sh', ...keys], { stdio: 'ignore' });
    const answer = JSON.parse(native.getPasswordForAccount('ann'));
    user.kill();
    return answer;
  };
  const cancelled = -128;
  equal(await asked('Escape'), { 'ok?': false, error: cancelled });
  equal(await asked(...'session', 'Return'), { 'ok?': true, password: 'opened' });
  native.removePasswordForAccount('ann');
});
