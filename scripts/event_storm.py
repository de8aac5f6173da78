#!/usr/bin/env python3
"""Sends UCI lines in random order, with random small pauses, to one engine process and checks every answer.

    scripts/event_storm.py [--events N] [--seed N] [--engine FILE] [--tables DIR] [--threads N] [--bound MS]
                           [--log FILE]

Each line sent is an event. What must hold:
- each `go` gets exactly one `bestmove`: not while pondering before `ponderhit` or `stop`, not while infinite
  before `stop`, and within its clock or its time and the bound; a `go` during a search gets none
- `stop`, `isready` and `quit` are answered within the bound, during a search too
- moves and lines of moves are legal, by the rules of play_match's referee, and keep to `searchmoves`
- standard output has UCI lines only, of a search only while one runs; standard error has nothing
- `quit` ends the process with status 0, in half of the runs during a search

The default engine is the release build, brought up to date first. The same seed draws from the same random numbers,
but which events are possible depends on what the engine has answered by then, so two runs are never quite alike. What
led to a fault is therefore kept in the log (build/event_storm.log). The exit status is 1 if there was any.
"""

import argparse
import os
import pathlib
import random
import subprocess
import sys
import time

from storm.conversation import OPEN_LIMIT, Conversation, position_text
from storm.judge import Judge
from storm.process import Hopeless

ROOT = pathlib.Path(__file__).resolve().parent.parent
ENGINE = ROOT / "build" / "release" / "tarvok"
LOG = ROOT / "build" / "event_storm.log"
TABLES = ROOT.parent / "shared" / "data" / "syzygy"

POSITIONS = 500
PATIENCE = 0.3  # seconds of a search that is often left to end by itself
PROGRESS = 10.0  # seconds between two lines of it, at most

# Options that cost memory or time are drawn below these, all others within the bounds that the engine gives.
LARGEST = {"Hash": 16, "Table Memory": 8, "MCTS Hash": 160, "MultiPV": 6, "Overhead ms": 200}
# Not drawn: it goes with a position.
UNDRAWN = {"UCI_Chess960"}
FREQUENT = ["Threads", "Threads", "Use MCTS", "MultiPV", "Hash", "Skill", "SyzygyPath", "Clear Hash"]


class Storm:
    """Draws what is sent next."""

    def __init__(self, settings):
        self.settings = settings
        self.random = random.Random(settings.seed)
        self.judge = Judge()
        self.pool = self.judge.positions(settings.seed, POSITIONS)
        self.talk = Conversation(settings.engine, settings.bound / 1000, self.judge, settings.log)
        self.position = None
        self.tree = False
        self.chess960 = False

    # ---- What is sent ----

    def send_position(self):
        """One sent during a search counts from its end on. The variant changes only between searches."""
        position = self.random.choice(self.pool)
        if position["chess960"] != self.chess960:
            if self.talk.search:
                return
            self.chess960 = position["chess960"]
            self.talk.send(f"setoption name UCI_Chess960 value {str(self.chess960).lower()}")
        self.position = position
        self.talk.send(f"position {position_text(position)}")

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
        patient = False
        if not self.talk.search:
            legal = self.position["legal"]
            if legal and self.random.random() < 0.1:
                listed = self.random.sample(legal, self.random.randint(1, min(4, len(legal))))
                words += ["searchmoves", *listed]
            # Long ones are rarely waited for: they would take up most of the events.
            patient = limit is not None and self.random.random() < (0.4 if limit <= PATIENCE else 0.05)
        self.talk.send_go(words, self.position, limit, self.tree, patient)

    def send_option(self):
        draw = self.random
        options = self.talk.options
        drawn = [name for name, row in options.items() if row[0] in ("check", "spin") and name not in UNDRAWN]
        name = draw.choice(FREQUENT) if draw.random() < 0.6 else draw.choice(drawn)
        if name not in options:
            return
        kind, _, least, most = options[name]
        if kind == "button":
            self.talk.send(f"setoption name {name}")
            return
        if name == "SyzygyPath":
            if not self.settings.tables:
                return
            value = draw.choice([self.settings.tables, self.settings.tables, "<empty>"])
        elif kind == "check":
            value = draw.choice(["true", "false"])
        elif name == "Skill":
            value = draw.choice([most, most, draw.randint(int(least), int(most))])
        else:
            largest = self.settings.threads if name == "Threads" else LARGEST.get(name, int(most))
            value = draw.randint(int(least), max(int(least), min(int(most), largest)))
        if name == "Use MCTS":
            self.tree = value == "true"
        self.talk.send(f"setoption name {name} value {value}")

    def send_new_game(self):
        self.talk.send("ucinewgame")

    # ---- The storm ----

    def choose(self):
        """The next event, by what is going on."""
        talk = self.talk
        if not talk.search:
            events = {self.send_go: 50, self.send_position: 15, self.send_option: 15, talk.send_ready: 10,
                      talk.send_stop: 3, talk.send_ponder_hit: 3, self.send_new_game: 3, talk.send_listing: 0.2}
        else:
            endless = talk.search.free is None
            events = {talk.send_stop: 0 if talk.search.patient else 25, talk.send_ready: 12, self.send_option: 14,
                      self.send_position: 5, talk.send_ponder_hit: 20 if talk.search.pondering else 3,
                      self.send_new_game: 2, self.send_go: 4 if endless else 0, talk.send_listing: 0.2}
        return self.random.choices(list(events), list(events.values()))[0]

    def pause(self):
        """Seconds. Now and then one in which the reports of long searches come."""
        draw = self.random.random()
        longest = 0 if draw < 0.45 else 0.005 if draw < 0.85 else 0.03 if draw < 0.99 else 0.3
        if self.talk.search and self.talk.search.patient:
            longest = max(longest, 0.03)  # most events are for searches that can be stopped
        return 2.2 if draw > 0.9995 else self.random.random() * longest

    def blow(self):
        talk = self.talk
        talk.list_options()
        talk.send("setoption name Hash value 4")
        talk.send("setoption name UCI_Chess960 value false")
        while not self.position:
            self.send_position()
        talk.get_ready()
        told = time.monotonic()
        thousands = 0
        while talk.events.total() < self.settings.events:
            self.choose()()
            talk.listen(self.pause())
            if talk.events.total() // 1000 > thousands or time.monotonic() - told > PROGRESS:
                thousands, told = talk.events.total() // 1000, time.monotonic()
                self.tell()
        talk.settle()
        during_search = self.random.random() < 0.5
        if during_search:
            talk.send_go(["infinite"], self.position, None, self.tree)
            talk.listen(0.2 * self.random.random())
        talk.quit(during_search)

    # ---- What is told ----

    def tell(self):
        talk = self.talk
        worst = [f"{kind} {max(times):.0f}" for kind, times in sorted(talk.times.of.items())]
        print(f"event {talk.events.total()} of {self.settings.events}, {time.monotonic() - talk.started:.0f} s,"
              f" {talk.searches.total()} searches, {len(talk.faults)} faults; worst ms: {', '.join(worst)}",
              flush=True)

    def summary(self):
        talk = self.talk
        kinds = ", ".join(f"{count} {word}" for word, count in talk.events.most_common())
        print(f"\n{talk.events.total()} events in {time.monotonic() - talk.started:.0f} s: {kinds}")
        print(f"{talk.searches.total()} searches: {talk.searches['alpha-beta']} alpha-beta,"
              f" {talk.searches['tree']} tree; {self.judge.judged} lines of moves judged")
        for kind in sorted(talk.times.of):
            print(talk.times.line(kind))
        print(f"{len(talk.faults)} faults")

    def run(self):
        talk = self.talk
        try:
            self.blow()
        except Hopeless as end:
            talk.end_by(end)
        finally:
            for process in (talk.engine, self.judge.process):
                if process.child.poll() is None:
                    process.child.kill()
        self.summary()
        if talk.faults:
            print(f"what led to them is in {self.settings.log}")
        return 1 if talk.faults else 0


