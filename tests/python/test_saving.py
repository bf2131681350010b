# SPDX-License-Identifier: MIT
"""Saving when things go wrong: at every moment the old or the new file is whole, and nothing of the work is lost."""
import contextlib
import os
import random
import resource
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import pytest
import skindesk

from tiny_character import weights_of, write_character

NOBODY = 65534

# Opens the first file and then, until it is killed, gives vertex 4 one weight, then the other, and saves each time.
SAVES_FOR_EVER = """
import sys, skindesk
path, one, other = sys.argv[1:]
with skindesk.Desk() as desk:
    desk.open(path)
    print("open", flush=True)
    while True:
        for table in one, other:
            desk.import_weights(table)
            desk.save(path)
"""

# Opens the file and saves it on a disk that is full after a hundred bytes; the system kills it while it writes.
IS_KILLED_WHILE_WRITING = """
import resource, signal, sys, skindesk
desk = skindesk.Desk()
desk.open(sys.argv[1])
signal.signal(signal.SIGXFSZ, signal.SIG_DFL)
resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))
desk.save(sys.argv[1])
"""


def write_table(path, tip):
    """A table of weights that gives Tip this share of vertex 4."""
    path.write_text(f"model,vertex,bone,weight\nGroup/Body,4,Tip,{tip}\nGroup/Body,4,Root,{1 - tip}\n")
    return path


@pytest.fixture
def edited(desk, tmp_path):
    """The path of the tiny character, open and edited but not saved."""
    path = write_character(tmp_path / "strip.gltf")
    desk.open(path)
    assert desk.import_weights(write_table(tmp_path / "table.csv", 0.25))["vertices_changed"] == 1
    return path


@pytest.fixture
def open_folder():
    """A folder that everybody may look into."""
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o755)
        yield Path(folder)


@contextlib.contextmanager
def as_nobody():
    """Without root's rights, for as long as it lasts."""
    if os.geteuid() != 0:
        yield
        return
    os.setresuid(NOBODY, NOBODY, 0)
    try:
        yield
    finally:
        os.setresuid(0, 0, 0)


@contextlib.contextmanager
def full_disk():
    """No file can grow beyond a hundred bytes."""
    soft, hard = resource.getrlimit(resource.RLIMIT_FSIZE)
    resource.setrlimit(resource.RLIMIT_FSIZE, (100, hard))
    try:
        yield
    finally:
        resource.setrlimit(resource.RLIMIT_FSIZE, (soft, hard))


def assert_still_unsaved_and_then_saved(desk, path):
    """What could not be saved was not lost: saving again, where it is possible, writes it."""
    desk.save(path)
    desk.clear()
    assert weights_of(desk.open(path)[0])[4] == pytest.approx([0.75, 0.25])


def names(folder):
    return sorted(entry.name for entry in folder.iterdir())


def test_killed_at_any_moment_the_old_or_the_new_file_is_whole(tmp_path):
    folder = tmp_path / "work"
    folder.mkdir()
    path = write_character(folder / "strip.gltf")
    tables = [write_table(tmp_path / f"{tip}.csv", tip) for tip in (0.25, 0.75)]
    whole = {path.read_bytes()}
    with skindesk.Desk() as desk:
        desk.open(path)
        for table in tables:
            desk.import_weights(table)
            desk.save(folder / "sample.gltf")
            whole.add((folder / "sample.gltf").read_bytes())
    (folder / "sample.gltf").unlink()
    assert len(whole) == 3
    chance = random.Random(4)
    for _ in range(6):
        child = subprocess.Popen([sys.executable, "-c", SAVES_FOR_EVER, path, *tables], stdout=subprocess.PIPE, text=True)
        assert child.stdout.readline() == "open\n"
        time.sleep(chance.uniform(0.001, 0.2))
        child.send_signal(signal.SIGKILL)
        child.wait()
        child.stdout.close()
        # Each child starts from what the one before it left, so its text may differ in weights only.
        with skindesk.Desk() as desk:
            tip = weights_of(desk.open(path)[0])[4][1]
            assert tip in (pytest.approx(0.5), pytest.approx(0.25), pytest.approx(0.75))
            desk.save(path)
    assert names(folder) == ["strip.gltf"]


def test_what_a_killed_saving_left_goes_with_the_next_one(tmp_path):
    folder = tmp_path / "work"
    folder.mkdir()
    path = write_character(folder / "strip.gltf")
    before = path.read_bytes()
    killed = subprocess.run([sys.executable, "-c", IS_KILLED_WHILE_WRITING, path], check=False)
    assert killed.returncode == -signal.SIGXFSZ
    assert path.read_bytes() == before
    left = [name for name in names(folder) if name != "strip.gltf"]
    assert len(left) == 1 and left[0].startswith(".strip.gltf.") and left[0].endswith(".tmp")
    with skindesk.Desk() as desk:
        desk.open(path)
        desk.save(path)
    assert names(folder) == ["strip.gltf"]


def test_a_full_disk_leaves_the_old_file_and_the_work(desk, edited):
    before = edited.read_bytes()
    with full_disk(), pytest.raises(skindesk.FileError, match="cannot be written"):
        desk.save(edited)
    assert edited.read_bytes() == before
    assert names(edited.parent) == ["strip.gltf", "table.csv"]
    assert_still_unsaved_and_then_saved(desk, edited)


def test_a_protected_file_and_a_protected_folder_are_left_alone(desk, open_folder):
    path = write_character(open_folder / "strip.gltf")
    desk.open(path)
    desk.import_weights(write_table(open_folder / "table.csv", 0.25))
    before = path.read_bytes()
    path.chmod(0o444)
    open_folder.chmod(0o777)
    with as_nobody(), pytest.raises(skindesk.FileError, match="is write-protected"):
        desk.save(path)
    path.chmod(0o666)
    open_folder.chmod(0o555)
    with as_nobody(), pytest.raises(skindesk.FileError, match="cannot be written in this folder"):
        desk.save(path)
    open_folder.chmod(0o755)
    assert path.read_bytes() == before
    assert_still_unsaved_and_then_saved(desk, path)


def test_a_folder_as_the_target_is_refused(desk, edited, tmp_path):
    (tmp_path / "folder.gltf").mkdir()
    with pytest.raises(skindesk.FileError, match="is a folder"):
        desk.save(tmp_path / "folder.gltf")
    assert names(tmp_path / "folder.gltf") == []
    assert_still_unsaved_and_then_saved(desk, edited)


def test_a_file_that_somebody_else_changed_is_asked_about(desk, edited):
    theirs = edited.read_text() + "\n"
    edited.write_text(theirs)
    with pytest.raises(skindesk.FileError, match="changed by another program"):
        desk.save(edited)
    assert edited.read_text() == theirs
    assert "was changed by another program" in desk.messages[-1].text
    asked = []
    desk.answer = lambda title, text, buttons: asked.append(tuple(buttons)) or 1
    desk.save(edited)
    assert asked == [("Overwrite", "Cancel")]
    assert edited.read_text() != theirs
    assert_still_unsaved_and_then_saved(desk, edited)
    assert len(asked) == 1  # its own saving is nobody else's


def test_a_symbolic_link_stays_and_its_target_is_replaced(desk, tmp_path):
    real, link = write_character(tmp_path / "real.gltf"), tmp_path / "link.gltf"
    link.symlink_to("real.gltf")
    before = real.read_bytes()
    desk.open(link)
    desk.import_weights(write_table(tmp_path / "table.csv", 0.25))
    desk.save(link)
    assert link.is_symlink() and not real.is_symlink()
    assert real.read_bytes() != before
    assert_still_unsaved_and_then_saved(desk, link)
