'use strict';

const { randomBytes } = require('crypto');
const sharp = require('sharp');
const { assert, execFileSync, fs, path, scenarios, temporaryDirectory, temporaryFiles, test } = require('./support');
const { buildDirectory } = require('./support/addon');

const plain = scenarios();

const scale = (t, calls, options = {}) =>
  plain.with(options)(t, ({ native }, all) => all.map((args) => native.scaleImage(...args)), calls);

const solid = (width, height, background) => ({ create: { width, height, channels: 4, background } });

// Red above, blue below; with alpha, the upper half is clear.
const halves = (width, height, alpha = 1) =>
  sharp(solid(width, height, { r: 255, g: 0, b: 0, alpha })).composite([
    { input: solid(width, height / 2, { r: 0, g: 0, b: 255, alpha: 1 }), left: 0, top: height / 2 },
  ]);

const noise = (length) =>
  sharp(randomBytes(length * length * 3), { raw: { width: length, height: length, channels: 3 } }).png();

const makers = {
  png: (width, height) => halves(width, height, 0).png().toBuffer(),
  jpg: (width, height) => halves(width, height).jpeg().toBuffer(),
  gif: (width, height) => halves(width, height).gif().toBuffer(),
  webp: (width, height) => halves(width, height, 0).webp().toBuffer(),
  avif: (width, height) => halves(width, height).removeAlpha().avif({ effort: 0 }).toBuffer(),
  tiff: (width, height) => halves(width, height).tiff().toBuffer(),
};

async function makeImage(folder, name, [width, height] = [400, 200]) {
  const file = path.join(folder, name);
  fs.writeFileSync(file, await makers[path.extname(name).slice(1)](width, height));
  return file;
}

async function assertPixel(file, x, y, expected, tolerance = 12) {
  const { data, info } = await sharp(file).raw().toBuffer({ resolveWithObject: true });
  const actual = [...data.subarray((y * info.width + x) * info.channels, (y * info.width + x + 1) * info.channels)];
  const isNear = actual.every((value, i) => Math.abs(value - expected[i]) <= tolerance);
  assert.ok(isNear && actual.length === expected.length, `${path.basename(file)}: ${actual} instead of ${expected}`);
}

test('a web image is recognised by its contents, not by its name', async (t) => {
  const { at, folder, write } = temporaryFiles(t);
  const others = {
    'tiff.png': await makers.tiff(8, 8),
    'text.png': 'a text',
    'drawing.svg': '<svg xmlns="http://www.w3.org/2000/svg"/>',
    'sound.webp': 'RIFF\0\0\0\0WAVEfmt ',
    'film.avif': '\0\0\0\x20ftypisom',
    'short.png': '\x89PNG',
    'empty.png': '',
  };
  execFileSync('mkfifo', [at('pipe.png')]);
  const rows = [folder, '', 'a\0b.png', at('missing.png'), at('pipe.png')];
  rows.push(...Object.entries(others).map(([name, contents]) => write(name, contents)));
  const table = rows.map((file) => [file, 0]);
  for (const kind of 'png jpg gif webp avif'.split(' ')) table.push([write(kind, await makers[kind](8, 8)), 1]);
  await plain.table(t, table, ({ native }, file) => native.isWebImagePath(file));
});

