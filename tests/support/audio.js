'use strict';

// An audio server of the test's own, without a sound card, and a recording of its output.

const { spawn } = require('child_process');
const fs = require('fs');
const path = require('path');

const { endWith, killable } = require('./cleanup');
const { eventually } = require('./pace');

const sampleBytes = 2;

/** Starts the server in `directory`. It ends with the test, or with `kill()`. `env` is what its clients need. */
async function startAudioServer(test, directory) {
  const socket = path.join(directory, 'audio');
  const env = { PULSE_SERVER: `unix:${socket}`, PULSE_COOKIE: path.join(directory, 'cookie') };
  const environment = { ...process.env, ...env, HOME: directory, XDG_RUNTIME_DIR: directory };
  delete environment.DISPLAY;
  fs.rmSync(socket, { force: true });
  const modules = ['null-sink sink_name=nowhere', `native-protocol-unix auth-anonymous=1 socket=${socket}`];
  const args = ['-n', '--daemonize=no', '--exit-idle-time=-1', '--use-pid-file=no'];
  for (const module of modules) args.push('-L', `module-${module}`);
  const server = spawn('pulseaudio', args, { env: environment, stdio: 'ignore' });
  const kill = killable(test, server);
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
function tone({ amplitude, seconds }) {
  const wave = (_, i) => amplitude * Math.sin((2 * Math.PI * 440 * i) / 8000);
  const samples = Buffer.from(Int16Array.from({ length: seconds * 8000 }, wave).buffer);
  const words = (...values) => Buffer.from(Uint32Array.from(values).buffer);
  // 16 bytes: PCM with one channel, the rates, two bytes and 16 bits for a sample.
  const format = words(16, 0x00010001, 8000, 16000, 0x00100002);
  const parts = ['RIFF', words(36 + samples.length), 'WAVEfmt ', format, 'data', words(samples.length), samples];
  return Buffer.concat(parts.map((part) => Buffer.from(part)));
}

module.exports = { startAudioServer, tone };
