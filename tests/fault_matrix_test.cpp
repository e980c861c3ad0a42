// Every library call of every command fails with every status that a program could tell apart: once
// or from there on, by turns. The faults follow from the calls that the commands of
// golden/faults/commands.txt make; what is to be seen then stands in golden/faults/seen.txt.
#include <algorithm>
#include <climits>
#include <sstream>

#include "configuration/functions.h"
#include "shell/command_table.h"
#include "support/expectations.h"
#include "support/for_each.h"
#include "support/time_server.h"
#include "support/unread.h"

using namespace simulator;

using namespace corvane;

namespace {

using Texts = std::vector<std::string>;

void Replace(std::string& text, const std::string& from, const std::string& to) {
  for (size_t at; (at = text.find(from)) != std::string::npos;) text.replace(at, from.size(), to);
}

// The rows of a table: six cells, with bars between them.
std::vector<Texts> ReadTable(const std::string& name) {
  std::vector<Texts> table;
  std::istringstream file(ReadFile(std::string(CORVANE_GOLDEN) + "/faults/" + name + ".txt"));
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    Texts& cells = table.emplace_back();
    std::istringstream row(line);
    for (std::string cell; std::getline(row, cell, '|'); cells.push_back(cell)) {
      cell.erase(0, cell.find_first_not_of(' '));
      cell.resize(cell.find_last_not_of(' ') + 1);
      Replace(cell, "\\n", "\n");
      Replace(cell, "\\r", "\r");
    }
    cells.resize(6);
  }
  return table;
}

// ---- The commands

struct Command {
  std::string words;
  std::string ends_by;  // the function whose failure ends it that would not end; else empty
  Result healthy;
  Texts calls;  // those that can fail

  bool Begins(const std::string& with) const { return (words + " ").starts_with(with); }
};

std::vector<Command> ReadCommands() {
  std::vector<Command> commands;
  for (const Texts& row : ReadTable("commands")) commands.push_back({row[0], row[1], {}, {}});
  return commands;
}

void ExpectEveryLeaf(const CommandNode& node, const std::string& path,
                     const std::vector<Command>& commands) {
  const auto begins = [&](const Command& command) { return command.Begins(path); };
  EXPECT_TRUE(node.handler == nullptr || std::ranges::any_of(commands, begins)) << path;
  for (const CommandNode* child : node.children) {
    ExpectEveryLeaf(*child, path + child->name + " ", commands);
  }
}

// Two devices that can do everything, but for the second's lack of Statistics V2, and that show the
// same in every run. An address that could not be read looks like the second's.
std::string Devices() {
  const std::string more =
      "hw_firmwares = ['10G 4.7', '1G 2.3']\nupdate = {duration_ms = 0}\ntiming_status = '" +
      Hex(1, 80) + "'\nstatistics = '" + Hex(2, 232) + "'";
  return OneDevice(0x3FFFFFF, more) + DeviceToml("00:00:00:00:00:00", 0x3FFFDFF, more);
}

Result RunCommand(const Command& command, const std::string& fault, Texts& calls) {
  const std::string end = command.ends_by.empty() ? "" : FaultToml(command.ends_by, -9, 3);
  const Simulation simulation(Devices() + fault + end);
  const char* firmware = "CORVANE-FIRMWARE 1\ntype = 11\nsw_firmware = 1.9.0.0\n\n";
  WriteFile(simulation.folder() + "/fw", firmware);
  std::string words = command.words;
  Replace(words, "FOLDER", simulation.folder());
  Replace(words, "SERVER", ServerAddress());
  Result result = simulation.Run(words);
  // On a busy machine an answer may come too late.
  Replace(result.out, "Timeout..\nFailed to get time from SNTP, retrying\n", "");
  EXPECT_EQ(Unread(result.out), Texts()) << words << "\n" << result.out;
  calls = simulation.Calls();
  std::erase_if(calls, [](const std::string& call) { return !CanFail(call); });
  return result;
}

