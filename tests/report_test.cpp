// corvane-report on everything that the utility prints, and on what it never would.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <random>

#include "device/corvane_api.h"
#include "output.h"
#include "parser.h"
#include "support/simulation.h"

namespace {

template <class Record>
std::string Hex(const Record& record) {
  constexpr char kDigits[] = "0123456789abcdef";
  uint8_t bytes[sizeof record];
  memcpy(bytes, &record, sizeof record);
  std::string hex;
  for (const uint8_t byte : bytes) hex += {kDigits[byte >> 4], kDigits[byte & 15]};
  return hex;
}

std::string FixedStatistics(uint32_t version) {
  StatisticsRecord record = {};
  record.version = version;
  record.timestamp = 1234567890123;
  record.sw_dropped = UINT64_MAX;
  if (version == 1) record.counters.v1 = {7000, 250, {{1, 2, 3, 4, 5, 6, 7}, {}}};
  for (uint64_t i = 0; version == 2 && i < CORVANE_COUNTERS_V2; ++i) {
    record.counters.v2[i] = 1000 * i;
  }
  return "statistics = \"" + Hex(record) + "\"\n";
}

std::string FixedCapture() {
  DiskDumpStatus record = {};
  record.enabled = 1;
  record.cache_used = 4526;
  record.bytes_written = 3ULL << 30;
  record.max_cache = 104857600;
  record.files_written = 12;
  return "disk_dump_status = \"" + Hex(record) + "\"\n";
}

std::string FixedClock() {
  const TimingStatusRecord record = {2,  2, 9, 11, 7, 1,    0, 1,  -4.25,
                                     {}, 2, 7, 8,  9, 2026, 2, 28, {}};
  return "timing_status = \"" + Hex(record) + "\"\n";
}

// Device 0 does everything; device 1 is a copper tap with fixed counters; device 2 does nothing.
std::string Fleet() {
  return DeviceToml(16, "00:1a:2b:3c:4d:01", 0x3FFFFFF,
                    "hw_firmwares = [\"10G 4.7\", \"1G 2.3\"]\n" + FixedStatistics(2) +
                        FixedCapture() + FixedClock()) +
         DeviceToml(11, "00:1a:2b:3c:4d:02", 0x2183, FixedStatistics(1)) +
         DeviceToml(77, "00:1a:2b:3c:4d:03", 0);
}

// Puts the text through corvane-report.
Result Convert(const Simulation& simulation, const std::string& text,
               const std::string& options = "") {
  const std::string file = simulation.folder() + "/report";
  WriteFile(file + ".in", text);
  const std::string command = std::string(CORVANE_REPORT) + " " + options + " < " + file +
                              ".in > " + file + ".out 2> " + file + ".err";
  const int status = system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), ReadFile(file + ".out"),
          ReadFile(file + ".err")};
}

bool Installed(const std::string& program) {
  return system(("command -v " + program + " >/dev/null").c_str()) == 0;
}

struct ReportCase {
  const char* golden;
  const char* before;  // a command that is run first
  const char* words;
  const char* jq;  // what holds of the JSON
  int status = 0;
};

