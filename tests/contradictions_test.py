#!/usr/bin/env python3
# contradictions_test.py BIN [SECONDS [SEED]]: random simulated devices, random commands and events;
# whatever they are, the reports of a device do not contradict each other.
import random
import sys

from tools.random_devices import CAPABILITIES, counts, live, report

SECONDS = float((sys.argv + ["3"])[2])
SEED = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(2**32)
BITS = {"Down": 0, "10Mbps": 1e7, "100Mbps": 1e8, "1Gbps": 1e9}


def check_links(mask, features, links, modules, statistics, later):
    """What is down is down in each report, receives nothing and counts nothing."""
    down = [False, not mask & 2]
    for i, port in enumerate(links.get("ports", [])):
        up = port["local_receiver"]
        down[i] = down[i] or up is False
        assert (port["link"] == "Down") == (not up), port
        assert up or not port["link_partner_next_page_capable"], port
    for i, port in enumerate(modules.get("ports", [])):
        down[i] = down[i] or not mask & 0x2000 and not port["link_is_up"]
        for quantity in ["temperature", "voltage", "tx_bias", "tx_power", "rx_power"] * port["link_is_up"]:
            for level, listed in ("alarm", port["alarms"]), ("warning", port["warnings"]):
                low, value, high = (port[f"{edge}{quantity}"]["value"] for edge in
                                    (f"low_{level}_", "", f"high_{level}_"))
                beyond = not low <= value <= high
                assert beyond == (quantity in [each.lower().replace(" ", "_") for each in listed]), port
    for report_of in links, modules:
        assert len(report_of.get("ports", [1, 2])) == (2 if mask & 2 else 1) or "ports" not in report_of
    disabled = [features["disable_port_a"], features["disable_port_b"]]
    if mask & 0x2040:
        assert all(is_down or not off for is_down, off in zip(down, disabled)), (down, disabled)
    passes = features["inline_mode"] and not features["loopback"]
    elapsed = (later["timestamp"] - statistics["timestamp"]) / 1e9
    assert later["link_up"]["value"] + later["link_down"]["value"] == later["timestamp"] // 10**6, later
    for i, (one, other) in enumerate(zip(statistics["ports"], later["ports"])):
        assert all(other[each] >= one[each] for each in one if each != "port"), (one, other)
        sizes = ["less_than_64bytes", "between_64_and_1518_bytes", "more_than_1518_bytes"]
        valid = other["total_valid_packets"] + other["total_invalid_packets"]
        assert sum(other[each] for each in sizes) == valid, other
        grown = other["total_bytes"] - one["total_bytes"]
        assert not (down[i] and mask & 0x2040) or grown == 0 or (passes and not any(down)), (i, down, grown)
        link = (links.get("ports", [])[i:] or [{"link": ""}])[0]["link"].split("_")[0]
        if link in BITS and not passes and not mask & 0x40:
            assert 8 * grown <= 2 * BITS[link] * elapsed + 2 * 8 * 60000, (link, grown, elapsed)


def check_timing(timing):
    status, configuration = timing["timing_status"], timing["timing_configuration"]
    fix, used = status["gps_fix"], status["satellites"]["used"]
    assert used >= {"no": 0, "2D fix": 3, "3D fix": 4}[fix], status
    assert used <= status["satellites"]["gps"] + status["satellites"]["glonass"], status
    if fix == "no":
        assert not status["gps_pps"] and used == 0, status
    if status["timestamp_synchronized"]:
        assert status["gps_pps"] or status["external_pps"], status
        assert status["timestamp_source"] not in ("Manual timestamp", "Not initialized"), status
        assert not configuration["force_pps_generation"], timing
    assert not (configuration["pps_port_output"] and status["external_pps"]), timing


def check_power(poe):
    pairs = poe["poe_measures"]["pairs"]
    forth = sum(pair["current"]["value"] for pair in pairs if pair["return_path"])
    back = sum(pair["current"]["value"] for pair in pairs if not pair["return_path"])
    assert abs(forth - back) < 0.003, poe
    assert all(pair["voltage"]["value"] <= poe["supply_voltage"]["value"] for pair in pairs), poe


def check(mask):
    features = report("features", "show")["features_configuration"]
    statistics = report("statistics")
    links, modules = report("portstatus"), report("sfp")
    check_links(mask, features, links, modules, statistics, report("statistics"))
    if mask & CAPABILITIES["gps"]:
        check_timing(report("timing", "status"))
    if mask & CAPABILITIES["poe"]:
        check_power(report("poe", "show"))


live(sys.argv[1], SECONDS, SEED, check)
print("%(devices)d devices, %(steps)d commands and events, no contradiction" % counts, f"(seed {SEED})")
