// Asks the engine about positions. Scores are White's view: { cp }, or { mate, white } with the moves to the mate
// and whether it is White who mates.
import { kingCastlesTo, makeUci } from 'chessops/util';
import { castlingSide, normalizeMove } from 'chessops/chess';
import { makeFen } from 'chessops/fen';
import { Referee } from '../play_match/referee.mjs';
import { UciEngine } from '../play_match/uci_engine.mjs';
import { UsageError } from '../play_match/words.mjs';

const HangMs = 30_000; // beyond `movetime`; a search to a depth may take as long as it likes
const NoLimitMs = 2 ** 31 - 1;

// An engine that plays for both sides wants neither to avoid draws nor to follow a book.
const Neutral = [['Contempt', '0'], ['OwnBook', 'false']];

export const scoreText = ({ cp, mate, white }) =>
  mate === undefined ? `${cp < 0 ? '' : '+'}${(cp / 100).toFixed(2)}` : `#${white ? '' : '-'}${mate}`;

// The score of a game that is over.
export const finalScore = ({ result }) => (result === '1/2-1/2' ? { cp: 0 } : { mate: 0, white: result === '1-0' });

// As UCI writes it: in Chess960 the king takes its rook, else it makes two steps.
export function uciText(position, move, chess960) {
  const normal = normalizeMove(position, move);
  const side = !chess960 && castlingSide(position, normal);
  return makeUci(side ? { ...normal, to: kingCastlesTo(position.turn, side) } : normal);
}

// Whether castling here takes the rules of Chess960.
export function needsChess960(position) {
  const corners = { white: { king: 4, a: 0, h: 7 }, black: { king: 60, a: 56, h: 63 } };
  return Object.entries(corners).some(([colour, home]) => ['a', 'h'].some((side) => {
    const rook = position.castles.rook[colour][side];
    return rook !== undefined && (rook !== home[side] || position.board.kingOf(colour) !== home.king);
  }));
}

// The referee of a position, by the rules of Chess960 if that is asked for or castling needs them.
export function refereeOf(fen, chess960 = false) {
  try {
    return new Referee(fen, chess960 || needsChess960(new Referee(fen).position));
  } catch (error) {
    const why = error.message.replace('ERR_', '').toLowerCase().replaceAll('_', ' ');
    throw new UsageError(`"${fen}" is no position: ${why}`);
  }
}

export const boardOf = (position) => makeFen(position.toSetup()).split(' ')[0];

// The moves with what a page or a PGN shows of each: its number, SAN, and the board behind it.
export function followLine(referee, texts, most) {
  const line = [];
  const copy = new Referee(makeFen(referee.position.toSetup()), referee.chess960);
  for (const uci of texts.slice(0, most)) {
    const { turn, fullmoves } = copy.position;
    const san = copy.play(uci);
    if (!san) break;
    line.push({ uci, san, number: `${fullmoves}${turn === 'white' ? '.' : '...'}`, board: boardOf(copy.position) });
  }
  return line;
}

export const lineText = (line) =>
  line.map(({ san, number }, i) => (i && number.endsWith('...') ? san : `${number} ${san}`)).join(' ');

export class Analyst extends UciEngine {
  constructor(command) {
    super({ name: command, command, args: [], options: Neutral });
    // The process ends with ours, also when Ctrl-C or SIGTERM ends that.
    process.on('exit', () => this.kill());
    process.on('SIGINT', () => process.exit(130)).on('SIGTERM', () => process.exit(143));
  }

  async newGame(chess960) {
    this.send(`setoption name UCI_Chess960 value ${chess960}`);
    await super.newGame();
  }

  // limit: { movetime } in ms or { depth }. Resolves to the best lines, { score, depth, moves } with moves in UCI.
  async look(referee, limit, lines = 1) {
    const wanted = Math.min(lines, referee.legalMoves().length);
    const byDepth = new Map(); // depth -> lines by their number
    this.onReport = (text) => {
      const report = this.#read(text, referee.turn === 'white');
      if (!report) return;
      const row = byDepth.get(report.depth) ?? [];
      // A bound stands only for want of a score.
      if (!report.bound || !row[report.rank]) row[report.rank] = report;
      byDepth.set(report.depth, row);
    };
    this.send(`setoption name MultiPV value ${lines}`);
    const played = referee.moves.map((move) => move.uci).join(' ');
    const [[word, value]] = Object.entries(limit);
    const answer = await this.go(`position fen ${referee.startFen}${played && ` moves ${played}`}`,
      `go ${word} ${value}`, word === 'movetime' ? value + HangMs : NoLimitMs);
    // The deepest iteration that has all lines, since at first each has the best one alone.
    const complete = [...byDepth.values()].filter((row) => row.filter(Boolean).length >= wanted);
    const best = complete.at(-1) ?? [...byDepth.values()].at(-1);
    if (!best) throw new Error(`the engine gave no score, but "bestmove ${answer.move}"`);
    return best.filter(Boolean);
  }

  #read(text, whiteMoves) {
    const words = text.split(/\s+/);
    const after = (word) => words[words.indexOf(word) + 1];
    if (!words.includes('score') || !words.includes('pv')) return undefined;
    const value = Number(words[words.indexOf('score') + 2]);
    const mate = { mate: Math.abs(value), white: value > 0 === whiteMoves };
    return {
      score: after('score') === 'mate' ? mate : { cp: whiteMoves ? value : -value || 0 },
      depth: Number(after('depth')),
      rank: words.includes('multipv') ? Number(after('multipv')) - 1 : 0,
      bound: /\b(lower|upper)bound\b/.test(text),
      moves: words.slice(words.indexOf('pv') + 1),
    };
  }
}
