#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the fish: three NURBS surfaces on eight bones, with one animation.

    samples/make_fish.py [FOLDER]

Writes fish.glb into the folder, by default the one of this program. The same program always writes the same bytes.
Metres, Y up, the fish looks along +Z. The body is closed around: its rings are circles of nine control points of which
the last lies where the first does, stretched to ovals.
"""
import math
import sys
from pathlib import Path

import numpy as np

from glb import GlbBuilder
from nurbs import Surface, add_surface, clamped_knots

# Name, parent, place of the joint along Z and Y (metres).
BONES = [
    ("Chest", None, 0.06, 0.0),
    ("Head", "Chest", 0.12, 0.0),
    ("Spine.1", "Chest", 0.02, 0.0),
    ("Spine.2", "Spine.1", -0.06, 0.0),
    ("Spine.3", "Spine.2", -0.13, 0.0),
    ("Tail", "Spine.3", -0.20, 0.0),
    ("TailFin", "Tail", -0.25, 0.0),
    ("BackFin", "Spine.1", 0.02, 0.06),
]
# The body's rings from nose to tail: place along Z, half width, half height, height of the middle.
RINGS = [(0.220, 0.0, 0.0, 0.0), (0.215, 0.016, 0.018, 0.0), (0.17, 0.034, 0.045, 0.003), (0.10, 0.046, 0.068, 0.004),
         (0.02, 0.044, 0.072, 0.002), (-0.06, 0.034, 0.056, 0.0), (-0.13, 0.021, 0.036, 0.0), (-0.20, 0.010, 0.019, 0.0),
         (-0.25, 0.005, 0.014, 0.0), (-0.262, 0.003, 0.010, 0.0), (-0.264, 0.0, 0.0, 0.0)]
# Corners and middles of a square around a circle: with these weights the curve is the circle.
AROUND = [(0, -1), (-1, -1), (-1, 0), (-1, 1), (0, 1), (1, 1), (1, 0), (1, -1), (0, -1)]
QUARTER_KNOTS = [0, 0, 0, 0.25, 0.25, 0.5, 0.5, 0.75, 0.75, 1, 1, 1]
KEYS = 9


def make_body():
    """Degree 2 around by 3 along; both ends are poles, the seam runs along the belly."""
    around = np.array(AROUND, dtype=float)
    points = np.array([[(x * wide, y * high + middle, z) for x, y in around] for z, wide, high, middle in RINGS])
    corner = math.sqrt(0.5)
    weights = np.tile([1 if k % 2 == 0 else corner for k in range(len(around))], (len(RINGS), 1))
    return Surface("Body", (2, 3), (QUARTER_KNOTS, clamped_knots(len(RINGS), 3)), points, weights, (33, 49))


def make_tail_fin():
    """Degree 3 from top to bottom by 2 from root to edge, thin and curved a little."""
    rows = []
    for t, reach in ((0.0, 0.012), (0.45, 0.045), (1.0, 0.085)):
        heights = np.linspace(reach, -reach, 6)
        fork = 0.035 * t * (1 - np.abs(np.linspace(1, -1, 6)) ** 2)
        rows.append([(0.004 * t * math.sin(3 * y / reach), y, -0.245 - 0.085 * t + f) for y, f in zip(heights, fork)])
    return Surface("TailFin", (3, 2), (clamped_knots(6, 3), clamped_knots(3, 2)), np.array(rows), None, (17, 9))


def make_back_fin():
    """Degree 2 by 1: along the back, and up."""
    along = np.linspace(0.07, -0.07, 5)
    rows = [[(0.0, 0.060 - 5 * (z - 0.02) ** 2, z) for z in along],
            [(0.0, 0.096 - 5 * (z + 0.01) ** 2, z - 0.01) for z in along]]
    return Surface("BackFin", (2, 1), (clamped_knots(5, 2), clamped_knots(2, 1)), np.array(rows), None, (13, 5))


def bone_index(name):
    return [bone[0] for bone in BONES].index(name)


def chain_weights(points):
    """Points x bones: between the middles of two bones of the chain, the weight goes over from one to the other."""
    chain = ["Head", "Chest", "Spine.1", "Spine.2", "Spine.3", "Tail"]
    middles = [0.17, 0.09, -0.02, -0.095, -0.165, -0.23]
    table = np.zeros((len(points), len(BONES)))
    for k, name in enumerate(chain):
        rise = 1.0 if k == 0 else (middles[k - 1] - points[:, 2]) / (middles[k - 1] - middles[k])
        fall = 1.0 if k + 1 == len(chain) else (points[:, 2] - middles[k + 1]) / (middles[k] - middles[k + 1])
        table[:, bone_index(name)] = np.clip(np.minimum(rise, fall), 0, 1)
    return table / table.sum(axis=1)[:, None]


def fin_weights(surface, fin):
    """The root row hangs on the body, the last one on the fin's bone."""
    points = surface.points.reshape(-1, 3)
    part = np.repeat(np.linspace(0, 1, surface.count[1]), surface.count[0])[:, None]
    own = np.zeros((len(points), len(BONES)))
    own[:, bone_index(fin)] = 1
    return own * part + chain_weights(points) * (1 - part)


