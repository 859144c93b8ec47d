'use strict';

const { assert, eventually, scenarios, test } = require('./support');
const { shift, control, option, command } = require('./support/keys');

const withoutDisplay = scenarios({
  host: true,
  uses: ['keys'],
  fixture({ eventually, get, host, key, lastError, native, openKeyWindow, sendMessage: send }) {
    // The module's calls, in order.
    const statuses = [];
    const actions = [];
    host.on('notification', ({ name, userInfo }) => {
      if (name === 'TsKeyboardShortcutMonitorUpdated') statuses.push(userInfo);
      if (name === 'TsGlobalShortcutAction') actions.push(userInfo['defaults-key']);
    });
    const make = (...shortcut) => send('MASShortcut', 'shortcutWithKeyCode:modifierFlags:', ...shortcut);
    const archiveOf = (value) => Buffer.from(send('NSKeyedArchiver', 'archivedDataWithRootObject:', value), 'base64');
    const archive = (...shortcut) => archiveOf(make(...shortcut));
    return {
      ...{ actions, archive, archiveOf, make, statuses },
      /** Another application's or the system's shortcut gives the reason. */
      whyTaken(...shortcut) {
        const validator = send('TsShortcutValidator', 'sharedValidator');
        send(validator, 'isShortcutAlreadyTakenBySystem:explanation:', make(...shortcut), null);
        return lastError();
      },
      status: (shortcut, more) =>
        Object.assign({ shortcut, error: '', 'existing?': false, 'valid?': true, 'monitoring?': true }, more),
      nameOf: (...shortcut) => get(make(...shortcut), 'description'),
      storedName: (name) => native.globalShortcutDescriptionForDefaultsKey(name),
      bind(name, ...shortcut) {
        if (shortcut.length > 0) host.setDefault(name, archive(...shortcut));
        native.bindGlobalShortcutWithDefaultsKey(name);
      },
      start: native.startMonitoringKeyboardShortcuts,
      stop: native.stopMonitoringKeyboardShortcuts,
      openWindow: openKeyWindow,
      /** Presses keys, and waits until one that is neither recorded nor heard has come through to the page. */
      async press(...keys) {
        const count = () => host.keyArrivals().length;
        const before = count();
        await key(...keys);
        await key('Tab');
        await eventually(() => count() > before && host.keyArrivals().at(-1).keyCode === 23, 'the last key');
      },
      /** Presses keys, and gives the actions: they come some time after the keys, and there is no other sign of them. */
      async hear(keys, count) {
        actions.length = 0;
        for (const each of keys) await key(each);
        await eventually(() => actions.length >= count, `${keys} heard`);
        return [...actions];
      },
    };
  },
});
const inSession = withoutDisplay.with({ display: true });

test('shortcuts are named by their modifiers’ symbols and their key', async (t) => {
  const names = [
    [46, command | shift, '⇧⌘M'],
    [46, command | shift | option | control, '⌃⌥⇧⌘M'],
    [46, 0, 'M'],
    [0xffff, control | option, '⌃⌥'],
    [0xffff, 0, ''],
    [49, option, '⌥Space'],
    [36, command, '⌘↩'],
    [122, 0, 'F1'],
    [90, shift, '⇧F20'],
    [123, command, '⌘←'],
    [87, control, '⌃Keypad 5'],
    [43, command, '⌘,'],
    // Caps Lock and the keypad are no part of a shortcut, and no key has this number.
    [46, command | 0x10000 | 0x200000, '⌘M'],
    [200, command, '⌘'],
  ];
  // Without a display the keyboard is taken for an American one.
  for (const run of [inSession, withoutDisplay])
    await run.table(t, names, ({ nameOf }, ...shortcut) => nameOf(...shortcut));
});

inSession.test('names follow the layout, or the user’s first Latin layout', async ({ eventually, nameOf, run }) => {
  const layouts = { fr: 'A W É', de: 'Q Y 2', ru: 'Q Z 2', cz: 'Q Y Ě', gr: '; Z 2', 'ru,de': 'Q Y 2', us: 'Q Z 2' };
  for (const [layout, names] of Object.entries(layouts)) {
    await run('setxkbmap', layout);
    // The application learns of it when the server says so.
    await eventually(() => [12, 6, 19].map((code) => nameOf(code, 0)).join(' ') === names, `${layout} is ${names}`);
  }
});

