// From results to Elo. The two games from one opening depend on each other, so a pair is one sample.

const Sigmas95 = 1.96;

const eloOf = (score) => -400 * Math.log10(1 / score - 1);

// pairs: mean score (0 to 1) of the first engine in each finished pair. Returns { elo, low, high } at 95 %, or
// undefined where nothing can be said: too few pairs, or all of them alike.
export function eloFromPairs(pairs) {
  const count = pairs.length;
  if (count < 2) return undefined;
  const mean = pairs.reduce((sum, score) => sum + score, 0) / count;
  const variance = pairs.reduce((sum, score) => sum + (score - mean) ** 2, 0) / (count - 1);
  if (variance === 0) return undefined;
  const error = Sigmas95 * Math.sqrt(variance / count);
  const clamp = (score) => Math.min(Math.max(score, 0), 1);
  return { elo: eloOf(mean), low: eloOf(clamp(mean - error)), high: eloOf(clamp(mean + error)) };
}

export class Score {
  constructor(names) {
    this.names = names;
    this.wins = 0; // all three as the first engine sees them
    this.draws = 0;
    this.losses = 0;
    this.faults = [0, 1].map(() => ({ 'time loss': 0, 'illegal move': 0, crash: 0 }));
    this.halves = new Map(); // pair number -> score of its first finished game
    this.pairs = [];
  }

  // points: 1, 0.5 or 0 for the first engine; fault: { engine, kind } if the loser broke a rule of the match.
  add(pair, points, fault) {
    if (points === 1) ++this.wins;
    else if (points === 0) ++this.losses;
    else ++this.draws;
    if (fault) ++this.faults[fault.engine][fault.kind];
    if (!this.halves.has(pair)) this.halves.set(pair, points);
    else this.pairs.push((this.halves.get(pair) + points) / 2);
  }

  get games() {
    return this.wins + this.draws + this.losses;
  }

  get anyFault() {
    return this.faults.some((row) => Object.values(row).some((count) => count > 0));
  }

  line() {
    const share = this.games ? (this.wins + this.draws / 2) / this.games : 0;
    return `${this.names[0]} against ${this.names[1]}: +${this.wins} =${this.draws} -${this.losses}` +
      ` of ${this.games} (${(100 * share).toFixed(1)} %), Elo ${this.#eloText()}`;
  }

  summary() {
    const rows = this.names.map((name, engine) => {
      const faults = this.faults[engine];
      return `${name}: time losses ${faults['time loss']}, illegal moves ${faults['illegal move']},` +
        ` crashes ${faults.crash}`;
    });
    return [this.line(), ...rows].join('\n');
  }

  #eloText() {
    const estimate = eloFromPairs(this.pairs);
    if (!estimate) return 'not measurable yet';
    const text = (elo) => (elo > 0 ? '+' : '') + (Number.isFinite(elo) ? elo.toFixed(1) : String(elo));
    return `${text(estimate.elo)} [${text(estimate.low)}, ${text(estimate.high)}] (95 %, ${this.pairs.length} pairs)`;
  }
}
