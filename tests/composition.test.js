'use strict';

const { assert, execute, fs, path, test } = require('./support');
const { eventually, root, scenarios, startBus, temporaryDirectory } = require('./support');

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
    const compose = (...texts) => report([Date.now(), ...texts.map((text) => JSON.parse(text))]);
    return { listen: () => native.setComposeOutgoingMessageCallbackFunction(compose) };
  },
});

/** Another process, which talks to the application over the bus. */
async function startApplication(t, env = session.env) {
  const child = await applications.with({ env }).resident(t);
  const busctl = async (...args) => {
    const environment = { ...process.env, ...env };
    const { stdout } = await execute('busctl', ['--user', ...args.map(String)], {
      env: environment,
      maxBuffer: 1 << 26,
    });
    return stdout.trim();
  };
  const use = (verb, object, ...args) =>
    busctl(verb, name, object, object === applicationPath ? application : message, ...args);
  const call = (...args) => use('call', ...args);
  let seen = 0;
  return Object.assign(child, {
    ...{ busctl, call },
    get: (...args) => use('get-property', ...args),
    set: (...args) => use('set-property', ...args),
    /** Makes a message, and gives its path. */
    async make(count = 0, ...properties) {
      return (await call(applicationPath, 'MakeOutgoingMessage', 'a{sv}', count, ...properties)).match(/^o "(.*)"$/)[1];
    },
    /** Waits for the next messages that are composed: [time, message, options] each. */
    async composed(count) {
      await eventually(() => child.reports.length >= seen + count, `${count} messages are composed`);
      return child.reports.slice(seen, (seen += count));
    },
  });
}

const noImages = { 'image-attach-method': null, 'image-file-type': null, 'image-size': null };
const noOptions = { 'optimize-attachments?': null, 'directly-send?': false, ...noImages };
const recipient = (email, name = null) => ({ name, email });
const empty = { to: [], cc: [], bcc: [], 'attachment-paths': [] };

const refusal = (promise) => promise.then(() => assert.fail('it was accepted'), (error) => error.stderr.trim()); // prettier-ignore

