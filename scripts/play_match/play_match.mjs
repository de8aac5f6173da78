// Plays a match between two UCI engines, several games at a time, and says how it ended.
import { appendFileSync, writeFileSync } from 'node:fs';
import { parseCommandLine, Usage } from './command_line.mjs';
import { Engines } from './engines.mjs';
import { playGame, Points } from './game.mjs';
import { readOpenings } from './openings.mjs';
import { gameToPgn } from './pgn.mjs';
import { drawScore } from './picture.mjs';
import { replaceFile } from './replace_file.mjs';
import { Score } from './score.mjs';
import { runTool, stopAtSignals } from './words.mjs';

const Status = { played: 0, H1: 0, fault: 1, H0: 3, undecided: 4 };

class Match {
  constructor(settings) {
    this.settings = settings;
    const set = settings.chess960 ? 'chess960' : 'standard';
    this.openings = readOpenings(settings.openings ?? new URL(`./openings/${set}.epd`, import.meta.url), settings);
    this.score = new Score(settings.engines.map((engine) => engine.name), settings.games, settings.sprt);
    this.next = 0; // number of the next game; games 2k and 2k + 1 make a pair
    this.engines = new Engines(settings);
    writeFileSync(settings.pgn, '');
    writeFileSync(settings.log, '');
  }

  // Returns when the games are played or the test is decided.
  async play() {
    await this.#draw();
    const { games, concurrency, timeControl } = this.settings;
    console.log(`${this.score.title}: ${games} games${this.settings.sprt ? ' at most' : ''},` +
      ` ${timeControl}, ${concurrency} at a time, ${this.openings.length} openings`);
    if (games > 2 * this.openings.length) {
      console.log('there are fewer openings than pairs of games: they come again, and the bounds may be too narrow');
    }
    this.begin = performance.now();
    await this.engines.sit(Math.min(concurrency, games), () => this.#seat());
  }

  // The last words of the match, however it ends.
  async conclude() {
    console.log(this.score.summary());
    await this.#draw();
  }

  // One seat plays game after game with two processes of its own.
  async #seat() {
    const seat = [undefined, undefined];
    while (!this.engines.stopped && this.next < this.settings.games) {
      const number = this.next++;
      await this.#game(number, seat);
      if (this.settings.restart) await this.engines.leave(seat);
    }
    await this.engines.leave(seat);
  }

  async #game(number, seat) {
    const pair = Math.floor(number / 2);
    const whiteIndex = number % 2;
    for (const i of [0, 1]) {
      if (!seat[i]?.alive) seat[i] = await this.engines.start(this.settings.engines[i], `for game ${number + 1}`);
    }
    const players = { white: seat[whiteIndex], black: seat[1 - whiteIndex] };
    const game = await playGame(players, this.openings[pair % this.openings.length], this.settings);
    if (this.engines.stopped) return;

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
      this.engines.stop(); // games that are still running count for nothing: the verdict stands
    } else if (this.score.games % this.settings.report === 0 && this.score.games < this.settings.games) {
      console.log(this.score.running(performance.now() - this.begin));
      await this.#draw();
    }
  }

  async #draw() {
    if (this.settings.picture) await replaceFile(this.settings.picture, drawScore(this.score));
  }
}

async function main() {
  if (process.argv.slice(2).some((word) => word === '--help' || word === '-h')) {
    console.log(Usage);
    return 0;
  }
  const match = new Match(parseCommandLine(process.argv.slice(2)));
  stopAtSignals(match.engines);
  try {
    await match.play();
  } finally {
    await match.conclude();
  }
  const { anyFault, sprt, verdict } = match.score;
  if (anyFault) return Status.fault;
  return sprt ? Status[verdict ?? 'undecided'] : Status.played;
}

await runTool(main, Usage);
