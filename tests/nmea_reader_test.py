"""Every sentence of corvane nmea is accepted by pynmea2, which refuses wrong checksums, and gives the
configured position and the time of the device's clock.

usage: nmea_reader_test.py CORVANE; ends with 77 when pynmea2 is not there.
"""

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

LATITUDE, LONGITUDE, ALTITUDE = -33.856789, 151.215297, 27.5
CONFIGURATION = f"""
[[device]]
mac = "00:1a:2b:3c:4d:5e"
capabilities = ["GPS"]
[device.gps]
latitude = {LATITUDE}
longitude = {LONGITUDE}
altitude = {ALTITUDE}
"""
DEVICE_TIME = 1800000000  # what the device's clock is set to
SECONDS = 4
# A sentence has five decimals of a minute.
PRECISION = 1e-5 / 60


def check_position(sentence):
    assert abs(sentence.latitude - LATITUDE) <= PRECISION, sentence.latitude
    assert abs(sentence.longitude - LONGITUDE) <= PRECISION, sentence.longitude


def check_time(sentence, date, host_elapsed):
    stamp = datetime.datetime.combine(date, sentence.timestamp.replace(tzinfo=None))
    seconds = stamp.replace(tzinfo=datetime.timezone.utc).timestamp() - DEVICE_TIME
    assert abs(seconds - host_elapsed) < 1.5, (seconds, host_elapsed)


def main(corvane):
    folder = tempfile.mkdtemp()
    with open(folder + "/sim.toml", "w", encoding="ascii") as file:
        file.write(CONFIGURATION)
    environment = dict(os.environ, CORVANE_SIM_CONFIG=folder + "/sim.toml",
                       CORVANE_SIM_STATE=folder + "/state")
    subprocess.run([corvane, "timing", "setmanual", "--timestamp", str(DEVICE_TIME)],
                   env=environment, check=True, stdout=subprocess.DEVNULL)
    start = time.monotonic()
    kinds = {}
    with subprocess.Popen([corvane, "nmea"], env=environment, stdout=subprocess.PIPE) as program:
        assert program.stdout.readline() == b"Corvane detected\n"
        while time.monotonic() - start < SECONDS:
            line = program.stdout.readline()
            elapsed = time.monotonic() - start
            assert line.endswith(b"\r\n"), line
            sentence = pynmea2.parse(line.decode("ascii"), check=True)
            kind = sentence.sentence_type
            kinds[kind] = kinds.get(kind, 0) + 1
            if kind in ("RMC", "GGA"):
                check_position(sentence)
            if kind == "GGA":
                assert abs(sentence.altitude - ALTITUDE) < 0.06
            if kind == "RMC":
                check_time(sentence, sentence.datestamp, elapsed)
            if kind == "ZDA":
                check_time(sentence, datetime.date(sentence.year, sentence.month, sentence.day),
                           elapsed)
        program.terminate()
    assert set(kinds) == {"RMC", "GGA", "GSA", "GSV", "ZDA"}, kinds
    assert kinds["RMC"] >= SECONDS - 1, kinds
    print("accepted:", kinds)


main(sys.argv[1])
