// Plays a match between two UCI engines, several games at a time, and says how it ended.
import { appendFileSync, readFileSync, writeFileSync } from 'node:fs';
import { parseCommandLine, Usage, UsageError } from './command_line.mjs';
import { playGame } from './game.mjs';
import { gameToPgn } from './pgn.mjs';
import { randomFrom, shuffle } from './random.mjs';
import { Referee } from './referee.mjs';
import { Score } from './statistics.mjs';
import { UciEngine } from './uci_engine.mjs';

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
    this.score = new Score(settings.engines.map((engine) => engine.name));
    this.next = 0; // number of the next game; games 2k and 2k + 1 make a pair
    this.running = new Set();
    this.stopped = false;
    writeFileSync(settings.pgn, '');
    writeFileSync(settings.log, '');
  }

  async play() {
    const seats = Math.min(this.settings.concurrency, this.settings.games);
    await Promise.all(Array.from({ length: seats }, () => this.#seat()));
    return this.score;
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
    const names = { white: players.white.spec.name, black: players.black.spec.name };
    const { timeControl, chess960, pgn } = this.settings;
    appendFileSync(pgn, gameToPgn(game, { ...names, round: String(number + 1), timeControl, chess960 }));
    console.log(`game ${number + 1}: ${names.white} - ${names.black} ${game.result}, ${game.reason}` +
      ` (${game.moves.length} plies)`);
    if (this.score.games % 20 === 0 && this.score.games < this.settings.games) console.log(this.score.line());
  }

  // An engine that cannot even be started ends the match: nothing would be measured.
  async #start(i, number) {
    const spec = this.settings.engines[i];
    const log = (text) => {
      const stamp = new Date().toISOString();
      appendFileSync(this.settings.log, `${stamp} ${spec.name}, started for game ${number + 1}: ${text}\n`);
    };
    const engine = new UciEngine(spec, { chess960: this.settings.chess960, log });
    this.running.add(engine);
    log('start');
    try {
      await engine.start();
    } catch (failure) {
      throw new Error(`${spec.name} does not start: ${failure.message}`);
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
      console.log(`stopped\n${match.score.summary()}`);
      process.exit(1);
    });
  }
  const score = await match.play();
  console.log(score.summary());
  return score.anyFault ? 1 : 0;
}

try {
  process.exit(await main());
} catch (error) {
  if (!(error instanceof UsageError)) {
    console.error(error.message);
    process.exit(1);
  }
  console.error(`${error.message}\n\n${Usage}`);
  process.exit(2);
}
