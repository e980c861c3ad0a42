#!/usr/bin/python3
"""Sets one Corvane device as wished, through corvane-config."""

import json

from ansible.module_utils.basic import AnsibleModule

DOCUMENTATION = r"""
module: corvane_settings
short_description: Settings of a Corvane capture device
description:
  - Hands the settings to corvane-config, which compares them with the device, writes what differs,
    reads it back and puts the old settings back when anything fails.
options:
  device: {type: str, default: "0", description: Index or MAC address.}
  settings: {type: dict, default: {}, description: Sections and settings of corvane-config.}
  save: {type: bool, default: true, description: Make changes permanent.}
  command: {type: str, default: corvane-config}
"""


def toml(value):
    """A value as TOML has it; texts and numbers are as in JSON."""
    if not isinstance(value, dict):
        return json.dumps(value)
    return "{" + ", ".join(f"{json.dumps(str(key))} = {toml(each)}"
                           for key, each in value.items()) + "}"


def main():
    module = AnsibleModule(supports_check_mode=True, argument_spec={
        "device": {"type": "str", "default": "0"},
        "settings": {"type": "dict", "default": {}},
        "save": {"type": "bool", "default": True},
        "command": {"type": "str", "default": "corvane-config"},
    })
    settings = {section: each for section, each in module.params["settings"].items() if each}
    if not settings:
        module.exit_json(changed=False)

    def run(good, *words):
        status, text, errors = module.run_command(
            [module.params["command"], *words, "-"],
            data=toml({"device": {module.params["device"]: settings}})[1:-1])
        if status not in good:
            module.fail_json(msg=errors.strip() or f"{words[0]}: status {status}")
        return text

    differences = json.loads(run((0, 1), "diff", "--json"))["differences"]
    if differences and not module.check_mode:
        run((0,), "apply", *(["--save"] if module.params["save"] else []))
    module.exit_json(changed=bool(differences), diff={
        "before": {each["setting"]: each["old"] for each in differences},
        "after": {each["setting"]: each["new"] for each in differences}})


if __name__ == "__main__":
    main()
