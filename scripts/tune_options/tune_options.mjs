// Tunes numeric options of an engine by pairs of games against itself, several games at a time.
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { existsSync, readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import { Engines } from '../play_match/engines.mjs';
import { playGame, Points } from '../play_match/game.mjs';
import { readOpenings } from '../play_match/openings.mjs';
import { replaceFile } from '../play_match/replace_file.mjs';
import { duration } from '../play_match/score.mjs';
import { runTool, stopAtSignals, UsageError } from '../play_match/words.mjs';
import { checkOptions, parseCommandLine, Usage } from './command_line.mjs';
import { drawValues } from './picture.mjs';
import { Progress } from './progress.mjs';
import { Spsa } from './spsa.mjs';

const MaxFaultsInARow = 10; // pairs; then it is the engine or the machine, and not bad luck

const digest = (lines) => createHash('sha256').update(lines.join('\n')).digest('hex');
const pathOf = (file) => fileURLToPath(new URL(file, import.meta.url));

// The file of openings, made on the way if it is the default one and missing.
function openingsFile({ openings, chess960 }) {
  if (openings) return openings;
  const file = pathOf(`../../build/openings/${chess960 ? 'chess960' : 'standard'}.epd`);
  if (existsSync(file)) return file;
  execFileSync(pathOf('../make_openings.sh'), chess960 ? ['--chess960'] : [], { stdio: ['ignore', 2, 2] });
  return file;
}

// The progress saved in the file, undefined if there is none; run: all that the results depend on.
function readState(file, run) {
  if (!existsSync(file)) return undefined;
  let state;
  try {
    state = JSON.parse(readFileSync(file, 'utf8'));
  } catch (error) {
    throw new UsageError(`${file} holds no state of a run: ${error.message}`);
  }
  const other = Object.keys(run).filter((key) => JSON.stringify(run[key]) !== JSON.stringify(state?.run?.[key]));
  if (!other.length) return state.progress;
  throw new UsageError(`${file} belongs to a run with another ${other.join(', ')}: remove it or name another --state`);
}

class Tuning {
  constructor(settings, engines, greeting) {
    this.settings = settings;
    this.engines = engines;
    this.openings = readOpenings(openingsFile(settings), settings);
    this.spsa = new Spsa(settings.tuned, settings);
    const { concurrency, state, report, picture, log, ...run } = settings; // a run may go on with others of these
    Object.assign(run, { rate: this.spsa.rate, openings: digest(this.openings), engineOptions: digest(greeting) });
    this.run = run;
    this.progress = new Progress(this.spsa, readState(state, run));
    this.before = this.progress.finished; // pairs of earlier runs
    this.faultsInARow = 0;
    this.title = `${settings.engine.name}, ${settings.timeControl}`;
    console.log(`${this.title}, ${concurrency} at a time, ${this.openings.length} openings:` +
      ` ${this.spsa.pairs} pairs${this.before ? `, ${this.before} of them played before` : ''}`);
    if (this.spsa.pairs > this.openings.length) console.log('there are fewer openings than pairs: they come again');
  }

  async play() {
    this.begin = performance.now();
    await this.#save();
    await this.engines.sit(this.settings.concurrency, () => this.#seat());
  }

  // The last words, however the run ends.
  async conclude() {
    console.log(this.#running());
    if (!this.progress.done) console.log('not finished: the same command goes on from here');
    for (const [i, { name }] of this.spsa.options.entries()) {
      console.log(`setoption name ${name} value ${Math.round(this.spsa.values[i])}`);
    }
    await this.#draw();
  }

  // One seat plays pair after pair with two processes of its own, the first of which is the plus side.
  async #seat() {
    const seat = [undefined, undefined];
    for (let k; !this.engines.stopped && (k = this.progress.take()) !== undefined;) {
      await this.#pair(k, seat);
      if (this.settings.restart) await this.engines.leave(seat);
    }
    await this.engines.leave(seat);
  }

  async #pair(k, seat) {
    const { plus, minus } = this.spsa.settings(k);
    let difference = 0;
    let fault;
    for (const white of [0, 1]) {
      for (const [i, values] of [plus, minus].entries()) {
        if (!seat[i]?.alive) seat[i] = await this.engines.start(this.settings.engine, `for pair ${k + 1}`);
        seat[i].setOptions(this.spsa.options.map(({ name }, option) => [name, values[option]]));
      }
      const players = { white: seat[white], black: seat[1 - white] };
      const game = await playGame(players, this.openings[k % this.openings.length], this.settings);
      if (this.engines.stopped) return;
      fault = game.fault && game.reason;
      if (fault) break;
      difference += (white === 0 ? 2 : -2) * (Points[game.result] - 0.5);
    }
    await this.#finish(k, difference, fault);
  }

  async #finish(k, difference, fault) {
    this.progress.finish(k, fault ? undefined : difference);
    const { finished, done } = this.progress; // other seats go on meanwhile
    await this.#save();
    console.log(`pair ${k + 1}: ${fault ? `dropped, ${fault}` : `${1 + difference / 2} - ${1 - difference / 2}`}`);
    this.faultsInARow = fault ? this.faultsInARow + 1 : 0;
    if (this.faultsInARow === MaxFaultsInARow) throw new Error(`faults in ${MaxFaultsInARow} pairs in a row`);
    if (finished % this.settings.report === 0 && !done) {
      console.log(this.#running());
      await this.#draw();
    }
  }

  #running() {
    const { progress: { finished, faults }, spsa } = this;
    const elapsed = performance.now() - this.begin;
    const rest = (elapsed / Math.max(finished - this.before, 1)) * (spsa.pairs - finished);
    const lines = [`  ${finished} of ${spsa.pairs} pairs, ${finished - this.before} in ${duration(elapsed)},` +
      ` about ${duration(rest)} to go; dropped for faults: ${faults}`];
    for (const [i, { name, start, min, max }] of spsa.options.entries()) {
      const step = spsa.step(i, Math.min(finished, spsa.pairs - 1)).toFixed(1);
      lines.push(`    ${name}: ${start} -> ${spsa.values[i].toFixed(1)} in ${min} to ${max}, step ${step}`);
    }
    return lines.join('\n');
  }

  async #save() {
    await replaceFile(this.settings.state, JSON.stringify({ run: this.run, progress: this.progress.save() }) + '\n');
  }

  async #draw() {
    if (this.settings.picture) await replaceFile(this.settings.picture, drawValues(this.title, this.progress));
  }
}

async function main() {
  const words = process.argv.slice(2);
  if (words.some((word) => word === '--help' || word === '-h')) return console.log(Usage);
  const settings = parseCommandLine(words);
  const engines = new Engines(settings);
  const engine = await engines.start({ ...settings.engine, options: [] }, 'to ask for its options');
  await engines.leave([engine]);
  const greeting = engine.greeting.filter((line) => /^(id|option) /.test(line));
  checkOptions(settings, greeting);
  const tuning = new Tuning(settings, engines, greeting);
  stopAtSignals(engines);
  try {
    await tuning.play();
  } finally {
    await tuning.conclude();
  }
  return tuning.progress.faults ? 1 : 0;
}

await runTool(main, Usage);
