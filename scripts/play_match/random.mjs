// A small generator of repeatable random numbers (mulberry32): matches and opening sets can be made again.
export function randomFrom(seed) {
  let state = seed >>> 0;
  const next = () => {
    state = (state + 0x6d2b79f5) >>> 0;
    let word = Math.imul(state ^ (state >>> 15), state | 1);
    word ^= word + Math.imul(word ^ (word >>> 7), word | 61);
    return ((word ^ (word >>> 14)) >>> 0) / 2 ** 32;
  };
  return { below: (count) => Math.floor(next() * count) };
}

export function shuffle(list, random) {
  for (let i = list.length - 1; i > 0; --i) {
    const j = random.below(i + 1);
    [list[i], list[j]] = [list[j], list[i]];
  }
  return list;
}
