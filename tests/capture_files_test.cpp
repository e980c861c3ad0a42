// The capture writer: which files it makes and what programs that are not ours read in them.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "support/simulation.h"
#include "tap/capture_writer.h"

namespace {

namespace fs = std::filesystem;

constexpr int64_t kSecond = 1'000'000'000;
constexpr int64_t kStart = 1'767'323'045 * kSecond;  // 2026-01-02 03:04:05
const std::vector<uint8_t> kBytes(262144, 0xA5);

class CaptureFilesTest : public testing::Test {
 protected:
  CaptureFilesTest() {
    char folder[] = "/tmp/capture-XXXXXX";
    folder_ = mkdtemp(folder);
  }
  ~CaptureFilesTest() override {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  CaptureTarget Target(const std::string& pattern = "%s.pcapng") const {
    CaptureTarget target;
    target.directory = folder_;
    target.pattern = pattern;
    target.max_cache = 100 << 20;
    target.device_name = "00-1a-2b-3c-4d-5e";
    target.start_ns = kStart;
    return target;
  }

  // The files' names in order, with a blank after each.
  std::string Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names) text += name + " ";
    return text;
  }

  std::string folder_;
};

KeptFrame FrameOf(uint32_t length, int64_t time_ns = kStart, uint8_t port = 0) {
  return {kBytes.data(), length, length, port, time_ns};
}

// What the program writes to both streams. It has to succeed.
std::string Output(const std::string& command) {
  FILE* stream = popen((command + " 2>&1").c_str(), "r");
  std::string text;
  char line[4096];
  while (fgets(line, sizeof line, stream) != nullptr) {
    if (!std::string(line).starts_with("Running as user")) text += line;
  }
  EXPECT_EQ(pclose(stream), 0) << command << '\n' << text;
  return text;
}

// A line for each packet: time, interface, length, captured length.
std::string Packets(const std::string& file) {
  return Output("tshark -n -r '" + file +
                "' -T fields -e frame.time_epoch -e frame.interface_name"
                " -e frame.len -e frame.cap_len");
}

int PacketCount(const std::string& file) {
  const std::string text = Output("capinfos -Tmcr '" + file + "'");
  return atoi(text.substr(text.find(',') + 1).c_str());
}

TEST(CaptureNameTest, PlainNamesGetTheTimeAndKeepTheirExtension) {
  for (const auto& [base, name] : std::initializer_list<std::pair<const char*, const char*>>{
           {"x", "x_20260102030405.pcapng"},
           {"x.pcapng", "x_20260102030405.pcapng"},
           {"a.b.cap", "a.b_20260102030405.cap"},
           {".x", ".x_20260102030405.pcapng"}}) {
    EXPECT_EQ(StampedName(base, kStart), name);
  }
  EXPECT_EQ(NumberedName("x.y.pcapng", 0), "x.y.pcapng");
  EXPECT_EQ(NumberedName("x.y.pcapng", 12), "x.y_12.pcapng");
}

TEST(CaptureNameTest, PatternsYieldTheNameOfAFileInTheFolder) {
  for (const auto& [pattern, name] : std::initializer_list<std::pair<const char*, const char*>>{
           {"capture_%N_%Y%M%D%H%m%s.pcapng", "capture_a/b_20260102030405.pcapng"},
           {"100%% %q %", "100% %q %"},
           {"../../etc/%N", ".._.._etc_a_b"},
           {"..", "__"},
           {"/", "_"},
           {"", "_"}}) {
    std::string expected = name;
    std::replace(expected.begin(), expected.end(), '/', '_');
    EXPECT_EQ(PatternName(pattern, "a/b", kStart), expected);
  }
}

