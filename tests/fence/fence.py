#!/usr/bin/env python3
"""Holds the includes to the link lists.

A room is a folder with a CMake library. Its files include only from the rooms that the library links to, directly or
through what these link to publicly; no room links to a program's room. No chain of links returns to where it began, nor
does one of includes, a header and the source of its name taken as one. The sources of tests, benchmarks and fuzzers
keep to their link lists too, but share headers among themselves. Prints what runs against this, a line each, and ends
with 1.

Usage: fence.py ROOT       ROOT: the folder that holds src/, tests/ and bench/
"""

import os
import re
import sys

TREES = ("src", "tests", "bench", "fuzz")
PROGRAM_ROOMS = ("src/app", "src/front")

# Libraries whose headers are found without their target: the compiler would not notice.
LIBRARIES = {
    "Boost::headers": r"boost/",
    "CLI11::CLI11": r"CLI/",
    "Eigen3::Eigen": r"Eigen/",
    "NLopt::nlopt": r"nlopt",
    "PkgConfig::CAIRO": r"cairo",
    "PkgConfig::HDF5": r"hdf5",
    "${HWY_INCLUDE_DIRS}": r"hwy/",
    "Qt5::Core": r"Q[A-Z]",
    "benchmark::benchmark_main": r"benchmark/",
    "fmt::fmt": r"fmt/",
    "tomlplusplus::tomlplusplus": r"toml\+\+/",
}


def commands(text):
    """The commands of a CMake file with their arguments."""
    text = re.sub(r"#.*", "", text)
    for name, arguments in re.findall(r"(\w+)\s*\(([^()]*)\)", text):
        yield name.lower(), arguments.split()


class Target:
    def __init__(self, folder, sources):
        self.folder = folder
        self.sources = {os.path.normpath(os.path.join(folder, source)) for source in sources}
        self.public = []
        self.private = []


def read_targets(root):
    """Every target by its name, from the link lists."""
    targets = {}
    links = []
    for tree in TREES:
        for folder, _, files in os.walk(os.path.join(root, tree)):
            if "CMakeLists.txt" not in files:
                continue
            here = os.path.relpath(folder, root)
            with open(os.path.join(folder, "CMakeLists.txt"), encoding="utf-8") as file:
                for command, words in commands(file.read()):
                    if command in ("add_library", "add_executable") and not words[0].startswith("$"):
                        targets[words[0]] = Target(here, words[1:])
                    elif command == "zf_add_tests":
                        targets[words[0]] = Target(here, words[2:])
                        links.append((words[0], ["PRIVATE", words[1]]))
                    elif command == "zf_add_fuzzers":
                        targets[here] = Target(here, [])
                        links.append((here, ["PRIVATE", *words]))
                    elif command in ("target_link_libraries", "target_include_directories"):
                        links.append((words[0], words[1:]))
    for name, words in links:
        scope = "PUBLIC"
        for word in words:
            if word in ("PUBLIC", "PRIVATE", "INTERFACE"):
                scope = word
            elif name in targets:
                (targets[name].private if scope == "PRIVATE" else targets[name].public).append(word)
    return targets


def visible(targets, name):
    """What the sources of a target may include: its links, and what comes with them."""
    seen = set()
    waiting = [*targets[name].public, *targets[name].private]
    while waiting:
        link = waiting.pop()
        if link in seen:
            continue
        seen.add(link)
        if link in targets:
            waiting += targets[link].public
    return seen


def cycles(graph):
    """One line for each chain that returns to where it began."""
    state = {}

    def walk(node, path):
        state[node] = "open"
        for successor in sorted(graph.get(node, ())):
            if state.get(successor) == "open":
                yield " -> ".join([*path[path.index(successor):], successor])
            elif successor not in state:
                yield from walk(successor, [*path, successor])
        state[node] = "done"

    for node in sorted(graph):
        if node not in state:
            yield from walk(node, [node])


def includes(path):
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            found = re.match(r'\s*#\s*include\s*([<"])([^>"]+)[>"]', line)
            if found:
                yield number, found.group(1) == '"', found.group(2)


def resolve(root, here, header):
    """The file that a quoted include names, as the include paths of its tree find it."""
    tree = here.split("/")[0]
    for folder in (here, tree, "src", *(() if tree == "src" else ("tests", "bench"))):
        path = os.path.normpath(os.path.join(folder, header))
        if os.path.exists(os.path.join(root, path)):
            return path
    return None


def units(root):
    """What each unit of src/ includes, a unit being a header with the source of its name."""
    graph = {}
    for folder, _, files in os.walk(os.path.join(root, "src")):
        here = os.path.relpath(folder, root)
        for file in sorted(name for name in files if name.endswith((".h", ".cpp"))):
            unit = os.path.splitext(f"{here}/{file}")[0]
            paths = [resolve(root, here, header)
                     for _, quoted, header in includes(os.path.join(folder, file)) if quoted]
            graph.setdefault(unit, set()).update(os.path.splitext(path)[0] for path in paths if path)
            graph[unit].discard(unit)
    return graph


def faults(root):
    targets = read_targets(root)
    folders = {}
    for name, target in targets.items():
        folders.setdefault(target.folder, []).append(name)
    may_see = {name: visible(targets, name) for name in targets}

    for name, target in sorted(targets.items()):
        for link in [*target.public, *target.private]:
            room = targets[link].folder if link in targets else ""
            if room in PROGRAM_ROOMS and target.folder.startswith("src/") and target.folder != room:
                yield f"{target.folder}: {name} links to {link}, the room of a program"
    for cycle in cycles({name: [link for link in [*t.public, *t.private] if link in targets]
                         for name, t in targets.items()}):
        yield f"links in a circle: {cycle}"
    for cycle in cycles(units(root)):
        yield f"includes in a circle: {cycle}"

    for tree in TREES:
        endings = (".h", ".cpp") if tree == "src" else (".cpp",)
        for folder, _, files in os.walk(os.path.join(root, tree)):
            here = os.path.relpath(folder, root)
            for file in sorted(f"{here}/{name}" for name in files if name.endswith(endings)):
                owners = [name for name in folders.get(here, ()) if file in targets[name].sources]
                owners = owners or folders.get(here, [])
                allowed = set().union(*(may_see[owner] for owner in owners), owners)
                for number, quoted, header in includes(os.path.join(root, file)):
                    fault = judge(root, here, quoted, header, folders, allowed)
                    if fault:
                        yield f"{file}:{number}: {fault} {' and '.join(owners)}"


def judge(root, here, quoted, header, folders, allowed):
    """What is wrong with an include of a file in `here`, whose targets see `allowed`; None if nothing."""
    if not quoted:
        for library, pattern in LIBRARIES.items():
            if re.match(pattern, header) and library not in allowed:
                return f"<{header}> needs {library} in the links of"
        return None
    path = resolve(root, here, header)
    if path is None:
        return f'"{header}" is in no folder that belongs to'
    room = os.path.dirname(path)
    if room == here or not room.startswith("src/") or set(folders.get(room, ())) & allowed:
        return None
    return f'"{header}" needs {room} in the links of'


def main():
    found = list(faults(sys.argv[1]))
    for fault in found:
        print(fault)
    sys.exit(1 if found else 0)


main()
