// One UCI engine as a child process: lines in, lines out, and how it ended.
import { spawn } from 'node:child_process';

export class EngineFailure extends Error {
  // kind: 'crash' (the process ended, or does not answer `isready`) or 'hang' (no bestmove in time)
  constructor(kind, message) {
    super(message);
    this.kind = kind;
  }
}

// How long an engine may take to answer what is no search.
const AnswerLimitMs = 10_000;

export class UciEngine {
  // setup: { name, command, args, options: [[name, value]] }; log(text) takes what should be kept of its life.
  constructor(setup, { chess960 = false, log = () => {} } = {}) {
    this.setup = setup;
    this.chess960 = chess960;
    this.log = log;
    this.waiting = null; // { accepts, resolve, reject, timer } of the one answer that is awaited
    this.alive = false;
    this.rest = '';
  }

  async start() {
    this.alive = true;
    this.ended = new Promise((resolve) => (this.noteEnd = resolve));
    // Detached: Ctrl-C in the terminal is for the match alone, and does not look like a crash of the engine.
    this.child = spawn(this.setup.command, this.setup.args, { stdio: ['pipe', 'pipe', 'pipe'], detached: true });
    this.child.stdout.setEncoding('utf8').on('data', (text) => this.#read(text));
    this.child.stderr.setEncoding('utf8').on('data', (text) => this.log(`stderr: ${text.trimEnd()}`));
    this.child.stdin.on('error', () => {}); // a dead engine is noticed by its end
    this.child.on('error', (error) => this.#end(`cannot be run: ${error.message}`));
    this.child.on('close', (status, signal) => this.#end(signal ? `ended by ${signal}` : `exit status ${status}`));
    const greeting = []; // what it says of itself
    await this.#ask('uci', (line) => line === 'uciok' || !greeting.push(line));
    this.greeting = greeting;
    const has960 = greeting.some((line) => /^option name UCI_Chess960 /i.test(line));
    if (this.chess960 && !has960) throw new Error('it has no option UCI_Chess960');
    if (this.chess960) this.send('setoption name UCI_Chess960 value true');
    this.setOptions(this.setup.options);
    await this.isReady();
  }

  // options: [[name, value]]. Between searches.
  setOptions(options) {
    for (const [name, value] of options) this.send(`setoption name ${name} value ${value}`);
  }

  async newGame() {
    this.send('ucinewgame');
    await this.isReady();
  }

  isReady() {
    return this.#ask('isready', (line) => line === 'readyok');
  }

  send(line) {
    if (this.alive) this.child.stdin.write(line + '\n');
  }

  // Sends the position and `go`. Resolves to { move, ms, score, depth }; score in centipawns for the engine's
  // side, undefined if it gave none. ms is what a clock on our side of the pipe shows.
  async go(position, go, limitMs) {
    let score, depth;
    this.onInfo = (line) => {
      const words = line.split(/\s+/);
      const at = words.indexOf('score');
      if (at < 0) return;
      const value = Number(words[at + 2]);
      score = words[at + 1] === 'mate' ? (value > 0 ? 30_000 : -30_000) : value;
      depth = Number(words[words.indexOf('depth') + 1]);
    };
    this.send(position);
    const begin = performance.now();
    const line = await this.#ask(go, (text) => text.startsWith('bestmove'), limitMs, 'hang');
    return { move: line.split(/\s+/)[1] ?? '', ms: this.answeredAt - begin, score, depth };
  }

  // Ends the process, by force if it does not obey.
  async quit() {
    if (!this.alive) return;
    this.quitting = true;
    this.send('quit');
    const timer = setTimeout(() => this.kill(), 3000);
    await this.ended;
    clearTimeout(timer);
  }

  kill() {
    if (!this.alive || this.killed) return;
    this.killed = true;
    this.log('killed');
    try {
      process.kill(-this.child.pid, 'SIGKILL'); // its group: the engine can be the child of a script
    } catch {
      // it has just ended
    }
    for (const stream of this.child.stdio) stream?.destroy(); // its end waits for no process that may still hold them
  }

  // Ends the process by force; resolves when it is gone.
  async end() {
    this.kill();
    await this.ended;
  }

  #ask(line, accepts, limitMs = AnswerLimitMs, failure = 'crash') {
    return new Promise((resolve, reject) => {
      if (!this.alive) return reject(new EngineFailure('crash', this.endedBy));
      const timer = setTimeout(() => {
        this.waiting = null;
        reject(new EngineFailure(failure, `no answer to "${line}" in ${Math.round(limitMs)} ms`));
      }, limitMs);
      this.waiting = { accepts, resolve, reject, timer };
      this.send(line);
    });
  }

  #read(text) {
    const now = performance.now();
    const lines = (this.rest + text).split('\n');
    this.rest = lines.pop();
    for (const raw of lines) {
      const line = raw.trimEnd();
      if (line.startsWith('info ')) {
        this.onInfo?.(line);
        this.onReport?.(line); // for those who want more of a search than `go` resolves to
      }
      if (!this.waiting?.accepts(line)) continue;
      this.answeredAt = now;
      clearTimeout(this.waiting.timer);
      const { resolve } = this.waiting;
      this.waiting = null;
      resolve(line);
    }
  }

  #end(how) {
    if (!this.alive) return;
    this.alive = false;
    this.endedBy = how;
    this.log(how);
    if (this.waiting) {
      clearTimeout(this.waiting.timer);
      this.waiting.reject(new EngineFailure('crash', how));
      this.waiting = null;
    }
    this.noteEnd();
  }
}
