#!/usr/bin/env python3
"""Checks every #include against docs/layers.txt, and that no public header needs a third party."""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
INCLUDE = re.compile(r'^\s*#\s*include\s+(["<])([^">]+)[">]', re.M)
THIRD_PARTY = re.compile(r"^(tiff|png|jpeg|gif_lib|lcms2|xxhash|nlohmann|gtest|benchmark|boost/|pixman|cereal)")


def read_layers(text):
    """Gives a list of (pattern, level) for the rooms, and the set of allowed (file, header)."""
    rooms, allowed = [], set()
    for level, line in enumerate(text.splitlines()):
        line = line.split("#")[0].strip()
        if line.startswith("allow "):
            allowed.add(tuple(part.strip() for part in line[len("allow "):].split("->")))
        else:
            rooms += [(room, level) for room in line.split()]
    return rooms, allowed


def room_of(path, rooms):
    """The room that a file lies in, with its level; None for a file of no room."""
    matches = [(room, level) for room, level in rooms
               if path.startswith(room.removesuffix("*").rstrip("/") + "/")]
    return max(matches, key=lambda match: len(match[0].removesuffix("/*")), default=None)


def target_of(include, root):
    """The path of an included header from the root, or None for one that is not ours."""
    for base in ("", "foundation/"):
        if (root / base / include).is_file():
            return base + include
    return None


def faults_of(path, root, rooms, allowed):
    own = room_of(path, rooms)
    for kind, include in INCLUDE.findall((root / path).read_text(encoding="utf-8")):
        if "/hdr/" in path and THIRD_PARTY.match(include):
            yield f"{path}: a public header includes {include}"
        target = target_of(include, root) if kind == '"' else None
        other = room_of(target, rooms) if target else None
        if not own or not other or (path, target) in allowed:
            continue
        same_room = own[0] == other[0] and (own[0].endswith("*") or own[1] == other[1])
        if not same_room and other[1] >= own[1]:
            yield f"{path}: may not include {target}"


def check(root):
    rooms, allowed = read_layers((root / "docs/layers.txt").read_text(encoding="utf-8"))
    tops = sorted({room.split("/")[0] for room, _ in rooms})
    files = [file for top in tops for file in (root / top).rglob("*")
             if file.suffix in (".h", ".cpp") and "test" not in file.parts
             and "bench" not in file.parts]
    return [fault for file in sorted(files)
            for fault in faults_of(file.relative_to(root).as_posix(), root, rooms, allowed)]


def main():
    faults = check(Path(sys.argv[1]) if len(sys.argv) > 1 else ROOT)
    print("\n".join(faults) if faults else "the layers hold")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
