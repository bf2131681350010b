# SPDX-License-Identifier: MIT
"""The examples do what their first lines say."""
import os
import struct
import subprocess
import sys
import zlib
from pathlib import Path

import numpy as np
import pytest
import skindesk

from tiny_character import Spoiled, on_screen, weights_of, write_character

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"


def run(script, *arguments):
    """The example as a user starts it: (exit status, output, errors)."""
    ended = subprocess.run([sys.executable, EXAMPLES / script, *map(str, arguments)], capture_output=True, text=True,
                           timeout=120, env=os.environ | {"PYTHONPATH": os.pathsep.join(sys.path)})
    return ended.returncode, ended.stdout, ended.stderr


def read(path):
    """The weights of a file's first model."""
    with skindesk.Desk() as desk:
        return weights_of(desk.open(path)[0])


def test_normalise_folder_brings_weights_to_one_and_reports(tmp_path):
    folder, out = tmp_path / "in", tmp_path / "out"
    folder.mkdir()
    weights = np.tile(np.array([0.5, 0.25, 0, 0], np.float32), (10, 1))
    write_character(folder / "off.gltf", Spoiled(weights=weights))
    write_character(folder / "right.gltf")
    (folder / "broken.glb").write_bytes(b"glTF")
    status, output, errors = run("normalise_folder.py", folder, "--out", out)
    assert (status, errors) == (1, "")
    assert "Body: 10 vertices, 10 did not sum to one, 0 do not now" in output
    assert "Body: 10 vertices, 0 did not sum to one, 0 do not now" in output
    assert output.endswith("3 characters, 1 with errors\n")
    assert read(out / "off.gltf")[:, 0] == pytest.approx(np.full(10, 2 / 3), abs=1e-6)
    assert (out / "right.gltf").read_bytes() == (folder / "right.gltf").read_bytes()
    assert not (out / "broken.glb").exists()


def test_normalise_folder_leaves_files_alone_without_out(tmp_path):
    path = write_character(tmp_path / "strip.gltf")
    before = path.read_bytes()
    status, output, _ = run("normalise_folder.py", tmp_path)
    assert status == 0 and "saved" not in output
    assert path.read_bytes() == before


def test_copy_weights_gives_the_picked_vertices_those_of_one(tmp_path):
    path = write_character(tmp_path / "strip.gltf")
    with skindesk.Desk() as desk:
        model = desk.open(path)[0]
        desk.viewer.frame([model])
        x, y = on_screen(desk, model)
    corners = [x[8] - 5, y[8] - 5, x[9] + 5, y[9] + 5]
    status, output, errors = run("copy_weights.py", path, "Body", 2, *corners, tmp_path / "copied.gltf")
    assert (status, errors) == (0, "")
    assert output.startswith("2 vertices have the weights of vertex 2")
    before, after = read(path), read(tmp_path / "copied.gltf")
    assert after[[8, 9]] == pytest.approx(before[[2, 2]], abs=1e-6)
    assert after[:8] == pytest.approx(before[:8], abs=1e-7)


def test_copy_weights_says_what_is_wrong(tmp_path):
    path = write_character(tmp_path / "strip.gltf")
    status, _, errors = run("copy_weights.py", path, "Nobody", 2, 0, 0, 1, 1, tmp_path / "copied.gltf")
    assert status == 1 and "Nobody" in errors and errors.count("\n") == 1
    assert run("copy_weights.py")[0] == 2


def pixels_of(picture):
    """The pixels of a PNG whose rows are not filtered, height x width x 3."""
    data = picture.read_bytes()
    assert data.startswith(b"\x89PNG")
    width, height = struct.unpack(">II", data[16:24])
    packed, at = b"", 8
    while at < len(data):
        length, = struct.unpack(">I", data[at:at + 4])
        packed += data[at + 8:at + 8 + length] * (data[at + 4:at + 8] == b"IDAT")
        at += 12 + length
    rows = np.frombuffer(zlib.decompress(packed), np.uint8).reshape(height, 1 + 3 * width)
    assert not rows[:, 0].any()
    return rows[:, 1:].reshape(height, width, 3).astype(int)


def coloured(pixels, component):
    """How many pixels are of this pure colour, light or dark."""
    others = np.delete(pixels, component, axis=2)
    return int(((pixels[:, :, component] > 150) & (others < 60).all(axis=2)).sum())


def test_recolour_bone_leaves_a_picture_in_which_the_bone_has_its_colour(tmp_path):
    path = write_character(tmp_path / "strip.gltf")
    green, blue = tmp_path / "green.png", tmp_path / "blue.png"
    status, output, errors = run("recolour_bone.py", path, "Tip", green, 0, 1, 0)
    if "no picture can be drawn" in errors:  # without OpenGL the sentence is what is left to test
        assert status == 1 and not green.exists()
        return
    assert (status, errors) == (0, "")
    assert output == f"{green}: Tip of Body\n"
    assert run("recolour_bone.py", path, "Tip", blue, 0, 0, 1)[0] == 0
    pictures = pixels_of(green), pixels_of(blue)
    assert pictures[0].shape == pictures[1].shape == (600, 800, 3)
    for picture, own, other in ((pictures[0], 1, 2), (pictures[1], 2, 1)):
        assert coloured(picture, own) > 100  # the vertices that only this bone pulls
        assert coloured(picture, other) == 0


def test_recolour_bone_names_the_bones_that_there_are(tmp_path):
    path = write_character(tmp_path / "strip.gltf")
    status, _, errors = run("recolour_bone.py", path, "Tail", tmp_path / "tail.png")
    assert status == 1 and "Root, Tip" in errors
