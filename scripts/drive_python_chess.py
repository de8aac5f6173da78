#!/usr/bin/env python3
"""Drives the engine through python-chess as docs/bots.md tells its readers to; scripts/check_clients.sh runs it.

drive_python_chess.py ENGINE PAGE. Ends with status 1, and says on standard error what was not as it should be.
"""
import contextlib
import io
import re
import sys

import chess
import chess.engine

engine_file, page = sys.argv[1], open(sys.argv[2], encoding="utf-8").read()


def demand(met, text):
    if not met:
        sys.exit(f"drive_python_chess.py: {text}")


def block(language):
    """The page's one block in a language."""
    return re.search(rf"```{language}\n(.*?)```", page, re.DOTALL)[1]


def bot_options():
    """`uci_options` of the page's configuration, with values as YAML reads them."""
    values = {"true": True, "false": False}
    for name, value in re.findall(r"^    (.+?): (.+)$", block("yaml"), re.MULTILINE):
        yield name, values.get(value, value.strip('"'))


# The page's program, with this engine for the one that it names.
printed = io.StringIO()
with contextlib.redirect_stdout(printed):
    exec(block("python").replace("/opt/tarvok/tarvok", engine_file), {})
lines = printed.getvalue().splitlines()
demand(chess.Move.from_uci(lines[0]) in chess.Board().legal_moves, f"no legal move: {lines[0]}")
demand([line.split()[0] for line in lines[1:]] == ["1", "2", "3"], f"not three lines: {lines[1:]}")

with chess.engine.SimpleEngine.popen_uci(engine_file) as engine:
    options = dict(bot_options())
    demand("Overhead ms" in options, "the page's configuration was not understood")
    engine.configure(options)
    for name in ("Move Overhead", "UCI_ShowWDL"):
        try:
            engine.configure({name: 1})
        except chess.engine.EngineError:
            continue
        demand(False, f"the page says that there is no {name}")

    # White's first moves, pondering in between. Black does what was expected the first time only.
    board = chess.Board()
    clocks = chess.engine.Limit(white_clock=5, black_clock=5, white_inc=0.1, black_inc=0.1)
    for turn in range(3):
        answer = engine.play(board, clocks, ponder=True)
        demand(answer.move in board.legal_moves, f"{answer.move} in {board.fen()}")
        board.push(answer.move)
        replies = [move for move in board.legal_moves if move != answer.ponder]
        board.push(answer.ponder if answer.ponder and turn == 0 else replies[0])

    # Castling, the one move allowed, comes back as python-chess writes it in Chess960: king takes rook.
    board = chess.Board("r3k2r/pppppppp/8/8/8/8/PPPPPPPP/R3K2R w KQkq - 0 1", chess960=True)
    castling = chess.Move.from_uci("e1h1")
    answer = engine.play(board, chess.engine.Limit(depth=5), root_moves=[castling])
    demand(answer.move == castling, f"castling became {answer.move}")

    board = chess.Board("7k/5Q2/6K1/8/8/8/8/8 w - - 0 1")
    score = engine.analyse(board, chess.engine.Limit(depth=5))["score"]
    demand(score.white().mate() == 1, f"mate in one is {score}")
