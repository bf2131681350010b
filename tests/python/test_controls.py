# SPDX-License-Identifier: MIT
"""Tools and controls by name, and wrong use of them: it raises and changes nothing."""
import numpy as np
import pytest
import skindesk

from tiny_character import weights_of

NAN, INFINITY = float("nan"), float("inf")

KINDS = {
    "ModelListLabel": "label", "ModelListUI": "list", "LabelBonesList": "label", "LabelVertexList": "label",
    "LabelWeights": "label", "SphereSizeLabel": "label", "ListBonesList": "list", "ListVertexList": "list",
    "ListWeightingMode": "combo", "ColorModeList": "combo", "AutomaticBoneSelectionButton": "check",
    "CullFaceButton": "check", "BoneColorEdit": "colour", "ToRestPositionButton": "check", "SelectUButton": "check",
    "SelectVButton": "check", "SphereSizeSlider": "slider", "EnableModelSelectionCheckBox": "check",
    "SpreadWeightsBorder": "panel", "SpreadWeights": "spread"}


def test_a_tool_opens_active_with_its_name_label_and_size(desk, tool):
    assert (tool.name, tool.label) == ("Skins", "Skinning tool")
    assert tool.size == (1146, 311)


def test_every_control_is_found_by_its_name(tool):
    controls = tool.controls
    assert KINDS.items() <= {name: control.kind for name, control in controls.items()}.items()
    for name, control in controls.items():
        assert control.name == name
        assert tool[name] is control
        assert isinstance(control, skindesk.Control)


def test_the_names_are_the_same_on_a_narrow_screen(desk, tool):
    wide = {name: control.rect for name, control in tool.controls.items()}
    tool.close()
    desk.screen_width = 1279
    narrow_tool = desk.open_tool("Skins")
    narrow = {name: control.rect for name, control in narrow_tool.controls.items()}
    assert narrow.keys() == wide.keys()
    assert narrow["ListVertexList"] != wide["ListVertexList"]
    assert narrow["ListVertexList"][0] == narrow["ListBonesList"][0] == 0
    assert narrow_tool["SpreadWeights"].widths == [132, 24, 102, 31, 43]


def test_rects_are_in_the_form_that_holds_the_control(tool):
    assert tool["ModelListLabel"].rect == (5, 7, 92, 14)
    assert tool["ModelListUI"].rect == (3, 28, 195, 272)
    assert tool["ListBonesList"].rect == (0, 27, 164, 272)
    assert tool["ListVertexList"].rect == (168, 27, 164, 272)
    x, y, width, height = tool["SpreadWeightsBorder"].rect
    assert tool["SpreadWeights"].rect == (x + 1, y + 1, width - 2, height - 2)
    assert (x, y) == (336, 27)


def test_captions_items_and_first_values(tool):
    assert tool["LabelBonesList"].caption == "Bones List  "
    assert tool["ToRestPositionButton"].caption == "To Rest Position"
    assert tool["ListWeightingMode"].items == ["Affect first selected vertex", "Affect all selected vertices"]
    assert tool["ColorModeList"].items == ["Smooth Colors", "Most Influential Bone", "Least Influential Bone"]
    assert tool["ListWeightingMode"].index == tool["ColorModeList"].index == 0
    slider = tool["SphereSizeSlider"]
    assert (slider.minimum, slider.maximum, slider.value) == (0, 10, 1)
    spread = tool["SpreadWeights"]
    assert spread.columns == ["Col", "Weight Slider", "Lock", "Weight"]
    assert spread.widths == [162, 30, 120, 50, 58]
    assert spread.row_labels == []


def test_an_empty_tool_shows_where_to_drop(tool):
    models = tool["ModelListUI"]
    assert (models.rows, models.checks) == (["Drop models here"], [True])
    box = tool["EnableModelSelectionCheckBox"]
    assert box.checked and not box.enabled
    assert tool["ListBonesList"].rows == []
    assert all(control.visible for control in tool.controls.values())


