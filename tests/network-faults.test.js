'use strict';

const net = require('net');
const { Readable } = require('stream');
const { assert, buildDirectory, client, codeOf, eventually, fs, listen, path, request, serve } = require('./support');
const { temporaryDirectory, test, whole } = require('./support');

const collecting = client.with({ nodeOptions: ['--expose-gc'] });

const ok = 'HTTP/1.1 200 OK\r\n';
const chunked = `${ok}Transfer-Encoding: chunked\r\n\r\n`;
const incomplete = `${ok}Content-Length: 100\r\n\r\nabc`;
const answersBefore = 'HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Hints\r\nLocation: /x\r\n\r\n';
const redirect = (target) =>
  `HTTP/1.1 302 Found\r\nLocation: ${target}\r\nConnection: close\r\nContent-Length: 0\r\n\r\n`;

/** Events in short: response codes, "data", "end" with its length, and errors by their number. */
const inShort = (events) =>
  events
    .slice(1)
    .map(([name, first, second]) => {
      if (name === 'response') return second;
      if (name === 'end') return `end ${second.length}`;
      return name === 'error' ? codeOf(first) : name;
    })
    .filter((each, i, all) => each !== 'data' || all[i - 1] !== 'data');

function endlessly(socket, piece) {
  const write = () => {
    while (!socket.destroyed && socket.write(piece));
  };
  socket.on('drain', write);
  write();
}

function slowly(socket, start, piece, milliseconds) {
  socket.write(start);
  const drip = setInterval(() => socket.write(piece), milliseconds);
  socket.on('close', () => clearInterval(drip));
}

// The server's bytes, or what it does to the socket; the events; for some, a part of the error's sentence.
const responses = {
  closedAtOnce: [(s) => s.destroy(), [-1005]],
  reset: [(s) => s.write(incomplete, () => setTimeout(() => s.resetAndDestroy(), 20)), [200, 'data', -1005]],
  tooShort: [incomplete, [200, 'data', -1005]],
  tooLong: [`${ok}Content-Length: 3\r\n\r\nabcdef`, [200, 'data', 'end 3']],
  untilTheEnd: ['HTTP/1.0 200 OK\r\n\r\nabcdef', [200, 'data', 'end 6']],
  negativeLength: [`${ok}Content-Length: -3\r\n\r\nabc`, [-1011]],
  halfOfTheHeaders: [`${ok}Content-Le`, [-1005]],
  headerTooLong: [`${ok}X: ${'x'.repeat(300000)}\r\n\r\n`, [-1011], 'bad response'],
  otherProtocol: ['SSH-2.0-Server\r\n', [-1011]],
  noChunk: [`${chunked}zz\r\nabc\r\n`, [200, -1005]],
  halfAChunk: [`${chunked}5\r\nabc`, [200, 'data', -1005]],
  headersBehind: [`${chunked}3\r\nabc\r\n0\r\nLocation: /x\r\n\r\n`, [200, 'data', 'end 3']],
  answersBefore: [`${answersBefore}${ok}Content-Length: 2\r\n\r\nok`, [200, 'data', 'end 2']],
  otherCourse: ['HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n\r\nabc', [101, 'data', 'end 3']],
  toItself: [redirect('/toItself'), [-1007]],
  toAFile: [redirect('file:///etc/passwd'), [-1002]],
  silent: [() => {}, [-1001]],
  silentBetween: [(s) => s.write(incomplete), [200, 'data', -1001]],
  slowHeaders: [(s) => slowly(s, ok, 'X', 20), [-1001]],
  slowBody: [(s) => slowly(s, `${ok}Content-Length: 7\r\n\r\n`, '.', 100), [200, 'data', 'end 7']],
  endlessHeaders: [(s) => endlessly(s, `X-Line: ${'x'.repeat(1000)}\r\n`), [-1011]],
};

