// Explains how the engine judges a position: its lines, the stages of the static score, and what each man is worth.
import { writeFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import { makeSquare } from 'chessops/util';
import { number, readWords, runTool, UsageError } from '../play_match/words.mjs';
import { ledger, pawnsText, worths } from './account.mjs';
import { Analyst, followLine, lineText, refereeOf, scoreText } from './analyst.mjs';
import { explanationPage } from './pages.mjs';

const Usage = `usage: scripts/explain_position.sh FEN [setting]...
  --movetime MS       how long to think, default 2000
  --depth N           think to this depth instead
  --lines N           how many lines to show, default 3
  --page FILE.html    also write a page that stands by itself, with the board, the stages and the lines
Scores are in pawns from White's view. Exit status: 0, or 1 if the engine failed, 2 for a wrong command line or FEN.`;

const LineLength = 12; // half moves

export function boardText(position, worth) {
  const rule = `  +${'-------+'.repeat(8)}`;
  const rows = [rule];
  for (let rank = 7; rank >= 0; --rank) {
    const cells = [[], []];
    for (let file = 0; file < 8; ++file) {
      const square = makeSquare(8 * rank + file);
      const man = position.board.get(8 * rank + file);
      const letter = man && (man.role === 'knight' ? 'n' : man.role[0]);
      cells[0].push(`   ${man ? (man.color === 'white' ? letter.toUpperCase() : letter) : ' '}   `);
      cells[1].push((square in worth ? scoreText({ cp: worth[square] }) : '').padStart(6) + ' ');
    }
    rows.push(`${rank + 1} |${cells[0].join('|')}|`, `  |${cells[1].join('|')}|`, rule);
  }
  return [...rows, `      ${[...'abcdefgh'].join('       ')}`].join('\n');
}

export function ledgerText({ phase, rows, total, steps, score }) {
  const side = (lanes) => lanes.map((value) => pawnsText(value).padStart(8)).join('');
  const row = (line) => `${line.name.padEnd(26)}${side(line.white)}  ${side(line.black)}  ${side([line.net])}`;
  const head = (side) => ['mg', 'eg', side].map((text) => text.padStart(8)).join('');
  const table = rows.length === 0 ? ['The material decides alone; no stage is run.'] :
    [`${`phase ${phase} of 96`.padEnd(26)}${head('White')}  ${head('Black')}  ${'both'.padStart(8)}`,
      ...rows.map(row), row(total)];
  const sums = steps.map(({ name, adds, left }) =>
    `${name.padEnd(62)}${pawnsText(adds).padStart(9)}${pawnsText(left).padStart(9)}`);
  return [...table, '', ...sums, `${'static score'.padEnd(71)}${pawnsText(score).padStart(9)}`].join('\n');
}

function parse(words) {
  const settings = { fen: [], limit: { movetime: 2000 }, lines: 3, page: undefined };
  readWords(words, {
    '--movetime': (text) => (settings.limit = { movetime: number(text, '--movetime', { min: 1 }) }),
    '--depth': (text) => (settings.limit = { depth: number(text, '--depth', { min: 1 }) }),
    '--lines': (text) => (settings.lines = number(text, '--lines', { min: 1 })),
    '--page': (text) => (settings.page = text),
  }, {}, (word) => settings.fen.push(word));
  if (!settings.fen.length) throw new UsageError('which position?');
  return { ...settings, fen: settings.fen.join(' ') };
}

async function main(engine, words) {
  if (words.some((word) => word === '--help' || word === '-h')) return console.log(Usage);
  const { fen, limit, lines, page } = parse(words);
  const referee = refereeOf(fen);
  const { position } = referee;
  console.error('asking the evaluation (the first time its tool is built, which takes a minute or two)');
  const { account, worth } = worths(referee.startFen);
  const sums = ledger(account);
  const over = referee.outcome();
  const found = [];
  if (!over) {
    const analyst = new Analyst(engine);
    await analyst.start();
    await analyst.newGame(referee.chess960);
    console.error(`thinking, ${Object.entries(limit)[0].join(' ')}`);
    for (const { score, depth, moves } of await analyst.look(referee, limit, lines)) {
      found.push({ score, depth, line: followLine(referee, moves, LineLength) });
    }
    await analyst.quit();
  }
  console.log(boardText(position, worth));
  console.log("Below each man: what the static score loses without it, in pawns, White's view.\n");
  console.log(`${position.turn === 'white' ? 'White' : 'Black'} to move${position.isCheck() ? ', in check' : ''}` +
    (over ? `; the game is over: ${over.reason}` : ''));
  for (const { score, depth, line } of found) {
    console.log(`${scoreText(score).padStart(7)}  depth ${String(depth).padEnd(3)} ${lineText(line)}`);
  }
  console.log(`\n${ledgerText(sums)}`);
  if (position.isCheck()) console.log('The search never asks for the static score of a king in check.');
  if (page) writeFileSync(page, explanationPage({ fen: referee.startFen, position, worth, sums, over, lines: found }));
  return 0;
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  await runTool(() => main(process.argv[2], process.argv.slice(3)), Usage);
}
