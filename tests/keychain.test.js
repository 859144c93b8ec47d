'use strict';

const assert = require('assert');
const { execFile } = require('child_process');
const fs = require('fs');
const net = require('net');
const path = require('path');
const { test } = require('node:test');
const { promisify } = require('util');

const { root } = require('./support/addon');
const { startBus } = require('./support/bus');
const { eventually, evaluate, node, startScript, temporaryDirectory } = require('./support/child');
const { startKeyring } = require('./support/keyring');

const status = {
  cancelled: -128,
  parameter: -50,
  unavailable: -25291,
  notFound: -25300,
  locked: -25308,
  decode: -26275,
};
const service = 'Tessaro 3';
const environmentOf = ({ address }) => ({ DBUS_SESSION_BUS_ADDRESS: address });

const keyringOf = (t) => startKeyring(t, temporaryDirectory(t));

/** What each of `calls` gave, with the messages it logged: "level text". */
const evaluateCalls = (t, calls, env) =>
  evaluate(
    t,
    `const { module: m, keychain, captureLog, capturedLog, flushLog } = probe();
     const levels = { 1: 'error', 2: 'warning', 4: 'info' };
     captureLog();
     let before = 0;
     const results = [${calls.map((call) => `() => ${call}`).join(',\n')}].map((call) => {
       const result = call();
       flushLog();
       const log = capturedLog();
       const messages = log.slice(before).map(({ flag, text }) => levels[flag] + ' ' + text);
       before = log.length;
       return [result ?? null, ...messages];
     });
     console.log(JSON.stringify(results));`,
    { env },
  );

test('script stores, reads, changes and removes passwords', async (t) => {
  const keyring = await keyringOf(t);
  const notDeleted = 'error Could not find keychain item in order to delete it.';
  const table = [
    ["m.getPasswordForAccount('ann')", '{"password":null,"ok?":true}'],
    [
      "m.setPasswordForAccount('gänse', 'ann')",
      '{"ok?":true}',
      'info Added password to keychain. (account=ann, passwordLength=5)',
    ],
    ["m.getPasswordForAccount('ann')", '{"password":"gänse","ok?":true}'],
    [
      "m.setPasswordForAccount('😀', 'ann', { ignored: true })",
      '{"ok?":true}',
      'info Modified password in keychain. (account=ann, passwordLength=2)',
    ],
    ["m.getPasswordForAccount('ann')", '{"password":"😀","ok?":true}'],
    [
      'm.setPasswordForAccount(17, true)',
      '{"ok?":true}',
      'info Added password to keychain. (account=true, passwordLength=2)',
    ],
    ...["null, 'ann'", "undefined, 'ann'", "'secret', null"].map((args) => [
      `m.setPasswordForAccount(${args})`,
      null,
      'error Not setting password as either password or account parameters are nil',
    ]),
    [
      "m.removePasswordForAccount('ann')",
      null,
      "info Removed keychain entry 'ann' (Tessaro 3).",
      'info Removed keychain entry for account ann',
    ],
    ["m.removePasswordForAccount('ann')", null, 'info Removed keychain entry for account ann'],
    ["keychain.set('Tessaro 3', 'true', null)", '{"ok?":true}', 'info Deleted password from keychain. (account=true)'],
    [
      "keychain.set('Tessaro 3', 'true', null)",
      `{"error":${status.notFound},"ok?":false}`,
      `${notDeleted} (account=true, error=${status.notFound})`,
    ],
    ["keychain.remove('Tessaro 3', 'true')", false],
    ['m.removeAllPasswords()', null, 'info Removed all keychain entries for app'],
  ];
  const results = await evaluateCalls(
    t,
    table.map(([call]) => call),
    environmentOf(keyring),
  );
  results.forEach((result, i) => {
    const [call, expected, ...log] = table[i];
    const parse = (value) => (typeof value === 'string' ? JSON.parse(value) : value);
    assert.deepStrictEqual([call, parse(result[0]), ...result.slice(1)], [call, parse(expected), ...log]);
  });
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
  const child = startScript(
    t,
    `const { module: m } = probe();
     const secrets = ${JSON.stringify(secrets)};
     for (const [account, secret] of Object.entries(secrets)) m.setPasswordForAccount(secret, account);
     console.log('stored');
     process.stdin.on('data', () => {
       const read = (account) => JSON.parse(m.getPasswordForAccount(account)).password;
       const all = Object.fromEntries(Object.keys(secrets).map((account) => [account, read(account)]));
       console.log(JSON.stringify({ ...all, foreign: read('foreign') }));
     });`,
    { env: environmentOf(keyring) },
  );
  await child.printed('stored\n');
  for (const [account, secret] of Object.entries(secrets)) {
    const seen = await keyring.secretTool(['lookup', 'service', service, 'account', account]);
    assert.strictEqual(seen.toString(), secret, account);
  }
  await keyring.secretTool(['store', '--label=x', 'service', service, 'account', 'emoji'], 'changed');
  await keyring.secretTool(['store', '--label=x', 'service', service, 'account', 'foreign'], 'new');
  child.output.stdout = '';
  child.process.stdin.write('go');
  await eventually(() => child.output.stdout.endsWith('\n'), 'reading again');
  assert.deepStrictEqual(JSON.parse(child.output.stdout), { ...secrets, emoji: 'changed', foreign: 'new' });
});

