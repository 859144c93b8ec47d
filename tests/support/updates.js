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

/**
 * A file that is an AppImage as far as the updater looks: an ELF header with the AppImage mark, and `version` in a
 * section of its own, unless it is undefined.
 */
function makeAppImage(version, contents = '', { machine = process.arch === 'arm64' ? 183 : 62 } = {}) {
  const names = Buffer.from('\0.names\0.tessaro.version\0');
  const texts = [Buffer.alloc(0), names, ...(version === undefined ? [] : [Buffer.from(version)])];
  const header = Buffer.alloc(64);
  header.write('\x7fELF\x02\x01\x01', 'latin1');
  header.write('AI\x02', 8);
  header.writeUInt16LE(machine, 18);
  header.writeBigUInt64LE(64n, 40);
  [64, texts.length, 1].forEach((value, i) => header.writeUInt16LE(value, 58 + 2 * i));
  let offset = 64 + 64 * texts.length;
  const sections = texts.map((text, i) => {
    const section = Buffer.alloc(64);
    section.writeUInt32LE([0, 1, 8][i], 0);
    section.writeBigUInt64LE(BigInt(offset), 24);
    section.writeBigUInt64LE(BigInt(text.length), 32);
    offset += text.length;
    return section;
  });
  return Buffer.concat([header, ...sections, ...texts, Buffer.from(contents)]);
}

/** The texts of the entries that have a value. */
function textOf(all, format) {
  const entries = Object.entries(all).filter(([, value]) => value !== undefined);
  return entries.map(format).join('');
}

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
  const text = textOf(information, ([key, value]) => `  ${key} = ${JSON.stringify(value)};\n`);
  fs.mkdirSync(path.join(bundle, 'Resources'), { recursive: true });
  fs.writeFileSync(path.join(bundle, 'TessaroHost'), '');
  fs.writeFileSync(path.join(bundle, 'Resources', 'Info-gnustep.plist'), `{\n${text}}\n`);
  return bundle;
}

/** An item of a feed. `inside` is further XML. */
function item({ version, url, signature, length, os, title = `Version ${version}`, inside = '' }) {
  const ours = { 'sparkle:version': version, 'sparkle:edSignature': signature, 'sparkle:os': os };
  const attributes = { url, length, type: 'application/octet-stream', ...ours };
  const enclosure = textOf(attributes, ([name, value]) => ` ${name}="${value}"`);
  return `<item><title>${title}</title>${inside}<enclosure${enclosure}/></item>`;
}

const vocabulary = 'http://www.andymatuschak.org/xml-namespaces/sparkle';

const feed = (...items) =>
  `<?xml version="1.0" encoding="utf-8"?>\n<rss version="2.0" xmlns:sparkle="${vocabulary}"><channel><title>Changes</title>${items.join('\n')}</channel></rss>`;

module.exports = { makeAppImage, makeKeys, makeBundle, item, feed, vocabulary };