test('a shortcut is valid unless its keys type something', (t) => {
  const [m, space, escape, left, f5, keypad5] = [46, 49, 53, 123, 96, 87];
  const invalid = [[m, 0], [m, shift], [m, option], [m, option | shift], [space, 0], [space, shift], [left, 0], [keypad5, option], [0xffff, command]]; // prettier-ignore
  const valid = [[m, command], [m, control], [m, command | option], [space, option], [escape, option], [f5, 0], [f5, shift]]; // prettier-ignore
  const rows = [...invalid.map((shortcut) => [...shortcut, false]), ...valid.map((shortcut) => [...shortcut, true])];
  const isValid = ({ make, sendMessage }, ...shortcut) =>
    sendMessage(sendMessage('TsShortcutValidator', 'sharedValidator'), 'isShortcutValid:', make(...shortcut));
  return inSession.table(t, rows, isValid);
});

inSession.test('archives are read back in each form, malformed ones are logged and ignored', (fixture) => {
  const { archive, archiveOf, assert, bind, captureLog, command, equal, get, host, log } = fixture;
  const { sendMessage: send, storedName } = fixture;
  const serialization = 'NSPropertyListSerialization';
  const base64 = archive(46, 0x100000).toString('base64');
  const list = send(serialization, 'propertyListWithData:options:format:error:', { base64 }, 0, null, null);
  const inFormat = (format) => send(serialization, 'dataWithPropertyList:format:options:error:', list, format, 0, null);
  const unarchived = (text) => {
    const message = ['unarchivedObjectOfClass:fromData:error:', 'MASShortcut', { base64: text }, null];
    return get(send('NSKeyedUnarchiver', ...message), 'description');
  };
  const [xml, binary] = [100, 200];
  equal([base64, inFormat(xml), inFormat(binary)].map(unarchived), Array(3).fill('⌘M'));

  captureLog();
  const sound = archive(46, command);
  const wrongClass = archiveOf([1]);
  const truncated = sound.subarray(0, 100);
  const values = { truncated, text: 'a text', number: 7, list: [sound], empty: Buffer.alloc(0), wrongClass };
  for (const [name, value] of Object.entries(values)) {
    host.setDefault(name, value);
    bind(name);
    equal(storedName(name), null);
    assert.ok(log().some((text) => text.includes(`stored under ${name}`)), name); // prettier-ignore
  }
  equal(storedName('nothing'), null);
});

test('the transformer converts shortcuts to dictionaries and back', (t) => {
  const whole = { keyCode: 46, modifierFlags: command };
  const rows = [{ keyCode: 46 }, { keyCode: 'a', modifierFlags: [] }, [1]].map((value) => [value, [null, null]]);
  rows.push([whole, ['⌘M', whole]]);
  const transform = ({ get, sendMessage }, value) => {
    sendMessage('TsGlobalShortcut', 'sharedInstance');
    const transformer = sendMessage('NSValueTransformer', 'valueTransformerForName:', 'MASDictionaryTransformer');
    const shortcut = sendMessage(transformer, 'transformedValue:', value);
    return [get(shortcut, 'description'), sendMessage(transformer, 'reverseTransformedValue:', shortcut)];
  };
  return inSession.table(t, rows, transform);
});

inSession.test('a recording shows modifiers, refuses invalid shortcuts and accepts a valid one', async (fixture) => {
  const { captureLog, equal, host, log, openWindow, press, start, status, statuses, storedName } = fixture;
  captureLog();
  const window = await openWindow();
  start('first');
  start('second');
  equal(log().filter((text) => text.startsWith('Already')), ['Already monitoring: Cannot turn on monitor for shortcuts.']); // prettier-ignore
  const typed = host.windowInfo(window).typedText;
  equal(statuses.splice(0), [status('')]);
  const held = [status('⌘'), status('')];
  const refused = { error: '⌘N is the shortcut of the menu item “New Message”.', 'valid?': false };
  const accepted = status('⇧⌘K', { 'monitoring?': false });
  const table = [['ctrl', held], ['ctrl+w', held], ['ctrl+q', held], ['m', []], ['ctrl+n', [held[0], status('⌘N', refused), held[1]]], ['ctrl+shift+k', [held[0], status('⇧⌘'), accepted]]]; // prettier-ignore
  for (const [keys, expected] of table) {
    await press(keys);
    equal(statuses.splice(0), expected, keys);
  }
  equal(host.windowInfo(window).typedText.replaceAll('\t', ''), typed);
  equal(['first', 'second'].map(storedName), ['⇧⌘K', null]);
});

