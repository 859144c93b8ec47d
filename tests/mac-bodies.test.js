'use strict';

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { evaluate, temporaryDirectory } = require('./support/child');

/** What the probe's function gives for each of the arguments. */
const results = (t, name, all) =>
  evaluate(
    t,
    `const { macBodies } = probe();
     const all = ${JSON.stringify(all)};
     console.log(JSON.stringify(all.map((each) => JSON.parse(macBodies.${name}(JSON.stringify(each))))));`,
  );

test('a path stays inside its quotes in the script for the Finder', async (t) => {
  const paths = ['/tmp/a.txt', '/tmp/"\\nquit "', 'a\\'];
  const scripts = await results(
    t,
    'informationWindowScript',
    paths.map((each) => [each]),
  );
  const quoted = ['"/tmp/a.txt"', '"/tmp/\\"\\\\nquit \\""', '"a\\\\"'];
  scripts.forEach(([script], i) => assert.ok(script.includes(`POSIX file ${quoted[i]}\n`), script));
});

test('modifiers have the values of Carbon', async (t) => {
  const held = [[], ['command'], ['shift'], ['option'], ['control'], ['command', 'shift']];
  assert.deepStrictEqual(await results(t, 'carbonModifiers', held), [[0], [256], [512], [2048], [4096], [768]]);
});

test('a copy of a picture gets a format that can be written, and a name that is free', async (t) => {
  const folder = temporaryDirectory(t);
  fs.writeFileSync(path.join(folder, 'cat.png'), '');
  const copies = [
    { source: '/a/cat.JPG', target: '/b/dog.gif', format: 'jpeg' },
    { source: '/a/cat.jpg', target: '/b/dog.bmp', format: 'jpeg' },
    { source: '/a/cat.heic', target: '/b/dog', format: '', photo: true },
    { source: '/a/cat.bmp', target: '/b/dog', format: '' },
    { source: '/a/cat.png', target: folder, format: 'png' },
    { source: '/a/cat.heic', target: folder, format: '', photo: true },
    { source: '/a/dog.JPEG', target: folder, format: 'jpeg' },
  ];
  assert.deepStrictEqual(await results(t, 'pictureTarget', copies), [
    ['/b/dog.gif', 'gif'],
    ['/b/dog.bmp', 'jpeg'],
    ['/b/dog', 'jpeg'],
    ['/b/dog', 'png'],
    [path.join(folder, 'cat 2.png'), 'png'],
    [path.join(folder, 'cat.jpg'), 'jpeg'],
    [path.join(folder, 'dog.JPEG'), 'jpeg'],
  ]);
});

test('a picture keeps its shape within the limits, and is never enlarged', async (t) => {
  const lengths = [
    [400, 200, 100, 0],
    [400, 200, 0, 100],
    [400, 200, 100, 100],
    [400, 200, 0, 0],
    [10, 10, 100, 100],
    [10000, 1, 100, 0],
  ];
  const sizes = [
    [100, 50],
    [200, 100],
    [100, 50],
    [400, 200],
    [10, 10],
    [100, 1],
  ];
  assert.deepStrictEqual(await results(t, 'sizeWithin', lengths), sizes);
});
