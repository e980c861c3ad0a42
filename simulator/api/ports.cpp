// The state of the network ports and of the power that passes through them.
#include "device/capabilities.h"
#include "library/call_frame.h"
#include "model/device_records.h"

using namespace simulator;

extern "C" {

int32_t CorvaneAPIGetLinkStatus(DeviceHandle device, LinkStatusRecord* status) {
  return FillCall(__func__, device, 0, "", status, [](Call& call, LinkStatusRecord& record) {
    record = CurrentLinkStatus(call);
    return CORVANE_OK;
  });
}

int32_t CorvaneAPIPoeGetMeasures(DeviceHandle device, PoeMeasures* measures) {
  return FillCall(__func__, device, CORVANE_CAP_POE, "", measures,
                  [](Call& call, PoeMeasures& record) {
                    record = Current<PoeMeasures>(call, "poe_measures");
                    return CORVANE_OK;
                  });
}

}  // extern "C"
