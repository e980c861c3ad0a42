#!/usr/bin/python3
"""Brings the settings of one Corvane device to the wished ones, by way of corvane and its reports."""

import json
import os

from ansible.module_utils.basic import AnsibleModule

DOCUMENTATION = r"""
module: corvane_settings
short_description: Features, packet filter and timing of a Corvane capture device
description:
  - Reads the device's reports through corvane-report, runs corvane only where they differ from
    what is wished, and reads them again to see that the device took it.
options:
  device: {type: str, default: "0", description: Index or MAC address.}
  features: {type: dict, default: {}, description: Options of corvane features set.}
  filter: {type: dict, default: {}, description: Options of corvane filter set, or enabled false.}
  timing: {type: dict, default: {}, description: Options of corvane timing config.}
  save: {type: bool, default: true, description: Make changes permanent.}
  state_dir: {type: path, required: true, description: Where the addresses of filters are kept.}
  command: {type: str, default: corvane}
  report_command: {type: str, default: corvane-report}
"""

STEP_NS = 1e9 / 2**32  # what the device counts the PPS compensation in

FEATURES = {
    "keepcrcerrors": "transmit_crc_errors",
    "keepcrc32": "keep_crc32_field",
    "disablea": "disable_port_a",
    "disableb": "disable_port_b",
    "slicing": "packet_slicing",
    "inline": "inline_mode",
    "loopback": "loopback",
    "timestamps": "timestamps_in_packets",
    "syncts": "synchronized_timestamps",
    "autonega": "port_a_autonegotiation",
    "autonegb": "port_b_autonegotiation",
    "firmware_mode": "loaded_firmware",
}
TIMING = {
    "tssource": "timestamp_initialization",
    "waitforsync": "wait_for_sync",
    "forcepps": "force_pps_generation",
    "ppsoutput": "pps_port_output",
    "ppscomp": "pps_compensation",
    "portAts": "timestamp_on",
    "portBts": "timestamp_on",
}
SOURCES = {
    "Initialize from system time": "system",
    "Initialize from RTC": "rtc",
    "Initialize from GPS": "gps",
    "Do not initialize": "none",
}
# kind: key of the report, either side, source, destination
FILTER = {
    "mac": ("mac", "mac", "srcmac", "dstmac"),
    "ip": ("ip", "ip", "srcip", "dstip"),
    "port": ("port", "port", "srcport", "dstport"),
}
ADDRESSES = ("ip", "srcip", "dstip")


class Device:
    """The device behind the two commands."""

    def __init__(self, module):
        self.module = module
        self.name = module.params["device"]

    def run(self, *words):
        command = [self.module.params["command"], *words]
        status, text, _ = self.module.run_command(command)
        if status != 0:
            self.module.fail_json(msg=f"{' '.join(command)}: status {status}: {text.strip()}")
        return text

    def report(self, *words):
        text = self.run(*words)
        status, output, errors = self.module.run_command(
            [self.module.params["report_command"]], data=text)
        if status != 0:
            self.module.fail_json(msg=f"{' '.join(words)}: {errors or output}")
        return json.loads(output)

    def section(self, name, *words):
        return self.report(*words, "--device", self.name)[name]

    def mac(self):
        # A device that does not tell its model is listed with an error: that is no matter here.
        _, output, _ = self.module.run_command(
            [self.module.params["report_command"]], data=self.run("list"))
        for device in json.loads(output).get("devices", []):
            if self.name.lower() in (str(device["device"]), device.get("mac")):
                return device.get("mac")
        return self.name


def word(value):
    """A setting as the command line has it."""
    return ("off", "on")[value] if isinstance(value, bool) else str(value)


def refuse_unknown(module, kind, wished, known):
    unknown = sorted(set(wished) - set(known))
    if unknown:
        module.fail_json(msg=f"{kind} has no {', '.join(unknown)}; it has {', '.join(known)}")


def read_features(device):
    report = device.section("features_configuration", "features", "show")
    state = {option: report[key] for option, key in FEATURES.items() if key in report}
    state["slicing"] = report["packet_slicing_size"]["value"] if state["slicing"] else 0
    if "firmware_mode" in state:
        state["firmware_mode"] = state["firmware_mode"].split(" ")[0]
    forced = [option for option, key in FEATURES.items() if key + "_forced" in report]
    return state, forced


def steps(nanoseconds, near):
    count = -float(nanoseconds) / STEP_NS
    return round(count) if near else int(count)


def read_timing(device):
    report = device.section("timing_configuration", "timing", "status")
    state = {option: report[key] for option, key in TIMING.items()}
    state["tssource"] = SOURCES.get(state["tssource"], state["tssource"])
    state["ppscomp"] = steps(state["ppscomp"]["value"], near=True)
    for place in report["timestamp_on"]:
        state[f"port{place['port']}ts"] = place["place"].lower()
    return state, []


def read_filter(device):
    report = device.section("packet_filter_configuration", "filter", "show")
    if report.get("enabled") is False:
        return {"enabled": False}
    state = {"enabled": True}
    for key, either, source, destination in FILTER.values():
        if report[f"source_or_destination_{key}_mode"]:
            state[either] = report[key]
        for option, side in ((source, "source"), (destination, "destination")):
            if report.get(f"{side}_{key}", False) is not False:
                state[option] = report[f"{side}_{key}"]
    if report.get("vlan_id", False) is not False:
        state["vlanid"] = report["vlan_id"]
    return state


