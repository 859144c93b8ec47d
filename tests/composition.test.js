'use strict';

// Messages that other applications compose: over D-Bus, by mailto links and, in the process itself, as Cocoa's
// scripting would.

const assert = require('assert');
const { execFile } = require('child_process');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');
const { promisify } = require('util');

const { root } = require('./support/addon');
const { startBus } = require('./support/bus');
const { eventually, temporaryDirectory } = require('./support/child');
const { scenarios } = require('./support/scenario');

const run = promisify(execFile);

const name = 'org.tessaro.TessaroHost';
const applicationPath = '/org/tessaro/TessaroHost';
const application = 'org.tessaro.Application';
const message = 'org.tessaro.OutgoingMessage';
const messagePath = (id) => `${applicationPath}/OutgoingMessages/${id}`;

const inProcess = scenarios({ display: true });
const { session } = inProcess;

const applications = inProcess.with({
  fixture({ host, native, report }) {
    host.setKeepAlive(true);
    const listen = () =>
      native.setComposeOutgoingMessageCallbackFunction((...texts) =>
        report([Date.now(), ...texts.map((text) => JSON.parse(text))]),
      );
    return { listen };
  },
});

/** Another process, which talks to the application over the bus. */
async function startApplication(t, { env = session.env, isListening = true } = {}) {
  const child = await applications.with({ env }).resident(t);
  const listen = () => child.tell(({ listen: begin }) => begin());
  if (isListening) await listen();
  const busctl = async (...args) => {
    const environment = { ...process.env, ...env };
    const { stdout } = await run('busctl', ['--user', ...args.map(String)], { env: environment, maxBuffer: 1 << 26 });
    return stdout.trim();
  };
  const interfaceOf = (object) => (object === applicationPath ? application : message);
  const on =
    (verb) =>
    (object, member, ...args) =>
      busctl(verb, name, object, interfaceOf(object), member, ...args);
  const [call, get, set] = ['call', 'get-property', 'set-property'].map(on);
  return Object.assign(child, {
    ...{ busctl, listen, call, get, set },
    make: (count = 0, ...properties) => call(applicationPath, 'MakeOutgoingMessage', 'a{sv}', count, ...properties),
    composed: (count) =>
      eventually(
        () => child.reports.length >= count && child.reports.map(([, ...texts]) => texts),
        `${count} messages are composed`,
      ),
    composedAt: () => child.reports.map(([time]) => time),
  });
}

const noOptions = {
  'optimize-attachments?': null,
  'directly-send?': false,
  'image-attach-method': null,
  'image-file-type': null,
  'image-size': null,
};
const empty = { to: [], cc: [], bcc: [], 'attachment-paths': [] };

/** What the failed call of busctl says. */
const refusal = (promise) =>
  promise.then(
    () => assert.fail('it was accepted'),
    (error) => error.stderr.trim(),
  );

test('another process makes a message, reads and sets its properties, and composes it', async (t) => {
  const app = await startApplication(t);
  assert.strictEqual(await app.make(), `o "${messagePath(0)}"`);
  assert.strictEqual(await app.get(messagePath(0), 'OptimizeAttachments'), 'b true');
  await app.call(messagePath(0), 'Compose');

  assert.strictEqual(
    await app.make(2, 'Subject', 's', 'Grüße 🌍', 'DirectlySend', 'b', 'true'),
    `o "${messagePath(1)}"`,
  );
  const properties = {
    Sender: 'ann@example.org',
    Content: 'a\nb',
    ImageAttachMethod: 'inline',
    ImageFileType: 'jpeg',
    ImageSize: 'small',
  };
  for (const [property, value] of Object.entries(properties)) await app.set(messagePath(1), property, 's', value);
  await app.set(messagePath(1), 'OptimizeAttachments', 'b', 'true');
  await app.call(messagePath(1), 'AddToRecipient', 'ss', 'bob@example.org', 'Bob');
  await app.call(messagePath(1), 'AddToRecipient', 'ss', 'carla@example.org', '');
  await app.set(messagePath(1), 'CcRecipients', 'aa{sv}', 1, 2, 'address', 's', 'dan@example.org', 'name', 'av', 0);
  await app.call(messagePath(1), 'AddBccRecipient', 'ss', 'eve@example.org', 'Eve');
  await app.call(messagePath(1), 'AddMailAttachment', 's', '/nowhere/at all.pdf');
  await app.call(messagePath(1), 'AddMailAttachment', 's', '~/b.pdf');
  await app.call(messagePath(1), 'Compose');

  const [first, second] = await app.composed(2);
  assert.deepStrictEqual(first, [empty, noOptions]);
  assert.deepStrictEqual(second, [
    {
      sender: properties.Sender,
      subject: 'Grüße 🌍',
      body: 'a\nb\n',
      to: [
        { name: 'Bob', email: 'bob@example.org' },
        { name: '', email: 'carla@example.org' },
      ],
      cc: [{ name: null, email: 'dan@example.org' }],
      bcc: [{ name: 'Eve', email: 'eve@example.org' }],
      'attachment-paths': ['/nowhere/at all.pdf', path.join(app.home, 'b.pdf')],
    },
    {
      'optimize-attachments?': true,
      'directly-send?': true,
      'image-attach-method': 'inline',
      'image-file-type': 'jpeg',
      'image-size': 'small',
    },
  ]);

  await app.set(messagePath(1), 'MessageSignature', 'a{sv}', 2, 'name', 's', 'Work', 'content', 's', 'Ann');
  assert.strictEqual(await app.get(messagePath(1), 'MessageSignature'), 'a{sv} 2 "content" s "Ann" "name" s "Work"');
  assert.strictEqual(await app.call(applicationPath, 'OutgoingMessageWithUniqueID', 'x', 1), `o "${messagePath(1)}"`);
  assert.strictEqual(await app.get(messagePath(1), 'Id'), 'x 1');
  assert.strictEqual(
    await app.get(messagePath(1), 'CcRecipients'),
    'aa{sv} 1 1 "address" s "dan@example.org"',
    'a missing value is left out',
  );
  assert.strictEqual(
    await app.get(applicationPath, 'OutgoingMessages'),
    `ao 2 "${messagePath(0)}" "${messagePath(1)}"`,
  );
});

