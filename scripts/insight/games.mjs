// Reads games from PGN. The library's parser passes over what it cannot read; here that is a fault of the game.
import { PgnParser, parseVariant, transform } from 'chessops/pgn';
import { parseSan } from 'chessops/san';
import { followLine, refereeOf, uciText } from './analyst.mjs';

const StandardStart = 'rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1';
const Tag = /^\s*(\[[A-Za-z0-9][\w+#=:-]*\s+"(?:[^"\\]|\\"|\\\\)*"\]\s*)+$/;
const San = /^(?:[NBKRQ]?[a-h]?[1-8]?[-x]?[a-h][1-8](?:=?[nbrqNBRQ])?|[O0o][-–—][O0o](?:[-–—][O0o])?)[+#]{0,2}[!?]*$/;
const NoMove = /^(?:\$\d+|[-+=/!?#∓±∞⩲⩱□⊕N]+|e\.?p\.?|\*|1[-–—]0|0[-–—]1|1\/2[-–—]1\/2)$/;

// What of a game's text is neither move nor mark, as { plies, text } with the half moves of the main line before it.
function scan(lines) {
  const faults = [];
  let plies = 0;
  let depth = 0;
  const fault = (text) => faults.push({ plies, text, within: depth > 0 });
  const tokens = lines.replace(/^%.*$/gm, '').match(/\{[^}]*\}?|;.*|[()]|[^\s(){};]+/g) ?? [];
  for (const token of tokens) {
    const word = token.replace(/^\d+\.+|^\.+|^\d+$/, '');
    if (token[0] === '{' && !token.endsWith('}')) fault('a comment without an end');
    else if (token === ')' && depth === 0) fault('a variation ends that did not begin');
    else if (token === '(') ++depth;
    else if (token === ')') --depth;
    else if (San.test(word)) plies += depth === 0;
    else if (word && !/^[{;]/.test(word) && !NoMove.test(word)) fault(`"${token}" is no move`);
  }
  if (depth) fault('a variation without an end');
  return faults;
}

// The games of a file: { number, game, tagFaults, faults }: the library's game, and what could not be read.
function* split(text) {
  let game;
  const parser = new PgnParser((done) => (game = done), undefined, Infinity);
  let number = 1;
  let moves = []; // the lines behind the tags
  let tagFaults = [];
  const finished = () => {
    const read = { number: number++, game, tagFaults, faults: scan(moves.join('\n')) };
    [game, moves, tagFaults] = [undefined, [], []];
    return read;
  };
  for (const line of text.split(/\r?\n/)) {
    const isTag = !moves.length && /^\s*\[/.test(line);
    if (isTag && !Tag.test(line)) {
      tagFaults.push(`the tag ${line.trim()} cannot be read`);
      continue;
    }
    if (!isTag && (moves.length || line.trim())) moves.push(line);
    parser.parse(`${line}\n`, { stream: true });
    if (game) yield finished();
  }
  parser.parse('');
  if (game || tagFaults.length) yield finished();
}

// Plays a game by the rules as far as it goes. Returns { number, game, referee, plies, faults, stop }: `referee` at the
// start, or undefined where there is none; plies as followLine gives them; all faults as messages, of which `stop` is
// the one behind which the game was not read on. Variations lose what is not possible in them.
function readGame({ number, game, tagFaults, faults }) {
  const headers = game?.headers ?? new Map();
  const without = (fault) => ({ number, game: { headers }, plies: [], faults: [...tagFaults, ...fault] });
  if (!game) return without([]);
  const variant = headers.get('Variant') ?? 'standard';
  if (parseVariant(variant) !== 'chess') return without([`no rules for ${variant}`]);
  let referee, play;
  try {
    const fen = headers.get('FEN') ?? StandardStart;
    [referee, play] = [1, 2].map(() => refereeOf(fen, /960|fischer|wild/i.test(variant)));
  } catch (error) {
    return without([error.message]);
  }
  const messages = [];
  const note = ({ fullmoves, turn }, text) => {
    messages.push(`move ${fullmoves}${turn === 'white' ? '.' : '...'} ${text}`);
    return messages.at(-1);
  };
  const end = faults.find((fault) => !fault.within);
  const texts = [];
  let stop;
  for (const { san } of game.moves.mainline()) {
    for (const fault of faults) if (fault.within && fault.plies === texts.length) note(play.position, fault.text);
    if (texts.length === end?.plies) break;
    const move = parseSan(play.position, san);
    if (!move) {
      stop = note(play.position, `"${san}" is not possible`);
      break;
    }
    texts.push(uciText(play.position, move, play.chess960));
    play.play(texts.at(-1));
  }
  if (!stop && end) stop = note(play.position, end.text);
  game.moves = transform(game.moves, referee.position.clone(), (position, data) => {
    const move = parseSan(position, data.san);
    if (move) position.play(move);
    return move && data;
  });
  return { number, game, referee, plies: followLine(referee, texts), faults: [...tagFaults, ...messages], stop };
}

export const readGames = (text) => [...split(text)].map(readGame);

export function titleOf(headers) {
  const names = ['White', 'Black'].map((side) => headers.get(side) ?? '?');
  return names.every((name) => name === '?') ? headers.get('Event') ?? '?' : names.join(' - ');
}
