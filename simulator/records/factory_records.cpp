#include "records/factory_records.h"

#include "device/capabilities.h"
#include "device/corvane_api.h"
#include "records/factory_status.h"
#include "records/surroundings.h"

namespace simulator {
namespace {

FeaturesRecord Features(uint32_t capabilities) {
  FeaturesRecord features = {};
  features.ts = 1;
  features.syncts = (capabilities & CORVANE_CAP_GPS) != 0 ? 1 : 0;
  features.slicing_size = 128;
  features.autonega = features.autonegb = (capabilities & CORVANE_CAP_AUTONEGOTIATION) != 0 ? 1 : 0;
  return features;
}

constexpr PortControl kNegotiatesAll = {.autoneg = 1,
                                        ._1000txfd = 1,
                                        ._100txfd = 1,
                                        ._100txhd = 1,
                                        ._10txfd = 1,
                                        ._10txhd = 1,
                                        .asympause = 0,
                                        .sympause = 1,
                                        .prefmaster = 0,
                                        .forcerole = 0};

// Every counter counts all packets of both ports; the last one those that the hardware dropped.
Bytes Counters() {
  Bytes counters;
  for (int32_t index = 0; index < CORVANE_COUNTERS_V2; ++index) {
    CounterV2Config counter = {};
    counter.index = index;
    for (int32_t* condition : {&counter.ipv4, &counter.ipv6, &counter.bcast, &counter.mcast,
                               &counter.ucast, &counter.icmp, &counter.udp, &counter.tcp,
                               &counter.crc_ok, &counter.hw_dropped, &counter.size_mode}) {
      *condition = CORVANE_IGNORE;
    }
    if (index == CORVANE_COUNTERS_V2 - 1) counter.hw_dropped = CORVANE_COUNT_IF_TRUE;
    counter.porta = counter.portb = 1;
    const Bytes bytes = BytesOf(counter);
    counters.insert(counters.end(), bytes.begin(), bytes.end());
  }
  return counters;
}

DpiFilterRecord DpiFilter() {
  DpiFilterRecord filter = {};
  filter.mask = 0xFFFF;
  return filter;
}

}  // namespace

Bytes FactoryRecord(std::string_view layout, uint32_t capabilities) {
  if (layout == "features") return BytesOf(Features(capabilities));
  if (layout == "ports_speed") return BytesOf(PortsSpeedRecord{{kNegotiatesAll, kNegotiatesAll}});
  if (layout == "dpi_filter") return BytesOf(DpiFilter());
  if (layout == "packet_type_filter") return Bytes(sizeof(PacketTypeFilterRecord), 1);
  if (layout == "counters_v2") return Counters();
  if (layout == "link_status") return BytesOf(FactoryLinkStatus(capabilities));
  if (layout == "poe_measures") return BytesOf(FactoryPoeMeasures());
  if (layout == "timing_status") return BytesOf(FactoryTimingStatus());
  if (layout == "surroundings") {
    return BytesOf(Surroundings{{1, 1}, {1, 1}, {kNegotiatesAll, kNegotiatesAll}});
  }
  if (layout == "statistics" || layout == "disk_dump_status") {
    return Bytes(FindLayout(layout)->size, kLiveByte);
  }
  return Bytes(FindLayout(layout)->size);
}

}  // namespace simulator
