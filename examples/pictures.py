# SPDX-License-Identifier: MIT
"""Writes pictures of the viewer."""
import os
import struct
import zlib


def write_png(path, pixels):
    """Writes a height x width x 3 array of uint8 as a PNG; the file is there whole or not at all."""
    height, width, _ = pixels.shape
    # Every row begins with its filter, 0: none.
    rows = b"".join(b"\0" + pixels[y].tobytes() for y in range(height))
    data = (b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + _chunk(b"IDAT", zlib.compress(rows, 6)) + _chunk(b"IEND", b""))
    part = f"{path}.part"
    try:
        with open(part, "wb") as file:
            file.write(data)
        os.replace(part, path)
    except OSError:
        if os.path.exists(part):
            os.remove(part)
        raise


def _chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
