"""Random simulated devices, and random commands and events for them."""
import json
import os
import random
import subprocess
import tempfile
import time

RANDOM = random.Random()
CAPABILITIES = {"two": 0x2, "span": 0x4, "gps": 0x8, "poe": 0x20, "sfp": 0x40, "v1": 0x100,
                "control": 0x400, "loopback": 0x800, "phy": 0x2000, "hw": 0x40000, "ntp": 0x100000,
                "autoneg": 0x1000000}
SPEEDS = ["1000txfd", "100txfd", "100txhd", "10txfd", "10txhd"]
counts = {"devices": 0, "steps": 0}
folder = tempfile.TemporaryDirectory()


def some(*words):
    return RANDOM.choice(words)


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, timeout=60).stdout


def as_json(text, *options):
    """A line of JSON or an object for each report in the text."""
    shown = subprocess.run(["corvane-report", *options], input=text, capture_output=True, text=True)
    assert shown.returncode in (0, 3), (text, shown)
    return shown.stdout


def report(*command):
    """Only its version when the device does not support it."""
    return json.loads(as_json(run("corvane", *command)))


def partner():
    switches = SPEEDS + ["autoneg", "prefmaster", "forcerole"]
    return "{" + ", ".join(f"{each} = {some(0, 1)}" for each in switches if some(0, 0, 1)) + "}"


def event():
    port = some("a", "b")
    quantity = some("temperature = 90", "temperature = 20", "rx_power = 0.01", "rx_power = 0.5",
                    "voltage = 3.0")
    number = RANDOM.randrange(12)
    return some(f"cable_{port} = {some(0, 1)}", f"module_{port} = {some(0, 1)}",
                f"partner_{port} = {partner()}", f"gps_fix = {some(0, 1, 2)}",
                f"satellites_used = {number}", f"satellites_gps = {number}",
                f"external_pps = {some(0, 1)}", f"gps_module = {some(0, 1, 2)}",
                f"link_status = {{sfps = [{{measured = {{{quantity}}}}}]}}",
                f"poe_measures = {{pairs = [{{current = {number / 10}}}]}}")


def command():
    switch = some("on", "off")
    return some(["features", "set", f"--{some('disablea', 'disableb', 'inline', 'loopback')}", switch],
                ["features", "set", "--syncts", switch, "--autonega", switch],
                ["features", "set", "--firmware_mode", some("1G", "10G")],
                ["portcontrol", "set", "--portselection", some("a", "b"), f"--{some(*SPEEDS)}", switch,
                 "--autonegotiation", switch, "--prefermaster", some("on", "off")],
                ["timing", "config", "--tssource", some("gps", "system", "none"), "--forcepps", switch,
                 "--waitforsync", switch, "--ppsoutput", some("on", "off")],
                ["timing", some("setmanual", "setsystem", "setgps")],
                ["features", "save"], ["reset"])


def live(programs, seconds, seed, check, base=0x101, capabilities=(), commands=()):
    """Calls check with the capability mask of each device, new and after each of its steps. base: what
    every device can do; capabilities and commands: more for some of them."""
    RANDOM.seed(seed)
    os.environ.update(PATH=f"{programs}:{os.environ['PATH']}", CORVANE_SIM_CONFIG=folder.name + "/sim.toml")
    end = time.time() + seconds
    history = []
    try:
        while time.time() < end:
            counts["devices"] += 1
            bits = [*CAPABILITIES.values(), *capabilities]
            mask = base | sum(bit for bit in bits if some(0, 1, 1))
            os.environ["CORVANE_SIM_STATE"] = f"{folder.name}/{counts['devices']}"
            history = [f"mask {mask:#x}"]
            with open(os.environ["CORVANE_SIM_CONFIG"], "w", encoding="ascii") as file:
                file.write(f'time_scale = {some(1, 60)}\n[[device]]\nmac = "00:1a:2b:3c:4d:5e"\ntype = 3\n'
                           f'capabilities = {mask}\nhw_firmwares = ["10G", "1G"]\n'
                           f"traffic = {{rate = {some(1000, 1000000)}}}\n[device.surroundings]\n"
                           f"partner_a = {partner()}\npartner_b = {partner()}\n")
            check(mask)
            for _ in range(8):
                if time.time() > end:
                    break
                counts["steps"] += 1
                does = some(["corvane-sim", "event", event()],
                            ["corvane"] + (some(*commands) if commands and some(0, 1) else command()))
                history.append(does)
                run(*does)
                check(mask)
    except AssertionError:
        print(f"seed {seed}:", *history, open(os.environ["CORVANE_SIM_CONFIG"]).read(), sep="\n")
        raise
