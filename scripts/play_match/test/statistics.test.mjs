// Needs no library, so that these run wherever Node.js is.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { drawScore } from '../picture.mjs';
import { randomFrom } from '../random.mjs';
import { Score } from '../score.mjs';
import { eloFromPairs, normalShareBelow, PairScores, Sprt } from '../statistics.mjs';

const near = (value, wanted, error) =>
  assert.ok(Math.abs(value - wanted) <= error, `${value} is not ${wanted} within ${error}`);
const usual = { elo0: 0, elo1: 5, alpha: 0.05, beta: 0.05 };

test('Elo and superiority come from pairs of games', () => {
  assert.equal(eloFromPairs([0, 0, 1, 0, 0]), undefined);
  assert.equal(eloFromPairs([0, 0, 0, 0, 3]), undefined);
  const even = eloFromPairs([0, 1, 2, 1, 0]);
  near(even.elo, 0, 1e-9);
  near(even.low + even.high, 0, 1e-9);
  near(even.superiority, 0.5, 1e-7);
  near(eloFromPairs([0, 0, 1, 2, 1]).elo, 190.85, 0.01); // three quarters of the points
  // Mean 0.52, sum of squared deviations 2.085: 1.378 deviations of 0.01451 above the middle.
  const ahead = eloFromPairs([0, 10, 75, 12, 3]);
  near(ahead.elo, 13.905, 0.001);
  near(ahead.low, -5.868, 0.001);
  near(ahead.high, 33.768, 0.001);
  near(ahead.superiority, 0.91592, 1e-4);
  assert.equal(eloFromPairs([0, 0, 0, 1, 1]).high, Infinity);
  for (const [z, share] of [[-3, 0.00134990], [-1.96, 0.02499790], [0, 0.5], [1, 0.84134475], [2.5, 0.99379033]]) {
    near(normalShareBelow(z), share, 2e-7);
  }
});

test('the likelihood ratio is that of the best fits', () => {
  const test = new Sprt({ elo0: 10, elo1: 60, alpha: 0.05, beta: 0.05 });
  // Of three possible scores the best fit has one free number, which can be searched step by step.
  const counts = [20, 0, 50, 0, 31];
  const bestLogLikelihood = (mean) => {
    let best = -Infinity;
    for (let win = 1e-5; win < mean; win += 1e-5) {
      const draw = 2 * (mean - win);
      const loss = 1 - win - draw;
      if (loss <= 0) continue;
      best = Math.max(best, 20 * Math.log(loss) + 50 * Math.log(draw) + 31 * Math.log(win));
    }
    return best;
  };
  const meanAt = (elo) => 1 / (1 + 10 ** (-elo / 400));
  // The scores that were never seen count for a little.
  near(test.llr(counts), bestLogLikelihood(meanAt(60)) - bestLogLikelihood(meanAt(10)), 0.005);

  // Many pairs near the two differences: the ratio is close to that of two normal distributions.
  const many = [900, 5000, 8000, 5400, 1000];
  const mean = many.reduce((sum, count, i) => sum + count * PairScores[i], 0) / 20300;
  const variance = many.reduce((sum, count, i) => sum + count * (PairScores[i] - mean) ** 2, 0) / 20300;
  const [s0, s1] = [meanAt(0), meanAt(5)];
  near(new Sprt(usual).llr(many), (20300 * (s1 - s0) * (2 * mean - s0 - s1)) / (2 * variance), 0.05);

  // The other engine's view, and no game at all.
  const mirrored = new Sprt({ elo0: -60, elo1: -10, alpha: 0.05, beta: 0.05 });
  near(mirrored.llr([3, 4, 9, 12, 5]), -test.llr([5, 12, 9, 4, 3]), 1e-9);
  assert.equal(test.llr([0, 0, 0, 0, 0]), 0);
});

