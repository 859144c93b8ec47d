'use strict';

// The parts of Node.js that most tests use, and all support but dialogs.js, which gives every test that loads it a
// display session.

const { after, before, test } = require('node:test');

const parts =
  'addon alerts applications audio bus certificates child cleanup keyring notificationServer pace requests scenario ' +
  'session stores updates';

module.exports = Object.assign(
  { after, assert: require('assert'), before, test, ...require('child_process'), fs: require('fs') },
  { os: require('os'), path: require('path') },
  ...parts.split(' ').map((name) => require(`./${name}`)),
);
