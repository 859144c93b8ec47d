'use strict';

// An audio server of the test's own, without a sound card, and a recording of its output.

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

  const format = ['--format=s16le', '--rate=8000', '--channels=1', '--latency-msec=20'];
  const stdio = ['ignore', 'pipe', 'ignore'];
  const recorder = spawn('parec', ['--device=nowhere.monitor', ...format], { env: environment, stdio });
  endWith(test, recorder);
  const recorded = [];
  recorder.stdout.on('data', (bytes) => recorded.push(bytes));
  await eventually(() => recorded.length > 0, 'the recording runs');
  return {
    env,
    kill,
    pause: () => server.kill('SIGSTOP'),
    /** The loudest sample of the recording's end, or of all of it. */
    peak(milliseconds = Infinity) {
      const bytes = Buffer.concat(recorded);
      const samples = Math.floor(bytes.length / sampleBytes);
      let most = 0;
      for (let i = Math.max(0, samples - milliseconds * 8); i < samples; ++i) {
        most = Math.max(most, Math.abs(bytes.readInt16LE(i * sampleBytes)));
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
