import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { speedTable, tellingRows } from '../speeds.mjs';

const file = (name) => fileURLToPath(new URL(name, import.meta.url));
const fakeEngine = file('../../play_match/test/fake_engine.mjs');
const fake = (habit, number) => `${process.execPath} ${fakeEngine} ${habit} ${number}`;

function compare(...words) {
  const run = spawnSync(process.execPath, [file('../compare_speed.mjs'), ...words], { encoding: 'utf8' });
  return { status: run.status, output: run.stdout, errors: run.stderr };
}

const searched = (nodes, wallMs, processorMs) => ({ nodes, wallMs, processorMs });

test('sums, medians and ratios to the first engine', () => {
  const rows = [
    [searched(1000, 100, 50), searched(3000, 100, 100)],
    [searched(1000, 100, 50), searched(1000, 300, 100)],
    [searched(4000, 100, 50), searched(8000, 100, 100)],
  ];
  const [, , first, second, , , , firstByProcessor, secondByProcessor] = speedTable(['a', 'b'], rows).split('\n');
  assert.match(first, /^ +a +20,000 +1\.000 +10,000 +1\.000$/);
  assert.match(second, /^ +b +24,000 +1\.200 +30,000 +2\.000$/); // the ratios are 3, a third and 2
  assert.match(firstByProcessor, /^ +a +40,000 +1\.000 +20,000 +1\.000$/);
  assert.match(secondByProcessor, /^ +b +40,000 +1\.000 +30,000 +1\.000$/); // 3/2, a half and 1
});

test('a position tells something only if every engine searched it', () => {
  const good = searched(1000, 95, 90);
  const rows = [[good, searched(0, 95, 90)], [searched(1000, 5, 90), good], [good, searched(1000, 95, 0)]];
  assert.deepEqual(tellingRows([...rows, [good, good]], 100), [[good, good]]);
});

test('engines are measured up to the line that tells their counts', () => {
  const clean = compare('--engine', fake('count', 10000), '--name', 'one', '--engine', fake('count', 20000),
    '--name', 'two', '--movetime', '200', '--first', '3');
  assert.equal(clean.status, 0, clean.errors);
  assert.match(clean.output, /^200 ms, 3 positions\n/);
  const [, speed, ratio] = /two .* ([\d,]+) +([\d.]+)\n/.exec(clean.output);
  const share = Number(speed.replaceAll(',', '')) / (20000 / 0.2);
  assert.ok(share > 0.6 && share <= 1, share); // the silent second half is none of its time
  assert.ok(ratio > 1.5 && ratio < 2.6, ratio);
});

test('the exit status tells of engines that fail and of wrong command lines', () => {
  const status = (...words) => compare(...words).status;
  assert.equal(status('--engine', fake('crash', 2), '--movetime', '1', '--first', '3'), 1);
  assert.equal(status('--engine', fake('good', 1), '--movetime', '1', '--first', '3'), 1); // tells no counts
  assert.equal(status('--engine', '/nowhere'), 1);
  for (const words of [[], ['--engine', 'a', '--movetime', '1,x'], ['--first', '0'], ['--what']]) {
    assert.equal(status(...words), 2, words.join(' '));
  }
});
