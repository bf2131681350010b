# SPDX-License-Identifier: MIT
"""A desk for each test, and the tiny character on it."""
import pytest
import skindesk

from tiny_character import Spoiled, write_character


@pytest.fixture
def desk():
    with skindesk.Desk() as opened:
        yield opened


@pytest.fixture
def character(desk, tmp_path):
    """The tiny character's model."""
    return desk.open(write_character(tmp_path / "strip.gltf"))[0]


@pytest.fixture
def open_character(desk, tmp_path):
    """Opens a spoiled tiny character: open_character(mode="additive")."""
    def opened(file="strip.gltf", **changes):
        return desk.open(write_character(tmp_path / file, Spoiled(**changes)))
    return opened


@pytest.fixture
def tool(desk):
    """The skinning tool, empty."""
    return desk.open_tool("Skins")


@pytest.fixture
def picked(desk, tool, character):
    """The skinning tool with the character dropped and framed, and the vertices of its middle row picked."""
    from tiny_character import pick
    tool["ModelListUI"].drop([character])
    desk.viewer.frame([character])
    pick(desk, character, [4, 5])
    return tool
