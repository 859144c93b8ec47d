'use strict';

// Makes GNUstep keep a user's files where HOME says.
//
// GNUstep uses the password database and ignores HOME, so a process with another home, as in tests and sandboxes, would
// read and write the real preferences. A GNUstep configuration file, named in the environment before libgnustep-base is
// loaded, sets the right home.

const fs = require('fs');
const os = require('os');
const path = require('path');

const systemConfiguration = '/etc/GNUstep/GNUstep.conf';
// Paths below the user's home; the distribution's other paths stay.
const userSetting = /^(GNUSTEP_USER_(?:DIR\w*|DEFAULTS_DIR|CONFIG_FILE))=(.*)$/;
const necessarySettings = ['GNUSTEP_USER_DEFAULTS_DIR=GNUstep/Defaults', 'GNUSTEP_USER_DIR_LIBRARY=GNUstep/Library'];

function readSystemConfiguration() {
  try {
    return fs.readFileSync(systemConfiguration, 'utf8').split('\n');
  } catch {
    return [];
  }
}

function configurationFor(home) {
  const lines = readSystemConfiguration().filter((line) => line !== '' && !line.startsWith('#'));
  const missing = necessarySettings.filter((setting) => !lines.some((line) => line.startsWith(setting.split('=')[0])));
  const settings = [...lines, ...missing].map((line) =>
    line.replace(userSetting, (_, name, value) => `${name}=${path.resolve(home, value.replace(/^~\//, ''))}`),
  );
  return `${settings.join('\n')}\n`;
}

/**
 * Writes a GNUstep configuration for `home` into it.
 * @param {string} home An existing directory.
 * @param {Record<string, string | undefined>} [environment]
 * @returns A copy of `environment` whose GNUstep programs keep their files in `home`.
 */
function redirectGNUstep(home, environment = process.env) {
  const directory = path.join(home, 'GNUstep');
  const file = path.join(directory, 'GNUstep.conf');
  fs.mkdirSync(directory, { recursive: true, mode: 0o700 });
  // GNUstep refuses a configuration that other users can write.
  fs.writeFileSync(file, configurationFor(home), { mode: 0o600 });
  return { ...environment, GNUSTEP_CONFIG_FILE: file };
}

/** Redirects this process, unless its home is the user's own or GNUstep is already configured. */
function followHome() {
  const { HOME: home, GNUSTEP_CONFIG_FILE: configured } = process.env;
  if (configured || !home || !path.isAbsolute(home)) return;
  if (path.resolve(home) === path.resolve(os.userInfo().homedir)) return;
  if (!fs.existsSync(home)) return;
  process.env.GNUSTEP_CONFIG_FILE = redirectGNUstep(home).GNUSTEP_CONFIG_FILE;
}

module.exports = { redirectGNUstep, followHome };
