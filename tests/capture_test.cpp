// Direct capture from end to end: the utility starts, watches and stops it; the files are read by
// programs that are not ours. The filters have a test of their own, frame_filter_test.py.
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

#include "support/expectations.h"
#include "support/programs.h"

namespace {

namespace fs = std::filesystem;

constexpr uint32_t kEverything = 0x3FFFFFF;
constexpr const char* kFast = "[device.traffic]\nrate = 100000\n";

// Packets that tshark's display filter keeps.
int64_t Matching(const fs::path& file, const std::string& filter) {
  return std::stoll(
      Output("tshark 2>/dev/null -o eth.check_fcs:TRUE -o tcp.check_checksum:TRUE "
             "-o udp.check_checksum:TRUE -r " +
             file.string() + " -Y '" + filter + "' -T fields -e frame.number | wc -l"));
}

std::string Pcap(const fs::path& file, const std::string& more) {
  return "[device.port_a]\nsource = \"pcap\"\nfile = \"" + file.string() + "\"\n" + more + "\n";
}

std::string PcapForBoth(const fs::path& file, const std::string& more) {
  std::string ports = Pcap(file, more);
  ports += ports;
  return ports.replace(ports.rfind("port_a"), 6, "port_b");
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

  void Configure(const std::string& ports) { simulation_.Configure(OneDevice(kEverything, ports)); }

  Result Start(const std::string& more = "") const {
    return simulation_.Run("directcapture start --name " + out_ + "/x.pcapng " + more);
  }

  // The last number of the status line that begins so.
  int64_t Status(const std::string& name) const {
    const auto [status, text, complaint] = simulation_.Run("directcapture status");
    told_ += complaint;
    const size_t at = text.find(name + " : ");
    return at == std::string::npos ? -1 : std::stoll(text.substr(at + name.size() + 3));
  }
  bool Writes(int64_t bytes) const {
    return Within10s([&] { return Status("Bytes Written") > bytes; });
  }
  bool Ends() const {
    told_.clear();
    return Within10s([&] { return Status("Enabled") == 0; });
  }

  std::vector<fs::path> Files() const {
    std::vector<fs::path> files(fs::directory_iterator(out_), fs::directory_iterator{});
    std::sort(files.begin(), files.end());
    return files;
  }

  // The captures, which have the status file open.
  std::vector<std::string> Processes() const {
    return Split(Output("grep -ls '" + simulation_.folder() +
                        "/state/capture' /proc/[0-9]*/maps | cut -d/ -f3"));
  }

  Simulation simulation_{OneDevice(kEverything, kFast)};
  std::string out_ = simulation_.folder() + "/out";
  mutable std::string told_;  // on standard error by the statuses since Ends began
};

TEST_F(CaptureTest, RunsInTheBackgroundUntilItIsStopped) {
  EXPECT_EQ(Start().out, "Corvane detected\nCapture started\n");
  EXPECT_TRUE(Writes(1'000'000));
  EXPECT_EQ(Status("Enabled"), 1);
  ASSERT_EQ(Processes().size(), 1U);
  EXPECT_EQ(fs::read_symlink("/proc/" + Processes()[0] + "/fd/1"), "/dev/null");
  EXPECT_EQ(Start().status, 244);
  EXPECT_NE(simulation_.Run("statistics").out.find("Direct capture : STARTED"), std::string::npos);
  EXPECT_EQ(simulation_.Run("directcapture stop").out, "Corvane detected\nCapture stopped\n");
  EXPECT_EQ(Status("Enabled"), 0);
  EXPECT_EQ(Status("Error"), 0);
  ASSERT_EQ(Files().size(), 1U);
  EXPECT_EQ(Status("Bytes Written"), static_cast<int64_t>(fs::file_size(Files()[0])));
  EXPECT_GT(PacketCount(Files()[0]), 1000);
  // Warnings and errors of its expert, but for what the mix means.
  EXPECT_EQ(Matching(Files()[0],
                     "_ws.expert.severity >= 6291456 && !tcp.flags.reset == 1 && "
                     "!tcp.analysis.zero_window"),
            0);
  EXPECT_GT(Matching(Files()[0], "frame.interface_name == \"port B\""), 1000);
  const std::string facts = Output("capinfos -I " + Files()[0].string());
  for (const char* fact : {"Name = port A", "Time precision = nanoseconds (9)",
                           "Encapsulation = Ethernet", "Number of stat entries = 1"}) {
    EXPECT_NE(facts.find(fact), std::string::npos) << fact << " in\n" << facts;
  }
}

// Of 50 frames of the mix three have a CRC error, and one is dropped by the hardware.
TEST_F(CaptureTest, CheckSequencesAreRightButAfterAnError) {
  simulation_.Run("features set --keepcrc32 on --keepcrcerrors on");
  Start("--size 2");
  ASSERT_TRUE(Ends());
  const int64_t packets = PacketCount(Files().at(0));
  const int64_t bad = Matching(Files()[0], "eth.fcs.status == 0");
  EXPECT_EQ(Matching(Files()[0], "eth.fcs.status == 1"), packets - bad);
  EXPECT_NEAR(static_cast<double>(bad * 49), static_cast<double>(packets * 3), 3 * 49);
}

// Up to the statistics of its end, which have times.
std::string Packets(const fs::path& file) {
  const std::string bytes = ReadFile(file);
  return bytes.substr(0, bytes.size() - 104);
}

TEST_F(CaptureTest, ReplaysAFileThroughTheDevicesConfiguration) {
  const std::string keep = "features set --keepcrc32 on --keepcrcerrors on ";
  simulation_.Run(keep);
  Start("--size 2");
  ASSERT_TRUE(Ends());
  const std::string trace = simulation_.folder() + "/trace.pcapng";
  fs::rename(Files().at(0), trace);
  EXPECT_NE(
      Output("gzip -k " + trace + "; tshark -r " + trace + " -Y frame.packet_flags_crc_error"), "");
  const struct {
    const char* settings;
    const char* start;
    const char* editcap;  // does the same; null: the capture is the same, byte for byte
  } cases[] = {{"", "", nullptr},
               {"--slicing 100", "", "-s 100"},
               {"--slicing 100", "--fullframes", nullptr},
               {"--disablea on --disableb on", "", "-B '2000-01-01 00:00:00'"}};
  const auto content = [](const std::string& file, const std::string& options) {
    return Output("editcap -F nsecpcap " + options + " '" + file + "' -");
  };
  for (const auto& [settings, start, editcap] : cases) {
    Configure(PcapForBoth(trace + (*settings == '\0' ? ".gz" : ""), "pace = \"fast\""));
    fs::remove_all(out_);
    fs::create_directory(out_);
    simulation_.Run(keep + settings);
    EXPECT_EQ(Start(start).status, 0);
    ASSERT_TRUE(Ends());
    EXPECT_EQ(Status("Error"), 0);
    const bool same = editcap == nullptr ? Packets(Files().at(0)) == Packets(trace)
                                         : content(Files().at(0), "") == content(trace, editcap);
    EXPECT_TRUE(same) << settings << start;
    simulation_.Run("reset");
  }

  for (const char* pace : {"pace = \"rate\"\nrate = 1000000", "pace = \"fast\""}) {
    Configure(PcapForBoth(trace, std::string(pace) + "\nrepeat = true"));
    Start("--size 5");
    ASSERT_TRUE(Ends());
    EXPECT_GT(PacketCount(Files().back()), 2 * PacketCount(trace));
    EXPECT_EQ(Output("capinfos -Mo " + Files().back().string()).find("False"), std::string::npos);
  }
}

// Of the mix's 25 frames at port B one has a CRC error, and one is dropped by the hardware.
TEST_F(CaptureTest, GeneratesAsManyFramesAsAreWantedBadOnesAmongThem) {
  Configure(
      "[device.port_b]\nsource = \"generator\"\nrate = 100000\nframes = 250\nburst = 25\n"
      "crc_errors = 50\ndrops = 125\n");
  simulation_.Run("features set --keepcrcerrors on");
  Start();
  ASSERT_TRUE(Ends());
  EXPECT_EQ(PacketCount(Files().at(0)), 250 - 10 - 2);
  EXPECT_EQ(Matching(Files()[0], "frame.packet_flags_crc_error == 1"), 10 + 4);
  EXPECT_EQ(Matching(Files()[0], "frame.time_delta > 0.0001"), 9);
}

TEST_F(CaptureTest, FollowsTheConfigurationAndEndsWithTheDevicesRestart) {
  Start("--fullframes");
  simulation_.Run("features set --slicing 60");
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
  EXPECT_EQ(Matching(Files()[0], "frame.cap_len < frame.len"), 0);
}

TEST_F(CaptureTest, RotatesItsFilesAndDropsWhatTheCacheCannotHold) {
  Configure("[device.traffic]\nrate = 10000000\n");
  Start("--size 1 --count 2 --loop --maxcache 1");
  int64_t most = 0;
  for (int i = 0; i < 50; ++i) most = std::max(most, Status("Cache used"));
  EXPECT_LE(most, 1 << 20);
  simulation_.Run("directcapture stop");
  EXPECT_EQ(Files().size(), 2U);
  for (const fs::path& file : Files()) {
    EXPECT_LE(fs::file_size(file), 1U << 20);
    EXPECT_GT(PacketCount(file), 0) << file;
  }
}

TEST_F(CaptureTest, OneOfManyStartsWins) {
  std::vector<std::thread> threads;
  std::atomic<int> started = 0;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] { started += Start().status == 0 ? 1 : 0; });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(started, 1);
  EXPECT_EQ(Output("grep -c status=-25 " + simulation_.folder() + "/journal"), "0\n");
  EXPECT_EQ(Processes().size(), 1U);
  simulation_.Run("directcapture stop");
  EXPECT_EQ(Files().size(), 1U);
}

