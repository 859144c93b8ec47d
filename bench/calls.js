'use strict';

// The cost of a call to the module, beside a minimal Node-API add-on.

const { open, probe } = require('../tests/support/addon');
const { measure, report } = require('./support');

const stub = open('CallStub');
const { get, getWithPool, echo, echoAutoreleased, module: tessaro } = probe();

// Each peer is called from code of its own, or the engine would optimise one call and not the other. Functions of the
// same text share their code: each has another name.
let callers = 0;
const caller = (native, ...args) =>
  new Function(
    'native',
    'args',
    `return function caller${++callers}() { return native(${args.map((_, i) => `args[${i}]`)}); }`,
  )(native, args);

report(
  'A function without arguments',
  measure(
    {
      'Node-API stub': caller(stub.get),
      'module: values only': caller(get),
      'module: with an autorelease pool': caller(getWithPool),
      'module: isDarkMode': caller(tessaro.isDarkMode),
      'module: getBundlePath': caller(tessaro.getBundlePath),
    },
    { calls: 100000 },
  ),
);

const texts = {
  '5 characters': 'hello',
  '23 characters': 'Person Number 12345 and',
  '200 characters': 'A subject line of a rather long message. '.repeat(5).slice(0, 200),
  '200 characters, not Latin-1': 'Ein längerer Betreff – 你好. '.repeat(8).slice(0, 200),
  '64 K characters': 'text '.repeat(13108),
};

for (const [name, text] of Object.entries(texts)) {
  // Flat, as texts of a real program mostly are when they are passed on.
  const flat = Buffer.from(text).toString();
  report(
    `A string in and out, ${name}`,
    measure(
      {
        'Node-API stub': caller(stub.echo, flat),
        module: caller(echo, flat),
        'module: autoreleased': caller(echoAutoreleased, flat),
      },
      { calls: text.length > 1000 ? 500 : 50000 },
    ),
  );
}
