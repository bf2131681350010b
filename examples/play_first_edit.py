#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Plays a first edit without a window, on any skinned character. This is what ./run does where there is no display.

    PYTHONPATH=build/python python3 examples/play_first_edit.py [--out FOLDER] FILE...

For each file: opens it, opens the skinning tool, drops the skinned models on it, drags a pick rectangle, prints the
vertex list and the spread of the current vertex, types a weight, undoes and redoes it, saves the character under its
own name in the folder, with a picture beside it.

A patch that a far-away bone pulls by mistake is repaired; where there is none, vertices in the middle of the character
get 40 per cent of their strongest bone.
"""
import argparse
import sys
import time
from pathlib import Path

import numpy as np
import skindesk

from pictures import write_png
from stray_weights import find_stray_patch

TOOL = "Skins"
WEIGHT_COLUMN = 3  # of the spread's Col, Weight Slider, Lock, Weight
AFFECT_ALL_SELECTED = 1  # item of ListWeightingMode
ROWS_SHOWN = 8
VIEWER_SIZE = (800, 600)
PICTURES_TO_BRIGHTEN = 150
SECONDS_OF_BRIGHTENING = 0.7


class Trouble(Exception):
    """What keeps the edit from being played, in one line."""


def play(path, folder):
    """Plays the edit on one file and leaves its results in the folder."""
    with skindesk.Desk() as desk:
        refused = list(desk.warnings)  # plug-ins that are none
        if all(name != TOOL for _, name, _ in desk.catalogue):
            raise Trouble("; ".join(["there is no skinning tool", *refused]))
        for warning in refused:
            print(warning)
        models = desk.open(str(path))
        for warning in desk.warnings[len(refused):]:
            print(f"{path.name}: {warning}")
        skinned = [model for model in models if model.skin is not None]
        if not skinned:
            raise Trouble(f"{path}: none of its {len(models)} models has a skin")
        print(f"{path.name}: " + ", ".join(f"{model.name} ({len(model.positions)} vertices, "
                                           f"{len(model.skin.links)} bones)" for model in skinned))
        desk.viewer.size(*VIEWER_SIZE)
        tool = desk.open_tool(TOOL)
        admitted = admit(tool, skinned)
        for message in desk.messages:
            print(f"{message.title}: {message.text} [{message.buttons[message.answer - 1]}]")
        if not admitted:
            raise Trouble(f"{path}: the skinning tool takes none of its models")
        desk.viewer.frame(admitted)
        patch = pick(desk, tool, admitted)
        edit(desk, tool, patch)
        picture = grab(desk)
        leave(desk, path, folder, picture)


def admit(tool, skinned):
    """Drops the models on the tool and checks them all; answers those that the tool took."""
    listed = tool["ModelListUI"]
    listed.drop(skinned)
    if listed.rows == ["Drop models here"]:
        return []
    for row in range(len(listed.rows)):
        if not listed.checks[row]:
            listed.set_check(row, True)
    names = set(listed.rows)
    return [model for model in skinned if model.name in names]


def pick(desk, tool, models):
    """Drags a pick rectangle over a part worth a look; answers the patch that was found there, or None."""
    for model in models:
        patch = find_stray_patch(model)
        if patch is not None:
            x, y = on_screen(desk.viewer, model, patch.vertices)
            print(f"{patch.bone} pulls {len(patch.vertices)} vertices of {model.name} far from all else that it pulls")
            break
    else:
        patch, model = None, models[0]
        x, y = on_screen(desk.viewer, model, slice(None))
        # A small part around the vertex that lies nearest to the middle, of those that several bones pull if there are.
        away = np.hypot(x - (x.min() + x.max()) / 2, y - (y.min() + y.max()) / 2)
        shared = np.diff(model.skin.csr()[0]) > 1
        middle = np.argmin(np.where(shared, away, np.inf) if shared.any() else away)
        reach = 0.04 * max(np.ptp(x), np.ptp(y))
        near = np.hypot(x - x[middle], y - y[middle]) <= reach
        x, y = x[near], y[near]
    desk.viewer.press(x.min(), y.min())
    desk.viewer.move(x.max(), y.max())
    desk.viewer.release(x.max(), y.max())
    tool["AutomaticBoneSelectionButton"].click()
    tool["ListWeightingMode"].choose(AFFECT_ALL_SELECTED)
    if patch is not None:
        select_only(tool["ListVertexList"], model, patch.vertices)
    show_vertices(tool["ListVertexList"])
    return patch


def on_screen(viewer, model, vertices):
    """Where vertices lie in the viewer's picture: x to the right and y down, in pixels."""
    clip = model.positions[vertices] @ model.global_matrix @ viewer.view @ viewer.projection
    width, height = VIEWER_SIZE
    return (clip[:, 0] / clip[:, 3] + 1) / 2 * width, (1 - clip[:, 1] / clip[:, 3]) / 2 * height


