// One finished game as PGN text.
import { ChildNode, Node, makePgn } from 'chessops/pgn';

const StandardStart = 'rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1';

// game: what playGame returns.
export function gameToPgn(game, { white, black, round, timeControl, chess960, date = new Date() }) {
  const headers = new Map([
    ['Event', `${white} - ${black}`],
    ['Site', '?'],
    ['Date', date.toISOString().slice(0, 10).replaceAll('-', '.')],
    ['Round', round],
    ['White', white],
    ['Black', black],
    ['Result', game.result],
  ]);
  if (chess960) headers.set('Variant', 'Chess960');
  if (chess960 || game.startFen !== StandardStart) {
    headers.set('SetUp', '1').set('FEN', game.startFen);
  }
  headers.set('TimeControl', timeControl).set('PlyCount', String(game.moves.length));
  headers.set('Termination', game.termination);
  const moves = new Node();
  let node = moves;
  for (const { san, comment } of game.moves) {
    const child = new ChildNode({ san, comments: [comment] });
    node.children.push(child);
    node = child;
  }
  const last = node instanceof ChildNode ? node.data.comments : undefined;
  last?.push(game.reason);
  return makePgn({ headers, moves, comments: last ? undefined : [game.reason] }) + '\n';
}
