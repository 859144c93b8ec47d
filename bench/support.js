'use strict';

// Measures contestants side by side, prints what came of it, and records the figures for the summary of run.js.

const fs = require('fs');

const rank = (values, share) => [...values].sort((a, b) => a - b)[Math.floor((values.length - 1) * share)];

const summary = (values) => ({ median: rank(values, 0.5), low: rank(values, 0.05), high: rank(values, 0.95), values });

const now = () => Number(process.hrtime.bigint());

const nothing = (contestants) => Object.fromEntries(Object.keys(contestants).map((name) => [name, []]));

const summaries = (samples) =>
  Object.fromEntries(Object.entries(samples).map(([name, values]) => [name, summary(values)]));

/** The contestants in the order of a round: each round begins with another, so that none always follows the same one. */
function turnsOf(contestants, round) {
  const turns = Object.entries(contestants);
  const first = ((round % turns.length) + turns.length) % turns.length;
  return [...turns.slice(first), ...turns.slice(0, first)];
}

/**
 * Takes a sample of each contestant in each round, after `warm` rounds that don't count. What the machine does meanwhile
 * meets all of them.
 * @param {Record<string, (round: number) => unknown>} contestants
 * @param {{rounds: number, warm?: number, sample?: Function}} options `sample(run, round)` may measure something else
 *   than the nanoseconds of one run.
 * @returns {Promise<Record<string, any[]>>}
 */
async function takeTurns(contestants, { rounds, warm = 1, sample = nanosecondsOf }) {
  const samples = nothing(contestants);
  for (let round = -warm; round < rounds; ++round) {
    for (const [name, run] of turnsOf(contestants, round)) {
      const value = await sample(run, round);
      if (round >= 0) samples[name].push(value);
    }
  }
  return samples;
}

async function nanosecondsOf(run, round) {
  const start = now();
  await run(round);
  return now() - start;
}

/**
 * The same for functions that are too short to be timed one by one.
 * @param {Record<string, () => unknown>} contestants
 * @param {{rounds?: number, calls: number}} options Calls of each contestant in each round.
 * @returns {Record<string, ReturnType<typeof summary>>} Nanoseconds per call.
 */
function measure(contestants, { rounds = 15, calls }) {
  const samples = nothing(contestants);
  for (let round = -1; round < rounds; ++round) {
    for (const [name, run] of turnsOf(contestants, round)) {
      const start = now();
      for (let i = 0; i < calls; ++i) run();
      if (round >= 0) samples[name].push((now() - start) / calls);
    }
  }
  return summaries(samples);
}

/** How many times `one` is `other`: by rounds where both were measured in the same ones. */
function ratio(one, other) {
  if (one.values.length !== other.values.length) return summary([one.median / other.median]);
  return summary(one.values.map((value, round) => value / other.values[round]));
}

/** A figure with three digits. */
const digits = (value) => value.toFixed(Math.max(0, 2 - Math.floor(Math.log10(Math.max(value, 0.001)))));

const rangeOf = ({ low, high }) => `${digits(low)} – ${digits(high)}`;

/** Prints a table: a row a contestant, with its ratio to the first. `scale` divides the figures into `unit`. */
function report(title, results, { unit = 'ns', scale = 1 } = {}) {
  const scaled = Object.entries(results).map(([name, { values }]) => [name, summary(values.map((v) => v / scale))]);
  const width = Math.max(...scaled.map(([name]) => name.length));
  const [[, first]] = scaled;
  console.log(`\n${title} (${unit}: median, 5 – 95 %; ratio to the first)`);
  for (const [name, result] of scaled) {
    const times = ratio(result, first);
    const ratios = result === first ? '' : `${digits(times.median)} (${rangeOf(times)})`;
    console.log(
      `  ${name.padEnd(width)}  ${digits(result.median).padStart(8)}  ${rangeOf(result).padEnd(17)}  ${ratios}`,
    );
  }
  record({ title, unit, results: Object.fromEntries(scaled) });
}

/** The same for samples in milliseconds. */
const reportLatency = (title, samples) => report(title, summaries(samples), { unit: 'ms' });

function record(entry) {
  if (process.env.TESSARO_BENCH_RECORD)
    fs.appendFileSync(process.env.TESSARO_BENCH_RECORD, `${JSON.stringify(entry)}\n`);
}

/** The definition of a toolbar with `count` buttons. */
function toolbarOf(count) {
  const items = Array.from({ length: count }, (_, i) => ({
    identifier: `item-${i}`,
    label: `${i}`,
    'image-name': 'TB_Inbox',
    'button?': true,
    'default?': true,
  }));
  return JSON.stringify({ identifier: `of ${count}`, items, options: {} });
}

module.exports = {
  ...{ digits, measure, rangeOf, ratio, record, report, reportLatency },
  ...{ summaries, summary, takeTurns, toolbarOf },
};