test('malformed items and accounts are failures', async (t) => {
  const keyring = await keyringOf(t);
  const bytes = Buffer.from([0xff, 0xfe, 0x00, 0x41]);
  await keyring.secretTool(['store', '--label=x', 'service', service, 'account', 'bytes'], bytes);
  const results = await evaluateCalls(
    t,
    ["m.getPasswordForAccount('bytes')", "m.getPasswordForAccount('a\\0b')", "m.setPasswordForAccount('x', 'a\\0b')"],
    environmentOf(keyring),
  );
  assert.deepStrictEqual(
    results.map(([result]) => JSON.parse(result)),
    [{ 'ok?': false, error: status.decode }, { 'ok?': false, error: status.parameter }, { 'ok?': true }],
  );
});

test('of two items of one account, one is read, written and removed', async (t) => {
  const keyring = await keyringOf(t);
  const [one, two] = [
    ['store', '--label=x', 'service', service, 'account', 'ann'],
    ['kind', 'other'],
  ];
  await keyring.secretTool([...one, ...two], 'second');
  await keyring.secretTool([...one, 'kind', 'first'], 'first');
  const results = await evaluateCalls(
    t,
    [
      "JSON.parse(m.getPasswordForAccount('ann')).password",
      "m.setPasswordForAccount('written', 'ann')",
      "keychain.accounts('Tessaro 3')",
      "keychain.remove('Tessaro 3', 'ann')",
      "keychain.remove('Tessaro 3', 'ann')",
      "keychain.remove('Tessaro 3', 'ann')",
    ],
    environmentOf(keyring),
  );
  assert.ok(['first', 'second'].includes(results[0][0]));
  assert.match(results[1][1], /^info Modified/);
  assert.deepStrictEqual(
    results.slice(2).map(([result]) => result),
    ['["ann"]', true, true, false],
  );
});

test('a thousand accounts are listed and removed; other services keep theirs', async (t) => {
  const keyring = await keyringOf(t);
  await keyring.useMemory();
  const result = await evaluate(
    t,
    `const { module: m, keychain } = probe();
     const names = Array.from({ length: 1000 }, (_, i) => 'account-' + String(i).padStart(4, '0'));
     for (const name of names) m.setPasswordForAccount('secret of ' + name, name);
     keychain.set('Kolvar', 'ann', 'kept');
     keychain.set('Tessaro', 'ann', 'kept too');
     const listed = JSON.parse(keychain.accounts('Tessaro 3'));
     m.removeAllPasswords();
     console.log(JSON.stringify({
       allListed: JSON.stringify(listed) === JSON.stringify(names),
       left: keychain.accounts('Tessaro 3'),
       others: [keychain.get('Kolvar', 'ann'), keychain.get('Tessaro', 'ann')].map((text) => JSON.parse(text).password),
     }));`,
    { env: environmentOf(keyring) },
  );
  assert.deepStrictEqual(result, { allListed: true, left: '[]', others: ['kept', 'kept too'] });
});

