'use strict';

const { ok, failed, notOffered } = require('./rows');

exports.title = 'Passwords';
exports.needs = ['module'];

const account = 'tour@example.org';
const password = 'gänse\u0000füßchen 😀';

const unavailable = -25291;

const otherProgramSees = (stage) => stage.run('secret-tool', 'lookup', 'service', 'Tessaro 3', 'account', account);

exports.run = async (stage) => {
  const { module } = stage;
  const before = JSON.parse(module.getPasswordForAccount(account));
  if (before.error === unavailable)
    return notOffered('Keychain', 'no secret service on the session bus (status -25291)');
  if (!before['ok?']) return notOffered('Keychain', `the keyring refuses: status ${before.error}`);
  module.setPasswordForAccount(password, account);
  const stored = JSON.parse(module.getPasswordForAccount(account)).password === password;
  const seen = await otherProgramSees(stage);
  module.removePasswordForAccount(account);
  const gone = JSON.parse(module.getPasswordForAccount(account)).password === null;
  if (!stored || !gone)
    return failed('Keychain', stored ? 'the password is still there' : 'another password came back');
  return [
    ok('Keychain', 'a password was stored, read back byte for byte, and removed'),
    seen === password
      ? ok('Keychain, shared', 'secret-tool read the same item')
      : notOffered('Keychain, shared', 'there is no secret-tool to look from outside'),
  ];
};
