#include "filter/packet_type_filter.h"

#include <cstdio>

#include "console/report.h"
#include "console/status.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

namespace {

constexpr const char* kTypesUnsupported = "Your device does not support packet type filtering";

void PrintType(const PacketTypeRow& type, const PacketTypeFilterRecord& filter) {
  printf("\t%s: %s\n", type.label, YesOrNo(filter.*type.field != 0));
}

}  // namespace

int PacketTypeFilterSet(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  if ((capabilities & CORVANE_CAP_PACKET_TYPE_FILTER) == 0) {
    return Fail(kUnsupported, kTypesUnsupported);
  }
  PacketTypeFilterRecord filter = {};
  int status = CorvaneAPIGetPacketsTypeFilter(session.device(), &filter);
  if (status != kSuccess) return Fail(status, "Failed to get packet type filters for set");

  ApplySwitches(leaf, kPacketTypes, filter);
  if (Offers(capabilities, kVlanType)) {
    ApplySwitch(leaf, kVlanType, filter);
  } else {
    filter.vlan = 1;  // whatever was read or asked for
  }
  status = CorvaneAPISetPacketsTypeFilter(session.device(), filter);
  if (status != kSuccess) puts("Failed to set packet type filters");
  return status;
}

int PacketTypeFilterShow(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  if ((capabilities & CORVANE_CAP_PACKET_TYPE_FILTER) == 0) {
    return Fail(kUnsupported, kTypesUnsupported);
  }
  PacketTypeFilterRecord filter = {};
  const int status = CorvaneAPIGetPacketsTypeFilter(session.device(), &filter);
  if (status != kSuccess) return Fail(status, "Failed to get packet type filters");

  puts("Packet type filters:");
  for (const PacketTypeRow& type : kPacketTypes) PrintType(type, filter);
  if (Offers(capabilities, kVlanType)) PrintType(kVlanType, filter);
  return kSuccess;
}

}  // namespace corvane
