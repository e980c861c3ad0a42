# Every filter keeps exactly the frames, and every counter counts as many, as a display filter of
# tshark selects out of mixed ones.
#   frame_filter_test.py CORVANE COUNT [SEED]
# Ends with 77 where there is no tshark.
import concurrent.futures
import os
import re
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile
import time

CORVANE, COUNT, SEED = (sys.argv[1:] + ["20261"])[:3]
GENERATOR = os.path.join(os.path.dirname(__file__), "tools", "mixed_frames.py")

# ---- Display filters of which the cases are made

# tshark follows an IP version other than the EtherType says, the device neither; and a header that
# is cut off has fields in tshark.
SAME = "!(ip && ipv6)"
WHOLE = f"(ip.dst || ipv6.dst) && {SAME}"


def any_of(fields, condition):
    return "(" + " || ".join(f"{field} {condition}" for field in fields.split()) + ")"


def ether_type(number):
    return any_of("eth.type vlan.etype", f"== {number}")


# The IP protocol after all extension headers. tshark has a field of a routing header of which only
# the first byte is there.
def protocol(numbers):
    found = any_of("ip.proto ipv6.nxt ipv6.hopopts.nxt ipv6.routing.nxt ipv6.dstopts.nxt"
                   " ipv6.fraghdr.nxt ah.next_header", f"in {{{numbers}}}")
    routed = "(!ipv6.routing || count(ipv6.routing.nxt) == count(ipv6.routing.len))"
    return f"({WHOLE} && {found} && {routed})"


def transport(condition):
    return f"(({condition}) && {SAME})"


def vlan(number):
    return any_of("vlan.id ieee8021ad.id ieee8021ad.svid ieee8021ad.cvid", f"== {number}")


IP4, IP6, ARP = ether_type("0x0800"), ether_type("0x86dd"), ether_type("0x0806")
OTHER_PROTOCOLS = "3..5,7..16,18..42,45..50,52..57,59,61..134,136..138,141..255"

# ---- Cases

# "filter set" with these keeps those.
FILTERS = {
    "--mac 02:00:00:0a:00:15": "eth.addr == 02:00:00:0a:00:15",
    "--srcmac 02:00:00:*:00:35 --dstmac ff:ff:ff:ff:ff:ff":
        "eth.src[0:3] == 02:00:00 && eth.src[4:2] == 00:35 && eth.dst == ff:ff:ff:ff:ff:ff",
    "--ip 10.1.2.3": f"ip.addr == 10.1.2.3 && {WHOLE}",
    "--srcip 192.168.*.* --dstip 10.*.2.3":
        "ip.src == 192.168.0.0/16 && ip.dst[0] == 0a && ip.dst[2:2] == 02:03",
    "--dstip 2001:0db8:0010:0000:0000:0000:0000:0021": f"ipv6.dst == 2001:db8:10::21 && {SAME}",
    "--srcip 2001:0db8:****:****:****:****:****:****":
        f"{WHOLE} && (ipv6.src == 2001:db8::/32 || ip.src == 32.1.13.184)",
    "--ip 2001:0db8:0010:****:****:****:****:0022":
        f"{WHOLE} && ((ipv6.src == 2001:db8:10::/48 && ipv6.src[14:2] == 00:22) ||"
        " (ipv6.dst == 2001:db8:10::/48 && ipv6.dst[14:2] == 00:22))",
    "--port 443": transport("tcp.port == 443 || udp.port == 443"),
    "--srcport 53 --dstport 5060": transport(
        "(tcp.srcport == 53 && tcp.dstport == 5060) || (udp.srcport == 53 && udp.dstport == 5060)"),
    "--vlanid 30": vlan(30),
    "--vlanid 0": vlan(0),
    "--vlanid 4464": "frame.number == 0",
    "--ip 10.1.*.* --port 80 --vlanid 200":
        f"{vlan(200)} && ip.addr == 10.1.0.0/16 && (tcp.port == 80 || udp.port == 80)",
}
# "packet_type_filter set" with one of these off drops those.
TYPES = {
    "ipv4": IP4, "ipv6": IP6, "arp": ARP, "l2other": f"!({IP4} || {IP6} || {ARP})",
    "vlan": "vlan || ieee8021ad", "tcp": protocol("6"), "udp": protocol("17"),
    "icmp": protocol("1,58"), "igmp": protocol("2"),
    "l4other": f"{protocol(OTHER_PROTOCOLS)} || "
               f"({WHOLE} && ip.proto in {{0,43,44,51,60,135,139,140}})",
    "https": transport("tcp.port == 443"), "http": transport("tcp.port == 80"),
    "ftp": transport("tcp.port in {20,21}"), "smtp": transport("tcp.port == 25"),
    "dns": transport("tcp.port == 53 || udp.port == 53"), "pop3": transport("tcp.port == 110"),
    "dhcp": transport("udp.port in {67,68}"), "ssh": transport("tcp.port == 22"),
    "sip": transport("tcp.port == 5060 || udp.port == 5060"), "smb": transport("tcp.port == 445"),
    "quic": transport("udp.port == 443"), "tcpfin": transport("tcp.flags.fin == 1"),
    "tcpsyn": transport("tcp.flags.syn == 1"), "tcprst": transport("tcp.flags.reset == 1"),
    "tcppsh": transport("tcp.flags.push == 1"), "tcpack": transport("tcp.flags.ack == 1"),
    "zerowindow": transport("tcp.window_size_value == 0"),
}
# "dpi enable" with the mask keeps those: the whole pattern, its first and last words, one byte,
# every second byte.
PATTERNS = {
    "ffff": 'frame contains "Corvane pattern!"', "00ff": 'frame contains "Corvane "',
    "ff00": 'frame contains "pattern!"', "1000": 'frame contains "e"',
    "aaaa": 'frame matches "(?s-i)o.v.n. .a.t.r.!"',
}
DPI = "dpi enable --dpitxt 'Corvane pattern!' --dpimask 0xa000"
# A record with IPv4 addresses in the first four bytes: from 10.1.2.3 to 192.*.*.*.
RECORD = 'packet_filter = {enable = 1, match_flags = 24, src_ip_mask = 15, dst_ip_mask = 8,' \
    f' src_ip = "0302010a{"0" * 24}", dst_ip = "000000c0{"0" * 24}"}}'
