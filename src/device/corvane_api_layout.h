/*
 * The size and every offset of the records in corvane_api.h, held against the compiler. Plain C, as
 * the records are.
 */
#ifndef CORVANE_DEVICE_CORVANE_API_LAYOUT_H_
#define CORVANE_DEVICE_CORVANE_API_LAYOUT_H_

#include <assert.h>
#include <stddef.h>

#include "device/corvane_api.h"

#define CORVANE_ASSERT_SIZE(type, size) static_assert(sizeof(type) == (size), #type)
#define CORVANE_ASSERT_OFFSET(type, field, offset) \
  static_assert(offsetof(type, field) == (offset), #type "." #field)

CORVANE_ASSERT_SIZE(DeviceNode, 16);
CORVANE_ASSERT_OFFSET(DeviceNode, next, 0);
CORVANE_ASSERT_OFFSET(DeviceNode, handle, 8);

CORVANE_ASSERT_SIZE(DeviceList, 16);
CORVANE_ASSERT_OFFSET(DeviceList, first, 0);
CORVANE_ASSERT_OFFSET(DeviceList, count, 8);

CORVANE_ASSERT_SIZE(VersionRecord, 12);
CORVANE_ASSERT_OFFSET(VersionRecord, sw_firmware, 0);
CORVANE_ASSERT_OFFSET(VersionRecord, driver, 4);
CORVANE_ASSERT_OFFSET(VersionRecord, hw_firmware, 8);

CORVANE_ASSERT_SIZE(FeaturesRecord, 84);
CORVANE_ASSERT_OFFSET(FeaturesRecord, transmitcrcerrors, 0);
CORVANE_ASSERT_OFFSET(FeaturesRecord, keepcrc32, 4);
CORVANE_ASSERT_OFFSET(FeaturesRecord, disablea, 8);
CORVANE_ASSERT_OFFSET(FeaturesRecord, disableb, 12);
CORVANE_ASSERT_OFFSET(FeaturesRecord, slicing, 16);
CORVANE_ASSERT_OFFSET(FeaturesRecord, inline_, 20);
CORVANE_ASSERT_OFFSET(FeaturesRecord, loopback, 24);
CORVANE_ASSERT_OFFSET(FeaturesRecord, ts, 28);
CORVANE_ASSERT_OFFSET(FeaturesRecord, syncts, 32);
CORVANE_ASSERT_OFFSET(FeaturesRecord, forcepps, 36);
CORVANE_ASSERT_OFFSET(FeaturesRecord, tssource, 40);
CORVANE_ASSERT_OFFSET(FeaturesRecord, waitforsync, 44);
CORVANE_ASSERT_OFFSET(FeaturesRecord, ppsoutput, 48);
CORVANE_ASSERT_OFFSET(FeaturesRecord, ppscomp, 52);
CORVANE_ASSERT_OFFSET(FeaturesRecord, reserved_54, 54);
CORVANE_ASSERT_OFFSET(FeaturesRecord, portAts, 56);
CORVANE_ASSERT_OFFSET(FeaturesRecord, portBts, 60);
CORVANE_ASSERT_OFFSET(FeaturesRecord, reserved_64, 64);
CORVANE_ASSERT_OFFSET(FeaturesRecord, slicing_size, 68);
CORVANE_ASSERT_OFFSET(FeaturesRecord, reserved_70, 70);
CORVANE_ASSERT_OFFSET(FeaturesRecord, autonega, 72);
CORVANE_ASSERT_OFFSET(FeaturesRecord, autonegb, 76);
CORVANE_ASSERT_OFFSET(FeaturesRecord, firmware_index, 80);
CORVANE_ASSERT_OFFSET(FeaturesRecord, reserved_81, 81);

CORVANE_ASSERT_SIZE(HwFirmwaresDesc, 132);
CORVANE_ASSERT_OFFSET(HwFirmwaresDesc, count, 0);
CORVANE_ASSERT_OFFSET(HwFirmwaresDesc, names, 4);

CORVANE_ASSERT_SIZE(PortControl, 40);
CORVANE_ASSERT_OFFSET(PortControl, autoneg, 0);
CORVANE_ASSERT_OFFSET(PortControl, _1000txfd, 4);
CORVANE_ASSERT_OFFSET(PortControl, _100txfd, 8);
CORVANE_ASSERT_OFFSET(PortControl, _100txhd, 12);
CORVANE_ASSERT_OFFSET(PortControl, _10txfd, 16);
CORVANE_ASSERT_OFFSET(PortControl, _10txhd, 20);
CORVANE_ASSERT_OFFSET(PortControl, asympause, 24);
CORVANE_ASSERT_OFFSET(PortControl, sympause, 28);
CORVANE_ASSERT_OFFSET(PortControl, prefmaster, 32);
CORVANE_ASSERT_OFFSET(PortControl, forcerole, 36);

CORVANE_ASSERT_SIZE(PortsSpeedRecord, 80);
CORVANE_ASSERT_OFFSET(PortsSpeedRecord, ports, 0);

CORVANE_ASSERT_SIZE(LinkEntry, 12);
CORVANE_ASSERT_OFFSET(LinkEntry, reserved_0, 0);
CORVANE_ASSERT_OFFSET(LinkEntry, speed, 4);
CORVANE_ASSERT_OFFSET(LinkEntry, duplex, 8);

CORVANE_ASSERT_SIZE(SfpQuantities, 20);
CORVANE_ASSERT_OFFSET(SfpQuantities, temperature, 0);
CORVANE_ASSERT_OFFSET(SfpQuantities, voltage, 4);
CORVANE_ASSERT_OFFSET(SfpQuantities, tx_bias, 8);
CORVANE_ASSERT_OFFSET(SfpQuantities, tx_power, 12);
CORVANE_ASSERT_OFFSET(SfpQuantities, rx_power, 16);

CORVANE_ASSERT_SIZE(SfpInfo, 532);
CORVANE_ASSERT_OFFSET(SfpInfo, link_up, 0);
CORVANE_ASSERT_OFFSET(SfpInfo, vendor_name, 1);
CORVANE_ASSERT_OFFSET(SfpInfo, vendor_oui, 20);
CORVANE_ASSERT_OFFSET(SfpInfo, model, 24);
CORVANE_ASSERT_OFFSET(SfpInfo, revision, 41);
CORVANE_ASSERT_OFFSET(SfpInfo, date_code, 46);
CORVANE_ASSERT_OFFSET(SfpInfo, serial_no, 60);
CORVANE_ASSERT_OFFSET(SfpInfo, nominal_rate, 80);
CORVANE_ASSERT_OFFSET(SfpInfo, max_bitrate, 84);
CORVANE_ASSERT_OFFSET(SfpInfo, min_bitrate, 88);
CORVANE_ASSERT_OFFSET(SfpInfo, encoding, 92);
CORVANE_ASSERT_OFFSET(SfpInfo, rate_id, 96);
CORVANE_ASSERT_OFFSET(SfpInfo, identifier, 100);
CORVANE_ASSERT_OFFSET(SfpInfo, ext_identifier, 104);
CORVANE_ASSERT_OFFSET(SfpInfo, connector, 108);
CORVANE_ASSERT_OFFSET(SfpInfo, wavelength_nm, 112);
CORVANE_ASSERT_OFFSET(SfpInfo, monitoring_type, 116);
CORVANE_ASSERT_OFFSET(SfpInfo, sff8472_compliance, 120);
CORVANE_ASSERT_OFFSET(SfpInfo, length_smf, 124);
CORVANE_ASSERT_OFFSET(SfpInfo, length_om2, 128);
CORVANE_ASSERT_OFFSET(SfpInfo, length_om1, 132);
CORVANE_ASSERT_OFFSET(SfpInfo, length_copper, 136);
CORVANE_ASSERT_OFFSET(SfpInfo, length_om3, 140);
CORVANE_ASSERT_OFFSET(SfpInfo, reserved_144, 144);
CORVANE_ASSERT_OFFSET(SfpInfo, ddm, 424);
CORVANE_ASSERT_OFFSET(SfpInfo, ddm.low_alarm, 444);
CORVANE_ASSERT_OFFSET(SfpInfo, ddm.low_warning, 464);
CORVANE_ASSERT_OFFSET(SfpInfo, ddm.high_alarm, 484);
CORVANE_ASSERT_OFFSET(SfpInfo, ddm.high_warning, 504);
CORVANE_ASSERT_OFFSET(SfpInfo, flags, 524);
CORVANE_ASSERT_OFFSET(SfpInfo, mode, 528);

CORVANE_ASSERT_SIZE(PhyStatus, 124);
CORVANE_ASSERT_OFFSET(PhyStatus, slots, 0);

CORVANE_ASSERT_SIZE(LinkStatusRecord, 1360);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, link_valid, 0);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, reserved_1, 1);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, links, 8);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, sfp_valid, 32);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, reserved_33, 33);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, sfp_count, 36);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, sfps, 40);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, phy_valid, 1104);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, reserved_1105, 1105);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, phy_count, 1108);
CORVANE_ASSERT_OFFSET(LinkStatusRecord, phys, 1112);

