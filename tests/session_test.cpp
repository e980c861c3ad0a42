// Runs the session scripts, sessions/*.session. Every scenario is a test. A script:
//
//   [[device]] ...               TOML for every scenario of the file: the simulated devices
//   == A promise in plain words  a scenario, on new devices
//   | on  | 01000000 |           runs it once for each such row; {1}, {2} ... are the row's cells,
//   in
//                                which \n begins another line
//   features = 84*07 80:00       more TOML, or with a [[device]] other TOML; a record may be given
//                                as bytes: here 84 times 07, but 00 at the offset 80
//   $ features set --inline {1}  runs corvane; '...' is one word
//   Corvane detected             its standard output: exactly these lines, but that
//   ...                          stands for any lines and
//   << sfp.txt                   for those of a file
//   ? 251                        its exit status; 0 unless given
//   > SetDeviceFeatures 20:{2}   the record that the function got last: what the Get function gave,
//                                or zeroes when it gave none, but for these bytes; then its texts
//   calls GetDeviceFeatures      the calls between selection and closing; or "calls nothing"
//   journal 2 CorvaneApiSleepMs  that many lines of the journal begin like this
//
// Nothing may be on standard error, and the library must be closed once unless the journal's line
// about that says otherwise. {folder} is the simulation's folder. Blank lines at the end mean
// nothing.
#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <regex>
#include <set>
#include <sstream>

#include "support/expectations.h"

