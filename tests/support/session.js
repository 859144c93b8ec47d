'use strict';

// A virtual desktop that the tests of one file share.

const { before, after } = require('node:test');

const { startDisplaySession } = require('./display');

/** The environment that puts a child on the session's display; its home stays its own. */
const belonging = ['DISPLAY', 'DBUS_SESSION_BUS_ADDRESS', 'TMPDIR', 'TMP', 'TEMP', 'TESSARO_SESSION'];
const belongingToWayland = ['WAYLAND_DISPLAY', 'XDG_SESSION_TYPE', 'SEAT_DISPLAY'];

let session;

/**
 * The session for all tests of the file, which its first call describes. `env` of the result is there when they run.
 * @param {{wayland?: boolean}} [options] `wayland` for a compositor's session.
 */
function useSession(options = {}) {
  if (session !== undefined) return session;
  session = { env: {} };
  let started;
  before(async () => {
    started = await startDisplaySession(options);
    const names = options.wayland ? [...belonging, ...belongingToWayland] : belonging;
    for (const name of names) session.env[name] = started.env[name];
  });
  after(() => started?.end());
  return session;
}

module.exports = { useSession };
