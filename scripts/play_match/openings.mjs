// Reads the positions from which games begin.
import { readFileSync } from 'node:fs';
import { randomFrom, shuffle } from './random.mjs';
import { Referee } from './referee.mjs';

// The file has a FEN or an EPD on each line. Returns their FENs, shuffled if there is a seed.
export function readOpenings(file, { chess960, seed }) {
  // The operations of an EPD line stand behind its four fields; the two counters of a FEN are numbers.
  const fens = readFileSync(file, 'utf8').split('\n').map((line) => line.split('#')[0].trim()).filter(Boolean)
    .map((line) => /^\S+ \S+ \S+ \S+( \d+ \d+)?/.exec(line)?.[0] ?? line);
  if (!fens.length) throw new Error(`no opening in ${file}`);
  for (const fen of fens) {
    if (new Referee(fen, chess960).outcome()) throw new Error(`no game can start at ${fen}`);
  }
  return seed === undefined ? fens : shuffle(fens, randomFrom(seed));
}
