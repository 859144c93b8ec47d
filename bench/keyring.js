'use strict';

// Passwords in the session's keyring, beside two packages of npm on the same bus. Every operation is done by all of
// them in turn, item by item.

const { Entry, findCredentials } = require('@napi-rs/keyring');
const keytar = require('keytar');

const { module: native, sendMessage } = require('../tests/support/addon').probe();
const { report, summaries, takeTurns } = require('./support');

const count = 100;
const rounds = 7;
const accounts = Array.from({ length: count }, (_, i) => `person-${i}@example.org`);
const password = (account, version) => `pässword ${version} of ${account}`;

const peers = {
  module: {
    set: (account, text) => native.setPasswordForAccount(text, account),
    get: (account) => JSON.parse(native.getPasswordForAccount(account)).password,
    delete: (account) => native.removePasswordForAccount(account),
    enumerate: () => sendMessage(sendMessage('TsKeychain', 'sharedInstance'), 'allAccounts').length,
  },
  keytar: {
    set: (account, text) => keytar.setPassword('bench keytar', account, text),
    get: (account) => keytar.getPassword('bench keytar', account),
    delete: (account) => keytar.deletePassword('bench keytar', account),
    enumerate: async () => (await keytar.findCredentials('bench keytar')).length,
  },
  '@napi-rs/keyring': {
    set: (account, text) => new Entry('bench napi-rs', account).setPassword(text),
    get: (account) => new Entry('bench napi-rs', account).getPassword(),
    delete: (account) => new Entry('bench napi-rs', account).deletePassword(),
    enumerate: () => findCredentials('bench napi-rs').length,
  },
};

/** Has each contestant do the operation with each of the inputs. */
async function inTurn(title, inputs, operation, check = () => true) {
  const contestants = Object.fromEntries(
    Object.entries(peers).map(([name, peer]) => [
      name,
      async (round) => {
        const result = await operation(peer, inputs[round]);
        if (!check(result, inputs[round])) throw new Error(`${name} gave ${result} for ${inputs[round]}`);
      },
    ]),
  );
  const samples = await takeTurns(contestants, { rounds: inputs.length, warm: 0 });
  report(title, summaries(samples), { unit: 'ms', scale: 1e6 });
}

async function main() {
  for (const peer of Object.values(peers)) {
    await peer.set('warm@example.org', 'warm');
    await peer.delete('warm@example.org');
  }
  const set = (version) => (peer, account) => peer.set(account, password(account, version));
  const isSecond = (result, account) => result === password(account, 2);
  await inTurn('Set a new password', accounts, set(1));
  await inTurn('Set another password', accounts, set(2));
  await inTurn('Get a password', [...accounts, ...accounts], (peer, account) => peer.get(account), isSecond);
  await inTurn(
    `Enumerate ${count} passwords`,
    Array(rounds).fill(),
    (peer) => peer.enumerate(),
    (result) => result === count,
  );
  await inTurn('Delete a password', accounts, (peer, account) => peer.delete(account));
}

main();
