# SPDX-License-Identifier: MIT
"""The examples do what their first lines say."""
import os
import subprocess
import sys
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


def test_recolour_bone_leaves_a_picture(tmp_path):
    path = write_character(tmp_path / "strip.gltf")
    picture = tmp_path / "tip.png"
    status, output, errors = run("recolour_bone.py", path, "Tip", picture, 0, 1, 0)
    if "no picture can be drawn" in errors:  # without OpenGL the sentence is what is left to test
        assert status == 1 and not picture.exists()
        return
    assert (status, errors) == (0, "")
    assert picture.read_bytes().startswith(b"\x89PNG")


def test_recolour_bone_names_the_bones_that_there_are(tmp_path):
    path = write_character(tmp_path / "strip.gltf")
    status, _, errors = run("recolour_bone.py", path, "Tail", tmp_path / "tail.png")
    assert status == 1 and "Root, Tip" in errors
