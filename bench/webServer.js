'use strict';

// A web server in a process of its own, with the same files over HTTP/1.1 and over TLS with HTTP/2, and requests to it.

const { execFileSync, spawn } = require('child_process');
const fs = require('fs');
const http = require('http');
const net = require('net');
const os = require('os');
const path = require('path');

const configuration = ({ directory, plain, secure }) => `
daemon off;
${process.getuid() === 0 ? 'user root;' : ''}
worker_processes 1;
pid ${directory}/pid;
error_log ${directory}/error.log;
events { worker_connections 1024; }
http {
  access_log off;
  sendfile on;
  keepalive_requests 100000000;
  client_body_temp_path ${directory}/body;
  proxy_temp_path ${directory}/proxy;
  fastcgi_temp_path ${directory}/fastcgi;
  uwsgi_temp_path ${directory}/uwsgi;
  scgi_temp_path ${directory}/scgi;
  server {
    listen 127.0.0.1:${plain};
    listen 127.0.0.1:${secure} ssl http2;
    ssl_certificate ${directory}/cert.pem;
    ssl_certificate_key ${directory}/key.pem;
    root ${directory}/files;
  }
}`;

async function freePort() {
  const server = net.createServer().listen(0, '127.0.0.1');
  await new Promise((resolve) => server.once('listening', resolve));
  const { port } = server.address();
  await new Promise((resolve) => server.close(resolve));
  return port;
}

const answers = (port) =>
  new Promise((resolve) => {
    http.get({ port, path: '/' }, (answer) => resolve(answer.resume() !== null)).on('error', () => resolve(false));
  });

/**
 * Starts the server; it has a file of each of `sizes`, in bytes, named by its key.
 * @returns {Promise<{plain: string, secure: string, certificate: string, stop: () => void}|undefined>} Undefined where
 *   there is no nginx.
 */
async function startWebServer(sizes) {
  const directory = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-web-'));
  const [plain, secure] = [await freePort(), await freePort()];
  const certificate = path.join(directory, 'cert.pem');
  const kind = [
    '-newkey',
    'ec',
    '-pkeyopt',
    'ec_paramgen_curve:prime256v1',
    '-nodes',
    '-days',
    '2',
    '-subj',
    '/CN=bench',
  ];
  const forThisHost = ['-addext', 'subjectAltName=IP:127.0.0.1'];
  const files = ['-keyout', path.join(directory, 'key.pem'), '-out', certificate];
  execFileSync('openssl', ['req', '-x509', ...kind, ...forThisHost, ...files], { stdio: 'ignore' });
  fs.mkdirSync(path.join(directory, 'files'));
  for (const [name, size] of Object.entries(sizes)) {
    fs.writeFileSync(path.join(directory, 'files', name), Buffer.alloc(size, 'text '));
  }
  fs.writeFileSync(path.join(directory, 'nginx.conf'), configuration({ directory, plain, secure }));

  const server = spawn('nginx', ['-p', directory, '-c', 'nginx.conf'], { stdio: 'ignore' });
  let isGone = false;
  server.on('error', () => (isGone = true)).on('exit', () => (isGone = true));
  const stop = () => {
    server.kill();
    fs.rmSync(directory, { recursive: true, force: true });
  };
  while (!isGone && !(await answers(plain))) await new Promise((resolve) => setTimeout(resolve, 10));
  if (isGone) {
    stop();
    return undefined;
  }
  return { plain: `http://127.0.0.1:${plain}`, secure: `https://127.0.0.1:${secure}`, certificate, stop };
}

/**
 * @param {object} native The module.
 * @returns {(url: string, chunk?: Function) => Promise<ArrayBuffer>} Makes a request; `chunk` gets each piece of the body.
 */
function requesterOf(native) {
  // The engine may collect a request without references.
  const running = new Set();
  return (url, chunk) =>
    new Promise((resolve, reject) => {
      const request = native.createRequest(url);
      running.add(request);
      if (chunk) request.on('data', chunk);
      request.on('end', ({ buffer }) => {
        running.delete(request);
        resolve(buffer);
      });
      request.on('error', reject);
      request.start();
    });
}

module.exports = { requesterOf, startWebServer };