// Every operation where the store can't be used, with what it logs.
const refused = (code, isKnown) => [
  [
    "m.getPasswordForAccount('ann')",
    { 'ok?': false, error: code },
    `warning Could not read password from keychain. (account=ann, error=${code})`,
  ],
  ["keychain.remove('Tessaro 3', 'ann')", false],
  ["keychain.removeAll('Tessaro 3')", !isKnown],
  isKnown
    ? [
        "keychain.set('Tessaro 3', 'ann', null)",
        { 'ok?': true },
        `warning Could not delete keychain item. (account=ann, error=${code})`,
      ]
    : [
        "keychain.set('Tessaro 3', 'ann', null)",
        { 'ok?': false, error: code },
        `error Could not find keychain item in order to delete it. (account=ann, error=${code})`,
      ],
];

async function expectRefusal(t, code, env, more, isKnown = false) {
  const table = [...refused(code, isKnown), ...more];
  const results = await evaluateCalls(
    t,
    table.map(([call]) => call),
    env,
  );
  results.forEach((result, i) => {
    const value = typeof result[0] === 'string' ? JSON.parse(result[0]) : result[0];
    assert.deepStrictEqual([table[i][0], value, ...result.slice(1)], table[i]);
  });
}

const unavailable = [
  [
    "m.setPasswordForAccount('x', 'ann')",
    { 'ok?': true },
    `warning Could not find keychain item. (account=ann, error=${status.unavailable})`,
  ],
  [
    "keychain.accounts('Tessaro 3')",
    null,
    'warning Error while querying all accounts in Keychain. (error=The secret service is unavailable or did not reply in time.)',
  ],
];

test('without a bus every operation reports that the keychain is unavailable', (t) =>
  expectRefusal(t, status.unavailable, {}, unavailable));

test('with a dead bus address every operation reports that the keychain is unavailable', (t) =>
  expectRefusal(t, status.unavailable, { DBUS_SESSION_BUS_ADDRESS: 'unix:path=/nonexistent/bus' }, unavailable));

test('without a secret service every operation reports that the keychain is unavailable', async (t) => {
  const bus = await startBus(t, temporaryDirectory(t));
  await expectRefusal(t, status.unavailable, environmentOf(bus), unavailable);
});

// Locked again after use, a keyring still knows its accounts; never unlocked in this login, it does not.
const lockedKeyrings = {
  'locked again': { lock: (keyring) => keyring.lock(), accounts: [['ann']] },
  'never unlocked': {
    async lock(keyring, t, directory) {
      await keyring.kill();
      await startKeyring(t, directory, keyring.bus, false);
    },
    accounts: [
      null,
      'warning Error while querying all accounts in Keychain. (error=The keyring is locked and was not unlocked in time.)',
    ],
  },
};

