# SPDX-License-Identifier: MIT
"""Finds patches of a skin that a far-away bone pulls by mistake.

For each bone, the vertices that it pulls noticeably fall into patches joined by mesh edges. Usually that is one patch
around the bone. A second, small patch far off, in the midst of vertices that other bones pull, is most likely a slip.
"""
from dataclasses import dataclass

import numpy as np

NOTICEABLE = 0.25  # of 1: the least pull that counts
SMALL = 0.1  # of the bone's largest patch


@dataclass
class StrayPatch:
    bone: str
    link: int
    vertices: np.ndarray  # vertex numbers of the model, ascending


def find_stray_patch(model):
    """The largest stray patch of a skinned model, or None."""
    offsets, links, weights = model.skin.csr()
    owner = np.repeat(np.arange(len(offsets) - 1), np.diff(offsets))
    strong = np.asarray(weights) > NOTICEABLE
    # A place is one vertex pulled by one bone; its key sorts by bone, then vertex.
    count = len(offsets) - 1
    places = np.unique(np.asarray(links)[strong].astype(np.int64) * count + owner[strong])
    if len(places) == 0 or len(model.polygons) == 0:
        return None
    patch_of = _join(places, count, _edges(model))
    pulled_alone = np.zeros(count, dtype=bool)
    pulled_alone[owner[np.asarray(weights) > 0.999]] = True
    return _strayest(model, places // count, places % count, patch_of, pulled_alone)


def _edges(model):
    """The mesh's edges, each once (m x 2)."""
    polygons = model.polygons
    lengths = np.fromiter(map(len, polygons), dtype=np.int64, count=len(polygons))
    corners = np.fromiter((v for polygon in polygons for v in polygon), dtype=np.int64, count=lengths.sum())
    last = np.cumsum(lengths) - 1
    following = np.roll(corners, -1)
    following[last] = corners[last - lengths + 1]
    pairs = np.sort(np.column_stack([corners, following]), axis=1)
    keys = np.unique(pairs[:, 0] * (corners.max() + 1) + pairs[:, 1])
    return np.column_stack(np.divmod(keys, corners.max() + 1))


def _join(places, count, edges):
    """A patch number for every place: places of one bone at the two ends of an edge are in one patch."""
    starts, ends = [], []
    for bone in np.unique(places // count):
        first, stop = np.searchsorted(places, [bone * count, (bone + 1) * count])
        number = np.full(count, -1)
        number[places[first:stop] - bone * count] = np.arange(first, stop)
        joined = (number[edges[:, 0]] >= 0) & (number[edges[:, 1]] >= 0)
        starts.append(number[edges[joined, 0]])
        ends.append(number[edges[joined, 1]])
    a, b = np.concatenate(starts), np.concatenate(ends)
    label = np.arange(len(places))
    while True:
        lowest = np.minimum(label[a], label[b])
        joined = label.copy()
        # The lowest number wins at both ends and at the places that they name; then names are followed to their end.
        for end in (a, b):
            np.minimum.at(joined, end, lowest)
            np.minimum.at(joined, label[end], lowest)
        while not np.array_equal(joined, joined[joined]):
            joined = joined[joined]
        if np.array_equal(joined, label):
            return label
        label = joined


def _strayest(model, bones, vertices, patch_of, pulled_alone):
    positions = model.positions
    best = None
    for bone in np.unique(bones):
        mine = bones == bone
        names, sizes = np.unique(patch_of[mine], return_counts=True)
        home = vertices[mine][patch_of[mine] == names[np.argmax(sizes)]]
        reach = np.linalg.norm(np.ptp(positions[home], axis=0))
        for name in names[sizes <= SMALL * sizes.max()]:
            patch = vertices[mine][patch_of[mine] == name]
            away = np.linalg.norm(positions[patch].mean(axis=0) - positions[home].mean(axis=0))
            if away > reach and not pulled_alone[patch].any() and (best is None or len(patch) > len(best.vertices)):
                best = StrayPatch(model.skin.links[bone].name, int(bone), patch)
    return best
