# SPDX-License-Identifier: MIT
"""Checks the surfaces of a file against the written schema, and what a schema cannot say: that numbers fit together."""
import json
import struct
from pathlib import Path

import jsonschema

SCHEMA = Path(__file__).resolve().parents[2] / "docs" / "schema" / "TW_nurbs_surface.schema.json"


def validator():
    return jsonschema.Draft202012Validator(json.loads(SCHEMA.read_text(encoding="utf-8")))


def document_of(path):
    """The JSON of a .glb or .gltf."""
    data = Path(path).read_bytes()
    if data[:4] != b"glTF":
        return json.loads(data)
    length = struct.unpack_from("<I", data, 12)[0]
    return json.loads(data[20:20 + length])


def check_file(path):
    """Fails when a surface of the file is not as the schema and the page say; answers how many there are."""
    document, surfaces = document_of(path), 0
    for mesh in document.get("meshes", []):
        surface = mesh.get("extensions", {}).get("TW_nurbs_surface")
        if surface is None:
            continue
        surfaces += 1
        validator().validate(surface)
        _check_numbers(document, mesh, surface)
    assert ("TW_nurbs_surface" in document.get("extensionsUsed", [])) == (surfaces > 0)
    assert "TW_nurbs_surface" not in document.get("extensionsRequired", [])
    return surfaces


def _check_numbers(document, mesh, surface):
    accessors = document["accessors"]
    for degree, count, knots in zip(surface["degree"], surface["count"], surface["knots"]):
        assert count > degree
        assert len(knots) == count + degree + 1
        assert knots == sorted(knots)
        assert knots[degree] < knots[count]
    points = surface["count"][0] * surface["count"][1]
    kinds = {"POSITION": "VEC3", "POINT_WEIGHT": "SCALAR"}
    for name, accessor in surface["attributes"].items():
        assert accessors[accessor]["count"] == points
        assert accessors[accessor]["type"] == kinds.get(name, "VEC4")
    for accessor in mesh["primitives"][0]["attributes"].values():
        assert accessors[accessor]["count"] == surface["grid"][0] * surface["grid"][1]
