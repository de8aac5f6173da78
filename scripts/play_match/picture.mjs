// Draws the running score as an SVG picture: Elo with its error band, and below it the LLR if there is a test. Other
// pictures by the number of games are made of the same parts.

const Width = 800;
export const Left = 70; // of the plots, which leave this room for the axis labels
const Right = 780;
const EloPlot = { top: 80, bottom: 340 };
const LlrPlot = { top: 390, bottom: 510 };
const AxisRoom = 50; // below the lowest plot
export const MaxPoints = 700; // about one a pixel
export const Colour = {
  line: '#1f5fa8', text: '#333', grid: '#ddd', zero: '#888', accept: '#2a7f3f', reject: '#b03a2e',
};

const escaped = (text) => text.replace(/[&<>"]/g, (sign) => `&#${sign.charCodeAt(0)};`);
export const label = (x, y, text, anchor, colour = Colour.text) =>
  `<text x="${x}" y="${y}" text-anchor="${anchor}" fill="${colour}">${escaped(text)}</text>`;
const rule = (x1, y1, x2, y2, style) => `<line x1="${x1}" y1="${y1}" x2="${x2}" y2="${y2}" ${style}/>`;

// Round numbers, about `wanted` of them, that fall into the range.
function ticks(low, high, wanted) {
  const raw = (high - low) / wanted;
  const power = 10 ** Math.floor(Math.log10(raw));
  const step = power * [1, 2, 5, 10].find((factor) => factor * power >= raw);
  const found = [];
  for (let i = Math.ceil(low / step); i * step <= high; ++i) found.push(Number((i * step).toPrecision(6)));
  return found;
}

// Maps games and values to the picture. Values beyond the range are drawn at its edge.
export class Plot {
  constructor({ top, bottom }, games, low, high) {
    Object.assign(this, { top, bottom, games, low, high });
  }

  x(games) {
    return (Left + ((Right - Left) * games) / this.games).toFixed(1);
  }

  y(value) {
    const share = (Math.min(Math.max(value, this.low), this.high) - this.low) / (this.high - this.low);
    return (this.bottom - share * (this.bottom - this.top)).toFixed(1);
  }

  frame(name, wantedRows) {
    const parts = [label(Left, this.top - 10, name, 'start')];
    for (const value of ticks(this.low, this.high, wantedRows)) {
      const y = this.y(value);
      parts.push(rule(Left, y, Right, y, `stroke="${value === 0 ? Colour.zero : Colour.grid}"`));
      parts.push(label(Left - 8, Number(y) + 4, String(value), 'end'));
    }
    return parts;
  }

  line(points, key) {
    const path = points.map((point) => `${this.x(point.games)},${this.y(point[key])}`).join(' ');
    return `<polyline points="${path}" fill="none" stroke="${Colour.line}" stroke-width="2"/>`;
  }

  band(points) {
    const edge = (key) => points.map((point) => `${this.x(point.games)},${this.y(point[key])}`);
    const path = [...edge('high'), ...edge('low').reverse()].join(' ');
    return `<polygon points="${path}" fill="${Colour.line}" fill-opacity="0.18"/>`;
  }

  dashed(value, text, colour) {
    const y = this.y(value);
    return rule(Left, y, Right, y, `stroke="${colour}" stroke-dasharray="6 4"`) +
      label(Right, Number(y) - 4, text, 'end', colour);
  }
}

// The first estimates are wild: the range shows all bounds of the second half of the match, and no difference.
function eloRange(points) {
  const shown = points.slice(Math.floor(points.length / 2)).flatMap(({ low, high }) => [low, high]);
  const values = [0, ...shown.filter(Number.isFinite)];
  const [low, high] = [Math.min(...values), Math.max(...values)];
  const margin = Math.max((high - low) / 20, 1);
  return [low - margin, high + margin];
}

// The picture of what stands above and in the plots; `lowest` is the plot that the axis of games belongs to.
export function picture(parts, lowest) {
  const height = lowest.bottom + AxisRoom;
  const axis = ticks(0, lowest.games, 8).filter(Number.isInteger)
    .map((count) => label(lowest.x(count), lowest.bottom + 20, String(count), 'middle'));
  axis.push(label((Left + Right) / 2, lowest.bottom + 40, 'games', 'middle'));
  return `<svg xmlns="http://www.w3.org/2000/svg" width="${Width}" height="${height}"` +
    ` viewBox="0 0 ${Width} ${height}" font-family="sans-serif" font-size="13">\n` +
    [`<rect width="${Width}" height="${height}" fill="white"/>`, ...parts, ...axis].join('\n') + '\n</svg>\n';
}

// score: a Score, running or final. Returns the text of the picture.
export function drawScore(score) {
  const { history, sprt } = score;
  const every = Math.ceil(history.length / MaxPoints);
  const points = history.filter((_, i) => (history.length - 1 - i) % every === 0);
  const measured = points.filter((point) => point.elo !== undefined);
  const games = history.at(-1)?.games ?? 1;

  const parts = [label(Left, 22, score.title, 'start'), label(Left, 42, score.result(), 'start')];
  const elo = new Plot(EloPlot, games, ...eloRange(measured));
  parts.push(...elo.frame('Elo with 95 % bounds', 6), elo.band(measured), elo.line(measured, 'elo'));
  let lowest = elo;
  if (sprt) {
    const room = (sprt.upper - sprt.lower) / 10;
    lowest = new Plot(LlrPlot, games, sprt.lower - room, sprt.upper + room);
    parts.push(...lowest.frame(`LLR for H0 Elo ${sprt.elo0}, H1 Elo ${sprt.elo1}`, 4));
    parts.push(lowest.dashed(sprt.upper, 'H1 accepted', Colour.accept));
    parts.push(lowest.dashed(sprt.lower, 'H0 accepted', Colour.reject), lowest.line(points, 'llr'));
  }
  return picture(parts, lowest);
}