// Twelve seconds, of which the first six have three frames each. With a limit six frames fit into a
// file, or a file lasts three seconds.
TEST_F(CaptureFilesTest, SizeDurationCountAndLoopDecideWhichFilesThereAre) {
  const struct {
    bool size, duration;
    uint32_t count;
    bool loop;
    const char* there;  // the seconds at which the files that are left began
    uint64_t begun;
    bool ended;
  } cases[] = {
      {false, false, 0, false, "05", 1, false},
      {false, false, 0, true, "05", 1, false},
      {false, false, 1, false, "05", 1, false},
      {false, false, 1, true, "05", 1, false},
      {false, false, 2, false, "05", 1, false},
      {false, false, 2, true, "05", 1, false},
      {true, false, 0, false, "05 07 09", 3, false},
      {true, false, 0, true, "05 07 09", 3, false},
      {true, false, 1, false, "05", 1, true},
      {true, false, 1, true, "09", 3, false},
      {true, false, 2, false, "05 07", 2, true},
      {true, false, 2, true, "07 09", 3, false},
      {false, true, 0, false, "05 08 11 14", 4, false},
      {false, true, 0, true, "05 08 11 14", 4, false},
      {false, true, 1, false, "05", 1, true},
      {false, true, 1, true, "14", 4, false},
      {false, true, 2, false, "05 08", 2, true},
      {false, true, 2, true, "11 14", 4, false},
      {true, true, 0, false, "05 07 09 12 15", 5, false},
      {true, true, 0, true, "05 07 09 12 15", 5, false},
      {true, true, 1, false, "05", 1, true},
      {true, true, 1, true, "15", 5, false},
      {true, true, 2, false, "05 07", 2, true},
      {true, true, 2, true, "12 15", 5, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.size << c.duration << ' ' << c.count << ' ' << c.loop);
    CaptureTarget target = Target("%s");
    if (c.size) target.max_file_size = 7000;
    if (c.duration) target.max_duration = 3;
    target.file_count = c.count;
    target.loop = c.loop;
    CaptureWriter writer;
    std::string reason;
    ASSERT_TRUE(writer.Open(target, reason)) << reason;
    for (int64_t now = kStart; now < kStart + 12 * kSecond; now += kSecond) {
      EXPECT_TRUE(writer.Tick(now));
      for (int i = 0; i < 3 && now < kStart + 6 * kSecond; ++i) {
        EXPECT_TRUE(writer.Write(FrameOf(1000, now)));
      }
    }
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(Names(), std::string(c.there) + " ");
    EXPECT_EQ(writer.files_written(), c.begun);
    EXPECT_EQ(writer.ended(), c.ended);
    EXPECT_EQ(writer.bytes_dropped(), 0U);
    for (const auto& entry : fs::directory_iterator(folder_)) {
      EXPECT_TRUE(!c.size || entry.file_size() <= 7000);
      fs::remove(entry);
    }
  }
}

TEST_F(CaptureFilesTest, FilesOfTheSameSecondAreNumberedAndNoneIsOverwritten) {
  WriteFile(folder_ + "/05.pcapng", "somebody's");
  CaptureTarget target = Target();
  target.max_file_size = 2000;
  target.file_count = 2;
  target.loop = true;
  CaptureWriter writer;
  std::string reason;
  ASSERT_TRUE(writer.Open(target, reason)) << reason;
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(writer.Write(FrameOf(1000)));
  EXPECT_TRUE(writer.Write(FrameOf(2000)));  // no file has room for it
  EXPECT_TRUE(writer.Close());
  EXPECT_EQ(Names(), "05.pcapng 05_3.pcapng 05_4.pcapng ");
  EXPECT_EQ(ReadFile(folder_ + "/05.pcapng"), "somebody's");
  EXPECT_EQ(writer.bytes_dropped(), 2000U);
}

TEST_F(CaptureFilesTest, WhatCannotBeOpenedIsRefusedWithAReason) {
  CaptureTarget missing = Target();
  missing.directory += "/none";
  CaptureTarget no_folder = Target();
  no_folder.file_name = folder_ + "/none/x.pcapng";
  CaptureTarget no_file = Target();
  no_file.file_name = folder_ + "/";
  for (const CaptureTarget& target : {missing, no_folder, no_file, Target(std::string(300, 'x'))}) {
    CaptureWriter writer;
    std::string reason;
    EXPECT_FALSE(writer.Open(target, reason));
    EXPECT_TRUE(reason.starts_with(folder_)) << reason;
    EXPECT_EQ(Names(), "");
  }
}

