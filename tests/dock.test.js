'use strict';

// The Dock menu in a real launcher.

const assert = require('assert');
const { test } = require('node:test');

const { evaluate, temporaryDirectory } = require('./support/child');
const { useSession } = require('./support/session');

const session = useSession();

const prelude = `
  const { once } = require('events');
  const host = require('./host');
  const Launcher = require('./host/desktop/launcher');
  const { translations, account } = require('./tests/support/accountMenu');
  const { eventually } = require('./tests/support/child');
  host.start();
  host.setKeepAlive(true);
  const { module: m, captureLog, capturedLog, flushLog } = probe();
  let accounts = [account(1, { count: 3 })];
  const asked = [];
  m.setStatusItemMenuNeedsUpdateCallbackFunction((...args) => { asked.push(args); return JSON.stringify({ accounts, translations }); });
`;

test('a launcher shows the menu, follows its changes and chooses rows', async (t) => {
  const directory = temporaryDirectory(t);
  const { before, chosen, asked } = await evaluate(
    t,
    `${prelude}
     (async () => {
       m.setStatusItemTitle('3', false);
       const before = asked.length;
       const launcher = new Launcher(${JSON.stringify(directory)});
       await eventually(() => asked.length === 1, 'the launcher to read the menu');
       accounts = [account(2, { signIn: true })];
       m.setStatusItemTitle('4', true);
       m.setStatusItemTitle('5', true);
       await eventually(() => asked.length === 2, 'the menu to be asked for again');
       await eventually(async () => { await launcher.openMenu(); return eventually(() => launcher.isMenuOpen(), 'it', 1000).catch(() => false); }, 'the menu');
       const heard = once(host, 'notification', { signal: AbortSignal.timeout(10000) });
       await launcher.press('Up', 'Return');
       const [chosen] = await heard;
       await launcher.stop();
       console.log(JSON.stringify({ before, chosen: [chosen.name, chosen.userInfo], asked }));
       process.exit();
     })().catch((error) => { console.error(error); process.exit(1); });`,
    { env: session.env },
  );
  assert.strictEqual(before, 0);
  assert.deepStrictEqual(chosen, ['TsOpenOAuthWindowForAccountNotification', { 'account-db-id': 2 }]);
  assert.deepStrictEqual(asked, [
    ['dock', false],
    ['dock', false],
  ]);
});

test('every request builds a menu of its own', async (t) => {
  const menus = await evaluate(
    t,
    `${prelude}
     const rows = () => host.dockMenu().map(({ title }) => title);
     const first = rows();
     accounts = [];
     console.log(JSON.stringify([first.at(-1), rows().length, host.hasMethod('HostApplicationDelegate', 'applicationDockMenu:')]));
     process.exit();`,
    { env: session.env },
  );
  assert.deepStrictEqual(menus, ['Open Account 1 (3)', 4, true]);
});