constexpr ReportCase kReports[] = {
    {"list", "", "list", ".found == 3 and (.devices | map(.type) == [16, 11, 77])", 3},
    {"version", "", "version", ".command_line_utility_version == \"1.24\""},
    {"capabilities", "", "capabilities show --device 1",
     ".devices_capabilities | .filter and (.gps | not) and length == 24"},
    {"legend", "", "capabilities legend", ".legend_of_devices_capabilities | length == 24"},
    {"features", "features set --slicing 128", "features show",
     ".features_configuration | .packet_slicing and .packet_slicing_size.value == 128"},
    {"features_forced", "", "features show --device 1",
     ".features_configuration | .inline_mode_forced and (.loopback | not)"},
    {"portcontrol", "", "portcontrol show", ".port_control_configuration.ports | length == 2"},
    {"portstatus", "", "portstatus --device 1", "[.ports[].link_is_up] == [true, true]"},
    {"sfp", "", "sfp", ".ports[0].temperature.unit == \"C\" and .ports[0].alarms == []"},
    {"poe", "", "poe show", "[.poe_measures.pairs[].return_path[]] == [2, 3, 2, 3]"},
    {"filter_off", "", "filter show", ".packet_filter_configuration.enabled == false"},
    {"filter", "filter set --srcmac 00:*:00:00:00:01 --dstport 80 --vlanid 5", "filter show",
     ".packet_filter_configuration | .destination_port == 80 and .vlan_id == 5"},
    {"packet_type_filter", "packet_type_filter set --quic off", "packet_type_filter show",
     ".packet_type_filters | .ipv4 and (.quic | not)"},
    {"dpi", "dpi enable --dpitxt 0000000000000000", "dpi show",
     ".dpi_filter_configuration | .status and (.filter_data | length == 32)"},
    {"statistics_v1", "", "statistics --device 1", ".ports[0].jabbers == 6 and .link_up.value"},
    {"statistics_v2", "", "statistics", "[.counters[].count] | length == 16 and .[1] == 1000"},
    {"statsv2", "statsv2 set --counter 3 --size_gt 100 --bytes --ipv4 on --ipv4_addr 10.1.*.*",
     "statsv2 show", ".statistics_v2_configuration.counters[3].size == 100"},
    {"directcapture", "", "directcapture status", ".direct_capture_status.files_written == 12"},
    {"timing", "timing config --ppscomp -10 --portBts egress --device 0", "timing status",
     ".timing_status.current_rtc_time == \"2026-02-28T07:08:09Z\""},
};

class Report : public testing::TestWithParam<ReportCase> {
 protected:
  // The report as the utility prints it.
  std::string Print() const {
    const std::string before = GetParam().before;
    EXPECT_EQ(before.empty() ? 0 : simulation_.Run(before).status, 0);
    return simulation_.Run(GetParam().words).out;
  }

  const Simulation simulation_{Fleet()};
};

INSTANTIATE_TEST_SUITE_P(, Report, testing::ValuesIn(kReports),
                         [](const auto& given) { return std::string(given.param.golden); });

TEST_P(Report, IsTheJsonThatWasAgreed) {
  const Result json = Convert(simulation_, Print());
  EXPECT_EQ(json.out,
            ReadFile(std::string(CORVANE_GOLDEN) + "/json/" + GetParam().golden + ".json"));
  EXPECT_EQ(json.err, "");
  EXPECT_EQ(json.status, GetParam().status);
}

TEST_P(Report, HoldsWhatJqFinds) {
  if (!Installed("jq")) GTEST_SKIP() << "jq is not installed";
  const std::string report = Print();
  for (const char* options : {"--json", "--lines"}) {
    Convert(simulation_, report, options);
    const bool flat = std::string(options) == "--lines";
    const std::string filter =
        flat ? "([.[] | scalars] | length) == length and (.time | test(\"^2.*Z$\"))"
             : GetParam().jq;
    const std::string command =
        "jq -e '" + filter + "' " + simulation_.folder() + "/report.out > /dev/null 2>&1";
    EXPECT_EQ(system(command.c_str()), 0) << filter << "\n" << report;
  }
}

TEST_P(Report, HasMetricsThatPromtoolAccepts) {
  if (!Installed("promtool")) GTEST_SKIP() << "promtool (package prometheus) is not installed";
  Convert(simulation_, Print(), "--prometheus --label host=a --label device=0");
  const std::string command =
      "promtool check metrics < " + simulation_.folder() + "/report.out 2>&1";
  EXPECT_EQ(system(command.c_str()), 0);
}

// Wherever a report breaks off, what was whole is there and the rest is named.
TEST_P(Report, BrokenOffAnywhereIsReadAsFarAsItGoes) {
  const std::string report = Print();
  for (size_t length = 0; length < report.size(); length += 1 + report.size() / 500) {
    std::string text;
    ReportParser parser([&text](const Json& json) { text += ToLine(json, "") + ToJson(json); });
    size_t unread = 0;
    for (size_t at = 0; at < length;) {
      const size_t end = std::min(report.find('\n', at), length);
      unread += parser.ReadLine(std::string_view(report).substr(at, end - at)) != nullptr ? 1 : 0;
      at = end + 1;
    }
    parser.Finish();
    EXPECT_LE(unread, 1U) << report.substr(0, length);
  }
}

