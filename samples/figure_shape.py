# SPDX-License-Identifier: MIT
"""The body of the built-in character: a blend of rounded cones and ellipsoids, turned into a smooth triangle mesh.

The body is a signed distance field (negative inside, metres). It is polygonised by naive surface nets: one vertex in
every grid cell that the surface crosses, one quad across every grid edge that it crosses. The vertices are then evened
out and drawn onto the surface.

The field uses only additions, multiplications, divisions and square roots, element by element: these are rounded the
same way by every processor, so the mesh is the same everywhere, to the last bit.

Y is up, the figure looks along +Z, its left is +X.
"""
import math

import numpy as np

_LEFT_RIGHT = (1.0, -1.0)


def _cone(points, start, end, radius_start, radius_end):
    """Distance to a rod from start to end whose radius changes evenly (close to the surface; an estimate far off)."""
    axis = [e - s for s, e in zip(start, end)]
    length_squared = axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]
    x, y, z = points[0] - start[0], points[1] - start[1], points[2] - start[2]
    t = np.clip((x * axis[0] + y * axis[1] + z * axis[2]) / length_squared, 0.0, 1.0)
    dx, dy, dz = x - t * axis[0], y - t * axis[1], z - t * axis[2]
    return np.sqrt(dx * dx + dy * dy + dz * dz) - (radius_start + t * (radius_end - radius_start))


def _ellipsoid(points, centre, radii):
    """Distance to an ellipsoid, estimated from the distance to the unit sphere and its slope."""
    x, y, z = ((p - c) / r for p, c, r in zip(points, centre, radii))
    k0 = np.sqrt(x * x + y * y + z * z)
    k1 = np.sqrt((x / radii[0]) * (x / radii[0]) + (y / radii[1]) * (y / radii[1]) + (z / radii[2]) * (z / radii[2]))
    return k0 * (k0 - 1.0) / np.maximum(k1, 1e-9)


def _blend(a, b, width):
    """The nearer of two distances, with a fillet of the given width where they meet."""
    h = np.maximum(width - np.abs(a - b), 0.0) / width
    return np.minimum(a, b) - h * h * width * 0.25


def _arm(points, side):
    shoulder, elbow, wrist = (side * 0.165, 1.395, 0.0), (side * 0.394, 1.232, -0.005), (side * 0.590, 1.085, 0.01)
    knuckles, tips = (side * 0.660, 1.033, 0.016), (side * 0.735, 0.975, 0.022)
    arm = _cone(points, shoulder, elbow, 0.062, 0.047)
    arm = _blend(arm, _cone(points, elbow, wrist, 0.048, 0.035), 0.02)
    # The palm is two rods side by side, one behind the other; the fingers are held together.
    for offset in (-0.022, 0.022):
        middle = (knuckles[0], knuckles[1], knuckles[2] + offset)
        palm = _cone(points, wrist, middle, 0.030, 0.029)
        palm = _blend(palm, _cone(points, middle, (tips[0], tips[1], tips[2] + 0.6 * offset), 0.029, 0.021), 0.015)
        arm = _blend(arm, palm, 0.03)
    thumb = _cone(points, (side * 0.625, 1.062, 0.040), (side * 0.672, 1.040, 0.098), 0.025, 0.021)
    return _blend(arm, thumb, 0.02)


def _leg(points, side):
    hip, knee, ankle = (side * 0.092, 0.90, 0.0), (side * 0.105, 0.50, 0.012), (side * 0.112, 0.10, -0.015)
    leg = _cone(points, hip, knee, 0.090, 0.059)
    leg = _blend(leg, _cone(points, knee, ankle, 0.057, 0.041), 0.04)
    leg = _blend(leg, _ellipsoid(points, (side * 0.107, 0.36, -0.020), (0.048, 0.14, 0.048)), 0.06)
    heel, ball, toe = (side * 0.112, 0.050, -0.030), (side * 0.118, 0.044, 0.07), (side * 0.122, 0.038, 0.150)
    foot = _blend(_cone(points, heel, ball, 0.050, 0.046), _cone(points, ball, toe, 0.046, 0.038), 0.03)
    return _blend(leg, foot, 0.06)


