'use strict';

// The choice of an update from a feed of 1,000 items, beside the bare parse of it by a parser written in JavaScript; and
// what a log message costs its caller, and the process, once messages are breadcrumbs as well.

const { XMLParser } = require('fast-xml-parser');
const fs = require('fs');
const os = require('os');
const path = require('path');

const { redirectGNUstep } = require('../host/gnustepHome');
const { probe } = require('../tests/support/addon');
const { feed, item, makeKeys } = require('../tests/support/updates');
const { measure, report, summary } = require('./support');

const items = 1000;
const messages = 2000;
const rounds = 15;

function makeFeed() {
  const signature = makeKeys().sign(Buffer.from('file'));
  const notes = `<description><![CDATA[<ul>${'<li>Something works better than before.</li>'.repeat(20)}</ul>]]></description>`;
  const needs =
    '<sparkle:minimumSystemVersion>11</sparkle:minimumSystemVersion><pubDate>Sat, 21 Nov 2026 10:00:00</pubDate>';
  const version = (i) =>
    item({
      version: `3.${i}`,
      url: `https://example.org/Tessaro-3.${i}`,
      length: 1e8,
      signature,
      inside: notes + needs,
    });
  return Buffer.from(feed(...Array.from({ length: items }, (_, i) => version(i))));
}

function choices({ bench }) {
  const bytes = makeFeed();
  const text = bytes.toString();
  const parser = new XMLParser({ ignoreAttributes: false });
  if (bench.decideOnly(bytes, '2.0', '12', 'stable') !== items - 1) throw new Error('another update was chosen');
  const results = measure(
    {
      'module: the choice': () => bench.decideOnly(bytes, '2.0', '12', 'stable'),
      'fast-xml-parser, the parse alone': () => parser.parse(text),
    },
    { calls: 5 },
  );
  report(`A feed of ${items} items, ${(bytes.length / 1e6).toFixed(1)} MB`, results, { unit: 'ms', scale: 1e6 });
}

/** Nanoseconds of a log call, and processor nanoseconds of the message in all, once everything has been told. */
async function logMessages({ logText, flushLog }) {
  const calls = [];
  const all = [];
  for (let round = -2; round < rounds; ++round) {
    const cpu = process.cpuUsage();
    const start = process.hrtime.bigint();
    for (let i = 0; i < messages; ++i) logText(8, 'Something of the usual length has happened to account 17');
    const called = Number(process.hrtime.bigint() - start);
    flushLog();
    for (let i = 0; i < 10; ++i) await new Promise(setImmediate);
    const { user, system } = process.cpuUsage(cpu);
    if (round < 0) continue;
    calls.push(called / messages);
    all.push(((user + system) * 1000) / messages);
  }
  return { call: summary(calls), whole: summary(all) };
}

async function breadcrumbs({ module: native, ...probes }) {
  const plain = await logMessages(probes);
  native.setupCrashReporter();
  const crumbs = await logMessages(probes);
  const columns = (name) => ({ 'into the log file': plain[name], 'and a breadcrumb': crumbs[name] });
  report('A log message, for its caller', columns('call'));
  report('A log message, processor time in all', columns('whole'));
}

async function main(home) {
  Object.assign(process.env, { ...redirectGNUstep(home), HOME: home, XDG_STATE_HOME: path.join(home, 'state') });
  const probes = probe();
  choices(probes);
  await breadcrumbs(probes);
}

const home = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-bench-'));
process.on('exit', () => fs.rmSync(home, { recursive: true, force: true }));
main(home);
