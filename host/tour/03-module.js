'use strict';

const { ok } = require('./rows');

exports.title = 'Native module';

exports.run = (stage) => {
  const start = process.hrtime.bigint();
  stage.module = require('../..');
  const milliseconds = Number(process.hrtime.bigint() - start) / 1e6;
  const { version } = require('../../package.json');
  const functions = Object.values(stage.module).filter((value) => typeof value === 'function').length;
  return ok(
    'Native module',
    `version ${version}, ${functions} functions, loaded and started in ${milliseconds.toFixed(1)} ms`,
  );
};
