// Needs no library, so that these run wherever Node.js is.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { randomFrom } from '../../play_match/random.mjs';
import { drawValues } from '../picture.mjs';
import { Progress } from '../progress.mjs';
import { Spsa } from '../spsa.mjs';

const near = (value, wanted, error, what = '') =>
  assert.ok(Math.abs(value - wanted) <= error, `${what} ${value} is not ${wanted} within ${error}`);

// Two games in which the plus side is stronger by `elo`, half of them drawn; returns the difference in points.
function playPair(elo, random) {
  const ahead = 1 / (1 + 10 ** (-elo / 400)) - 0.5;
  const game = () => {
    const drawn = random.below(1e6) / 1e6;
    return drawn < 0.25 + ahead ? 1 : drawn > 0.75 + ahead ? -1 : 0;
  };
  return game() + game();
}

const options = [
  { name: 'far', start: 20, min: 0, max: 200, step: 15, best: 80, loss: 60 },
  { name: 'negative', start: -100, min: -300, max: 50, step: 40, best: -200, loss: 60 },
  { name: 'there already', start: 70, min: 0, max: 100, step: 10, best: 70, loss: 40 },
  { name: 'beyond its range', start: 150, min: 100, max: 200, step: 20, best: 230, loss: 30 },
];
// Elo that is lost with these values: of each option `loss` for a distance of four steps, by the square.
const lost = (values) => options.reduce(
  (sum, { best, step, loss }, i) => sum + loss * ((values[i] - best) / (4 * step)) ** 2, 0);

test('values find the best ones through the noise of games', () => {
  for (const seed of [1, 2, 3, 4]) {
    const spsa = new Spsa(options, { pairs: 6000, seed });
    const random = randomFrom(1000 + seed);
    for (let k = 0; k < spsa.pairs; ++k) {
      const { plus, minus } = spsa.settings(k);
      spsa.learn(k, playPair(lost(minus) - lost(plus), random));
    }
    for (const [i, { name, best, max, step }] of options.entries()) {
      near(spsa.values[i], Math.min(best, max), 1.5 * step, `seed ${seed}, ${name}:`);
      assert.ok(spsa.values[i] <= max, name);
    }
  }
});

test('chance alone carries a value by about a first step', () => {
  for (const pairs of [100, 2500]) {
    const runs = 300;
    let squares = 0;
    for (let seed = 0; seed < runs; ++seed) {
      const spsa = new Spsa([{ start: 0, min: -1000, max: 1000, step: 10 }], { pairs, seed });
      const random = randomFrom(5000 + seed);
      for (let k = 0; k < pairs; ++k) spsa.learn(k, playPair(0, random));
      squares += (spsa.values[0] / 10) ** 2 / runs;
    }
    const wander = Math.sqrt(squares);
    assert.ok(wander > 0.7 && wander < 1.6, `${wander} steps in ${pairs} pairs`);
  }
});

test('the gains are those of the method', () => {
  const spsa = new Spsa([{ start: 500, min: 0, max: 1000, step: 20 }], { pairs: 100, seed: 1, rate: 0.01 });
  near(spsa.step(0, 0), 20, 1e-12);
  const last = 12.5612; // 20 / 100 ** 0.101
  near(spsa.step(0, 99), last, 1e-4);
  const moveOf = (k, difference) => {
    const { plus, minus } = spsa.settings(k);
    const before = spsa.values[0];
    spsa.learn(k, difference);
    return (spsa.values[0] - before) * Math.sign(plus[0] - minus[0]);
  };
  near(moveOf(99, 1), 0.01 * last, 1e-5); // what the rate promises
  near(moveOf(99, -2), -0.02 * last, 1e-5);
  near(moveOf(0, 1), 0.01 * (last ** 2 / 20) * (110 / 11) ** 0.602, 1e-5);
  assert.equal(Math.abs(moveOf(50, 0)), 0);
});

test('sides are whole numbers around the value, within the range, and on average right', () => {
  const pairs = 4000;
  const wide = { start: 40, min: 0, max: 100, step: 3 };
  const options = [wide, { ...wide, start: 40.3, step: 1 }, { ...wide, start: 99, step: 20 }];
  const spsa = new Spsa(options, { pairs, seed: 9 });
  const sums = [0, 0, 0, 0]; // middle and distance of the second option, and how often coins are up, and alike
  for (let k = 0; k < pairs; ++k) {
    const { plus, minus } = spsa.settings(k);
    for (const value of [...plus, ...minus]) assert.ok(Number.isInteger(value) && value >= 0 && value <= 100);
    sums[0] += (plus[1] + minus[1]) / 2 / pairs;
    sums[1] += (Math.abs(plus[1] - minus[1]) - 2 * spsa.step(1, k)) / pairs;
    near(Math.abs(plus[1] - minus[1]), 2 * spsa.step(1, k), 1); // one draw for both sides
    sums[2] += (plus[0] > minus[0]) / pairs;
    sums[3] += (plus[0] > minus[0] === plus[2] > minus[2]) / pairs;
    assert.equal(Math.max(plus[2], minus[2]), 100);
  }
  assert.notDeepEqual(new Spsa(options, { pairs, seed: 10 }).settings(0), spsa.settings(0));
  near(sums[0], 40.3, 0.03);
  near(sums[1], 0, 0.03);
  near(sums[2], 0.5, 0.03);
  near(sums[3], 0.5, 0.03);
});

test('progress that was saved goes on with the interrupted pairs, and each is played once', () => {
  const make = (saved) => new Progress(new Spsa(options, { pairs: 50, seed: 1 }), saved);
  let progress = make();
  const played = [];
  const finish = (k, difference) => played.push(k) && progress.finish(k, difference);
  const seats = [progress.take(), progress.take(), progress.take()];
  assert.deepEqual(seats, [0, 1, 2]);
  finish(2, 1);
  finish(0, undefined); // dropped for a fault
  finish(progress.take(), -1);
  const before = [...progress.spsa.values];
  progress = make(JSON.parse(JSON.stringify(progress.save())));
  assert.deepEqual(progress.spsa.values, before);
  for (let k; (k = progress.take()) !== undefined;) finish(k, 0);
  assert.deepEqual(played.slice(3, 5), [1, 4]);
  assert.deepEqual([...played].sort((a, b) => a - b), Array.from({ length: 50 }, (_, k) => k));
  assert.ok(progress.done);
  assert.equal(progress.faults, 1);

  const svg = drawValues('<title>', progress);
  assert.doesNotMatch(svg, /NaN|Infinity|undefined|<title>/);
  const lines = [...svg.matchAll(/points="([^"]*)"/g)];
  assert.equal(lines.length, options.length);
  for (const [, points] of lines) assert.equal(points.split(' ').length, 52); // the start, each pair, and now
});
