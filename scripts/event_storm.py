#!/usr/bin/env python3
"""Sends UCI lines in random order, with random small pauses, to one engine process and checks every answer.

    scripts/event_storm.py [--events N] [--seed N] [--engine FILE] [--threads N] [--bound MS] [--log FILE]

Each line sent is an event. What must hold:
- each `go` gets exactly one `bestmove`: not while pondering before `ponderhit` or `stop`, not while infinite
  before `stop`, and within its clock or its time and the bound; a `go` during a search gets none
- `stop`, `isready` and `quit` are answered within the bound, during a search too
- moves and lines of moves are legal, by the rules of play_match's referee, and keep to `searchmoves`
- standard output has UCI lines only, of a search only while one runs; standard error has nothing
- `quit` ends the process with status 0, in half of the runs during a search

The same seed draws from the same random numbers, but which events are possible depends on what the engine has
answered by then, so two runs are never quite alike. What led to a fault is therefore kept in the log
(build/event_storm.log). The exit status is 1 if there was any.
"""

import argparse
import collections
import json
import pathlib
import queue
import random
import re
import subprocess
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
PLAY_MATCH = ROOT / "scripts" / "play_match"
SYZYGY = ROOT.parent / "shared" / "data" / "syzygy"

POSITIONS = 500
HANG = 30.0  # seconds without an answer that is due: the storm ends
OPEN_LIMIT = 20.0  # seconds for a small depth or number of nodes
PATIENCE = 0.3  # seconds of a search that is often left to end by itself
QUIET = 0.5  # seconds in which nothing may come once all is answered
MOST_FAULTS = 20
LOG_LINES = 2000  # of the conversation, before a fault

# Options that cost memory or time are drawn below these, all others within the bounds that the engine gives.
LARGEST = {"Hash": 16, "Table Memory": 8, "MCTS Hash": 160, "MultiPV": 6, "Overhead ms": 200}
# Not drawn: it goes with a position.
UNDRAWN = {"UCI_Chess960"}
FREQUENT = ["Threads", "Threads", "Use MCTS", "MultiPV", "Hash", "Skill", "SyzygyPath", "Clear Hash"]

# Makes positions, and judges lines of moves. One request a line, one answer a line.
JUDGE = r"""
import { createInterface } from 'node:readline';
import { readFileSync } from 'node:fs';
import { castlingSide } from 'chessops/chess';
import { makeSquare } from 'chessops/util';
import { randomFrom } from './random.mjs';
import { Referee } from './referee.mjs';

const Sets = ['Qk', 'Rk', 'Pk', 'BNk', 'PPk', 'Rkn', 'Qkr', 'RPkr', 'Pkp', 'Qkq', 'RBkr', 'Bkp', 'NNkp', 'Rkb'];
const StartFen = 'rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1';
const openings = ['standard', 'chess960'].map((name) => readFileSync(`openings/${name}.epd`, 'utf8').split('\n')
  .map((line) => /^\S+ \S+ \S+ \S+/.exec(line)?.[0]).filter(Boolean));

function legalTexts({ position, chess960 }) {
  const texts = [];
  for (const [from, dests] of position.allDests()) {
    for (let to of dests) {
      const promotes = position.board.getRole(from) === 'pawn' && (to < 8 || to >= 56);
      const side = castlingSide(position, { from, to });
      if (side && !chess960) to = (from & 56) + (side === 'h' ? 6 : 2);
      for (const piece of promotes ? 'qrbn' : ['']) texts.push(makeSquare(from) + makeSquare(to) + piece);
    }
  }
  return texts;
}

function fewMen(random) {
  for (;;) {
    const board = Array(64).fill('');
    for (const piece of 'K' + Sets[random.below(Sets.length)]) board[random.below(64)] = piece;
    const ranks = Array.from({ length: 8 }, (_, r) =>
      board.slice(8 * r, 8 * r + 8).map((piece) => piece || '1').join(''));
    const fen = `${ranks.join('/')} ${'wb'[random.below(2)]} - -`;
    try {
      return new Referee(fen) && fen;
    } catch {} // kings side by side, a pawn on a back rank, two pieces on a square: another try
  }
}

function randomPosition(random) {
  const kind = random.below(10);
  const chess960 = kind < 3 || (kind > 7 && random.below(2) === 0);
  const set = openings[chess960 ? 1 : 0];
  const fen = kind > 7 ? fewMen(random) : kind === 7 ? StartFen : set[random.below(set.length)];
  const referee = new Referee(fen, chess960);
  let legal = legalTexts(referee);
  for (let plies = random.below(2) ? random.below(20) : random.below(150); plies && legal.length; --plies) {
    referee.play(legal[random.below(legal.length)]);
    legal = legalTexts(referee);
  }
  const moves = referee.moves.map((move) => move.uci);
  return { fen: referee.startFen, start: referee.startFen === StartFen, chess960, moves, legal,
    white: referee.turn === 'white' };
}

// How many moves of the line are legal.
function legalLength({ fen, chess960, moves, line }) {
  const referee = new Referee(fen, chess960);
  for (const move of moves) referee.play(move);
  const fault = line.findIndex((move) => !referee.play(move));
  return fault < 0 ? line.length : fault;
}

for await (const text of createInterface({ input: process.stdin })) {
  const request = JSON.parse(text);
  const random = request.seed !== undefined && randomFrom(request.seed);
  const answer = random ? Array.from({ length: request.count }, () => randomPosition(random))
    : legalLength(request);
  process.stdout.write(JSON.stringify(answer) + '\n');
}
"""