def select_only(listed, model, vertices):
    """The rectangle also took what lies behind: selects in the vertex list only the rows that are meant."""
    meant = {f"Vertex {vertex} {model.name}" for vertex in vertices}
    rows = [row for row, text in enumerate(listed.rows) if text in meant]
    if rows and len(rows) < len(listed.rows):
        listed.select(rows)


def edit(desk, tool, patch):
    """Types one weight, undoes it and does it again, and prints the spread each time."""
    spread = tool["SpreadWeights"]
    labels = spread.row_labels
    if not labels:
        raise Trouble("no bone pulls the picked vertices")
    if len(labels) == 1:
        labels = show_one_more_bone(tool, labels[0])
    if patch is not None and patch.bone in labels:
        row, percent = labels.index(patch.bone), 0.0
    else:
        # Typed for a bone that has something to give or to take: one that has all of a vertex keeps it.
        shares = weights_of(spread)
        row = int(np.argmax(shares)) if max(shares) < 100 else int(np.argmin(shares))
        percent = 40.0
    show_spread("before", spread)
    before = weights_of(spread)
    spread.type(row, WEIGHT_COLUMN, percent)
    show_spread(f"{labels[row]} typed as {percent:g} %", spread)
    after = weights_of(spread)
    name = desk.undo_names[0]
    undone = desk.undo() and np.allclose(weights_of(spread), before, atol=1e-4)
    redone = desk.redo() and np.allclose(weights_of(spread), after, atol=1e-4)
    if not (undone and redone):
        raise Trouble(f'undo and redo of "{name}" do not give back the weights')
    print(f'undone and done again: "{name}"')


def show_one_more_bone(tool, bone):
    """A lone bone keeps all of a vertex: shows another one beside it, to which weight can be given."""
    listed = tool["ListBonesList"]
    names = listed.rows
    tool["AutomaticBoneSelectionButton"].click()
    other = next((row for row, name in enumerate(names) if name != bone), None)
    if other is None:
        raise Trouble(f"the skin has no other bone than {bone}")
    listed.select(sorted({names.index(bone), other}))
    return tool["SpreadWeights"].row_labels


def weights_of(spread):
    return [spread.cell(row, WEIGHT_COLUMN) for row in range(len(spread.row_labels))]


def show_vertices(listed):
    """The vertex list as the panel shows it, the selected rows marked."""
    selected = set(listed.selection)
    print(f"\nvertex list: {len(listed.rows)} rows, {len(selected)} selected")
    shown = sorted(selected)[:ROWS_SHOWN] or range(min(ROWS_SHOWN, len(listed.rows)))
    for row in shown:
        print(f"  {'>' if row == listed.current else ' '} {listed.rows[row]}")
    if len(listed.rows) > len(shown):
        print(f"    ... and {len(listed.rows) - len(shown)} more")


def show_spread(title, spread):
    """The spread of the current vertex as a table."""
    labels = spread.row_labels
    width = max([len("bone")] + [len(label) for label in labels])
    print(f"\n{title}\n  {'bone':<{width}}  lock  weight %")
    for row, label in enumerate(labels):
        lock = "yes" if spread.cell(row, 2) else "no"
        print(f"  {label:<{width}}  {lock:<4}  {spread.cell(row, WEIGHT_COLUMN):8.2f}")


def grab(desk):
    """The viewer's picture, or None where there is no OpenGL to draw it with."""
    try:
        # The tool's edges brighten from picture to picture; on large meshes what a second brings must do.
        end = time.monotonic() + SECONDS_OF_BRIGHTENING
        picture = desk.viewer.grab()
        for _ in range(PICTURES_TO_BRIGHTEN):
            if time.monotonic() > end:
                break
            picture = desk.viewer.grab()
        return picture
    except skindesk.Error as error:
        print(f"no picture: {error}")
        return None


def leave(desk, path, folder, picture):
    """Saves the character under its own name, and the picture beside it."""
    made = not folder.exists()
    folder.mkdir(parents=True, exist_ok=True)
    # Surfaces read from .obj are kept in the desk's own format.
    target = folder / (path.with_suffix(".glb").name if path.suffix.lower() == ".obj" else path.name)
    try:
        saved = desk.save(str(target))
    except skindesk.Error:
        if made and not any(folder.iterdir()):
            folder.rmdir()
        raise
    print(f"\n{target}: {saved['bytes']} bytes, {saved['vertices_changed']} vertices changed")
    for warning in saved["warnings"]:
        print(f"  {warning}")
    if picture is not None:
        image = target.with_suffix(".png")
        write_png(image, picture)
        print(f"{image}: {picture.shape[1]} x {picture.shape[0]} pixels")


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--out", type=Path, default=Path("out"), help="folder for what is made (default: out)")
    parser.add_argument("files", nargs="+", type=Path)
    options = parser.parse_args(arguments)
    for path in options.files:
        try:
            play(path, options.out)
        except (skindesk.Error, Trouble, OSError) as error:
            print(f"first edit: {' '.join(str(error).split())}", file=sys.stderr)
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
