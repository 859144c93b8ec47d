'use strict';

// The report of what the previous version left behind – 1,000 accounts with 10 bookmarks each – beside what it can't be
// quicker than, the bare parse of the same file, and beside a parser written in JavaScript.

const { XMLParser } = require('fast-xml-parser');
const fs = require('fs');
const os = require('os');
const path = require('path');

const { redirectGNUstep } = require('../host/gnustepHome');
const { probe } = require('../tests/support/addon');
const { accountsStore, previousVersion } = require('../tests/support/stores');
const manyAccounts = require('./accounts');
const { reportLatency, takeTurns } = require('./support');

const rounds = 15;

const milliseconds = (run) => {
  const start = process.hrtime.bigint();
  run();
  return Number(process.hrtime.bigint() - start) / 1e6;
};

const turns = (contestants, count = rounds) =>
  takeTurns(contestants, { rounds: count, warm: 2, sample: (time) => time() });

async function main(home) {
  Object.assign(process.env, { ...redirectGNUstep(home), HOME: home });
  const accounts = manyAccounts(1000, 10);
  const files = previousVersion(home);
  files.write({ accounts: accountsStore(accounts).text() });
  const { module: native, bench } = probe();

  const countOf = (report) => JSON.parse(report).accounts.length;
  if (countOf(native.getMigrationInfo('accounts')) !== accounts.length) throw new Error('another report came back');

  const keyring = await turns(
    {
      'report, passwords included': () => milliseconds(() => native.getMigrationInfo('accounts')),
      'passwords alone': () =>
        milliseconds(() => accounts.forEach(({ username }) => native.getPasswordForAccount(username))),
    },
    5,
  );
  bench.silenceKeychain();
  const parser = new XMLParser({ ignoreAttributes: false });
  const size = `${(fs.statSync(files.accounts).size / 1e6).toFixed(1)} MB`;
  reportLatency(
    `Report of 1,000 accounts with 10 bookmarks each, ${size}, without a keyring`,
    await turns({
      'bare parse': () => bench.timeParse(files.accounts),
      'module: report': () => milliseconds(() => native.getMigrationInfo('accounts')),
      hasPreviousVersion: () => milliseconds(() => native.hasPreviousVersion()),
      'fast-xml-parser, parse alone': () => milliseconds(() => parser.parse(fs.readFileSync(files.accounts, 'utf8'))),
    }),
  );
  reportLatency('The same with the session’s keyring', keyring);
}

const home = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-bench-'));
main(home).finally(() => fs.rmSync(home, { recursive: true, force: true }));
