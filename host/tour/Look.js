'use strict';

// Changes the desktop's look in the tour's own session, as the settings daemon of an X session does.

const { spawn } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

class Look {
  constructor(stage) {
    this.stage = stage;
    this.folder = fs.mkdtempSync(path.join(os.tmpdir(), 'look-'));
    this.file = path.join(this.folder, 'settings');
  }

  /** Why the look can't be changed; undefined when it can. */
  static async missing(stage) {
    if (!process.env.TESSARO_SESSION) return 'the look of your desktop is left alone';
    return (await stage.run('which', 'xsettingsd')) === undefined ? 'xsettingsd is not installed' : undefined;
  }

  /** Light or dark, with so many pixels a point. False when the module does not notice. */
  async set({ isDark = false, scale = 1 }) {
    const theme = isDark ? 'Adwaita-dark' : 'Adwaita';
    fs.writeFileSync(this.file, `Net/ThemeName "${theme}"\nXft/DPI ${scale * 96 * 1024}\n`);
    if (this.daemon) this.daemon.kill('SIGHUP');
    else this.daemon = spawn('xsettingsd', ['-c', this.file], { stdio: 'ignore' });
    const isSet = await this.stage.until(() => this.stage.module.isDarkMode() === isDark, 20000);
    // The scale comes with the same message.
    await new Promise((resolve) => setTimeout(resolve, 300));
    return isSet;
  }

  end() {
    this.daemon?.kill();
    fs.rmSync(this.folder, { recursive: true });
  }
}

module.exports = Look;