void ExpectHealthy(const Command& command) {
  EXPECT_EQ(command.healthy.status == 0, command.ends_by.empty()) << command.words;
  EXPECT_EQ(command.healthy.err, "") << command.words;
  const auto closed = std::ranges::find(command.calls, "CorvaneAPIUninitialize");
  EXPECT_TRUE(command.calls.empty() || closed == command.calls.end() - 1) << command.words;
}

// ---- The faults

struct Row {
  std::string leaf, call, outcome, status, kept, text;  // as in the file
  bool used = false;

  bool Ends() const { return outcome == "ends" || outcome == "open"; }
  bool ReplacesLine() const { return outcome == "line" || outcome == "skips"; }
};

std::vector<Row> ReadRows() {
  std::vector<Row> rows;
  for (const Texts& c : ReadTable("seen")) rows.push_back({c[0], c[1], c[2], c[3], c[4], c[5]});
  return rows;
}

// A call that fails.
struct Hit {
  size_t call;     // which of the command's calls
  int nth;         // which of its function's
  const Row* row;  // null for none
};

struct Fault {
  const Command& command;
  std::string function;
  int status;
  bool lasting;  // every later call of the function fails too
  std::vector<Hit> hits;

  std::string Toml() const {
    if (!lasting) return FaultToml(function, status, hits[0].nth);
    return FaultToml(function, status) + "from = " + std::to_string(hits[0].nth) + "\n";
  }
};

// The row of a function's nth call, marked as used; null for none.
Row* FindRow(const Fault& fault, int nth, std::vector<Row>& rows) {
  const std::string function = fault.function.substr(strlen("CorvaneAPI"));
  const std::string names[] = {function, function + "#" + std::to_string(nth),
                               function + "=" + std::to_string(fault.status)};
  for (Row& row : rows) {
    if (!fault.command.Begins(row.leaf) || std::ranges::count(names, row.call) == 0) continue;
    row.used = true;
    return &row;
  }
  return nullptr;
}

void AddFault(Fault fault, size_t call, int nth, std::vector<Row>& rows,
              std::vector<Fault>& faults) {
  const Texts& calls = fault.command.calls;
  for (; call < calls.size() && (fault.lasting || fault.hits.empty()); ++call) {
    if (calls[call] != fault.function) continue;
    const Row* row = FindRow(fault, nth, rows);
    fault.hits.push_back({call, nth++, row});
    if (row != nullptr && row->outcome == "awaited") fault.lasting = false;  // it would never end
  }
  faults.push_back(std::move(fault));
}

void AddFaults(const Command& command, std::vector<Row>& rows, std::vector<Fault>& faults) {
  std::map<std::string, int> count;
  for (size_t call = 0; call < command.calls.size(); ++call) {
    const std::string& function = command.calls[call];
    const int nth = ++count[function];
    bool lasting = call % 2 == 0;
    for (const int status : {-4, -5, -13, -14, -15, -77, 1, INT_MIN}) {
      AddFault({command, function, status, lasting, {}}, call, nth, rows, faults);
      lasting = !lasting;
      // It returns no status: there is one fault of each kind.
      if (function == "CorvaneAPIGetDevicesList" && status == -5) break;
    }
  }
}

// What is to be seen of a command.
struct Seen {
  int status;
  Texts calls;
  std::string out;
};

size_t StartOfLine(const std::string& text, int line) {
  size_t at = 0;
  for (; line > 0; --line) at = text.find('\n', at) + 1;
  return at;
}

void ChangeCalls(const Fault& fault, const Hit& hit, Texts& calls) {
  const std::string& outcome = hit.row->outcome;
  const auto after = calls.begin() + static_cast<long>(hit.call) + 1;
  if (outcome == "open") calls.erase(after, calls.end());
  if (outcome == "ends") calls.erase(after, calls.end() - 1);
  if (outcome == "skips") calls.erase(after);
  if (outcome == "retried") calls.insert(after, fault.lasting ? 49 : 1, fault.function);
  if (outcome == "awaited") calls.insert(after, fault.function);
}

