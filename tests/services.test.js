'use strict';

// What the Services menus of other GNUstep applications offer, used from a second process, and services of others.

const assert = require('assert');
const { execFile, execFileSync, spawn } = require('child_process');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');
const { promisify } = require('util');

const { redirectGNUstep } = require('../host/gnustepHome');
const { root, buildDirectory } = require('./support/addon');
const { eventually, node, temporaryDirectory } = require('./support/child');
const { endWith } = require('./support/cleanup');
const { scenarios } = require('./support/scenario');

const provider = scenarios({ display: true, host: { argv0: 'TessaroHost' } });
const user = provider.with({ host: { argv0: 'OtherApplication' } });
const { session } = provider;

/** Makes the services of the applications in `home` known there. */
function publish(home) {
  const env = redirectGNUstep(home, { ...process.env, ...session.env, HOME: home });
  execFileSync('make_services', [], { env, stdio: 'ignore' });
}

/** A home in whose applications folder the host is. */
function homeWithHost(t) {
  const home = temporaryDirectory(t);
  const applications = path.join(home, 'GNUstep', 'Applications');
  fs.mkdirSync(applications, { recursive: true });
  fs.symlinkSync(path.join(root, 'host', 'TessaroHost.app'), path.join(applications, 'TessaroHost.app'));
  publish(home);
  return home;
}

async function startProvider(t, home) {
  const child = await provider.with({ home }).resident(t);
  await child.tell(({ host, native, report }) => {
    host.setKeepAlive(true);
    native.setComposeOutgoingMessageCallbackFunction((text) => report(['compose', JSON.parse(text)]));
    native.setSearchServiceCallbackFunction((text) => report(['search', text]));
  });
  return child;
}

const empty = { to: [], cc: [], bcc: [], 'attachment-paths': [] };

test('another process searches, mails a selection, files, and to an address', async (t) => {
  const home = homeWithHost(t);
  const child = await startProvider(t, home);
  const files = ['/nowhere/a b.pdf', '/etc/hosts'];
  const failure = await user.with({ home })(
    t,
    async ({ composition, native }, paths) => {
      native.performService('TessaroHost/Search Selection', 'quarterly “report”');
      native.performService('TessaroHost/Mail Selection', 'one\ntwo');
      native.performService('TessaroHost/Mail To', '  Bob <bob@example.org> ');
      return composition.performWithFiles('TessaroHost/Mail Document', paths);
    },
    files,
  );
  assert.strictEqual(failure, '');
  await child.report(3);
  assert.deepStrictEqual(child.reports, [
    ['search', 'quarterly “report”'],
    ['compose', { ...empty, body: 'one\ntwo\n' }],
    ['compose', { ...empty, to: [{ name: null, email: '  Bob <bob@example.org> ' }] }],
    ['compose', { ...empty, 'attachment-paths': files }],
  ]);
});

/** Another application with a note whose text is selected, and hands to use its Services menu with. */
async function startNotes(t, home, text) {
  const env = redirectGNUstep(home, { ...process.env, ...session.env, HOME: home });
  const notes = spawn(path.join(buildDirectory, 'TessaroNotes'), ['-Text', text], { env, stdio: 'ignore' });
  endWith(t, notes);
  const xdotool = (...args) =>
    promisify(execFile)('xdotool', args.flat().map(String), { env }).then(
      ({ stdout }) => stdout.trim(),
      () => '',
    );
  const id = await eventually(() => xdotool('search', '--onlyvisible', '--name', '^Notes$'), 'the note');
  const countWindows = async () => (await xdotool('search', '--onlyvisible', '--name', '.*')).split('\n').length;
  // In the window, from its upper left: the menu bar, then the menus beside each other, of which each opens on the
  // way. GNUstep follows the mouse from where it has been, so it must arrive twice.
  const move = (x, y) => ['mousemove', '--window', id, x - 4, y, 'sleep', 0.2, 'mousemove', '--window', id, x, y];
  const press = ['sleep', 0.2, 'mousedown', 1, 'sleep', 0.2, 'mouseup', 1, 'sleep', 0.3];
  return {
    async choose(row) {
      const before = await countWindows();
      await xdotool(move(60, 10), press);
      await eventually(async () => (await countWindows()) > before, 'the menu is open', 3000);
      await xdotool(move(38, 30), 'sleep', 0.6, move(110, 30), 'sleep', 0.6, move(200, 30), 'sleep', 0.3);
      await xdotool(move(230, 30 + 20 * row), press);
    },
  };
}

