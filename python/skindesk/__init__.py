# SPDX-License-Identifier: MIT
"""Skindesk without a window: skinned characters, and the tools that work on them.

    import skindesk

    with skindesk.Desk() as desk:
        model = desk.open("figure.glb")[0]
        tool = desk.open_tool("Skins")
        tool["ModelListUI"].drop([model])
        tool["ListBonesList"].select([0])
        desk.save("figure.glb")

A desk is a session of the host. It knows no tool: it finds a tool's controls by their names and acts on them with the
events that a user's hand would cause, so what works here works on the desk, and a control that is disabled does nothing.

Errors are `Error` with the host's sentence, `FileError` for the trouble of a file; KeyError for a name that is unknown
or not unique, IndexError for a row that is not there, ValueError for what is no number or no finite one. What raises has
changed nothing. Arrays are copies. One desk at a time, used from the thread that opened it.
"""
import atexit

from ._skindesk import (CheckControl, ColourControl, ComboControl, Control, Desk, Error, FileError, LabelControl,
                        ListControl, Message, Model, PanelControl, Skin, SliderControl, SpreadControl, Tool, Viewer,
                        _close_open_desk)

__all__ = ["CheckControl", "ColourControl", "ComboControl", "Control", "Desk", "Error", "FileError", "LabelControl",
           "ListControl", "Message", "Model", "PanelControl", "Skin", "SliderControl", "SpreadControl", "Tool", "Viewer"]

# A desk that was never closed ends while the interpreter is still whole.
atexit.register(_close_open_desk)