struct TextCase {
  const char* input;
  const char* options;
  const char* out;
  const char* err;
  int status;
};

TEST(ReportText, IsReadLineByLine) {
  const Simulation simulation("");
  const TextCase cases[] = {
      {"", "", "", "", 0},
      {"", "--prometheus", "", "", 0},
      {"Corvane detected\n", "", "{\n  \"messages\": [\n    \"Corvane detected\"\n  ]\n}\n", "", 0},
      {"Invalid Corvane device selected\n", "",
       "{\n  \"errors\": [\n    \"Invalid Corvane device selected\"\n  ]\n}\n", "", 3},
      {"Corvane 0: Time updated\nCorvane 1: Failed to set manual timestamp\n", "",
       "{\n  \"devices\": [\n    {\n      \"device\": 0,\n      \"message\": \"Time updated\"\n    "
       "},\n    {\n      \"device\": 1,\n      \"message\": \"Failed to set manual timestamp\"\n   "
       " "
       "}\n  ]\n}\n",
       "", 3},
      {"T :\n\tx : 1\nnonsense\n\tz\n\ty : on\n", "",
       "{\n  \"t\": {\n    \"x\": 1,\n    \"y\": true\n  }\n}\n",
       "corvane-report: line 3 cannot be read: nonsense\n"
       "corvane-report: line 4 cannot be read: ?z\n",
       1},
      {"T :\n\tx : 1\n\tx : 2\n\t\t\ty : 3\n", "", "{\n  \"t\": {\n    \"x\": 1\n  }\n}\n",
       "corvane-report: line 3 was said before: ?x : 2\n"
       "corvane-report: line 4 is indented, but belongs to no title: ???y : 3\n",
       1},
      {"x : 99999999999999999999\ny : 18446744073709551615\nz : -9223372036854775808\n"
       "w : 0x10\nv : 1.5.2\nu : nanV\nt : 00/13/2026 10:00:00 (UTC)\nMessages : 1\n",
       "",
       "{\n  \"x\": \"99999999999999999999\",\n  \"y\": 18446744073709551615,\n"
       "  \"z\": -9223372036854775808,\n  \"w\": \"0x10\",\n  \"v\": \"1.5.2\",\n"
       "  \"u\": \"nanV\",\n  \"t\": \"00/13/2026 10:00:00 (UTC)\"\n}\n",
       "corvane-report: line 8 was said before: Messages : 1\n", 1},
      {"Model: 12\nModel: Yes\n", "", "{\n  \"model\": \"12\"\n}\n{\n  \"model\": \"Yes\"\n}\n", "",
       0},
      {"Devices : 3\n1 : 2 a b\n", "", "{\n  \"devices\": 3\n}\n",
       "corvane-report: line 2 was said before: 1 : 2 a b\n", 1},
      {"Port A\n\tTotal Bytes : 18446744073709551615\n\tRX power (mW): 0.5\n", "--prometheus",
       "# HELP corvane_ports_bytes_total Corvane: ports, total bytes.\n"
       "# TYPE corvane_ports_bytes_total counter\n"
       "corvane_ports_bytes_total{port=\"A\"} 18446744073709551615\n"
       "# HELP corvane_ports_rx_power_watts Corvane: ports, rx power.\n"
       "# TYPE corvane_ports_rx_power_watts gauge\n"
       "corvane_ports_rx_power_watts{port=\"A\"} 0.0005\n",
       "", 0},
      {"Disable port A : on\nx : 1\nx : 2\ny : text\n",
       "--prometheus --label 'a=\"\\' --label port=z",
       "# HELP corvane_disable_port Corvane: disable port.\n"
       "# TYPE corvane_disable_port gauge\n"
       "corvane_disable_port{a=\"\\\"\\\\\",port=\"A\"} 1\n"
       "# HELP corvane_x Corvane: x.\n# TYPE corvane_x gauge\n"
       "corvane_x{a=\"\\\"\\\\\",port=\"z\"} 2\n",
       "", 0},
  };
  for (const TextCase& c : cases) {
    const Result result = Convert(simulation, c.input, c.options);
    EXPECT_EQ(result.out, c.out) << c.input;
    EXPECT_EQ(result.err, c.err) << c.input;
    EXPECT_EQ(result.status, c.status) << c.input;
  }
}