test('few pairs that are all alike do not decide', () => {
  for (let i = 0; i < PairScores.length; ++i) {
    const counts = PairScores.map((_, j) => (i === j ? 10 : 0));
    assert.equal(new Sprt(usual).verdict(counts), undefined, counts.join());
  }
});

test('the test errs as rarely as it promises', () => {
  const test = new Sprt({ elo0: 0, elo1: 60, alpha: 0.1, beta: 0.05 });
  near(test.lower, Math.log(0.05 / 0.9), 1e-12);
  near(test.upper, Math.log(0.95 / 0.1), 1e-12);
  const random = randomFrom(7);
  const matches = 600;
  // How often H1 is accepted when each game of the first engine is won with this probability, lost with `loss`.
  const acceptedShare = (win, loss) => {
    const half = () => {
      const drawn = random.below(1e6) / 1e6;
      return drawn < win ? 1 : drawn < win + loss ? 0 : 0.5;
    };
    let accepted = 0;
    for (let i = 0; i < matches; ++i) {
      const counts = [0, 0, 0, 0, 0];
      let verdict;
      do {
        ++counts[2 * (half() + half())];
        verdict = test.verdict(counts);
      } while (!verdict);
      accepted += verdict === 'H1';
    }
    return accepted / matches;
  };
  // Three deviations of the share among so many matches on top of the promise; a test that stops late is no test
  // either, so that errors must not be missing altogether.
  const atMost = (chance) => chance + 3 * Math.sqrt((chance * (1 - chance)) / matches);
  const wrongH1 = acceptedShare(0.3, 0.3);
  assert.ok(wrongH1 > 0.03 && wrongH1 < atMost(0.1), `H1 accepted by mistake: ${wrongH1}`);
  const difference = 1 / (1 + 10 ** (-60 / 400)) - 0.5;
  const wrongH0 = 1 - acceptedShare(0.3 + difference, 0.3 - difference);
  assert.ok(wrongH0 > 0.01 && wrongH0 < atMost(0.05), `H0 accepted by mistake: ${wrongH0}`);
});

test('the score joins the games of a pair in whatever order they end', () => {
  const score = new Score(['new', 'old'], 8, new Sprt(usual));
  score.add(0, 1);
  score.add(1, 0.5);
  score.add(1, 1);
  score.add(0, 0, { engine: 0, kind: 'time loss' });
  score.add(2, 0);
  assert.deepEqual(score.counts, [0, 0, 1, 1, 0]);
  assert.deepEqual(score.history.map((point) => point.games), [3, 4]);
  assert.ok(score.anyFault);
  const text = score.running(5000);
  assert.match(text, /5 of 8 games in 0:00:05, at most 0:00:03 to go; time losses 1 and 0/);
  assert.match(text, /new against old: \+2 =1 -2, 2\.5 of 5 \(50\.0 %\)/);
  assert.match(text, /LLR [+-]\d\.\d\d in \[-2\.94, \+2\.94\] for H0 Elo 0, H1 Elo 5/);
  assert.match(score.summary(), /verdict: undecided/);
});

test('the picture stays in its frame', () => {
  const score = new Score(['a & <b>', 'c'], 4000, new Sprt(usual));
  const random = randomFrom(3);
  for (const played of [0, 1, 2, 5, 4000]) {
    while (score.games < played) score.add(score.games >> 1, random.below(3) / 2);
    const svg = drawScore(score);
    assert.doesNotMatch(svg, /NaN|Infinity|undefined|<b>/);
    const lines = [...svg.matchAll(/points="([^"]*)"/g)].map(([, points]) => points.split(' ').filter(Boolean));
    assert.equal(lines.length, 3); // the band, Elo and the LLR
    if (played === 4000) assert.ok(lines[2].length > 300 && lines[2].length <= 700);
    for (const point of lines.flat()) {
      const [x, y] = point.split(',').map(Number);
      assert.ok(x >= 70 && x <= 780 && y >= 80 && y <= 510, point);
    }
  }
});
