'use strict';

const { ok, failed } = require('./rows');

exports.title = 'Surroundings';
exports.needs = ['module'];

exports.run = ({ module, host }) => {
  const bundlePath = module.getBundlePath();
  const languages = JSON.parse(module.getPreferredLanguages());
  return [
    bundlePath === host.bundleInfo().path
      ? ok('Bundle path', bundlePath)
      : failed('Bundle path', `${bundlePath} is not the host's`),
    languages.length > 0 ? ok('Preferred languages', languages.join(', ')) : failed('Preferred languages', 'none'),
    ok('Appearance', module.isDarkMode() ? 'dark' : 'light'),
    ok('System version', String(module.macOSVersion())),
  ];
};
