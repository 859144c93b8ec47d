'use strict';

const { assert, eventually, everything, fs, hasPassed, paced, path, startBus, startClient } = require('./support');
const { startNotificationServer, temporaryDirectory, test } = require('./support');

const none = { delivered: [], scheduled: [] };

/** A bus, a server with these capabilities, and a process that shows alerts there. */
async function session(t, capabilities = everything) {
  const bus = await startBus(t, temporaryDirectory(t));
  const server = await startNotificationServer(t, bus, capabilities);
  const env = { DBUS_SESSION_BUS_ADDRESS: bus.address };
  return { bus, server, env, client: await startClient(t, { env }) };
}

const activated = (identifier, type) => [
  ['TsNotificationDidActivate', identifier, { identifier, type }],
  ['TsNotificationActivation', null, { 'unique-id': identifier, type }],
];
const dismissed = (identifier) => ['TsNotificationDidDismiss', identifier, { identifier }];

const secondsFromNow = (seconds) => String(Math.floor(Date.now() / 1000) + seconds);

// ---- Contents

const silent = { 'suppress-sound': true };
const placeholder = (text) => ({ ...silent, 'x-kde-reply-placeholder-text': text });
const [show, reply, archive] = [['default', 'Show'], ['inline-reply', 'Reply'], ['button', 'Archive']]; // prettier-ignore
const lunch = { subtitle: 'Lunch & more', text: 'at 1 < 2\nToday?' };
const plain = 'Lunch & more\nat 1 < 2\nToday?';

// Capabilities, with the alerts and the body, actions and hints that come of them.
const contents = [
  [everything, { ...lunch, title: 'Ann <b>' }, 'Lunch &amp; more\nat 1 &lt; 2\nToday?', show, silent],
  [everything, {}, '', show, silent],
  [everything, { action: 1, actionTitle: 'Archive' }, '', [...show, ...archive], silent],
  [everything, { actionTitle: 'Archive' }, '', show, silent],
  [everything, { reply: true, placeholder: 'Dear …' }, '', [...show, ...reply], placeholder('Dear …')],
  [everything, { reply: true, action: true, actionTitle: 'Archive' }, '', [...show, ...reply], placeholder('')],
  [everything, { sound: 'Basso' }, '', show, { 'sound-file': '/usr/share/sounds/GNUstep/Basso.wav' }],
  [everything, { sound: '../Basso' }, '', show, silent],
  [['actions', 'body'], lunch, plain, show, silent],
  [[], { ...lunch, action: true, reply: true }, plain, [], silent],
  [['actions'], { reply: true, placeholder: 'x' }, '', [...show, 'button', 'Reply'], silent],
];

test('the server gets as much of an alert as its capabilities allow', async (t) => {
  for (const capabilities of new Set(contents.map(([each]) => each.join()))) {
    const { client, server } = await session(t, capabilities.split(',').filter(Boolean));
    const rows = contents.filter(([each]) => each.join() === capabilities);
    for (const [number, [, alert, body, actions, hints]] of rows.entries()) {
      const title = alert.title ?? `Title ${number}`;
      await client.deliver(title, { ...alert, title });
      const call = await server.shown(title);
      if (call.hints['sound-file']) call.hints['sound-file'] = fs.realpathSync(call.hints['sound-file']);
      const shown = [call.application, call.body, call.actions, call.hints];
      assert.deepStrictEqual(shown, ['node', body, actions, hints], JSON.stringify([capabilities, alert]));
    }
  }
});

test('long texts are shortened, control characters dropped and lone surrogates replaced', async (t) => {
  const { client, server } = await session(t);
  await client.tell(({ native }) => {
    const texts = ['a\0b\u0007c\n\ud83d', undefined, `a${'ü'.repeat(5e6)}`, 'x\0y'];
    native.deliverUserNotification('nul\0id', ...texts, false, undefined, true, '\0', undefined);
  });
  const call = await eventually(() => server.calls('Notify')[0], 'it is shown');
  assert.strictEqual(call.summary, 'abc\n\ufffd');
  assert.match(call.body, /^aü{1000,2999}…$/);
  server.command('invoke', call.id, 'button');
  assert.deepStrictEqual(await client.ends(1), [['nul\0id', 'action-button-clicked', '']]);
  await client.tell(({ native }) => native.deliverUserNotification(...Array(9).fill(''), undefined));
  assert.strictEqual((await server.shown('node')).body, '');
});

