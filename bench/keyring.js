'use strict';

// Passwords in the session's keyring, beside two packages of npm on the same bus. Every operation is done by all of
// them in turn, item by item.

const { Entry, findCredentials } = require('@napi-rs/keyring');
const keytar = require('keytar');

const { module: native, keychain } = require('../tests/support/addon').probe();
const { reportLatency } = require('./support');

const count = 100;
const rounds = 7;
const accounts = Array.from({ length: count }, (_, i) => `person-${i}@example.org`);
const password = (account, version) => `pässword ${version} of ${account}`;

const peers = {
  module: {
    set: (account, text) => native.setPasswordForAccount(text, account),
    get: (account) => JSON.parse(native.getPasswordForAccount(account)).password,
    delete: (account) => native.removePasswordForAccount(account),
    enumerate: () => JSON.parse(keychain.accounts('Tessaro 3')).length,
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

// Who begins changes with each item, as the file that the keyring writes grows.
async function inTurn(inputs, operation, check = () => true) {
  const names = Object.keys(peers);
  const samples = Object.fromEntries(names.map((name) => [name, []]));
  for (const [index, input] of inputs.entries()) {
    for (let turn = 0; turn < names.length; ++turn) {
      const name = names[(index + turn) % names.length];
      const start = process.hrtime.bigint();
      const result = await operation(peers[name], input);
      samples[name].push(Number(process.hrtime.bigint() - start) / 1e6);
      if (!check(result, input)) throw new Error(`${name} gave ${result} for ${input}`);
    }
  }
  return samples;
}

async function main() {
  await inTurn(['warm@example.org'], (peer, account) => peer.set(account, 'warm'));
  await inTurn(['warm@example.org'], (peer, account) => peer.delete(account));
  const set = (version) => (peer, account) => peer.set(account, password(account, version));
  const isSecond = (result, account) => result === password(account, 2);
  reportLatency('Set a new password', await inTurn(accounts, set(1)));
  reportLatency('Set another password', await inTurn(accounts, set(2)));
  reportLatency('Get', await inTurn([...accounts, ...accounts], (peer, account) => peer.get(account), isSecond));
  const isAll = (result) => result === count;
  reportLatency(`Enumerate ${count}`, await inTurn(Array(rounds).fill(), (peer) => peer.enumerate(), isAll));
  reportLatency('Delete', await inTurn(accounts, (peer, account) => peer.delete(account)));
}

main();
