#include "records/record_fields.h"

#include <cstddef>

#include "device/corvane_api.h"
#include "records/surroundings.h"

namespace simulator {
namespace {

#define NAMED(name, record, member) \
  { name, offsetof(record, member), sizeof(record::member), FieldKind::kInteger }
#define FIELD(record, name) NAMED(#name, record, name)
#define FLOAT(record, name) \
  { #name, offsetof(record, name), sizeof(record::name), FieldKind::kFloat }
#define BYTES(record, name) \
  { #name, offsetof(record, name), sizeof(record::name), FieldKind::kBytes }
#define TEXT(record, name) \
  { #name, offsetof(record, name), sizeof(record::name), FieldKind::kText }

constexpr Field kFeatures[] = {
    FIELD(FeaturesRecord, transmitcrcerrors),
    FIELD(FeaturesRecord, keepcrc32),
    FIELD(FeaturesRecord, disablea),
    FIELD(FeaturesRecord, disableb),
    FIELD(FeaturesRecord, slicing),
    NAMED("inline", FeaturesRecord, inline_),
    FIELD(FeaturesRecord, loopback),
    FIELD(FeaturesRecord, ts),
    FIELD(FeaturesRecord, syncts),
    FIELD(FeaturesRecord, forcepps),
    FIELD(FeaturesRecord, tssource),
    FIELD(FeaturesRecord, waitforsync),
    FIELD(FeaturesRecord, ppsoutput),
    FIELD(FeaturesRecord, ppscomp),
    FIELD(FeaturesRecord, portAts),
    FIELD(FeaturesRecord, portBts),
    FIELD(FeaturesRecord, slicing_size),
    FIELD(FeaturesRecord, autonega),
    FIELD(FeaturesRecord, autonegb),
    FIELD(FeaturesRecord, firmware_index),
    FIELD(FeaturesRecord, reserved_54),
    FIELD(FeaturesRecord, reserved_64),
    FIELD(FeaturesRecord, reserved_70),
    BYTES(FeaturesRecord, reserved_81),
};

constexpr Field kPortControl[] = {
    FIELD(PortControl, autoneg),
    NAMED("1000txfd", PortControl, _1000txfd),
    NAMED("100txfd", PortControl, _100txfd),
    NAMED("100txhd", PortControl, _100txhd),
    NAMED("10txfd", PortControl, _10txfd),
    NAMED("10txhd", PortControl, _10txhd),
    FIELD(PortControl, asympause),
    FIELD(PortControl, sympause),
    FIELD(PortControl, prefmaster),
    FIELD(PortControl, forcerole),
};

constexpr Field kPortsSpeed[] = {
    {"ports", 0, sizeof(PortControl), FieldKind::kGroup, kPortControl, CORVANE_PORTS},
};

#define PARTNER(name, port)                                                               \
  {                                                                                       \
    name, offsetof(Surroundings, partners[port]), sizeof(PortControl), FieldKind::kGroup, \
        kPortControl                                                                      \
  }

constexpr Field kSurroundings[] = {
    NAMED("cable_a", Surroundings, cables[0]),
    NAMED("cable_b", Surroundings, cables[1]),
    NAMED("module_a", Surroundings, modules[0]),
    NAMED("module_b", Surroundings, modules[1]),
    PARTNER("partner_a", 0),
    PARTNER("partner_b", 1),
};

constexpr Field kDpi[] = {
    FIELD(DpiFilterRecord, enabled),
    BYTES(DpiFilterRecord, data),
    FIELD(DpiFilterRecord, mask),
    BYTES(DpiFilterRecord, reserved_20),
};

constexpr Field kPacketFilter[] = {
    FIELD(PacketFilterRecord, enable),       FIELD(PacketFilterRecord, match_flags),
    FIELD(PacketFilterRecord, either_flags), BYTES(PacketFilterRecord, dst_mac),
    BYTES(PacketFilterRecord, src_mac),      BYTES(PacketFilterRecord, dst_ip),
    BYTES(PacketFilterRecord, src_ip),       FIELD(PacketFilterRecord, dst_port),
    FIELD(PacketFilterRecord, src_port),     FIELD(PacketFilterRecord, mac_masks),
    FIELD(PacketFilterRecord, dst_ip_mask),  FIELD(PacketFilterRecord, src_ip_mask),
    FIELD(PacketFilterRecord, port_masks),   FIELD(PacketFilterRecord, vlan_id),
    FIELD(PacketFilterRecord, vlan_mask),    FIELD(PacketFilterRecord, reserved_65),
    BYTES(PacketFilterRecord, reserved_70),
};

constexpr Field kPacketTypeFilter[] = {
    FIELD(PacketTypeFilterRecord, ipv4),       FIELD(PacketTypeFilterRecord, ipv6),
    FIELD(PacketTypeFilterRecord, arp),        FIELD(PacketTypeFilterRecord, tcp),
    FIELD(PacketTypeFilterRecord, udp),        FIELD(PacketTypeFilterRecord, icmp),
    FIELD(PacketTypeFilterRecord, igmp),       FIELD(PacketTypeFilterRecord, https),
    FIELD(PacketTypeFilterRecord, http),       FIELD(PacketTypeFilterRecord, ftp),
    FIELD(PacketTypeFilterRecord, dns),        FIELD(PacketTypeFilterRecord, smtp),
    FIELD(PacketTypeFilterRecord, pop3),       FIELD(PacketTypeFilterRecord, dhcp),
    FIELD(PacketTypeFilterRecord, ssh),        FIELD(PacketTypeFilterRecord, sip),
    FIELD(PacketTypeFilterRecord, smb),        FIELD(PacketTypeFilterRecord, tcpfin),
    FIELD(PacketTypeFilterRecord, tcpsyn),     FIELD(PacketTypeFilterRecord, tcprst),
    FIELD(PacketTypeFilterRecord, tcppsh),     FIELD(PacketTypeFilterRecord, tcpack),
    FIELD(PacketTypeFilterRecord, zerowindow), FIELD(PacketTypeFilterRecord, quic),
    FIELD(PacketTypeFilterRecord, vlan),       FIELD(PacketTypeFilterRecord, l2other),
    FIELD(PacketTypeFilterRecord, l4other),
};

constexpr Field kCounter[] = {
    FIELD(CounterV2Config, ipv4),    FIELD(CounterV2Config, ipv6),
    FIELD(CounterV2Config, bcast),   FIELD(CounterV2Config, mcast),
    FIELD(CounterV2Config, ucast),   FIELD(CounterV2Config, icmp),
    FIELD(CounterV2Config, udp),     FIELD(CounterV2Config, tcp),
    FIELD(CounterV2Config, crc_ok),  FIELD(CounterV2Config, hw_dropped),
    FIELD(CounterV2Config, size),    FIELD(CounterV2Config, size_mode),
    BYTES(CounterV2Config, address), BYTES(CounterV2Config, mask),
    FIELD(CounterV2Config, porta),   FIELD(CounterV2Config, portb),
    FIELD(CounterV2Config, mode),    FIELD(CounterV2Config, reserved_24),
};

constexpr Field kCounters[] = {
    {"counters", 0, sizeof(CounterV2Config), FieldKind::kGroup, kCounter, CORVANE_COUNTERS_V2},
};

constexpr Field kPoePair[] = {
    FLOAT(PoePair, voltage),
    FLOAT(PoePair, current),
    BYTES(PoePair, return_path),
};

constexpr Field kPoe[] = {
    {"pairs", 0, sizeof(PoePair), FieldKind::kGroup, kPoePair, CORVANE_POE_PAIRS},
    FLOAT(PoeMeasures, supply_voltage),
};

constexpr Field kLinkEntry[] = {FIELD(LinkEntry, speed), FIELD(LinkEntry, duplex),
                                FIELD(LinkEntry, reserved_0)};

constexpr Field kQuantities[] = {
    FLOAT(SfpQuantities, temperature), FLOAT(SfpQuantities, voltage),
    FLOAT(SfpQuantities, tx_bias),     FLOAT(SfpQuantities, tx_power),
    FLOAT(SfpQuantities, rx_power),
};

#define QUANTITIES(name) \
  { #name, offsetof(SfpInfo, ddm.name), sizeof(SfpQuantities), FieldKind::kGroup, kQuantities }

constexpr Field kSfp[] = {
    FIELD(SfpInfo, link_up),         TEXT(SfpInfo, vendor_name),
    FIELD(SfpInfo, vendor_oui),      TEXT(SfpInfo, model),
    TEXT(SfpInfo, revision),         TEXT(SfpInfo, date_code),
    TEXT(SfpInfo, serial_no),        FIELD(SfpInfo, nominal_rate),
    FIELD(SfpInfo, max_bitrate),     FIELD(SfpInfo, min_bitrate),
    FIELD(SfpInfo, encoding),        FIELD(SfpInfo, rate_id),
    FIELD(SfpInfo, identifier),      FIELD(SfpInfo, ext_identifier),
    FIELD(SfpInfo, connector),       FIELD(SfpInfo, wavelength_nm),
    FIELD(SfpInfo, monitoring_type), FIELD(SfpInfo, sff8472_compliance),
    FIELD(SfpInfo, length_smf),      FIELD(SfpInfo, length_om2),
    FIELD(SfpInfo, length_om1),      FIELD(SfpInfo, length_copper),
    FIELD(SfpInfo, length_om3),      QUANTITIES(measured),
    QUANTITIES(low_alarm),           QUANTITIES(low_warning),
    QUANTITIES(high_alarm),          QUANTITIES(high_warning),
    FIELD(SfpInfo, flags),           FIELD(SfpInfo, mode),
    BYTES(SfpInfo, reserved_144),
};

constexpr Field kPhy[] = {BYTES(PhyStatus, slots)};

constexpr Field kLinkStatus[] = {
    FIELD(LinkStatusRecord, link_valid),
    {"links", offsetof(LinkStatusRecord, links), sizeof(LinkEntry), FieldKind::kGroup, kLinkEntry,
     CORVANE_PORTS},
    FIELD(LinkStatusRecord, sfp_valid),
    FIELD(LinkStatusRecord, sfp_count),
    {"sfps", offsetof(LinkStatusRecord, sfps), sizeof(SfpInfo), FieldKind::kGroup, kSfp,
     CORVANE_PORTS},
    FIELD(LinkStatusRecord, phy_valid),
    FIELD(LinkStatusRecord, phy_count),
    {"phys", offsetof(LinkStatusRecord, phys), sizeof(PhyStatus), FieldKind::kGroup, kPhy,
     CORVANE_PORTS},
    BYTES(LinkStatusRecord, reserved_1),
    BYTES(LinkStatusRecord, reserved_33),
    BYTES(LinkStatusRecord, reserved_1105),
};

constexpr Field kTimingStatus[] = {
    FIELD(TimingStatusRecord, gps_module),         FIELD(TimingStatusRecord, gps_fix),
    FIELD(TimingStatusRecord, satellites_used),    FIELD(TimingStatusRecord, satellites_gps),
    FIELD(TimingStatusRecord, satellites_glonass), FIELD(TimingStatusRecord, gps_pps),
    FIELD(TimingStatusRecord, external_pps),       FIELD(TimingStatusRecord, synchronized),
    FLOAT(TimingStatusRecord, pps_deviation),      FIELD(TimingStatusRecord, timestamp_source),
    FIELD(TimingStatusRecord, rtc_hour),           FIELD(TimingStatusRecord, rtc_minute),
    FIELD(TimingStatusRecord, rtc_second),         FIELD(TimingStatusRecord, rtc_year),
    FIELD(TimingStatusRecord, rtc_month),          FIELD(TimingStatusRecord, rtc_day),
    BYTES(TimingStatusRecord, reserved_40),        BYTES(TimingStatusRecord, reserved_72),
};

constexpr Field kPortStatistics[] = {
    FIELD(PortStatistics, less_than_64),   FIELD(PortStatistics, from_64_to_1518),
    FIELD(PortStatistics, more_than_1518), FIELD(PortStatistics, collisions),
    FIELD(PortStatistics, crc_errors),     FIELD(PortStatistics, jabbers),
    FIELD(PortStatistics, total_bytes),    FIELD(PortStatistics, reserved_56),
    FIELD(PortStatistics, valid_packets),  FIELD(PortStatistics, invalid_packets),
    FIELD(PortStatistics, hw_dropped),
};

constexpr Field kCount[] = {{"count", 0, sizeof(uint64_t), FieldKind::kInteger}};

// Of the counters those of the version are valid: they share their place.
constexpr Field kStatistics[] = {
    FIELD(StatisticsRecord, version),
    BYTES(StatisticsRecord, reserved_4),
    FIELD(StatisticsRecord, timestamp),
    FIELD(StatisticsRecord, sw_dropped),
    NAMED("link_up_ms", StatisticsRecord, counters.v1.link_up_ms),
    NAMED("link_down_ms", StatisticsRecord, counters.v1.link_down_ms),
    {"ports", offsetof(StatisticsRecord, counters.v1.ports), sizeof(PortStatistics),
     FieldKind::kGroup, kPortStatistics, CORVANE_PORTS},
    {"counters", offsetof(StatisticsRecord, counters), sizeof(uint64_t), FieldKind::kGroup, kCount,
     CORVANE_COUNTERS_V2},
};

constexpr Field kDiskDump[] = {
    FIELD(DiskDumpStatus, enabled),       BYTES(DiskDumpStatus, reserved_1),
    FIELD(DiskDumpStatus, cache_used),    FIELD(DiskDumpStatus, bytes_written),
    FIELD(DiskDumpStatus, bytes_dropped), FIELD(DiskDumpStatus, error),
    BYTES(DiskDumpStatus, reserved_36),   FIELD(DiskDumpStatus, max_cache),
    FIELD(DiskDumpStatus, files_written),
};

constexpr RecordLayout kLayouts[] = {
    {"features", sizeof(FeaturesRecord), kFeatures},
    {"ports_speed", sizeof(PortsSpeedRecord), kPortsSpeed},
    {"dpi_filter", sizeof(DpiFilterRecord), kDpi},
    {"packet_filter", sizeof(PacketFilterRecord), kPacketFilter},
    {"packet_type_filter", sizeof(PacketTypeFilterRecord), kPacketTypeFilter},
    {"counters_v2", CORVANE_COUNTERS_V2 * sizeof(CounterV2Config), kCounters},
    {"link_status", sizeof(LinkStatusRecord), kLinkStatus},
    {"poe_measures", sizeof(PoeMeasures), kPoe},
    {"timing_status", sizeof(TimingStatusRecord), kTimingStatus},
    {"surroundings", sizeof(Surroundings), kSurroundings},
    {"statistics", sizeof(StatisticsRecord), kStatistics},
    {"disk_dump_status", sizeof(DiskDumpStatus), kDiskDump},
};

}  // namespace

std::span<const RecordLayout> AllLayouts() {
  return kLayouts;
}

const RecordLayout* FindLayout(std::string_view name) {
  for (const RecordLayout& layout : kLayouts) {
    if (name == layout.name) return &layout;
  }
  return nullptr;
}

}  // namespace simulator
