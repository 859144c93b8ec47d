'use strict';

// Scaling a photo of 24 megapixels beside sharp, the smallest job, the first picture, and previews.

const { execFileSync } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');
const sharp = require('sharp');

const { report, summaries, summary, takeTurns } = require('./support');

const native = require('..');

// Each of the module's jobs decodes in new memory, without a cache: so does sharp's.
sharp.cache(false);

const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tessaro-bench-'));
process.on('exit', () => fs.rmSync(folder, { recursive: true, force: true }));
const at = (name) => path.join(folder, name);

const rounds = 9;
const largest = 1600;

/** Coarse and fine noise, which costs a decoder about what a photo does. */
async function makePhoto() {
  const noise = (width, height) =>
    sharp({
      create: { width, height, channels: 3, background: '#000', noise: { type: 'gaussian', mean: 128, sigma: 40 } },
    });
  const coarse = await noise(150, 100).resize(6000, 4000, { kernel: 'cubic' }).png().toBuffer();
  const fine = await noise(1500, 1000).resize(6000, 4000).png().toBuffer();
  await sharp(coarse)
    .composite([{ input: fine, blend: 'soft-light' }])
    .jpeg({ quality: 90 })
    .toFile(at('photo.jpg'));
}

const alternate = async (contestants) => summaries(await takeTurns(contestants, { rounds }));

const ms = { unit: 'ms', scale: 1e6 };

const bySharp = (name, size) =>
  sharp(at(name)).autoOrient().resize(size, size, { fit: 'inside', withoutEnlargement: true });

async function scaling() {
  const size = (fs.statSync(at('photo.jpg')).size / 1e6).toFixed(1);
  const { width, height } = await sharp(at('photo.jpg')).metadata();
  report(
    `${width} × ${height} JPEG of ${size} MB to ${largest} pixels`,
    await alternate({
      module: () => native.scaleImage(at('photo.jpg'), at('a.jpg'), largest, largest),
      sharp: () => bySharp('photo.jpg', largest).jpeg({ quality: 85 }).toFile(at('b.jpg')),
    }),
    ms,
  );
  await bySharp('photo.jpg', 3000).png().toFile(at('screen.png'));
  report(
    'PNG of 3000 pixels to a WebP of 800',
    await alternate({
      module: () => native.scaleImage(at('screen.png'), at('a.webp'), 800, 800),
      sharp: () => bySharp('screen.png', 800).webp({ quality: 85 }).toFile(at('b.webp')),
    }),
    ms,
  );
  await bySharp('photo.jpg', 64).png().toFile(at('small.png'));
  report(
    'A PNG of 64 pixels to 32, the smallest job',
    await alternate({
      module: () => native.scaleImage(at('small.png'), at('a.png'), 32, 32),
      sharp: () => bySharp('small.png', 32).png().toFile(at('b.png')),
    }),
    ms,
  );
}

async function previews() {
  fs.writeFileSync(at('letter.txt'), 'Dear Ann,\n\nlunch at one?\n'.repeat(40));
  const preview = (name) => () =>
    new Promise((resolve) => native.generatePreview(at(name), 256, at('previews'), resolve));
  report(
    'Preview of 256 pixels',
    await alternate({
      'photo.jpg': preview('photo.jpg'),
      'photo.jpg, by sharp': () => bySharp('photo.jpg', 256).png().toFile(at('c.png')),
      'letter.txt': preview('letter.txt'),
    }),
    ms,
  );
}

async function firstPicture() {
  await sharp({ create: { width: 64, height: 64, channels: 3, background: '#68a' } })
    .png()
    .toFile(at('first.png'));
  const start = process.hrtime.bigint();
  native.scaleImage(at('first.png'), at('a.png'), 32, 32);
  return Number(process.hrtime.bigint() - start);
}

/** The first picture of several processes. */
function firstPictures() {
  const first = () => Number(execFileSync(process.execPath, [__filename, 'first'], { encoding: 'utf8' }));
  const times = Array.from({ length: rounds }, first);
  report('The first picture, with the start of the program', { module: summary(times) }, ms);
}

async function main() {
  const idle = setInterval(() => {}, 1000);
  firstPictures();
  await makePhoto();
  await scaling();
  await previews();
  clearInterval(idle);
}

if (process.argv[2] === 'first') {
  firstPicture().then((time) => console.log(time));
} else {
  main();
}
