'use strict';

// The calls that a mail program makes again and again: the parts of the growth and the day benchmarks.

const fs = require('fs');
const os = require('os');
const path = require('path');

const { redirectGNUstep } = require('../host/gnustepHome');

// Before GNUstep is loaded.
const home = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-bench-'));
process.on('exit', () => fs.rmSync(home, { recursive: true, force: true }));
const environment = { ...redirectGNUstep(home), HOME: home, XDG_STATE_HOME: path.join(home, 'state') };
Object.assign(process.env, environment);

const host = require('../host');
const { account, translations } = require('../tests/support/accountMenu');
const { probe } = require('../tests/support/addon');
const { startNotificationServer } = require('../tests/support/notificationServer');
const { toolbarOf } = require('./support');
const { requesterOf, startWebServer } = require('./webServer');

const { display } = host.start();
host.setKeepAlive(true);
const probes = probe();
const { module: native, bus, notifications } = probes;

const turn = () => new Promise(setImmediate);
const cleaning = [];

/** Has the tray's menu show `accounts` accounts with `messages` messages each. */
function showMenu(accounts, messages) {
  const contents = {
    translations,
    accounts: Array.from({ length: accounts }, (_, id) => account(id, { count: messages, messages })),
  };
  native.setStatusItemMenuNeedsUpdateCallbackFunction(() => JSON.stringify(contents));
  host.postNotification('TsNumberOfAccountsChanged', null, { 'num-accounts': accounts });
}

async function askMenu(method) {
  const answer = await new Promise((resolve) => bus.callMenu(method, 0, resolve));
  if (answer !== 'answered') throw new Error(`${method} ${answer}`);
}

async function openMenu() {
  await askMenu('AboutToShow');
  await askMenu('GetLayout');
}

/** Starts a server that draws nothing. */
async function startAlerts() {
  notifications.record('TsNotification');
  const test = { after: (step) => cleaning.push(step) };
  await startNotificationServer(test, { address: process.env.DBUS_SESSION_BUS_ADDRESS });
}

let alerts = 0;

/** Shows `count` alerts and removes them. */
async function showAlerts(count) {
  const identifiers = Array.from({ length: count }, () => `alert ${(alerts += 1)}`);
  for (const identifier of identifiers) {
    native.deliverUserNotification(identifier, 'Ann', null, 'Lunch?', null, false, null, true, 'Archive', null);
  }
  for (let seen = 0; seen < count; await turn()) {
    seen += notifications.takeRecorded().filter(([name]) => name === 'TsNotificationDidDeliver').length;
  }
  for (const identifier of identifiers) native.removeUserNotification(identifier);
}

/** @returns {Promise<(count: number) => Promise<void>>} Makes `count` requests of 1 KB, 50 at once. */
async function startRequests() {
  const server = await startWebServer({ small: 1024 });
  if (server === undefined) throw new Error('there is no nginx');
  cleaning.push(server.stop);
  const request = requesterOf(native);
  return async (count) => {
    let left = count;
    const work = async () => {
      while (left-- > 0) await request(`${server.plain}/small`);
    };
    await Promise.all(Array.from({ length: 50 }, work));
  };
}

const toolbar = toolbarOf(5);

/** Opens a window with a toolbar, and closes it. */
async function showWindow() {
  const window = host.createWindow({ title: 'Day', width: 600, height: 300 });
  native.addToolbarToWindow(window, 1, toolbar);
  native.showAddTabButton(1);
  native.validateToolbarItems(1);
  await turn();
  host.closeWindow(window);
  await turn();
}

async function end() {
  for (const step of cleaning) await step();
  process.exit();
}

module.exports = {
  ...{ display, home, native, probes },
  ...{ end, openMenu, showAlerts, showMenu, showWindow, startAlerts, startRequests },
};
