'use strict';

const { assert, scenarios, test } = require('./support');

const plain = scenarios();

test('strings survive the way in and out', async (t) => {
  const failures = await plain(t, (probes) => {
    const few = ['', 'hello', 'a', 'Größe ÿ', 'a\0b\0', '\0', '你好 – Привет', '😀𝄞 text 👩‍👩‍👧', 'e\u0301', 'שלום'];
    const edges = ['\ufeffx', '\uffff\ufffe', '\u00ff\u0100', 'x'.repeat(255), 'x'.repeat(256), '你'.repeat(257)];
    const pieces = [`${'abc'.repeat(100)}你def`, `padding ${'y'.repeat(40)}`.slice(8, 40)];
    const large = ['abcdefgh'.repeat(131072), '你好世界'.repeat(131072), 'é'.repeat(10485760)];
    const texts = [...few, ...edges, ...pieces, ...large];
    return ['echo', 'echoAutoreleased', 'echoForeign'].flatMap((echo) =>
      texts
        // Foundation's own strings drop a byte order mark while they are made, before we see them.
        .filter((text) => echo !== 'echoForeign' || !text.startsWith('\ufeff'))
        .filter((text) => probes[echo](text) !== text)
        .map((text) => [echo, text.slice(0, 20)]),
    );
  });
  assert.deepStrictEqual(failures, []);
});

test('lone surrogates become U+FFFD, as they would through UTF-8', async (t) => {
  const texts = ['\ud800', 'a\udc00b', '\udc00\ud800', '\ud83d\ude00\ud83d', 'x'.repeat(300) + '\udfff'];
  const rows = texts.map((text) => {
    const bytes = Buffer.from(text, 'utf8');
    return [[...text].map((each) => each.codePointAt(0)), [`${bytes}`, `${bytes}`, bytes.toString('hex')]];
  });
  await plain.table(t, rows, ({ echo, echoAutoreleased, utf8 }, points) => {
    const text = String.fromCodePoint(...points);
    return [echo(text), echoAutoreleased(text), utf8(text).toString('hex')];
  });
});

test('other values convert by their string form', async (t) => {
  const failed = '<string conversion failed>';
  const results = await plain(t, ({ echoAutoreleased }) => {
    const fails = () => {
      throw new Error('no');
    };
    const { proxy, revoke } = Proxy.revocable({}, {});
    revoke();
    const plainValues = [null, undefined, 42, -0, NaN, 2 ** 53, 10n ** 20n, true, [1, [2, 'x']], {}];
    const own = [{ toString: () => 'mine' }, new Date(0).toJSON()];
    const odd = [Symbol('s'), Object.create(null), { toString: fails }, new Proxy({}, { get: fails }), proxy];
    return [...plainValues, ...own, ...odd].map(echoAutoreleased);
  });
  const numbers = ['42', '0', 'NaN', '9007199254740992', '100000000000000000000'];
  const others = ['true', '1,2,x', '[object Object]', 'mine', '1970-01-01T00:00:00.000Z'];
  assert.deepStrictEqual(results, [null, null, ...numbers, ...others, ...Array(5).fill(failed)]);
});

test('UTF-8 from outside is mended, never refused', async (t) => {
  const cases = ',41,c3a9,f09f9880,ff,41c3,e282,eda080,c080,410042,f4908080,80,c3a941ffe4bda0'.split(',');
  const decoder = new TextDecoder('utf-8', { ignoreBOM: true });
  const rows = cases.map((hex) => [hex, decoder.decode(Buffer.from(hex, 'hex'))]);
  await plain.table(t, rows, ({ fromUtf8 }, hex) => fromUtf8(Buffer.from(hex, 'hex')));
});

