'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');

const { ok, notOffered, failed } = require('./rows');

exports.title = 'Sharing';
exports.needs = ['display', 'module'];

const identifier = 'org.example.Mailer';

const isOwnSession = () => process.env.TESSARO_SESSION && os.homedir().startsWith(process.env.TESSARO_SESSION);

/** A mail program that writes down what it is started with. Gives its desktop entry. */
function installMailer(folder, record) {
  const data = process.env.XDG_DATA_HOME || path.join(os.homedir(), '.local', 'share');
  fs.mkdirSync(path.join(data, 'applications'), { recursive: true });
  const program = path.join(folder, 'mailer');
  fs.writeFileSync(program, `#!/bin/sh\nprintf '%s' "$1" >"${record}.part" && mv "${record}.part" "${record}"\n`, {
    mode: 0o755,
  });
  const entry = path.join(data, 'applications', `${identifier}.desktop`);
  fs.writeFileSync(
    entry,
    `[Desktop Entry]\nType=Application\nName=Other Mail\nExec=${program} %u\nMimeType=x-scheme-handler/mailto;\n`,
  );
  return entry;
}

async function share(stage, file, record) {
  // Another process clicks: this one waits while the menu is open.
  const place = { x: 60, y: 60, width: 80, height: 24 };
  const { systemWindow, content } = stage.host.windowInfo(stage.window);
  const shown = await stage.run('xwininfo', '-id', String(systemWindow));
  const height = Number(shown?.match(/Height: (\d+)/)?.[1]);
  const down = height - content.height + place.y + place.height + 10;
  const picture = path.join(stage.screenshots, `${stage.scene}.png`);
  const person = stage.run(
    'sh',
    '-c',
    `sleep 1; import -window root '${picture}'; xdotool mousemove --window ${systemWindow} ${place.x + 30} ${Math.round(down)} sleep 0.3 mousedown 1 sleep 0.1 mouseup 1`,
  );
  stage.module.shareFiles(stage.window, JSON.stringify([file]), JSON.stringify(place));
  await person;
  await stage.until(() => fs.existsSync(record));
  const link = fs.existsSync(record) ? fs.readFileSync(record, 'utf8') : '';
  return link.includes(`attach=${file}`)
    ? ok('Sharing', `the mail program in the menu got ${link.replace(os.tmpdir(), '…')}; ${path.basename(picture)}`)
    : failed('Sharing', link || 'nobody was started');
}

exports.run = async (stage) => {
  if ((await stage.run('xdotool', 'version')) === undefined) return notOffered('Sharing', 'xdotool is not installed');
  if (!isOwnSession()) return notOffered('Sharing', 'the applications of this desktop are left alone');
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tour-'));
  const file = path.join(folder, 'Photo.xyz');
  const record = path.join(folder, 'started');
  fs.writeFileSync(file, '');
  const entry = installMailer(folder, record);
  try {
    await stage.run('update-desktop-database', path.dirname(entry));
    const isKnown = () => stage.module.applicationsForScheme('mailto', 16, '').includes(identifier);
    if (!(await stage.until(isKnown))) return notOffered('Sharing', 'update-desktop-database is not installed');
    await stage.focusWindow();
    return await share(stage, file, record);
  } finally {
    fs.rmSync(entry);
    fs.rmSync(folder, { recursive: true });
  }
};