# Commands with semicolons between them, and what is kept.
CASES = {
    **{f"filter set {words}": kept for words, kept in FILTERS.items()},
    **{f"packet_type_filter set --{name} off": f"!({those})" for name, those in TYPES.items()},
    **{DPI + mask: kept for mask, kept in PATTERNS.items()},
    RECORD: "ip.src == 10.1.2.3 && ip.dst == 192.0.0.0/8",
    "packet_type_filter set --ipv6 off --tcpsyn off --arp off":
        f"!({IP6} || {TYPES['tcpsyn']} || {ARP})",
    f"filter set --srcport 443;{DPI}ffff":
        f"{transport('tcp.srcport == 443 || udp.srcport == 443')} && {PATTERNS['ffff']}",
}
# Counters with these count those.
COUNTERS = {
    "--ipv4 on --tcp on --ucast on": f"{IP4} && {protocol('6')} && eth.dst.ig == 0",
    "--ipv6 off --udp off --mcast on --size_gt 500": f"!{IP6} && !{protocol('17')} &&"
        " eth.dst.ig == 1 && eth.dst != ff:ff:ff:ff:ff:ff && frame.len > 496",
    "--ipv4 on --ipv4_addr 10.1.*.3": f"{IP4} && {WHOLE} && ((ip.src == 10.1.0.0/16 &&"
        " ip.src[3] == 03) || (ip.dst == 10.1.0.0/16 && ip.dst[3] == 03))",
    "--ipv6 on --ipv6_addr 2001:0db8:0010:0000:0000:0000:0000:**21":
        f"{WHOLE} && ((ipv6.src == 2001:db8:10::/112 && ipv6.src[15] == 21) ||"
        " (ipv6.dst == 2001:db8:10::/112 && ipv6.dst[15] == 21))",
    "--ipv4 off --ipv4_addr 10.1.*.*":
        f"!({IP4} && {WHOLE} && (ip.src == 10.1.0.0/16 || ip.dst == 10.1.0.0/16))",
    "--ipv6 on --icmp on --size_lt 100": f"{IP6} && {protocol('1,58')} && frame.len < 96",
    "--ucast off --tcp off --udp on": f"eth.dst.ig == 1 && !{protocol('6')} && {protocol('17')}",
    "--bcast on --icmp off --size_eq 64":
        f"eth.dst == ff:ff:ff:ff:ff:ff && !{protocol('1,58')} && frame.len == 60",
}

# ---- Running them


