// Judges a game by the rules of chess. All rules come from chessops; the engines are never asked.
import { Chess, castlingSide, normalizeMove } from 'chessops/chess';
import { makeFen, parseFen } from 'chessops/fen';
import { makeSanAndPlay } from 'chessops/san';
import { makeSquare, opposite, parseUci } from 'chessops/util';

const FiftyMoves = 100; // half moves

export class Referee {
  // fen: a FEN, or the first four fields of one (an EPD line's position). Throws if no game can start there.
  constructor(fen, chess960 = false) {
    this.chess960 = chess960;
    this.position = Chess.fromSetup(parseFen(fen).unwrap()).unwrap();
    this.startFen = makeFen(this.position.toSetup());
    this.moves = []; // { uci, san }
    this.seen = new Map(); // how often each position has stood on the board
    this.#note();
  }

  get turn() {
    return this.position.turn;
  }

  // Plays the move as the engine wrote it; returns its SAN, or undefined if it is illegal or wrongly written.
  play(uci) {
    const move = parseUci(uci);
    if (!move || !('from' in move) || !this.#isLegalText(move)) return undefined;
    const san = makeSanAndPlay(this.position, normalizeMove(this.position, move));
    this.moves.push({ uci, san });
    this.#note();
    return san;
  }

  // All legal moves as an engine may write them.
  legalMoves() {
    const texts = [];
    for (const [from, dests] of this.position.allDests()) {
      for (const dest of dests) {
        const promotes = this.position.board.getRole(from) === 'pawn' && (dest < 8 || dest >= 56);
        const side = !this.chess960 && castlingSide(this.position, { from, to: dest });
        const to = side ? (from & 56) + (side === 'h' ? 6 : 2) : dest;
        for (const piece of promotes ? 'qrbn' : ['']) texts.push(makeSquare(from) + makeSquare(to) + piece);
      }
    }
    return texts;
  }

  // { result, reason } once the game is over, else undefined.
  outcome() {
    const position = this.position;
    if (position.isCheckmate()) {
      return { result: opposite(this.turn) === 'white' ? '1-0' : '0-1', reason: 'checkmate' };
    }
    const draw = (reason) => ({ result: '1/2-1/2', reason });
    if (position.isStalemate()) return draw('stalemate');
    if (position.isInsufficientMaterial()) return draw('insufficient material');
    if (this.seen.get(this.#key()) >= 3) return draw('threefold repetition');
    if (position.halfmoves >= FiftyMoves) return draw('fifty-move rule');
    return undefined;
  }

  // chessops takes both ways to write castling; UCI allows one in each mode.
  #isLegalText(move) {
    const kingTakesRook = this.position.dests(move.from).has(move.to);
    if (this.chess960 && !kingTakesRook) return false;
    if (!this.chess960 && kingTakesRook && castlingSide(this.position, move)) return false;
    return this.position.isLegal(move);
  }

  // Two positions are the same if board, turn, castling rights and a playable en passant capture are.
  #key() {
    return makeFen(this.position.toSetup()).split(' ').slice(0, 4).join(' ');
  }

  #note() {
    const key = this.#key();
    this.seen.set(key, (this.seen.get(key) ?? 0) + 1);
  }
}