test('the items of another application’s Services menu are clicked', async (t) => {
  const home = homeWithHost(t);
  const child = await startProvider(t, home);
  const notes = await startNotes(t, home, 'bob@example.org');
  const cases = [
    ['Mail Selection', ['compose', { ...empty, body: 'bob@example.org\n' }]],
    ['Mail To', ['compose', { ...empty, to: [{ name: null, email: 'bob@example.org' }] }]],
    ['Search Selection', ['search', 'bob@example.org']],
  ];
  for (const [row, [title, expected]] of cases.entries()) {
    const before = child.reports.length;
    for (let attempt = 0; attempt < 6 && child.reports.length === before; ++attempt) {
      await notes.choose(row).catch(() => {});
      await eventually(() => child.reports.length > before, title, 10000).catch(() => {});
    }
    assert.deepStrictEqual(child.reports.slice(before), [expected], title);
  }
});

test('what is missing on the pasteboard is said by the error, and nothing happens', async (t) => {
  const { errors, composed, searched, served } = await provider(t, async ({ composition, native }) => {
    let [composed, searched] = [0, 0];
    native.setComposeOutgoingMessageCallbackFunction(() => ++composed);
    native.setSearchServiceCallbackFunction(() => ++searched);
    const { serve } = composition;
    const [text, files] = ['NSStringPboardType', 'NSFilenamesPboardType'];
    const errors = [];
    for (const method of ['searchSelection', 'mailSelection', 'mailTo']) {
      errors.push(serve(method, text, null)[0], serve(method, files, ['/x'])[0]);
    }
    errors.push(serve('mailDocument', text, null)[0], serve('mailDocument', text, '/x')[0]);
    const before = composition.messageCount();
    const served = ['mailSelection', 'searchSelection', 'mailTo'].map((method) => serve(method, text, 'x'));
    served.push(serve('mailDocument', files, ['/x']), before, composition.messageCount());
    return { errors, composed, searched, served };
  });
  assert.deepStrictEqual(errors, [
    ...Array(2).fill('Error: No search string has been selected.'),
    ...Array(2).fill('Error: No text has been selected.'),
    ...Array(2).fill('Error: No email address has been selected.'),
    ...Array(2).fill("Error: Pasteboard doesn't contain one or more files names."),
  ]);
  const answered = [null, '', ['NSStringPboardType']];
  assert.deepStrictEqual(served, [answered, answered, answered, [null, null, ['NSFilenamesPboardType']], 0, 3]);
  assert.deepStrictEqual([composed, searched], [3, 1]);
});

/** An application in `home` that offers one service, whose program is `program`; without one it can't be started. */
function addApplication(home, name, message, program) {
  const bundle = path.join(home, 'GNUstep', 'Applications', `${name}.app`);
  fs.mkdirSync(path.join(bundle, 'Resources'), { recursive: true });
  fs.writeFileSync(
    path.join(bundle, 'Resources', 'Info-gnustep.plist'),
    `{ ApplicationName = ${name}; NSExecutable = ${name}; NSServices = ({ NSMessage = ${message}; NSPortName = ${name};
       NSMenuItem = { English = "${name}/Use"; default = "${name}/Use"; }; NSSendTypes = (NSStringPboardType); NSTimeout = 8000; }); }`,
  );
  if (program !== undefined) fs.writeFileSync(path.join(bundle, name), program, { mode: 0o755 });
}

test('services that nobody offers, or that fail, are told by the log only', async (t) => {
  const home = temporaryDirectory(t);
  addApplication(home, 'Absent', 'mailTo');
  publish(home);
  const log = await user.with({ home })(t, async ({ captureLog, capturedLog, flushLog, native }) => {
    captureLog();
    native.performService('', 'x');
    native.performService('Absent/Use', '');
    native.performService('Nobody/Nothing', 'x');
    native.performService('Absent/Use', 'x');
    flushLog();
    return capturedLog().map(({ flag, text }) => [flag, text.replace(/launch path .*/, '…')]);
  });
  const warning = 2;
  assert.deepStrictEqual(log, [
    [warning, 'No Parameter found'],
    [warning, 'No Parameter found'],
    [warning, 'The service Nobody/Nothing failed: no application offers it'],
    [warning, 'The service Absent/Use failed: NSTask - …'],
  ]);
});

test('an application that is not running is started, and serves then', async (t) => {
  const home = temporaryDirectory(t);
  const output = path.join(home, 'output');
  const source = `
    const host = require('${root}/host');
    host.start({ argv0: 'Asleep' });
    host.setKeepAlive(true);
    const m = require('${root}/tests/support/addon').probe().module;
    m.setSearchServiceCallbackFunction((text) => { require('fs').writeFileSync('${output}', text); process.exit(); });`;
  fs.writeFileSync(path.join(home, 'asleep.js'), source);
  addApplication(
    home,
    'Asleep',
    'searchSelection',
    `#!/bin/sh\nexec '${node}' '${home}/asleep.js' >/dev/null 2>&1 </dev/null\n`,
  );
  publish(home);
  await user.with({ home })(t, async ({ native }) => native.performService('Asleep/Use', 'wake up'));
  await eventually(() => fs.existsSync(output), 'it has been searched');
  assert.strictEqual(fs.readFileSync(output, 'utf8'), 'wake up');
});
