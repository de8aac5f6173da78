// Tunes numbers by simultaneous perturbation stochastic approximation: all are moved at once, each up or down by the
// toss of a coin, one side of a pair of games plays with these values and the other with their mirror image, and every
// value goes a little way to the side that won. Method and exponents are those of J. C. Spall, "Multivariate stochastic
// approximation using a simultaneous perturbation gradient approximation" (IEEE Transactions on Automatic Control 37,
// 1992, pages 332-341), and "Implementation of the simultaneous perturbation algorithm for stochastic optimization"
// (IEEE Transactions on Aerospace and Electronic Systems 34, 1998, pages 817-823). In pair k, from 0 on, of N:
//   c[k] = c / (k + 1) ** Gamma          how far a value is moved each way
//   a[k] = a / (A + k + 1) ** Alpha      how much is learnt from the result
//   value += a[k] / c[k] * (points of the plus side - points of the minus side) * (+1 or -1, the value's coin)
// As is usual where engines are tuned, c and a are chosen by what they lead to, for each value: c by the first step
// c[0], and a by the rate, the move at the end of the run for one point of difference, as a share of the last step
// c[N - 1]. The factor 1/2 of a difference quotient is part of the rate.
import { randomFrom } from '../play_match/random.mjs';

const Alpha = 0.602;
const Gamma = 0.101;
const StabilityShare = 0.1; // A as a share of N: keeps the first moves from being wild

// The default rate is this, divided by the square root of the pairs: chance alone then carries a value by about one
// first step over the run, since pairs between equals differ by about a point. Less stops short of what can be found.
const RateByPairs = 1.5;

export class Spsa {
  // options: { name, start, min, max, step }, step being the first one; rate: undefined for one by the pairs.
  constructor(options, { pairs, seed, rate = RateByPairs / Math.sqrt(pairs) }) {
    Object.assign(this, { options, pairs, seed, rate });
    this.values = options.map((option) => option.start); // fractions are kept, and played with as they come
  }

  // What the two sides of pair k play with: { plus, minus }, whole numbers within the ranges. A value between two
  // whole numbers becomes either, each as often as it is near: plain rounding would hide moves of less than one. Both
  // sides share the draw, so that it adds no difference of its own.
  settings(k) {
    const drawn = this.#draw(k);
    const side = (sign) => this.options.map(({ min, max }, i) => {
      const moved = this.values[i] + sign * drawn[i].coin * this.step(i, k);
      return Math.min(Math.max(Math.floor(moved + drawn[i].rounding), min), max);
    });
    return { plus: side(1), minus: side(-1) };
  }

  // Learns from pair k; difference: points of its plus side less those of its minus side, from -2 to 2.
  learn(k, difference) {
    const drawn = this.#draw(k);
    const stability = StabilityShare * this.pairs;
    const growth = ((stability + this.pairs) / (stability + k + 1)) ** Alpha; // a[k] / a[N - 1]
    for (const [i, { min, max }] of this.options.entries()) {
      const last = this.step(i, this.pairs - 1);
      const move = (this.rate * growth * last ** 2) / this.step(i, k);
      this.values[i] = Math.min(Math.max(this.values[i] + move * difference * drawn[i].coin, min), max);
    }
  }

  // c[k] of option i.
  step(i, k) {
    return this.options[i].step / (k + 1) ** Gamma;
  }

  // The coins and the rounding depend on k alone: an interrupted pair can be played again, and pairs in any order.
  #draw(k) {
    const random = randomFrom(this.seed ^ Math.imul(k + 1, 0x9e3779b1));
    return this.options.map(() => ({ coin: random.below(2) ? 1 : -1, rounding: random.below(2 ** 20) / 2 ** 20 }));
  }
}
