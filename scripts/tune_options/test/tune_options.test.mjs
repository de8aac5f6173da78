import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { UsageError } from '../../play_match/words.mjs';
import { checkOptions, parseCommandLine } from '../command_line.mjs';

const tool = fileURLToPath(new URL('../tune_options.mjs', import.meta.url));
const fakeEngine = fileURLToPath(new URL('../../play_match/test/fake_engine.mjs', import.meta.url));
const fake = (habit = 'good', move = 1) => `${process.execPath} ${fakeEngine} ${habit} ${move}`;

const folder = mkdtempSync(join(tmpdir(), 'tune-'));
after(() => rmSync(folder, { recursive: true }));
const openings = join(folder, 'openings');
// White mates at once if the engine sees it at this move number; if not, two half moves make a draw.
writeFileSync(openings, Array.from({ length: 60 }, (_, i) => `6k1/8/6K1/8/8/8/8/R7 w - - 98 ${i + 1}\n`).join(''));

const fewer = join(folder, 'fewer');
writeFileSync(fewer, '6k1/8/6K1/8/8/8/8/R7 w - - 98 1\n');

const wordsOf = (name, { engine = fake(), tuned = 'Sharp Eye=30,10,95,10', more = [] } = {}) => [tool,
  '--engine', engine, '--tune', tuned, '--openings', openings, '--nodes', '1', '--pairs', '60', '--report', '10',
  '--state', join(folder, name), '--log', join(folder, 'log'), '--picture', join(folder, `${name}.svg`),
  '--concurrency', '1', ...more];
const start = (words) => spawnSync(process.execPath, words, { encoding: 'utf8' });
const progressOf = (name) => JSON.parse(readFileSync(join(folder, name), 'utf8')).progress;
const pairsIn = (output) => [...output.matchAll(/^pair (\d+):/gm)].map(([, number]) => Number(number));

// Sends the signal after some pairs, at whatever moment that is. The run cannot come to its end before: its engines
// get stuck. Returns the output and the exit status, or the signal that ended it.
async function interrupted(signal, words, pairs) {
  const run = spawn(process.execPath, words, { env: { ...process.env, FAKE_STALL: String(2 * pairs + 1) } });
  let output = '';
  let sent = false;
  run.stdout.setEncoding('utf8').on('data', (text) => {
    output += text;
    if (!sent && pairsIn(output).length >= pairs) sent = run.kill(signal);
  });
  const status = await new Promise((resolve) => run.on('close', (code, by) => resolve(by ?? code)));
  return { status, output };
}

test('a run finds the better value; one that was stopped and taken up again goes the same way', async () => {
  const through = start(wordsOf('through'));
  assert.equal(through.status, 0, through.stdout + through.stderr);
  const [value] = progressOf('through').values;
  assert.ok(value > 50 && value <= 90, `${value}`);
  assert.doesNotMatch(through.stdout, /: (2 - 0|0 - 2)$/m); // only White can win, and each side has White once
  assert.match(through.stdout, /50 of 60 pairs, 50 in 0:\d\d:\d\d, about .* to go; dropped for faults: 0/);
  assert.match(through.stdout, /Sharp Eye: 30 -> [\d.]+ in 10 to 95, step [\d.]+/);
  assert.ok(through.stdout.endsWith(`\nsetoption name Sharp Eye value ${Math.round(value)}\n`));
  assert.match(readFileSync(join(folder, 'through.svg'), 'utf8'), /<svg[^]*Sharp Eye[^]*<\/svg>/);

  assert.equal((await interrupted('SIGKILL', wordsOf('stopped'), 4)).status, 'SIGKILL');
  assert.ok(progressOf('stopped').finished >= 4); // the state of each pair that was told
  const { status, output } = await interrupted('SIGINT', wordsOf('stopped'), 7);
  assert.equal(status, 130);
  assert.match(output, /stopped by SIGINT[^]*the same command goes on from here\nsetoption name Sharp Eye .*\n$/);
  assert.equal(start(wordsOf('stopped')).status, 0);
  assert.deepEqual(progressOf('stopped'), progressOf('through'));

  const again = start(wordsOf('stopped'));
  assert.equal(again.status, 0);
  assert.deepEqual(pairsIn(again.stdout), []);
  assert.match(again.stdout, /60 of 60 pairs[^]*\nsetoption name Sharp Eye value/);

  for (const [other, what] of [[{ more: ['--seed', '2'] }, 'seed'], [{ more: ['--option', 'Mood=wild'] }, 'engine'],
    [{ engine: fake('late', 99) }, 'engine'], [{ tuned: 'Sharp Eye=30,10,95,11' }, 'tuned'],
    [{ more: ['--nodes', '2'] }, 'control'], [{ more: ['--openings', fewer] }, 'openings']]) {
    const refused = start(wordsOf('stopped', other));
    assert.equal(refused.status, 2, what);
    assert.match(refused.stderr, new RegExp(`belongs to a run with another .*${what}`));
  }
  assert.deepEqual(progressOf('stopped'), progressOf('through'));
});

