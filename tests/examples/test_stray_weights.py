# SPDX-License-Identifier: MIT
"""The search for stray patches that the first edit begins with, on strips of vertices made here."""
import sys
from pathlib import Path
from types import SimpleNamespace

import numpy as np

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "examples"))
import pictures  # noqa: E402
import stray_weights  # noqa: E402


def strip(spreads):
    """A strip of quads along X, two vertices a step; step k has the spread spreads[k], {bone: weight}."""
    count = len(spreads)
    positions = np.array([(x, y, 0.0) for x in range(count) for y in (0.0, 1.0)], dtype=np.float32)
    polygons = [[2 * k, 2 * k + 1, 2 * k + 3, 2 * k + 2] for k in range(count - 1)]
    entries = [sorted(spread.items()) for spread in spreads for _ in (0, 1)]
    offsets = np.concatenate([[0], np.cumsum([len(entry) for entry in entries])])
    links = np.array([bone for entry in entries for bone, _ in entry], dtype=np.int32)
    weights = np.array([weight for entry in entries for _, weight in entry])
    bones = [SimpleNamespace(name=name) for name in ("A", "B")]
    return SimpleNamespace(positions=positions, polygons=polygons,
                           skin=SimpleNamespace(csr=lambda: (offsets, links, weights), links=bones))


def test_a_small_patch_far_from_its_bone_is_found():
    patch = stray_weights.find_stray_patch(strip([{0: 1.0}] * 20 + [{1: 1.0}] * 30 + [{0: 0.6, 1: 0.4}] + [{1: 1.0}] * 9))
    assert (patch.bone, patch.link) == ("A", 0)
    assert patch.vertices.tolist() == [100, 101]


def test_one_patch_around_each_bone_is_nothing_to_repair():
    assert stray_weights.find_stray_patch(strip([{0: 1.0}] * 20 + [{0: 0.5, 1: 0.5}] * 2 + [{1: 1.0}] * 20)) is None


def test_a_patch_close_to_its_bone_is_left_alone():
    assert stray_weights.find_stray_patch(strip([{0: 1.0}] * 20 + [{1: 1.0}] * 2 + [{0: 0.6, 1: 0.4}] + [{1: 1.0}] * 30)) \
        is None


def test_a_patch_that_no_other_bone_pulls_is_left_alone():
    assert stray_weights.find_stray_patch(strip([{0: 1.0}] * 20 + [{1: 1.0}] * 30 + [{0: 1.0}] + [{1: 1.0}] * 9)) is None


def test_a_model_without_weights_has_no_patch():
    assert stray_weights.find_stray_patch(strip([{}, {}])) is None


def test_a_picture_is_a_png_of_its_size(tmp_path):
    pictures.write_png(tmp_path / "a.png", np.zeros((3, 5, 3), dtype=np.uint8))
    data = (tmp_path / "a.png").read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    assert int.from_bytes(data[16:20], "big") == 5 and int.from_bytes(data[20:24], "big") == 3
    assert [path.name for path in tmp_path.iterdir()] == ["a.png"]
