import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { parsePgn, startingPosition } from 'chessops/pgn';
import { parseSan } from 'chessops/san';
import { eloFromPairs } from '../statistics.mjs';

const here = fileURLToPath(new URL('.', import.meta.url));
const fake = (habit, move = 1) => `${process.execPath} ${join(here, 'fake_engine.mjs')} ${habit} ${move}`;

// Plays "good" against an engine with the given habit; returns what the tool printed and wrote.
function match(habit, move, ...settings) {
  const folder = mkdtempSync(join(tmpdir(), 'match-'));
  const run = spawnSync(process.execPath, [
    join(here, '..', 'play_match.mjs'), '--engine', fake('good'), '--name', 'good',
    '--engine', fake(habit, move), '--name', 'other', '--games', '4', '--tc', '0.3+0.3',
    '--pgn', join(folder, 'pgn'), '--log', join(folder, 'log'), ...settings,
  ], { encoding: 'utf8' });
  const result = {
    status: run.status,
    output: run.stdout + run.stderr,
    pgn: readFileSync(join(folder, 'pgn'), 'utf8'),
    log: readFileSync(join(folder, 'log'), 'utf8'),
  };
  rmSync(folder, { recursive: true });
  return result;
}

test('faults lose the game, are counted and fail the match', () => {
  const illegal = match('illegal', 2);
  assert.match(illegal.output, /other: time losses 0, illegal moves 2, crashes 0/); // the processes live on
  assert.match(illegal.pgn, /Termination "rules infraction"/);
  assert.equal(illegal.status, 1);

  const crash = match('crash', 2); // a new process for each game
  assert.match(crash.output, /good against other: \+4 =0 -0/);
  assert.match(crash.output, /other: time losses 0, illegal moves 0, crashes 4/);
  assert.match(crash.log, /stderr: about to crash/);
  assert.match(crash.log, /exit status 3/);
  assert.equal(crash.status, 1);

  const late = match('late', 1, '--restart');
  assert.match(late.output, /other: time losses 4, illegal moves 0, crashes 0/);
  assert.match(late.output, /time loss by \w+: [\d.]+ ms beyond the clock/);
  assert.doesNotMatch(match('late', 1, '--restart', '--margin', '3000').output, /time loss by/);
});

test('a clean match is written as games that can be replayed', () => {
  for (const variant of [[], ['--chess960']]) {
    const clean = match('good', 1, '--concurrency', '2', ...variant);
    assert.equal(clean.status, 0, clean.output);
    const games = parsePgn(clean.pgn);
    assert.equal(games.length, 4);
    const starts = games.map((game) => game.headers.get('FEN'));
    assert.equal(new Set(starts).size, 2); // each opening with both colours
    for (const game of games) {
      const position = startingPosition(game.headers).unwrap();
      for (const { san } of game.moves.mainline()) {
        const move = parseSan(position, san);
        assert.ok(move, san);
        position.play(move);
      }
    }
  }
});

test('wrong command lines are refused', () => {
  for (const words of [[], ['--games', 'x'], ['--engine', 'a'], ['--margin'], ['--tc', '1+2+3'], ['--what']]) {
    const run = spawnSync(process.execPath, [join(here, '..', 'play_match.mjs'), ...words], { encoding: 'utf8' });
    assert.equal(run.status, 2, words.join(' '));
  }
});

test('Elo comes from pairs of games', () => {
  assert.equal(eloFromPairs([0.5]), undefined);
  assert.equal(eloFromPairs([1, 1, 1]), undefined);
  const even = eloFromPairs([0.25, 0.75, 0.5, 0.5]);
  assert.ok(Math.abs(even.elo) < 1e-9 && even.low < 0 && Math.abs(even.low + even.high) < 1e-9);
  // Three quarters of the points are 190.85 Elo.
  assert.ok(Math.abs(eloFromPairs([0.5, 1, 0.75, 0.75]).elo - 190.85) < 0.01);
});
