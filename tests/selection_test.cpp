// Choosing the device, and the commands that report on the library and the device as a whole.
#include "device/selection.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/simulation.h"

namespace {

constexpr const char* kSelected = "Corvane detected\n";
constexpr const char* kInvalid = "Invalid Corvane device selected\n";

std::string TwoDevices() {
  return DeviceToml(11, "00:1a:2b:3c:4d:5e", 1) + DeviceToml(16, "00:1a:2b:3c:4d:5f", 2);
}

TEST(Selection, TakesAnIndexOrAMac) {
  struct Case {
    const char* text;
    const char* mac;  // of the device whose capabilities are read; null for none
  };
  const Case cases[] = {
      {nullptr, "00:1a:2b:3c:4d:5e"},
      {"", "00:1a:2b:3c:4d:5e"},
      {"0", "00:1a:2b:3c:4d:5e"},
      {"1", "00:1a:2b:3c:4d:5f"},
      {"+1", "00:1a:2b:3c:4d:5f"},
      {"2", nullptr},
      {"-1", nullptr},
      {"-2", nullptr},
      {"4294967296", nullptr},
      {"99999999999999999999", nullptr},
      {"1x", nullptr},
      {"00:1A:2B:3C:4D:5F", "00:1a:2b:3c:4d:5f"},
      {"0:1a:2b:3c:4d:5f and more", "00:1a:2b:3c:4d:5f"},
      {"00:1a:2b:3c:4d:60", nullptr},
      {"00:1a:2b:3c:4d", nullptr},
      {"all", nullptr},
      {"ALL", nullptr},
  };
  const Simulation simulation(TwoDevices());
  for (const Case& c : cases) {
    simulation.EmptyJournal();
    std::vector<std::string> words = {"capabilities", "show"};
    if (c.text != nullptr) words.insert(words.end(), {"-d", c.text});
    const Result result = simulation.Run(words);
    const bool found = c.mac != nullptr;
    const std::string line = found ? kSelected : kInvalid;
    EXPECT_EQ(result.out.substr(0, line.size()), line) << c.text;
    EXPECT_EQ(result.status, found ? 0 : 252) << c.text;
    const auto asked = simulation.Lines("CorvaneAPIGetDeviceCapabilitiesEx");
    ASSERT_EQ(asked.size(), found ? 1U : 0U) << c.text;
    if (!found) continue;
    EXPECT_NE(asked[0].find(c.mac), std::string::npos) << c.text;
  }
}

TEST(Selection, SkipsADeviceWhoseMacCannotBeRead) {
  const Simulation simulation(TwoDevices() + FaultToml("CorvaneAPIGetDeviceMAC", -1, 1));
  EXPECT_EQ(simulation.Run("reset -d 00:1a:2b:3c:4d:5e").status, 252);
  EXPECT_EQ(simulation.Run("reset -d 00:1a:2b:3c:4d:5f").status, 0);
}

TEST(Selection, WaitsFiveSecondsForADevice) {
  const Simulation simulation("");
  const Result result = simulation.Run("reset");
  EXPECT_EQ(result.out, kInvalid);
  EXPECT_EQ(result.status, 252);
  EXPECT_EQ(simulation.CallsOf("CorvaneApiSleepMs"), 50);
  EXPECT_EQ(simulation.Lines("CorvaneApiSleepMs")[0],
            "CorvaneApiSleepMs milliseconds=100 status=0");
  EXPECT_EQ(simulation.CallsOf("CorvaneAPIGetDevicesList"), 51);
  EXPECT_EQ(simulation.CallsOf("CorvaneApiDeviceListFree"), 51);
}

TEST(Session, EndsAtOnceWhenTheLibraryDoesNotOpen) {
  const Simulation simulation(TwoDevices() + FaultToml("CorvaneAPIInitialize", -3));
  const Result result = simulation.Run("version");
  EXPECT_EQ(result.out, "Failed to initialize Corvane API\n");
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(simulation.Calls(), std::vector<std::string>{"CorvaneAPIInitialize"});
}

TEST(Session, HasNoDeviceWhenTheLibraryHasNoList) {
  const Simulation simulation(TwoDevices() + FaultToml("CorvaneAPIGetDevicesList", -1, 2));
  EXPECT_EQ(simulation.Run("features save").out, kInvalid);
  EXPECT_EQ(simulation.Run("list").out, "Found 0 corvanes\n");
}

TEST(ParseMac, WantsSixFields) {
  uint8_t mac[6];
  EXPECT_EQ(ParseMac("00:1A:2b:3c:4D:5e rest", mac), 0);
  EXPECT_EQ(std::vector<uint8_t>(mac, mac + 6),
            (std::vector<uint8_t>{0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E}));
  for (const char* text : {"", "00:1a:2b:3c:4d", "00-1a-2b-3c-4d-5e", "g0:1a:2b:3c:4d:5e"}) {
    EXPECT_EQ(ParseMac(text, mac), -1) << text;
    EXPECT_EQ(std::vector<uint8_t>(mac, mac + 6), std::vector<uint8_t>(6)) << text;
  }
}

// Every type code with its name; null for a code that has none.
TEST(List, NamesTheModels) {
  const char* const names[] = {nullptr,      nullptr,      nullptr,      "Corvane-M1", nullptr,
                               "Corvane-M2", "Corvane-M4", "Corvane-M4", "Corvane-M2", "Corvane-M2",
                               "Corvane-M2", "Corvane-M7", "Corvane-M7", "Corvane-M8", "Corvane-M5",
                               "Corvane-M6", "Corvane-M3", "Vexo-M1",    "Vexo-M2",    "Vexo-M3",
                               "Vexo-M4",    nullptr};
  std::string toml = DeviceToml(-1, "00:00:00:00:00:ff", 0);
  std::string expected = "Found 23 corvanes\n0 : -1 Error\n";
  int code = 0;
  for (const char* name : names) {
    char mac[18];
    snprintf(mac, sizeof mac, "00:00:00:00:00:%02x", static_cast<unsigned>(code));
    toml += DeviceToml(code, mac, 0);
    expected += std::to_string(code + 1) + " : " + std::to_string(code) + " " +
                (name == nullptr ? "Error" : std::string(name) + " " + mac) + "\n";
    ++code;
  }
  EXPECT_EQ(Simulation(toml).Run("list").out, expected);
}

TEST(Version, OfUtilityLibraryAndDevice) {
  const std::string device =
      DeviceToml(11, "00:1a:2b:3c:4d:5e", 0,
                 "sw_firmware = \"1.2.3.255\"\ndriver = \"4.5.6.7\"\nhw_firmware = 7");
  const std::string head = "Command line utility version : 1.24\nCorvane API version : 9.8.7.200\n";
  const std::string library = "library_version = \"9.8.7.200\"\n";
  Simulation simulation(library + device);
  const Result full = simulation.Run("version");
  EXPECT_EQ(full.out, kSelected + head +
                          "Driver version : 4.5.6.7\nSW firmware version : 1.2.3.255\n"
                          "HW firmware version : 0007\n");
  EXPECT_EQ(full.status, 0);
  const Result none = simulation.Run("version -d 3");
  EXPECT_EQ(none.out, kInvalid + head);
  EXPECT_EQ(none.status, 252);
  simulation.Configure(library + device + FaultToml("CorvaneAPIGetVersions", -8));
  const Result failing = simulation.Run("version");
  EXPECT_EQ(failing.out, kSelected + head + "Failed to get version information from device\n");
  EXPECT_EQ(failing.status, 248);
}

// Only the labelled bits show: 24 lines, whatever else the mask holds.
TEST(Capabilities, ShowEveryLabelledBit) {
  const Simulation simulation(DeviceToml(11, "00:1a:2b:3c:4d:5e", 0xFE001002U));
  const Result show = simulation.Run("capabilities show");
  EXPECT_EQ(std::count(show.out.begin(), show.out.end(), '\n'), 2 + 24);
  EXPECT_EQ(show.out.find(": Yes"), show.out.find("\tDual ports: Yes\n") + 11);
  EXPECT_EQ(show.out.find(": Yes"), show.out.rfind(": Yes"));
  const Result legend = simulation.Run("capabilities legend --device 5");
  EXPECT_EQ(legend.status, 0);
  EXPECT_EQ(std::count(legend.out.begin(), legend.out.end(), '\n'), 1 + 24);
  EXPECT_EQ(legend.out.rfind("\t10G/1G autonegotiation: The device can control 1G "
                             "autonegotiation\n"),
            legend.out.find("\t10G/1G"));
}

}  // namespace
