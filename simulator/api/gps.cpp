// The GPS receiver's output.
#include <algorithm>

#include "device/capabilities.h"
#include "library/call_frame.h"
#include "model/gps_output.h"
#include "model/link.h"

using namespace simulator;

extern "C" {

int32_t CorvaneAPIGPSOutputFlush(DeviceHandle device) {
  return DeviceCall(__func__, device, Access::kRead, 0, "", [](Call& call) -> int32_t {
    if (!HasCapability(call, CORVANE_CAP_GPS)) return CORVANE_GPS_OUTPUT_NOT_SUPPORTED;
    FlushGpsOutput(call);
    return CORVANE_OK;
  });
}

int32_t CorvaneAPIGPSOutputRead(DeviceHandle device, char* buffer, int32_t capacity,
                                int32_t* count) {
  const std::string arguments = " capacity=" + std::to_string(capacity);
  return DeviceCall(__func__, device, Access::kRead, 0, arguments, [=](Call& call) -> int32_t {
    if (!HasCapability(call, CORVANE_CAP_GPS)) return CORVANE_GPS_OUTPUT_NOT_SUPPORTED;
    if (buffer == nullptr || count == nullptr || capacity <= 0) return kInvalidArgument;
    *count = ReadGpsOutput(call, buffer, static_cast<size_t>(capacity));
    const auto size = static_cast<size_t>(std::clamp(*count, 0, capacity));
    call.journal += " count=" + std::to_string(*count) + HexArgument("record", buffer, size);
    return CORVANE_OK;
  });
}

}  // extern "C"