test('another process scripts the application', async (t) => {
  const app = await startApplication(t);

  await t.test('a message composed before script has set its callback is dropped', async () => {
    const early = await app.make();
    await app.call(early, 'Compose');
    await app.tell(({ listen }) => listen());
    await app.set(early, 'Subject', 's', 'second');
    await app.call(early, 'Compose');
    const [[, text, options]] = await app.composed(1);
    assert.deepStrictEqual([early, text, options], [messagePath(0), { ...empty, subject: 'second' }, noOptions]);
    assert.strictEqual(await app.get(early, 'OptimizeAttachments'), 'b true');
  });

  await t.test('a message is made, completed and composed', async () => {
    const made = await app.make(2, 'Subject', 's', 'Grüße 🌍', 'DirectlySend', 'b', 'true');
    assert.strictEqual(made, messagePath(1));
    const images = { ImageAttachMethod: 'inline', ImageFileType: 'jpeg', ImageSize: 'small' };
    const properties = { Sender: 'ann@example.org', Content: 'a\nb', ...images };
    for (const [property, value] of Object.entries(properties)) await app.set(made, property, 's', value);
    await app.set(made, 'OptimizeAttachments', 'b', 'true');
    await app.call(made, 'AddToRecipient', 'ss', 'bob@example.org', 'Bob');
    await app.call(made, 'AddToRecipient', 'ss', 'carla@example.org', '');
    await app.set(made, 'CcRecipients', 'aa{sv}', 1, 2, 'address', 's', 'dan@example.org', 'name', 'av', 0);
    await app.call(made, 'AddBccRecipient', 'ss', 'eve@example.org', 'Eve');
    await app.call(made, 'AddMailAttachment', 's', '/nowhere/at all.pdf');
    await app.call(made, 'AddMailAttachment', 's', '~/b.pdf');
    await app.call(made, 'Compose');
    const [[, text, options]] = await app.composed(1);
    assert.deepStrictEqual(text, {
      sender: properties.Sender,
      subject: 'Grüße 🌍',
      body: 'a\nb\n',
      to: [recipient('bob@example.org', 'Bob'), recipient('carla@example.org', '')],
      cc: [recipient('dan@example.org')],
      bcc: [recipient('eve@example.org', 'Eve')],
      'attachment-paths': ['/nowhere/at all.pdf', path.join(app.home, 'b.pdf')],
    });
    const sent = { 'image-attach-method': 'inline', 'image-file-type': 'jpeg', 'image-size': 'small' };
    assert.deepStrictEqual(options, { 'optimize-attachments?': true, 'directly-send?': true, ...sent });

    await app.set(made, 'MessageSignature', 'a{sv}', 2, 'name', 's', 'Work', 'content', 's', 'Ann');
    assert.strictEqual(await app.call(applicationPath, 'OutgoingMessageWithUniqueID', 'x', 1), `o "${made}"`);
    const values = {
      Id: 'x 1',
      MessageSignature: 'a{sv} 2 "content" s "Ann" "name" s "Work"',
      CcRecipients: 'aa{sv} 1 1 "address" s "dan@example.org"',
    };
    for (const [property, value] of Object.entries(values)) assert.strictEqual(await app.get(made, property), value);
    assert.strictEqual(await app.get(applicationPath, 'OutgoingMessages'), `ao 2 "${messagePath(0)}" "${made}"`);
  });

  await t.test('a message that becomes visible is composed a second later, as it is then, each time', async () => {
    let [attempts, composed, start, took] = [0];
    // On a busy machine the calls themselves may take more than a second.
    do {
      const made = await app.make();
      await app.call(made, 'SetVisible', 'b', 'false');
      start = Date.now();
      await app.call(made, 'SetVisible', 'b', 'true');
      await app.set(made, 'Visible', 'b', 'true');
      await app.set(made, 'Subject', 's', 'late');
      took = Date.now() - start;
      assert.strictEqual(await app.get(made, 'Visible'), 'b false', 'nothing is stored');
      composed = await app.composed(2);
    } while (took >= 1000 && ++attempts < 10);
    assert.deepStrictEqual([composed[0][1].subject, composed[1][1].subject], ['late', 'late']);
    assert.ok(composed[0][0] - start >= 1000, 'not before a second has passed');
  });

  await t.test('the current page and do-not-disturb are read, and do-not-disturb is switched', async () => {
    await app.tell(({ env, host, native }) => {
      native.setCurrentURL('tessaro://inbox', 'https://mail.example.org', 'Inbox “ä”');
      native.setCurrentStateCallbackFunction((question) => `${question}!`);
      env.TOGGLES = 0;
      host.on('notification', ({ name }) => {
        if (name !== 'TsToggleDoNotDisturbNotification') return;
        ++env.TOGGLES;
        host.setDefault('DoNotDisturb', true);
      });
    });
    const properties = ['CurrentURL', 'CurrentTitle', 'CurrentMessageText'];
    const titles = await app.busctl('--json=short', 'get-property', name, applicationPath, application, ...properties);
    const texts = titles.split('\n').map((line) => JSON.parse(line).data);
    assert.deepStrictEqual(texts, ['tessaro://inbox', 'Inbox “ä”', 'current-message-text!']);
    const toggles = () => app.tell(({ env }) => Number(env.TOGGLES));
    const doNotDisturb = (value) => app.set(applicationPath, 'DoNotDisturb', 'b', value);
    await doNotDisturb('false');
    assert.strictEqual(await toggles(), 0, 'setting the current value toggles nothing');
    await doNotDisturb('true');
    await eventually(async () => (await toggles()) === 1, 'it is toggled');
    await doNotDisturb('true');
    assert.strictEqual(await app.get(applicationPath, 'DoNotDisturb'), 'b true');
    assert.strictEqual(await toggles(), 1);
    assert.match(await refusal(app.set(applicationPath, 'CurrentURL', 's', 'x')), /not writable|read-only/i);
  });

  await t.test('bad requests get an error, and change nothing', async () => {
    const before = await app.get(applicationPath, 'OutgoingMessages');
    const made = await app.make();
    const find = (...id) => app.call(applicationPath, 'OutgoingMessageWithUniqueID', ...id);
    const set = (...property) => app.set(made, ...property);
    const badCall = /Invalid argument|InvalidArgs|Unexpected/i;
    const cases = [
      [() => find('x', 77), /There is no message 77/],
      [() => find('s', 'one'), badCall],
      [() => app.call(messagePath(77), 'Compose'), /Unknown object/],
      [() => app.make(1, 'Subject', 'i', 3), /of the type i/],
      [() => app.make(1, 'Nothing', 's', 'x'), /no property Nothing/],
      [() => app.make(1, 'Id', 'x', 9), /can only be read/],
      [() => app.make(1, 'DirectlySend', 'av', 0), /DirectlySend is of the type b/],
      [() => app.make(1, 'ToRecipients', 'av', 1, 's', 'x'), /missing value/],
      [() => app.make(1, 'ToRecipients', 'aa{sv}', 1, 1, 'objectSpecifier', 's', 'x'), /no property objectSpecifier/],
      [() => app.make(1, 'MessageSignature', 'a{sv}', 1, 'content', 'x', 5), /content is of the type s/],
      [() => set('Subject', 'i', 3), /expected 's'/],
      [() => set('ToRecipients', 'aa{sv}', 1, 1, 'address', 'aa{sv}', 0), /address is of the type s/],
      [() => set('MailAttachments', 'aa{sv}', 1, 1, 'path', 'x', 1), /path is of the type s/],
      [() => app.call(made, 'AddToRecipient', 's', 'x'), badCall],
    ];
    for (const [ask, reason] of cases) assert.match(await refusal(ask()), reason);
    const after = await app.get(applicationPath, 'OutgoingMessages');
    assert.strictEqual(after.split('"').length, before.split('"').length + 2, 'one more message');
    await app.call(made, 'Compose');
    assert.deepStrictEqual((await app.composed(1))[0].slice(1), [empty, noOptions]);
  });

  await t.test('ten thousand recipients are set at once, and more are added', async () => {
    const addresses = Array.from({ length: 10000 }, (_, index) => `person${index}@example.org`);
    const elements = addresses.flatMap((address) => [1, 'address', 's', address]);
    const made = await app.make();
    await app.set(made, 'ToRecipients', 'aa{sv}', addresses.length, ...elements);
    await app.call(made, 'AddToRecipient', 'ss', 'a@example.org', '');
    await app.call(made, 'Compose');
    const [[, { to }]] = await app.composed(1);
    const all = to.map(({ email }) => email);
    assert.deepStrictEqual(all, [...addresses, 'a@example.org']);
    assert.ok((await app.get(made, 'ToRecipients')).startsWith(`aa{sv} ${all.length} `));
  });

  await t.test('mailto links from the desktop are composed, and bad ones refused', async () => {
    const open = (link) => app.call(applicationPath, 'OpenLink', 's', link);
    const many = 'To=d@example.org&cc=e@example.org,f@example.org&BCC=g@example.org';
    const texts = 'subject=Gr%C3%BC%C3%9Fe%20%F0%9F%8C%8D%20a+b%26c&body=one%0D%0Atwo&attach=/etc/passwd&from=eve';
    const all = (...addresses) => addresses.map((address) => recipient(address));
    const to = all('ann@example.org', 'b,c@example.org', 'd@example.org');
    const cc = all('e@example.org', 'f@example.org');
    const good = [
      ['mailto:ann@example.org', { to: all('ann@example.org') }],
      [`MAILTO:ann@example.org,b%2Cc@example.org?${many}`, { to, cc, bcc: all('g@example.org') }],
      [`mailto:?${texts}`, { subject: 'Grüße 🌍 a+b&c', body: 'one\r\ntwo\n' }],
      ['mailto:', {}],
      ['mailto:,,a@example.org?&&subject=#top', { to: all('a@example.org') }],
    ];
    for (const [link] of good) await open(link);
    const composed = await app.composed(good.length);
    composed.forEach(([, text], i) => assert.deepStrictEqual(text, { ...empty, ...good[i][1] }, good[i][0]));

    const count = app.reports.length;
    const bad = {
      'http://example.org': /no mailto link/,
      '': /no mailto link/,
      'mailto:a%4': /percent sign/,
      'mailto:a%zz@example.org': /percent sign/,
      'mailto:%FF@example.org': /UTF-8/,
      'mailto:a@example.org?subject=x%0D%0ABcc:%20eve@example.org': /control characters/,
      'mailto:a@example.org%00': /control characters/,
      'mailto:a@example.org?body=%00': /control characters/,
      'mailto:a@example.org?subject': /without a value/,
    };
    for (const [link, reason] of Object.entries(bad)) assert.match(await refusal(open(link)), reason, link);
    assert.strictEqual(app.reports.length, count);
    // The desktop hands links to the application.
    const file = path.join(temporaryDirectory(t), 'org.tessaro.TessaroHost.desktop');
    fs.copyFileSync(path.join(root, 'host', 'TessaroHost.desktop'), file);
    const env = { ...process.env, ...session.env };
    await execute('gio', ['launch', file, 'mailto:ann@example.org?subject=Hi'], { env });
    const [[, launched]] = await app.composed(1);
    assert.deepStrictEqual([launched.subject, launched.to], ['Hi', all('ann@example.org')]);
  });
});

