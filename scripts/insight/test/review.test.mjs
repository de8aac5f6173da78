import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { parseComment, parsePgn, startingPosition } from 'chessops/pgn';
import { parseSan } from 'chessops/san';
import { readGames } from '../games.mjs';
import { graphSvg, reviewPage } from '../pages.mjs';
import { annotatedPgn, chanceOf, markOf, reviewGame } from '../review.mjs';

const file = (name) => readFileSync(new URL(name, import.meta.url), 'utf8');

// Stands for the engine: its score and line for each position by the moves played so far.
const analystOf = (known) => ({
  newGame: async () => {},
  look: async (referee) => {
    const played = referee.moves.map(({ san }) => san).join(' ');
    const [score, line = ''] = known[played] ?? [{ cp: 0 }];
    return [{ score, moves: line.split(' ').filter(Boolean) }];
  },
});

const reviewOf = async (pgn, known) => {
  const [game] = readGames(pgn);
  const review = await reviewGame(game, analystOf(known), { depth: 1 });
  return { review, game, pgn: annotatedPgn(game, review) };
};

// The height of the graph's points above its middle, of each position.
const heights = (svg) => {
  const [, , height] = /viewBox="0 0 (\d+) (\d+)"/.exec(svg).map(Number);
  const points = /polygon points="([^"]*)"/.exec(svg)[1].split(' ').map((point) => Number(point.split(',')[1]));
  return points.slice(1, -1).map((y) => height / 2 - y);
};

test('chances follow the logistic curve, marks what is lost of them', () => {
  assert.equal(chanceOf({ cp: 0 }), 0);
  for (const [cp, chance] of [[100, 0.1820], [300, 0.5023], [1000, 0.9509]]) {
    assert.ok(Math.abs(chanceOf({ cp }) - chance) < 1e-4, `${cp}: ${chanceOf({ cp })}`);
    assert.ok(Math.abs(chanceOf({ cp: -cp }) + chance) < 1e-4);
  }
  assert.equal(chanceOf({ mate: 3, white: false }), -1);
  assert.equal(chanceOf({ mate: 0, white: true }), 1);
  assert.deepEqual([0, 0.09, 0.1, 0.19, 0.2, 0.3, 2].map(markOf), [undefined, undefined, '?!', '?!', '?', '??', '??']);
});

test('a move is marked for the side that made it, and the better line stands beside it', async () => {
  const known = {
    '': [{ cp: 30 }, 'e2e4 e7e5'],
    f3: [{ cp: -80 }, 'e7e5 g2g3'], // a fifth of the chances
    'f3 e5': [{ cp: -60 }, 'g2g3'],
    'f3 e5 g4': [{ mate: 1, white: false }, 'd8h4'],
    'f3 e5 g4 a6': [{ cp: 120 }, 'd2d4'], // Black misses the mate
  };
  const { review, pgn } = await reviewOf('1. f3 e5 2. g4 a6 *', known);
  assert.deepEqual(review.plies.map(({ mark }) => mark), ['?', undefined, '??', '??']);
  const [f3, , g4, a6] = review.plies;
  assert.deepEqual(f3.better.map(({ san }) => san), ['e4', 'e5']);
  assert.deepEqual(a6.better.map(({ san }) => san), ['Qh4#']);
  assert.ok(g4.loss > 0.8 && a6.loss > 1.2);
  const [game] = parsePgn(pgn);
  const nodes = [...game.moves.mainlineNodes()];
  assert.deepEqual(nodes.map(({ data }) => data.nags ?? []), [[2], [], [4], [4]]);
  const evaluations = nodes.map(({ data }) => parseComment(data.comments[0]).evaluation);
  assert.deepEqual(evaluations.map(({ pawns, mate }) => pawns ?? `#${mate}`), [-0.8, -0.6, '#-1', 1.2]);
  assert.equal(nodes[2].children[1].data.san, 'Qh4#');
  // The best move of all is never marked, whatever the engine finds behind it.
  const best = await reviewOf('1. f3 *', { '': [{ cp: 200 }, 'f2f3'], f3: [{ cp: -200 }] });
  assert.equal(best.review.plies[0].mark, undefined);
});

test('the graph goes up when White is better', async () => {
  const points = [0, 0.5, -1, 1].map((chance) => ({ chance }));
  const [level, better, lost, won] = heights(graphSvg(points));
  assert.equal(level, 0);
  assert.ok(better > 0 && lost < 0 && won > better && won === -lost);
  const { review } = await reviewOf('1. f3 e5 2. g4 Qh4# 0-1', { 'f3 e5 g4': [{ mate: 1, white: false }] });
  const page = heights(reviewPage([review]));
  assert.deepEqual(page.map(Math.sign), [0, 0, 0, -1, -1]);
});

test('games of every kind are read and end as they ended', async () => {
  const games = readGames(file('games.pgn'));
  assert.deepEqual(games.map(({ faults }) => faults.length), [0, 0, 0, 0, 0]);
  assert.deepEqual(games.map(({ plies }) => plies.length), [2, 4, 1, 8, 0]);
  const reviews = [];
  for (const game of games) reviews.push(await reviewGame(game, analystOf({}), { depth: 1 }));
  assert.deepEqual(reviews.map(({ ending }) => ending),
    ['checkmate', undefined, 'stalemate', 'threefold repetition', undefined]);
  assert.deepEqual(reviews[0].plies[1].score, { mate: 0, white: true });
  assert.deepEqual(reviews[1].plies.map(({ uci }) => uci), ['b1h1', 'b8a8', 'e2e4', 'e7e5']);
  assert.match(reviews[1].plies[1].board, /^2kr/);
  assert.equal(reviews[0].plies[0].number, '3...');

  const annotated = games.map((game, i) => annotatedPgn(game, reviews[i])).join('');
  assert.match(annotated, /3\.\.\. d6 \{ \[%eval 0\.00\] \} \{ \[%clk 0:01:00\] overlooks it \} \( 3\.\.\. Nf6/);
  assert.match(annotated, /Qxf7# .*\{ checkmate \} 1-0/);
  const again = readGames(annotated);
  assert.deepEqual(again.map(({ plies }) => plies), games.map(({ plies }) => plies));
  assert.ok(again.every(({ faults }) => !faults.length));
  for (const { headers, moves } of parsePgn(annotated)) {
    const position = startingPosition(headers).unwrap();
    for (const { san } of moves.mainline()) position.play(parseSan(position, san));
  }
});

test('what cannot be read is told with its place, and the rest is kept', async () => {
  const games = readGames(file('broken.pgn'));
  assert.deepEqual(games.map(({ faults, plies, referee }) => [referee ? plies.length : undefined, ...faults]), [
    [2],
    [2, 'move 2. "Ke3" is not possible'],
    [3, 'move 2... "Qxk9" is no move'],
    [undefined, '"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBN w KQkq - 0 1" is no position: board'],
    [undefined, '"kk6/8/8/8/8/8/8/K7 w - - 0 1" is no position: kings'],
    [2, 'the tag [Event "a "broken" tag"] cannot be read', 'move 1... "Zz9" is no move'],
    [undefined, 'no rules for Atomic'],
    [1, 'move 1... a comment without an end'],
  ]);
  const review = await reviewGame(games[1], analystOf({}), { depth: 1 });
  const text = annotatedPgn(games[1], review);
  assert.match(text, /e5 .*cannot be read on: move 2\. "Ke3".* 1-0\n/);
  assert.doesNotMatch(text.split('\n\n')[1], /d6/);
});
