'use strict';

const assert = require('assert');
const { test } = require('node:test');

const { root } = require('./support/addon');
const { evaluate, runScript } = require('./support/child');
const fs = require('fs');
const path = require('path');

// What each function demands, written down apart from the module's own table. A type in brackets per argument that is
// tested; `count` is the number of arguments, or a list of those allowed.
const S = ['String'];
const T = ['String', 'Null', 'Undefined'];
const N = ['String', 'Null'];
const O = ['Object'];
const I = ['Int32'];
const B = ['Boolean'];
const F = ['Function'];

/** [script name, handler when it differs, count, types by index, result when its work fails] */
const contracts = [
  ['loadFScript', '', null, {}, undefined],
  ['setCurrentURL', '', null, {}, null],
  ['setCurrentStateCallbackFunction', '', 1, { 0: F }, null],
  ['getBundlePath', '', null, {}, ''],
  ['getPreferredLanguages', '', null, {}, ''],
  ['getPasswordForAccount', '', 1, { 0: S }, undefined],
  ['setPasswordForAccount', '', [2, 3], {}, undefined],
  ['removePasswordForAccount', '', 1, { 0: S }, undefined],
  ['removeAllPasswords', '', null, {}, undefined],
  ['deliverUserNotification', '', 10, { 0: S, 1: T, 2: T, 3: T, 4: T, 6: T, 8: T }, undefined],
  ['removeUserNotifications', '', null, {}, undefined],
  ['removeUserNotification', '', 1, { 0: S }, undefined],
  ['setNotificationCallbackFunction', '', null, {}, undefined],
  ['getSoundNames', '', null, {}, []],
  ['playSoundWithName', '', null, {}, false],
  ['addToolbarToWindow', '', 3, { 0: O, 1: I, 2: S }, undefined],
  ['setToolbarCallbackFunctions', '', 3, {}, undefined],
  ['reenableWindowUpdates', '', null, {}, undefined],
  ['setWindowNotificationCallbackFunction', '', null, {}, undefined],
  ['hasMainWindow', '', 0, {}, false],
  ['hasKeyWindow', '', 0, {}, false],
  ['hasSheets', '', 1, { 0: O }, false],
  ['closeMainWindow', '', 0, {}, undefined],
  ['closeKeyWindow', '', 0, {}, undefined],
  ['hideWindowContent', '', 2, { 0: O, 1: I }, undefined],
  ['validateToolbarItems', '', 1, { 0: I }, undefined],
  ['selectToolbarItem', '', 2, { 0: I, 1: S }, undefined],
  ['toggleToolbarVisibility', '', 1, { 0: I }, undefined],
  ['isToolbarVisible', '', 1, { 0: I }, false],
  ['customizeToolbar', '', 1, { 0: I }, undefined],
  ['changeImageOfToolbarItem', '', 3, { 0: I, 1: S, 2: S }, undefined],
  ['showAddTabButton', '', 1, { 0: I }, undefined],
  ['hideAddTabButton', '', 1, { 0: I }, undefined],
  ['updateMainMenuMenuItem', '', 2, { 0: S, 1: S }, 0],
  ['updateMainMenuMenuItemWithCommandId', '', 2, { 0: I, 1: S }, 0],
  ['isWebImagePath', '', null, { 0: S }, 0],
  ['scaleImage', '', null, { 0: S, 1: S, 2: I, 3: I }, null],
  ['saveGeneralPasteboard', '', null, {}, false],
  ['restoreGeneralPasteboard', '', null, {}, false],
  ['writeFileContentsToGeneralPasteboard', '', null, { 0: S }, false],
  ['getValueOfPasteboardType', '', 1, { 0: S }, null],
  ['doesPasteboardContainImage', '', 0, {}, 0],
  ['dropFiles', '', 3, { 0: O, 1: S, 2: S }, false],
  ['setDragAndDropCallbackFunction', '', null, {}, undefined],
  ['setKeyboardModifierKeysCallbackFunction', '', null, {}, undefined],
  ['openSupportAndFeedbackWindow', '', 5, { 0: S, 1: S, 2: N, 3: N, 4: N }, undefined],
  ['attachFilesToSupportAndFeedbackWindow', '', 1, { 0: S }, undefined],
  ['annotateImage', '', 2, { 0: S }, undefined],
  ['imageFromPasteboard', '', 1, { 0: S }, null],
  ['takeScreenRecording', '', 2, { 0: S }, undefined],
  ['setupCrashReporter', '', 0, {}, undefined],
  ['testCrash', '', null, {}, undefined],
  ['checkForUpdates', '', 2, { 0: B, 1: B }, undefined],
  ['setAppcastParameterCallback', '', 1, { 0: F }, undefined],
  ['fetchAppcast', '', 0, {}, undefined],
  ['setQueryWindowTraitCallbackFunction', '', 1, {}, undefined],
  ['getFindStringFromPasteboard', 'getFindTextFromPasteboard', null, {}, null],
  ['setFindStringToPasteboard', 'getFindStringFromPasteboard', 1, {}, undefined],
  ['applicationsForFileExtension', '', 3, {}, null],
  ['applicationsForScheme', '', 3, {}, undefined],
  ['bundleId', '', 0, {}, null],
  ['defaultApplicationForScheme', '', 1, { 0: S }, undefined],
  ['setDefaultApplicationForScheme', '', 2, { 0: S, 1: S }, 0],
  ['iconForFileExtension', '', 3, { 0: S, 1: I, 2: S }, undefined],
  ['openFile', '', 3, {}, 0],
  ['openInfoForFile', '', 1, {}, undefined],
  ['quickLook', '', 4, { 0: O, 1: S, 2: I, 3: F }, undefined],
  ['shareFiles', '', 3, { 0: O, 1: S, 2: S }, undefined],
  ['generatePreview', '', 4, { 0: S, 1: I, 2: S, 3: F }, undefined],
  ['isApplicationInstalled', '', 1, { 0: S }, false],
  ['iconForApplication', '', 3, { 0: S, 1: I, 2: S }, undefined],
  ['applicationName', '', 1, { 0: S }, null],
  ['importIntoApplication', '', 2, { 0: S, 1: S }, undefined],
  ['printPath', '', 1, { 0: S }, undefined],
  ['clipPage', '', 2, { 0: S, 1: O }, undefined],
  ['installedClipperApps', '', 0, {}, null],
  ['setSearchServiceCallbackFunction', '', 1, { 0: F }, undefined],
  ['setComposeOutgoingMessageCallbackFunction', '', 1, { 0: F }, undefined],
  ['setNetworkReachabilityCallbackFunction', '', 1, { 0: F }, undefined],
  ['isNetworkReachable', '', 0, {}, false],
  ['setUserDefault', '', 2, { 0: S }, undefined],
  ['getUserDefault', '', 1, { 0: S }, null],
  ['removeUserDefault', '', 1, { 0: S }, undefined],
  ['synchronizeUserDefaults', '', 0, {}, undefined],
  ['getStartAtLogin', '', 0, {}, false],
  ['migrateStartAtLogin', '', 0, {}, undefined],
  ['setStartAtLogin', '', 1, { 0: B }, false],
  ['setStatusItemTitle', '', 2, { 0: N, 1: ['Boolean', 'Null'] }, undefined],
  ['setStatusItemMenuNeedsUpdateCallbackFunction', '', 1, { 0: F }, undefined],
  ['setupMenuWillShowNotification', '', 0, {}, undefined],
  ['getBuildNumber', '', 0, {}, null],
  ['getReleaseString', '', 0, {}, ''],
  ['pickEmailAddresses', '', 2, { 0: O, 1: S }, undefined],
  ['recipientsForGroupName', '', 1, { 0: S }, null],
  ['hasPreviousVersion', '', 0, {}, false],
  ['getMigrationInfo', '', 1, { 0: T }, null],
  ['getTextReplacements', '', null, {}, null],
  ['startMonitoringKeyboardShortcuts', '', 1, { 0: S }, undefined],
  ['stopMonitoringKeyboardShortcuts', '', 0, {}, undefined],
  ['bindGlobalShortcutWithDefaultsKey', '', 1, { 0: S }, undefined],
  ['globalShortcutDescriptionForDefaultsKey', '', 1, { 0: S }, null],
  ['modifierKeys', '', 0, {}, null],
  ['uninstallPDFServices', '', 0, {}, undefined],
  ['showFileDialog', '', 3, { 0: O, 1: S, 2: F }, undefined],
  ['registerAppleEventForTimingApp', '', 1, { 0: F }, undefined],
  ['createRequest', 'TsCreateRequest', { atLeast: 1 }, { 0: S }, null],
  ['isAppHidden', 'TsIsAppHidden', null, {}, false],
  ['writeFile', 'TsWriteFile', 3, { 0: S, 1: O, 2: B }, undefined],
  ['performService', 'TsPerformService', 2, { 0: S, 1: S }, undefined],
  ['resizeWindowContent', 'TsResizeWindowContent', 3, { 0: O, 1: I, 2: I }, undefined],
  ['isDarkMode', '', 0, {}, false],
  ['macOSVersion', '', 0, {}, undefined],
].map(([name, handler, count, types, nothing]) => ({ name, handler: handler || name, count, types, nothing }));

