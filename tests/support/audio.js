'use strict';

// An audio server of the test's own, without a sound card: what is played can be recorded, and is not heard.

const { spawn } = require('child_process');
const fs = require('fs');
const path = require('path');

const { endWith } = require('./cleanup');
const { eventually } = require('./pace');

const sampleBytes = 2;

/** Starts the server in `directory`. It ends with the test, or with `kill()`. `env` is what its clients need. */
async function startAudioServer(test, directory) {
  const socket = path.join(directory, 'audio');
  const env = { PULSE_SERVER: `unix:${socket}`, PULSE_COOKIE: path.join(directory, 'cookie') };
  const environment = { ...process.env, ...env, HOME: directory, XDG_RUNTIME_DIR: directory };
  delete environment.DISPLAY;
  fs.rmSync(socket, { force: true });
  const modules = [
    'module-null-sink sink_name=nowhere',
    `module-native-protocol-unix auth-anonymous=1 socket=${socket}`,
  ];
  const server = spawn(
    'pulseaudio',
    ['-n', '--daemonize=no', '--exit-idle-time=-1', '--use-pid-file=no', ...modules.flatMap((name) => ['-L', name])],
    { env: environment, stdio: 'ignore' },
  );
  const ended = endWith(test, server);
  const kill = async () => {
    server.kill('SIGKILL');
    await ended;
  };
  await eventually(() => fs.existsSync(socket), 'the audio server listens');

  const recorder = spawn(
    'parec',
    ['--device=nowhere.monitor', '--format=s16le', '--rate=8000', '--channels=1', '--latency-msec=20'],
    {
      env: environment,
      stdio: ['ignore', 'pipe', 'ignore'],
    },
  );
  endWith(test, recorder);
  let recorded = [];
  recorder.stdout.on('data', (bytes) => recorded.push(bytes));
  await eventually(() => recorded.length > 0, 'the recording runs');
  return {
    env,
    kill,
    pause: () => server.kill('SIGSTOP'),
    /** Forgets what was recorded so far. */
    rewind: () => (recorded = []),
    /** The loudest sample of the recording's end, or of all of it. */
    peak(milliseconds = Infinity) {
      const bytes = Buffer.concat(recorded);
      const samples = Math.min(milliseconds * 8, Math.floor(bytes.length / sampleBytes));
      let most = 0;
      for (let i = 1; i <= samples; ++i) {
        const at = (Math.floor(bytes.length / sampleBytes) - i) * sampleBytes;
        most = Math.max(most, Math.abs(bytes.readInt16LE(at)));
      }
      return most;
    },
  };
}

/** A tone in the bytes of a WAV file. */
function tone({ amplitude, seconds, rate = 8000, frequency = 440 }) {
  const samples = Buffer.alloc(Math.floor(seconds * rate) * sampleBytes);
  for (let i = 0; i * sampleBytes < samples.length; ++i) {
    samples.writeInt16LE(Math.round(amplitude * Math.sin((2 * Math.PI * frequency * i) / rate)), i * sampleBytes);
  }
  const header = Buffer.alloc(44);
  header.write('RIFF');
  header.writeUInt32LE(36 + samples.length, 4);
  header.write('WAVEfmt ', 8);
  header.writeUInt32LE(16, 16);
  header.writeUInt16LE(1, 20);
  header.writeUInt16LE(1, 22);
  header.writeUInt32LE(rate, 24);
  header.writeUInt32LE(rate * sampleBytes, 28);
  header.writeUInt16LE(sampleBytes, 32);
  header.writeUInt16LE(8 * sampleBytes, 34);
  header.write('data', 36);
  header.writeUInt32LE(samples.length, 40);
  return Buffer.concat([header, samples]);
}

module.exports = { startAudioServer, tone };