def body_distance(points):
    """Signed distance to the body; points is a sequence of three arrays x, y, z of one shape."""
    body = _ellipsoid(points, (0.0, 0.955, 0.0), (0.158, 0.130, 0.110))
    body = _blend(body, _ellipsoid(points, (0.0, 1.10, 0.008), (0.130, 0.16, 0.100)), 0.08)
    body = _blend(body, _ellipsoid(points, (0.0, 1.285, 0.0), (0.170, 0.165, 0.112)), 0.08)
    for side in _LEFT_RIGHT:
        body = _blend(body, _cone(points, (side * 0.04, 1.415, -0.005), (side * 0.155, 1.390, 0.0), 0.050, 0.060), 0.06)
    body = _blend(body, _cone(points, (0.0, 1.42, -0.012), (0.0, 1.56, 0.0), 0.060, 0.054), 0.05)
    head = _ellipsoid(points, (0.0, 1.665, -0.004), (0.115, 0.130, 0.122))
    head = _blend(head, _ellipsoid(points, (0.0, 1.590, 0.035), (0.074, 0.058, 0.070)), 0.07)
    head = _blend(head, _cone(points, (0.0, 1.668, 0.110), (0.0, 1.630, 0.132), 0.014, 0.022), 0.04)
    for side in _LEFT_RIGHT:
        head = _blend(head, _ellipsoid(points, (side * 0.118, 1.645, -0.008), (0.022, 0.040, 0.030)), 0.02)
    body = _blend(body, head, 0.03)
    # Left and right meet only at the trunk, or the legs would grow together at the knees.
    arms = np.minimum(_arm(points, 1.0), _arm(points, -1.0))
    legs = _blend(_leg(points, 1.0), _leg(points, -1.0), 0.02)
    return _blend(_blend(body, arms, 0.04), legs, 0.06)


def _field_normals(points):
    """Unit outward slope of the field at points (n x 3)."""
    step = 1.0 / 4096
    gradient = np.empty_like(points)
    for axis in range(3):
        ahead, behind = points.copy(), points.copy()
        ahead[:, axis] += step
        behind[:, axis] -= step
        gradient[:, axis] = body_distance(ahead.T) - body_distance(behind.T)
    return gradient / length(gradient)[:, None]


def length(vectors):
    """Length of each row of an n x 3 array, added in a fixed order."""
    return np.sqrt(vectors[:, 0] * vectors[:, 0] + vectors[:, 1] * vectors[:, 1] + vectors[:, 2] * vectors[:, 2])


def onto_surface(points, steps=3):
    """Moves points along the field's slope until they lie on the surface."""
    for _ in range(steps):
        points = points - body_distance(points.T)[:, None] * _field_normals(points)
    return points


def _axis(*stretches):
    """Grid lines: stretches of (first, last, number of cells), each beginning where the one before ended."""
    lines = [np.array([stretches[0][0]])]
    for first, last, cells in stretches:
        lines.append(first + (last - first) * np.arange(1, cells + 1) / cells)
    return np.concatenate(lines)


def _surface_nets(lines):
    """Polygonises the body on a grid with the given lines along x, y and z: (vertices n x 3, quads m x 4)."""
    shape = tuple(len(line) for line in lines)
    field = body_distance(np.meshgrid(*lines, indexing="ij"))
    inside = field < 0.0
    position_sum = np.zeros(tuple(n - 1 for n in shape) + (3,))
    crossings = np.zeros(tuple(n - 1 for n in shape), dtype=np.int64)
    for axis in range(3):
        low, high = [slice(None)] * 3, [slice(None)] * 3
        low[axis], high[axis] = slice(None, -1), slice(1, None)
        i, j, k = edge = np.nonzero(inside[tuple(low)] != inside[tuple(high)])
        start = field[tuple(low)][edge]
        t = start / (start - field[tuple(high)][edge])
        place = np.stack([lines[0][i], lines[1][j], lines[2][k]], axis=1)
        place[:, axis] += t * (lines[axis][edge[axis] + 1] - lines[axis][edge[axis]])
        across = [a for a in range(3) if a != axis]
        for first in (0, 1):
            for second in (0, 1):
                cell = [np.array(index) for index in edge]
                cell[across[0]] = cell[across[0]] - first
                cell[across[1]] = cell[across[1]] - second
                np.add.at(position_sum, tuple(cell), place)
                np.add.at(crossings, tuple(cell), 1)
    used = crossings > 0
    number = np.full(crossings.shape, -1)
    number[used] = np.arange(np.count_nonzero(used))
    vertices = position_sum[used] / crossings[used][:, None]
    quads = [_quads_across(axis, inside, number) for axis in range(3)]
    return vertices, np.concatenate(quads)


