// poe show, end to end.
#include <cmath>

#include "device/capabilities.h"
#include "support/records.h"

namespace {

TEST(Poe, ShowsSupplyAndPairs) {
  const PoeMeasures measures = {.pairs = {{48.126F, 0.1056F, {0, 0, 1, 128}},
                                          {-0.5F, 0.0004F, {}},
                                          {1e6F, INFINITY, {1, 2, 3, 4}},
                                          {std::nanf(""), -1, {0, 255, 0, 0}}},
                                .supply_voltage = 48.3456F};
  const Result result =
      Simulation(OneDevice(kPoe, RawToml("poe_measures", measures))).Run("poe show");
  EXPECT_EQ(result.out, GoldenReport("poe"));
  EXPECT_EQ(result.status, 0);
}

TEST(Poe, NeedsTheCapabilityAndSaysWhatFailed) {
  const Simulation without(OneDevice(~kPoe));
  ExpectRun(without, "poe show", "Your device does not support PoE information and calibration\n",
            251);
  EXPECT_EQ(Work(without), "GetDeviceCapabilitiesEx ");
  ExpectFailures(OneDevice(kPoe),
                 {{"poe show", "PoeGetMeasures", "Failed to get Corvane PoE information\n"}});
}

}  // namespace
