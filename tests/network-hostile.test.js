'use strict';

// Hostile servers and scripts: bodies that expand or end early, HTTP/2 protocol errors, injected requests.

const tls = require('tls');
const zlib = require('zlib');
const { assert, certificate, client, forThisHost, listen, outcome, request, serve, test } = require('./support');

const text = 'A text that is worth compressing. '.repeat(10000);
const gzip = zlib.gzipSync(text);

test('compressed bodies arrive decompressed, and are errors when they are incomplete', async (t) => {
  const [deflate, brotli] = [zlib.deflateSync(text), zlib.brotliCompressSync(text)];
  const good = ['end', text];
  const bad = ['error', -1015];
  const table = [
    ['gzip', gzip, good],
    ['GZip', gzip, good],
    ['identity, gzip', gzip, good],
    ['gzip', Buffer.concat([gzip, zlib.gzipSync('!')]), ['end', `${text}!`]],
    ['gzip', Buffer.concat([gzip, Buffer.from('garbage')]), good],
    ['gzip', Buffer.concat([gzip, Buffer.from('\x1fgarbage', 'latin1')]), good],
    ['deflate', deflate, good],
    ['deflate', zlib.deflateRawSync(text), good],
    ['deflate', Buffer.concat([deflate, Buffer.from('garbage')]), good],
    ['br', brotli, good],
    ['gzip', gzip.subarray(0, -1), bad],
    ['deflate', deflate.subarray(0, -1), bad],
    ['br', brotli.subarray(0, -1), bad],
    ['br', Buffer.alloc(100, 0xff), bad],
    ['unknown', gzip, bad],
  ];
  const url = await serve(t, (question, answer) => {
    const [coding, body] = table[Number(question.url.slice(1))];
    answer.setHeader('content-encoding', coding).end(body);
  });
  const calls = table.map((_row, i) => [`${url}/${i}`]);
  const answers = await request(t, calls);
  answers.forEach((events, i) => assert.deepStrictEqual(outcome(events), table[i][2], `${i}: ${table[i][0]}`));
});

test('a body that expands too much is an error, and neither stalls the loop nor fills the memory', async (t) => {
  const million = zlib.gzipSync(Buffer.alloc(1e6));
  const quick = { params: { [zlib.constants.BROTLI_PARAM_QUALITY]: 1 } };
  const bodies = {
    '/gzip': ['gzip', Buffer.concat(Array(1000).fill(million))],
    '/br': ['br', zlib.brotliCompressSync(Buffer.alloc(200e6), quick)],
    '/nested': ['gzip, gzip', zlib.gzipSync(zlib.gzipSync(Buffer.alloc(100e6)))],
    '/large': ['gzip', zlib.gzipSync(Buffer.alloc(60e6))],
  };
  const url = await serve(t, (question, answer) => {
    const [coding, body] = bodies[question.url];
    answer.setHeader('content-encoding', coding).end(body);
  });
  const scenario = async ({ native, peak }, addresses) => {
    let [last, longest] = [performance.now(), 0];
    setInterval(() => {
      const now = performance.now();
      [last, longest] = [now, Math.max(longest, now - last)];
    }, 1);
    const ends = [];
    const ask = (made) => (resolve) => {
      made.on('end', ({ buffer }) => resolve(buffer.byteLength));
      made.on('error', resolve);
      made.start();
    };
    for (const made of addresses.map((each) => native.createRequest(each))) ends.push(await new Promise(ask(made)));
    return [ends, longest, peak()];
  };
  const addresses = Object.keys(bodies).map((path) => url + path);
  const [ends, longest, peak] = await client(t, scenario, addresses);
  const [expands, tooMany] = ['The compressed body expands too much', 'The body has more than one content coding'];
  const reasons = ends.map((each) => each.match?.(/Code=-1015 .*Underlying.*=(.*)}/)[1] ?? each);
  assert.deepStrictEqual(reasons, [expands, expands, tooMany, 60e6]);
  assert.ok(longest < 500, `${longest} ms without a turn`);
  if (!process.env.TESSARO_SANITIZER_RUNTIME) assert.ok(peak < 500e6, `${peak} bytes`);
});

test('a body of more than a gibibyte is refused', async (t) => {
  assert.deepStrictEqual(await client(t, ({ takesBody }) => [2 ** 20, 2 ** 30 + 1].map(takesBody)), [true, false]);
});

// ---- HTTP/2

const frame = (type, flags, stream, payload) =>
  Buffer.concat([Buffer.from([0, 0, payload.length, type, flags, 0, 0, 0, stream]), payload]);
const [dataType, headersType, resetType, settingsType] = [0, 1, 3, 4];
const ok = frame(headersType, 4, 1, Buffer.from([0x88]));
// 0x0f 0x0d: the header "content-length" of the static table.
const okOf = (length) => frame(headersType, 4, 1, Buffer.from([0x88, 0x0f, 0x0d, 1, 0x30 + length]));
const body = frame(dataType, 0, 1, Buffer.from('abc'));
const reset = (code) => frame(resetType, 0, 1, Buffer.from([0, 0, 0, code]));

