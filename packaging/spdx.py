#!/usr/bin/env python3
"""spdx.py BUILD NINJA PACKAGE VERSION MAP...: prints what is linked into a package's programs, as SPDX 2.3.

A linker's map names the archives' members and the objects that it took, and the shared libraries that it
needs; the headers of each object of ours are in ninja's log. The Debian package of each file is asked of
dpkg. SOURCE_DATE_EPOCH is the time of creation.
"""
import collections
import hashlib
import json
import os
import re
import subprocess
import sys
import time

BUILD, NINJA, PACKAGE, VERSION, *MAPS = sys.argv[1:]
AUTHOR = "The Corvane utility developers"


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True).stdout


def owners(files):
    """The Debian packages of the files: package -> the files' names. /lib is the same as /usr/lib."""
    spellings = {}
    for file in files:
        for path in (os.path.normpath(file), os.path.realpath(file)):
            for spelling in (path, path.removeprefix("/usr"), "/usr" + path):
                spellings[spelling] = file
    found = collections.defaultdict(set)
    missing = set(files)
    for line in output_of("dpkg-query", "-S", *sorted(spellings)).splitlines():
        packages, _, path = line.rpartition(": ")
        if path in spellings:
            found[packages.split(",")[0].split(":")[0]].add(os.path.basename(path))
            missing.discard(spellings[path])
    if missing:
        sys.exit(f"spdx.py: no Debian package has {' '.join(sorted(missing))}")
    return found


class Link:
    """What went into the programs: files, all absolute."""

    def __init__(self):
        self.static, self.stubs, self.shared, self.headers = set(), set(), set(), set()
        self.ours = set()  # the shared libraries that no package has
        self.objects = set()  # how the names of our objects begin

    def read_map(self, text):
        members, _, rest = text.partition("\nAs-needed library included")
        needed, _, rest = rest.partition("\n\n\n")[0].partition("Discarded input sections")
        self.static |= set(re.findall(r"^(/\S+\.a)\(", members, re.M))
        loaded = re.findall(r"^LOAD (\S+)$", text, re.M)
        for file in loaded:
            if not file.startswith("/"):
                folder, name = os.path.split(file)
                archive = re.fullmatch(r"lib(.*)\.a", name)
                self.objects.add(os.path.join(folder, f"CMakeFiles/{archive[1]}.dir/") if archive else file)
            elif file.endswith(".o") and os.path.exists(file):  # the link's own from our objects are gone
                self.static.add(file)
            elif ".so" in file:
                self.stubs.add(file)
        self.find_shared(re.findall(r"^(\S+\.so\S*) ", needed, re.M), loaded)

    def find_shared(self, names, loaded):
        folders = {os.path.dirname(os.path.realpath(file)) for file in loaded if file.startswith("/")}
        for name in names:
            files = [f"{folder}/{name}" for folder in folders if os.path.exists(f"{folder}/{name}")]
            self.shared |= set(files[:1])
            self.ours |= {name} if not files else set()

    def read_headers(self, log):
        taken = False
        for line in log.splitlines():
            if line.startswith(" "):
                file = line.strip()
                if taken and file.startswith("/usr/"):
                    self.headers.add(file)
            elif line:
                taken = line.startswith(tuple(self.objects))


