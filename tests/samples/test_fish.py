# SPDX-License-Identifier: MIT
"""The fish: what samples/README.md promises about it, read back from the file itself."""
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

TOP = Path(__file__).resolve().parents[2]
SAMPLES = TOP / "samples"
sys.path[:0] = [str(SAMPLES), str(TOP / "tests" / "support")]
import make_fish  # noqa: E402
import nurbs  # noqa: E402
from glb_reader import Glb  # noqa: E402

BODY, TAIL, BACK = range(3)


@pytest.fixture(scope="module")
def fish():
    return Glb((SAMPLES / "fish.glb").read_bytes())


def surface_of(fish, mesh):
    return fish.json["meshes"][mesh]["extensions"]["TW_nurbs_surface"]


def dense(fish, attributes):
    """Vertices x bones."""
    joints, weights = fish.array(attributes["JOINTS_0"]).astype(np.int64), fish.array(attributes["WEIGHTS_0"])
    table = np.zeros((len(joints), len(fish.json["skins"][0]["joints"])))
    np.add.at(table, (np.arange(len(joints))[:, None], joints), weights)
    return table


def test_the_program_writes_the_same_bytes_again(tmp_path):
    for _ in range(2):
        subprocess.run([sys.executable, str(SAMPLES / "make_fish.py"), str(tmp_path)], check=True,
                       stdout=subprocess.DEVNULL)
        assert (tmp_path / "fish.glb").read_bytes() == (SAMPLES / "fish.glb").read_bytes()


def test_it_has_three_surfaces_and_eight_bones(fish):
    assert [(surface_of(fish, mesh)["degree"], surface_of(fish, mesh)["count"]) for mesh in range(3)] == \
        [([2, 3], [9, 11]), ([3, 2], [6, 3]), ([2, 1], [5, 2])]
    joints = fish.json["skins"][0]["joints"]
    assert [fish.json["nodes"][joint]["name"] for joint in joints] == [bone[0] for bone in make_fish.BONES]
    assert len(joints) == 8


def test_the_body_is_closed_and_its_rings_are_ovals(fish):
    surface = surface_of(fish, BODY)
    points = fish.array(surface["attributes"]["POSITION"]).reshape(11, 9, 3)
    assert np.array_equal(points[:, 0], points[:, 8])
    assert np.all(points[0] == points[0, 0]) and np.all(points[-1] == points[-1, 0])
    positions = fish.array(fish.json["meshes"][BODY]["primitives"][0]["attributes"]["POSITION"])
    grid = positions.reshape(surface["grid"][1], surface["grid"][0], 3).astype(float)
    assert np.abs(grid[:, 0] - grid[:, -1]).max() < 1e-4
    middle = grid[len(grid) // 2]
    wide, high = np.ptp(middle[:, 0]) / 2, np.ptp(middle[:, 1]) / 2
    assert wide > 0.03 and high > 0.05
    centre = (middle.max(axis=0) + middle.min(axis=0)) / 2
    assert np.abs(np.hypot((middle[:, 0] - centre[0]) / wide, (middle[:, 1] - centre[1]) / high) - 1).max() < 2e-3


def test_control_points_at_one_place_have_equal_weights(fish):
    for mesh in range(3):
        attributes = surface_of(fish, mesh)["attributes"]
        points, weights = fish.array(attributes["POSITION"]), dense(fish, attributes)
        _, which = np.unique(points, axis=0, return_inverse=True)
        for place in range(which.max() + 1):
            assert np.ptp(weights[which == place], axis=0).max() == 0


@pytest.mark.parametrize("mesh", [BODY, TAIL, BACK])
def test_the_polygon_mesh_lies_on_the_surface_and_follows_its_bones(fish, mesh):
    surface = surface_of(fish, mesh)
    points = fish.array(surface["attributes"]["POSITION"]).astype(float)
    rational = surface["attributes"].get("POINT_WEIGHT")
    again = nurbs.Surface("", tuple(surface["degree"]), surface["knots"],
                          points.reshape(*surface["count"][::-1], 3),
                          None if rational is None else fish.array(rational).reshape(surface["count"][::-1]),
                          tuple(surface["grid"]))
    shares = nurbs.shares(again)
    assert np.abs(shares.sum(axis=1) - 1).max() < 1e-12
    primitive = fish.json["meshes"][mesh]["primitives"][0]["attributes"]
    assert np.abs(fish.array(primitive["POSITION"]) - shares @ points).max() < 1e-4
    expected = shares @ dense(fish, surface["attributes"])
    expected[expected < np.sort(expected, axis=1)[:, [-4]]] = 0
    expected /= expected.sum(axis=1)[:, None]
    assert np.abs(dense(fish, primitive) - expected).max() < 4 / 1024
    assert np.all(fish.array(primitive["WEIGHTS_0"]).sum(axis=1) == 1)
    assert np.all(fish.array(surface["attributes"]["WEIGHTS_0"]).sum(axis=1) == 1)


def test_the_polygon_meshes_face_outwards(fish):
    for mesh in fish.json["meshes"]:
        primitive = mesh["primitives"][0]
        positions, normals = (fish.array(primitive["attributes"][name]).astype(float) for name in ("POSITION", "NORMAL"))
        corners = fish.array(primitive["indices"]).reshape(-1, 3)
        faces = np.cross(positions[corners[:, 1]] - positions[corners[:, 0]],
                         positions[corners[:, 2]] - positions[corners[:, 0]])
        assert np.all(np.einsum("ij,ij->i", faces, normals[corners[:, 0]]) > -1e-9)
    body = fish.json["meshes"][BODY]["primitives"][0]["attributes"]
    belly = fish.array(body["POSITION"])[:, 1] < -0.03
    assert np.all(fish.array(body["NORMAL"])[belly, 1] < 0)


def test_the_rest_pose_is_the_bind_pose(fish):
    skin = fish.json["skins"][0]
    inverse = fish.array(skin["inverseBindMatrices"]).reshape(-1, 4, 4).transpose(0, 2, 1)
    rest = fish.rest_matrices()
    for joint, matrix in zip(skin["joints"], inverse):
        assert np.abs(rest[joint] @ matrix - np.eye(4)).max() < 1e-6


def test_it_swims_in_a_loop_of_one_second(fish):
    swim = fish.json["animations"][0]
    assert swim["name"] == "Swim" and len(swim["channels"]) == 6
    for sampler in swim["samplers"]:
        times, keys = fish.array(sampler["input"])[:, 0], fish.array(sampler["output"])
        assert (times[0], times[-1]) == (0.0, 1.0)
        assert np.array_equal(keys[0], keys[-1])
        assert np.abs(keys - keys[0]).max() > 0.02