test('an alert replaces the one with its identifier', async (t) => {
  const { client, server } = await session(t);
  await client.deliver('a', { title: 'first' });
  const first = await server.shown('first');
  await client.isDelivered();
  await client.deliver('a', { title: 'second' });
  assert.strictEqual((await server.shown('second')).replacesId, first.id);
  server.command('withhold');
  await client.deliver('a', { title: 'third' });
  await server.shown('third');
  // A close signal while the replacement is in flight is ignored; a click is reported.
  await client.deliver('a', { title: 'fourth' });
  server.command('close', first.id, 2);
  server.command('answer');
  const fourth = await server.shown('fourth');
  assert.strictEqual(fourth.replacesId, first.id);
  assert.deepStrictEqual([await client.ends(), (await client.alerts()).delivered], [[], ['a']]);
  server.command('invoke', fourth.id, 'default');
  assert.deepStrictEqual(await client.ends(1), [['a', 'contents-clicked', '']]);
});

// ---- Ends

test('each alert ends once, and only what the user did is reported', async (t) => {
  const [click, press, close] = [['invoke', 'default'], ['invoke', 'button'], ['close', 2]]; // prettier-ignore
  const text = 'grüß\ndich 😀';
  const table = [
    [[click], 'contents-clicked'],
    [[press], 'action-button-clicked'],
    [[click, press, close], 'contents-clicked'],
    [[['reply', text], close], 'replied', text],
    [[['reply', '']], 'replied'],
    [[close, close, click], 'dismissed'],
    [[['babble'], close], 'dismissed'],
    // Expired, closed by another process, closed for no known reason.
    ...[1, 3, 4, 99].map((reason) => [[['close', reason]], null]),
  ];
  const { client, server } = await session(t);
  const reported = [];
  for (const [index, [signals, type, reply = '']] of table.entries()) {
    const identifier = `id ${index}`;
    await client.deliver(identifier, { reply: true });
    const { id } = await server.shown(identifier);
    await client.isDelivered();
    for (const [signal, ...args] of signals) server.command(signal, id, ...args);
    await eventually(async () => (await client.alerts()).delivered.length === 0, 'the end');
    const posted = type === 'dismissed' ? [dismissed(identifier)] : activated(identifier, type);
    assert.deepStrictEqual(await client.recorded(), type === null ? [] : posted);
    if (type !== null) reported.push([identifier, type, reply]);
  }
  assert.deepStrictEqual([await client.ends(), await client.warnings()], [reported, []]);
});

test('removed alerts are closed without a callback; the callback may deliver and remove alerts, and throw', async (t) => {
  const { client, server } = await session(t);
  for (const id of ['a', 'b', 'c']) await client.deliver(id);
  const { id } = await server.shown('b');
  await client.remove('b', 'none', 'b');
  await eventually(() => server.calls('CloseNotification').length === 1, 'it is closed');
  assert.strictEqual(server.calls('CloseNotification')[0].id, id);
  assert.deepStrictEqual(await client.alerts(), { delivered: ['a', 'c'], scheduled: [] });
  // An alert in flight is closed when the server has replied with its id.
  server.command('withhold');
  await client.deliver('d');
  await server.shown('d');
  await client.removeAll();
  server.command('answer');
  await eventually(() => server.calls('CloseNotification').length === 4, 'all are closed');
  assert.deepStrictEqual([await client.ends(), (await client.alerts()).delivered], [[], []]);
  // Removing an identifier removes the delivered alert first, then the scheduled one.
  await client.deliver('a', { at: secondsFromNow(1000), title: 'later' });
  await client.deliver('a', { title: 'now' });
  await server.shown('now');
  assert.strictEqual((await client.describe('a')).title, 'now');
  for (const scheduled of [['a'], []]) {
    await client.remove('a');
    assert.deepStrictEqual(await client.alerts(), { delivered: [], scheduled });
  }
  await client.tell(({ deliver, ends, native }) => {
    process.on('uncaughtException', (error) => ends.push(error.message));
    native.setNotificationCallbackFunction((id, type) => {
      ends.push([id, type]);
      native.removeUserNotifications();
      deliver('next');
      throw new Error('thrown by the callback');
    });
  });
  await client.deliver('first');
  server.command('invoke', (await server.shown('first')).id, 'default');
  assert.deepStrictEqual(await client.ends(2), [['first', 'contents-clicked'], 'thrown by the callback']);
  await server.shown('next');
});

