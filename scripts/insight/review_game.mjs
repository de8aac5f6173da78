// Reviews the games of a PGN file: an annotated PGN, and a page to go through them.
import { appendFileSync, existsSync, readFileSync, realpathSync, renameSync, writeFileSync } from 'node:fs';
import { number, readWords, runTool, UsageError } from '../play_match/words.mjs';
import { Analyst } from './analyst.mjs';
import { readGames, titleOf } from './games.mjs';
import { reviewPage } from './pages.mjs';
import { annotatedPgn, reviewGame } from './review.mjs';

const Usage = `usage: scripts/review_game.sh GAME.pgn [setting]...
  --movetime MS       how long to think about each position, default 500
  --depth N           think to this depth instead
  --page FILE.html    write a page that stands by itself: the score by move, the board, the better lines
  --pgn FILE          where the annotated PGN goes; standard output by default
The chances to win less those to lose go from -100 to 100 points, by a logistic curve of the score; a move that costs
10, 20 or 30 of them is marked ?!, ? or ??.
Exit status: 0, or 1 if the engine failed; 2 for a wrong command line, or when a part of the file could not be read:
what could is reviewed all the same. 130 when stopped by Ctrl-C, 143 by SIGTERM; games that were finished stay.`;

function parse(words) {
  const settings = { files: [], limit: { movetime: 500 }, page: undefined, pgn: undefined };
  readWords(words, {
    '--movetime': (text) => (settings.limit = { movetime: number(text, '--movetime', { min: 1 }) }),
    '--depth': (text) => (settings.limit = { depth: number(text, '--depth', { min: 1 }) }),
    '--page': (text) => (settings.page = text),
    '--pgn': (text) => (settings.pgn = text),
  }, {}, (word) => settings.files.push(word));
  if (settings.files.length !== 1) throw new UsageError('which file of games?');
  return settings;
}

function readText(file) {
  try {
    const bytes = readFileSync(file);
    const text = bytes.toString();
    return text.includes('\uFFFD') ? bytes.toString('latin1') : text; // PGN's old standard
  } catch (error) {
    throw new UsageError(`${file} cannot be read: ${error.message}`);
  }
}

function showProgress(title) {
  const begin = performance.now();
  return (done, all) => {
    if (done % 10) return;
    const seconds = Math.ceil(((performance.now() - begin) * (all - done)) / Math.max(done, 1) / 1000);
    console.error(`${title}: ${done} of ${all} half moves${done ? `, about ${seconds} s to go` : ''}`);
  };
}

async function main() {
  const [engine, ...words] = process.argv.slice(2);
  if (words.some((word) => word === '--help' || word === '-h')) return console.log(Usage);
  const { files: [file], limit, page, pgn } = parse(words);
  const games = readGames(readText(file));
  if (!games.length) throw new UsageError(`${file} has no game`);
  const overwrites = pgn && existsSync(pgn) && realpathSync(pgn) === realpathSync(file);
  if (overwrites) throw new UsageError('--pgn would overwrite the games');
  if (pgn) writeFileSync(pgn, '');
  const analyst = new Analyst(engine);
  await analyst.start();
  const reviewed = [];
  for (const game of games) {
    const title = `game ${game.number} of ${games.length}, ${titleOf(game.game.headers)}`;
    for (const fault of game.faults) console.error(`game ${game.number}, ${fault}`);
    if (!game.referee) continue;
    const review = await reviewGame(game, analyst, limit, showProgress(title));
    const marks = review.plies.filter(({ mark }) => mark).length;
    console.error(`${title}: finished, ${marks} of ${review.plies.length} half moves marked`);
    reviewed.push(review);
    const text = annotatedPgn(game, review);
    if (pgn) appendFileSync(pgn, text);
    else process.stdout.write(text);
    if (!page) continue;
    // Moved into place in one step, so that a reader never finds half a page.
    writeFileSync(`${page}.new`, reviewPage(reviewed));
    renameSync(`${page}.new`, page);
  }
  await analyst.quit();
  return games.some((game) => game.faults.length) ? 2 : 0;
}

await runTool(main, Usage);
