'use strict';

const { ok, failed } = require('./rows');

exports.title = 'Settings';
exports.needs = ['module'];

function userDefaults({ module }) {
  const key = 'TourSignature';
  module.setUserDefault(key, 'Greetings 😀');
  module.synchronizeUserDefaults();
  const text = module.getUserDefault(key);
  module.setUserDefault(key, 1);
  const truth = module.getUserDefault(key);
  module.removeUserDefault(key);
  const isRight = text === 'Greetings 😀' && truth === true && module.getUserDefault(key) === null;
  return isRight
    ? ok('User defaults', `“${text}” came back; a stored 1 reads ${truth}`)
    : failed('User defaults', `${text}, ${truth}`);
}

// Restores the user's setting.
function startAtLogin({ module }) {
  const before = module.getStartAtLogin();
  const on = module.setStartAtLogin(true);
  const off = module.setStartAtLogin(false);
  const after = module.setStartAtLogin(before);
  return on && !off && after === before
    ? ok('Start at login', `on, off, and as it was: ${before ? 'on' : 'off'}`)
    : failed('Start at login', `on gave ${on}, off gave ${off}`);
}

function textReplacements({ module }) {
  const settings = JSON.parse(module.getTextReplacements());
  const count = settings['text-replacements']?.length ?? 0;
  return ok('Text replacements', `${count} of the user's, switches ${JSON.stringify(Object.keys(settings))}`);
}

exports.run = (stage) => [userDefaults(stage), startAtLogin(stage), textReplacements(stage)];
