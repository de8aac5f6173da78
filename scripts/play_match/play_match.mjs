// Plays a match between two UCI engines, several games at a time, and says how it ended.
import { appendFileSync, readFileSync, renameSync, writeFileSync } from 'node:fs';
import { constants } from 'node:os';
import { parseCommandLine, Usage } from './command_line.mjs';
import { playGame } from './game.mjs';
import { gameToPgn } from './pgn.mjs';
import { drawScore } from './picture.mjs';
import { randomFrom, shuffle } from './random.mjs';
import { Referee } from './referee.mjs';
import { Score } from './score.mjs';
import { UciEngine } from './uci_engine.mjs';
import { runTool } from './words.mjs';

const Status = { played: 0, H1: 0, fault: 1, H0: 3, undecided: 4 };
const Points = { '1-0': 1, '1/2-1/2': 0.5, '0-1': 0 };

function readOpenings({ openings, chess960, seed }) {
  const file = openings ?? new URL(`./openings/${chess960 ? 'chess960' : 'standard'}.epd`, import.meta.url);
  // The operations of an EPD line stand behind its four fields; the two counters of a FEN are numbers.
  const fens = readFileSync(file, 'utf8').split('\n').map((line) => line.split('#')[0].trim()).filter(Boolean)
    .map((line) => /^\S+ \S+ \S+ \S+( \d+ \d+)?/.exec(line)?.[0] ?? line);
  if (!fens.length) throw new Error(`no opening in ${file}`);
  for (const fen of fens) {
    if (new Referee(fen, chess960).outcome()) throw new Error(`no game can start at ${fen}`);
  }
  return seed === undefined ? fens : shuffle(fens, randomFrom(seed));
}

class Match {
  constructor(settings) {
    this.settings = settings;
    this.openings = readOpenings(settings);
    this.score = new Score(settings.engines.map((engine) => engine.name), settings.games, settings.sprt);
    this.next = 0; // number of the next game; games 2k and 2k + 1 make a pair
    this.running = new Set();
    this.stopped = false;
    writeFileSync(settings.pgn, '');
    writeFileSync(settings.log, '');
    this.#draw();
  }

  // Returns when the games are played or the test is decided.
  async play() {
    const { games, concurrency, timeControl } = this.settings;
    console.log(`${this.score.title}: ${games} games${this.settings.sprt ? ' at most' : ''},` +
      ` ${timeControl}, ${concurrency} at a time, ${this.openings.length} openings`);
    if (games > 2 * this.openings.length) {
      console.log('there are fewer openings than pairs of games: they come again, and the bounds may be too narrow');
    }
    this.begin = performance.now();
    const seats = Math.min(concurrency, games);
    await Promise.all(Array.from({ length: seats }, () => this.#seat()));
  }

  // The last words of the match, however it ends.
  conclude() {
    this.#draw();
    console.log(this.score.summary());
  }

  stop() {
    this.stopped = true;
    for (const engine of this.running) engine.kill();
  }

  // One seat plays game after game with two processes of its own.
  async #seat() {
    const engines = [undefined, undefined];
    while (!this.stopped && this.next < this.settings.games) {
      const number = this.next++;
      await this.#game(number, engines);
      if (this.settings.restart) await this.#leave(engines);
    }
    await this.#leave(engines);
  }

  async #leave(engines) {
    for (const i of [0, 1]) {
      await engines[i]?.quit();
      this.running.delete(engines[i]);
      engines[i] = undefined;
    }
  }

  async #game(number, engines) {
    const pair = Math.floor(number / 2);
    const whiteIndex = number % 2;
    for (const i of [0, 1]) {
      if (!engines[i]?.alive) engines[i] = await this.#start(i, number);
      if (this.stopped) return;
    }
    const players = { white: engines[whiteIndex], black: engines[1 - whiteIndex] };
    const game = await playGame(players, this.openings[pair % this.openings.length], this.settings);
    if (this.stopped) return;

    const fault = game.fault && {
      engine: game.fault.side === 'white' ? whiteIndex : 1 - whiteIndex,
      kind: game.fault.kind,
    };
    const points = Points[game.result];
    this.score.add(pair, whiteIndex === 0 ? points : 1 - points, fault);
    const names = { white: players.white.setup.name, black: players.black.setup.name };
    const { timeControl, chess960, pgn } = this.settings;
    appendFileSync(pgn, gameToPgn(game, { ...names, round: String(number + 1), timeControl, chess960 }));
    console.log(`game ${number + 1}: ${names.white} - ${names.black} ${game.result}, ${game.reason}` +
      ` (${game.moves.length} plies)`);
    if (this.score.verdict) {
      this.stop(); // games that are still running count for nothing: the verdict stands
    } else if (this.score.games % this.settings.report === 0 && this.score.games < this.settings.games) {
      console.log(this.score.running(performance.now() - this.begin));
      this.#draw();
    }
  }

  // Moved into place in one step, so that a viewer never finds half a picture.
  #draw() {
    const { picture } = this.settings;
    if (!picture) return;
    writeFileSync(`${picture}.new`, drawScore(this.score));
    renameSync(`${picture}.new`, picture);
  }

  // An engine that cannot even be started ends the match: nothing would be measured.
  async #start(i, number) {
    const setup = this.settings.engines[i];
    const log = (text) => {
      const stamp = new Date().toISOString();
      appendFileSync(this.settings.log, `${stamp} ${setup.name}, started for game ${number + 1}: ${text}\n`);
    };
    const engine = new UciEngine(setup, { chess960: this.settings.chess960, log });
    this.running.add(engine);
    log('start');
    try {
      await engine.start();
    } catch (failure) {
      if (this.stopped) return engine; // it was killed on its way
      throw new Error(`${setup.name} does not start: ${failure.message}`);
    }
    return engine;
  }
}

async function main() {
  if (process.argv.slice(2).some((word) => word === '--help' || word === '-h')) {
    console.log(Usage);
    return 0;
  }
  const match = new Match(parseCommandLine(process.argv.slice(2)));
  process.on('exit', () => match.stop());
  for (const signal of ['SIGINT', 'SIGTERM']) {
    process.on(signal, () => {
      match.stop();
      console.log(`stopped by ${signal}`);
      match.conclude();
      process.exit(128 + constants.signals[signal]);
    });
  }
  try {
    await match.play();
  } finally {
    match.conclude();
  }
  const { anyFault, sprt, verdict } = match.score;
  if (anyFault) return Status.fault;
  return sprt ? Status[verdict ?? 'undecided'] : Status.played;
}

await runTool(main, Usage);
