#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Normalises the skins of a folder of characters and prints a report.

    PYTHONPATH=build/python python3 examples/normalise_folder.py [--out FOLDER] [--limit N] FOLDER

The skinning tool brings every skin that it takes in to weights that sum to one. So a batch only has to show it each
character, and save what has changed. Without --out the files are left alone and the report says what would change.
"""
import argparse
import sys
from pathlib import Path

import numpy as np
import skindesk

TOLERANCE = 1e-4  # a sum within this of one counts as one


def off_by(model):
    """How far the weights of each vertex are from one in sum; vertices without any weight are passed over."""
    offsets, _, weights = model.skin.csr()
    sums = np.bincount(np.repeat(np.arange(len(offsets) - 1), np.diff(offsets)), weights, len(offsets) - 1)
    return np.where(np.diff(offsets) > 0, np.abs(sums - 1), 0)


def normalise(path, out, limit):
    """One character; answers its lines of the report."""
    with skindesk.Desk() as desk:
        models = [model for model in desk.open(path) if model.skin is not None]
        before = {model: off_by(model) for model in models}
        listed = desk.open_tool("Skins")["ModelListUI"]
        listed.drop(models)
        # Only a model that is worked on is normalised: the first of a drop is checked, the others are now.
        for row, checked in enumerate(listed.checks):
            if not checked:
                listed.set_check(row, True)
        lines = [f"  {message.text}" for message in desk.messages]
        lines += [f"  {warning}" for warning in desk.warnings]
        for model in models:
            wrong, left = (before[model] > TOLERANCE).sum(), (off_by(model) > TOLERANCE).sum()
            lines.append(f"  {model.name}: {len(before[model])} vertices, {wrong} did not sum to one, {left} do not now")
        if out is not None:
            saved = desk.save(out / path.name, max_influences=limit)
            lines.append(f"  saved, {saved['vertices_changed']} vertices changed, {saved['vertices_limited']} limited")
            lines += [f"  {warning}" for warning in saved["warnings"]]
        return lines


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", type=Path)
    parser.add_argument("--out", type=Path, help="folder for the normalised characters")
    parser.add_argument("--limit", type=int, help="the most influences that a vertex keeps")
    options = parser.parse_args(arguments)
    paths = sorted(path for path in options.folder.glob("*") if path.suffix.lower() in (".glb", ".gltf"))
    if options.out is not None:
        options.out.mkdir(parents=True, exist_ok=True)
    failed = 0
    for path in paths:
        try:
            print("\n".join([path.name] + normalise(path, options.out, options.limit)))
        except skindesk.Error as error:
            failed += 1
            print(f"{path.name}\n  {error}")
    print(f"{len(paths)} characters, {failed} with errors")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