test('a copy fits, keeps its shape, is never enlarged, and has its name and format from the target', async (t) => {
  const { at, folder } = temporaryFiles(t);
  for (const kind of Object.keys(makers)) await makeImage(folder, `a.${kind}`);
  const original = fs.readFileSync(at('a.png'));
  fs.mkdirSync(at('copies'));
  fs.writeFileSync(at('old.png'), 'what was there');
  fs.chmodSync(at('old.png'), 0o640);
  fs.copyFileSync(at('a.png'), at('photo [1].%s.JPG'));
  const table = [
    ['a.png', 'copies', 100, 100, 'copies/a.png', 'png 100x50'],
    ['a.png', 'copies', 100, 100, 'copies/a 2.png', 'png 100x50'],
    ['a.jpg', 'copies', 1000, 50, 'copies/a.jpg', 'jpeg 100x50'],
    ['a.avif', 'copies', 100, 100, 'copies/a 2.jpg', 'jpeg 100x50'],
    ['a.gif', 'copies', 0, 50, 'copies/a.gif', 'gif 100x50'],
    ['a.webp', 'copies', 100, -1, 'copies/a.webp', 'webp 100x50'],
    ['a.tiff', 'copies', 100, 100, 'copies/a.tiff', 'tiff 100x50'],
    ['photo [1].%s.JPG', 'copies', 100, 100, 'copies/photo [1].%s.png', 'png 100x50'],
    ['a.png', 'large.png', 1000, 1000, 'large.png', 'png 400x200'],
    ['a.png', 'same.png', 0, 0, 'same.png', 'png 400x200'],
    ['a.png', 'x.jpeg', 100, 100, 'x.jpeg', 'jpeg 100x50'],
    ['a.png', 'y', 100, 100, 'y', 'png 100x50'],
    ['a.png', 'old.png', 100, 100, 'old.png', 'png 100x50'],
    ['a.png', 'a.png', 100, 100, 'a.png', 'png 100x50'],
  ];
  const calls = table.map(([source, target, ...size]) => [at(source), at(target), ...size.slice(0, 2)]);
  const written = await scale(t, calls);
  for (const [index, [, , , , name, facts]] of table.entries()) {
    assert.strictEqual(written[index], at(name));
    const { format, width, height } = await sharp(at(name)).metadata();
    assert.strictEqual(`${format} ${width}x${height}`, facts, name);
  }
  const clear = await sharp(at('copies/a.png')).extractChannel('alpha').raw().toBuffer();
  assert.strictEqual(clear[10 * 100 + 50], 0, 'clear stays clear');
  await assertPixel(at('copies/a.png'), 50, 40, [0, 0, 255, 255]);
  // JPEG has no alpha: clear becomes white.
  await assertPixel(at('x.jpeg'), 50, 10, [255, 255, 255]);
  // A copy that fits is byte-identical.
  assert.deepStrictEqual(fs.readFileSync(at('large.png')), original);
  assert.strictEqual(fs.statSync(at('old.png')).mode & 0o777, 0o640);
});

test('a copy is turned upright, converted to sRGB, and has no metadata', async (t) => {
  const { at, folder } = temporaryFiles(t);
  const exif = { IFD0: { Artist: 'Ann' } };
  await halves(400, 200).withExif(exif).withMetadata({ orientation: 6 }).jpeg().toFile(at('turned.jpg'));
  // A green that sRGB does not have.
  const green = sharp(solid(64, 64, { r: 0, g: 255, b: 0, alpha: 1 })).removeAlpha();
  await green.withIccProfile('p3').jpeg({ quality: 100 }).toFile(at('wide.jpg'));
  const blue = sharp(solid(64, 64, { r: 17, g: 80, b: 200, alpha: 1 })).removeAlpha();
  await blue.png().toFile(at('plain.png'));
  const [upright, wide, same] = await scale(t, [
    [at('turned.jpg'), at('upright.jpg'), 100, 100],
    [at('wide.jpg'), at('green.png'), 32, 32],
    [at('plain.png'), at('same.png'), 32, 32],
  ]);
  const { width, height, orientation, exif: left } = await sharp(upright).metadata();
  assert.deepStrictEqual([width, height, orientation, left], [50, 100, undefined, undefined]);
  // The part above is at the right.
  await assertPixel(upright, 45, 50, [255, 0, 0], 30);
  await assertPixel(upright, 5, 50, [0, 0, 255], 30);
  assert.strictEqual((await sharp(wide).metadata()).icc, undefined);
  await assertPixel(wide, 16, 16, [0, 255, 0], 6);
  await assertPixel(same, 16, 16, [17, 80, 200], 1);
});