test('every activation type is reported and posted; alerts without an identifier are logged only', async (t) => {
  const types = ['none', 'contents-clicked', 'action-button-clicked', 'replied', 'additional-action-clicked', 'unknown']; // prettier-ignore
  const client = await startClient(t);
  await client.tell(({ sendMessage: send, shared }) => {
    // As the centre tells its delegate.
    const tell = (event, identifier, type = 0, response = null, ...args) => {
      const alert = send('TsAlert', 'new');
      send(alert, 'setIdentifier:', identifier);
      send(alert, 'setActivationType:response:', type, response);
      send(shared, `userNotificationCenter:${event}:`, null, ...args, alert);
    };
    for (const type of [0, 1, 2, 3, 4, 5]) tell('didActivateNotification', 'id', type, type === 3 ? 'text' : null);
    tell('responseChanged:forNotification', 'id', 0, 'so far', 'so far');
    tell('responseChanged:forNotification', null, 0, 'so far', null);
    tell('didDismissAlert', null);
    tell('didActivateNotification', null, 1, 'x');
    tell('didDeliverNotification', 'id');
  });
  const activations = types.map((type) => ['id', type, type === 'replied' ? 'text' : '']);
  assert.deepStrictEqual(await client.ends(), [...activations, ['id', 'response-changed', 'so far']]);
  const delivered = ['TsNotificationDidDeliver', 'id', { identifier: 'id' }];
  assert.deepStrictEqual(await client.recorded(), [...types.flatMap((type) => activated('id', type)), delivered]);
  assert.deepStrictEqual(await client.warnings(), [
    "didActivateNotification: Couldn't process activation as unique-id is nil",
    "Couldn't dismiss alert as there's no identifier",
    "Couldn't activate notification as there's no identifier",
  ]);
});

// ---- Servers that fail

test('a restarted server gets the alerts again, according to its capabilities', async (t) => {
  const { bus, client, server } = await session(t);
  await client.deliver('a', { text: '<' });
  await client.deliver('b');
  await server.shown('b');
  await eventually(async () => (await client.alerts()).delivered.length === 2, 'both');
  await server.kill();
  const second = await startNotificationServer(t, bus, ['actions']);
  const again = await second.shown('a');
  assert.deepStrictEqual([again.body, again.replacesId], ['<', 0]);
  second.command('invoke', again.id, 'default');
  assert.deepStrictEqual(await client.ends(1), [['a', 'contents-clicked', '']]);
  // An alert that two servers did not survive is not shown to a third.
  await second.shown('b');
  await second.kill();
  await eventually(async () => (await client.alerts()).delivered.length === 0, 'the end');
  assert.strictEqual((await client.ends()).length, 1);
  await startNotificationServer(t, bus);
  await client.deliver('c');
  assert.deepStrictEqual((await client.alerts()).delivered, ['c']);
});