void ChangeOut(const Row& row, int nth, std::string& out) {
  size_t more = 0;
  int kept = std::stoi(row.kept, &more);
  if (more < row.kept.size()) kept += (nth - 1) * std::stoi(row.kept.substr(more));
  std::string text = row.text;
  Replace(text, "%d", std::to_string(nth - 1));
  const size_t start = StartOfLine(out, kept);
  const size_t end = StartOfLine(out, kept + (row.ReplacesLine() ? 1 : 0));
  out.replace(start, row.Ends() ? out.npos : end - start, text);
}

void ChangeStatus(const Fault& fault, const Hit& hit, int& status) {
  const bool last = hit.call + 2 == fault.command.calls.size();
  if (hit.row->Ends() || (hit.row->ReplacesLine() && last)) status = fault.status & 0xFF;
  if (!hit.row->status.empty()) status = std::stoi(hit.row->status);
}

Seen Expected(const Fault& fault) {
  Seen seen = {fault.command.healthy.status, fault.command.calls, fault.command.healthy.out};
  // The last one first, so that what stands before the others is still in its place.
  for (size_t i = fault.hits.size(); i > 0; --i) {
    const Hit& hit = fault.hits[i - 1];
    ChangeStatus(fault, hit, seen.status);
    ChangeCalls(fault, hit, seen.calls);
    ChangeOut(*hit.row, hit.nth, seen.out);
  }
  return seen;
}

std::string Describe(const Seen& seen) {
  std::string text = "status " + std::to_string(seen.status) + ", calls";
  for (const std::string& call : seen.calls) text += " " + call;
  return text + "\n" + seen.out;
}

// What is wrong with the run; empty when nothing is.
std::string Inject(const Fault& fault) {
  const std::string title = fault.command.words + "\n" + fault.Toml();
  const auto unknown = [](const Hit& hit) { return hit.row == nullptr; };
  if (std::ranges::any_of(fault.hits, unknown)) return title + "No row says what is to be seen.";
  Texts calls;
  const Result result = RunCommand(fault.command, fault.Toml(), calls);
  const std::string seen = Describe({result.status, calls, result.out}) + result.err;
  const std::string expected = Describe(Expected(fault));
  return seen == expected ? "" : title + "Expected " + expected + "Seen " + seen;
}

TEST(FaultMatrix, EveryFailureEndsAsItShould) {
  std::vector<Command> commands = ReadCommands();
  std::vector<Row> rows = ReadRows();
  ExpectEveryLeaf(BuildCommandTree(), "", commands);
  const TimeServer server(
      [](int socket, const sockaddr_in& to, int) { SendTime(socket, to, kMiddle); });
  if (!server.bound) {
    puts("fault matrix: UDP port 123 of the loopback is not to be had: without timing setsntp");
    std::erase_if(commands, [](const Command& c) { return c.Begins("timing setsntp"); });
    std::erase_if(rows, [](const Row& row) { return row.leaf.starts_with("timing setsntp"); });
  }

  ForEach(commands.size(),
          [&](size_t i) { commands[i].healthy = RunCommand(commands[i], "", commands[i].calls); });
  std::vector<Fault> faults;
  for (const Command& command : commands) {
    ExpectHealthy(command);
    AddFaults(command, rows, faults);
  }
  Texts wrong(faults.size());
  ForEach(faults.size(), [&](size_t i) { wrong[i] = Inject(faults[i]); });

  for (const std::string& text : wrong) EXPECT_TRUE(text.empty()) << text;
  for (const Row& row : rows) EXPECT_TRUE(row.used) << row.leaf << " " << row.call;
  EXPECT_NE(faults.size(), 0U);
  printf("fault matrix: %zu faults injected into %zu command lines\n", faults.size(),
         commands.size());
}

}  // namespace