CORVANE_ASSERT_SIZE(DpiFilterRecord, 40);
CORVANE_ASSERT_OFFSET(DpiFilterRecord, enabled, 0);
CORVANE_ASSERT_OFFSET(DpiFilterRecord, data, 4);
CORVANE_ASSERT_OFFSET(DpiFilterRecord, reserved_20, 20);
CORVANE_ASSERT_OFFSET(DpiFilterRecord, mask, 36);

CORVANE_ASSERT_SIZE(PoePair, 12);
CORVANE_ASSERT_OFFSET(PoePair, voltage, 0);
CORVANE_ASSERT_OFFSET(PoePair, current, 4);
CORVANE_ASSERT_OFFSET(PoePair, return_path, 8);

CORVANE_ASSERT_SIZE(PoeMeasures, 52);
CORVANE_ASSERT_OFFSET(PoeMeasures, pairs, 0);
CORVANE_ASSERT_OFFSET(PoeMeasures, supply_voltage, 48);

CORVANE_ASSERT_SIZE(DiskDumpConfig, 56);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, loop, 0);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, reserved_4, 4);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, reserved_8, 8);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, reserved_12, 12);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, file_name, 16);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, max_file_size, 24);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, max_cache, 32);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, file_count, 40);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, max_duration, 44);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, full_frames, 48);
CORVANE_ASSERT_OFFSET(DiskDumpConfig, reserved_52, 52);

