'use strict';

const { spawn } = require('child_process');
const { once } = require('events');
const path = require('path');

const { node } = require('../addon');
const { ok, failed } = require('./rows');

exports.title = 'Crash';
exports.needs = ['module'];

/** Another process of the application, which crashes. Gives its number and the signal that ended it. */
async function crash() {
  const environment = { ...process.env };
  for (const name of ['DISPLAY', 'DBUS_SESSION_BUS_ADDRESS']) delete environment[name];
  const child = spawn(node, [path.join(__dirname, 'anotherProcess.js'), 'crash'], {
    env: environment,
    stdio: 'ignore',
  });
  const [, signal] = await once(child, 'exit');
  return { pid: child.pid, signal };
}

exports.run = async (stage) => {
  const { host, module } = stage;
  const { pid, signal } = await crash();
  const told = { events: [], breadcrumbs: [] };
  const listen = ({ name, userInfo }) => {
    if (name === 'TsSentryEventNotification') told.events.push(userInfo.event);
    if (name === 'TsSentryBreadcrumbNotification') told.breadcrumbs.push(userInfo);
  };
  host.on('notification', listen);
  module.setupCrashReporter();
  const exceptionOf = (event) => event.exception.values[0];
  const ofChild = (event) => exceptionOf(event).mechanism.data.process === pid;
  const event = await stage.until(() => told.events.find(ofChild));
  const breadcrumb = await stage.until(() => told.breadcrumbs[0]);
  host.off('notification', listen);
  if (!event) return failed('Crash', `process ${pid} ended with ${signal}, and nothing was told`);

  const { value, stacktrace } = exceptionOf(event);
  return [
    ok(
      'Crash',
      `${value} in process ${pid}, release ${event.release}: ${stacktrace.frames.length} frames, ${event.debug_meta.images.length} images`,
    ),
    breadcrumb
      ? ok('Breadcrumb', `${breadcrumb.level}: ${breadcrumb.message}`)
      : failed('Breadcrumb', 'a log message was none'),
  ];
};
