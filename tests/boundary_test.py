#!/usr/bin/env python3
"""boundary_test.py CORVANE LIBRARY: checks the boundary of the built utility and the simulator: the
functions of the header that one imports and the other exports, what both are linked with, and the
whole ABI against the description that was last accepted.

boundary_test.py --describe LIBRARY: prints that description (see scripts/accept-abi)."""
import os
import re
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
ACCEPTED = f"{HERE}/golden/boundary/abi.xml"
HEADER = f"{HERE}/../src/device/corvane_api.h"
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
    with open(HEADER, encoding="ascii") as header:
        functions = set(re.findall(r"^\w.*\b(Corvane\w+)\(", header.read(), re.M))
    imported = {name for name in symbols("--undefined-only", corvane) if "corvane" in name.lower()}
    compare("imports", functions, imported)
    compare("exports", functions, symbols("--defined-only", library))
    compare("the library's name", {SONAME}, dynamic("SONAME", library))
    needed = dynamic("NEEDED", corvane)
    compare("needed", {SONAME}, {name for name in needed if not USUAL.fullmatch(name)})


def check_abi(description):
    with tempfile.NamedTemporaryFile("w", suffix=".xml") as built:
        built.write(description)
        built.flush()
        result = subprocess.run(["abidiff", "--no-default-suppression", ACCEPTED, built.name], capture_output=True, text=True)
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
check_abi(describe(sys.argv[2]))
print("\n".join(failures) or "the boundary is as agreed")
sys.exit(1 if failures else 0)