TEST_F(CaptureTest, AFailureShowsAndAnotherCaptureCanStart) {
  Start();
  EXPECT_TRUE(Writes(1'000'000));
  kill(std::stoi(Processes().at(0)), SIGKILL);
  const std::string failed = "corvane-simulator: the capture of 00:1a:2b:3c:4d:5e failed: ";
  EXPECT_TRUE(Ends());
  EXPECT_EQ(Status("Error"), 1);
  EXPECT_EQ(told_, failed + "its process was killed\n");
  EXPECT_GT(Matching(Files().at(0), "frame"), 1000);  // the last packet may be a part of one

  EXPECT_EQ(Start().status, 0);
  EXPECT_EQ(Status("Error"), 0);
  fs::remove_all(out_);
  EXPECT_TRUE(Ends());
  EXPECT_EQ(Status("Error"), 1);
  EXPECT_TRUE(told_.starts_with(failed + out_) && told_.ends_with(": No such file or directory\n"));
  EXPECT_EQ(Output("grep -c ' reason=\"the capture' " + simulation_.folder() + "/journal"), "2\n");

  fs::create_directory(out_);
  EXPECT_EQ(Start().status, 0);
  EXPECT_EQ(Status("Enabled"), 1);
  fs::remove_all(simulation_.folder() + "/state");
  EXPECT_TRUE(Within10s([&] { return Processes().empty(); }));
}

