'use strict';

// A virtual desktop that the tests of one file share.

const { before, after } = require('node:test');

const { startDisplaySession } = require('./display');

/** What a child needs to be on the session's display; its home stays its own. */
const belonging = ['DISPLAY', 'DBUS_SESSION_BUS_ADDRESS', 'TMPDIR', 'TMP', 'TEMP', 'TESSARO_SESSION'];

let session;

/** The session for all tests of the file. `env` of the result is there when they run. */
function useSession() {
  if (session !== undefined) return session;
  session = { env: {} };
  let started;
  before(async () => {
    started = await startDisplaySession();
    for (const name of belonging) session.env[name] = started.env[name];
  });
  after(() => started?.end());
  return session;
}

module.exports = { useSession };
