'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');

const { ok, failed, notOffered } = require('./rows');

exports.title = 'Previous version';
exports.needs = ['module'];

const account = 'previous-version@example.org';
const password = 'kept for years 🔑';

const store = `<?xml version="1.0"?>
<!DOCTYPE database SYSTEM "file:///System/Library/DTDs/CoreData.dtd">

<database>
    <object type="ACCOUNT" id="z102">
        <attribute name="order" type="int32">1</attribute>
        <attribute name="username" type="string">${account}</attribute>
        <attribute name="nickname" type="string">Ann &amp; Bob</attribute>
        <relationship name="bookmarks" type="0/0" destination="BOOKMARK" idrefs="z103"></relationship>
    </object>
    <object type="BOOKMARK" id="z103">
        <attribute name="order" type="int32">10</attribute>
        <attribute name="title" type="string">Starred</attribute>
        <attribute name="url" type="string">https://mail.example.org/?a=1&amp;b=2</attribute>
        <relationship name="account" type="1/1" destination="ACCOUNT" idrefs="z102"></relationship>
    </object>
</database>
`;

const folder = path.join(os.homedir(), 'GNUstep', 'Library', 'ApplicationSupport', 'Tessaro 3');

function isRight(report) {
  const [only, ...others] = report.accounts;
  const [bookmark] = only.bookmarks;
  return (
    others.length === 0 &&
    only.username === account &&
    only.nickname === 'Ann & Bob' &&
    bookmark.url === 'https://mail.example.org/?a=1&b=2'
  );
}

function migrate({ module }) {
  const isStored = JSON.parse(module.setPasswordForAccount(password, account))['ok?'];
  const has = module.hasPreviousVersion();
  const report = JSON.parse(module.getMigrationInfo(null));
  module.removePasswordForAccount(account);
  if (!has || !isRight(report)) return failed('Previous version', `another report: ${JSON.stringify(report)}`);
  const rows = [ok('Previous version', 'an account with its bookmark was reported from the store of Tessaro 3')];
  const [{ password: reported }] = report.accounts;
  if (reported === password) rows.push(ok('Previous version, password', 'out of the keyring, byte for byte'));
  else if (isStored && reported !== null) rows.push(failed('Previous version, password', 'another password came back'));
  else rows.push(notOffered('Previous version, password', 'the keyring can’t be used: see the log'));
  return rows;
}

exports.run = (stage) => {
  // Don't touch files that the user has already.
  if (stage.module.hasPreviousVersion() || fs.existsSync(folder)) {
    return ok(
      'Previous version',
      `this user has one: ${stage.module.hasPreviousVersion() ? 'with' : 'without'} accounts`,
    );
  }
  fs.mkdirSync(folder, { recursive: true });
  try {
    fs.writeFileSync(path.join(folder, 'Accounts.xml'), store);
    return migrate(stage);
  } finally {
    fs.rmSync(folder, { recursive: true, force: true });
  }
};
