# SPDX-License-Identifier: MIT
"""NURBS surfaces for the samples: evaluation by NumPy, and the mesh entry of the extension TW_nurbs_surface.

Arrays of control points are nV x nU x 3: as in the file, U runs fastest.
"""
from dataclasses import dataclass

import numpy as np

from glb import ARRAY_BUFFER, ELEMENT_ARRAY_BUFFER, skin_attributes

GRID_STEPS = 1 / 32768  # what is computed is rounded to this, so that every machine writes the same bytes


@dataclass
class Surface:
    """One surface. `weights` (nV x nU) are the rational weights, None when all are one."""
    name: str
    degree: tuple
    knots: tuple
    points: np.ndarray
    weights: np.ndarray | None
    grid: tuple

    @property
    def count(self):
        return self.points.shape[1], self.points.shape[0]


def clamped_knots(count, degree):
    """Knots from 0 to 1 with full ends and even steps between."""
    inner = np.arange(1, count - degree) / (count - degree)
    return np.concatenate([np.zeros(degree + 1), inner, np.ones(degree + 1)])


def basis(knots, degree, count, parameters):
    """All basis functions at all parameters, len(parameters) x count (the recursion of Cox and de Boor)."""
    knots, parameters = np.asarray(knots, dtype=float), np.asarray(parameters, dtype=float)[:, None]
    last = np.flatnonzero(knots[:-1] < knots[1:])[-1]
    values = ((knots[:-1] <= parameters) & (parameters < knots[1:])).astype(float)
    values[parameters[:, 0] == knots[last + 1], last] = 1
    for p in range(1, degree + 1):
        left, right = knots[p:-1] - knots[:-p - 1], knots[p + 1:] - knots[1:-p]
        rise = np.where(left > 0, (parameters - knots[:-p - 1]) / np.where(left > 0, left, 1), 0)
        fall = np.where(right > 0, (knots[p + 1:] - parameters) / np.where(right > 0, right, 1), 0)
        values = rise * values[:, :-1] + fall * values[:, 1:]
    return values[:, :count]


def slopes(knots, degree, count, parameters):
    """The derivatives of the basis functions, len(parameters) x count."""
    knots = np.asarray(knots, dtype=float)
    lower = basis(knots, degree - 1, count + 1, parameters)
    width = knots[degree:degree + count + 1] - knots[:count + 1]
    scaled = np.where(width > 0, degree * lower / np.where(width > 0, width, 1), 0)
    return scaled[:, :-1] - scaled[:, 1:]


def domain(surface, direction):
    """The parameters of the rows or columns of the grid."""
    degree, count, knots = surface.degree[direction], surface.count[direction], surface.knots[direction]
    return np.linspace(knots[degree], knots[count], surface.grid[direction])


def shares(surface):
    """How much of every vertex of the grid belongs to which control point: vertices x points, rows sum to one."""
    u, v = (basis(surface.knots[d], surface.degree[d], surface.count[d], domain(surface, d)) for d in (0, 1))
    weights = np.ones(surface.points.shape[:2]) if surface.weights is None else surface.weights
    table = np.einsum("bj,ai,ji->baji", v, u, weights).reshape(len(u) * len(v), -1)
    return table / table.sum(axis=1)[:, None]


def tessellate(surface):
    """Positions, unit normals and triangles of the grid."""
    weights = np.ones(surface.points.shape[:2]) if surface.weights is None else surface.weights
    lifted = np.concatenate([surface.points * weights[..., None], weights[..., None]], axis=2)
    places = [np.clip(domain(surface, d), *_inner(surface, d)) for d in (0, 1)]  # a pole has no normal of its own
    (u, v), (du, dv) = ([make(surface.knots[d], surface.degree[d], surface.count[d], places[d]) for d in (0, 1)]
                        for make in (basis, slopes))
    point, along_u, along_v = (np.einsum("bj,ai,jic->bac", right, left, lifted).reshape(-1, 4)
                               for right, left in ((v, u), (v, du), (dv, u)))
    there = point[:, :3] / point[:, 3:]
    normals = np.cross(along_u[:, :3] - along_u[:, 3:] * there, along_v[:, :3] - along_v[:, 3:] * there)
    normals /= np.sqrt((normals * normals).sum(axis=1))[:, None]
    positions = shares(surface) @ surface.points.reshape(-1, 3)
    wide, high = surface.grid
    a = (np.arange(high - 1)[:, None] * wide + np.arange(wide - 1)).ravel()
    triangles = np.stack([a, a + 1, a + wide + 1, a, a + wide + 1, a + wide], axis=1)
    return _rounded(positions), _rounded(normals), triangles.reshape(-1, 3)


def _inner(surface, direction):
    ends = domain(surface, direction)[[0, -1]]
    step = (ends[1] - ends[0]) * 1e-4
    return ends[0] + step, ends[1] - step


def _rounded(values):
    return (np.floor(values / GRID_STEPS + 0.5) * GRID_STEPS).astype(np.float32)


def add_surface(builder, surface, influences, material):
    """The mesh entry of a surface. `influences`: points x bones, each row sums to one.

    The control points get what `skin_attributes` makes of them, and the polygon mesh beside them the sum of these by the
    rational basis.
    """
    points = _rounded(surface.points.reshape(-1, 3))
    joints, weights = skin_attributes(influences)
    rounded = np.zeros_like(influences)
    np.put_along_axis(rounded, joints.astype(np.int64), 0, axis=1)
    np.add.at(rounded, (np.arange(len(joints))[:, None], joints), weights)
    grid_joints, grid_weights = skin_attributes(shares(surface) @ rounded)
    attributes = {"POSITION": builder.add_accessor(points, ARRAY_BUFFER, bounds=True)}
    if surface.weights is not None:
        attributes["POINT_WEIGHT"] = builder.add_accessor(surface.weights.astype(np.float32).ravel(), ARRAY_BUFFER)
    attributes["JOINTS_0"] = builder.add_accessor(joints, ARRAY_BUFFER)
    attributes["WEIGHTS_0"] = builder.add_accessor(weights, ARRAY_BUFFER)
    positions, normals, triangles = tessellate(surface)
    return {
        "name": surface.name,
        "primitives": [{
            "attributes": {
                "POSITION": builder.add_accessor(positions, ARRAY_BUFFER, bounds=True),
                "NORMAL": builder.add_accessor(normals / np.linalg.norm(normals.astype(float), axis=1)[:, None].astype(
                    np.float32), ARRAY_BUFFER),
                "JOINTS_0": builder.add_accessor(grid_joints, ARRAY_BUFFER),
                "WEIGHTS_0": builder.add_accessor(grid_weights, ARRAY_BUFFER),
            },
            "indices": builder.add_accessor(triangles.ravel().astype(np.uint16), ELEMENT_ARRAY_BUFFER),
            "material": material,
        }],
        "extensions": {"TW_nurbs_surface": {
            "degree": list(surface.degree),
            "count": list(surface.count),
            "knots": [list(map(float, knots)) for knots in surface.knots],
            "grid": list(surface.grid),
            "attributes": attributes,
        }},
    }
