"""The storm's conversation with the engine: what was sent, what has to come of it, and what came."""

import collections
import queue
import re
import subprocess
import time

from storm.process import HANG, Hopeless, Process

OPEN_LIMIT = 20.0  # seconds for a small depth or number of nodes
QUIET = 0.5  # seconds in which nothing may come once all is answered
MOST_FAULTS = 20
LOG_LINES = 2000  # of the conversation, before a fault

MOVE = r"(?:[a-h][1-8][a-h][1-8][qrbn]?)"
INFO = re.compile(
    r"info(?: (?:(?:depth|seldepth|time|nodes|tbhits|multipv|currmovenumber) \d+|nps -?\d+"
    rf"|hashfull (?:\d{{1,3}}|1000)|score (?:cp|mate) -?\d+(?: (?:lower|upper)bound)?"
    rf"|currmove {MOVE}|pv(?P<pv>(?: {MOVE})*)))+ ?$")
BEST_MOVE = re.compile(rf"bestmove (?P<best>{MOVE}|0000)(?: ponder (?P<ponder>{MOVE}))?$")
OPTION = re.compile(
    r"option name (.+?) type (check|spin|string|button)(?: default (.*?))?(?: min (-?\d+) max (-?\d+))?$")


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
        middle, high = ordered[len(ordered) // 2], ordered[min(len(ordered) - 1, int(0.99 * len(ordered)))]
        return (f"{kind}: {len(ordered)}, median {middle:.1f} ms, 99th percentile {high:.1f} ms,"
                f" worst {ordered[-1]:.1f} ms")


class Conversation:
    """Sends what it is told to, and takes down as a fault whatever should not have come of it."""

    def __init__(self, engine, bound, judge, log_file):
        self.bound = bound  # seconds
        self.judge = judge
        self.log_file = log_file
        self.inbox = queue.Queue()
        self.engine = Process([engine], self.inbox, "engine", stderr=subprocess.PIPE)
        self.started = time.monotonic()
        self.log = collections.deque(maxlen=LOG_LINES)
        self.logged = False
        self.faults = []
        self.times = Times()
        self.events = collections.Counter()  # lines sent, by their first word
        self.searches = collections.Counter()
        self.readies = collections.deque()  # times of the `isready` lines without an answer
        self.listings = 0  # `uci` lines without an answer
        self.options = {}
        self.search = None
        self.greeted = False  # what the engine says of itself when it starts is over

    # ---- Faults and the log ----

    def note(self, mark, text):
        self.log.append(f"{time.monotonic() - self.started:10.4f} {mark} {text}")

    def write_log(self):
        """Adds what led to a fault, so far as no fault before has brought it."""
        self.log_file.parent.mkdir(parents=True, exist_ok=True)
        with self.log_file.open("a" if self.logged else "w", encoding="utf-8") as file:
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

    def end_by(self, reason):
        """The fault after which there is no going on."""
        text = f"the storm ends here: {reason}"
        self.faults.append(text)
        self.note("?", text)
        self.write_log()
        print(f"FAULT at event {self.events.total()}: {text}", flush=True)

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

    def send_listing(self):
        self.listings += 1
        self.send("uci")

    def send_ready(self):
        self.readies.append(time.monotonic())
        self.send("isready")

    def send_go(self, words, position, limit, tree, patient=False):
        """During a search it is not answered, which can be told only of one that does not end by itself."""
        if not self.search:
            self.searches["tree" if tree else "alpha-beta"] += 1
            self.search = Search(words, position, limit, tree, patient)
        self.send("go " + " ".join(words))

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

    # ---- Its beginning and its end ----

    def wait_for(self, condition, what):
        end = time.monotonic() + HANG
        while not condition():
            self.listen(0.01)
            if time.monotonic() > end:
                raise Hopeless(f"no {what} in {HANG:.0f} s")

    def list_options(self):
        self.send_listing()
        self.wait_for(lambda: not self.listings, "uciok")

    def get_ready(self):
        self.send_ready()
        self.wait_for(lambda: not self.readies, "readyok")

    def settle(self):
        """Everything is answered, and then nothing more comes."""
        if self.search:
            self.send_ponder_hit()
            self.send_stop()
        self.wait_for(lambda: not self.search and not self.readies and not self.listings, "answers")
        self.get_ready()
        self.listen(QUIET)

    def quit(self, during_search):
        if self.search:  # an answer is no fault now, and neither is none
            self.search = Search(["quit"], self.search.position, 0, self.search.tree)
        begun = time.monotonic()
        self.send("quit")
        try:
            status = self.engine.child.wait(HANG)
        except subprocess.TimeoutExpired:
            raise Hopeless(f"no end in {HANG:.0f} s after quit") from None
        seconds = time.monotonic() - begun
        self.times.add("quit during a search" if during_search else "quit", seconds)
        for reader in self.engine.readers:
            reader.join()
        self.listen(0)
        if status != 0:
            self.fault(f"exit status {status} after quit")
        if seconds > self.bound:
            self.fault(f"the process ended {1000 * seconds:.0f} ms after quit")
        for verdict in self.judge.verdicts(wait=True):
            self.fault(verdict)


def position_text(position):
    moves = " moves " + " ".join(position["moves"]) if position["moves"] else ""
    return ("startpos" if position["start"] else "fen " + position["fen"]) + moves
