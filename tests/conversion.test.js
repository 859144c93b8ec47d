'use strict';

const assert = require('assert');
const { test } = require('node:test');

const { evaluate } = require('./support/child');

const echoes = ['echo', 'echoAutoreleased', 'echoForeign'];

test('strings survive the way in and out', async (t) => {
  const failures = await evaluate(
    t,
    `const texts = {
       empty: '', ascii: 'hello', 'one character': 'a', latin1: 'Größe ÿ', 'embedded NUL': 'a\\0b\\0', 'only NUL': '\\0',
       bmp: '你好 – Привет', 'non-BMP': '😀𝄞 text 👩‍👩‍👧', combining: 'e\\u0301', 'right to left': 'שלום', 'byte order mark': '\\ufeffx',
       'last of the BMP': '\\uffff\\ufffe', 'boundary of Latin-1': '\\u00ff\\u0100',
       '255 ASCII': 'x'.repeat(255), '256 ASCII': 'x'.repeat(256), '257 wide': '你'.repeat(257),
       'concatenated': 'abc'.repeat(100) + '你' + 'def', 'sliced': ('padding ' + 'y'.repeat(40)).slice(8, 40),
       '1 MB ASCII': 'abcdefgh'.repeat(131072), '1 MB wide': '你好世界'.repeat(131072), '10 MB': 'é'.repeat(10485760),
     };
     const probes = probe();
     const failures = [];
     for (const echo of ${JSON.stringify(echoes)}) {
       for (const [name, text] of Object.entries(texts)) {
         // Foundation's own strings drop the mark while they are made, before we see them.
         if (echo === 'echoForeign' && name === 'byte order mark') continue;
         if (probes[echo](text) !== text) failures.push(echo + ': ' + name);
       }
     }
     console.log(JSON.stringify(failures));`,
  );
  assert.deepStrictEqual(failures, []);
});

test('lone surrogates become U+FFFD, as they would through UTF-8', async (t) => {
  const texts = ['\ud800', 'a\udc00b', '\udc00\ud800', '\ud83d\ude00\ud83d', 'x'.repeat(300) + '\udfff'];
  const results = await evaluate(
    t,
    `const { echo, echoAutoreleased, utf8 } = probe();
     const texts = JSON.parse(${JSON.stringify(JSON.stringify(texts))});
     console.log(JSON.stringify(texts.map((text) => [echo(text), echoAutoreleased(text), utf8(text).toString('hex')])));`,
  );
  texts.forEach((text, index) => {
    const throughUtf8 = Buffer.from(text, 'utf8');
    assert.deepStrictEqual(results[index], [
      throughUtf8.toString(),
      throughUtf8.toString(),
      throughUtf8.toString('hex'),
    ]);
  });
});

test('other values convert by their string form', async (t) => {
  const cases = [
    ['null', null],
    ['undefined', null],
    ['42', '42'],
    ['-0', '0'],
    ['NaN', 'NaN'],
    ['2 ** 53', '9007199254740992'],
    ['10n ** 20n', '100000000000000000000'],
    ['true', 'true'],
    ['[1, [2, "x"]]', '1,2,x'],
    ['({})', '[object Object]'],
    ['({ toString: () => "mine" })', 'mine'],
    ['new Date(0).toJSON()', '1970-01-01T00:00:00.000Z'],
    ['Symbol("s")', '<string conversion failed>'],
    ['Object.create(null)', '<string conversion failed>'],
    ['({ toString() { throw new Error("no"); } })', '<string conversion failed>'],
    ['new Proxy({}, { get() { throw new Error("no"); } })', '<string conversion failed>'],
    [
      '(() => { const { proxy, revoke } = Proxy.revocable({}, {}); revoke(); return proxy; })()',
      '<string conversion failed>',
    ],
  ];
  const results = await evaluate(
    t,
    `const { echoAutoreleased } = probe();
     console.log(JSON.stringify([${cases.map(([source]) => `echoAutoreleased(${source})`).join(',\n')}]));`,
  );
  cases.forEach(([source, expected], index) => assert.strictEqual(results[index], expected, source));
});

test('UTF-8 from outside is mended, never refused', async (t) => {
  const cases = [
    '',
    '41',
    'c3a9',
    'f09f9880',
    'ff',
    '41c3',
    'e282',
    'eda080',
    'c080',
    '410042',
    'f4908080',
    '80',
    'c3a941ffe4bda0',
  ];
  const results = await evaluate(
    t,
    `const { fromUtf8 } = probe();
     console.log(JSON.stringify(${JSON.stringify(cases)}.map((hex) => fromUtf8(Buffer.from(hex, 'hex')))));`,
  );
  cases.forEach((hex, index) =>
    assert.strictEqual(
      results[index],
      new TextDecoder('utf-8', { ignoreBOM: true }).decode(Buffer.from(hex, 'hex')),
      hex,
    ),
  );
});

test('object handles are 8 bytes and come back as the same object', async (t) => {
  const result = await evaluate(
    t,
    `const { handleOfBundle, describeHandle } = probe();
     const handle = handleOfBundle();
     console.log(JSON.stringify({
       isBuffer: Buffer.isBuffer(handle), length: handle.length, same: describeHandle(handle),
       copied: describeHandle(Buffer.from(handle)), other: describeHandle(Buffer.alloc(8)),
       notBuffers: [{}, 'text', 1, null, undefined, []].map((value) => describeHandle(value)),
     }));`,
  );
  assert.deepStrictEqual(result, {
    isBuffer: true,
    length: 8,
    same: 'main bundle',
    copied: 'main bundle',
    other: 'nil',
    notBuffers: Array(6).fill('nil'),
  });
});

test('bytes are copied', async (t) => {
  const result = await evaluate(
    t,
    `const { copyData } = probe();
     const bytes = Buffer.from(Array.from({ length: 256 }, (_, index) => index));
     const copy = copyData(bytes);
     bytes.fill(0);
     console.log(JSON.stringify([...copy, copyData(Buffer.alloc(0)).length]));`,
  );
  assert.deepStrictEqual(result, [...Array.from({ length: 256 }, (_, index) => index), 0]);
});