CORVANE_ASSERT_SIZE(DiskDumpConfigEx, 64);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, loop, 0);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, reserved_4, 4);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, reserved_8, 8);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, reserved_12, 12);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, max_file_size, 16);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, max_cache, 24);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, file_count, 32);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, max_duration, 36);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, full_frames, 40);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, reserved_44, 44);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, directory, 48);
CORVANE_ASSERT_OFFSET(DiskDumpConfigEx, pattern, 56);

CORVANE_ASSERT_SIZE(DiskDumpStatus, 56);
CORVANE_ASSERT_OFFSET(DiskDumpStatus, enabled, 0);
CORVANE_ASSERT_OFFSET(DiskDumpStatus, reserved_1, 1);
CORVANE_ASSERT_OFFSET(DiskDumpStatus, cache_used, 8);
CORVANE_ASSERT_OFFSET(DiskDumpStatus, bytes_written, 16);
CORVANE_ASSERT_OFFSET(DiskDumpStatus, bytes_dropped, 24);
CORVANE_ASSERT_OFFSET(DiskDumpStatus, error, 32);
CORVANE_ASSERT_OFFSET(DiskDumpStatus, reserved_36, 36);
CORVANE_ASSERT_OFFSET(DiskDumpStatus, max_cache, 40);
CORVANE_ASSERT_OFFSET(DiskDumpStatus, files_written, 48);

CORVANE_ASSERT_SIZE(PortStatistics, 88);
CORVANE_ASSERT_OFFSET(PortStatistics, less_than_64, 0);
CORVANE_ASSERT_OFFSET(PortStatistics, from_64_to_1518, 8);
CORVANE_ASSERT_OFFSET(PortStatistics, more_than_1518, 16);
CORVANE_ASSERT_OFFSET(PortStatistics, collisions, 24);
CORVANE_ASSERT_OFFSET(PortStatistics, crc_errors, 32);
CORVANE_ASSERT_OFFSET(PortStatistics, jabbers, 40);
CORVANE_ASSERT_OFFSET(PortStatistics, total_bytes, 48);
CORVANE_ASSERT_OFFSET(PortStatistics, reserved_56, 56);
CORVANE_ASSERT_OFFSET(PortStatistics, valid_packets, 64);
CORVANE_ASSERT_OFFSET(PortStatistics, invalid_packets, 72);
CORVANE_ASSERT_OFFSET(PortStatistics, hw_dropped, 80);

CORVANE_ASSERT_SIZE(StatisticsRecord, CORVANE_STATISTICS_SIZE);
CORVANE_ASSERT_OFFSET(StatisticsRecord, version, 0);
CORVANE_ASSERT_OFFSET(StatisticsRecord, reserved_4, 4);
CORVANE_ASSERT_OFFSET(StatisticsRecord, timestamp, 8);
CORVANE_ASSERT_OFFSET(StatisticsRecord, sw_dropped, 16);
CORVANE_ASSERT_OFFSET(StatisticsRecord, counters.v1.link_up_ms, 24);
CORVANE_ASSERT_OFFSET(StatisticsRecord, counters.v1.link_down_ms, 32);
CORVANE_ASSERT_OFFSET(StatisticsRecord, counters.v1.ports, 40);
CORVANE_ASSERT_OFFSET(StatisticsRecord, counters.v2, 24);