def debian(package):
    """The package's entry, and the text of its licences."""
    form = "${Version}\t${Architecture}\t${source:Package}\t${Homepage}"
    version, architecture, source, home = output_of("dpkg-query", "-Wf", form, package).split("\n")[0].split("\t")
    purl = f"pkg:deb/debian/{package}@{version}?arch={architecture}".replace("+", "%2B")
    entry = {"SPDXID": "SPDXRef-" + re.sub("[^A-Za-z0-9.-]", "-", package), "name": package,
             "versionInfo": version, "supplier": "Organization: Debian", "downloadLocation": "NOASSERTION",
             "filesAnalyzed": False, "licenseConcluded": "NOASSERTION", "licenseDeclared": "NOASSERTION",
             "copyrightText": "NOASSERTION", "sourceInfo": f"built from the Debian source package {source}",
             "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                               "referenceLocator": purl}]}
    if home:
        entry["homepage"] = home
    return entry, "LicenseRef-Debian-" + re.sub("[^A-Za-z0-9.-]", "-", source)


def add_licence(entry, reference, licences):
    """The text is what Debian says, with the short names that it uses."""
    with open(f"/usr/share/doc/{entry['name']}/copyright", encoding="utf-8", errors="replace") as file:
        text = file.read()
    entry["licenseDeclared"] = reference
    names = dict.fromkeys(re.findall(r"^License: *(\S.*)", text, re.M))
    if names:
        entry["licenseComments"] = "Debian's names for the licences in its source: " + ", ".join(names)
    licences[reference] = {"licenseId": reference, "extractedText": text,
                           "name": "Debian's copyright file of " + entry["sourceInfo"].split()[-1]}


def describe(link):
    """Entries, relations to the package, and licences."""
    static, headers, stubs = owners(link.static), owners(link.headers), owners(link.stubs)
    entries, relations, licences = [], [], {}
    for package in sorted(set(static) | set(headers)):
        entry, reference = debian(package)
        add_licence(entry, reference, licences)
        # C headers of a shared library declare what is in it. Those of C++ have code.
        code = [*sorted(static[package])] + ["headers"] * bool(headers[package])
        linked = bool(static[package]) or package not in stubs or "c++" in package
        entry["comment"] = ("linked in: " if linked else "declarations only: ") + " ".join(code)
        entries.append(entry)
        relations.append(("SPDXRef-Package", "STATIC_LINK", entry["SPDXID"]) if linked
                         else (entry["SPDXID"], "BUILD_DEPENDENCY_OF", "SPDXRef-Package"))
    for package in sorted(owners(link.shared)):
        entry, _ = debian(package)
        entries.append(entry)
        relations.append(("SPDXRef-Package", "DYNAMIC_LINK", entry["SPDXID"]))
    for name in sorted(link.ours):
        entries.append({"SPDXID": f"SPDXRef-{name}", "name": name, "downloadLocation": "NOASSERTION",
                        "filesAnalyzed": False, "comment": "the device library, from the maker of the devices"})
        relations.append(("SPDXRef-Package", "DYNAMIC_LINK", f"SPDXRef-{name}"))
    return entries, relations, licences


def main():
    link = Link()
    for path in MAPS:
        with open(path, encoding="utf-8") as file:
            link.read_map(file.read())
    link.read_headers(output_of(NINJA, "-C", BUILD, "-t", "deps"))
    if not link.headers:
        sys.exit(f"spdx.py: ninja knows no headers of {' '.join(sorted(link.objects))}")
    entries, relations, licences = describe(link)
    package = {"SPDXID": "SPDXRef-Package", "name": PACKAGE, "versionInfo": VERSION,
               "supplier": f"Organization: {AUTHOR}", "downloadLocation": "NOASSERTION",
               "filesAnalyzed": False, "licenseConcluded": "NOASSERTION",
               "licenseDeclared": "NOASSERTION", "copyrightText": f"2026 {AUTHOR}"}
    relations.insert(0, ("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-Package"))
    content = {"packages": [package] + entries,
               "hasExtractedLicensingInfos": [licences[each] for each in sorted(licences)],
               "relationships": [{"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}
                                 for one, kind, other in relations]}
    digest = hashlib.sha256(json.dumps(content).encode()).hexdigest()
    created = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"])))
    json.dump({"spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
               "name": f"{PACKAGE}-{VERSION}",
               "documentNamespace": f"https://corvane.invalid/spdx/{PACKAGE}-{VERSION}-{digest}",
               "creationInfo": {"created": created, "creators": [f"Organization: {AUTHOR}", "Tool: spdx.py"]},
               **content}, sys.stdout, indent=1)
    print()


main()
