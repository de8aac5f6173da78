"""Child processes of the storm and of the latency measurement."""

import subprocess
import threading
import time

HANG = 30.0  # seconds without an answer that is due: the run ends


class Hopeless(Exception):
    """The conversation cannot go on."""


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