// Source text that makes an argument of a type, and one that is of no type in the list.
const valid = { String: '"text"', Object: '({})', Int32: '1', Boolean: 'true', Function: '(() => {})', Null: 'null' };
const wrong = { String: '1', Object: '"text"', Int32: '1.5', Boolean: '0', Function: '({})' };

const allowedCounts = ({ count }) => [count?.atLeast ?? count ?? []].flat();

function countText({ count }) {
  if (count === null) return [];
  if (count.atLeast !== undefined) return [`args.Length() >= ${count.atLeast}`];
  return [
    [count]
      .flat()
      .map((n) => `args.Length() == ${n}`)
      .join(' || '),
  ];
}

const typeText = ([index, types]) => types.map((type) => `args[${index}]->Is${type}()`).join(' || ');

/** The arguments of a call that keeps the contract. */
function validArguments(contract) {
  const indexes = Object.keys(contract.types).map(Number);
  const length = Math.max(...allowedCounts(contract), ...indexes.map((index) => index + 1), 0);
  return Array.from({ length }, (_, index) => valid[contract.types[index]?.[0]] ?? 'undefined');
}

/** One call for each condition that violates it and none before it. */
function violations(contract) {
  const args = validArguments(contract);
  const list = countText(contract).map((condition) => ({
    condition,
    args:
      contract.count === 0 || [contract.count].flat().includes(0)
        ? ['1']
        : args.slice(0, allowedCounts(contract)[0] - 1),
  }));
  for (const [index, types] of Object.entries(contract.types)) {
    const broken = [...args];
    broken[index] = wrong[types[0]];
    list.push({ condition: typeText([index, types]), args: broken });
  }
  return list.map((violation) => ({ ...violation, contract }));
}

