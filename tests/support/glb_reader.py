# SPDX-License-Identifier: MIT
"""Reads a binary glTF file for Python tests: independent of the readers that are tested, and only as much as needed."""
import json
import struct

import numpy as np

COMPONENTS = {5121: "u1", 5123: "<u2", 5125: "<u4", 5126: "<f4"}
WIDTHS = {"SCALAR": 1, "VEC2": 2, "VEC3": 3, "VEC4": 4, "MAT4": 16}


class Glb:
    """A .glb whose accessors lie tightly packed in its own buffer."""

    def __init__(self, data):
        length = struct.unpack_from("<I", data, 12)[0]
        assert struct.unpack_from("<4sII", data) == (b"glTF", 2, len(data))
        self.json = json.loads(data[20:20 + length])
        self.binary = data[28 + length:]

    def array(self, accessor):
        entry = self.json["accessors"][accessor]
        view = self.json["bufferViews"][entry["bufferView"]]
        width = WIDTHS[entry["type"]]
        flat = np.frombuffer(self.binary, COMPONENTS[entry["componentType"]], entry["count"] * width, view["byteOffset"])
        return flat.reshape(entry["count"], width)

    def attribute(self, name):
        """One attribute over all primitives of the first mesh, one after the other."""
        primitives = self.json["meshes"][0]["primitives"]
        return np.concatenate([self.array(primitive["attributes"][name]) for primitive in primitives])

    def rest_matrices(self):
        """The global rest transform of every node (column vectors)."""
        matrices = {}

        def visit(index, above):
            node = self.json["nodes"][index]
            x, y, z, w = node.get("rotation", [0, 0, 0, 1])
            local = np.eye(4)
            local[:3, :3] = [[1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)],
                             [2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)],
                             [2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)]]
            local[:3, 3] = node.get("translation", [0, 0, 0])
            matrices[index] = above @ local
            for child in node.get("children", []):
                visit(child, matrices[index])

        for root in self.json["scenes"][0]["nodes"]:
            visit(root, np.eye(4))
        return matrices
