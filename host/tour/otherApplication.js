'use strict';

// Another GNUstep application: uses services, one after the other, and ends.
//
//   node host/tour/otherApplication.js SERVICE TEXT [SERVICE TEXT]…

const host = require('..');

host.start({ argv0: 'OtherApplication' });
const native = require('../..');
const words = process.argv.slice(2);
for (let i = 0; i < words.length; i += 2) native.performService(words[i], words[i + 1]);
process.exit();
