#!/usr/bin/env python3
# schema_test.py BUILD [SECONDS [SEED]]: every report fits its JSON Schema: those of golden/ and of the
# sessions, those of every command when a call of the library fails, and those of random devices. No
# report has a member that its schema lacks, and no schema one that no report has.
import copy
import glob
import json
import os
import random
import re
import subprocess
import sys

from tools.random_devices import as_json, counts, live, run, some

try:
    from jsonschema import Draft202012Validator
except ImportError:
    print("skipped: no python3-jsonschema")
    sys.exit(77)

BUILD, HERE = sys.argv[1], os.path.dirname(os.path.abspath(__file__))
SECONDS = float((sys.argv + ["3"])[2])
SEED = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(2**32)
SAID = {"messages", "errors", "unsupported", "message", "error"}
NO_REPORT = ("nmea", "update", "help")
MORE_CAPABILITIES = [0x80, 0x200, 0x80000, 0x200000, 0x2000000]
MORE_COMMANDS = [
    ["filter", "set", "--mac", "aa:*:01:02:03:04", "--ip", "10.1.*.*", "--port", "80"],
    ["filter", "set", "--srcip", "2001:0db8:0000:0000:0000:0000:0000:****", "--vlanid", "3"],
    ["filter", "disable"], ["packet_type_filter", "set", "--arp", "off"],
    ["statsv2", "set", "--counter", "2", "--size_lt", "9", "--bytes", "--ipv4", "on", "--ipv4_addr", "1.2.3.4"],
    ["dpi", "enable", "--dpitxt", "0123456789abcdef"], ["features", "set", "--slicing", "64"],
    ["directcapture", "start", "--name", "/dev/null"], ["directcapture", "stop"],
    ["timing", "setmanual", "--device", "all"]]
seen = {}  # by schema: the paths of the members of all reports


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def parts(schema):
    """The schema and those in it, with their paths in a report."""
    yield "", schema
    for key, inner in schema.get("properties", {}).items():
        yield from ((f"/{key}{path}", each) for path, each in parts(inner))
    for inner in ([schema["items"]] if "items" in schema else []) + schema.get("anyOf", []):
        yield from parts(inner)


def members(report):
    if isinstance(report, list):
        return set().union(*map(members, report))
    if not isinstance(report, dict):
        return set()
    return set().union(*({f"/{key}"} | {f"/{key}{each}" for each in members(inner)}
                         for key, inner in report.items()))


def strict(schema):
    """The schema of this version alone, which has all members."""
    schema = copy.deepcopy(schema)
    for _, part in parts(schema):
        if "properties" in part:
            part.setdefault("additionalProperties", False)
    return Draft202012Validator(schema)


def fit(name, report, context):
    problems = [f"{error.json_path}: {error.message[:300]}" for error in STRICT[name].iter_errors(report)]
    assert not problems, "\n".join([f"{name}: {context}"] + problems)
    assert next(iter(report)) == "format", report
    if name != "line":
        counts["reports"] = counts.get("reports", 0) + 1
        seen.setdefault(name, set()).update(members(report))


def name_of(words):
    """The schema of a command's report."""
    name = "-".join(re.split(r" -", " ".join(words))[0].split())
    return name if name in SCHEMAS else "messages"


def fit_text(words, text):
    """The reports in a text, both as JSON and as lines."""
    decoder, rest = json.JSONDecoder(), as_json(text)
    while rest.strip():
        report, end = decoder.raw_decode(rest.lstrip())
        fit(name_of(words), report, text)
        rest = rest.lstrip()[end:]
    for line in as_json(text, "--lines").splitlines():
        fit("line", json.loads(line), text)


def fit_command(*words):
    fit_text(words, run("corvane", *words))


def check_goldens():
    for name, command in re.findall(r"^=== (\w+)\n(.*)", read(f"{HERE}/golden/json/cases.txt"), re.M):
        fit(name_of(command.split()), json.loads(read(f"{HERE}/golden/json/{name}.json")), name)
    for path in glob.glob(f"{HERE}/golden/report/*.txt"):
        fit_text([os.path.basename(path).split("-")[0]], read(path))


