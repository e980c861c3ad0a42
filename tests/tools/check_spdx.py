#!/usr/bin/env python3
"""check_spdx.py BUILD SECONDS PACKAGE.deb...: whether the SPDX file of each package is whole and names
every library that its programs load, every archive on their link lines and every library of headers
whose names are in them. SECONDS: when it must say that it was made."""
import io
import json
import re
import subprocess
import sys
import tarfile
import time

BUILD, SECONDS, *PACKAGES = sys.argv[1:]
HEADERS = {"nlohmann::": "nlohmann-json3-dev", "toml::": "libtomlplusplus-dev", "std::": "libstdc++-12-dev"}


def out(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout.decode(errors="replace")


def owner(path):
    """The Debian package of a file, which may stand there without /usr."""
    for each in (path, path.removeprefix("/usr"), out("realpath", path).strip()):
        found = subprocess.run(["dpkg-query", "-S", each], capture_output=True, text=True).stdout
        if found:
            return found.split(":")[0]
    raise SystemExit(f"no package has {path}")


def links_of(target):
    """The packages whose libraries a target loads, and those of which something must be linked in."""
    loaded, linked = set(), set()
    paths = dict(re.findall(r"^\t(\S+) .* => (\S+)$", out("/sbin/ldconfig", "-p"), re.M)[::-1])
    for name in re.findall(r"NEEDED.*\[(.*)\]", out("readelf", "-d", f"{BUILD}/{target}")):
        loaded.add(name if name == "libCorvaneAPI.so.2" else owner(paths[name]))
    line = out("ninja", "-C", BUILD, "-t", "commands", target).splitlines()[-1]
    linked |= {owner(each) for each in re.findall(r" (/\S+\.a)\b", line)}
    if "-static-libstdc++" in line:
        linked.add(owner(out("c++", "-print-file-name=libstdc++.a").strip()))
    symbols = out("nm", "-C", f"{BUILD}/{target}")
    return loaded, linked | {package for name, package in HEADERS.items() if f" {name}" in symbols}


def check(name, document, programs):
    entries = {each["SPDXID"]: each for each in document["packages"]}
    assert len(entries) == len(document["packages"]), "a name stands twice"
    created = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(int(SECONDS)))
    assert document["creationInfo"]["created"] == created, document["creationInfo"]
    assert document["spdxVersion"] == "SPDX-2.3" and document["dataLicense"] == "CC0-1.0"
    licences = {each["licenseId"] for each in document["hasExtractedLicensingInfos"] if each["extractedText"]}
    said = {"STATIC_LINK": set(), "DYNAMIC_LINK": set(), "BUILD_DEPENDENCY_OF": set(), "DESCRIBES": set()}
    for relation in document["relationships"]:
        ends = {relation["spdxElementId"], relation["relatedSpdxElement"]} - {"SPDXRef-DOCUMENT"}
        said[relation["relationshipType"]] |= {entries[end]["name"] for end in ends}
    assert set().union(*said.values()) == {each["name"] for each in document["packages"]}, said
    for entry in document["packages"]:
        licence = entry.get("licenseDeclared", "NOASSERTION")
        assert entry["name"] not in said["STATIC_LINK"] - {name} or licence in licences, entry
        if entry["name"] not in (name, "libCorvaneAPI.so.2"):
            assert entry["versionInfo"] == out("dpkg-query", "-Wf${Version}", entry["name"]), entry
    loaded, linked = (set().union(*each) for each in zip(*map(links_of, programs)))
    assert loaded == said["DYNAMIC_LINK"] - {name}, (loaded, said)
    assert linked <= said["STATIC_LINK"], (linked, said)
    for header in set(HEADERS.values()) - linked:
        assert header not in said["STATIC_LINK"], header


targets = {}  # of programs and libraries, by their names
for line in out("ninja", "-C", BUILD, "-t", "targets", "all").splitlines():
    target = line.split(": ")[0]
    if "LINKER" in line and not target.startswith("tests/"):
        targets[target.split("/")[-1]] = target
for package in PACKAGES:
    with tarfile.open(fileobj=io.BytesIO(subprocess.run(["dpkg-deb", "--fsys-tarfile", package],
                                                        stdout=subprocess.PIPE, check=True).stdout)) as tar:
        files = {each.name: tar.extractfile(each).read() for each in tar if each.isfile()}
    [(path, text)] = [(path, text) for path, text in files.items() if path.endswith(".spdx.json")]
    check(path.split("/")[-2], json.loads(text),
          [targets[path.split("/")[-1]] for path, text in files.items() if text.startswith(b"\x7fELF")])
