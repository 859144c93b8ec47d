'use strict';

// Servers for requests, and requests made by a process of their own.

const http = require('http');

const { atEnd } = require('./cleanup');
const { scenarios } = require('./scenario');

/** Listens on a port of its own; the server and its connections end with the test. Gives the address. */
async function listen(test, server, scheme = 'http') {
  const sockets = new Set();
  // Both kinds of servers call it; one of TLS also has the sockets below.
  server.on('connection', (socket) => {
    sockets.add(socket);
    socket.on('error', () => {});
    socket.on('close', () => sockets.delete(socket));
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  atEnd(test, () => {
    server.close();
    for (const socket of sockets) socket.destroy();
  });
  return `${scheme}://127.0.0.1:${server.address().port}`;
}

/** An HTTP server that answers with `handler`. */
const serve = (test, handler) => listen(test, http.createServer(handler));

/** For scenarios: `request()` gives every event of a request, in order; `peak()` the most memory so far, in bytes. */
const requesting = ({ fs, native }) => ({
  peak: () => Number(fs.readFileSync('/proc/self/status', 'utf8').match(/VmHWM:\s+(\d+)/)[1]) * 1024,
  request(url, options, prepare = () => {}) {
    // A running request does not keep the process alive.
    const alive = setInterval(() => {}, 1000);
    return new Promise((resolve) => {
      const made = native.createRequest(url, ...(options === undefined ? [] : [options]));
      const events = [];
      const note = (...event) => events.push(event);
      // JSON has no undefined; a text without it is easier to compare.
      made.on('response', (r) => note('response', r === made, r.statusCode, ...('location' in r ? [r.location] : [])));
      made.on('data', (data) => note('data', data instanceof ArrayBuffer && Buffer.from(data).toString()));
      made.on('end', (r) => resolve(note('end', r === made, Buffer.from(r.buffer).toString()) && events));
      made.on('error', (text) => resolve(note('error', text) && events));
      prepare(made, note);
      made.start();
      note('started');
    }).finally(() => clearInterval(alive));
  },
});

const client = scenarios({ uses: ['requests'] });

/**
 * Makes the requests, [url, options] each, one after the other and gives the events of each. With `isTogether` the first
 * request is made alone, and the others all at once.
 */
function request(test, requests, { isTogether = false, ...options } = {}) {
  const ask = async (fixture, list, together) => {
    const all = [];
    for (const args of list) {
      all.push(fixture.request(...args));
      await all.at(together ? 0 : -1);
    }
    return Promise.all(all);
  };
  return client.with(options)(test, ask, requests, isTogether);
}

/** The events of a response whose body arrives in one piece. */
const whole = (status, body) => [
  ['started'],
  ['response', true, status],
  ...(body === '' ? [] : [['data', body]]),
  ['end', true, body],
];

/** The number in the description of an error. */
const codeOf = (description) => Number(description.match(/^Error Domain=NSURLErrorDomain Code=(-\d+) "/)?.[1]);

/** The last event: ["end", body], or ["error", number]. */
const outcome = (events) => {
  const [name, first, body] = events.at(-1);
  return [name, name === 'end' ? body : codeOf(first)];
};

module.exports = { client, requesting, listen, serve, request, codeOf, outcome, whole };
