# SPDX-License-Identifier: MIT
"""The desk: its life, catalogue, history, messages and what is writable."""
import gc
import os
import subprocess
import sys
import threading

import pytest
import skindesk

from tiny_character import Spoiled, write_character


def test_a_second_desk_beside_an_open_one_raises():
    with skindesk.Desk():
        with pytest.raises(skindesk.Error, match="open already"):
            skindesk.Desk()
    skindesk.Desk().close()


def test_a_closed_desk_raises_and_closing_twice_is_harmless():
    desk = skindesk.Desk()
    viewer = desk.viewer
    desk.close()
    desk.close()
    for use in (lambda: desk.models, lambda: desk.viewer, lambda: desk.undo(), lambda: desk.open("x.glb"),
                lambda: desk.messages, lambda: desk.warnings, lambda: desk.keys, lambda: viewer.grab(),
                lambda: viewer.press(1, 1), lambda: desk.catalogue, lambda: desk.time, lambda: desk.undo_names):
        with pytest.raises(skindesk.Error, match="has been closed"):
            use()
    with pytest.raises(skindesk.Error, match="has been closed"):
        with desk:
            pass


def test_objects_of_a_closed_desk_raise(tmp_path):
    with skindesk.Desk() as desk:
        model = desk.open(write_character(tmp_path / "strip.gltf"))[0]
        skin, tool = model.skin, desk.open_tool("Skins")
        bones = tool["ListBonesList"]
    for use in (lambda: model.positions, lambda: skin.csr(), lambda: tool.controls, lambda: bones.rows,
                lambda: bones.select([0]), lambda: tool.activate()):
        with pytest.raises(skindesk.Error, match="desk has been closed"):
            use()
    assert "no longer" in repr(model) and "closed" in repr(tool) and "gone" in repr(bones)


def test_a_desk_that_nobody_holds_makes_room_for_another():
    skindesk.Desk()
    gc.collect()
    with skindesk.Desk():
        pass


def test_with_closes_when_the_body_raises():
    with pytest.raises(ZeroDivisionError):
        with skindesk.Desk():
            1 / 0
    skindesk.Desk().close()


def test_another_thread_is_refused(desk):
    said = []

    def use():
        try:
            desk.models
        except skindesk.Error as error:
            said.append(str(error))

    thread = threading.Thread(target=use)
    thread.start()
    thread.join()
    assert said == ["the desk belongs to the thread that opened it"]


def test_the_catalogue_lists_the_skinning_tool(desk):
    assert ("UI/Tools", "Skins", "Skinning tool") in desk.catalogue


def test_an_unknown_tool_raises(desk):
    with pytest.raises(skindesk.Error, match='no tool "Nothing"'):
        desk.open_tool("Nothing")


def test_without_plugin_folders_the_catalogue_is_empty():
    with skindesk.Desk(plugins=[]) as desk:
        assert desk.catalogue == []
    with skindesk.Desk() as desk:
        assert desk.catalogue != []


def test_a_folder_of_plugins_may_be_named_alone_and_as_a_path(tmp_path):
    for plugins in (str(tmp_path), tmp_path, [tmp_path]):
        with skindesk.Desk(plugins=plugins) as desk:
            assert desk.catalogue == []


def test_what_is_no_plugin_is_said_in_one_line(tmp_path):
    (tmp_path / "libnothing.so").write_bytes(b"not a library")
    with skindesk.Desk(plugins=[tmp_path]) as desk:
        assert len(desk.warnings) == 1
        assert "libnothing.so" in desk.warnings[0]


def test_warnings_begin_anew_with_each_desk(tmp_path):
    with skindesk.Desk(plugins=[tmp_path / "missing"]) as desk:
        assert len(desk.warnings) == 1
    with skindesk.Desk() as desk:
        assert desk.warnings == []


def test_screen_width_is_1920_and_settable(desk):
    assert desk.screen_width == 1920
    desk.screen_width = 1279
    assert desk.screen_width == 1279
    for wrong in (0, -5, float("nan"), "wide"):
        with pytest.raises(ValueError):
            desk.screen_width = wrong
    assert desk.screen_width == 1279