// A pipe that nobody writes to keeps the start waiting, but nobody else, and can be stopped.
TEST_F(CaptureTest, AWaitingStartHoldsNothingUp) {
  const std::string pipe = simulation_.folder() + "/pipe";
  Output("mkfifo " + pipe);
  Configure(Pcap(pipe, ""));
  std::jthread waiting([&] { EXPECT_EQ(Start().status, 231); });
  EXPECT_TRUE(Within10s([&] { return Status("Enabled") == 1; }));
  EXPECT_EQ(simulation_.Run("features set --slicing 60").status, 0);
  EXPECT_EQ(Start().status, 244);
  EXPECT_EQ(simulation_.Run("directcapture stop").status, 0);
}

TEST_F(CaptureTest, AFailedStartSaysWhyAndLeavesNothing) {
  const std::string text_file = simulation_.folder() + "/sim.toml";
  const std::pair<std::string, std::string> cases[] = {
      {Pcap("/nowhere.pcap", ""), "port A: cannot read /nowhere.pcap: No such file or directory\n"},
      {Pcap(text_file, ""), "port A: cannot read " + text_file + ": unknown file format\n"},
      {"[device.port_b]\nsource = \"interface\"\ninterface = \"nope0\"\n",
       "port B: cannot capture on nope0: "}};
  for (const auto& [ports, reason] : cases) {
    Configure(ports);
    const Result result = Start();
    EXPECT_EQ(result.status, 231);
    EXPECT_TRUE(result.err.starts_with("corvane-simulator: cannot start the capture: " + reason));
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    EXPECT_TRUE(Processes().empty());
    EXPECT_TRUE(Files().empty());
    EXPECT_EQ(Status("Enabled"), 0);
  }
}

}  // namespace
