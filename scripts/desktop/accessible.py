"""What a screen reader finds in a program's windows, as JSON. usage: accessible.py PROCESS"""

import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi

STATES = {"checked": Atspi.StateType.CHECKED, "enabled": Atspi.StateType.ENABLED,
          "focused": Atspi.StateType.FOCUSED, "showing": Atspi.StateType.SHOWING}


def text_of(accessible):
    try:
        return Atspi.Text.get_text(accessible, 0, -1)
    except gi.repository.GLib.Error:
        return None


def captions_of(accessible):
    """The texts of what is said to name it, which is how a pop-up button tells its own."""
    return [relation.get_target(index).get_name() for relation in accessible.get_relation_set()
            if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY
            for index in range(relation.get_n_targets())]


def describe(accessible):
    states = accessible.get_state_set()
    extents = Atspi.Component.get_extents(accessible, Atspi.CoordType.SCREEN)
    return {"role": accessible.get_role_name(), "name": accessible.get_name(), "text": text_of(accessible),
            "captions": captions_of(accessible),
            "geometry": [extents.x, extents.y, extents.width, extents.height],
            "states": [name for name, state in STATES.items() if states.contains(state)]}


def walk(accessible):
    for index in range(accessible.get_child_count()):
        child = accessible.get_child_at_index(index)
        if child is not None:
            yield describe(child)
            yield from walk(child)


def main():
    desktop = Atspi.get_desktop(0)
    programs = [desktop.get_child_at_index(index) for index in range(desktop.get_child_count())]
    print(json.dumps([found for program in programs if program.get_process_id() == int(sys.argv[1])
                      for found in walk(program)]))


main()