inSession.test('a recording that is not accepted restores the earlier shortcut', async (fixture) => {
  const { archive, command, equal, eventually, host, key, native, openWindow, press } = fixture;
  const { shift, start, status, statuses, stop, storedName } = fixture;
  await openWindow();
  const existing = { 'existing?': true };
  const ended = { ...existing, 'monitoring?': false };
  for (const name of ['Escape', 'BackSpace', 'Delete', 'stop']) {
    host.setDefault(name, archive(46, command | shift));
    start(name);
    equal(storedName(name), null);
    if (name === 'stop') stop();
    else await key(name);
    await eventually(() => statuses.length > 1, name);
    stop();
    equal(statuses.splice(0), [status('', existing), status('⇧⌘M', ended)]);
    equal(storedName(name), '⇧⌘M');
  }
  // With nothing to bring back, and with a text that is no shortcut.
  host.setDefault('text', 'as it was');
  for (const name of ['none', 'text']) {
    start(name);
    stop();
  }
  equal(statuses, [status(''), status('', ended), status('', existing), status('', ended)]);
  equal(native.getUserDefault('text'), 'as it was');
  // An accepted shortcut stays when another recording is stopped, and comes back when its next one is.
  host.setDefault('key', archive(46, command | shift));
  start('key');
  await press('ctrl+alt+k');
  equal(storedName('key'), '⌥⌘K');
  start('other');
  stop();
  equal(storedName('key'), '⌥⌘K');
  start('key');
  await press('ctrl+alt+j');
  stop();
  equal(storedName('key'), '⌥⌘K');
});

inSession.test('a bound shortcut works in every application, with any locks on', async (fixture) => {
  const { bind, command, equal, eventually, hear, host, key, openWindow, shift } = fixture;
  const window = await openWindow();
  bind('key', 46, command | shift);
  bind('key');
  bind('alone', 96, 0);
  bind('empty');
  const isHeard = async () => equal(await hear(['ctrl+shift+m', 'F5'], 2), ['key', 'alone']);
  await isHeard();
  await eventually(async () => (await key('3')) || host.windowInfo(window).typedText.includes('3'), 'typing');
  host.closeWindow(window);
  for (const locks of [[], ['Num_Lock'], ['Caps_Lock'], ['Num_Lock', 'Caps_Lock'], ['Scroll_Lock']]) {
    if (locks.length > 0) await key(...locks);
    await isHeard();
    if (locks.length > 0) await key(...locks);
  }
  equal(await hear(['ctrl+m', 'ctrl+shift+alt+m', 'shift+m', 'shift+F5', 'F5'], 1), ['alone']);
});

inSession.test('a held key is one press, also the key just recorded', async (fixture) => {
  const { actions, bind, equal, eventually, hear, key, openWindow, press, run, start, statuses, storedName } = fixture;
  await openWindow();
  // The server repeats a key after 0.66 s.
  const hold = async (name) => {
    await run('xdotool', 'keydown', name, 'sleep', '1', 'keyup', name);
    await press('3');
  };
  bind('key');
  start('key');
  await hold('F6');
  equal([storedName('key'), actions.length], ['F6', 0]);
  await hold('F6');
  equal(actions.length, 1);
  start('key');
  await key('F7');
  await eventually(() => statuses.some(({ shortcut }) => shortcut === 'F7'), 'another shortcut');
  // Until its release has been seen, the key is held.
  await press('3');
  equal(await hear(['F7', 'F7', 'F6'], 2), ['key', 'key']);
});

inSession.test('the binding follows the stored shortcut, and is inactive while recording', async (fixture) => {
  const { actions, archive, bind, equal, hear, host, native, openWindow, press, start } = fixture;
  await openWindow();
  bind('key');
  start('key');
  await press('ctrl+shift+m');
  equal(await hear(['ctrl+shift+m'], 1), ['key']);
  actions.length = 0;
  start('key');
  await press('ctrl+shift+m');
  equal(actions, []);
  equal(await hear(['ctrl+shift+m'], 1), ['key']);
  host.setDefault('key', archive(96, 0));
  equal(await hear(['ctrl+shift+m', 'F5'], 1), ['key']);
  host.setDefault('key', 'no shortcut');
  actions.length = 0;
  await press('F5');
  equal(actions, []);
  host.setDefault('key', archive(96, 0));
  bind('same', 96, 0);
  equal(await hear(['F5'], 2), ['key', 'same']);
  native.removeUserDefault('key');
  equal(await hear(['F5'], 1), ['same']);
});

inSession.test('bindings survive changes of the layout and of modifier keys', async (fixture) => {
  const { actions, bind, command, control, env, equal, eventually, fs, home, key, run, shift } = fixture;
  bind('key', 6, command | shift);
  bind('super', 6, control);
  const useMap = (layout) => run('setxkbmap', layout);
  const moveSuper = async () => {
    const file = `${home}/moved.xkb`;
    fs.writeFileSync(file, (await run('xkbcomp', env.DISPLAY, '-')).replace(/modifier_map Mod4/g, 'modifier_map Mod3'));
    await run('xkbcomp', '-w', 0, file, env.DISPLAY);
  };
  const changes = { de: useMap, ru: useMap, 'us,ru': useMap, 'another bit for Super': moveSuper, us: useMap };
  for (const [name, change] of Object.entries(changes)) {
    await change(name);
    // The grabs are renewed at an event of the server's, and there is no other sign of that.
    await eventually(async () => {
      actions.length = 0;
      // The key right of the left Shift key, whatever is on it.
      await key('ctrl+shift+52', 'super+52');
      await eventually(() => actions.length >= 2, 'both', 100).catch(() => {});
      return actions.length >= 2;
    }, name);
    equal(actions, ['key', 'super'], name);
  }
});