def bone_nodes(first):
    """The skeleton's nodes, numbered from `first`; the bones are not turned, so places are differences."""
    nodes = []
    for name, parent, z, y in BONES:
        _, _, above_z, above_y = (None, None, 0.0, 0.0) if parent is None else BONES[bone_index(parent)]
        node = {"name": name, "translation": [0, round(y - above_y, 6), round(z - above_z, 6)]}
        children = [first + k for k, bone in enumerate(BONES) if bone[1] == name]
        nodes.append({**node, "children": children} if children else node)
    return nodes


def add_swim(builder, first):
    """One second: a wave runs down the body, each bone turned around Y against the one before."""
    times = np.arange(KEYS) / (KEYS - 1)
    clock = builder.add_accessor(times.astype(np.float32), bounds=True)
    samplers, channels = [], []
    for name, degrees, behind in (("Head", 5, 0.0), ("Spine.1", 6, 0.15), ("Spine.2", 9, 0.3), ("Spine.3", 12, 0.42),
                                  ("Tail", 16, 0.55), ("TailFin", 20, 0.68)):
        half = np.radians(degrees) / 2 * np.sin(2 * np.pi * (times - behind))
        half[-1] = half[0]
        keys = np.stack([0 * half, np.sin(half), 0 * half, np.cos(half)], axis=1)
        channels.append({"sampler": len(samplers), "target": {"node": first + bone_index(name), "path": "rotation"}})
        samplers.append({"input": clock, "output": builder.add_accessor(keys.astype(np.float32))})
    return {"name": "Swim", "samplers": samplers, "channels": channels}


def make_fish():
    """The bytes of the .glb."""
    body, tail, back = make_body(), make_tail_fin(), make_back_fin()
    builder = GlbBuilder()
    meshes = [add_surface(builder, body, chain_weights(body.points.reshape(-1, 3)), 0),
              add_surface(builder, tail, fin_weights(tail, "TailFin"), 1),
              add_surface(builder, back, fin_weights(back, "BackFin"), 1)]
    bind = np.tile(np.eye(4), (len(BONES), 1, 1))
    bind[:, 3, 1] = [-bone[3] for bone in BONES]
    bind[:, 3, 2] = [-bone[2] for bone in BONES]
    first = len(meshes)
    names = ("Fish Body", "Fish Tail", "Fish Back")
    return builder.finish({
        "asset": {"version": "2.0", "generator": "samples/make_fish.py", "copyright": "CC0-1.0 The Skindesk authors"},
        "extensionsUsed": ["TW_nurbs_surface"],
        "scene": 0,
        "scenes": [{"name": "Scene", "nodes": list(range(first + 1))}],
        "nodes": [{"name": name, "mesh": k, "skin": 0} for k, name in enumerate(names)] + bone_nodes(first),
        "meshes": meshes,
        "skins": [{"name": "Bones", "skeleton": first, "joints": list(range(first, first + len(BONES))),
                   "inverseBindMatrices": builder.add_accessor(bind.astype(np.float32))}],
        "animations": [add_swim(builder, first)],
        "materials": [{"name": name, "doubleSided": True, "pbrMetallicRoughness": {
            "baseColorFactor": colour, "metallicFactor": 0, "roughnessFactor": 0.6}}
                      for name, colour in (("Scales", [0.9, 0.35, 0.1, 1]), ("Fins", [0.95, 0.6, 0.2, 1]))],
    })


def main(arguments):
    if len(arguments) > 1 or (arguments and arguments[0].startswith("-")):
        print(__doc__)
        return 0 if arguments in (["-h"], ["--help"]) else 2
    path = (Path(arguments[0]) if arguments else Path(__file__).parent) / "fish.glb"
    data = make_fish()
    path.write_bytes(data)
    print(f"{path}: {len(data)} bytes")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
