'use strict';

// The host application for script: loads the add-on, and emits the application's events.
//
//   'notification'   {name, object, userInfo}: a notification of the module
//   'command'        {commandId, title}: a menu item was chosen
//   'page-key'       {characters, modifiers, isUsed}: the page has received a shortcut; unused ones come back to the menu
//   'window-closed'  the window's handle
//   'quit'           the user wants to quit; without a listener the process ends
//   'display-lost'   the display's server has gone; without a listener the process ends with code 1
//   'probe'          answers to probe(), for tests and benchmarks

const { execFile } = require('child_process');
const { EventEmitter } = require('events');
const path = require('path');
const { promisify } = require('util');

const { loadAddon, node } = require('./addon');

const execute = promisify(execFile);

const defaultActions = {
  quit: () => process.exit(),
  'display-lost': () => process.exit(1),
};

class Host extends EventEmitter {
  #addon = loadAddon();
  #display;

  /**
   * Makes this process an application. It must come before anything else loads Cocoa, the module included.
   * Without a display, functions that need windows throw; everything else works.
   * @returns {{display: boolean, reason?: string}}
   */
  start({ argv0 = 'TessaroHost', bundlePath = path.join(__dirname, 'TessaroHost.app') } = {}) {
    if (this.#display !== undefined) return this.#display;
    this.#addon.setEventHandler((name, payload) => this.#receive(name, payload));
    this.#display = this.#addon.start({ argv0, bundlePath });
    // No event may reach script while the process exits.
    process.on('exit', () => this.stop());
    return this.#display;
  }

  #receive(name, payload) {
    if (!this.emit(name, payload)) defaultActions[name]?.();
  }

  /** Leaves the event loop; no event is emitted afterwards. */
  stop() {
    this.#addon.stop();
  }

  /** Whether the application keeps the process from ending by itself. By default it doesn't. */
  setKeepAlive(keeps) {
    this.#addon.setKeepAlive(keeps);
  }

  /** Opens a browser window. @returns {Buffer} Its handle, as the module takes it. */
  createWindow({ title = 'TessaroHost', width = 800, height = 500 } = {}) {
    return this.#addon.createWindow({ title, width, height });
  }

  closeWindow(handle) {
    this.#addon.closeWindow(handle);
  }

  setWindowTitle(handle, title) {
    this.#addon.setWindowTitle(handle, title);
  }

  windowInfo(handle) {
    return this.#addon.windowInfo(handle);
  }

  /** The main menu as nested arrays of {title, key, modifiers, commandId, items}. */
  mainMenuDescription() {
    return this.#addon.mainMenuDescription();
  }

  /** The rows of a new Dock menu: {title, isOn, isEnabled}; empty objects are separators. */
  dockMenu() {
    return this.#addon.dockMenu();
  }

  /** Sets a user default of this application, or removes it where the value is null. */
  setDefault(name, value) {
    this.#addon.setDefault(name, value);
  }

  /** The latest key presses: {characters, keyCode, modifiers, arrival (ns), serverTime (ms)}. */
  keyArrivals() {
    return this.#addon.keyArrivals();
  }

  /** Posts on the process's default notification centre, as native code would. */
  postNotification(name, object = null, userInfo = null) {
    this.#addon.postNotification(name, object, userInfo);
  }

  /** Whether instances of an Objective-C class have a method. */
  hasMethod(className, selector) {
    return this.#addon.hasMethod(className, selector);
  }

  /** A text of the main bundle in the user's language. */
  localized(key) {
    return this.#addon.localized(key);
  }

  bundleInfo() {
    return this.#addon.bundleInfo();
  }

  /**
   * Drops files on the point of the screen, from a process of its own, as a file manager would.
   * @returns {Promise<string>} 'accepted', 'refused', 'no target', 'no answer' or 'no display'.
   */
  async dragFiles(x, y, paths) {
    const { stdout } = await execute(node, [path.join(__dirname, 'desktop', 'dragFiles.js'), x, y, ...paths]);
    return stdout.trim();
  }

  /** Figures of the event loop: {turns, events, descriptorWakes, timerWakes, nanoseconds}. */
  stats() {
    return this.#addon.stats();
  }

  /** See RunLoopProbe.h. */
  probe(name, argument) {
    this.#addon.probe(name, argument);
  }
}

module.exports = new Host();
