'use strict';

// The reference host's tour through a mail session.

const sharp = require('sharp');
const { assert, fs, path, spawn, test } = require('./support');
const { endWith, eventually, node, root, runScript, temporaryDirectory } = require('./support');

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
  const looks = fs.readdirSync(screenshots).filter((name) => name.startsWith('80-look-'));
  assert.strictEqual(looks.length, 18);
  for (const name of looks) {
    const background = name.includes('-dark-') ? 0x2b : 0xfa;
    const pixels = await sharp(path.join(screenshots, name)).greyscale().raw().toBuffer();
    const share = pixels.filter((shade) => shade === background).length / pixels.length;
    assert.ok(share > 0.05, `${name}: ${share} of the window's colour`);
  }
});

test('the tour without a display reports that and ends with code 1', async (t) => {
  const result = await runScript(t, `process.argv.push('--screenshots', process.env.HOME); require('./host/main.js');`);
  assert.strictEqual(result.code, 1, result.stderr);
  assert.match(result.stdout, /^Window and main menu +not offered here +no display/m);
  assert.match(result.stdout, /^Message bus +not offered here/m);
});
