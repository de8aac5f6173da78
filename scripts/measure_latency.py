#!/usr/bin/env python3
"""Measures how late first searches answer: every sample is a fresh engine process.

    scripts/measure_latency.py [--samples N] [--hash MB,...] [--threads N,...] [--mode MODE,...] [--search KIND,...]
                               [--worst MS] [--median MS] [--start MS] [--ready MS] [--unready] [--engine FILE]

A sample sends `uci`, the options, `isready`, a position, and one search: `go movetime N`, of which it takes the time
to `bestmove` less N, or, for the kind `stop`, `go infinite` and 50 ms later `stop`, of which it takes the time from
`stop` to `bestmove`. Each combination of hash size, threads, mode and kind of search is a row of the table, with the
median and the worst time, and with those from the start of the process to `uciok` and of the `isready`, all in
milliseconds. --unready leaves out the `isready`.

The default engine is the release build, brought up to date first. Only on a quiet machine do the figures tell of the
engine. The exit status is 1 if a row breaks a bound; its figure is marked.
"""

import argparse
import itertools
import os
import pathlib
import queue
import statistics
import subprocess
import sys
import tempfile
import time

from storm.process import HANG, Hopeless, Process

ROOT = pathlib.Path(__file__).resolve().parent.parent
ENGINE = ROOT / "build" / "release" / "tarvok"

POSITIONS = [
    "startpos",
    "fen r1bq1rk1/pp2bppp/2n1pn2/2pp4/2P5/1P3NP1/PB1PPPBP/RN1Q1RK1 w - -",
    "fen 2rr2k1/1pqnbppp/p2p1n2/Pb2p3/4P3/2NNBB2/1PPQ1PPP/R2R2K1 b - -",
    "fen 6k1/5pp1/8/1P6/3N4/4P3/3N4/4K2r w - -",
]
BEFORE_STOP = 0.05  # seconds of `go infinite`


class Sample:
    """One engine process, and the milliseconds that its answers took."""

    def __init__(self, engine, folder, options, position, search, unready):
        self.inbox = queue.Queue()
        began = time.monotonic()
        self.process = Process([engine], self.inbox, "engine", cwd=folder)
        try:
            self.process.send("uci")
            self.start = 1000 * (self.answer("uciok") - began)
            for name, value in options.items():
                self.process.send(f"setoption name {name} value {value}")
            self.ready = None
            if not unready:
                asked = self.send("isready")
                self.ready = 1000 * (self.answer("readyok") - asked)
            self.process.send(f"position {position}")
            self.late = 1000 * self.lateness(search)
        finally:
            self.process.child.kill()
            self.process.child.wait()
            for reader in self.process.readers:
                reader.join()
            self.process.child.stdin.close()
            self.process.child.stdout.close()

    def send(self, line):
        """The time at which the line was sent."""
        now = time.monotonic()
        self.process.send(line)
        return now

    def answer(self, word):
        """The time at which a line came that begins with the word."""
        while True:
            try:
                when, _, line = self.inbox.get(timeout=HANG)
            except queue.Empty:
                raise Hopeless(f"no {word} within {HANG:.0f} seconds") from None
            if line is None:
                raise Hopeless(f"the engine ended before {word}")
            if line.split()[:1] == [word]:
                return when

    def lateness(self, search):
        """In seconds; below 0 the answer came early."""
        if search == "stop":
            self.process.send("go infinite")
            time.sleep(BEFORE_STOP)
            asked = self.send("stop")
            return self.answer("bestmove") - asked
        asked = self.send(f"go movetime {search}")
        return self.answer("bestmove") - asked - int(search) / 1000


