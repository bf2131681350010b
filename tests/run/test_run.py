# SPDX-License-Identifier: MIT
"""./run as a user types it, without a display: what it plays, what it leaves, what it says when a file is no good."""
import json
import os
import subprocess
import sys
import time
from pathlib import Path

import numpy as np
import pytest

TOP = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TOP / "tests" / "support"))
from glb_reader import Glb  # noqa: E402

FIGURE = TOP / "samples" / "figure.glb"


PLUGIN = TOP / "build" / "lib" / "skindesk" / "plugins" / "libtoolweighting.so"


def run(*arguments, folder=TOP, **variables):
    environment = {key: value for key, value in os.environ.items() if key not in ("DISPLAY", "WAYLAND_DISPLAY")}
    environment.update(variables)
    return subprocess.run([str(TOP / "run"), *map(str, arguments)], cwd=folder, env=environment, text=True,
                          capture_output=True, timeout=600)


def assert_refused(result, named, out):
    """Status 1, one line that names the file, nothing left behind."""
    assert result.returncode == 1
    lines = result.stderr.strip().splitlines()
    assert len(lines) == 1, result.stderr
    assert named in lines[0]
    assert not out.exists()


def bone_share(glb, bone):
    joint = [glb.json["nodes"][node]["name"] for node in glb.json["skins"][0]["joints"]].index(bone)
    return np.where(glb.attribute("JOINTS_0") == joint, glb.attribute("WEIGHTS_0"), 0).sum(axis=1)


def test_help_tells_all_ways_to_call_it():
    result = run("--help")
    assert result.returncode == 0
    for way in ("FILE", "--first-edit", "--out", "--build-only", "--help"):
        assert way in result.stdout


def test_an_unknown_option_is_refused(tmp_path):
    assert_refused(run("--frist-edit"), "--frist-edit", tmp_path / "out")


def test_a_missing_file_is_one_line(tmp_path):
    assert_refused(run("--out", tmp_path / "out", tmp_path / "none.glb"), "none.glb", tmp_path / "out")


def test_a_folder_is_no_file(tmp_path):
    assert_refused(run("--out", tmp_path / "out", tmp_path), str(tmp_path), tmp_path / "out")


@pytest.mark.parametrize("name, content", [
    ("empty.glb", b""),
    ("text.glb", b"Dear animator,\nthis is a letter.\n"),
    ("text.gltf", b"Dear animator,\nthis is a letter.\n"),
    ("cut.glb", FIGURE.read_bytes()[:20000]),
    ("header.glb", FIGURE.read_bytes()[:11]),
], ids=["empty", "text as .glb", "text as .gltf", "cut", "cut in its header"])
def test_a_file_that_is_no_character_is_one_line(tmp_path, name, content):
    (tmp_path / name).write_bytes(content)
    assert_refused(run("--out", tmp_path / "out", tmp_path / name), name, tmp_path / "out")


def another_library(path):
    """A shared library of this machine that is no plug-in of ours."""
    source = path.with_suffix(".c")
    source.write_text("int answer(void) { return 42; }\n")
    subprocess.run(["g++", "-shared", "-fPIC", "-o", str(path), "-x", "c", str(source)], check=True)


@pytest.mark.parametrize("spoil, said", [
    (lambda path: path.write_text("Dear animator,\nthis is a letter.\n"), "is no shared library"),
    (lambda path: path.write_bytes(b""), "is empty"),
    (lambda path: path.write_bytes(PLUGIN.read_bytes()[:20000]), "is cut short"),
    (another_library, "has no entry point"),
], ids=["text", "empty", "cut short", "without entry point"])
def test_a_plugin_that_is_none_is_one_line(tmp_path, spoil, said):
    folder = tmp_path / "plugins"
    folder.mkdir()
    spoil(folder / "libtoolweighting.so")
    result = run("--first-edit", "--out", tmp_path / "out", SKINDESK_PLUGINS=str(folder))
    assert_refused(result, said, tmp_path / "out")
    assert "libtoolweighting.so" in result.stderr


def test_the_first_edit_repairs_the_mistake(tmp_path):
    facts = json.loads((TOP / "samples" / "figure.json").read_text(encoding="utf-8"))["mistake"]
    result = run("--first-edit", "--out", tmp_path / "out")
    assert result.returncode == 0, result.stdout + result.stderr
    before, after = Glb(FIGURE.read_bytes()), Glb((tmp_path / "out" / "figure.glb").read_bytes())
    positions = before.attribute("POSITION")
    spoiled = (bone_share(before, facts["wrong_bone"]) > 0) & (positions[:, 1] <= facts["box_max"][1] + 1e-6)
    assert np.count_nonzero(spoiled) >= facts["vertices"]
    assert np.all(np.abs(bone_share(after, facts["wrong_bone"])[spoiled]) < 1e-6)
    assert np.all(np.abs(bone_share(after, facts["right_bone"])[spoiled] - 1) < 1e-6)
    assert np.array_equal(bone_share(after, facts["wrong_bone"])[~spoiled], bone_share(before, facts["wrong_bone"])[~spoiled])
    assert (tmp_path / "out" / "figure.png").read_bytes().startswith(b"\x89PNG")
    assert "before" in result.stdout and f"{facts['wrong_weight'] * 100:.2f}" in result.stdout


def test_it_can_be_called_from_any_folder_with_a_relative_name(tmp_path):
    (tmp_path / "mine.glb").write_bytes(FIGURE.read_bytes())
    result = run("--first-edit", "--out", "here", "mine.glb", folder=tmp_path)
    assert result.returncode == 0, result.stdout + result.stderr
    assert sorted(path.name for path in (tmp_path / "here").iterdir()) == ["mine.glb", "mine.png"]


def test_a_second_run_is_ready_within_two_seconds():
    assert run("--build-only").returncode == 0
    start = time.monotonic()
    assert run("--build-only").returncode == 0
    assert time.monotonic() - start < 2
