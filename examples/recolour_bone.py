#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Gives a bone another colour and takes a picture of what it pulls.

    PYTHONPATH=build/python python3 examples/recolour_bone.py FILE BONE PICTURE.png [RED GREEN BLUE]

Colours run from 0 to 1; without one the bone is orange. Bones and vertices show their colours in the viewer while the
skinning tool holds the model.
"""
import sys

import skindesk

from pictures import write_png

ORANGE = (1.0, 0.5, 0.0)


def recolour(desk, model, bone, colour):
    """Shows the model in the skinning tool, every vertex picked, and the bone in its new colour."""
    tool = desk.open_tool("Skins")
    tool["ModelListUI"].drop([model])
    desk.viewer.frame([model])
    desk.viewer.press(0, 0)
    desk.viewer.move(799, 599)
    desk.viewer.release(799, 599)
    bones = tool["ListBonesList"]
    if bone not in bones.rows:
        raise KeyError(f"no bone {bone} pulls {model.name}; there are {', '.join(bones.rows)}")
    bones.select([bones.rows.index(bone)])
    tool["BoneColorEdit"].set(*colour)
    return tool


def main(arguments):
    if len(arguments) not in (3, 6):
        print(__doc__, file=sys.stderr)
        return 2
    file, bone, picture, *colour = arguments
    try:
        with skindesk.Desk() as desk:
            skinned = [model for model in desk.open(file) if model.skin is not None]
            if not skinned:
                raise skindesk.Error(f"{file}: none of its models has a skin")
            recolour(desk, skinned[0], bone, [float(part) for part in colour] or ORANGE)
            write_png(picture, desk.viewer.grab())
            print(f"{picture}: {bone} of {skinned[0].name}")
    except (skindesk.Error, LookupError, ValueError, OSError) as error:
        print(f"recolour_bone: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
