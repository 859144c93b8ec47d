'use strict';

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { startClient, delivery } = require('./support/alerts');
const { startBus } = require('./support/bus');
const { eventually, evaluate, temporaryDirectory } = require('./support/child');
const { everything, startNotificationServer } = require('./support/notificationServer');

/** A bus, a server with these capabilities, and a process that shows alerts there. */
async function session(t, capabilities = everything) {
  const bus = await startBus(t, temporaryDirectory(t));
  const server = await startNotificationServer(t, bus, capabilities);
  const env = { DBUS_SESSION_BUS_ADDRESS: bus.address };
  return { bus, server, env, client: await startClient(t, { env }) };
}

const delivered = (identifier) => ['TsNotificationDidDeliver', identifier, { identifier }];
const activated = (identifier, type) => [
  ['TsNotificationDidActivate', identifier, { identifier, type }],
  ['TsNotificationActivation', null, { 'unique-id': identifier, type }],
];
const dismissed = (identifier) => ['TsNotificationDidDismiss', identifier, { identifier }];

const secondsFromNow = (seconds) => String(Math.floor(Date.now() / 1000) + seconds);

// ---- What is shown

test('what a server is given, by what it can do', async (t) => {
  const alert = { title: 'Ann <b>', subtitle: 'Lunch & more', text: 'at 1 < 2\nToday?' };
  const silent = { 'suppress-sound': true };
  const plain = ['default', 'Show'];
  const table = [
    ['markup', everything, alert, 'Lunch &amp; more\nat 1 &lt; 2\nToday?', plain, silent],
    ['no markup', ['actions', 'body'], alert, 'Lunch & more\nat 1 < 2\nToday?', plain, silent],
    ['nothing', [], { ...alert, action: true, reply: true }, 'Lunch & more\nat 1 < 2\nToday?', [], silent],
    ['text alone', everything, { text: 'x' }, 'x', plain, silent],
    ['nothing but a title', everything, {}, '', plain, silent],
    ['action', everything, { action: 1, actionTitle: 'Archive' }, '', [...plain, 'button', 'Archive'], silent],
    ['action without title', everything, { action: 'yes' }, '', [...plain, 'button', 'Show'], silent],
    ['title without action', everything, { actionTitle: 'Archive' }, '', plain, silent],
    [
      'reply',
      everything,
      { reply: true, placeholder: 'Dear …' },
      '',
      [...plain, 'inline-reply', 'Reply'],
      { ...silent, 'x-kde-reply-placeholder-text': 'Dear …' },
    ],
    [
      'reply before action',
      everything,
      { reply: true, action: true, actionTitle: 'Archive' },
      '',
      [...plain, 'inline-reply', 'Reply'],
      { ...silent, 'x-kde-reply-placeholder-text': '' },
    ],
    [
      'reply without a field',
      ['actions'],
      { reply: true, placeholder: 'x' },
      '',
      [...plain, 'button', 'Reply'],
      silent,
    ],
    ['sound', everything, { sound: 'Basso' }, '', plain, { 'sound-file': '/usr/share/sounds/GNUstep/Basso.wav' }],
    ['sound nobody knows', everything, { sound: '../Basso' }, '', plain, silent],
    ['sound without a server to play it', ['actions'], { sound: 'Basso' }, '', plain, silent],
  ];
  const bus = await startBus(t, temporaryDirectory(t));
  for (const [name, capabilities, shown, body, actions, hints] of table) {
    const server = await startNotificationServer(t, bus, capabilities);
    const client = await startClient(t, { env: { DBUS_SESSION_BUS_ADDRESS: bus.address } });
    await client.deliver('id', { title: 'Title', ...shown });
    const call = await server.shown(shown.title ?? 'Title');
    const soundFile = call.hints['sound-file'];
    if (soundFile !== undefined) call.hints['sound-file'] = fs.realpathSync(soundFile);
    assert.deepStrictEqual([name, call.body, call.actions, call.hints], [name, body, actions, hints]);
    assert.strictEqual(call.application, 'node');
    await client.kill();
    await server.kill();
  }
});

