'use strict';

// The cost of finding applications and their icons, of the pasteboard, and of the text of HTML.

const fs = require('fs');
const os = require('os');
const path = require('path');

const home = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-bench-'));
process.on('exit', () => fs.rmSync(home, { recursive: true, force: true }));

const host = require('../host');
const { probe } = require('../tests/support/addon');
const { measure, report, reportLatency } = require('./support');

const ms = { unit: 'ms', scale: 1e6 };

function applications(module) {
  const start = process.hrtime.bigint();
  const found = JSON.parse(module.applicationsForFileExtension('txt', 32, path.join(home, 'cold')));
  const cold = Number(process.hrtime.bigint() - start) / 1e6;
  reportLatency(`Applications for .txt (${found.length}), the first time, with icons`, { cold: [cold] });
  let folder = 0;
  report(
    'Applications for .txt',
    measure(
      {
        'icons are there': () => module.applicationsForFileExtension('txt', 32, path.join(home, 'cold')),
        'no icons': () => module.applicationsForFileExtension('txt', 32, ''),
        'icons made anew': () => module.applicationsForFileExtension('txt', 32, path.join(home, String(++folder))),
        'default of a scheme': () => module.defaultApplicationForScheme('mailto'),
      },
      { rounds: 11, calls: 10 },
    ),
    ms,
  );
}

function pasteboard(module, probed) {
  const types = (count, bytes) => ({
    types: Object.fromEntries(
      Array.from({ length: count }, (_, i) => [`org.tessaro.${i}`, Buffer.alloc(bytes, i).toString('base64')]),
    ),
  });
  for (const [title, content] of [
    ['100 types of 1 KB', types(100, 1024)],
    ['100 types, 64 MB in all', types(100, (64 << 20) / 100)],
    ['one type of 64 MB', types(1, 64 << 20)],
  ]) {
    probed.put(content);
    const pair = () => [module.saveGeneralPasteboard(), module.restoreGeneralPasteboard()];
    report(`Snapshot and restore of ${title}`, measure({ both: pair }, { rounds: 5, calls: 1 }), ms);
  }
}

function text(integrations) {
  const page = '<div><p>Dear <b>Bob</b>, &amp; all,</p><ul><li>one<li>two</ul></div>\n'.repeat(15000).slice(0, 1 << 20);
  report('Text of 1 MB of HTML', measure({ text: () => integrations.textFromHTML(page) }, { rounds: 9, calls: 2 }), ms);
}

const { display } = host.start();
const { module: native, pasteboard: probed, integrations } = probe();
applications(native);
text(integrations);
if (display) pasteboard(native, probed);
process.exit();
