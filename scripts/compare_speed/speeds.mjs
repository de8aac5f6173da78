// Searches become speeds, and speeds a table.

const sum = (numbers) => numbers.reduce((total, value) => total + value, 0);

export function median(numbers) {
  const sorted = [...numbers].sort((a, b) => a - b);
  return (sorted[(sorted.length - 1) >> 1] + sorted[sorted.length >> 1]) / 2;
}

// A search says nothing of speed if it was over at once, as with a single legal move, or told no count. rows[i][j] is
// the search of position i by engine j, { nodes, wallMs, processorMs }; a row stays if all of its searches say
// something.
export function tellingRows(rows, moveTime) {
  const LeastShare = 0.1; // of the time that was given
  const tells = ({ nodes, wallMs, processorMs }) =>
    nodes > 0 && wallMs >= LeastShare * moveTime && processorMs > 0;
  return rows.filter((row) => row.every(tells));
}

// One engine's figures by one clock, 'wallMs' or 'processorMs'. Ratios are to the first engine: that of the sums, and
// the median of those of the single positions.
function figures(rows, engine, clock) {
  const speed = (row, who) => (1000 * row[who].nodes) / row[who][clock];
  const together = (who) => (1000 * sum(rows.map((row) => row[who].nodes))) / sum(rows.map((row) => row[who][clock]));
  return {
    together: together(engine),
    togetherRatio: together(engine) / together(0),
    median: median(rows.map((row) => speed(row, engine))),
    medianRatio: median(rows.map((row) => speed(row, engine) / speed(row, 0))),
  };
}

export function speedTable(names, rows) {
  const width = Math.max('engine'.length, ...names.map((name) => name.length));
  const count = (value) => Math.round(value).toLocaleString('en-US');
  const line = (name, ...fields) => `  ${name.padEnd(width)}${fields.map((text) => text.padStart(14)).join('')}`;
  const block = (title, clock) => [
    `  ${title}`,
    line('engine', 'all together', 'ratio', 'median', 'ratio'),
    ...names.map((name, engine) => {
      const { together, togetherRatio, median: middle, medianRatio } = figures(rows, engine, clock);
      return line(name, count(together), togetherRatio.toFixed(3), count(middle), medianRatio.toFixed(3));
    }),
  ];
  return [
    ...block('nodes per second', 'wallMs'), '', ...block('nodes per second of processor time', 'processorMs'),
  ].join('\n');
}
