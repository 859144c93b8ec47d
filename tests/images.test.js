'use strict';

// Recognising images, scaled copies, and images from the pasteboard.

const assert = require('assert');
const { execFileSync } = require('child_process');
const fs = require('fs');
const path = require('path');
const { test } = require('node:test');
const sharp = require('sharp');

const { evaluate, temporaryDirectory } = require('./support/child');
const { useSession } = require('./support/session');

const session = useSession();

const run = (t, source, options) => evaluate(t, `const { module: m, pasteboard, ...p } = probe();\n${source}`, options);

/** What `scaleImage` answers to each list of arguments. */
const scale = (t, calls, options) =>
  run(t, `console.log(JSON.stringify(${JSON.stringify(calls)}.map((args) => m.scaleImage(...args))))`, options);

// Red above, blue below; with alpha, the upper half is clear.
const halves = (width, height, alpha = 1) =>
  sharp({ create: { width, height, channels: 4, background: { r: 255, g: 0, b: 0, alpha } } }).composite([
    {
      input: { create: { width, height: height / 2, channels: 4, background: { r: 0, g: 0, b: 255, alpha: 1 } } },
      left: 0,
      top: height / 2,
    },
  ]);

const makers = {
  png: (width, height) => halves(width, height, 0).png().toBuffer(),
  jpg: (width, height) => halves(width, height).jpeg().toBuffer(),
  gif: (width, height) => halves(width, height).gif().toBuffer(),
  webp: (width, height) => halves(width, height, 0).webp().toBuffer(),
  avif: async (width, height) =>
    sharp(await makers.jpg(width, height))
      .avif({ effort: 0 })
      .toBuffer(),
  tiff: (width, height) => halves(width, height).tiff().toBuffer(),
};

async function makeImage(folder, name, [width, height] = [400, 200]) {
  const file = path.join(folder, name);
  fs.writeFileSync(file, await makers[path.extname(name).slice(1)](width, height));
  return file;
}

async function pixel(file, x, y) {
  const { data, info } = await sharp(file).raw().toBuffer({ resolveWithObject: true });
  return [...data.subarray((y * info.width + x) * info.channels, (y * info.width + x + 1) * info.channels)];
}

// Filters that keep a processor busy for half a minute, in 4 kB.
const hostileDrawing = () => {
  const noise = (n) => `<feTurbulence baseFrequency="0.0${n + 10}" numOctaves="9" seed="${n}"/>`;
  const filter = `<filter id="f">${Array.from({ length: 50 }, (_, n) => noise(n)).join('')}</filter>`;
  return `<svg xmlns="http://www.w3.org/2000/svg" width="2000" height="2000">${filter}
    <rect width="2000" height="2000" filter="url(#f)"/></svg>`;
};

const isNear = (actual, expected, tolerance = 12) =>
  actual.length === expected.length && actual.every((value, i) => Math.abs(value - expected[i]) <= tolerance);

test('a web image is recognised by its contents, not by its name', async (t) => {
  const folder = temporaryDirectory(t);
  const write = (name, contents) => {
    fs.writeFileSync(path.join(folder, name), contents);
    return path.join(folder, name);
  };
  const table = [
    ...(await Promise.all(
      ['png', 'jpg', 'gif', 'webp', 'avif'].map(async (kind) => [write(`${kind}.txt`, await makers[kind](8, 8)), 1]),
    )),
    [write('tiff.png', await makers.tiff(8, 8)), 0],
    [write('text.png', 'a text'), 0],
    [write('drawing.svg', '<svg xmlns="http://www.w3.org/2000/svg"/>'), 0],
    [write('sound.webp', 'RIFF\0\0\0\0WAVEfmt '), 0],
    [write('film.avif', '\0\0\0\x20ftypisom'), 0],
    [write('short.png', '\x89PNG'), 0],
    [write('empty.png', ''), 0],
    [folder, 0],
    [path.join(folder, 'missing.png'), 0],
    ['', 0],
    ['a\0b.png', 0],
  ];
  execFileSync('mkfifo', [path.join(folder, 'pipe.png')]);
  table.push([path.join(folder, 'pipe.png'), 0]);
  const answers = await run(
    t,
    `console.log(JSON.stringify(${JSON.stringify(table.map(([file]) => file))}.map((file) => m.isWebImagePath(file))))`,
  );
  assert.deepStrictEqual(
    answers,
    table.map(([, expected]) => expected),
  );
});

