// Prints a set of varied, balanced openings as EPD: random legal moves from the start position (in Chess960 from
// random start positions), kept when a strong engine finds neither side better than the bound.
//   node make_openings.mjs ENGINE COUNT SEED [--chess960] [--depth N] > openings/NAME.epd
import { Chess } from 'chessops/chess';
import { makeFen, parseFen } from 'chessops/fen';
import { randomFrom } from './random.mjs';
import { UciEngine } from './uci_engine.mjs';

const Plies = [6, 8, 10]; // even, so that White is to move
const BoundCp = 60;
// A quick look throws out most; what is kept has been looked at properly, to the final depth.
const QuickDepth = 8;
const DefaultFinalDepth = 16;

const words = process.argv.slice(2);
const [command, count, seed] = words;
const chess960 = words.includes('--chess960');
const finalDepth = words.includes('--depth') ? Number(words[words.indexOf('--depth') + 1]) : DefaultFinalDepth;
if (!command || !(Number(count) > 0) || !/^\d+$/.test(seed) || !(finalDepth > 0)) {
  console.error('usage: node make_openings.mjs ENGINE COUNT SEED [--chess960] [--depth N] > openings/NAME.epd');
  process.exit(2);
}
const reportEvery = Number(count) < 1000 ? 10 : 100;
const random = randomFrom(Number(seed));

// Any of the 960: bishops on both colours, the king between the rooks.
function startFen() {
  if (!chess960) return 'rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1';
  const rank = Array(8).fill('');
  rank[2 * random.below(4)] = 'b';
  rank[2 * random.below(4) + 1] = 'b';
  const put = (piece, nth) => {
    const free = [...rank.keys()].filter((file) => !rank[file]);
    rank[free[nth]] = piece;
  };
  put('q', random.below(6));
  put('n', random.below(5));
  put('n', random.below(4));
  put('r', 0);
  put('k', 0);
  put('r', 0);
  const pieces = rank.join('');
  return `${pieces}/pppppppp/8/8/8/8/PPPPPPPP/${pieces.toUpperCase()} w KQkq - 0 1`;
}

// undefined if the game ends on the way.
function randomOpening() {
  const position = Chess.fromSetup(parseFen(startFen()).unwrap()).unwrap();
  for (let ply = Plies[random.below(Plies.length)]; ply > 0; --ply) {
    const moves = [...position.allDests()].flatMap(([from, dests]) => [...dests].map((to) => ({ from, to })));
    const move = moves[random.below(moves.length)];
    if (!move) return undefined;
    const promotes = position.board.getRole(move.from) === 'pawn' && (move.to < 8 || move.to >= 56);
    position.play(promotes ? { ...move, promotion: 'queen' } : move);
  }
  return position.isEnd() ? undefined : makeFen(position.toSetup());
}

const engine = new UciEngine({ command, args: [], options: [] }, { chess960 });
await engine.start();
const balanced = async (fen, depth) => {
  const { score } = await engine.go(`position fen ${fen}`, `go depth ${depth}`, 60_000);
  return Math.abs(score) <= BoundCp;
};
const found = new Set();
while (found.size < Number(count)) {
  const fen = randomOpening();
  if (!fen || !(await balanced(fen, QuickDepth))) continue;
  await engine.newGame();
  const epd = fen.split(' ').slice(0, 4).join(' ');
  if (found.has(epd) || !(await balanced(fen, finalDepth))) continue;
  found.add(epd);
  console.log(epd);
  if (found.size % reportEvery === 0) console.error(`${found.size} of ${count} openings`);
}
await engine.quit();
