# SPDX-License-Identifier: MIT
"""NURBS surfaces on the desk: the fish opened, edited by gestures, saved and judged; surfaces of OBJ files."""
import sys
from pathlib import Path

import numpy as np
import pytest
import skindesk

from tiny_character import pick, weights_of

TOP = Path(__file__).resolve().parents[2]
FISH = TOP / "samples" / "fish.glb"
sys.path[:0] = [str(TOP / "tests" / "support")]
from glb_reader import Glb  # noqa: E402
from nurbs_schema import check_file  # noqa: E402

WEIGHT = 3
CHEST, SPINE = 0, 2  # rows of the bone list
SEAM, PARTNER = 36, 44  # first and last control point of the ring at z = 0.02, at one place below the belly


@pytest.fixture
def body(desk):
    return desk.open(FISH)[0]


@pytest.fixture
def seam_tool(desk, tool, body):
    """The skinning tool with the seam's two control points picked and two bones chosen."""
    tool["ModelListUI"].drop([body])
    desk.viewer.look_at((0.3, -0.8, 0.2), (0, 0, 0), (0, 1, 0))
    pick(desk, body, [SEAM, PARTNER])
    tool["ListBonesList"].select([CHEST, SPINE])
    return tool


def edit_alone(tool, vertex, bone_row, percent):
    """Makes one of the picked control points the only active one and types a weight."""
    rows = tool["ListVertexList"].rows
    tool["ListVertexList"].select([rows.index(f"Vertex {vertex} Fish Body")])
    tool["SpreadWeights"].type(bone_row, WEIGHT, percent)


def surface_of(path, mesh=0):
    glb = Glb(Path(path).read_bytes())
    return glb, glb.json["meshes"][mesh]["extensions"]["TW_nurbs_surface"]


def dense(glb, attributes):
    joints, weights = glb.array(attributes["JOINTS_0"]).astype(int), glb.array(attributes["WEIGHTS_0"])
    table = np.zeros((len(joints), 8))
    np.add.at(table, (np.arange(len(joints))[:, None], joints), weights)
    return table


def test_the_fish_is_three_surfaces_on_eight_bones(desk, body):
    surfaces = [model for model in desk.models if model.kind == "nurbs"]
    assert [(model.name, model.control_net) for model in surfaces] == \
        [("Fish Body", (9, 11)), ("Fish Tail", (6, 3)), ("Fish Back", (5, 2))]
    assert len(body.positions) == 99
    assert [bone.name for bone in body.skin.links] == \
        ["Chest", "Head", "Spine.1", "Spine.2", "Spine.3", "Tail", "TailFin", "BackFin"]
    assert desk.warnings == []


def test_it_swims(desk, body):
    desk.animation = "Swim"
    desk.time = 0.0
    still = np.array(desk.model("Fish Tail").positions @ desk.model("Fish Tail").global_matrix)
    desk.time = 0.25
    moved = desk.model("Fish Tail").positions @ desk.model("Fish Tail").global_matrix
    assert np.abs(moved - still).max() > 0.02


def test_untouched_it_is_saved_as_the_same_bytes(desk, body, tmp_path):
    assert desk.save(tmp_path / "same.glb")["warnings"] == []
    assert (tmp_path / "same.glb").read_bytes() == FISH.read_bytes()


def test_control_points_at_one_place_are_picked_together_and_edited_together(seam_tool, body):
    assert seam_tool["ListVertexList"].rows == [f"Vertex {vertex} Fish Body" for vertex in (SEAM, PARTNER)]
    seam_tool["ListWeightingMode"].choose(1)
    before = weights_of(body)
    seam_tool["SpreadWeights"].type(0, WEIGHT, 25.0)
    changed = np.flatnonzero(np.abs(weights_of(body) - before).max(axis=1) > 1e-6)
    assert changed.tolist() == [SEAM, PARTNER]
    assert weights_of(body)[changed, CHEST] == pytest.approx([0.25, 0.25], abs=1e-6)


