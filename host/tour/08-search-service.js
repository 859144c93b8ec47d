'use strict';

const { ok, failed } = require('./rows');

exports.title = 'Search service';
exports.needs = ['module'];

exports.run = async (stage) => {
  const words = 'quarterly report';
  let received;
  stage.module.setSearchServiceCallbackFunction((text) => (received = text));
  stage.host.postNotification('TsServiceProviderSearchNotification', words);
  await stage.until(() => received !== undefined);
  return received === words
    ? ok('Search service', `script is asked to search for “${received}”`)
    : failed('Search service', `script received ${JSON.stringify(received)}`);
};
