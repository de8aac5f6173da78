import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { Referee } from '../referee.mjs';

const judge = fileURLToPath(new URL('../storm_judge.mjs', import.meta.url));
const answers = (requests) => {
  const input = requests.map((request) => JSON.stringify(request) + '\n').join('');
  const run = spawnSync(process.execPath, [judge], { input, encoding: 'utf8' });
  assert.equal(run.status, 0, run.stderr);
  return run.stdout.trimEnd().split('\n').map((line) => JSON.parse(line));
};

const [positions, again] = answers([{ seed: 5, count: 200 }, { seed: 5, count: 200 }]);

test('positions of both variants, some of them over, have exactly the legal moves', () => {
  assert.deepEqual(again, positions);
  assert.equal(new Set(positions.map(({ chess960 }) => chess960)).size, 2);
  assert.ok(positions.some(({ start }) => start) && positions.some(({ legal }) => !legal.length));
  const squares = [...'abcdefgh'].flatMap((file) => [...'12345678'].map((rank) => file + rank));
  const texts = squares.flatMap((from) => squares.flatMap((to) => ['', 'q', 'n'].map((piece) => from + to + piece)));
  for (const { fen, chess960, moves, legal, white } of positions.slice(0, 8)) {
    const reached = () => {
      const referee = new Referee(fen, chess960);
      for (const move of moves) assert.ok(referee.play(move), `${move} in ${fen}`);
      return referee;
    };
    assert.equal(reached().turn === 'white', white);
    let referee = reached();
    const accepted = texts.filter((text) => referee.play(text) && (referee = reached()));
    assert.deepEqual(accepted.sort(), legal.filter((text) => !/[rb]$/.test(text)).sort());
  }
});

test('a line is judged up to its first illegal move', () => {
  const request = { fen: 'r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1', chess960: false, moves: ['e1g1'] };
  const lines = [[], ['e8c8', 'f1e1'], ['e8a8'], ['e8c8', 'g1g1', 'c8b8'], ['0000']];
  assert.deepEqual(answers(lines.map((line) => ({ ...request, line }))), [0, 2, 0, 1, 0]);
});
