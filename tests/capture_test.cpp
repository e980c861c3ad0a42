// Direct capture from end to end: the utility starts, watches and stops it; the files are read by
// programs that are not ours.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <thread>

#include "support/simulation.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kMac = "00:1a:2b:3c:4d:5e";
constexpr uint32_t kEverything = 0x3FFFFFF;
constexpr const char* kFast = "[device.traffic]\nrate = 100000\n";

std::string Output(const std::string& command) {
  std::string text;
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  for (int letter; (letter = fgetc(pipe)) != EOF;) text += static_cast<char>(letter);
  pclose(pipe);
  return text;
}

// Packets, as capinfos counts them; -1 when it finds anything wrong with the file.
int64_t Packets(const fs::path& file) {
  const std::string facts = Output("capinfos -Mc " + file.string());
  const size_t at = facts.find("Number of packets:");
  if (at == std::string::npos || facts.find("capinfos:") != std::string::npos) return -1;
  return std::stoll(facts.substr(at + 18));
}

// Packets that tshark's display filter keeps.
int64_t Matching(const fs::path& file, const std::string& filter) {
  return std::stoll(Output("tshark -r " + file.string() + " -Y '" + filter +
                           "' -T fields -e frame.number "
                           "2>/dev/null | wc -l"));
}

std::string Pcap(const fs::path& file, const std::string& more = "") {
  return "[device.port_a]\nsource = \"pcap\"\nfile = \"" + file.string() + "\"\n" + more + "\n";
}

// The processes that have a file in the folder open: a capture has its status file.
std::vector<pid_t> ProcessesIn(const std::string& folder) {
  std::vector<pid_t> found;
  std::error_code gone;
  for (const auto& process : fs::directory_iterator("/proc")) {
    const int pid = atoi(process.path().filename().c_str());
    if (pid == 0 || pid == getpid()) continue;
    if (ReadFile(process.path() / "maps").find(folder) != std::string::npos) found.push_back(pid);
  }
  return found;
}

