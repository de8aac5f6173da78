// The command line of tune_options.
import { conditions, ConditionsUsage } from '../play_match/command_line.mjs';
import { engineOf, optionOf } from '../play_match/engine_words.mjs';
import { number, readWords, UsageError } from '../play_match/words.mjs';

export const Usage = `usage: scripts/tune_options.sh --engine COMMAND --tune NAME=START,MIN,MAX,STEP... [setting]...
Looks for the values of numeric options that win most games of the engine against itself: in each pair of games one
side has each option a step up or down at random, the other the opposite, and the values follow the side that wins.
  --engine COMMAND       program and arguments, separated by blanks
  --tune NAME=START,MIN,MAX,STEP
                         an option to tune: its first value, its range, and by how much it is moved in the first
                         pair, better 2 or more; it shrinks slowly, to a half after a thousand pairs. May be given
                         several times
  --option NAME=VALUE    a UCI option for both sides; may be given several times
  --pairs N              the pairs of games of the whole run, default 2000
  --rate R               how far a point of difference moves a value at the end, as a share of its step then;
                         the default is 1.5 divided by the square root of the pairs
  --seed N               draws the steps and the order of the openings, default 1
  --state FILE           where the run stands after each pair, default tune.json; the same command goes on from there
${ConditionsUsage}
  --openings FILE        FEN or EPD lines; the default is build/openings/standard.epd or chess960.epd, which is made
                         by scripts/make_openings.sh when it is missing
  --report N             show the running values after every N pairs, default 20
  --picture FILE.svg     draw the values by game; drawn anew with each report
  --restart              fresh processes for each pair
  --log FILE             default tune.log: starts, standard error and ends of the engines
Exit status: 0 when all pairs were played; 1 if a pair was dropped, ever in the run, for a time loss, an illegal move
  or a crash; ten of them in a row end the run, as does an engine that does not start, or a file that cannot be read
  or written. 2 for a command line that is wrong, or does not fit the engine or the state file; 129 when stopped by
  the end of its terminal, 130 by Ctrl-C, 143 by SIGTERM.
However it ends, a run shows the values it has reached and the setoption lines to use.`;

const same = (one, other) => one.toLowerCase() === other.toLowerCase();

function tunedOf(text) {
  const takes = '--tune takes NAME=START,MIN,MAX,STEP';
  const [name, numbers] = optionOf(text, takes);
  const fields = numbers.split(',');
  if (fields.length !== 4) throw new UsageError(takes);
  const [start, min, max] = fields.slice(0, 3).map((field) => number(field, `--tune ${name}`, { min: -Infinity }));
  const step = number(fields[3], `--tune ${name}`, { integer: false, min: 1 });
  if (!(min < max && min <= start && start <= max)) {
    throw new UsageError(`--tune ${name}: START is from MIN to MAX, and MIN less than MAX`);
  }
  if (2 * step > max - min) throw new UsageError(`--tune ${name}: STEP is at most half the range`);
  return { name, start, min, max, step };
}

export function parseCommandLine(words) {
  const { settings, rows, flags } = conditions();
  Object.assign(settings, {
    engine: undefined, tuned: [], pairs: 2000, rate: undefined, seed: 1, state: 'tune.json', openings: undefined,
    report: 20, picture: undefined, restart: false, log: 'tune.log',
  });
  const options = [];
  Object.assign(rows, {
    '--engine': (text) => (settings.engine = engineOf(text)),
    '--tune': (text) => settings.tuned.push(tunedOf(text)),
    '--option': (text) => options.push(optionOf(text)),
    '--pairs': (text) => (settings.pairs = number(text, '--pairs', { min: 1 })),
    '--rate': (text) => (settings.rate = number(text, '--rate', { integer: false, min: Number.MIN_VALUE })),
    '--state': (text) => (settings.state = text),
  });
  readWords(words, rows, flags);
  if (!settings.engine) throw new UsageError('which engine? --engine COMMAND');
  if (!settings.tuned.length) throw new UsageError('which options? --tune NAME=START,MIN,MAX,STEP');
  settings.engine.options = options;
  const names = [...settings.tuned.map(({ name }) => name), ...options.map(([name]) => name)];
  const twice = names.find((name, i) => names.slice(0, i).some((other) => same(name, other)));
  if (twice) throw new UsageError(`${twice} is given twice`);
  return settings;
}

// Compares with what the engine says of itself, between `uci` and `uciok`. Names get its spelling: it may want that.
export function checkOptions({ tuned, engine }, greeting) {
  const offered = greeting.map((line) => /^option name (.+?) type (\w+)(.*)$/.exec(line)).filter(Boolean);
  const find = (name) => {
    const row = offered.find(([, other]) => same(name, other));
    if (!row) throw new UsageError(`the engine has no option ${name}`);
    return row;
  };
  for (const option of engine.options) option[0] = find(option[0])[1];
  for (const option of tuned) option.name = find(option.name)[1];
  for (const { name, min, max } of tuned) {
    const [, , type, rest] = find(name);
    if (type !== 'spin') throw new UsageError(`the option ${name} is no number, but of type ${type}`);
    const [low, high] = ['min', 'max'].map((word) => Number(new RegExp(`\\b${word} (-?\\d+)`).exec(rest)?.[1] ?? NaN));
    if (!(min >= low && max <= high)) {
      throw new UsageError(`--tune ${name}: the engine takes ${low} to ${high}, and not ${min} to ${max}`);
    }
  }
}