namespace {

using Texts = std::vector<std::string>;

struct Scenario {
  std::string file;
  int line;          // of the title
  std::string toml;  // of the file
  Texts rows;
  Texts script;  // the lines behind the title
};

// A scenario on devices of its own, with a row's cells in place, and the last command's result.
struct Session {
  Scenario scenario;
  Simulation simulation;
  Result result;
};

// ---- Texts

// The pieces between separators; the last one ends with the text.
Texts Pieces(const std::string& text, char separator) {
  Texts pieces;
  std::istringstream stream(text + separator);
  for (std::string piece; std::getline(stream, piece, separator);) pieces.push_back(piece);
  return pieces;
}

Texts Words(const std::string& text) {
  Texts words;
  std::istringstream stream(text);
  for (std::string word; stream >> std::quoted(word, '\'', '\0');) words.push_back(word);
  return words;
}

// Writes "count*bytes" behind a record of hexadecimal digits, "offset:bytes" into it; false for
// everything else.
bool WriteBytes(const std::string& text, std::string& record) {
  const size_t mark = text.find_first_of(":*");
  const bool strange = text.find_first_not_of("0123456789abcdef:*") != std::string::npos;
  if (strange || mark == std::string::npos) return false;
  const std::string bytes = text.substr(mark + 1);
  size_t number = std::stoul(text);
  if (text[mark] == ':') {
    record.replace(std::min(2 * number, record.size()), bytes.size(), bytes);
  } else {
    for (; number > 0; --number) record += bytes;
  }
  return true;
}

// A line of TOML, in which a record becomes a text of hexadecimal digits.
std::string TomlOf(const std::string& line) {
  const Texts words = Split(line);
  std::string record;
  for (size_t i = 2; i < words.size(); ++i) {
    if (!WriteBytes(words[i], record)) return line + "\n";
  }
  return record.empty() ? line + "\n" : words[0] + " = \"" + record + "\"\n";
}

// Whether the lines are those expected, where "..." stands for any lines.
bool Matches(const Texts& expected, const Texts& lines, size_t e = 0, size_t l = 0) {
  for (; e < expected.size() && expected[e] != "..."; ++e, ++l) {
    if (l == lines.size() || expected[e] != lines[l]) return false;
  }
  if (e == expected.size()) return l == lines.size();
  while (l <= lines.size() && !Matches(expected, lines, e + 1, l)) ++l;
  return l <= lines.size();
}

// The bytes in which the record is not as before, each with its offset.
std::string Changes(const std::string& before, const std::string& record) {
  if (before.size() != record.size()) return record;
  std::string changes;
  for (size_t i = 0; i < record.size(); i += 2) {
    const std::string byte = record.substr(i, 2);
    if (byte != before.substr(i, 2)) changes += " " + std::to_string(i / 2) + ":" + byte;
  }
  return changes;
}

// ---- What is promised, and what was found

using Finding = std::pair<std::string, std::string>;

Finding FindStatus(const Session& session, const std::string& status) {
  return {status, std::to_string(session.result.status)};
}

Finding FindRecord(const Session& session, const std::string& text) {
  const Texts words = Split(text);
  const std::string sent = Sent(session.simulation, words[0]);
  if (sent == "nothing") return {text, sent};
  const std::string record = sent.substr(0, sent.find(' '));
  const bool is_set = words[0].starts_with("Set");
  std::string before = is_set ? Sent(session.simulation, "Get" + words[0].substr(3)) : "";
  if (before.size() != record.size()) before.assign(record.size(), '0');
  std::string expected = before;
  std::string texts;
  for (size_t i = 1; i < words.size(); ++i) {
    if (!WriteBytes(words[i], expected)) texts += " " + words[i];
  }
  return {Changes(before, expected) + texts, Changes(before, record) + sent.substr(record.size())};
}

Finding FindCalls(const Session& session, const std::string& text) {
  static const std::set<std::string> kSelecting = {
      "CorvaneAPIInitialize", "CorvaneAPIGetDevicesList", "CorvaneAPIGetDeviceMAC"};
  std::string work;
  for (const std::string& call : session.simulation.Calls()) {
    work = kSelecting.contains(call) ? "" : work + " " + call.substr(10);
  }
  return {text == "nothing" ? "" : " " + text, work.substr(0, work.rfind(" Uninitialize"))};
}

Finding FindJournal(const Session& session, const std::string& text) {
  const std::string begin = text.substr(text.find(' ') + 1);
  return {text, std::to_string(session.simulation.Lines(begin).size()) + " " + begin};
}

constexpr std::pair<const char*, Finding (*)(const Session&, const std::string&)> kPromises[] = {
    {"? ", FindStatus}, {"> ", FindRecord}, {"calls ", FindCalls}, {"journal ", FindJournal}};

bool IsPromise(const std::string& line) {
  return std::any_of(std::begin(kPromises), std::end(kPromises),
                     [&](const auto& promise) { return line.starts_with(promise.first); });
}

// ---- Running

// Index: of the line in the script that the finding is about.
void Expect(const Session& session, size_t index, const Finding& finding) {
  if (finding.first == finding.second) return;
  const int line = session.scenario.line + 1 + static_cast<int>(index);
  ADD_FAILURE_AT(session.scenario.file.c_str(), line)
      << "expected: " << finding.first << "\nactual:   " << finding.second;
}

void Check(const Session& session, size_t index, const std::string& promise) {
  for (const auto& [mark, find] : kPromises) {
    if (!promise.starts_with(mark)) continue;
    Expect(session, index, find(session, promise.substr(strlen(mark))));
    return;
  }
  Expect(session, index, {"", promise});  // no promise at all
}

bool IsCommand(const std::string& line) {
  return line.starts_with("$ ");
}

// Runs the command at the index and checks what follows; returns where the next one is.
size_t RunCommand(Session& session, size_t index) {
  const Texts& script = session.scenario.script;
  const size_t command = index;
  SCOPED_TRACE(script[command]);
  session.simulation.EmptyJournal();
  session.result = session.simulation.Run(Words(script[command].substr(2)));
  std::string out;
  while (++index < script.size() && !IsCommand(script[index]) && !IsPromise(script[index])) {
    const std::string& line = script[index];
    out += line.starts_with("<< ") ? ReadFile(CORVANE_GOLDEN "/report/" + line.substr(3))
                                   : line + "\n";
  }
  const bool alike = Matches(Pieces(out, '\n'), Pieces(session.result.out, '\n'));
  Expect(session, command, {out, alike ? out : session.result.out});
  Expect(session, command, {"", session.result.err});
  std::string status = "? 0";
  std::string closing = "journal 1 CorvaneAPIUninitialize";
  for (; index < script.size() && !IsCommand(script[index]); ++index) {
    Check(session, index, script[index]);
    if (script[index].starts_with("? ")) status.clear();
    if (script[index].ends_with("Uninitialize")) closing.clear();
  }
  for (const std::string& promise : {status, closing}) Check(session, command, promise);
  return index;
}

// Puts the value in the place of the name; false when the script has no such name.
bool Fill(Texts& script, const std::string& name, const std::string& value) {
  bool used = false;
  for (std::string& line : script) {
    for (size_t at = 0; (at = line.find(name, at)) != std::string::npos; at += value.size()) {
      line.replace(at, name.size(), value);
      used = true;
    }
  }
  return used;
}

// Runs a scenario with the cells of "| a | b |": all must be in use, and no other.
void RunRow(const Scenario& scenario, const std::string& row) {
  SCOPED_TRACE(row);
  Session session = {scenario, Simulation(""), {}};
  Texts& script = session.scenario.script;
  Texts cells = Pieces(row, '|');
  for (size_t i = 1; i + 1 < cells.size(); ++i) {
    cells[i].erase(0, cells[i].find_first_not_of(' '));
    cells[i].erase(cells[i].find_last_not_of(' ') + 1);
    const std::string cell = std::regex_replace(cells[i], std::regex(R"(\\n)"), "\n");
    EXPECT_TRUE(Fill(script, "{" + std::to_string(i) + "}", cell)) << "cell " << i;
  }
  EXPECT_FALSE(Fill(script, "{" + std::to_string(std::max<size_t>(cells.size(), 2) - 1) + "}", ""));
  Fill(script, "{folder}", session.simulation.folder());
  std::string toml;
  size_t index = 0;
  for (; index < script.size() && !IsCommand(script[index]); ++index) toml += TomlOf(script[index]);
  if (index == script.size()) Expect(session, 0, {"a command", "none"});
  const bool whole = toml.find("[[device]]") != std::string::npos;
  session.simulation.Configure(whole ? toml : scenario.toml + toml);
  while (index < script.size()) index = RunCommand(session, index);
}

struct SessionTest : testing::Test {
  explicit SessionTest(Scenario given) : scenario(std::move(given)) {}
  void TestBody() override {
    for (const std::string& row : scenario.rows) RunRow(scenario, row);
  }

