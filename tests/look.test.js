'use strict';

const sharp = require('sharp');
const { assert, execFileSync, fs, os, path, spawn, test } = require('./support');
const { eventually, hasPassed, root, scenarios, temporaryDirectory, useSession } = require('./support');
const { startPerson } = require('./support/dialogs');

const session = useSession();

const background = { light: 'fafafa', dark: '2b2b2b' };
const accent = '3584e4';

const inSession = () => ({ env: { ...process.env, ...session.env }, timeout: 20000 });
const run = (program, ...args) => execFileSync(program, args, inSession());

/** The colours, the font and the scale that windows have now. */
const lookOf = (person) =>
  person.tell(({ get, sendMessage: send }) => {
    const hexOf = (name) => {
      const color = send(send('NSColor', name), 'colorUsingColorSpaceName:', 'NSCalibratedRGBColorSpace');
      const parts = ['red', 'green', 'blue'].map((part) => Math.round(get(color, `${part}Component`) * 255));
      return Buffer.from(parts).toString('hex');
    };
    const font = send('NSFont', 'systemFontOfSize:', 0);
    return {
      background: hexOf('windowBackgroundColor'),
      accent: hexOf('selectedControlColor'),
      font: `${get(font, 'familyName')} ${Math.round(get(font, 'pointSize'))}`,
      scale: get(send('NSScreen', 'mainScreen'), 'userSpaceScaleFactor'),
      theme: send('GSTheme', 'theme').class,
    };
  });

const becomes = (person, expected) =>
  eventually(async () => {
    const look = await lookOf(person);
    return Object.keys(expected).every((key) => look[key] === expected[key]);
  }, JSON.stringify(expected)).catch(async (error) => {
    throw new Error(`${error.message}; it is ${JSON.stringify(await lookOf(person))}`);
  });

/** The settings daemon of an X session. Gives a function that has it publish other settings. */
function startSettingsDaemon(t, settings) {
  const file = path.join(temporaryDirectory(t), 'settings');
  const write = (text) => fs.writeFileSync(file, `${text}\n`);
  write(settings);
  const daemon = spawn('xsettingsd', ['-c', file], { ...inSession(), timeout: undefined, stdio: 'ignore' });
  t.after(() => daemon.kill());
  return {
    publish(text) {
      write(text);
      daemon.kill('SIGHUP');
    },
    end: () => daemon.kill(),
  };
}

test('font, scale and darkness follow the settings of the X session', async (t) => {
  const person = await startPerson(t);
  const { font, scale } = await lookOf(person);
  const atFirst = { background: background.light, accent, font, scale, theme: 'TsDesktopTheme' };
  assert.deepStrictEqual(await lookOf(person), atFirst);
  const daemon = startSettingsDaemon(t, 'Gtk/FontName "DejaVu Serif Book 12"\nXft/DPI 196608');
  await becomes(person, { font: 'DejaVu Serif 16', scale: 2, background: background.light });
  daemon.publish('Gtk/FontName "No Such Family 9"\nXft/DPI 98304\nNet/ThemeName "Adwaita-dark"');
  await becomes(person, { font, scale: 1, background: background.dark });
  const start = Date.now();
  daemon.publish(`Gtk/FontName "${'No '.repeat(20000)}9"\nXft/DPI 196608`);
  await becomes(person, { font, scale: 2, background: background.light });
  assert.ok(!hasPassed(start, 5000), `${Date.now() - start} ms`);
  daemon.end();
  await becomes(person, { font, scale, background: background.light });
});

test('a program that changes settings without end leaves the main thread to other work', async (t) => {
  const person = await startPerson(t);
  const turn = await person.tell(({ dialogs }, changes) => {
    dialogs.floodResources(changes);
    const start = Date.now();
    return new Promise((resolve) => setTimeout(() => resolve(Date.now() - start), 100));
  }, 200000);
  assert.ok(turn < 2000, `${turn} ms`);
});

