// A page in headless Chromium, by the DevTools protocol over a pipe. CHROMIUM names another program.
import { spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

export class Browser {
  // size: [width, height] of the window in pixels.
  async open(file, size = [1100, 800], dark = false) {
    this.folder = mkdtempSync(join(tmpdir(), 'browser-'));
    this.child = spawn(process.env.CHROMIUM ?? 'chromium', ['--headless', '--no-sandbox', '--disable-gpu',
      '--remote-debugging-pipe', '--disable-background-networking', '--disable-component-update', '--disable-sync',
      '--no-first-run', `--user-data-dir=${this.folder}`], { stdio: ['ignore', 'ignore', 'ignore', 'pipe', 'pipe'] });
    this.waiting = new Map();
    this.number = 0;
    this.errors = []; // of the page's script, and what it would have fetched
    let rest = '';
    this.child.stdio[4].setEncoding('utf8').on('data', (text) => {
      const parts = (rest + text).split('\0');
      rest = parts.pop();
      for (const part of parts) this.#read(JSON.parse(part));
    });
    const { targetId } = await this.#ask('Target.createTarget', { url: 'about:blank' });
    this.session = (await this.#ask('Target.attachToTarget', { targetId, flatten: true })).sessionId;
    for (const domain of ['Page', 'Runtime', 'Network']) await this.#ask(`${domain}.enable`);
    await this.#ask('Emulation.setDeviceMetricsOverride',
      { width: size[0], height: size[1], deviceScaleFactor: 1, mobile: false });
    await this.#ask('Emulation.setEmulatedMedia',
      { features: [{ name: 'prefers-color-scheme', value: dark ? 'dark' : 'light' }] });
    const loaded = new Promise((resolve) => (this.loaded = resolve));
    await this.#ask('Page.navigate', { url: `file://${file}` });
    await loaded;
    return this;
  }

  // The value of an expression in the page.
  async read(expression) {
    const { result, exceptionDetails } = await this.#ask('Runtime.evaluate', { expression, returnByValue: true });
    if (exceptionDetails) throw new Error(exceptionDetails.exception.description);
    return result.value;
  }

  async press(key, times = 1) {
    for (let i = 0; i < times; ++i) {
      for (const type of ['keyDown', 'keyUp']) await this.#ask('Input.dispatchKeyEvent', { type, key, code: key });
    }
  }

  // A click of the mouse into the middle of the first element that the selector finds.
  async click(selector) {
    const [x, y] = await this.read(`(() => { const f = document.querySelector(${JSON.stringify(selector)});
      f.scrollIntoView({ block: 'center' }); const r = f.getBoundingClientRect();
      return [r.x + r.width / 2, r.y + r.height / 2]; })()`);
    for (const type of ['mousePressed', 'mouseReleased']) {
      await this.#ask('Input.dispatchMouseEvent', { type, x, y, button: 'left', clickCount: 1 });
    }
  }

  async picture() {
    return Buffer.from((await this.#ask('Page.captureScreenshot', { format: 'png' })).data, 'base64');
  }

  // The board as it is painted: the first field of a FEN, from where the men stand in the picture.
  async board() {
    const men = await this.read(`[...document.querySelectorAll('.game:not([hidden]) .man')].map((man) => {
      const board = man.ownerSVGElement.getBoundingClientRect();
      const place = man.getBoundingClientRect();
      const at = (middle, from, size) => Math.floor((8 * (middle - from)) / size);
      return [man.textContent[0], man.classList.contains('white'), at(place.x + place.width / 2, board.x, board.width),
        at(place.y + place.height / 2, board.y, board.height)]; })`);
    const rows = Array.from({ length: 8 }, () => Array(8).fill('1'));
    for (const [sign, white, file, row] of men) {
      const letter = { '\u265A': 'k', '\u265B': 'q', '\u265C': 'r', '\u265D': 'b', '\u265E': 'n', '\u265F': 'p' }[sign];
      rows[row][file] = white ? letter.toUpperCase() : letter;
    }
    return rows.map((row) => row.join('').replace(/1+/g, (gap) => gap.length)).join('/');
  }

  async close() {
    const ended = new Promise((resolve) => this.child.on('close', resolve));
    this.session = undefined; // the browser itself is meant, which ends its other processes too
    await this.#ask('Browser.close');
    await ended;
    rmSync(this.folder, { recursive: true, force: true, maxRetries: 10 });
  }

  #ask(method, params = {}) {
    return new Promise((resolve, reject) => {
      const id = ++this.number;
      this.waiting.set(id, { resolve, reject });
      this.child.stdio[3].write(`${JSON.stringify({ id, method, params, sessionId: this.session })}\0`);
    });
  }

  #read(message) {
    const { id, method, params, result, error } = message;
    if (id) {
      const { resolve, reject } = this.waiting.get(id);
      this.waiting.delete(id);
      if (error) reject(new Error(error.message));
      else resolve(result);
    }
    if (method === 'Page.loadEventFired') this.loaded();
    if (method === 'Runtime.exceptionThrown') this.errors.push(params.exceptionDetails.exception?.description);
    if (method === 'Network.requestWillBeSent' && !/^(file|data|about):/.test(params.request.url)) {
      this.errors.push(params.request.url);
    }
  }
}