TEST(ReportText, RefusedOptionsPrintTheUsage) {
  const Simulation simulation("");
  for (const char* options : {"--nosuch", "x", "--label", "--label x", "--label 9=1", "-h"}) {
    const Result result = Convert(simulation, "x : 1\n", options);
    EXPECT_EQ(result.status, 2) << options;
    EXPECT_TRUE(result.err.starts_with("Usage: ")) << options;
    EXPECT_EQ(result.out, "") << options;
  }
  EXPECT_TRUE(Convert(simulation, "", "--help").out.starts_with("Usage: "));
}

// Every object comes when its report does, not when the next one or the end does.
TEST(ReportText, AReportOfAnEndlessCommandIsHandedOverAtItsLastLine) {
  int reports = 0;
  ReportParser parser([&reports](const Json&) { ++reports; });
  const std::vector<std::string> stopped = {"", "Timestamp  : 1", "Direct capture : STOPPED"};
  const std::vector<std::string> started = {"", "Timestamp  : 2", "Direct capture : STARTED",
                                            "Cache used : 4.42 KB", "Files Written : 1"};
  for (int round = 1; round <= 3; ++round) {
    for (const std::string& line : round == 2 ? started : stopped) {
      EXPECT_EQ(reports, round - 1);
      EXPECT_EQ(parser.ReadLine(line), nullptr);
    }
    EXPECT_EQ(reports, round);
  }
}

TEST(ReportText, ContinuousStatisticsAreOneLineEach) {
  const Simulation simulation(Fleet());
  const std::string text = simulation.Run("statistics --continuous --delay 20", 300).out;
  const Result lines = Convert(simulation, text, "--lines");
  const auto count = std::count(lines.out.begin(), lines.out.end(), '\n');
  EXPECT_GE(count, 3);
  size_t first_counters = 0;
  for (size_t at = 0; (at = lines.out.find("\"counters.1.count\":0,", at)) != std::string::npos;) {
    ++first_counters;
    ++at;
  }
  EXPECT_EQ(first_counters, static_cast<size_t>(count));
}

TEST(ReportText, OverlongAndBinaryInputIsNamedAndSkipped) {
  const Simulation simulation("");
  std::string overlong = "x : ";
  overlong.resize(10'000'000, 'a');
  overlong += "\ny : 1\n";
  const Result result = Convert(simulation, overlong);
  EXPECT_EQ(result.out, "{\n  \"y\": 1\n}\n");
  EXPECT_TRUE(result.err.starts_with("corvane-report: line 1 is too long: x : aaa"));
  EXPECT_LT(result.err.size(), 200U);
  EXPECT_EQ(result.status, 1);

  const std::string device_text("Vendor name: a\0\xff\x01z\n", 18);
  EXPECT_EQ(Convert(simulation, device_text).out,
            "{\n  \"vendor_name\": \"a\\u0000\xEF\xBF\xBD\\u0001z\"\n}\n");
}

TEST(ReportText, NoiseOfReportLikeBytesNeverEndsTheProgram) {
  std::mt19937 random(7);
  const std::string_view pieces[] = {"\n",
                                     "\n",
                                     "\t",
                                     "\t",
                                     " : ",
                                     ":",
                                     "Port A",
                                     "1",
                                     "x",
                                     "\r",
                                     "Counter",
                                     " ",
                                     "ports",
                                     "Satellites",
                                     "(",
                                     ")",
                                     "\xff",
                                     "-",
                                     "-----Pair 0-----",
                                     "Alarms:"};
  for (int round = 0; round < 3000; ++round) {
    std::string line;
    Metrics metrics("");
    ReportParser parser([&metrics](const Json& json) {
      metrics.Add(json);
      EXPECT_TRUE(Json::accept(ToLine(json, "")) && Json::accept(ToJson(json)));
    });
    for (int i = 0; i < 60; ++i) {
      const std::string_view piece = pieces[random() % std::size(pieces)];
      if (piece == "\n") {
        parser.ReadLine(line);
        line.clear();
      } else {
        line += piece;
      }
    }
    parser.Finish();
    metrics.Text();
  }
}

}  // namespace
