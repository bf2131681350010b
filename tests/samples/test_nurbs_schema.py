# SPDX-License-Identifier: MIT
"""The written schema of TW_nurbs_surface: what it allows, what it refuses, and that our files follow it."""
import copy
import json
import sys
from pathlib import Path

import jsonschema
import pytest

TOP = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(TOP / "tests" / "support")]
from nurbs_schema import check_file, validator  # noqa: E402

SMALLEST = {"degree": [1, 1], "count": [2, 2], "knots": [[0, 0, 1, 1], [0, 0, 1, 1]], "grid": [2, 2],
            "attributes": {"POSITION": 0}}


def changed(path, value):
    """SMALLEST with one value replaced or added; None removes it."""
    surface = copy.deepcopy(SMALLEST)
    *above, last = path
    target = surface
    for key in above:
        target = target[key]
    if value is None:
        del target[last]
    else:
        target[last] = value
    return surface


def test_it_is_a_schema():
    jsonschema.Draft202012Validator.check_schema(validator().schema)


@pytest.mark.parametrize("path, value", [
    (["extras"], {"note": 1}), (["extensions"], {}), (["degree"], [5, 5]), (["count"], [2, 700]),
    (["attributes", "POINT_WEIGHT"], 3), (["attributes", "_OTHER"], 4), (["knots", 0], [-1, 0.5, 0.5, 1e3, 2e3])])
def test_what_is_allowed(path, value):
    validator().validate(SMALLEST)
    validator().validate(changed(path, value))


def test_joints_and_weights_come_in_pairs():
    surface = changed(["attributes"], {"POSITION": 0, "JOINTS_0": 1, "WEIGHTS_0": 2, "JOINTS_1": 3, "WEIGHTS_1": 4})
    validator().validate(surface)
    for alone in ("JOINTS_0", "WEIGHTS_0", "JOINTS_1", "WEIGHTS_1"):
        spoiled = copy.deepcopy(surface)
        del spoiled["attributes"][alone]
        assert not validator().is_valid(spoiled), alone


@pytest.mark.parametrize("path, value", [
    *(([key], None) for key in SMALLEST), (["attributes", "POSITION"], None),
    (["degree"], [0, 1]), (["degree"], [1, 6]), (["degree"], [1.5, 1]), (["degree"], [1]), (["degree"], [1, 1, 1]),
    (["degree"], ["1", 1]), (["degree"], 1),
    (["count"], [1, 2]), (["count"], [2, -2]), (["count"], [2]),
    (["knots"], [[0, 0, 1, 1]]), (["knots", 0], [0, 1, 1]), (["knots", 1], [0, 0, "1", 1]), (["knots"], [0, 0, 1, 1]),
    (["grid"], [1, 2]), (["grid"], [2, 2, 2]),
    (["attributes"], {}), (["attributes", "POSITION"], -1), (["attributes", "NORMAL"], 1),
    (["attributes", "JOINTS_"], 1), (["attributes", "JOINTS_01"], 1), (["colour"], 1)])
def test_what_is_refused(path, value):
    assert not validator().is_valid(changed(path, value))


def test_the_shipped_surfaces_follow_it():
    assert check_file(TOP / "samples" / "fish.glb") == 3


def test_the_page_names_every_key_of_the_schema():
    page = (TOP / "docs" / "nurbs.md").read_text(encoding="utf-8")
    for key in [*validator().schema["required"], "POSITION", "POINT_WEIGHT", "JOINTS_0", "WEIGHTS_0"]:
        assert json.dumps(key) in page
