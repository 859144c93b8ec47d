'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');

const { ok, failed, notOffered } = require('./rows');

exports.title = 'Images and previews';
exports.needs = ['module'];

const svg = `<svg xmlns="http://www.w3.org/2000/svg" width="600" height="400">
  <rect width="600" height="400" fill="#f4ecd8"/><circle cx="300" cy="200" r="140" fill="#c0392b"/>
  <path d="M300 60 L360 250 L180 130 L420 130 L240 250 Z" fill="#f1c40f"/></svg>`;

// One page that says "Hello".
function pdf() {
  const stream = 'BT /F1 48 Tf 60 700 Td (Hello from page one) Tj ET 1 0 0 RG 6 w 60 680 m 540 680 l S';
  return `%PDF-1.4
1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj
2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj
3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 600 800]/Contents 4 0 R/Resources<</Font<</F1 5 0 R>>>>>>endobj
4 0 obj<</Length ${stream.length}>>stream
${stream}
endstream endobj
5 0 obj<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>endobj
trailer<</Root 1 0 R>>
`;
}

const letter = 'Dear Ann,\n\nlunch at one? The menu is attached.\n\nBob\n';

function attachments(folder) {
  const files = { 'star.svg': svg, 'menu.pdf': pdf(), 'letter.txt': letter };
  for (const [name, contents] of Object.entries(files)) fs.writeFileSync(path.join(folder, name), contents);
  return Object.keys(files).map((name) => path.join(folder, name));
}

const sizeOf = async (stage, file) =>
  file === null ? 'nothing' : ((await stage.run('identify', '-format', '%m %wx%h', file)) ?? path.basename(file));

async function previews(stage, files, folder) {
  const preview = (file) => new Promise((resolve) => stage.module.generatePreview(file, 256, folder, resolve));
  const made = await Promise.all(files.map(preview));
  const sizes = await Promise.all(made.map((file) => sizeOf(stage, file)));
  const result = made.includes(null) ? failed : ok;
  return result('Previews', files.map((file, index) => `${path.basename(file)} as ${sizes[index]}`).join(', '));
}

async function scaling(stage, [drawing], folder) {
  const { module } = stage;
  const image = module.scaleImage(drawing, path.join(folder, 'photo.png'), 0, 0);
  const small = module.scaleImage(image ?? '', folder, 200, 100);
  const detail = `${await sizeOf(stage, image)} to ${await sizeOf(stage, small)}, web image: ${module.isWebImagePath(small ?? '')}`;
  return small !== null ? ok('Scaling', detail) : failed('Scaling', detail);
}

function pasting({ module }, folder) {
  if (!process.env.TESSARO_SESSION) return notOffered('Image from the pasteboard', 'yours is left alone');
  if (!module.writeFileContentsToGeneralPasteboard(path.join(folder, 'photo.png'))) {
    return failed('Image from the pasteboard', 'it could not be put there');
  }
  const file = module.imageFromPasteboard(path.join(folder, 'pasted'));
  return file !== null
    ? ok('Image from the pasteboard', path.basename(file))
    : failed('Image from the pasteboard', 'none');
}

async function quickLook(stage, files) {
  if (!stage.display.display) return notOffered('Quick look', 'no display');
  const key = async (name) => {
    await stage.run('xdotool', 'search', '--onlyvisible', '--name', name, 'windowactivate', '--sync');
    return (which) => stage.run('xdotool', 'key', which);
  };
  const closed = new Promise((resolve) => stage.module.quickLook(stage.window, JSON.stringify(files), 0, resolve));
  const shown = async (name) =>
    stage.until(
      async () => (await stage.run('xdotool', 'search', '--onlyvisible', '--name', `^${name}$`)) !== undefined,
    );
  if (!(await shown('star.svg'))) return failed('Quick look', 'no panel');
  await (
    await key('star.svg')
  )('Right');
  await shown('menu.pdf');
  await new Promise((resolve) => setTimeout(resolve, 800));
  const picture = await stage.screenshot();
  await (
    await key('menu.pdf')
  )('Escape');
  const last = await Promise.race([closed, stage.until(() => false)]);
  const result = last && path.basename(last) === 'menu.pdf' ? ok : failed;
  return result('Quick look', `arrow, Escape: closed at ${last && path.basename(last)}; ${picture ?? 'no picture'}`);
}

exports.run = async (stage) => {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tour-'));
  try {
    const files = attachments(folder);
    return [
      await scaling(stage, files, folder),
      await previews(stage, files, folder),
      pasting(stage, folder),
      await quickLook(stage, files),
    ];
  } finally {
    fs.rmSync(folder, { recursive: true, force: true });
  }
};
