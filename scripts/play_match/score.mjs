// The running score of a match: what is counted, and how it is told.
import { eloFromPairs, PairScores } from './statistics.mjs';

function signed(value, digits) {
  const text = value.toFixed(digits); // "Infinity" stays what it is
  if (Number(text) === 0) return text.replace('-', '');
  return value > 0 ? `+${text}` : text;
}

// H:MM:SS
export function duration(ms) {
  const seconds = Math.round(ms / 1000);
  const two = (value) => String(value).padStart(2, '0');
  return `${Math.floor(seconds / 3600)}:${two(Math.floor(seconds / 60) % 60)}:${two(seconds % 60)}`;
}

export class Score {
  // names: of the two engines; gamesToPlay: the most games there can be; sprt: a Sprt, or undefined for no test.
  constructor(names, gamesToPlay, sprt) {
    this.names = names;
    this.gamesToPlay = gamesToPlay;
    this.sprt = sprt;
    this.wins = 0; // all three as the first engine sees them
    this.draws = 0;
    this.losses = 0;
    this.faults = [0, 1].map(() => ({ 'time loss': 0, 'illegal move': 0, crash: 0 }));
    this.halves = new Map(); // pair number -> score of its first finished game, while the second is not finished
    this.counts = PairScores.map(() => 0);
    this.history = []; // { games, elo, low, high, llr } after each pair; the Elo undefined while not measurable
    this.verdict = undefined; // 'H0' or 'H1' once the test is decided
  }

  // points: 1, 0.5 or 0 for the first engine; fault: { engine, kind } if the loser broke a rule of the match.
  add(pair, points, fault) {
    if (points === 1) ++this.wins;
    else if (points === 0) ++this.losses;
    else ++this.draws;
    if (fault) ++this.faults[fault.engine][fault.kind];
    if (!this.halves.has(pair)) {
      this.halves.set(pair, points);
      return;
    }
    ++this.counts[2 * (this.halves.get(pair) + points)];
    this.halves.delete(pair);
    this.history.push({ games: this.games, ...eloFromPairs(this.counts), llr: this.sprt?.llr(this.counts) });
    this.verdict = this.sprt?.verdict(this.counts);
  }

  get games() {
    return this.wins + this.draws + this.losses;
  }

  get anyFault() {
    return this.faults.some((row) => Object.values(row).some((count) => count > 0));
  }

  // The score after some of the games; elapsedMs since the first one began.
  running(elapsedMs) {
    const rest = this.games ? (elapsedMs / this.games) * (this.gamesToPlay - this.games) : 0;
    const losses = this.faults.map((row) => row['time loss']).join(' and ');
    const lines = [
      `${this.games} of ${this.gamesToPlay} games in ${duration(elapsedMs)},` +
        ` ${this.sprt ? 'at most' : 'about'} ${duration(rest)} to go; time losses ${losses}`,
      `${this.title}: ${this.result()}`,
    ];
    if (this.sprt) lines.push(this.#testText());
    return lines.map((line) => `  ${line}`).join('\n');
  }

  get title() {
    return `${this.names[0]} against ${this.names[1]}`;
  }

  result() {
    const points = this.wins + this.draws / 2;
    const share = this.games ? points / this.games : 0;
    return `+${this.wins} =${this.draws} -${this.losses}, ${points.toFixed(1)} of ${this.games}` +
      ` (${(100 * share).toFixed(1)} %), Elo ${this.#eloText()}`;
  }

  summary() {
    const pairs = this.counts.map((count, i) => `${2 * PairScores[i]}: ${count}`).join(', ');
    const lines = [`${this.title}: ${this.result()}`, `pairs by their points: ${pairs}`];
    for (const [engine, name] of this.names.entries()) {
      const faults = this.faults[engine];
      lines.push(`${name}: time losses ${faults['time loss']}, illegal moves ${faults['illegal move']},` +
        ` crashes ${faults.crash}`);
    }
    if (this.sprt) {
      const { elo0, elo1 } = this.sprt;
      const verdicts = { H0: `H0 accepted, Elo ${elo0} or less`, H1: `H1 accepted, Elo ${elo1} or more` };
      lines.push(this.#testText(), `verdict: ${verdicts[this.verdict] ?? 'undecided'}`);
    }
    return lines.join('\n');
  }

  #testText() {
    const { sprt } = this;
    return `LLR ${signed(sprt.llr(this.counts), 2)} in [${signed(sprt.lower, 2)}, ${signed(sprt.upper, 2)}]` +
      ` for H0 Elo ${sprt.elo0}, H1 Elo ${sprt.elo1}`;
  }

  #eloText() {
    const estimate = eloFromPairs(this.counts);
    if (!estimate) return 'not measurable yet';
    const [elo, low, high] = ['elo', 'low', 'high'].map((key) => signed(estimate[key], 1));
    const pairs = this.counts.reduce((sum, count) => sum + count, 0);
    return `${elo} [${low}, ${high}] (95 %, ${pairs} pairs), LOS ${(100 * estimate.superiority).toFixed(1)} %`;
  }
}
