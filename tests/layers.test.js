'use strict';

const assert = require('assert');
const { test } = require('node:test');

const { violations } = require('../scripts/check-layers');

test('an import that points the wrong way is found', () => {
  const cases = [
    ['src/Menu/TsMainMenu.mm', '#include <v8.h>', 'only the bridge knows the engine'],
    ['src/Utilities/TsLog.mm', '#include <node_buffer.h>', 'only the bridge knows the engine'],
    ['src/Utilities/TsScriptValues.mm', '#include <node_buffer.h>', null],
    ['src/TessaroNative/StartUp.mm', '#include <node.h>', null],
    [
      'src/Keychain/TsKeychain.mm',
      '#include <libsecret/secret.h>',
      "only src/Platform/<System> knows the system's libraries",
    ],
    ['src/Platform/Linux/Keychain.cc', '#include <libsecret/secret.h>', null],
    [
      'src/Platform/Keychain.h',
      '#include <libsecret/secret.h>',
      "only src/Platform/<System> knows the system's libraries",
    ],
    ['src/Platform/Keychain.h', '#import <Foundation/Foundation.h>', 'a contract knows no Cocoa'],
    ['src/Platform/AddressBook.h', '#import <Foundation/Foundation.h>', null],
    ['src/Platform/Keychain.h', '#include <string>', null],
    ['src/Menu/TsMainMenu.mm', '#import <AppKit/AppKit.h>', null],
    ['src/Menu/TsMainMenu.mm', '#include <spdlog/spdlog.h>', 'this library is used in one place'],
    ['src/Menu/TsMainMenu.mm', '#include "TessaroNative/Handlers.h"', 'Menu must not know TessaroNative'],
    [
      'src/Menu/TsMainMenu.mm',
      '#include "Platform/Linux/SessionBus.h"',
      "a system's own headers are for that system's bodies",
    ],
    ['src/Utilities/TsLog.mm', '#include "Menu/TsMainMenu.h"', 'Utilities must not know Menu'],
    ['src/Platform/Linux/MainQueue.cc', '#include "Utilities/TsLog.h"', 'Platform must not know Utilities'],
    ['src/Platform/AddressBook.h', '#include "Base/Ref.h"', null],
    ['src/Services/TsServicesProvider.mm', '#include "AppleScript/TsMailto.h"', null],
    ['src/Menu/TsMainMenu.mm', '#include "AppleScript/TsMailto.h"', 'Menu must not know AppleScript'],
    ['src/Menu/TsMainMenu.mm', '#include "TsMainMenu.h"', 'includes are written from src/'],
    ['src/Menu/TsMainMenu.mm', '#if defined(__APPLE__)', 'only src/Platform may ask which system it is on'],
    ['src/Menu/TsMainMenu.mm', '  #  ifdef __linux__', 'only src/Platform may ask which system it is on'],
  ];
  for (const [file, line, expected] of cases) {
    const found = violations(file, `\n${line}\n`);
    const where = expected === null ? [] : [`${file}:2: `];
    assert.deepStrictEqual(
      found.map((text) => text.slice(0, where[0]?.length)),
      where,
      `${file}: ${line}`,
    );
    if (expected !== null) assert.ok(found[0].endsWith(expected), found[0]);
  }
});
