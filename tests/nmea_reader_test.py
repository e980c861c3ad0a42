# nmea_reader_test.py CORVANE: every sentence of corvane nmea is accepted by pynmea2, which refuses
# wrong checksums, and gives the configured position and the time of the device's clock. Ends with
# 77 when pynmea2 is not there.

import collections
import datetime
import os
import subprocess
import sys
import tempfile
import time

try:
    import pynmea2
except ImportError:
    print("skipped: pynmea2 is not installed")
    sys.exit(77)

# With their precision: a sentence has five decimals of a minute, and one of a metre.
POSITION = {"latitude": (-33.856789, 1e-5 / 60), "longitude": (151.215297, 1e-5 / 60),
            "altitude": (27.5, 0.06)}
DEVICE_TIME = 1800000000  # what the device's clock is set to
SECONDS = 4


def check(sentence, host_elapsed):
    for name, (value, precision) in POSITION.items():
        assert abs(getattr(sentence, name, value) - value) <= precision, sentence
    kind = sentence.sentence_type
    if kind in ("RMC", "ZDA"):
        date = sentence.datestamp if kind == "RMC" else datetime.date(
            sentence.year, sentence.month, sentence.day)
        stamp = datetime.datetime.combine(date, sentence.timestamp.replace(tzinfo=None))
        seconds = stamp.replace(tzinfo=datetime.timezone.utc).timestamp() - DEVICE_TIME
        assert abs(seconds - host_elapsed) < 1.5, (sentence, seconds, host_elapsed)
    return kind


with tempfile.TemporaryDirectory() as folder:
    os.environ.update(CORVANE_SIM_CONFIG=f"{folder}/sim.toml", CORVANE_SIM_STATE=f"{folder}/state")
    with open(f"{folder}/sim.toml", "w", encoding="ascii") as file:
        file.write('[[device]]\nmac = "00:1a:2b:3c:4d:5e"\ncapabilities = ["GPS"]\n[device.gps]\n')
        file.writelines(f"{name} = {value}\n" for name, (value, _) in POSITION.items())
    subprocess.run([sys.argv[1], "timing", "setmanual", f"--timestamp={DEVICE_TIME}"], check=True)
    start = time.monotonic()
    kinds = collections.Counter()
    with subprocess.Popen([sys.argv[1], "nmea"], stdout=subprocess.PIPE) as program:
        assert program.stdout.readline() == b"Corvane detected\n"
        while time.monotonic() - start < SECONDS:
            line = program.stdout.readline()
            assert line.endswith(b"\r\n"), line
            sentence = pynmea2.parse(line.decode("ascii"), check=True)
            kinds[check(sentence, time.monotonic() - start)] += 1
        program.terminate()
assert set(kinds) == {"RMC", "GGA", "GSA", "GSV", "ZDA"}, kinds
assert kinds["RMC"] >= SECONDS - 1, kinds
print("accepted:", kinds)
