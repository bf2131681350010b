# SPDX-License-Identifier: MIT
"""The gesture of SameGestureTests.cpp through the Python door:
same_gesture.py CHARACTER SAVED WIDTH HEIGHT X0 Y0 X1 Y1 PER_CENT BONE..."""
import sys

import skindesk

character, saved = sys.argv[1:3]
width, height, x0, y0, x1, y1 = map(int, sys.argv[3:9])
per_cent = float(sys.argv[9])
bones = sys.argv[10:]

with skindesk.Desk() as desk:
    desk.viewer.size(width, height)
    models = desk.open(character)
    desk.viewer.frame()
    tool = desk.open_tool("Skins")
    tool["ModelListUI"].drop(models)
    desk.viewer.press(x0, y0)
    desk.viewer.move(x1, y1)
    desk.viewer.release(x1, y1)
    rows = tool["ListBonesList"].rows
    tool["ListBonesList"].select([rows.index(bone) for bone in bones])
    spread = tool["SpreadWeights"]
    spread.type(0, 3, per_cent)
    spread.type(1, 2, True)
    spread.drag(0, 1, [70.0, 40.0])
    desk.save(saved)
    print(len(tool["ListVertexList"].rows), desk.undo_names)