for (const [state, { lock, accounts }] of Object.entries(lockedKeyrings)) {
  test(`a locked keyring is never taken for an empty one: ${state}`, async (t) => {
    const directory = temporaryDirectory(t);
    const keyring = await startKeyring(t, directory);
    await keyring.secretTool(['store', '--label=x', 'service', service, 'account', 'ann'], 'hidden');
    await lock(keyring, t, directory);
    const more = [
      [
        "m.getPasswordForAccount('nobody')",
        { 'ok?': false, error: status.locked },
        `warning Could not read password from keychain. (account=nobody, error=${status.locked})`,
      ],
      [
        "m.setPasswordForAccount('12345', 'ann')",
        { 'ok?': false, error: status.locked },
        `warning Could not modify keychain item. (account=ann, passwordLength=5, error=${status.locked})`,
      ],
      [
        "m.setPasswordForAccount('12345', 'bob')",
        { 'ok?': false, error: status.locked },
        `warning Could not add password to keychain. (account=bob, passwordLength=5, error=${status.locked})`,
      ],
      ["keychain.accounts('Tessaro 3')", ...accounts],
    ];
    await expectRefusal(t, status.locked, environmentOf(keyring), more, true);
  });
}

test('reply timeouts of a hanging service halve, and the first reply resets them', async (t) => {
  const keyring = await keyringOf(t);
  const child = startScript(
    t,
    `const { keychain } = probe();
     keychain.setDeadlines(1000, 1000);
     keychain.set('Tessaro 3', 'ann', 'x');
     console.log('ready');
     const ask = () => JSON.parse(keychain.get('Tessaro 3', 'ann')).error ?? 'answered';
     process.stdin.once('data', () => {
       const start = process.hrtime.bigint();
       const answers = Array.from({ length: 50 }, ask);
       console.log(...new Set(answers), process.hrtime.bigint() - start < 20000000000n);
       process.stdin.on('data', () => {
         while (ask() !== 'answered');
         console.log('answered');
       });
     });`,
    { env: environmentOf(keyring) },
  );
  await child.printed('ready\n');
  keyring.pause();
  child.process.stdin.write('x');
  await child.printed(`ready\n${status.unavailable} true\n`);
  keyring.resume();
  child.process.stdin.write('x');
  await child.printed(`ready\n${status.unavailable} true\nanswered\n`);
});

test('a bus that accepts the connection and never replies counts as unavailable', async (t) => {
  const socket = path.join(temporaryDirectory(t), 'bus');
  const server = net.createServer(() => {}).listen(socket);
  t.after(() => server.close());
  const source = `const { keychain } = probe();
    keychain.setDeadlines(200, 200);
    process.env.DBUS_SESSION_BUS_ADDRESS = 'unix:path=${socket}';
    console.log(keychain.get('Tessaro 3', 'ann'));
    process.exit();`;
  const result = await evaluate(t, source);
  assert.deepStrictEqual(result, { 'ok?': false, error: status.unavailable });
});

test('the keychain reconnects after its service or the bus was killed', async (t) => {
  const directory = temporaryDirectory(t);
  const bus = await startBus(t, directory);
  const first = await startKeyring(t, directory, bus);
  const child = startScript(
    t,
    `const { keychain } = probe();
     keychain.set('Tessaro 3', 'ann', 'x');
     console.log('stored');
     process.stdin.on('data', () => {
       console.log('asking');
       const { password, error } = JSON.parse(keychain.get('Tessaro 3', 'ann'));
       console.log(error ?? password);
     });`,
    { env: environmentOf(bus) },
  );
  let expected = 'stored\n';
  const ask = (answer) => {
    child.process.stdin.write('x');
    return child.printed((expected += `asking\n${answer}\n`));
  };
  await child.printed(expected);
  first.pause();
  child.process.stdin.write('x');
  await child.printed(`${expected}asking\n`);
  await first.kill();
  await child.printed((expected += `asking\n${status.unavailable}\n`));
  const second = await startKeyring(t, directory, bus);
  await ask('x');
  await bus.stop();
  await ask(status.unavailable);
  await second.kill();
  const again = await startBus(t, directory);
  await startKeyring(t, directory, again);
  await ask('x');
});

