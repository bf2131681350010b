# SPDX-License-Identifier: MIT
"""The sample characters: what samples/README.md promises about them, read back from the files themselves."""
import json
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

TOP = Path(__file__).resolve().parents[2]
SAMPLES = TOP / "samples"
sys.path[:0] = [str(SAMPLES), str(TOP / "tests" / "support")]
import make_big  # noqa: E402
from glb_reader import Glb  # noqa: E402


@pytest.fixture(scope="module")
def figure():
    return Glb((SAMPLES / "figure.glb").read_bytes())


@pytest.fixture(scope="module")
def facts():
    return json.loads((SAMPLES / "figure.json").read_text(encoding="utf-8"))


def test_the_program_writes_the_same_bytes_again(tmp_path):
    for _ in range(2):
        subprocess.run([sys.executable, str(SAMPLES / "make_figure.py"), str(tmp_path)], check=True,
                       stdout=subprocess.DEVNULL)
        for name in ("figure.glb", "figure.json"):
            assert (tmp_path / name).read_bytes() == (SAMPLES / name).read_bytes()


def test_the_figure_has_the_promised_size_and_bones(figure, facts):
    positions = figure.attribute("POSITION")
    joints = figure.json["skins"][0]["joints"]
    assert 2000 <= len(positions) <= 5000
    assert len(positions) == facts["file_vertices"]
    assert [figure.json["nodes"][joint]["name"] for joint in joints] == facts["bones"]
    assert 15 <= len(joints) <= 25
    assert 1.6 < positions[:, 1].max() - positions[:, 1].min() < 2.0


def test_seams_split_vertices_into_equal_places_with_equal_weights(figure, facts):
    positions = figure.attribute("POSITION")
    skin = np.concatenate([figure.attribute("JOINTS_0"), figure.attribute("WEIGHTS_0")], axis=1)
    places, which = np.unique(positions, axis=0, return_inverse=True)
    assert len(places) == facts["vertices"] < len(positions)
    first = np.full(len(places), -1)
    first[which[::-1]] = np.arange(len(positions))[::-1]
    assert np.array_equal(skin, skin[first[which]])
    texture = figure.attribute("TEXCOORD_0")
    assert np.any(texture != texture[first[which]])


def test_the_surface_is_closed(figure):
    corners, first = [], 0
    for primitive in figure.json["meshes"][0]["primitives"]:
        corners.append(figure.array(primitive["indices"])[:, 0].astype(np.int64) + first)
        first += figure.json["accessors"][primitive["attributes"]["POSITION"]]["count"]
    which = np.unique(figure.attribute("POSITION"), axis=0, return_inverse=True)[1]
    triangles = which[np.concatenate(corners)].reshape(-1, 3)
    edges = np.sort(np.concatenate([triangles[:, [0, 1]], triangles[:, [1, 2]], triangles[:, [2, 0]]]), axis=1)
    assert np.all(np.unique(edges, axis=0, return_counts=True)[1] == 2)


def test_every_vertex_sums_to_exactly_one(figure):
    weights = figure.attribute("WEIGHTS_0")
    assert np.all(weights.sum(axis=1) == 1.0)
    assert np.all(figure.attribute("JOINTS_0")[weights == 0] == 0)


def test_the_rest_pose_is_the_bind_pose(figure):
    skin = figure.json["skins"][0]
    inverse = figure.array(skin["inverseBindMatrices"]).reshape(-1, 4, 4).transpose(0, 2, 1)
    rest = figure.rest_matrices()
    for joint, matrix in zip(skin["joints"], inverse):
        assert np.abs(rest[joint] @ matrix - np.eye(4)).max() < 5e-6


def test_the_walk_is_a_loop_of_one_second_on_legs_arms_and_hips(figure):
    walk = figure.json["animations"][0]
    moving = set()
    for channel in walk["channels"]:
        sampler = walk["samplers"][channel["sampler"]]
        times, keys = figure.array(sampler["input"])[:, 0], figure.array(sampler["output"])
        assert (times[0], times[-1]) == (0.0, 1.0)
        assert np.abs(keys[0] - keys[-1]).max() < 2e-6
        if np.abs(keys - keys[0]).max() > 0.01:
            moving.add(figure.json["nodes"][channel["target"]["node"]]["name"])
    assert {"Hips", "Thigh.L", "Thigh.R", "Shin.L", "Shin.R", "UpperArm.L", "UpperArm.R"} <= moving


def test_the_mistake_is_where_the_facts_say_and_hangs_on_one_bone_otherwise(figure, facts):
    mistake = facts["mistake"]
    wrong, right = (facts["bones"].index(mistake[key]) for key in ("wrong_bone", "right_bone"))
    positions, joints, weights = (figure.attribute(name) for name in ("POSITION", "JOINTS_0", "WEIGHTS_0"))
    share = {bone: np.where(joints == bone, weights, 0).sum(axis=1) for bone in (wrong, right)}
    in_rectangle = np.all((positions[:, :2] >= np.array(mistake["box_min"])[:2])
                          & (positions[:, :2] <= np.array(mistake["box_max"])[:2]), axis=1)
    spoiled = in_rectangle & (share[wrong] > 0)
    assert len(np.unique(positions[spoiled], axis=0)) == mistake["vertices"]
    assert np.all(share[wrong][spoiled] == np.float32(mistake["wrong_weight"]))
    assert np.all(share[wrong][spoiled] + share[right][spoiled] == 1)
    assert np.all(share[right][in_rectangle & ~spoiled] == 1)


@pytest.mark.parametrize("count", [12, 13, 14, 97, 5000])
def test_big_meshes_have_exactly_the_vertices_asked_for(count):
    big = Glb(make_big.make_big(count, 20))
    weights = big.attribute("WEIGHTS_0")
    assert len(big.attribute("POSITION")) == count
    assert len(big.json["skins"][0]["joints"]) == 20
    assert np.all(weights > 0) and np.all(weights.sum(axis=1) == 1.0)
    triangles = big.array(big.json["meshes"][0]["primitives"][0]["indices"]).reshape(-1, 3)
    assert np.array_equal(np.unique(triangles), np.arange(count))