def check_sessions():
    """The reports that stand there in full."""
    output = re.compile(r"^\$ (.*)\n((?:(?![$?>|=\[]|calls |journal ).*\n)*)", re.M)
    for path in glob.glob(f"{HERE}/sessions/*.session"):
        for command, text in output.findall(read(path)):
            text = re.sub(r"^<< (.*)", lambda found: read(f"{HERE}/golden/report/{found[1]}"), text, flags=re.M)
            if not command.startswith(NO_REPORT) and not re.search(r"\{\d|^\.\.\.$|^Usage", f"{command}\n{text}", re.M):
                fit_text(command.split(), text)


def check_faults():
    """Every command, and again for each call whose failure golden/faults knows, but the list of devices:
    that is tried for seconds."""
    seen_faults = re.findall(r"^([\w -]+?) +\| (?!GetDevicesList)(\w+)[^|]*\|", read(f"{HERE}/golden/faults/seen.txt"), re.M)
    for line in read(f"{HERE}/golden/faults/commands.txt").split("\n\n")[1].splitlines():
        if "SERVER" in line or "|" in line or line.startswith(NO_REPORT):
            continue
        calls = [call for leaf, call in seen_faults if line.startswith(leaf)]
        for call in [None] + calls:
            with open(os.environ["CORVANE_SIM_CONFIG"], "w", encoding="ascii") as file:
                file.write('[[device]]\ntype = 11\nmac = "00:1a:2b:3c:4d:5e"\ncapabilities = 67108863\n')
                if call is not None:
                    file.write(f'[[fault]]\nfunction = "CorvaneAPI{call}"\nstatus = -7\n')
            fit_command(*line.replace("FOLDER", "/nowhere").split())


def check_strictness():
    """That the test finds what is wrong, and what a later version may add fits this one's schema."""
    report = json.loads(read(f"{HERE}/golden/json/statsv2.json"))
    shipped, strictly = Draft202012Validator(SCHEMAS["statsv2-show"]), STRICT["statsv2-show"]
    wrong = [("size_mode", "No words"), ("port_a", 1), ("counter", "0"), ("icmp", None), ("mode", True)]
    for key, value in wrong + [("unicast", ...), ("new", 1)]:
        changed = copy.deepcopy(report)
        counter = changed["statistics_v2_configuration"]["counters"][5]
        counter.pop(key) if value is ... else counter.update({key: value})
        assert not strictly.is_valid(changed), (key, value)
        assert shipped.is_valid(changed) == (key == "new"), (key, value)
    for changed in ({**report, "format": 2}, {"format": 1, "messages": ["Corvane detected"]}):
        assert not shipped.is_valid(changed), changed


def check(_):
    for name in SCHEMAS:
        if name not in ("line", "messages"):
            fit_command(*name.split("-"))
    fit_command(*some(*MORE_COMMANDS))


SCHEMAS = {os.path.basename(path)[:-5]: json.loads(read(path)) for path in glob.glob(f"{BUILD}/schema/*.json")}
for schema in SCHEMAS.values():
    Draft202012Validator.check_schema(schema)
STRICT = {name: strict(schema) for name, schema in SCHEMAS.items()}
check_strictness()
live(f"{BUILD}/bin", SECONDS, SEED, check, 0x1, MORE_CAPABILITIES, MORE_COMMANDS)
check_faults()
check_sessions()
check_goldens()
for name, schema in SCHEMAS.items():
    known = {path for path, _ in parts(schema) if path and path.split("/")[-1] not in SAID}
    assert name == "line" or known <= seen[name], f"{name}: no report has {sorted(known - seen[name])}"
print("%(reports)d reports, of %(devices)d random devices in %(steps)d steps and the goldens, fit" % counts,
      f"(seed {SEED})")