test('a shortcut of another process is refused and logged, and works there only', async (t) => {
  const other = await inSession.resident(t);
  await other.tell(({ bind, command, host, shift }) => host.setKeepAlive(true) ?? bind('theirs', 46, command | shift));
  await inSession(t, async (fixture) => {
    const { actions, bind, captureLog, command, equal, eventually, host, key, log, openWindow, press } = fixture;
    const { shift, start, status, statuses, stop, whyTaken } = fixture;
    const why = '⇧⌘M is already used by another application or by the system.';
    captureLog();
    const window = await openWindow();
    bind('ours', 46, command | shift);
    equal(whyTaken(46, command | shift), why);
    equal(log().filter((text) => text.includes('ours')), [`The shortcut stored under ours is not active: ${why}`]); // prettier-ignore
    // A key that is sent to the window reaches it whoever has grabbed it.
    start('new');
    statuses.length = 0;
    host.probe('sendKey', { window: host.windowInfo(window).systemWindow, keycode: 58, held: [37, 50] });
    const refused = await eventually(() => statuses.find((each) => each.shortcut === '⇧⌘M'), 'the refusal');
    equal(refused, status('⇧⌘M', { error: why, 'valid?': false }));
    stop();
    await key('ctrl+shift+m');
    await press('3');
    equal(actions, []);
  });
  await eventually(async () => (await other.tell(({ actions }) => actions)).length === 1, 'their shortcut');

  // The shortcut is free when the other process has ended. Registered keys don’t keep a process alive.
  await other.kill();
  const state = ({ bind, command, shift, whyTaken }) =>
    bind('ours', 46, command | shift) ?? whyTaken(46, command | shift) ?? 'free';
  for (let round = 0; round < 2; ++round) assert.strictEqual(await inSession(t, state), 'free');
});

inSession.test('listeners may throw, and may stop or restart the recording', async (fixture) => {
  const { bind, equal, hear, host, openWindow, press, start, stop, storedName, thrownBy } = fixture;
  await openWindow();
  const thrown = [];
  const throwing = (message) => () => {
    throw new Error(message);
  };
  process.on('uncaughtException', ({ message }) => thrown.push(message));
  bind('key', 96, 0);
  host.on('notification', ({ name }) => name === 'TsGlobalShortcutAction' && throwing('from the listener')());
  equal(await hear(['F5', 'F5'], 2), ['key', 'key']);
  host.once('notification', throwing('from the recording'));
  thrown.push(thrownBy(() => start('one')));
  equal(thrown.filter(Boolean).sort(), ['from the listener', 'from the listener', 'from the recording']);
  // Another recording begins as soon as one has ended.
  host.once('notification', () => start('two'));
  stop();
  await press('ctrl+alt+k');
  host.removeAllListeners('notification');
  equal(['one', 'two'].map(storedName), [null, '⌥⌘K']);
});

for (const env of [{ XDG_SESSION_TYPE: 'wayland' }, { WAYLAND_DISPLAY: 'wayland-0' }]) {
  const title = `a session without system-wide keys is reported as unsupported: ${Object.keys(env)}`;
  inSession.with({ env }).test(title, async (fixture) => {
    const { bind, captureLog, equal, log, openWindow, press, start, status, statuses, storedName } = fixture;
    const why = 'This session doesn’t let applications have shortcuts outside their own windows.';
    captureLog();
    await openWindow();
    bind('key', 96, 0);
    start('other');
    await press('F6');
    equal(statuses.at(-1), status('F6', { error: why, 'valid?': false }));
    equal(storedName('key'), 'F5');
    const refusals = log().filter((text) => text.includes('key is not'));
    equal(refusals, [`The shortcut stored under key is not active: ${why}`]);
  });
}

const title = 'without a display nothing is recorded, and stored shortcuts keep their names';
withoutDisplay.test(title, ({ bind, command, display, equal, shift, start, statuses, stop, storedName }) => {
  bind('key', 46, command | shift);
  start('key');
  stop();
  equal([display.display, statuses, storedName('key')], [false, [], '⇧⌘M']);
});
