'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');

const { ok, failed, notOffered } = require('./rows');

exports.title = 'Other applications';
exports.needs = ['module'];

const todoist = 'com.todoist.mac.Todoist';

/** A task manager that writes down the URL it is started with. Gives the files it has. */
function installTaskManager(folder, record) {
  const data = process.env.XDG_DATA_HOME || path.join(os.homedir(), '.local', 'share');
  const applications = path.join(data, 'applications');
  fs.mkdirSync(applications, { recursive: true });
  const program = path.join(folder, 'todoist');
  fs.writeFileSync(program, `#!/bin/sh\nprintf '%s' "$1" >"${record}.part" && mv "${record}.part" "${record}"\n`, {
    mode: 0o755,
  });
  const entry = path.join(applications, `${todoist}.desktop`);
  const types = 'x-scheme-handler/todoist;x-scheme-handler/mailto;';
  fs.writeFileSync(entry, `[Desktop Entry]\nType=Application\nName=Todoist\nExec=${program} %u\nMimeType=${types}\n`);
  return entry;
}

async function taskByURL(stage, record) {
  const { module } = stage;
  if (module.setDefaultApplicationForScheme('todoist', todoist) !== 1) return failed('Task manager', 'no handler set');
  module.clipPage('todoist', { title: 'Call "Bob" & $(Eve)', html: 'now', url: 'tessaro://1', 'web-url': 'https://w' });
  await stage.until(() => fs.existsSync(record));
  const url = fs.existsSync(record) ? new URL(fs.readFileSync(record, 'utf8')) : undefined;
  const content = url?.searchParams.get('content');
  return content?.startsWith('Call "Bob" & $(Eve) [Web](https://w)')
    ? ok('Page to a task manager', `${url.protocol}//${url.host} got “${content}”`)
    : failed('Page to a task manager', String(content));
}

// Only in a home of the session's own.
function mailHandler({ module }) {
  const before = module.defaultApplicationForScheme('mailto');
  const isSet = module.setDefaultApplicationForScheme('mailto', todoist) === 1;
  const during = module.defaultApplicationForScheme('mailto');
  if (before !== undefined) module.setDefaultApplicationForScheme('mailto', before);
  const detail = `${before ?? 'nobody'}, then ${during}, and back`;
  return isSet && during === todoist ? ok('Mail handler', detail) : failed('Mail handler', detail);
}

function viewers({ module, screenshots }) {
  const entries = JSON.parse(module.applicationsForFileExtension('txt', 32, path.join(screenshots, 'icons')));
  const names = entries.map(({ name }) => name).join(', ');
  return ok('Applications for an extension', `${entries.length} open .txt${names ? `: ${names}` : ''}`);
}

// Print dialogs would offer what stands in that folder.
function pdfEntry({ host, module }) {
  const folder = path.join(os.homedir(), 'Library', 'PDF Services');
  const entry = path.join(folder, 'Mail PDF with Tessaro');
  const target = fs.existsSync(entry) ? fs.realpathSync(entry) : undefined;
  module.uninstallPDFServices();
  const isGone = !fs.existsSync(folder);
  const detail = `“${path.basename(entry)}” leads to ${target && path.basename(target)}; taken away: ${isGone}`;
  return (isGone && target === fs.realpathSync(host.bundleInfo().path) ? ok : failed)('PDF Services', detail);
}

async function timeTracker(stage) {
  const { identifier } = stage.host.bundleInfo();
  stage.module.registerAppleEventForTimingApp(() => JSON.stringify(['Inbox – ann@example.org', 'tessaro://mail/1']));
  const question = ['--session', '--print-reply=literal', `--dest=${identifier}`, '/org/tessaro/Timing'];
  const ask = () => stage.run('dbus-send', ...question, 'org.tessaro.Timing.List');
  const answer = (await stage.until(ask)) || '';
  const detail = answer.replace(/\s+/g, ' ').trim();
  return (detail.includes('tessaro://mail/1') ? ok : failed)('Time tracker', `it receives ${detail || 'nothing'}`);
}

exports.run = async (stage) => {
  const rows = [viewers(stage), await timeTracker(stage)];
  if (!process.env.TESSARO_SESSION || !os.homedir().startsWith(process.env.TESSARO_SESSION)) {
    return [...rows, notOffered('Task manager, mail handler', 'the settings of this desktop are left alone')];
  }
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tour-'));
  const record = path.join(folder, 'url');
  const entry = installTaskManager(folder, record);
  try {
    await stage.until(() => stage.module.isApplicationInstalled(todoist));
    return [...rows, await taskByURL(stage, record), mailHandler(stage), pdfEntry(stage)];
  } finally {
    fs.rmSync(entry);
    fs.rmSync(folder, { recursive: true, force: true });
  }
};
