#!/usr/bin/env python3
"""Checks the include directions of the house: down the floors only, and one room each for ICU, system
calls, SQLite and the script engine. Prints each offence and exits 1 when there is one."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Floor of each room, by the longest path prefix. Rooms of one floor do not include each other.
FLOORS = {
    "platform/include": -1,
    "platform/base": 0,
    "platform/posix": 1, "platform/text": 1,
    "platform/cf": 2, "platform/desktop": 2, "platform/memory": 2,
    "platform/files": 3,
    "platform/resources": 4,
    "platform/aliases": 5, "platform/bundles": 5, "platform/foundation": 5,
    "platform/services": 6,
    "platform/events": 7,
    "platform/osa": 8,
    "platform/osa/javascript": 9,
    "fsextensions": 9, "fileurl": 9,
    "Libraries/MacToolboxLib": 10,
    "Libraries/TCLClasses": 11,
    "importer": 12,
    "service": 13,
    "cli": 14,
}
# Rooms on the Mac side of the published interfaces: they see platform/include and each other only.
ABOVE_PLATFORM = ("fsextensions", "fileurl", "Libraries", "importer", "service", "cli")
# The host talks to the importer through the loaded plug-in; of its sources it sees the classification, which
# the plug-in does not tell.
HOST = ("service", "cli")
HOST_MAY_SEE = ("importer/ScriptType.h",)

CONFINED = {
    "platform/text": re.compile(r"^<unicode/"),
    "platform/posix": re.compile(r"^<(fcntl|unistd|dirent|sys/\w+)\.h>"),
    "platform/desktop": re.compile(r"^<(xcb|X11)/"),
    "platform/osa/javascript": re.compile(r"^<(js/|jsapi|jsfriendapi|mozilla/)"),
    "index": re.compile(r"^<sqlite3\.h>"),
}
# Other rooms that may make system calls, and what for.
CONFINED_EXTRA = {
    "platform/posix": {
        "fsextensions": {"<fcntl.h>", "<unistd.h>"},  # faccessat(): no catalog field tells who may write
        "Libraries/TCLClasses": {"<unistd.h>"},  # access(), which GetAccessRights is defined by
        "platform/osa/javascript": {"<unistd.h>"},  # ending the copy of a process that has engines
        "service": None,  # worker processes
        # is the output a terminal; scripts run in a child
        "cli": {"<unistd.h>", "<sys/prctl.h>", "<sys/resource.h>", "<sys/syscall.h>", "<sys/wait.h>"},
    },
}

INCLUDE = re.compile(r'^\s*#\s*include\s+(<[^>]+>|"[^"]+")')


def room_of(path):
    best = None
    for room in FLOORS:
        if (path == room or path.startswith(room + "/")) and (best is None or len(room) > len(best)):
            best = room
    return best


def check_confined(path, room, include):
    for home, pattern in CONFINED.items():
        if not pattern.match(include) or room == home:
            continue
        extra = CONFINED_EXTRA.get(home, {})
        if room in extra and (extra[room] is None or include in extra[room]):
            continue
        yield f"{path}: {include} belongs to {home} alone"


def check_direction(path, room, target):
    other = room_of(target)
    if other is None:
        top = target.split("/")[0]
        if top in ("tests", "fuzz", "bench", "tools"):
            yield f"{path}: product code includes {target}"
        return
    if other == room:
        return
    if room.startswith(ABOVE_PLATFORM) and other.startswith("platform/") and other != "platform/include":
        yield f"{path}: {target} lies behind the published interfaces"
    if room in HOST and not (other in HOST or other == "platform/include" or target in HOST_MAY_SEE):
        yield f"{path}: the host may not see {target}"
    if FLOORS[other] >= FLOORS[room]:
        yield f"{path}: {target} is not below {room}"


def main():
    offences = []
    for top in sorted({room.split("/")[0] for room in FLOORS} | {"index"}):
        for file in sorted((ROOT / top).rglob("*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            path = file.relative_to(ROOT).as_posix()
            room = room_of(path) or top
            for line in file.read_text(encoding="utf-8").splitlines():
                match = INCLUDE.match(line)
                if not match:
                    continue
                include = match.group(1)
                offences += check_confined(path, room, include)
                if include.startswith('"'):
                    target = include.strip('"')
                    if not (ROOT / target).is_file():
                        offences.append(f"{path}: {target} is not a path from the top of the tree")
                    offences += check_direction(path, room, target)
    print("\n".join(offences))
    return 1 if offences else 0


sys.exit(main())
