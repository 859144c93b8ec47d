'use strict';

// node host/receiveDrop.js TITLE X Y accept|refuse TYPE…
//
// Another program's window, onto which something can be dropped. Prints what was: the types that were offered, and the
// contents of those named, byte by byte as Latin-1.

const { loadAddon } = require('./addon');

const [title, x, y, answer, ...types] = process.argv.slice(2);
const options = { title, x: Number(x), y: Number(y), isWilling: answer === 'accept', types };
console.log(JSON.stringify(loadAddon().receiveDrop(options) ?? null));
