'use strict';

// Short scenarios, by their names. `setUp()` gives the surroundings: the environment and the home of the process, the
// `source` of act() and check(), and atEnd(), which says what is lost in the end. See run.js.

const { execFileSync, spawn } = require('child_process');
const fs = require('fs');
const path = require('path');

const { startClient } = require('../tests/support/alerts');
const { startBus } = require('../tests/support/bus');
const { evaluate, eventually, temporaryDirectory } = require('../tests/support/child');
const { startDisplaySession } = require('../tests/support/session');
const { startKeyring } = require('../tests/support/keyring');
const { startNotificationServer } = require('../tests/support/notificationServer');
const { serve } = require('../tests/support/requests');
const { accountsStore } = require('../tests/support/stores');
const { feed, item, makeBundle, makeKeys } = require('../tests/support/updates');

const files = ['open', 'write', 'sync', 'rename'];
const wire = ['connect', 'send', 'receive'];

const quoted = JSON.stringify;

const keychain = {
  kinds: [...wire, 'memory'],
  mostOf: { memory: 150 },
  async setUp(t) {
    const keyring = await startKeyring(t, temporaryDirectory(t));
    return {
      env: { DBUS_SESSION_BUS_ADDRESS: keyring.address },
      source: `
        const { module: m, captureLog, flushLog, capturedLog } = probe();
        captureLog();
        const warnings = () => { flushLog(); return capturedLog().filter(({ flag }) => flag === 2).length; };
        let kept = null;
        const act = async (i) => {
          const before = warnings();
          const written = JSON.parse(m.setPasswordForAccount('secret ' + i, 'ann'));
          const isKept = written['ok?'] && warnings() === before;
          return [isKept, JSON.parse(m.getPasswordForAccount('ann'))];
        };
        const check = async (i, result) => {
          const wanted = 'secret ' + i;
          const isKept = result[0] === true;
          const now = await eventually(() => {
            const answer = JSON.parse(m.getPasswordForAccount('ann'));
            return answer['ok?'] && answer;
          }, 'the keychain answers again');
          if (now.password !== wanted && (isKept || now.password !== kept)) throw new Error('the password is lost: ' + JSON.stringify([result, now]));
          if (result[1]?.['ok?'] && ![wanted, kept].includes(result[1].password)) throw new Error('another password: ' + JSON.stringify(result));
          kept = now.password;
        };`,
    };
  },
};

const settings = {
  kinds: files,
  async setUp(t) {
    const home = temporaryDirectory(t);
    const config = path.join(home, 'config');
    return {
      home,
      env: { XDG_CONFIG_HOME: config, XDG_CONFIG_DIRS: path.join(home, 'xdg') },
      source: `
        const { module: m } = probe();
        const act = async (i) => {
          m.setUserDefault('key', 'value ' + i);
          m.synchronizeUserDefaults();
          m.setDefaultApplicationForScheme('mailto', 'none');
          m.setStartAtLogin(false);
          return m.setStartAtLogin(true);
        };
        const check = async (i, result) => {
          if (!String(m.getUserDefault('key')).includes('value ' + i)) throw new Error('the default is ' + m.getUserDefault('key'));
          // When the state can't be read, it is reported as off.
          if (result && !m.getStartAtLogin()) throw new Error('it no longer starts at login');
          m.setStartAtLogin(true);
          if (!m.getStartAtLogin()) throw new Error('it can no longer start at login');
        };`,
    };
  },
};

const fileWriting = {
  kinds: files,
  async setUp(t) {
    const folder = temporaryDirectory(t);
    return {
      source: `
        const { module: m } = probe();
        const [one, all] = ['one', 'all'].map((name) => ${quoted(folder)} + '/' + name);
        const read = (file) => fs.existsSync(file) ? fs.readFileSync(file, 'utf8') : '';
        let before = ['', ''];
        const act = async (i) => [m.writeFile(one, Buffer.from('text ' + i), false), m.writeFile(all, Buffer.from(i + '\\n'), true)];
        const check = async (i, result) => {
          const now = [read(one), read(all)];
          ['text ' + i, before[1] + i + '\\n'].forEach((wanted, place) => {
            const isKept = result[place] === undefined;
            if (now[place] !== wanted && (isKept || now[place] !== before[place])) throw new Error('lost: ' + JSON.stringify([result, now]));
          });
          const rest = fs.readdirSync(${quoted(folder)}).filter((name) => name.startsWith('.new-'));
          if (rest.length > 0) throw new Error('left behind: ' + rest);
          before = now;
        };`,
    };
  },
};

