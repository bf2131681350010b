# SPDX-License-Identifier: MIT
"""Models and skins: names, geometry, arrays that outlive everything, deletion."""
import gc

import numpy as np
import pytest
import skindesk

from tiny_character import weights_of, write_character


def test_open_answers_the_geometry_models_by_ascending_node(open_character, desk):
    models = open_character(names=("Body", "Hat", "Shoes"))
    assert [model.name for model in models] == ["Body", "Hat", "Shoes"]
    assert {model.name: model.kind for model in desk.models} == {
        "Root": "bone", "Tip": "bone", "Body": "polymesh", "Hat": "polymesh", "Shoes": "polymesh", "Group": "node"}


def test_one_model_is_one_object(desk, character):
    assert desk.model("Body") is character
    assert character in desk.models
    assert character.skin.links[0] is desk.model("Root")
    assert len({character, desk.models[-1], desk.model("Body")}) <= 2


def test_names_paths_parents_and_children(desk, character):
    assert character.path == "Group/Body"
    assert character.parent is desk.model("Group")
    assert desk.model("Group").children == [character]
    assert desk.model("Root").parent is None
    assert desk.model("Tip").path == "Root/Tip"
    assert repr(character) == '<skindesk.Model polymesh "Group/Body">'


def test_an_unknown_name_raises(desk, character):
    with pytest.raises(KeyError, match="Elbow"):
        desk.model("Elbow")


def test_a_name_that_is_not_unique_raises_and_lists_the_paths(desk, open_character):
    (first,) = open_character("a.gltf")
    (second,) = open_character("b.gltf")
    with pytest.raises(KeyError) as raised:
        desk.model("Body")
    assert "Group/Body" in str(raised.value) and "Group[2]/Body" in str(raised.value)
    assert desk.model("Group/Body") is first
    assert desk.model("Group[2]/Body") is second


def test_positions_are_four_floats_in_the_models_own_space(character):
    positions = character.positions
    assert positions.shape == (10, 4) and positions.dtype == np.float32
    assert (positions[:, 3] == 1).all()
    assert (positions[:, 1] == np.repeat([0, 0.5, 1, 1.5, 2], 2)).all()


def test_normals_are_unit_vectors(character):
    normals = character.normals
    assert normals.shape == (10, 4) and normals.dtype == np.float32
    assert np.allclose(np.linalg.norm(normals[:, :3], axis=1), 1)
    assert np.allclose(np.abs(normals[:, 2]), 1)


def test_polygons_are_lists_of_vertices(character):
    polygons = character.polygons
    assert len(polygons) == 8
    assert polygons[0] == [0, 1, 3]
    assert polygons[7] == [6, 9, 8]


def test_nodes_without_geometry_have_empty_arrays(desk, character):
    group = desk.model("Group")
    assert group.positions.shape == (0, 4)
    assert group.normals.shape == (0, 4)
    assert group.polygons == []
    assert group.skin is None
    assert group.control_net is None
    assert group.file_vertices == []


def test_the_matrix_is_for_row_vectors(desk, open_character):
    open_character(tip_scale=(2, 3, 4))
    matrix = desk.model("Tip").global_matrix
    assert matrix.shape == (4, 4) and matrix.dtype == np.float64
    assert (matrix == [[2, 0, 0, 0], [0, 3, 0, 0], [0, 0, 4, 0], [0, 1, 0, 1]]).all()
    assert desk.model("Tip").scaling == (2, 3, 4)


def test_arrays_outlive_the_model_and_the_desk(tmp_path):
    with skindesk.Desk() as desk:
        model = desk.open(write_character(tmp_path / "strip.gltf"))[0]
        positions, normals, matrix = model.positions, model.normals, model.global_matrix
        vertices, weights = model.skin.entries(1)
        csr = model.skin.csr()
        files = model.file_vertices
        kept = positions.copy()
        model.delete()
    del model, desk
    gc.collect()
    assert (positions == kept).all()
    assert normals.shape == (10, 4) and matrix[3, 3] == 1
    assert len(vertices) == len(weights) == 8
    assert csr[0][-1] == len(csr[1]) == len(csr[2])
    assert list(files[0][1]) == list(range(10))


