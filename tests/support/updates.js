'use strict';

// An application of its own version, the feed that it asks, and the keys that sign its updates.

const crypto = require('crypto');
const fs = require('fs');
const path = require('path');

/** A new pair of keys: `publicKey` as the application's bundle has it, `sign()` as the feed has signatures. */
function makeKeys() {
  const { publicKey, privateKey } = crypto.generateKeyPairSync('ed25519');
  return {
    publicKey: Buffer.from(publicKey.export({ format: 'jwk' }).x, 'base64url').toString('base64'),
    sign: (bytes) => crypto.sign(null, bytes, privateKey).toString('base64'),
  };
}

const quoted = (text) => JSON.stringify(String(text));

/** Writes an application's bundle into `directory`; what is not given is not in its information. Gives its path. */
function makeBundle(directory, { version, shortVersion, feed, publicKey } = {}) {
  const bundle = path.join(directory, 'TessaroHost.app');
  const information = {
    NSExecutable: 'TessaroHost',
    CFBundleName: 'TessaroHost',
    CFBundleIdentifier: 'org.tessaro.TessaroHost',
    CFBundleVersion: version,
    CFBundleShortVersionString: shortVersion,
    SUFeedURL: feed,
    SUPublicEDKey: publicKey,
  };
  const lines = Object.entries(information)
    .filter(([, value]) => value !== undefined)
    .map(([key, value]) => `  ${key} = ${quoted(value)};`);
  fs.mkdirSync(path.join(bundle, 'Resources'), { recursive: true });
  fs.writeFileSync(path.join(bundle, 'TessaroHost'), '');
  fs.writeFileSync(path.join(bundle, 'Resources', 'Info-gnustep.plist'), `{\n${lines.join('\n')}\n}\n`);
  return bundle;
}

const attributes = (all) =>
  Object.entries(all)
    .filter(([, value]) => value !== undefined)
    .map(([name, value]) => ` ${name}="${value}"`)
    .join('');

/** An item of a feed. `inside` is further XML. */
function item({ version, url, signature, length, os, title = `Version ${version}`, inside = '' }) {
  const enclosure = attributes({
    url,
    length,
    type: 'application/octet-stream',
    'sparkle:version': version,
    'sparkle:edSignature': signature,
    'sparkle:os': os,
  });
  return `<item><title>${title}</title>${inside}<enclosure${enclosure}/></item>`;
}

const vocabulary = 'http://www.andymatuschak.org/xml-namespaces/sparkle';

const feed = (...items) =>
  `<?xml version="1.0" encoding="utf-8"?>\n<rss version="2.0" xmlns:sparkle="${vocabulary}"><channel><title>Changes</title>${items.join('\n')}</channel></rss>`;

module.exports = { makeKeys, makeBundle, item, feed, vocabulary };
