'use strict';

// Requests beside those of Node.js and undici, to the same server in one run. Every contestant ends with the whole body
// in memory, unless a row says otherwise. Each large body is fetched by a process of its own: the next contestant would
// otherwise fill memory that the one before has left, and the first would pay for all.

const { spawnSync } = require('child_process');
const fs = require('fs');
const http = require('http');
const http2 = require('http2');
const https = require('https');
const undici = require('undici');

const { report, summary, takeTurns } = require('./support');
const { requesterOf, startWebServer } = require('./webServer');

const atOnce = 50;
const small = 1024;
const large = 256 * 1024 * 1024;
const rounds = { requests: 5, streams: 3 };

// A peer is a function `get(url, chunk, keeps)` that makes a request; `chunk` gets each piece of the body, which the peer
// keeps only if `keeps`.

function collect(stream, chunk, keeps = !chunk) {
  return new Promise((resolve, reject) => {
    const pieces = [];
    stream.on('data', (piece) => {
      chunk?.(piece);
      if (keeps) pieces.push(piece);
    });
    stream.on('end', () => resolve(Buffer.concat(pieces)));
    stream.on('error', reject);
  });
}

function ofNode(ca) {
  const agents = {
    http: new http.Agent({ keepAlive: true, maxSockets: atOnce }),
    https: new https.Agent({ keepAlive: true, maxSockets: atOnce, ca }),
  };
  return (url, chunk, keeps) =>
    new Promise((resolve, reject) => {
      const [library, agent] = url.startsWith('https') ? [https, agents.https] : [http, agents.http];
      library.get(url, { agent }, (answer) => resolve(collect(answer, chunk, keeps))).on('error', reject);
    });
}

const ofNodeHttp2 = (ca, sessions) => (url, chunk, keeps) => {
  const { origin, pathname } = new URL(url);
  if (!sessions.has(origin)) sessions.set(origin, http2.connect(origin, { ca }));
  return collect(sessions.get(origin).request({ ':path': pathname }), chunk, keeps);
};

const ofUndici = (dispatcher) => async (url, chunk, keeps) => {
  const { body } = await undici.request(url, { dispatcher });
  return chunk ? collect(body, chunk, keeps) : body.arrayBuffer();
};

const ofFetch = (fetch, options) => async (url, chunk, keeps) => {
  const answer = await fetch(url, options);
  if (!chunk) return answer.arrayBuffer();
  const pieces = [];
  for await (const piece of answer.body) {
    chunk(piece);
    if (keeps) pieces.push(piece);
  }
  return Buffer.concat(pieces);
};

function peers(certificate) {
  // The module reads the variable when it makes its first request.
  process.env.SSL_CERT_FILE = certificate;
  const ca = fs.readFileSync(certificate);
  const pool = (options) => new undici.Agent({ connections: atOnce, connect: { ca }, ...options });
  const [oneByOne, overHttp2] = [pool(), pool({ allowH2: true })];
  const sessions = new Map();
  const module = requesterOf(require('..'));
  const node = ofNode(ca);
  return {
    plain: {
      module,
      http: node,
      'undici.request': ofUndici(oneByOne),
      'undici.fetch': ofFetch(undici.fetch, { dispatcher: oneByOne }),
      fetch: ofFetch(globalThis.fetch),
    },
    secure: {
      module,
      https: node,
      http2: ofNodeHttp2(ca, sessions),
      'undici.request': ofUndici(oneByOne),
      'undici.request, HTTP/2': ofUndici(overHttp2),
      'undici.fetch': ofFetch(undici.fetch, { dispatcher: oneByOne }),
    },
    close: () => {
      for (const session of sessions.values()) session.close();
      return Promise.all([oneByOne, overHttp2].map((agent) => agent.close()));
    },
  };
}

/** Runs `count` requests, `parallel` at a time. Gives nanoseconds and processor microseconds a request. */
async function run(get, url, count, parallel) {
  let left = count;
  const work = async () => {
    while (left-- > 0) {
      const body = await get(url);
      if (body.byteLength !== small) throw new Error(`${body.byteLength} bytes`);
    }
  };
  const cpu = process.cpuUsage();
  const start = process.hrtime.bigint();
  await Promise.all(Array.from({ length: parallel }, work));
  const elapsed = Number(process.hrtime.bigint() - start);
  const { user, system } = process.cpuUsage(cpu);
  return { elapsed: elapsed / count, processor: (user + system) / count };
}

