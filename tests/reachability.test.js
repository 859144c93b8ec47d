'use strict';

const { assert, spawnSync, test } = require('./support');
const { Applications, scenarios, startAudioServer, startBus, temporaryFiles, tone } = require('./support');

// A network namespace for the test, without a default route until the test adds one.
const ownNetwork = ['unshare', '--map-root-user', '--net'];
const noNetwork = (() => {
  const [unshare, ...options] = ownNetwork;
  const { status, error, stderr } = spawnSync(unshare, [...options, 'ip', 'link'], { encoding: 'utf8' });
  return status !== 0 && `no network namespace: ${error ? error.message : stderr.trim()}`;
})();

const plain = scenarios();
const inOwnNetwork = scenarios({
  within: ownNetwork,
  fixture() {
    const { execFileSync } = require('child_process');
    const ip = (...lines) => {
      const [batch, others] = [false, true].map((is6) => lines.filter((line) => line.startsWith('-6') === is6));
      execFileSync('ip', ['-batch', '-'], { input: batch.join('\n') });
      for (const line of others) execFileSync('ip', line.split(' '));
    };
    ip('link set lo up', 'link add near type veth peer name far', 'addr add 10.9.0.1/24 dev near');
    ip('link set near up', 'link set far up');
    return { ip };
  },
});

test('the queries read the flag word', async (t) => {
  const [wifi, onDemand, intervention] = ['isReachableViaWiFi', 'isConnectionOnDemand', 'isInterventionRequired'];
  const reachable = ['isReachable', 'isConnected', wifi];
  const required = ['isConnectionRequired', 'connectionRequired'];
  // The flags, the status, the description, and the queries that are true; null for flags that can't be read.
  const rows = [
    [null, 0, 'X- -------'],
    [0, 0, 'X- -------'],
    [0x02, 2, 'XR -------', ...reachable],
    [0x06, 2, 'XR c------', ...reachable, ...required],
    [0x07, 0, 'XR ct-----', wifi, ...required],
    [0x04, 0, 'X- c------', ...required],
    [0x0c, 0, 'X- c--C---', ...required, onDemand],
    [0x08, 0, 'X- ---C---'],
    [0x24, 0, 'X- c---D--', ...required, onDemand],
    [0x14, 0, 'X- c-i----', ...required, intervention],
    [0x10, 0, 'X- --i----'],
    [0x3003f, 0, 'XR ctiCDld', wifi, ...required, onDemand, intervention],
  ];
  const queries = [...reachable, ...required, onDemand, intervention, 'isReachableViaWWAN'];
  const table = rows.map(([word, status, flags, ...names]) => {
    const string = status === 2 ? 'WiFi' : 'No Connection';
    return [word, [status, string, `<TsReachability: (${flags})>`, true, ...names.sort()]];
  });
  const ask = ({ reachability, sendMessage: send }, word, all) => {
    const monitor = reachability.monitor(word);
    const values = ['currentReachabilityStatus', 'currentReachabilityString', 'description', 'reachableOnWWAN'];
    return [...values.map((name) => send(monitor, name)), ...all.filter((name) => send(monitor, name)).sort()];
  };
  await plain.table(t, table, ask, queries);
});

test('targets are addresses, names and the internet', { skip: noNetwork }, async (t) => {
  const answers = await inOwnNetwork(t, ({ ip, sendMessage: send }) => {
    const named = (name) => ['reachabilityWithHostName:', name];
    const monitors = (targets) => targets.map((target) => send('TsReachability', ...target));
    const flags = (targets) => monitors(targets).map((monitor) => monitor && send(monitor, 'reachabilityFlags'));
    ip('addr add fd00::1/64 dev near nodad');
    const local = ['127.0.0.1', '10.9.0.1', '10.9.0.7', '::1', 'fd00::7', 'localhost'];
    const far = [named('8.8.8.8'), ['reachabilityForInternetConnection'], ['reachabilityForLocalWiFi']];
    const before = flags([...local.map(named), ...far, named('nowhere.invalid'), named('')]);
    ip('route add default via 10.9.0.254', 'route add blackhole 198.51.100.0/24');
    return [before, flags([...far, named('198.51.100.1')])];
  });
  const [local, direct] = [0x30002, 0x20002];
  assert.deepStrictEqual(answers, [
    [local, local, direct, local, direct, local, 0, 0, 0, 0, null],
    [2, 2, 2, 0],
  ]);
});