test('a reduced image has the pixels of a Lanczos reduction', async (t) => {
  const { at } = temporaryFiles(t);
  for (const [name, channels] of Object.entries({ 'a.jpg': 3, 'b.png': 4 })) {
    // A gradient in each channel, where the alpha changes too.
    const shade = (_, i) => 187 + 60 * Math.sin(((Math.floor(i / channels) % 640) * ((i % channels) + 1)) / 60);
    const pixels = Buffer.from(Array.from({ length: 640 * 400 * channels }, shade));
    await sharp(pixels, { raw: { width: 640, height: 400, channels } }).toFile(at(name));
    const [copy] = await scale(t, [[at(name), at(`${name}.png`), 160, 160]]);
    const actual = await sharp(copy).raw().toBuffer();
    const wanted = await sharp(at(name)).resize(160, 100).raw().toBuffer();
    assert.strictEqual(actual.length, wanted.length, name);
    const worst = wanted.reduce((most, value, i) => Math.max(most, Math.abs(value - actual[i])), 0);
    assert.ok(worst <= 6, `${name}: off by ${worst}`);
  }
});

test('animations keep their frames', async (t) => {
  const { at } = temporaryFiles(t);
  const frames = sharp(['red', 'lime', 'blue'].map((color) => solid(80, 60, color)), { join: { animated: true } }); // prettier-ignore
  await frames.gif({ delay: [100, 200, 300], loop: 2 }).toFile(at('a.gif'));
  const targets = ['b.gif', 'b.webp', 'b.jpg'].map((name) => [at('a.gif'), at(name), 40, 40]);
  const [gif, webp, jpeg] = await scale(t, targets);
  for (const animated of [gif, webp]) {
    const { pages, pageHeight, width, delay } = await sharp(animated, { animated: true }).metadata();
    assert.deepStrictEqual([pages, pageHeight, width, delay], [3, 30, 40, [100, 200, 300]], animated);
  }
  const { pages, height } = await sharp(jpeg).metadata();
  assert.deepStrictEqual([pages ?? 1, height], [1, 30]);
});

/** A GIF that claims a size, with next to no data. */
function bomb(width, height) {
  const gif = Buffer.from('47494638396100000000800000000000ffffff2c000000000000000000000202440100003b', 'hex');
  for (const offset of [6, 24]) gif.writeUInt16LE(width, offset) && gif.writeUInt16LE(height, offset + 2);
  return gif;
}

test('a file that can’t be read, decoded or written gives null and a warning, and leaves no file', async (t) => {
  const { at, folder } = temporaryFiles(t);
  const png = await makeImage(folder, 'a.png');
  const whole = await noise(300).toBuffer();
  fs.writeFileSync(at('cut.png'), whole.subarray(0, whole.length / 2));
  fs.writeFileSync(at('bomb.gif'), bomb(60000, 60000));
  fs.writeFileSync(at('text.png'), 'no image');
  fs.writeFileSync(at('empty.png'), '');
  execFileSync('mkfifo', [at('pipe.png')]);
  const sources = ['bomb.gif', 'cut.png', 'text.png', 'empty.png', 'pipe.png', 'missing.png', '.'].map(at);
  const tooLong = [`${at('x')}${'y'.repeat(300)}`, '/'.padEnd(20000, 'z')];
  const targets = [at('none/x.png'), '', '/proc/self/status/x.png', ...tooLong];
  const failing = [...sources, '', `${png}\0`].map((source) => [source, at('x.png')]);
  const calls = [...failing, ...targets.map((target) => [png, target]), [png, at('x.png')]];
  const before = fs.readdirSync(folder);
  const work = ({ captureLog, log, native }, all) => {
    captureLog();
    return [all.map((each) => native.scaleImage(...each, 100, 100)), log(2)];
  };
  const [answers, reasons] = await plain(t, work, calls);
  assert.deepStrictEqual(answers, [...Array(calls.length - 1).fill(null), at('x.png')]);
  assert.strictEqual(reasons.length, calls.length - 1);
  assert.match(reasons[0], /too many pixels/);
  assert.deepStrictEqual(fs.readdirSync(folder).sort(), [...before, 'x.png'].sort());
});

