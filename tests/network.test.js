'use strict';

const { assert, client, request, serve, test, whole } = require('./support');

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
  const place = `${url}/old/place`;
  const [followed, refused] = await request(t, [[place], [place, { followRedirects: false }]]);
  assert.deepStrictEqual(followed, whole(200, 'at /new?x'));
  const reported = ['response', true, 302, `${url}/new?x#part`];
  assert.deepStrictEqual(refused, [['started'], reported, reported, ['data', 'moved'], ['end', true, 'moved']]);
});

test('options of the right type count, others do not', async (t) => {
  const url = await serve(t, (question, answer) => {
    const { host: _, connection: __, 'user-agent': name, ...headers } = question.headers;
    const sent = { ...headers, ...(name.startsWith('node libcurl/') ? {} : { name }) };
    answer.end(JSON.stringify([question.method, sent]));
  });
  const plain = { accept: '*/*', 'accept-encoding': 'gzip, deflate, br' };
  const headers = { 'X-Text': 'Grüße', 'X-Empty': '', 'X-Number': 1, 2: 'index', Accept: 'text/plain' };
  const bytes = Buffer.from('Grüße').toString('latin1');
  const cases = [
    [undefined, 'GET'],
    [null, 'GET'],
    ['text', 'GET'],
    [{ headers: 'X: y', method: 7, followRedirects: 'no', timeout: '1' }, 'GET'],
    [{ headers }, 'GET', { accept: 'text/plain', 'x-text': bytes, 'x-empty': '' }],
    [{ method: 'DELETE' }, 'DELETE'],
    [{ method: 'POST' }, 'POST', { 'content-length': '0' }],
    [{ method: 'PUT', headers: { 'Content-Type': 'a/b' } }, 'PUT', { 'content-type': 'a/b', 'content-length': '0' }],
  ];
  const calls = cases.map(([options]) => [url, options]);
  const answers = await request(t, calls);
  cases.forEach(([options, method, more], i) => {
    assert.deepStrictEqual(JSON.parse(answers[i].at(-1)[2]), [method, { ...plain, ...more }], JSON.stringify(options));
  });
});

test('any status is a response; HEAD has no body; an empty body has no data', async (t) => {
  const url = await serve(t, (question, answer) => {
    answer.statusCode = Number(question.url.slice(1));
    if (answer.statusCode === 200) answer.setHeader('content-length', 10);
    answer.end(answer.statusCode === 404 ? 'not here' : '');
  });
  const calls = [404, 500, 204, 304].map((status) => [`${url}/${status}`]);
  const answers = await request(t, [...calls, [`${url}/200`, { method: 'HEAD' }]]);
  assert.deepStrictEqual(answers, [whole(404, 'not here'), ...[500, 204, 304, 200].map((status) => whole(status, ''))]);
});

test('"on" needs two arguments and an exact event name, at any time and with any listener', async (t) => {
  const url = await serve(t, (_question, answer) => answer.end('body'));
  const scenario = async (fixture, address) => {
    let kept;
    const events = await fixture.request(address, {}, (made, note) => {
      kept = made;
      const twice = function (...args) {
        note('twice', this === null, args.length, args[0] === made);
      };
      const throwing = { toString: fixture.assert.fail };
      const wrong = [['Response', note], ['end'], ['end', note, 1], [], ['end ', note], [throwing, note]];
      const isUnused = wrong.every((args) => made.on(...args) === undefined);
      note('unused', isUnused);
      for (const name of [{ toString: () => 'response' }, 'response']) made.on(name, twice);
      made.on('data', () => made.on('data', note));
      made.on('end', () => made.on('end', () => note('late')));
      note('foreign', made.on.call({}, 'end', note), made.start.call({}), made.start.length);
    });
    kept.on('end', () => events.push('after the end'));
    kept.start();
    await new Promise((resolve) => setTimeout(resolve, 100));
    return events;
  };
  const events = await client(t, scenario, url);
  const twice = Array(2).fill(['twice', true, 1, true]);
  const [started, response, ...others] = whole(200, 'body');
  const expected = [['unused', true], ['foreign', null, null, 0], started, response, ...twice, ...others]; // prettier-ignore
  assert.deepStrictEqual(events, expected);
});