class Table:
    """Prints the rows, and counts the figures beyond their bounds."""

    HEAD = f"{'':31}{'late':^20}{'to uciok':^18}{'isready':^18}"

    def __init__(self, settings):
        self.settings = settings
        self.broken = 0
        print(self.HEAD.rstrip())
        print(f"{'hash threads mode':20}{'search':>9}" + "".join(f"{name:>9}" for name in ["median", "worst"] * 3))

    def figure(self, value, bound=None):
        mark = " "
        if bound is not None and value > bound:
            self.broken += 1
            mark = "!"
        return f"{value:8.1f}{mark}"

    def row(self, cell, samples):
        settings = self.settings
        late, start = [sample.late for sample in samples], [sample.start for sample in samples]
        text = self.figure(statistics.median(late), settings.median) + self.figure(max(late), settings.worst)
        text += self.figure(statistics.median(start)) + self.figure(max(start), settings.start)
        if not settings.unready:
            ready = [sample.ready for sample in samples]
            text += self.figure(statistics.median(ready)) + self.figure(max(ready), settings.ready)
        megabytes, threads, mode, search = cell
        print(f"{megabytes:>4} {threads:>7} {mode:7}{search:>9} {text}".rstrip(), flush=True)


def measure(settings):
    table = Table(settings)
    cells = itertools.product(settings.hash, settings.threads, settings.mode, settings.search)
    with tempfile.TemporaryDirectory() as folder:  # without a book
        for cell in cells:
            megabytes, threads, mode, search = cell
            options = {"Threads": threads, "Hash": megabytes, "Use MCTS": "true" if mode == "tree" else "false"}
            samples = [Sample(settings.engine, folder, options, POSITIONS[i % len(POSITIONS)], search,
                              settings.unready) for i in range(settings.samples)]
            table.row(cell, samples)
    print(f"{table.broken} figures beyond their bounds")
    return table.broken


def positive(text):
    value = int(text)
    if value < 1:
        raise argparse.ArgumentTypeError("must be 1 or more")
    return value


def listed(read):
    return lambda text: [read(part) for part in text.split(",")]


def one_of(*words):
    def read(text):
        if text not in words:
            raise argparse.ArgumentTypeError(f"must be of {', '.join(words)}")
        return text
    return read


def search_kind(text):
    return text if text == "stop" else str(positive(text))


def read_settings():
    parser = argparse.ArgumentParser(description="Measures how late first searches answer, in fresh processes.")
    parser.add_argument("--samples", type=positive, default=20, help="processes for each row (default 20)")
    parser.add_argument("--hash", type=listed(positive), default=[16, 192, 2048, 4096], metavar="MB,...",
                        help="hash sizes (default 16,192,2048,4096)")
    parser.add_argument("--threads", type=listed(positive), default=[1, 2], metavar="N,...",
                        help="search threads (default 1,2)")
    parser.add_argument("--mode", type=listed(one_of("usual", "tree")), default=["usual", "tree"],
                        metavar="MODE,...", help="usual, tree, or both (default)")
    parser.add_argument("--search", type=listed(search_kind), default=["100", "1000", "1500", "stop"],
                        metavar="KIND,...", help="milliseconds of movetime, or stop (default 100,1000,1500,stop)")
    parser.add_argument("--worst", type=float, default=20, metavar="MS",
                        help="bound for the latest answer of a row (default 20)")
    parser.add_argument("--median", type=float, default=10, metavar="MS",
                        help="bound for the median of a row (default 10)")
    parser.add_argument("--start", type=float, default=20, metavar="MS",
                        help="bound from the start to uciok (default 20)")
    parser.add_argument("--ready", type=float, default=2000, metavar="MS",
                        help="bound of the isready (default 2000)")
    parser.add_argument("--unready", action="store_true", help="search without an isready before")
    parser.add_argument("--engine", type=pathlib.Path,
                        help="default: the release build, brought up to date first")
    settings = parser.parse_args()
    if settings.engine and not (settings.engine.is_file() and os.access(settings.engine, os.X_OK)):
        parser.error(f"no engine at {settings.engine}")
    return settings


def main():
    settings = read_settings()
    try:
        if not settings.engine:
            settings.engine = ENGINE
            subprocess.run(["bash", "-c", "set -e; source scripts/common.sh; releaseEngine"], cwd=ROOT, check=True)
        settings.engine = settings.engine.resolve()
        return 1 if measure(settings) else 0
    except (Hopeless, OSError, subprocess.CalledProcessError) as failure:
        print(f"measure_latency.py: {failure}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        print("stopped by Ctrl-C")
        return 130


if __name__ == "__main__":
    sys.exit(main())