def test_an_edit_is_saved_on_the_control_point_and_seen_in_the_polygon_mesh(desk, seam_tool, body, tmp_path):
    for vertex in (SEAM, PARTNER):
        edit_alone(seam_tool, vertex, 0, 40.0)
    wanted = weights_of(body)
    assert wanted[[SEAM, PARTNER], CHEST] == pytest.approx([0.4, 0.4], abs=1e-6)
    report = desk.save(tmp_path / "edited.glb")
    assert (report["vertices_changed"], report["warnings"]) == (2, [])
    assert check_file(tmp_path / "edited.glb") == 3

    glb, surface = surface_of(tmp_path / "edited.glb")
    assert dense(glb, surface["attributes"]) == pytest.approx(wanted, abs=1e-6)
    old_glb, _ = surface_of(FISH)
    after, before = (dense(file, file.json["meshes"][0]["primitives"][0]["attributes"]) for file in (glb, old_glb))
    changed = np.flatnonzero(np.abs(after - before).max(axis=1) > 1e-6)
    assert 0 < len(changed) < len(after) // 2
    places = glb.array(glb.json["meshes"][0]["primitives"][0]["attributes"]["POSITION"])
    most = np.argmax(np.abs(after - before).max(axis=1))
    assert places[most, 1] < 0 and abs(places[most, 2] - 0.02) < 0.05  # below the belly, near the ring
    desk.clear()
    assert weights_of(desk.open(tmp_path / "edited.glb")[0]) == pytest.approx(wanted, abs=1e-6)


def test_unequal_weights_at_the_seam_are_reported_and_tied(desk, seam_tool, body, tmp_path):
    edit_alone(seam_tool, SEAM, 0, 40.0)
    assert weights_of(body)[SEAM, CHEST] == pytest.approx(0.4, abs=1e-6)
    assert weights_of(body)[PARTNER, CHEST] != pytest.approx(0.4, abs=1e-3)

    loose = desk.save(tmp_path / "loose.glb")
    assert loose["warnings"] == ["1 control point lies at the place of another with other weights, so the seam can open"]
    glb, surface = surface_of(tmp_path / "loose.glb")
    assert dense(glb, surface["attributes"])[PARTNER, CHEST] != pytest.approx(0.4, abs=1e-3)

    tied = desk.save(tmp_path / "tied.glb", tie_seams=True)
    assert tied["vertices_changed"] == 2 and "the weights of the first were taken" in tied["warnings"][0]
    glb, surface = surface_of(tmp_path / "tied.glb")
    assert dense(glb, surface["attributes"])[[SEAM, PARTNER], CHEST] == pytest.approx([0.4, 0.4], abs=1e-6)
    assert weights_of(body)[PARTNER, CHEST] != pytest.approx(0.4, abs=1e-3)  # on the desk nothing changed
    check_file(tmp_path / "tied.glb")
    desk.clear()
    desk.open(tmp_path / "tied.glb")
    assert desk.save(tmp_path / "again.glb")["warnings"] == []


LEAF = """# a leaf of two surfaces
o Leaf
v 0 0 0
v 1 0 1 0.5
v 2 0 0
v 0 1 0
v 1 1 1 0.5
v 2 1 0
cstype rat bspline
deg 2 1
surf 0 1 0 1 1 2 3 \\
  4 5 6
parm u 0 0 0 1 1 1
parm v 0 0 1 1
end
o Stalk
cstype bezier
surf 0 1 0 1 -6 -5 -4 -3 -2 -1
parm u 0 1
parm v 0 1
end
"""


@pytest.mark.parametrize("name", ["leaf.glb", "leaf.gltf"])
def test_surfaces_of_an_obj_file_are_saved_as_gltf(desk, tmp_path, name):
    (tmp_path / "leaf.obj").write_text(LEAF)
    leaf, stalk = desk.open(tmp_path / "leaf.obj")
    assert (leaf.name, leaf.kind, leaf.control_net) == ("Leaf", "nurbs", (3, 2))
    assert (stalk.name, stalk.control_net) == ("Stalk", (3, 2))
    assert leaf.skin is None
    points = np.array(leaf.positions)
    desk.save(tmp_path / name)
    assert check_file(tmp_path / name) == 2
    desk.clear()
    again = desk.open(tmp_path / name)[0]
    assert np.array_equal(again.positions, points)
    assert desk.save(tmp_path / name)["bytes"] == (tmp_path / name).stat().st_size


def test_an_obj_file_itself_is_not_overwritten(desk, tmp_path):
    path = tmp_path / "leaf.obj"
    path.write_text(LEAF)
    desk.open(path)
    with pytest.raises(skindesk.FileError):
        desk.save(path)
    assert path.read_text() == LEAF


def test_a_broken_obj_file_is_refused_with_its_line(desk, tmp_path):
    path = tmp_path / "broken.obj"
    path.write_text(LEAF.replace("deg 2 1", "deg 7 1"))
    with pytest.raises(skindesk.FileError) as raised:
        desk.open(path)
    assert (raised.value.path, raised.value.where) == (str(path), "line 10")
    assert str(raised.value) == f"{path}: line 10: degree 7 is not read, 1 to 5 are"
    assert desk.models == []