def read_lines(stream, source, inbox):
    """A thread: hands on each line with the time at which it came, at the end None."""
    for line in stream:
        inbox.put((time.monotonic(), source, line.rstrip("\r\n")))
    inbox.put((time.monotonic(), source, None))


class Process:
    """A child process whose lines come into a queue."""

    def __init__(self, command, inbox, name, **settings):
        self.child = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                      errors="backslashreplace", bufsize=1, **settings)
        self.readers = []
        for stream, source in ((self.child.stdout, name), (self.child.stderr, name + " error")):
            if stream:
                reader = threading.Thread(target=read_lines, args=(stream, source, inbox), daemon=True)
                reader.start()
                self.readers.append(reader)

    def send(self, line):
        self.child.stdin.write(line + "\n")


class Judge:
    """The rules of chess: answers come in the order of the requests, but later."""

    def __init__(self):
        # It brings Node.js and the rules library if they are missing.
        subprocess.run([ROOT / "scripts" / "play_match.sh", "--help"], check=True, stdout=subprocess.DEVNULL)
        self.inbox = queue.Queue()
        self.process = Process(["node", "--input-type=module", "-e", JUDGE], self.inbox, "judge", cwd=PLAY_MATCH)
        self.asked = collections.deque()
        self.judged = 0

    def positions(self, seed, count):
        self.process.send(json.dumps({"seed": seed, "count": count}))
        return json.loads(self.inbox.get()[2])

    def ask(self, position, line, context):
        request = {key: position[key] for key in ("fen", "chess960", "moves")}
        self.process.send(json.dumps({**request, "line": line}))
        self.asked.append((line, context))

    def verdicts(self, wait=False):
        """Yields what is wrong with the lines judged since; waits for all of them if asked to."""
        while self.asked:
            try:
                text = self.inbox.get(block=wait, timeout=HANG)[2]
            except queue.Empty:
                if wait:
                    raise RuntimeError("the judge of the moves does not answer") from None
                return
            if text is None:
                raise RuntimeError("the judge of the moves has ended")
            line, context = self.asked.popleft()
            self.judged += 1
            if int(text) < len(line):
                yield f'"{line[int(text)]}" is illegal in "{" ".join(line)}" {context}'


class Search:
    """What is known of the search that runs."""

    def __init__(self, words, position, limit, tree, patient=False):
        self.position = position
        self.limit = limit  # seconds that it may take once it is free to end; None: it ends by `stop` alone
        self.patient = patient  # no `stop` is sent: it has to end by itself
        self.words = words
        self.tree = tree
        self.pondering = "ponder" in words
        self.begun = time.monotonic()
        # From when on it may answer.
        self.free = None if self.pondering or limit is None else self.begun
        self.stopped = None
        self.line = []  # the last line of moves that was reported
        at = words.index("searchmoves") if "searchmoves" in words else None
        self.listed = words[at + 1:] if at is not None else position["legal"]

    def due(self):
        """When an answer is due, without the bound; None: not yet."""
        if self.free is None or self.limit is None:
            return self.stopped
        end = self.free + self.limit
        return end if self.stopped is None else min(end, self.stopped)


