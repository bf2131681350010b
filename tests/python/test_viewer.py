# SPDX-License-Identifier: MIT
"""The viewer: camera, input, pictures."""
import numpy as np
import pytest
import skindesk

from tiny_character import on_screen, pick


def grab(desk):
    """A picture; where there is no OpenGL the sentence that says so is all that can be tested."""
    try:
        return desk.viewer.grab()
    except skindesk.Error as error:
        assert str(error).startswith("no picture can be drawn: ")
        return None


def test_matrices_are_four_by_four_for_row_vectors(desk):
    desk.viewer.look_at((0, 0, 5), (0, 0, 0), (0, 1, 0))
    view, projection = desk.viewer.view, desk.viewer.projection
    assert view.shape == projection.shape == (4, 4)
    assert view.dtype == projection.dtype == np.float64
    eye = np.append(desk.viewer.eye, 1) @ view
    assert np.allclose(eye, (0, 0, 0, 1))
    clip = np.array([0, 0, 0, 1]) @ view @ projection
    assert np.allclose(clip[:2] / clip[3], 0)


def test_framing_puts_every_vertex_into_the_view(desk, character):
    desk.viewer.frame([character])
    x, y = on_screen(desk, character)
    assert x.min() >= 0 and x.max() <= 800 and y.min() >= 0 and y.max() <= 600
    assert np.ptp(y) > 300
    before = desk.viewer.view
    desk.viewer.frame(character)
    assert np.allclose(desk.viewer.view, before)


def test_up_is_up_on_the_screen(desk, character):
    desk.viewer.look_at((0, 1, 6), (0, 1, 0), (0, 1, 0))
    x, y = on_screen(desk, character)
    assert y[0] > y[9]
    assert x[0] < x[1]


def test_a_wider_field_of_view_shows_more(desk, character):
    desk.viewer.look_at((0, 1, 6), (0, 1, 0), (0, 1, 0))
    desk.viewer.fov(30)
    narrow = np.ptp(on_screen(desk, character)[1])
    desk.viewer.fov(60)
    assert np.ptp(on_screen(desk, character)[1]) < narrow


@pytest.mark.parametrize("wrong", [
    lambda viewer: viewer.look_at((0, 0, 0), (0, 0, 0), (0, 1, 0)),
    lambda viewer: viewer.look_at((0, 5, 0), (0, 0, 0), (0, 1, 0)),
    lambda viewer: viewer.look_at((0, 0, float("nan")), (0, 0, 0), (0, 1, 0)),
    lambda viewer: viewer.look_at((0, 0), (0, 0, 0), (0, 1, 0)),
    lambda viewer: viewer.fov(float("nan")),
    lambda viewer: viewer.fov("wide"),
    lambda viewer: viewer.size(0, 600),
    lambda viewer: viewer.size(800, float("inf")),
    lambda viewer: viewer.press(float("nan"), 1),
    lambda viewer: viewer.press(1, "left"),
    lambda viewer: viewer.press(1, 1, 4),
    lambda viewer: viewer.press(1, 1, 1, ["command"]),
    lambda viewer: viewer.press(1, 1, 1, "hyper"),
    lambda viewer: viewer.move(1, None),
    lambda viewer: viewer.wheel(1, 1, float("nan")),
])
def test_what_is_no_number_or_name_raises_and_changes_nothing(desk, wrong):
    before = desk.viewer.view, desk.viewer.projection, desk.viewer.eye
    with pytest.raises(ValueError):
        wrong(desk.viewer)
    for old, new in zip(before, (desk.viewer.view, desk.viewer.projection, desk.viewer.eye)):
        assert (np.asarray(old) == np.asarray(new)).all()


def test_alt_and_a_button_move_the_camera(desk, character):
    desk.viewer.frame([character])
    for button in (1, 2, 3):
        before = desk.viewer.view
        desk.viewer.press(400, 300, button, ["alt"])
        desk.viewer.move(460, 340)
        desk.viewer.release(460, 340)
        assert not np.allclose(desk.viewer.view, before), button


def test_the_wheel_zooms(desk, character):
    desk.viewer.frame([character])
    before = np.ptp(on_screen(desk, character)[1])
    desk.viewer.wheel(400, 300, 2)
    assert np.ptp(on_screen(desk, character)[1]) != pytest.approx(before)


def test_a_picture_has_the_viewers_size(desk, character):
    desk.viewer.size(120, 80)
    desk.viewer.frame([character])
    picture = grab(desk)
    if picture is not None:
        assert picture.shape == (80, 120, 3) and picture.dtype == np.uint8
        assert picture.std() > 0


def test_a_picture_outlives_the_desk(desk, character):
    picture = grab(desk)
    desk.close()
    assert picture is None or picture.sum() > 0


def test_the_picture_shows_what_is_picked(desk, tool, character):
    tool["ModelListUI"].drop([character])
    desk.viewer.frame([character])
    before = grab(desk)
    pick(desk, character, [4, 5])
    after = grab(desk)
    assert before is None or (before != after).any()


def test_the_key_f_frames_the_selection(desk, character):
    desk.viewer.look_at((0, 1, 60), (0, 1, 0), (0, 1, 0))
    character.select()
    before = np.ptp(on_screen(desk, character)[1])
    desk.viewer.key(ord("F"))
    assert np.ptp(on_screen(desk, character)[1]) > 2 * before


def test_escape_clears_the_vertex_list(desk, picked):
    assert len(picked["ListVertexList"].rows) == 2
    desk.viewer.key(27)
    assert picked["ListVertexList"].rows == ["Empty"]
    assert desk.undo_names[0] == "Tool Weighting Clear All Vertex Lists"


def test_modifiers_choose_what_a_pick_does(desk, picked, character):
    vertices = picked["ListVertexList"]
    pick(desk, character, [8, 9], ["ctrl", "shift"])
    assert len(vertices.rows) == 4
    pick(desk, character, [8, 9], "ctrl")
    assert len(vertices.rows) == 2
    pick(desk, character, [0, 1])
    assert vertices.rows == ["Vertex 0 Body", "Vertex 1 Body"]
