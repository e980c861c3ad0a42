#!/usr/bin/env python3
# settings_seen_test.py BIN PAGE: takes each row of the page's table of settings at its word. The
# shell functions are the page's own.
import concurrent.futures
import os
import re
import subprocess
import sys
import tempfile

BIN, PAGE = sys.argv[1:3]
with open(PAGE, encoding="utf-8") as page:
    text = page.read().split("### What each setting does")[1]
FUNCTIONS = re.search(r"```sh\n(.*?)```", text, re.S).group(1)
ROWS = re.findall(r"^\| (?:`([^`|]+)`)? ?\| `([^`|]+)` \| `([^`|]+)` \| (-?)`([^`|]+)` \|$", text, re.M)


def fault_of(row):
    before, setting, see, gone, sought = row
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, folder=folder, TZ="UTC", CORVANE_SIM_STATE=folder + "/state",
                           PATH=BIN + ":" + os.environ["PATH"])

        def shell(command):
            return subprocess.run(["bash", "-c", FUNCTIONS + command], env=environment, timeout=60,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True).stdout
        said = shell(before or ":")
        first = shell(see)
        said += shell(setting)
        second = shell(see)
    shown = [sought in first, sought in second]
    told = set(said.splitlines()) - {"Corvane detected", "Time updated"}
    if shown == [bool(gone), not gone] and not told:
        return ""
    return f"{setting} | {see} | {gone}{sought}\n{said}--- before\n{first}--- after\n{second}"


with concurrent.futures.ThreadPoolExecutor(4) as pool:
    faults = [fault for fault in pool.map(fault_of, ROWS) if fault]
print("\n".join(faults))
print(f"{len(ROWS)} settings, {len(faults)} without what the page says")
sys.exit(not ROWS or len(ROWS) != text.count("\n| ") - 1 or bool(faults))
