// A UCI engine for the tests of the tools that play and compare. It plays the first legal move, until at its MOVE-th
// search it does what HABIT says.  node fake_engine.mjs HABIT MOVE
// Its option "Sharp Eye" is best at 70. The farther it is from there, the fewer mates in one are seen: those in
// positions with a lower move number are overlooked.
// With FAKE_STALL=N in the environment it gives no answer to its N-th search.
// With the habit "orthodox" it has no Chess960.
// With the habit "count" it always searches for the time that it is given, tells of MOVE nodes, and then goes on for
// as long again without a word.
import { createInterface } from 'node:readline';
import { Chess, castlingSide } from 'chessops/chess';
import { parseFen } from 'chessops/fen';
import { makeUci, parseUci } from 'chessops/util';

const [habit = 'good', at = '1'] = process.argv.slice(2);
let position;
let searches = 0;
let sharpEye = 0;

function mates(move) {
  const after = position.clone();
  after.play(move);
  return after.isCheckmate();
}

function bestMove() {
  const moves = [];
  for (const [from, dests] of position.allDests()) {
    for (const to of dests) {
      const promotes = position.board.getRole(from) === 'pawn' && (to < 8 || to >= 56);
      const move = promotes ? { from, to, promotion: 'queen' } : { from, to };
      if (!castlingSide(position, move)) moves.push(move);
    }
  }
  const seen = position.fullmoves > Math.abs(sharpEye - 70) && moves.find(mates);
  return moves.length ? makeUci(seen || moves[0]) : '(none)';
}

const misbehave = {
  good: () => console.log(`bestmove ${bestMove()}`),
  illegal: () => console.log('bestmove a1a1'),
  crash: () => {
    console.error('about to crash');
    process.exit(3);
  },
  count: (ms) => {
    const end = performance.now() + ms;
    while (performance.now() < end); // it works, and does not only wait
    console.log(`info depth 1 nodes ${at} time ${ms}`);
    setTimeout(() => console.log(`bestmove ${bestMove()}`), ms);
  },
  hang: () => {},
  late: () => setTimeout(() => console.log(`bestmove ${bestMove()}`), 400),
};

createInterface({ input: process.stdin }).on('line', (line) => {
  const words = line.split(' ');
  if (words[0] === 'uci') {
    console.log('id name Fake\noption name Sharp Eye type spin default 0 min 0 max 100');
    console.log('option name Mood type combo default calm var calm var wild');
    if (habit !== 'orthodox') console.log('option name UCI_Chess960 type check default false');
    console.log('uciok');
  }
  if (line.startsWith('setoption name Sharp Eye value ')) sharpEye = Number(words.at(-1));
  if (words[0] === 'isready') console.log('readyok');
  if (words[0] === 'quit') process.exit(0);
  if (words[0] === 'position') {
    position = Chess.fromSetup(parseFen(words.slice(2, 8).join(' ')).unwrap()).unwrap();
    for (const move of words.slice(9)) position.play(parseUci(move));
  }
  if (words[0] === 'go') {
    ++searches;
    if (searches === Number(process.env.FAKE_STALL)) return;
    const odd = habit === 'count' || searches === Number(at);
    (odd ? misbehave[habit] : misbehave.good)(Number(words[2]));
  }
});
