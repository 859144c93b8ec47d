'use strict';

// The cost of keyboard routing for every event, the time from a key to its notification, and the cost of a menu update.

const { once } = require('events');

const host = require('../host');
const { probe } = require('../tests/support/addon');
const { eventsWith } = require('../tests/support/keys');
const { measure, report, summary } = require('./support');

const key = { a: 38, right: 114, control: 37, super: 133 };
const events = 500;
const presses = 200;
const us = { unit: 'µs', scale: 1000 };

const { display } = host.start();
const { module: native, bench, menus, sendMessage } = probe();
const event = eventsWith(sendMessage);

function dispatch(title, sent) {
  const peers = {
    'the host’s own sendEvent:': () => bench.sendEventWithoutRouting(sent, events),
    'with the routing': () => bench.sendEvent(sent, events),
  };
  report(title, measure(peers, { rounds: 101, calls: 1 }), { scale: events });
}

function updates() {
  const items = Array.from({ length: 5000 }, (_, i) => ({ title: `Item ${i}`, commandId: 10000 + i }));
  const titles = ['{"title":"Show Toolbar"}', '{"title":"Hide Toolbar"}'];
  let round = 0;
  const next = () => titles[(round += 1) % 2];
  report(
    'A thousand updates of an item’s title',
    measure(
      {
        'by identifier': () => native.updateMainMenuMenuItemWithCommandId(404, next()),
        'by path of numbers': () => native.updateMainMenuMenuItem('[3,5]', next()),
        'by path with a title': () => native.updateMainMenuMenuItem('["View",0,"Zoom Out",2]', next()),
        'unchanged title': () => native.updateMainMenuMenuItemWithCommandId(400, '{"title":"Reload"}'),
      },
      { rounds: 15, calls: 1000 },
    ),
    { unit: 'ms', scale: 1e3 },
  );
  menus.setMainMenu([{ title: 'TessaroHost', items }]);
  report(
    'One update in a menu of 5 000 items',
    measure({ 'by path': () => native.updateMainMenuMenuItem('[0,4999]', next()) }, { rounds: 15, calls: 20 }),
    us,
  );
}

async function notifications(window) {
  const { systemWindow } = host.windowInfo(window);
  const delays = [];
  const sent = [];
  host.on('probe', (answer) => sent.push(answer.sent));
  for (let i = 0; i < presses; ++i) {
    const told = once(host, 'notification');
    host.probe('sendKey', { window: systemWindow, keycode: key.right, held: [key.control, key.super] });
    await told;
    delays.push(Number(process.hrtime.bigint()) - sent.at(-1));
    await new Promise((resolve) => setTimeout(resolve, 2));
  }
  report('Key press through the X server to its notification in script', { 'next tab': summary(delays) }, us);
}

async function main() {
  if (!display) return console.log('No display, so no menus and no keys.');
  host.setKeepAlive(true);
  const window = host.createWindow({ title: 'Benchmark' });
  while (!host.windowInfo(window).isKey) await new Promise((resolve) => setTimeout(resolve, 10));
  dispatch('Dispatching an ordinary key', event(0, { keyCode: key.a, ignoring: 'a' }));
  dispatch('Dispatching a click', event(0, { type: 1 }));
  await notifications(window);
  updates();
  host.setKeepAlive(false);
  return process.exit();
}

main();
