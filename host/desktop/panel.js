'use strict';

// A panel with a tray, for desktop sessions that have none.

const { execFile, spawn } = require('child_process');
const fs = require('fs');
const path = require('path');
const { promisify } = require('util');

const xfconfd = ['/usr/lib', '/usr/libexec', '/usr/lib/x86_64-linux-gnu', '/usr/lib/aarch64-linux-gnu']
  .map((directory) => path.join(directory, 'xfce4', 'xfconf', 'xfconfd'))
  .find((file) => fs.existsSync(file));

const property = (name, type, value) => `<property name="${name}" type="${type}" value="${value}"/>`;
const list = (name, type, values) =>
  `<property name="${name}" type="array">${values.map((value) => `<value type="${type}" value="${value}"/>`).join('')}</property>`;

// One panel along the lower edge with only the tray, whose items are all visible.
const panelConfiguration = (applicationName) => `<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  ${property('configver', 'int', 2)}
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      ${property('position', 'string', 'p=8;x=0;y=0')}
      ${property('length', 'uint', 100)}
      ${property('position-locked', 'bool', true)}
      ${property('size', 'uint', 32)}
      ${list('plugin-ids', 'int', [1])}
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray">
      ${property('square-icons', 'bool', true)}
      ${list('known-items', 'string', [applicationName])}
    </property>
  </property>
</channel>
`;

const themeConfiguration = `<?xml version="1.0" encoding="UTF-8"?>
<channel name="xsettings" version="1.0">
  <property name="Net" type="empty">${property('IconThemeName', 'string', 'Adwaita')}</property>
</channel>
`;

const isInstalled = (program) =>
  (process.env.PATH || '').split(':').some((directory) => fs.existsSync(path.join(directory, program)));

const execute = promisify(execFile);

const output = (environment, program, ...args) =>
  execute(program, args.map(String), { env: environment }).then(
    ({ stdout }) => stdout,
    () => '',
  );

// GTK's default theme: the margin of a menu, and the heights of its rows.
const margin = 4;
const rowHeight = 25;
const separatorHeight = 1;

/** A running panel, and mouse actions on the one item in its tray. */
class Panel {
  #environment;
  #children;
  #ended;

  /**
   * Starts a panel on the display and the bus of `environment`, with its files in `directory`. It announces itself on
   * the bus as org.kde.StatusNotifierWatcher a little later.
   */
  constructor(directory, { environment = process.env, applicationName = 'TessaroHost' } = {}) {
    this.#environment = environment;
    const channels = path.join(directory, 'xfce4', 'xfconf', 'xfce-perchannel-xml');
    fs.mkdirSync(channels, { recursive: true });
    fs.writeFileSync(path.join(channels, 'xfce4-panel.xml'), panelConfiguration(applicationName));
    fs.writeFileSync(path.join(channels, 'xsettings.xml'), themeConfiguration);

    const env = { ...environment, XDG_CONFIG_HOME: directory, GSETTINGS_BACKEND: 'memory', NO_AT_BRIDGE: '1' };
    this.#children = [
      [xfconfd, []],
      ['xfce4-panel', ['--disable-wm-check']],
    ].map(([program, args]) => spawn(program, args, { env, stdio: 'ignore', detached: true }));
    this.#ended = this.#children.map((child) => new Promise((resolve) => child.on('exit', resolve)));
    // The panel must not keep the calling process alive.
    for (const child of this.#children) child.unref();
  }

  /** Why no panel can be started; undefined when one can. */
  static whyNot() {
    return xfconfd && isInstalled('xfce4-panel') ? undefined : 'xfce4-panel is not installed';
  }

  async stop() {
    // The panel's plug-ins are processes of its group.
    for (const child of this.#children) process.kill(-child.pid, 'SIGKILL');
    await Promise.all(this.#ended);
  }

  /** The geometry of the item's icon, from xdotool; undefined when there is none. */
  async icon() {
    return (await this.#places()).find(({ HEIGHT }) => HEIGHT > 10 && HEIGHT < 60);
  }

  /** The geometry of the open menu. */
  async menu() {
    return (await this.#places()).find(({ HEIGHT }) => HEIGHT >= 60);
  }

  async clickIcon() {
    const { X, Y, WIDTH, HEIGHT } = await this.icon();
    await this.#click(X + (WIDTH >> 1), Y + (HEIGHT >> 1));
  }

  async closeMenu() {
    for (let attempt = 0; attempt < 20 && (await this.menu()); ++attempt) {
      await output(this.#environment, 'xdotool', 'key', 'Escape', 'sleep', '0.1');
    }
  }

  /** Clicks the row of the open menu below the rows `above`: for each, whether it is a separator. */
  async clickRow(above) {
    const { X, Y } = await this.menu();
    const top = above.reduce((sum, isSeparator) => sum + (isSeparator ? separatorHeight : rowHeight), margin);
    await this.#click(X + 60, Y + top + (rowHeight >> 1));
  }

  // A menu takes a click only from a pointer that has rested on it.
  #click(x, y) {
    return output(this.#environment, 'xdotool', 'mousemove', x, y, 'sleep', '0.1', 'click', '1');
  }

  /** The windows of the tray, which is a process of its own. */
  async #places() {
    const windows = await output(this.#environment, 'xdotool', 'search', '--onlyvisible', '--class', 'wrapper-2.0');
    return Promise.all(
      windows
        .split('\n')
        .filter(Boolean)
        .map((window) => this.#place(window)),
    );
  }

  async #place(window) {
    const lines = (await output(this.#environment, 'xdotool', 'getwindowgeometry', '--shell', window)).split('\n');
    return Object.fromEntries(lines.map((line) => line.split('=')).map(([name, value]) => [name, Number(value)]));
  }
}

module.exports = Panel;
