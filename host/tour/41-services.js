'use strict';

const fs = require('fs');
const path = require('path');

const { node } = require('../addon');
const { ok, notOffered, failed } = require('./rows');

exports.title = 'Services';
exports.needs = ['display', 'module'];

const bundle = path.resolve(__dirname, '..', 'TessaroHost.app');

const isOwnSession = () =>
  process.env.TESSARO_SESSION !== undefined && process.env.HOME.startsWith(process.env.TESSARO_SESSION);

// In a session of our own the host is installed; on the user's desktop that is the user's affair.
async function install(stage) {
  if (!isOwnSession()) return false;
  const applications = path.join(process.env.HOME, 'GNUstep', 'Applications');
  fs.mkdirSync(applications, { recursive: true });
  fs.symlinkSync(bundle, path.join(applications, path.basename(bundle)));
  return (await stage.run('make_services')) !== undefined;
}

exports.run = async (stage) => {
  if (!(await install(stage))) return notOffered('Services', 'the host is not installed for GNUstep’s applications');
  const received = [];
  stage.module.setComposeOutgoingMessageCallbackFunction((text) => received.push(JSON.parse(text)));
  stage.module.setSearchServiceCallbackFunction((text) => received.push(text));
  const uses = {
    'Mail Selection': 'Dear Bob,\nlunch at one?',
    'Mail To': 'carla@example.org',
    'Search Selection': 'quarterly report',
  };
  const words = Object.entries(uses).flatMap(([service, text]) => [`TessaroHost/${service}`, text]);
  await stage.run(node, path.join(__dirname, 'otherApplication.js'), ...words);
  if (!(await stage.until(() => received.length === 3))) {
    return failed('Services', `of three only ${received.length} reached script`);
  }
  const [{ body }, { to }, searched] = received;
  return ok(
    'Services',
    `another application mails ${JSON.stringify(body)}, writes to ${to[0].email} and searches for “${searched}”`,
  );
};
