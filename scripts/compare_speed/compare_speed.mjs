// Lets UCI engines search the same positions in turn, and compares their nodes per second.
import { readFileSync } from 'node:fs';
import { constants } from 'node:os';
import { engineRows, EngineUsage, finishEngines } from '../play_match/engine_words.mjs';
import { UciEngine } from '../play_match/uci_engine.mjs';
import { number, readWords, runTool, UsageError } from '../play_match/words.mjs';
import { speedTable, tellingRows } from './speeds.mjs';

const BenchPositions = new URL('../../src/shell/bench_positions.cpp', import.meta.url);
const HangMs = 30_000; // beyond the time of a search

const Usage = `usage: scripts/compare_speed.sh [--option NAME=VALUE]... \\
                                --engine COMMAND [--name NAME] [--option NAME=VALUE]... [--engine ...]... \\
                                [setting]...
${EngineUsage}
  --movetime MS[,MS]...  time of a search; each is a comparison of its own, default 300
  --positions FILE       FEN or EPD lines; the default is the fifty positions of the bench
  --first N              only the first N positions
  --rounds N             search all of it N times, default 1
The engines take turns at each position, with empty hash tables. Nodes are what an engine last told of a search, time
is from \`go\` to that line; processor time is counted in hundredths of a second. Progress goes to standard error, the
tables of speeds to standard output.
Exit status: 0 when all was searched; 1 if an engine does not start, crashes, hangs or tells no counts; 2 for a wrong
  command line; 130 when stopped by Ctrl-C, 143 by SIGTERM.`;

function parseCommandLine(words) {
  const common = [];
  const engines = [];
  const settings = { moveTimes: [300], positions: undefined, first: Infinity, rounds: 1 };
  const rows = {
    ...engineRows(engines, common),
    '--movetime': (text) =>
      (settings.moveTimes = text.split(',').map((field) => number(field, '--movetime', { min: 1 }))),
    '--positions': (text) => (settings.positions = text),
    '--first': (text) => (settings.first = number(text, '--first', { min: 1 })),
    '--rounds': (text) => (settings.rounds = number(text, '--rounds', { min: 1 })),
  };
  readWords(words, rows, {});
  if (!engines.length) throw new UsageError('there is no engine');
  finishEngines(engines, common);
  return { ...settings, engines };
}

// Whatever stands around the positions, such as the operations of an EPD line, is passed over. Engines want the two
// counters of a FEN.
function readPositions({ positions, first }) {
  const Position = /([1-8a-zA-Z]+\/){7}[1-8a-zA-Z]+ [wb] (-|[A-Za-z]+) (-|[a-h][36])( \d+ \d+)?/;
  const lines = readFileSync(positions ?? BenchPositions, 'utf8').split('\n');
  const found = lines.map((line) => Position.exec(line)).filter(Boolean);
  if (!found.length) throw new Error(`no position in ${positions}`);
  return found.slice(0, first).map((match) => match[0] + (match[4] ? '' : ' 0 1'));
}

// Milliseconds for which the threads of a process have run, those that have ended too. The system counts in hundredths
// of a second.
function processorTime(pid) {
  const HundredthMs = 10;
  const stat = readFileSync(`/proc/${pid}/stat`, 'utf8');
  const [user, system] = stat.slice(stat.lastIndexOf(')') + 2).split(' ').slice(11, 13).map(Number);
  return (user + system) * HundredthMs;
}

// One search from an empty hash table. An engine may end in the middle of an iteration that it tells nothing of, so
// the time that belongs to its count is the time of that line, and of the processor's time the same share.
async function search(engine, fen, moveTime) {
  let nodes = 0;
  let toldAt = 0;
  engine.onReport = (line) => {
    const told = / nodes (\d+)/.exec(line);
    if (!told) return;
    nodes = Number(told[1]);
    toldAt = performance.now();
  };
  await engine.newGame();
  const processorBefore = processorTime(engine.child.pid);
  const begin = performance.now();
  const { ms } = await engine.go(`position fen ${fen}`, `go movetime ${moveTime}`, moveTime + HangMs);
  await engine.isReady(); // it sleeps again, and all of its time is counted
  const processorMs = processorTime(engine.child.pid) - processorBefore;
  const wallMs = toldAt - begin;
  return { nodes, wallMs, processorMs: (processorMs * wallMs) / ms };
}

// rows[i][j]: position i, engine j. Each position is begun by another engine.
async function searchAll(engines, fens, moveTime, rounds) {
  const rows = [];
  const all = fens.length * rounds;
  for (let i = 0; i < all; ++i) {
    const row = [];
    for (let turn = 0; turn < engines.length; ++turn) {
      const who = (i + turn) % engines.length;
      row[who] = await search(engines[who], fens[i % fens.length], moveTime);
    }
    rows.push(row);
    if (rows.length % 10 === 0 || rows.length === all) {
      console.error(`${moveTime} ms: ${rows.length} of ${all} positions`);
    }
  }
  return rows;
}

async function main() {
  const words = process.argv.slice(2);
  if (words.some((word) => word === '--help' || word === '-h')) return console.log(Usage);
  const { engines: setups, moveTimes, rounds, ...where } = parseCommandLine(words);
  const fens = readPositions(where);
  const engines = setups.map((setup) => new UciEngine(setup));
  process.on('exit', () => engines.forEach((engine) => engine.kill()));
  for (const signal of ['SIGINT', 'SIGTERM']) {
    process.on(signal, () => process.exit(128 + constants.signals[signal]));
  }
  for (const engine of engines) await engine.start();
  for (const moveTime of moveTimes) {
    const rows = await searchAll(engines, fens, moveTime, rounds);
    const telling = tellingRows(rows, moveTime);
    if (!telling.length) throw new Error('no position was searched by all with a count of nodes');
    const leftOut = rows.length - telling.length;
    console.log(`${moveTime} ms, ${telling.length} positions` +
      (leftOut ? `; ${leftOut} left out, where an engine ended at once or told no count` : ''));
    console.log(`${speedTable(setups.map(({ name }) => name), telling)}\n`);
  }
  for (const engine of engines) await engine.quit();
}

await runTool(main, Usage);