const alerts = {
  kinds: [...files, ...wire],
  async setUp(t) {
    const bus = await startBus(t, temporaryDirectory(t));
    const home = temporaryDirectory(t);
    const env = { DBUS_SESSION_BUS_ADDRESS: bus.address };
    await startNotificationServer(t, bus);
    const kept = path.join(home, 'kept');
    return {
      env,
      home,
      source: `
        const { module: m, sendMessage: send, captureLog, flushLog, capturedLog } = probe();
        const center = send('TsUserNotificationCenter', 'defaultUserNotificationCenter');
        const listed = (kind) => send(center, 'valueForKeyPath:', kind + 'Notifications.identifier');
        captureLog();
        m.setNotificationCallbackFunction(() => {});
        const later = String(Math.floor(Date.now() / 1000) + 100000);
        const name = (i) => process.pid + ' ' + i;
        const show = (id, at) => m.deliverUserNotification(id, 'title', null, 'text', null, null, null, null, null, at);
        const refusals = () => { flushLog(); return capturedLog().filter(({ flag }) => flag <= 2).map(({ text }) => text); };
        const act = async (i) => {
          const before = refusals().length;
          show(name(i), later);
          show('now ' + name(i), null);
          await new Promise((resolve) => setTimeout(resolve, 30));
          return refusals().slice(before);
        };
        const check = async (i, result) => {
          if (!listed('scheduled').includes(name(i))) throw new Error('the alert is not scheduled');
          // The module logs a warning when an alert is not kept beyond the end of the process.
          if (!result.some((text) => text.includes(name(i)) && !text.includes('now '))) fs.appendFileSync(${quoted(kept)}, name(i) + '\\n');
          await eventually(() => {
            show('again ' + name(i), null);
            return listed('delivered').length > 0;
          }, 'alerts are shown again');
          m.removeUserNotification('again ' + name(i));
        };`,
      async atEnd() {
        const client = await startClient(t, { env, home });
        const { scheduled } = await client.alerts();
        const lost = fs
          .readFileSync(kept, 'utf8')
          .trim()
          .split('\n')
          .filter((name) => !scheduled.includes(name));
        return lost.length > 0 ? `scheduled alerts are lost: ${lost}` : undefined;
      },
    };
  },
};

const requests = {
  kinds: ['open', 'connect', 'send', 'receive', 'memory'],
  mostOf: { memory: 200 },
  async setUp(t) {
    const url = await serve(t, (_question, answer) => answer.setHeader('connection', 'close').end('the whole body'));
    return {
      source: `
        const { module: m } = probe();
        const ask = () => new Promise((resolve) => {
          const made = m.createRequest(${quoted(url)});
          made.on('end', (r) => resolve(['end', Buffer.from(r.buffer).toString()]));
          made.on('error', (text) => resolve(['error', text]));
          made.start();
        });
        const alive = setInterval(() => {}, 1000);
        const act = ask;
        const check = async (i, [event, text]) => {
          if (event === 'end' && text !== 'the whole body') throw new Error('the body is ' + text);
          const [again] = await ask();
          if (again !== 'end') throw new Error('requests fail from now on');
        };`,
    };
  },
};

