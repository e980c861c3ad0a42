"""capture_trace.py FILE COUNT: writes a pcap file of mixed Ethernet packets, always the same ones.

Offices talking to servers: TCP, UDP and ICMP over IPv4 and IPv6, some in VLANs, and ARP. Sizes are
about those of the simple Internet mix: seven small packets to four of 590 bytes and one full one.
About one IPv4 packet in sixty has the host 10.1.20.7 and the port 443; of the packets with enough
room, one in a thousand carries the bytes of NEEDLE.
"""
import random
import struct
import sys

NEEDLE = bytes.fromhex("436f727661636517a9d3f0124b6e8c55")
SEED = 20240607
SIZES = 7 * (70,) + 4 * (590,) + (1506,)


def ipv4(rng, size):
    udp = rng.random() < 0.3
    hosts = [192 << 24 | 168 << 16 | 10 << 8 | rng.randrange(1, 250),
             10 << 24 | 1 << 16 | 20 << 8 | rng.randrange(1, 17)]
    ports = [rng.randrange(1024, 65536), rng.choice((53, 80, 123, 443, 443, 5060, 8080))]
    if rng.random() < 0.5:
        hosts.reverse()
        ports.reverse()
    if rng.random() < 0.03:
        transport = struct.pack("!BBHHH", 8, 0, 0, 1, 1)
        protocol = 1
    elif udp:
        transport = struct.pack("!HHHH", *ports, size - 34, 0)
        protocol = 17
    else:
        transport = struct.pack("!HHIIBBHHH", *ports, 1, 1, 0x50, 0x10, 8192, 0, 0)
        protocol = 6
    return 0x0800, struct.pack("!BBHHHBBHII", 0x45, 0, size - 14, 0, 0x4000, 64, protocol, 0,
                               *hosts) + transport


def ipv6(rng, size):
    network = bytes.fromhex("20010db8000000000000000000")
    address = [network + rng.randbytes(3) for _ in range(2)]
    head = struct.pack("!IHBB", 6 << 28, size - 54, 17, 64) + b"".join(address)
    return 0x86DD, head + struct.pack("!HHHH", rng.randrange(1024, 65536), 443, size - 54, 0)


def arp(_rng, _size):
    return 0x0806, struct.pack("!HHBBH", 1, 0x0800, 6, 4, 1) + bytes(20)


def packet(rng, filler):
    size = rng.choice(SIZES) + rng.randrange(8)
    kind = rng.random()
    make = arp if kind < 0.02 else ipv6 if kind < 0.15 else ipv4
    ethertype, head = make(rng, size)
    tag = struct.pack("!HH", 0x8100, rng.randrange(1, 4000)) if rng.random() < 0.1 else b""
    frame = b"\x02\0\0\0\0\x01\x02\0\0\0\0\x02" + tag + struct.pack("!H", ethertype) + head
    begin = rng.randrange(len(filler) - 2000)
    frame += filler[begin:begin + size - len(frame)]
    if rng.random() < 0.001 and size > 200:
        frame = frame[:100] + NEEDLE + frame[100 + len(NEEDLE):]
    return frame


def main():
    rng = random.Random(SEED)
    filler = rng.randbytes(1 << 16)
    with open(sys.argv[1], "wb", buffering=1 << 20) as out:
        out.write(struct.pack("=IHHIIII", 0xA1B23C4D, 2, 4, 0, 0, 262144, 1))
        for number in range(int(sys.argv[2])):
            frame = packet(rng, filler)
            nanoseconds = number * 1003
            out.write(struct.pack("=IIII", 1_700_000_000 + nanoseconds // 10**9,
                                  nanoseconds % 10**9, len(frame), len(frame)))
            out.write(frame)


main()
