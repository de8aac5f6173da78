// How a static score comes about, from what the engine's evaluation tells of its steps, and what each man is worth.
// Nothing here judges a position: numbers are added, compared and rounded. Unless said otherwise they are tenths of
// a centipawn from White's view.
import { spawnSync } from 'node:child_process';
import { fileURLToPath } from 'node:url';
import { makeFen, parseFen } from 'chessops/fen';
import { makeSquare } from 'chessops/util';

const MaxPhase = 96; // the phase of a full board; also the blended units of a tenth of a centipawn
const Outside = ['pawns', 'piece squares']; // rows that are not of the stages' own sum

export const pawnsText = (tenths, signed = true) => `${signed && tenths >= 0 ? '+' : ''}${(tenths / 1000).toFixed(3)}`;

// Runs the evaluation on each FEN; the first run builds the tool for it. Returns its accounts.
export function evaluations(fens) {
  const script = fileURLToPath(new URL('../eval_terms.sh', import.meta.url));
  const run = spawnSync(script, ['--json'], { input: fens.join('\n') + '\n', encoding: 'utf8', maxBuffer: 2 ** 28 });
  const lines = (run.stdout ?? '').split('\n').filter(Boolean);
  if (run.status !== 0 || lines.length !== fens.length) {
    throw new Error(`the evaluation cannot be asked:\n${run.stderr || run.error}`);
  }
  return lines.map((line) => JSON.parse(line));
}

const difference = ({ white, black }) => white.map((value, lane) => value - black[lane]);
const added = (a, b) => a.map((value, lane) => value + b[lane]);
const same = (a, b) => a.every((value, lane) => value === b[lane]);

// Adds the account up the way the evaluation does. Throws where a sum is another than the evaluation's.
function check({ stages, sums, steps, dynamism, phase }) {
  const must = (holds, what) => {
    if (!holds) throw new Error(`the account does not add up: ${what}`);
  };
  if (!stages.length) return;
  const sumOf = (rows) => rows.map(difference).reduce(added, [0, 0]);
  const named = (name) => sumOf(stages.filter((stage) => stage.name === name));
  const own = sumOf(stages.filter((stage) => !Outside.includes(stage.name)));
  must(same(own, sums[0].value), 'the stages');
  const pieces = added(own, named('piece squares')).map((value, i) => Math.trunc((value * dynamism[i]) / 128));
  must(same(pieces, sums[1].value), 'the piece squares');
  const all = [pieces, named('pawns'), sums[2].value].reduce(added);
  must(all[0] === sums[3].value[0], 'the pawns'); // the endgame has the pawn fronts besides
  must(blend(sums[3].value, phase) === steps[0].value, 'the phase');
}

// In blended units.
const blend = ([middlegame, endgame], phase) => middlegame * phase + endgame * (MaxPhase - phase);
const tenths = (blended) => Math.round(blended / MaxPhase);

// { rows, total, steps, score }: rows and total have, for `white` and `black`, [middlegame, endgame, now], where
// `now` is what comes of the two at this phase; steps go from material and the rows' total to the score, each with
// what it adds and what is left. What is shown of a row is the growth of the rounded sum, so that all columns and
// steps can be added up as they are printed.
export function ledger(account) {
  const { stages, sums, phase, material, dynamism } = account;
  const moverSign = account.fen.split(' ')[1] === 'w' ? 1 : -1;
  check(account);
  const total = { name: 'sum', white: [0, 0, 0], black: [0, 0, 0], net: 0 };
  const rows = stages.map((stage) => {
    const row = { name: stage.name };
    for (const side of ['white', 'black']) {
      const before = total[side];
      const lanes = added(before.slice(0, 2), stage[side]);
      total[side] = [...lanes, tenths(blend(lanes, phase))];
      row[side] = [...stage[side], total[side][2] - before[2]];
    }
    row.net = row.white[2] - row.black[2];
    total.net += row.net;
    return row;
  });

  const steps = [];
  let left = 0;
  const step = (name, now, always = false) => {
    if (now !== left || always) steps.push({ name, adds: now - left, left: now });
    left = now;
  };
  const value = Object.fromEntries(account.steps.map(({ name, value: number }) => [name, number]));
  const ofMaterial = tenths(material);
  step('material', ofMaterial, true);
  if (stages.length) {
    step('stages', ofMaterial + total.net, true);
    const [own, pieces, , all] = sums.map((sum) => sum.value); // contempt is off
    const [pawns, squares] = Outside.map((name) => difference(stages.find((stage) => stage.name === name)));
    const front = blend(all, phase) - blend(pieces, phase) - blend(pawns, phase);
    step(`all but pawns x ${dynamism[0]}/128, ${dynamism[1]}/128`,
      ofMaterial + total.net + tenths(blend(pieces, phase) - blend(added(own, squares), phase)));
    step('width of the pawn fronts, late', left + tenths(front));
    // Until here roundings may have gone astray by a tenth or two; the evaluation's own value ends that.
    step('rounding', tenths(material + value['blended by phase']));
    step('stages, scaled by the material', tenths(material + value['scaled by material']));
    step('few open files', tenths(material + value['cut for few open files']));
    step('pawns that block each other', tenths(value['with material, cut for rams']));
    step('rounding', value['in tenths']);
    step('wrong bishop', value['limited for the wrong bishop']);
    step('tempo, rounded to centipawns', moverSign * 10 * value['centipawns for the mover, with tempo'], true);
    step('advantage by width of the pawn front', moverSign * 10 * value['with noise, pulled by pawn fronts']);
    step('level material', moverSign * 10 * value['before the fifty-move rule']);
  } else {
    step('rounded to centipawns', moverSign * 10 * value['before the fifty-move rule']);
  }
  step('fifty-move rule', moverSign * 10 * account.score);
  return { phase, rows, total, steps, score: left };
}

// What the static score loses when a man is taken off, in centipawns from White's view, by its square. Kings stay.
export function worths(fen, evaluate = evaluations) {
  const setup = parseFen(fen).unwrap();
  const squares = [...setup.board.occupied.diff(setup.board.king)];
  const without = squares.map((square) => {
    const copy = parseFen(fen).unwrap();
    copy.board.take(square);
    copy.castlingRights = copy.castlingRights.without(square);
    copy.epSquare = undefined; // a capture that may have gone with its pawn; the static score does not know of it
    return makeFen(copy);
  });
  const whiteScore = (account) => (account.fen.split(' ')[1] === 'w' ? account.score : -account.score);
  const [whole, ...rest] = evaluate([fen, ...without]);
  const values = squares.map((square, i) => [makeSquare(square), whiteScore(whole) - whiteScore(rest[i])]);
  return { account: whole, worth: Object.fromEntries(values) };
}
