'use strict';

// What the scenes of the tour work with: the host, its window, the module, and a person's means: eyes and hands.

const { execFile } = require('child_process');
const path = require('path');
const { promisify } = require('util');

const execute = promisify(execFile);

class Stage {
  /** @param {{host: object, display: {display: boolean, reason?: string}, screenshots: string}} options */
  constructor({ host, display, screenshots }) {
    this.host = host;
    this.display = display;
    this.screenshots = screenshots;
    /** Handle of the window, once a scene has opened it. */
    this.window = undefined;
    /** The native module, once a scene has loaded it. */
    this.module = undefined;
    /** Name of the scene that is on. */
    this.scene = undefined;
  }

  /** Why a scene that needs the named things can't be played, if so. */
  missing(needs = []) {
    if (needs.includes('display') && !this.display.display) return `no display: ${this.display.reason}`;
    return needs.includes('module') && this.module === undefined ? 'the module is not loaded' : undefined;
  }

  /** Runs a program while the application goes on. Gives its output, or undefined when it isn't there or fails. */
  async run(program, ...args) {
    try {
      return (await execute(program, args, { timeout: 10000 })).stdout;
    } catch {
      return undefined;
    }
  }

  /** Waits until `condition` gives something true, and gives that; false when it takes too long. */
  async until(condition, deadline = 5000) {
    for (const end = Date.now() + deadline; Date.now() < end; await new Promise((r) => setTimeout(r, 10))) {
      const value = await condition();
      if (value) return value;
    }
    return false;
  }

  /** Waits until the window shows more than its background. False also where ImageMagick is missing. */
  async windowIsDrawn() {
    const { systemWindow } = this.host.windowInfo(this.window);
    const countColours = () => this.run('import', '-window', String(systemWindow), '-format', '%k', 'info:');
    if ((await countColours()) === undefined) return false;
    return this.until(async () => Number(await countColours()) > 1);
  }

  /**
   * Takes a picture of the whole screen; scenes with several of them name each. Gives the file's name, or undefined
   * when it can't be taken.
   */
  async screenshot(detail) {
    const file = path.join(this.screenshots, `${[this.scene, detail].filter(Boolean).join('-')}.png`);
    return (await this.run('import', '-window', 'root', file)) === undefined ? undefined : path.basename(file);
  }

  /** Gives the window the keyboard, as a click on its title would. */
  async focusWindow() {
    const { systemWindow } = this.host.windowInfo(this.window);
    await this.run('xdotool', 'windowactivate', '--sync', String(systemWindow));
    return this.until(() => this.host.windowInfo(this.window).isKey);
  }
}

module.exports = Stage;
