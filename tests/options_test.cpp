// Every option matters: with it something else is printed, returned or handed to the library.
#include <argtable3.h>

#include <algorithm>
#include <regex>

#include "shell/command_table.h"
#include "support/expectations.h"
#include "support/for_each.h"

using namespace corvane;

namespace {

using Texts = std::vector<std::string>;

const std::map<std::string, const char*> kWithoutEffect = {
    {"capabilities legend --device", "the legend is that of every device"},
    {"timing setsntp --device", "asks a time server: see TimeFromNetwork"},
    {"timing setsntp --sntpserver", "asks a time server: see TimeFromNetwork"},
};

// What stands on the line too: of a leaf, or of one option for which the leaf's is not enough.
const std::map<std::string, std::string> kBeside = {
    {"directcapture start", "--dir x"},
    {"portcontrol set", "--portselection a"},
    {"statistics --delay", "--continuous"},
    {"statsv2 set", "--counter 3"},
    {"statsv2 set --ipv4_addr", "--counter 3 --ipv4 on"},
    {"statsv2 set --ipv6_addr", "--counter 3 --ipv6 on"},
    {"update", "--firmware fw"},
};

// Values by the beginning of the option's datatype; a number where there is none.
const std::pair<const char*, const char*> kValues[] = {
    {"<MAC|n", "=1"},
    {"<MAC", "=00:*:22:33:44:55"},
    {"<IP", "=10.*.2.3"},
    {"<ipv6_addr", "=2001:0db8:****:0000:0000:0000:0000:00*1"},
    {"<hex", "=00000000000000000000000000000000"},
    {"<string", "=0123456789abcdef"},
    {"0x", "=0x00000001"},
    {"<value", "=-10"},
};

// A record's line of the configuration, of bytes that no option sets.
std::string Sevens(const std::string& record, size_t size, const std::string& end = "") {
  std::string bytes;
  while (bytes.size() < 2 * size) bytes += "07";
  return record + " = '" + bytes + end + "'\n";
}

// Two devices that can do everything and show the same in every run. What would not end by itself
// does by a failure.
std::string Devices() {
  const std::string more = "hw_firmwares = ['10G 4.7', '1G 2.3']\nstatistics = '" + Hex(2, 232) +
                           "'\n" + Sevens("features", 80, "00000000") + Sevens("ports_speed", 80) +
                           Sevens("counters_v2", 1600) + Sevens("dpi_filter", 40) +
                           Sevens("packet_type_filter", 27) + Sevens("timing_status", 80);
  return OneDevice(0x3FFFFFF, more) + DeviceToml("00:00:00:00:00:01", 0x3FFFFFF, more) +
         FaultToml("CorvaneAPIDiskDumpStart", -77) + FaultToml("CorvaneAPIGetStatistics", -77, 2) +
         FaultToml("CorvaneAPIGPSOutputRead", -77) +
         FaultToml("CorvaneAPIFirmwareUpdateStart", -77);
}

// What there is to see of a command, but for the time that it sets.
std::string Seen(const std::string& words) {
  static const std::regex now("(SetTimingTime .* record=00000000)\\w+");
  const Simulation simulation(Devices());
  const Result result = simulation.Run(words);
  std::string seen = result.out + result.err + std::to_string(result.status);
  for (const std::string& line : simulation.Lines("")) {
    seen += "\n" + std::regex_replace(line, now, "$1");
  }
  return seen;
}

struct Trial {
  std::string option;  // behind its leaf
  std::string without;
  Texts values;
};

// What the option may be given, each behind an equals sign.
Texts ValuesOf(const arg_hdr& option) {
  if ((option.flag & ARG_HASVALUE) == 0) return {""};
  const std::string datatype = option.datatype;
  for (const auto& [begin, value] : kValues) {
    if (datatype.starts_with(begin)) return {value};
  }
  Texts values;
  std::istringstream words(datatype.substr(1, datatype.size() - 2));
  for (std::string word; std::getline(words, word, '|');) values.push_back("=" + word);
  return values.size() > 1 ? values : Texts{"=5"};
}

void AddTrials(const CommandNode& node, const std::string& path, std::vector<Trial>& trials) {
  for (const CommandNode* child : node.children) {
    AddTrials(*child, path + (path.empty() ? "" : " ") + child->name, trials);
  }
  for (const NamedArg* parameter : node.params) {
    const auto& header = *static_cast<const arg_hdr*>(parameter->arg);
    const std::string name = std::string("--") + header.longopts;
    const std::string option = path + " " + name;
    const auto beside = kBeside.find(kBeside.contains(option) ? option : path);
    std::string without = path;
    if (beside != kBeside.end() && !beside->second.starts_with(name)) {
      without += " " + beside->second;
    }
    trials.push_back({option, without, ValuesOf(header)});
  }
}

TEST(Options, EachOneMatters) {
  std::vector<Trial> trials;
  AddTrials(BuildCommandTree(), "", trials);
  EXPECT_EQ(std::erase_if(trials, [](const Trial& t) { return kWithoutEffect.contains(t.option); }),
            kWithoutEffect.size());
  ForEach(trials.size(), [&](size_t i) {
    const auto& [option, without, values] = trials[i];
    const std::string before = Seen(without);
    bool matters = false;
    for (const std::string& value : values) {
      const std::string after = Seen(without + option.substr(option.rfind(' ')) + value);
      EXPECT_FALSE(after.starts_with("Usage")) << option << value;
      matters = matters || after != before;
    }
    EXPECT_TRUE(matters) << option << " does nothing";
  });
}

}  // namespace
