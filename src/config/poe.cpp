#include "config/poe.h"

#include <cstdio>

#include "console/report.h"
#include "console/status.h"
#include "device/capabilities.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

namespace {

void PrintReturnPath(const PoePair& pair) {
  printf("Return path: ");
  bool any = false;
  for (int q = 0; q < CORVANE_POE_PAIRS; ++q) {
    if (pair.return_path[q] == 0) continue;
    printf("%d ", q);
    any = true;
  }
  puts(any ? "" : "None");
}

}  // namespace

int PoeShow(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), CORVANE_CAP_POE)) {
    return Fail(kUnsupported, "Your device does not support PoE information and calibration");
  }
  PoeMeasures measures = {};
  const int status = CorvaneAPIPoeGetMeasures(session.device(), &measures);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane PoE information");

  printf("Supply voltage: %.02fV\n", static_cast<double>(measures.supply_voltage));
  puts("PoE measures :");
  for (int p = 0; p < CORVANE_POE_PAIRS; ++p) {
    const PoePair& pair = measures.pairs[p];
    printf("-----Pair %d-----\n", p);
    printf("Voltage: %.02fV\n", static_cast<double>(pair.voltage));
    printf("Current: %.03fA\n", static_cast<double>(pair.current));
    PrintReturnPath(pair);
  }
  return kSuccess;
}

}  // namespace corvane