test('texts of any length and with any character are shown as far as a server can bear', async (t) => {
  const { client, server } = await session(t);
  const long = 'ü'.repeat(5_000_000);
  await client.run(`m.deliverUserNotification('nul\\0id', 'a\\0b\\u0007c\\n\\ud83d', undefined, 'ü'.repeat(5e6), 'x\\0y',
    false, undefined, true, '\\0', undefined)`);
  const call = await eventually(() => server.calls('Notify')[0], 'it is shown');
  assert.strictEqual(call.summary, 'abc\n\ufffd');
  assert.ok(call.body.length < 3000 && long.startsWith(call.body.slice(0, -1)) && call.body.endsWith('…'));
  server.command('invoke', call.id, 'button');
  assert.deepStrictEqual(await client.told(1), [['nul\0id', 'action-button-clicked', '']]);
  await client.run(`m.deliverUserNotification('', '', '', '', '', '', '', '', '', undefined)`);
  assert.strictEqual((await server.shown('node')).body, '');
});

test('an alert takes the place of the one with its identifier', async (t) => {
  const { client, server } = await session(t);
  await client.deliver('a', { title: 'first' });
  const first = await server.shown('first');
  await client.until(`JSON.parse(n.takeRecorded()).length === 1`);
  await client.deliver('a', { title: 'second' });
  assert.strictEqual((await server.shown('second')).replacesId, first.id);
  server.command('withhold');
  await client.deliver('a', { title: 'third' });
  await server.shown('third');
  // What happens to the third while the fourth is not shown yet is no news; a click is.
  await client.deliver('a', { title: 'fourth' });
  server.command('close', first.id, 2);
  server.command('answer');
  const fourth = await server.shown('fourth');
  assert.strictEqual(fourth.replacesId, first.id);
  assert.deepStrictEqual(await client.run('[told, JSON.parse(n.alerts()).delivered]'), [[], ['a']]);
  server.command('invoke', fourth.id, 'default');
  assert.deepStrictEqual(await client.told(1), [['a', 'contents-clicked', '']]);
});

// ---- What becomes of them

test('each alert ends once, whatever the server tells', async (t) => {
  const clicked = (type) => (id) => [...activated(id, type)];
  const table = [
    [[['invoke', 'default']], ['contents-clicked', ''], clicked('contents-clicked')],
    [[['invoke', 'button']], ['action-button-clicked', ''], clicked('action-button-clicked')],
    [
      [
        ['invoke', 'default'],
        ['invoke', 'button'],
        ['close', 2],
      ],
      ['contents-clicked', ''],
      clicked('contents-clicked'),
    ],
    [
      [
        ['reply', 'grüß\ndich 😀'],
        ['close', 2],
      ],
      ['replied', 'grüß\ndich 😀'],
      clicked('replied'),
    ],
    [[['reply', '']], ['replied', ''], clicked('replied')],
    [
      [
        ['close', 2],
        ['close', 2],
        ['invoke', 'default'],
      ],
      ['dismissed', ''],
      (id) => [dismissed(id)],
    ],
    [[['close', 1]], ['dismissed', ''], (id) => [dismissed(id)]],
    [[['close', 4]], ['dismissed', ''], (id) => [dismissed(id)]],
    [[['close', 99]], ['dismissed', ''], (id) => [dismissed(id)]],
    [[['babble'], ['close', 2]], ['dismissed', ''], (id) => [dismissed(id)]],
  ];
  const { client, server } = await session(t);
  for (const [index, [signals, told, posted]] of table.entries()) {
    const identifier = `id ${index}`;
    await client.deliver(identifier, { reply: true });
    const { id } = await server.shown(identifier);
    for (const [signal, ...args] of signals) server.command(signal, id, ...args);
    await client.told(index + 1);
    // A later alert tells that everything before it has arrived.
    assert.deepStrictEqual((await client.run('told'))[index], [identifier, ...told]);
    await client.until('JSON.parse(n.alerts()).delivered.length === 0');
    const events = await client.run('JSON.parse(n.takeRecorded())');
    assert.deepStrictEqual(events, [delivered(identifier), ...posted(identifier)]);
  }
  assert.strictEqual((await client.run('told')).length, table.length);
  assert.deepStrictEqual(await client.run('warnings()'), []);
});

