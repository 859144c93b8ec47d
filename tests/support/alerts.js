'use strict';

// A process with the module in it that a test talks to, and the alerts that it has it deliver.

const { eventually, startScript } = require('./child');

const prelude = `
  const { module: m, notifications: n, ...p } = probe();
  const told = [];
  p.captureLog();
  n.record();
  m.setNotificationCallbackFunction((...args) => told.push(args));
  const log = (level) => { p.flushLog(); return p.capturedLog().filter(({ flag }) => flag === level).map(({ text }) => text); };
  const warnings = () => log(2), debugLines = () => log(8), infoLines = () => log(4);
  require('readline').createInterface({ input: process.stdin })
    .on('line', (line) => console.log(JSON.stringify([eval(JSON.parse(line)) ?? null])));
  console.log('["ready"]');`;

/** Source that delivers an alert; what is left out is null. */
function delivery(identifier, alert = {}) {
  const { title = identifier, subtitle, text, sound, reply, placeholder, action, actionTitle, at } = alert;
  const args = [identifier, title, subtitle, text, sound, reply, placeholder, action, actionTitle, at];
  return `m.deliverUserNotification(${args.map((arg) => JSON.stringify(arg ?? null)).join(', ')})`;
}

/** Starts the process. `run(source)` evaluates there, with \`m\` the module and \`told\` what its callback was given. */
async function startClient(test, options) {
  const child = startScript(test, prelude, options);
  const answers = () => child.output.stdout.split('\n').slice(0, -1);
  let asked = 1;
  const answer = async (number) => {
    await eventually(() => answers().length >= number || child.process.exitCode !== null, 'an answer');
    if (answers().length < number) throw new Error(`the process ended: ${child.output.stderr}`);
    return JSON.parse(answers()[number - 1])[0];
  };
  await answer(1);
  const run = (source) => {
    child.process.stdin.write(`${JSON.stringify(source)}\n`);
    return answer(++asked);
  };
  const until = (source, description) => eventually(() => run(source), description ?? source);
  return {
    ...child,
    run,
    until,
    deliver: (identifier, alert) => run(delivery(identifier, alert)),
    /** Waits until the callback has been told of as many ends, and gives them. */
    told: async (count) => {
      await until(`told.length >= ${count}`, `${count} alerts have ended`);
      return run('told');
    },
    async kill() {
      child.process.kill('SIGKILL');
      await child.ended;
    },
  };
}

module.exports = { startClient, delivery };
