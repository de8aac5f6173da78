// The rules of chess for scripts/event_storm.py: draws positions, and judges lines of moves. One request a line on
// standard input, one answer a line, all in JSON:
//   { seed, count }                    -> that many positions
//   { fen, chess960, moves, line }     -> how many moves of the line are legal, one after the other, behind `moves`
import { readFileSync } from 'node:fs';
import { createInterface } from 'node:readline';
import { randomFrom } from './random.mjs';
import { Referee } from './referee.mjs';

// Men beside the white king, which makes boards that endgame tables hold.
const Endgames =
  ['Qk', 'Rk', 'Pk', 'BNk', 'PPk', 'Rkn', 'Qkr', 'RPkr', 'Pkp', 'Qkq', 'RBkr', 'Bkp', 'NNkp', 'Rkb'];
const StartFen = 'rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1';

const readOpenings = (name) => readFileSync(new URL(`./openings/${name}.epd`, import.meta.url), 'utf8').split('\n')
  .map((line) => /^\S+ \S+ \S+ \S+/.exec(line)?.[0]).filter(Boolean);
const openings = { standard: readOpenings('standard'), chess960: readOpenings('chess960') };

function fewMen(random) {
  for (;;) {
    const board = Array(64).fill('');
    for (const piece of 'K' + Endgames[random.below(Endgames.length)]) board[random.below(64)] = piece;
    const ranks = Array.from({ length: 8 }, (_, r) =>
      board.slice(8 * r, 8 * r + 8).map((piece) => piece || '1').join(''));
    const fen = `${ranks.join('/')} ${'wb'[random.below(2)]} - -`;
    try {
      return new Referee(fen) && fen;
    } catch {
      // Kings side by side, a pawn on a back rank, two pieces on a square: another try.
    }
  }
}

// Some moves into a game, or many; now and then at its end, where no move is left.
function randomPosition(random) {
  const kind = random.below(10);
  const chess960 = kind < 3 || (kind > 7 && random.below(2) === 0);
  const set = openings[chess960 ? 'chess960' : 'standard'];
  const fen = kind > 7 ? fewMen(random) : kind === 7 ? StartFen : set[random.below(set.length)];
  const referee = new Referee(fen, chess960);
  let legal = referee.legalMoves();
  for (let plies = random.below(2) ? random.below(20) : random.below(150); plies && legal.length; --plies) {
    referee.play(legal[random.below(legal.length)]);
    legal = referee.legalMoves();
  }
  const moves = referee.moves.map((move) => move.uci);
  const start = referee.startFen === StartFen;
  return { fen: referee.startFen, start, chess960, moves, legal, white: referee.turn === 'white' };
}

function legalLength({ fen, chess960, moves, line }) {
  const referee = new Referee(fen, chess960);
  for (const move of moves) referee.play(move);
  const fault = line.findIndex((move) => !referee.play(move));
  return fault < 0 ? line.length : fault;
}

function answerTo(request) {
  if (request.seed === undefined) return legalLength(request);
  const random = randomFrom(request.seed);
  return Array.from({ length: request.count }, () => randomPosition(random));
}

for await (const text of createInterface({ input: process.stdin })) {
  process.stdout.write(JSON.stringify(answerTo(JSON.parse(text))) + '\n');
}
