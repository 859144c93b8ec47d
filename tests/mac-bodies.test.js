'use strict';

const { scenarios, test } = require('./support');

test('the bodies for macOS quote texts for AppleScript, use Carbon’s modifiers, and keep the shape of a picture', (t) => {
  const quoted = { '/tmp/a.txt': '"/tmp/a.txt"', '/tmp/"\\nquit "': '"/tmp/\\"\\\\nquit \\""', 'a\\': '"a\\\\"' };
  const modifiers = { '': 0, command: 256, shift: 512, option: 2048, control: 4096, 'command shift': 768 };
  const rows = [
    ...Object.entries(quoted).map(([text, result]) => ['appleScriptText', [text], result]),
    ...Object.entries(modifiers).map(([held, value]) => ['carbonModifiers', [held.split(' ')], value]),
    ['sizeWithin', [400, 200, 100, 0], [100, 50]],
    ['sizeWithin', [400, 200, 0, 100], [200, 100]],
    ['sizeWithin', [400, 200, 100, 100], [100, 50]],
    ['sizeWithin', [400, 200, 0, 0], [400, 200]],
    ['sizeWithin', [10, 10, 100, 100], [10, 10]],
    ['sizeWithin', [10000, 1, 100, 0], [100, 1]],
  ];
  return scenarios().table(t, rows, ({ macBodies }, name, args) => macBodies[name](...args));
});
