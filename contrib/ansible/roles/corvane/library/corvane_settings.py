#!/usr/bin/python3
"""Sets one Corvane device as wished, by running corvane and reading its reports."""

import json
import os

from ansible.module_utils.basic import AnsibleModule

DOCUMENTATION = r"""
module: corvane_settings
short_description: Features, packet filter and timing of a Corvane capture device
description:
  - Reads the device's reports through corvane-report, runs corvane only where they differ from
    what is wished, reads them again to see that the device accepted it, and then saves it.
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

STEP_NS = 1e9 / 2**32  # the device's unit of the PPS compensation

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

    def fail(self, words, *texts):
        told = [text.strip() for text in texts if text.strip()]
        self.module.fail_json(msg=": ".join([" ".join(words), *told]))

    def run(self, *words):
        status, text, errors = self.module.run_command([self.module.params["command"], *words])
        if status != 0:
            self.fail(words, f"status {status}", text, errors)
        return text

    def read(self, words, section, reading):
        """Returns what reading() makes of the report's section."""
        status, output, errors = self.module.run_command(
            [self.module.params["report_command"]], data=self.run(*words))
        try:
            report = json.loads(output)
            # Other devices in the list may have failed.
            if status == 0 or section == "devices":
                return reading(report[section])
            texts = [*report.get("errors", []), *report.get("unsupported", [])]
            self.fail(words, *map(str, texts), errors)
        except (AttributeError, KeyError, TypeError, ValueError) as error:
            self.fail(words, "not the expected report", repr(error), output, errors)

    def mac(self):
        def find(devices):
            macs = {str(device["device"]): device.get("mac") for device in devices}
            return macs.get(self.name, self.name.lower())
        return self.read(("list",), "devices", find) or self.fail(
            ("list",), f"no MAC address of device {self.name}")


def word(value):
    """A value as the command line takes it."""
    return ("off", "on")[value] if isinstance(value, bool) else str(value)


def refuse_unknown(module, kind, wished, known):
    unknown = sorted(set(wished) - set(known))
    if unknown:
        module.fail_json(msg=f"{kind} has no {', '.join(unknown)}; it has {', '.join(known)}")


def number(module, option, value, convert=int):
    try:
        return convert(str(value))
    except (OverflowError, ValueError):
        module.fail_json(msg=f"{option}: {value!r} is no number")


def features_state(report):
    state = {option: report[key] for option, key in FEATURES.items() if key in report}
    state["slicing"] = report["packet_slicing_size"]["value"] if state["slicing"] else 0
    if "firmware_mode" in state:
        state["firmware_mode"] = state["firmware_mode"].split(" ")[0]
    forced = [option for option, key in FEATURES.items() if key + "_forced" in report]
    return state, forced


def steps(nanoseconds, near):
    count = -float(nanoseconds) / STEP_NS
    return round(count) if near else int(count)


def timing_state(report):
    state = {option: report[key] for option, key in TIMING.items()}
    state["tssource"] = SOURCES.get(state["tssource"], state["tssource"])
    state["ppscomp"] = steps(state["ppscomp"]["value"], near=True)
    for place in report["timestamp_on"]:
        state[f"port{place['port']}ts"] = place["place"].lower()
    return state, []


def filter_state(report):
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


REPORTS = {
    "features": (("features", "show"), "features_configuration", features_state),
    "timing": (("timing", "status"), "timing_configuration", timing_state),
    "filter": (("filter", "show"), "packet_filter_configuration", filter_state),
}


def read_state(device, kind):
    words, section, reading = REPORTS[kind]
    return device.read((*words, "--device", device.name), section, reading)


def normal(module, option, value, present):
    """A wished value in the form of the report, whether the playbook has it as a text or not."""
    if option == "ppscomp":
        return number(module, option, value, lambda text: steps(text, near=False))
    if isinstance(present, bool):
        return module.boolean(value)
    if isinstance(present, int):
        return number(module, option, value)
    return str(value) if option == "firmware_mode" else str(value).lower()


def arguments(wished):
    return [text for option, value in sorted(wished.items()) for text in (f"--{option}", word(value))]


