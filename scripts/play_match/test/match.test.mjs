import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { parsePgn, startingPosition } from 'chessops/pgn';
import { parseSan } from 'chessops/san';

const here = fileURLToPath(new URL('.', import.meta.url));
const fake = (habit, move = 1) => `${process.execPath} ${join(here, 'fake_engine.mjs')} ${habit} ${move}`;

// Plays "good" against an engine with the given habit; returns what the tool printed and wrote.
function match(habit, move, ...settings) {
  const folder = mkdtempSync(join(tmpdir(), 'match-'));
  const run = spawnSync(process.execPath, [
    join(here, '..', 'play_match.mjs'), '--engine', fake('good'), '--name', 'good',
    '--engine', fake(habit, move), '--name', 'other', '--games', '4', '--tc', '0.3+0.3',
    '--pgn', join(folder, 'pgn'), '--log', join(folder, 'log'), '--picture', join(folder, 'svg'), ...settings,
  ], { encoding: 'utf8' });
  const result = {
    status: run.status,
    output: run.stdout + run.stderr,
    pgn: readFileSync(join(folder, 'pgn'), 'utf8'),
    log: readFileSync(join(folder, 'log'), 'utf8'),
    picture: readFileSync(join(folder, 'svg'), 'utf8'),
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

  const hang = match('hang', 1, '--games', '2', '--movetime', '1', '--concurrency', '1');
  assert.match(hang.output, /other: time losses 2, illegal moves 0, crashes 0/); // one fault each
  assert.match(hang.pgn, /Termination "time forfeit"/);

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

test('Chess960 takes engines that know it', () => {
  const { status, output } = match('orthodox', 0, '--chess960');
  assert.equal(status, 1);
  assert.match(output, /other does not start: it has no option UCI_Chess960/);
});

test('a test ends the match at its verdict, and the exit status tells it', () => {
  // All games end alike, so that pairs are even: that speaks for the lower of two positive differences, and for the
  // upper of two negative ones.
  // One game at a time, so that no pair is half played when the verdict comes.
  const long = ['--games', '400', '--nodes', '1', '--report', '2', '--concurrency', '1'];
  const lower = match('good', 1, ...long, '--sprt', '200,400');
  assert.equal(lower.status, 3, lower.output);
  assert.match(lower.output, /verdict: H0 accepted/);
  const games = parsePgn(lower.pgn).length;
  assert.ok(games < 400 && games % 2 === 0);
  assert.match(lower.output, /2 of 400 games in 0:00:\d\d, at most .* to go; time losses 0 and 0/);
  assert.match(lower.picture, /<svg[^]*H1 accepted[^]*<\/svg>/);

  const upper = match('good', 1, ...long, '--sprt', '-400,-200');
  assert.equal(upper.status, 0, upper.output);
  assert.match(upper.output, /verdict: H1 accepted/);

  const undecided = match('good', 1, '--nodes', '1', '--sprt', '0,5');
  assert.equal(undecided.status, 4, undecided.output);
  assert.match(undecided.output, /verdict: undecided/);
});

for (const [signal, wanted] of [['SIGINT', 130], ['SIGHUP', 129]]) {
  test(`${signal} ends the match with a summary and a picture`, async () => {
    const folder = mkdtempSync(join(tmpdir(), 'match-'));
    const picture = join(folder, 'svg');
    const words = ['--engine', fake('good'), '--engine', fake('good'), '--games', '10000', '--nodes', '1',
      '--pgn', join(folder, 'pgn'), '--log', join(folder, 'log'), '--picture', picture];
    const run = spawn(process.execPath, [join(here, '..', 'play_match.mjs'), ...words]);
    let output = '';
    const ended = new Promise((resolve) => run.on('close', resolve));
    run.stdout.setEncoding('utf8').on('data', (text) => {
      output += text;
      if (/game 3:/.test(output)) run.kill(signal);
    });
    assert.equal(await ended, wanted);
    const summary = output.slice(output.indexOf(`stopped by ${signal}`));
    assert.match(summary, /against .* of \d+ \(/);
    assert.match(summary, /time losses 0, illegal moves 0, crashes 0/);
    assert.match(readFileSync(picture, 'utf8'), /<\/svg>/);
    rmSync(folder, { recursive: true });
  });
}

test('wrong command lines are refused', () => {
  for (const words of [[], ['--games', 'x'], ['--engine', 'a'], ['--margin'], ['--tc', '1+2+3'], ['--what'],
    ['--sprt', '0'], ['--sprt', '5,0'], ['--sprt', '0,5,0.05,1']]) {
    const run = spawnSync(process.execPath, [join(here, '..', 'play_match.mjs'), ...words], { encoding: 'utf8' });
    assert.equal(run.status, 2, words.join(' '));
  }
});
