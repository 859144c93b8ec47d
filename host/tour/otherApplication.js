'use strict';

// Another GNUstep application: uses a service and ends.
//
//   node host/tour/otherApplication.js SERVICE TEXT

const host = require('..');

const [service, text] = process.argv.slice(2);
host.start({ argv0: 'OtherApplication' });
require('../..').performService(service, text);
process.exit();
