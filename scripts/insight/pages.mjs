// The pages of the two commands: HTML that stands by itself. What can be chosen is a button of class `move` with the
// board behind it as data; page.js shows it. Buttons in one element of class `line` follow each other.
import { readFileSync } from 'node:fs';
import { pawnsText } from './account.mjs';
import { boardOf, scoreText } from './analyst.mjs';
import { titleOf } from './games.mjs';

export const escaped = (text) => String(text).replace(/[&<>"]/g, (sign) => `&#${sign.charCodeAt(0)};`);
const file = (name) => readFileSync(new URL(name, import.meta.url), 'utf8');

const page = (title, body) => `<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>${escaped(title)}</title>
<style>
${file('page.css')}</style>
<body>
${body}
<script>
${file('page.js')}</script>
</body>
</html>
`;

// data: what page.js reads of the button, { board, uci, note, worth, ply, x }.
function button(text, data, kind = '') {
  const fields = Object.entries(data).map(([name, value]) => `data-${name}="${escaped(value)}"`);
  return `<button class="move ${kind}" ${fields.join(' ')}>${escaped(text)}</button>`;
}

const moveButtons = (line, data = {}) => line.map(({ san, number, board, uci }, i) =>
  button(i && number.endsWith('...') ? san : `${number} ${san}`, { board, uci, ...data })).join(' ');

const boardPart = `<div class="play"><div class="board"></div>
<nav><button class="back" title="back">&#9664;</button><button class="on" title="on">&#9654;</button>
<button class="turn" title="turn the board">&#8645;</button><span class="note"></span></nav></div>`;

// ---- A position ----

function bars(rows, steps) {
  const [material, , ...later] = steps.map(({ name, adds }) => [name, adds]);
  const shown = [material, ...rows.map(({ name, net }) => [name, net]), ...later].filter(([, value]) => value !== 0);
  const widest = Math.max(1, ...shown.map(([, value]) => Math.abs(value)));
  const bar = (value) => `<i class="${value < 0 ? 'black' : 'white'}"` +
    ` style="width:${((50 * Math.abs(value)) / widest).toFixed(1)}%"></i>`;
  return shown.map(([name, value]) =>
    `<tr><th>${escaped(name)}<td class="bar">${bar(value)}<td>${pawnsText(value)}`).join('\n');
}

function stageTable({ phase, rows, total }) {
  if (!rows.length) return '<p>The material decides alone; no stage is run.</p>';
  const cells = (values) => values.map((value) => `<td>${pawnsText(value)}`).join('');
  const row = (line) => `<tr><th>${escaped(line.name)}${cells([...line.white, ...line.black, line.net])}`;
  return `<details><summary>Each stage for both sides</summary><div class="wide"><table>
<tr><th><th colspan="3">White<th colspan="3">Black<th>both
<tr><th>phase ${phase} of 96<th>mg<th>eg<th>now<th>mg<th>eg<th>now<th>now
${[...rows, total].map(row).join('\n')}</table></div>
<p>mg is its worth on a full board, eg with few men left, now what comes of the two at this phase.</p></details>`;
}

// over: the outcome of a game that has ended, or undefined; lines: { score, depth, line }.
export function explanationPage({ fen, position, worth, sums, over, lines }) {
  const labels = Object.fromEntries(Object.entries(worth).map(([square, cp]) => [square, scoreText({ cp })]));
  const note = 'below each man: its worth to White, in pawns';
  const start = { board: boardOf(position), worth: JSON.stringify(labels), note };
  const mover = position.turn === 'white' ? 'White' : 'Black';
  const rows = lines.map(({ score, depth, line }) => `<div class="line"><b>${scoreText(score)}</b>` +
    ` <small>depth ${depth}</small> ${moveButtons(line, { note: `in this line: ${scoreText(score)}` })}</div>`);
  return page('A position explained', `<main class="game"><header><h1>A position explained</h1>
<p><code>${escaped(fen)}</code></p></header>
${boardPart}
<div class="text"><div class="line main">${button('The position', start)}</div>
<p>${mover} to move${over ? `; the game is over: ${over.reason}` : ''}. Scores are White's view, in pawns.</p>
${rows.join('\n')}
<h2>Static score ${pawnsText(sums.score)}</h2>
<table class="bars">
${bars(sums.rows, sums.steps)}
<tr class="sum"><th>static score<td><td>${pawnsText(sums.score)}</table>
${stageTable(sums)}</div></main>`);
}

// ---- Games ----

const Graph = { width: 640, height: 150, edge: 6 };
const graphX = (index, count) => Graph.edge + (index * (Graph.width - 2 * Graph.edge)) / Math.max(1, count - 1);

// points: { chance, mark } of each position from the first on, chance from -1 for Black to 1 for White,
// who owns the lower part of the graph.
export function graphSvg(points) {
  const { width, height, edge } = Graph;
  const at = points.map(({ chance }, i) =>
    [graphX(i, points.length), (height * (1 - chance)) / 2].map((place) => place.toFixed(1)));
  const marks = points.map(({ mark }, i) =>
    (mark ? `<circle class="${MarkKind[mark]}" cx="${at[i][0]}" cy="${at[i][1]}" r="4"/>` : ''));
  const area = [`${edge},${height}`, ...at.map((point) => point.join()), `${at.at(-1)[0]},${height}`];
  return `<svg class="graph" viewBox="0 0 ${width} ${height}" role="img" aria-label="White's chances by move">
<rect width="${width}" height="${height}"/><polygon points="${area.join(' ')}"/>
<line class="middle" x1="0" x2="${width}" y1="${height / 2}" y2="${height / 2}"/>
<line class="cursor" x1="${edge}" x2="${edge}" y1="0" y2="${height}"/>${marks.join('')}</svg>`;
}

const MarkKind = { '?!': 'dubious', '?': 'mistake', '??': 'blunder' };
const points = (chance) => Math.round(100 * chance);

function gamePart({ headers, start, plies, ending }, index) {
  const tag = (name) => (headers.get(name) ?? '?').replace(/\.\?\?/g, ''); // parts of a date
  const title = titleOf(headers);
  const positions = [start, ...plies];
  const chosen = (ply) => ({ ply, x: graphX(ply, positions.length).toFixed(1) });
  const note = (ply) => `${scoreText(ply.score)}, White's chances ${ply.chance < 0 ? '' : '+'}${points(ply.chance)}`;
  const moves = plies.map((ply, i) => button(
    `${ply.number.endsWith('...') && i ? '' : `${ply.number} `}${ply.san}${ply.mark ?? ''}`,
    { board: ply.board, uci: ply.uci, note: note(ply), ...chosen(i + 1) }, ply.mark ? MarkKind[ply.mark] : ''));
  const better = plies.map((ply, i) => (ply.mark ? `<div class="line better" data-ply="${i + 1}" hidden>` +
    `<b>${escaped(ply.san + ply.mark)}</b> cost ${Math.floor(100 * ply.loss)} points. Better was, with` +
    ` ${scoreText(ply.bestScore)}: ${moveButtons(ply.better, { note: `instead of ${ply.san}` })}</div>\n` : ''));
  return `<section class="game" data-title="${escaped(`${index + 1}. ${title}`)}"><header><h1>${escaped(title)}</h1>
<p>${escaped([tag('Event'), tag('Date'), tag('Result')].filter((text) => !/^\?/.test(text)).join(', '))}</p></header>
${boardPart}
<div class="text">${graphSvg(positions)}
${better.join('')}<div class="line main">${button('Start', { board: start.board, note: note(start), ...chosen(0) })}
${moves.join('\n')} <span>${escaped([ending, tag('Result')].filter(Boolean).join(', '))}</span></div></div></section>`;
}

// games: what reviewGame returns.
export const reviewPage = (games) => page('Games reviewed',
  `${games.length > 1 ? '<select class="games" aria-label="game"></select>' : ''}<main>
${games.map(gamePart).join('\n')}</main>`);