bool Within10s(const std::function<bool()>& holds) {
  for (int i = 0; i < 500; ++i) {
    if (holds()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

class CaptureTest : public testing::Test {
 protected:
  CaptureTest() { fs::create_directory(out_); }
  ~CaptureTest() override {
    simulation_.Run("directcapture stop");
    EXPECT_TRUE(Within10s([&] { return Processes().empty(); }));
  }

  void Configure(const std::string& ports) {
    simulation_.Configure(DeviceToml(11, kMac, kEverything, ports));
  }

  Result Start(const std::string& more = "") const {
    return simulation_.Run("directcapture start --name " + out_ + "/x.pcapng " + more);
  }

  // The last number of the status line that begins so.
  int64_t Status(const std::string& name) const {
    const std::string text = simulation_.Run("directcapture status").out;
    const size_t at = text.find(name + " : ");
    return at == std::string::npos ? -1 : std::stoll(text.substr(at + name.size() + 3));
  }
  bool Ends() const {
    return Within10s([&] { return Status("Enabled") == 0; });
  }

  std::vector<fs::path> Files() const {
    std::vector<fs::path> files(fs::directory_iterator(out_), fs::directory_iterator{});
    std::sort(files.begin(), files.end());
    return files;
  }
  std::vector<pid_t> Processes() const {
    return ProcessesIn(simulation_.folder() + "/state/capture");
  }

  // Frames of the generator, in a file out of the way.
  fs::path MakeTrace() {
    Configure(kFast);
    Start("--size 2");
    EXPECT_TRUE(Ends());
    fs::path trace = simulation_.folder() + "/trace.pcapng";
    fs::rename(Files().at(0), trace);
    return trace;
  }

  Simulation simulation_{DeviceToml(11, kMac, kEverything, kFast)};
  std::string out_ = simulation_.folder() + "/out";
};

TEST_F(CaptureTest, RunsInTheBackgroundUntilItIsStopped) {
  EXPECT_EQ(Start().out, "Corvane detected\nCapture started\n");
  EXPECT_TRUE(Within10s([&] { return Status("Bytes Written") > 1'000'000; }));
  EXPECT_EQ(Status("Enabled"), 1);
  EXPECT_EQ(Processes().size(), 1U);
  EXPECT_EQ(Start().status, 244);
  EXPECT_NE(simulation_.Run("statistics").out.find("Direct capture : STARTED"), std::string::npos);
  EXPECT_EQ(simulation_.Run("directcapture stop").out, "Corvane detected\nCapture stopped\n");
  EXPECT_EQ(Status("Enabled"), 0);
  EXPECT_EQ(Status("Error"), 0);
  ASSERT_EQ(Files().size(), 1U);
  EXPECT_EQ(Status("Bytes Written"), static_cast<int64_t>(fs::file_size(Files()[0])));
  EXPECT_GT(Packets(Files()[0]), 1000);
  EXPECT_EQ(Matching(Files()[0], "_ws.malformed || ip.checksum.status == 0"), 0);
  EXPECT_GT(Matching(Files()[0], "frame.interface_name == \"port B\""), 1000);
}

TEST_F(CaptureTest, ReplaysAFileWholeAndEndsWithIt) {
  const fs::path trace = MakeTrace();
  Configure(Pcap(trace, "pace = \"fast\""));
  EXPECT_EQ(Start().status, 0);
  ASSERT_TRUE(Ends());
  EXPECT_EQ(Status("Error"), 0);
  const std::string show =
      " -T fields -e frame.time_epoch -e frame.len -e eth.src -e ip.id -e tcp.seq_raw";
  EXPECT_EQ(Output("tshark 2>/dev/null -r " + Files().at(0).string() + show),
            Output("tshark 2>/dev/null -r " + trace.string() + show));
  const int64_t once = Packets(trace);
  EXPECT_EQ(Packets(Files()[0]), once);

  Configure(Pcap(trace, "pace = \"rate\"\nrate = 1000000\nrepeat = true"));
  Start();
  EXPECT_TRUE(Within10s([&] { return Status("Bytes Written") > 5'000'000; }));
  simulation_.Run("directcapture stop");
  EXPECT_GT(Packets(Files().back()), 2 * once);
  EXPECT_EQ(Output("capinfos -Mo " + Files().back().string()).find("False"), std::string::npos);
}

TEST_F(CaptureTest, TheDevicesConfigurationShowsInTheFile) {
  const fs::path trace = MakeTrace();
  Configure(Pcap(trace, "pace = \"fast\""));
  const struct {
    const char* command;
    const char* kept;  // of the trace
    const char* none;  // in the file
  } cases[] = {
      {"filter set --ip 10.1.20.53", "ip.addr == 10.1.20.53", "!ip"},
      {"filter set --dstport 443", "tcp.dstport == 443 || udp.dstport == 443", "arp"},
      {"filter set --vlanid 30", "vlan.id == 30", "!vlan"},
      {"packet_type_filter set --udp off --arp off", "!udp && !arp", "udp || arp"},
      {"dpi enable --dpitxt 0123HELO89abcdef --dpimask 0x000000f0", "frame contains \"HELO\"",
       "tcp.dstport != 25"},
      {"features set --slicing 100", "frame", "frame.cap_len > 100"},
      {"features set --disablea on", "arp && !arp", "frame"},
  };
  for (const auto& c : cases) {
    simulation_.Run("reset");
    fs::remove_all(out_);
    fs::create_directory(out_);
    EXPECT_EQ(simulation_.Run(c.command).status, 0) << c.command;
    EXPECT_EQ(Start().status, 0) << c.command;
    ASSERT_TRUE(Ends()) << c.command;
    EXPECT_EQ(Packets(Files().at(0)), Matching(trace, c.kept)) << c.command;
    EXPECT_EQ(Matching(Files()[0], c.none), 0) << c.command;
    simulation_.Run("packet_type_filter set --udp on --arp on");
    simulation_.Run("filter disable");  // saves both filters
  }
}

TEST_F(CaptureTest, FollowsTheConfigurationAndEndsWithTheDevicesRestart) {
  Start();
  simulation_.Run("packet_type_filter set --ipv4 off --ipv6 off --arp off");
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  simulation_.Run("features set --disablea on --disableb on");
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  const int64_t written = Status("Bytes Written");
  std::this_thread::sleep_for(std::chrono::milliseconds(1200));
  EXPECT_EQ(Status("Bytes Written"), written);
  EXPECT_EQ(simulation_.Run("reset").status, 0);
  EXPECT_TRUE(Processes().empty());
  EXPECT_EQ(Status("Bytes Written"), 0);
  EXPECT_GT(Matching(Files().at(0), "lldp"), 0);
}

TEST_F(CaptureTest, RotatesItsFilesAndEndsWithTheLastOne) {
  Start("--size 1 --count 3");
  ASSERT_TRUE(Ends());
  EXPECT_EQ(Status("Error"), 0);
  EXPECT_EQ(Status("Files Written"), 3);
  EXPECT_EQ(Files().size(), 3U);

  Start("--size 1 --count 2 --loop");
  EXPECT_TRUE(Within10s([&] { return Status("Files Written") > 6; }));
  simulation_.Run("directcapture stop");
  EXPECT_EQ(Files().size(), 5U);
  for (const fs::path& file : Files()) {
    EXPECT_LE(fs::file_size(file), 1U << 20);
    EXPECT_GT(Packets(file), 0) << file;
  }
}

TEST_F(CaptureTest, OneOfManyStartsWins) {
  std::vector<std::thread> threads;
  std::vector<Result> results(8);
  threads.reserve(results.size());
  for (Result& result : results) threads.emplace_back([&] { result = Start(); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(std::count_if(results.begin(), results.end(),
                          [](const Result& result) { return result.status == 0; }),
            1);
  EXPECT_EQ(Processes().size(), 1U);
  simulation_.Run("directcapture stop");
  EXPECT_EQ(Files().size(), 1U);
}

TEST_F(CaptureTest, AKilledCaptureHasFailedAndAnotherCanStart) {
  Start();
  EXPECT_TRUE(Within10s([&] { return Status("Bytes Written") > 1'000'000; }));
  ASSERT_EQ(Processes().size(), 1U);
  kill(Processes()[0], SIGKILL);
  EXPECT_TRUE(Ends());
  EXPECT_EQ(Status("Error"), 1);
  EXPECT_GT(Packets(Files().at(0)), 1000);
  EXPECT_EQ(Start().status, 0);
  EXPECT_EQ(Status("Enabled"), 1);
  EXPECT_EQ(Status("Error"), 0);
}

TEST_F(CaptureTest, FailsWhenItsFolderGoes) {
  Start();
  fs::remove_all(out_);
  EXPECT_TRUE(Ends());
  EXPECT_EQ(Status("Error"), 1);
  fs::create_directory(out_);
  EXPECT_EQ(Start().status, 0);
  EXPECT_EQ(Status("Error"), 0);
}

TEST_F(CaptureTest, AFailedStartSaysWhyAndLeavesNothing) {
  const std::string text_file = simulation_.folder() + "/sim.toml";
  const struct {
    std::string ports;
    std::string reason;
  } cases[] = {
      {Pcap("/nowhere.pcap"), "port A: cannot read /nowhere.pcap: No such file or directory"},
      {Pcap(text_file), "port A: cannot read " + text_file + ": unknown file format"},
      {"[device.port_b]\nsource = \"interface\"\ninterface = \"nope0\"\n",
       "port B: cannot capture on nope0: "},
  };
  for (const auto& c : cases) {
    Configure(c.ports);
    const Result result = Start();
    EXPECT_EQ(result.status, 231);
    const std::string line = "corvane-simulator: cannot start the capture: " + c.reason;
    EXPECT_EQ(result.err.substr(0, line.size()), line);
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
    EXPECT_TRUE(Processes().empty());
    EXPECT_TRUE(Files().empty());
    EXPECT_EQ(Status("Enabled"), 0);
  }
}

TEST_F(CaptureTest, EndsWithTheDeviceState) {
  Start();
  EXPECT_EQ(Processes().size(), 1U);
  fs::remove_all(simulation_.folder() + "/state");
  EXPECT_TRUE(Within10s([&] { return Processes().empty(); }));
}

}  // namespace
