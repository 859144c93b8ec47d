'use strict';

// What it costs to call the module, beside a minimal Node-API add-on.

const { open, probe } = require('../tests/support/addon');
const { measure, report } = require('./support');

const stub = open('CallStub');
const { get, getWithPool, echo, echoAutoreleased, module: tessaro } = probe();

report(
  'A function without arguments',
  measure(
    {
      'Node-API stub': () => stub.get(),
      'module: values only': () => get(),
      'module: with an autorelease pool': () => getWithPool(),
      'module: isDarkMode': () => tessaro.isDarkMode(),
      'module: getBundlePath': () => tessaro.getBundlePath(),
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
        'Node-API stub': () => stub.echo(flat),
        module: () => echo(flat),
        'module: autoreleased': () => echoAutoreleased(flat),
      },
      { calls: text.length > 1000 ? 500 : 50000 },
    ),
  );
}
