'use strict';

const { spawn } = require('child_process');
const { once } = require('events');
const fs = require('fs');
const http = require('http');
const os = require('os');
const path = require('path');

const { node } = require('../addon');
const { feed, item, makeAppImage, makeBundle, makeKeys } = require('../../tests/support/updates');
const { ok, failed } = require('./rows');

exports.title = 'Updates';
exports.needs = ['module'];

const oldFile = makeAppImage('1');
const newFile = makeAppImage('2');
const forgedFile = makeAppImage('2', 'forged');

/** Serves a feed of version 2, whose file is what `state.file` says. */
async function serve(keys, state) {
  const server = http.createServer((question, answer) => {
    if (!question.url.startsWith('/appcast')) return answer.end(state.file);
    const signature = keys.sign(newFile);
    return answer.end(feed(item({ version: '2', url: `${state.url}/Tessaro.AppImage`, signature })));
  });
  server.listen(0, '127.0.0.1');
  await once(server, 'listening');
  state.url = `http://127.0.0.1:${server.address().port}`;
  return server;
}

/** Runs the application, in a version and with a home of its own, until `outcome` finds a result in its output. */
async function runVersion(stage, version, { directory, keys, state }, outcome) {
  const bundle = makeBundle(directory, { version, publicKey: keys.publicKey, feed: `${state.url}/appcast` });
  const environment = { ...process.env, HOME: directory, APPDIR: directory, TESSARO_NATIVE_LOG: 'stderr' };
  environment.APPIMAGE = path.join(directory, 'Tessaro.AppImage');
  for (const name of ['DISPLAY', 'DBUS_SESSION_BUS_ADDRESS', 'GNUSTEP_CONFIG_FILE', 'XDG_STATE_HOME']) {
    delete environment[name];
  }
  const child = spawn(node, [path.join(__dirname, 'anotherProcess.js'), 'update', bundle], {
    env: environment,
    stdio: 'pipe',
  });
  let said = '';
  for (const stream of [child.stdout, child.stderr]) stream.setEncoding('utf8').on('data', (text) => (said += text));
  const ended = once(child, 'exit');
  const result = await stage.until(() => outcome(said), 20000);
  child.stdin.end();
  await ended;
  return result;
}

const saying = (pattern) => (said) => said.match(pattern)?.[0].trim();

async function forged(stage, application, image) {
  application.state.file = forgedFile;
  const refusal = await runVersion(stage, '1', application, saying(/Update 2 is not installed: [^(]*/));
  const isKept = fs.readFileSync(image).equals(oldFile);
  return refusal && isKept ? ok('Forged update', refusal) : failed('Forged update', 'it was not refused');
}

async function signed(stage, application, image) {
  application.state.file = newFile;
  const installed = (said) => fs.readFileSync(image).equals(newFile) && saying(/Will install update 2\./)(said);
  const installs = await runVersion(stage, '1', application, installed);
  if (!installs) return failed('Signed update', 'it was not installed');
  const relaunch = await runVersion(stage, '2', application, saying(/TsApplicationDidRelaunchAfterUpdateNotification/));
  if (!relaunch) return failed('Signed update', 'the new version has not reported its first launch');
  return ok('Signed update', `"${installs}" – and its first start posts ${relaunch}`);
}

exports.run = async (stage) => {
  const directory = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-update-'));
  const application = { directory, keys: makeKeys(), state: {} };
  const server = await serve(application.keys, application.state);
  const image = path.join(directory, 'Tessaro.AppImage');
  fs.writeFileSync(image, oldFile, { mode: 0o755 });
  try {
    return [await forged(stage, application, image), await signed(stage, application, image)];
  } finally {
    server.close();
    fs.rmSync(directory, { recursive: true, force: true });
  }
};
