'use strict';

// The module in a Wayland session: a real compositor, its X server for the windows, and its seat for keys and clicks.
// docs/linux.md says for each function what to expect.

const { assert, execute, fs, path, test } = require('./support');
const { eventually, open, root, temporaryDirectory, useSession } = require('./support');

// Before the people, who would take an X session.
const session = useSession({ wayland: true });
const { startPerson } = require('./support/dialogs');

const page = fs.readFileSync(path.join(root, 'docs', 'linux.md'), 'utf8');
const rows = [...page.matchAll(/^\| ([^|]*`[^|]*) \| ([^|]*) \|$/gm)].map(([, names, what]) => ({
  names: [...names.matchAll(/`(\w+)`/g)].map(([, name]) => name),
  what: what.trim(),
}));

test('the table has each function once', () => {
  assert.deepStrictEqual(rows.flatMap((row) => row.names).sort(), Object.keys(open('TessaroNative')).sort());
});

/** The sentence, in quotation marks, of a function's row. */
const sentenceOf = (name) => rows.find(({ names }) => names.includes(name)).what.match(/“(.*)”/)[1];

/**
 * Clicks until the host's window has the keyboard. The places of windows on the display are the compositor's; this one is
 * large, and shows somewhere.
 */
async function clickHost(person) {
  const places = [100, 400, 700, 1000].flatMap((x) => [150, 600].map((y) => [x, y]));
  const hasKeyboard = async () => (await person.windows()).some((window) => window.title === 'Mail' && window.isKey);
  const click = async () => {
    places.push(places.shift());
    await person.click(places.at(-1));
    return eventually(hasKeyboard, 'the keyboard', 700).catch(() => false);
  };
  await eventually(click, 'a click on the window of the host', 60000);
}

test('windows take keys and clicks through Xwayland', async (t) => {
  const person = await startPerson(t);
  const name = 'TsSupportAndFeedbackMessageNotification';
  await person.tell(({ host, report }, awaited) => {
    host.on('notification', (posted) => posted.name === awaited && report(posted.userInfo.message));
  }, name);
  const title = 'Support and Feedback';
  await person.tell(({ native }) => native.openSupportAndFeedbackWindow('Ann', 'a@example.org', 'Hello', null, null));
  await person.window(title);
  await person.type('Under Wayland');
  await clickHost(person);
  await person.tell(({ native }) => native.attachFilesToSupportAndFeedbackWindow('[]'));
  await person.window(title);
  while ((await person.window(title)).focus !== 'Send') await person.key('Tab');
  await person.key('space');
  assert.strictEqual(await person.report(0), 'Under Wayland');
});

test('the file dialog is the desktop portal’s', async (t) => {
  const person = await startPerson(t);
  // The compositor does not give every new window the keyboard.
  await clickHost(person);
  await person.tell(({ native, window, report }) => native.showFileDialog(window, '{"title":"Files"}', report));
  // The portal's dialog is a Wayland application's: it takes the keyboard from the window, and no panel appears here.
  await person.window('Mail', ({ isKey }) => !isKey);
  assert.deepStrictEqual((await person.windows()).map((window) => window.title), ['Mail']); // prettier-ignore
  // Escape cancels, and no panel takes the dialog's place.
  const isAnswered = () => person.reports.length > 0;
  await person.until(isAnswered, () => person.key('Escape'), 'the answer of the file dialog');
  assert.strictEqual(await person.report(0), null);
  assert.ok(!JSON.stringify(await person.log()).includes('file dialog'));
});

test('the pasteboard is shared with other applications; what needs the whole display is refused', async (t) => {
  const person = await startPerson(t);
  const picture = path.join(root, 'docs', 'images', 'tour.png');
  const write = ({ native }, file) => native.writeFileContentsToGeneralPasteboard(file);
  assert.strictEqual(await person.tell(write, picture), true);
  const options = { env: { ...process.env, ...session.env }, encoding: 'buffer', maxBuffer: 1 << 26 };
  const paste = ['-selection', 'clipboard', '-o', '-t', 'image/png'];
  const { stdout: pasted } = await execute('xclip', paste, options);
  assert.deepStrictEqual(pasted, fs.readFileSync(picture));
  await person.tell(({ host, report }) => {
    host.on('notification', ({ name, userInfo }) => {
      if (name === 'TsKeyboardShortcutMonitorUpdated') report(userInfo.error ?? null);
    });
  });
  const record = ({ native, report }, folder) => native.takeScreenRecording(folder, (film) => report(['film', film]));
  await person.tell(record, temporaryDirectory(t));
  await eventually(() => person.reports.some((report) => Array.isArray(report)), 'the refusal');
  const log = JSON.stringify(await person.log());
  assert.ok(log.includes(sentenceOf('takeScreenRecording')), log);
  await person.tell(({ native }) => native.startMonitoringKeyboardShortcuts('key'));
  const isRefused = () => person.reports.includes(sentenceOf('startMonitoringKeyboardShortcuts'));
  await person.until(isRefused, () => person.key('F6'), 'the refusal of a shortcut');
});