test('a copy fits, keeps its shape and its format, and is never enlarged', async (t) => {
  const folder = temporaryDirectory(t);
  const target = path.join(folder, 'copies');
  fs.mkdirSync(target);
  const table = [
    ['a.png', 100, 100, [100, 50]],
    ['a.jpg', 1000, 50, [100, 50]],
    ['a.gif', 0, 50, [100, 50]],
    ['a.webp', 100, -1, [100, 50]],
    ['a.tiff', 100, 100, [100, 50]],
    ['b.png', 1000, 1000, [400, 200]],
    ['c.png', 0, 0, [400, 200]],
  ];
  for (const [name] of table) await makeImage(folder, name);
  const written = await scale(
    t,
    table.map(([name, width, height]) => [path.join(folder, name), target, width, height]),
  );
  for (const [index, [name, , , [width, height]]] of table.entries()) {
    assert.strictEqual(written[index], path.join(target, name));
    const facts = await sharp(written[index]).metadata();
    const format = path.extname(name).slice(1).replace('jpg', 'jpeg');
    assert.deepStrictEqual([facts.format, facts.width, facts.height], [format, width, height], name);
  }
  const [top, bottom] = [await pixel(written[0], 50, 10), await pixel(written[0], 50, 40)];
  assert.strictEqual(top[3], 0, 'clear stays clear');
  assert.ok(isNear(bottom, [0, 0, 255, 255]), String(bottom));
  // A copy that fits is byte-identical.
  assert.deepStrictEqual(fs.readFileSync(written[5]), fs.readFileSync(path.join(folder, 'b.png')));
});

test('the target determines name and format of the copy', async (t) => {
  const folder = temporaryDirectory(t);
  const png = await makeImage(folder, 'a.png');
  const at = (name) => path.join(folder, name);
  fs.mkdirSync(at('copies'));
  fs.writeFileSync(at('old.png'), 'what was there');
  fs.chmodSync(at('old.png'), 0o640);
  fs.copyFileSync(png, at('photo [1].%s.JPG'));
  const avif = await makeImage(folder, 'b.avif');
  const written = await scale(t, [
    [png, at('copies'), 100, 100],
    [png, at('copies'), 100, 100],
    [png, at('x.jpeg'), 100, 100],
    [png, at('y'), 100, 100],
    [png, at('old.png'), 100, 100],
    [at('photo [1].%s.JPG'), at('copies'), 100, 100],
    [avif, at('copies'), 100, 100],
    [png, png, 100, 100],
  ]);
  const names = ['copies/a.png', 'copies/a 2.png', 'x.jpeg', 'y', 'old.png', 'copies/photo [1].%s.png'];
  assert.deepStrictEqual(written, [...names, 'copies/b.jpg', 'a.png'].map(at));
  const formats = await Promise.all(written.map(async (file) => (await sharp(file).metadata()).format));
  assert.deepStrictEqual(formats, ['png', 'png', 'jpeg', 'png', 'png', 'png', 'jpeg', 'png']);
  // JPEG has no alpha: clear becomes white.
  assert.ok(isNear(await pixel(written[2], 50, 10), [255, 255, 255]));
  assert.strictEqual(fs.statSync(at('old.png')).mode & 0o777, 0o640);
});

test('a copy is turned upright, converted to sRGB, and has no metadata', async (t) => {
  const folder = temporaryDirectory(t);
  const turned = path.join(folder, 'turned.jpg');
  const wide = path.join(folder, 'wide.jpg');
  await halves(400, 200)
    .withExif({ IFD0: { Artist: 'Ann' } })
    .withMetadata({ orientation: 6 })
    .jpeg()
    .toFile(turned);
  // A green that sRGB does not have.
  await sharp({ create: { width: 64, height: 64, channels: 3, background: { r: 0, g: 255, b: 0 } } })
    .withIccProfile('p3')
    .jpeg({ quality: 100 })
    .toFile(wide);
  const plain = path.join(folder, 'plain.png');
  await sharp({ create: { width: 64, height: 64, channels: 3, background: { r: 17, g: 80, b: 200 } } })
    .png()
    .toFile(plain);
  const [upright, green, same] = await scale(t, [
    [turned, path.join(folder, 'upright.jpg'), 100, 100],
    [wide, path.join(folder, 'green.png'), 32, 32],
    [plain, path.join(folder, 'same.png'), 32, 32],
  ]);
  const facts = await sharp(upright).metadata();
  assert.deepStrictEqual([facts.width, facts.height, facts.orientation, facts.exif], [50, 100, undefined, undefined]);
  assert.ok(isNear(await pixel(upright, 45, 50), [255, 0, 0], 30), 'what was above is at the right');
  assert.ok(isNear(await pixel(upright, 5, 50), [0, 0, 255], 30));
  assert.strictEqual((await sharp(green).metadata()).icc, undefined);
  assert.ok(isNear(await pixel(green, 16, 16), [0, 255, 0], 6), String(await pixel(green, 16, 16)));
  assert.ok(isNear(await pixel(same, 16, 16), [17, 80, 200], 1), String(await pixel(same, 16, 16)));
});

