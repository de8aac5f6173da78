// Shows in a browser what is chosen. A `.game` has a board of its own; the arrow keys step through the line of the
// chosen move.
'use strict';
const Men = { k: '\u265A', q: '\u265B', r: '\u265C', b: '\u265D', n: '\u265E', p: '\u265F' };
const AsText = '\uFE0E'; // or a telephone paints some men as emoji

// board: the first field of a FEN; uci: the last move; worth: labels by square, as JSON.
function boardSvg({ board, uci = '', worth = '{}' }, turned) {
  const labels = JSON.parse(worth);
  const parts = [];
  board.split('/').forEach((row, top) => {
    const men = row.replace(/\d/g, (count) => ' '.repeat(count));
    [...men].forEach((man, file) => {
      const square = 'abcdefgh'[file] + (8 - top);
      const x = 40 * (turned ? 7 - file : file);
      const y = 40 * (turned ? 7 - top : top);
      const label = labels[square];
      const last = uci.startsWith(square) || uci.slice(2).startsWith(square);
      const kinds = `${(file + top) % 2 ? 'dark' : 'light'}${last ? ' last' : ''}`;
      parts.push(`<rect class="${kinds}" x="${x}" y="${y}" width="40" height="40"/>`);
      if (x === 0) parts.push(`<text class="name" x="2" y="${y + 9}">${8 - top}</text>`);
      if (y === 280) parts.push(`<text class="name" x="${x + 33}" y="289">${'abcdefgh'[file]}</text>`);
      if (man === ' ') return;
      const colour = man === man.toUpperCase() ? 'white' : 'black';
      parts.push(`<text class="man ${colour}" x="${x + 20}" y="${y + (label ? 28 : 33)}">` +
        `${Men[man.toLowerCase()]}${AsText}</text>`);
      if (label) parts.push(`<text class="worth" x="${x + 20}" y="${y + 38}">${label}</text>`);
    });
  });
  return `<svg viewBox="0 0 320 320" role="img" aria-label="board">${parts.join('')}</svg>`;
}

function bind(game) {
  const main = game.querySelector('.main');
  const cursor = game.querySelector('.cursor');
  const movesOf = (line) => [...line.querySelectorAll('.move')];
  let chosen;
  let turned = false;
  const show = () => (game.querySelector('.board').innerHTML = boardSvg(chosen.dataset, turned));
  const choose = (move) => {
    chosen?.classList.remove('chosen');
    chosen = move;
    chosen.classList.add('chosen');
    show();
    game.querySelector('.note').textContent = chosen.dataset.note ?? '';
    if (chosen.parentNode !== main) return;
    cursor?.setAttribute('x1', chosen.dataset.x);
    cursor?.setAttribute('x2', chosen.dataset.x);
    for (const line of game.querySelectorAll('.better')) line.hidden = line.dataset.ply !== chosen.dataset.ply;
    main.scrollTop = chosen.offsetTop - main.offsetTop - main.clientHeight / 2; // the page itself stays where it is
  };
  // Before the first move of a side line lies the move that it belongs to.
  game.step = (by) => {
    const moves = movesOf(chosen.parentNode);
    const at = moves.indexOf(chosen) + by;
    if (at >= 0 && at < moves.length) return choose(moves[at]);
    return at < 0 && chosen.parentNode !== main && choose(movesOf(main)[chosen.parentNode.dataset.ply ?? 0]);
  };
  game.addEventListener('click', (event) => {
    const button = event.target.closest('button');
    if (button?.matches('.move')) choose(button);
    if (button?.matches('.back')) game.step(-1);
    if (button?.matches('.on')) game.step(1);
    if (button?.matches('.turn')) show((turned = !turned));
    const graph = event.target.closest('.graph');
    if (!graph) return;
    const frame = graph.getBoundingClientRect();
    const x = ((event.clientX - frame.left) / frame.width) * graph.viewBox.baseVal.width;
    const far = (move) => Math.abs(move.dataset.x - x);
    choose(movesOf(main).reduce((near, move) => (far(move) < far(near) ? move : near)));
  });
  choose(movesOf(main)[0]);
}

const games = [...document.querySelectorAll('.game')];
games.forEach(bind);
const menu = document.querySelector('select.games');
const open = (number) => games.forEach((game, i) => (game.hidden = i !== number));
open(0);
menu?.append(...games.map((game) => new Option(game.dataset.title)));
menu?.addEventListener('change', () => {
  open(menu.selectedIndex);
  menu.blur(); // the arrow keys belong to the moves again
});
document.addEventListener('keydown', (event) => {
  const by = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
  if (!by || event.altKey || event.ctrlKey || event.metaKey) return; // the browser's own
  event.preventDefault();
  games.find((game) => !game.hidden)?.step(by);
});
