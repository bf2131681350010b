# SPDX-License-Identifier: MIT
"""The viewer: camera, input, pictures."""
import os
import subprocess
import sys

import numpy as np
import pytest
import skindesk

from tiny_character import on_screen, pick


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
    picture = desk.viewer.grab()
    assert picture.shape == (80, 120, 3) and picture.dtype == np.uint8
    assert picture.std() > 0


def test_a_picture_outlives_the_desk(desk, character):
    picture = desk.viewer.grab()
    desk.close()
    assert picture.sum() > 0


def test_the_picture_shows_what_is_picked(desk, tool, character):
    tool["ModelListUI"].drop([character])
    desk.viewer.frame([character])
    before = desk.viewer.grab()
    pick(desk, character, [4, 5])
    assert (before != desk.viewer.grab()).any()


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


def test_the_first_size_is_800_by_600(desk):
    assert desk.viewer.grab().shape == (600, 800, 3)


def test_the_size_is_that_of_the_pictures_and_of_the_view(desk, character):
    desk.viewer.look_at((0, 1, 6), (0, 1, 0), (0, 1, 0))
    desk.viewer.size(200, 400)
    assert desk.viewer.projection[1, 1] == pytest.approx(2 * desk.viewer.projection[0, 0] / 4)
    assert desk.viewer.grab().shape == (400, 200, 3)


def test_look_at_puts_the_eye_and_the_target(desk, character):
    desk.viewer.look_at((1, 2, 7), (1, 2, 0), (1, 0, 0))
    assert tuple(desk.viewer.eye) == (1, 2, 7)
    target = np.array([1, 2, 0, 1]) @ desk.viewer.view @ desk.viewer.projection
    assert np.allclose(target[:2] / target[3], 0)
    aside = np.array([2, 2, 0, 1]) @ desk.viewer.view  # along `up`
    assert abs(aside[0]) < 1e-9 and aside[1] > 0


def test_the_field_of_view_is_vertical_in_degrees(desk, character):
    desk.viewer.fov(60)
    assert desk.viewer.projection[1, 1] == pytest.approx(1 / np.tan(np.radians(30)))
    desk.viewer.size(400, 400)
    assert desk.viewer.projection[0, 0] == pytest.approx(1 / np.tan(np.radians(30)))
    desk.viewer.fov(1000)
    assert desk.viewer.projection[1, 1] == pytest.approx(1 / np.tan(np.radians(85)))


def test_a_unit_of_the_view_is_one_per_cent_of_the_scenes_diagonal(desk, character):
    places = np.asarray(character.positions) @ character.global_matrix
    diagonal = np.linalg.norm(np.ptp(places[:, :3], axis=0))
    assert np.linalg.norm(desk.viewer.view[:3, 0]) == pytest.approx(100 / diagonal)


def test_framing_without_models_shows_the_scene(desk, character):
    desk.viewer.frame([character])
    model = desk.viewer.view
    desk.viewer.look_at((0, 1, 60), (0, 1, 0), (0, 1, 0))
    desk.viewer.frame()
    x, y = on_screen(desk, character)
    assert x.min() >= 0 and x.max() <= 800 and y.min() >= 0 and y.max() <= 600
    assert np.allclose(desk.viewer.view, model), "the character is all of the scene"


def test_framing_a_bone_shows_it_nearer(desk, character):
    desk.viewer.frame([character])
    before = np.linalg.norm(np.asarray(desk.viewer.eye))
    desk.viewer.frame(desk.model("Tip"))
    assert np.linalg.norm(np.asarray(desk.viewer.eye) - (0, 1, 0)) < before


def test_framing_an_empty_scene_changes_nothing(desk):
    before = desk.viewer.view
    desk.viewer.frame()
    assert (desk.viewer.view == before).all()


def test_framing_what_is_deleted_raises(desk, character):
    character.delete()
    with pytest.raises(skindesk.Error):
        desk.viewer.frame([character])


def test_pixels_count_from_the_top_left(desk, tool, character):
    tool["ModelListUI"].drop([character])
    desk.viewer.look_at((0, 1, 6), (0, 1, 0), (0, 1, 0))
    x, y = on_screen(desk, character)
    desk.viewer.press(x[8], y[8])  # the left vertex of the top row
    desk.viewer.release(x[8], y[8])
    assert x[8] < 400 and y[8] < 300
    assert tool["ListVertexList"].rows == ["Vertex 8 Body"]


def test_the_release_repeats_the_button_and_modifiers_of_the_press(desk, picked, character):
    x, y = on_screen(desk, character)
    desk.viewer.press(x[8], y[8], 1, ["ctrl", "shift"])
    desk.viewer.release(x[8], y[8])
    assert picked["ListVertexList"].rows == ["Vertex 4 Body", "Vertex 5 Body", "Vertex 8 Body"]


def test_a_move_or_release_without_a_press_is_nothing(desk, picked):
    steps = len(desk.undo_names)
    desk.viewer.move(400, 300)
    desk.viewer.release(400, 300)
    assert len(desk.undo_names) == steps
    assert len(picked["ListVertexList"].rows) == 2


def test_a_press_without_its_release_leaves_no_step(desk, picked, character):
    steps = len(desk.undo_names)
    desk.viewer.press(10, 10)
    desk.viewer.move(700, 500)
    assert not desk.undo(), "it waits for the end of the gesture"
    desk.viewer.press(20, 20, 3)  # cuts it off
    desk.viewer.release(20, 20)
    assert len(desk.undo_names) == steps
    assert len(picked["ListVertexList"].rows) == 2


