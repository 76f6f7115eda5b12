#!/usr/bin/env python3
"""Holds the house to its layers.

usage: check_layers.py ROOM [ROOM_IT_MAY_USE]...
       check_layers.py --circles

The first form fails if a file of src/ROOM includes a file of another room that
is not named, or an X header outside the rooms that may know X. The second form
fails if files include one another in a circle. Run in the source root.
"""
import argparse
import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^>"]+)[>"]', re.M)
X_HEADER = re.compile(r"^(X11|Xm|Mrm)/")
X_ROOMS = ("platform/vk", "ui", "app")
SRC = pathlib.Path("src")


def includes(path):
    return INCLUDE.findall(path.read_text())


def room_of(header):
    return header.rsplit("/", 1)[0]


def check_room(room, uses):
    bad = []
    files = [p for p in sorted((SRC / room).glob("*")) if p.suffix in (".h", ".cc")]
    for path in files:
        for kind, header in includes(path):
            if kind == "<":
                if X_HEADER.match(header) and room not in X_ROOMS:
                    bad.append(f"{path}: <{header}> belongs to {', '.join(X_ROOMS)}")
            elif room_of(header) not in [room, *uses]:
                bad.append(f'{path}: "{header}" is not among: {" ".join(uses) or "nothing"}')
    return bad


def check_circles():
    graph = {}
    for path in SRC.rglob("*.h"):
        graph[str(path.relative_to(SRC))] = [h for k, h in includes(path) if k == '"']
    state, bad = {}, []

    def visit(node, trail):
        state[node] = "open"
        for after in graph.get(node, []):
            if state.get(after) == "open":
                bad.append("circle: " + " -> ".join(trail + [node, after]))
            elif after not in state:
                visit(after, trail + [node])
        state[node] = "done"

    for node in sorted(graph):
        if node not in state:
            visit(node, [])
    return bad


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("room", nargs="?")
    parser.add_argument("uses", nargs="*")
    parser.add_argument("--circles", action="store_true")
    args = parser.parse_args()
    bad = check_circles() if args.circles else check_room(args.room, args.uses)
    print("\n".join(bad))
    return 1 if bad else 0


sys.exit(main())