def test_with_no_vertex_picked_the_vertex_list_says_so(tool, character):
    tool["ModelListUI"].drop([character])
    vertices = tool["ListVertexList"]
    assert vertices.rows == ["Empty"]
    vertices.select([0])  # is no vertex
    assert vertices.selection == []


def test_a_disabled_control_does_nothing(tool):
    box = tool["EnableModelSelectionCheckBox"]
    box.click()
    assert box.checked


def test_an_unknown_control_raises_and_lists_the_names(tool):
    with pytest.raises(KeyError, match="Knob.*ListBonesList"):
        tool["Knob"]
    with pytest.raises(KeyError):
        tool[3]


def test_a_control_has_what_its_kind_has(tool):
    with pytest.raises(AttributeError):
        tool["ListBonesList"].checked
    with pytest.raises(AttributeError):
        tool["SphereSizeSlider"].rows


def test_a_closed_tool_raises(desk, tool):
    bones = tool["ListBonesList"]
    tool.close()
    tool.close()
    for use in (lambda: tool.name, lambda: tool.controls, lambda: tool["ListBonesList"], lambda: tool.activate(),
                lambda: bones.rows, lambda: bones.select([]), lambda: tool.size):
        with pytest.raises(skindesk.Error, match='"Skins" has been closed'):
            use()


def test_two_tools_are_two_tools(desk, tool, character):
    other = desk.open_tool("Skins")
    assert other is not tool
    tool["ModelListUI"].drop([character])
    assert other["ModelListUI"].rows == ["Drop models here"]
    other["ModelListUI"].drop([character])  # the first tool has begun to edit it
    assert other["ModelListUI"].rows == ["Drop models here"]
    tool.close()
    other["ModelListUI"].drop([character])
    assert other["ModelListUI"].rows == ["Body"]


def test_selecting_rows_is_one_event_and_the_last_row_is_touched(tool, character):
    tool["ModelListUI"].drop([character])
    bones, colour = tool["ListBonesList"], tool["BoneColorEdit"]
    bones.select([1])
    tip = colour.rgb
    bones.select([1, 0])
    assert bones.selection == [0, 1] and bones.current == 0
    assert colour.rgb != tip  # Root was touched last
    bones.select(np.array([0, 1]))
    assert bones.selection == [0, 1]
    bones.select([])
    assert bones.selection == [] and bones.current == -1


@pytest.mark.parametrize("rows", [[2], [-1], [0, 5], [10**30]])
def test_a_row_that_is_not_there_raises(tool, character, rows):
    tool["ModelListUI"].drop([character])
    bones = tool["ListBonesList"]
    bones.select([1])
    with pytest.raises(IndexError, match='row of "ListBonesList".*there are 2'):
        bones.select(rows)
    assert bones.selection == [1]


@pytest.mark.parametrize("rows", ["01", [0.5], [None], 1])
def test_rows_are_whole_numbers(tool, character, rows):
    tool["ModelListUI"].drop([character])
    with pytest.raises(TypeError):
        tool["ListBonesList"].select(rows)
    assert tool["ListBonesList"].selection == []


def test_check_marks_are_set_with_undo(desk, tool, open_character):
    models = tool["ModelListUI"]
    models.drop(open_character(names=("Body", "Hat")))
    assert models.checks == [True, False]
    models.set_check(1, True)
    assert models.checks == [True, True]
    assert desk.undo_names[0] == "Tool Weighting Value Changed"
    desk.undo()
    assert models.checks == [True, False]
    for row in (-1, 2):
        with pytest.raises(IndexError):
            models.set_check(row, True)


def test_a_list_without_check_marks_says_so(tool, character):
    tool["ModelListUI"].drop([character])
    with pytest.raises(skindesk.Error, match='"ListBonesList" has no check marks'):
        tool["ListBonesList"].set_check(0, True)


def test_models_are_dropped_alone_in_lists_and_by_the_node_above(desk, tool, open_character):
    body, hat = open_character(names=("Body", "Hat"))
    models = tool["ModelListUI"]
    models.drop(hat)
    assert models.rows == ["Hat"]
    models.drop([desk.model("Group")])
    assert models.rows == ["Hat", "Body"]


