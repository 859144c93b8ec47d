'use strict';

// writeFile beside Node's own means: in place, which leaves half a file when something goes wrong, and by a new file
// that takes the old one's place, as the module does it. Everybody waits for the disk.

const fs = require('fs');
const os = require('os');
const path = require('path');

const { open } = require('../tests/support/addon');
const { measure, report } = require('./support');

const module_ = open('TessaroNative');
const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'bench-'));

function writeAndSync(file, data) {
  const descriptor = fs.openSync(file, 'w');
  fs.writeSync(descriptor, data);
  fs.fsyncSync(descriptor);
  fs.closeSync(descriptor);
}

try {
  for (const [title, size, rounds] of [
    ['4 KiB', 4 << 10, 21],
    ['64 MiB', 64 << 20, 7],
  ]) {
    const data = Buffer.alloc(size, 'mail');
    const at = (name) => path.join(folder, name);
    report(
      `Writing ${title} to the disk`,
      measure(
        {
          'fs, in place': () => writeAndSync(at('a'), data),
          'fs, new file and rename': () => {
            writeAndSync(at('b.new'), data);
            fs.renameSync(at('b.new'), at('b'));
          },
          'module: writeFile': () => module_.writeFile(at('c'), data, false),
        },
        { rounds, calls: 1 },
      ),
      { unit: 'ms', scale: 1e6 },
    );
  }
} finally {
  fs.rmSync(folder, { recursive: true });
}
process.exit();
