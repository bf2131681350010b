# SPDX-License-Identifier: MIT
"""Where the vertices of a glTF file are at a time, worked out from its bytes with NumPy alone, in double precision.

Written from the definition of the format and from nothing of the desk, to be compared with it: node transforms,
animations (step, linear, cubic spline), morph targets, then linear blend skinning.
"""
import base64
import json
import pathlib
import struct
import sys
import urllib.parse

import numpy as np

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from glb_reader import COMPONENTS, WIDTHS  # noqa: E402

TYPES = COMPONENTS | {5120: "i1", 5122: "<i2"}
LARGEST = {5120: 127, 5121: 255, 5122: 32767, 5123: 65535}


def matrix_of(translation, rotation, scale):
    """Column vectors: scaled first, then rotated, then moved."""
    x, y, z, w = np.asarray(rotation, float) / np.linalg.norm(rotation)
    turn = np.array([[1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)],
                     [2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)],
                     [2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)]])
    matrix = np.eye(4)
    matrix[:3, :3] = turn * np.asarray(scale, float)
    matrix[:3, 3] = translation
    return matrix


class Character:
    """One file."""

    def __init__(self, path):
        path = pathlib.Path(path)
        data = path.read_bytes()
        binary = b""
        if data[:4] == b"glTF":
            length = struct.unpack_from("<I", data, 12)[0]
            self.json, binary = json.loads(data[20:20 + length]), data[28 + length:]
        else:
            self.json = json.loads(data)
        self.buffers = []
        for buffer in self.json["buffers"]:
            uri = buffer.get("uri")
            if uri is None:
                self.buffers.append(binary)
            elif uri.startswith("data:"):
                self.buffers.append(base64.b64decode(uri.split(",", 1)[1]))
            else:
                self.buffers.append((path.parent / urllib.parse.unquote(uri)).read_bytes())

    def _read(self, view, offset, component, count, width):
        entry = self.json["bufferViews"][view]
        kind = np.dtype(TYPES[component])
        stride = entry.get("byteStride", kind.itemsize * width)
        start = entry.get("byteOffset", 0) + offset
        return np.ndarray((count, width), kind, self.buffers[entry["buffer"]], start, (stride, kind.itemsize)).copy()

    def array(self, number):
        entry = self.json["accessors"][number]
        width, component = WIDTHS[entry["type"]], entry["componentType"]
        if "bufferView" in entry:
            values = self._read(entry["bufferView"], entry.get("byteOffset", 0), component, entry["count"], width)
        else:
            values = np.zeros((entry["count"], width), TYPES[component])
        if "sparse" in entry:
            sparse = entry["sparse"]
            where, what = sparse["indices"], sparse["values"]
            places = self._read(where["bufferView"], where.get("byteOffset", 0), where["componentType"],
                                sparse["count"], 1)
            values[places[:, 0]] = self._read(what["bufferView"], what.get("byteOffset", 0), component,
                                              sparse["count"], width)
        if entry.get("normalized"):
            return np.maximum(values / LARGEST[component], -1.0)
        return values

    # Animation.

    def duration(self, animation):
        return max(float(self.array(sampler["input"]).max())
                   for sampler in self.json["animations"][animation]["samplers"])

    def _sample(self, sampler, seconds, path):
        keys = self.array(sampler["input"])[:, 0].astype(float)
        how = sampler.get("interpolation", "LINEAR")
        values = self.array(sampler["output"]).astype(float)
        parts = 3 if how == "CUBICSPLINE" else 1
        values = values.reshape(len(keys), parts, -1)
        middle = parts // 2  # a cubic spline has tangents on both sides of the value
        if seconds <= keys[0]:
            return values[0, middle]
        if seconds >= keys[-1]:
            return values[-1, middle]
        key = int(np.searchsorted(keys, seconds, side="right")) - 1
        span = keys[key + 1] - keys[key]
        t = (seconds - keys[key]) / span
        here, there = values[key, middle], values[key + 1, middle]
        if how == "STEP":
            return here
        if how == "CUBICSPLINE":
            out, into = values[key, 2], values[key + 1, 0]
            return ((2 * t**3 - 3 * t**2 + 1) * here + span * (t**3 - 2 * t**2 + t) * out
                    + (3 * t**2 - 2 * t**3) * there + span * (t**3 - t**2) * into)
        if path != "rotation":
            return here + t * (there - here)
        here, there = here / np.linalg.norm(here), there / np.linalg.norm(there)
        cosine = here @ there
        if cosine < 0:
            there, cosine = -there, -cosine
        angle = np.arccos(min(cosine, 1.0))
        if angle < 1e-8:
            return here
        return (np.sin((1 - t) * angle) * here + np.sin(t * angle) * there) / np.sin(angle)

    def _animated(self, animation, seconds):
        """What the animation says: {(node, path): value}."""
        said = {}
        if animation is not None:
            entry = self.json["animations"][animation]
            for channel in entry["channels"]:
                target = channel["target"]
                if "node" in target:
                    said[target["node"], target["path"]] = self._sample(entry["samplers"][channel["sampler"]], seconds,
                                                                        target["path"])
        return said

    # The scene.

    def globals(self, animation=None, seconds=0.0):
        """The global matrix of every node (column vectors)."""
        said = self._animated(animation, seconds)
        nodes, matrices = self.json["nodes"], {}

        def local(number):
            node = nodes[number]
            if "matrix" in node:
                return np.array(node["matrix"], float).reshape(4, 4).T
            part = {path: said.get((number, path), node.get(path, rest)) for path, rest in
                    (("translation", [0, 0, 0]), ("rotation", [0, 0, 0, 1]), ("scale", [1, 1, 1]))}
            return matrix_of(part["translation"], part["rotation"], part["scale"])

        children = {child for node in nodes for child in node.get("children", [])}
        open_nodes = [(number, np.eye(4)) for number in range(len(nodes)) if number not in children]
        while open_nodes:
            number, above = open_nodes.pop()
            matrices[number] = above @ local(number)
            open_nodes += [(child, matrices[number]) for child in nodes[number].get("children", [])]
        return matrices

    def mesh_nodes(self):
        return [number for number, node in enumerate(self.json["nodes"]) if "mesh" in node]

    def positions(self, node, animation=None, seconds=0.0):
        """The places in the scene of the vertices of each primitive that the node shows: a list of n x 3."""
        entry, matrices = self.json["nodes"][node], self.globals(animation, seconds)
        mesh = self.json["meshes"][entry["mesh"]]
        morph = self._animated(animation, seconds).get((node, "weights"), entry.get("weights", mesh.get("weights", [])))
        places = []
        for primitive in mesh["primitives"]:
            points = self.array(primitive["attributes"]["POSITION"]).astype(float)
            for weight, target in zip(morph, primitive.get("targets", [])):
                if "POSITION" in target:
                    points = points + weight * self.array(target["POSITION"])
            points = np.column_stack([points, np.ones(len(points))])
            unskinned = points @ matrices[node].T
            places.append((self._skinned(entry["skin"], primitive["attributes"], points, unskinned, matrices)
                           if "skin" in entry else unskinned)[:, :3])
        return places

    def _skinned(self, skin, attributes, points, unskinned, matrices):
        entry = self.json["skins"][skin]
        inverse = (self.array(entry["inverseBindMatrices"]).astype(float).reshape(-1, 4, 4).transpose(0, 2, 1)
                   if "inverseBindMatrices" in entry else np.tile(np.eye(4), (len(entry["joints"]), 1, 1)))
        carry = np.stack([matrices[joint] @ inverse[number] for number, joint in enumerate(entry["joints"])])
        blended, total = np.zeros_like(points), np.zeros(len(points))
        number = 0
        while f"JOINTS_{number}" in attributes:
            joints = self.array(attributes[f"JOINTS_{number}"]).astype(int)
            weights = self.array(attributes[f"WEIGHTS_{number}"]).astype(float)
            for slot in range(joints.shape[1]):
                blended += weights[:, slot, None] * np.einsum("nij,nj->ni", carry[joints[:, slot]], points)
                total += weights[:, slot]
            number += 1
        held = total != 0
        result = unskinned.copy()
        result[held] = blended[held] / total[held, None]
        return result
