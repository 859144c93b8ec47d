'use strict';

// All support but dialogs.js, which gives every test that loads it a display session.

const parts =
  'addon alerts applications audio bus certificates child cleanup display keyring notificationServer pace requests ' +
  'scenario session stores updates';

module.exports = Object.assign({}, ...parts.split(' ').map((name) => require(`./${name}`)));
