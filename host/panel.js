'use strict';

// A panel with a tray, for desktop sessions that have none.

const { spawn } = require('child_process');
const fs = require('fs');
const path = require('path');

const xfconfd = ['/usr/lib', '/usr/libexec', '/usr/lib/x86_64-linux-gnu', '/usr/lib/aarch64-linux-gnu']
  .map((directory) => path.join(directory, 'xfce4', 'xfconf', 'xfconfd'))
  .find((file) => fs.existsSync(file));

const property = (name, type, value) => `<property name="${name}" type="${type}" value="${value}"/>`;
const list = (name, type, values) =>
  `<property name="${name}" type="array">${values.map((value) => `<value type="${type}" value="${value}"/>`).join('')}</property>`;

// One panel along the lower edge, with nothing but the tray in it, whose items are all on show.
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

/** Why there can be no panel here; undefined when there can. */
function whyNoPanel() {
  return xfconfd && isInstalled('xfce4-panel') ? undefined : 'xfce4-panel is not installed';
}

/**
 * Starts a panel on the display and the bus of `environment`, with its files in `directory`. It announces itself on the
 * bus as org.kde.StatusNotifierWatcher a little later.
 * @returns {() => Promise<void>} Ends it.
 */
function startPanel(directory, { environment = process.env, applicationName = 'TessaroHost' } = {}) {
  const channels = path.join(directory, 'xfce4', 'xfconf', 'xfce-perchannel-xml');
  fs.mkdirSync(channels, { recursive: true });
  fs.writeFileSync(path.join(channels, 'xfce4-panel.xml'), panelConfiguration(applicationName));
  fs.writeFileSync(path.join(channels, 'xsettings.xml'), themeConfiguration);

  const env = { ...environment, XDG_CONFIG_HOME: directory, GSETTINGS_BACKEND: 'memory', NO_AT_BRIDGE: '1' };
  const children = [
    [xfconfd, []],
    ['xfce4-panel', ['--disable-wm-check']],
  ].map(([program, args]) => spawn(program, args, { env, stdio: 'ignore', detached: true }));
  const ended = children.map((child) => new Promise((resolve) => child.on('exit', resolve)));
  return async () => {
    // The panel's plug-ins are processes of its group.
    for (const child of children) process.kill(-child.pid, 'SIGKILL');
    await Promise.all(ended);
  };
}

module.exports = { startPanel, whyNoPanel };
