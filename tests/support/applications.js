'use strict';

// Applications of a home of its own: desktop entries whose programs write down what they were started with.

const fs = require('fs');
const path = require('path');
const { execFileSync } = require('child_process');

const { eventually, temporaryDirectory } = require('./child');

class Applications {
  constructor(test) {
    this.home = temporaryDirectory(test);
    this.data = path.join(this.home, 'share');
    this.config = path.join(this.home, 'config');
    this.folder = path.join(this.data, 'applications');
    this.programs = path.join(this.home, 'bin');
    for (const folder of [this.folder, this.config, this.programs]) fs.mkdirSync(folder, { recursive: true });
    /** For the process that is to know these applications and no others. */
    this.env = {
      XDG_DATA_HOME: this.data,
      XDG_DATA_DIRS: '/usr/share/none:/usr/share',
      XDG_CONFIG_HOME: this.config,
      XDG_CONFIG_DIRS: path.join(this.home, 'none'),
      XDG_CURRENT_DESKTOP: '',
      PATH: `${this.programs}:${process.env.PATH}`,
    };
  }

  /** Installs one; `lines` go into its desktop entry. Gives the entry's path. */
  add(identifier, { name = identifier, types = [], argument = '%u', lines = [] } = {}) {
    this.addProgram(identifier);
    const file = path.join(this.folder, `${identifier}.desktop`);
    const command = `${this.programs}/${identifier} ${argument}`;
    const start = `[Desktop Entry]\nType=Application\nName=${name}\nExec=${command}`;
    const mimeTypes = types.map((type) => `${type};`).join('');
    fs.writeFileSync(file, `${[start, `MimeType=${mimeTypes}`, ...lines].join('\n')}\n`);
    execFileSync('update-desktop-database', [this.folder], { stdio: 'ignore' });
    return file;
  }

  addProgram(name) {
    const record = this.recordOf(name);
    const script = `#!/bin/sh\nfor word; do printf '%s\\0' "$word"; done >"${record}.part"\nmv "${record}.part" "${record}"\n`;
    fs.writeFileSync(path.join(this.programs, name), script, { mode: 0o755 });
  }

  recordOf = (name) => path.join(this.home, `${name}.words`);

  /** Waits for the start of an application, and gives its arguments. */
  async wordsOf(name) {
    const record = this.recordOf(name);
    await eventually(() => fs.existsSync(record), `${name} is started`);
    const words = fs.readFileSync(record, 'utf8').split('\0').slice(0, -1);
    fs.rmSync(record);
    return words;
  }

  mimeApps(contents) {
    const file = path.join(this.config, 'mimeapps.list');
    if (contents !== undefined) fs.writeFileSync(file, contents);
    return fs.existsSync(file) ? fs.readFileSync(file, 'utf8') : null;
  }
}

module.exports = { Applications };
