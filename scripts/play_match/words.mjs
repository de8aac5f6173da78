// Command lines and ends, for all tools.
import { closeSync } from 'node:fs';
import { constants } from 'node:os';

export class UsageError extends Error {}

export function number(text, what, { integer = true, min = 0 } = {}) {
  const value = Number(text);
  if (text.trim() === '' || !Number.isFinite(value) || value < min || (integer && !Number.isInteger(value))) {
    throw new UsageError(`${what}: "${text}" is no possible value`);
  }
  return value;
}

// rows: what to do with the value behind a word; flags: with a word alone; plain(word) takes all others, those
// that begin with a hyphen apart.
export function readWords(words, rows, flags, plain) {
  for (let i = 0; i < words.length; ++i) {
    if (Object.hasOwn(flags, words[i])) {
      flags[words[i]]();
    } else if (Object.hasOwn(rows, words[i])) {
      if (i + 1 === words.length) throw new UsageError(`${words[i]} takes a value`);
      rows[words[i]](words[++i]);
    } else if (plain && !/^--?\w/.test(words[i])) {
      plain(words[i]);
    } else {
      throw new UsageError(`unknown argument "${words[i]}"`);
    }
  }
}

let stoppedBy; // the signal

// Ends the process with the status that the work resolves to, 0 if with none; 1 if it failed, 2 for a wrong command
// line, and that of the signal if one stopped the work.
export async function runTool(work, usage) {
  try {
    const status = (await work()) ?? 0;
    // Node.js aborts at its end over a terminal that is gone, unless nothing is left of it.
    if (stoppedBy === 'SIGHUP') [0, 1, 2].forEach((descriptor) => closeSync(descriptor));
    process.exit(stoppedBy ? 128 + constants.signals[stoppedBy] : status);
  } catch (error) {
    const wrong = error instanceof UsageError;
    const who = error.kind ? 'the engine failed: ' : ''; // an EngineFailure
    console.error(wrong ? `${error.message}\n\n${usage}` : `${who}${error.message}`);
    process.exit(wrong ? 2 : 1);
  }
}

// Ctrl-C, SIGTERM and a closed terminal stop the work, which then comes to its end at once, with its last words.
// However the process ends, the work is stopped.
export function stopAtSignals(work) {
  process.on('exit', () => work.stop());
  for (const signal of ['SIGINT', 'SIGTERM', 'SIGHUP']) {
    process.on(signal, () => {
      if (stoppedBy) return; // it is on its way
      stoppedBy = signal;
      for (const stream of [process.stdout, process.stderr]) stream.on('error', () => {}); // nobody may be listening
      console.log(`stopped by ${signal}`);
      work.stop();
    });
  }
}