test('every malformed or unfinished response ends with exactly one end or error', async (t) => {
  const answer = (socket, bytes) => {
    const [deed] = responses[bytes.toString().match(/ \/([^/ ]*)/)[1]];
    return typeof deed === 'string' ? socket.end(deed, 'latin1') : deed(socket);
  };
  const server = net.createServer((socket) => socket.once('data', (bytes) => answer(socket, bytes)));
  const url = await listen(t, server);
  const names = Object.keys(responses);
  // Only the rows about silence may end for time: a busy machine stops everything for longer than that.
  const isTimed = (name) => name === 'slowBody' || responses[name][1].includes(-1001);
  const calls = names.map((name) => [`${url}/${name}`, { timeout: isTimed(name) ? 0.4 : 30 }]);
  const answers = await request(t, calls);
  names.forEach((name, i) => {
    const [, expected, sentence = ''] = responses[name];
    assert.deepStrictEqual(inShort(answers[i]), expected, name);
    assert.ok(answers[i].at(-1)[1].toString().includes(sentence), `${name}: ${answers[i].at(-1)[1]}`);
  });
});

test('a request that cannot be sent is an error, and nothing is sent', async (t) => {
  let questions = 0;
  const url = await serve(t, (_question, answer) => {
    ++questions;
    answer.end();
  });
  const silent = await listen(t, net.createServer());
  const server = net.createServer();
  const closed = await listen(t, server);
  await new Promise((resolve) => server.close(resolve));
  const schemes = ['', 'nonsense', '//host/path', 'http:/host', 'file:///etc/passwd', 'ftp://127.0.0.1/x', 'data:,x'];
  const malformed = ['http://', 'http://[::1', 'http://127.0.0.1:99999/', ...[' b', '\r\nX: y', '\0'].map((end) => `${url}/a${end}`)]; // prettier-ignore
  const headers = [{ 'A: b\r\nC': 'd' }, { A: 'b\r\nC: d' }, { A: 'b\0' }];
  const methods = ['', 'GET / HTTP/1.1\r\nX: y\r\n\r\nGET'];
  const cases = [
    ...schemes.map((address) => [-1002, address]),
    ...malformed.map((address) => [-1000, address]),
    ...[...headers.map((each) => ({ headers: each })), ...methods.map((method) => ({ method }))].map((each) => [-1, url, each]), // prettier-ignore
    [-1004, closed],
    [-1003, 'http://nowhere.invalid/'],
    [-1001, silent, { timeout: 0.2 }],
  ];
  const calls = cases.map(([, ...args]) => args);
  const answers = await request(t, calls);
  cases.forEach(([code, ...args], i) => assert.deepStrictEqual(inShort(answers[i]), [code], JSON.stringify(args)));
  assert.strictEqual(questions, 0);
  const information =
    'NSErrorFailingURLStringKey=ftp://127.0.0.1/x, NSLocalizedDescription=unsupported URL, ' +
    'NSUnderlyingError=Unsupported protocol';
  const description = `Error Domain=NSURLErrorDomain Code=-1002 "unsupported URL" UserInfo={${information}}`;
  assert.strictEqual(answers.flat().find(([, text]) => text?.includes?.('ftp:'))[1], description);
});

test('without libcurl every request is an error that says so', async (t) => {
  const directory = temporaryDirectory(t);
  fs.copyFileSync(path.join(buildDirectory, 'TessaroNativeProbe.node'), `${directory}/TessaroNativeProbe.node`);
  const calls = Array(2).fill(['http://127.0.0.1/']);
  for (const events of await request(t, calls, { env: { TESSARO_BUILD_DIR: directory } })) {
    assert.deepStrictEqual(inShort(events), [-1]);
    assert.match(events[1][1], /TessaroTransfers\.so: cannot open shared object file/);
  }
});

test('an invalid timeout is replaced by the default', async (t) => {
  const url = await serve(t, (_question, answer) => setTimeout(() => answer.end('late'), 200));
  const calls = [0, -1, NaN, Infinity, 1e300].map((timeout) => [url, { timeout }]);
  for (const events of await request(t, calls)) assert.deepStrictEqual(events, whole(200, 'late'));
});

test('a thousand concurrent requests end, over at most 32 connections', async (t) => {
  const connections = new Set();
  const url = await serve(t, (question, answer) => {
    connections.add(question.socket);
    answer.end(question.url);
  });
  const paths = Array.from({ length: 1000 }, (_, i) => `/${i}`);
  const calls = paths.map((path) => [url + path]);
  const expected = paths.map((path) => whole(200, path));
  assert.deepStrictEqual(await request(t, calls, { isTogether: true }), expected);
  assert.ok(connections.size <= 32, `${connections.size} connections`);
});

