# SPDX-License-Identifier: MIT
"""Opens the tool of the smallest plug-in and presses its button: use.py FOLDER_OF_THE_PLUGIN CHARACTER"""
import sys

import skindesk

plugin_folder, character = sys.argv[1:]
with skindesk.Desk(plugins=[plugin_folder]) as desk:
    desk.open(character)
    tool = desk.open_tool("BoneCounter")
    tool["CountButton"].click()
    bones = sum(model.kind == "bone" for model in desk.models)
    said = desk.messages[-1].text
    print(said)
    if said != f"{bones} bones":
        sys.exit(f"the scene has {bones} bones")
