'use strict';

// From a key press to the notification of its global shortcut, beside a shortcut in the application's own window, which
// AppKit brings. Another process presses the keys, on request.

const { spawn } = require('child_process');
const { once } = require('events');

const host = require('../host');
const { probe } = require('../tests/support/addon');
const { reportLatency, measure, report } = require('./support');

const { display } = host.start();
const { module: native, sendMessage } = probe();

const rounds = 200;
const key = 'F5';
const virtualKeyCode = 96;
const command = 0x100000;

// xdotool runs each line that it reads.
const hands = spawn('xdotool', ['-'], { stdio: ['pipe', 'ignore', 'inherit'] });
const order = (text) => hands.stdin.write(`${text}\n`);

const store = (name, modifiers) => {
  const shortcut = sendMessage('MASShortcut', 'shortcutWithKeyCode:modifierFlags:', virtualKeyCode, modifiers);
  const archive = sendMessage('NSKeyedArchiver', 'archivedDataWithRootObject:', shortcut);
  host.setDefault(name, Buffer.from(archive, 'base64'));
};

async function settled() {
  const window = host.createWindow({ title: 'Benchmark' });
  while (!host.windowInfo(window).isKey) await new Promise((resolve) => setTimeout(resolve, 10));
  await new Promise((resolve) => setTimeout(resolve, 500));
}

async function latency(event, isAwaited) {
  const start = process.hrtime.bigint();
  order(`keydown --delay 0 ${key}`);
  for (let payload; payload === undefined || !isAwaited(payload); ) [payload] = await once(host, event);
  const taken = Number(process.hrtime.bigint() - start) / 1e6;
  order(`keyup --delay 0 ${key}`);
  await new Promise((resolve) => setTimeout(resolve, 5));
  return taken;
}

async function main() {
  if (!display) return console.log('No display, so no keys.');
  host.setKeepAlive(true);
  await settled();
  native.bindGlobalShortcutWithDefaultsKey('bench');
  const samples = { 'in the window': [], global: [] };
  order('keydown super');
  for (let i = 0; i < rounds; ++i) {
    samples['in the window'].push(await latency('page-key', () => true));
  }
  order('keyup super');
  store('bench', 0);
  for (let i = 0; i < rounds; ++i) {
    samples.global.push(await latency('notification', ({ name }) => name === 'TsGlobalShortcutAction'));
  }
  reportLatency('From the press to script', samples);

  let turn = 0;
  report(
    'Other functions',
    measure(
      {
        'description of a stored shortcut': () => native.globalShortcutDescriptionForDefaultsKey('bench'),
        'another shortcut for a bound key': () => store('bench', ++turn % 2 ? command : 0),
      },
      { rounds: 11, calls: 20 },
    ),
    { unit: 'µs', scale: 1e3 },
  );
  hands.stdin.end();
  process.exit();
}

main();