def test_screen_width_is_that_of_the_desk():
    with skindesk.Desk() as desk:
        desk.screen_width = 1000
    with skindesk.Desk() as desk:
        assert desk.screen_width == 1920


def test_keys_are_a_set_that_is_assigned(desk):
    assert desk.keys == set()
    desk.keys = {4, 16}
    assert desk.keys == {4, 16}
    desk.keys = [16]
    assert desk.keys == {16}
    with pytest.raises(AttributeError):
        desk.keys.add(4)  # would change a copy only


def test_messages_keep_their_texts_and_answers(desk, open_character, tool):
    tool["ModelListUI"].drop(open_character(mode="additive"))
    (message,) = desk.messages
    assert message.title == "Skinning Tool"
    assert message.text == "The ADDITIVE type of deformation used by the model is not supported by this skinning tool."
    assert message.buttons == ["OK"]
    assert message.answer == 1
    title, text, buttons, answer = message
    assert (title, answer) == ("Skinning Tool", 1)


def test_without_an_answer_the_last_button_counts(desk, open_character, tool):
    tool["ModelListUI"].drop(open_character(joint_twice=True))
    assert desk.messages[0].text == "Some bones are duplicate, do you wish to try to merge them ?"
    assert desk.messages[0].answer == 2


def test_the_answering_function_is_asked(desk, open_character, tool):
    asked = []

    def answer(title, text, buttons):
        asked.append((title, text, buttons))
        return 1

    desk.answer = answer
    assert desk.answer is answer
    (model,) = open_character(joint_twice=True)
    tool["ModelListUI"].drop([model])
    assert asked == [("Skinning Tool", "Some bones are duplicate, do you wish to try to merge them ?", ["Yes", "No"])]
    assert desk.messages[0].answer == 1


def test_an_answer_that_raises_is_raised_after_the_event(desk, open_character, tool):
    def answer(title, text, buttons):
        raise ZeroDivisionError("in the middle of a drop")

    desk.answer = answer
    (model,) = open_character(joint_twice=True)
    with pytest.raises(ZeroDivisionError, match="middle of a drop"):
        tool["ModelListUI"].drop([model])
    assert desk.messages[0].answer == 2  # the safe one
    assert tool["ModelListUI"].rows == ["Body"]


def test_an_answer_must_be_a_function_that_returns_a_number(desk, open_character, tool):
    with pytest.raises(TypeError):
        desk.answer = 3
    assert desk.answer is None
    desk.answer = lambda title, text, buttons: "Yes"
    with pytest.raises(TypeError, match="number of a button"):
        tool["ModelListUI"].drop(open_character(joint_twice=True))


def test_undo_and_redo_answer_whether_there_was_a_step(desk, tool, character):
    assert desk.undo() is False
    assert desk.redo() is False
    tool["ModelListUI"].drop([character])
    assert desk.undo_names[0] == "Tool Weighting Drop"
    assert desk.undo() is True
    assert desk.redo_names == ["Tool Weighting Drop"]
    assert desk.redo() is True


def test_settings_are_read_from_their_folder(tmp_path):
    (tmp_path / "Application.txt").write_text("[Weighting]\nDeadWeight=5\n")
    with skindesk.Desk(settings=tmp_path) as desk:
        desk.open_tool("Skins")
        assert desk.warnings == []
    (tmp_path / "Application.txt").write_text("[Weighting]\nDeadWeight=plenty\n")
    with skindesk.Desk(settings=str(tmp_path)) as desk:
        desk.open_tool("Skins")
        assert len(desk.warnings) == 1


def test_time_and_animation_move_the_model(desk, character):
    assert desk.animations == ["Wave"]
    assert desk.animation is None
    assert desk.time == 0
    rest = character.positions
    desk.time = 1.0
    assert (character.positions == rest).all()
    desk.animation = "Wave"
    assert desk.animation == "Wave"
    assert abs(character.positions - rest).max() > 0.1
    desk.time = 0
    assert abs(character.positions - rest).max() < 1e-6
    desk.play_to(0.5)
    assert desk.time == 0.5
    assert abs(character.positions - rest).max() > 0.05
    desk.animation = None
    assert (character.positions == rest).all()