def test_what_is_no_model_cannot_be_dropped(desk, tool, character):
    models = tool["ModelListUI"]
    for wrong in (["Body"], [None], [character, 3]):
        with pytest.raises(TypeError, match="skindesk.Model"):
            models.drop(wrong)
    character.delete()
    with pytest.raises(skindesk.Error, match="no longer"):
        models.drop([character])
    assert models.rows == ["Drop models here"]


def test_where_nothing_can_be_dropped_that_is_said(tool, character):
    with pytest.raises(skindesk.Error, match='nothing can be dropped on "ListVertexList"'):
        tool["ListVertexList"].drop([character])


def test_dragging_out_needs_key_4(desk, tool, open_character):
    body, hat = open_character(names=("Body", "Hat"))
    models = tool["ModelListUI"]
    models.drop([body, hat])
    assert models.drag_out() == []
    assert models.rows == ["Body", "Hat"]
    desk.keys = {4}
    assert models.drag_out() == [body]  # the checked one
    assert models.rows == ["Hat"]
    desk.keys = set()
    models.drop([body])
    assert models.rows == ["Hat", "Body"]


def test_a_combo_box_takes_an_item_that_is_there(tool):
    colours = tool["ColorModeList"]
    colours.choose(2)
    assert colours.index == 2
    for wrong in (3, -1):
        with pytest.raises(IndexError, match='item of "ColorModeList"'):
            colours.choose(wrong)
    with pytest.raises(TypeError):
        colours.choose("Smooth Colors")
    assert colours.index == 2


def test_a_check_box_is_clicked(tool):
    button = tool["CullFaceButton"]
    button.click()
    assert button.checked
    button.click()
    assert not button.checked


def test_to_rest_position_springs_back_without_a_bone(tool):
    button = tool["ToRestPositionButton"]
    button.click()
    assert not button.checked


def test_a_slider_is_set_and_dragged_within_its_range(tool):
    slider = tool["SphereSizeSlider"]
    slider.set(2.5)
    assert slider.value == 2.5
    slider.set(99)
    assert slider.value == 10
    slider.drag([1, 3, -7])
    assert slider.value == 0
    slider.drag([4])
    assert slider.value == 4


@pytest.mark.parametrize("wrong", [NAN, INFINITY, -INFINITY, "3", None, b"3", 1j, True, 10**400, np.float32("nan")])
def test_what_is_no_number_leaves_a_slider_alone(tool, wrong):
    slider = tool["SphereSizeSlider"]
    with pytest.raises(ValueError, match="finite number"):
        slider.set(wrong)
    with pytest.raises(ValueError, match="finite number"):
        slider.drag([2, 3, wrong])
    assert slider.value == 1


def test_an_empty_drag_is_a_value_error(tool, picked):
    with pytest.raises(ValueError, match="at least one"):
        tool["SphereSizeSlider"].drag([])
    tool["ListBonesList"].select([0, 1])
    with pytest.raises(ValueError, match="at least one"):
        tool["SpreadWeights"].drag(0, 1, [])


def test_a_bones_colour_is_edited_and_kept(tool, character):
    colour, bones, spread = tool["BoneColorEdit"], tool["ListBonesList"], tool["SpreadWeights"]
    colour.set(1, 0, 0)  # no current bone: changes nothing of any bone
    tool["ModelListUI"].drop([character])
    bones.select([1])
    colour.set(1.0, 0.5, -3)
    assert colour.rgb == (1, 0.5, 0)
    assert spread.cell(0, 0) == pytest.approx((0.9, 0.45, 0))
    bones.select([])
    assert colour.rgb == (1, 0.5, 0)
    bones.select([0])
    assert colour.rgb != (1, 0.5, 0)
    bones.select([1])
    assert colour.rgb == pytest.approx((1, 0.5, 0))


