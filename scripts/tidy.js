'use strict';

// Runs clang-tidy on the module and the host. Most of its time goes to the headers of the engine and of GNUstep, which
// nearly every file includes, so files that compile together are checked as one translation unit.

const { execFile, execFileSync } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const root = path.resolve(__dirname, '..');
const build = path.join(root, 'build', 'release');
const work = path.join(root, 'build', 'tidy');
const most = 12; // files in a unit: more of them leave processors without work at the end

function sources() {
  const patterns = ['src/*.cc', 'src/*.mm', 'host/*.cc', 'host/*.mm'];
  const listed = execFileSync('git', ['ls-files', '-co', '--exclude-standard', '--', ...patterns], { cwd: root });
  const files = listed.toString().trim().split('\n');
  return files.filter((file) => !file.startsWith('src/Platform/macOS/'));
}

// Shared sources are read without GNUstep's extensions of Cocoa: what they use then is on every system. A precompiled
// header was made with them.
function withoutExtensions(file, command) {
  if (!/^src\/(?!Platform\/)/.test(file)) return command;
  return `${command.replace(/ -Xclang -include(-pch)? -Xclang \S+/g, '')} -DNO_GNUSTEP=1`;
}

/** How the last build compiles a file, with the file's own names taken out. */
function commands() {
  const entries = JSON.parse(fs.readFileSync(path.join(build, 'compile_commands.json'), 'utf8'));
  // Some files are compiled for other engines, too, or with other names; the plain one is first.
  return new Map(
    entries.reverse().map(({ file, command }) => {
      const name = path.relative(root, file);
      return [name, withoutExtensions(name, command.replace(/ -(MT|MF|o|c) \S+/g, '').replace(/ -MD\b/, ''))];
    }),
  );
}

// The names that a file declares and the macros that it defines. Declarations begin at the first column; a few names too
// many do no harm.
function ownNames(text) {
  const declared = text
    .split('\n')
    .filter((line) => /^[A-Za-z]/.test(line) && !/^(namespace|using namespace|static_assert|return)\b/.test(line))
    .flatMap((line) => line.match(/(?<![\w:.])[A-Za-z_]\w*(?=\s*(?:[({;=[]| :|$))/g) || []);
  const defined = [...text.matchAll(/^\s*#\s*define\s+(\w+)/gm)].map((match) => match[1]);
  const words = ['const', 'final', 'noexcept', 'default', 'operator', 'nullptr', 'nil', 'void'];
  return new Set([...declared, ...defined].filter((name) => !words.includes(name)));
}

// Xlib's macros are everyday words.
const isSociable = (text) => !/<X11\//.test(text);

/** @returns {{command: string, files: string[]}[]} */
function units() {
  const how = commands();
  const found = [];
  for (const file of sources()) {
    const text = fs.readFileSync(path.join(root, file), 'utf8');
    const command = how.get(file);
    if (command === undefined) throw new Error(`${file} is not in the last build`);
    const names = ownNames(text);
    const key = command + path.extname(file);
    const isAlone = !isSociable(text);
    const place = found.find(
      (unit) =>
        !isAlone &&
        !unit.isAlone &&
        unit.key === key &&
        unit.files.length < most &&
        ![...names].some((name) => unit.names.has(name)),
    );
    if (place === undefined) {
      found.push({ key, command, isAlone, files: [file], names });
    } else {
      place.files.push(file);
      for (const name of names) place.names.add(name);
    }
  }
  return found;
}

/** Makes the unit's source and gives its entry for clang-tidy. */
function unitEntry({ command, files }, number) {
  const file = path.join(work, `${number}${path.extname(files[0])}`);
  fs.writeFileSync(file, files.map((name) => `#include "${path.join(root, name)}"\n`).join(''));
  // A name of one file may hide that of another.
  return { directory: build, command: `${command} -Wno-shadow -c ${file}`, file };
}

const tidy = (...args) =>
  new Promise((resolve) =>
    execFile('clang-tidy', ['--quiet', ...args], { cwd: root, maxBuffer: 1 << 28 }, (error, stdout) =>
      resolve({ isClean: error === null, text: stdout }),
    ),
  );

// Files that do not compile together are checked one by one.
async function examine(unit) {
  const together = await tidy('-p', work, unit.entry.file);
  return together.text.includes('clang-diagnostic') ? tidy('-p', build, ...unit.files) : together;
}

async function main() {
  fs.rmSync(work, { recursive: true, force: true });
  fs.mkdirSync(work, { recursive: true });
  const waiting = units().map((unit, i) => ({ ...unit, entry: unitEntry(unit, i) }));
  fs.writeFileSync(path.join(work, 'compile_commands.json'), JSON.stringify(waiting.map(({ entry }) => entry)));
  // The largest first, so that nothing long is left for the end.
  waiting.sort((a, b) => a.files.length - b.files.length);
  const worker = async () => {
    for (let unit = waiting.pop(); unit !== undefined; unit = waiting.pop()) {
      const { isClean, text } = await examine(unit);
      if (isClean) continue;
      console.log(text);
      process.exitCode = 1;
    }
  };
  await Promise.all(Array.from({ length: os.cpus().length }, worker));
}

main();
