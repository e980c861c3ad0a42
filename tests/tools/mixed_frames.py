# mixed_frames.py FILE COUNT SEED: writes a pcap file of made-up Ethernet frames of all kinds, the
# same ones for the same seed.
#
# With and without VLAN tags, IPv4 with options and fragments, IPv6 with extension headers, the
# transports and ports that the filters know and others, other EtherTypes, padding, garbage, and
# frames that were cut when they were captured.
import random
import struct
import sys

PATTERN = b"Corvane pattern!"  # 16 bytes that the DPI cases look for
PORTS = (443, 80, 21, 20, 53, 25, 110, 67, 68, 22, 5060, 445, 8080, 50000, 0)
RARE_PROTOCOLS = (1, 2, 58, 89, 103, 112, 132, 50, 253, 59)
ECHO = b"\0\0\0\1\0\1ping"
QUOTED_IP = bytes.fromhex("4500003c00000000 40060000 0a010203 c0a80a15")
OTHER_TYPES = (0x88CC, 0x8863, 0x88F7, 0x1234, 0x8847)
rng = random.Random(int(sys.argv[3]))


# Not the library's: the numbers are to be the same with every version of it.
def below(limit):
    return int(rng.random() * limit)


def one_in(times):
    return below(times) == 0


def pick(*values):
    return values[below(len(values))]


def words(*numbers):
    return struct.pack(f"!{len(numbers)}H", *numbers)


# Payloads and transports


# Some have the whole pattern or a part of it, at any place, even at the very end.
def payload():
    size = below(1400) if one_in(4) else below(64)
    data = rng.randbytes(size) if one_in(2) else pick(b"\0", b"C", b" ", b"\xff") * size
    if not one_in(8):
        return data
    begin = below(16) if one_in(3) else 0
    part = bytearray(PATTERN[begin:begin + 1 + below(16 - begin) if one_in(3) else 16])
    if one_in(4):
        part[below(len(part))] ^= 1
    return data + part + (b"" if one_in(2) else rng.randbytes(below(40)))


def ports():
    return words(*(below(65536) if one_in(4) else pick(*PORTS) for _ in range(2)))


def options():
    return b"\1" * (4 * below(11) if one_in(4) else 0)


def tcp():
    extra = options()
    size = below(256) if one_in(50) else (20 + len(extra)) << 2
    window = 0 if one_in(4) else below(65536)
    return ports() + struct.pack("!8sBBHI", rng.randbytes(8), size, below(256), window, 0) + \
        extra + payload()


def udp():
    data = payload()
    return ports() + words(8 + len(data), 0) + data


# An error quotes the headers of another packet, which are not the frame's.
def icmp():
    error = b"\3\1\0\0\0\0\0\0" + QUOTED_IP + ports() + rng.randbytes(16)
    return pick(error, b"\x08\0" + ECHO)


# A protocol number, often a usual one, and a packet of it.
def transport(*usual):
    protocol = pick(*7 * (6,), *5 * (17,), *usual, *2 * (pick(*RARE_PROTOCOLS),))
    packets = {6: tcp, 17: udp, 1: icmp, 58: lambda: b"\x80\0" + ECHO}
    return protocol, packets.get(protocol, payload)()


# Networks, with the EtherType or the length in front


def ipv4_address():
    usual = bytes((pick(10, 192), pick(1, 168), pick(2, 10), pick(3, 21, 22)))
    return rng.randbytes(4) if one_in(8) else usual


def ipv4():
    extra = options()
    protocol, data = transport(1, 2)
    version = below(16) << 4 | below(6) if one_in(50) else 0x45 + len(extra) // 4
    size = below(100) if one_in(40) else 20 + len(extra) + len(data)
    fragment = pick(0x2000, 0x2001, 1, 0xB9, 0x3FFF) if one_in(8) else pick(0, 0x4000)
    return struct.pack("!HBBHHHBBH4s4s", 0x0800, version, 0, size, below(65536), fragment, 64,
                       protocol, 0, ipv4_address(), ipv4_address()) + extra + data


def ipv6_address():
    usual = struct.pack("!5sBQH", b"\x20\x01\x0d\xb8\0", pick(0x10, 0x20), 0,
                        pick(0x21, 0x22, 0x1021, 0x53))
    return rng.randbytes(16) if one_in(8) else usual


# Hop by hop, routing, fragment, authentication or destination options.
def extension(kind, following):
    units = below(3)
    if kind in (0, 60):  # one padding option over all
        return bytes((following, units, 1, 4 + 8 * units)) + bytes(4 + 8 * units)
    if kind == 51:
        return bytes((following, 1 + 2 * units)) + bytes(10 + 8 * units)
    fragment = pick(1, 8, 9, 0x05A0) if kind == 44 and one_in(2) else 0
    return struct.pack("!BBHI", following, 0, fragment, 0)


def ipv6():
    following, data = transport(58, 58)
    for kind in [pick(0, 43, 44, 51, 60) for _ in range(1 + below(3) if one_in(3) else 0)]:
        following, data = kind, extension(kind, following) + data
    version = below(256) if one_in(50) else 0x60
    size = below(100) if one_in(40) else len(data)
    return struct.pack("!HBBHHBB16s16s", 0x86DD, version, 0, 0, size, following, 64,
                       ipv6_address(), ipv6_address()) + data


def arp():
    return struct.pack("!HQ6s4s6s4s", 0x0806, 0x0001080006040001, b"\2\0\0\x0a\0\x15",
                       ipv4_address(), bytes(6), ipv4_address())


def other():
    return words(pick(*OTHER_TYPES)) + payload()


def llc():
    data = b"\x42\x42\3" + payload()
    return words(len(data)) + data


# Frames


def mac():
    usual = bytes((2, 0, 0, pick(10, 20), 0, pick(21, 22, 53)))
    return pick(b"\xff" * 6, b"\1\0\x5e\0\0\5", rng.randbytes(6), *5 * (usual,))


def tags():
    count = pick(1, 1, 1, 1, 2, 3) if one_in(4) else 0
    kinds = [pick(0x88A8, 0x9100, 0x8100) for _ in range(count - 1)] + [0x8100]
    return b"".join(words(kind, below(8) << 13 | pick(30, 40, 200, 0, 4095))
                    for kind in kinds[:count])


def frame():
    if one_in(100):
        return rng.randbytes(below(200))
    data = mac() + mac() + tags() + pick(*8 * (ipv4,), *5 * (ipv6,), arp, other, llc)()
    return data if len(data) >= 60 or one_in(4) else data.ljust(60, pick(b"\0", b"\xa5"))


# All of the frame or a part, but no service tag without the EtherType behind it: tshark shows
# nothing of that.
def captured(data):
    size = below(len(data) + 1) if one_in(20) else len(data)
    return data if b"\x88\xa8" in data[max(size - 5, 0):max(size - 2, 0)] else data[:size]


with open(sys.argv[1], "wb") as out:
    out.write(struct.pack("=IHHIIII", 0xA1B2C3D4, 2, 4, 0, 0, 262144, 1))
    for number in range(int(sys.argv[2])):
        whole = frame()
        part = captured(whole)
        out.write(struct.pack("=IIII", 1_700_000_000 + number // 1000, number % 1000 * 1000,
                              len(part), len(whole)) + part)