test('without a bus or a server an alert is dropped with a log line', async (t) => {
  const bus = await startBus(t, temporaryDirectory(t));
  for (const address of [undefined, 'unix:path=/nowhere', bus.address]) {
    const client = await startClient(t, { env: { DBUS_SESSION_BUS_ADDRESS: address } });
    await client.deliver('a');
    assert.match(await client.warned(), /^Couldn't deliver notification <TsAlert: \w+, identifier a>: \S+/);
    assert.deepStrictEqual([await client.ends(), await client.alerts(), await client.recorded()], [[], none, []]);
    assert.strictEqual(client.output.stderr, '');
  }
});

test('refusing, hanging and dying servers block neither script nor later alerts', async (t) => {
  const { bus, client, server } = await session(t);
  server.command('refuse', 'too many');
  await client.deliver('refused');
  assert.ok((await client.warned()).endsWith(': org.example.Refused: too many'));
  server.command('refuse', '');

  server.pause();
  const start = Date.now();
  await client.tell(({ deliver, native }) => {
    for (let i = 0; i < 100; ++i) deliver('late');
    for (let i = 0; i < 100; ++i) native.removeUserNotification('late');
  });
  await client.deliver('late');
  assert.ok(!hasPassed(start, 5000));
  server.resume();
  await server.shown('late');

  server.command('withhold');
  await client.deliver('lost');
  await server.shown('lost');
  await server.kill();
  await client.until(({ warnings }) => warnings().some((text) => text.includes('identifier lost>')));
  const second = await startNotificationServer(t, bus);
  await client.deliver('found');
  await second.shown('found');
});

// ---- Scheduled alerts

test('scheduled alerts are listed, removed, and delivered on time; wrong times mean in ten seconds', async (t) => {
  const { client, server } = await session(t);
  const due = Number(secondsFromNow(Math.ceil(paced(2))));
  await client.deliver('soon', { at: `${due} seconds`, text: 'x' });
  await client.deliver('removed', { at: String(due) });
  await client.deliver('never', { at: '9223372036854775807' });
  await client.deliver('far', { at: '99999999999999999999999' });
  await client.remove('removed');
  assert.deepStrictEqual(await client.alerts(), { delivered: [], scheduled: ['soon', 'never', 'far'] });
  const call = await server.shown('soon');
  const late = Date.now() - due * 1000;
  assert.ok(late >= 0 && !hasPassed(due * 1000, 1000), `${late} ms late`);
  assert.strictEqual(call.body, 'x');
  server.command('invoke', call.id, 'default');
  assert.deepStrictEqual(await client.ends(1), [['soon', 'contents-clicked', '']]);
  await client.removeAll();
  assert.deepStrictEqual(await client.alerts(), none);
  const debug = await client.debugLines();
  assert.ok(debug.some((line) => /^Schedule notification soon -> \d{4}-/.test(line)));
  assert.strictEqual(debug.filter((line) => line.startsWith('removing scheduled notification <TsAlert')).length, 2);
  assert.deepStrictEqual(server.calls('Notify').map(({ summary }) => summary), ['soon']); // prettier-ignore
  const texts = ['0', '-5', 'soon', '', '[object Object]', ' ', '1.5e12', 'NaN', '-9223372036854775809'];
  const inputs = [...texts, {}, false, NaN, Math.floor(Date.now() / 1000)];
  const remaining = await client.tell(({ describe, native }, all) => {
    const now = Date.now() / 1000;
    return all.map((at, i) => {
      native.deliverUserNotification(`id${i}`, null, null, null, null, false, null, false, null, at);
      return describe(`id${i}`).deliveryDate - now;
    });
  }, inputs);
  for (const [i, seconds] of remaining.entries()) assert.ok(seconds >= 10 && seconds < 15, `${inputs[i]}: ${seconds}`);
});

test('scheduled alerts survive a restart unchanged, also those that fall due without a server', async (t) => {
  const bus = await startBus(t, temporaryDirectory(t));
  const env = { DBUS_SESSION_BUS_ADDRESS: bus.address };
  const first = await startClient(t, { env });
  const { home } = first;
  const far = secondsFromNow(1000);
  const alert = { title: 'T\0ü😀', subtitle: 'a\nb', text: '<&>', sound: 'Basso', reply: true, placeholder: 'P' };
  await first.deliver('nul\0é', { ...alert, at: far });
  for (const id of ['removed', 'due']) await first.deliver(id, { at: secondsFromNow(1), text: 'x' });
  await first.until(({ warnings }) => warnings().length === 2);
  assert.deepStrictEqual((await first.alerts()).scheduled.sort(), ['due', 'nul\0é', 'removed']);
  await first.remove('removed');
  const properties = await first.describe('nul\0é');
  assert.strictEqual(Number(far), properties.deliveryDate);
  await first.kill();
  const folder = path.join(home, 'state', 'node', 'alerts');
  const files = fs.readdirSync(folder);
  assert.strictEqual(files.length, 2);
  for (const file of files) assert.strictEqual(fs.statSync(path.join(folder, file)).mode & 0o777, 0o600);

  // Truncated files and folders are ignored.
  fs.writeFileSync(path.join(folder, 'a.alert'), fs.readFileSync(path.join(folder, files[0])).subarray(0, 60));
  fs.mkdirSync(path.join(folder, 'b.alert'));

  const second = await startClient(t, { home, env });
  await second.until(({ warnings }) => warnings().some((text) => text.includes('identifier due>')));
  const server = await startNotificationServer(t, bus);
  assert.strictEqual((await server.shown('due')).body, 'x');
  await second.isDelivered();
  assert.deepStrictEqual(await second.alerts(), { delivered: ['due'], scheduled: ['nul\0é'] });
  assert.deepStrictEqual(await second.describe('nul\0é'), properties);
  await second.remove('nul\0é');
  await second.kill();
  const third = await startClient(t, { home, env });
  assert.deepStrictEqual(await third.alerts(), { delivered: ['due'], scheduled: [] });
  assert.deepStrictEqual(server.calls('Notify').map(({ summary }) => summary), ['due']); // prettier-ignore
});

test('alerts on screen outlive the process: they can be withdrawn, and their clicks are reported', async (t) => {
  const { bus, client: first, env, server } = await session(t);
  const options = { home: first.home, env };
  for (const id of ['withdrawn', 'clicked', 'replaced', 'lost']) await first.deliver(id, { text: 'x' });
  const isShown = (line) => line.startsWith('didDeliverNotification: ');
  const shown = async () => (await first.infoLines()).filter(isShown);
  await eventually(async () => (await shown()).length === 4, 'all four');
  // The order in which they are shown is not that of the calls.
  const idOf = (title) => server.calls('Notify').find(({ summary }) => summary === title).id;
  await first.kill();

  const second = await startClient(t, options);
  const listed = async () => (await second.alerts()).delivered.sort();
  assert.deepStrictEqual(await listed(), ['clicked', 'lost', 'replaced', 'withdrawn']);
  await second.remove('withdrawn');
  await eventually(() => server.calls('CloseNotification')[0]?.id === idOf('withdrawn'), 'it is closed');
  server.command('invoke', idOf('clicked'), 'default');
  assert.deepStrictEqual(await second.ends(1), [['clicked', 'contents-clicked', '']]);
  await second.deliver('replaced', { title: 'again' });
  assert.strictEqual((await server.shown('again')).replacesId, idOf('replaced'));
  assert.deepStrictEqual(await listed(), ['lost', 'replaced']);
  await second.kill();

  // Another server shows none of them.
  await server.kill();
  await startNotificationServer(t, bus);
  const third = await startClient(t, options);
  assert.deepStrictEqual((await third.alerts()).delivered, []);
  assert.deepStrictEqual(fs.readdirSync(path.join(options.home, 'state', 'node', 'alerts')), []);
});

test('where nothing can be written, a scheduled alert lives as long as the process, with a log line', async (t) => {
  const { env, server } = await session(t);
  const home = temporaryDirectory(t);
  fs.mkdirSync(path.join(home, 'state', 'node'), { recursive: true });
  fs.writeFileSync(path.join(home, 'state', 'node', 'alerts'), 'a file where the folder should be');
  const client = await startClient(t, { home, env });
  await client.deliver('a', { at: secondsFromNow(1) });
  assert.match((await client.warnings())[0], /identifier a>: it can't be kept beyond the end of this process$/);
  await server.shown('a');
});
