'use strict';

// The examples that the documentation promises to run: those that load the module themselves.

const { assert, fs, path, root, runScript, test } = require('./support');

const pages = fs.readdirSync(path.join(root, 'docs', 'api')).map((name) => path.join('docs', 'api', name));

const examples = (page) =>
  [...fs.readFileSync(path.join(root, page), 'utf8').matchAll(/^```js\n([^]*?)^```$/gm)]
    .map((match) => match[1])
    .filter((example) => example.includes("require('tessaro-native')"));

for (const page of ['README.md', ...pages]) {
  test(`the example of ${page} runs, and prints what it says`, async (t) => {
    const [example, ...more] = examples(page);
    assert.ok(example !== undefined && more.length === 0, 'a page has one example');
    const result = await runScript(t, example.replace("'tessaro-native'", JSON.stringify(root)));
    const promised = [...example.matchAll(/\/\/ → (.*)$/gm)].map((match) => `${match[1]}\n`).join('');
    assert.deepStrictEqual([result.code, result.stdout, result.stderr], [0, promised, '']);
  });
}
