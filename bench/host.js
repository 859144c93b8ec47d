'use strict';

// The event loop under the module is the host's: so are its figures.

require('../host/bench');
