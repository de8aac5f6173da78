// Both commands with the engine, and their pages in a browser.
import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { parsePgn } from 'chessops/pgn';
import { boardOf, refereeOf } from '../analyst.mjs';
import { readGames } from '../games.mjs';
import { Browser } from './browser.mjs';

const here = (name) => fileURLToPath(new URL(name, import.meta.url));
const folder = mkdtempSync(join(tmpdir(), 'insight-'));
const inFolder = (name) => join(folder, name);
const run = (name, ...words) => spawnSync(here(`../../${name}.sh`), words, { encoding: 'utf8' });
after(() => rmSync(folder, { recursive: true }));

async function withPage(file, settings, look) {
  const browser = await new Browser().open(file, ...settings);
  try {
    await look(browser);
    assert.deepEqual(browser.errors, []);
  } finally {
    await browser.close();
  }
}

// White's chances by the picture: where the white area begins above the cursor, from -1 to 1.
const shownChance = (browser) => browser.read(`(() => {
  const game = document.querySelector('.game:not([hidden])');
  const { height } = game.querySelector('.graph').viewBox.baseVal;
  const x = game.querySelector('.cursor').x1.baseVal.value;
  const points = [...game.querySelector('.graph polygon').points].slice(1, -1);
  return 1 - 2 * points.find((point) => Math.abs(point.x - x) < 0.1).y / height; })()`);

test('a reviewed game can be gone through by the arrow keys', { timeout: 300_000 }, async () => {
  const [pgn, page] = ['out.pgn', 'games.html'].map(inFolder);
  const { status, stderr } = run('review_game', here('games.pgn'), '--depth', '4', '--pgn', pgn, '--page', page);
  assert.equal(status, 0, stderr);
  assert.match(stderr, /game 2 of 5, Carl <i> - Dora & Co: finished/);
  const written = parsePgn(readFileSync(pgn, 'utf8'));
  const games = readGames(readFileSync(here('games.pgn'), 'utf8'));
  assert.equal(written.length, games.length);
  await withPage(page, [[390, 800]], async (browser) => {
    for (const [i, game] of games.entries()) {
      if (i) {
        await browser.read(`document.querySelector('select').selectedIndex = ${i};
          document.querySelector('select').dispatchEvent(new Event('change'))`);
      }
      const play = refereeOf(game.referee.startFen, game.referee.chess960);
      const boards = [boardOf(play.position)];
      for (const { uci } of game.plies) {
        play.play(uci);
        boards.push(boardOf(play.position));
      }
      for (const board of boards) {
        assert.equal(await browser.board(), board);
        await browser.press('ArrowRight'); // at the end of the game it does nothing
      }
      await browser.press('ArrowLeft', 20);
      assert.equal(await browser.board(), boards[0]);
    }
    assert.ok(await browser.read('document.documentElement.scrollWidth <= innerWidth'), 'too wide for a telephone');
    assert.equal(await browser.read('document.querySelectorAll("h1 i").length'), 0); // names are no markup
  });
  await withPage(page, [[1100, 800], true], async (browser) => {
    assert.equal(await browser.read('getComputedStyle(document.body).backgroundColor'), 'rgb(27, 28, 30)');
    await browser.press('ArrowRight', 2); // Qxf7#
    assert.equal(await shownChance(browser), 1);
    await browser.click('.turn');
    const rook = await browser.read('document.querySelector(".man").x.baseVal[0].value');
    assert.equal(rook, 300); // that of a8, now at the right
    await browser.click('.turn');
    await browser.press('ArrowLeft');
    await browser.click('.better:not([hidden]) .move');
    assert.match(await browser.read('document.querySelector(".note").textContent'), /instead of d6/);
    assert.notEqual(await browser.board(), 'r1bqkbnr/ppp2ppp/2np4/4p3/2B1P3/5Q2/PPPP1PPP/RNB1K1NR');
    await browser.press('ArrowLeft'); // back to the game
    assert.equal(await browser.board(), 'r1bqkbnr/ppp2ppp/2np4/4p3/2B1P3/5Q2/PPPP1PPP/RNB1K1NR');
  });
});