  Scenario scenario;
};

// ---- Files

// A text as a name in which every word begins with a capital letter.
std::string NameOf(const std::string& text) {
  std::string name;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool first = i == 0 || isalnum(text[i - 1]) == 0;
    if (isalnum(text[i]) != 0) name += static_cast<char>(first ? toupper(text[i]) : text[i]);
  }
  return name;
}

bool IsTitle(const std::string& line) {
  return line.starts_with("== ");
}

// The scenario whose title is the line at the index; returns the index of the next one.
size_t ReadScenario(const Texts& lines, size_t index, Scenario& scenario) {
  scenario.line = static_cast<int>(index) + 1;
  while (++index < lines.size() && !IsTitle(lines[index])) {
    const bool is_row = lines[index].starts_with("| ");
    if (is_row) scenario.rows.push_back(lines[index]);
    scenario.script.push_back(is_row ? "" : lines[index]);
  }
  if (scenario.rows.empty()) scenario.rows.emplace_back();
  while (!scenario.script.empty() && scenario.script.back().empty()) scenario.script.pop_back();
  return index;
}

// Makes a test of every scenario; a file without any has one that fails.
void RegisterFile(const std::filesystem::path& path) {
  const Texts lines = Pieces(ReadFile(path), '\n');
  size_t index = 0;
  std::string toml;
  for (; index < lines.size() && !IsTitle(lines[index]); ++index) toml += TomlOf(lines[index]);
  do {
    const std::string name = NameOf(index < lines.size() ? lines[index] : "Nothing");
    Scenario scenario = {path, 0, toml, {}, {}};
    index = ReadScenario(lines, index, scenario);
    testing::RegisterTest(NameOf(path.stem()).c_str(), name.c_str(), nullptr, nullptr, path.c_str(),
                          scenario.line,
                          [=]() -> testing::Test* { return new SessionTest(scenario); });
  } while (index < lines.size());
}

const bool registered = [] {
  for (const auto& entry : std::filesystem::directory_iterator(CORVANE_SESSIONS)) {
    if (entry.path().extension() == ".session") RegisterFile(entry.path());
  }
  return true;
}();

}  // namespace
