'use strict';

// The parts of Node.js that most tests use, and all support but dialogs.js, which gives every test that loads it a
// display session.

const parts =
  'addon alerts applications audio bus certificates child cleanup keyring node notificationServer pace ' +
  'requests scenario session stores updates';

module.exports = Object.assign({}, ...parts.split(' ').map((name) => require(`./${name}`)));
