'use strict';

// Desktop programs that a test starts are not ours to check.
delete process.env.LD_PRELOAD;
