// Writes files in one step: whoever reads one finds the old text or the new one, also after a kill in between.
import { open, rename } from 'node:fs/promises';

let last = Promise.resolve(); // ends with the write that was asked for last

// Resolves when the text is on the disk. Slow disks hold up no clock, since the thread reads on; writes that are asked
// for meanwhile follow one after the other.
export function replaceFile(file, text) {
  const written = last.then(() => write(file, text));
  last = written.catch(() => {}); // it is the caller's
  return written;
}

async function write(file, text) {
  const handle = await open(`${file}.new`, 'w');
  try {
    await handle.writeFile(text);
    await handle.sync(); // or the name could reach the disk before the text
  } finally {
    await handle.close();
  }
  await rename(`${file}.new`, file);
}
