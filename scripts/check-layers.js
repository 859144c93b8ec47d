'use strict';

// Proves that imports point downwards only, and that each outside library is known to the rooms it belongs to.

const { execFileSync } = require('child_process');
const fs = require('fs');
const path = require('path');

// The rooms that each room may include, besides itself. Every room includes Base. A subsystem includes what lies below
// all of them (`lower`), and another subsystem only where this list gives the reason.
const lower = ['Utilities', 'Extensions', 'Platform'];
const subsystems = {
  AppleScript: ['StatusItem'], // a new message counts as work that the status item shows
  Application: ['Menu', 'Updates'], // the main menu's key equivalents, the updater's window
  Capture: ['Images'], // the files that pictures are written to
  Contacts: [],
  Crashes: [],
  Dock: ['StatusItem'], // the Dock shows the status item's menu
  Files: [],
  Images: ['Workspace'], // icons stand for files without a picture
  Integrations: [],
  Keychain: [],
  Menu: [],
  Migration: ['Contacts', 'Keychain'], // recipients in the report, passwords of the old accounts
  Notifications: [],
  Pasteboard: [],
  Reachability: [],
  Services: ['AppleScript'], // Services make the same message as scripts do
  Settings: [],
  Sharing: [],
  Shortcuts: [],
  StatusItem: [],
  Support: [],
  Toolbar: ['Window'], // window handles
  Updates: [],
  WebView: ['Pasteboard'], // a dragged title is put there as a link
  Window: ['WebView'], // drags into the window are the web view's
  Workspace: [],
};

// A platform room includes the contracts, Common, and its system's Base; others only as listed.
const platformRooms = {
  'Platform/Linux/AppKit': ['Platform/Linux/Clipboard', 'Platform/Linux/Keyboard', 'Platform/Linux/Theme'],
  'Platform/Linux/Clipboard': ['Platform/Linux/AppKit'],
  'Platform/Linux/Theme': ['Platform/Linux/AppKit'],
  'Platform/Linux/Tray': ['Platform/Linux/AppKit'],
};

// Contracts that show the other system's shape of Cocoa to the subsystems.
const cocoaDoors = ['src/Platform/AddressBook.h', 'src/Platform/Cocoa.h'];

const allowed = {
  Base: [],
  TessaroNative: [...Object.keys(subsystems), ...lower],
  Utilities: ['Platform'],
  Extensions: ['Utilities', 'Platform'],
  ...Object.fromEntries(Object.entries(subsystems).map(([room, others]) => [room, [...others, ...lower]])),
};

// The script bridge: the only files below `TessaroNative` that know the engine.
const bridge = ['TsCallbackSlot', 'TsEngineEntry', 'TsScriptValues'].flatMap((name) => [
  `src/Utilities/${name}.h`,
  `src/Utilities/${name}.cc`,
  `src/Utilities/${name}.mm`,
]);

const engine = /^(v8|node)[\w-]*\.h$/;
const cocoa = /^(AddressBook|AppKit|Foundation|ScriptingBridge|objc)\/[\w+]+\.h$/;
// Libraries that are no system's own, and where each is used.
const portable = [
  { header: /^spdlog\//, files: /^src\/Base\/TsLog\.cc$/ },
  { header: /^tl\/expected\.hpp$/, files: /^src\/Base\/Result\.h$/ },
  { header: /^uv\.h$/, files: /^src\/(Base\/UvHandle\.h|Platform\/\w+\/.*)$/ },
  { header: /^pthread\.h$/, files: /^src\/(Base\/TsLog\.cc|Platform\/\w+\/.*)$/ },
  { header: /^rapidjson\//, files: /^src\/Utilities\/TsJSON\.mm$/ },
  { header: /^pugixml\.hpp$/, files: /^src\/(Migration\/TsStoreFile|Platform\/Common\/UpdateDecision)\.(h|cc)$/ },
];

// C and C++: names without a folder and without ".h", or the few C headers in use.
const standard = /^([a-z_]+|c[a-z]+)$/;

// Contracts in terms of Cocoa, for Objective-C++ only.
const cocoaContracts = ['AddressBook', 'Cocoa', 'Drawing', 'FoundationValues'].map((name) => `src/Platform/${name}.h`);

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

/** `Platform/Linux/Tray` of "Platform/Linux/Tray/MenuService.h", `Platform` of a contract, `Menu` of "Menu/…". */
function roomOf(file) {
  const folders = file.split('/').slice(0, -1);
  return folders.slice(0, folders[0] === 'Platform' ? (folders[1] === 'Linux' ? 3 : 2) : 1).join('/');
}

function mayInclude(room, other, file) {
  if (other === room || other === 'Base') return true;
  if (!room.startsWith('Platform')) return (allowed[room] || []).includes(other);
  if (room === 'Platform') return cocoaDoors.includes(file) && other.startsWith('Platform/');
  const system = room.split('/').slice(0, 2).join('/');
  return ['Platform', 'Platform/Common', `${system}/Base`, ...(platformRooms[room] || [])].includes(other);
}

function checkOurs(file, header, tell) {
  if (!header.includes('/')) return tell(`"${header}": includes are written from src/`);
  const room = roomOf(file.slice('src/'.length));
  const other = roomOf(header);
  if (!mayInclude(room, other, file)) tell(`"${header}": ${room} must not know ${other}`);
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
