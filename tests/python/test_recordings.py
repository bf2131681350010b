# SPDX-License-Identifier: MIT
"""The recorded gestures of tests/gestures, played through the module. recordings/README.md there has the words."""
import shlex
from pathlib import Path

import numpy as np
import pytest

RECORDINGS = Path(__file__).parents[1] / "gestures" / "recordings"
BUTTONS = {"left": 1, "middle": 2, "right": 3}
SLIDER, WEIGHT = 1, 3


def key_of(name):
    return 27 if name == "escape" else ord(name) if len(name) == 1 else int(name)


def numbers(words):
    return [float(word) for word in words]


def vertex_of(row):
    words = row.split()
    return words[1] if words[0] == "Vertex" else row


class Hand:
    """Does what a line says."""

    def __init__(self, desk):
        self.desk, self.models = desk, {}

    def open(self, file):
        self.models = {model.name: model for model in self.desk.open(RECORDINGS / file)}

    def tool(self):
        self.controls = self.desk.open_tool("Skins")

    def drop(self, *names):
        self.controls["ModelListUI"].drop([self.models[name] for name in names])

    def size(self, width, height):
        self.desk.viewer.size(int(width), int(height))

    def camera(self, *places):
        places = numbers(places)
        self.desk.viewer.look_at(places[:3], places[3:], (0, 1, 0))

    def frame(self, *names):
        self.desk.viewer.frame([self.models[name] for name in names] or None)

    def press(self, x, y, button, *modifiers):
        self.desk.viewer.press(int(x), int(y), BUTTONS[button], modifiers)

    def move(self, x, y):
        self.desk.viewer.move(int(x), int(y))

    def release(self, x, y):
        self.desk.viewer.release(int(x), int(y))

    def wheel(self, x, y, steps):
        self.desk.viewer.wheel(int(x), int(y), float(steps))

    def key(self, key, *modifiers):
        self.desk.viewer.key(key_of(key), modifiers)

    def hold(self, key):
        self.desk.keys = self.desk.keys | {key_of(key)}

    def let(self, key):
        self.desk.keys = self.desk.keys - {key_of(key)}

    def select(self, control, *rows):
        self.controls[control].select([int(row) for row in rows])

    def check(self, control, row, state):
        self.controls[control].set_check(int(row), state == "on")

    def choose(self, control, item):
        self.controls[control].choose(int(item))

    def click(self, control):
        self.controls[control].click()

    def type(self, row, column, value):
        column = int(column)
        self.controls["SpreadWeights"].type(int(row), column, value != "0" if column == 2 else float(value))

    def drag(self, row, column, *values):
        self.controls["SpreadWeights"].drag(int(row), int(column), numbers(values))

    def undo(self):
        self.desk.undo()

    def redo(self):
        self.desk.redo()


class Eye:
    """Sees whether what a line expects holds."""

    def __init__(self, hand):
        self.hand = hand

    def rows(self, control, *texts):
        assert self.hand.controls[control].rows == list(texts)

    def vertices(self, *expected):
        seen = [vertex_of(row) for row in self.hand.controls["ListVertexList"].rows]
        assert ([] if seen == ["Empty"] else seen) == list(expected)

    def active(self, *expected):
        box = self.hand.controls["ListVertexList"]
        assert [vertex_of(box.rows[row]) for row in box.selection] == list(expected)

    def selection(self, control, *rows):
        assert [str(row) for row in self.hand.controls[control].selection] == list(rows)

    def spread(self, *expected):
        spread = self.hand.controls["SpreadWeights"]
        assert list(spread.row_labels) == list(expected[::2])
        for column in (SLIDER, WEIGHT):
            seen = [spread.cell(row, column) for row in range(len(spread.row_labels))]
            assert seen == pytest.approx(numbers(expected[1::2]), abs=1e-3)

    def weights(self, model, vertex, *expected):
        skin = self.hand.models[model].skin
        seen = []
        for link in range(len(skin.links)):
            vertices, weights = skin.entries(link)
            seen.append(weights[vertices == int(vertex)].sum())
        assert seen == pytest.approx(numbers(expected), abs=1e-5)

    def undo(self, *names):
        assert list(self.hand.desk.undo_names) == list(names)

    def redo(self, *names):
        assert list(self.hand.desk.redo_names) == list(names)

    def eye(self, *place):
        assert np.allclose(self.hand.desk.viewer.eye, numbers(place), atol=1e-3)


@pytest.mark.parametrize("name", sorted(file.stem for file in RECORDINGS.glob("*.txt")))
def test_recording(desk, name):
    hand = Hand(desk)
    eye, expectations = Eye(hand), 0
    for number, line in enumerate((RECORDINGS / f"{name}.txt").read_text().splitlines(), 1):
        if not line or line.startswith("#"):
            continue
        word, *words = shlex.split(line)
        if word != "expect":
            getattr(hand, word)(*words)
            continue
        expectations += 1
        try:
            getattr(eye, words[0])(*words[1:])
        except AssertionError as error:
            raise AssertionError(f"{name}.txt, line {number}: {line}\n{error}") from error
    assert expectations > 0


def test_there_are_recordings():
    assert len(list(RECORDINGS.glob("*.txt"))) >= 10