def test_wheel_steps_count_and_have_a_sign(desk, character):
    desk.viewer.look_at((0, 1, 6), (0, 1, 0), (0, 1, 0))
    desk.viewer.wheel(400, 300, 2)
    nearer = desk.viewer.eye[2]
    assert nearer < 6
    desk.viewer.wheel(400, 300, -2)
    assert desk.viewer.eye[2] == pytest.approx(6)
    desk.viewer.wheel(400, 300, 1)
    desk.viewer.wheel(400, 300, 1)
    assert desk.viewer.eye[2] == pytest.approx(nearer)


def test_each_camera_gesture_moves_the_camera_its_own_way(desk, character):
    def dragged(button, right, down):
        desk.viewer.look_at((0, 1, 6), (0, 1, 0), (0, 1, 0))
        desk.viewer.press(400, 300, button, "alt")
        desk.viewer.move(400 + right, 300 + down)
        desk.viewer.release(400 + right, 300 + down)
        return np.asarray(desk.viewer.eye)
    orbited = dragged(1, 100, 0)
    assert np.linalg.norm(orbited - (0, 1, 0)) == pytest.approx(6) and orbited[0] < 0
    panned = dragged(2, 100, 50)
    assert panned[2] == pytest.approx(6) and panned[0] < 0 and panned[1] > 1
    zoomed = dragged(3, 0, 50)
    assert zoomed[:2] == pytest.approx((0, 1)) and zoomed[2] > 6


def test_a_camera_gesture_is_no_step_and_picks_nothing(desk, picked):
    steps, rows = desk.undo_names, picked["ListVertexList"].rows
    for button in (1, 2, 3):
        desk.viewer.press(10, 10, button, "alt")
        desk.viewer.move(790, 590)
        desk.viewer.release(790, 590)
    assert desk.undo_names == steps and picked["ListVertexList"].rows == rows


def test_the_key_w_shows_the_tools_manipulator_again(desk, tool, character):
    tool["ModelListUI"].drop([character])
    desk.viewer.frame([character])
    shown = desk.viewer.grab()
    tool.deactivate()
    assert (desk.viewer.grab() != shown).any()
    tool.activate()
    desk.viewer.key(ord("W"))
    pick(desk, character, [4, 5])
    assert len(tool["ListVertexList"].rows) == 2


def test_the_key_f_frames_the_picked_vertices(desk, picked, character):
    desk.viewer.look_at((0, 1, 60), (0, 1, 0), (0, 1, 0))
    desk.viewer.key(ord("F"))
    x, y = on_screen(desk, character)
    assert (x[4] + x[5]) / 2 == pytest.approx(400, abs=1) and (y[4] + y[5]) / 2 == pytest.approx(300, abs=1)
    assert x[5] - x[4] > 200


def test_a_key_with_a_modifier_is_another_key(desk, picked):
    before = desk.viewer.view
    desk.viewer.key(ord("F"), "shift")
    desk.viewer.key(27, ["ctrl"])
    assert (desk.viewer.view == before).all()
    assert len(picked["ListVertexList"].rows) == 2


def test_a_picture_is_the_callers_own(desk, character):
    desk.viewer.frame([character])
    first, again = desk.viewer.grab(), desk.viewer.grab()
    assert (first == again).all()
    kept = first.copy()
    desk.viewer.wheel(400, 300, 3)
    assert (first == kept).all()
    assert (desk.viewer.grab() != kept).any()


def test_the_rubber_band_is_in_the_picture(desk, picked):
    before = desk.viewer.grab()
    desk.viewer.press(10, 10)
    desk.viewer.move(200, 150)
    during = desk.viewer.grab()
    assert (during[10:150, 10:200] != before[10:150, 10:200]).any()
    desk.viewer.release(200, 150)


def test_matrices_are_copies(desk, character):
    view = desk.viewer.view
    kept = view.copy()
    desk.viewer.wheel(400, 300, 1)
    assert (view == kept).all()


def test_after_the_desk_is_closed_the_viewer_raises(tmp_path):
    desk = skindesk.Desk()
    viewer = desk.viewer
    desk.close()
    for use in (lambda: viewer.view, lambda: viewer.press(1, 1), viewer.frame, viewer.grab, lambda: viewer.key(27)):
        with pytest.raises(skindesk.Error):
            use()


def test_without_opengl_one_sentence_says_so_and_the_rest_works():
    program = """
import skindesk
with skindesk.Desk() as desk:
    try:
        desk.viewer.grab()
    except skindesk.Error as error:
        print(error)
    desk.viewer.look_at((0, 0, 5), (0, 0, 0), (0, 1, 0))
    print(desk.viewer.eye[2])
"""
    nowhere = {"__EGL_VENDOR_LIBRARY_DIRS": "/nonexistent", "__EGL_VENDOR_LIBRARY_FILENAMES": ""}
    done = subprocess.run([sys.executable, "-c", program], env=os.environ | nowhere, capture_output=True, text=True,
                          timeout=60, check=True)
    sentence, eye = done.stdout.splitlines()
    assert sentence.startswith("no picture can be drawn: No off-screen OpenGL: ")
    assert float(eye) == 5