test('animations keep their frames', async (t) => {
  const folder = temporaryDirectory(t);
  const frames = ['red', 'lime', 'blue'].map((background) => ({
    create: { width: 80, height: 60, channels: 4, background },
  }));
  const file = path.join(folder, 'a.gif');
  await sharp(frames, { join: { animated: true } })
    .gif({ delay: [100, 200, 300], loop: 2 })
    .toFile(file);
  const [gif, webp, jpeg] = await scale(
    t,
    ['b.gif', 'b.webp', 'b.jpg'].map((name) => [file, path.join(folder, name), 40, 40]),
  );
  for (const animated of [gif, webp]) {
    const { pages, pageHeight, width, delay } = await sharp(animated, { animated: true }).metadata();
    assert.deepStrictEqual([pages, pageHeight, width, delay], [3, 30, 40, [100, 200, 300]], animated);
  }
  const { pages, height } = await sharp(jpeg).metadata();
  assert.deepStrictEqual([pages ?? 1, height], [1, 30]);
});

// A PNG that claims a size, with next to no data.
function bomb(width, height) {
  const { crc32, deflateSync } = require('zlib');
  const table = Array.from({ length: 256 }, (_, n) => {
    let c = n;
    for (let k = 0; k < 8; ++k) c = c & 1 ? 0xedb88320 ^ (c >>> 1) : c >>> 1;
    return c >>> 0;
  });
  const checksum = crc32 ?? ((bytes) => ~bytes.reduce((c, b) => table[(c ^ b) & 255] ^ (c >>> 8), -1) >>> 0);
  const chunk = (type, data) => {
    const body = Buffer.concat([Buffer.from(type), data]);
    const ends = [Buffer.alloc(4), Buffer.alloc(4)];
    ends[0].writeUInt32BE(data.length);
    ends[1].writeUInt32BE(checksum(body) >>> 0);
    return Buffer.concat([ends[0], body, ends[1]]);
  };
  const header = Buffer.alloc(13);
  header.writeUInt32BE(width, 0);
  header.writeUInt32BE(height, 4);
  header.set([8, 6, 0, 0, 0], 8);
  const data = deflateSync(Buffer.alloc(1 << 20));
  return Buffer.concat([
    Buffer.from('\x89PNG\r\n\x1a\n', 'latin1'),
    chunk('IHDR', header),
    chunk('IDAT', data),
    chunk('IEND', Buffer.alloc(0)),
  ]);
}