def normal(module, option, value, present):
    """A wished value as the report's, whether the playbook has it as a text or not."""
    if option == "ppscomp":
        return steps(value, near=False)
    if isinstance(present, bool):
        return module.boolean(value)
    if isinstance(present, int):
        return int(value)
    return str(value) if option == "firmware_mode" else str(value).lower()


def arguments(wished):
    return [text for option, value in sorted(wished.items()) for text in (f"--{option}", word(value))]


def settle_switches(device, kind, read, command, save):
    """Settings that are changed one by one. Returns them before and after."""
    module = device.module
    wished = dict(module.params[kind])
    if not wished:
        return {}, {}
    refuse_unknown(module, kind, wished, FEATURES if kind == "features" else TIMING)
    state, forced = read(device)
    wished = {option: normal(module, option, value, state.get(option))
              for option, value in wished.items()}
    change = {option: value for option, value in wished.items() if state.get(option) != value}
    impossible = [option for option in change if option in forced or option not in state]
    if impossible:
        module.fail_json(msg=f"{kind}: the device cannot change {', '.join(sorted(impossible))}")
    before = {option: state[option] for option in change}
    if change and not module.check_mode:
        apply_switches(device, kind, state, change, command, save)
        after, _ = read(device)
        left = sorted(option for option in wished if after.get(option) != wished[option])
        if left:
            module.fail_json(msg=f"{kind}: the device did not take {', '.join(left)}", changed=True)
    return before, change


def apply_switches(device, kind, state, change, command, save):
    settings = dict(change)
    if kind == "timing":
        # The compensation is lost unless it goes along; half a step more, for it is cut off.
        count = change.get("ppscomp", state["ppscomp"])
        settings["ppscomp"] = f"{-(count + 0.5) * STEP_NS:.3f}" if count else "0"
    device.run(*command, "--device", device.name, *arguments(settings))
    if device.module.params["save"]:
        device.run(*save, "--device", device.name)


def normal_filter(wished):
    """As the report has it: the whole filter, for setting it replaces all of it."""
    if str(wished.get("enabled", True)).lower() in ("false", "no", "off"):
        return {"enabled": False}
    normal = {"enabled": True}
    for option, value in wished.items():
        text = str(value).lower()
        if option.endswith("mac"):
            normal[option] = text.replace("-", ":")
        elif option in ADDRESSES:
            normal[option] = text
        elif option != "enabled":
            normal[option] = int(value)
    return normal


def memory_file(device):
    name = device.mac().replace(":", "-")
    return os.path.join(device.module.params["state_dir"], f"{name}.json")


def recall(path):
    try:
        with open(path, encoding="utf-8") as file:
            return json.load(file)
    except (OSError, ValueError):
        return {}


def remember(path, content):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path + ".new", "w", encoding="utf-8") as file:
        json.dump(content, file)
    os.replace(path + ".new", path)


def known_addresses(state, memory):
    """The report shows of an IP filter only that there is one, so its text is remembered. The
    memory counts as long as the report is the one that was seen when it was written."""
    if not any(option in state for option in ADDRESSES) or memory.get("report") != state:
        return state
    return {**state, **memory.get("addresses", {})}


def settle_filter(device):
    module = device.module
    wished = module.params["filter"]
    if not wished:
        return {}, {}
    options = [option for _, *names in FILTER.values() for option in names] + ["vlanid", "enabled"]
    refuse_unknown(module, "filter", wished, list(dict.fromkeys(options)))
    wished = normal_filter(wished)
    path = memory_file(device)
    state = known_addresses(read_filter(device), recall(path))
    if state == wished:
        return {}, {}
    if not module.check_mode:
        apply_filter(device, wished, path)
    return state, wished


def apply_filter(device, wished, path):
    settings = {option: value for option, value in wished.items() if option != "enabled"}
    verb = "set" if wished["enabled"] else "disable"
    device.run("filter", verb, "--device", device.name, *arguments(settings))
    seen = read_filter(device)
    addresses = {option: wished[option] for option in ADDRESSES if option in wished}
    remember(path, {"report": seen, "addresses": addresses})
    if known_addresses(seen, {"report": seen, "addresses": addresses}) != wished:
        device.module.fail_json(msg="filter: the device did not take it", changed=True, seen=seen)


def main():
    module = AnsibleModule(
        argument_spec={
            "device": {"type": "str", "default": "0"},
            "features": {"type": "dict", "default": {}},
            "filter": {"type": "dict", "default": {}},
            "timing": {"type": "dict", "default": {}},
            "save": {"type": "bool", "default": True},
            "state_dir": {"type": "path", "required": True},
            "command": {"type": "str", "default": "corvane"},
            "report_command": {"type": "str", "default": "corvane-report"},
        },
        supports_check_mode=True,
    )
    device = Device(module)
    changes = {
        "features": settle_switches(device, "features", read_features, ("features", "set"),
                                    ("features", "save")),
        "timing": settle_switches(device, "timing", read_timing, ("timing", "config"),
                                  ("timing", "save")),
        "filter": settle_filter(device),
    }
    before = {kind: change[0] for kind, change in changes.items() if change[0] != change[1]}
    after = {kind: change[1] for kind, change in changes.items() if change[0] != change[1]}
    module.exit_json(changed=bool(after), diff={"before": before, "after": after})


if __name__ == "__main__":
    main()
