'use strict';

const { assert, fs, path, scenarios, temporaryDirectory, test } = require('./support');

const logging = scenarios({
  fixture: ({ fs, logText }) => ({
    ...{ error: 1, warning: 2, info: 4, debug: 8, write: logText },
    /** The texts of the module's files in a folder. */
    files(folder) {
      const names = fs.readdirSync(folder).filter((name) => name.startsWith('TessaroNative'));
      return names.map((name) => fs.readFileSync(`${folder}/${name}`, 'utf8'));
    },
  }),
});

test('messages carry level, flag, context and place, keep their order, and no control characters but the format’s own line feeds', async (t) => {
  const captured = await logging(t, (fixture) => {
    const { captureLog, capturedLog, equal, error, flushLog, info, logFormat, stopCapturingLog, write } = fixture;
    captureLog();
    for (const flag of [8, 4, 2]) write(flag, `flag ${flag}`);
    logFormat('Grüße\u0000\n\u009b\u2028 😀');
    write(error, 'an error is written before the call returns');
    equal(capturedLog().length, 5);
    write(info, '€'.repeat(1 << 20));
    write(info, 'last');
    flushLog();
    stopCapturingLog();
    write(error, 'after the logger was removed');
    return capturedLog();
  });
  const texts = captured.map(({ flag, text }) => `${flag} ${text}`);
  const escaped = '2 Grüße\\x00\\n\\xc2\\x9b\\xe2\\x80\\xa8 😀\nand 42';
  const cut = `4 ${'€'.repeat(Math.floor((64 << 10) / 3))}…`;
  const [error, last] = ['1 an error is written before the call returns', '4 last'];
  assert.deepStrictEqual(texts, ['8 flag 8', '4 flag 4', '2 flag 2', escaped, error, cut, last]);
  for (const { level, context, onCallersThread } of captured) {
    assert.deepStrictEqual([level, context, onCallersThread], [31, 0, false]);
  }
  const formatted = captured[3];
  assert.strictEqual(formatted.file, 'tests/native/CoreProbe.mm');
  assert.match(formatted.function, /^void \(anonymous namespace\)::logFormat\(NSString \*\)$/);
  assert.ok(formatted.line > 100);
});

test('the file rolls over after a day, and one file is kept', async (t) => {
  const logs = temporaryDirectory(t);
  const [stale, foreign] = ['TessaroNative_2020-01-01.log', 'other.log'].map((name) => path.join(logs, name));
  for (const file of [stale, foreign]) fs.writeFileSync(file, 'old');
  const scenario = ({ addFileLogger, equal, files, flushLog, info, write }, folder) => {
    // Earlier messages do not belong into this file.
    flushLog();
    equal(addFileLogger(folder), true);
    return [0, 1, 2].map((day) => {
      write(info, `day ${day}`, day);
      flushLog();
      return files(folder);
    });
  };
  (await logging(t, scenario, logs)).forEach(([text, ...others], day) => {
    assert.match(text, new RegExp(`^\\S+ \\S+ \\[info\\] day ${day} \\(tests/log\\.test\\.js:1 void log\\(\\)\\)\\n$`));
    assert.deepStrictEqual(others, []);
  });
  assert.deepStrictEqual([fs.existsSync(foreign), fs.existsSync(stale)], [true, false]);
});

test('with an unwritable folder logging goes on without a file', async (t) => {
  const blocked = path.join(temporaryDirectory(t), 'file');
  fs.writeFileSync(blocked, '');
  const run = logging.with({ env: { TESSARO_NATIVE_LOG: 'stderr', XDG_STATE_HOME: blocked } });
  const work = ({ addFileLogger, equal, error, write }, folder) => {
    equal(addFileLogger(folder), false);
    write(error, 'still heard');
  };
  const { code, stderr } = await run.ends(t, work, path.join(blocked, 'logs'));
  assert.strictEqual(code, 0);
  assert.match(stderr, /\[warning\] There is no log file, because none can be written in \S+file\/node\/logs /);
  assert.match(stderr, /\[error\] still heard \(tests\/log\.test\.js:1 void log\(\)\)\n$/);
});

test('an error is in the file when the call returns, and a full disk ends nothing', async (t) => {
  const work = async ({ addFileLogger, assert, equal, error, files, flushLog, fs, write }, logs, full) => {
    addFileLogger(logs);
    write(error, 'the disk is fine');
    assert.match(files(logs)[0], /the disk is fine/);
    fs.symlinkSync('/dev/full', `${full}/${fs.readdirSync(logs)[0]}`);
    equal(addFileLogger(full), true);
    write(error, 'the disk is full');
    flushLog();
  };
  await logging(t, work, temporaryDirectory(t), temporaryDirectory(t));
});

test('everything logged before the process ends is in the file', async (t) => {
  const work = ({ addFileLogger, info, native, write }, folder, end) => {
    addFileLogger(folder);
    for (let i = 0; i < 20000; ++i) write(info, `message ${i}`);
    if (end === 'exit') process.exit(0);
    if (end === 'abort') native.getPasswordForAccount();
  };
  for (const end of ['by itself', 'exit', 'abort']) {
    const logs = temporaryDirectory(t);
    await logging.ends(t, work, logs, end);
    const [file] = fs.readdirSync(logs);
    const messages = fs.readFileSync(path.join(logs, file), 'utf8').match(/message \d+ /g);
    assert.deepStrictEqual([messages.length, messages.at(-1)], [20000, 'message 19999 '], end);
  }
});
