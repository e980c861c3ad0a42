// The capture writer: which files it makes and what programs that are not ours read in them.
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <algorithm>
#include <filesystem>

#include "dump/capture_writer.h"
#include "support/programs.h"
#include "support/simulation.h"

using namespace simulator;

namespace {

namespace fs = std::filesystem;

constexpr int64_t kSecond = 1'000'000'000;
constexpr int64_t kStart = 1'767'323'045 * kSecond;  // 2026-01-02 03:04:05
const std::vector<uint8_t> kBytes(262144, 0xA5);

KeptFrame FrameOf(uint32_t length, int64_t time_ns = kStart, uint8_t port = 0) {
  return {kBytes.data(), length, length, port, time_ns};
}

TEST(CaptureNameTest, NamesHaveTheTimeAndAreThoseOfAFileInTheFolder) {
  EXPECT_EQ(StampedName("x", kStart), "x_20260102030405.pcapng");
  EXPECT_EQ(StampedName("a.b.cap", kStart), "a.b_20260102030405.cap");
  EXPECT_EQ(StampedName(".x", kStart), ".x_20260102030405.pcapng");
  EXPECT_EQ(NumberedName("x.y.pcapng", 0), "x.y.pcapng");
  EXPECT_EQ(NumberedName("x.y.pcapng", 12), "x.y_12.pcapng");
  EXPECT_EQ(PatternName("%N_%Y%M%D%H%m%s.pcapng", "a/b", kStart), "a_b_20260102030405.pcapng");
  EXPECT_EQ(PatternName("100%% %q %", "", kStart), "100% %q %");
  EXPECT_EQ(PatternName("../../etc/%N", "x", kStart), ".._.._etc_x");
  EXPECT_EQ(PatternName("..", "", kStart), "__");
  EXPECT_EQ(PatternName("", "", kStart), "_");
}

class CaptureFilesTest : public testing::Test {
 protected:
  CaptureFilesTest() {
    char folder[] = "/tmp/capture-XXXXXX";
    folder_ = mkdtemp(folder);
    target_.directory = folder_;
    target_.pattern = "%s";
    target_.max_cache = 100 << 20;
    target_.start_ns = kStart;
  }
  ~CaptureFilesTest() override {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  void Open(CaptureWriter& writer) const {
    std::string reason;
    ASSERT_TRUE(writer.Open(target_, reason)) << reason;
  }

  // The files' names in order.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

  std::string folder_;
  CaptureTarget target_;
};

// Twelve seconds, of which the first six have three frames each. With a limit six frames fit into a
// file, or a file lasts three seconds. Files are called after the second in which they begin.
TEST_F(CaptureFilesTest, SizeDurationCountAndLoopDecideWhichFilesThereAre) {
  const struct {
    uint64_t size;
    uint32_t duration;
    std::vector<std::string> names;  // when their number has no limit
  } cases[] = {{0, 0, {"05"}},
               {7000, 0, {"05", "07", "09"}},
               {0, 3, {"05", "08", "11", "14"}},
               {7000, 3, {"05", "07", "09", "12", "15"}}};
  for (size_t i = 0; i < 4 * 4 * 2; ++i) {
    const auto& [size, duration, all] = cases[i / 8];
    target_.max_file_size = size;
    target_.max_duration = duration;
    target_.file_count = i / 2 % 4;
    target_.loop = i % 2 == 1;
    SCOPED_TRACE(i);
    CaptureWriter writer;
    Open(writer);
    for (int64_t now = kStart; now < kStart + 12 * kSecond; now += kSecond) {
      EXPECT_TRUE(writer.Tick(now));
      for (int n = 0; n < 3 && now < kStart + 6 * kSecond; ++n) {
        EXPECT_TRUE(writer.Write(FrameOf(1000, now)));
      }
    }
    EXPECT_TRUE(writer.Close());
    // The first ones are left, or of a loop the last ones.
    std::vector<std::string> names = all;
    const size_t most = target_.file_count == 0 ? names.size() : target_.file_count;
    const bool ended = !target_.loop && names.size() > most;
    EXPECT_EQ(writer.ended(), ended);
    EXPECT_EQ(writer.files_written(), ended ? most : names.size());
    while (names.size() > most) names.erase(target_.loop ? names.begin() : names.end() - 1);
    EXPECT_EQ(Names(), names);
    EXPECT_EQ(writer.bytes_dropped(), 0U);
    for (const auto& entry : fs::directory_iterator(folder_)) {
      EXPECT_TRUE(size == 0 || entry.file_size() <= size);
      fs::remove(entry);
    }
  }
}

TEST_F(CaptureFilesTest, FilesOfTheSameSecondAreNumberedAndNoneIsOverwritten) {
  WriteFile(folder_ + "/05", "somebody's");
  target_.max_file_size = 2000;
  target_.file_count = 2;
  target_.loop = true;
  CaptureWriter writer;
  Open(writer);
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(writer.Write(FrameOf(1000)));
  EXPECT_TRUE(writer.Write(FrameOf(2000)));  // no file has room for it
  fs::remove(folder_ + "/05_3");
  fs::create_directory(folder_ + "/05_3");  // cannot make room
  EXPECT_FALSE(writer.Write(FrameOf(1000)));
  EXPECT_EQ(writer.reason(), folder_ + "/05_3: Is a directory");
  EXPECT_EQ(Names(), (std::vector<std::string>{"05", "05_3", "05_4"}));
  EXPECT_EQ(ReadFile(folder_ + "/05"), "somebody's");
  EXPECT_EQ(writer.bytes_dropped(), 3000U);
}

TEST_F(CaptureFilesTest, WhatCannotBeOpenedIsRefusedWithAReason) {
  std::string reason;
  for (const std::string& name : {folder_ + "/none/x", folder_ + "/", folder_ + "/.."}) {
    target_.file_name = name;
    EXPECT_FALSE(CaptureWriter().Open(target_, reason));
    EXPECT_TRUE(reason.starts_with(folder_)) << reason;
  }
  target_.file_name = "";
  target_.pattern = std::string(300, 'x');
  EXPECT_FALSE(CaptureWriter().Open(target_, reason));
  EXPECT_EQ(reason, folder_ + "/" + target_.pattern + ": File name too long");
  EXPECT_TRUE(Names().empty());
}

TEST_F(CaptureFilesTest, AFullDiskKeepsEveryPacketThatWasWritten) {
  if (mount("none", folder_.c_str(), "tmpfs", 0, "size=200k") != 0) {
    GTEST_SKIP() << "mounting is not allowed here";
  }
  const std::string file = folder_ + "/05";
  CaptureWriter writer;
  Open(writer);
  uint64_t sent = 1;
  while (writer.Write(FrameOf(1001)) && sent < 3000) ++sent;
  EXPECT_EQ(writer.reason(), file + ": No space left on device");
  const auto there = static_cast<uint64_t>(PacketCount(file));
  EXPECT_GT(there, 150U);
  EXPECT_EQ(there * 1001 + writer.bytes_dropped(), sent * 1001);
  EXPECT_EQ(fs::file_size(file), writer.bytes_written());
  std::string reason;
  for (int i = 0; i < 100 && CaptureWriter().Open(target_, reason); ++i) continue;
  for (const auto& entry : fs::directory_iterator(folder_)) EXPECT_GT(entry.file_size(), 0U);
  umount2(folder_.c_str(), MNT_DETACH);
}

}  // namespace