test('starting again restarts the request, without further events of the earlier connection', async (t) => {
  let count = 0;
  const url = await serve(t, (_question, answer) => {
    answer.write(`answer ${++count}`);
    setTimeout(() => answer.end(), 50);
  });
  const scenario = async (fixture, address) => {
    const again = (made) => [made.start(), made.start()];
    let starts = 0;
    const events = await fixture.request(address, {}, (made) => made.on('data', () => ++starts === 1 && again(made)));
    // For events that come after the end.
    await new Promise((resolve) => setTimeout(resolve, 200));
    return events;
  };
  const events = await client(t, scenario, url);
  const [name, , body] = events.at(-1);
  assert.match(`${name} ${body}`, /^end answer [23]$/);
  const counts = ['response', 'end'].map((each) => events.filter(([event]) => event === each).length);
  assert.deepStrictEqual(counts, [2, 1]);
});

test('an exception in a listener is uncaught, and the other listeners run', async (t) => {
  const url = await serve(t, (_question, answer) => answer.end('body'));
  const scenario = async (fixture, address) => {
    const seen = [];
    process.on('uncaughtException', (error) => seen.push(error.message ?? error));
    const fail = (name) => {
      throw new Error(name);
    };
    const events = await fixture.request(address, {}, (made) => {
      for (const name of ['response', 'data', 'end']) made.on(name, () => fail(name));
      made.on('response', 'no function');
      made.on('end', () => Promise.resolve().then(() => seen.push('reaction')));
    });
    await fixture.eventually(() => seen.length === 5, 'the exceptions');
    return [events, seen];
  };
  assert.deepStrictEqual(await client(t, scenario, url), [
    whole(200, 'body'),
    ['response', 'object is not a function', 'data', 'end', 'reaction'],
  ]);
});

test('garbage collection cancels a running request, without an event', async (t) => {
  let closed = 0;
  const url = await serve(t, (question, answer) => {
    question.socket.on('close', () => ++closed);
    answer.write('begun');
  });
  const scenario = ({ native, print }, address) => {
    let begun = 0;
    let held = Array.from({ length: 20 }, (_, i) => native.createRequest(`${address}/${i}`));
    for (const made of held) {
      made.on('data', () => ++begun);
      for (const name of ['end', 'error']) made.on(name, () => print(name));
      made.start();
    }
    setInterval(() => {
      if (begun < 20) return;
      held = [];
      gc();
    }, 10);
  };
  const child = collecting.start(t, scenario, url);
  await eventually(() => closed === 20, 'the end of all connections');
  assert.deepStrictEqual(child.output, { stdout: '', stderr: '' });
});

test('garbage collection in any listener leaves the requests that are still referenced intact', async (t) => {
  const url = await serve(t, (question, answer) => answer.end('x'.repeat(Number(question.url.slice(1)))));
  const scenario = async ({ eventually, native }, address) => {
    const kept = new Set();
    const lengths = {};
    for (let round = 0; round < 50; ++round) {
      for (let i = 0; i < 10; ++i) {
        const made = native.createRequest(`${address}/${i * 20000}`);
        made.on('response', () => gc());
        if (i % 2 === 0) {
          kept.add(made);
          made.on('end', ({ buffer }) => {
            kept.delete(made);
            lengths[buffer.byteLength] = (lengths[buffer.byteLength] ?? 0) + 1;
          });
        }
        made.start();
        native.createRequest('http://127.0.0.1:1/').start();
        native.createRequest('never started').on('end', () => {});
      }
      gc();
      await new Promise((resolve) => setTimeout(resolve, round % 5));
    }
    await eventually(() => kept.size === 0, 'the end of every request');
    return lengths;
  };
  assert.deepStrictEqual(await collecting(t, scenario, url), { 0: 50, 40000: 50, 80000: 50, 120000: 50, 160000: 50 });
});

