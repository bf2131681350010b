# SPDX-License-Identifier: MIT
"""Builds a binary glTF file in memory: arrays in, bytes out.

The samples are made with it. It knows only what they need: one buffer, tightly packed accessors, every buffer view
aligned to four bytes. The same arrays always give the same bytes.
"""
import json
import struct
import zlib

import numpy as np

ARRAY_BUFFER = 34962
ELEMENT_ARRAY_BUFFER = 34963

_COMPONENT_TYPES = {
    np.dtype("uint8"): 5121,
    np.dtype("uint16"): 5123,
    np.dtype("uint32"): 5125,
    np.dtype("float32"): 5126,
}
_ELEMENT_TYPES = {(): "SCALAR", (2,): "VEC2", (3,): "VEC3", (4,): "VEC4", (4, 4): "MAT4"}


class GlbBuilder:
    """Collects accessors and images; `finish` adds them to a document and gives the bytes of the file."""

    def __init__(self):
        self._binary = bytearray()
        self._views = []
        self._accessors = []

    def add_view(self, data, target=None):
        """Appends bytes as a buffer view of their own; answers its index."""
        self._binary.extend(b"\0" * (-len(self._binary) % 4))
        view = {"buffer": 0, "byteOffset": len(self._binary), "byteLength": len(data)}
        if target is not None:
            view["target"] = target
        self._binary.extend(data)
        self._views.append(view)
        return len(self._views) - 1

    def add_accessor(self, array, target=None, bounds=False):
        """Appends an array of n elements (n, n x 2, n x 3, n x 4 or n x 4 x 4); answers the accessor's index.

        `bounds` also stores the smallest and largest value per component, as positions and key times need them.
        Matrices are given as they are meant to lie in the file: column after column.
        """
        array = np.ascontiguousarray(array)
        accessor = {
            "bufferView": self.add_view(array.astype(array.dtype.newbyteorder("<")).tobytes(), target),
            "componentType": _COMPONENT_TYPES[array.dtype],
            "count": len(array),
            "type": _ELEMENT_TYPES[array.shape[1:]],
        }
        if bounds:
            accessor["min"] = np.atleast_1d(array.min(axis=0)).tolist()
            accessor["max"] = np.atleast_1d(array.max(axis=0)).tolist()
        self._accessors.append(accessor)
        return len(self._accessors) - 1

    def finish(self, document):
        """Completes the document (a dict without buffers, views and accessors) and answers the file's bytes."""
        document = dict(document)
        document["accessors"] = self._accessors
        document["bufferViews"] = self._views
        document["buffers"] = [{"byteLength": len(self._binary)}]
        text = json.dumps(document, separators=(",", ":"), ensure_ascii=False).encode()
        text += b" " * (-len(text) % 4)
        binary = bytes(self._binary) + b"\0" * (-len(self._binary) % 4)
        length = 12 + 8 + len(text) + 8 + len(binary)
        return (struct.pack("<4sII", b"glTF", 2, length) + struct.pack("<I4s", len(text), b"JSON") + text
                + struct.pack("<I4s", len(binary), b"BIN\0") + binary)


def skin_attributes(weights):
    """Turns dense weights (n x bones, each row summing to one) into JOINTS_0 and WEIGHTS_0 arrays.

    The four largest are kept, largest first. Weights are rounded to 1/1024, which a float holds exactly, and the
    largest takes what rounding left over: so each vertex sums to exactly one in any order of addition.
    """
    order = np.argsort(-weights, axis=1, kind="stable")[:, :4]
    kept = np.take_along_axis(weights, order, axis=1)
    total = kept[:, 0] + kept[:, 1] + kept[:, 2] + kept[:, 3]
    parts = np.floor(kept / total[:, None] * 1024 + 0.5).astype(np.int64)
    parts[:, 0] += 1024 - parts.sum(axis=1)
    joints = np.where(parts > 0, order, 0).astype(np.uint8)
    return joints, (parts / 1024).astype(np.float32)


def grey_png(pixels):
    """The bytes of an 8-bit grey PNG of a height x width array of uint8."""

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    height, width = pixels.shape
    rows = b"".join(b"\0" + row.tobytes() for row in pixels)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))
