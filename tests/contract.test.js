'use strict';

const assert = require('assert');
const { test } = require('node:test');

const { probe, root } = require('./support/addon');
const { evaluate, runScript } = require('./support/child');
const fs = require('fs');
const path = require('path');

// Source text that makes an argument of a type, and one that is of no type that any condition allows beside it.
const valid = { String: '"text"', Object: '({})', Int32: '1', Boolean: 'true', Function: '(() => {})', Null: 'null' };
const wrong = { String: '1', Object: '"text"', Int32: '1.5', Boolean: '0', Function: '({})' };

const table = () => probe().functionTable();

/** What a row's conditions say: the counts allowed, the least one, and the types of arguments by their index. */
function contractOf({ conditions }) {
  const contract = { counts: [], types: {} };
  for (const condition of conditions) {
    for (const [, sign, count] of condition.matchAll(/args\.Length\(\) (==|>=) (\d+)/g)) {
      contract.counts.push(Number(count));
      contract.isLeast = sign === '>=';
    }
    const types = [...condition.matchAll(/args\[(\d+)\]->Is(\w+)\(\)/g)];
    if (types.length > 0) contract.types[types[0][1]] = types.map(([, , type]) => type);
  }
  return contract;
}

/** The arguments of a call that keeps the contract. */
function validArguments({ counts, types }) {
  const length = Math.max(...counts, ...Object.keys(types).map((index) => Number(index) + 1), 0);
  return Array.from({ length }, (_, index) => valid[types[index]?.[0]] ?? 'undefined');
}

/** One call for each condition of a row that violates it and none before it. */
function violations(row) {
  const contract = contractOf(row);
  const args = validArguments(contract);
  const few = contract.counts[0] === 0 ? ['1'] : args.slice(0, contract.counts[0] - 1);
  return row.conditions.map((condition) => {
    const [, index] = condition.match(/args\[(\d+)\]/) ?? [];
    const broken =
      index === undefined ? few : args.map((each, i) => (i === Number(index) ? wrong[contract.types[index][0]] : each));
    return { row, condition, args: broken };
  });
}

test('exports are exactly the 112 functions of the table, in its order', () => {
  const { module } = probe();
  const names = Object.keys(module).filter((name) => module[name].name === name);
  assert.strictEqual(names.length, 112);
  assert.deepStrictEqual(names, table().map(({ name }) => name)); // prettier-ignore
});

test('the typings name every function', () => {
  const typings = fs.readFileSync(path.join(root, 'index.d.ts'), 'utf8');
  const names = [...typings.matchAll(/^export function (\w+)/gm)].map((match) => match[1]);
  assert.deepStrictEqual(
    names.sort(),
    table()
      .map(({ name }) => name)
      .sort(),
  );
});

test('a function whose work fails answers "nothing"', async (t) => {
  const calls = table().map((row) => `failing.${row.name}(${validArguments(contractOf(row)).join(', ')}) ?? null`);
  const answers = await evaluate(
    t,
    `const { failing } = probe(); console.log(JSON.stringify([${calls.join(',\n')}]));`,
  );
  answers.forEach((answer, i) => assert.ok([null, false, 0, ''].includes(answer) || answer.length === 0, calls[i]));
});

test('each violated condition is found, and the first one is named', async (t) => {
  const queue = table().flatMap(violations);
  assert.ok(queue.length > 130, `${queue.length} conditions`);
  const calls = queue.map(({ row, args }) => `violated.${row.name}(${args.join(', ')})`);
  const found = await evaluate(t, `const { violated } = probe(); console.log(JSON.stringify([${calls.join(',\n')}]))`);
  assert.deepStrictEqual(
    found,
    queue.map(({ condition }) => condition),
  );
});

test('a violated condition of each kind ends the process with its place and text', async (t) => {
  const kinds = new Map(table().flatMap(violations).map((each) => [each.condition.replace(/\d+/g, 'N'), each])); // prettier-ignore
  assert.ok(kinds.size >= 8, `${kinds.size} kinds of conditions`);
  const runs = [...kinds.values()].map(async ({ row, condition, args }) => {
    const call = `${row.name}(${args.join(', ')})`;
    const { code, signal, stderr, stdout } = await runScript(
      t,
      `const { module } = probe();
       try { module.${call}; } catch { console.log('thrown'); }
       console.log('alive');`,
    );
    assert.deepStrictEqual({ code, signal, stdout }, { code: null, signal: 'SIGABRT', stdout: '' }, call);
    const place = `src/TessaroNative/FunctionTable.cc:${row.line}: ${row.handlerName}`;
    assert.strictEqual(stderr.split('\n')[0], `TessaroNative: ${place}: Assertion \`${condition}' failed.`);
  });
  await Promise.all(runs);
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
