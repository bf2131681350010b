# SPDX-License-Identifier: MIT
"""Writes down the weights of saved characters as the desk shows them, vertex by vertex in Blender's order.

    PYTHONPATH=build/python:tests/support python3 tools/weights_for_blender.py SAVED.glb... > WEIGHTS.json

Blender keeps the vertices that a primitive's triangles name, in the order of the file, one primitive after the other.
Characters in which two nodes have one name are left out: Blender renames one of them.
"""
import json
import sys
from pathlib import Path

import numpy as np
import skindesk
from glb_reader import Glb


def model_weights(file, node, model):
    """For each vertex in Blender's order: {bone name: weight}."""
    offsets, links, weights = model.skin.csr()
    names = [link.name for link in model.skin.links]
    rows = []
    for (_, desk), primitive in zip(model.file_vertices, file.json["meshes"][node["mesh"]]["primitives"]):
        named = np.unique(file.array(primitive["indices"])) if "indices" in primitive else np.arange(len(desk))
        for vertex in desk[named]:
            row = {}
            for at in range(offsets[vertex], offsets[vertex + 1]):
                row[names[links[at]]] = row.get(names[links[at]], 0) + float(weights[at])
            rows.append(row)
    return rows


def character(path):
    """{"file", "models": [{"name", "vertices"}]} of one file, or nothing when its names are not unique."""
    file = Glb(Path(path).read_bytes())
    names = [node.get("name") for node in file.json["nodes"]]
    if None in names or len(set(names)) < len(names):
        return None
    with skindesk.Desk() as desk:
        models = {model.name: model for model in desk.open(path) if model.skin}
        return {"file": str(path), "models": [
            {"name": node["name"], "vertices": model_weights(file, node, models[node["name"]])}
            for node in file.json["nodes"] if "skin" in node]}


json.dump([facts for facts in map(character, sys.argv[1:]) if facts], sys.stdout)
