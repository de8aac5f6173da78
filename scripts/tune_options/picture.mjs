// Draws how the values went, as an SVG picture: a plot for each option, one below the other.
import { Colour, label, Left, picture, Plot } from '../play_match/picture.mjs';

const First = 80; // the top of the first plot
const Height = 130;
const Gap = 45;
const Margin = 2; // first steps beyond the values that came up

export function drawValues(title, { spsa, finished, history }) {
  const about = `${finished} of ${spsa.pairs} pairs of games`;
  const parts = [label(Left, 22, title, 'start'), label(Left, 42, about, 'start')];
  let plot;
  for (const [i, { name, start, min, max, step }] of spsa.options.entries()) {
    const points = history.map((point) => ({ games: point.games, value: point.values[i] }));
    points.push({ games: 2 * finished, value: spsa.values[i] });
    const seen = points.map(({ value }) => value);
    const low = Math.max(Math.min(...seen) - Margin * step, min);
    const high = Math.min(Math.max(...seen) + Margin * step, max);
    const top = First + i * (Height + Gap);
    plot = new Plot({ top, bottom: top + Height }, Math.max(2 * finished, 1), low, high);
    parts.push(...plot.frame(`${name}, in ${min} to ${max}: ${spsa.values[i].toFixed(1)}`, 4));
    parts.push(plot.dashed(start, `start ${start}`, Colour.zero), plot.line(points, 'value'));
  }
  return picture(parts, plot);
}
