// The words of a command line that name engines.
import { UsageError } from './words.mjs';

export const EngineUsage = `  --engine COMMAND       program and arguments, separated by blanks; --name and --option belong to the engine
                         before them
  --option NAME=VALUE    a UCI option; in front of the first engine it is given to all`;

// Rows for readWords that fill `engines` with setups for UciEngine; `common` collects the options of all.
export function engineRows(engines, common) {
  return {
    '--engine': (text) => {
      const [command, ...args] = text.split(/\s+/).filter(Boolean);
      if (!command) throw new UsageError('--engine takes a command');
      engines.push({ name: command.split('/').pop(), command, args, options: [] });
    },
    '--name': (text) => {
      if (!engines.length) throw new UsageError('--name stands behind its engine');
      engines.at(-1).name = text;
    },
    '--option': (text) => {
      const at = text.indexOf('=');
      if (at < 1) throw new UsageError('--option takes NAME=VALUE');
      (engines.at(-1)?.options ?? common).push([text.slice(0, at), text.slice(at + 1)]);
    },
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
