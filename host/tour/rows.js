'use strict';

// The results of the tour's scenes: one row for each capability.

/** It works. */
const ok = (capability, detail) => ({ capability, result: 'ok', detail });

/** Unavailable on this machine or in this session: no failure. */
const notOffered = (capability, reason) => ({ capability, result: 'not offered here', detail: reason });

/** It should have worked. */
const failed = (capability, detail) => ({ capability, result: 'failed', detail });

function printTable(rows, print = console.log) {
  const columns = ['capability', 'result', 'detail'];
  const width = (column) => Math.max(column.length, ...rows.map((row) => row[column].length));
  const line = (cells) =>
    columns
      .map((column, i) => cells[i].padEnd(width(column)))
      .join('  ')
      .trimEnd();
  print(line(columns));
  print(columns.map((column) => '-'.repeat(Math.min(width(column), 60))).join('  '));
  for (const row of rows) print(line(columns.map((column) => row[column])));
}

module.exports = { ok, notOffered, failed, printTable };