test('when the copy can’t be written completely, the existing target stays', async (t) => {
  const { at, folder, write } = temporaryFiles(t);
  const target = write('target.png', 'what was there');
  await noise(600).toFile(at('noise.png'));
  // No file of this process, or of those it starts, may have more than 100 KB.
  const within = ['bash', '-c', 'ulimit -f 100; exec "$@"', '-'];
  assert.deepStrictEqual(await scale(t, [[at('noise.png'), target, 500, 500]], { within }), [null]);
  assert.strictEqual(fs.readFileSync(target, 'utf8'), 'what was there');
  assert.deepStrictEqual(fs.readdirSync(folder).sort(), ['noise.png', 'target.png']);
});

test('a photo of fifty megapixels is scaled', async (t) => {
  const { at } = temporaryFiles(t);
  await sharp(solid(8660, 5774, '#68a')).toFile(at('large.jpg'));
  // On a busy machine the time limit of a job may be too short at first.
  const work = ({ eventually, native }, ...paths) =>
    eventually(() => native.scaleImage(...paths, 1600, 1600), 'the copy');
  const { width, height } = await sharp(await plain(t, work, at('large.jpg'), at('small.jpg'))).metadata();
  assert.deepStrictEqual([width, height], [1600, 1067]);
});

test('an image that takes too long to decode is given up within two seconds, with a warning', async (t) => {
  const { at, folder, write } = temporaryFiles(t);
  // Filters that keep a processor busy for half a minute, in 4 kB.
  const turbulence = (_, n) => `<feTurbulence baseFrequency="0.0${n + 10}" numOctaves="9" seed="${n}"/>`;
  const filter = `<filter id="f">${Array.from({ length: 50 }, turbulence).join('')}</filter>`;
  const size = 'width="2000" height="2000"';
  const svg = `<svg xmlns="http://www.w3.org/2000/svg" ${size}>${filter}<rect ${size} filter="url(#f)"/></svg>`;
  const work = ({ assert, captureLog, equal, log, native }, ...paths) => {
    captureLog();
    const start = Date.now();
    equal([native.scaleImage(...paths, 0, 0), log(2).length], [null, 1]);
    assert.ok(Date.now() - start < 2500, `${Date.now() - start} ms`);
    return true;
  };
  await plain(t, work, write('hostile.svg', svg), at('a.png'));
  assert.deepStrictEqual(fs.readdirSync(folder), ['hostile.svg']);
});

test('the decoder program is replaced after a crash, and after a job for which it hangs', async (t) => {
  const { at, folder } = temporaryFiles(t);
  const [png, target] = [await makeImage(folder, 'a.png'), at('b.png')];
  const work = async ({ equal, eventually, native, run }, source, copy, signal) => {
    const scale = () => native.scaleImage(source, copy, 100, 100);
    equal(scale(), copy);
    const [decoder] = (await run('pgrep', '-P', process.pid, 'TessaroPictures')).split('\n');
    process.kill(Number(decoder), signal);
    const state = () => run('ps', '-o', 'stat=', '-p', decoder).catch(() => 'Z');
    await eventually(async () => /^[ZT]/.test(await state()), signal);
    const results = [scale()];
    // The process that was forked ahead may still take a job.
    while (signal === 'SIGSTOP' && results.at(-1) !== null && results.length < 3) results.push(scale());
    return [results.at(-1), scale()];
  };
  assert.deepStrictEqual(await plain(t, work, png, target, 'SIGKILL'), [target, target]);
  assert.deepStrictEqual(await plain(t, work, png, target, 'SIGSTOP'), [null, target]);
});

