'use strict';

const { assert, fs, path, test } = require('./support/node');
const { scenarios, temporaryDirectory } = require('./support');

const plain = scenarios();

test('a path stays inside its quotes in the script for the Finder', async (t) => {
  const paths = { '/tmp/a.txt': '"/tmp/a.txt"', '/tmp/"\\nquit "': '"/tmp/\\"\\\\nquit \\""', 'a\\': '"a\\\\"' };
  const write = ({ macBodies }, all) => all.map(macBodies.informationWindowScript);
  const scripts = await plain(t, write, Object.keys(paths));
  Object.values(paths).forEach((quoted, i) => assert.ok(scripts[i].includes(`POSIX file ${quoted}\n`), scripts[i]));
});

test('modifiers have the values of Carbon', (t) => {
  const rows = ['0', '256 command', '512 shift', '2048 option', '4096 control', '768 command shift'].map((row) => {
    const [value, ...held] = row.split(' ');
    return [held, Number(value)];
  });
  return plain.table(t, rows, ({ macBodies }, held) => macBodies.carbonModifiers(held));
});

test('a copy of a picture gets a format that can be written, and a name that is free', async (t) => {
  const folder = temporaryDirectory(t);
  fs.writeFileSync(path.join(folder, 'cat.png'), '');
  const rows = [
    [{ source: '/a/cat.JPG', target: '/b/dog.gif', format: 'jpeg' }, ['/b/dog.gif', 'gif']],
    [{ source: '/a/cat.jpg', target: '/b/dog.bmp', format: 'jpeg' }, ['/b/dog.bmp', 'jpeg']],
    [{ source: '/a/cat.heic', target: '/b/dog', format: '', photo: true }, ['/b/dog', 'jpeg']],
    [{ source: '/a/cat.bmp', target: '/b/dog', format: '' }, ['/b/dog', 'png']],
    [{ source: '/a/cat.png', target: folder, format: 'png' }, [path.join(folder, 'cat 2.png'), 'png']],
    [{ source: '/a/cat.heic', target: folder, format: '', photo: true }, [path.join(folder, 'cat.jpg'), 'jpeg']],
    [{ source: '/a/dog.JPEG', target: folder, format: 'jpeg' }, [path.join(folder, 'dog.JPEG'), 'jpeg']],
  ];
  await plain.table(t, rows, ({ macBodies }, copy) => macBodies.pictureTarget(copy));
});

test('a picture keeps its shape within the limits, and is never enlarged', (t) => {
  const rows = [
    [400, 200, 100, 0, [100, 50]],
    [400, 200, 0, 100, [200, 100]],
    [400, 200, 100, 100, [100, 50]],
    [400, 200, 0, 0, [400, 200]],
    [10, 10, 100, 100, [10, 10]],
    [10000, 1, 100, 0, [100, 1]],
  ];
  return plain.table(t, rows, ({ macBodies }, ...lengths) => macBodies.sizeWithin(...lengths));
});
