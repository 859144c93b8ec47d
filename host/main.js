'use strict';

// The tour: opens the host application, takes the module through its work and prints the results.
//
//   node host/main.js [--stay] [--screenshots DIRECTORY]
//
// --stay keeps the window open. Screenshots go to build/tour otherwise.

const { once } = require('events');
const fs = require('fs');
const path = require('path');
const { parseArgs } = require('util');

const host = require('.');
const Stage = require('./tour/Stage');
const { failed, notOffered, printTable } = require('./tour/rows');

const scenesDirectory = path.join(__dirname, 'tour');

const { values: options } = parseArgs({
  options: {
    stay: { type: 'boolean', default: false },
    screenshots: { type: 'string', default: path.resolve(__dirname, '..', 'build', 'tour') },
  },
});

// In the order of their file names: 01-window.js …
const sceneNames = () =>
  fs
    .readdirSync(scenesDirectory)
    .filter((name) => /^\d.*\.js$/.test(name))
    .sort()
    .map((name) => path.basename(name, '.js'));

async function play(stage, name) {
  const scene = require(path.join(scenesDirectory, name));
  const missing = stage.missing(scene.needs);
  if (missing !== undefined) return [notOffered(scene.title, missing)];
  stage.scene = name;
  try {
    return [await scene.run(stage)].flat();
  } catch (error) {
    return [failed(scene.title, error.message.split('\n')[0])];
  }
}

async function tour(stage) {
  const rows = [];
  for (const name of sceneNames()) rows.push(...(await play(stage, name)));
  return rows;
}

function prepareScreenshots(directory) {
  fs.mkdirSync(directory, { recursive: true });
  for (const name of fs.readdirSync(directory)) {
    if (name.endsWith('.png')) fs.rmSync(path.join(directory, name));
  }
}

async function main() {
  prepareScreenshots(options.screenshots);

  const display = host.start();
  host.setKeepAlive(true);
  const stage = new Stage({ host, display, screenshots: options.screenshots });
  const rows = await tour(stage);
  printTable(rows);

  if (!display.display) console.error(`\nNo window could be opened: ${display.reason}`);
  if (!display.display || rows.some(({ result }) => result === 'failed')) process.exitCode = 1;

  if (stage.window !== undefined && options.stay) {
    console.log('\nThe window stays open until you close it.');
    await once(host, 'window-closed');
  }
  host.setKeepAlive(false);
}

main();
