'use strict';

// node host/dragFiles.js X Y PATH…   drops files on a point of the screen and prints what became of it.

const { loadAddon } = require('./addon');

const [x, y, ...paths] = process.argv.slice(2);
console.log(loadAddon().dragFiles(Number(x), Number(y), paths));
