#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Copies the weights of one vertex onto a picked set.

    PYTHONPATH=build/python python3 examples/copy_weights.py FILE MODEL VERTEX X0 Y0 X1 Y1 SAVED

The rectangle is in pixels of an 800 x 600 view that frames the model. As in the tool itself, a weight is typed bone by
bone and locked, so that the bones that follow share what is left; every bone is one undo step.
"""
import sys

import skindesk

AFFECT_ALL = 1  # item of ListWeightingMode
LOCK, WEIGHT = 2, 3  # columns of the spread


def weights_at(skin, vertex):
    """Link -> weight of one vertex."""
    offsets, links, weights = skin.csr()
    row = slice(offsets[vertex], offsets[vertex + 1])
    return dict(zip(links[row].tolist(), weights[row].tolist()))


def pick(viewer, corners):
    x0, y0, x1, y1 = corners
    viewer.press(x0, y0)
    viewer.move(x1, y1)
    viewer.release(x1, y1)


def copy_weights(desk, model, vertex, corners):
    """Gives what the rectangle picks the weights of `vertex`; answers how many vertices were picked."""
    tool = desk.open_tool("Skins")
    tool["ModelListUI"].drop([model])
    desk.viewer.frame([model])
    pick(desk.viewer, corners)
    wanted = {model.skin.links[link].name: weight for link, weight in weights_at(model.skin, vertex).items()}

    # Every bone that pulls the picked vertices or is to pull them gets a row of the spread.
    tool["AutomaticBoneSelectionButton"].click()
    bones, spread = tool["ListBonesList"], tool["SpreadWeights"]
    rows = set(bones.selection) | {row for row, name in enumerate(bones.rows) if name in wanted}
    tool["AutomaticBoneSelectionButton"].click()
    bones.select(sorted(rows))
    tool["ListWeightingMode"].choose(AFFECT_ALL)

    # The largest first: what is locked already leaves the later ones room.
    labels = spread.row_labels
    for row in sorted(range(len(labels)), key=lambda row: -wanted.get(labels[row], 0)):
        spread.type(row, WEIGHT, 100 * wanted.get(labels[row], 0))
        spread.type(row, LOCK, True)
    for row in range(len(labels)):
        spread.type(row, LOCK, False)
    return len(tool["ListVertexList"].selection)


def main(arguments):
    if len(arguments) != 8:
        print(__doc__, file=sys.stderr)
        return 2
    file, name, vertex, *corners, saved = arguments
    try:
        with skindesk.Desk() as desk:
            desk.open(file)
            count = copy_weights(desk, desk.model(name), int(vertex), [float(corner) for corner in corners])
            desk.save(saved)
            print(f"{count} vertices have the weights of vertex {vertex} of {name}: {saved}")
    except (skindesk.Error, LookupError, ValueError) as error:
        print(f"copy_weights: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
