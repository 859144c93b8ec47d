'use strict';

// The Debian packages that running or building needs.

const { spawnSync } = require('child_process');
const fs = require('fs');
const path = require('path');

const folder = path.join(__dirname, '..', 'scripts', 'packages');

const listed = (name) =>
  fs.readFileSync(path.join(folder, name), 'utf8').replace(/#.*/g, '').split(/\s+/).filter(Boolean);

/** @returns {string[]} Those of the named lists that are not installed; none where there is no dpkg to ask. */
function missingPackages(...names) {
  const wanted = names.flatMap(listed);
  const { stdout, error } = spawnSync('dpkg-query', ['-W', '-f', '${db:Status-Abbrev}${Package}\\n', ...wanted], {
    encoding: 'utf8',
  });
  if (error !== undefined) return [];
  const installed = new Set([...stdout.matchAll(/^ii +(.+)$/gm)].map((match) => match[1]));
  return wanted.filter((name) => !installed.has(name));
}

module.exports = { missingPackages };
