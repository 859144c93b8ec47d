'use strict';

// The contracts of the script functions. `node tests/contract.test.js --update` rewrites contracts.json.

const { assert, fs, path, test } = require('./support/node');
const { probe, root, scenarios } = require('./support');

// Arguments by the names of their types, and by "!" and the name some that no condition allows beside that type.
const calling = scenarios({
  fixture: () => ({
    argument: (type) =>
      ({
        ...{ String: 'text', Object: {}, Int32: 1, Boolean: true, Function: () => {}, Null: null },
        ...{ '!String': 1, '!Object': 'text', '!Int32': 1.5, '!Boolean': 0, '!Function': {} },
      })[type],
  }),
});

const table = () => probe().functionTable();
const namesOf = (rows) => rows.map(({ name }) => name);

/** The conditions of a row: the counts that they allow, and the types of arguments by their index. */
function contractOf({ conditions }) {
  const counts = conditions.flatMap((text) =>
    [...text.matchAll(/args\.Length\(\) [=>]= (\d+)/g)].map(([, n]) => Number(n)),
  );
  const types = {};
  for (const text of conditions) {
    const [first] = text.matchAll(/args\[(\d+)\]->Is(\w+)\(\)/g);
    if (first) types[first[1]] = first[2];
  }
  return { counts, types };
}

/** The types of the arguments of a call that keeps the contract. */
function validArguments({ counts, types }) {
  const length = Math.max(...counts, ...Object.keys(types).map((index) => Number(index) + 1), 0);
  return Array.from({ length }, (_, index) => types[index] ?? 'Undefined');
}

/** One call for each condition of a row, which violates that and none before it. */
function violations(row) {
  const contract = contractOf(row);
  const args = validArguments(contract);
  const few = contract.counts[0] === 0 ? ['Int32'] : args.slice(0, contract.counts[0] - 1);
  return row.conditions.map((condition) => {
    const [, index] = condition.match(/args\[(\d+)\]/) ?? [];
    const wrong = args.map((type, i) => (i === Number(index) ? `!${type}` : type));
    return { row, condition, call: [row.name, index === undefined ? few : wrong] };
  });
}

test('the module exports the functions of the table in its order, and the typings name them', () => {
  const { module } = probe();
  const names = namesOf(table());
  assert.deepStrictEqual(
    Object.keys(module).filter((name) => module[name].name === name),
    names,
  );
  const typings = fs.readFileSync(path.join(root, 'index.d.ts'), 'utf8');
  const typed = [...typings.matchAll(/^export function (\w+)/gm)].map(([, name]) => name);
  assert.deepStrictEqual(typed.sort(), [...names].sort());
});

test('every function keeps its conditions, and logs an exception and answers its "nothing"', async (t) => {
  const rows = table();
  const calls = rows.map((row) => [row.name, validArguments(contractOf(row))]);
  const fail = ({ argument, captureLog, failing, log }, all) => {
    captureLog();
    return [all.map(([name, args]) => String(JSON.stringify(failing[name](...args.map(argument))))), log(1)];
  };
  const [results, errors] = await calling(t, fail, calls);
  const exception = 'failed with TsProbeException: raised by a test';
  assert.deepStrictEqual(errors, namesOf(rows).map((name) => `${name} ${exception}`)); // prettier-ignore
  const functions = {};
  rows.forEach(({ name, conditions }, i) => {
    const contract = `${conditions.join('; ')} -> ${results[i]}`;
    functions[contract] = functions[contract] ? `${functions[contract]} ${name}` : name;
  });
  const file = path.join(__dirname, 'contracts.json');
  const text = `${JSON.stringify(functions, null, 2)}\n`;
  if (process.argv.includes('--update')) fs.writeFileSync(file, text);
  assert.strictEqual(text, fs.readFileSync(file, 'utf8'));
});

test('a violated condition of each kind ends the process with its place and text', async (t) => {
  const kinds = new Map(
    table()
      .flatMap(violations)
      .map((each) => [each.condition.replace(/\d+/g, 'N'), each]),
  );
  assert.ok(kinds.size >= 8, `${kinds.size} kinds of conditions`);
  const violate = ({ argument, native, print }, name, args) => {
    try {
      native[name](...args.map(argument));
    } finally {
      print('alive');
    }
  };
  const runs = [...kinds.values()].map(async ({ row, condition, call }) => {
    const { code, signal, stderr, stdout } = await calling.ends(t, violate, ...call);
    assert.deepStrictEqual({ code, signal, stdout }, { code: null, signal: 'SIGABRT', stdout: '' }, row.name);
    const place = `src/TessaroNative/FunctionTable.cc:${row.line}: ${row.handlerName}`;
    assert.strictEqual(stderr.split('\n')[0], `TessaroNative: ${place}: Assertion \`${condition}' failed.`);
  });
  await Promise.all(runs);
});
