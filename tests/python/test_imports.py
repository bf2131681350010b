# SPDX-License-Identifier: MIT
"""Characters from COLLADA files and compressed ones, through the whole program: opened, edited, saved, opened again."""
from pathlib import Path

import numpy as np
import pytest
import skindesk

from tiny_character import weights_of

# A strip of two quads; Lower pulls the lower row, Upper the upper one, both the middle.
COLLADA = """<?xml version="1.0" encoding="utf-8"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<asset><unit name="meter" meter="1"/><up_axis>Y_UP</up_axis></asset>
<library_geometries><geometry id="strip" name="StripMesh"><mesh>
<source id="places"><float_array id="places-array" count="18">0 0 0 1 0 0 0 1 0 1 1 0 0 2 0 1 2 0</float_array>
<technique_common><accessor source="#places-array" count="6" stride="3"><param name="X" type="float"/>
<param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="corners"><input semantic="POSITION" source="#places"/></vertices>
<polylist count="2"><input semantic="VERTEX" source="#corners" offset="0"/><vcount>4 4</vcount>
<p>0 1 3 2 2 3 5 4</p></polylist></mesh></geometry></library_geometries>
<library_controllers><controller id="skin"><skin source="#strip">
<bind_shape_matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</bind_shape_matrix>
<source id="joints"><Name_array id="joints-array" count="2">Lower Upper</Name_array><technique_common>
<accessor source="#joints-array" count="2" stride="1"><param name="JOINT" type="name"/></accessor></technique_common>
</source><source id="binds"><float_array id="binds-array" count="32">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1
1 0 0 0 0 1 0 -1 0 0 1 0 0 0 0 1</float_array><technique_common><accessor source="#binds-array" count="2" stride="16">
<param name="TRANSFORM" type="float4x4"/></accessor></technique_common></source>
<source id="weights"><float_array id="weights-array" count="2">1 0.5</float_array><technique_common>
<accessor source="#weights-array" count="2" stride="1"><param name="WEIGHT" type="float"/></accessor></technique_common>
</source><joints><input semantic="JOINT" source="#joints"/><input semantic="INV_BIND_MATRIX" source="#binds"/></joints>
<vertex_weights count="6"><input semantic="JOINT" source="#joints" offset="0"/>
<input semantic="WEIGHT" source="#weights" offset="1"/><vcount>1 1 2 2 1 1</vcount>
<v>0 0 0 0 0 1 1 1 0 1 1 1 1 0 1 0</v></vertex_weights></skin></controller></library_controllers>
<library_visual_scenes><visual_scene id="Scene">
<node id="Lower" sid="Lower" name="Lower" type="JOINT"><node id="Upper" sid="Upper" name="Upper" type="JOINT">
<translate>0 1 0</translate></node></node>
<node id="Strip" name="Strip"><instance_controller url="#skin"><skeleton>#Lower</skeleton></instance_controller></node>
</visual_scene></library_visual_scenes><scene><instance_visual_scene url="#Scene"/></scene></COLLADA>
"""


@pytest.fixture
def imported(desk, tmp_path):
    """The strip's model, from a COLLADA file."""
    (tmp_path / "strip.dae").write_text(COLLADA)
    return desk.open(tmp_path / "strip.dae")[0]


def by_height(model):
    """The weights of Lower and Upper, by the vertices' heights."""
    order = [link.name for link in model.skin.links]
    table = weights_of(model)[:, [order.index("Lower"), order.index("Upper")]]
    return {float(y): tuple(np.round(row, 6)) for y, row in zip(model.positions[:, 1], table)}


def test_a_collada_character_has_its_bones_and_weights(desk, imported):
    assert imported.name == "Strip"
    assert [bone.path for bone in imported.skin.links] == ["Lower", "Lower/Upper"]
    assert by_height(imported) == {0: (1, 0), 1: (0.5, 0.5), 2: (0, 1)}
    assert len(imported.positions) == 6


def test_it_is_edited_with_the_tool_and_saved_as_gltf(desk, imported, tmp_path):
    tool = desk.open_tool("Skins")
    tool["ModelListUI"].drop([imported])
    tool.close()
    (tmp_path / "table.csv").write_text("model,vertex,bone,weight\n" + "".join(
        f"Strip,{vertex},Lower,1\n" for vertex in np.flatnonzero(imported.positions[:, 1] == 1)))
    assert desk.import_weights(tmp_path / "table.csv")["vertices_changed"] == 2
    desk.save(tmp_path / "strip.glb")
    desk.clear()
    assert by_height(desk.open(tmp_path / "strip.glb")[0]) == {0: (1, 0), 1: (1, 0), 2: (0, 1)}
    assert (tmp_path / "strip.dae").read_text() == COLLADA


@pytest.mark.parametrize("name", ["strip.dae", "strip.fbx", "strip"])
def test_it_is_never_saved_as_what_it_came_from(desk, imported, tmp_path, name):
    with pytest.raises(skindesk.FileError):
        desk.save(tmp_path / name)
    assert (tmp_path / "strip.dae").read_text() == COLLADA
    assert not (tmp_path / "strip.fbx").exists() and not (tmp_path / "strip").exists()


@pytest.mark.parametrize("content", ["", "no XML", COLLADA[:2000], "<COLLADA version='1.4.1'/>"])
@pytest.mark.parametrize("kind", [".dae", ".fbx"])
def test_a_broken_file_raises_one_sentence_and_leaves_the_scene(desk, tmp_path, kind, content):
    path = tmp_path / ("broken" + kind)
    path.write_text(content)
    with pytest.raises(skindesk.FileError) as raised:
        desk.open(path)
    assert raised.value.path == str(path)
    assert "\n" not in str(raised.value)
    assert desk.models == []


FOX = Path(__file__).parents[1] / "data" / "skinned" / "fox_compressed.glb"


def test_a_compressed_character_saved_untouched_is_the_same_bytes(desk, tmp_path):
    desk.open(FOX)
    desk.save(tmp_path / "fox.glb")
    assert (tmp_path / "fox.glb").read_bytes() == FOX.read_bytes()


def test_edited_weights_of_a_compressed_character_come_back(desk, tmp_path):
    model = desk.open(FOX)[0]
    before = weights_of(model)
    bone = model.skin.links[3].name
    (tmp_path / "table.csv").write_text(f"model,vertex,bone,weight\n{model.path},7,{bone},1\n")
    desk.import_weights(tmp_path / "table.csv")
    report = desk.save(tmp_path / "fox.glb")
    assert report["vertices_changed"] == 1
    assert report["warnings"] == ["1 compressed primitive has changed weights; they are saved uncompressed, all else stays "
                                  "compressed"]
    desk.clear()
    after = weights_of(desk.open(tmp_path / "fox.glb")[0])
    assert after[7][3] == 1
    np.testing.assert_array_equal(np.delete(after, 7, 0), np.delete(before, 7, 0))