def run(*words):
    return subprocess.run(words, check=True, text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL).stdout


# Bytes by the time stamp, which is a millisecond for each packet of the trace.
def packets(file):
    with open(file, "rb") as pcap:
        data = pcap.read()
    found = {}
    at = 24
    while at < len(data):
        seconds, nanoseconds, size = struct.unpack_from("=III", data, at)
        found[seconds % 1000 * 1000 + nanoseconds // 10**6] = data[at:at + 16 + size]
        at += 16 + size
    return found


# Captures from the trace, into folder/ours.pcap, and returns the statistics.
def capture(folder, commands):
    os.mkdir(folder)
    record = commands if commands == RECORD else ""
    with open(folder + "/sim.toml", "w", encoding="ascii") as file:
        file.write('[[device]]\nmac = "00:1a:2b:3c:4d:5e"\ncapabilities = 0x3FFFFFF\n' + record +
                   '\n[device.port_a]\nsource = "pcap"\nfile = "../trace"\npace = "fast"\n')
    corvane = ("env", f"CORVANE_SIM_CONFIG={folder}/sim.toml", f"CORVANE_SIM_STATE={folder}",
               CORVANE)
    for command in [] if record else commands.split(";"):
        run(*corvane, *shlex.split(command))
    run(*corvane, "directcapture", "start", "--dir", folder, "--pattern", "kept")
    while "Enabled : 1" in run(*corvane, "directcapture", "status"):
        time.sleep(0.02)
    run("editcap", "-F", "nsecpcap", folder + "/kept", folder + "/ours.pcap")
    return run(*corvane, "statistics")


def select(folder, display_filter):
    run("tshark", "-n", "-o", "ip.defragment:FALSE", "-o", "ipv6.defragment:FALSE", "-r",
        folder + "/../trace", "-Y", display_filter, "-F", "nsecpcap", "-w", folder + "/theirs.pcap")
    return packets(folder + "/theirs.pcap")


# Both print nothing, or a line of text when the two differ.
def check_filter(folder, commands, display_filter):
    capture(folder, commands)
    ours, theirs = packets(folder + "/ours.pcap"), select(folder, display_filter)
    shutil.rmtree(folder)
    numbers = [n + 1 for n in {**ours, **theirs} if ours.get(n) != theirs.get(n)]
    return f"{commands}: tshark {len(theirs)}, ours {len(ours)}; {numbers[:6]}\n" if numbers else ""


# Frames that are not kept count too.
def check_counters(folder):
    commands = [f"statsv2 set --counter {i} {words}" for i, words in enumerate(COUNTERS)]
    statistics = capture(folder, ";".join(commands + ["packet_type_filter set --ipv4 off"]))
    ours = [int(count) for count in re.findall(r"Counter \d+ : *(\d+)", statistics)]
    theirs = [len(select(folder, display_filter)) for display_filter in COUNTERS.values()]
    return "" if ours[:len(theirs)] == theirs else f"counters: tshark {theirs}, ours {ours}\n"


# Makes the trace. tshark is to look at the headers that the device looks at, and no further: what
# an ICMP error quotes is not the frame's. Its own protocol "ethertype" and those below cannot be
# missed.
def set_up(folder):
    run(sys.executable, GENERATOR, folder + "/trace", COUNT, SEED)
    os.environ["XDG_CONFIG_HOME"] = folder
    looks_at = re.compile(
        r"frame|eth|ethertype|vlan|ieee8021ad|arp|ip|ipv6(\..*)?|ah|mipv6|hip|tcp|udp")
    names = [line.split("\t")[2] for line in run("tshark", "-G", "protocols").splitlines()]
    os.mkdir(folder + "/wireshark")
    with open(folder + "/wireshark/disabled_protos", "w", encoding="ascii") as file:
        file.writelines(name + "\n" for name in names if not looks_at.fullmatch(name))


if shutil.which("tshark") is None:
    print("skipped: tshark is not installed")
    sys.exit(77)
with tempfile.TemporaryDirectory() as base, \
        concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
    set_up(base)
    jobs = [workers.submit(check_counters, base + "/counters")]
    jobs += [workers.submit(check_filter, f"{base}/{i}", *case)
             for i, case in enumerate(CASES.items())]
    failures = "".join(job.result() for job in jobs)
print(failures + f"{len(CASES) + len(COUNTERS)} cases")
sys.exit(1 if failures else 0)
