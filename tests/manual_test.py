#!/usr/bin/env python3
# manual_test.py BUILD SOURCE: checks the manual pages, runs every command that they and the README
# show and compares what it prints; asks for the help of every command that the page lists.
#
# A display is a session: its commands share a folder and the simulated devices' state. "..." alone
# on a line stands for any lines.
import os
import re
import shutil
import subprocess
import sys
import tempfile

BUILD, SOURCE = sys.argv[1:3]
PAGES = [f"{BUILD}/corvane.1", f"{SOURCE}/docs/corvane-report.1", f"{SOURCE}/docs/corvane-sim.1",
         f"{SOURCE}/docs/corvane-simulator.5"]
README = f"{SOURCE}/README.md"
OWN = re.compile(r"referenced manual not found: Xr corvane(-sim|-simulator|-report)? \d")
MARK = "=-= next =-=\n"
failures = []


def check(condition, text):
    if not condition:
        failures.append(text)


def run(*command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=60, **options)


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def lint(page):
    """Both formatters are silent; whether our own pages are installed here does not matter."""
    found = [line for line in run("mandoc", "-Tlint", page).stdout.splitlines()
             if not OWN.search(line)]
    check(not found, "\n".join(found))
    shown = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", page], capture_output=True)
    check(shown.returncode == 0 and not shown.stderr, f"man {page}: {shown.stderr}")


def plain(text):
    for escape, character in (("\\-", "-"), ("\\(aq", "'"), ("\\&", ""), ("\\e", "\\")):
        text = text.replace(escape, character)
    return text


def displays(path):
    """Those of a page; the README's as one, because its later parts go on from the first."""
    if path == README:
        return ["".join(re.findall(r"^```console\n(.*?)^```", read(path), re.M | re.S))]
    return re.findall(r"^\.Bd -literal.*?\n(.*?)^\.Ed", plain(read(path)), re.M | re.S)


def matches(expected, got):
    """Blanks at line ends and empty lines at the end do not show on a page."""
    expected = re.escape(re.sub(" +$", "", expected, flags=re.M))
    pattern = expected.replace(re.escape("...\n"), "(?:.*\n)*")
    lines = [line.rstrip() + "\n" for line in got.rstrip().splitlines()]
    return re.fullmatch(pattern, "".join(lines))


def run_display(path, display, folder):
    """One shell runs all of it, so that what a command sets is there for the next; a command goes
    on after a backslash at the line's end."""
    steps = re.findall(r"^\$ ((?:.*\\\n)*.*\n)((?:(?!\$ ).*\n)*)", display, re.M)
    os.environ["CORVANE_SIM_STATE"] = tempfile.mkdtemp(dir=folder)
    ran = run("bash", "-c", f"echo '{MARK.strip()}'\n".join(each for each, _ in steps), cwd=folder)
    parts = ran.stdout.split(MARK)
    check(len(parts) == len(steps), f"{path}: stopped at {steps[len(parts) - 1][0]}")
    for (command, expected), got in zip(steps, parts):
        check(matches(expected, got), f"{path}: {command}--- shown\n{expected}--- printed\n{got}")
    return len(steps)


def install_sim(folder):
    """corvane-sim where it would be installed: beside the simulator, as far as its script goes."""
    os.makedirs(f"{folder}/bin")
    os.chmod(shutil.copy(f"{BUILD}/corvane-sim", f"{folder}/bin"), 0o755)
    library = re.search(r"\$here/([^$]*)\$", read(f"{BUILD}/corvane-sim")).group(1)
    library = os.path.normpath(f"{folder}/bin/{library}")
    os.makedirs(os.path.dirname(library), exist_ok=True)
    os.symlink(f"{BUILD}/simulator", library)
    os.environ["PATH"] = f"{folder}/bin:{BUILD}:{BUILD}/tools/report:{os.environ['PATH']}"
    os.environ.pop("CORVANE_SIM_CONFIG", None)


def check_commands(page):
    """Each command has a section with every option that its help has."""
    command = re.compile(r"^\.S[sh] (corvane .*)\n((?:(?!\.S[sh] ).*\n)*)", re.M)
    commands = command.findall(plain(read(page)))
    for name, section in commands:
        shown = run(f"{BUILD}/corvane", *name.split()[1:], "help")
        wanted = set(re.findall(r"^ +(?:-\w, )?--(\w+)", shown.stdout, re.M))
        described = set(re.findall(r"Fl -(\w+)", section))
        check(shown.returncode == 0 and wanted == described, f"{name}: {wanted ^ described}")
    check(len(commands) >= 38, f"{len(commands)} commands in the page")


if not shutil.which("mandoc") or not shutil.which("man"):
    print("skipped: no mandoc or no man")
    sys.exit(77)
with tempfile.TemporaryDirectory() as folder:
    install_sim(folder)
    ran = 0
    for path in PAGES + [README]:
        if path != README:
            lint(path)
        for display in displays(path):
            if "[[device]]" in display:  # the file that the page's next example reads
                with open(f"{folder}/taps.toml", "w", encoding="utf-8") as file:
                    file.write(display)
            ran += run_display(path, display, folder) if "$ " in display else 0
    check_commands(PAGES[0])
check(ran > 10, f"only {ran} commands found")
print("\n\n".join(failures) or f"{ran} commands")
sys.exit(1 if failures else 0)
