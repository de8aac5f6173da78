// Goes through a game with the engine and writes down what it found.
import { extend, makePgn } from 'chessops/pgn';
import { boardOf, finalScore, followLine, refereeOf, scoreText } from './analyst.mjs';

const BetterLength = 8; // half moves of a better line

// White's chances to win less those to lose, from -1 to 1. The rate is the logistic fit that a well-known free chess
// server made of the results of its players' games, by the scores of its own engine; it is no measure of this one.
const ChanceRate = 0.00368208; // a centipawn
export const chanceOf = ({ cp, mate, white }) =>
  (mate === undefined ? 2 / (1 + Math.exp(-ChanceRate * cp)) - 1 : white ? 1 : -1);

// What a move must cost of the chances at least; the same server's limits.
const Marks = [['??', 0.3], ['?', 0.2], ['?!', 0.1]];
const Nags = { '?': 2, '??': 4, '?!': 6 };
export const markOf = (loss) => Marks.find(([, least]) => loss >= least - 1e-9)?.[0];

// What readGames gave, reviewed: { headers, start, plies, ending }; `ending` is undefined if nothing ends it. Each of
// the plies gets score and chance behind it, loss for the side that moved, and with a mark bestScore and the better
// line. progress(done, all) is told before each search.
export async function reviewGame({ game: { headers }, referee, plies, stop }, analyst, limit, progress = () => {}) {
  const play = refereeOf(referee.startFen, referee.chess960);
  const begin = boardOf(play.position);
  await analyst.newGame(play.chess960);
  // A draw by repetition or by fifty moves must be claimed: games that went on are looked at further.
  const look = async (done) => {
    const over = play.outcome();
    const mustEnd = over && !/threefold|fifty/.test(over.reason);
    if (over && (mustEnd || done === plies.length)) return { score: finalScore(over), moves: [], over };
    progress(done, plies.length);
    return (await analyst.look(play, limit))[0];
  };
  let before = await look(0);
  const start = { board: begin, score: before.score, chance: chanceOf(before.score) };
  const reviewed = [];
  for (const [i, ply] of plies.entries()) {
    const whiteMoved = play.turn === 'white';
    const better = followLine(play, before.moves, BetterLength);
    play.play(ply.uci);
    const after = await look(i + 1);
    const [was, is] = [before, after].map(({ score }) => (whiteMoved ? chanceOf(score) : -chanceOf(score)));
    const loss = Math.max(0, was - is);
    // What a look one move later finds in the best move is no reproach.
    const mark = !better.length || better[0].uci === ply.uci ? undefined : markOf(loss);
    reviewed.push({ ...ply, score: after.score, chance: chanceOf(after.score), loss, mark,
      ...(mark && { bestScore: before.score, better }) });
    before = after;
  }
  const ending = stop ?? before.over?.reason;
  return { headers, start, plies: reviewed, ending };
}

// The game's own comments and variations stay; earlier scores and marks of this kind go.
export function annotatedPgn({ game, stop }, { headers, plies, ending }) {
  let node = game.moves;
  for (const { san, score, mark, better } of plies) {
    const child = node.children[0];
    const comments = (child.data.comments ?? [])
      .map((text) => text.replace(/\s*\[%eval [^\]]*\]\s*/g, ' ').trim()).filter(Boolean);
    const nags = (child.data.nags ?? []).filter((nag) => !Object.values(Nags).includes(nag));
    Object.assign(child.data, { san, comments: [`[%eval ${scoreText(score).replace('+', '')}]`, ...comments],
      nags: mark ? [Nags[mark], ...nags] : nags });
    if (mark) extend(node, better.map((move) => ({ san: move.san })));
    node = child;
  }
  if (stop) node.children = [];
  const last = plies.length ? node.data.comments : (game.comments ??= []);
  if (ending) last.push(stop ? `The game cannot be read on: ${stop}` : ending);
  headers.set('Annotator', 'Tarvok');
  return `${makePgn({ ...game, headers })}\n`;
}
