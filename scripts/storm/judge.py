"""What the storm knows of the rules of chess. It asks the rules library of the matches, never the engine."""

import collections
import json
import pathlib
import queue
import subprocess

from storm.process import HANG, Hopeless, Process

SCRIPTS = pathlib.Path(__file__).resolve().parent.parent


class Judge:
    """Answers come in the order of the requests, but later."""

    def __init__(self):
        # It brings Node.js and the rules library if they are missing.
        subprocess.run([SCRIPTS / "play_match.sh", "--help"], check=True, stdout=subprocess.DEVNULL)
        self.inbox = queue.Queue()
        self.process = Process(["node", SCRIPTS / "play_match" / "storm_judge.mjs"], self.inbox, "judge")
        self.asked = collections.deque()
        self.judged = 0

    def positions(self, seed, count):
        self.process.send(json.dumps({"seed": seed, "count": count}))
        text = self.inbox.get()[2]
        if text is None:
            raise Hopeless("the judge of the moves has ended")
        return json.loads(text)

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
                    raise Hopeless("the judge of the moves does not answer") from None
                return
            if text is None:
                raise Hopeless("the judge of the moves has ended")
            line, context = self.asked.popleft()
            self.judged += 1
            if int(text) < len(line):
                yield f'"{line[int(text)]}" is illegal in "{" ".join(line)}" {context}'