class Times:
    """Times to answer by kind, in milliseconds."""

    def __init__(self):
        self.of = collections.defaultdict(list)

    def add(self, kind, seconds):
        self.of[kind].append(1000 * seconds)

    def line(self, kind):
        ordered = sorted(self.of[kind])
        if not ordered:
            return f"{kind}: none"
        middle, high = ordered[len(ordered) // 2], ordered[min(len(ordered) - 1, int(0.99 * len(ordered)))]
        return (f"{kind}: {len(ordered)}, median {middle:.1f} ms, 99th percentile {high:.1f} ms,"
                f" worst {ordered[-1]:.1f} ms")


class Hopeless(Exception):
    """The conversation cannot go on."""


MOVE = r"(?:[a-h][1-8][a-h][1-8][qrbn]?)"
INFO = re.compile(
    r"info(?: (?:(?:depth|seldepth|time|nodes|tbhits|multipv|currmovenumber) \d+|nps -?\d+"
    rf"|hashfull (?:\d{{1,3}}|1000)|score (?:cp|mate) -?\d+(?: (?:lower|upper)bound)?"
    rf"|currmove {MOVE}|pv(?P<pv>(?: {MOVE})*)))+ ?$")
BEST_MOVE = re.compile(rf"bestmove (?P<best>{MOVE}|0000)(?: ponder (?P<ponder>{MOVE}))?$")
OPTION = re.compile(
    r"option name (.+?) type (check|spin|string|button)(?: default (.*?))?(?: min (-?\d+) max (-?\d+))?$")


class Storm:
    def __init__(self, settings):
        self.settings = settings
        self.random = random.Random(settings.seed)
        self.bound = settings.bound / 1000
        self.judge = Judge()
        self.pool = self.judge.positions(settings.seed, POSITIONS)
        self.inbox = queue.Queue()
        self.engine = Process([settings.engine], self.inbox, "engine", stderr=subprocess.PIPE)
        self.started = time.monotonic()
        self.log = collections.deque(maxlen=LOG_LINES)
        self.logged = False
        self.faults = []
        self.times = Times()
        self.events = collections.Counter()
        self.searches = collections.Counter()
        self.readies = collections.deque()  # times of the `isready` lines without an answer
        self.listings = 0  # `uci` lines without an answer
        self.options = {}
        self.position = None
        self.search = None
        self.tree = False
        self.chess960 = False
        self.greeted = False  # what the engine says of itself when it starts is over
        self.ended = False

    # ---- Faults and the log ----

    def note(self, mark, text):
        self.log.append(f"{time.monotonic() - self.started:10.4f} {mark} {text}")

    def write_log(self):
        """Adds what led to a fault, so far as no fault before has brought it."""
        self.settings.log.parent.mkdir(parents=True, exist_ok=True)
        with self.settings.log.open("a" if self.logged else "w", encoding="utf-8") as file:
            file.writelines(line + "\n" for line in self.log)
        self.logged = True
        self.log.clear()

    def fault(self, text):
        event = self.events.total()
        self.faults.append(text)
        self.note("?", f"event {event}: {text}")
        self.write_log()
        print(f"FAULT at event {event}: {text}", flush=True)
        if len(self.faults) >= MOST_FAULTS:
            raise Hopeless("too many faults")

    # ---- What comes ----

    def listen(self, seconds):
        """Reads what comes within so many seconds, and what has come."""
        end = time.monotonic() + seconds
        while True:
            try:
                at, source, line = self.inbox.get(timeout=max(0.0, end - time.monotonic()))
            except queue.Empty:
                break
            if line is None:
                self.ended = True
                if source == "engine" and not self.events["quit"]:
                    raise Hopeless(f"the engine ended, with status {self.engine.child.wait(HANG)}")
            elif source == "engine":
                self.note("<", line)
                self.read(line, at)
            else:
                self.note("!", line)
                self.fault(f'on standard error: "{line}"')
        for verdict in self.judge.verdicts():
            self.fault(verdict)
        self.test_hang()

    def test_hang(self):
        now = time.monotonic()
        if self.readies and now - self.readies[0] > HANG:
            raise Hopeless(f"no answer to isready in {HANG:.0f} s")
        due = self.search.due() if self.search else None
        if due is not None and now - due > HANG:
            raise Hopeless(f'no bestmove {HANG:.0f} s after it was due, for "{" ".join(self.search.words)}"')

    def read(self, line, at):
        word = line.split(" ", 1)[0]
        if word == "info":
            self.read_info(line)
        elif word == "bestmove":
            self.read_best_move(line, at)
        elif line == "readyok":
            self.read_ready(at)
        elif word in ("id", "option", "uciok") and self.listings:
            self.greeted = True
            self.read_listing(line)
        elif self.greeted:
            self.fault(f'no UCI line, or out of place: "{line}"')

    def read_info(self, line):
        if line.startswith("info string "):
            return
        match = INFO.match(line)
        if not match:
            self.fault(f'no UCI info line: "{line}"')
        elif not self.search:
            self.fault(f'outside a search: "{line}"')
        elif match["pv"]:
            self.search.line = match["pv"].split()

    def read_ready(self, at):
        if not self.readies:
            self.fault("a readyok that nothing asked for")
            return
        seconds = at - self.readies.popleft()
        self.times.add("isready during a search" if self.search else "isready", seconds)
        if seconds > self.bound:
            self.fault(f"readyok after {1000 * seconds:.0f} ms")

    def read_listing(self, line):
        if line == "uciok":
            self.listings -= 1
        elif match := OPTION.match(line):
            self.options[match[1]] = match.groups()[1:]
        elif not line.startswith("id "):
            self.fault(f'no option line: "{line}"')

    def read_best_move(self, line, at):
        search, self.search = self.search, None
        if not search:
            self.fault(f'answers no go: "{line}"')
            return
        go = f'for "{" ".join(search.words)}"'
        match = BEST_MOVE.match(line)
        if not match:
            self.fault(f'no UCI bestmove line: "{line}" {go}')
            return
        if search.free is None:
            self.fault(f'"{line}" before stop or ponderhit, {go}')
        self.time_best_move(search, at, go)
        self.judge_moves(search, match, go)

    def time_best_move(self, search, at, go):
        mode = "tree" if search.tree else "alpha-beta"
        if search.stopped is not None:
            self.times.add(f"stop, {mode}", at - search.stopped)
        elif search.limit is not None and search.free is not None and search.limit < OPEN_LIMIT:
            self.times.add(f"beyond the given time, {mode}", max(0.0, at - search.due()))
        due = search.due()
        if due is not None and at - due > self.bound:
            self.fault(f"bestmove {1000 * (at - due):.0f} ms after it was due, {go}, stop sent: "
                       f"{search.stopped is not None}")

    def judge_moves(self, search, match, go):
        position = search.position
        context = f'{go} after "{position_text(position)}"'
        best = match["best"]
        if not position["legal"]:
            if best != "0000" or match["ponder"]:
                self.fault(f'"{match[0]}" where no move is left, {context}')
        elif best not in search.listed:
            self.fault(f'bestmove {best} is no move of {" ".join(search.listed)}, {context}')
        elif match["ponder"]:
            self.judge.ask(position, [best, match["ponder"]], context)
        if search.line:
            self.judge.ask(position, search.line, context)

    # ---- What is sent ----

    def send(self, line):
        self.note(">", line)
        self.events[line.split(" ", 1)[0]] += 1
        try:
            self.engine.send(line)
        except OSError:
            self.listen(HANG)  # its end is on the way
            raise Hopeless("the engine takes no input") from None

    def send_ready(self):
        self.readies.append(time.monotonic())
        self.send("isready")

    def send_stop(self):
        if self.search:
            self.search.stopped = self.search.stopped or time.monotonic()
            self.search.free = self.search.free or self.search.stopped
        self.send("stop")

    def send_ponder_hit(self):
        if self.search and self.search.pondering:
            self.search.pondering = False
            self.search.free = self.search.free or time.monotonic()
        self.send("ponderhit")

    def send_position(self):
        """One sent during a search counts from its end on. The variant changes only between searches."""
        position = self.random.choice(self.pool)
        if position["chess960"] != self.chess960:
            if self.search:
                return
            self.chess960 = position["chess960"]
            self.send(f"setoption name UCI_Chess960 value {str(self.chess960).lower()}")
        self.position = position
        self.send(f"position {position_text(position)}")

    def limits(self):
        """The words of a go, and the seconds that it may take (None: until stop)."""
        draw = self.random
        kind = draw.choices(["infinite", "movetime", "clock", "depth", "nodes"], [25, 20, 35, 10, 10])[0]
        if kind == "infinite":
            return ["infinite"], None
        if kind == "movetime":
            time_ms = draw.choice([1, draw.randint(1, 60), draw.randint(1, 300)])
            return ["movetime", str(time_ms)], time_ms / 1000
        if kind == "depth":
            return ["depth", str(draw.randint(1, 6))], OPEN_LIMIT
        if kind == "nodes":
            return ["nodes", str(draw.choice([1, draw.randint(1, 5000), draw.randint(1, 50000)]))], OPEN_LIMIT
        clock = {"wtime": 0, "btime": 0}
        for side in clock:
            clock[side] = draw.choice([draw.randint(1, 100), draw.randint(20, 3000)])
        words = [word for side, time_ms in clock.items() for word in (side, str(time_ms))]
        if draw.random() < 0.5:
            words += ["winc", str(draw.randint(0, 100)), "binc", str(draw.randint(0, 100))]
        if draw.random() < 0.3:
            words += ["movestogo", str(draw.randint(1, 40))]
        return words, clock["wtime" if self.position["white"] else "btime"] / 1000

    def send_go(self):
        words, limit = self.limits()
        if limit is not None and self.random.random() < 0.3:
            words.insert(0, "ponder")
        if self.search:
            self.send("go " + " ".join(words))  # never answered: a search runs, and will not end by itself
            return
        legal = self.position["legal"]
        if legal and self.random.random() < 0.1:
            words += ["searchmoves", *self.random.sample(legal, self.random.randint(1, min(4, len(legal))))]
        self.searches["tree" if self.tree else "alpha-beta"] += 1
        # Long ones are rarely waited for: they would take up most of the events.
        patient = limit is not None and self.random.random() < (0.4 if limit <= PATIENCE else 0.05)
        self.search = Search(words, self.position, limit, self.tree, patient)
        self.send("go " + " ".join(words))

    def send_option(self):
        draw = self.random
        kinds = ("check", "spin")
        drawn = [name for name, row in self.options.items() if row[0] in kinds and name not in UNDRAWN]
        name = draw.choice(FREQUENT) if draw.random() < 0.6 else draw.choice(drawn)
        if name not in self.options:
            return
        kind, _, least, most = self.options[name]
        if kind == "button":
            self.send(f"setoption name {name}")
            return
        if name == "SyzygyPath":
            if not SYZYGY.is_dir():
                return
            value = draw.choice([SYZYGY, SYZYGY, "<empty>"])
        elif kind == "check":
            value = draw.choice(["true", "false"])
        elif name == "Skill":
            value = draw.choice([most, most, draw.randint(int(least), int(most))])
        else:
            largest = self.settings.threads if name == "Threads" else LARGEST.get(name, int(most))
            value = draw.randint(int(least), max(int(least), min(int(most), largest)))
        if name == "Use MCTS":
            self.tree = value == "true"
        self.send(f"setoption name {name} value {value}")

    def send_listing(self):
        self.listings += 1
        self.send("uci")

    # ---- The storm ----

    def choose(self):
        """The next event, by what is going on."""
        if not self.search:
            events = {self.send_go: 50, self.send_position: 15, self.send_option: 15, self.send_ready: 10,
                      self.send_stop: 3, self.send_ponder_hit: 3, self.send_new_game: 3, self.send_listing: 0.2}
        else:
            endless = self.search.free is None
            events = {self.send_stop: 0 if self.search.patient else 25, self.send_ready: 12, self.send_option: 14,
                      self.send_position: 5, self.send_ponder_hit: 20 if self.search.pondering else 3,
                      self.send_new_game: 2, self.send_go: 4 if endless else 0, self.send_listing: 0.2}
        return self.random.choices(list(events), list(events.values()))[0]

    def send_new_game(self):
        self.send("ucinewgame")

    def pause(self):
        """Seconds. Now and then one in which the reports of long searches come."""
        draw = self.random.random()
        longest = 0 if draw < 0.45 else 0.005 if draw < 0.85 else 0.03 if draw < 0.99 else 0.3
        if self.search and self.search.patient:
            longest = max(longest, 0.03)  # most events are for searches that can be stopped
        return 2.2 if draw > 0.9995 else self.random.random() * longest

    def blow(self):
        self.send_listing()
        self.wait_for(lambda: not self.listings, "uciok")
        self.send("setoption name Hash value 4")
        self.send("setoption name UCI_Chess960 value false")
        while not self.position:
            self.send_position()
        self.send_ready()
        self.wait_for(lambda: not self.readies, "readyok")
        told = time.monotonic()
        thousands = 0
        while self.events.total() < self.settings.events:
            self.choose()()
            self.listen(self.pause())
            if self.events.total() // 1000 > thousands or time.monotonic() - told > 10:
                thousands, told = self.events.total() // 1000, time.monotonic()
                self.tell()

    def wait_for(self, condition, what):
        end = time.monotonic() + HANG
        while not condition():
            self.listen(0.01)
            if time.monotonic() > end:
                raise Hopeless(f"no {what} in {HANG:.0f} s")

    def settle(self):
        """Everything is answered, and then nothing more comes."""
        if self.search:
            self.send_ponder_hit()
            self.send_stop()
        self.wait_for(lambda: not self.search and not self.readies and not self.listings, "answers")
        self.send_ready()
        self.wait_for(lambda: not self.readies, "readyok")
        self.listen(QUIET)

    def quit(self):
        during = self.random.random() < 0.5
        if during:
            self.search = Search(["infinite"], self.position, None, self.tree)
            self.send("go infinite")
            self.listen(0.2 * self.random.random())
        self.search = self.search and Search(["quit"], self.position, 0, self.tree)  # an answer is no fault now
        begun = time.monotonic()
        self.send("quit")
        try:
            status = self.engine.child.wait(HANG)
        except subprocess.TimeoutExpired:
            raise Hopeless(f"no end in {HANG:.0f} s after quit") from None
        seconds = time.monotonic() - begun
        self.times.add("quit during a search" if during else "quit", seconds)
        for reader in self.engine.readers:
            reader.join()
        self.listen(0)
        if status != 0:
            self.fault(f"exit status {status} after quit")
        if seconds > self.bound:
            self.fault(f"the process ended {1000 * seconds:.0f} ms after quit")
        for verdict in self.judge.verdicts(wait=True):
            self.fault(verdict)

    # ---- What is told ----

    def tell(self):
        worst = {kind: f"{max(times):.0f}" for kind, times in sorted(self.times.of.items())}
        print(f"event {self.events.total()} of {self.settings.events}, {time.monotonic() - self.started:.0f} s,"
              f" {self.searches.total()} searches, {len(self.faults)} faults; worst ms: "
              + ", ".join(f"{kind} {value}" for kind, value in worst.items()), flush=True)

    def summary(self):
        kinds = ", ".join(f"{count} {word}" for word, count in self.events.most_common())
        print(f"\n{self.events.total()} events in {time.monotonic() - self.started:.0f} s: {kinds}")
        print(f"{self.searches.total()} searches: {self.searches['alpha-beta']} alpha-beta,"
              f" {self.searches['tree']} tree; {self.judge.judged} lines of moves judged")
        for kind in sorted(self.times.of):
            print(self.times.line(kind))
        print(f"{len(self.faults)} faults")

    def run(self):
        try:
            self.blow()
            self.settle()
            self.quit()
        except Hopeless as end:
            text = f"the storm ends here: {end}"
            self.faults.append(text)
            self.note("?", text)
            self.write_log()
            print(f"FAULT at event {self.events.total()}: {text}", flush=True)
        finally:
            if self.engine.child.poll() is None:
                self.engine.child.kill()
            self.judge.process.child.kill()
        self.summary()
        if self.faults:
            print(f"what led to them is in {self.settings.log}")
        return 1 if self.faults else 0


def position_text(position):
    moves = " moves " + " ".join(position["moves"]) if position["moves"] else ""
    return ("startpos" if position["start"] else "fen " + position["fen"]) + moves


def main():
    parser = argparse.ArgumentParser(description="Sends UCI lines in random order and checks every answer.")
    parser.add_argument("--events", type=int, default=20000, help="lines to send (default 20000)")
    parser.add_argument("--seed", type=int, default=1, help="of the random numbers (default 1)")
    parser.add_argument("--engine", default=str(ROOT / "build" / "release" / "tarvok"))
    parser.add_argument("--threads", type=int, default=4, help="most search threads (default 4)")
    parser.add_argument("--bound", type=float, default=1000, help="ms within which to answer (default 1000)")
    parser.add_argument("--log", type=pathlib.Path, default=ROOT / "build" / "event_storm.log",
                        help="for what led to faults (default build/event_storm.log)")
    settings = parser.parse_args()
    if not pathlib.Path(settings.engine).is_file():
        parser.error(f"no engine at {settings.engine}: build it, or name one with --engine")
    settings.engine = str(pathlib.Path(settings.engine).resolve())
    print(f"{settings.events} events, seed {settings.seed}, up to {settings.threads} threads, {settings.engine}")
    return Storm(settings).run()


if __name__ == "__main__":
    sys.exit(main())
