// The files of a capture: their names, how many there are, which one makes room.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

namespace simulator {

// What a capture writes and where. Either file_name is given, or directory and pattern. Texts are
// UTF-8; relative paths start at the process's folder.
struct CaptureTarget {
  std::string file_name;
  std::string directory;
  std::string pattern;
  uint64_t max_file_size = 0;  // bytes; 0 for no limit
  uint32_t file_count = 0;     // 0 for no limit
  uint32_t max_duration = 0;   // seconds a file; 0 for no limit
  bool loop = false;         // when file_count files are there, the oldest makes room for the next
  uint64_t max_cache = 0;    // bytes that may wait to be written; one packet always may
  uint32_t snap_length = 0;  // 0 for no limit
  bool crc_kept = false;     // frames end with their four CRC bytes
  bool stamped_by_host = false;  // the device gives no time stamps
  std::string device_name;
  int64_t start_ns = 0;  // since the epoch; 0 for the host's clock
};

// The file's name for a base name, without folder: the time (UTC, since the epoch) goes before the
// extension, which is .pcapng when the base has none.
std::string StampedName(const std::string& base, int64_t time_ns);

// The file's name for a pattern: %N is the device's name, %Y %M %D %H %m %s are the year, month,
// day, hour, minute and second (UTC), %% is a percent sign; other text stays. Whatever the pattern
// and the device's name contain, the file is in the folder: slashes become underscores, and so do
// the dots of a name that is "." or "..".
std::string PatternName(const std::string& pattern, const std::string& device_name,
                        int64_t time_ns);

// The name with _number before its extension; the name itself for 0.
std::string NumberedName(const std::string& name, uint32_t number);

// The files that one capture begins, one after the other. Existing files are never touched: a taken
// name gets a number.
class CaptureFiles {
 public:
  CaptureFiles() = default;
  ~CaptureFiles();
  CaptureFiles(const CaptureFiles&) = delete;
  CaptureFiles& operator=(const CaptureFiles&) = delete;

  // Looks up the folder, which must exist. False with the reason when it does not, or when the name
  // cannot be a file's. To be called once.
  bool Open(const CaptureTarget& target, std::string& reason);

  // False when as many files as the target allows were begun.
  bool HasNext() const;

  // Creates the next file, named for that time, after the oldest one has made room for it.
  // Returns its descriptor, which is the caller's to close, or -1 with the reason.
  int Begin(int64_t time_ns, std::string& reason);

  // Removes the file begun last.
  void Discard();

  // The path of the file begun last, for people.
  std::string current() const;
  uint64_t begun() const { return begun_; }

 private:
  std::string NameAt(int64_t time_ns) const;
  bool RemoveOldest(std::string& reason);

  CaptureTarget target_;
  std::string folder_;
  std::string base_;  // of a file name without its folder
  int folder_descriptor_ = -1;
  std::deque<std::string> there_;  // oldest first; when looping, else the last one alone
  std::string last_name_;          // without number
  uint32_t last_number_ = 0;
  uint64_t begun_ = 0;
};

}  // namespace simulator
