'use strict';

// Certificates for servers on this machine.

const { execFileSync } = require('child_process');
const fs = require('fs');
const path = require('path');

const { temporaryDirectory } = require('./child');

/** A self-signed certificate and its key. */
function certificate(test, ...options) {
  const directory = temporaryDirectory(test);
  const [key, cert] = ['key.pem', 'cert.pem'].map((name) => path.join(directory, name));
  const kind = ['-newkey', 'ec', '-pkeyopt', 'ec_paramgen_curve:prime256v1', '-nodes', '-subj', '/CN=test'];
  execFileSync('openssl', ['req', '-x509', ...kind, '-keyout', key, '-out', cert, ...options], { stdio: 'ignore' });
  return { file: cert, key: fs.readFileSync(key), cert: fs.readFileSync(cert) };
}

const forThisHost = ['-addext', 'subjectAltName=IP:127.0.0.1', '-days', '2'];

module.exports = { certificate, forThisHost };