test('a message that becomes visible is composed a second later, as it is then, each time', async (t) => {
  const app = await startApplication(t);
  await app.make();
  const start = Date.now();
  await app.call(messagePath(0), 'SetVisible', 'b', 'false');
  await app.call(messagePath(0), 'SetVisible', 'b', 'true');
  await app.set(messagePath(0), 'Visible', 'b', 'true');
  assert.strictEqual(await app.get(messagePath(0), 'Visible'), 'b false', 'nothing is stored');
  await app.set(messagePath(0), 'Subject', 's', 'late');
  const composed = await app.composed(2);
  assert.deepStrictEqual(
    composed.map(([{ subject }]) => subject),
    ['late', 'late'],
  );
  assert.ok(app.composedAt()[0] - start >= 1000, 'not before a second has passed');
});

test('what comes before script has set its callback is dropped', async (t) => {
  const app = await startApplication(t, { isListening: false });
  await app.make();
  await app.call(messagePath(0), 'Compose');
  await app.listen();
  await app.set(messagePath(0), 'Subject', 's', 'second');
  await app.call(messagePath(0), 'Compose');
  assert.deepStrictEqual(await app.composed(1), [[{ ...empty, subject: 'second' }, noOptions]]);
});

test('the current page and do-not-disturb are read, and do-not-disturb is switched', async (t) => {
  const app = await startApplication(t);
  await app.tell(({ host, native }) => {
    native.setCurrentURL('tessaro://inbox', 'https://mail.example.org', 'Inbox “ä”');
    native.setCurrentStateCallbackFunction((question) => `${question}!`);
    host.on('notification', ({ name }) => {
      if (name !== 'TsToggleDoNotDisturbNotification') return;
      process.env.TOGGLES = Number(process.env.TOGGLES ?? 0) + 1;
      host.setDefault('DoNotDisturb', true);
    });
  });
  const properties = ['CurrentURL', 'CurrentTitle', 'CurrentMessageText'];
  const titles = await app.busctl('--json=short', 'get-property', name, applicationPath, application, ...properties);
  assert.deepStrictEqual(
    titles.split('\n').map((line) => JSON.parse(line).data),
    ['tessaro://inbox', 'Inbox “ä”', 'current-message-text!'],
  );
  const toggles = () => app.tell(({ env }) => Number(env.TOGGLES ?? 0));
  await app.set(applicationPath, 'DoNotDisturb', 'b', 'false');
  assert.strictEqual(await toggles(), 0, 'setting the current value toggles nothing');
  await app.set(applicationPath, 'DoNotDisturb', 'b', 'true');
  await eventually(async () => (await toggles()) === 1, 'it is toggled');
  await app.set(applicationPath, 'DoNotDisturb', 'b', 'true');
  assert.strictEqual(await app.get(applicationPath, 'DoNotDisturb'), 'b true');
  assert.strictEqual(await toggles(), 1);
  assert.match(await refusal(app.set(applicationPath, 'CurrentURL', 's', 'x')), /not writable|read-only/i);
});