test('the table names 112 functions, in order, with their handlers and conditions', async (t) => {
  const table = await evaluate(t, 'console.log(JSON.stringify(probe().functionTable()))');
  const expected = contracts.map((contract) => ({
    name: contract.name,
    handlerName: contract.handler,
    conditions: [...countText(contract), ...Object.entries(contract.types).map(typeText)],
  }));
  assert.strictEqual(expected.length, 112);
  assert.deepStrictEqual(
    table.map(({ name, handlerName, conditions }) => ({ name, handlerName, conditions })),
    expected,
  );
});

test('exports are exactly the functions of the table, in its order', async (t) => {
  const names = await evaluate(
    t,
    `const { module } = probe(); delete module.probe;
     console.log(JSON.stringify(Object.keys(module).filter((name) => module[name].name === name)))`,
  );
  assert.deepStrictEqual(
    names,
    contracts.map(({ name }) => name),
  );
});

test('the typings name every function', () => {
  const typings = fs.readFileSync(path.join(root, 'index.d.ts'), 'utf8');
  const names = [...typings.matchAll(/^export function (\w+)/gm)].map((match) => match[1]);
  assert.deepStrictEqual(names.sort(), contracts.map(({ name }) => name).sort());
});

test('a function whose work fails answers its "nothing" result', async (t) => {
  const calls = contracts.map((c) => `[${JSON.stringify(c.name)}, [${validArguments(c).join(', ')}]]`);
  const answers = await evaluate(
    t,
    `const { failing } = probe();
     const shape = (value) => (value === undefined ? 'undefined' : value);
     console.log(JSON.stringify([${calls.join(',\n')}].map(([name, args]) => [name, shape(failing[name](...args))])));`,
  );
  const expected = contracts.map(({ name, nothing }) => [name, nothing === undefined ? 'undefined' : nothing]);
  assert.deepStrictEqual(answers, expected);
});

