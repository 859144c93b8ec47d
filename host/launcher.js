'use strict';

// A Dock, for desktop sessions that have none: Plank, with the host's icon in it.

const { execFile, spawn } = require('child_process');
const fs = require('fs');
const path = require('path');
const { promisify } = require('util');

const execute = promisify(execFile);

const applicationId = 'org.tessaro.TessaroHost';

const desktopEntry = `[Desktop Entry]
Type=Application
Name=TessaroHost
Exec=true
Icon=mail-unread
StartupWMClass=TessaroHost
`;

class Launcher {
  #environment;
  #child;
  #ended;

  /**
   * Starts it on the display and the bus of `environment`, with its files in `directory`. It announces itself on the
   * bus as com.canonical.Unity a little later.
   */
  constructor(directory, { environment = process.env } = {}) {
    const entry = path.join(directory, 'data', 'applications', `${applicationId}.desktop`);
    const item = path.join(directory, 'config', 'plank', 'dock1', 'launchers', `${applicationId}.dockitem`);
    for (const file of [entry, item]) fs.mkdirSync(path.dirname(file), { recursive: true });
    fs.writeFileSync(entry, desktopEntry);
    fs.writeFileSync(item, `[PlankDockItemPreferences]\nLauncher=file://${entry}\n`);

    this.#environment = environment;
    const env = {
      ...environment,
      XDG_DATA_HOME: path.join(directory, 'data'),
      XDG_CONFIG_HOME: path.join(directory, 'config'),
      GSETTINGS_BACKEND: 'memory',
      NO_AT_BRIDGE: '1',
    };
    this.#child = spawn('plank', [], { env, stdio: 'ignore', detached: true });
    this.#ended = new Promise((resolve) => this.#child.on('exit', resolve));
    // Who forgets to end it can end nevertheless.
    this.#child.unref();
  }

  /** Why there can be none; undefined when there can. */
  static whyNot() {
    const isInstalled = (process.env.PATH || '').split(':').some((folder) => fs.existsSync(path.join(folder, 'plank')));
    return isInstalled ? undefined : 'Plank is not installed';
  }

  async stop() {
    process.kill(-this.#child.pid, 'SIGKILL');
    await this.#ended;
  }

  /** Opens the menu of the icon, which is in the middle of the Dock. */
  async openMenu() {
    const [dock] = await this.#windows();
    const lines = (await this.#xdotool('getwindowgeometry', '--shell', dock)).split('\n').map((line) => line.split('='));
    const { X, Y, WIDTH, HEIGHT } = Object.fromEntries(lines.map(([name, value]) => [name, Number(value)]));
    await this.#xdotool('mousemove', '--sync', X + (WIDTH >> 1), Y + HEIGHT - 30, 'sleep', '0.3', 'click', 3);
  }

  /** How many windows it shows: the Dock itself, and a menu. */
  async countWindows() {
    return (await this.#windows()).length;
  }

  async #windows() {
    return (await this.#xdotool('search', '--onlyvisible', '--class', 'plank')).split('\n').filter(Boolean);
  }

  press(...keys) {
    return this.#xdotool('key', ...keys);
  }

  #xdotool(...args) {
    return execute('xdotool', args.map(String), { env: this.#environment }).then(
      ({ stdout }) => stdout,
      () => '',
    );
  }
}

module.exports = Launcher;
