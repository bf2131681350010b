#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A first edit: finds the vertices of the forearm that hang on the head, and gives them back to the forearm.

    PYTHONPATH=build/python python3 examples/first_edit.py [OUT.glb]
"""
import sys
from pathlib import Path

import skindesk

figure = Path(__file__).resolve().parents[1] / "samples" / "figure.glb"
out = Path(sys.argv[1] if len(sys.argv) > 1 else "out/first_edit.glb")

with skindesk.Desk() as desk:
    model = desk.open(str(figure))[0]
    tool = desk.open_tool("Skins")
    tool["ModelListUI"].drop([model])

    # What the head pulls although it lies below the shoulders.
    head = [bone.name for bone in model.skin.links].index("Head")
    pulled = model.skin.entries(head)[0]
    stray = pulled[model.positions[pulled, 1] < 1.3]

    # Where that is on the screen: positions are row vectors, the screen's corner is its top left, its first size 800 x 600.
    desk.viewer.frame([model])
    clip = model.positions[stray] @ model.global_matrix @ desk.viewer.view @ desk.viewer.projection
    x = (clip[:, 0] / clip[:, 3] + 1) / 2 * 800
    y = (1 - clip[:, 1] / clip[:, 3]) / 2 * 600

    # Drag a pick rectangle over it, then take the head's pull off everything that was picked.
    desk.viewer.press(x.min(), y.min())
    desk.viewer.move(x.max(), y.max())
    desk.viewer.release(x.max(), y.max())
    tool["AutomaticBoneSelectionButton"].click()
    tool["ListWeightingMode"].choose(1)  # affect all selected vertices
    spread = tool["SpreadWeights"]
    print("picked:", len(tool["ListVertexList"].rows), "vertices, pulled by", spread.row_labels)
    spread.type(spread.row_labels.index("Head"), 3, 0.0)

    out.parent.mkdir(parents=True, exist_ok=True)
    print("undo would take back:", desk.undo_names[0], "- saved:", desk.save(str(out)))