async function alternate(all, count, work, warm = 1) {
  const sample = (get) => {
    globalThis.gc?.();
    return work(get);
  };
  const samples = await takeTurns(all, { rounds: count, warm, sample });
  return (figure) =>
    Object.fromEntries(Object.entries(samples).map(([name, values]) => [name, summary(values.map(figure))]));
}

async function requests(title, all, url) {
  const parallel = await alternate(all, rounds.requests, (get) => run(get, url, 4000, atOnce));
  report(
    `${title}, ${atOnce} at once: requests a second`,
    parallel((sample) => 1e9 / sample.elapsed),
    { unit: '1/s' },
  );
  report(
    `${title}, ${atOnce} at once: processor time a request`,
    parallel((sample) => sample.processor),
    { unit: 'µs' },
  );
  const single = await alternate(all, rounds.requests, (get) => run(get, url, 1000, 1));
  report(
    `${title}, one at a time: latency`,
    single((sample) => sample.elapsed),
    { unit: 'µs', scale: 1000 },
  );
}

// Ways to receive a large body.
const modes = {
  whole: 'the whole body at the end',
  kept: 'in pieces, and kept',
  pieces: 'in pieces (peers keep nothing, the module keeps the body)',
};

/** Megabytes a second of one large body, and the processor time of a megabyte; in a process of its own. */
async function stream(get, url, mode) {
  let received = 0;
  await get(`${new URL(url).origin}/small`);
  const cpu = process.cpuUsage();
  const start = process.hrtime.bigint();
  const chunk = mode === 'whole' ? undefined : (piece) => (received += piece.byteLength);
  const body = await get(url, chunk, mode !== 'pieces');
  const seconds = Number(process.hrtime.bigint() - start) / 1e9;
  const { user, system } = process.cpuUsage(cpu);
  if ((mode === 'pieces' ? received : body.byteLength) !== large) throw new Error(`${received} bytes`);
  return { rate: large / 1e6 / seconds, processor: (user + system) / (large / 1e6) };
}

function streamInNewProcess(...args) {
  const { stdout, stderr } = spawnSync(process.execPath, [__filename, ...args], { encoding: 'utf8' });
  try {
    return JSON.parse(stdout);
  } catch {
    throw new Error(`${args}: ${stderr}`);
  }
}

async function streams(title, kind, names, url, certificate) {
  for (const [mode, description] of Object.entries(modes)) {
    const all = Object.fromEntries(
      names.map((name) => [name, () => streamInNewProcess('stream', kind, name, url, mode, certificate)]),
    );
    // Each process is new: nothing is warm in it.
    const rates = await alternate(all, rounds.streams, (get) => get(), 0);
    report(
      `${title}, ${description}: rate`,
      rates((sample) => sample.rate),
      { unit: 'MB/s' },
    );
    report(
      `${title}, ${description}: processor time`,
      rates((sample) => sample.processor),
      { unit: 'µs/MB' },
    );
  }
}

async function main() {
  const server = await startWebServer({ small, large });
  if (server === undefined) return console.log('\nRequests: not measured, there is no nginx');
  try {
    const { plain, secure, close } = peers(server.certificate);
    await requests('1 KB over HTTP/1.1', plain, `${server.plain}/small`);
    await requests('1 KB over TLS (the module: HTTP/2)', secure, `${server.secure}/small`);
    await close();
    const { certificate } = server;
    await streams('256 MB over HTTP/1.1', 'plain', Object.keys(plain), `${server.plain}/large`, certificate);
    await streams('256 MB over TLS', 'secure', Object.keys(secure), `${server.secure}/large`, certificate);
  } finally {
    server.stop();
  }
  // Idle connections would keep the process alive.
  return process.exit(0);
}

async function streamAndExit(kind, name, url, mode, certificate) {
  // A request of the module doesn't keep the process alive.
  setInterval(() => {}, 1000);
  const { [kind]: contestants } = peers(certificate);
  console.log(JSON.stringify(await stream(contestants[name], url, mode)));
  process.exit(0);
}

const [task, ...args] = process.argv.slice(2);
if (task === 'stream') streamAndExit(...args);
else main();