const update = {
  kinds: ['open', 'connect', 'send', 'receive', 'memory'],
  mostOf: { memory: 150 },
  async setUp(t) {
    const keys = makeKeys();
    const text = feed(item({ version: '1.0', url: 'https://example.org/', signature: keys.sign(Buffer.from('x')) }));
    const url = await serve(t, (_question, answer) => answer.setHeader('connection', 'close').end(text));
    const bundle = makeBundle(temporaryDirectory(t), { version: '2.0', publicKey: keys.publicKey, feed: url });
    return {
      source: `
        const host = require('./host');
        host.start({ bundlePath: ${quoted(bundle)} });
        host.setKeepAlive(true);
        const { module: m, captureLog, flushLog, capturedLog, stopCapturingLog } = probe();
        captureLog();
        const lines = () => { flushLog(); return capturedLog().length; };
        let feeds = 0;
        host.on('notification', ({ name }) => { if (name === 'TsReceivedAppcastNotification') ++feeds; });
        const fetch = async (description, deadline) => {
          const [before, logged] = [feeds, lines()];
          m.fetchAppcast();
          // The request is logged first, and then why it has failed.
          await eventually(() => feeds > before || lines() > logged + 1, description);
          return feeds > before;
        };
        const act = () => fetch('the feed or the reason why there is none');
        const check = async () => eventually(() => fetch('the feed'), 'the feed can be fetched again');`,
    };
  },
};

const storeSave = {
  kinds: [...files, 'memory'],
  mostOf: { memory: 150 },
  async setUp(t) {
    const file = path.join(temporaryDirectory(t), 'Accounts.xml');
    fs.writeFileSync(file, accountsStore([{ username: 'ann@example.org' }]).text());
    return {
      source: `
        const { module: m, sendMessage: send } = probe();
        const open = () => send(send('TsAccounts', 'alloc'), 'initWithPath:', ${quoted(file)});
        const bookmarks = () => send(send(open(), 'all')[0], 'bookmarksOrdered').map((each) => send(each, 'title'));
        let before = bookmarks();
        const act = async (i) => {
          const accounts = open();
          const [ann] = send(accounts, 'all');
          if (ann === undefined) return false;
          send(ann, 'addBookmarkForUrl:title:', 'https://example.org/', 'title ' + i);
          return send(send(accounts, 'context'), 'save:', null);
        };
        const check = async (i, isSaved) => {
          const now = bookmarks();
          const wanted = [...before, 'title ' + i];
          const isAs = (titles) => JSON.stringify([...now].sort()) === JSON.stringify([...titles].sort());
          if (!isAs(wanted) && (isSaved === true || !isAs(before))) throw new Error('lost: ' + JSON.stringify([isSaved, now.length, wanted.length]));
          before = now;
        };`,
    };
  },
};

const logging = {
  kinds: files,
  async setUp(t) {
    const logs = temporaryDirectory(t);
    return {
      source: `
        const { addFileLogger, logText, flushLog } = probe();
        const log = (flag, text) => logText(flag, text, 0);
        if (!addFileLogger(${quoted(logs)})) throw new Error('there is no log file');
        const act = async (i) => { log(1, 'error ' + i); log(4, 'information ' + i); flushLog(); };
        const check = async (i) => {
          log(1, 'afterwards ' + i);
          const text = fs.readdirSync(${quoted(logs)}).map((name) => fs.readFileSync(${quoted(logs)} + '/' + name, 'utf8')).join('');
          if (!text.includes('afterwards ' + i + ' ')) throw new Error('nothing is logged any more');
        };`,
    };
  },
};

const crashSource = `
  const host = require('./host');
  host.start();
  host.setKeepAlive(true);
  const { module: m } = probe();
  const events = [];
  host.on('notification', ({ name, userInfo }) => { if (name === 'TsSentryEventNotification') events.push(userInfo); });`;

