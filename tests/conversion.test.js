'use strict';

const { assert, test } = require('./support/node');
const { scenarios } = require('./support');

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