def settle_switches(device, kind, command, save):
    """Settings that are changed one by one. Returns what changed: before and after."""
    module = device.module
    wished = dict(module.params[kind])
    if not wished:
        return {}, {}
    refuse_unknown(module, kind, wished, FEATURES if kind == "features" else TIMING)
    state, forced = read_state(device, kind)
    wished = {option: normal(module, option, value, state.get(option))
              for option, value in wished.items()}
    change = {option: value for option, value in wished.items() if state.get(option) != value}
    impossible = [option for option in change if option in forced or option not in state]
    if impossible:
        module.fail_json(msg=f"{kind}: the device cannot change {', '.join(sorted(impossible))}")
    before = {option: state[option] for option in change}
    if change and not module.check_mode:
        # Another firmware mode saves all features, so the device must accept the others first.
        mode = {option: change[option] for option in change if option == "firmware_mode"}
        others = {option: change[option] for option in change if option not in mode}
        earlier = {option: state[option] for option in mode}
        for part, expected in ((others, {**wished, **earlier}), (mode, wished)):
            if part:
                apply_switches(device, kind, state, part, command)
                expect_taken(device, kind, expected)
        if module.params["save"]:
            device.run(*save, "--device", device.name)
    return before, change


def expect_taken(device, kind, wished):
    state, _ = read_state(device, kind)
    left = sorted(option for option in wished if state.get(option) != wished[option])
    if left:
        msg = f"{kind}: the device did not take {', '.join(left)}"
        device.module.fail_json(msg=msg, changed=True)


def apply_switches(device, kind, state, change, command):
    settings = dict(change)
    if kind == "timing":
        # The compensation is lost unless it is given again; half a step more, as it is truncated.
        count = change.get("ppscomp", state["ppscomp"])
        settings["ppscomp"] = f"{-(count + 0.5) * STEP_NS:.3f}" if count else "0"
    device.run(*command, "--device", device.name, *arguments(settings))


def normal_filter(module, wished):
    """The whole filter in the form of the report, because setting it replaces everything."""
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
            normal[option] = number(module, option, value)
            # Setting the filter saves it, and the command keeps only the lower bits of a VLAN id.
            if not 0 <= normal[option] <= 65535:
                module.fail_json(msg=f"{option}: {value!r} is not from 0 to 65535")
    return normal


def memory_file(device):
    name = device.mac().replace(":", "-")
    return os.path.join(device.module.params["state_dir"], f"{name}.json")


def recall(path):
    try:
        with open(path, encoding="utf-8") as file:
            return dict(json.load(file))
    except (OSError, TypeError, ValueError):
        return {}


def remember(module, path, content):
    try:
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path + ".new", "w", encoding="utf-8") as file:
            json.dump(content, file)
        os.replace(path + ".new", path)
    except OSError as error:
        module.fail_json(msg=f"filter: cannot remember its addresses: {error}", changed=True)


def known_addresses(state, memory):
    """The report of an IP filter does not show its addresses, so they are remembered. The memory
    counts as long as the report is the same as when it was written."""
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
    wished = normal_filter(module, wished)
    path = memory_file(device)
    state = known_addresses(read_state(device, "filter"), recall(path))
    if state == wished:
        return {}, {}
    if not module.check_mode:
        apply_filter(device, wished, path)
    return state, wished


def apply_filter(device, wished, path):
    settings = {option: value for option, value in wished.items() if option != "enabled"}
    verb = "set" if wished["enabled"] else "disable"
    device.run("filter", verb, "--device", device.name, *arguments(settings))
    seen = read_state(device, "filter")
    addresses = {option: wished[option] for option in ADDRESSES if option in wished}
    remember(device.module, path, {"report": seen, "addresses": addresses})
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
        "features": settle_switches(device, "features", ("features", "set"), ("features", "save")),
        "timing": settle_switches(device, "timing", ("timing", "config"), ("timing", "save")),
        "filter": settle_filter(device),
    }
    before = {kind: change[0] for kind, change in changes.items() if change[0] != change[1]}
    after = {kind: change[1] for kind, change in changes.items() if change[0] != change[1]}
    module.exit_json(changed=bool(after), diff={"before": before, "after": after})


if __name__ == "__main__":
    main()
