#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes a skinned mesh of any size, for measuring: a standing, slightly bulging tube on a chain of bones.

    samples/make_big.py --vertices N [--bones 20] OUT.glb

The mesh has exactly N vertices (at least 12) without seams, four influences each, a chain of bones named Bone.00,
Bone.01, ... and a one-second sway. Positions are metres; the tube is two metres tall.
"""
import argparse
import math
import sys
from pathlib import Path

import numpy as np

from glb import ARRAY_BUFFER, ELEMENT_ARRAY_BUFFER, GlbBuilder

HEIGHT = 2.0


def tube_shape(count):
    """How many vertices lie around the tube, how many full rings it has, and how many are left for its top."""
    around = max(3, min(count // 3, round(math.sqrt(count / 4))))
    return around, count // around, count % around


def make_tube(count):
    """Positions and normals (count x 3 float32) and triangles (m x 3 uint32) of the tube."""
    around, rings, left = tube_shape(count)
    number = np.arange(rings * around)
    height = (number // around) / max(rings - 1, 1)
    turn = 2 * np.pi * (number % around) / around
    radius = 0.18 + 0.05 * np.sin(3 * np.pi * height)
    positions = np.stack([radius * np.sin(turn), HEIGHT * height, radius * np.cos(turn)], axis=1)
    slope = 0.05 * 3 * np.pi / HEIGHT * np.cos(3 * np.pi * height)
    normals = np.stack([np.sin(turn), -slope, np.cos(turn)], axis=1) / np.sqrt(1 + slope * slope)[:, None]

    ring, step = np.divmod(np.arange((rings - 1) * around), around)
    a, b = ring * around + step, ring * around + (step + 1) % around
    triangles = np.stack([a, b, b + around, a, b + around, a + around], axis=1).reshape(-1, 3)

    top = 2 * np.pi * np.arange(left) / max(left, 1)
    lid = np.stack([0.5 * radius[-1] * np.sin(top), np.full(left, HEIGHT), 0.5 * radius[-1] * np.cos(top)], axis=1)
    positions = np.concatenate([positions, lid])
    normals = np.concatenate([normals, np.tile([0.0, 1.0, 0.0], (left, 1))])
    triangles = np.concatenate([triangles, _lid_triangles((rings - 1) * around, around, rings * around, left)])
    return positions.astype(np.float32), normals.astype(np.float32), triangles.astype(np.uint32)


def _lid_triangles(outer, outer_count, inner, inner_count):
    """The strip between the last ring and the vertices that were left over, which make a smaller ring inside it."""
    triangles, i, j = [], 0, 0
    while inner_count and (i < outer_count or j < inner_count):
        a, b = outer + i % outer_count, inner + j % inner_count
        if j >= inner_count or (i < outer_count and (i + 1) * inner_count <= (j + 1) * outer_count):
            i += 1
            triangles.append((a, outer + i % outer_count, b))
        else:
            j += 1
            if inner_count > 1:
                triangles.append((a, inner + j % inner_count, b))
    return np.array(triangles, dtype=np.int64).reshape(-1, 3)


def make_influences(positions, bone_count):
    """JOINTS_0 (uint8) and WEIGHTS_0 (float32): the four nearest bones of the chain, smoothly by height."""
    place = positions[:, 1].astype(np.float64) / HEIGHT * bone_count - 0.5
    first = np.clip(np.floor(place).astype(np.int64) - 1, 0, bone_count - 4)
    joints = first[:, None] + np.arange(4)
    reach = np.maximum(1.0 - np.abs(joints - place[:, None]) / 2.5, 0.1)
    parts = np.floor(reach * reach / (reach * reach).sum(axis=1)[:, None] * 1024 + 0.5).astype(np.int64)
    parts[:, 1] += 1024 - parts.sum(axis=1)
    order = np.argsort(-parts, axis=1, kind="stable")
    return (np.take_along_axis(joints, order, axis=1).astype(np.uint8),
            (np.take_along_axis(parts, order, axis=1) / 1024).astype(np.float32))


def make_big(count, bone_count):
    """The bytes of the .glb."""
    positions, normals, triangles = make_tube(count)
    joints, weights = make_influences(positions, bone_count)
    spacing = HEIGHT / bone_count
    bind = np.tile(np.eye(4), (bone_count, 1, 1))
    bind[:, 3, 1] = -spacing * np.arange(bone_count)

    builder = GlbBuilder()
    primitive = {
        "attributes": {
            "POSITION": builder.add_accessor(positions, ARRAY_BUFFER, bounds=True),
            "NORMAL": builder.add_accessor(normals, ARRAY_BUFFER),
            "JOINTS_0": builder.add_accessor(joints, ARRAY_BUFFER),
            "WEIGHTS_0": builder.add_accessor(weights, ARRAY_BUFFER),
        },
        "indices": builder.add_accessor(triangles.ravel(), ELEMENT_ARRAY_BUFFER),
        "material": 0,
    }
    nodes = [{"name": "Tube", "mesh": 0, "skin": 0}]
    for bone in range(bone_count):
        node = {"name": f"Bone.{bone:02d}", "translation": [0, spacing if bone else 0, 0], "rotation": [0, 0, 0, 1]}
        nodes.append({**node, "children": [bone + 2]} if bone + 1 < bone_count else node)
    return builder.finish({
        "asset": {"version": "2.0", "generator": "samples/make_big.py"},
        "scene": 0,
        "scenes": [{"nodes": [0, 1]}],
        "nodes": nodes,
        "meshes": [{"primitives": [primitive]}],
        "materials": [{"pbrMetallicRoughness": {"baseColorFactor": [0.6, 0.7, 0.8, 1], "metallicFactor": 0}}],
        "skins": [{"joints": list(range(1, bone_count + 1)), "inverseBindMatrices": builder.add_accessor(
            bind.astype(np.float32))}],
        "animations": [_sway(builder, bone_count)],
    })


def _sway(builder, bone_count):
    """Every bone leans a little to one side and the other."""
    times = np.array([0, 0.25, 0.5, 0.75, 1], dtype=np.float32)
    half = np.radians(4) / 2 * np.array([0, 1, 0, -1, 0])
    keys = np.stack([0 * half, 0 * half, np.sin(half), np.cos(half)], axis=1).astype(np.float32)
    sampler = {"input": builder.add_accessor(times, bounds=True), "output": builder.add_accessor(keys)}
    return {"name": "Sway", "samplers": [sampler],
            "channels": [{"sampler": 0, "target": {"node": 1 + bone, "path": "rotation"}} for bone in range(bone_count)]}


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--vertices", type=int, required=True, help="how many vertices, at least 12")
    parser.add_argument("--bones", type=int, default=20, help="how many bones, 4 to 256")
    parser.add_argument("out", type=Path)
    options = parser.parse_args(arguments)
    if options.vertices < 12:
        parser.error("--vertices must be at least 12")
    if not 4 <= options.bones <= 256:
        parser.error("--bones must be 4 to 256")
    data = make_big(options.vertices, options.bones)
    options.out.write_bytes(data)
    print(f"{options.out}: {options.vertices} vertices, {options.bones} bones, {len(data)} bytes")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