// Each call fails in a process of its own, which crashes; the next one reports the crash, at most once.
const crashRecord = {
  kinds: files,
  // Calls after the crash, which aren't counted.
  leastOf: { write: 12, sync: 2 },
  async setUp(t) {
    const home = temporaryDirectory(t);
    const crash = `${crashSource}
      const fs = require('fs');
      const [kind, number] = process.env.FAILING.split(' ');
      try { fs.openSync('/torture/' + kind + '/' + number); } catch { /* never opens */ }
      m.setupCrashReporter();
      fs.writeFileSync(process.env.COUNTS, fs.readlinkSync('/torture/count'));
      m.testCrash();`;
    const report = `${crashSource}
      m.setupCrashReporter();
      setTimeout(() => { console.log(JSON.stringify(events.length)); process.exit(); }, 200);`;
    return {
      home: temporaryDirectory(t),
      source: `
        const { spawn, execFileSync } = require('child_process');
        const prelude = 'const { probe } = require(${quoted(path.join(__dirname, '..', 'tests', 'support', 'addon.js'))});';
        let failing = 'none 0';
        const armLater = (kind, number) => { failing = kind + ' ' + number; };
        const counts = ${quoted(path.join(home, 'counts'))};
        const env = { ...process.env, HOME: ${quoted(home)}, XDG_STATE_HOME: ${quoted(path.join(home, 'state'))}, COUNTS: counts };
        const run = (script, more) => new Promise((resolve) => {
          const child = spawn(process.execPath, ['-e', prelude + script], { env: { ...env, ...more }, stdio: ['ignore', 'pipe', 'ignore'] });
          let output = '';
          child.stdout.on('data', (text) => (output += text));
          child.on('close', (code, signal) => resolve({ output, code, signal }));
        });
        // Only the calls of the process that crashes count.
        fs.openSync = (file) => armLater(...file.split('/').slice(2));
        fs.readlinkSync = () => fs.readFileSync(counts, 'utf8');
        let tried;
        const act = async () => run(${quoted(crash)}, { FAILING: (tried = failing) });
        const check = async (i, { signal, code }) => {
          if (signal !== 'SIGSEGV') throw new Error('the process ended with ' + (signal ?? code));
          const { output, signal: other } = await run(${quoted(report)}, { FAILING: 'none 0', LD_PRELOAD: '' });
          const reports = Number(output);
          if (other !== null || reports > 1 || (tried.startsWith('none') && reports !== 1)) throw new Error(reports + ' reports, ' + other);
        };`,
    };
  },
};

const pasteboard = {
  kinds: ['x', 'memory'],
  mostOf: { memory: 100 },
  async setUp(t) {
    const session = await startDisplaySession();
    t.after(() => session.end());
    return {
      env: { DISPLAY: session.env.DISPLAY, DBUS_SESSION_BUS_ADDRESS: session.env.DBUS_SESSION_BUS_ADDRESS },
      source: `
        const { execFile, spawn } = require('child_process');
        const { module: m, pasteboard } = probe();
        const env = { ...process.env };
        delete env.LD_PRELOAD;
        const read = () => new Promise((resolve) =>
          execFile('xclip', ['-selection', 'clipboard', '-o', '-t', 'UTF8_STRING'], { env, timeout: 2000 }, (error, text) => resolve(error ? null : text)));
        const value = () => { const json = m.getValueOfPasteboardType('NSStringPboardType'); return json && JSON.parse(json)[0]; };
        const put = (text) => pasteboard.put({ text });
        const putForeign = async (text) => {
          const child = spawn('xclip', ['-selection', 'clipboard', '-i', '-quiet', '-t', 'UTF8_STRING'], { env, stdio: ['pipe', 'ignore', 'ignore'] });
          child.stdin.end(text);
          await eventually(async () => (await read()) === text, 'xclip has the clipboard');
          return child;
        };
        const act = async (i) => {
          const child = await putForeign('foreign ' + i);
          const seen = [value()];
          put('own ' + i);
          seen.push(value(), await read());
          child.kill();
          return seen;
        };
        const check = async (i, seen) => {
          const allowed = [[null, undefined, 'foreign ' + i], [null, undefined, 'own ' + i, 'foreign ' + i], [null, 'own ' + i, 'foreign ' + i]];
          if (!seen.every((each, place) => allowed[place].includes(each))) throw new Error('other contents: ' + JSON.stringify(seen));
          put('again ' + i);
          await eventually(async () => (await read()) === 'again ' + i, 'the pasteboard serves others again');
          if (value() !== 'again ' + i) throw new Error('the pasteboard has lost its own text');
        };`,
    };
  },
};

module.exports = {
  keychain,
  settings,
  'file writing': fileWriting,
  alerts,
  requests,
  update,
  'store save': storeSave,
  logging,
  'crash record': crashRecord,
  pasteboard,
};
