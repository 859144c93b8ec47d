'use strict';

// The parts of Node.js that most tests use.

const { execFile, execFileSync, spawn, spawnSync } = require('child_process');
const { after, before, test } = require('node:test');
const { promisify } = require('util');

module.exports = {
  ...{ assert: require('assert'), fs: require('fs'), os: require('os'), path: require('path') },
  ...{ after, before, execFile, execFileSync, promisify, spawn, spawnSync, test },
};
