'use strict';

// The npm package in an empty project.

const { assert, execFileSync, fs, path, spawnSync, test } = require('./support');
const { buildDirectory, root, temporaryDirectory } = require('./support');

const skip = process.env.TESSARO_NODE !== undefined;
const name = `${process.platform}-${process.arch}-${process.versions.modules}`;

const fiveCalls = `
  const native = require('tessaro-native');
  native.setUserDefault('Key', 'value');
  const request = native.createRequest('http://127.0.0.1:1/');
  const keeper = setTimeout(() => {}, 20000);
  request.on('error', (text) => {
    clearTimeout(keeper);
    console.log(JSON.stringify([
      native.getUserDefault('Key'),
      Array.isArray(JSON.parse(native.getPreferredLanguages())),
      native.recipientsForGroupName('Choir'),
      native.isWebImagePath('no such file'),
      text.includes('Code=-1004'),
    ]));
  });
  request.start();`;

/** Packs what is built, and installs it into an empty project. @returns {string} The project's folder. */
function install(t) {
  const folder = temporaryDirectory(t);
  const [packed, project] = ['packed', 'project'].map((each) => path.join(folder, each));
  const run = (...command) =>
    execFileSync(command[0], command.slice(1), { cwd: root, encoding: 'utf8', stdio: 'pipe' });
  run('scripts/package', '--build', buildDirectory, '--to', packed);
  const [tarball] = fs.readdirSync(packed).filter((file) => file.endsWith('.tgz'));
  fs.mkdirSync(project);
  fs.writeFileSync(path.join(project, 'package.json'), '{ "private": true }');
  run('npm', 'install', '--prefix', project, '--offline', '--no-audit', '--no-fund', path.join(packed, tarball));
  const binaries = ['TessaroNative.node', 'TessaroPictures', 'TessaroRecorder', 'TessaroTransfers.so'];
  const symbols = fs.readdirSync(path.join(packed, 'debug', name)).sort();
  assert.deepStrictEqual(symbols, binaries.map((file) => `${file}.debug`)); // prettier-ignore
  return project;
}

test('the package installs into an empty project and works there', { skip }, (t) => {
  const project = install(t);
  const installed = path.join(project, 'node_modules', 'tessaro-native');
  const environment = { ...process.env, HOME: project, DISPLAY: '', DBUS_SESSION_BUS_ADDRESS: '' };
  delete environment.TESSARO_BUILD_DIR;
  const result = spawnSync(process.execPath, ['-e', fiveCalls], { cwd: project, env: environment, encoding: 'utf8' });
  assert.deepStrictEqual([result.stdout, result.stderr], ['["value",true,null,0,true]\n', '']);

  // The packed sources are all that a build reads.
  execFileSync('cmake', ['--preset', 'release', '-B', path.join(project, 'build')], { cwd: installed, stdio: 'pipe' });

  // No binary for this engine, and neither a compiler nor libraries.
  fs.rmSync(path.join(installed, 'prebuilds'), { recursive: true });
  const tools = path.join(project, 'tools');
  fs.mkdirSync(tools);
  fs.writeFileSync(path.join(tools, 'dpkg-query'), '#!/bin/sh\nexit 1\n', { mode: 0o755 });
  const { status, stderr } = spawnSync(process.execPath, ['scripts/install.js'], {
    cwd: installed,
    env: { ...environment, PATH: tools },
    encoding: 'utf8',
  });
  assert.strictEqual(status, 1);
  const reason = /^TessaroNative has no binary for \S+, and building it needs more packages: apt-get install .+\n$/;
  assert.match(stderr, reason);
});
