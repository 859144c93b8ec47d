'use strict';

// The tools of the tour's scenes: the host, its window, the module, screenshots, mouse and keyboard.

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
    /** Name of the current scene. */
    this.scene = undefined;
  }

  /** Why a scene with these needs can't be played; undefined when it can. */
  missing(needs = []) {
    if (needs.includes('display') && !this.display.display) return `no display: ${this.display.reason}`;
    return needs.includes('module') && this.module === undefined ? 'the module is not loaded' : undefined;
  }

  /** Runs a program while the application goes on. Returns its output; undefined when it is missing or fails. */
  async run(program, ...args) {
    try {
      return (await execute(program, args, { timeout: 30000 })).stdout;
    } catch {
      return undefined;
    }
  }

  /** The words by which xdotool clicks at a place of a window. The pauses are for GNUstep, which misses faster clicks. */
  clickIn(id, [x, y]) {
    const press = ['mousedown', 1, 'sleep', 0.1, 'mouseup', 1];
    return ['mousemove', '--window', id, x, y, 'sleep', 0.2, ...press, 'sleep', 0.2].map(String);
  }

  /** Waits until `condition` returns a true value, and returns that; false after the deadline. */
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
   * Takes a picture of the whole screen; scenes with several pictures name each. Returns the file's name; undefined
   * when it can't be taken.
   */
  async screenshot(detail) {
    const file = path.join(this.screenshots, `${[this.scene, detail].filter(Boolean).join('-')}.png`);
    return (await this.run('import', '-window', 'root', file)) === undefined ? undefined : path.basename(file);
  }

  /** Gives the window the keyboard focus, as a click on its title would. */
  async focusWindow() {
    const { systemWindow } = this.host.windowInfo(this.window);
    await this.run('xdotool', 'windowactivate', '--sync', String(systemWindow));
    return this.until(() => this.host.windowInfo(this.window).isKey);
  }
}

module.exports = Stage;
