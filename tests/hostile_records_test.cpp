// Whatever the library's records hold, every report ends by itself with its usual status, is no
// longer than a report can be, and reads nothing beyond the records.
#include <random>

#include "device/corvane_api.h"
#include "support/expectations.h"
#include "support/for_each.h"

namespace {

constexpr unsigned kSeed = 20261122;
constexpr int32_t kWords[] = {-1, INT32_MIN, INT32_MAX, 2, 3, 0x7fc00000};  // the last is a NaN
constexpr size_t kRandomCases = 64;   // of each report, half of them with what is valid
constexpr size_t kMostOutput = 8192;  // statsv2 show: 16 counters of less than 420 bytes each

struct Record {
  std::string name;  // of its key in the simulator's configuration
  size_t size;
  std::map<size_t, std::string> valid;  // what must stand where for a full report
};

struct Report {
  const char* words;
  std::vector<Record> records;
  size_t first = 0;  // the words that are set in turn, as offsets into all records together
  size_t end = SIZE_MAX;
  int refused = 0;  // the other status that is in order
};

const Record kFeatures = {"features", sizeof(FeaturesRecord), {{80, "03"}}};
const Record kCapture = {"disk_dump_status", sizeof(DiskDumpStatus), {{0, "01"}}};
// Its three flags, two counts, and the first module's link.
const Record kLinks = {"link_status",
                       sizeof(LinkStatusRecord),
                       {{0, "01"}, {32, "01"}, {36, "02"}, {40, "01"}, {1104, "01"}, {1108, "02"}}};

const Report kReports[] = {
    {"list", {{"device_count", 4, {{0, "01000000"}}}}},
    {"version", {{"versions", sizeof(VersionRecord)}}},
    {"features show", {kFeatures, {"hw_firmwares", sizeof(HwFirmwaresDesc), {{0, "ffffff7f"}}}}},
    {"portcontrol show", {{"ports_speed", sizeof(PortsSpeedRecord)}}},
    {"portstatus", {kLinks, kFeatures}, 0, offsetof(LinkStatusRecord, sfp_valid), 251},
    {"portstatus", {kLinks, kFeatures}, 1104, offsetof(LinkStatusRecord, phys[1]), 251},
    {"sfp", {kLinks}, 0, offsetof(LinkStatusRecord, sfps[0].reserved_144), 251},
    {"sfp", {kLinks}, offsetof(LinkStatusRecord, sfps[0].ddm), 40 + sizeof(SfpInfo), 251},
    {"dpi show", {{"dpi_filter", sizeof(DpiFilterRecord)}}},
    {"poe show", {{"poe_measures", sizeof(PoeMeasures)}}},
    {"statistics", {{"statistics", sizeof(StatisticsRecord), {{0, "01000000"}}}, kCapture}},
    {"statistics", {{"statistics", sizeof(StatisticsRecord), {{0, "02000000"}}}, kCapture}},
    {"statsv2 show", {{"counters_v2", 16 * sizeof(CounterV2Config)}}, 0, sizeof(CounterV2Config)},
    {"directcapture status", {kCapture}},
    {"filter show", {{"packet_filter", sizeof(PacketFilterRecord), {{0, "01000000"}}}}},
    {"timing status", {{"timing_status", sizeof(TimingStatusRecord)}, kFeatures}},
    {"packet_type_filter show", {{"packet_type_filter", sizeof(PacketTypeFilterRecord)}}},
    {"nmea", {{"gps_output", 4 + 128, {{0, "81000000"}}}}, 0, 8, 255},
};

// The report's records, one behind the other, in hexadecimal digits.
std::string Digits(const Report& report, bool valid, auto next_byte) {
  std::string all;
  for (const Record& record : report.records) {
    std::string digits;
    for (size_t i = 0; i < record.size; ++i) digits += Hex(next_byte(), 1);
    for (const auto& [at, bytes] : record.valid) {
      if (valid) digits.replace(2 * at, bytes.size(), bytes);
    }
    all += digits;
  }
  return all;
}

// The value of the record's key: a number, a count with a text, or the digits.
std::string Value(const Record& record, const std::string& digits) {
  const auto word = static_cast<uint32_t>(std::stoul(digits.substr(0, 8), nullptr, 16));
  const std::string number = std::to_string(static_cast<int32_t>(__builtin_bswap32(word)));
  if (record.size == sizeof word) return number;
  if (record.name != "gps_output") return "'" + digits + "'";
  return "{count = " + number + ", text = '" + digits.substr(8) + "'}";
}

std::string Machine(const Report& report, const std::string& digits) {
  std::string top;
  std::string device = "[[device]]\nmac = '00:1a:2b:3c:4d:5e'\ncapabilities = 0x3ffffff\n";
  size_t at = 0;
  for (const auto& record : report.records) {
    std::string& table = record.name == "device_count" ? top : device;
    table += record.name + " = " + Value(record, digits.substr(at, 2 * record.size)) + "\n";
    at += 2 * record.size;
  }
  return top + device + FaultToml("CorvaneAPIGPSOutputRead", -77, 20);
}

// Reports with the digits of their records.
auto AllCases() {
  std::vector<std::pair<const Report*, std::string>> cases;
  std::mt19937 random(kSeed);
  for (const Report& report : kReports) {
    const std::string zeroes = Digits(report, true, [] { return 0U; });
    for (size_t at = report.first; at < std::min(report.end, zeroes.size() / 2 - 3); at += 4) {
      for (const int32_t word : kWords) {
        cases.emplace_back(&report, zeroes)
            .second.replace(2 * at, 8, Hex(static_cast<uint32_t>(word), 4));
      }
    }
    for (size_t i = 0; i < kRandomCases; ++i) {
      // In letters, and without any zero, no text has an end.
      const auto next_byte = [&] { return i < 2 ? 'A' : random() % 256; };
      cases.emplace_back(&report, Digits(report, i % 2 == 0, next_byte));
    }
  }
  return cases;
}

TEST(HostileRecords, LeaveEveryReportInOrder) {
  const auto cases = AllCases();
  ForEach(cases.size(), [&](size_t i) {
    const auto& [report, digits] = cases[i];
    const Simulation simulation(Machine(*report, digits));
    const Result result = simulation.Run(report->words, 30'000);
    const bool ended = result.status == 0 || result.status == report->refused;
    const bool printed = result.out.ends_with('\n') && result.out.size() < kMostOutput;
    EXPECT_TRUE(ended && printed && result.err.empty())
        << report->words << ": status " << result.status << ", seed " << kSeed << '\n'
        << Machine(*report, digits) << result.out.substr(0, kMostOutput) << result.err;
  });
}

}  // namespace