test('the settings portal decides on darkness, and names the accent colour', async (t) => {
  startSettingsDaemon(t, 'Net/ThemeName "Adwaita-dark"');
  const person = await startPerson(t);
  await becomes(person, { background: background.dark });
  // Debian 12's portal knows no accent colour.
  const portal = await scenarios().with({ env: session.env }).resident(t);
  const say = (name, ...values) => portal.tell((fixture, each, all) => fixture.bus[each](...all), name, values);
  await say('setPortalScheme', 2);
  await becomes(person, { background: background.light, accent });
  await say('setPortalAccent', 1, 0.2, 0);
  await becomes(person, { accent: 'ff3300' });
  await say('setPortalAccent', -1, -1, -1);
  await becomes(person, { accent });
  // No preference.
  await say('setPortalScheme', 0);
  await becomes(person, { background: background.dark });
  await portal.kill();
  await becomes(person, { background: background.dark });
});

test('the real settings portal is followed', async (t) => {
  const person = await startPerson(t);
  const set = (...setting) => run('gsettings', 'set', 'org.gnome.desktop.interface', ...setting);
  const start = ['StartServiceByName', 'su', 'org.freedesktop.portal.Desktop', '0'];
  run('busctl', '--user', 'call', 'org.freedesktop.DBus', '/', 'org.freedesktop.DBus', ...start);
  set('color-scheme', 'prefer-dark');
  set('font-name', 'DejaVu Sans Mono 9');
  await becomes(person, { background: background.dark, font: 'DejaVu Sans Mono 12' });
  set('color-scheme', 'default');
  await becomes(person, { background: background.light });
});

test('damaged session settings end where the damage is', async (t) => {
  const settings = { 'Net/ThemeName': 'Adwaita-dark', 'Gtk/FontName': 'Sans 10' };
  const word = (value) => Buffer.from(Uint32Array.of(value).buffer);
  const padded = (text) => Buffer.from(text.padEnd(Math.ceil(text.length / 4) * 4, '\0'));
  const entries = Object.entries(settings).map(([name, value]) =>
    Buffer.concat([Buffer.from([1, 0, name.length, 0]), padded(name), word(0), word(value.length), padded(value)]),
  );
  const property = Buffer.concat([word(0), word(0), word(2), ...entries]).toString('latin1');
  const tooMany = `${property.slice(0, 8)}\xff\xff\xff\xff${property.slice(12)}`;
  const parse = ({ dialogs }, all) => all.map((text) => dialogs.parseSessionSettings(Buffer.from(text, 'latin1')));
  const starts = Array.from(property, (_, length) => property.slice(0, length));
  const [whole, endless, ...halves] = await scenarios()(t, parse, [property, tooMany, ...starts]);
  assert.deepStrictEqual([whole, endless], [settings, settings]);
  assert.ok(halves.every((each) => Object.keys(each).length <= 2));
});

test('a theme that the user has chosen is left alone', async (t) => {
  const home = temporaryDirectory(t);
  const before = await startPerson(t, { home });
  await before.tell(({ host, native }) => {
    host.setDefault('GSTheme', 'Chosen');
    native.synchronizeUserDefaults();
  });
  await before.resident.kill();
  assert.strictEqual((await lookOf(await startPerson(t, { home }))).theme, 'GSTheme');
});

/** Where strokes begin in a row of the display's pixels. */
async function darkColumns(t, [x, y, width, height]) {
  const file = path.join(temporaryDirectory(t), 'row.png');
  run('import', '-window', 'root', '-crop', `${width}x${height}+${Math.round(x)}+${Math.round(y)}`, file);
  const pixels = [...(await sharp(file).greyscale().raw().toBuffer())];
  return pixels.flatMap((shade, column) => (shade < 160 && !(pixels[column - 1] < 160) ? [column] : []));
}