def test_changing_an_array_changes_no_model(character):
    character.positions[:] = 7
    character.skin.csr()[2][:] = 7
    assert character.positions[0, 1] == 0
    assert weights_of(character).max() == 1


def test_file_vertices_name_the_vertex_of_the_model(character):
    ((primitive, vertices),) = character.file_vertices
    assert primitive == 0
    assert vertices.dtype == np.int32
    assert list(vertices) == list(range(10))


def test_hidden_and_locked_models_are_refused_by_the_tool(desk, character, tool):
    listed = tool["ModelListUI"]
    for flag in ("hidden", "locked"):
        assert getattr(character, flag) is False
        setattr(character, flag, True)
        assert getattr(character, flag) is True
        listed.drop([character])
        assert listed.rows == ["Drop models here"]
        setattr(character, flag, False)
    listed.drop([character])
    assert listed.rows == ["Body"]


def test_a_deleted_model_raises(desk, open_character):
    first, second = open_character(names=("Body", "Hat"))
    skin = first.skin
    first.delete()
    for use in (lambda: first.name, lambda: first.positions, lambda: first.select(), lambda: first.delete(),
                lambda: first.skin, lambda: skin.csr(), lambda: desk.viewer.frame([first])):
        with pytest.raises(skindesk.Error, match='"Body" is no longer in the scene'):
            use()
    assert second.name == "Hat"
    assert "Body" not in [model.name for model in desk.models]


def test_clearing_the_scene_takes_all_models(desk, character):
    desk.clear()
    assert desk.models == []
    with pytest.raises(skindesk.Error, match="no longer in the scene"):
        character.positions


def test_a_new_model_at_the_place_of_a_dead_one_is_another_object(desk, tmp_path):
    seen = []
    path = write_character(tmp_path / "strip.gltf")
    for _ in range(5):
        seen.append(desk.open(path)[0])
        assert seen[-1].name == "Body"
        desk.clear()
    assert len(set(map(id, seen))) == 5


def test_selecting_a_bone_selects_its_row(desk, character, tool):
    tool["ModelListUI"].drop([character])
    desk.model("Tip").select()
    assert tool["ListBonesList"].selection == [1]


def test_links_are_in_joint_order(character):
    assert [bone.name for bone in character.skin.links] == ["Root", "Tip"]
    assert character.skin.mode == "normalise"


@pytest.mark.parametrize("mode", ["additive", "total100"])
def test_the_mode_is_the_files(open_character, mode):
    (model,) = open_character(mode=mode)
    assert model.skin.mode == mode


def test_entries_and_csr_tell_the_same(character):
    skin = character.skin
    table = weights_of(character)
    assert np.allclose(table.sum(axis=1), 1)
    for link in range(2):
        vertices, weights = skin.entries(link)
        assert vertices.dtype == np.int32 and weights.dtype == np.float64
        assert np.allclose(table[vertices, link], weights)
        assert np.count_nonzero(table[:, link]) == len(vertices)


def test_the_bind_transform_is_the_inverse_bind_matrix_in_parts(character):
    assert character.skin.bind_transform(0) == ((0, 0, 0), (0, 0, 0), (1, 1, 1))
    assert character.skin.bind_transform(1) == ((0, -1, 0), (0, 0, 0), (1, 1, 1))
    assert character.skin.option(1) == 0
    assert character.skin.display_value == -1


@pytest.mark.parametrize("link", [-1, 2, 10**30])
def test_a_link_that_is_not_there_raises(character, link):
    for ask in (character.skin.entries, character.skin.bind_transform, character.skin.option):
        with pytest.raises(IndexError, match="there are 2"):
            ask(link)


def test_deleting_a_bone_takes_its_link(desk, character):
    desk.model("Tip").delete()
    assert [bone.name for bone in character.skin.links] == ["Root"]
