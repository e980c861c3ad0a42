// The simulator as a product: its configuration file, its state, its exports.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <regex>
#include <set>
#include <thread>

#include "device/corvane_api.h"
#include "support/simulation.h"

namespace {

constexpr const char* kMac = "00:1a:2b:3c:4d:5e";

TEST(SimulatorConfiguration, AWrongFileIsNamedWithLineAndReason) {
  const std::string mac = "mac = \"00:1a:2b:3c:4d:5e\"\n";
  struct Case {
    std::string toml;  // from line 2 on
    std::string complaint;
  };
  const Case cases[] = {
      {"[[device]\n", "2: "},
      {"[!x]\n", "2: "},
      {"colour = 1\n", "2: unknown key \"colour\""},
      {"[[device]]\n" + mac + "colour = 1\n", "4: unknown key \"colour\""},
      {"[[device]]\ntype = 11\n", "2: a device needs a mac"},
      {"[[device]]\nmac = \"00:1a:2b:3c:4d\"\n", "3: bad MAC address \"00:1a:2b:3c:4d\""},
      {"[[device]]\nmac = \"-1:+2: 3:04:+5: 6\"\n", "3: bad MAC address"},
      {"library_version = \"+1. 2.3.4\"\n", "2: a version like"},
      {"[[device]]\n" + mac + "[[device]]\n" + mac,
       "4: two devices have the MAC address 00:1a:2b:3c:4d:5e"},
      {"[[device]]\n" + mac + "capabilities = [\"Flying\"]\n", "4: unknown capability \"Flying\""},
      {"[[device]]\n" + mac + "features = {slicing_size = 65536}\n",
       "4: slicing_size does not hold this number"},
      {"[[device]]\n" + mac + "features = {speed = 1}\n", "4: unknown field \"speed\""},
      {"[[device]]\n" + mac + "dpi_filter = \"0011\"\n",
       "4: dpi_filter wants 80 hexadecimal digits"},
      {"[[device]]\n" + mac + "port_a = {source = \"tape\"}\n",
       "4: one of \"generator\", \"pcap\", \"interface\" is expected here"},
      {"[[device]]\n" + mac + "port_b = {source = \"pcap\"}\n", "4: a pcap source needs a file"},
      {"[[fault]]\nfunction = \"CorvaneApiSleepMs\"\nstatus = -1\n",
       "3: \"CorvaneApiSleepMs\" is no function of the library that can fail"},
      {"[[fault]]\nfunction = \"CorvaneAPIPoeGetMeasures\"\n",
       "2: a fault needs a status other than 0"},
      {"device = 3\n", "2: device wants [[device]] tables"},
  };
  for (const Case& c : cases) {
    const Simulation simulation(c.toml);
    const Result result = simulation.Run("list");
    EXPECT_EQ(result.out, "Failed to initialize Corvane API\n") << c.toml;
    EXPECT_EQ(result.status, 255);
    const std::string start =
        "corvane-simulator: " + simulation.folder() + "/sim.toml:" + c.complaint;
    EXPECT_EQ(result.err.substr(0, start.size()), start) << result.err;
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
  }
}

TEST(SimulatorConfiguration, AMissingFileAndAnUnusableStateFolderAreNamed) {
  const Simulation simulation("");
  std::filesystem::remove(simulation.folder() + "/sim.toml");
  EXPECT_EQ(simulation.Run("list").err,
            "corvane-simulator: " + simulation.folder() + "/sim.toml: cannot be read\n");
  const Simulation blocked("");
  WriteFile(blocked.folder() + "/state", "in the way");
  const Result result = blocked.Run("list");
  EXPECT_EQ(result.status, 255);
  EXPECT_NE(result.err.find("cannot make the state folder " + blocked.folder() + "/state"),
            std::string::npos)
      << result.err;
}

TEST(SimulatorDevices, AreGoneWhileTheyRestart) {
  const Simulation simulation(DeviceToml(11, kMac, 0, "boot_ms = 600"));
  simulation.Run("reset");
  simulation.EmptyJournal();
  const Result result = simulation.Run("list");
  EXPECT_EQ(result.out, "Found 1 corvanes\n0 : 11 Corvane-M7 00:1a:2b:3c:4d:5e\n");
  EXPECT_GE(simulation.CallsOf("CorvaneApiSleepMs"), 4);
  EXPECT_EQ(simulation.CallsOf("CorvaneAPIGetDevicesList"),
            simulation.CallsOf("CorvaneApiDeviceListFree"));
}

TEST(SimulatorFaults, HitTheNthCallOfTheNamedDevice) {
  const Simulation simulation(
      DeviceToml(11, kMac, 0) + DeviceToml(11, "00:1a:2b:3c:4d:5f", 0) +
      "[[fault]]\nfunction = \"CorvaneAPIGetDeviceType\"\ncall = 2\nstatus = -9\n"
      "[[fault]]\nfunction = \"CorvaneAPIGetDeviceMAC\"\ndevice = \"00:1a:2b:3c:4d:5e\"\n"
      "status = -9\n");
  EXPECT_EQ(simulation.Run("list").out,
            "Found 2 corvanes\n0 : 11 Corvane-M7 MAC error\n1 : Error\n");
}

// What the shared object exports is what the header declares, no more and no less.
TEST(SimulatorExports, AreTheFunctionsOfTheHeader) {
  const std::string header = ReadFile(CORVANE_API_HEADER);
  std::set<std::string> declared;
  const std::regex declaration(R"(\n[A-Za-z0-9_*]+ (CorvaneA[Pp][Ii]\w+)\()");
  for (std::sregex_iterator i(header.begin(), header.end(), declaration), end; i != end; ++i) {
    declared.insert((*i)[1]);
  }
  EXPECT_EQ(declared.size(), 41U);

  const std::string command = std::string("nm -D --defined-only ") + CORVANE_SIMULATOR;
  std::set<std::string> exported;
  FILE* names = popen(command.c_str(), "r");
  char name[256];
  while (fscanf(names, "%*s %*s %255s", name) == 1) exported.insert(name);
  pclose(names);
  EXPECT_EQ(exported, declared);
}

// Two hundred programs at once on one device whose state does not exist yet: each reads, changes
// one field and writes back, so updates may overtake each other; but every call must succeed.
TEST(SimulatorState, SurvivesManyProgramsAtOnce) {
  constexpr int kThreads = 20;
  constexpr int kRunsEach = 10;
  const Simulation simulation(DeviceToml(11, kMac, 0x3FFFFFF));
  constexpr std::array kSwitches = {"keepcrcerrors", "keepcrc32",  "disablea", "disableb",
                                    "inline",        "timestamps", "syncts",   "loopback"};
  std::vector<std::thread> threads;
  std::array<std::string, kThreads> failures;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kRunsEach; ++i) {
        const std::string option = kSwitches[static_cast<size_t>(t + i) % kSwitches.size()];
        const Result result = simulation.Run("features set --" + option + " on");
        if (result.status != 0 || result.out != "Corvane detected\n" || !result.err.empty()) {
          failures[static_cast<size_t>(t)] += result.out + result.err;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string& failure : failures) EXPECT_EQ(failure, "");
  EXPECT_EQ(simulation.CallsOf("CorvaneAPISetDeviceFeatures"), kThreads * kRunsEach);
  EXPECT_EQ(simulation.Run("features show").status, 0);

  const std::string check =
      "sqlite3 " + simulation.folder() + "/state/devices.db 'PRAGMA integrity_check'";
  FILE* answer = popen(check.c_str(), "r");
  char text[16] = "";
  EXPECT_EQ(fscanf(answer, "%15s", text), 1);
  pclose(answer);
  EXPECT_STREQ(text, "ok");
}

}  // namespace
