#include "records/factory_records.h"

#include "device/capabilities.h"
#include "device/corvane_api.h"
#include "records/factory_status.h"

namespace simulator {
namespace {

Bytes Features(uint32_t capabilities) {
  FeaturesRecord features = {};
  features.ts = 1;
  features.slicing_size = 128;
  features.autonega = features.autonegb = (capabilities & CORVANE_CAP_AUTONEGOTIATION) != 0 ? 1 : 0;
  return BytesOf(features);
}

Bytes PortsSpeed(uint32_t) {
  PortsSpeedRecord speeds = {};
  for (PortControl& port : speeds.ports) {
    port = {.autoneg = 1,
            ._1000txfd = 1,
            ._100txfd = 1,
            ._100txhd = 1,
            ._10txfd = 1,
            ._10txhd = 1,
            .asympause = 0,
            .sympause = 1,
            .prefmaster = 0,
            .forcerole = 0};
  }
  return BytesOf(speeds);
}

Bytes DpiFilter(uint32_t) {
  DpiFilterRecord filter = {};
  filter.mask = 0xFFFF;
  return BytesOf(filter);
}

Bytes PacketTypeFilter(uint32_t) {
  return Bytes(sizeof(PacketTypeFilterRecord), 1);
}

// Every counter counts all packets of both ports; the last one those that the hardware dropped.
Bytes Counters(uint32_t) {
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

Bytes LinkStatus(uint32_t capabilities) {
  return BytesOf(FactoryLinkStatus(capabilities));
}

Bytes Poe(uint32_t) {
  return BytesOf(FactoryPoeMeasures());
}

Bytes TimingStatus(uint32_t) {
  return BytesOf(FactoryTimingStatus());
}

struct Factory {
  std::string_view layout;
  Bytes (*make)(uint32_t capabilities);
};

constexpr Factory kFactories[] = {
    {"features", Features},    {"ports_speed", PortsSpeed},
    {"dpi_filter", DpiFilter}, {"packet_type_filter", PacketTypeFilter},
    {"counters_v2", Counters}, {"link_status", LinkStatus},
    {"poe_measures", Poe},     {"timing_status", TimingStatus},
};

}  // namespace

Bytes FactoryRecord(std::string_view layout, uint32_t capabilities) {
  for (const Factory& factory : kFactories) {
    if (factory.layout == layout) return factory.make(capabilities);
  }
  return Bytes(FindLayout(layout)->size);
}

}  // namespace simulator
