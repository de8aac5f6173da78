// How far a run has come: which pairs are finished, what the values are and how they came there.
import { MaxPoints } from '../play_match/picture.mjs';

export class Progress {
  // spsa: of the same settings; its values are set to the saved ones. saved: what save() returned.
  constructor(spsa, saved = { firstOpen: 0, beyond: [], finished: 0, faults: 0, history: [] }) {
    this.spsa = spsa;
    this.firstOpen = saved.firstOpen; // all pairs below this one are finished
    this.beyond = new Set(saved.beyond); // and these above it
    this.finished = saved.finished;
    this.faults = saved.faults; // finished pairs that were dropped
    this.history = saved.history; // { games, values }, at even distances
    this.running = new Set();
    spsa.values = saved.values ?? spsa.values;
    if (!this.history.length) this.#note();
  }

  save() {
    const { firstOpen, beyond, finished, faults, history } = this;
    return { finished, values: this.spsa.values, faults, firstOpen, beyond: [...beyond], history };
  }

  get done() {
    return this.finished === this.spsa.pairs;
  }

  // The number of the next pair to play, undefined if there is none. One that was interrupted comes first.
  take() {
    let k = this.firstOpen;
    while (this.beyond.has(k) || this.running.has(k)) ++k;
    if (k >= this.spsa.pairs) return undefined;
    this.running.add(k);
    return k;
  }

  // difference: as in Spsa; undefined for a pair that tells nothing because a game of it was not played out.
  finish(k, difference) {
    if (difference === undefined) ++this.faults;
    else this.spsa.learn(k, difference);
    ++this.finished;
    this.running.delete(k);
    this.beyond.add(k);
    while (this.beyond.delete(this.firstOpen)) ++this.firstOpen;
    if (this.finished % Math.ceil(this.spsa.pairs / MaxPoints) === 0 || this.done) this.#note();
  }

  #note() {
    this.history.push({ games: 2 * this.finished, values: [...this.spsa.values] });
  }
}