test('each violated condition is found, and the first one is named', async (t) => {
  const queue = contracts.flatMap(violations);
  assert.ok(queue.length > 130, `${queue.length} conditions`);
  const calls = queue.map(({ contract, args }) => `violated.${contract.name}(${args.join(', ')})`);
  const found = await evaluate(t, `const { violated } = probe(); console.log(JSON.stringify([${calls.join(',\n')}]))`);
  assert.deepStrictEqual(
    found,
    queue.map(({ condition }) => condition),
  );
});

test('a violated condition of each kind ends the process with its place and text', async (t) => {
  const table = await evaluate(t, 'console.log(JSON.stringify(probe().functionTable()))');
  const lines = new Map(table.map((row) => [row.name, row.line]));
  const kinds = new Map();
  for (const violation of contracts.flatMap(violations)) {
    kinds.set(violation.condition.replace(/\d+/g, 'N'), violation);
  }
  assert.ok(kinds.size >= 8, `${kinds.size} kinds of conditions`);
  for (const { contract, condition, args } of kinds.values()) {
    const call = `${contract.name}(${args.join(', ')})`;
    const { code, signal, stderr, stdout } = await runScript(
      t,
      `const { module } = probe();
       try { module.${call}; } catch { console.log('thrown'); }
       console.log('alive');`,
    );
    assert.deepStrictEqual({ code, signal, stdout }, { code: null, signal: 'SIGABRT', stdout: '' }, call);
    const place = `src/TessaroNative/FunctionTable.cc:${lines.get(contract.name)}: ${contract.handler}`;
    assert.strictEqual(stderr.split('\n')[0], `TessaroNative: ${place}: Assertion \`${condition}' failed.`);
  }
});

test('conditions that hold for several counts or types accept each of them', async (t) => {
  await evaluate(
    t,
    `const { module: m } = probe();
     m.setPasswordForAccount('p', 'a'); m.setPasswordForAccount(1, null, {});
     m.createRequest('http://localhost/'); m.createRequest('http://localhost/', {}, 3);
     m.getMigrationInfo(null); m.getMigrationInfo(undefined); m.getMigrationInfo('x');
     m.setStatusItemTitle(null, null); m.setStatusItemTitle('', false);
     m.deliverUserNotification('id', null, undefined, '', 'x', 1, null, 2, undefined, {});
     m.hasSheets([]); m.hasSheets(() => {}); m.validateToolbarItems(-1); m.validateToolbarItems(2147483647);
     console.log('true');`,
  );
});
