'use strict';

// Proves that imports point downwards only, and that each outside library is known to the rooms it belongs to.

const { execFileSync } = require('child_process');
const fs = require('fs');
const path = require('path');

const subsystems = [
  'AppleScript',
  'Application',
  'Capture',
  'Contacts',
  'Crashes',
  'Dock',
  'Files',
  'Images',
  'Integrations',
  'Keychain',
  'Menu',
  'Migration',
  'Network',
  'Notifications',
  'Pasteboard',
  'Reachability',
  'Services',
  'Settings',
  'Sharing',
  'Shortcuts',
  'StatusItem',
  'Support',
  'Toolbar',
  'Updates',
  'WebView',
  'Window',
  'Workspace',
];

// The subsystems that include another one. All others stand alone.
const neighbours = {
  AppleScript: ['StatusItem'], // a composed message may come from the status item
  Application: ['Menu', 'Updates'],
  Capture: ['Images'],
  Dock: ['StatusItem'], // both show the account menu
  Images: ['Workspace'], // a previewed file can be opened
  Migration: ['Contacts', 'Keychain'], // the old accounts' recipients and passwords
  Services: ['AppleScript'], // a service composes a message
  Toolbar: ['Window'],
  Window: ['WebView'],
};

// What each room may include of ours. Within itself every room may.
const belowSubsystem = ['Utilities', 'Extensions', 'Platform', 'Base'];
const allowed = {
  TessaroNative: [...subsystems, ...belowSubsystem],
  Utilities: ['Platform', 'Base'],
  Extensions: ['Utilities', 'Platform', 'Base'],
  Platform: ['Base'],
  Base: [],
  ...Object.fromEntries(subsystems.map((name) => [name, [...(neighbours[name] || []), ...belowSubsystem]])),
};

// The script bridge: the only files below `TessaroNative` that know the engine.
const bridge = [
  'TsApplicationIsolate',
  'TsCallbackSlot',
  'TsEngineEntry',
  'TsEventEmitter',
  'TsPendingCallback',
  'TsScriptValues',
].flatMap((name) => [`src/Utilities/${name}.h`, `src/Utilities/${name}.cc`, `src/Utilities/${name}.mm`]);

const engine = /^(v8|node)[\w-]*\.h$/;
const cocoa = /^(AddressBook|AppKit|Foundation|ScriptingBridge|objc)\/[\w+]+\.h$/;
// Libraries that are no system's own, and where each is used.
const portable = [
  { header: /^tl\/expected\.hpp$/, files: /^src\/Base\/Result\.h$/ },
  { header: /^uv\.h$/, files: /^src\/(Base\/UvHandle\.h|Platform\/\w+\/.*)$/ },
  { header: /^pthread\.h$/, files: /^src\/(Base\/ThreadName\.cc|Platform\/\w+\/.*)$/ },
  { header: /^spdlog\//, files: /^src\/Base\/TsLogging\.cc$/ },
  { header: /^simdjson\.h$/, files: /^src\/Utilities\/TsJSONReader\.mm$/ },
  { header: /^pugixml\.hpp$/, files: /^src\/(Migration\/TsStoreFile|Platform\/Common\/Appcast)\.cc$/ },
];

// C and C++: names without a folder and without ".h", or the few C headers in use.
const standard = /^([a-z_]+|c[a-z]+)$/;

// Contracts in terms of Cocoa, for Objective-C++ only.
const cocoaContracts = ['src/Platform/AddressBook.h', 'src/Platform/Cocoa.h', 'src/Platform/Drawing.h'];

/** @returns {string[]} What is wrong with `source`, a text whose file is named `file`. */
function violations(file, source) {
  const found = [];
  source.split('\n').forEach((line, index) => {
    const tell = (text) => found.push(`${file}:${index + 1}: ${text}`);
    if (/^\s*#\s*(el)?ifn?(def)?\b.*__(APPLE|linux)__/.test(line) && !file.startsWith('src/Platform/')) {
      tell('only src/Platform may ask which system it is on');
    }
    const outside = line.match(/^\s*#\s*(?:include|import)\s*<([^>]+)>/)?.[1];
    if (outside !== undefined) checkOutside(file, outside, tell);
    const ours = line.match(/^\s*#\s*(?:include|import)\s*"([^"]+)"/)?.[1];
    if (ours !== undefined) checkOurs(file, ours, tell);
  });
  return found;
}

function checkOutside(file, header, tell) {
  const isContract = /^src\/Platform\/[^/]+\.h$/.test(file);
  if (engine.test(header)) {
    if (!file.startsWith('src/TessaroNative/') && !bridge.includes(file))
      tell(`<${header}>: only the bridge knows the engine`);
  } else if (cocoa.test(header)) {
    if (isContract && !cocoaContracts.includes(file)) tell(`<${header}>: a contract knows no Cocoa`);
  } else if (!standard.test(header)) {
    const known = portable.find((library) => library.header.test(header));
    if (known !== undefined && !known.files.test(file)) tell(`<${header}>: this library is used in one place`);
    if (known === undefined && !/^src\/Platform\/\w+\//.test(file))
      tell(`<${header}>: only src/Platform/<System> knows the system's libraries`);
  }
}

function checkOurs(file, header, tell) {
  const room = file.split('/')[1];
  const other = header.split('/')[0];
  if (!header.includes('/')) return tell(`"${header}": includes are written from src/`);
  if (other === room) return undefined;
  if (/^Platform\/\w+\//.test(header)) return tell(`"${header}": a system's own headers are for that system's bodies`);
  if (!(allowed[room] || []).includes(other)) return tell(`"${header}": ${room} must not know ${other}`);
  return undefined;
}

function sources() {
  const root = path.resolve(__dirname, '..');
  const listed = execFileSync(
    'git',
    ['ls-files', '-co', '--exclude-standard', '--', 'src/*.h', 'src/*.cc', 'src/*.mm'],
    { cwd: root },
  );
  return listed
    .toString()
    .trim()
    .split('\n')
    .map((file) => [file, fs.readFileSync(path.join(root, file), 'utf8')]);
}

function main() {
  const found = sources().flatMap(([file, source]) => violations(file, source));
  for (const violation of found) console.error(violation);
  process.exitCode = found.length > 0 ? 1 : 0;
}

if (require.main === module) main();

module.exports = { violations };
