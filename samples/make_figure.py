#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the built-in character: samples/figure.glb, and samples/figure.json with the facts that tests ask for.

    samples/make_figure.py [FOLDER]      (without a folder: the one this program lies in)

The same program always writes the same bytes. What the character is like stands in samples/README.md.
"""
import json
import sys
from pathlib import Path

import numpy as np

import figure_rig
import figure_shape
from glb import ARRAY_BUFFER, ELEMENT_ARRAY_BUFFER, GlbBuilder, grey_png, skin_attributes

# The deliberate mistake: a patch on the upper side of the left forearm hangs on the head.
RIGHT_BONE, WRONG_BONE, WRONG_SHARE = "Forearm.L", "Head", 0.625
PATCH_ALONG_BONE = (0.38, 0.75)

SKIN, SUIT = 0, 1


def bare_skin(points):
    """Above zero where the figure shows skin (head and hands), below where it wears its suit; in metres."""
    above_collar = points[:, 1] - 1.484 + 0.25 * points[:, 2]
    past_cuff = np.minimum(0.8 * (np.abs(points[:, 0]) - 0.572) - 0.6 * (points[:, 1] - 1.0985), points[:, 1] - 0.7)
    return np.maximum(above_collar, past_cuff)


def smooth_hems(vertices, triangles):
    """Draws the vertices where skin and suit meet onto the line between them, so that collar and cuffs are even."""
    for _ in range(4):
        bare = bare_skin(vertices[triangles].mean(axis=1)) > 0
        touches = np.zeros((len(vertices), 2), dtype=bool)
        for corner in range(3):
            touches[triangles[bare, corner], SKIN] = True
            touches[triangles[~bare, corner], SUIT] = True
        hem = np.nonzero(touches[:, SKIN] & touches[:, SUIT])[0]
        points, step = vertices[hem], 1.0 / 4096
        slope = np.empty_like(points)
        for axis in range(3):
            ahead, behind = points.copy(), points.copy()
            ahead[:, axis] += step
            behind[:, axis] -= step
            slope[:, axis] = (bare_skin(ahead) - bare_skin(behind)) / (2 * step)
        squared = figure_shape.length(slope)[:, None] ** 2
        vertices = vertices.copy()
        vertices[hem] = figure_shape.onto_surface(points - bare_skin(points)[:, None] * slope / squared)
    return vertices, np.where(bare, SKIN, SUIT)


def front_or_back(vertices, triangles):
    """0 for triangles that face forward, 1 for the rest; lone triangles follow their neighbours."""
    a, b, c = (vertices[triangles[:, k]] for k in range(3))
    back = (figure_shape.cross(b - a, c - a)[:, 2] < 0).astype(np.int64)
    pairs = np.sort(np.concatenate([triangles[:, [0, 1]], triangles[:, [1, 2]], triangles[:, [2, 0]]]), axis=1)
    owner = np.tile(np.arange(len(triangles)), 3)
    order = np.lexsort((pairs[:, 1], pairs[:, 0]))
    sides = owner[order].reshape(-1, 2)
    for _ in range(4):
        votes = np.zeros(len(triangles), dtype=np.int64)
        np.add.at(votes, sides[:, 0], back[sides[:, 1]])
        np.add.at(votes, sides[:, 1], back[sides[:, 0]])
        back = np.where(votes >= 2, 1, 0)
    return back


def texture_coordinates(points, back):
    """The front is laid out in the texture's left half, the back, mirrored, in its right half."""
    u = np.where(back == 0, 0.25 + 0.31 * points[:, 0], 0.75 - 0.31 * points[:, 0])
    return np.stack([u, 0.98 - 0.31 * points[:, 1]], axis=1)


def patch_on_forearm(points, normals, bone):
    """The vertices of the mistake: on the upper side of the bone's middle."""
    axis = [t - h for h, t in zip(bone.head, bone.tail)]
    squared = axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]
    along = sum((points[:, k] - bone.head[k]) * axis[k] for k in range(3)) / squared
    upper = normals[:, 1] > 0.1
    return np.nonzero((along > PATCH_ALONG_BONE[0]) & (along < PATCH_ALONG_BONE[1]) & upper
                      & (points[:, 0] > bone.head[0]))[0]


