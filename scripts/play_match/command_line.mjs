// The command line of play_match.

export const Usage = `usage: scripts/play_match.sh --engine COMMAND [--name NAME] [--option NAME=VALUE]... \\
                              --engine COMMAND [--name NAME] [--option NAME=VALUE]... [setting]...
  --engine COMMAND       program and arguments, separated by blanks; --name and --option belong to the engine
                         before them
  --option NAME=VALUE    a UCI option; in front of the first engine it is given to both
  --games N              default 100; each opening is played twice, with colours exchanged
  --concurrency N        games at a time, default 2
  --tc BASE+INCREMENT    the clock in seconds, default 1+0.01
  --movetime MS | --nodes N | --depth N
                         a limit for each move instead of a clock
  --margin MS            how far a clock may be overdrawn without loss, default 0
  --openings FILE        FEN or EPD lines; the default is a set of balanced positions of the variant
  --seed N               play the openings in an order drawn with this seed, not in the file's
  --chess960             Chess960: UCI_Chess960 is set and castling is written as king takes rook
  --resign MOVES,CP      a game is won when both engines agree on CP for MOVES moves; off by default
  --draw MOVES,CP,FROM   drawn when both agree on at most CP for MOVES moves, from move FROM on; off by default
  --restart              fresh processes for each game
  --pgn FILE             default match.pgn, which is written anew
  --log FILE             default match.log: starts, standard error and ends of the engines
Exit status: 0, or 1 if an engine lost on time, made an illegal move or crashed, 2 for a wrong command line.`;

export class UsageError extends Error {}

function number(text, what, { integer = true, min = 0 } = {}) {
  const value = Number(text);
  if (text.trim() === '' || !Number.isFinite(value) || value < min || (integer && !Number.isInteger(value))) {
    throw new UsageError(`${what}: "${text}" is no possible value`);
  }
  return value;
}

function numbers(text, what, names) {
  const fields = text.split(',');
  if (fields.length !== names.length) throw new UsageError(`${what} takes ${names.join(',')}`);
  return Object.fromEntries(names.map((name, i) => [name, number(fields[i], what)]));
}

function clock(text) {
  const [base, increment = '0', ...rest] = text.split('+');
  if (rest.length) throw new UsageError('--tc takes BASE+INCREMENT');
  const ms = (seconds) => Math.round(1000 * number(seconds, '--tc', { integer: false }));
  return { base: ms(base), increment: ms(increment) };
}

export function parseCommandLine(words) {
  const common = [];
  const engines = [];
  const settings = {
    games: 100, concurrency: 2, control: clock('1+0.01'), timeControl: '1+0.01', marginMs: 0, openings: undefined,
    seed: undefined, chess960: false, adjudication: {}, restart: false, pgn: 'match.pgn', log: 'match.log',
  };
  const rows = {
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
    '--games': (text) => (settings.games = number(text, '--games', { min: 1 })),
    '--concurrency': (text) => (settings.concurrency = number(text, '--concurrency', { min: 1 })),
    '--tc': (text) => Object.assign(settings, { control: clock(text), timeControl: text }),
    '--margin': (text) => (settings.marginMs = number(text, '--margin', { integer: false })),
    '--openings': (text) => (settings.openings = text),
    '--seed': (text) => (settings.seed = number(text, '--seed')),
    '--resign': (text) => (settings.adjudication.resign = numbers(text, '--resign', ['moves', 'score'])),
    '--draw': (text) => (settings.adjudication.draw = numbers(text, '--draw', ['moves', 'score', 'from'])),
    '--pgn': (text) => (settings.pgn = text),
    '--log': (text) => (settings.log = text),
  };
  for (const limit of ['movetime', 'nodes', 'depth']) {
    rows[`--${limit}`] = (text) => {
      settings.control = { [limit]: number(text, `--${limit}`, { min: 1 }) };
      settings.timeControl = `${limit} ${text}`;
    };
  }
  const flags = {
    '--chess960': () => (settings.chess960 = true),
    '--restart': () => (settings.restart = true),
  };
  for (let i = 0; i < words.length; ++i) {
    if (flags[words[i]]) {
      flags[words[i]]();
    } else if (rows[words[i]]) {
      if (i + 1 === words.length) throw new UsageError(`${words[i]} takes a value`);
      rows[words[i]](words[++i]);
    } else {
      throw new UsageError(`unknown argument "${words[i]}"`);
    }
  }
  if (engines.length !== 2) throw new UsageError('a match needs two engines');
  for (const engine of engines) engine.options.unshift(...common);
  if (engines[0].name === engines[1].name) {
    engines[0].name += ' (1)';
    engines[1].name += ' (2)';
  }
  return { ...settings, engines };
}
