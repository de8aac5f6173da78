// Reads games from PGN. The library's parser passes over what it cannot read; here that is a fault of the game.
import { PgnParser, parseVariant } from 'chessops/pgn';
import { parseSan } from 'chessops/san';
import { UsageError } from '../play_match/words.mjs';
import { followLine, refereeOf, uciText } from './analyst.mjs';

const StandardStart = 'rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1';
const Tag = /^\s*(\[[A-Za-z0-9][\w+#=:-]*\s+"(?:[^"\\]|\\"|\\\\)*"\]\s*)+$/;
const San = /^(?:[NBKRQ]?[a-h]?[1-8]?[-x]?[a-h][1-8](?:=?[nbrqNBRQ])?|[O0o][-–—][O0o](?:[-–—][O0o])?)[+#]{0,2}[!?]*$/;
const NoMove = /^(?:\$\d+|[-+=/!?#∓±∞⩲⩱□⊕N]+|e\.?p\.?|\*|1[-–—]0|0[-–—]1|1\/2[-–—]1\/2)$/;

// { plies, fault }: the half moves of the text, and what stands behind them that is neither move nor mark.
function scan(text) {
  let plies = 0;
  let depth = 0;
  const tokens = text.replace(/^%.*$/gm, '').match(/\{[^}]*\}?|;.*|[()]|[^\s(){};]+/g) ?? [];
  for (const token of tokens) {
    if (token[0] === '{' && !token.endsWith('}')) return { plies, fault: 'a comment without an end' };
    if (token[0] === '{' || token[0] === ';') continue;
    if (token === '(') ++depth;
    if (token === ')' && --depth < 0) return { plies, fault: 'a variation ends that did not begin' };
    if (token === '(' || token === ')') continue;
    const word = token.replace(/^\d+\.+|^\.+|^\d+$/, '');
    if (depth === 0 && San.test(word)) ++plies;
    else if (word && !NoMove.test(word) && !San.test(word)) return { plies, fault: `"${token}" is no move` };
  }
  return { plies, fault: depth ? 'a variation without an end' : undefined };
}

// The games of a file: { number, game, faults, plies }; the library's game, messages, and how many half moves may be
// read, which is less than all behind a fault.
function* split(text) {
  let done;
  const parser = new PgnParser((game) => (done = game), undefined, Infinity);
  let number = 1;
  let moves = []; // the lines behind the tags
  let faults = [];
  const finished = () => {
    const { plies, fault } = scan(moves.join('\n'));
    const read = { number: number++, game: done, faults: fault ? [...faults, fault] : faults, plies: fault ? plies : Infinity };
    [done, moves, faults] = [undefined, [], []];
    return read;
  };
  for (const line of text.split(/\r?\n/)) {
    const isTag = !moves.length && /^\s*\[/.test(line);
    if (isTag && !Tag.test(line)) {
      faults.push(`the tag ${line.trim()} cannot be read`);
      continue;
    }
    if (!isTag && (moves.length || line.trim())) moves.push(line);
    parser.parse(`${line}\n`, { stream: true });
    if (done) yield finished();
  }
  parser.parse('');
  if (done || faults.length) yield finished();
}

// Plays a game by the rules as far as it goes. Returns { number, game, headers, referee, plies, faults }: `referee` at
// the start, or undefined where there is no start; plies as followLine gives them.
function readGame({ number, game, faults, plies }) {
  const headers = game?.headers ?? new Map();
  const empty = { number, game, headers, referee: undefined, plies: [], faults };
  if (!game) return empty;
  const variant = headers.get('Variant');
  if (parseVariant(variant) !== 'chess') return { ...empty, faults: [...faults, `no rules for ${variant}`] };
  const fen = headers.get('FEN') ?? StandardStart;
  const chess960 = /960|fischer|wild/i.test(variant ?? '');
  let referee, play;
  try {
    [referee, play] = [refereeOf(fen, chess960), refereeOf(fen, chess960)];
  } catch (error) {
    if (!(error instanceof UsageError)) throw error;
    return { ...empty, faults: [...faults, error.message] };
  }
  const texts = [];
  let illegal;
  for (const { san } of game.moves.mainline()) {
    if (texts.length >= plies) break;
    const move = parseSan(play.position, san);
    const uci = move && uciText(play.position, move, play.chess960);
    if (!uci || !play.play(uci)) {
      illegal = `"${san}" is not possible here`;
      break;
    }
    texts.push(uci);
  }
  const { fullmoves, turn } = play.position;
  const place = `move ${fullmoves}${turn === 'white' ? '.' : '...'}: `;
  // A move that is not possible comes before whatever cannot be read behind it.
  const unread = plies === Infinity ? [] : [place + faults.at(-1)];
  const tags = plies === Infinity ? faults : faults.slice(0, -1);
  const line = followLine(referee, texts);
  return { number, game, headers, referee, plies: line, faults: [...tags, ...(illegal ? [place + illegal] : unread)] };
}

export const readGames = (text) => [...split(text)].map(readGame);
