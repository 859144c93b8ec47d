'use strict';

// Requests beside those of Node.js and undici, to the same server in one run. Everybody ends with the whole body in
// hand, unless a row says otherwise.

const fs = require('fs');
const http = require('http');
const http2 = require('http2');
const https = require('https');
const undici = require('undici');

const { report, summary } = require('./support');
const { startWebServer } = require('./webServer');

const atOnce = 50;
const small = 1024;
const large = 256 * 1024 * 1024;
const rounds = { requests: 5, streams: 3 };

/** `get(url, chunk)` makes a request; `chunk`, where given, hears of each piece of the body, and nothing is kept. */
function peers(certificate) {
  // The module reads the variable when it makes its first request.
  process.env.SSL_CERT_FILE = certificate;
  const tessaro = require('..');
  const ca = fs.readFileSync(certificate);
  const agents = {
    http: new http.Agent({ keepAlive: true, maxSockets: atOnce }),
    https: new https.Agent({ keepAlive: true, maxSockets: atOnce, ca }),
  };
  const pool = (options) => new undici.Agent({ connections: atOnce, connect: { ca }, ...options });
  const [oneByOne, overHttp2] = [pool(), pool({ allowH2: true })];

  const module = (url, chunk) =>
    new Promise((resolve, reject) => {
      const request = tessaro.createRequest(url);
      if (chunk) request.on('data', chunk);
      request.on('end', ({ buffer }) => resolve(buffer));
      request.on('error', reject);
      request.start();
      running.add(request);
    });
  // The engine may collect a request that nobody holds.
  const running = new Set();
  setInterval(() => running.clear(), 100000).unref();

  const collect = (stream, chunk) =>
    new Promise((resolve, reject) => {
      const pieces = [];
      stream.on('data', chunk || ((piece) => pieces.push(piece)));
      stream.on('end', () => resolve(Buffer.concat(pieces)));
      stream.on('error', reject);
    });
  const node = (url, chunk) =>
    new Promise((resolve, reject) => {
      const [library, agent] = url.startsWith('https') ? [https, agents.https] : [http, agents.http];
      library.get(url, { agent }, (answer) => resolve(collect(answer, chunk))).on('error', reject);
    });
  const sessions = new Map();
  const nodeHttp2 = (url, chunk) => {
    const { origin, pathname } = new URL(url);
    if (!sessions.has(origin)) sessions.set(origin, http2.connect(origin, { ca }));
    return collect(sessions.get(origin).request({ ':path': pathname }), chunk);
  };
  const undiciRequest = (dispatcher) => async (url, chunk) => {
    const { body } = await undici.request(url, { dispatcher });
    return chunk ? collect(body, chunk) : body.arrayBuffer();
  };
  const fetchWith = (fetch, options) => async (url, chunk) => {
    const answer = await fetch(url, options);
    if (!chunk) return answer.arrayBuffer();
    for await (const piece of answer.body) chunk(piece);
    return undefined;
  };
  return {
    plain: {
      module,
      http: node,
      'undici.request': undiciRequest(oneByOne),
      'undici.fetch': fetchWith(undici.fetch, { dispatcher: oneByOne }),
      fetch: fetchWith(globalThis.fetch),
    },
    secure: {
      module,
      https: node,
      http2: nodeHttp2,
      'undici.request': undiciRequest(oneByOne),
      'undici.request, HTTP/2': undiciRequest(overHttp2),
      'undici.fetch': fetchWith(undici.fetch, { dispatcher: oneByOne }),
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

async function alternate(all, count, work) {
  const samples = Object.fromEntries(Object.keys(all).map((name) => [name, []]));
  for (let round = -1; round < count; ++round) {
    for (const [name, get] of Object.entries(all)) {
      globalThis.gc?.();
      const sample = await work(get);
      // The first round is for the engine to learn the code.
      if (round >= 0) samples[name].push(sample);
    }
  }
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

/** Megabytes a second of one large body, and the processor time of a megabyte. */
async function stream(get, url, chunk) {
  let received = 0;
  const cpu = process.cpuUsage();
  const start = process.hrtime.bigint();
  const body = await get(url, chunk && ((piece) => (received += piece.byteLength)));
  const seconds = Number(process.hrtime.bigint() - start) / 1e9;
  const { user, system } = process.cpuUsage(cpu);
  if ((chunk ? received : body.byteLength) !== large) throw new Error(`${received} bytes`);
  return { rate: large / 1e6 / seconds, processor: (user + system) / (large / 1e6) };
}

async function streams(title, all, url) {
  for (const [what, chunk] of [
    ['the whole body at the end', false],
    ['in pieces (the module keeps the whole body as well)', true],
  ]) {
    const rates = await alternate(all, rounds.streams, (get) => stream(get, url, chunk));
    report(
      `${title}, ${what}: rate`,
      rates((sample) => sample.rate),
      { unit: 'MB/s' },
    );
    report(
      `${title}, ${what}: processor time`,
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
    await streams('256 MB over HTTP/1.1', plain, `${server.plain}/large`);
    await streams('256 MB over TLS (the module: HTTP/2)', secure, `${server.secure}/large`);
    await close();
  } finally {
    server.stop();
  }
  // What idle connections are left would keep the process.
  return process.exit(0);
}

main();
