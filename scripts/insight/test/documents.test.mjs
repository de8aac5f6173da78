import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { evaluations, ledger } from '../account.mjs';
import { ledgerText } from '../explain_position.mjs';
import { readGames } from '../games.mjs';

const file = (name) => readFileSync(new URL(`../../../docs/${name}`, import.meta.url), 'utf8');

test('the numbers in the document are those of the evaluation', () => {
  const document = file('how-it-judges.md');
  const blocks = [...document.matchAll(/^\$ scripts\/explain_position\.sh "(.*)"\n((?:.+\n)+?)```/gm)];
  const told = new Set();
  const accounts = evaluations(blocks.map(([, fen]) => fen));
  for (const [i, [, fen, text]] of blocks.entries()) {
    const sums = ledger(accounts[i]);
    const printed = ledgerText(sums).split('\n');
    for (const line of text.trimEnd().split('\n')) {
      assert.ok(printed.includes(line), `${fen} prints no line\n${line}\nbut\n${printed.join('\n')}`);
      for (const { name } of [...sums.rows, ...sums.steps]) if (line.startsWith(`${name}  `)) told.add(name);
    }
  }
  // Each stage, and each step that can occur without options, has its position.
  const known = accounts.map(ledger).flatMap(({ rows, steps }) => [...rows, ...steps].map(({ name }) => name));
  for (const name of known) assert.ok(told.has(name) || /^(closed position|rounding)$/.test(name), name);
});

test('the games of the examples can be read', () => {
  const games = readGames(file('examples/games.pgn'));
  assert.deepEqual(games.map(({ faults, plies }) => [faults.length, plies.length]), [[0, 33], [0, 45], [0, 36]]);
});
