# SPDX-License-Identifier: MIT
"""Files: what opening and saving promise, and trouble with them."""
import json

import numpy as np
import pytest
import skindesk

from tiny_character import Spoiled, pick, weights_of, write_character


def edit(desk, model):
    """Types 40 for Tip at vertex 4."""
    tool = desk.open_tool("Skins")
    tool["ModelListUI"].drop([model])
    desk.viewer.frame([model])
    pick(desk, model, [4, 5])
    tool["ListBonesList"].select([0, 1])
    tool["SpreadWeights"].type(1, 3, 40.0)
    tool.close()


def test_untouched_open_and_save_gives_the_same_bytes(desk, tmp_path):
    path = write_character(tmp_path / "strip.gltf")
    desk.open(path)
    report = desk.save(str(tmp_path / "same.gltf"))
    assert (tmp_path / "same.gltf").read_bytes() == path.read_bytes()
    assert report == {"bytes": path.stat().st_size, "vertices_changed": 0, "vertices_limited": 0, "weight_dropped": 0.0,
                      "warnings": []}


def test_saving_over_the_opened_file_changes_its_weights(desk, tmp_path):
    path = write_character(tmp_path / "strip.gltf")
    model = desk.open(path)[0]
    edit(desk, model)
    desk.save(path)
    desk.clear()
    assert weights_of(desk.open(path)[0])[4] == pytest.approx([0.6, 0.4])


@pytest.mark.parametrize("content, why", [(None, ""), (b"", ""), (b"hello", ""), (b'{"asset": {}}', "asset")])
def test_a_file_that_cannot_be_read_raises_and_leaves_the_scene(desk, character, tmp_path, content, why):
    path = tmp_path / "broken.gltf"
    if content is not None:
        path.write_bytes(content)
    before = desk.models
    with pytest.raises(skindesk.FileError) as raised:
        desk.open(path)
    assert raised.value.path == str(path)
    assert isinstance(raised.value.where, str) and why in raised.value.where
    assert str(path) in str(raised.value) and "\n" not in str(raised.value)
    assert isinstance(raised.value, skindesk.Error) and isinstance(raised.value, RuntimeError)
    assert desk.models == before


def test_saving_to_another_extension_is_refused(desk, character, tmp_path):
    with pytest.raises(skindesk.FileError):
        desk.save(tmp_path / "strip.fbx")
    assert not (tmp_path / "strip.fbx").exists()


def test_saving_into_a_missing_folder_leaves_nothing(desk, character, tmp_path):
    with pytest.raises(skindesk.FileError):
        desk.save(tmp_path / "missing" / "strip.gltf")
    assert not (tmp_path / "missing").exists()


def test_saving_without_a_file_says_so(desk, tmp_path):
    with pytest.raises(skindesk.Error, match="no file is open"):
        desk.save(tmp_path / "strip.gltf")


def test_of_several_files_the_source_says_which_one(desk, tmp_path):
    first = write_character(tmp_path / "first.gltf")
    second = write_character(tmp_path / "second.gltf", Spoiled(names=("Other",)))
    edit(desk, desk.open(first)[0])
    desk.open(second)
    with pytest.raises(skindesk.Error, match="2 files are open.*first.gltf.*second.gltf"):
        desk.save(tmp_path / "saved.gltf")
    desk.save(tmp_path / "saved.gltf", source=second)
    assert (tmp_path / "saved.gltf").read_bytes() == second.read_bytes()
    assert desk.save(tmp_path / "saved.gltf", source=str(first))["vertices_changed"] == 1
    with pytest.raises(skindesk.FileError):
        desk.save(tmp_path / "saved.gltf", source=tmp_path / "third.gltf")


def test_max_influences_keeps_the_largest_and_reports(desk, character, tmp_path):
    report = desk.save(tmp_path / "limited.gltf", max_influences=1)
    # Six vertices of the three inner rows have two influences.
    assert report["vertices_limited"] == 6
    assert report["weight_dropped"] == pytest.approx(2 * (0.25 + 0.5 + 0.25))
    assert np.count_nonzero(weights_of(character), axis=1).max() == 2  # nothing changed on the desk
    desk.clear()
    limited = weights_of(desk.open(tmp_path / "limited.gltf")[0])
    assert np.count_nonzero(limited, axis=1).max() == 1
    assert limited.sum(axis=1) == pytest.approx(np.ones(10))


def test_the_limit_report_tells_what_saving_would_drop(desk, character):
    report = desk.limit_report(1)
    assert sum(line["vertices"] for line in report) == 6
    assert sum(line["weight"] for line in report) == pytest.approx(2.0)
    for line in report:
        assert set(line) == {"model", "bone", "vertices", "weight"}
        assert desk.model(line["model"]) is character
        assert line["bone"] in ("Root", "Tip")
    assert desk.limit_report(2) == []
    json.dumps(report)


@pytest.mark.parametrize("wrong", [0, -1])
def test_a_limit_is_at_least_one(desk, character, tmp_path, wrong):
    with pytest.raises(ValueError, match="at least 1"):
        desk.save(tmp_path / "limited.gltf", max_influences=wrong)
    with pytest.raises(ValueError, match="at least 1"):
        desk.limit_report(wrong)
    with pytest.raises(TypeError):
        desk.limit_report(1.5)
    assert not (tmp_path / "limited.gltf").exists()


@pytest.mark.parametrize("name", ["weights.csv", "weights.json"])
def test_weights_are_exported_and_imported(desk, character, tmp_path, name):
    before = weights_of(character)
    desk.export_weights(tmp_path / name)
    edit(desk, character)
    changed = weights_of(character)
    assert not np.allclose(changed, before)
    report = desk.import_weights(tmp_path / name)
    assert weights_of(character) == pytest.approx(before, abs=1e-6)
    assert report["vertices_changed"] >= 1 and report["rows_read"] > 0 and report["unmatched"] == []
    assert desk.undo()
    assert weights_of(character) == pytest.approx(changed, abs=1e-6)


def test_importing_is_refused_while_a_tool_holds_a_model(desk, character, tool, tmp_path):
    desk.export_weights(tmp_path / "weights.csv")
    tool["ModelListUI"].drop([character])
    before = weights_of(character)
    with pytest.raises(skindesk.Error):
        desk.import_weights(tmp_path / "weights.csv")
    assert (weights_of(character) == before).all()


def test_importing_what_is_no_table_raises(desk, character, tmp_path):
    (tmp_path / "weights.csv").write_text("nothing of the kind\n")
    with pytest.raises(skindesk.FileError):
        desk.import_weights(tmp_path / "weights.csv")
    with pytest.raises(skindesk.FileError):
        desk.import_weights(tmp_path / "missing.csv")


def test_weights_that_are_no_numbers_are_loaded_and_said_in_a_line(desk, open_character):
    weights = np.tile(np.array([1, 0, 0, 0], np.float32), (10, 1))
    weights[3] = [np.nan, 0, 0, 0]
    weights[4] = [0, 0, 0, 0]
    (model,) = open_character(weights=weights)
    assert len(desk.warnings) >= 1
    assert any("strip.gltf" in line for line in desk.warnings)
    assert model.skin is not None


@pytest.mark.parametrize("wrong", [3, None, "with\0null"])
def test_what_is_no_path_raises(desk, wrong):
    with pytest.raises((TypeError, ValueError)):
        desk.open(wrong)
    assert desk.models == []
