#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
# SPDX-License-Identifier: Apache-2.0

"""Reads an application's accessibility tree through AT-SPI, as a screen reader does.

  atspi_tree.py dump PID                  the tree of the application with that process id, as
                                          JSON: one object per node, in depth-first order
  atspi_tree.py do PID ROLE NAME ACTION   performs the named action on the first node with that
                                          role and name, one that shows if there is one

Exits 1 when the application is not (yet) on the accessibility bus or no node matches.
"""

import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

# Deeper trees are not this application's; the bound keeps a broken tree from looping.
MAX_DEPTH = 32
MAX_NODES = 2000


def application(pid):
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        app = desktop.get_child_at_index(index)
        if app is not None and app.get_process_id() == pid:
            return app
    return None


def describe(node, parent, depth):
    states = node.get_state_set().get_states()
    entry = {
        "parent": parent,
        "depth": depth,
        "role": node.get_role_name(),
        "name": node.get_name() or "",
        "description": node.get_description() or "",
        "states": sorted(Atspi.StateType(s).value_nick for s in states),
    }
    component = node.get_component_iface()
    if component is not None:
        rect = component.get_extents(Atspi.CoordType.SCREEN)
        entry["extents"] = [rect.x, rect.y, rect.width, rect.height]
    action = node.get_action_iface()
    if action is not None:
        entry["actions"] = [action.get_action_name(i) for i in range(action.get_n_actions())]
    text = node.get_text_iface()
    if text is not None:
        entry["text"] = text.get_text(0, text.get_character_count())
    return entry


def walk(root):
    nodes = []
    pending = [(root, -1, 0)]
    while pending and len(nodes) < MAX_NODES:
        node, parent, depth = pending.pop()
        index = len(nodes)
        nodes.append((node, describe(node, parent, depth)))
        if depth >= MAX_DEPTH:
            continue
        children = [node.get_child_at_index(i) for i in range(node.get_child_count())]
        pending.extend((child, index, depth + 1) for child in reversed(children) if child)
    return nodes


def main(argv):
    if len(argv) < 3 or argv[1] not in ("dump", "do"):
        print(__doc__, file=sys.stderr)
        return 2
    app = application(int(argv[2]))
    if app is None:
        print("atspi_tree: no application with process id %s" % argv[2], file=sys.stderr)
        return 1
    nodes = walk(app)
    if argv[1] == "dump":
        json.dump([entry for _, entry in nodes], sys.stdout, ensure_ascii=False)
        print()
        return 0
    if len(argv) != 6:
        print(__doc__, file=sys.stderr)
        return 2
    role, name, wanted = argv[3], argv[4], argv[5]
    # A showing node first; the items of a closed menu show only once it opens.
    matching = [(node, entry) for node, entry in nodes
                if entry["role"] == role and entry["name"] == name]
    matching.sort(key=lambda pair: "showing" not in pair[1]["states"])
    for node, entry in matching:
            action = node.get_action_iface()
            for i in range(action.get_n_actions() if action else 0):
                if action.get_action_name(i) == wanted:
                    return 0 if action.do_action(i) else 1
    print("atspi_tree: no %s %r with action %r" % (role, name, wanted), file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))
