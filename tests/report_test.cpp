// corvane-report on everything that the utility prints, and on what it never would.
#include "support/golden.h"
#include "support/unread.h"

using namespace report;

namespace {

// Puts the text through corvane-report, and on to another program if need be.
Result Convert(const Simulation& simulation, const std::string& text,
               const std::string& options = "", const std::string& pipe = "") {
  WriteFile(simulation.folder() + "/text", text);
  return Shell(simulation, CORVANE_REPORT " " + options + " <text " + pipe);
}

// Breaks the report off everywhere: what was whole is read. And leaves some of it out everywhere.
void ExpectPiecesRead(const std::string& report) {
  for (size_t length = 0; length < report.size(); length += 1 + report.size() / 500) {
    const std::string start = report.substr(0, length);
    EXPECT_LE(Unread(start).size(), 1U) << start;
    Unread(start + report.substr(std::min(report.size(), length + 1 + length % 40)));
  }
}

const std::string kFlat = "([.[] | scalars] | length) == length and (.time | test(\"^2.*Z$\"))";

TEST(Report, IsTheJsonThatWasAgreed) {
  for (const auto& [name, lines] : GoldenParts("json/cases.txt")) {
    SCOPED_TRACE(name);
    std::istringstream stream(lines);
    std::string words, jq, before;
    std::getline(std::getline(std::getline(stream, words), jq), before);
    const Simulation simulation(ReadFile(CORVANE_GOLDEN "/json/fleet.toml"));
    EXPECT_TRUE(before.empty() || simulation.Run(before).status == 0);
    const std::string report = simulation.Run(words).out;

    const Result json = Convert(simulation, report);
    EXPECT_EQ(json.out, ReadFile(CORVANE_GOLDEN "/json/" + name + ".json"));
    EXPECT_EQ(json.err, "");
    EXPECT_EQ(json.status, name == "list" ? 3 : 0);  // it has a device of unknown type
    for (const auto& [options, check] : {std::pair{"--json", jq}, {"--lines", kFlat}}) {
      const Result result = Convert(simulation, report, options, "| jq -e '" + check + "'");
      EXPECT_EQ(result.status, 0) << check << result.out << result.err;
    }
    ExpectPiecesRead(report);
  }
}

TEST(ReportText, IsReadLineByLine) {
  const Simulation simulation("");
  const auto parts = GoldenParts("report-text.txt");
  for (size_t i = 0; i + 1 < parts.size(); i += 2) {
    const auto& [options, text] = parts[i];
    Result result = Convert(simulation, text, options);
    EXPECT_EQ(std::to_string(result.status), parts[i + 1].first) << text;
    if (options == "--lines") result.out.replace(result.out.find("time") + 7, 24, "now");
    EXPECT_EQ(result.out + result.err, parts[i + 1].second) << text;
  }
  const std::pair<const char*, const char*> refused[] = {
      {"--nosuch", "'--nosuch'"},
      {"-h", "'h'"},
      {"x", "input: x\n"},
      {"--label", "'--label'"},
      {"--label x", "--label x is not"},
      {"--label 9=1", "--label 9=1 is not"},
      {"--label a=b --label a=c", "--label a=c gives a label for the second time"}};
  for (const auto& [options, named] : refused) {
    const Result result = Convert(simulation, "x : 1\n", options);
    EXPECT_EQ(result.status, 2) << options;
    EXPECT_EQ(result.out, "") << options;
    EXPECT_NE(result.err.find(named), std::string::npos) << options << result.err;
  }
  EXPECT_TRUE(Convert(simulation, "", "--help").out.starts_with("Usage: "));
  EXPECT_EQ(Convert(simulation, "", "--version").out, "corvane-report 1.24\n");
}

// Every object comes when its report does, not when the next one or the end does.
TEST(ReportText, AReportOfAnEndlessCommandIsHandedOverAtItsLastLine) {
  int reports = 0;
  ReportParser parser([&reports](const Json& json) { reports += json.contains("counters"); });
  const char* ends[] = {"STOPPED", "STARTED\nCache used : 4.42 KB\nFiles Written : 1", "STOPPED"};
  for (int round = 0; round < 3; ++round) {
    std::istringstream report(ReadFile(CORVANE_GOLDEN "/report/statistics-2.txt") +
                              "Direct capture : " + ends[round]);
    for (std::string line; std::getline(report, line);) {
      EXPECT_EQ(reports, round);
      EXPECT_EQ(parser.ReadLine(line), nullptr) << line;
    }
  }
  EXPECT_EQ(reports, 3);
}

TEST(ReportText, OverlongAndBinaryInputIsNamedAndSkipped) {
  const Simulation simulation("");
  const Result result = Convert(simulation, "x : " + std::string(8'000'000, 'a') + "\ny : 1\n");
  EXPECT_EQ(result.out, "{\n  \"format\": 1,\n  \"y\": 1\n}\n");
  EXPECT_TRUE(result.err.starts_with("corvane-report: line 1 is too long: x : aaa"));
  EXPECT_LT(result.err.size(), 200U);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(Convert(simulation, std::string("Vendor name: a\0\xff\x01z\n", 18)).out,
            "{\n  \"format\": 1,\n  \"vendor_name\": \"a\\u0000\xEF\xBF\xBD\\u0001z\"\n}\n");
}

}  // namespace
