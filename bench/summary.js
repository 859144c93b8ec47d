'use strict';

// The table of what matters, from what the benchmarks have recorded, and docs/performance.md.

const { execFileSync } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const { digits, rangeOf, ratio } = require('./support');

const root = path.join(__dirname, '..');

// A report's title, the row of the module in it, and the aim: at most so many times the best other contestant's cost, or
// at most a figure. Contestants with a smaller job are not in the reports that are named here.
const works = [
  [/^1 KB over HTTP\/1.1, .* requests a second/, 'module', { times: 1 }],
  [/^1 KB over HTTP\/1.1, .* latency/, 'module', { times: 1 }],
  [/^1 KB over TLS .* requests a second/, 'module', { times: 1 }],
  [/^256 MB over HTTP\/1.1, the whole .* rate/, 'module', { times: 1 }],
  [/^256 MB over HTTP\/1.1, the whole .* processor/, 'module', { times: 1 }],
  [/^256 MB over HTTP\/1.1, in pieces, and kept: rate/, 'module', { times: 1.11 }],
  [/^256 MB over HTTP\/1.1, in pieces \(.* rate/, 'module', { times: 1.11 }],
  [/^256 MB over TLS, the whole .* rate/, 'module', { times: 1 }],
  [/^A function without arguments/, 'module: values only', { times: 1.5 }],
  [/^A string in and out, 5 characters/, 'module', {}],
  [/^Reading .* ASCII/, 'module: door alone', {}],
  [/^Writing .* ASCII/, 'module: door alone', {}],
  [/JPEG of .* to 1600 pixels/, 'module', { times: 1 }],
  [/^PNG of 3000 pixels/, 'module', { times: 1 }],
  [/the smallest job/, 'module', { figure: 4 }],
  [/^The first picture/, 'module', { figure: 80 }],
  [/^The menu of 5 accounts/, 'everything: AboutToShow, then GetLayout', { figure: 2 }],
  [/^The menu of 50 accounts/, 'everything: AboutToShow, then GetLayout', { figure: 50 }],
  [/^Set a new password/, 'module', { times: 1 }],
  [/^Get a password/, 'module', { times: 1 }],
  [/^Enumerate/, 'module', { times: 1 }],
  [/^An alert/, 'module', { times: 1 }],
  [/^A feed/, 'module: the choice', { times: 1 }],
  [/^Report of 1,000 accounts/, 'module: report', { figure: 60 }],
  [/^A message from the bus/, '10000 recipients', { figure: 100 }],
  [/^A group of 10000/, 'its recipients', { figure: 60 }],
  [/^Loading, time/, 'module: require and Init', { figure: 30, beside: 'GNUstep alone' }],
  [/^Loading, memory/, 'module: require and Init', { figure: 30, beside: 'GNUstep alone' }],
  [/^A mail day/, 'module: at its end', {}],
];

const isRate = (unit) => unit.endsWith('/s');

/** The other contestant that costs least, or the given one, and how many times its cost the module's is. */
function bestPeer({ unit, results }, ours, given) {
  const isPeer = ([name]) => (given === undefined ? name !== ours && !name.startsWith('module') : name === given);
  const cheaper = (one, other) => (isRate(unit) ? other[1].median - one[1].median : one[1].median - other[1].median);
  const [best] = Object.entries(results).filter(isPeer).sort(cheaper);
  if (best === undefined) return undefined;
  const [one, other] = isRate(unit) ? [best[1], results[ours]] : [results[ours], best[1]];
  return { name: best[0], figure: best[1], times: ratio(one, other) };
}

function verdict({ times, figure }, ours, peer) {
  if (times !== undefined) return peer.times.median <= times ? 'yes' : 'no';
  if (figure !== undefined) return ours.median <= figure ? 'yes' : 'no';
  return '';
}

function rowOf(entry, oursName, aim) {
  const ours = entry.results[oursName];
  if (ours === undefined) throw new Error(`"${entry.title}" has no row "${oursName}"`);
  const peer = aim.beside || aim.figure === undefined ? bestPeer(entry, oursName, aim.beside) : undefined;
  const wanted = { times: `≤ ${aim.times} ×`, figure: `≤ ${aim.figure} ${entry.unit}` };
  return [
    entry.title.replace(/: (rate|latency|processor time|requests a second)$/, ', $1'),
    `${digits(ours.median)} ${entry.unit}`,
    peer ? `${digits(peer.figure.median)} (${peer.name})` : '',
    peer ? `${digits(peer.times.median)} (${rangeOf(peer.times)})` : '',
    Object.keys(aim)
      .flatMap((kind) => wanted[kind] ?? [])
      .join(),
    verdict(aim, ours, peer),
  ];
}

const header = ['Work', 'Module', 'Best peer', 'Cost, times the peer’s', 'Wanted', 'Met'];

/** @returns {string[][]} Rows of the table, of those works that have been measured. */
function rowsOf(entries) {
  return works.flatMap(([title, ours, aim]) => {
    const entry = entries.findLast((each) => title.test(each.title));
    return entry === undefined ? [] : [rowOf(entry, ours, aim)];
  });
}

const growthHeader = ['Work', '1 ×', '10 ×', '100 ×', 'Growth of the last step'];

const growthRows = (entries) =>
  entries
    .filter(({ steps }) => steps !== undefined)
    .map(({ title, results, steps }) => [
      title.replace('Growth: ', ''),
      ...Object.entries(results).map(([size, { median }]) => `${size}: ${digits(median)} ms`),
      `× ${digits(steps[1])}`,
    ]);

function markdown(head, rows) {
  const line = (cells) => `| ${cells.join(' | ')} |`;
  return [line(head), line(head.map(() => '---')), ...rows.map(line)].join('\n');
}

function printed(head, rows) {
  const widths = head.map((_, column) => Math.max(...[head, ...rows].map((row) => row[column].length)));
  return [head, ...rows]
    .map((row) =>
      row
        .map((cell, i) => cell.padEnd(widths[i]))
        .join('  ')
        .trimEnd(),
    )
    .join('\n');
}

function versions() {
  const packages = ['undici', 'sharp', 'keytar', '@napi-rs/keyring', 'node-notifier', 'fast-xml-parser'];
  const of = (name) =>
    `${name} ${JSON.parse(fs.readFileSync(path.join(root, 'node_modules', name, 'package.json'))).version}`;
  return [`Node.js ${process.version}`, ...packages.map(of)].join(', ');
}

/** Megabytes of the module's binary as `make package` ships it. */
function strippedSize() {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-bench-'));
  const stripped = path.join(folder, 'stripped');
  execFileSync('objcopy', ['--strip-all', path.join(root, 'build/release/TessaroNative.node'), stripped]);
  const { size } = fs.statSync(stripped);
  fs.rmSync(folder, { recursive: true });
  return (size / 1e6).toFixed(2);
}

function page(entries, failed) {
  const [{ model }] = os.cpus();
  return `# Performance

Written by \`make bench ARGS=--summary\`. Medians; a peer's cost is met in the same rounds, in turn, and the range of the
ratio is from the 5th to the 95th percentile of the rounds. Rates are compared as costs: below 1 the module is ahead.

- Machine: ${model}, ${os.cpus().length} processors, ${(os.totalmem() / 2 ** 30).toFixed(0)} GB, ${os.type()} ${os.release()}; load before the run ${process.env.TESSARO_BENCH_LOAD}
- Versions: ${versions()}
- Day: ${new Date().toISOString().slice(0, 10)}
- Size of the stripped binary: ${strippedSize()} MB
- Benchmarks that failed: ${failed.join(', ') || 'none'}

${markdown(header, rowsOf(entries))}

"In pieces" has two rows, because the module keeps a body that it also passes on in pieces: beside peers that keep it as
well, and beside peers that keep nothing.

## Growth

Each work at the usual size, 10 and 100 times as much; a last step of 10 is linear.

${markdown(growthHeader, growthRows(entries))}
`;
}

/** Prints the tables of what has been measured; with `writes`, writes docs/performance.md as well. */
function summarise(entries, { failed, writes }) {
  const [rows, growth] = [rowsOf(entries), growthRows(entries)];
  if (rows.length > 0) console.log(`\n${printed(header, rows)}`);
  if (growth.length > 0) console.log(`\n${printed(growthHeader, growth)}`);
  if (!writes) return;
  fs.writeFileSync(path.join(root, 'docs', 'performance.md'), page(entries, failed));
}

module.exports = { summarise };
