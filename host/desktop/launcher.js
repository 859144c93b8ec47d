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
StartupWMClass=GNUstep
`;

class Launcher {
  #environment;
  #child;
  #ended;

  /**
   * Starts it on the display and the bus of `environment`, with its files in `directory` and in the home.
   * It announces itself on the bus as com.canonical.Unity a little later.
   */
  constructor(directory, { environment = process.env } = {}) {
    // The service that matches windows with applications looks here too.
    const entry = path.join(environment.HOME, '.local', 'share', 'applications', `${applicationId}.desktop`);
    const item = path.join(directory, 'plank', 'dock1', 'launchers', `${applicationId}.dockitem`);
    for (const file of [entry, item]) fs.mkdirSync(path.dirname(file), { recursive: true });
    fs.writeFileSync(entry, desktopEntry);
    fs.writeFileSync(item, `[PlankDockItemPreferences]\nLauncher=file://${entry}\n`);

    this.#environment = environment;
    const env = { ...environment, XDG_CONFIG_HOME: directory, GSETTINGS_BACKEND: 'memory', NO_AT_BRIDGE: '1' };
    this.#child = spawn('plank', [], { env, stdio: 'ignore', detached: true });
    this.#ended = new Promise((resolve) => this.#child.on('exit', resolve));
    // The dock must not keep the calling process alive.
    this.#child.unref();
  }

  /** Why no Dock can be started; undefined when one can. */
  static whyNot() {
    const isInstalled = (process.env.PATH || '').split(':').some((folder) => fs.existsSync(path.join(folder, 'plank')));
    return isInstalled ? undefined : 'Plank is not installed';
  }

  async stop() {
    process.kill(-this.#child.pid, 'SIGKILL');
    await this.#ended;
  }

  /** Clicks to open the menu of the icon, which is in the middle of the Dock. */
  async openMenu() {
    // Plank may hide its window for a moment while it changes.
    const [place] = await this.#places();
    if (place === undefined) return;
    const { X, Y, WIDTH, HEIGHT } = place;
    await this.#xdotool('mousemove', X + (WIDTH >> 1), Y + HEIGHT - 30, 'sleep', '0.3', 'click', 3);
  }

  async isRunning() {
    return (await this.#places()).length > 0;
  }

  async isMenuOpen() {
    return (await this.#places()).length > 1;
  }

  /** The windows of the Dock and its menu, without its tool tips. */
  async #places() {
    const windows = (await this.#xdotool('search', '--onlyvisible', '--class', 'plank')).split('\n').filter(Boolean);
    const places = await Promise.all(windows.map((window) => this.#place(window)));
    return places.filter(({ HEIGHT }) => HEIGHT >= 60);
  }

  async #place(window) {
    const lines = (await this.#xdotool('getwindowgeometry', '--shell', window)).split('\n');
    return Object.fromEntries(lines.map((line) => line.split('=')).map(([name, value]) => [name, Number(value)]));
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