TEST_F(CaptureFilesTest, OtherProgramsReadEveryPacketOfEveryFile) {
  CaptureTarget target = Target();
  target.max_file_size = 300'000;
  target.crc_kept = true;
  target.max_cache = 5000;
  CaptureWriter writer;
  std::string reason;
  ASSERT_TRUE(writer.Open(target, reason)) << reason;
  std::string expected;
  for (uint32_t i = 0; i < 500; ++i) {
    KeptFrame frame = FrameOf(14 + i % 8 + (i % 9) * 1000, kStart + i * 1'000'000'007LL, i % 2);
    if (i == 77) frame.length = 262144;
    frame.wire_length = frame.length + i % 5;
    EXPECT_TRUE(writer.Write(frame));
    char line[200];
    snprintf(line, sizeof line, "%ld.%09ld\tport %c\t%u\t%u\n", frame.time_ns / kSecond,
             frame.time_ns % kSecond, "AB"[i % 2], frame.wire_length, frame.length);
    expected += line;
  }
  EXPECT_TRUE(writer.Close());
  std::string packets;
  uint64_t bytes = 0;
  for (uint64_t i = 0; i < writer.files_written(); ++i) {
    const std::string file = folder_ + "/" + NumberedName("05.pcapng", static_cast<uint32_t>(i));
    const std::string mine = Packets(file);
    packets += mine;
    bytes += fs::file_size(file);
    EXPECT_EQ(PacketCount(file), std::count(mine.begin(), mine.end(), '\n'));
    EXPECT_EQ(Output("editcap '" + file + "' '" + folder_ + "/copy'"), "");
    EXPECT_EQ(Packets(folder_ + "/copy"), mine);
    const std::string facts = Output("capinfos -I '" + file + "'");
    for (const char* fact : {"Name = port A", "Name = port B", "Time precision = nanoseconds (9)",
                             "Encapsulation = Ethernet", "Number of stat entries = 1"}) {
      EXPECT_NE(facts.find(fact), std::string::npos) << fact << " in\n" << facts;
    }
  }
  EXPECT_EQ(packets, expected);
  EXPECT_EQ(writer.bytes_written(), bytes);
  EXPECT_GE(writer.files_written(), 5U);
}

TEST_F(CaptureFilesTest, AFileIsWholeUpToTheLastFlushWhenTheProcessIsKilled) {
  const pid_t child = fork();
  if (child == 0) {
    CaptureWriter writer;
    std::string reason;
    writer.Open(Target(), reason);
    for (int i = 0; i < 100; ++i) writer.Write(FrameOf(777));
    writer.Tick(kStart + kSecond);
    for (int i = 0; i < 100; ++i) writer.Write(FrameOf(777));
    raise(SIGKILL);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(PacketCount(folder_ + "/05.pcapng"), 100);
}

TEST_F(CaptureFilesTest, ARemovedFolderEndsTheCaptureWithAReason) {
  CaptureWriter writer;
  std::string reason;
  ASSERT_TRUE(writer.Open(Target(), reason)) << reason;
  EXPECT_TRUE(writer.Write(FrameOf(100)));
  fs::remove_all(folder_);
  EXPECT_FALSE(writer.Tick(kStart + kSecond));
  EXPECT_FALSE(writer.Write(FrameOf(100)));
  EXPECT_FALSE(writer.Close());
  EXPECT_EQ(writer.reason(), folder_ + "/05.pcapng: No such file or directory");
  EXPECT_EQ(writer.bytes_dropped(), 200U);
}

TEST_F(CaptureFilesTest, AFullDiskKeepsEveryPacketThatWasWritten) {
  if (mount("none", folder_.c_str(), "tmpfs", 0, "size=200k") != 0) {
    GTEST_SKIP() << "mounting is not allowed here";
  }
  uint64_t sent = 0;
  {
    CaptureWriter writer;
    std::string reason;
    ASSERT_TRUE(writer.Open(Target(), reason)) << reason;
    do {
      ++sent;
    } while (writer.Write(FrameOf(1001)) && sent < 3000);
    EXPECT_EQ(writer.reason(), folder_ + "/05.pcapng: No space left on device");
    const auto there = static_cast<uint64_t>(PacketCount(folder_ + "/05.pcapng"));
    EXPECT_GT(there, 150U);
    EXPECT_EQ(there * 1001 + writer.bytes_dropped(), sent * 1001);
    EXPECT_EQ(fs::file_size(folder_ + "/05.pcapng"), writer.bytes_written());
    while (CaptureWriter().Open(Target("more"), reason)) continue;
    for (const auto& entry : fs::directory_iterator(folder_)) EXPECT_GT(entry.file_size(), 0U);
  }
  umount(folder_.c_str());
}

}  // namespace
