// Every library call of every command fails once with every status that a program could tell apart.
// The faults follow from the calls that the commands of golden/faults/commands.txt make; what is to
// be seen then stands in golden/faults/seen.txt.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <sstream>
#include <thread>

#include "functions.h"
#include "shell/command_table.h"
#include "support/expectations.h"

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

// Runs work(0), work(1) and so on, several at a time.
template <class Work>
void ForEach(size_t count, Work work) {
  std::atomic<size_t> next = 0;
  const auto serve = [&] {
    for (size_t job; (job = next++) < count;) work(job);
  };
  std::vector<std::jthread> threads;
  const unsigned processors = std::max(2U, std::thread::hardware_concurrency());
  while (threads.size() < processors) threads.emplace_back(serve);
}

// ---- A time server at an address of the loopback for this process alone

std::string ServerAddress() {
  return inet_ntoa({htonl(0x7F000001U | (static_cast<uint32_t>(getpid()) & 0x3FFFFF) << 2)});
}

// Negative when the port is not to be had.
int TimeSocket() {
  const int server = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const timeval patience = {0, 20'000};
  setsockopt(server, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  sockaddr_in address = {AF_INET, htons(123), {inet_addr(ServerAddress().c_str())}, {}};
  if (bind(server, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return server;
  close(server);
  return -1;
}

// Tells the middle of a second whenever asked.
void TellTime(const std::stop_token& stop, int server) {
  while (!stop.stop_requested() && server >= 0) {
    uint8_t packet[48] = {};
    sockaddr_in from = {};
    socklen_t size = sizeof from;
    auto* peer = reinterpret_cast<sockaddr*>(&from);
    if (recvfrom(server, packet, sizeof packet, 0, peer, &size) < 0) continue;
    packet[44] = 0x80;
    sendto(server, packet, sizeof packet, 0, peer, size);
  }
  close(server);
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
// same in every run.
std::string Devices() {
  const std::string more =
      "hw_firmwares = ['10G 4.7', '1G 2.3']\nupdate = {duration_ms = 0}\ntiming_status = '" +
      Hex(1, 80) + "'\nstatistics = '" + Hex(2, 232) + "'";
  return OneDevice(0x3FFFFFF, more) + DeviceToml(11, "00:1a:2b:3c:4d:5f", 0x3FFFDFF, more);
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

struct Fault {
  const Command& command;
  size_t call;  // which of the command's calls fails
  int nth;      // of its function's calls
  int status;
  const Row* row;

  const std::string& function() const { return command.calls[call]; }
};

// The row of a fault, marked as used; null for none.
Row* FindRow(const Fault& fault, std::vector<Row>& rows) {
  const std::string function = fault.function().substr(strlen("CorvaneAPI"));
  const std::string names[] = {function, function + "#" + std::to_string(fault.nth),
                               function + "=" + std::to_string(fault.status)};
  for (Row& row : rows) {
    if (!fault.command.Begins(row.leaf) || std::ranges::count(names, row.call) == 0) continue;
    row.used = true;
    return &row;
  }
  return nullptr;
}

void AddFaults(const Command& command, std::vector<Row>& rows, std::vector<Fault>& faults) {
  std::map<std::string, int> count;
  for (size_t call = 0; call < command.calls.size(); ++call) {
    const std::string& function = command.calls[call];
    const int nth = ++count[function];
    for (const int status : {-1, -4, -5, -13, -14, -15, -77}) {
      if (status != -1 && function == "CorvaneAPIGetDevicesList") continue;  // returns none
      faults.push_back({command, call, nth, status, nullptr});
      faults.back().row = FindRow(faults.back(), rows);
    }
  }
}

Texts ExpectedCalls(const Fault& fault) {
  const std::string& outcome = fault.row->outcome;
  Texts calls = fault.command.calls;
  const auto after = calls.begin() + static_cast<long>(fault.call) + 1;
  if (outcome == "open") calls.erase(after, calls.end());
  if (outcome == "ends") calls.erase(after, calls.end() - 1);
  if (outcome == "skips") calls.erase(after);
  if (outcome == "retried") calls.insert(after, fault.function());
  return calls;
}

int ExpectedStatus(const Fault& fault) {
  const Row& row = *fault.row;
  if (!row.status.empty()) return std::stoi(row.status);
  const bool last = fault.call + 2 == fault.command.calls.size();
  return row.Ends() || (row.ReplacesLine() && last) ? fault.status & 0xFF
                                                    : fault.command.healthy.status;
}

std::string ExpectedOut(const Fault& fault) {
  const Row& row = *fault.row;
  size_t more = 0;
  int left = std::stoi(row.kept, &more);
  if (more < row.kept.size()) left += (fault.nth - 1) * std::stoi(row.kept.substr(more));
  std::string text = row.text;
  Replace(text, "%d", std::to_string(fault.nth - 1));
  std::string before;
  std::string after;
  std::istringstream healthy(fault.command.healthy.out);
  for (std::string line; std::getline(healthy, line); --left) {
    if (left > 0) before += line + "\n";
    if (left < (row.ReplacesLine() ? 0 : 1)) after += line + "\n";
  }
  return before + text + (row.Ends() ? "" : after);
}

std::string Describe(int status, const Texts& calls, const std::string& out) {
  std::string text = "status " + std::to_string(status) + ", calls";
  for (const std::string& call : calls) text += " " + call;
  return text + "\n" + out;
}

// What is wrong with the run; empty when nothing is.
std::string Inject(const Fault& fault) {
  const std::string toml = FaultToml(fault.function(), fault.status, fault.nth);
  const std::string title = fault.command.words + "\n" + toml;
  if (fault.row == nullptr) return title + "No row says what is to be seen.";
  Texts calls;
  const Result result = RunCommand(fault.command, toml, calls);
  const std::string seen = Describe(result.status, calls, result.out) + result.err;
  const std::string expected =
      Describe(ExpectedStatus(fault), ExpectedCalls(fault), ExpectedOut(fault));
  return seen == expected ? "" : title + "Expected " + expected + "Seen " + seen;
}

TEST(FaultMatrix, EveryFailureEndsAsItShould) {
  std::vector<Command> commands = ReadCommands();
  std::vector<Row> rows = ReadRows();
  ExpectEveryLeaf(BuildCommandTree(), "", commands);
  const int server = TimeSocket();
  const std::jthread time(TellTime, server);
  if (server < 0) {
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
