'use strict';

// Runs programs, and script in a Node process of its own, with a home of its own, and tells how it ended.

const { execFile, spawn } = require('child_process');
const path = require('path');
const { promisify } = require('util');

const { root } = require('./addon');
const { endWith, temporaryDirectory } = require('./cleanup');
const { eventually, paced } = require('./pace');
const { redirectGNUstep } = require('../../host/gnustepHome');

/** Runs a program to its end, and gives its output: { stdout, stderr }. */
const execute = promisify(execFile);

// Node.js, or the script that starts it for the sanitized add-ons.
const node = process.env.TESSARO_NODE || process.execPath;

const prelude = `
'use strict';
const { probe } = require(${JSON.stringify(path.join(__dirname, 'addon.js'))});
`;

function environmentFor(home, extra) {
  paced(1); // measures the machine, so that the process needn't
  const environment = { ...process.env, HOME: home, XDG_STATE_HOME: path.join(home, 'state'), ...extra };
  // The desktop of whoever runs the tests is none of their business.
  for (const name of ['DISPLAY', 'WAYLAND_DISPLAY', 'XDG_SESSION_TYPE', 'DBUS_SESSION_BUS_ADDRESS']) {
    if (extra[name] === undefined) delete environment[name];
  }
  return redirectGNUstep(home, environment);
}

/**
 * Starts a process that ends with the test. `source` is script, for which `probe()` loads the test add-on, or a function
 * that gives Node.js's arguments. Options: `env`, `nodeOptions`; `within`, a command before the process's own;
 * `executable` instead of Node.js; `home`, by default a new one.
 */
function startScript(test, source, options = {}) {
  const home = options.home || temporaryDirectory(test);
  // The sanitizers' script has to start whatever it is.
  const executable = process.env.TESSARO_NODE || options.executable || node;
  const script = typeof source === 'function' ? source(home) : ['-e', prelude + source];
  const [program, ...args] = [...(options.within || []), executable, ...(options.nodeOptions || []), ...script];
  const child = spawn(program, args, {
    cwd: root,
    env: environmentFor(home, { TESSARO_EXECUTABLE: options.executable, ...options.env }),
    stdio: 'pipe',
  });
  const output = { stdout: '', stderr: '' };
  for (const stream of ['stdout', 'stderr']) {
    child[stream].setEncoding('utf8').on('data', (text) => (output[stream] += text));
  }
  // A process that has ended early reads no more.
  child.stdin.on('error', () => {});
  // 'exit' rather than 'close': daemons that GNUstep starts keep the pipes open. A pipe is read to its end when a whole
  // turn of the event loop brings nothing.
  const ended = endWith(test, child).then(async ({ code, signal }) => {
    const length = () => output.stdout.length + output.stderr.length;
    for (let read = -1; read < length(); ) {
      read = length();
      for (let i = 0; i < 2; ++i) await new Promise(setImmediate);
    }
    return { code, signal, stderr: output.stderr };
  });
  return { process: child, home, output, ended };
}

/** Runs a process to its end. One more option: `deadline` in milliseconds. */
async function runScript(test, source, options = {}) {
  const child = startScript(test, source, options);
  child.process.stdin.end();
  const timer = setTimeout(() => child.process.kill('SIGKILL'), paced(options.deadline || 60000));
  const { code, signal, stderr } = await child.ended;
  clearTimeout(timer);
  return { code, signal, stdout: child.output.stdout, stderr, home: child.home };
}

/** Runs `source`, and gives its output, which is JSON. Fails when the process does not end well. */
async function evaluate(test, source, options) {
  const result = await runScript(test, source, options);
  if (result.code !== 0) throw new Error(`ended with ${result.code ?? result.signal}: ${result.stderr}`);
  return JSON.parse(result.stdout);
}

module.exports = { execute, node, temporaryDirectory, startScript, runScript, evaluate, eventually };
