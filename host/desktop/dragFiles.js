'use strict';

// node host/desktop/dragFiles.js X Y PATH…   drops files on a point of the screen and prints the outcome.

const { loadAddon } = require('../addon');

const [x, y, ...paths] = process.argv.slice(2);
console.log(loadAddon().dragFiles(Number(x), Number(y), paths));
