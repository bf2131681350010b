# SPDX-License-Identifier: MIT
"""Deformed positions of every given character, at rest and in the middle of its animations, against an evaluation of
the same file that shares nothing with the desk; and what rest position makes of an animated pose."""
import base64
import json
import pathlib

import numpy as np
import pytest

from plain_evaluator import Character

ROOT = pathlib.Path(__file__).parents[2]
GIVEN = ROOT / "tests" / "data" / "skinned"
# The evaluator has no decoder for compressed meshes; what they hold is tested where they are decoded.
CHARACTERS = sorted(path for path in [*GIVEN.rglob("*.gl*"), ROOT / "samples" / "figure.glb"]
                    if path.suffix in (".glb", ".gltf") and b"KHR_draco_mesh_compression" not in path.read_bytes())
ACCURACY = 1e-5  # of the character's size


def name_of(path):
    return path.stem


def in_scene(model):
    return (model.positions.astype(float) @ model.global_matrix)[:, :3]


def size_of(places):
    return np.linalg.norm(places.max(axis=0) - places.min(axis=0))


def largest_error(character, models, animation, seconds):
    """How far a vertex of the file is from where the desk has it, as a share of its model's size."""
    worst = 0.0
    for node, model in zip(character.mesh_nodes(), models, strict=True):
        expected, have = character.positions(node, animation, seconds), in_scene(model)
        size = size_of(np.concatenate(expected)) or 1.0  # one of the characters is a single point
        for primitive, vertices in model.file_vertices:
            worst = max(worst, np.abs(have[vertices] - expected[primitive]).max() / size)
    return worst


def times_of(duration):
    """Key times and times between keys."""
    return [0.0, duration / 7, duration / 3, duration / 2, 0.8123 * duration, duration]


def test_the_given_characters_are_there():
    assert len(CHARACTERS) >= 14


@pytest.mark.parametrize("path", CHARACTERS, ids=name_of)
def test_rest_state_agrees_with_the_plain_evaluation(desk, path):
    assert largest_error(Character(path), desk.open(path), None, 0) < ACCURACY


