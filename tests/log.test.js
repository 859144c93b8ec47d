'use strict';

const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');

const { evaluate, runScript, temporaryDirectory } = require('./support/child');

const [error, warning, info, debug] = [1, 2, 4, 8];

test('messages carry level, flag, context and place, keep their order, and keep no control characters but the format’s own line feeds', async (t) => {
  const { captured, before } = await evaluate(
    t,
    `const { captureLog, capturedLog, stopCapturingLog, logText: log, logFormat, flushLog } = probe();
     captureLog();
     for (const flag of [${debug}, ${info}, ${warning}]) log(flag, 'flag ' + flag);
     logFormat('Grüße\\u0000\\n\\u009b\\u2028 😀');
     log(${error}, 'an error is written before the call returns');
     const before = capturedLog().length;
     log(${info}, '€'.repeat(1 << 20));
     log(${info}, 'last');
     flushLog();
     stopCapturingLog();
     log(${error}, 'after the logger was removed');
     console.log(JSON.stringify({ captured: capturedLog(), before }));`,
  );
  assert.strictEqual(before, 5);
  assert.deepStrictEqual(
    captured.map((message) => [message.flag, message.text]),
    [
      [debug, 'flag 8'],
      [info, 'flag 4'],
      [warning, 'flag 2'],
      [warning, 'Grüße\\x00\\n\\xc2\\x9b\\xe2\\x80\\xa8 😀\nand 42'],
      [error, 'an error is written before the call returns'],
      [info, `${'€'.repeat(Math.floor((64 << 10) / 3))}…`],
      [info, 'last'],
    ],
  );
  for (const message of captured) {
    assert.deepStrictEqual([message.level, message.context, message.onCallersThread], [31, 0, false]);
  }
  const formatted = captured[3];
  assert.strictEqual(formatted.file, 'tests/native/CoreProbe.mm');
  assert.match(formatted.function, /^void \(anonymous namespace\)::logFormat\(NSString \*\)$/);
  assert.ok(formatted.line > 100);
});

test('the file rolls over after a day, and one file is kept', async (t) => {
  const logs = temporaryDirectory(t);
  const stale = path.join(logs, 'TessaroNative_2020-01-01.log');
  const foreign = path.join(logs, 'other.log');
  fs.writeFileSync(stale, 'old');
  fs.writeFileSync(foreign, 'not ours');
  const days = await evaluate(
    t,
    `const { addFileLogger, logText: log, flushLog } = probe();
     const fs = require('fs');
     const logs = ${JSON.stringify(logs)};
     // What is still on its way was logged before there was this file.
     flushLog();
     const days = [addFileLogger(logs)];
     for (const day of [0, 1, 2]) {
       log(${info}, 'day ' + day, day);
       flushLog();
       days.push(fs.readdirSync(logs).filter((name) => name.startsWith('TessaroNative')).map((name) => fs.readFileSync(logs + '/' + name, 'utf8')));
     }
     console.log(JSON.stringify(days));`,
  );
  assert.strictEqual(days[0], true);
  [0, 1, 2].forEach((day) => {
    assert.strictEqual(days[day + 1].length, 1, `one file on day ${day}`);
    assert.match(
      days[day + 1][0],
      new RegExp(`^\\S+ \\S+ \\[info\\] day ${day} \\(tests/log\\.test\\.js:1 void log\\(\\)\\)\\n$`),
    );
  });
  assert.ok(fs.existsSync(foreign));
  assert.ok(!fs.existsSync(stale));
});

test('with an unwritable folder logging goes on without a file', async (t) => {
  const directory = temporaryDirectory(t);
  const blocked = path.join(directory, 'file');
  fs.writeFileSync(blocked, '');
  const result = await runScript(
    t,
    `const { addFileLogger, logText: log } = probe();
     console.log(addFileLogger(${JSON.stringify(path.join(blocked, 'logs'))}));
     log(${error}, 'still heard');`,
    { env: { TESSARO_NATIVE_LOG: 'stderr', XDG_STATE_HOME: blocked } },
  );
  assert.deepStrictEqual([result.code, result.stdout], [0, 'false\n']);
  assert.match(result.stderr, /\[warning\] There is no log file, because none can be written in \S+file\/node\/logs /);
  assert.match(result.stderr, /\[error\] still heard \(tests\/log\.test\.js:1 void log\(\)\)\n$/);
});

test('an error is in the file when the call returns, and a full disk ends nothing', async (t) => {
  const [logs, full] = [temporaryDirectory(t), temporaryDirectory(t)];
  const { text, code } = await evaluate(
    t,
    `const { addFileLogger, logText: log, flushLog } = probe();
     const fs = require('fs');
     addFileLogger(${JSON.stringify(logs)});
     log(${error}, 'the disk is fine');
     const [name] = fs.readdirSync(${JSON.stringify(logs)});
     const text = fs.readFileSync(${JSON.stringify(logs)} + '/' + name, 'utf8');
     fs.symlinkSync('/dev/full', ${JSON.stringify(full)} + '/' + name);
     const code = addFileLogger(${JSON.stringify(full)});
     log(${error}, 'the disk is full');
     flushLog();
     console.log(JSON.stringify({ text, code }));`,
  );
  assert.match(text, /the disk is fine/);
  assert.strictEqual(code, true);
});

test('everything logged before the process ends is in the file', async (t) => {
  for (const end of ['', 'process.exit(0);', 'module.getPasswordForAccount();']) {
    const logs = temporaryDirectory(t);
    await runScript(
      t,
      `const { module, addFileLogger, logText: log } = probe();
       addFileLogger(${JSON.stringify(logs)});
       for (let i = 0; i < 20000; ++i) log(${info}, 'message ' + i);
       ${end}`,
    );
    const [file] = fs.readdirSync(logs);
    const lines = fs.readFileSync(path.join(logs, file), 'utf8').trim().split('\n');
    assert.strictEqual(lines.filter((line) => /message \d+ /.test(line)).length, 20000, end);
    assert.match(
      lines.findLast((line) => line.includes('message ')),
      /message 19999 /,
    );
  }
});
