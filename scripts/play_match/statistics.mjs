// From results to Elo and to a verdict. The two games from one opening depend on each other, so a pair of games is
// one sample. All that matters of the finished pairs is how many had each of the five possible scores: `counts`,
// in the order of PairScores, as the first engine sees them.

export const PairScores = [0, 0.25, 0.5, 0.75, 1]; // mean points of the two games

const Sigmas95 = 1.96;
// A score that has not been seen yet is taken as seen this often: nothing is impossible after a few pairs.
const UnseenCount = 1e-3;
// Halvings of an interval of a few units, down to the precision of a double.
const Halvings = 60;

const eloOf = (score) => -400 * Math.log10(1 / score - 1);
const scoreOf = (elo) => 1 / (1 + 10 ** (-elo / 400));

const sumOver = (counts, term) => counts.reduce((sum, count, i) => sum + count * term(PairScores[i]), 0);

// The share of the standard normal distribution below z (Abramowitz and Stegun 7.1.26; error below 1e-7).
export function normalShareBelow(z) {
  const x = Math.abs(z) / Math.SQRT2;
  const t = 1 / (1 + 0.3275911 * x);
  const series = [1.061405429, -1.453152027, 1.421413741, -0.284496736, 0.254829592];
  const tail = series.reduce((sum, coefficient) => (sum + coefficient) * t, 0) * Math.exp(-x * x) / 2;
  return z > 0 ? 1 - tail : tail;
}

// Returns { elo, low, high, superiority }: Elo with its 95 % bounds, and the likelihood that the first engine is
// the stronger one. undefined where nothing can be said: too few pairs, or all of them alike.
export function eloFromPairs(counts) {
  const pairs = sumOver(counts, () => 1);
  if (pairs < 2) return undefined;
  const mean = sumOver(counts, (score) => score) / pairs;
  const variance = sumOver(counts, (score) => (score - mean) ** 2) / (pairs - 1);
  if (variance === 0) return undefined;
  const deviation = Math.sqrt(variance / pairs);
  const eloAt = (sigmas) => eloOf(Math.min(Math.max(mean + sigmas * deviation, 0), 1));
  return {
    elo: eloOf(mean),
    low: eloAt(-Sigmas95),
    high: eloAt(Sigmas95),
    superiority: normalShareBelow((mean - 0.5) / deviation),
  };
}

// Of all distributions of pairs with the given mean score, the one under which the counts are likeliest has the
// probabilities counts[i] / pairs / (1 + slope * (PairScores[i] - mean)). Returns that slope.
function likeliestSlope(counts, mean) {
  // Between these two all probabilities are positive. The excess falls with the slope, and is 0 where their mean
  // is the wanted one.
  let [low, high] = [-1 / (1 - mean), 1 / mean];
  const excess = (slope) => sumOver(counts, (score) => (score - mean) / (1 + slope * (score - mean)));
  for (let i = 0; i < Halvings; ++i) {
    const middle = (low + high) / 2;
    if (excess(middle) > 0) low = middle;
    else high = middle;
  }
  return (low + high) / 2;
}

// The generalised sequential probability ratio test on pairs of games: H0 says that the difference is elo0, H1 that
// it is elo1 > elo0 (logistic Elo). alpha: probability of accepting H1 at elo0; beta: of accepting H0 at elo1.
export class Sprt {
  constructor({ elo0, elo1, alpha, beta }) {
    this.elo0 = elo0;
    this.elo1 = elo1;
    this.lower = Math.log(beta / (1 - alpha));
    this.upper = Math.log((1 - beta) / alpha);
  }

  // The logarithm of the ratio of the likelihoods of H1 and H0, each at its best fit to the counts.
  llr(counts) {
    if (!counts.some((count) => count > 0)) return 0;
    const seen = counts.map((count) => count || UnseenCount);
    const minusLogLikelihood = (mean) => {
      const slope = likeliestSlope(seen, mean);
      return sumOver(seen, (score) => Math.log1p(slope * (score - mean)));
    };
    return minusLogLikelihood(scoreOf(this.elo0)) - minusLogLikelihood(scoreOf(this.elo1));
  }

  // 'H0' or 'H1' once one is accepted.
  verdict(counts) {
    const llr = this.llr(counts);
    if (llr >= this.upper) return 'H1';
    return llr <= this.lower ? 'H0' : undefined;
  }
}