test('an explained position shows its men, their worth and its lines', { timeout: 300_000 }, async () => {
  const page = inFolder('position.html');
  const fen = '6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1';
  const words = ['--depth', '6', '--lines', '2', '--page', page];
  const { status, stdout, stderr } = run('explain_position', ...fen.split(' '), ...words);
  assert.equal(status, 0, stderr);
  assert.match(stdout, /#1  depth \d+ +1\. Rd8#/);
  const score = /^static score +([+-]\d+\.\d{3})$/m.exec(stdout)[1];
  await withPage(page, [[390, 800]], async (browser) => {
    assert.equal(await browser.board(), fen.split(' ')[0]);
    assert.match(await browser.read('document.querySelector("h2").textContent'), new RegExp(`Static score \\${score}`));
    const bars = await browser.read(
      '[...document.querySelectorAll(".bars tr")].map((row) => Number(row.lastChild.textContent))');
    const sum = bars.slice(0, -1).reduce((all, value) => all + Math.round(1000 * value), 0);
    assert.equal(sum, Math.round(1000 * bars.at(-1)));
    const labels = await browser.read('document.querySelectorAll(".worth").length');
    assert.equal(labels, 7); // kings have none
    const rook = /\+\d\.\d\d/.exec(stdout.split('\n').findLast((line) => line.startsWith('  |')))[0];
    assert.ok(await browser.read(`[...document.querySelectorAll('.worth')].some(({ textContent, x, y }) =>
      textContent === '${rook}' && x.baseVal[0].value === 140 && y.baseVal[0].value === 318)`), rook);
    await browser.click('.line:not(.main) .move');
    assert.equal(await browser.board(), '3R2k1/5ppp/8/8/8/8/5PPP/6K1');
    assert.ok(await browser.read('document.documentElement.scrollWidth <= innerWidth'));
  });
});

test("scores are White's, whoever is to move", () => {
  const explained = (fen) => run('explain_position', fen, '--depth', '4', '--lines', '1').stdout;
  assert.match(explained('3r2k1/5ppp/8/8/8/8/5PPP/6K1 b - - 0 1'), /^ +#-1 /m);
  const ahead = explained('q5k1/5ppp/8/8/8/7P/5PP1/6K1 b - - 0 1');
  assert.match(ahead, /^ *-\d+\.\d\d {2}depth/m);
  assert.match(ahead, /^static score +-\d/m);
});

test('what is over, illegal or missing is told', () => {
  const over = run('explain_position', '7k/5K2/6Q1/8/8/8/8/8 b - - 0 1');
  assert.equal(over.status, 0);
  assert.match(over.stdout, /Black to move; the game is over: stalemate/);
  for (const words of [['8/8/8/8/8/8/8/8 w - - 0 1'], ['nonsense'], [], ['8/8/4k3/8/8/4K3/8/8 w - -', '--lines', '0']]) {
    const { status, stderr } = run('explain_position', ...words);
    assert.equal(status, 2, words.join(' '));
    assert.match(stderr, /usage:/);
  }
  for (const words of [[], [inFolder('none.pgn')], [here('games.pgn'), '--pgn', here('games.pgn')]]) {
    assert.equal(run('review_game', ...words).status, 2, words.join(' '));
  }
  assert.match(readFileSync(here('games.pgn'), 'utf8'), /Anna/);
  const dead = spawnSync(process.execPath, [here('../review_game.mjs'), '/bin/false', here('games.pgn')]);
  assert.equal(dead.status, 1);
  assert.match(String(dead.stderr), /the engine failed: exit status 1/);
});

test('a broken file ends with status 2, and what was finished is kept', async () => {
  const [pgn, page] = ['broken.pgn', 'broken.html'].map(inFolder);
  const broken = run('review_game', here('broken.pgn'), '--depth', '1', '--pgn', pgn, '--page', page);
  assert.equal(broken.status, 2);
  assert.match(broken.stderr, /game 3, move 2\.\.\. "Qxk9" is no move/);
  assert.equal(parsePgn(readFileSync(pgn, 'utf8')).length, 5);
  assert.ok(existsSync(page));

  // The same when it is stopped on its way: the first game is there, the engine is not.
  const stopped = inFolder('stopped.pgn');
  const child = spawn(process.execPath, [here('../review_game.mjs'), here('../../../build/release/tarvok'),
    here('games.pgn'), '--movetime', '400', '--pgn', stopped]);
  child.stderr.setEncoding('utf8').on('data', (text) => /game 2 .*0 of 4/.test(text) && child.kill('SIGINT'));
  assert.equal(await new Promise((resolve) => child.on('close', resolve)), 130);
  assert.equal(parsePgn(readFileSync(stopped, 'utf8')).length, 1);
});
