'use strict';

// Measures peers side by side: their rounds alternate, so that what the machine does meanwhile meets all of them.

const median = (values) => [...values].sort((a, b) => a - b)[values.length >> 1];

/**
 * @param {Record<string, () => unknown>} peers
 * @param {{rounds?: number, calls: number}} options Calls of each peer in each round.
 * @returns {Record<string, {median: number, least: number, most: number}>} Nanoseconds per call.
 */
function measure(peers, { rounds = 15, calls }) {
  const samples = Object.fromEntries(Object.keys(peers).map((name) => [name, []]));
  for (const run of Object.values(peers)) for (let i = 0; i < calls; ++i) run();
  for (let round = 0; round < rounds; ++round) {
    for (const [name, run] of Object.entries(peers)) {
      const start = process.hrtime.bigint();
      for (let i = 0; i < calls; ++i) run();
      samples[name].push(Number(process.hrtime.bigint() - start) / calls);
    }
  }
  return Object.fromEntries(Object.entries(samples).map(([name, values]) => [name, summary(values)]));
}

function summary(values) {
  return { median: median(values), least: Math.min(...values), most: Math.max(...values) };
}

/** Prints a table: a row a peer, with its ratio to the first. `scale` divides the figures into `unit`. */
function report(title, results, { unit = 'ns', scale = 1 } = {}) {
  const figure = (value) => (value / scale).toFixed(value / scale < 10 ? 3 : 1);
  const [first] = Object.values(results);
  console.log(`\n${title} (${unit}: median, range; ratio to the first)`);
  const width = Math.max(...Object.keys(results).map((name) => name.length));
  for (const [name, { median: middle, least, most }] of Object.entries(results)) {
    const range = `${figure(least)} – ${figure(most)}`;
    console.log(
      `  ${name.padEnd(width)}  ${figure(middle).padStart(9)}  ${range.padEnd(20)}  ${(middle / first.median).toFixed(2)}`,
    );
  }
}

/** Prints how long single operations took: samples in milliseconds, with their ratio to the first peer's. */
function reportLatency(title, samples) {
  const width = Math.max(...Object.keys(samples).map((name) => name.length));
  const rank = (values, share) => [...values].sort((a, b) => a - b)[Math.floor((values.length - 1) * share)];
  const [first] = Object.values(samples);
  console.log(`\n${title} (ms; ratio of the medians to the first)`);
  for (const [name, values] of Object.entries(samples)) {
    const figures = [0.5, 0.95].map((share) => rank(values, share).toFixed(3).padStart(9));
    const ratio = (rank(values, 0.5) / rank(first, 0.5)).toFixed(2);
    console.log(`  ${name.padEnd(width)}  p50 ${figures[0]}  p95 ${figures[1]}  ${ratio}`);
  }
}

module.exports = { measure, report, reportLatency, summary };
