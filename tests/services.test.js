'use strict';

// The services that the module offers to other GNUstep applications, used from a second process, and theirs.

const { assert, execFileSync, fs, path, test } = require('./support');
const { eventually, node, root, scenarios, temporaryDirectory } = require('./support');
const { redirectGNUstep } = require('../host/gnustepHome');

const provider = scenarios({ display: true, host: { argv0: 'TessaroHost' } });
const user = provider.with({ host: { argv0: 'OtherApplication' } });
const { session } = provider;

/** Makes the services of the applications in `home` known there. */
function publish(home) {
  const env = redirectGNUstep(home, { ...process.env, ...session.env, HOME: home });
  execFileSync('make_services', [], { env, stdio: 'ignore' });
}

const empty = { to: [], cc: [], bcc: [], 'attachment-paths': [] };

test('another process searches, mails a selection, files, and to an address', async (t) => {
  const home = temporaryDirectory(t);
  const applications = path.join(home, 'GNUstep', 'Applications');
  fs.mkdirSync(applications, { recursive: true });
  fs.symlinkSync(path.join(root, 'host', 'TessaroHost.app'), path.join(applications, 'TessaroHost.app'));
  publish(home);
  const child = await provider.with({ home }).resident(t);
  await child.tell(({ host, native, report }) => {
    host.setKeepAlive(true);
    native.setComposeOutgoingMessageCallbackFunction((text) => report(['compose', JSON.parse(text)]));
    native.setSearchServiceCallbackFunction((text) => report(['search', text]));
  });
  const files = ['/nowhere/a b.pdf', '/etc/hosts'];
  const scenario = async ({ native, platform }, paths) => {
    native.performService('TessaroHost/Search Selection', 'quarterly “report”');
    native.performService('TessaroHost/Mail Selection', 'one\ntwo');
    native.performService('TessaroHost/Mail To', '  Bob <bob@example.org> ');
    return platform.performWithFiles('TessaroHost/Mail Document', paths);
  };
  assert.strictEqual(await user.with({ home })(t, scenario, files), '');
  await child.report(3);
  assert.deepStrictEqual(child.reports, [
    ['search', 'quarterly “report”'],
    ['compose', { ...empty, body: 'one\ntwo\n' }],
    ['compose', { ...empty, to: [{ name: null, email: '  Bob <bob@example.org> ' }] }],
    ['compose', { ...empty, 'attachment-paths': files }],
  ]);
});

const serving = provider.with({
  fixture: ({ lastError, sendMessage: send }) => ({
    /** Works on a pasteboard with a text, a list, or nothing. Gives the error, and the text there is then. */
    serve(method, type, value) {
      const pasteboard = send('NSPasteboard', 'pasteboardWithUniqueName');
      const put = typeof value === 'string' ? 'setString:forType:' : 'setPropertyList:forType:';
      if (value !== null) send(pasteboard, 'declareTypes:owner:', [type], null);
      if (value !== null) send(pasteboard, put, value, type);
      send(send('TsServicesProvider', 'new'), `${method}:userData:error:`, pasteboard, null, null);
      return [lastError() ?? null, send(pasteboard, 'stringForType:', 'NSStringPboardType')];
    },
  }),
});

serving.test('a service without its data on the pasteboard gives an error, and does nothing', (fixture) => {
  const { equal, native, sendMessage: send, serve } = fixture;
  let [composed, searched] = [0, 0];
  native.setComposeOutgoingMessageCallbackFunction(() => ++composed);
  native.setSearchServiceCallbackFunction(() => ++searched);
  const count = () => send('TsASOutgoingMessage', 'outgoingMessages').length;
  const [text, files] = ['NSStringPboardType', 'NSFilenamesPboardType'];
  const missing = {
    searchSelection: 'No search string has been selected.',
    mailSelection: 'No text has been selected.',
    mailTo: 'No email address has been selected.',
    mailDocument: "Pasteboard doesn't contain one or more files names.",
  };
  for (const [method, reason] of Object.entries(missing)) {
    const wrong = method === 'mailDocument' ? [text, '/x'] : [files, ['/x']];
    for (const given of [[text, null], wrong]) equal(serve(method, ...given)[0], `Error: ${reason}`);
  }
  equal([composed, searched, count()], [0, 0, 0]);
  for (const method of ['mailSelection', 'searchSelection', 'mailTo']) {
    equal(serve(method, text, 'x'), [null, '']);
  }
  equal(serve('mailDocument', files, ['/x']), [null, null]);
  equal([composed, searched, count()], [3, 1, 3]);
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

test('an application that is not running is started, and serves then; services that fail are logged', async (t) => {
  const home = temporaryDirectory(t);
  const output = path.join(home, 'output');
  const source = `
    const host = require('${root}/host');
    host.start({ argv0: 'Asleep' });
    host.setKeepAlive(true);
    const m = require('${root}/tests/support/addon').probe().module;
    m.setSearchServiceCallbackFunction((text) => { require('fs').writeFileSync('${output}', text); process.exit(); });`;
  fs.writeFileSync(path.join(home, 'asleep.js'), source);
  const program = `#!/bin/sh\nexec '${node}' '${home}/asleep.js' >/dev/null 2>&1 </dev/null\n`;
  addApplication(home, 'Asleep', 'searchSelection', program);
  addApplication(home, 'Absent', 'mailTo');
  publish(home);
  const warnings = await user.with({ home })(t, ({ captureLog, log, native }) => {
    native.performService('Asleep/Use', 'wake up');
    captureLog();
    native.performService('', 'x');
    native.performService('Absent/Use', '');
    native.performService('Nobody/Nothing', 'x');
    native.performService('Absent/Use', 'x');
    return log(2).map((text) => text.replace(/launch path .*/, '…'));
  });
  assert.deepStrictEqual(warnings, [
    'No Parameter found',
    'No Parameter found',
    'The service Nobody/Nothing failed: no application offers it',
    'The service Absent/Use failed: NSTask - …',
  ]);
  await eventually(() => fs.existsSync(output), 'the search');
  assert.strictEqual(fs.readFileSync(output, 'utf8'), 'wake up');
});
