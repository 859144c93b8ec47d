'use strict';

// A scripted message on its way from the bus to script, recipients as text, and groups of contacts.

const fs = require('fs');
const os = require('os');
const path = require('path');

const { redirectGNUstep } = require('../host/gnustepHome');

const home = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-bench-'));
process.on('exit', () => fs.rmSync(home, { recursive: true, force: true }));
process.env.GNUSTEP_CONFIG_FILE = redirectGNUstep(home).GNUSTEP_CONFIG_FILE;

const host = require('../host');
const { probe } = require('../tests/support/addon');
const { report, summary } = require('./support');

const rounds = 21;
const ms = { unit: 'ms', scale: 1e6 };

host.start();
host.setKeepAlive(true);
const { module: native, bench } = probe();

const since = (start) => Number(process.hrtime.bigint() - start);

async function compose(recipients) {
  const composed = new Promise((resolve) => native.setComposeOutgoingMessageCallbackFunction(resolve));
  // The sender's work is not the module's.
  bench.prepareMessage(recipients);
  const start = process.hrtime.bigint();
  bench.composeMessage();
  const text = await composed;
  const time = since(start);
  if (JSON.parse(text).to.length !== recipients) throw new Error(`composed ${text}`);
  return time;
}

async function repeat(work) {
  await work();
  const samples = [];
  for (let round = 0; round < rounds; ++round) samples.push(await work());
  return samples;
}

function splitInScript(text) {
  const start = process.hrtime.bigint();
  const recipients = text.split(',').map((piece) => {
    const match = /^([^<]*)<([^>]*)>/.exec(piece);
    return match ? { name: match[1].trim(), address: match[2] } : { name: '', address: piece };
  });
  const split = since(start);
  const written = recipients.map(({ name, address }) => (name ? `"${name}" <${address}>` : `<${address}>`)).join(', ');
  return [split, since(start) - split, written.length];
}

function measureText(count) {
  const text = Array.from({ length: count }, (_, i) => `Person ${i} <person${i}@example.org>`).join(', ');
  const samples = Array.from({ length: rounds }, () => ({
    native: bench.timeText(text),
    script: splitInScript(text),
  }));
  const of = (peer, step) => summary(samples.map((sample) => sample[peer][step]));
  report(
    `${count} recipients, ${(text.length / 1e6).toFixed(1)} MB`,
    {
      'fromString:': of('native', 0),
      'the same in script': of('script', 0),
      'toString:': of('native', 1),
      'the same in script ': of('script', 1),
    },
    ms,
  );
}

// As files, because the framework takes a minute to add so many.
function makeContacts(count) {
  const folder = path.join(home, 'GNUstep', 'Library', 'Addresses');
  fs.rmSync(folder, { recursive: true, force: true });
  fs.mkdirSync(folder, { recursive: true });
  const write = (id, text) => fs.writeFileSync(path.join(folder, `${id}.mfaddr`), text);
  const ids = Array.from({ length: count }, (_, index) => index + 1);
  for (const id of ids) {
    const email = `({ ID = 1; Label = WorkEmail; Value = "person${id}@example.org"; })`;
    write(id, `{ Type = Person; UID = ${id}; FirstName = Person; LastName = "${id}"; Email = ${email}; }`);
  }
  write(
    count + 1,
    `{ Type = Group; UID = ${count + 1}; GroupName = "${count} people"; Members = (${ids.join(', ')}); }`,
  );
  fs.writeFileSync(path.join(folder, 'NEXTID'), String(count + 2));
}

function measureGroup(count) {
  makeContacts(count);
  const samples = Array.from({ length: 5 }, () => {
    const [time, found] = bench.timeGroup(`${count} people`);
    if (found !== count) throw new Error(`${found} of ${count} people`);
    return time;
  });
  report(`A group of ${count} people`, { 'its recipients': summary(samples) }, ms);
}

async function main() {
  report(
    'A message from the bus to script',
    {
      'one recipient': summary(await repeat(() => compose(1))),
      '1000 recipients': summary(await repeat(() => compose(1000))),
      '10000 recipients': summary(await repeat(() => compose(10000))),
    },
    ms,
  );
  measureText(100000);
  measureGroup(10000);
  process.exit();
}

main();
