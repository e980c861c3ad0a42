// The machine fails under the simulator: disks are full, files damaged or locked, programs killed,
// clocks set.
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>

#include <filesystem>
#include <random>
#include <span>
#include <thread>

#include "support/expectations.h"
#include "support/golden.h"

namespace {

namespace fs = std::filesystem;

struct MachineTest : testing::Test {
  MachineTest() {
    setenv("CORVANE_SIM_CONFIG", (folder + "/sim.toml").c_str(), 1);
    setenv("CORVANE_SIM_STATE", (folder + "/state").c_str(), 1);
    for (int i = 0; i < 20; ++i) simulation.Run("features set --slicing 300");
    sqlite3_open(path.c_str(), &database);
  }
  ~MachineTest() override { sqlite3_close(database); }

  // All values that the statements yield.
  std::string Sql(const std::string& sql) const {
    std::string text;
    const auto add = [](void* to, int, char** values, char**) {
      return *static_cast<std::string*>(to) += values[0], 0;
    };
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), add, &text, nullptr), SQLITE_OK) << sql;
    return text;
  }

  // Writing a file beyond the size either fails, as on a full disk, or ends the program.
  Result RunLimited(const std::string& words, uintmax_t size, sighandler_t handling = SIG_IGN) {
    const rlimit limits[] = {{size, RLIM_INFINITY}, {RLIM_INFINITY, RLIM_INFINITY}};
    signal(SIGXFSZ, handling);
    setrlimit(RLIMIT_FSIZE, &limits[0]);
    const Result result = simulation.Run(words);
    setrlimit(RLIMIT_FSIZE, &limits[1]);
    return result;
  }

  // Whether a number in the statistics comes to do so.
  bool Grows(const std::string& name, bool growing = true) const {
    for (int64_t i = 0, count = 0, before = 0; i < 50; ++i, before = count) {
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
      const std::string out = simulation.Run("statistics").out;
      count = std::stoll(out.substr(out.find(':', out.find(name)) + 1));
      if (i > 0 && (count > before) == growing) return true;
    }
    return false;
  }

  Simulation simulation{"lock_wait_ms = 60\n" + OneDevice(0x3FFFFFF, "update.duration_ms = 1\n")};
  const std::string& folder = simulation.folder();
  const std::string path = folder + "/state/devices.db";
  const std::string start = "directcapture start --name " + folder + "/x";
  sqlite3* database = nullptr;
  std::mt19937 random{4711};
};

// The program says once, in one line, what is wrong.
void ExpectComplaint(const Result& result, int status, const std::string& part) {
  EXPECT_EQ(result.status, status) << part;
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << part << result.err;
  EXPECT_NE(result.err.find(part), std::string::npos) << result.err;
}

// A script that needs rights which the test has not ends with 77.
void ExpectOutcomes(const Simulation& simulation, const std::string& names,
                    std::span<const std::tuple<std::string, int, const char*>> cases) {
  for (const auto& [script, status, complaint] : cases) {
    const Result result = Shell(simulation, "echo precious >victim;" + names + script);
    if (result.status == 77) continue;
    if (status != 0) ExpectComplaint(result, status, complaint);
    EXPECT_EQ(result.status, status) << script << result.err;
    EXPECT_EQ(ReadFile(simulation.folder() + "/victim"), "precious\n") << script;
  }
}

TEST_F(MachineTest, RefusesWhatIsLockedOrDamagedAndIgnoresTheUnknown) {
  const std::string add = "INSERT INTO configuration VALUES ('00:1a:2b:3c:4d:5e', 'dpi_filter', ";
  const std::tuple<std::string, int, const char*> cases[] = {
      {"BEGIN EXCLUSIVE", 233, "devices.db: database is locked"},
      {"COMMIT;" + add + "'draft', x'');" + add + "'saved', x'12')", 233, "5e has 1 bytes instead"},
      {"DROP TABLE configuration", 233, "devices.db: no such table"},
      {"UPDATE fact SET bytes = zeroblob(9)", 255, "5e has 9 bytes instead of 8"},
      {"PRAGMA user_version = 2", 255, "devices.db: it was made by a newer version"},
  };
  for (const auto& [sql, status, complaint] : cases) {
    Sql(sql);
    ExpectComplaint(simulation.Run(start), status, complaint);
  }
  EXPECT_FALSE(fs::exists(folder + "/state/capture-00-1a-2b-3c-4d-5e.status"));
}

