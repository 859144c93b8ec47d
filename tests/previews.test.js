'use strict';

const sharp = require('sharp');
const { assert, fs, path, scenarios, serve, temporaryFiles, test } = require('./support');

const plain = scenarios();
const inWindows = scenarios({
  display: true,
  uses: ['windows'],
  fixture: ({ attempt, eventually }) => ({
    /** The first keys may come before the window manager has given the panel the keyboard. */
    keyUntil: (panel, key, isDone, description) =>
      eventually(async () => {
        if (await isDone()) return true;
        await attempt('xdotool', 'windowactivate', panel, 'key', key);
        return eventually(isDone, description, 1000).catch(() => false);
      }, description),
  }),
});

const page = (stream, size = '600 800') => `%PDF-1.4
1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj
2 0 obj<</Type/Pages/Kids[3 0 R 5 0 R]/Count 2>>endobj
3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 ${size}]/Contents 4 0 R>>endobj
4 0 obj<</Length ${stream.length}>>stream
${stream}
endstream endobj
5 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 10 10]>>endobj
trailer<</Root 1 0 R>>
`;

const svg = (contents, size = 'width="200" height="100"') =>
  `<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" ${size}>${contents}</svg>`;

/** Makes a preview for each [file, size, folder]: the calls of the callbacks, and the number of warnings. */
function preview(t, calls) {
  const makeEach = async ({ captureLog, eventually, log, native, nextTurn }, all) => {
    captureLog();
    const answers = all.map(() => []);
    let inside = true;
    all.forEach((args, i) =>
      native.generatePreview(...args, function (...values) {
        answers[i].push([inside, this === null || this === globalThis, ...values]);
      }),
    );
    inside = false;
    await eventually(() => answers.every((each) => each.length > 0), 'all previews');
    // A second call would come in one of the next turns.
    for (let i = 0; i < 20; ++i) await nextTurn();
    return { answers, warnings: log(2).length };
  };
  return plain(t, makeEach, calls);
}

test('the preview of an image, a PDF or a text is a PNG of the size, delivered once on a later turn', async (t) => {
  const { at, write } = temporaryFiles(t);
  const target = at('to/previews');
  const blue = { create: { width: 800, height: 400, channels: 3, background: '#68a' } };
  const photo = await sharp(blue).jpeg().toBuffer();
  const table = [
    [write('photo.jpg', photo), 128, [128, 64]],
    [write('small.jpg', await sharp(photo).resize(40).toBuffer()), 128, [40, 20]],
    [write('page.pdf', page('0 1 0 rg 0 0 600 800 re f')), 128, [96, 128]],
    [write('drawing.svg', svg('<rect width="200" height="100" fill="#00f"/>')), 400, [400, 200]],
    [write('letter.txt', 'Dear Ann,\n\nlunch?\n'), 128, [96, 128]],
    [write('no name', 'Grüße\t<b>&amp;</b> 😀\r\n'.repeat(5000)), 256, [192, 256]],
    [write('latin.txt', Buffer.from('Grüße', 'latin1')), 512, [384, 512]],
    [write('wide.txt', Buffer.from('\ufeffGrüße', 'utf16le')), 512, [384, 512]],
    [write('long.txt', 'x'.repeat(1 << 20)), 64, [48, 64]],
    [write('-v [1].txt', 'a name like an option'), 64, [48, 64]],
  ];
  const calls = table.map(([file, size]) => [file, size, target]);
  const { answers, warnings } = await preview(t, calls);
  assert.strictEqual(warnings, 0);
  for (const [index, [file, , [width, height]]] of table.entries()) {
    assert.strictEqual(answers[index].length, 1, file);
    const [inside, hasNoReceiver, picture] = answers[index][0];
    assert.deepStrictEqual([inside, hasNoReceiver, path.dirname(picture)], [false, true, target]);
    const facts = await sharp(picture).metadata();
    assert.deepStrictEqual([facts.format, facts.width, facts.height], ['png', width, height], file);
  }
  for (const index of [4, 5, 6, 7]) {
    const { channels } = await sharp(answers[index][0][2]).stats();
    assert.ok(channels[0].min < 128 && channels[0].max === 255, `${table[index][0]} is a blank page`);
  }
  const { dominant } = await sharp(answers[2][0][2]).stats();
  assert.ok(dominant.g > 200 && dominant.r < 50, 'the first page is shown');
});

