#!/usr/bin/env python3
"""boundary_test.py CORVANE LIBRARY: checks the boundary of the built utility and the simulator: the
functions that one imports and the other exports, what both are linked with, the layout that the
compiler gave the records, and the whole ABI against the description that was last accepted.

boundary_test.py --describe LIBRARY: prints that description (see scripts/accept-abi)."""
import os
import re
import shutil
import subprocess
import sys
import tempfile
from xml.etree import ElementTree

GOLDEN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "golden", "boundary")
SONAME = "libCorvaneAPI.so.2"
# The compiler's libraries, the sanitizers' among them, and one that the utility may find installed.
USUAL = re.compile(r"lib(c|m|gcc_s|stdc\+\+|(a|l|t|ub)san|argtable3)\.so\.\d+|ld-linux.*")
failures = []


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def describe(library):
    """The ABI as XML without what differs from machine to machine."""
    text = output("abidw", "--exported-interfaces-only", "--no-corpus-path", "--no-show-locs",
                  "--no-comp-dir-path", "--no-elf-needed", "--no-parameter-names",
                  "--type-id-style", "hash", library)
    return re.sub(r"\bpath='[^']*/", "path='", text)


def compare(what, expected, found):
    failures.extend(f"{what}: no {name}" for name in sorted(expected - found))
    failures.extend(f"{what}: unexpected {name}" for name in sorted(found - expected))


def symbols(which, path):
    return {line.split()[-1] for line in output("nm", "-D", which, path).splitlines()}


def dynamic(tag, path):
    return set(re.findall(rf"\({tag}\).*\[(.*)\]", output("readelf", "-dW", path)))


def check_links(corvane, library):
    with open(f"{GOLDEN}/functions.txt", encoding="ascii") as lines:
        functions = set(lines.read().split())
    imported = {name for name in symbols("--undefined-only", corvane) if "corvane" in name.lower()}
    compare("imports", functions, imported)
    compare("exports", functions, symbols("--defined-only", library))
    compare("the library's name", {SONAME}, dynamic("SONAME", library))
    needed = dynamic("NEEDED", corvane)
    compare("needed", {SONAME}, {name for name in needed if not USUAL.fullmatch(name)})


def expected_layout():
    """Of layout.txt: "record size" and "record.field offset size"; all in bytes."""
    record = ""
    with open(f"{GOLDEN}/layout.txt", encoding="ascii") as lines:
        for line in lines:
            record = record if line.startswith(" ") else line.split()[0]
            yield f"{record}.{line.strip()}" if line.startswith(" ") else line.strip()


def compiled_layout(description):
    """The same of every record in the description; one without a name gets its member's."""
    root = ElementTree.fromstring(description)
    types = {node.get("id"): node for node in root.iter() if node.get("id")}

    def bits(node):
        size = node.get("size-in-bits")
        return int(size) if size else bits(types[node.get("type-id")])  # what a typedef stands for

    def record(name, node):
        yield f"{name} {bits(node) / 8:g}"
        for member in node.findall("data-member"):
            field = member.find("var-decl")
            path, kind = f"{name}.{field.get('name')}", types[field.get("type-id")]
            offset = int(member.get("layout-offset-in-bits", 0))
            yield f"{path} {offset / 8:g} {bits(kind) / 8:g}"
            if kind.get("is-anonymous"):
                yield from record(path, kind)

    for node in root.iter("class-decl"):
        if not node.get("is-anonymous"):
            yield from record(node.get("name"), node)


def check_abi(description):
    with tempfile.NamedTemporaryFile("w", suffix=".xml") as built:
        built.write(description)
        built.flush()
        result = subprocess.run(["abidiff", "--no-default-suppression", f"{GOLDEN}/abi.xml",
                                 built.name], capture_output=True, text=True)
    if result.returncode != 0:
        failures.append(f"the ABI has changed (if that is wanted: scripts/accept-abi):\n"
                        f"{result.stdout}{result.stderr}")


for tool in ("abidw", "abidiff", "nm", "readelf"):
    if not shutil.which(tool):
        print(f"skipped: no {tool}")
        sys.exit(77)
if sys.argv[1] == "--describe":
    print(describe(sys.argv[2]), end="")
    sys.exit()
check_links(*sys.argv[1:])
built_abi = describe(sys.argv[2])
compare("layout", set(expected_layout()), set(compiled_layout(built_abi)))
check_abi(built_abi)
print("\n".join(failures) or "the boundary is as agreed")
sys.exit(1 if failures else 0)