TEST_F(MachineTest, NeitherFollowsNorTrustsWhatOthersPutInItsWay) {
  const std::string names =
      "umask 022; page=state/capture-00-1a-2b-3c-4d-5e.status list='" CORVANE_EXECUTABLE
      " list';"
      "start='" CORVANE_EXECUTABLE
      " directcapture start -o x'; home=$PWD/home/.local/state;"
      "bare='env -uCORVANE_SIM_STATE -uXDG_STATE_HOME HOME='; simulator=$home/corvane-simulator;"
      "rm -rf state home; mkdir -p state $simulator;";
  const char* foreign = ": it is a link or belongs to another user";
  const std::tuple<std::string, int, const char*> cases[] = {
      {"ln -s ../victim $page; $start", 231, foreign},
      {"ln victim $page; $start", 231, foreign},
      {"ln -s ../victim state/devices.db; $list", 255, foreign},
      {"ln -s ../none state/devices.db-journal; $list", 255, foreign},
      {"chmod o+w state; $list", 255, "state: everyone can write in it"},
      {"rmdir state; (umask 0; $list) && $list", 0, ""},
      {"chown 1 state || exit 77; $list", 0, ""},
      {"chown 1 $simulator || exit 77; $bare$PWD/home $list", 255, "it belongs to another user; "},
      {"db=$simulator/devices.db; : >$db; chown 1 $db || exit 77; $bare$PWD/home $list", 255,
       foreign},
      {"unshare -U true || exit 77; unshare -U --map-user=54321 $bare $list", 255,
       "there is no home folder for the device state: CORVANE_SIM_STATE can name a folder"},
      {"unshare -Urm true || exit 77; echo root:x:0:0::$PWD/home: >users;"
       "unshare -Urm sh -c \"mount --bind users /etc/passwd; $bare $list\" && ls $simulator/*.db",
       0, ""}};
  ExpectOutcomes(simulation, names, cases);
}

TEST_F(MachineTest, AnotherUserSeesTheCaptureAndMayNotEndIt) {
  simulation.Run(start);
  const std::string names =
      "umask 0; chmod -R go+rX . && touch journal && chmod 666 journal;"
      "other='setpriv --reuid=1 --clear-groups -- " CORVANE_EXECUTABLE
      "'; $other list >all 2>&1 || exit 77;";
  const std::tuple<std::string, int, const char*> cases[] = {
      {"$other directcapture status | grep 'Enabled : 1'", 0, ""},
      {"$other directcapture stop", 233, "stop the capture of 00:1a:2b:3c:4d:5e: Operation not"},
      {"chmod 600 state/capture*; $other directcapture status", 233, ".status: Permission denied"}};
  ExpectOutcomes(simulation, names, cases);
}

TEST_F(MachineTest, SurvivesAnyBytesInItsDatabase) {
  Sql("PRAGMA journal_mode = DELETE");
  const std::string good = ReadFile(path);
  for (size_t i = 0; i < 100; ++i) {
    std::string damaged = good;
    const size_t at = random() % good.size();
    if (i % 6 == 0) damaged.resize(at);
    const size_t end = std::min(damaged.size(), at + random() % 4096);
    for (size_t j = at; j < end; ++j) damaged[j] = static_cast<char>(random() % (2 + i % 2 * 254));
    WriteFile(path, damaged);
    const Result result = simulation.Run("features set --slicing 8");
    if (result.status != 0) ExpectComplaint(result, result.status == 255 ? 255 : 233, path);
  }
}

TEST_F(MachineTest, StoresAllOrNothingWhereverTheDiskEndsOrTheProgram) {
  Sql("INSERT INTO configuration SELECT device, column1, layer, bytes "
      "FROM configuration, (VALUES ('ports_speed'), ('counters_v2'))");
  for (const auto& [handling, failed] : {std::pair(SIG_IGN, 233), {SIG_DFL, 128 + SIGXFSZ}}) {
    Sql("DELETE FROM configuration WHERE layer = 'saved'");
    uintmax_t size = fs::file_size(path + "-wal");  // the longest of the files
    for (int status = failed; status == failed; size += 512) {
      status = RunLimited("features save", size, handling).status;
      EXPECT_EQ(Sql("SELECT count(*) FROM configuration WHERE layer = 'saved'"),
                status == failed ? "0" : "3");
    }
  }
}

TEST_F(MachineTest, LeavesNoHalfLineInAJournalAndGoesOnWithoutOne) {
  const std::string journal = folder + "/journal";
  WriteFile(journal, std::string(99'999, '\n'));  // longer than the state's files
  for (size_t room = 0; room < 100; room += 9) {
    const Result result = RunLimited("list", fs::file_size(journal) + room);
    ExpectComplaint(result, 0, "cannot write the journal " + journal + ": File too large");
    EXPECT_TRUE(ReadFile(journal).ends_with("\n")) << room;
  }
}

TEST_F(MachineTest, CountsOnWhateverTheClockWasSetTo) {
  for (const std::string started : {"ffffffffffffff7f", "0000000000000080", "0000724e18090000"}) {
    Sql("UPDATE fact SET bytes = x'" + started + "'");
    EXPECT_TRUE(Grows("Timestamp")) << started;
  }
}

TEST_F(MachineTest, ACaptureFollowsWhatIsStoredAndNothingElse) {
  // Damaged, and held by nobody: no capture.
  WriteFile(folder + "/state/capture-00-1a-2b-3c-4d-5e.status", std::string(100'000, '\xff'));
  EXPECT_EQ(simulation.Run(start).status, 0);
  const std::string nothing = "statsv2 set --counter 0 --porta off --portb off";
  EXPECT_EQ(RunLimited(nothing, fs::file_size(path + "-wal")).status, 233);
  EXPECT_TRUE(Grows("Counter 01"));
  // As by a program that was killed before it told the capture; the next one does.
  Sql("UPDATE configuration SET bytes = zeroblob(1600) WHERE record = 'counters_v2'");
  simulation.Run("list");
  EXPECT_TRUE(Grows("Counter 01", false));
}

}  // namespace