def _quads_across(axis, inside, number):
    """One quad around every grid edge along `axis` that the surface crosses, counter-clockwise from outside."""
    low, high = [slice(None)] * 3, [slice(None)] * 3
    low[axis], high[axis] = slice(None, -1), slice(1, None)
    leaving = inside[tuple(low)] & ~inside[tuple(high)]
    entering = ~inside[tuple(low)] & inside[tuple(high)]
    u, v = (axis + 1) % 3, (axis + 2) % 3
    quads = []
    for edges, order in ((leaving, (0, 1, 2, 3)), (entering, (3, 2, 1, 0))):
        edge = np.nonzero(edges)
        corners = []
        for du, dv in ((-1, -1), (0, -1), (0, 0), (-1, 0)):
            cell = [np.array(index) for index in edge]
            cell[u] = cell[u] + du
            cell[v] = cell[v] + dv
            corners.append(number[tuple(cell)])
        quads.append(np.stack([corners[o] for o in order], axis=1))
    return np.concatenate(quads)


def mesh_normals(vertices, triangles):
    """Unit normals per vertex: the mean of the triangles around it, larger triangles counting more."""
    a, b, c = (vertices[triangles[:, k]] for k in range(3))
    faces = cross(b - a, c - a)
    total = np.zeros_like(vertices)
    for corner in range(3):
        np.add.at(total, triangles[:, corner], faces)
    return total / length(total)[:, None]


def cross(a, b):
    """Cross products of the rows of two n x 3 arrays."""
    return np.stack([a[:, 1] * b[:, 2] - a[:, 2] * b[:, 1], a[:, 2] * b[:, 0] - a[:, 0] * b[:, 2],
                     a[:, 0] * b[:, 1] - a[:, 1] * b[:, 0]], axis=1)


def edges_of(triangles):
    """The mesh's edges, each once: m x 2, lower vertex number first."""
    pairs = np.concatenate([triangles[:, [0, 1]], triangles[:, [1, 2]], triangles[:, [2, 0]]])
    return np.unique(np.sort(pairs, axis=1), axis=0)


def neighbour_mean(values, edges):
    """For each vertex the mean of its neighbours' values (n x k)."""
    total = np.zeros_like(values)
    count = np.zeros(len(values))
    for a, b in ((0, 1), (1, 0)):
        np.add.at(total, edges[:, a], values[edges[:, b]])
        np.add.at(count, edges[:, a], 1.0)
    return total / count[:, None]


def _split_quads(vertices, quads):
    """Two triangles from each quad, cut along the shorter diagonal."""
    first = length(vertices[quads[:, 0]] - vertices[quads[:, 2]]) <= length(vertices[quads[:, 1]] - vertices[quads[:, 3]])
    a, b, c, d = quads.T
    return np.concatenate([np.where(first[:, None], np.stack([a, b, c], axis=1), np.stack([a, b, d], axis=1)),
                           np.where(first[:, None], np.stack([a, c, d], axis=1), np.stack([b, c, d], axis=1))])


def make_body():
    """The body's mesh: positions (n x 3, metres) and triangles (m x 3, counter-clockwise from outside)."""
    # Cells are smaller where hands, feet and head need them.
    lines = (_axis((-0.78, -0.57, 11), (-0.57, -0.14, 15), (-0.14, 0.14, 11), (0.14, 0.57, 15), (0.57, 0.78, 11)),
             _axis((-0.03, 0.11, 6), (0.11, 0.96, 27), (0.96, 1.48, 20), (1.48, 1.84, 17)),
             _axis((-0.165, 0.215, 15)))
    vertices, quads = _surface_nets(lines)
    quad_edges = edges_of(np.concatenate([quads[:, [0, 1, 2]], quads[:, [0, 2, 3]]]))
    for _ in range(6):
        vertices = onto_surface(0.5 * vertices + 0.5 * neighbour_mean(vertices, quad_edges), steps=2)
    return vertices, _split_quads(vertices, quads)


def make_ball(centre, radius, around=10, rows=6):
    """A closed ball with a pole at its top and bottom: positions (n x 3) and triangles (m x 3)."""
    ring = _circle(around)
    arc = _circle(2 * rows)[:rows + 1]
    points, triangles = [(0.0, 1.0, 0.0)], []
    for row in range(1, rows):
        points += [(arc[row][1] * c, arc[row][0], arc[row][1] * s) for c, s in ring]
    points.append((0.0, -1.0, 0.0))
    last = len(points) - 1
    for k in range(around):
        n = (k + 1) % around
        triangles.append((0, 1 + n, 1 + k))
        for row in range(rows - 2):
            a, b = 1 + row * around, 1 + (row + 1) * around
            triangles += [(a + k, a + n, b + k), (a + n, b + n, b + k)]
        triangles.append((last, last - around + k, last - around + n))
    return np.array(points) * radius + np.array(centre), np.array(triangles)


def _circle(count):
    """(cosine, sine) of `count` even steps around the unit circle, rounded so that they are the same everywhere."""
    turns = [2 * math.pi * k / count for k in range(count)]
    return [(round(math.cos(turn), 6), round(math.sin(turn), 6)) for turn in turns]