def make_surface():
    """Positions, triangles, and per triangle its material and its side: the body and two eyes."""
    vertices, triangles = figure_shape.make_body()
    vertices, material = smooth_hems(vertices, triangles)
    parts = [(vertices, triangles, material)]
    for side in (1.0, -1.0):
        eye, faces = figure_shape.make_ball((side * 0.043, 1.685, 0.100), 0.019)
        parts.append((eye, faces, np.full(len(faces), SUIT)))
    first, positions, corners, materials, sides = 0, [], [], [], []
    for vertices, triangles, material in parts:
        positions.append(vertices)
        corners.append(triangles + first)
        materials.append(material)
        sides.append(front_or_back(vertices, triangles))
        first += len(vertices)
    # A grid of 1/65536 m, which a float holds exactly: what is written does not hang on the last bit of a sum.
    positions = np.floor(np.concatenate(positions) * 65536 + 0.5) / 65536
    return positions, np.concatenate(corners), np.concatenate(materials), np.concatenate(sides), len(parts[0][0])


def make_weights(points, triangles, normals, bones, body_count):
    """Dense weights with the mistake in them, and the vertices of the mistake."""
    name = {bone.name: index for index, bone in enumerate(bones)}
    weights = figure_rig.bone_weights(points, bones)
    edges = figure_shape.edges_of(triangles)
    weights = 0.5 * weights + 0.5 * figure_shape.neighbour_mean(weights, edges)
    weights[body_count:] = 0.0
    weights[body_count:, name["Head"]] = 1.0
    patch = patch_on_forearm(points, normals, bones[name[RIGHT_BONE]])
    # A rectangle dragged over the patch also takes what lies below it. All of that must hang on one bone alone, so that
    # giving every picked vertex one and the same spread brings back exactly what the mistake replaced.
    low, high = points[patch].min(axis=0) - 0.004, points[patch].max(axis=0) + 0.004
    under = np.all((points[:, :2] >= low[:2]) & (points[:, :2] <= high[:2]), axis=1)
    assert np.all(weights[under, name[RIGHT_BONE]] == 1.0), "the patch must hang on one bone alone"
    weights[patch] = 0.0
    weights[patch, name[RIGHT_BONE]] = 1.0 - WRONG_SHARE
    weights[patch, name[WRONG_BONE]] = WRONG_SHARE
    return weights, patch


def add_primitive(builder, surface, normals, attributes, material):
    """One primitive: vertices are numbered anew, and split where front and back of the texture meet."""
    positions, triangles, materials, sides, _ = surface
    chosen = materials == material
    corners = triangles[chosen].ravel()
    side = np.repeat(sides[chosen], 3)
    keys, index = np.unique(corners * 2 + side, return_inverse=True)
    vertex, back = keys // 2, keys % 2
    joints, weights = attributes
    return {
        "attributes": {
            "POSITION": builder.add_accessor(positions[vertex].astype(np.float32), ARRAY_BUFFER, bounds=True),
            "NORMAL": builder.add_accessor(normals[vertex].astype(np.float32), ARRAY_BUFFER),
            "TEXCOORD_0": builder.add_accessor(
                texture_coordinates(positions[vertex], back).astype(np.float32), ARRAY_BUFFER),
            "JOINTS_0": builder.add_accessor(joints[vertex], ARRAY_BUFFER),
            "WEIGHTS_0": builder.add_accessor(weights[vertex], ARRAY_BUFFER),
        },
        "indices": builder.add_accessor(index.astype(np.uint16), ELEMENT_ARRAY_BUFFER),
        "material": material,
    }, len(keys)


def add_walk(builder, bones):
    """The animation, its joints counted from node 1."""
    times, rotations, hips = figure_rig.walk(bones)
    clock = builder.add_accessor(np.array(times, dtype=np.float32), bounds=True)
    samplers, channels = [], []
    curves = [(0, "translation", hips)] + [(index, "rotation", keys) for index, keys in rotations.items()]
    for bone, path, keys in curves:
        channels.append({"sampler": len(samplers), "target": {"node": 1 + bone, "path": path}})
        samplers.append({"input": clock, "output": builder.add_accessor(np.array(keys, dtype=np.float32))})
    return {"name": "Walk", "samplers": samplers, "channels": channels}