def positive(text):
    value = int(text)
    if value < 1:
        raise argparse.ArgumentTypeError("must be 1 or more")
    return value


def read_settings():
    parser = argparse.ArgumentParser(description="Sends UCI lines in random order and checks every answer.")
    parser.add_argument("--events", type=positive, default=20000, help="lines to send (default 20000)")
    parser.add_argument("--seed", type=int, default=1, help="of the random numbers (default 1)")
    parser.add_argument("--engine", type=pathlib.Path,
                        help="default: the release build, brought up to date first")
    parser.add_argument("--tables", type=pathlib.Path, metavar="DIR",
                        help="endgame tables (default ../shared/data/syzygy beside the work tree, if it is there)")
    parser.add_argument("--threads", type=positive, default=4, help="most search threads (default 4)")
    parser.add_argument("--bound", type=positive, default=1000, metavar="MS",
                        help="milliseconds within which to answer (default 1000)")
    parser.add_argument("--log", type=pathlib.Path, default=LOG,
                        help="for what led to faults (default build/event_storm.log)")
    settings = parser.parse_args()
    if settings.engine and not (settings.engine.is_file() and os.access(settings.engine, os.X_OK)):
        parser.error(f"no engine at {settings.engine}")
    if not any((settings.tables or TABLES).glob("*.rtbw")):
        if settings.tables:
            parser.error(f"no endgame tables in {settings.tables}")
        print(f"no endgame tables in {TABLES}: none are used, unless --tables names a folder")
    else:
        settings.tables = (settings.tables or TABLES).resolve()
    return settings


def main():
    settings = read_settings()
    try:
        if not settings.engine:
            settings.engine = ENGINE
            subprocess.run(["bash", "-c", "set -e; source scripts/common.sh; releaseEngine"], cwd=ROOT, check=True)
        settings.engine = settings.engine.resolve()
        print(f"{settings.events} events, seed {settings.seed}, up to {settings.threads} threads,"
              f" {settings.engine}", flush=True)
        return Storm(settings).run()
    except (Hopeless, OSError, subprocess.CalledProcessError) as failure:
        print(f"event_storm.py: {failure}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        print("stopped by Ctrl-C")
        return 130


if __name__ == "__main__":
    sys.exit(main())
