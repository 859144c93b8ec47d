'use strict';

const { assert, eventually, fs, hasPassed, path, scenarios, startAudioServer, startBus } = require('./support');
const { startClient, startNotificationServer, temporaryDirectory, temporaryFiles, test, tone } = require('./support');

/** A home with these files in its sound folder, and others. */
function homeWithSounds(t, sounds, others = {}) {
  const { folder, write } = temporaryFiles(t);
  for (const [name, contents] of Object.entries(sounds)) write(`Library/Sounds/${name}`, contents);
  for (const [name, contents] of Object.entries(others)) write(name, contents);
  return folder;
}

const quiet = tone({ amplitude: 1000, seconds: 20 });
const loud = tone({ amplitude: 16000, seconds: 20 });

const plain = scenarios();

test('every playable sound is listed once, those of the theme and its parents too, sorted case-sensitively', async (t) => {
  const quietFiles = 'zebra.wav Zoo.wav Äther.wav twice.wav Basso.wav two.dots.wav Upper.WAV sound.txt .wav';
  const sounds = {
    ...Object.fromEntries(quietFiles.split(' ').map((name) => [name, quiet])),
    'twice.oga': fs.readFileSync('/usr/share/sounds/freedesktop/stereo/bell.oga'),
    'text.wav': 'no sound',
    'empty.wav': '',
  };
  const index = '[Sound Theme]\nName=x\nDirectories=stereo\nInherits=';
  const home = homeWithSounds(t, sounds, {
    '.local/share/sounds/ours/index.theme': `${index}parent,ours,../x\n`,
    '.local/share/sounds/ours/stereo/of-ours.wav': quiet,
    '.local/share/sounds/parent/index.theme': `${index}missing\n`,
    '.local/share/sounds/parent/stereo/of-parent.wav': quiet,
    '.config/gtk-3.0/settings.ini': '[Settings]\ngtk-sound-theme-name=ours\n',
  });
  const folder = path.join(home, 'Library', 'Sounds');
  fs.symlinkSync(path.join(folder, 'nowhere.wav'), path.join(folder, 'link.wav'));
  fs.mkdirSync(path.join(folder, 'folder.wav'));
  const names = await plain.with({ home })(t, ({ native }) => native.getSoundNames());
  // Foundation compares decomposed characters.
  const own = ['Äther', 'Basso', 'Upper', 'Zoo', 'twice', 'two.dots', 'zebra'];
  const listed = (all) => names.filter((name) => all.includes(name));
  assert.deepStrictEqual(listed(own), own);
  const ascii = names.filter((name) => name !== 'Äther');
  assert.deepStrictEqual(ascii, [...new Set(ascii)].sort());
  const unplayable = ['text', 'empty', 'sound', '.wav', '', 'link', 'folder', 'New Mail'];
  const others = ['Ping', 'Tink', 'bell', 'message-new-instant', 'of-ours', 'of-parent'];
  assert.deepStrictEqual(listed([...unplayable, ...others]), others);
});

test('a preview is audible, and the next one cuts it off', async (t) => {
  const audio = await startAudioServer(t, temporaryDirectory(t));
  const home = homeWithSounds(t, { 'loud.wav': loud, 'quiet.wav': quiet });
  const client = await startClient(t, { home, env: audio.env });
  assert.strictEqual(audio.peak(), 0);
  assert.strictEqual(await client.play('loud'), true);
  await eventually(() => audio.peak() > 12000, 'the loud sound is heard');
  await client.play('quiet');
  await eventually(() => audio.peak(200) > 500 && audio.peak(200) < 2000, 'only the quiet sound is heard');
  const unknown = ['none', undefined, null, 3, '', 'loud\0', '../loud', {}];
  assert.strictEqual(await client.tell(({ native }, names) => names.some(native.playSoundWithName), unknown), false);
  assert.ok(audio.peak(200) > 500);
  for (let i = 0; i < 5; ++i) {
    await client.tell(({ native }) => {
      for (let k = 0; k < 20; ++k) native.playSoundWithName(k % 2 ? 'quiet' : 'loud');
    });
  }
  await eventually(() => audio.peak(200) > 500 && audio.peak(200) < 2000, 'the last of many is heard');
  await audio.kill();
  await client.play('loud');
  await client.until(({ warnings }) => warnings().some((text) => text.startsWith("Couldn't play a sound: ")));
  assert.strictEqual(client.output.stderr, '');
});

test('alert sounds are played by the module if the notification server plays none', async (t) => {
  const audio = await startAudioServer(t, temporaryDirectory(t));
  const bus = await startBus(t, temporaryDirectory(t));
  const env = { ...audio.env, DBUS_SESSION_BUS_ADDRESS: bus.address };
  const client = await startClient(t, { home: homeWithSounds(t, { 'loud.wav': loud }), env });
  const server = await startNotificationServer(t, bus, ['actions']);
  await client.deliver('silent');
  await server.shown('silent');
  await client.deliver('of an unknown sound', { sound: 'none' });
  await server.shown('of an unknown sound');
  assert.strictEqual(audio.peak(), 0);
  await client.deliver('heard', { sound: 'loud' });
  await eventually(() => audio.peak() > 12000, 'the alert is heard');
  const lines = (await client.debugLines()).filter((line) => line.startsWith('sound with'));
  assert.deepStrictEqual(lines, ["sound with name 'none' '(null)' (null)", "sound with name 'loud' 'loud' loud"]);
});

test('without an audio device playing fails with a log line only', async (t) => {
  const home = homeWithSounds(t, { 'quiet.wav': quiet });
  for (const env of [{ PULSE_SERVER: 'unix:/nowhere' }, { CANBERRA_DRIVER: 'alsa' }, { CANBERRA_DRIVER: 'x' }]) {
    const client = await startClient(t, { home, env });
    assert.strictEqual(await client.play('quiet'), true);
    assert.match(await client.warned(), /^Couldn't play a sound: ./);
    await client.tell(() => process.exit(0)).catch(() => {});
    const { code, stderr } = await client.ended;
    assert.deepStrictEqual([code, stderr], [0, ''], JSON.stringify(env));
  }
});

test('a hanging audio server blocks neither script nor process exit', async (t) => {
  const audio = await startAudioServer(t, temporaryDirectory(t));
  audio.pause();
  const start = Date.now();
  const options = { home: homeWithSounds(t, { 'quiet.wav': quiet }), env: audio.env };
  const { code } = await plain.with(options).ends(t, ({ native }) => {
    for (let i = 0; i < 100; ++i) native.playSoundWithName('quiet');
  });
  assert.strictEqual(code, 0);
  assert.ok(!hasPassed(start, 5000));
});