def test_a_time_that_is_no_number_changes_nothing(desk, character):
    desk.time = 0.25
    for wrong in (float("nan"), float("inf"), "soon", None):
        with pytest.raises(ValueError):
            desk.time = wrong
        with pytest.raises(ValueError):
            desk.play_to(wrong)
    assert desk.time == 0.25


def test_an_unknown_animation_raises(desk, character):
    with pytest.raises(KeyError, match="Dance"):
        desk.animation = "Dance"
    assert desk.animation is None


def test_a_name_of_two_animations_raises(desk, open_character):
    open_character("a.gltf")
    open_character("b.gltf")
    with pytest.raises(KeyError, match="several"):
        desk.animation = "Wave"


def test_everything_has_a_docstring():
    assert skindesk.__doc__
    for name in skindesk.__all__:
        thing = getattr(skindesk, name)
        assert thing.__doc__, name
        assert thing.__module__ == "skindesk", name
        if not isinstance(thing, type) or issubclass(thing, (Exception, tuple)):
            continue
        for member, value in vars(thing).items():
            if not member.startswith("_"):
                assert value.__doc__, f"{name}.{member}"


def test_the_stub_names_everything_that_there_is():
    import ast
    import inspect
    from pathlib import Path
    stub = ast.parse(Path(skindesk.__file__).with_suffix(".pyi").read_text())
    classes = {node.name: {item.name if isinstance(item, ast.FunctionDef) else item.target.id
                           for item in node.body if isinstance(item, (ast.FunctionDef, ast.AnnAssign))}
               for node in stub.body if isinstance(node, ast.ClassDef)}
    assert set(skindesk.__all__) <= set(classes)
    for name in skindesk.__all__:
        thing = getattr(skindesk, name)
        if inspect.isclass(thing) and not issubclass(thing, (Exception, tuple)):
            public = {member for member in vars(thing) if not member.startswith("_")}
            assert public == {member for member in classes[name] if not member.startswith("_")}, name


def test_the_stubs_parameters_are_the_modules():
    import ast
    import re
    from pathlib import Path
    stub = ast.parse(Path(skindesk.__file__).with_suffix(".pyi").read_text())
    compared = 0
    for node in stub.body:
        for item in node.body if isinstance(node, ast.ClassDef) and node.name in skindesk.__all__ else ():
            docs = getattr(vars(getattr(skindesk, node.name)).get(item.name), "__doc__") or "" \
                if isinstance(item, ast.FunctionDef) and not item.name.startswith("_") else ""
            signature = re.match(r"\w+\((.*)\) -> ", docs)
            if signature is None:
                continue  # a property
            arguments = item.args.posonlyargs + item.args.args + item.args.kwonlyargs
            told = re.findall(r"(\w+): [^,=]+(= )?", signature[1])
            assert [argument.arg for argument in arguments] == [name for name, _ in told], f"{node.name}.{item.name}"
            defaults = len(item.args.defaults) + sum(default is not None for default in item.args.kw_defaults)
            assert defaults == sum(bool(default) for _, default in told), f"{node.name}.{item.name}"
            compared += 1
    assert compared > 30


def test_a_desk_left_open_ends_with_the_interpreter(tmp_path):
    script = ("import skindesk, sys\n"
              "desk = skindesk.Desk()\n"
              "desk.answer = lambda *question: desk and 1\n"  # a circle that nothing breaks
              "model = desk.open(sys.argv[1])[0]\n"
              "tool = desk.open_tool('Skins')\n"
              "tool['ModelListUI'].drop([model])\n")
    path = write_character(tmp_path / "strip.gltf", Spoiled())
    ended = subprocess.run([sys.executable, "-c", script, str(path)], capture_output=True, text=True, timeout=120,
                           env=os.environ | {"PYTHONPATH": os.pathsep.join(sys.path)})
    assert (ended.returncode, ended.stderr) == (0, "")
