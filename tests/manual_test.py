#!/usr/bin/env python3
# manual_test.py BUILD SOURCE: checks the manual pages, runs every command that they and the README
# show and compares what it prints; asks for the help of every command that the page lists; loads
# every configuration of simulated devices.
#
# A display is a session: its commands share a folder and the simulated devices' state. "..." alone
# on a line stands for any lines, a time of 14 digits for any time.
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile

BUILD, SOURCE = sys.argv[1:3]
PAGES = [f"{BUILD}/corvane.1"] + sorted(glob.glob(f"{SOURCE}/docs/*.[15]"))
README = f"{SOURCE}/README.md"
OWN = re.compile(r"outdated mandoc.db lacks |referenced manual not found: "
                 r"Xr (corvane(-capture|-config|-extcap|-lab|-metrics|-report|-sim|-simulator)?|wireshark|tshark|extcap) \d")
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
    for escape, character in (("\\-", "-"), ("\\(aq", "'"), ("\\(dq", '"'), ("\\&", ""), ("\\e", "\\")):
        text = text.replace(escape, character)
    return text


def displays(path):
    """Those of a page; the README's as one, because its later parts go on from the first, together
    with what it exports."""
    if path == README:
        blocks = re.findall(r"^```(?:console|sh)\n(\$ .*?|export .*?)^```", read(path), re.M | re.S)
        return ["".join(re.sub("^export", "$ export", block) for block in blocks)]
    return re.findall(r"^\.Bd -literal.*?\n(.*?)^\.Ed", plain(read(path)), re.M | re.S)


def matches(expected, got):
    """Blanks at line ends and empty lines at the end do not show on a page."""
    expected = re.escape(re.sub(" +$", "", expected, flags=re.M))
    pattern = expected.replace(re.escape("...\n"), "(?:.*\n)*")
    pattern = re.sub(r"\d{14}", r"\\d{14}", pattern)
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


def check_commands(page):
    """Each command has a section with every option that its help has; those of all stand once."""
    text = plain(read(page))
    options = re.compile(r"Fl -(\w+)")
    common = options.findall(re.search(r"^\.Sh OPTIONS\n(.*?)^\.Sh", text, re.M | re.S).group(1))
    commands = re.findall(r"^\.S[sh] (corvane .*)\n((?:(?!\.S[sh] ).*\n)*)", text, re.M)
    for name, section in commands:
        shown = run(*name.split(), "help")
        wanted = set(re.findall(r"^ +(?:-\w, )?--(\w+)", shown.stdout, re.M))
        described = set(options.findall(section) + (common if name != "corvane list" else []))
        check(shown.returncode == 0 and wanted == described, f"{name}: {wanted ^ described}")
        check(("|all>" in shown.stdout) == ("Cm all" in section), f"{name}: all")
    helps = {os.path.basename(path)[:-4] for path in glob.glob(f"{SOURCE}/tests/golden/help/*.txt")}
    leaves = {"corvane " + each.replace("-", " ") for each in helps - {"root"}
              if not any(other.startswith(each + "-") for other in helps)}
    check(leaves == {name for name, _ in commands}, "the page has other commands than there are")


def check_configuration(path, text, folder):
    """It loads as it stands, with all its devices."""
    with open(f"{folder}/taps.toml", "w", encoding="utf-8") as file:
        file.write(text)
    shown = run("corvane", "list", cwd=folder, env={
        **os.environ, "CORVANE_SIM_CONFIG": f"{folder}/taps.toml",
        "CORVANE_SIM_STATE": tempfile.mkdtemp(dir=folder)})
    devices = text.count("[[device]]")
    found = len(re.findall(r"^\d+ : ", shown.stdout, re.M))
    check(0 < devices == found, f"{path}: {text}--- printed\n{shown.stdout}")


if not shutil.which("mandoc") or not shutil.which("man"):
    print("skipped: no mandoc or no man")
    sys.exit(77)
with tempfile.TemporaryDirectory() as folder:
    os.makedirs(f"{folder}/build")
    os.symlink(BUILD, f"{folder}/build/release")
    os.environ.pop("CORVANE_SIM_CONFIG", None)
    ran = run_display(README, displays(README)[0], folder)
    os.environ["PATH"] = f"{BUILD}/bin:{os.environ['PATH']}"
    for path in PAGES:
        lint(path)
        for display in displays(path):
            if "[device." in display:  # the page's next example reads it
                with open(f"{folder}/lab.toml", "w", encoding="utf-8") as file:
                    file.write(display)
            if "[[device]]" in display:  # the page's next example reads it too
                check_configuration(path, display, folder)
            ran += run_display(path, display, folder) if "$ " in display else 0
    check_commands(PAGES[0])
    for path in [README] + glob.glob(f"{SOURCE}/docs/*.md"):
        for block in re.findall(r"^```toml\n(.*?)^```", read(path), re.M | re.S):
            check_configuration(path, block, folder)
check(ran > 10, f"only {ran} commands found")
print("\n\n".join(failures) or f"{ran} commands")
sys.exit(1 if failures else 0)