test('a document comes back with its contents, and the same text where there is one way to write it', async (t) => {
  const same = [
    '[]',
    '{}',
    '[null,true,false]',
    '[0,-0,-1,1.5,0.1,1e-07,1e+300,4.94065645841247e-324,1.7976931348623157e+308]',
    '[9007199254740993,-9007199254740993,2147483648,9223372036854775807,-9223372036854775808,18446744073709551615]',
    '["","a","Grüße","你好","😀","\\u0000","\\u001F","\\n\\r\\t\\b\\f\\"\\\\","/"]',
    '{"a":{"b":[{"c":[]}]}}',
    '['.repeat(512) + ']'.repeat(512),
  ];
  const rewritten = [
    [' [ 1 , 2 ] ', '[1,2]'],
    ['\t{\n"a"\r: 1}', '{"a":1}'],
    ['[1.0,100e0,-0.0]', '[1,100,-0]'],
    ['["\\u00e9\\ud83d\\ude00\\/"]', '["é😀/"]'],
    ['{"a":1,"a":2}', '{"a":2}'],
    ['[18446744073709551616,-9223372036854775809]', '[1.8446744073709552e+19,-9.223372036854776e+18]'],
    ['["123456789012345678901234567890 \\ud800"]', '["123456789012345678901234567890 \ufffd"]'],
    ['[1234567890123456789012]', '[1.2345678901234568e+21]'],
    ['["\\ude00\\ud83d x \\ud83d\\ude00"]', '["\ufffd\ufffd x 😀"]'],
  ];
  const written = [...same.map((text) => [text, text]), ...rewritten];
  await plain.table(t, written, ({ values }, text) => values.roundTrip(text));

  const numbered = Object.fromEntries(Array.from({ length: 20 }, (_, i) => [`k${i}`, i]));
  const unordered = ['{"":1,"a b":2,"ключ":3,"\\n":4}', '{"a":1,"b":2,"\\u0061":3}', JSON.stringify(numbered)];
  const rows = unordered.map((text) => [text, JSON.parse(text)]);
  await plain.table(t, rows, ({ values }, text) => JSON.parse(values.roundTrip(text)));
});

test('text that is not JSON, or has no container around it, is refused with an error', async (t) => {
  const short =
    '[ ] { [1,] {"a":1,} [1][2] [01] [1.] [.5] [+1] [-] [1e] [1e400] [0x1] [NaN] [Infinity] [nul] [True] ["a] ["\\x"] ' +
    '["\\u12"] ["\\u12g4"] {"a"} {"a":} {a:1} {1:2} [1,,2] [,1] 1 "text" null true [123456789012345678901234567890 ' +
    '["\\ud83d] [12345678901234567890123x] [-012345678901234567890123]';
  const spaced = '| |[1 2]|[1] x|[\'a\']|["\t"]|["\n"]|{"a":1 "b":2}|//x\n[]|[] //x|\u00a0[]|[\u2028]'.split('|');
  const deep = ['['.repeat(513) + ']'.repeat(513), `${'{"a":'.repeat(600)}1${'}'.repeat(600)}`];
  const texts = [...short.split(' '), ...spaced, ...deep, null];
  const errors = await plain(t, ({ values }, all) => all.map(values.roundTrip), texts);
  texts.forEach((text, i) => assert.match(errors[i], /^NSCocoaErrorDomain 3840 \S/, JSON.stringify(text)));
});

test('values that JSON cannot hold give nothing, with a log line', async (t) => {
  const names = ['date', 'data', 'key', 'nan', 'infinity', 'cycle', 'deep', 'text', 'no such object'];
  const write = ({ captureLog, log, values }, all) => {
    captureLog();
    return [all.filter((name) => values.writeUnfit(name) !== undefined), log(1)];
  };
  const [written, errors] = await plain(t, write, names);
  assert.deepStrictEqual([written, errors.length], [[], names.length]);
  for (const text of errors) assert.match(text, /^Couldn't convert [^]* to JSON because of [^]+/);
});

test('numbers that Foundation makes are written by their type', async (t) => {
  const text = await plain(t, ({ values }) => values.writeNumbers());
  assert.strictEqual(text, '[true,false,-1,255,1,-9223372036854775808,18446744073709551615,0.5,0.1]');
});
