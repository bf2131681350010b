# SPDX-License-Identifier: MIT
"""The built-in character's skeleton, its skin weights and its walk.

Bones stand in metres; a bone's own Y axis runs along it, as animation programs export them. Rotations here are plain
3 x 3 lists of rows acting on column vectors, and quaternions are (x, y, z, w). What leaves this file is rounded to six
decimals, so that the last bit of a sine does not show in the file.
"""
import math

import numpy as np

# name, parent, head, tail; the right side is made from the left.
_MIDDLE = [
    ("Hips", None, (0.0, 0.95, 0.0), (0.0, 1.06, 0.0)),
    ("Spine", "Hips", (0.0, 1.06, 0.0), (0.0, 1.22, 0.0)),
    ("Chest", "Spine", (0.0, 1.22, 0.0), (0.0, 1.43, -0.01)),
    ("Neck", "Chest", (0.0, 1.43, -0.01), (0.0, 1.55, 0.0)),
    ("Head", "Neck", (0.0, 1.55, 0.0), (0.0, 1.74, 0.0)),
]
_LEFT = [
    ("Shoulder", "Chest", (0.03, 1.40, 0.0), (0.165, 1.395, 0.0)),
    ("UpperArm", "Shoulder", (0.165, 1.395, 0.0), (0.394, 1.232, -0.005)),
    ("Forearm", "UpperArm", (0.394, 1.232, -0.005), (0.590, 1.085, 0.01)),
    ("Hand", "Forearm", (0.590, 1.085, 0.01), (0.735, 0.975, 0.02)),
    ("Thigh", "Hips", (0.092, 0.92, 0.0), (0.105, 0.50, 0.012)),
    ("Shin", "Thigh", (0.105, 0.50, 0.012), (0.112, 0.09, -0.015)),
    ("Foot", "Shin", (0.112, 0.09, -0.015), (0.118, 0.045, 0.075)),
    ("Toes", "Foot", (0.118, 0.045, 0.075), (0.122, 0.038, 0.15)),
]
# How far from a bone its flesh reaches, roughly: distances are compared after division by it.
_GIRTH = {"Hips": 0.13, "Spine": 0.12, "Chest": 0.14, "Neck": 0.055, "Head": 0.115, "Shoulder": 0.07, "UpperArm": 0.055,
          "Forearm": 0.045, "Hand": 0.035, "Thigh": 0.08, "Shin": 0.055, "Foot": 0.045, "Toes": 0.042}


class Bone:
    """One bone in its rest pose. `axes` has the bone's axes as columns, in the character's space."""

    def __init__(self, name, parent, head, tail):
        self.name, self.parent, self.head, self.tail = name, parent, head, tail
        self.axes = _axes_along(_minus(tail, head))

    @property
    def girth(self):
        return _GIRTH[self.name.split(".")[0]]


def make_bones():
    """All bones, parents before children; `parent` is an index into the list, None for the root."""
    rows = list(_MIDDLE)
    for side, sign in (("L", 1.0), ("R", -1.0)):
        for name, parent, head, tail in _LEFT:
            above = parent if parent in ("Chest", "Hips") else f"{parent}.{side}"
            rows.append((f"{name}.{side}", above, (sign * head[0],) + head[1:], (sign * tail[0],) + tail[1:]))
    number = {row[0]: index for index, row in enumerate(rows)}
    return [Bone(name, None if parent is None else number[parent], head, tail) for name, parent, head, tail in rows]


def rest_local(bone, bones):
    """A bone's rest translation and rotation (quaternion) in its parent."""
    if bone.parent is None:
        return list(bone.head), _rounded(_quaternion(bone.axes))
    parent = bones[bone.parent]
    offset = _apply(_transposed(parent.axes), _minus(bone.head, parent.head))
    return _rounded(offset), _rounded(_quaternion(_product(_transposed(parent.axes), bone.axes)))


def inverse_bind_matrices(bones):
    """The inverse of each bone's rest transform, column after column as glTF stores them (n x 4 x 4 float32).

    They are computed from the rounded local transforms that the file holds, so that the rest pose is the bind pose.
    """
    places, matrices = {}, []
    for index, bone in enumerate(bones):
        translation, quaternion = rest_local(bone, bones)
        axes, place = _matrix(quaternion), translation
        if bone.parent is not None:
            above_axes, above_place = places[bone.parent]
            place = [a + b for a, b in zip(_apply(above_axes, translation), above_place)]
            axes = _product(above_axes, axes)
        places[index] = (axes, place)
        back = _apply(_transposed(axes), place)
        columns = [[axes[c][0], axes[c][1], axes[c][2], 0.0] for c in range(3)]
        matrices.append(_rounded_rows(columns) + [_rounded([-b for b in back]) + [1.0]])
    return np.array(matrices, dtype=np.float32)


def bone_weights(points, bones):
    """How strongly each bone pulls each point, by distance to the bones (n x bones, rows sum to one).

    The nearest bone counts 1, one twice as far 1/256, and what is below 0.1 falls away smoothly.
    """
    distances = np.stack([_distance_to(points, bone) / bone.girth for bone in bones], axis=1)
    ratio = distances.min(axis=1)[:, None] / distances
    fourth = ratio * ratio * ratio * ratio
    weights = np.maximum(fourth * fourth - 0.1, 0.0)
    total = np.zeros(len(points))
    for column in range(weights.shape[1]):
        total = total + weights[:, column]
    return weights / total[:, None]


