'use strict';

// A day of a mail program in a few minutes, and whether it leaves memory behind: 10 000 openings of the tray's menu,
// 5 000 alerts, 50 000 requests, 1 000 windows with toolbars.

const day = require('./mailDay');
const { record, summary } = require('./support');

const hours = 10;
const perHour = { openings: 1000, alerts: 500, requests: 5000, windows: 100 };
// Caches are full by then.
const warmHours = 3;
const mostGrowth = 0.03;

/** In MB, without V8's heap: its size follows the pace of allocations, whatever is in use of it. */
function memory() {
  for (let i = 0; i < 3; ++i) global.gc?.();
  const { rss, heapTotal } = process.memoryUsage();
  return (rss - heapTotal) / 1048576;
}

async function main() {
  if (!day.display) return console.log('No display, so no day.');
  day.native.setToolbarCallbackFunctions(
    () => true,
    () => {},
    () => {},
  );
  await day.startAlerts();
  const request = await day.startRequests();
  day.showMenu(5, 20);
  const held = [];
  const start = Date.now();
  console.log('\nA mail day');
  for (let hour = 0; hour < hours; ++hour) {
    for (let i = 0; i < perHour.openings; ++i) await day.openMenu();
    await day.showAlerts(perHour.alerts);
    await request(perHour.requests);
    for (let i = 0; i < perHour.windows; ++i) await day.showWindow();
    held.push(memory());
    console.log(`  hour ${String(hour + 1).padStart(2)}  ${held.at(-1).toFixed(1).padStart(7)} MB`);
  }
  const settled = held[warmHours - 1];
  const growth = (held.at(-1) - settled) / settled;
  const seconds = ((Date.now() - start) / 1000).toFixed(0);
  console.log(`  ${(growth * 100).toFixed(1)} % from hour ${warmHours} to hour ${hours}, in ${seconds} s`);
  record({
    title: 'A mail day, memory outside of V8’s heap',
    unit: 'MB',
    results: { 'module: at its end': summary(held.slice(warmHours)) },
  });
  if (growth > mostGrowth) process.exitCode = 1;
  return day.end();
}

main();
