'use strict';

// An account menu as script describes it.

const translations = {
  'get-new-mail': 'Get New Mail',
  'do-not-disturb?': 'Do Not Disturb',
  'compose-new-message': 'New Message',
  'sign-in': 'Sign In…',
  'sign-in-format': 'Sign in to %@',
  'open-format': 'Open %@',
  'open-with-counter-format': 'Open %@ (%ld)',
};

const message = (number) => ({
  'from-line': `Sender ${number}`,
  subject: `Subject ${number}`,
  snippet: `Snippet ${number}`,
  'unique-id': `message-${number}`,
});

const account = (id, { count = 0, messages = 0, signIn = false, color = '2980B9', label = `Account ${id}` } = {}) => ({
  id,
  label,
  'unread-counter-value': count,
  'hex-color': color,
  'requires-oauth?': signIn,
  'unread-messages': Array.from({ length: messages }, (_, index) => message(`${id}-${index}`)),
});

module.exports = { translations, account, message };