def walk(bones, steps=12):
    """One second of walking in place, first key equal to the last.

    Gives key times (seconds), rotations {bone index: one quaternion per key} and the hips' translations per key.
    """
    times = [step / steps for step in range(steps + 1)]
    poses = [_pose(time % 1.0) for time in times]
    rotations = {}
    for index, bone in enumerate(bones):
        if bone.name not in poses[0]:
            continue
        above = bones[bone.parent].axes if bone.parent is not None else _rotation((1.0, 0.0, 0.0), 0.0)
        keys = [_quaternion(_product(_transposed(above), _product(pose[bone.name], bone.axes))) for pose in poses]
        rotations[index] = [_rounded(key) for key in _same_hemisphere(keys)]
    hips = [_rounded([0.0, bones[0].head[1] - 0.012 - 0.016 * math.cos(4 * math.pi * time), 0.0]) for time in times]
    return times, rotations, hips


def _pose(phase):
    """Each moving bone's turn out of the rest pose at a moment of the walk (0 to 1), about the rest pose's axes."""
    x, y, z = (1.0, 0.0, 0.0), (0.0, 1.0, 0.0), (0.0, 0.0, 1.0)
    swing, turn = math.sin(2 * math.pi * phase), 2 * math.pi * phase
    pose = {
        "Hips": _product(_rotation(y, -6 * swing), _rotation(z, 2.5 * math.cos(turn))),
        "Spine": _rotation(x, 2.0),
        "Chest": _rotation(y, 12 * swing),
        "Neck": _rotation(x, 2 * math.cos(2 * turn)),
        "Head": _rotation(y, -6 * swing),
    }
    for side, sign in (("L", 1.0), ("R", -1.0)):
        leg, lift = sign * swing, sign * math.cos(turn - 0.35)
        pose["Thigh." + side] = _rotation(x, -4 - 26 * leg)
        pose["Shin." + side] = _rotation(x, 24 + 22 * lift)
        pose["Foot." + side] = _rotation(x, -10 + 10 * lift)
        pose["Toes." + side] = _rotation(x, -10 * max(0.0, -leg))
        lowered = _rotation(z, -sign * 44)
        pose["UpperArm." + side] = _product(_rotation(x, 26 * leg), lowered)
        pose["Forearm." + side] = _rotation((-0.6, -sign * 0.8, 0.0), 26 - 12 * leg)
    return pose


def _distance_to(points, bone):
    axis = _minus(bone.tail, bone.head)
    x, y, z = (points[:, k] - bone.head[k] for k in range(3))
    t = np.clip((x * axis[0] + y * axis[1] + z * axis[2]) / _dot(axis, axis), 0.0, 1.0)
    dx, dy, dz = x - t * axis[0], y - t * axis[1], z - t * axis[2]
    return np.maximum(np.sqrt(dx * dx + dy * dy + dz * dz), 1e-4)


def _axes_along(direction):
    """A right-handed frame, as rows of a matrix whose columns are the axes, with Y along the direction."""
    y = _unit(direction)
    x = _unit(_cross(y, (0.0, 0.0, 1.0) if abs(y[2]) < 0.8 else (0.0, -1.0, 0.0)))
    z = _cross(x, y)
    return [[x[k], y[k], z[k]] for k in range(3)]


def _rotation(axis, degrees):
    x, y, z = axis
    c, s = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    d = 1.0 - c
    return [[c + x * x * d, x * y * d - z * s, x * z * d + y * s],
            [x * y * d + z * s, c + y * y * d, y * z * d - x * s],
            [x * z * d - y * s, y * z * d + x * s, c + z * z * d]]


def _quaternion(m):
    """The quaternion of a rotation matrix, from its largest component so that nothing is divided by almost zero."""
    squares = [1 + m[0][0] - m[1][1] - m[2][2], 1 - m[0][0] + m[1][1] - m[2][2], 1 - m[0][0] - m[1][1] + m[2][2],
               1 + m[0][0] + m[1][1] + m[2][2]]
    best = squares.index(max(squares))
    double = math.sqrt(max(squares))
    sums = {(0, 1): m[0][1] + m[1][0], (0, 2): m[0][2] + m[2][0], (1, 2): m[1][2] + m[2][1],
            (0, 3): m[2][1] - m[1][2], (1, 3): m[0][2] - m[2][0], (2, 3): m[1][0] - m[0][1]}
    parts = [double / 2 if k == best else sums[min(k, best), max(k, best)] / (2 * double) for k in range(4)]
    return parts if parts[3] >= 0 else [-part for part in parts]


def _matrix(q):
    x, y, z, w = _unit(q)
    return [[1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)],
            [2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)],
            [2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)]]


def _same_hemisphere(keys):
    """Turns signs so that each quaternion is interpolated the short way from the one before."""
    turned = [keys[0]]
    for key in keys[1:]:
        turned.append(key if _dot(key, turned[-1]) >= 0 else [-part for part in key])
    return turned


def _product(a, b):
    return [[sum(a[r][k] * b[k][c] for k in range(3)) for c in range(3)] for r in range(3)]


def _apply(m, v):
    return [sum(m[r][k] * v[k] for k in range(3)) for r in range(3)]


def _transposed(m):
    return [[m[c][r] for c in range(3)] for r in range(3)]


def _minus(a, b):
    return [p - q for p, q in zip(a, b)]


def _dot(a, b):
    return sum(p * q for p, q in zip(a, b))


def _cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def _unit(v):
    size = math.sqrt(_dot(v, v))
    return [part / size for part in v]


def _rounded(v):
    """Six decimals; minus zero becomes zero."""
    return [round(part, 6) + 0.0 for part in v]


def _rounded_rows(rows):
    return [_rounded(row) for row in rows]
