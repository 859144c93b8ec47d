'use strict';

// The Dock menu in a real launcher.

const { assert, test } = require('./support/node');
const { scenarios, temporaryDirectory } = require('./support');

const inSession = scenarios({
  display: true,
  fixture({ host, load, native }) {
    host.setKeepAlive(true);
    const { translations, account } = load('tests/support/accountMenu');
    const contents = { translations, accounts: [account(1, { count: 3 })] };
    const asked = [];
    native.setStatusItemMenuNeedsUpdateCallbackFunction((...args) => asked.push(args) && JSON.stringify(contents));
    return { account, asked, contents };
  },
});

test('a launcher shows the menu, follows its changes and chooses rows', async (t) => {
  const work = async ({ account, asked, contents, equal, events, eventually, host, load, native }, directory) => {
    native.setStatusItemTitle('3', false);
    equal(asked, []);
    const launcher = new (load('host/desktop/launcher'))(directory);
    await eventually(() => asked.length === 1, 'the launcher to read the menu');
    contents.accounts = [account(2, { signIn: true })];
    native.setStatusItemTitle('4', true);
    native.setStatusItemTitle('5', true);
    await eventually(() => asked.length === 2, 'the menu to be asked for again');
    const isOpen = () => eventually(() => launcher.isMenuOpen(), 'it', 1000).catch(() => false);
    await eventually(() => launcher.openMenu().then(isOpen), 'the menu');
    const chosen = events.once(host, 'notification', { signal: AbortSignal.timeout(10000) });
    await launcher.press('Up', 'Return');
    const [{ name, userInfo }] = await chosen;
    await launcher.stop();
    return { name, userInfo, asked };
  };
  const { name, userInfo, asked } = await inSession(t, work, temporaryDirectory(t));
  assert.deepStrictEqual([name, userInfo], ['TsOpenOAuthWindowForAccountNotification', { 'account-db-id': 2 }]);
  assert.deepStrictEqual(asked, Array(2).fill(['dock', false]));
});
