'use strict';

const http = require('http');
const http2 = require('http2');
const https = require('https');
const net = require('net');
const { assert, certificate, client, execFileSync, forThisHost, fs, listen, outcome, path } = require('./support');
const { request, temporaryDirectory, test, whole } = require('./support');

function expiredCertificate(test) {
  const made = certificate(test, ...forThisHost);
  const options = { cwd: path.dirname(made.file), stdio: 'ignore' };
  execFileSync('openssl', 'x509 -in cert.pem -signkey key.pem -days -1 -out cert.pem'.split(' '), options);
  return { ...made, cert: fs.readFileSync(made.file) };
}

// Node.js refuses streams of a session that holds more memory.
const generous = { maxSessionMemory: 1000 };

const answer = (question, response) => response.end(`HTTP/${question.httpVersion} ${question.url}`);

test('requests use HTTP/2 if the server offers it, and HTTP/1.1 otherwise', async (t) => {
  const own = certificate(t, ...forThisHost);
  const both = await listen(t, http2.createSecureServer({ ...own, allowHTTP1: true }, answer), 'https');
  const old = await listen(t, https.createServer(own, answer), 'https');
  const answers = await request(t, [[`${both}/a`], [`${old}/b`], [`${both}/c`]], { env: { SSL_CERT_FILE: own.file } });
  assert.deepStrictEqual(answers, [whole(200, 'HTTP/2.0 /a'), whole(200, 'HTTP/1.1 /b'), whole(200, 'HTTP/2.0 /c')]);
});

test('a failed TLS handshake or an invalid certificate is an error, and no request is sent', async (t) => {
  const good = certificate(t, ...forThisHost);
  const otherHost = certificate(t, '-addext', 'subjectAltName=DNS:other.invalid');
  const expired = expiredCertificate(t);
  let questions = 0;
  const secure = (own) => https.createServer(own, () => ++questions).on('tlsClientError', () => {});
  const rude = net.createServer((socket) => socket.once('data', () => socket.end()));
  for (const [name, server, trusted, code] of [
    ['unknown issuer', secure(good), undefined, /Code=-1202 /],
    ['other issuer', secure(good), otherHost.file, /Code=-1202 /],
    ['other host', secure(otherHost), otherHost.file, /Code=-1202 /],
    ['expired', secure(expired), expired.file, /Code=-1202 /],
    ['unreadable list', secure(good), '/nowhere.pem', /Code=-1200 /],
    ['plain HTTP', http.createServer(answer), undefined, /Code=(-1200|-1005) /],
    ['no handshake', rude, undefined, /Code=(-1200|-1005) /],
  ]) {
    const url = await listen(t, server, 'https');
    const [[, [event, text]]] = await request(t, [[url]], { env: trusted ? { SSL_CERT_FILE: trusted } : {} });
    assert.strictEqual(event, 'error', name);
    assert.match(text, code, name);
  }
  assert.strictEqual(questions, 0);
});

test('many requests share one HTTP/2 connection, and each gets its own answer', async (t) => {
  const own = certificate(t, ...forThisHost);
  const sessions = new Set();
  const server = http2.createSecureServer({ ...own, ...generous }, (question, response) => {
    sessions.add(question.stream.session);
    const size = Number(question.url.slice(1)) * 1000;
    // Node.js sometimes resets a stream instead of ending it: only its length shows that a body is whole.
    response.setHeader('content-length', size);
    response.end(Buffer.alloc(size, question.url));
  });
  const url = await listen(t, server, 'https');
  const calls = Array.from({ length: 300 }, (_, i) => [`${url}/${i}`]);
  // Only after the first answer is it known how many the server takes at once.
  (await request(t, calls, { env: { SSL_CERT_FILE: own.file }, isTogether: true })).forEach((events, i) => {
    const [name, , body] = events.at(-1);
    assert.ok(name === 'end' && body === String(Buffer.alloc(i * 1000, `/${i}`)), `${i}: ${name}`);
  });
  assert.strictEqual(sessions.size, 1);
});

test('a reset stream disturbs no other, and a lost connection ends every request on it', async (t) => {
  const own = certificate(t, ...forThisHost);
  const server = http2.createSecureServer({ ...own, ...generous });
  let connection;
  server.on('secureConnection', (socket) => (connection = socket));
  server.on('stream', (stream, headers) => {
    const path = headers[':path'];
    stream.on('error', () => {});
    const isWhole = path.startsWith('/whole');
    // Node.js may end the stream before it resets it: the length shows that the body is not whole.
    stream.respond({ ':status': 200, ...(!isWhole && { 'content-length': 6e6 }) });
    if (isWhole) return stream.end(Buffer.alloc(20e6, path));
    stream.write(Buffer.alloc(5e6));
    if (path === '/reset') setTimeout(() => stream.close(http2.constants.NGHTTP2_INTERNAL_ERROR), 50);
    if (path === '/lost') setTimeout(() => connection.destroy(), 50);
  });
  const url = await listen(t, server, 'https');
  const options = { env: { SSL_CERT_FILE: own.file }, isTogether: true };
  for (const others of ['/whole/1', '/begun']) {
    const paths = ['/whole/0', others === '/begun' ? '/lost' : '/reset', others, others];
    const calls = paths.map((path) => [url + path]);
    (await request(t, calls, options)).forEach((events, i) => {
      const [name, result] = outcome(events);
      const body = String(Buffer.alloc(20e6, paths[i]));
      assert.ok(paths[i].startsWith('/whole') ? result === body : result === -1005, `${paths[i]}: ${name}`);
    });
  }
});

const withoutIsolation =
  process.env.TESSARO_SANITIZER_RUNTIME && 'the sanitizers end a process that opens a library with symbols of its own';

test('libcurl and its libraries bind to nothing of Node.js', { skip: withoutIsolation }, async (t) => {
  const own = certificate(t, ...forThisHost);
  const server = http2.createSecureServer(own, (question, response) => {
    response.setHeader('content-encoding', 'gzip');
    response.end(require('zlib').gzipSync('compressed'));
  });
  const url = await listen(t, server, 'https');
  const bindings = path.join(temporaryDirectory(t), 'bindings');
  const env = { SSL_CERT_FILE: own.file, LD_DEBUG: 'bindings', LD_DEBUG_OUTPUT: bindings };
  const ask = async (fixture, address) => [(await fixture.request(address)).at(-1)[2], process.pid];
  const [body, pid] = await client.with({ env })(t, ask, url);
  assert.strictEqual(body, 'compressed');
  // "binding file A [0] to B [0]: normal symbol `name' [version]"
  const libraries =
    /binding file \S*\/(TessaroTransfers\.so|lib(?:curl|ssl|crypto|nghttp2|zstd)\.so)\S* .* to \S*node .* symbol `(\w+)'/g;
  const bound = [...fs.readFileSync(`${bindings}.${pid}`, 'utf8').matchAll(libraries)].map(([, , symbol]) => symbol);
  // Node.js also has the C library's streams, as every program, and is the one event loop.
  const unwanted = bound.filter((symbol) => !/^(uv_|std(in|out|err)$)/.test(symbol));
  assert.deepStrictEqual(unwanted, []);
});
