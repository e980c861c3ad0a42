#include "configuration/configuration.h"

namespace simulator {

const char kBuiltinConfiguration[] = R"(
# A gigabit copper tap with GPS timing.
[[device]]
type = 11
mac = "00:1a:2b:3c:4d:01"
capabilities = ["Basic", "Dual ports", "Span mode", "GPS", "Update", "Filter", "Statistics V2",
    "Speed control", "Loopback", "Phy1", "PcapNG", "Slicing length", "Capture full frames",
    "Capture NTP disciplined timestamps", "Packet type filter", "PPS Resolution 8ns",
    "VLAN filter"]
sw_firmware = "1.8.2.0"
driver = "3.1.0.5"
hw_firmware = 212

# A 10G tap with SFP cages and two hardware firmwares.
[[device]]
type = 16
mac = "00:1a:2b:3c:4d:02"
capabilities = ["Basic", "Dual ports", "Span mode", "GPS", "Update", "SFP", "Filter",
    "Statistics V2", "PcapNG", "Multiple HW", "Capture full frames",
    "Capture NTP disciplined timestamps", "Packet type filter", "PPS Resolution 5ns",
    "10G/1G autonegotiation"]
sw_firmware = "1.8.2.0"
driver = "3.1.0.5"
hw_firmware = 47
hw_firmwares = ["10G 4.7", "1G 2.3"]

# A small copper tap that passes PoE through.
[[device]]
type = 3
mac = "00:1a:2b:3c:4d:03"
capabilities = ["Basic", "Dual ports", "Update", "PoE", "Filter", "Statistics V1",
    "Speed control", "Phy2"]
sw_firmware = "1.2.0.9"
driver = "3.1.0.5"
hw_firmware = 7
)";

}  // namespace simulator