test('bad requests get an error, and leave no message behind', async (t) => {
  const app = await startApplication(t);
  const cases = [
    [() => app.call(applicationPath, 'OutgoingMessageWithUniqueID', 'x', 77), /There is no message 77/],
    [() => app.call(messagePath(5), 'Compose'), /Unknown object/],
    [
      () => app.call(applicationPath, 'OutgoingMessageWithUniqueID', 's', 'one'),
      /Invalid argument|InvalidArgs|Unexpected/i,
    ],
    [() => app.make(1, 'Subject', 'i', 3), /of the type i/],
    [() => app.make(1, 'Subject', 'b', 'true'), /Subject is of the type s/],
    [() => app.make(1, 'Nothing', 's', 'x'), /no property Nothing/],
    [() => app.make(1, 'Id', 'x', 9), /can only be read/],
    [() => app.make(1, 'DirectlySend', 'av', 0), /DirectlySend is of the type b/],
    [() => app.make(1, 'ToRecipients', 'av', 1, 's', 'x'), /missing value/],
    [() => app.make(1, 'ToRecipients', 'aa{sv}', 1, 1, 'objectSpecifier', 's', 'x'), /no property objectSpecifier/],
    [() => app.make(1, 'ToRecipients', 'aa{sv}', 1, 1, 'name', 'b', 'true'), /name is of the type s/],
    [() => app.make(1, 'MessageSignature', 'a{sv}', 1, 'content', 'x', 5), /content is of the type s/],
  ];
  for (const [request, reason] of cases) assert.match(await refusal(request()), reason);
  assert.strictEqual(await app.get(applicationPath, 'OutgoingMessages'), 'ao 0');

  await app.make();
  const known = [
    [() => app.set(messagePath(0), 'Subject', 'i', 3), /expected 's'/],
    [
      () => app.set(messagePath(0), 'ToRecipients', 'aa{sv}', 1, 1, 'objectSpecifier', 's', 'x'),
      /no property objectSpecifier/,
    ],
    [() => app.set(messagePath(0), 'ToRecipients', 'aa{sv}', 1, 1, 'address', 'aa{sv}', 0), /address is of the type s/],
    [() => app.set(messagePath(0), 'MailAttachments', 'aa{sv}', 1, 1, 'path', 'x', 1), /path is of the type s/],
    [() => app.call(messagePath(0), 'AddToRecipient', 's', 'x'), /Invalid argument|InvalidArgs|Unexpected/i],
  ];
  for (const [request, reason] of known) assert.match(await refusal(request()), reason);
  await app.call(messagePath(0), 'Compose');
  assert.deepStrictEqual(await app.composed(1), [[empty, noOptions]]);
});

test('ten thousand recipients are set at once, and more are added', async (t) => {
  const app = await startApplication(t);
  const count = 10000;
  const addresses = Array.from({ length: count }, (_, index) => `person${index}@example.org`);
  await app.make();
  const elements = addresses.flatMap((address) => [1, 'address', 's', address]);
  await app.set(messagePath(0), 'ToRecipients', 'aa{sv}', count, ...elements);
  for (const address of ['a@example.org', 'b@example.org']) {
    await app.call(messagePath(0), 'AddToRecipient', 'ss', address, '');
  }
  await app.call(messagePath(0), 'Compose');
  const [[{ to }]] = await app.composed(1);
  assert.deepStrictEqual(
    to.map(({ email }) => email),
    [...addresses, 'a@example.org', 'b@example.org'],
  );
  assert.ok((await app.get(messagePath(0), 'ToRecipients')).startsWith(`aa{sv} ${count + 2} `));
});

test('links are composed, and bad ones refused', async (t) => {
  const app = await startApplication(t);
  const open = (link) => app.call(applicationPath, 'OpenLink', 's', link);
  const recipient = (email) => ({ name: null, email });
  const good = [
    ['mailto:ann@example.org', { to: [recipient('ann@example.org')] }],
    [
      'MAILTO:ann@example.org,b%2Cc@example.org?To=d@example.org&cc=e@example.org,f@example.org&BCC=g@example.org',
      {
        to: ['ann@example.org', 'b,c@example.org', 'd@example.org'].map(recipient),
        cc: ['e@example.org', 'f@example.org'].map(recipient),
        bcc: [recipient('g@example.org')],
      },
    ],
    [
      'mailto:?subject=Gr%C3%BC%C3%9Fe%20%F0%9F%8C%8D%20a+b%26c&body=one%0D%0Atwo&attach=/etc/passwd&from=eve',
      { subject: 'Grüße 🌍 a+b&c', body: 'one\r\ntwo\n' },
    ],
    ['mailto:', {}],
    ['mailto:,,a@example.org?&&subject=#top', { to: [recipient('a@example.org')] }],
  ];
  for (const [link] of good) await open(link);
  const composed = await app.composed(good.length);
  assert.deepStrictEqual(
    composed.map(([text]) => text),
    good.map(([, text]) => ({ ...empty, ...text })),
  );

  const bad = [
    ['http://example.org', /no mailto link/],
    ['', /no mailto link/],
    ['mailto:a%4', /percent sign/],
    ['mailto:a%zz@example.org', /percent sign/],
    ['mailto:%FF@example.org', /UTF-8/],
    ['mailto:a@example.org?subject=x%0D%0ABcc:%20eve@example.org', /control characters/],
    ['mailto:a@example.org%00', /control characters/],
    ['mailto:a@example.org?body=%00', /control characters/],
    ['mailto:a@example.org?subject', /without a value/],
  ];
  for (const [link, reason] of bad) assert.match(await refusal(open(link)), reason, link);
  assert.strictEqual(app.reports.length, good.length);
});

