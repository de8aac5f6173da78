// Writes a file in one step: whoever reads it finds the old text or the new one, also after a kill in between.
import { closeSync, fsyncSync, openSync, renameSync, writeFileSync } from 'node:fs';

export function replaceFile(file, text) {
  const handle = openSync(`${file}.new`, 'w');
  try {
    writeFileSync(handle, text);
    fsyncSync(handle); // or the name could reach the disk before the text
  } finally {
    closeSync(handle);
  }
  renameSync(`${file}.new`, file);
}