test('a decoder that writes its reply without end is given up at once', async (t) => {
  const { at, folder } = temporaryFiles(t);
  const program = `#!/usr/bin/python3
import os, socket
jobs = socket.socket(fileno=0)
while pipes := socket.recv_fds(jobs, 65536, 1)[1]:
    if os.fork() == 0:
        while True: os.write(pipes[0], b'+' * 65536)
    os.close(pipes[0])
`;
  // Not links: the module looks for the program beside its real file.
  for (const file of ['TessaroNative.node', 'TessaroNativeProbe.node'])
    fs.copyFileSync(path.join(buildDirectory, file), at(file));
  fs.writeFileSync(at('TessaroPictures'), program, { mode: 0o755 });
  const png = await makeImage(folder, 'a.png');
  const work = async ({ captureLog, eventually, log, native }, source, target) => {
    captureLog();
    const answers = [native.scaleImage(source, `${target}/b.png`, 100, 100)];
    native.generatePreview(source, 64, target, (preview) => answers.push(preview));
    await eventually(() => answers.length === 2, 'the preview');
    return [...answers, log(2).filter((line) => line.endsWith("the decoder's reply is too long")).length];
  };
  const env = { TESSARO_BUILD_DIR: folder };
  assert.deepStrictEqual(await plain.with({ env })(t, work, png, folder), [null, null, 2]);
});

const inSession = plain.with({ display: true });

test('the image on the pasteboard is written to a file', async (t) => {
  const folder = temporaryDirectory(t);
  const data = {};
  const base64 = (contents) => Buffer.from(contents).toString('base64');
  for (const kind of ['png', 'jpg', 'gif', 'tiff', 'webp']) data[kind] = base64(await makers[kind](60, 40));
  const copied = await makeImage(folder, 'copied.webp');
  const target = path.join(folder, 'not', 'there');
  const fileURL = (start) => ({ types: { 'public.file-url': base64(start + copied) } });
  const table = [
    [{ types: { 'public.png': data.png } }, 'Pasted Image.png', 'png'],
    [{ types: { 'public.png': data.png } }, 'Pasted Image 2.png', 'png'],
    [{ types: { 'public.jpeg': data.jpg, NSTIFFPboardType: data.tiff } }, 'Pasted Image.jpg', 'jpeg'],
    [{ types: { 'public.gif': data.gif } }, 'Pasted Image.gif', 'gif'],
    [{ types: { NSTIFFPboardType: data.tiff } }, 'Pasted Image 3.png', 'png'],
    // Not decoded by AppKit, which doesn't know the format, but in the decoder's process.
    [{ types: { NSTIFFPboardType: data.webp } }, 'Pasted Image 4.png', 'png'],
    [{ files: [copied] }, 'copied.webp', 'webp'],
    [fileURL('file://localhost'), 'copied 2.webp', 'webp'],
    ...['file://otherhost', 'https://localhost', 'file:.'].map((start) => [fileURL(start), null]),
    ...[{ files: ['/etc/passwd'] }, { text: 'no image' }, { types: {} }].map((content) => [content, null]),
    [{ types: { 'public.png': base64('no image') } }, null],
  ];
  const rows = table.map(([content, name]) => [content, name === null ? null : path.join(target, name)]);
  const paste = ({ native, pasteboard }, content, at) => {
    pasteboard.put(content);
    return native.imageFromPasteboard(at);
  };
  await inSession.table(t, rows, paste, target);
  for (const [, name, format] of table.filter(([, name]) => name !== null)) {
    assert.strictEqual((await sharp(path.join(target, name)).metadata()).format, format);
  }
  assert.strictEqual(fs.readdirSync(target).length, 8);
  // Without a usable folder no image is pasted.
  const folders = ['', copied, `${copied}/x`].map((at) => [{ types: { 'public.png': data.png } }, at, null]);
  await inSession.table(t, folders, paste);
});