test('script receives each change of the default route, and the end of a burst', { skip: noNetwork }, async (t) => {
  const [before, changes, calls, last] = await inOwnNetwork(t, async (fixture) => {
    const { equal, eventually, ip, native, nextTurn, notifications, sendMessage: send } = fixture;
    const seen = [];
    let posts = 0;
    notifications.record('kTsReachabilityChanged');
    equal(send(send('TsReachability', 'reachabilityForInternetConnection'), 'startNotifier'), true);
    const before = native.isNetworkReachable();
    native.setNetworkReachabilityCallbackFunction(function (...args) {
      seen.push([this === null || this === globalThis, ...args, native.isNetworkReachable()]);
    });
    const steps = [
      [true, 'route add default via 10.9.0.254'],
      [false, 'link set near down'],
      [true, 'link set near up', 'route add default via 10.9.0.254'],
      [false, 'link set far down'],
      [true, 'link set far up'],
      [false, 'route del default'],
      [false, 'route add unreachable default'],
      [true, 'route del unreachable default', 'addr add 2001:db8:9::1/64 dev near nodad', '-6 route add default via 2001:db8:9::2'], // prettier-ignore
      [false, '-6 route del default'],
    ];
    for (const [isReachable, ...lines] of steps) {
      ip(...lines);
      await eventually(() => native.isNetworkReachable() === isReachable && seen.at(-1)?.[1] === isReachable, lines[0]);
      // The module's own monitor posts a change as well.
      const isPosted = () => (posts += notifications.takeRecorded().length) === 2;
      if (seen.length === 1) await eventually(isPosted, 'the posts of both monitors');
    }
    const changes = seen.splice(0);
    const toggles = Array.from({ length: 100 }, (_, i) => `route ${i % 2 ? 'del' : 'add'} default via 10.9.0.254`);
    const others = Array.from({ length: 2000 }, (_, i) => `route add 10.20.${i >> 8}.${i & 255}/32 dev near`);
    ip(...toggles, ...others, 'route add default via 10.9.0.254');
    await eventually(() => seen.at(-1)?.[1] === true, 'the last change');
    for (let i = 0; i < 50; ++i) await nextTurn();
    return [before, changes, seen.length, seen.at(-1)];
  });
  assert.strictEqual(before, false);
  const states = Array.from({ length: 8 }, (_, i) => i % 2 === 0);
  assert.deepStrictEqual([...changes, last], [...states, true].map((state) => [true, state, state])); // prettier-ignore
  assert.ok(calls >= 1 && calls <= 101, `${calls} calls`);
});

test('previews, sounds, names, printing and clipping that hang delay nothing else', { skip: noNetwork }, async (t) => {
  const applications = new Applications(t);
  applications.add('com.todoist.mac.Todoist', { types: ['x-scheme-handler/todoist'] });
  applications.add('org.example.Viewer', { types: ['text/plain'] });
  const { folder, write } = temporaryFiles(t);
  const noise = Array.from({ length: 50 }, (_, n) => `<feTurbulence baseFrequency="0.05" numOctaves="9" seed="${n}"/>`);
  const [svg, size] = ['<svg xmlns="http://www.w3.org/2000/svg"', 'width="2000" height="2000"'];
  const filtered = `<filter id="f">${noise.join('')}</filter><rect ${size} filter="url(#f)"/>`;
  const drawing = write('hostile.svg', `${svg} ${size}>${filtered}</svg>`);
  const letter = write('letter.txt', 'Dear Ann');
  const names = write('resolv.conf', 'nameserver 10.9.0.254\n');
  write('Library/Sounds/quiet.wav', tone({ amplitude: 1000, seconds: 1 }));
  const [audio, bus] = [await startAudioServer(t, folder), await startBus(t, folder)];
  for (const server of [audio, bus]) server.pause();
  const scenario = async ({ eventually, home, ip, native, platform, sendMessage: send }, hostile, text) => {
    // A name server that never replies.
    ip('route add default via 10.9.0.254', 'neigh add 10.9.0.254 lladdr 02:00:00:00:00:01 dev near nud permanent');
    const answers = {};
    native.setNetworkReachabilityCallbackFunction((state) => (answers.reachable = state));
    for (let i = 0; i < 4; ++i) native.generatePreview(hostile, 2000 + i, home, () => {});
    send(send('TsReachability', 'reachabilityWithHostName:', 'slow.example'), 'startNotifier');
    native.playSoundWithName('quiet');
    native.clipPage('todoist', { title: 'x' });
    native.printPath(text);
    const start = Date.now();
    answers.opened = native.openFile(text, '', true);
    answers.isOpenedSoon = Date.now() - start < 5000;
    native.generatePreview(text, 64, home, (file) => (answers.preview = file !== null));
    platform.background(1, () => (answers.task = true));
    await eventually(() => Object.keys(answers).length >= 5, 'the answers', 15000).catch(() => {});
    return answers;
  };
  const options = {
    within: [...ownNetwork, '--mount', 'sh', '-c', `mount --bind "${names}" /etc/resolv.conf && exec "$@"`, '-'],
    env: { ...audio.env, ...applications.env, DBUS_SESSION_BUS_ADDRESS: bus.address },
    home: folder,
  };
  const answers = await inOwnNetwork.with(options)(t, scenario, drawing, letter);
  assert.deepStrictEqual(answers, { opened: 0, isOpenedSoon: true, reachable: true, preview: true, task: true });
});
