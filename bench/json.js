'use strict';

// The JSON doors beside the engine's own, on a status menu of 5 accounts with 500 messages each.

const { probe } = require('../tests/support/addon');
const { measure, report, summary } = require('./support');

const { bench } = probe();

function menuDocument(extra) {
  const accounts = Array.from({ length: 5 }, (_, account) => ({
    id: `acc${account}`,
    name: `Account ${account}`,
    email: `me${account}@example.org`,
    unread: 500,
    messages: Array.from({ length: 500 }, (_message, index) => ({
      id: `m${account}-${index}-9f8e7d6c5b4a`,
      subject: `Quarterly report ${index} ${extra} overview of sizes "draft"`,
      from: `Person Number ${index}`,
      email: `person${index}@example.org`,
      preview: `Hello, please find attached the document number ${index} that we spoke about last week. `.repeat(2),
      date: 1790000000000 + index * 60000,
      unread: index % 3 === 0,
    })),
  }));
  return { accounts };
}

const rounds = 41;
const ms = { unit: 'ms', scale: 1e6 };

for (const [name, extra] of [
  ['ASCII', '-'],
  ['with dashes beyond Latin-1', '—'],
  ['with Chinese subjects', '你好世界'],
]) {
  const object = menuDocument(extra);
  const text = JSON.stringify(object);
  const size = `${(Buffer.byteLength(text) / 1e6).toFixed(2)} MB, ${name}`;
  report(
    `Reading ${size}`,
    {
      ...measure(
        { 'JSON.parse': () => JSON.parse(text), 'module: door, from a script string': () => bench.reads(text) },
        { rounds, calls: 3 },
      ),
      'module: door alone': summary(bench.timeRead(text, rounds)),
    },
    ms,
  );
  report(
    `Writing ${size}`,
    {
      ...measure({ 'JSON.stringify': () => JSON.stringify(object) }, { rounds, calls: 3 }),
      'module: door alone': summary(bench.timeWrite(text, rounds)),
    },
    ms,
  );
}