test('previews of one image are the same', async (t) => {
  const { at } = temporaryFiles(t);
  const image = path.join(__dirname, '..', 'docs', 'images', 'tour.png');
  const calls = Array.from({ length: 12 }, (_, i) => [image, 640, at(`${i}`)]);
  const { answers } = await preview(t, calls);
  const [first, ...others] = answers.map(([[, , picture]]) => fs.readFileSync(picture));
  assert.ok(others.every((each) => each.equals(first)));
});

test('files of one name have separate previews; a preview replaces an earlier one of its file', async (t) => {
  const { at, write } = temporaryFiles(t);
  const target = at('previews');
  const files = ['a', 'b'].map((name) => write(`${name}/x.txt`, name));
  const calls = [files[0], files[1], files[0]].map((file) => [file, 64, target]);
  const { answers } = await preview(t, [...calls, [files[0], 32, target]]);
  const [first, second, again, smaller] = answers.map(([[, , picture]]) => picture);
  assert.strictEqual(first, again);
  assert.strictEqual(new Set([first, second, smaller]).size, 3);
  assert.strictEqual(fs.readdirSync(target).length, 3);
});

test('a drawing loads no other file and no URL', async (t) => {
  const { at, write } = temporaryFiles(t);
  let requests = 0;
  const server = await serve(t, (_question, answer) => answer.end(++requests));
  const red = { create: { width: 50, height: 50, channels: 3, background: '#f00' } };
  await sharp(red).png().toFile(at('secret.png'));
  write('style.css', 'rect { fill: red }');
  write('secret.txt', 'secret');
  const url = `${server}/a.png`;
  const links = ['secret.png', at('secret.png'), `file://${at('secret.png')}`, url];
  const images = links.map((link) => `<image xlink:href="${link}" width="200" height="100"/>`).join('');
  const style = `<style>@import url("style.css"); @import url("${url}");</style><use xlink:href="${url}#x"/>`;
  const blue = '<rect width="10" height="10" fill="blue"/>';
  const entity = '<!DOCTYPE svg [<!ENTITY outside SYSTEM "secret.txt">]>';
  const drawings = {
    'a.svg': svg(images + style + blue),
    'b.svg': entity + svg(`${blue}<text y="50">&outside;</text>`),
  };
  const calls = Object.entries(drawings).map((file) => [write(...file), 200, at('p')]);
  const [drawing, other] = (await preview(t, calls)).answers.map(([[, , picture]]) => picture);
  const { channels } = await sharp(drawing).stats();
  assert.deepStrictEqual([channels[0].max, channels[2].max], [0, 255], 'blue is drawn, red is not');
  // A drawing with an external entity is refused, or shown without it.
  if (other !== null) {
    const place = { left: 20, top: 20, width: 150, height: 60 };
    assert.strictEqual((await sharp(other).extract(place).stats()).channels[3].max, 0);
  }
  assert.strictEqual(requests, 0);
});