@pytest.mark.parametrize("wrong", [(NAN, 0, 0), (0, "red", 0), (0, 0, None)])
def test_what_is_no_number_leaves_a_colour_alone(tool, character, wrong):
    tool["ModelListUI"].drop([character])
    tool["ListBonesList"].select([0])
    before = tool["BoneColorEdit"].rgb
    with pytest.raises(ValueError):
        tool["BoneColorEdit"].set(*wrong)
    assert tool["BoneColorEdit"].rgb == before


def test_cells_are_colour_slider_lock_and_weight(picked):
    picked["ListBonesList"].select([0, 1])
    spread = picked["SpreadWeights"]
    assert spread.row_labels == ["Root", "Tip"]
    colour, slider, lock, weight = (spread.cell(1, column) for column in range(4))
    assert len(colour) == 3 and all(isinstance(part, float) for part in colour)
    assert slider == weight == 50.0
    assert isinstance(slider, float) and isinstance(weight, float)
    assert lock is False


def test_a_lock_is_typed_and_a_locked_row_springs_back(character, picked):
    picked["ListBonesList"].select([0, 1])
    spread = picked["SpreadWeights"]
    before = weights_of(character)
    for on in (True, np.bool_(True), 1):
        spread.type(0, 2, False)
        spread.type(0, 2, on)
        assert spread.cell(0, 2) is True
    spread.type(0, 3, 80.0)
    spread.drag(0, 1, [10, 20])
    assert spread.cell(0, 3) == spread.cell(0, 1) == 50.0
    assert (weights_of(character) == before).all()


@pytest.mark.parametrize("wrong", [NAN, INFINITY, "forty", "40", None, True, [40]])
def test_what_is_no_number_is_not_typed(desk, character, picked, wrong):
    picked["ListBonesList"].select([0, 1])
    spread, before, steps = picked["SpreadWeights"], weights_of(character), desk.undo_names
    with pytest.raises(ValueError, match="finite number"):
        spread.type(0, 3, wrong)
    with pytest.raises(ValueError, match="finite number"):
        spread.drag(0, 1, [10, wrong])
    assert spread.cell(0, 3) == 50.0
    assert (weights_of(character) == before).all()
    assert desk.undo_names == steps


@pytest.mark.parametrize("wrong", ["yes", None, 2, NAN, [True, False]])
def test_what_is_neither_true_nor_false_sets_no_lock(picked, wrong):
    picked["ListBonesList"].select([0, 1])
    with pytest.raises(ValueError, match="True or False"):
        picked["SpreadWeights"].type(0, 2, wrong)
    assert picked["SpreadWeights"].cell(0, 2) is False


@pytest.mark.parametrize("row, column", [(2, 3), (-1, 3), (0, 4), (0, -1)])
def test_a_cell_that_is_not_there_raises(picked, row, column):
    picked["ListBonesList"].select([0, 1])
    spread = picked["SpreadWeights"]
    for use in (lambda: spread.cell(row, column), lambda: spread.type(row, column, 1.0),
                lambda: spread.drag(row, column, [1.0])):
        with pytest.raises(IndexError, match='of "SpreadWeights"'):
            use()


def test_a_cell_takes_what_its_column_takes(picked):
    picked["ListBonesList"].select([0, 1])
    spread = picked["SpreadWeights"]
    with pytest.raises(skindesk.Error, match="drag its slider"):
        spread.type(0, 1, 40.0)
    with pytest.raises(skindesk.Error, match='typed into the column "Col"'):
        spread.type(0, 0, 1.0)
    with pytest.raises(skindesk.Error, match='no slider in row 0, column "Weight"'):
        spread.drag(0, 3, [40.0])


def test_deactivating_and_activating_again(desk, tool, character):
    tool["ModelListUI"].drop([character])
    tool.deactivate()
    tool.activate()
    tool.activate()
    assert tool["ModelListUI"].rows == ["Body"]


def test_a_model_that_is_deleted_leaves_the_tool(tool, character):
    tool["ModelListUI"].drop([character])
    character.delete()
    assert tool["ModelListUI"].rows == ["Drop models here"]
    assert tool["ListBonesList"].rows == []
