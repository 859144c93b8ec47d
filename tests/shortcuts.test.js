'use strict';

// Global shortcuts: recorded with keys that are really pressed, heard while other windows have the keyboard, and told
// apart from everything that can be wrong with them.

const assert = require('assert');
const { test } = require('node:test');

const { eventually } = require('./support/child');
const { shift, control, option, command } = require('./support/keys');
const { scenarios } = require('./support/scenario');

const withoutDisplay = scenarios({
  host: true,
  uses: ['keys'],
  fixture({ eventually, host, key, native, openKeyWindow, shortcuts }) {
    // The module's calls, in order.
    const statuses = [];
    const actions = [];
    host.on('notification', ({ name, userInfo }) => {
      if (name === 'TsKeyboardShortcutMonitorUpdated') statuses.push(userInfo);
      if (name === 'TsGlobalShortcutAction') actions.push(userInfo['defaults-key']);
    });
    const archive = (keyCode, modifiers) => Buffer.from(shortcuts.archives([keyCode, modifiers])[0], 'base64');
    return {
      ...{ statuses, actions, archive },
      describe: (name) => native.globalShortcutDescriptionForDefaultsKey(name),
      bind: (name, ...shortcut) => {
        if (shortcut.length > 0) host.setDefault(name, archive(...shortcut));
        native.bindGlobalShortcutWithDefaultsKey(name);
      },
      openWindow: openKeyWindow,
      /** Presses keys, and waits until one that is neither recorded nor heard has come through to the page. */
      async press(...keys) {
        const count = () => host.keyArrivals().length;
        const before = count();
        await key(...keys);
        await key('Tab');
        await eventually(() => count() > before && host.keyArrivals().at(-1).keyCode === 23, 'the last key');
      },
      /** Keys that are heard anywhere are heard some time after they are pressed, and nothing else tells when. */
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

const status = (shortcut, more = {}) => ({
  shortcut,
  error: '',
  'existing?': false,
  'valid?': true,
  'monitoring?': true,
  ...more,
});

// ---- Values

test('names of shortcuts', async (t) => {
  const names = [
    [[46, command | shift], '⇧⌘M'],
    [[46, command | shift | option | control], '⌃⌥⇧⌘M'],
    [[46, 0], 'M'],
    [[0xffff, control | option], '⌃⌥'],
    [[0xffff, 0], ''],
    [[49, option], '⌥Space'],
    [[36, command], '⌘↩'],
    [[122, 0], 'F1'],
    [[90, shift], '⇧F20'],
    [[123, command], '⌘←'],
    [[87, control], '⌃Keypad 5'],
    [[43, command], '⌘,'],
    // Caps Lock and the keypad are no part of a shortcut, and no key has this number.
    [[46, command | 0x10000 | 0x200000], '⌘M'],
    [[200, command], '⌘'],
  ];
  for (const run of [inSession, withoutDisplay]) {
    // Without a display the keyboard is taken for an American one.
    await run.table(t, names, ({ shortcuts }, shortcut) => shortcuts.describe(shortcut));
  }
});

test('names follow the layout, or the user’s first Latin layout', async (t) => {
  const layouts = {
    fr: 'A W É',
    de: 'Q Y 2',
    ru: 'Q Z 2',
    cz: 'Q Y Ě',
    gr: '; Z 2',
    'ru,de': 'Q Y 2',
    us: 'Q Z 2',
  };
  await inSession(
    t,
    async ({ eventually, run, shortcuts }, table) => {
      const described = () => [12, 6, 19].map((each) => shortcuts.describe([each, 0])).join(' ');
      for (const [layout, names] of Object.entries(table)) {
        await run('setxkbmap', layout);
        // The application learns of it when the server says so.
        await eventually(() => described() === names, `${layout} is ${names}`);
      }
    },
    layouts,
  );
});

test('which shortcuts are valid', (t) => {
  const [m, space, escape, left, f5, keypad5] = [46, 49, 53, 123, 96, 87];
  const invalid = [[m, 0], [m, shift], [m, option], [m, option | shift], [space, 0], [space, shift], [left, 0], [keypad5, option], [0xffff, command]]; // prettier-ignore
  const valid = [[m, command], [m, control], [m, command | option], [space, option], [escape, option], [f5, 0], [f5, shift]]; // prettier-ignore
  const rows = [...invalid.map((shortcut) => [shortcut, false]), ...valid.map((shortcut) => [shortcut, true])];
  return inSession.table(t, rows, ({ shortcuts }, shortcut) => shortcuts.valid(shortcut));
});

test('archives are read back in each form, and everything else is refused', async (t) => {
  // Of Apple's binary form: the values, where each begins, and what is known of both; the first value is the list.
  const binary = (...values) => {
    const number = (value) => [0, 0, 0, 0, 0, 0, 0, value];
    const starts = values.map((_, i) => 8 + values.slice(0, i).flat().length);
    const end = 8 + values.flat().length;
    const trailer = [0, 0, 0, 0, 0, 0, 1, 1, ...number(values.length), ...number(0), ...number(end)];
    return String.fromCharCode(...Buffer.from('bplist00'), ...values.flat(), ...starts, ...trailer);
  };
  const broken = [
    '',
    'text',
    '<?xml version="1.0"?><plist><dict/></plist>',
    `<?xml version="1.0"?>${'<array>'.repeat(2000)}`,
    '{"$objects"=("$null"); "$top"={root={"CF$UID"=7;};};}',
    '('.repeat(15000),
    '\0\x01\x02\x03'.repeat(50),
    'bplist00',
    `bplist00${'\xff'.repeat(40)}`,
    // An array that contains itself, arrays a dozen deep with more ways than can be gone, a text and data beyond the end.
    binary([0xa1, 0]),
    binary(...Array.from({ length: 12 }, (_, i) => [0xaf, 0x10, 20, ...Array(20).fill(i + 1)]), [0x08]),
    binary([0x5f, 0x13, 0x7f, 0, 0, 0, 0, 0, 0, 0]),
    binary([0x4f, 0x12, 0x00, 0xff, 0xff, 0xff]),
  ].map((text) => Buffer.from(text, 'latin1').toString('base64'));
  const result = await inSession(
    t,
    ({ shortcuts }, shortcut, texts) => {
      const archives = shortcuts.archives(shortcut);
      return {
        read: archives.map(shortcuts.unarchive),
        others: [...shortcuts.archivesOfOthers(), ...texts].map((text) => shortcuts.unarchive(text) ?? null),
        damaged: shortcuts.unarchiveDamaged(archives[0]) > 0,
      };
    },
    [46, command],
    broken,
  );
  assert.deepStrictEqual(result.read, ['⌘M', '⌘M', '⌘M']);
  assert.deepStrictEqual(
    result.others,
    result.others.map(() => null),
  );
  // One with a wrong number is a shortcut still; that the others are not, and that nothing has happened, is the point.
  assert.strictEqual(result.damaged, true);
});

test('shortcuts as dictionaries', (t) => {
  const whole = { keyCode: 46, modifierFlags: command };
  const rows = [{ keyCode: 46 }, { keyCode: 'a', modifierFlags: [] }, [1]].map((value) => [value, [null, null]]);
  rows.push([whole, ['⌘M', whole]]);
  return inSession.table(t, rows, ({ shortcuts }, value) => shortcuts.transform(value));
});

// ---- Recording

test('a recording shows held modifiers, refuses invalid shortcuts and accepts a valid one', async (t) => {
  const result = await inSession(
    t,
    async ({ captureLog, describe, host, log, native, openWindow, press, statuses }) => {
      captureLog();
      const window = await openWindow();
      native.startMonitoringKeyboardShortcuts('first');
      native.startMonitoringKeyboardShortcuts('second');
      const typed = host.windowInfo(window).typedText;
      const told = { '': statuses.splice(0) };
      for (const keys of ['ctrl', 'ctrl+w', 'ctrl+q', 'm', 'ctrl+n', 'ctrl+shift+k']) {
        await press(keys);
        told[keys] = statuses.splice(0);
      }
      return {
        told,
        log: log().filter((text) => text.startsWith('Already')),
        untyped: host.windowInfo(window).typedText.replaceAll('\t', '') === typed,
        stored: ['first', 'second'].map(describe),
      };
    },
  );
  const refused = { error: '⌘N is the shortcut of the menu item “New Message”.', 'valid?': false };
  assert.deepStrictEqual(result, {
    told: {
      '': [status('')],
      ctrl: [status('⌘'), status('')],
      'ctrl+w': [status('⌘'), status('')],
      'ctrl+q': [status('⌘'), status('')],
      m: [],
      'ctrl+n': [status('⌘'), status('⌘N', refused), status('')],
      'ctrl+shift+k': [status('⌘'), status('⇧⌘'), status('⇧⌘K', { 'monitoring?': false })],
    },
    log: ['Already monitoring: Cannot turn on monitor for shortcuts.'],
    untyped: true,
    stored: ['⇧⌘K', null],
  });
});

test('Escape, Delete, Forward Delete and a stop restore the earlier shortcut', async (t) => {
  const result = await inSession(
    t,
    async ({ archive, describe, eventually, host, key, native, openWindow, statuses }, modifiers) => {
      await openWindow();
      const told = {};
      for (const name of ['Escape', 'BackSpace', 'Delete', 'stop']) {
        host.setDefault(name, archive(46, modifiers));
        native.startMonitoringKeyboardShortcuts(name);
        const during = describe(name);
        if (name === 'stop') native.stopMonitoringKeyboardShortcuts();
        else await key(name);
        await eventually(() => statuses.length > 1, name);
        native.stopMonitoringKeyboardShortcuts();
        told[name] = [during, statuses.splice(0), describe(name)];
      }
      // With nothing to bring back, and with what is no shortcut.
      host.setDefault('text', 'as it was');
      for (const name of ['none', 'text']) {
        native.startMonitoringKeyboardShortcuts(name);
        native.stopMonitoringKeyboardShortcuts();
      }
      return { told, others: statuses, text: native.getUserDefault('text') };
    },
    command | shift,
  );
  const restored = [
    null,
    [status('', { 'existing?': true }), status('⇧⌘M', { 'existing?': true, 'monitoring?': false })],
    '⇧⌘M',
  ];
  const ended = status('', { 'existing?': true, 'monitoring?': false });
  assert.deepStrictEqual(result, {
    told: { Escape: restored, BackSpace: restored, Delete: restored, stop: restored },
    others: [status(''), ended, status('', { 'existing?': true }), ended],
    text: 'as it was',
  });
});

test('an accepted shortcut stays until a stop, which restores the earlier one', async (t) => {
  const result = await inSession(
    t,
    async ({ archive, describe, host, native, openWindow, press }, modifiers) => {
      await openWindow();
      host.setDefault('key', archive(46, modifiers));
      native.startMonitoringKeyboardShortcuts('key');
      await press('ctrl+alt+k');
      const accepted = describe('key');
      native.startMonitoringKeyboardShortcuts('other');
      native.stopMonitoringKeyboardShortcuts();
      const beside = describe('key');
      native.startMonitoringKeyboardShortcuts('key');
      await press('ctrl+alt+j');
      native.stopMonitoringKeyboardShortcuts();
      return [accepted, beside, describe('key')];
    },
    command | shift,
  );
  assert.deepStrictEqual(result, ['⌥⌘K', '⌥⌘K', '⌥⌘K']);
});

// ---- Binding

test('a bound shortcut works in every application, with any locks on', async (t) => {
  const result = await inSession(
    t,
    async ({ bind, eventually, hear, host, key, openWindow }, modifiers) => {
      const window = await openWindow();
      bind('key', 46, modifiers);
      bind('key');
      bind('alone', 96, 0);
      bind('empty');
      const heard = {};
      heard.inWindow = await hear(['ctrl+shift+m', 'F5'], 2);
      const types = async () => (await key('3')) || host.windowInfo(window).typedText.includes('3');
      const stillTypes = await eventually(types, 'typing');
      host.closeWindow(window);
      heard.elsewhere = await hear(['ctrl+shift+m', 'F5'], 2);
      for (const locks of [['Num_Lock'], ['Caps_Lock'], ['Num_Lock', 'Caps_Lock'], ['Scroll_Lock']]) {
        await key(...locks);
        heard[locks] = await hear(['ctrl+shift+m', 'F5'], 2);
        await key(...locks);
      }
      heard.others = await hear(['ctrl+m', 'ctrl+shift+alt+m', 'shift+m', 'shift+F5', 'F5'], 1);
      return { heard, stillTypes };
    },
    command | shift,
  );
  const both = ['key', 'alone'];
  assert.deepStrictEqual(result, {
    heard: {
      inWindow: both,
      elsewhere: both,
      Num_Lock: both,
      Caps_Lock: both,
      'Num_Lock,Caps_Lock': both,
      Scroll_Lock: both,
      others: ['alone'],
    },
    stillTypes: true,
  });
});

test('a held key is one press, also the key just recorded', async (t) => {
  const result = await inSession(
    t,
    async ({ actions, bind, describe, eventually, hear, key, native, openWindow, press, run, statuses }) => {
      await openWindow();
      // The server repeats a key after 0.66 s.
      const hold = async (name) => {
        await run('xdotool', 'keydown', name, 'sleep', '1.2', 'keyup', name);
        await press('3');
      };
      bind('key');
      native.startMonitoringKeyboardShortcuts('key');
      await hold('F6');
      const recorded = [describe('key'), actions.length];
      await hold('F6');
      const held = actions.length;
      native.startMonitoringKeyboardShortcuts('key');
      await key('F7');
      await eventually(() => statuses.some(({ shortcut }) => shortcut === 'F7'), 'another shortcut');
      return { recorded, held, atOnce: await hear(['F7', 'F7', 'F6'], 2) };
    },
  );
  assert.deepStrictEqual(result, { recorded: ['F6', 0], held: 1, atOnce: ['key', 'key'] });
});

test('the binding follows the stored shortcut, and is inactive while recording', async (t) => {
  const result = await inSession(t, async ({ actions, archive, bind, hear, host, native, openWindow, press }) => {
    await openWindow();
    const heard = {};
    bind('key');
    native.startMonitoringKeyboardShortcuts('key');
    await press('ctrl+shift+m');
    heard.recorded = await hear(['ctrl+shift+m'], 1);
    actions.length = 0;
    native.startMonitoringKeyboardShortcuts('key');
    await press('ctrl+shift+m');
    heard.duringRecording = [...actions];
    heard.again = await hear(['ctrl+shift+m'], 1);
    host.setDefault('key', archive(96, 0));
    heard.changed = await hear(['ctrl+shift+m', 'F5'], 1);
    host.setDefault('key', 'no shortcut');
    await press('F5');
    heard.broken = [...actions.splice(1)];
    host.setDefault('key', archive(96, 0));
    bind('same', 96, 0);
    heard.ofTwo = await hear(['F5'], 2);
    native.removeUserDefault('key');
    heard.ofTheOther = await hear(['F5'], 1);
    return heard;
  });
  assert.deepStrictEqual(result, {
    recorded: ['key'],
    duringRecording: [],
    again: ['key'],
    changed: ['key'],
    broken: [],
    ofTwo: ['key', 'same'],
    ofTheOther: ['same'],
  });
});

test('bindings survive changes of the layout and of modifier keys', async (t) => {
  const result = await inSession(
    t,
    async ({ actions, bind, env, eventually, fs, home, key, run }, shortcuts) => {
      for (const [name, modifiers] of Object.entries(shortcuts)) bind(name, 6, modifiers);
      const heard = {};
      const switchTo = {
        de: () => run('setxkbmap', 'de'),
        ru: () => run('setxkbmap', 'ru'),
        'us,ru': () => run('setxkbmap', 'us,ru'),
        'another bit for Super': async () => {
          const map = await run('xkbcomp', env.DISPLAY, '-');
          const file = `${home}/moved.xkb`;
          fs.writeFileSync(file, map.replace(/modifier_map Mod4/g, 'modifier_map Mod3'));
          await run('xkbcomp', '-w', 0, file, env.DISPLAY);
        },
        us: () => run('setxkbmap', 'us'),
      };
      for (const [name, change] of Object.entries(switchTo)) {
        await change();
        // The grabs are renewed when the server tells of the keyboard, and there is no other sign of that.
        await eventually(async () => {
          actions.length = 0;
          // The key right of the left Shift key, whatever is on it.
          await key('ctrl+shift+52', 'super+52');
          await eventually(() => actions.length >= 2, 'both', 100).catch(() => {});
          heard[name] = [...actions];
          return actions.length >= 2;
        }, name);
      }
      return heard;
    },
    { key: command | shift, super: control },
  );
  for (const [layout, heard] of Object.entries(result)) assert.deepStrictEqual(heard, ['key', 'super'], layout);
});

// ---- What is in the way

test('a shortcut of another process is refused and logged, and works there only', async (t) => {
  const shortcut = [46, command | shift];
  const other = await inSession.resident(t);
  await other.tell(({ bind, host }, ...theirs) => host.setKeepAlive(true) ?? bind('theirs', ...theirs), ...shortcut);
  const result = await inSession(
    t,
    async (
      { actions, bind, captureLog, eventually, host, key, log, native, openWindow, press, shortcuts, statuses },
      own,
    ) => {
      captureLog();
      const window = await openWindow();
      bind('ours', ...own);
      const why = shortcuts.whyTaken(own);
      // A key that is sent to the window reaches it whoever has grabbed it.
      native.startMonitoringKeyboardShortcuts('new');
      statuses.length = 0;
      host.probe('sendKey', { window: host.windowInfo(window).systemWindow, keycode: 58, held: [37, 50] });
      const refused = await eventually(() => statuses.find((status) => status.shortcut === '⇧⌘M'), 'the refusal');
      native.stopMonitoringKeyboardShortcuts();
      await key('ctrl+shift+m');
      await press('3');
      return { why, refused, actions, log: log().filter((text) => text.includes('ours')) };
    },
    shortcut,
  );
  const why = '⇧⌘M is already used by another application or by the system.';
  assert.deepStrictEqual(result, {
    why,
    refused: status('⇧⌘M', { error: why, 'valid?': false }),
    actions: [],
    log: [`The shortcut stored under ours is not active: ${why}`],
  });
  await eventually(async () => (await other.tell(({ actions }) => actions)).length === 1, 'their shortcut');

  // When they are gone it can be had.
  await other.kill();
  const after = await inSession(
    t,
    async ({ bind, hear, shortcuts }, own) => {
      bind('ours', ...own);
      return [shortcuts.whyTaken(own), await hear(['ctrl+shift+m'], 1)];
    },
    shortcut,
  );
  assert.deepStrictEqual(after, [null, ['ours']]);
});

test('malformed archives in the user defaults are logged and ignored', async (t) => {
  const result = await inSession(
    t,
    ({ archive, bind, captureLog, describe, host, log, shortcuts }, modifiers) => {
      captureLog();
      const sound = archive(46, modifiers);
      const wrongClass = Buffer.from(shortcuts.archivesOfOthers()[1], 'base64');
      const truncated = sound.subarray(0, 100);
      const values = { truncated, text: 'a text', number: 7, list: [sound], empty: Buffer.alloc(0), wrongClass };
      const answers = {};
      for (const [name, value] of Object.entries(values)) {
        host.setDefault(name, value);
        bind(name);
        answers[name] = [describe(name), log().some((text) => text.includes(`stored under ${name}`))];
      }
      return [answers, describe('nothing')];
    },
    command,
  );
  const none = [null, true];
  assert.deepStrictEqual(result, [
    { truncated: none, text: none, number: none, list: none, empty: none, wrongClass: none },
    null,
  ]);
});

test('listeners may throw, and may stop or restart the recording', async (t) => {
  const result = await inSession(t, async ({ bind, describe, hear, host, native, openWindow, press, thrownBy }) => {
    await openWindow();
    const thrown = [];
    process.on('uncaughtException', ({ message }) => thrown.push(message));
    bind('key', 96, 0);
    host.on('notification', ({ name }) => {
      if (name === 'TsGlobalShortcutAction') throw new Error('from the listener');
    });
    const heard = await hear(['F5', 'F5'], 2);
    host.once('notification', () => {
      throw new Error('from the recording');
    });
    thrown.push(thrownBy(() => native.startMonitoringKeyboardShortcuts('one')));
    // Another recording begins as soon as one has ended.
    host.once('notification', () => native.startMonitoringKeyboardShortcuts('two'));
    native.stopMonitoringKeyboardShortcuts();
    await press('ctrl+alt+k');
    host.removeAllListeners('notification');
    return { heard, thrown: thrown.filter(Boolean).sort(), stored: ['one', 'two'].map(describe) };
  });
  assert.deepStrictEqual(result, {
    heard: ['key', 'key'],
    thrown: ['from the listener', 'from the listener', 'from the recording'],
    stored: [null, '⌥⌘K'],
  });
});

test('a session without system-wide keys is reported as unsupported', async (t) => {
  const why = 'This session doesn’t let applications have shortcuts outside their own windows.';
  for (const env of [{ XDG_SESSION_TYPE: 'wayland' }, { WAYLAND_DISPLAY: 'wayland-0' }]) {
    const result = await inSession.with({ env })(
      t,
      async ({ bind, captureLog, describe, log, native, openWindow, press, statuses }) => {
        captureLog();
        await openWindow();
        bind('key', 96, 0);
        native.startMonitoringKeyboardShortcuts('other');
        await press('F6');
        return [statuses.at(-1), describe('key'), log().filter((text) => text.includes('key is not'))];
      },
    );
    assert.deepStrictEqual(result, [
      status('F6', { error: why, 'valid?': false }),
      'F5',
      [`The shortcut stored under key is not active: ${why}`],
    ]);
  }
});

test('without a display nothing is recorded, and stored shortcuts keep their names', async (t) => {
  const result = await withoutDisplay(
    t,
    ({ bind, describe, display, native, statuses }, modifiers) => {
      bind('key', 46, modifiers);
      native.startMonitoringKeyboardShortcuts('key');
      native.stopMonitoringKeyboardShortcuts();
      return [display.display, statuses, describe('key')];
    },
    command | shift,
  );
  assert.deepStrictEqual(result, [false, [], '⇧⌘M']);
});

test('registered keys don’t keep the process alive, and are released at its end', async (t) => {
  for (let round = 0; round < 2; ++round) {
    const why = await inSession(
      t,
      ({ bind, shortcuts }) => bind('key', 96, 0) ?? shortcuts.whyTaken([96, 0]) ?? 'free',
    );
    assert.strictEqual(why, 'free');
  }
});