test('what is removed is closed, and nobody is told', async (t) => {
  const { client, server } = await session(t);
  for (const id of ['a', 'b', 'c']) await client.deliver(id);
  const { id } = await server.shown('b');
  await client.run("m.removeUserNotification('b'), m.removeUserNotification('none'), m.removeUserNotification('b')");
  await eventually(() => server.calls('CloseNotification').length === 1, 'it is closed');
  assert.strictEqual(server.calls('CloseNotification')[0].id, id);
  assert.deepStrictEqual(await client.run('JSON.parse(n.alerts())'), { delivered: ['a', 'c'], scheduled: [] });
  // One that is on its way is closed when the server has it.
  server.command('withhold');
  await client.deliver('d');
  await server.shown('d');
  await client.run('m.removeUserNotifications()');
  server.command('answer');
  await eventually(() => server.calls('CloseNotification').length === 4, 'all are closed');
  assert.deepStrictEqual(await client.run('[told, JSON.parse(n.alerts()).delivered]'), [[], []]);
});

test('script may deliver and remove alerts while it is told of one, and may throw', async (t) => {
  const { client, server } = await session(t);
  await client.run(`process.on('uncaughtException', (error) => told.push(error.message));
    m.setNotificationCallbackFunction((id, type) => {
      told.push([id, type]);
      m.removeUserNotifications();
      ${delivery('next')};
      throw new Error('thrown by the callback');
    })`);
  await client.deliver('first');
  server.command('invoke', (await server.shown('first')).id, 'default');
  assert.deepStrictEqual(await client.told(2), [['first', 'contents-clicked'], 'thrown by the callback']);
  await server.shown('next');
});

test('every activation type, with and without an identifier', async (t) => {
  const types = [
    'none',
    'contents-clicked',
    'action-button-clicked',
    'replied',
    'additional-action-clicked',
    'unknown',
  ];
  const { told, posted, warnings, debugLines, infoLines } = await evaluate(
    t,
    `const { module: m, notifications: n, captureLog, capturedLog, flushLog } = probe();
     captureLog(); n.record();
     n.activate('unheard', 1, null);
     const told = [];
     m.setNotificationCallbackFunction((...args) => told.push(args));
     for (const type of [0, 1, 2, 3, 4, 5]) n.activate('id', type, type === 3 ? 'text' : null);
     n.changeResponse('id', 0, 'so far'); n.dismiss('id', 0, null); n.deliver('id', 0, null);
     for (const call of ['activate', 'dismiss', 'deliver', 'changeResponse']) n[call](null, 1, 'x');
     flushLog();
     const lines = (level) => capturedLog().filter(({ flag }) => flag === level).map(({ text }) => text);
     console.log(JSON.stringify({ told, posted: JSON.parse(n.takeRecorded()),
       warnings: lines(2), debugLines: lines(8), infoLines: lines(4) }));`,
  );
  assert.deepStrictEqual(told, [
    ...types.map((type) => ['id', type, type === 'replied' ? 'text' : '']),
    ['id', 'response-changed', 'so far'],
    ['id', 'dismissed', ''],
  ]);
  assert.deepStrictEqual(posted, [
    ...activated('unheard', 'contents-clicked'),
    ...types.flatMap((type) => activated('id', type)),
    dismissed('id'),
    delivered('id'),
  ]);
  assert.deepStrictEqual(warnings, [
    "Couldn't activate notification as there's no identifier",
    "Couldn't dismiss alert as there's no identifier",
    "didActivateNotification: Couldn't process activation as unique-id is nil",
  ]);
  assert.deepStrictEqual(debugLines.slice(0, 2), [
    'didActivateNotification: (unique-id=unheard) (type=contents-clicked) (response=(null))',
    'didActivateNotification: (unique-id=id) (type=none) (response=(null))',
  ]);
  assert.ok(debugLines.includes('didActivateNotification: (unique-id=id) (type=replied) (response=text)'));
  assert.ok(debugLines.some((line) => line.startsWith('dismissed notification: <NSUserNotification')));
  assert.strictEqual(infoLines.filter((line) => line.startsWith('didDeliverNotification: ')).length, 2);
});

// ---- Servers that fail

