// dpi enable, disable, save and show, end to end.
#include "device/capabilities.h"
#include "support/expectations.h"

namespace {

const std::string kOn = "01000000";
const std::string kText = "ABc%*?ghijklmno~";
const std::string kTextHex = "414263252a3f6768696a6b6c6d6e6f7e";
const std::string kZeroes(32, '0');

TEST(DpiFilter, WritesWhatIsNamedAndKeepsTheRest) {
  const std::pair<std::string, std::map<size_t, std::string>> cases[] = {
      {"enable", {{0, kOn}}},
      {"disable", {{0, "00000000"}}},
      {"enable --dpitxt " + kText + " --dpimask 0x000000ff --dpihex " + kZeroes,
       {{0, kOn}, {4, kTextHex}, {36, "ff000000"}}},
      {"enable --dpimask 000000ff", {{0, kOn}, {36, "ff000000"}}},
      {"enable --dpimask Fa0010bE", {{0, kOn}, {36, "be1000fa"}}},
  };
  for (const auto& [words, changes] : cases) {
    const Simulation simulation(OneDevice(kFilter, "dpi_filter = \"" + Sevens(40) + "\""));
    ExpectRun(simulation, "dpi " + words, "");
    EXPECT_EQ(Sent(simulation, "SetDpiFilter"), Sevens(40, changes)) << words;
    EXPECT_EQ(Work(simulation), "GetDeviceCapabilitiesEx GetDpiFilter SetDpiFilter ") << words;
  }
}

TEST(DpiFilter, RefusesValuesInOrder) {
  const Simulation simulation(OneDevice(kFilter));
  ExpectRun(simulation, "dpi enable --dpihex " + kZeroes + " --dpimask x00000000",
            "Invalid hexadecimal value supplied\n", 251);
  for (const char* words : {"dpi enable --dpimask x00000000", "dpi enable --dpimask 00x11111111"}) {
    ExpectRun(simulation, words, "Invalid mask value supplied\n", 251);
  }
  EXPECT_EQ(simulation.CallsOf("CorvaneAPISetDpiFilter"), 0);
}

TEST(DpiFilter, ShowsWhatTheDeviceHas) {
  const auto report = [](const std::string& status, const std::string& data) {
    return "DPI Filter Configuration : \n\tStatus : " + status + "\n\tFilter Data : " + data +
           "\n\tFilter Mask : 0x000000ff\n";
  };
  const Simulation simulation(OneDevice(kFilter, "dpi_filter = {enabled = 2, mask = 255}"));
  ExpectRun(simulation, "dpi show", report("Disabled", kZeroes));
  ExpectRun(simulation, "dpi enable --dpitxt " + kText, "");
  ExpectRun(simulation, "dpi save", "");
  ExpectRun(simulation, "dpi disable", "");
  ExpectRun(simulation, "dpi show", report("Disabled", kTextHex));
  simulation.Run("reset");
  ExpectRun(simulation, "dpi show", report("Enabled", kTextHex));
}

TEST(DpiFilter, NeedsTheCapabilityAndPassesFailuresThrough) {
  const Simulation simulation(OneDevice(~kFilter));
  for (const std::string leaf : {"enable --dpimask x00000000", "disable", "save", "show"}) {
    ExpectRun(simulation, "dpi " + leaf, "Your device does not support filtering\n", 251);
    EXPECT_EQ(Work(simulation), "GetDeviceCapabilitiesEx ") << leaf;
  }
  const char* const not_read = "Failed to get Corvane DPI Filter configuration\n";
  const char* const not_set = "Failed to set Corvane DPI Filter configuration\n";
  ExpectFailures(OneDevice(kFilter), {{"dpi enable --dpimask x00000000", "GetDpiFilter", not_read},
                                      {"dpi enable", "SetDpiFilter", not_set},
                                      {"dpi disable", "GetDpiFilter", not_read},
                                      {"dpi disable", "SetDpiFilter", not_set},
                                      {"dpi show", "GetDpiFilter", not_read},
                                      {"dpi save", "SaveDpiFilter",
                                       "Failed to save Corvane DPI Filter configuration\n"}});
}

}  // namespace