test('a running request does not keep the process alive, and the process exits cleanly', async (t) => {
  const url = await serve(t, (question, answer) => {
    if (question.url === '/silent') return;
    answer.write('x'.repeat(1e6));
  });
  const scenario = ({ native }, address, ending) => {
    const kept = ['/', '/silent', '/'].map((path) => native.createRequest(address + path));
    for (const made of kept) made.on('data', () => {}) ?? made.start();
    const exit = () => process.exit(0);
    const raise = () => {
      throw new Error('raised by a listener');
    };
    if (ending === 'process.exit()') setTimeout(exit, 100);
    if (!ending.endsWith('in a listener')) return;
    const raises = ending.startsWith('an exception');
    if (raises) process.on('uncaughtException', exit);
    kept[0].on('data', raises ? raise : exit);
    setInterval(() => {}, 1000);
  };
  for (const ending of ['by itself', 'process.exit()', 'process.exit() in a listener', 'an exception in a listener']) {
    const { code, signal, stderr } = await client.ends(t, scenario, url, ending);
    assert.deepStrictEqual([code, signal, stderr], [0, null, ''], ending);
  }
});

test('proxies come from the environment', async (t) => {
  const asked = [];
  const proxy = await serve(t, (question, answer) => {
    asked.push(question.url);
    answer.end('from the proxy');
  });
  const env = { http_proxy: proxy, no_proxy: 'other.invalid' };
  const [through, past] = await request(t, [['http://nowhere.invalid/x'], ['http://other.invalid/']], { env });
  assert.deepStrictEqual(through, whole(200, 'from the proxy'));
  assert.deepStrictEqual(inShort(past), [-1003]);
  assert.deepStrictEqual(asked, ['http://nowhere.invalid/x']);
});

test('no cookie is stored or sent', async (t) => {
  const cookies = [];
  const url = await serve(t, (question, answer) => {
    cookies.push(question.headers.cookie);
    answer.setHeader('set-cookie', 'a=b; path=/').end();
  });
  await request(t, [[url], [url], [url, { headers: { Cookie: 'own=1' } }]]);
  assert.deepStrictEqual(cookies, [undefined, undefined, 'own=1']);
});

test('busy script pauses the server, and memory stays at the size of the body', async (t) => {
  const [pieces, size] = [Array(300).fill(Buffer.alloc(1 << 20, 7)), 300 << 20];
  let socket;
  const url = await serve(t, (_question, answer) => {
    ({ socket } = answer);
    answer.setHeader('content-length', size);
    Readable.from(pieces).pipe(answer);
  });
  const scenario = ({ native, peak, print }, address) =>
    new Promise((resolve) => {
      const made = native.createRequest(address);
      // Keeps the request, and the process alive.
      setInterval(() => made, 1000);
      let [received, largest, inTurn, mostInTurn, busyAt] = [0, 0, 0, 0, 0];
      const endTurn = () => {
        mostInTurn = Math.max(mostInTurn, inTurn);
        inTurn = 0;
      };
      made.on('data', ({ byteLength }) => {
        received += byteLength;
        largest = Math.max(largest, byteLength);
        if (inTurn === 0) setImmediate(endTurn);
        inTurn += byteLength;
        if (received < busyAt) return;
        if (busyAt === 0) print('busy');
        for (const end = Date.now() + (busyAt === 0 ? 1000 : 200); Date.now() < end; );
        busyAt = received + 30e6;
      });
      made.on('end', ({ buffer }) => resolve([received, buffer.byteLength, largest, mostInTurn, peak()]));
      made.start();
    });
  const child = client.start(t, scenario, url);
  await new Promise((resolve) => child.process.stdout.once('data', resolve));
  await new Promise((resolve) => setTimeout(resolve, 500));
  const sentToBusy = socket.bytesWritten;
  const { code, stderr } = await child.ended;
  assert.strictEqual(code, 0, stderr);
  const [received, length, largest, mostInTurn, peak] = JSON.parse(child.output.stdout.split('\n')[1]);
  assert.deepStrictEqual([received, length], [size, size]);
  assert.ok(sentToBusy < 40e6, `${sentToBusy} bytes were sent to a busy process`);
  assert.ok(largest <= 1.1e6, `a chunk of ${largest} bytes`);
  assert.ok(mostInTurn <= 2.2e6, `${mostInTurn} bytes in one turn of the event loop`);
  // The sanitizers keep freed memory for a while.
  if (!process.env.TESSARO_SANITIZER_RUNTIME) assert.ok(peak < size + 200e6, `${peak} bytes at most, for ${size}`);
});