const withoutIsolation = process.env.TESSARO_SANITIZER_RUNTIME && 'the sanitizers use the HTTP/2 of Node.js';

test('an HTTP/2 body that the server does not end is an error', { skip: withoutIsolation }, async (t) => {
  const table = [
    ['ended, then reset', [ok, body, frame(dataType, 1, 1, Buffer.from('d')), reset(0)], ['end', 'abcd']],
    ['reset without an error', [ok, body, reset(0)], ['error', -1005]],
    ['as long as its length, then reset', [okOf(3), body, reset(0)], ['end', 'abc']],
    ['empty as its length, then reset', [okOf(0), reset(0)], ['end', '']],
    ['shorter than its length, then reset', [okOf(4), body, reset(0)], ['error', -1005]],
    ['reset with an error', [ok, body, reset(2)], ['error', -1005]],
    ['a data frame of no stream', [ok, body, frame(dataType, 0, 0, Buffer.from('x'))], ['error', -1005]],
    ['a frame of the wrong size', [ok, body, frame(resetType, 0, 1, Buffer.alloc(3))], ['error', -1005]],
    ['broken headers', [ok, body, frame(headersType, 4, 1, Buffer.alloc(6, 0xff))], ['error', -1005]],
    ['headers between', [frame(headersType, 0, 1, Buffer.from([0x88])), body], ['error', -1005]],
  ];
  const own = certificate(t, ...forThisHost);
  for (const [name, frames, expected] of table) {
    const server = tls.createServer({ ...own, ALPNProtocols: ['h2'] }, (socket) => {
      socket.write(frame(settingsType, 0, 0, Buffer.alloc(0)));
      let received = Buffer.alloc(0);
      socket
        .on('error', () => {})
        .on('data', function answer(bytes) {
          received = Buffer.concat([received, bytes]);
          // The preface, then the client's frames: the request is there when its headers are.
          for (let at = 24; at + 9 <= received.length; at += 9 + received.readUIntBE(at, 3)) {
            if (received[at + 3] !== headersType) continue;
            socket.off('data', answer).resume();
            // One packet: libcurl reads it in one go.
            socket.write(Buffer.concat(frames));
            return;
          }
        });
    });
    const url = await listen(t, server, 'https');
    const [events] = await request(t, [[url, { timeout: 5 }]], { env: { SSL_CERT_FILE: own.file } });
    assert.deepStrictEqual(outcome(events), expected, name);
  }
});

test('no header of a request can inject another request', async (t) => {
  const questions = [];
  const url = await serve(t, (question, answer) => {
    questions.push(`${question.method} ${question.url}`);
    question.on('data', () => {}).on('end', () => answer.end('ok'));
  });
  const headers = ['Content-Length', 'content-LENGTH', 'Transfer-Encoding'].flatMap((name) =>
    ['0', '50', 'chunked', 'identity'].map((value) => ({ [name]: value })),
  );
  const requests = headers.flatMap((each) => ['GET', 'POST', 'DELETE'].map((method) => [method, each]));
  const calls = requests.map(([method, each], i) => [`${url}/${i}`, { method, headers: each, timeout: 5 }]);
  const answers = await request(t, calls);
  answers.forEach((events, i) => assert.deepStrictEqual(outcome(events), ['end', 'ok'], JSON.stringify(requests[i])));
  const expected = requests.map(([method], i) => `${method} /${i}`);
  assert.deepStrictEqual(questions, expected);
});

test('redirects follow RFC 9110 for every method and status', async (t) => {
  const methods = ['GET', 'HEAD', 'POST', 'PUT', 'PATCH', 'DELETE', 'OPTIONS'];
  const statuses = [300, 301, 302, 303, 304, 305, 307, 308];
  const expected = (method, status) => {
    if ([300, 304, 305].includes(status)) return [`${method} /${status}`];
    const becomesGet = (status === 303 && method !== 'HEAD') || (status <= 302 && method === 'POST');
    return [`${method} /${status}`, `${becomesGet ? 'GET' : method} /target`];
  };
  const questions = [];
  const url = await serve(t, (question, answer) => {
    const length = question.headers['content-length'];
    const wantsLength = ['POST', 'PUT', 'PATCH'].includes(question.method);
    if (wantsLength !== (length === '0')) questions.push(`${question.method} of length ${length}`);
    questions.push(`${question.method} ${question.url}`);
    if (question.url === '/target') return answer.end();
    return answer.writeHead(Number(question.url.slice(1)), { location: '/target' }).end();
  });
  const table = methods.flatMap((method) => statuses.map((status) => [method, status]));
  const calls = table.map(([method, status]) => [`${url}/${status}`, { method }]);
  await request(t, calls);
  const all = table.flatMap((row) => expected(...row));
  assert.deepStrictEqual(questions, all);
  const unfollowed = statuses.map((status) => [`${url}/${status}`, { followRedirects: false }]);
  const countResponses = (events) => events.filter(([name]) => name === 'response').length;
  assert.deepStrictEqual((await request(t, unfollowed)).map(countResponses), [1, 2, 2, 2, 1, 1, 2, 2]);
});
