'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');

const { ok, failed } = require('./rows');

exports.title = 'Files';
exports.needs = ['module'];

exports.run = ({ module }) => {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tour-'));
  const file = path.join(folder, 'Letter.eml');
  try {
    const problems = [
      module.writeFile(file, Buffer.from('Subject: Lunch\n'), false),
      module.writeFile(file, Buffer.from('\nAt one?\n'), true),
    ];
    const refusal = module.writeFile(path.join(folder, 'missing', 'x'), Buffer.from('x'), false);
    const contents = fs.readFileSync(file, 'utf8');
    const isRight = problems.every((problem) => problem === undefined) && contents === 'Subject: Lunch\n\nAt one?\n';
    return isRight && refusal !== undefined
      ? ok(
          'Writing files',
          `a file, more at its end, and for a folder that isn’t there “${refusal.split(': ').at(-1)}”`,
        )
      : failed('Writing files', problems.concat(refusal).join());
  } finally {
    fs.rmSync(folder, { recursive: true });
  }
};