test('the bundle name selects the service', async (t) => {
  const application = path.join(temporaryDirectory(t), 'Mail.app');
  fs.mkdirSync(path.join(application, 'Resources'), { recursive: true });
  const executable = path.join(application, 'Mail');
  fs.copyFileSync(fs.realpathSync(process.execPath), executable);
  const serviceOf = (bundleName) => {
    fs.writeFileSync(path.join(application, 'Resources', 'Info-gnustep.plist'), `{ CFBundleName = "${bundleName}"; }`);
    const source = 'console.log(JSON.stringify(probe().keychain.serviceName()))';
    return evaluate(t, source, { executable });
  };
  for (const [bundleName, expected] of [
    ['Kolvar', 'Kolvar'],
    ['kolvar', 'Tessaro 3'],
    ['Tessaro', 'Tessaro 3'],
  ]) {
    assert.strictEqual(await serviceOf(bundleName), expected, bundleName);
  }
});

test('the transient store keeps passwords in memory only', async (t) => {
  const result = await evaluate(
    t,
    `const { setTransient, getTransient, countTransient } = probe().keychain;
     setTransient('ann', 'secret');
     setTransient('bob', '');
     const before = ['ann', 'bob', 'nobody'].map((account) => getTransient(account) ?? null);
     setTransient('ann', null);
     setTransient('nobody', null);
     console.log(JSON.stringify([before, getTransient('ann') ?? null, countTransient()]));`,
  );
  assert.deepStrictEqual(result, [['secret', '', null], null, 1]);
});

test('no password gets into the log or onto the terminal', async (t) => {
  const keyring = await keyringOf(t);
  const child = startScript(
    t,
    `const { module: m } = probe();
     m.setPasswordForAccount('hush-hush', 'ann');
     m.setPasswordForAccount('hush-hush', 'a\\0b');
     m.getPasswordForAccount('ann');
     m.setPasswordForAccount('hush-hush again', 'ann');
     m.removePasswordForAccount('ann');`,
    { env: environmentOf(keyring) },
  );
  const { code, stderr } = await child.ended;
  const logs = path.join(child.home, 'state', 'node', 'logs');
  const log = fs
    .readdirSync(logs)
    .map((name) => fs.readFileSync(path.join(logs, name), 'utf8'))
    .join('');
  assert.deepStrictEqual([code, stderr, log.includes('hush')], [0, '', false]);
  assert.match(log, /Removed keychain entry 'ann'/);
});

test('the user is prompted to unlock the keyring: dismissed, then unlocked with real keys', async (t) => {
  const source = `
    const { module: m } = probe();
    const { execFileSync, spawn } = require('child_process');
    m.setPasswordForAccount('opened', 'ann');
    const asked = (...keys) => {
      execFileSync('dbus-send', ['--session', '--print-reply', '--dest=org.freedesktop.secrets',
        '/org/freedesktop/secrets', 'org.freedesktop.Secret.Service.Lock',
        'array:objpath:/org/freedesktop/secrets/collection/login']);
      // Script blocks until the prompt ends: another process presses the keys, again if the first were too early.
      const press = 'shown() { xdotool search --onlyvisible --class gcr-prompter; }; until shown; do sleep 0.05; done; ' +
        'while shown; do xdotool key ctrl+a "$@"; sleep 1; done';
      const user = spawn('sh', ['-c', press, 'sh', ...keys], { stdio: 'ignore' });
      const answer = JSON.parse(m.getPasswordForAccount('ann'));
      user.kill();
      return answer;
    };
    const answers = [asked('Escape'), asked(...'session', 'Return')];
    m.removePasswordForAccount('ann');
    console.log(JSON.stringify(answers));`;
  const { stdout, stderr } = await promisify(execFile)(
    path.join(root, 'scripts', 'display-session'),
    ['--own-display', node, '-e', `const { probe } = require('./tests/support/addon');${source}`],
    { cwd: root, timeout: 60000 },
  );
  assert.deepStrictEqual(
    JSON.parse(stdout || 'null'),
    [
      { 'ok?': false, error: status.cancelled },
      { 'ok?': true, password: 'opened' },
    ],
    stderr,
  );
});