test('without a preview the callback receives null', async (t) => {
  const { at, write } = temporaryFiles(t);
  const files = {
    zip: Buffer.from('PK\x03\x04\0\0\0\0\x08', 'latin1'),
    empty: '',
    'broken.pdf': '%PDF-1.4\nno document',
    'broken.png': Buffer.from('\x89PNG\r\n\x1a\n', 'latin1'),
    'huge.svg': svg('<rect width="100%" height="100%"/>', 'width="9000000" height="9000000"'),
  };
  write('a.txt', 'a text');
  const calls = [
    ...Object.entries(files).map((file) => [write(...file), 64, at('p')]),
    ...['', at('missing'), at('.')].map((file) => [file, 64, at('p')]),
    ...[0, -5].map((size) => [at('a.txt'), size, at('p')]),
    ...['', at('a.txt'), at('a.txt/p')].map((folder) => [at('a.txt'), 64, folder]),
  ];
  const { answers } = await preview(t, calls);
  assert.deepStrictEqual(answers, Array(calls.length).fill([[false, true, null]]));
  assert.deepStrictEqual(fs.existsSync(at('p')) ? fs.readdirSync(at('p')) : [], []);
});

inWindows.test('the panel shows the preview, keys and buttons change the file', async (fixture) => {
  const { attempt, clickUntil, equal, eventually, fs, home, keyUntil } = fixture;
  const { native, nextTurn, open, run, search, shown } = fixture;
  const files = ['one.txt', 'two.svg', 'three.bin'].map((name) => `${home}/${name}`);
  const screen = `${home}/screen.png`;
  const drawing = '<rect width="200" height="100" fill="#fe0102"/>';
  const svg = `<svg xmlns="http://www.w3.org/2000/svg" width="200" height="100">${drawing}</svg>`;
  ['a text', svg, '\0\x01'].forEach((contents, i) => fs.writeFileSync(files[i], contents));
  const closed = [];
  native.quickLook(await open({ title: 'First' }), JSON.stringify(files), 0, (...args) => closed.push(args));
  const panel = await shown('one.txt');
  await keyUntil(panel, 'Right', () => search('two.svg'), 'the second');
  const middle = ['-gravity', 'center', '-crop', '1x1+0+0', '-format', '%[hex:p{0,0}]', 'info:'];
  await eventually(async () => {
    await attempt('import', '-window', panel, screen);
    return (await attempt('convert', screen, middle))?.startsWith('FE0102');
  }, 'the picture');
  const press = async (x, name) => {
    const [, height] = (await run('xdotool', 'getwindowgeometry', '--shell', panel)).match(/HEIGHT=(\d+)/);
    await clickUntil(panel, [x, height - 22], () => search(name), name);
  };
  await press(70, 'three.bin');
  await run('xdotool', 'key', 'Right');
  await press(30, 'two.svg');
  await keyUntil(panel, 'Left', () => search('one.txt'), 'the first');
  await keyUntil(panel, 'Escape', async () => !(await search('one.txt')), 'its end');
  await eventually(() => closed.length > 0, 'the callback');
  for (let i = 0; i < 50; ++i) await nextTurn();
  // The callback runs once.
  equal(closed, [[files[0]]]);
});

inWindows.test('a second request or the end of its window closes the panel', async (fixture) => {
  const { equal, eventually, fs, home, host, native, open, shown } = fixture;
  const files = ['one.txt', 'two.txt'].map((name) => `${home}/${name}`);
  for (const file of files) fs.writeFileSync(file, 'a text');
  const ends = [];
  const look = (name, window, paths, index) =>
    native.quickLook(window, paths, index, (path) => ends.push([name, path]));
  const both = JSON.stringify(files);
  const window = await open({ title: 'First' });
  look('first', window, both, 1);
  await shown('two.txt');
  look('again', window, both, 99);
  await shown('one.txt');
  host.closeWindow(window);
  await eventually(() => ends.length === 2, 'both ends');
  equal(ends.splice(0).flat(), ['first', files[1], 'again', files[0]]);
  // Without a window or files the panel never opens.
  look(0, window, both, 0);
  look(1, {}, both, 0);
  const other = await open({ title: 'Second' });
  ['[]', '{}', 'no JSON', '[1, null]'].forEach((paths, i) => look(2 + i, other, paths, 0));
  await eventually(() => ends.length === 6, 'all ends');
  const unopened = Array.from({ length: 6 }, (_, i) => [i, null]);
  equal(ends, unopened);
});
