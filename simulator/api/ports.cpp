// The state of the network ports and of the power that passes through them.
#include "device/capabilities.h"
#include "library/call_frame.h"
#include "model/link.h"

using namespace simulator;

extern "C" {

int32_t CorvaneAPIGetLinkStatus(DeviceHandle device, LinkStatusRecord* status) {
  return ReportCall(__func__, device, 0, status, CurrentLinkStatus);
}

int32_t CorvaneAPIPoeGetMeasures(DeviceHandle device, PoeMeasures* measures) {
  return ReportCall(__func__, device, CORVANE_CAP_POE, measures, CurrentPoe);
}

}  // extern "C"