def bone_nodes(bones):
    """The skeleton's nodes, in the order of the bones, which come right after the model's own node."""
    nodes = []
    for index, bone in enumerate(bones):
        translation, rotation = figure_rig.rest_local(bone, bones)
        children = [1 + k for k, other in enumerate(bones) if other.parent == index]
        node = {"name": bone.name, "translation": translation, "rotation": rotation}
        nodes.append({**node, "children": children} if children else node)
    return nodes


def make_materials(builder):
    """Two materials that share one quiet checker texture, in which the seams of the layout can be seen."""
    rows, columns = np.indices((64, 64)) // 4 % 2
    png = grey_png(np.where(rows == columns, 255, 232).astype(np.uint8))
    image = {"name": "Checker", "bufferView": builder.add_view(png), "mimeType": "image/png"}
    materials = [{"name": name, "pbrMetallicRoughness": {"baseColorFactor": colour, "baseColorTexture": {"index": 0},
                                                        "metallicFactor": 0, "roughnessFactor": 0.8}}
                 for name, colour in (("Skin", [0.86, 0.62, 0.47, 1]), ("Suit", [0.13, 0.24, 0.42, 1]))]
    return {"materials": materials, "textures": [{"source": 0, "sampler": 0}], "images": [image],
            "samplers": [{"magFilter": 9729, "minFilter": 9987, "wrapS": 33071, "wrapT": 33071}]}


def make_figure():
    """The bytes of the .glb and the facts about it."""
    bones = figure_rig.make_bones()
    surface = make_surface()
    positions, triangles, body_count = surface[0], surface[1], surface[4]
    normals = figure_shape.mesh_normals(positions, triangles)
    weights, patch = make_weights(positions, triangles, normals, bones, body_count)
    attributes = skin_attributes(weights)
    normals = np.floor(normals * 32768 + 0.5) / 32768

    builder = GlbBuilder()
    skin, skin_count = add_primitive(builder, surface, normals, attributes, SKIN)
    suit, suit_count = add_primitive(builder, surface, normals, attributes, SUIT)
    bind = builder.add_accessor(figure_rig.inverse_bind_matrices(bones))
    document = {
        "asset": {"version": "2.0", "generator": "samples/make_figure.py", "copyright": "CC0-1.0 The Skindesk authors"},
        "scene": 0,
        "scenes": [{"name": "Scene", "nodes": [0, 1]}],
        "nodes": [{"name": "Figure", "mesh": 0, "skin": 0}] + bone_nodes(bones),
        "meshes": [{"name": "Body", "primitives": [skin, suit]}],
        "skins": [{"name": "Skeleton", "skeleton": 1, "joints": list(range(1, 1 + len(bones))),
                   "inverseBindMatrices": bind}],
        "animations": [add_walk(builder, bones)],
        **make_materials(builder),
    }
    facts = {
        "model": "Figure",
        "bones": [bone.name for bone in bones],
        "animation": "Walk",
        "vertices": len(positions),
        "file_vertices": skin_count + suit_count,
        "triangles": len(triangles),
        "mistake": {
            "wrong_bone": WRONG_BONE,
            "right_bone": RIGHT_BONE,
            "wrong_weight": round(float(attributes[1][patch[0]][0]), 6),
            "vertices": len(patch),
            "box_min": positions[patch].min(axis=0).tolist(),
            "box_max": positions[patch].max(axis=0).tolist(),
        },
    }
    return builder.finish(document), json.dumps(facts, indent=2) + "\n"


def main(arguments):
    if len(arguments) > 1 or (arguments and arguments[0].startswith("-")):
        print(__doc__)
        return 0 if arguments in (["-h"], ["--help"]) else 2
    folder = Path(arguments[0]) if arguments else Path(__file__).parent
    data, facts = make_figure()
    (folder / "figure.glb").write_bytes(data)
    (folder / "figure.json").write_text(facts, encoding="utf-8")
    print(f"{folder / 'figure.glb'}: {len(data)} bytes\n{facts}", end="")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
