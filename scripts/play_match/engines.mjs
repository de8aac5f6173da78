// The engine processes of games that are played side by side: all can be ended at any moment.
import { appendFileSync } from 'node:fs';
import { UciEngine } from './uci_engine.mjs';

export class Engines {
  // log: the file that takes starts, standard error and ends.
  constructor({ chess960, log }) {
    this.chess960 = chess960;
    this.logFile = log;
    this.running = new Set();
    this.stopped = false;
  }

  // when: for the log. An engine that cannot even be started ends everything: nothing would be measured.
  async start(setup, when) {
    const log = (text) => {
      appendFileSync(this.logFile, `${new Date().toISOString()} ${setup.name}, started ${when}: ${text}\n`);
    };
    const engine = new UciEngine(setup, { chess960: this.chess960, log });
    if (this.stopped) return engine; // games with it count for nothing either
    this.running.add(engine);
    log('start');
    const started = engine.start();
    engine.ended.then(() => this.running.delete(engine));
    try {
      await started;
    } catch (failure) {
      if (this.stopped) return engine; // it was killed on its way
      engine.kill();
      throw new Error(`${setup.name} does not start: ${failure.message}`);
    }
    return engine;
  }

  // Ends the processes of a seat, a list with gaps, and empties it.
  async leave(seat) {
    for (const i of seat.keys()) {
      await seat[i]?.quit();
      seat[i] = undefined;
    }
  }

  // Plays at several seats side by side. When one fails the others are stopped, and all have ended when this does.
  async sit(count, play) {
    const seats = Array.from({ length: count }, () => play());
    try {
      await Promise.all(seats);
    } finally {
      this.stop();
      await Promise.allSettled(seats);
    }
  }

  // Games in progress end as if the engines had crashed, and count for nothing.
  stop() {
    this.stopped = true;
    for (const engine of this.running) engine.kill();
  }
}