test('a file that can’t be read, decoded or written gives null and a warning, and leaves no file', async (t) => {
  const folder = temporaryDirectory(t);
  const at = (name) => path.join(folder, name);
  const png = await makeImage(folder, 'a.png');
  const whole = await sharp(require('crypto').randomBytes(300 * 300 * 3), {
    raw: { width: 300, height: 300, channels: 3 },
  })
    .png()
    .toBuffer();
  fs.writeFileSync(at('cut.png'), whole.subarray(0, whole.length / 2));
  fs.writeFileSync(at('bomb.png'), bomb(60000, 60000));
  fs.writeFileSync(at('text.png'), 'no image');
  fs.writeFileSync(at('empty.png'), '');
  execFileSync('mkfifo', [at('pipe.png')]);
  const sources = ['cut.png', 'bomb.png', 'text.png', 'empty.png', 'pipe.png', 'missing.png', '.'].map(at);
  const calls = [
    ...sources.map((file) => [file, at('x.png'), 100, 100]),
    ['', at('x.png'), 100, 100],
    [png, at('none/x.png'), 100, 100],
    [png, '', 100, 100],
    [png, '/proc/self/status/x.png', 100, 100],
    [`${png}\0`, at('x.png'), 100, 100],
    [png, `${at('x')}${'y'.repeat(300)}`, 100, 100],
    [png, '/'.padEnd(20000, 'z'), 100, 100],
  ];
  const before = fs.readdirSync(folder);
  const { answers, reasons, after } = await run(
    t,
    `p.captureLog();
     const answers = ${JSON.stringify(calls)}.map((args) => m.scaleImage(...args));
     p.flushLog();
     const reasons = p.capturedLog().filter(({ flag }) => flag === 2).map(({ text }) => text);
     console.log(JSON.stringify({ answers, reasons, after: m.scaleImage(${JSON.stringify(png)}, ${JSON.stringify(at('x.png'))}, 100, 100) }));`,
  );
  assert.deepStrictEqual(
    answers,
    calls.map(() => null),
  );
  assert.strictEqual(reasons.length, calls.length);
  assert.match(reasons[1], /too many pixels/);
  assert.strictEqual(after, at('x.png'));
  assert.deepStrictEqual(fs.readdirSync(folder).sort(), [...before, 'x.png'].sort());
});

test('when the copy can’t be written completely, the existing target stays', async (t) => {
  const folder = temporaryDirectory(t);
  const target = path.join(folder, 'target.png');
  const noise = path.join(folder, 'noise.png');
  fs.writeFileSync(target, 'what was there');
  await sharp(require('crypto').randomBytes(600 * 600 * 3), { raw: { width: 600, height: 600, channels: 3 } })
    .png()
    .toFile(noise);
  // No file of this process, or of those it starts, may have more than 100 KB.
  const within = ['bash', '-c', 'ulimit -f 100; exec "$@"', '-'];
  assert.deepStrictEqual(await scale(t, [[noise, target, 500, 500]], { within }), [null]);
  assert.strictEqual(fs.readFileSync(target, 'utf8'), 'what was there');
  assert.deepStrictEqual(fs.readdirSync(folder).sort(), ['noise.png', 'target.png']);
});

test('a photo of fifty megapixels is scaled', async (t) => {
  const folder = temporaryDirectory(t);
  const file = path.join(folder, 'large.jpg');
  await sharp({ create: { width: 8660, height: 5774, channels: 3, background: '#68a' } })
    .jpeg()
    .toFile(file);
  const [copy] = await scale(t, [[file, path.join(folder, 'small.jpg'), 1600, 1600]]);
  const { width, height } = await sharp(copy).metadata();
  assert.deepStrictEqual([width, height], [1600, 1067]);
});

test('an image that takes too long to decode is given up within two seconds, with a warning', async (t) => {
  const folder = temporaryDirectory(t);
  const drawing = path.join(folder, 'hostile.svg');
  fs.writeFileSync(drawing, hostileDrawing());
  const { answer, elapsed, warnings } = await run(
    t,
    `p.captureLog();
     const start = Date.now();
     const answer = m.scaleImage(${JSON.stringify(drawing)}, ${JSON.stringify(path.join(folder, 'a.png'))}, 0, 0);
     const elapsed = Date.now() - start;
     p.flushLog();
     console.log(JSON.stringify({ answer, elapsed, warnings: p.capturedLog().filter(({ flag }) => flag === 2).length }));`,
  );
  assert.deepStrictEqual([answer, warnings], [null, 1]);
  assert.ok(elapsed < 2500, `${elapsed} ms`);
  assert.deepStrictEqual(fs.readdirSync(folder), ['hostile.svg']);
});

test('the decoder program is started again after a crash', async (t) => {
  const folder = temporaryDirectory(t);
  const png = await makeImage(folder, 'a.png');
  const target = path.join(folder, 'b.png');
  const [first, killed, second] = await run(
    t,
    `const { execFileSync } = require('child_process');
     const scale = () => m.scaleImage(${JSON.stringify(png)}, ${JSON.stringify(target)}, 100, 100);
     const first = scale();
     const [own] = execFileSync('pgrep', ['-P', String(process.pid), 'TessaroPictures']).toString().trim().split('\\n');
     process.kill(Number(own), 'SIGKILL');
     const gone = () => { try { return /^State:\\s+Z/m.test(require('fs').readFileSync('/proc/' + own + '/status', 'utf8')); } catch { return true; } };
     while (!gone());
     console.log(JSON.stringify([first, Number(own) > 0, scale()]));`,
  );
  assert.deepStrictEqual([first, killed, second], [target, true, target]);
});