test('the object comes back with the bus, and is missing without one', async (t) => {
  const directory = temporaryDirectory(t);
  const bus = await startBus(t, directory);
  const app = await startApplication(t, { ...session.env, DBUS_SESSION_BUS_ADDRESS: bus.address });
  await app.make();
  await bus.stop();
  await startBus(t, directory);
  assert.strictEqual(await eventually(() => app.make().catch(() => false), 'the application is back'), messagePath(1));
  assert.strictEqual(await app.call(applicationPath, 'OutgoingMessageWithUniqueID', 'x', 0), `o "${messagePath(0)}"`);
});

scenarios({ host: true }).test('without a display and a bus there are no groups and no messages', (fixture) => {
  const { equal, native, sendMessage: send } = fixture;
  equal(native.recipientsForGroupName('x'), null);
  equal(send('TsASOutgoingMessage', 'outgoingMessages'), []);
});

const objects = inProcess.with({
  fixture: ({ sendMessage: send }) => ({
    send,
    make: (kind = '') => send(send(`TsASOutgoingMessage${kind}`, 'alloc'), 'init'),
  }),
});

objects.test('a message takes rich text, and its body ends with a line end', ({ equal, make, native, send }) => {
  const message = make();
  const ends = { 'a\nb': 'a\nb\n', 'a\r\nb\n': 'a\r\nb\n', 'a\rb': 'a\r\nb\n', 'a\u2029b': 'a\u2029\nb\n' };
  const texts = { ...ends, '': undefined, '\n\n': '\n\n', 'ä😀': 'ä😀\n' };
  const composed = [];
  native.setComposeOutgoingMessageCallbackFunction((json) => composed.push(JSON.parse(json).body));
  for (const text of Object.keys(texts)) {
    send(message, 'setContent:', send(send('NSAttributedString', 'alloc'), 'initWithString:', text));
    send(message, 'handleComposeScriptCommand:', null);
  }
  equal(composed, Object.values(texts));
});

