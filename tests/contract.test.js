'use strict';

const ts = require('typescript');
const { assert, fs, path, probe, root, scenarios, test } = require('./support');

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
  const text = conditions.join('; ');
  const counts = Array.from(text.matchAll(/args\.Length\(\) [=>]= (\d+)/g), ([, count]) => Number(count));
  const types = {};
  for (const [, index, type] of text.matchAll(/args\[(\d+)\]->Is(\w+)\(\)/g)) types[index] ??= type;
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

// The checks that a contract has for arguments of a type, and the types of functions that answer a "nothing".
const checks = {
  ...{ boolean: 'Boolean', 'boolean | null': 'Boolean Null', number: 'Int32', object: 'Object' },
  ...{ ClippedPage: 'Object', WindowHandle: 'Object', JSONText: 'String', 'JSONText | null': 'String Null' },
  ...{ string: 'String', 'string | null': 'String Null', Text: 'String Null Undefined' },
  'string | null | undefined': 'String Null Undefined',
};
const nothings = {
  ...{ undefined: /^(?!.*(null|Truth))/, null: /null|Request/, false: /boolean/, 0: /Truth/ },
  ...{ '[]': /\[\]/, '""': /string|JSONText/ },
};

function typings() {
  const text = fs.readFileSync(path.join(root, 'index.d.ts'), 'utf8');
  const { statements } = ts.createSourceFile('index.d.ts', text, ts.ScriptTarget.Latest, true);
  return new Map(statements.filter(ts.isFunctionDeclaration).map((each) => [each.name.text, each]));
}

test('the module exports the functions of the table in its order, with the contracts of the typings', () => {
  const { module } = probe();
  const exported = Object.keys(module).filter((name) => module[name].name === name);
  assert.deepStrictEqual(exported, namesOf(table()));
  const declared = typings();
  assert.deepStrictEqual([...declared.keys()].sort(), exported.sort());
  for (const { name, conditions } of table()) {
    const { parameters } = declared.get(name);
    const typed = parameters.map(({ questionToken, type }) => {
      // The toolbars' slots take any value.
      if (questionToken || name === 'setToolbarCallbackFunctions') return '';
      return ts.isFunctionTypeNode(type) ? 'Function' : (checks[type.getText()] ?? '');
    });
    const ofArgument = (i) => conditions.find((text) => text.startsWith(`args[${i}]`)) ?? '';
    const checked = typed.map((_, i) => [...ofArgument(i).matchAll(/Is(\w+)/g)].map(([, type]) => type).join(' '));
    assert.deepStrictEqual(checked, typed, name);
    const required = parameters.filter(({ questionToken }) => !questionToken).length;
    assert.strictEqual(contractOf({ conditions }).counts[0] ?? required, required, name);
  }
});

test('every function logs an exception and answers its "nothing"', async (t) => {
  const rows = table();
  const calls = rows.map((row) => [row.name, validArguments(contractOf(row))]);
  const fail = ({ argument, captureLog, failing, log }, all) => {
    captureLog();
    return [all.map(([name, args]) => String(JSON.stringify(failing[name](...args.map(argument))))), log(1)];
  };
  const [answers, errors] = await calling(t, fail, calls);
  const exception = 'failed with TsProbeException: raised by a test';
  assert.deepStrictEqual(errors, namesOf(rows).map((name) => `${name} ${exception}`)); // prettier-ignore
  const declared = typings();
  rows.forEach(({ name }, i) => assert.match(declared.get(name).type.getText(), nothings[answers[i]], name));
});

test('a violated condition of each kind ends the process with its place and text', async (t) => {
  const all = table().flatMap(violations);
  const kinds = new Map(all.map((each) => [each.condition.replace(/\d+/g, 'N'), each]));
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