test('a server started anew is given the alerts again, with what it can do', async (t) => {
  const { bus, client, server } = await session(t);
  await client.deliver('a', { text: '<' });
  await client.deliver('b');
  await server.shown('b');
  await client.until('JSON.parse(n.takeRecorded()).length >= 0 && JSON.parse(n.alerts()).delivered.length === 2');
  await server.kill();
  const second = await startNotificationServer(t, bus, ['actions']);
  const again = await second.shown('a');
  assert.strictEqual(again.body, '<');
  assert.strictEqual(again.replacesId, 0);
  second.command('invoke', again.id, 'default');
  assert.deepStrictEqual(await client.told(1), [['a', 'contents-clicked', '']]);
  // What two servers did not survive is not shown to a third.
  await second.shown('b');
  await second.kill();
  assert.deepStrictEqual((await client.told(2))[1], ['b', 'dismissed', '']);
  await startNotificationServer(t, bus);
  await client.deliver('c');
  assert.deepStrictEqual(await client.run('JSON.parse(n.alerts()).delivered'), ['c']);
});

test('without a bus or a server the log says why nothing is shown', async (t) => {
  const bus = await startBus(t, temporaryDirectory(t));
  for (const address of [undefined, 'unix:path=/nowhere', bus.address]) {
    const client = await startClient(t, { env: { DBUS_SESSION_BUS_ADDRESS: address } });
    await client.deliver('a');
    const [warning] = await client.until('warnings().length > 0 && warnings()');
    assert.match(warning, /^Couldn't deliver notification <NSUserNotification: \w+, identifier a>: \S+/);
    assert.deepStrictEqual(await client.run('[told, JSON.parse(n.alerts()), JSON.parse(n.takeRecorded())]'), [
      [],
      { delivered: [], scheduled: [] },
      [],
    ]);
    assert.strictEqual(client.output.stderr, '');
    await client.kill();
  }
});

test('a server that refuses, hangs or dies stops nothing', async (t) => {
  const { bus, client, server } = await session(t);
  server.command('refuse', 'too many');
  await client.deliver('refused');
  const [warning] = await client.until('warnings().length > 0 && warnings()');
  assert.ok(warning.endsWith(': org.example.Refused: too many'));
  server.command('refuse', '');

  server.pause();
  const start = Date.now();
  await client.run(
    `for (let i = 0; i < 100; ++i) ${delivery('late')}; for (let i = 0; i < 100; ++i) m.removeUserNotification('late')`,
  );
  await client.deliver('late');
  assert.ok(Date.now() - start < 5000);
  server.resume();
  await server.shown('late');

  server.command('withhold');
  await client.deliver('lost');
  await server.shown('lost');
  await server.kill();
  await client.until("warnings().some((text) => text.includes('identifier lost>'))");
  const second = await startNotificationServer(t, bus);
  await client.deliver('found');
  await second.shown('found');
});

// ---- Alerts for later

test('scheduled alerts are listed, removed, and delivered on time', async (t) => {
  const { client, server } = await session(t);
  const due = Number(secondsFromNow(3));
  await client.deliver('soon', { at: `${due} seconds`, text: 'x' });
  await client.deliver('removed', { at: String(due) });
  await client.deliver('never', { at: '9223372036854775807' });
  await client.deliver('far', { at: '99999999999999999999999' });
  await client.run("m.removeUserNotification('removed')");
  assert.deepStrictEqual(await client.run('JSON.parse(n.alerts())'), {
    delivered: [],
    scheduled: ['soon', 'never', 'far'],
  });
  const call = await server.shown('soon');
  const late = Date.now() / 1000 - due;
  assert.ok(late >= 0 && late < 1, `${late} s late`);
  assert.strictEqual(call.body, 'x');
  server.command('invoke', call.id, 'default');
  assert.deepStrictEqual(await client.told(1), [['soon', 'contents-clicked', '']]);
  await client.run('m.removeUserNotifications()');
  assert.deepStrictEqual(await client.run('JSON.parse(n.alerts())'), { delivered: [], scheduled: [] });
  const debug = await client.run('debugLines()');
  assert.ok(debug.some((line) => /^Schedule notification soon -> \d{4}-/.test(line)));
  assert.strictEqual(debug.filter((line) => line.startsWith('removing scheduled notification <NSUserNot')).length, 2);
  assert.deepStrictEqual(
    server.calls('Notify').map(({ summary }) => summary),
    ['soon'],
  );
});

test('a moment that has passed, or is none, is ten seconds from now', async (t) => {
  const texts = ['0', '-5', 'soon', '', '[object Object]', ' ', '1.5e12', 'NaN', '-9223372036854775809'];
  const inputs = [...texts.map((text) => JSON.stringify(text)), '{}', 'false', 'NaN', 'Math.floor(Date.now() / 1000)'];
  const remaining = await evaluate(
    t,
    `const { module: m, notifications: n } = probe();
     const now = Date.now() / 1000;
     console.log(JSON.stringify([${inputs}].map((at, i) => {
       m.deliverUserNotification('id' + i, null, null, null, null, false, null, false, null, at);
       return JSON.parse(n.describe('id' + i)).deliveryDate - now;
     })));`,
  );
  for (const [i, seconds] of remaining.entries()) assert.ok(seconds >= 10 && seconds < 13, `${inputs[i]}: ${seconds}`);
});

test('scheduled alerts outlive the process, with everything in them', async (t) => {
  const { bus, env, server } = await session(t);
  const home = temporaryDirectory(t);
  const options = { home, env };
  const first = await startClient(t, options);
  const far = secondsFromNow(1000);
  const alert = { title: 'T\0ü😀', subtitle: 'a\nb', text: '<&>', sound: 'Basso', reply: true, placeholder: 'P' };
  await first.deliver('nul\0é', { ...alert, at: far });
  await first.deliver('due', { at: secondsFromNow(1), text: 'x' });
  await first.deliver('removed', { at: far });
  await first.run("m.removeUserNotification('removed')");
  const properties = await first.run("JSON.parse(n.describe('nul\\0é'))");
  await first.kill();
  const folder = path.join(home, 'state', 'node', 'alerts');
  const files = fs.readdirSync(folder);
  assert.strictEqual(files.length, 2);
  for (const file of files) assert.strictEqual(fs.statSync(path.join(folder, file)).mode & 0o777, 0o600);

  // Files that are none of ours, or no more, change nothing.
  for (const [name, contents] of [
    ['a.alert', ''],
    ['b.alert', 'rubbish'],
    ['c.alert', 'bplist00\xff\xff'],
    ['d.txt', 'x'],
  ]) {
    fs.writeFileSync(path.join(folder, name), contents, 'latin1');
  }
  fs.writeFileSync(path.join(folder, 'e.alert'), fs.readFileSync(path.join(folder, files[0])).subarray(0, 60));
  fs.mkdirSync(path.join(folder, 'f.alert'));

  await new Promise((resolve) => setTimeout(resolve, 1100));
  const second = await startClient(t, options);
  assert.strictEqual((await server.shown('due')).body, 'x');
  assert.deepStrictEqual(await second.run("JSON.parse(n.describe('nul\\0é'))"), properties);
  assert.strictEqual(Number(far), properties.deliveryDate);
  await second.run("m.removeUserNotification('nul\\0é')");
  await second.kill();
  const third = await startClient(t, { home, env: { DBUS_SESSION_BUS_ADDRESS: bus.address } });
  assert.deepStrictEqual(await third.run('JSON.parse(n.alerts())'), { delivered: [], scheduled: [] });
  assert.deepStrictEqual(
    server.calls('Notify').map(({ summary }) => summary),
    ['due'],
  );
});

test('an identifier may be delivered and scheduled: the delivered alert is found, and removed, first', async (t) => {
  const { client, server } = await session(t);
  await client.deliver('a', { at: secondsFromNow(1000), title: 'later' });
  await client.deliver('a', { title: 'now' });
  await server.shown('now');
  assert.strictEqual((await client.run("JSON.parse(n.describe('a'))")).title, 'now');
  await client.run("m.removeUserNotification('a')");
  assert.deepStrictEqual(await client.run('JSON.parse(n.alerts())'), { delivered: [], scheduled: ['a'] });
  await client.run("m.removeUserNotification('a')");
  assert.deepStrictEqual(await client.run('JSON.parse(n.alerts())'), { delivered: [], scheduled: [] });
});

test('where nothing can be written, an alert is scheduled for this process, and the log says so', async (t) => {
  const { env, server } = await session(t);
  const home = temporaryDirectory(t);
  fs.mkdirSync(path.join(home, 'state', 'node'), { recursive: true });
  fs.writeFileSync(path.join(home, 'state', 'node', 'alerts'), 'a file where the folder should be');
  const client = await startClient(t, { home, env });
  await client.deliver('a', { at: secondsFromNow(1) });
  assert.match((await client.run('warnings()'))[0], /identifier a>: it can't be kept beyond the end of this process$/);
  await server.shown('a');
});