objects.test('the specifiers of a message and of its elements lead to them', ({ equal, get, make, send }) => {
  const application = send('NSApplication', 'sharedApplication');
  const elements = { ToRecipients: 3, CcRecipients: 2, BccRecipients: 1, MailAttachments: 2 };
  const keyOf = (name) => name[0].toLowerCase() + name.slice(1);
  const message = make();
  const isFound = (object) => equal(get(object, 'objectSpecifier.objectsByEvaluatingSpecifier'), object);
  const expectSpecified = (count) => {
    isFound(message);
    for (const key of Object.keys(elements).map(keyOf)) {
      for (const each of get(message, key)) {
        isFound(each);
        equal(get(each, 'objectSpecifier.key'), key);
      }
    }
    equal(get(message, 'toRecipients').length, count);
  };
  send(application, 'setOutgoingMessages:', [message]);
  for (const [name, count] of Object.entries(elements)) {
    const made = Array.from({ length: count }, () => make(name.match(/Recipient|Attachment/)[0]));
    send(message, `set${name}:`, made);
  }
  expectSpecified(3);
  send(message, 'insertObject:inToRecipientsAtIndex:', make('Recipient'), 1);
  expectSpecified(4);
  send(message, 'removeObjectFromToRecipientsAtIndex:', 0);
  expectSpecified(3);
  send(application, 'setOutgoingMessages:', []);
  equal(send(application, 'outgoingMessages'), []);
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
  return objects.with({ display: false, host: false, home }).table(t, rows, ({ make, send }, text) => {
    const attachment = make('Attachment');
    send(attachment, 'setPath:', text);
    return send(attachment, 'path');
  });
});
