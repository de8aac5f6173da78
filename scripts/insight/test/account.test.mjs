import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { ledger, worths } from '../account.mjs';
import { boardText, ledgerText } from '../explain_position.mjs';
import { refereeOf } from '../analyst.mjs';

// What the evaluation told of an endgame with Black to move, a middlegame, and king and pawn against king.
const accounts = JSON.parse(readFileSync(new URL('./account.json', import.meta.url), 'utf8'));

// The numbers of each printed line, in thousandths.
const printed = (text) => text.split('\n').map((line) =>
  (line.match(/[+-]\d+\.\d{3}\b/g) ?? []).map((number) => Math.round(1000 * Number(number))));

test('the printed account can be added up', () => {
  for (const account of accounts) {
    const text = ledgerText(ledger(account));
    const lines = printed(text);
    const rows = lines.filter((line) => line.length === 7);
    assert.equal(rows.length, account.stages.length ? account.stages.length + 1 : 0);
    const total = rows.pop();
    for (const row of rows) assert.equal(row[6], row[2] - row[5]);
    total?.forEach((sum, column) => assert.equal(sum, rows.reduce((all, row) => all + row[column], 0), text));
    const steps = lines.filter((line) => line.length === 2);
    if (total) assert.equal(steps[1][0], total[6]);
    let left = 0;
    for (const [adds, after] of steps) assert.equal((left += adds), after, text);
    const whiteScore = account.fen.includes(' w ') ? account.score : -account.score;
    assert.deepEqual(lines.at(-1), [10 * whiteScore], text);
    assert.equal(left, 10 * whiteScore);
  }
});

test('what comes of a stage lies between its two values, by the phase', () => {
  for (const { phase, rows } of accounts.map(ledger)) {
    for (const { name, white, black } of rows) {
      for (const [middlegame, endgame, now] of [white, black]) {
        const exact = (middlegame * phase + endgame * (96 - phase)) / 96;
        assert.ok(Math.abs(now - exact) <= 1, `${name}: ${now} for ${exact}`);
      }
    }
  }
});

test('a wrong stage or sum is found', () => {
  for (const account of accounts.slice(0, 2)) {
    const wrong = (change, what) => {
      const copy = structuredClone(account);
      change(copy);
      assert.throws(() => ledger(copy), /does not add up/, what);
    };
    account.stages.forEach(({ name }, i) => {
      // To the pawns' endgame values the sum adds what the account does not tell.
      const lanes = name === 'pawns' ? [0] : [0, 1];
      for (const lane of lanes) {
        wrong(({ stages }) => (stages[i].white[lane] += 1), name);
        wrong(({ stages }) => (stages[i].black[lane] -= 10), name);
      }
    });
    for (const i of [0, 1, 3]) wrong(({ sums }) => (sums[i].value[0] += 1), account.sums[i].name);
    wrong(({ steps }) => (steps[0].value += 1), 'phase');
    wrong((copy) => (copy.phase = account.phase - 1), 'phase');
  }
});

test("a man's worth is what the score loses without him", () => {
  const fen = 'r3k3/8/8/3pP3/8/8/8/4K2R w Kq d6 0 1';
  const asked = [];
  // A score for the side to move of 100 for each of White's men and 10 for each of Black's, less what stands alone.
  const evaluate = (fens) => fens.map((text) => {
    asked.push(text);
    const men = text.split(' ')[0];
    return { fen: text, score: 100 * men.match(/[A-Z]/g).length - 10 * men.match(/[a-z]/g).length };
  });
  const { worth } = worths(fen, evaluate);
  assert.deepEqual(worth, { a8: -10, d5: -10, e5: 100, h1: 100 });
  const blackToMove = worths(fen.replace(' w ', ' b '), evaluate).worth;
  assert.deepEqual(blackToMove, { a8: 10, d5: 10, e5: -100, h1: -100 });
  assert.ok(asked.includes('4k3/8/8/3pP3/8/8/8/4K2R w K - 0 1'), asked.join('\n')); // no rook, no castling
  assert.ok(asked.includes('r3k3/8/8/4P3/8/8/8/4K2R w Kq - 0 1')); // no pawn, no capture of it
});

test('the printed board has each man and its worth on their square', () => {
  const { position } = refereeOf('r3k3/8/8/3pP3/8/8/8/4K2R w Kq - 0 1');
  const text = boardText(position, { a8: -512, d5: -101, e5: 99, h1: 1012 });
  const rows = text.split('\n');
  const cells = (start) =>
    rows.find((line) => line.startsWith(start)).slice(3).split('|').map((cell) => cell.trim());
  assert.deepEqual(cells('8').slice(0, 8), ['r', '', '', '', 'k', '', '', '']);
  assert.deepEqual(cells('5').slice(0, 8), ['', '', '', 'p', 'P', '', '', '']);
  assert.deepEqual(cells('1').slice(0, 8), ['', '', '', '', 'K', '', '', 'R']);
  const worths = rows.filter((line) => line.startsWith('  |')).map((line) => line.slice(3).split('|'));
  assert.equal(worths[0][0].trim(), '-5.12');
  assert.equal(worths[3][4].trim(), '+0.99');
  assert.equal(worths[7][7].trim(), '+10.12');
});
