'use strict';

const http = require('http');

const { ok, failed } = require('./rows');

exports.title = 'Network';
exports.needs = ['module'];

const feed = '<feed><title>Inbox of ann@example.org</title></feed>';

function answer(question, response) {
  if (question.url === '/feed') return response.end(feed);
  return response.writeHead(302, { location: '/feed' }).end();
}

/** The last event of a request, and the statuses before it. */
const ask = (module, url, options) =>
  new Promise((resolve) => {
    const statuses = [];
    const request = module.createRequest(url, options);
    request.on('response', ({ statusCode, location }) =>
      statuses.push(location ? `${statusCode} to ${location}` : statusCode),
    );
    request.on('end', ({ buffer }) => resolve({ request, statuses, body: Buffer.from(buffer).toString() }));
    request.on('error', (error) => resolve({ request, statuses, error }));
    request.start();
  });

function reachability(module) {
  const where = module.isNetworkReachable() ? 'there is a way to the internet' : 'there is no way to the internet';
  return ok('Reachability', `${where}; script will hear of changes`);
}

exports.run = async ({ module }) => {
  const server = http.createServer(answer).listen(0, '127.0.0.1');
  await new Promise((resolve) => server.once('listening', resolve));
  const url = `http://127.0.0.1:${server.address().port}`;
  const followed = await ask(module, `${url}/inbox`);
  const refused = await ask(module, `${url}/inbox`, { followRedirects: false });
  server.close();
  server.closeAllConnections?.();

  const isGood = followed.body === feed && refused.statuses[0] === `302 to ${url}/feed`;
  if (!isGood) return failed('Request', followed.error || refused.error || JSON.stringify([followed, refused]));
  return [
    ok('Request', `${followed.body.length} bytes of ${followed.statuses}; not followed: ${refused.statuses[0]}`),
    reachability(module),
  ];
};