@pytest.mark.parametrize("path", [path for path in CHARACTERS if Character(path).json.get("animations")], ids=name_of)
def test_animated_positions_agree_with_the_plain_evaluation(desk, path):
    character, models = Character(path), desk.open(path)
    names = desk.animations
    assert len(names) == len(character.json["animations"])
    for animation in sorted({0, len(names) // 2, len(names) - 1}):
        desk.animation = names[animation]
        for seconds in times_of(character.duration(animation)):
            desk.time = seconds
            error = largest_error(character, models, animation, seconds)
            assert error < ACCURACY, f"{names[animation]} at {seconds} s: {error}"


def test_animated_positions_differ_from_rest(desk):
    """The comparison above would see a character that stands still."""
    path = GIVEN / "Fox.glb"
    character, models = Character(path), desk.open(path)
    desk.animation = desk.animations[2]
    desk.time = 0.3
    assert largest_error(character, models, None, 0) > 1000 * ACCURACY


def write_dancer(path, interpolation, skinned=True, spoil=None):
    """A strip with two morph targets on two joints; one animation moves the tip's three transforms and the morph
    weights."""
    rng = np.random.default_rng(7)
    binary, views, accessors = bytearray(), [], []

    def add(values, kind, **more):
        component = 5126 if values.dtype == np.float32 else 5123
        views.append({"buffer": 0, "byteOffset": len(binary), "byteLength": values.nbytes})
        accessors.append({"bufferView": len(views) - 1, "componentType": component, "count": len(values),
                          "type": kind} | more)
        binary.extend(values.tobytes() + b"\0" * (-values.nbytes % 4))
        return len(accessors) - 1

    y = np.repeat(np.arange(5, dtype=np.float32) / 2, 2)
    points = np.column_stack([np.tile([-0.5, 0.5], 5), y, np.zeros(10)]).astype(np.float32)
    weights = np.zeros((10, 4), np.float32)
    weights[:, 0], weights[:, 1] = 1 - y / 2, y / 2
    joints = np.tile(np.array([0, 1, 0, 0], np.uint16), (10, 1))
    attributes = {"POSITION": add(points, "VEC3", min=points.min(0).tolist(), max=points.max(0).tolist())}
    if skinned:
        attributes |= {"JOINTS_0": add(joints, "VEC4"), "WEIGHTS_0": add(weights, "VEC4")}
    targets = [{"POSITION": add(offsets, "VEC3", min=offsets.min(0).tolist(), max=offsets.max(0).tolist())}
               for offsets in rng.normal(0, 0.3, (2, 10, 3)).astype(np.float32)]
    corners = np.array([[2 * r, 2 * r + 1, 2 * r + 3, 2 * r, 2 * r + 3, 2 * r + 2] for r in range(4)], np.uint16)
    inverse = np.stack([np.eye(4)] * 2).astype(np.float32)
    inverse[1, 3, 1] = -1

    keys = np.array([0.25, 0.5, 1.25, 2.0], np.float32)
    parts = 3 if interpolation == "CUBICSPLINE" else 1
    times = add(keys, "SCALAR", min=[0.25], max=[2.0])

    def curve(width, kind, unit=False, about=0.0):
        values = rng.normal(0, 0.5, (4, parts, width)) + np.where(np.arange(parts) == parts // 2, about, 0)[:, None]
        if unit:
            values[:, parts // 2] /= np.linalg.norm(values[:, parts // 2], axis=1, keepdims=True)
        values = values.astype(np.float32)
        return add(values.reshape(-1, 1) if kind == "SCALAR" else values.reshape(-1, width), kind)

    outputs = [("translation", 1, curve(3, "VEC3", about=1)), ("rotation", 1, curve(4, "VEC4", unit=True)),
               ("scale", 1, curve(3, "VEC3", about=1.5)), ("weights", 2, curve(2, "SCALAR"))]
    body = {"name": "Body", "mesh": 0, "weights": [0.5, -0.25]} | ({"skin": 0} if skinned else {})
    document = {
        "asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0, 2]}],
        "nodes": [{"name": "Root", "children": [1]}, {"name": "Tip", "translation": [0, 1, 0]}, body],
        "meshes": [{"weights": [0.1, 0.9], "primitives": [
            {"attributes": attributes, "targets": targets, "indices": add(corners.reshape(-1), "SCALAR")}]}],
        "animations": [{"name": "Dance",
                        "samplers": [{"input": times, "output": output, "interpolation": interpolation}
                                     for _, _, output in outputs],
                        "channels": [{"sampler": number, "target": {"node": node, "path": where}}
                                     for number, (where, node, _) in enumerate(outputs)]}],
        "accessors": accessors, "bufferViews": views}
    if skinned:
        document["skins"] = [{"joints": [0, 1], "inverseBindMatrices": add(inverse, "MAT4")}]
    document["buffers"] = [{"byteLength": len(binary), "uri": "data:application/octet-stream;base64,"
                            + base64.b64encode(binary).decode()}]
    if spoil is not None:
        spoil(document)
    path.write_text(json.dumps(document))
    return path


@pytest.mark.parametrize("interpolation", ["STEP", "LINEAR", "CUBICSPLINE"])
@pytest.mark.parametrize("skinned", [True, False], ids=["skinned", "unskinned"])
def test_every_interpolation_and_morph_weights_agree(desk, tmp_path, interpolation, skinned):
    path = write_dancer(tmp_path / "dancer.gltf", interpolation, skinned)
    character, models = Character(path), desk.open(path)
    assert largest_error(character, models, None, 0) < ACCURACY, "the node's own morph weights"
    desk.animation = "Dance"
    for seconds in [0, 0.25, 0.3, 0.49, 0.5, 0.51, 0.9, 1.25, 1.7, 1.999, 2.0]:
        desk.time = seconds
        assert largest_error(character, models, 0, seconds) < ACCURACY, seconds
    desk.animation = None
    assert largest_error(character, models, None, 0) < ACCURACY, "back at rest"


def test_a_step_holds_until_the_next_key(desk, tmp_path):
    (model,) = desk.open(write_dancer(tmp_path / "dancer.gltf", "STEP"))
    desk.animation = "Dance"
    desk.time = 0.5
    held = in_scene(model)
    desk.time = 1.2499
    assert (in_scene(model) == held).all()
    desk.time = 1.25
    assert not np.allclose(in_scene(model), held)


def test_the_meshs_morph_weights_hold_where_the_node_has_none(desk, tmp_path):
    def take_the_nodes(document):
        del document["nodes"][2]["weights"]

    path = write_dancer(tmp_path / "dancer.gltf", "LINEAR", spoil=take_the_nodes)
    assert largest_error(Character(path), desk.open(path), None, 0) < ACCURACY
