'use strict';

// What a scene of the tour tells: a row a capability, with what really happened.

/** It works. */
const ok = (capability, detail) => ({ capability, result: 'ok', detail });

/** This machine or session can't offer it; that is nobody's failure. */
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