test('a decoder program that hangs fails one job and is replaced', async (t) => {
  const folder = temporaryDirectory(t);
  const png = await makeImage(folder, 'a.png');
  const target = path.join(folder, 'b.png');
  const results = await run(
    t,
    `const { execFileSync } = require('child_process');
     const scale = () => m.scaleImage(${JSON.stringify(png)}, ${JSON.stringify(target)}, 100, 100);
     const results = [scale()];
     const [own] = execFileSync('pgrep', ['-P', String(process.pid), 'TessaroPictures']).toString().trim().split('\\n');
     process.kill(Number(own), 'SIGSTOP');
     while (results.at(-1) !== null) results.push(scale());
     console.log(JSON.stringify([...results, scale()]));`,
  );
  // The process that was forked ahead may still take a job.
  assert.ok(results.length <= 4, JSON.stringify(results));
  assert.deepStrictEqual(results.slice(-2), [null, target]);
});

// ---- The pasteboard

const inSession = (t, source) => run(t, source, { env: session.env });

test('the image on the pasteboard is written to a file', async (t) => {
  const folder = temporaryDirectory(t);
  const contents = {};
  for (const kind of ['png', 'jpg', 'gif', 'tiff', 'webp'])
    contents[kind] = (await makers[kind](60, 40)).toString('base64');
  const copied = await makeImage(folder, 'copied.webp');
  const target = path.join(folder, 'not', 'there');
  const fileURL = (url) => ({ 'public.file-url': Buffer.from(url).toString('base64') });
  const table = [
    [{ types: { 'public.png': contents.png } }, 'Pasted Image.png', 'png'],
    [{ types: { 'public.png': contents.png } }, 'Pasted Image 2.png', 'png'],
    [{ types: { 'public.jpeg': contents.jpg, NSTIFFPboardType: contents.tiff } }, 'Pasted Image.jpg', 'jpeg'],
    [{ types: { 'public.gif': contents.gif } }, 'Pasted Image.gif', 'gif'],
    [{ types: { NSTIFFPboardType: contents.tiff } }, 'Pasted Image 3.png', 'png'],
    // Not decoded by AppKit, which doesn't know the format, but in the decoder's process.
    [{ types: { NSTIFFPboardType: contents.webp } }, 'Pasted Image 4.png', 'png'],
    [{ files: [copied] }, 'copied.webp', 'webp'],
    [{ files: ['/etc/passwd'] }, null],
    ...['file://otherhost', 'https://localhost', 'file:.'].map((start) => [{ types: fileURL(start + copied) }, null]),
    [{ types: fileURL(`file://localhost${copied}`) }, 'copied 2.webp', 'webp'],
    [{ text: 'no image' }, null],
    [{ types: {} }, null],
    [{ types: { 'public.png': Buffer.from('no image').toString('base64') } }, null],
  ];
  const files = await inSession(
    t,
    `console.log(JSON.stringify(${JSON.stringify(table.map(([content]) => content))}.map((content) => {
       pasteboard.put(content);
       return m.imageFromPasteboard(${JSON.stringify(target)});
     })))`,
  );
  assert.deepStrictEqual(
    files,
    table.map(([, name]) => (name === null ? null : path.join(target, name))),
  );
  for (const [index, [, , format]] of table.entries()) {
    if (format) assert.strictEqual((await sharp(files[index]).metadata()).format, format);
  }
  assert.strictEqual(fs.readdirSync(target).length, 8);
});

test('without a usable folder no image is pasted', async (t) => {
  const file = path.join(temporaryDirectory(t), 'file');
  fs.writeFileSync(file, '');
  const png = (await makers.png(8, 8)).toString('base64');
  const answers = await inSession(
    t,
    `pasteboard.put({ types: { 'public.png': ${JSON.stringify(png)} } });
     console.log(JSON.stringify(['', ${JSON.stringify(file)}, ${JSON.stringify(`${file}/x`)}].map((folder) => m.imageFromPasteboard(folder))));`,
  );
  assert.deepStrictEqual(answers, [null, null, null]);
});
