// Plays one game between two running engines.
import { EngineFailure } from './uci_engine.mjs';
import { Referee } from './referee.mjs';

// White's points by result.
export const Points = { '1-0': 1, '1/2-1/2': 0.5, '0-1': 0 };

// An engine that is this far beyond its limit is taken to hang.
const HangMs = 5000;
// With no clock (nodes, depth) nothing else ends a search that goes on forever.
const NoClockLimitMs = 600_000;

// How much time there is: { base, increment } in ms, or { movetime } in ms, { nodes } or { depth } a move.
class Clock {
  constructor(control, marginMs) {
    this.control = control;
    this.marginMs = marginMs;
    this.left = { white: control.base, black: control.base };
  }

  get runs() {
    return this.control.base !== undefined;
  }

  goCommand() {
    const { increment, movetime, nodes, depth } = this.control;
    if (!this.runs) {
      if (movetime !== undefined) return `go movetime ${movetime}`;
      return nodes !== undefined ? `go nodes ${nodes}` : `go depth ${depth}`;
    }
    // Rounded down, so that an engine never believes it has more than it has.
    const [white, black] = [this.left.white, this.left.black].map((ms) => Math.max(1, Math.floor(ms)));
    return `go wtime ${white} btime ${black} winc ${increment} binc ${increment}`;
  }

  limit(side) {
    if (this.runs) return this.left[side] + this.marginMs + HangMs;
    return this.control.movetime !== undefined ? this.control.movetime + HangMs : NoClockLimitMs;
  }

  // Takes what a move cost. Returns the ms beyond the clock and its margin, 0 if it was in time.
  take(side, ms) {
    if (!this.runs) return 0;
    this.left[side] -= ms;
    if (this.left[side] < -this.marginMs) return -this.left[side];
    this.left[side] = Math.max(0, this.left[side]) + this.control.increment;
    return 0;
  }
}

// Ends games early when asked to: by default no rule is set and every game is played out.
class Adjudicator {
  // resign, draw: { moves, score, from } or undefined; scores in centipawns, `from` is a full move number.
  constructor({ resign, draw }) {
    this.resign = resign;
    this.draw = draw;
    this.scores = []; // White's view, one a half move; NaN where the engine gave none
  }

  note(side, score) {
    this.scores.push(score === undefined ? NaN : side === 'white' ? score : -score);
  }

  // Both engines have to agree, over the last `moves` moves of each.
  verdict() {
    const last = (rule) => (this.scores.length < 2 * rule.moves ? [NaN] : this.scores.slice(-2 * rule.moves));
    if (this.resign) {
      if (last(this.resign).every((score) => score >= this.resign.score)) return '1-0';
      if (last(this.resign).every((score) => score <= -this.resign.score)) return '0-1';
    }
    if (this.draw && this.scores.length >= 2 * this.draw.from) {
      if (last(this.draw).every((score) => Math.abs(score) <= this.draw.score)) return '1/2-1/2';
    }
    return undefined;
  }
}

// players: { white, black }, two started UciEngines. Returns { result, reason, termination, fault, moves, ... };
// fault is { side, kind } when a side lost by a time loss, an illegal move or a crash.
export async function playGame(players, fen, { control, marginMs, chess960, adjudication }) {
  const referee = new Referee(fen, chess960);
  const clock = new Clock(control, marginMs);
  const adjudicator = new Adjudicator(adjudication);
  const moves = []; // { san, comment }
  const done = (result, reason, termination, fault) =>
    ({ result, reason, termination, fault, moves, startFen: referee.startFen });
  const forfeit = (side, kind, reason, termination) =>
    done(side === 'white' ? '0-1' : '1-0', `${kind} by ${side}: ${reason}`, termination, { side, kind });

  for (const side of ['white', 'black']) {
    try {
      await players[side].newGame();
    } catch (failure) {
      if (!(failure instanceof EngineFailure)) throw failure;
      await players[side].end();
      return forfeit(side, 'crash', failure.message, 'abandoned');
    }
  }
  for (;;) {
    const outcome = referee.outcome();
    if (outcome) return done(outcome.result, outcome.reason, 'normal');
    const verdict = adjudicator.verdict();
    if (verdict) return done(verdict, 'adjudication', 'adjudication');

    const side = referee.turn;
    const played = referee.moves.map((move) => move.uci).join(' ');
    const position = `position fen ${referee.startFen}${played && ` moves ${played}`}`;
    let answer;
    try {
      answer = await players[side].go(position, clock.goCommand(), clock.limit(side));
    } catch (failure) {
      if (!(failure instanceof EngineFailure)) throw failure;
      if (failure.kind === 'crash') return forfeit(side, 'crash', failure.message, 'abandoned');
      await players[side].end(); // whatever it says from now on belongs to no game
      return forfeit(side, 'time loss', failure.message, 'time forfeit');
    }
    const overdrawn = clock.take(side, answer.ms);
    if (overdrawn > 0) {
      return forfeit(side, 'time loss', `${overdrawn.toFixed(1)} ms beyond the clock`, 'time forfeit');
    }
    const san = referee.play(answer.move);
    if (!san) {
      return forfeit(side, 'illegal move', `"${answer.move}" after ${position}`, 'rules infraction');
    }
    adjudicator.note(side, answer.score);
    const score = answer.score === undefined ? '' : `${(answer.score / 100).toFixed(2)}/${answer.depth} `;
    moves.push({ san, comment: `${score}${(answer.ms / 1000).toFixed(3)}s` });
  }
}