test('the desktop hands links to the application', async (t) => {
  const app = await startApplication(t);
  const data = temporaryDirectory(t);
  fs.mkdirSync(path.join(data, 'applications'));
  fs.copyFileSync(
    path.join(root, 'host', 'TessaroHost.desktop'),
    path.join(data, 'applications', 'org.tessaro.TessaroHost.desktop'),
  );
  await run(
    'gio',
    ['launch', path.join(data, 'applications', 'org.tessaro.TessaroHost.desktop'), 'mailto:ann@example.org?subject=Hi'],
    {
      env: { ...process.env, ...session.env },
    },
  );
  const [[text]] = await app.composed(1);
  assert.deepStrictEqual([text.subject, text.to[0].email], ['Hi', 'ann@example.org']);
});

test('the object comes back with the bus, and is missing without one', async (t) => {
  const directory = temporaryDirectory(t);
  const bus = await startBus(t, directory);
  const env = { ...session.env, DBUS_SESSION_BUS_ADDRESS: bus.address };
  const app = await startApplication(t, { env });
  await app.make();
  await bus.stop();
  await startBus(t, directory);
  const again = await eventually(() => app.make().catch(() => false), 'the application is back');
  assert.strictEqual(again, `o "${messagePath(1)}"`);
  assert.strictEqual(await app.call(applicationPath, 'OutgoingMessageWithUniqueID', 'x', 0), `o "${messagePath(0)}"`);
});

test('without a display and without a bus nothing is offered, and nothing breaks', async (t) => {
  const result = await scenarios({ host: true })(t, ({ composition, native }) => [
    native.recipientsForGroupName('x'),
    composition.messageCount(),
  ]);
  assert.deepStrictEqual(result, [null, 0]);
});

test('in the process, a message begins empty and takes rich text', async (t) => {
  const { defaults, composed } = await inProcess(t, ({ composition, native }) => {
    const defaults = composition.defaults();
    const composed = [];
    native.setComposeOutgoingMessageCallbackFunction((text) => composed.push(JSON.parse(text).body));
    const texts = ['a\nb', 'a\r\nb\n', 'a\rb', 'a\u2029b', '', '\n\n', 'ä😀'];
    texts.forEach(composition.composeAttributed);
    return { defaults, composed };
  });
  assert.deepStrictEqual(defaults, {
    id: 0,
    sender: '',
    subject: '',
    content: '',
    directlySend: 0,
    optimizeAttachments: 1,
    didSetOptimizeAttachments: 0,
    toRecipients: [],
    ccRecipients: [],
    bccRecipients: [],
    mailAttachments: [],
    imageAttachMethod: null,
    imageFileType: null,
    imageSize: null,
    elements: ['', '', ''],
    'messageSignature.name': null,
  });
  assert.deepStrictEqual(composed, ['a\nb\n', 'a\r\nb\n', 'a\r\nb\n', 'a\u2029\nb\n', null, '\n\n', 'ä😀\n']);
});

test('elements know where they are', async (t) => {
  const [specified, replaced] = await inProcess(t, ({ composition }) => [
    composition.specifiers(),
    composition.replaceMessages(),
  ]);
  assert.deepStrictEqual(specified, [true, true, true]);
  assert.ok(replaced);
});

test('paths of attachments are normalised', (t) => {
  const home = temporaryDirectory(t);
  const rows = Object.entries({
    '': '',
    '/plain/a b.txt': '/plain/a b.txt',
    'relative.txt': 'relative.txt',
    'Disk:Users:me:x.pdf': '/Users/me/x.pdf',
    'Disk:a/b:c': '/a:b/c',
    'Disk:Users:': '/Users',
    'Disk:': '/',
    'Disk:a::b': '/b',
    // Not classic paths, but names of this system.
    '/tmp/10:30.txt': '/tmp/10:30.txt',
    ':relative:x': ':relative:x',
    'Disk::x': 'Disk::x',
    '~root': '/root',
    '~': home,
    '~/x:y': `${home}/x:y`,
  });
  return scenarios({ home }).table(t, rows, ({ composition }, text) => composition.path(text));
});