CORVANE_ASSERT_SIZE(CounterV2Config, 100);
CORVANE_ASSERT_OFFSET(CounterV2Config, index, 0);
CORVANE_ASSERT_OFFSET(CounterV2Config, ipv4, 4);
CORVANE_ASSERT_OFFSET(CounterV2Config, ipv6, 8);
CORVANE_ASSERT_OFFSET(CounterV2Config, bcast, 12);
CORVANE_ASSERT_OFFSET(CounterV2Config, mcast, 16);
CORVANE_ASSERT_OFFSET(CounterV2Config, ucast, 20);
CORVANE_ASSERT_OFFSET(CounterV2Config, reserved_24, 24);
CORVANE_ASSERT_OFFSET(CounterV2Config, icmp, 28);
CORVANE_ASSERT_OFFSET(CounterV2Config, udp, 32);
CORVANE_ASSERT_OFFSET(CounterV2Config, tcp, 36);
CORVANE_ASSERT_OFFSET(CounterV2Config, crc_ok, 40);
CORVANE_ASSERT_OFFSET(CounterV2Config, hw_dropped, 44);
CORVANE_ASSERT_OFFSET(CounterV2Config, size, 48);
CORVANE_ASSERT_OFFSET(CounterV2Config, size_mode, 52);
CORVANE_ASSERT_OFFSET(CounterV2Config, address, 56);
CORVANE_ASSERT_OFFSET(CounterV2Config, mask, 72);
CORVANE_ASSERT_OFFSET(CounterV2Config, porta, 88);
CORVANE_ASSERT_OFFSET(CounterV2Config, portb, 92);
CORVANE_ASSERT_OFFSET(CounterV2Config, mode, 96);

CORVANE_ASSERT_SIZE(PacketFilterRecord, 72);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, enable, 0);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, match_flags, 4);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, either_flags, 8);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, dst_mac, 10);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, src_mac, 16);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, dst_ip, 22);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, src_ip, 38);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, dst_port, 54);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, src_port, 56);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, mac_masks, 58);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, dst_ip_mask, 60);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, src_ip_mask, 62);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, port_masks, 64);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, reserved_65, 65);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, vlan_id, 66);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, vlan_mask, 68);
CORVANE_ASSERT_OFFSET(PacketFilterRecord, reserved_70, 70);

CORVANE_ASSERT_SIZE(PacketTypeFilterRecord, 27);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, ipv4, 0);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, ipv6, 1);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, arp, 2);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, tcp, 3);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, udp, 4);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, icmp, 5);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, igmp, 6);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, https, 7);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, http, 8);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, ftp, 9);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, dns, 10);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, smtp, 11);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, pop3, 12);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, dhcp, 13);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, ssh, 14);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, sip, 15);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, smb, 16);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, tcpfin, 17);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, tcpsyn, 18);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, tcprst, 19);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, tcppsh, 20);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, tcpack, 21);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, zerowindow, 22);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, quic, 23);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, vlan, 24);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, l2other, 25);
CORVANE_ASSERT_OFFSET(PacketTypeFilterRecord, l4other, 26);

CORVANE_ASSERT_SIZE(TimingStatusRecord, 80);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, gps_module, 0);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, gps_fix, 4);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, satellites_used, 8);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, satellites_gps, 12);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, satellites_glonass, 16);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, gps_pps, 20);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, external_pps, 24);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, synchronized, 28);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, pps_deviation, 32);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, reserved_40, 40);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, timestamp_source, 44);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, rtc_hour, 48);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, rtc_minute, 52);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, rtc_second, 56);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, rtc_year, 60);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, rtc_month, 64);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, rtc_day, 68);
CORVANE_ASSERT_OFFSET(TimingStatusRecord, reserved_72, 72);

CORVANE_ASSERT_SIZE(TimingTimeRecord, 12);
CORVANE_ASSERT_OFFSET(TimingTimeRecord, time_source, 0);
CORVANE_ASSERT_OFFSET(TimingTimeRecord, seconds, 4);
CORVANE_ASSERT_OFFSET(TimingTimeRecord, nanoseconds, 8);

#endif /* CORVANE_DEVICE_CORVANE_API_LAYOUT_H_ */
