# SPDX-License-Identifier: MIT
"""Asks Blender about a saved character: does it import, with all its bones, and are the weights what we wrote?

    blender --background --factory-startup --python-exit-code 1 --python tools/judge_blender.py -- SAVED.glb FACTS.json
    blender ... --python tools/judge_blender.py -- --weights WEIGHTS.json

The second asks whether Blender finds in each file the weights that tools/weights_for_blender.py wrote down.
"""
import json
import sys

import bpy
import numpy

# Debian's Blender asks for a name that Debian's NumPy has given up.
numpy.bool = bool


def main(path, facts_path):
    with open(facts_path, encoding="utf-8") as file:
        facts = json.load(file)
    bpy.ops.wm.read_factory_settings(use_empty=True)
    bpy.ops.import_scene.gltf(filepath=path)
    bones = {bone.name for thing in bpy.data.objects if thing.type == "ARMATURE" for bone in thing.data.bones}
    assert set(facts["bones"]) <= bones, f"bones are missing: {sorted(set(facts['bones']) - bones)}"
    body = next(thing for thing in bpy.data.objects if thing.type == "MESH" and thing.vertex_groups)
    names = [group.name for group in body.vertex_groups]
    mistake, repaired = facts["mistake"], 0
    for vertex in body.data.vertices:
        weights = {names[entry.group]: entry.weight for entry in vertex.groups}
        assert abs(sum(weights.values()) - 1) < 1e-5, f"vertex {vertex.index} sums to {sum(weights.values())}"
        # Blender's Z is up; our box has Y up.
        place = (vertex.co.x, vertex.co.z, -vertex.co.y)
        if all(low - 1e-5 <= at <= high + 1e-5 for low, at, high in zip(mistake["box_min"], place, mistake["box_max"])):
            assert weights.get(mistake["wrong_bone"], 0) < 1e-6, f"vertex {vertex.index} still has the mistake"
            assert abs(weights[mistake["right_bone"]] - 1) < 1e-5, f"vertex {vertex.index}: {weights}"
            repaired += 1
    assert repaired >= mistake["vertices"], f"only {repaired} vertices lie where the mistake was"
    actions = [action.name for action in bpy.data.actions]
    assert any(name.startswith(facts["animation"]) for name in actions), f"the animation is gone: {actions}"
    print(f"Blender: {len(bones)} bones, {len(body.data.vertices)} vertices, weights as written")


def compare_weights(weights_path):
    with open(weights_path, encoding="utf-8") as file:
        characters = json.load(file)
    assert characters, "there is nothing to compare"
    for character in characters:
        bpy.ops.wm.read_factory_settings(use_empty=True)
        bpy.ops.import_scene.gltf(filepath=character["file"])
        for model in character["models"]:
            thing = bpy.data.objects[model["name"]]
            names = [group.name for group in thing.vertex_groups]
            place = f"{character['file']}, {model['name']}"
            assert len(thing.data.vertices) == len(model["vertices"]), \
                f"{place}: {len(thing.data.vertices)} vertices, the desk has {len(model['vertices'])}"
            for vertex, expected in zip(thing.data.vertices, model["vertices"]):
                found = {names[entry.group]: entry.weight for entry in vertex.groups}
                for bone in found.keys() | expected.keys():
                    off = abs(found.get(bone, 0) - expected.get(bone, 0))
                    assert off < 1e-5, f"{place}, vertex {vertex.index}, {bone}: {found} instead of {expected}"
        print(f"Blender: {character['file']}: {sum(len(m['vertices']) for m in character['models'])} vertices with the "
              "desk's weights")


arguments = sys.argv[sys.argv.index("--") + 1:]
if arguments[0] == "--weights":
    compare_weights(arguments[1])
else:
    main(*arguments)