test('pairs played side by side are each played once, also when the run is stopped', async () => {
  const words = wordsOf('side by side', { more: ['--concurrency', '2'] });
  const { status, output } = await interrupted('SIGTERM', words, 7);
  assert.equal(status, 143);
  const rest = start(words);
  assert.equal(rest.status, 0, rest.stdout + rest.stderr);
  const played = [...pairsIn(output), ...pairsIn(rest.stdout)];
  assert.deepEqual(played.sort((a, b) => a - b), Array.from({ length: 60 }, (_, i) => i + 1));
});

test('--restart takes fresh processes for each pair', () => {
  const log = join(folder, 'restarts');
  assert.equal(start(wordsOf('restart', { more: ['--restart', '--pairs', '3', '--log', log] })).status, 0);
  assert.equal([...readFileSync(log, 'utf8').matchAll(/started for pair \d+: start$/gm)].length, 6);
});

test('pairs with faults are dropped and told, and too many of them end the run', () => {
  const some = start(wordsOf('some', { engine: fake('illegal', 12) })); // once in each of the two processes
  assert.equal(some.status, 1, some.stdout);
  const dropped = [...some.stdout.matchAll(/^pair \d+: dropped, illegal move/gm)].length;
  assert.ok(dropped === 1 || dropped === 2);
  assert.match(some.stdout, new RegExp(`60 of 60 pairs.* dropped for faults: ${dropped}\n`));
  assert.equal(start(wordsOf('some', { engine: fake('illegal', 12) })).status, 1); // it stays a run with faults

  const many = start(wordsOf('many', { engine: fake('crash', 8) })); // every few pairs
  assert.match(many.stdout, /60 of 60 pairs.* dropped for faults: [12]\d\n/);

  const all = start(wordsOf('all', { engine: fake('crash', 1) }));
  assert.equal(all.status, 1);
  assert.equal(pairsIn(all.stdout).length, 10);
  assert.match(all.stderr, /faults in 10 pairs in a row/);
  assert.deepEqual(progressOf('all').values, [30]);
});

test('an engine that does not start ends the run, and nothing of it is left', async () => {
  assert.equal(start(wordsOf('none', { engine: '/nonexistent' })).status, 1);
  const engine = join(folder, 'mute');
  const signs = join(folder, 'signs');
  const child = `(while :; do echo alive >>${signs}; sleep 0.05; done) &`;
  writeFileSync(engine, `#!/bin/sh\n${child}\nwait\n`, { mode: 0o755 });
  const mute = start(wordsOf('none', { engine }));
  assert.equal(mute.status, 1);
  assert.match(mute.stderr, /mute does not start: no answer to "uci" in 10000 ms/);
  const written = readFileSync(signs, 'utf8');
  await new Promise((resolve) => setTimeout(resolve, 500));
  assert.equal(readFileSync(signs, 'utf8'), written);
});

test('wrong command lines are refused, and so is what the engine does not take', () => {
  const engine = ['--engine', 'a'];
  for (const words of [[], engine, ['--tune', 'a=1,0,2,1'], [...engine, '--tune', 'a=1,0,2'],
    [...engine, '--tune', 'a=3,0,2,1'], [...engine, '--tune', 'a=1,2,0,1'], [...engine, '--tune', 'a=1,0,2,2'],
    [...engine, '--tune', 'a=10,0,20,0.5'], [...engine, '--tune', 'a=1.5,0,20,1'],
    [...engine, '--tune', 'a b=1,0,9,1', '--tune', 'A B=1,0,9,1'],
    [...engine, '--tune', 'a b=1,0,9,1', '--option', 'A b=2']]) {
    assert.throws(() => parseCommandLine(words), UsageError, words.join(' '));
  }
  const greeting = ['id name Fake', 'option name Sharp Eye type spin default 0 min -5 max 100',
    'option name Mood type combo default calm var calm var wild'];
  const check = (...words) => {
    const settings = parseCommandLine([...engine, ...words]);
    checkOptions(settings, greeting);
    return settings;
  };
  const spelt = check('--tune', 'sharp eye=1,-5,100,1', '--option', 'mooD=wild');
  assert.equal(spelt.tuned[0].name, 'Sharp Eye');
  assert.deepEqual(spelt.engine.options, [['Mood', 'wild']]);
  for (const [words, why] of [
    [['--tune', 'Blunt Eye=1,0,9,1'], /no option Blunt Eye/],
    [['--tune', 'Mood=1,0,9,1'], /Mood is no number, but of type combo/],
    [['--tune', 'Sharp Eye=1,0,101,1'], /the engine takes -5 to 100, and not 0 to 101/],
    [['--tune', 'Sharp Eye=1,-6,9,1'], /the engine takes -5 to 100/],
    [['--tune', 'Sharp Eye=1,0,9,1', '--option', 'Moods=wild'], /no option Moods/],
  ]) {
    assert.throws(() => check(...words), (error) => error instanceof UsageError && why.test(error.message));
  }
  assert.equal(start([tool]).status, 2);
  assert.equal(start(wordsOf('unknown', { tuned: 'Blunt Eye=1,0,9,1' })).status, 2);
  writeFileSync(join(folder, 'broken'), '{ "half');
  const broken = start(wordsOf('broken'));
  assert.equal(broken.status, 2);
  assert.match(broken.stderr, /broken holds no state of a run/);
});
