import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Referee } from '../referee.mjs';

const start = 'rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1';
const castlingReady = 'r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1';

test('castling is written in one way in each mode', () => {
  assert.equal(new Referee(castlingReady).play('e1g1'), 'O-O');
  assert.equal(new Referee(castlingReady).play('e1h1'), undefined);
  assert.equal(new Referee(castlingReady, true).play('e1a1'), 'O-O-O');
  assert.equal(new Referee(castlingReady, true).play('e1c1'), undefined);
  // King and rook next to each other: the king's own step and castling are different moves.
  const adjacent = '4k3/8/8/8/8/8/8/5KR1 w G - 0 1';
  assert.equal(new Referee(adjacent, true).play('f1g1'), 'O-O');
  assert.equal(new Referee(adjacent, true).play('f1e1'), 'Ke1');
});

test('what is no legal move is refused', () => {
  for (const text of ['e2e5', 'e7e5', '0000', '(none)', '', 'e2', 'P@e4', 'a1a1']) {
    assert.equal(new Referee(start).play(text), undefined, text);
  }
  const promotion = '8/P7/8/8/8/8/8/k1K5 w - - 0 1';
  assert.equal(new Referee(promotion).play('a7a8'), undefined);
  assert.equal(new Referee(promotion).play('a7a8k'), undefined);
  assert.equal(new Referee(promotion).play('a7a8n'), 'a8=N');
});

test('games end by the rules', () => {
  const after = (fen, moves) => {
    const referee = new Referee(fen);
    for (const move of moves) {
      assert.equal(referee.outcome(), undefined);
      assert.ok(referee.play(move));
    }
    return referee.outcome();
  };
  assert.deepEqual(after(start, ['f2f3', 'e7e5', 'g2g4', 'd8h4']), { result: '0-1', reason: 'checkmate' });
  const shuffle = ['g1f3', 'g8f6', 'f3g1', 'f6g8'];
  assert.equal(after(start, [...shuffle, ...shuffle]).reason, 'threefold repetition');
  assert.equal(after('k7/8/8/8/8/8/8/K6R w - - 99 80', ['h1h2']).reason, 'fifty-move rule');
  // Mate on the last half move of the fifty counts as mate.
  assert.equal(after('k7/8/1K6/8/8/8/8/7R w - - 99 80', ['h1h8']).reason, 'checkmate');
  assert.equal(after('k7/8/2K5/8/8/8/8/1Q6 w - - 0 1', ['c6c7']), undefined);
  assert.equal(after('k7/8/2K5/8/8/8/8/1Q6 w - - 0 1', ['b1b6']).reason, 'stalemate');
  assert.equal(after('k7/8/8/8/8/8/1p6/K7 w - - 0 1', ['a1b2']).reason, 'insufficient material');
});
