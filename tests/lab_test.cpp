// corvane-lab against simulated devices and wrong libraries: the real executable.
#include <random>
#include <regex>

#include "device/corvane_api.h"
#include "support/expectations.h"
#include "support/for_each.h"
#include "support/golden.h"

namespace {

constexpr const char* kBuiltin = "CORVANE_SIM_CONFIG= ";
constexpr uint32_t kAll = 0x3FFEFFF;

Result Lab(const Simulation& simulation, const std::string& words, const std::string& before = "") {
  return Shell(simulation,
               "LD_LIBRARY_PATH=" CORVANE_SIMULATOR_FOLDER " " + before + CORVANE_LAB " " + words);
}

#ifdef CORVANE_RECORDS
const char* const kLeaves[] = {"list",
                               "version",
                               "capabilities show",
                               "capabilities legend",
                               "features show",
                               "features set --slicing 128",
                               "features save",
                               "portcontrol show",
                               "portcontrol set --portselection a --autonegotiation off",
                               "portcontrol save",
                               "portstatus",
                               "sfp",
                               "dpi show",
                               "dpi enable --dpitxt ab",
                               "dpi disable",
                               "dpi save",
                               "poe show",
                               "statistics",
                               "statsv2 show",
                               "statsv2 set --counter 3 --udp on",
                               "directcapture status",
                               "directcapture start --dir none --pattern a\\\"b",
                               "directcapture start -o c",
                               "directcapture stop",
                               "filter show",
                               "filter set --srcip 10.1.2.3",
                               "filter disable",
                               "packet_type_filter show",
                               "packet_type_filter set --arp off",
                               "timing status",
                               "timing config --tssource gps",
                               "timing save",
                               "timing setsystem --device all",
                               "timing setgps",
                               "timing setmanual --timestamp 86400",
                               "timing setsntp --sntpserver 127.0.0.1",
                               "nmea",
                               "update --firmware fw",
                               "reset"};

// A line without what only one of the two journals has: times, and why the simulator failed.
std::string Bare(const std::string& line) {
  return std::regex_replace(line, std::regex(" time=.*| reason=\".*\""), "");
}

TEST(Lab, RecordsWhatTheSimulatorWrites) {
  const Simulation simulation(OneDevice(kAll, "[device.update]\nduration_ms = 300\n"));
  WriteFile(simulation.folder() + "/fw",
            "CORVANE-FIRMWARE 1\ntype = 11\nsw_firmware = 1.9.0.0\n\n");
  for (const std::string leaf : kLeaves) {
    simulation.EmptyJournal();
    const std::string words = std::string(leaf == "nmea" ? "timeout -s INT 2 " : "") +
                              CORVANE_EXECUTABLE " " + leaf +
                              (leaf == "nmea" ? " | head -c 400" : "");
    Lab(simulation, "record -o calls -- " + words);
    std::istringstream recorded(ReadFile(simulation.folder() + "/calls"));
    std::string line;
    std::getline(recorded, line);
    for (const std::string& wanted : simulation.Lines("")) {
      if (Bare(line) == Bare(wanted)) {
        EXPECT_TRUE(std::regex_search(line, std::regex(" time=\\d+\\.\\d{6} pid=\\d+$"))) << line;
        if (!std::getline(recorded, line)) line.clear();
      } else {  // the recorder's own question
        EXPECT_TRUE(wanted.starts_with("CorvaneAPIGetDeviceMAC ")) << leaf << '\n'
                                                                   << wanted << '\n'
                                                                   << line;
      }
    }
    EXPECT_EQ(line, "") << leaf;
  }
}

TEST(Lab, LeavesTheProgramAlone) {
  const Simulation simulation(OneDevice(kAll));
  const std::string record = "record -o calls -- ";
  EXPECT_EQ(Lab(simulation, record + CORVANE_EXECUTABLE " list").out, simulation.Run("list").out);
  EXPECT_EQ(Lab(simulation, record + "sh -c 'echo a; echo b >&2; exit 7'").status, 7);
  EXPECT_EQ(Lab(simulation, record + "sh -c 'kill -TERM $$'; echo $?").out, "143\n");
  EXPECT_EQ(Lab(simulation, record + "./none").status, 127);
  EXPECT_EQ(Lab(simulation, record + ".").status, 126);
  EXPECT_EQ(Lab(simulation, "record -o none/calls -- true").status, 2);
}
#endif

const char* const kReports[] = {"list",
                                "version",
                                "capabilities show",
                                "features show",
                                "portcontrol show",
                                "portstatus",
                                "sfp",
                                "dpi show",
                                "poe show",
                                "statistics",
                                "statsv2 show",
                                "directcapture status",
                                "filter show",
                                "packet_type_filter show",
                                "timing status"};

// Every report of every device is that of the twin. Those of time and traffic go on in a device
// that has no such record: their digits do not count.
void ExpectSame(const Simulation& device, const std::string& before, const std::string& toml,
                int devices) {
  const Simulation twin(toml);
  for (const std::string report : kReports) {
    for (int i = 0; i < (report == "list" ? 1 : devices); ++i) {
      const std::string words =
          CORVANE_EXECUTABLE " " + report + (report == "list" ? "" : " -d " + std::to_string(i));
      Result wanted = Shell(device, before + words);
      Result got = Shell(twin, words);
      if (!before.empty() && (report == "statistics" || report == "timing status")) {
        for (std::string* text : {&wanted.out, &got.out})
          *text = std::regex_replace(*text, std::regex(" *[0-9]+"), " #");
      }
      EXPECT_EQ(got.out, wanted.out) << words;
      EXPECT_EQ(got.status, wanted.status) << words;
    }
  }
}

TEST(Lab, CopiesDevices) {
  const Simulation builtin("");
  ExpectSame(builtin, kBuiltin, Lab(builtin, "copy --device all", kBuiltin).out, 3);
  constexpr std::pair<const char*, size_t> kRecords[] = {{"versions", 12},
                                                         {"hw_firmwares", 132},
                                                         {"features", 84},
                                                         {"ports_speed", 80},
                                                         {"packet_filter", 72},
                                                         {"packet_type_filter", 27},
                                                         {"dpi_filter", 40},
                                                         {"counters_v2", 1600},
                                                         {"link_status", sizeof(LinkStatusRecord)},
                                                         {"poe_measures", sizeof(PoeMeasures)},
                                                         {"timing_status", 80},
                                                         {"statistics", 232},
                                                         {"disk_dump_status", 56}};
  ForEach(10, [&](size_t seed) {
    std::minstd_rand random(static_cast<unsigned>(seed + 1));
    std::string toml =
        "library_version = '3.4.5.6'\n" + OneDevice(static_cast<uint32_t>(random()) & kAll);
    for (const auto& [name, size] : kRecords) {
      toml += std::string(name) + " = '";
      for (size_t i = 0; i < size; ++i)
        toml += Hex(random() % 3 == 0 ? random() % 256 : random() % 2, 1);
      toml += "'\n";
    }
    const Simulation device(
        toml + FaultToml(seed % 2 == 0 ? "CorvaneAPIGetLinkStatus" : "CorvaneAPIGetVersions", -99));
    const Result copy = Lab(device, "copy");
    ExpectSame(device, "", copy.out, 1);
#ifdef CORVANE_RECORDS
    Lab(device, "record -o calls -- " CORVANE_LAB " copy");
    EXPECT_EQ(Lab(device, "copy --from calls").out, copy.out);
#endif
  });
}

TEST(Lab, CopiesWithoutNames) {
  const Simulation device(OneDevice(kAll));
  device.Run("filter set --srcmac 00:1a:2b:3c:4d:5e --srcip 10.77.1.2 --dstip 10.77.*.*");
  const Simulation twin(Lab(device, "copy --anonymize").out);
  const std::string filter = Shell(twin, CORVANE_CONFIG " show").out;
  EXPECT_NE(filter.find("02:01:01:01:01:01"), std::string::npos) << filter;
  EXPECT_NE(filter.find("10.1.1.1"), std::string::npos) << filter;
  EXPECT_NE(filter.find("10.1.*.*"), std::string::npos) << filter;
  EXPECT_NE(twin.Run("list").out.find("02:01:01:01:01:01"), std::string::npos);
  WriteFile(device.folder() + "/calls", "CorvaneAPIGetVersion status=0\nCorvane nonsense\n");
  EXPECT_EQ(Lab(device, "copy --from calls").err,
            "corvane-lab: calls:2: this is no line of a journal of calls\n");
  WriteFile(device.folder() + "/calls",
            "CorvaneAPIGetDeviceFeatures device=00:1a:2b:3c:4d:5e status=-9\n");
  const std::string copy = Lab(device, "copy --from calls").out;
  EXPECT_NE(copy.find("# capabilities: "), std::string::npos) << copy;
  EXPECT_EQ(copy.find("0x0"), std::string::npos) << copy;
}

TEST(Lab, FindsNothingAgainstTheSimulator) {
  const Simulation simulation("");
  for (const std::string words : {"0", "1", "2 --write", "1 --write", "0 --write"}) {
    const std::string shown = Shell(simulation, std::string(kBuiltin) + CORVANE_CONFIG " show").out;
    const Result result = Lab(simulation, "check --device " + words, kBuiltin);
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_EQ(result.out.find("differs"), std::string::npos) << result.out;
    EXPECT_EQ(Shell(simulation, std::string(kBuiltin) + CORVANE_CONFIG " show").out, shown);
  }
  EXPECT_EQ(Lab(simulation, "check --device 3", kBuiltin).status, 2);
  Simulation idle(OneDevice(kAll));
  EXPECT_EQ(Lab(idle, "check").status, 0);
  for (const std::string& call : idle.Calls()) {
    EXPECT_TRUE(call.find("Set") == std::string::npos && call.find("Save") == std::string::npos)
        << call;
  }
}

TEST(Lab, PutsEverythingBackAfterAnInterrupt) {
  for (const std::string signal : {"INT", "TERM"}) {
    const Simulation simulation(
        OneDevice(kAll) + "[[fault]]\nfunction = 'CorvaneAPISetDeviceFeatures'\ndelay_ms = 100\n");
    const std::string shown = Shell(simulation, CORVANE_CONFIG " show").out;
    const Result result =
        Lab(simulation,
            "check --write & for i in $(seq 200); do grep -q SetDeviceFeatures journal && break; "
            "sleep 0.05; done; sleep 0.3; kill -" +
                signal + " $!; wait $!");
    EXPECT_NE(result.out.find("interrupted\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("as they were: everything\n"), std::string::npos) << result.out;
    EXPECT_GT(simulation.CallsOf("CorvaneAPISetDeviceFeatures"), 2);
    EXPECT_EQ(Shell(simulation, CORVANE_CONFIG " show").out, shown);
  }
}

// Who reads the lines has gone, and a library hangs: what was changed is put back all the same.
TEST(Lab, PutsEverythingBackWithoutAReader) {
  const Simulation simulation(OneDevice(kAll) +
                              "[[fault]]\nfunction = 'CorvaneAPISetDeviceFeatures'\nfrom = "
                              "3\ntimes = 1\ndelay_ms = 9000\n");
  const std::string shown = Shell(simulation, CORVANE_CONFIG " show").out;
  Lab(simulation, "check --write | head -n 12");
  EXPECT_GT(simulation.CallsOf("CorvaneAPISetDeviceFeatures"), 2);
  EXPECT_EQ(Shell(simulation, CORVANE_CONFIG " show").out, shown);
}

#ifdef CORVANE_WRONG_LIBRARY
TEST(Lab, RecordsALibraryThatCallsItself) {
  const Simulation simulation(OneDevice(kAll));
  const Result result =
      Lab(simulation, "record -o calls -- timeout 5 " CORVANE_EXECUTABLE " features show",
          "LD_LIBRARY_PATH=" CORVANE_WRONG_LIBRARY " CORVANE_WRONG='calls itself' ");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(ReadFile(simulation.folder() + "/calls").find("GetDeviceType"), std::string::npos);
}

TEST(Lab, FindsEveryFault) {
  constexpr std::pair<const char*, const char*> kFaults[] = {{"longer", "size"},
                                                             {"earlier", "size"},
                                                             {"shorter", "size"},
                                                             {"enumeration", "range"},
                                                             {"moving", "repeat"},
                                                             {"count", "range"},
                                                             {"endless", "text"},
                                                             {"hang", "gps"},
                                                             {"nan", "range"},
                                                             {"padding", "padding"},
                                                             {"crash", "size"},
                                                             {"any handle", "wrong-handle"},
                                                             {"dead handles", "other-list"},
                                                             {"deadly handles", "own-list"},
                                                             {"positive", "status"},
                                                             {"ignored", "set-other"},
                                                             {"both ports", "set-other"},
                                                             {"time size", "clock"},
                                                             {"set status", "set-same"},
                                                             {"mask", "mask"},
                                                             {"list", "list"},
                                                             {"open", "open"},
                                                             {"sleep", "sleep"},
                                                             {"gps count", "gps"},
                                                             {"gps bytes", "gps"},
                                                             {"", ""},
                                                             {"symbol", "symbols"}};
  ForEach(std::size(kFaults), [&](size_t i) {
    const auto& [fault, row] = kFaults[i];
    const Simulation simulation(OneDevice(*fault == 'p' ? kAll - CORVANE_CAP_POE : kAll));
    const std::string folder = *row == '\0' || std::string(row) != "symbols"
                                   ? CORVANE_WRONG_LIBRARY
                                   : CORVANE_SHORT_LIBRARY;
    const Result result = Lab(simulation, "check --write",
                              "LD_LIBRARY_PATH=" + folder + " CORVANE_WRONG='" + fault + "' ");
    EXPECT_EQ(result.status, *fault == '\0' ? 0 : 1) << fault << '\n' << result.out << result.err;
    const std::regex differs("(^|\n)differs +" + std::string(row) + " ");
    EXPECT_EQ(std::regex_search(result.out, differs), *fault != '\0') << fault << '\n'
                                                                      << result.out;
  });
}
#endif

}  // namespace
