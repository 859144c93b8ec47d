'use strict';

// The reference host's tour through a mail session.

const assert = require('assert');
const { spawn } = require('child_process');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { root } = require('./support/addon');
const { eventually, node, runScript, temporaryDirectory } = require('./support/child');
const { endWith } = require('./support/cleanup');

test('the tour passes', async (t) => {
  const screenshots = temporaryDirectory(t);
  const tour = [path.join(root, 'host', 'main.js'), '--screenshots', screenshots];
  const session = [path.join(root, 'scripts', 'display-session'), '--own-display'];
  const child = spawn(session[0], [session[1], node, ...tour], { stdio: ['ignore', 'pipe', 'inherit'] });
  let output = '';
  child.stdout.setEncoding('utf8').on('data', (text) => (output += text));
  endWith(t, child);
  await eventually(() => child.exitCode !== null, 'the end of the tour', 200000);
  assert.strictEqual(child.exitCode, 0, output);
  assert.match(output, /^Window +ok/m);
  assert.ok(fs.statSync(path.join(screenshots, '01-window.png')).size > 1000);
});

test('the tour without a display reports that and ends with code 1', async (t) => {
  const result = await runScript(t, `process.argv.push('--screenshots', process.env.HOME); require('./host/main.js');`);
  assert.strictEqual(result.code, 1, result.stderr);
  assert.match(result.stdout, /^Window and main menu +not offered here +no display/m);
  assert.match(result.stdout, /^Message bus +not offered here/m);
});
