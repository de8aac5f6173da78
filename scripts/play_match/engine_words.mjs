// The words of a command line that name engines.
import { UsageError } from './words.mjs';

export const EngineUsage = `  --engine COMMAND       program and arguments, separated by blanks; --name and --option belong to the engine
                         before them
  --option NAME=VALUE    a UCI option; in front of the first engine it is given to all`;

// "PROGRAM ARGUMENT..." and "NAME=VALUE" as the settings hold them.
export function engineOf(text) {
  const [command, ...args] = text.split(/\s+/).filter(Boolean);
  if (!command) throw new UsageError('--engine takes a command');
  return { name: command.split('/').pop(), command, args, options: [] };
}

export function optionOf(text, what = '--option takes NAME=VALUE') {
  const at = text.indexOf('=');
  if (at < 1) throw new UsageError(what);
  return [text.slice(0, at), text.slice(at + 1)];
}

// Rows for readWords that fill `engines` with setups for UciEngine; `common` collects the options of all.
export function engineRows(engines, common) {
  return {
    '--engine': (text) => engines.push(engineOf(text)),
    '--name': (text) => {
      if (!engines.length) throw new UsageError('--name stands behind its engine');
      engines.at(-1).name = text;
    },
    '--option': (text) => (engines.at(-1)?.options ?? common).push(optionOf(text)),
  };
}

// To be called when all words are read: each engine gets what is common, and a name of its own.
export function finishEngines(engines, common) {
  const names = engines.map(({ name }) => name);
  engines.forEach((engine, i) => {
    engine.options.unshift(...common);
    if (names.indexOf(engine.name) !== names.lastIndexOf(engine.name)) engine.name += ` (${i + 1})`;
  });
}
