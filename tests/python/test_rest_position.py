# SPDX-License-Identifier: MIT
"""Rest position on the given characters, through the real library: in any animated pose the character stands in its
bind pose, carried along by its top bone; and whatever ends the mode gives the skeleton back to the animation."""
import numpy as np
import pytest

from plain_evaluator import Character
from test_deformation import CHARACTERS, GIVEN, in_scene, name_of, size_of, times_of

REST_ACCURACY = 1e-4  # of the character's size
SKINNED = [path for path in CHARACTERS if Character(path).json.get("skins")]


def depth_of(bone):
    return 0 if bone.parent is None else 1 + depth_of(bone.parent)


def carried_by_the_anchor(character, node, model):
    """Every vertex of the file at its undeformed place, moved by the bind pose of the top bone and by where that bone
    is now."""
    entry = character.json["nodes"][node]
    skin = character.json["skins"][entry["skin"]]
    bones = model.skin.links
    root = min(range(len(bones)), key=lambda link: depth_of(bones[link]))
    inverse = np.eye(4)
    if "inverseBindMatrices" in skin:  # the file's columns are the desk's rows
        inverse = character.array(skin["inverseBindMatrices"])[root].astype(float).reshape(4, 4)
    anchor = inverse @ bones[root].global_matrix
    places = []
    for primitive in character.json["meshes"][entry["mesh"]]["primitives"]:
        points = character.array(primitive["attributes"]["POSITION"]).astype(float)
        places.append((np.column_stack([points, np.ones(len(points))]) @ anchor)[:, :3])
    return places


def largest_departure(character, node, model):
    expected, have = carried_by_the_anchor(character, node, model), in_scene(model)
    size = size_of(np.concatenate(expected)) or 1.0
    return max(np.abs(have[vertices] - expected[primitive]).max() / size
               for primitive, vertices in model.file_vertices)


def skinned_models(character, models):
    pairs = zip(character.mesh_nodes(), models, strict=True)
    return [(node, model) for node, model in pairs if "skin" in character.json["nodes"][node]]


@pytest.mark.parametrize("path", SKINNED, ids=name_of)
def test_any_pose_becomes_the_bind_pose_moved_by_the_anchor(desk, tool, path):
    character, models = Character(path), desk.open(path)
    rest, listed = tool["ToRestPositionButton"], tool["ModelListUI"]
    for node, model in skinned_models(character, models):
        listed.drop([model])
        for row, name in enumerate(listed.rows):
            listed.set_check(row, name == model.name)
        animations = desk.animations[:1] + desk.animations[-1:]
        for number, animation in enumerate(animations or [None]):
            desk.animation = animation
            rest.click()
            assert rest.checked
            index = 0 if number == 0 else len(desk.animations) - 1
            for seconds in times_of(character.duration(index)) if animation else [0]:
                desk.time = seconds
                departure = largest_departure(character, node, model)
                assert departure < REST_ACCURACY, f"{model.name}, {animation} at {seconds} s: {departure}"
            rest.click()
            assert not rest.checked


@pytest.fixture
def fox(desk, tool):
    """The fox in rest position in the middle of its run, with its file."""
    path = GIVEN / "Fox.glb"
    character, (model,) = Character(path), desk.open(path)
    tool["ModelListUI"].drop([model])
    desk.animation = "Run"
    desk.time = 0.3
    tool["ToRestPositionButton"].click()
    assert tool["ToRestPositionButton"].checked
    assert off_the_animation(desk, character) > 1
    return character


def off_the_animation(desk, character):
    """How far a bone is from where the animation has it, in the file's units."""
    named = {node.get("name"): number for number, node in enumerate(character.json["nodes"])}
    matrices = character.globals(2, desk.time)
    return max(np.abs(model.global_matrix - matrices[named[model.name]].T).max()
               for model in desk.models if model.kind == "bone")


def test_leaving_the_mode_gives_the_skeleton_back(desk, tool, fox):
    tool["ToRestPositionButton"].click()
    assert off_the_animation(desk, fox) < 1e-4


def test_leaving_it_later_gives_the_pose_of_that_time(desk, tool, fox):
    desk.time = 0.6
    tool["ToRestPositionButton"].click()
    assert off_the_animation(desk, fox) < 1e-4


def test_deactivating_the_tool_gives_the_skeleton_back(desk, tool, fox):
    tool.deactivate()
    assert off_the_animation(desk, fox) < 1e-4
    tool.activate()
    assert not tool["ToRestPositionButton"].checked
    assert off_the_animation(desk, fox) < 1e-4


def test_closing_the_tool_gives_the_skeleton_back(desk, tool, fox):
    tool.close()
    assert off_the_animation(desk, fox) < 1e-4


def test_deleting_a_bone_gives_the_others_back(desk, tool, fox):
    desk.model("b_Tail03_014").delete()
    assert not tool["ToRestPositionButton"].checked
    assert off_the_animation(desk, fox) < 1e-4


def test_deleting_the_model_gives_the_skeleton_back(desk, tool, fox):
    next(model for model in desk.models if model.kind == "polymesh").delete()
    assert not tool["ToRestPositionButton"].checked
    assert off_the_animation(desk, fox) < 1e-4


def test_models_checked_at_the_entry_are_held_until_it_is_left(desk, tool, fox):
    tool["ModelListUI"].set_check(0, False)
    assert tool["ToRestPositionButton"].checked
    assert off_the_animation(desk, fox) > 1
    tool["ToRestPositionButton"].click()
    assert off_the_animation(desk, fox) < 1e-4


def test_clearing_the_scene_ends_the_mode(desk, tool, fox):
    desk.clear()
    assert not tool["ToRestPositionButton"].checked
    desk.open(GIVEN / "Fox.glb")
    desk.animation = "Run"
    desk.time = 0.3
    assert off_the_animation(desk, fox) < 1e-4


def test_the_button_springs_back_when_no_checked_model_has_a_bone(desk, tool):
    rest, listed = tool["ToRestPositionButton"], tool["ModelListUI"]
    rest.click()
    assert not rest.checked, "the list is empty"
    (model,) = desk.open(GIVEN / "Fox.glb")
    listed.drop([model])
    listed.set_check(0, False)
    rest.click()
    assert not rest.checked, "no model is checked"
    listed.set_check(0, True)
    rest.click()
    assert rest.checked


def test_a_weight_edit_in_rest_position_changes_no_place(desk, tool, fox):
    """At the bind pose weights make no difference: that is what the mode is for."""
    model = next(model for model in desk.models if model.kind == "polymesh")
    before = in_scene(model)
    desk.viewer.frame([model])
    desk.viewer.press(300, 200)
    desk.viewer.move(400, 300)
    desk.viewer.release(500, 400)
    assert len(tool["ListVertexList"].rows) > 1
    tool["ListBonesList"].select([3, 5])
    tool["SpreadWeights"].type(0, 3, 60.0)
    assert desk.undo_names[0] == "Apply Weight Change"
    assert np.abs(in_scene(model) - before).max() < REST_ACCURACY * size_of(before)
    tool["ToRestPositionButton"].click()
    assert off_the_animation(desk, fox) < 1e-4
