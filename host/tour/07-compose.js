'use strict';

const assert = require('assert');

const { ok, failed } = require('./rows');

exports.title = 'Mail composed by others';
exports.needs = ['module'];

const message = { to: '"Bob" <bob@example.org>', subject: 'Grüße 🌍', content: 'Line one\nLine two', attachments: [] };
const options = { 'directly-send?': false };

exports.run = async (stage) => {
  let received;
  stage.module.setComposeOutgoingMessageCallbackFunction((...texts) => (received = texts));
  stage.host.postNotification('TsComposeOutgoingMessageNotification', null, { message, options });
  if (!(await stage.until(() => received))) return failed('Mail composed by others', 'nothing reached script');
  assert.deepStrictEqual(
    received.map((text) => JSON.parse(text)),
    [message, options],
  );
  return ok('Mail composed by others', `script received ${received[0]}`);
};
