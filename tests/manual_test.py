#!/usr/bin/env python3
"""manual_test.py BUILD SOURCE: checks the manual pages, runs every command that they and the README
show and compares what it prints; asks for the help of every command that the page lists.

A display is a session: its commands share a folder and the simulated devices' state. "..." alone on
a line stands for any lines."""
import os
import re
import subprocess
import sys
import tempfile

BUILD, SOURCE = sys.argv[1:3]
PAGES = [f"{BUILD}/corvane.1"] + [
    f"{SOURCE}/docs/{name}" for name in ("corvane-report.1", "corvane-sim.1", "corvane-simulator.5")]
SHIPPED = "corvane|corvane-sim|corvane-simulator|corvane-report"
failures = []


def check(condition, text):
    if not condition:
        failures.append(text)


def lint(page):
    """Both formatters are silent; whether our own pages are installed here does not matter."""
    found = subprocess.run(["mandoc", "-Tlint", page], capture_output=True, text=True).stdout
    own = re.compile(rf"referenced manual not found: Xr ({SHIPPED}) \d")
    found = [line for line in found.splitlines() if not own.search(line)]
    check(not found, "\n".join(found))
    shown = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", page], capture_output=True,
                           text=True)
    check(shown.returncode == 0 and not shown.stderr, f"man {page}: {shown.stderr}")


def plain(text):
    for escape, character in (("\\-", "-"), ("\\(aq", "'"), ("\\&", ""), ("\\e", "\\")):
        text = text.replace(escape, character)
    return text


def displays(path):
    """Those of a page; the README's as one, because its later parts go on from the first."""
    text = open(path, encoding="utf-8").read()
    if path.endswith(".md"):
        return ["".join(re.findall(r"^```console\n(.*?)^```", text, re.M | re.S))]
    return [plain(each) for each in re.findall(r"^\.Bd -literal.*?\n(.*?)^\.Ed", text, re.M | re.S)]


def steps(display):
    """[(command, expected output)]; a command goes on after a backslash at the line's end."""
    found = []
    for line in display.splitlines():
        if line.startswith("$ "):
            found.append([line[2:], ""])
        elif found and found[-1][0].endswith("\\"):
            found[-1][0] += "\n" + line
        elif found:
            found[-1][1] += line.rstrip() + "\n"
    return found


def matches(expected, got):
    """Blanks at line ends and empty lines at the end do not show on a page."""
    pattern = re.escape(expected).replace(re.escape("...\n"), "(?:.*\n)*")
    lines = [line.rstrip() + "\n" for line in got.rstrip().splitlines()]
    return re.fullmatch(pattern, "".join(lines))


def run_display(path, display, folder):
    """One shell runs all of it, so that what a command sets is there for the next."""
    commands = steps(display)
    mark = "=-= next =-="
    script = f"\necho '{mark}'\n".join(command for command, _ in commands)
    environment = dict(os.environ, PATH=f"{folder}/bin:{BUILD}:{BUILD}/tools/report:{os.environ['PATH']}",
                       CORVANE_SIM_STATE=tempfile.mkdtemp(dir=folder))
    environment.pop("CORVANE_SIM_CONFIG", None)
    ran = subprocess.run(["bash", "-c", script], cwd=folder, env=environment, text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
    parts = ran.stdout.split(mark + "\n")
    check(len(parts) == len(commands), f"{path}: stopped at {commands[len(parts) - 1][0]}")
    for (command, expected), got in zip(commands, parts):
        check(matches(expected, got), f"{path}: {command}\n--- shown\n{expected}--- printed\n{got}")
    return len(commands)


def write_configuration(path, folder):
    """The page's example of a configuration is the file that its next example reads."""
    for display in displays(path):
        if "[[device]]" in display:
            with open(f"{folder}/taps.toml", "w", encoding="utf-8") as file:
                file.write(display)


def install_sim(folder):
    """corvane-sim where it would be installed: beside the simulator, as far as its script goes."""
    os.makedirs(f"{folder}/bin")
    script = open(f"{BUILD}/corvane-sim", encoding="utf-8").read()
    library = re.search(r"\$here/([^$]*)\$", script).group(1)
    os.makedirs(os.path.dirname(os.path.normpath(f"{folder}/bin/{library}")), exist_ok=True)
    os.symlink(f"{BUILD}/simulator", os.path.normpath(f"{folder}/bin/{library}"))
    with open(f"{folder}/bin/corvane-sim", "w", encoding="utf-8") as file:
        file.write(script)
    os.chmod(f"{folder}/bin/corvane-sim", 0o755)


def check_commands(page):
    """Each command has a section with every option that its help has."""
    text = plain(open(page, encoding="utf-8").read())
    sections = re.split(r"^\.S[sh] ", text, flags=re.M)
    commands = [each for each in sections if each.startswith("corvane ")]
    for section in commands:
        name = section.splitlines()[0]
        shown = subprocess.run([f"{BUILD}/corvane", *name.split()[1:], "help"], text=True,
                               capture_output=True)
        wanted = set(re.findall(r"^ +(?:-\w, )?--(\w+)", shown.stdout, re.M))
        described = set(re.findall(r"Fl -(\w+)", section))
        check(shown.returncode == 0 and wanted == described, f"{name}: {wanted ^ described}")
    return len(commands)


def main():
    with tempfile.TemporaryDirectory() as folder:
        install_sim(folder)
        ran = 0
        for path in PAGES + [f"{SOURCE}/README.md"]:
            if not path.endswith(".md"):
                lint(path)
                write_configuration(path, folder)
            for display in displays(path):
                ran += run_display(path, display, folder) if "$ " in display else 0
        check(ran > 10, f"only {ran} commands found")
        check(check_commands(PAGES[0]) > 30, "too few commands in the page")
    print("\n\n".join(failures) or f"{ran} commands")
    return 1 if failures else 0


for tool in ("mandoc", "man"):
    if subprocess.run(["which", tool], capture_output=True).returncode:
        print(f"skipped: no {tool}")
        sys.exit(77)
sys.exit(main())
