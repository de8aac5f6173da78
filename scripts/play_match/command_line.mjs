// The command line of play_match.
import { engineRows, EngineUsage, finishEngines } from './engine_words.mjs';
import { Sprt } from './statistics.mjs';
import { number, readWords, UsageError } from './words.mjs';

const DefaultGames = 100;
const DefaultTestGames = 50_000; // a test should end by its verdict

// How games are played, for each tool that plays them.
export const ConditionsUsage = `  --concurrency N        games at a time, default 2
  --tc BASE+INCREMENT    the clock in seconds, default 1+0.01
  --movetime MS | --nodes N | --depth N
                         a limit for each move instead of a clock
  --margin MS            how far a clock may be overdrawn without loss, default 0
  --chess960             Chess960: UCI_Chess960 is set and castling is written as king takes rook
  --resign MOVES,CP      a game is won when both engines agree on CP for MOVES moves; off by default
  --draw MOVES,CP,FROM   drawn when both agree on at most CP for MOVES moves, from move FROM on; off by default`;

export const Usage = `usage: scripts/play_match.sh --engine COMMAND [--name NAME] [--option NAME=VALUE]... \\
                              --engine COMMAND [--name NAME] [--option NAME=VALUE]... [setting]...
${EngineUsage}
  --games N              default ${DefaultGames}, with --sprt ${DefaultTestGames}; each opening is played twice, with
                         colours exchanged
  --sprt ELO0,ELO1[,ALPHA,BETA]
                         stop as soon as the results speak for ELO0 (H0) or ELO1 (H1): a sequential probability
                         ratio test on pairs of games; ALPHA and BETA, the two chances of error, default 0.05
${ConditionsUsage}
  --openings FILE        FEN or EPD lines; the default is a set of balanced positions of the variant
  --seed N               play the openings in an order drawn with this seed, not in the file's
  --report N             show the running score after every N games, default 10
  --picture FILE.svg     draw Elo with its error band by game, and the test; drawn anew with each running score
  --restart              fresh processes for each game
  --pgn FILE             default match.pgn, which is written anew
  --log FILE             default match.log: starts, standard error and ends of the engines
Exit status: 0 when all games were played or the test accepted H1;
  1 if an engine lost on time, made an illegal move, crashed or did not start, whatever the test says;
  2 for a wrong command line; 3 if the test accepted H0; 4 if the games ran out before its verdict;
  129 when stopped by the end of its terminal, 130 by Ctrl-C, 143 by SIGTERM: the summary is printed and the picture
  drawn all the same.`;

function numbers(text, what, names) {
  const fields = text.split(',');
  if (fields.length !== names.length) throw new UsageError(`${what} takes ${names.join(',')}`);
  return Object.fromEntries(names.map((name, i) => [name, number(fields[i], what)]));
}

function sequentialTest(text) {
  const fields = text.split(',');
  if (fields.length !== 2 && fields.length !== 4) throw new UsageError('--sprt takes ELO0,ELO1[,ALPHA,BETA]');
  const [elo0, elo1, alpha = 0.05, beta = 0.05] =
    fields.map((field) => number(field, '--sprt', { integer: false, min: -Infinity }));
  const possible = (chance) => chance > 0 && chance < 0.5;
  if (elo0 >= elo1) throw new UsageError('--sprt: ELO0 is less than ELO1');
  if (!possible(alpha) || !possible(beta)) throw new UsageError('--sprt: ALPHA and BETA are between 0 and 0.5');
  return new Sprt({ elo0, elo1, alpha, beta });
}

function clock(text) {
  const [base, increment = '0', ...rest] = text.split('+');
  if (rest.length) throw new UsageError('--tc takes BASE+INCREMENT');
  const ms = (seconds) => Math.round(1000 * number(seconds, '--tc', { integer: false }));
  return { base: ms(base), increment: ms(increment) };
}

// What the tools that play games share: rows and flags for readWords, and the settings that these write to. The
// settings of ConditionsUsage have their defaults.
export function conditions() {
  const settings = {
    concurrency: 2, control: clock('1+0.01'), timeControl: '1+0.01', marginMs: 0, chess960: false, adjudication: {},
  };
  const rows = {
    '--concurrency': (text) => (settings.concurrency = number(text, '--concurrency', { min: 1 })),
    '--tc': (text) => Object.assign(settings, { control: clock(text), timeControl: text }),
    '--margin': (text) => (settings.marginMs = number(text, '--margin', { integer: false })),
    '--resign': (text) => (settings.adjudication.resign = numbers(text, '--resign', ['moves', 'score'])),
    '--draw': (text) => (settings.adjudication.draw = numbers(text, '--draw', ['moves', 'score', 'from'])),
    '--openings': (text) => (settings.openings = text),
    '--seed': (text) => (settings.seed = number(text, '--seed')),
    '--report': (text) => (settings.report = number(text, '--report', { min: 1 })),
    '--picture': (text) => (settings.picture = text),
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
  return { settings, rows, flags };
}

export function parseCommandLine(words) {
  const common = [];
  const engines = [];
  const { settings, rows, flags } = conditions();
  Object.assign(settings, {
    games: undefined, sprt: undefined, report: 10, picture: undefined, openings: undefined, seed: undefined,
    restart: false, pgn: 'match.pgn', log: 'match.log',
  });
  Object.assign(rows, {
    ...engineRows(engines, common),
    '--games': (text) => (settings.games = number(text, '--games', { min: 1 })),
    '--sprt': (text) => (settings.sprt = sequentialTest(text)),
    '--pgn': (text) => (settings.pgn = text),
  });
  readWords(words, rows, flags);
  if (engines.length !== 2) throw new UsageError('a match needs two engines');
  finishEngines(engines, common);
  settings.games ??= settings.sprt ? DefaultTestGames : DefaultGames;
  return { ...settings, engines };
}
