'use strict';

const assert = require('assert');
const { test } = require('node:test');

const { evaluateRequests, request, serve, whole } = require('./support/requests');

test('a request gives its events in order, after the script that started it', async (t) => {
  const url = await serve(t, (question, answer) => answer.end(`${question.method} ${question.url}`));
  const [events] = await request(t, [[`${url}/a?b`]]);
  assert.deepStrictEqual(events, whole(200, 'GET /a?b'));
});

test('later chunks repeat the first bytes of the body; only the end has it all', async (t) => {
  const url = await serve(t, (_question, answer) => {
    answer.write('0123456789');
    setTimeout(() => answer.end('abcde'), 50);
  });
  const [events] = await request(t, [[url]]);
  assert.deepStrictEqual(events, [
    ['started'],
    ['response', true, 200],
    ['data', '0123456789'],
    ['data', '01234'],
    ['end', true, '0123456789abcde'],
  ]);
});

test('a redirect is followed, or reported with its target and then as the response', async (t) => {
  const url = await serve(t, (question, answer) => {
    if (question.url !== '/old/place') return answer.end(`at ${question.url}`);
    return answer.writeHead(302, { location: '../new?x#part' }).end('moved');
  });
  const [followed, refused] = await request(t, [
    [`${url}/old/place`],
    [`${url}/old/place`, { followRedirects: false }],
  ]);
  assert.deepStrictEqual(followed, whole(200, 'at /new?x'));
  const target = `${url}/new?x#part`;
  assert.deepStrictEqual(refused, [
    ['started'],
    ['response', true, 302, target],
    ['response', true, 302, target],
    ['data', 'moved'],
    ['end', true, 'moved'],
  ]);
});

test('options of the right type count, others do not', async (t) => {
  const url = await serve(t, (question, answer) => {
    const { host: _, 'user-agent': name, ...headers } = question.headers;
    answer.end(
      JSON.stringify([question.method, { ...headers, ...(name.startsWith('node libcurl/') ? {} : { name }) }]),
    );
  });
  const plain = { accept: '*/*', 'accept-encoding': 'gzip, deflate, br' };
  const cases = [
    [[url], ['GET', plain]],
    [
      [url, null],
      ['GET', plain],
    ],
    [
      [url, 'text'],
      ['GET', plain],
    ],
    [
      [url, { headers: 'X: y', method: 7, followRedirects: 'no', timeout: '1' }],
      ['GET', plain],
    ],
    [
      [url, { headers: { 'X-Text': 'Grüße', 'X-Empty': '', 'X-Number': 1, 2: 'index', Accept: 'text/plain' } }],
      ['GET', { ...plain, accept: 'text/plain', 'x-text': Buffer.from('Grüße').toString('latin1'), 'x-empty': '' }],
    ],
    [
      [url, { method: 'DELETE' }],
      ['DELETE', plain],
    ],
    [
      [url, { method: 'POST' }],
      ['POST', { ...plain, 'content-length': '0' }],
    ],
    [
      [url, { method: 'PUT', headers: { 'Content-Type': 'a/b' } }],
      ['PUT', { ...plain, 'content-type': 'a/b', 'content-length': '0' }],
    ],
    [[url], ['GET', plain]],
  ];
  const answers = await request(
    t,
    cases.map(([args]) => args),
  );
  answers.forEach((events, i) => {
    const [method, headers] = JSON.parse(events.at(-1)[2]);
    const { connection: _, ...sent } = headers;
    assert.deepStrictEqual([method, sent], cases[i][1], JSON.stringify(cases[i][0]));
  });
});

test('any status is a response; HEAD has no body; an empty body has no data', async (t) => {
  const url = await serve(t, (question, answer) => {
    answer.statusCode = Number(question.url.slice(1));
    if (answer.statusCode === 200) answer.setHeader('content-length', 10);
    answer.end(answer.statusCode === 404 ? 'not here' : '');
  });
  const answers = await request(t, [
    [`${url}/404`],
    [`${url}/500`],
    [`${url}/204`],
    [`${url}/304`],
    [`${url}/200`, { method: 'HEAD' }],
  ]);
  assert.deepStrictEqual(answers, [
    whole(404, 'not here'),
    whole(500, ''),
    whole(204, ''),
    whole(304, ''),
    whole(200, ''),
  ]);
});

test('"on" needs two arguments and an exact event name, at any time and with any listener', async (t) => {
  const url = await serve(t, (_question, answer) => answer.end('body'));
  const events = await evaluateRequests(
    t,
    `let kept;
     request(${JSON.stringify(url)}, {}, (made, note) => {
       kept = made;
       const twice = function (value) { 'use strict'; note('twice', this === null, arguments.length, value === made); };
       const results = [made.on('Response', note), made.on('end'), made.on('end', note, 1), made.on(), made.on('end ', note)];
       note('results', results.every((result) => result === undefined), made.start.length === 0 && made.on({ toString() { throw 1; } }, note) === undefined);
       made.on({ toString: () => 'response' }, twice);
       made.on('response', twice);
       made.on('data', () => made.on('data', note));
       made.on('end', () => made.on('end', () => note('late')));
       note('foreign', made.on.call({}, 'end', note) === undefined, made.start.call({}) === undefined);
     }).then((events) => {
       const before = events.length;
       kept.on('end', () => events.push('after the end'));
       kept.start();
       setTimeout(() => console.log(JSON.stringify([events, events.length - before])), 100);
     });`,
  );
  assert.deepStrictEqual(events, [
    [
      ['results', true, true],
      ['foreign', true, true],
      ['started'],
      ['response', true, 200],
      ['twice', true, 1, true],
      ['twice', true, 1, true],
      ['data', 'body'],
      ['end', true, 'body'],
    ],
    0,
  ]);
});
