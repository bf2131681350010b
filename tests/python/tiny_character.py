# SPDX-License-Identifier: MIT
"""Tiny characters for tests: a strip of quads along Y, pulled by two bones, as a .gltf with its bytes inside."""
import base64
import json
from dataclasses import dataclass

import numpy as np

FLOAT, USHORT = 5126, 5123
ROWS = 5  # of vertices, from y = 0 to y = 2; two vertices each


@dataclass
class Spoiled:
    """What a test changes in the valid character."""
    mode: str | None = None
    names: tuple[str, ...] = ("Body",)
    tip_scale: tuple[float, float, float] = (1, 1, 1)
    weights: np.ndarray | None = None  # of the first mesh, n x 4, else a ramp
    joint_twice: bool = False


def write_character(path, spoiled=None):
    """Writes one mesh for each name, all on one skin of Root and Tip, below the node Group. Returns the path.

    The vertices of row r lie at y = r / 2, and Tip pulls them with r / 4, Root with the rest.
    """
    spoiled = spoiled or Spoiled()
    binary, views, accessors = bytearray(), [], []

    def add(values, kind, component, **more):
        views.append({"buffer": 0, "byteOffset": len(binary), "byteLength": values.nbytes})
        accessors.append({"bufferView": len(views) - 1, "componentType": component, "count": len(values), "type": kind}
                         | more)
        binary.extend(values.tobytes())
        binary.extend(b"\0" * (-len(binary) % 4))
        return len(accessors) - 1

    y = np.repeat(np.arange(ROWS, dtype=np.float32) / 2, 2)
    positions = np.column_stack([np.tile([-0.5, 0.5], ROWS), y, np.zeros(2 * ROWS)]).astype(np.float32)
    corners = np.array([[2 * r, 2 * r + 1, 2 * r + 3, 2 * r, 2 * r + 3, 2 * r + 2] for r in range(ROWS - 1)], np.uint16)
    joints = np.tile(np.array([0, 1, 0, 0], np.uint16), (2 * ROWS, 1))
    ramp = np.zeros((2 * ROWS, 4), np.float32)
    ramp[:, 1] = y / 2
    ramp[:, 0] = 1 - ramp[:, 1]
    inverse = np.stack([np.eye(4), np.eye(4)] + [np.eye(4)] * spoiled.joint_twice).astype(np.float32)
    inverse[1:, 3, 1] = -1  # row vectors: the fourth row is the translation
    times, turns = np.array([0, 1], np.float32), np.array([[0, 0, 0, 1], [0, 0, np.sin(0.5), np.cos(0.5)]], np.float32)

    meshes, nodes = [], [{"name": "Root", "children": [1]},
                         {"name": "Tip", "translation": [0, 1, 0], "scale": list(spoiled.tip_scale)}]
    shape = add(positions, "VEC3", FLOAT, min=positions.min(0).tolist(), max=positions.max(0).tolist())
    indices, joint = add(corners.reshape(-1), "SCALAR", USHORT), add(joints, "VEC4", USHORT)
    for number, name in enumerate(spoiled.names):
        weights = spoiled.weights if spoiled.weights is not None and number == 0 else ramp
        meshes.append({"name": name + "Mesh", "primitives": [{"indices": indices, "attributes": {
            "POSITION": shape, "JOINTS_0": joint, "WEIGHTS_0": add(np.asarray(weights, np.float32), "VEC4", FLOAT)}}]})
        nodes.append({"name": name, "mesh": number, "skin": 0})
    nodes.append({"name": "Group", "children": list(range(2, len(nodes)))})
    skin = {"joints": [0, 1] + [1] * spoiled.joint_twice, "inverseBindMatrices": add(inverse, "MAT4", FLOAT)}
    if spoiled.mode:
        skin["extras"] = {"deformMode": spoiled.mode}
    wave = {"name": "Wave", "samplers": [{"input": add(times, "SCALAR", FLOAT, min=[0.0], max=[1.0]),
                                          "output": add(turns, "VEC4", FLOAT)}],
            "channels": [{"sampler": 0, "target": {"node": 1, "path": "rotation"}}]}
    uri = "data:application/octet-stream;base64," + base64.b64encode(binary).decode()
    document = {"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0, len(nodes) - 1]}], "nodes": nodes,
                "meshes": meshes, "skins": [skin], "animations": [wave], "accessors": accessors, "bufferViews": views,
                "buffers": [{"byteLength": len(binary), "uri": uri}]}
    path.write_text(json.dumps(document))
    return path


def on_screen(desk, model, size=(800, 600)):
    """The model's vertices in the viewer's picture: x and y in pixels."""
    clip = model.positions @ model.global_matrix @ desk.viewer.view @ desk.viewer.projection
    return (clip[:, 0] / clip[:, 3] + 1) / 2 * size[0], (1 - clip[:, 1] / clip[:, 3]) / 2 * size[1]


def pick(desk, model, vertices, modifiers=(), margin=3):
    """Drags a pick rectangle over these vertices."""
    x, y = on_screen(desk, model)
    x, y = x[vertices], y[vertices]
    desk.viewer.press(x.min() - margin, y.min() - margin, 1, modifiers)
    desk.viewer.move(x.mean(), y.mean())
    desk.viewer.move(x.max() + margin, y.max() + margin)
    desk.viewer.release(x.max() + margin, y.max() + margin)


def weights_of(model):
    """The weights of all vertices, vertices x links."""
    offsets, links, weights = model.skin.csr()
    table = np.zeros((len(offsets) - 1, len(model.skin.links)))
    np.add.at(table, (np.repeat(np.arange(len(offsets) - 1), np.diff(offsets)), links), weights)
    return table
