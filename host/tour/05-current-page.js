'use strict';

const { ok } = require('./rows');

exports.title = 'Current page';
exports.needs = ['module'];

exports.run = ({ module }) => {
  const title = 'Inbox – ann@example.org';
  module.setCurrentURL('tessaro://mail/inbox', 'https://mail.example.org/inbox', title);
  module.setCurrentStateCallbackFunction((question) => (question === 'current-message-text' ? 'Dear Bob, …' : null));
  return ok('Current page', `“${title}” is what scripting and window drags will be told`);
};