test('an alert has the desktop’s colours', async (t) => {
  startSettingsDaemon(t, 'Net/ThemeName "Adwaita-dark"');
  const person = await startPerson(t);
  await becomes(person, { background: background.dark });
  // Without its modal loop, which would stop script.
  await person.tell(({ sendMessage: send }) => {
    const alert = send('NSAlert', 'new');
    send(alert, 'setMessageText:', "This version doesn't support scripts");
    send(alert, 'addButtonWithTitle:', 'Continue');
    send(alert, '_setupPanel');
    send(send(alert, 'window'), 'makeKeyAndOrderFront:', null);
  });
  const id = await person.onDisplay('Alert');
  await eventually(() => {
    const histogram = run('import', '-window', id, '-depth', '8', '-format', '%c', 'histogram:info:');
    const counts = [...String(histogram).matchAll(/(\d+):.*#(\w{6})/g)].map(([, count, hex]) => [hex, Number(count)]);
    const share = (hex) => (new Map(counts).get(hex.toUpperCase()) ?? 0) / counts.reduce((sum, [, n]) => sum + n, 0);
    return share(background.dark) > 0.6 && share(accent) > 0.02;
  }, 'a dark alert with a default button');
});

test('scaled text is spaced evenly', async (t) => {
  startSettingsDaemon(t, 'Xft/DPI 196608');
  const person = await startPerson(t);
  await becomes(person, { scale: 2 });
  // Longer than the runs that are drawn at a time.
  await person.tell(({ native }) => native.openSupportAndFeedbackWindow('', 'l'.repeat(40), '', null, null));
  const title = 'Support and Feedback';
  await person.window(title);
  const strokes = await eventually(async () => {
    // The window manager may still be moving the window.
    const { centre, size } = await person.view(title, ({ text }) => text?.startsWith('ll'));
    const columns = await darkColumns(t, [centre[0] - size[0] + 8, centre[1], 2 * size[0] - 16, 1]);
    return columns.length === 40 && columns;
  }, 'the text');
  const gaps = strokes.slice(1).map((column, index) => column - strokes[index]);
  assert.ok(Math.max(...gaps) - Math.min(...gaps) <= 1, gaps.join());
});

const contacts = JSON.stringify({
  'window-title': 'Recipients',
  'accept-button-label': 'Add',
  'cancel-button-label': 'Cancel',
  'edit-in-contacts-button-label': 'Edit',
});

const picture = path.join(root, 'docs', 'images', 'tour.png');

// How each window is opened, what Tab reaches in it, and what Return reports. Escape cancels, but in the picker, whose
// Cancel button has another key.
const windows = [
  {
    title: 'Support and Feedback',
    open: ({ native }) => native.openSupportAndFeedbackWindow('Ann', 'a@example.org', null, 'It crashes', null),
    stops: ['NSTextField', 'NSTextView', 'NSTableView', 'Attach Files...', 'Attach the log file', 'Cancel', 'Send'],
    accepted: 'TsSupportAndFeedbackMessageNotification',
  },
  {
    title: 'Recipients',
    open: ({ native, window }, texts) => native.pickEmailAddresses(window, texts),
    argument: contacts,
    stops: ['NSTableView', 'Add', 'Cancel', 'Edit'],
    cancel: 'Cancel',
    accepted: 'TsContactEmailAddressesPicked',
  },
  {
    title: path.basename(picture),
    open: ({ native }, file) => native.annotateImage(file, () => {}),
    argument: picture,
    stops: ['TsAnnotationView', 'Arrow', 'Box', 'Text', 'Blur', 'Cancel', 'Save'],
    cancelled: 'TsImageAnnotated',
  },
  {
    title: 'LICENSE',
    open: ({ native, window }, files) => native.quickLook(window, files, 0, () => {}),
    argument: JSON.stringify(['LICENSE', 'README.md'].map((name) => path.join(root, name))),
    // Arrows turn the pages, and Return opens: Tab has nothing to reach.
    stops: [],
  },
  { title: 'Software Update', open: ({ native }) => native.checkForUpdates(false, false), stops: ['OK'], accepted: '' },
  {
    title: 'Screen Recording',
    open: ({ native }, folder) => native.takeScreenRecording(folder, () => {}),
    argument: os.tmpdir(),
    stops: ['Whole Screen', 'Area…', 'Cancel'],
    cancelled: 'TsScreenRecorded',
  },
];

for (const { title, open, argument, stops, cancel = 'Escape', accepted, cancelled } of windows) {
  test(`“${title}” works by keyboard alone`, async (t) => {
    const person = await startPerson(t);
    await person.tell(({ host, report }) => {
      host.on('notification', ({ name }) => name.startsWith('Ts') && report(name));
    });
    const show = async () => {
      await person.tell(open, argument);
      await person.window(title);
    };
    const press = (key) =>
      person.until(
        async () => !(await person.windows()).some((window) => window.title === title),
        () => person.key(key),
        `the end by ${key}`,
      );
    const focusOn = async (button) => {
      while ((await person.window(title)).focus !== button) await person.key('Tab');
    };
    await show();
    const seen = new Set();
    for (let i = 0; i < 2 * stops.length + 4; ++i) {
      seen.add((await person.window(title)).focus);
      await person.key('Tab');
    }
    const missed = stops.filter((stop) => !seen.has(stop));
    assert.deepStrictEqual(missed, [], [...seen].join());
    if (cancel !== 'Escape') await focusOn(cancel);
    await press(cancel === 'Escape' ? 'Escape' : 'space');
    assert.ok(!person.reports.includes(accepted));
    if (cancelled) await eventually(() => person.reports.includes(cancelled), cancelled);
    if (accepted === undefined) return;
    await person.returnToMail();
    await show();
    await press('Return');
    if (accepted) await eventually(() => person.reports.includes(accepted), accepted);
  });
}

const reopened = windows.filter(({ cancelled }) => cancelled === undefined);

test('a window that is opened again, in another look, is as large as before and drawn whole', async (t) => {
  const daemon = startSettingsDaemon(t, 'Net/ThemeName "Adwaita"');
  const person = await startPerson(t);
  const edges = async (id) => {
    const size = (await person.xdotool('getwindowgeometry', id)).match(/\d+x\d+/)[0];
    const pixel = ['-crop', '1x1+3+3', '-depth', '8', 'rgb:-'];
    const colourOf = (gravity) => run('import', '-window', id, '-gravity', gravity, ...pixel).toString('hex');
    return [size, ...['NorthEast', 'SouthEast'].map(colourOf)];
  };
  const sizes = [];
  for (const look of ['light', 'dark']) {
    daemon.publish(`Net/ThemeName "Adwaita${look === 'dark' ? '-dark' : ''}"`);
    await becomes(person, { background: background[look] });
    for (const [index, { title, open, argument }] of reopened.entries()) {
      await person.tell(open, argument);
      await person.window(title);
      const id = await person.onDisplay(title);
      await eventually(async () => {
        const [size, ...corners] = await edges(id);
        return size === (sizes[index] ??= size) && corners.every((colour) => colour === background[look]);
      }, `${title}, ${look}, with its first size and the background in its corners`);
      await person.closeWindow(title);
      await person.isGone(title);
      await person.returnToMail();
    }
  }
});

test('windows have the size again that the user has given them', async (t) => {
  const home = temporaryDirectory(t);
  const given = {};
  for (const isFirst of [true, false]) {
    const person = await startPerson(t, { home });
    for (const { title, open, argument } of reopened) {
      await person.tell(open, argument);
      const { size } = await person.window(title, () => true);
      if (isFirst) {
        const larger = size.map((length) => Math.round(length) + 50);
        await person.xdotool('windowsize', await person.onDisplay(title), larger);
        const isLarger = (window) => window.size.every((length, i) => length > size[i]);
        given[title] = (await person.window(title, isLarger)).size;
      } else assert.deepStrictEqual(size, given[title], title);
      await person.closeWindow(title);
    }
    await person.tell(({ native }) => native.synchronizeUserDefaults());
    await person.resident.kill();
  }
});
