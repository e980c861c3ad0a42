#include "dump/capture_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "state/host_clock.h"

namespace simulator {
namespace {

constexpr mode_t kFileMode = 0640;  // traffic is not for everyone

// Where the extension begins: the end of the name when there is none. A dot at the beginning hides
// the file and begins no extension.
size_t ExtensionOf(const std::string& name) {
  const size_t dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 ? name.size() : dot;
}

struct Placeholder {
  char letter;
  const char* format;  // of strftime
};
constexpr Placeholder kPlaceholders[] = {{'Y', "%Y"}, {'M', "%m"}, {'D', "%d"}, {'H', "%H"},
                                         {'m', "%M"}, {'s', "%S"}, {'%', "%%"}};

std::string Formatted(const char* format, const tm& time) {
  char text[32];
  return std::string(text, strftime(text, sizeof text, format, &time));
}

// What %letter stands for; an unknown one stands for itself.
std::string Replacement(char letter, const std::string& device_name, const tm& time) {
  if (letter == 'N') return device_name;
  for (const Placeholder& placeholder : kPlaceholders) {
    if (placeholder.letter == letter) return Formatted(placeholder.format, time);
  }
  return {'%', letter};
}

bool IsFolderName(const std::string& name) {
  return name.empty() || name == "." || name == "..";
}

std::string Failure(const std::string& path, int error) {
  return path + ": " + strerror(error);
}

}  // namespace

std::string StampedName(const std::string& base, int64_t time_ns) {
  const size_t extension = ExtensionOf(base);
  const std::string end = extension == base.size() ? ".pcapng" : base.substr(extension);
  return base.substr(0, extension) + Formatted("_%Y%m%d%H%M%S", UtcOf(time_ns / kSecond)) + end;
}

std::string PatternName(const std::string& pattern, const std::string& device_name,
                        int64_t time_ns) {
  const tm time = UtcOf(time_ns / kSecond);
  std::string name;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '%' && i + 1 < pattern.size()) {
      name += Replacement(pattern[++i], device_name, time);
    } else {
      name += pattern[i];
    }
  }
  std::replace(name.begin(), name.end(), '/', '_');
  if (IsFolderName(name)) std::replace(name.begin(), name.end(), '.', '_');
  return name.empty() ? "_" : name;
}

std::string NumberedName(const std::string& name, uint32_t number) {
  if (number == 0) return name;
  const size_t extension = ExtensionOf(name);
  return name.substr(0, extension) + "_" + std::to_string(number) + name.substr(extension);
}

CaptureFiles::~CaptureFiles() {
  if (folder_descriptor_ >= 0) close(folder_descriptor_);
}

bool CaptureFiles::Open(const CaptureTarget& target, std::string& reason) {
  target_ = target;
  folder_ = target.directory;
  if (!target.file_name.empty()) {
    const size_t slash = target.file_name.rfind('/');
    base_ = target.file_name.substr(slash + 1);  // npos + 1 is the beginning
    folder_ = slash == std::string::npos ? "." : target.file_name.substr(0, slash + 1);
    if (IsFolderName(base_)) {
      reason = target.file_name + ": not the name of a file";
      return false;
    }
  }
  folder_descriptor_ = open(folder_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (folder_descriptor_ < 0) reason = Failure(folder_, errno);
  return folder_descriptor_ >= 0;
}

bool CaptureFiles::HasNext() const {
  return target_.file_count == 0 || target_.loop || begun_ < target_.file_count;
}

int CaptureFiles::Begin(int64_t time_ns, std::string& reason) {
  if (!RemoveOldest(reason)) return -1;
  const std::string name = NameAt(time_ns);
  // A number is not used twice in a second, even when its file has made room: so the names keep the
  // order of the files.
  uint32_t number = name == last_name_ ? last_number_ + 1 : 0;
  int file;
  do {
    there_.back() = NumberedName(name, number);
    file = openat(folder_descriptor_, there_.back().c_str(),
                  O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
  } while (file < 0 && (errno == EINTR || (errno == EEXIST && ++number != 0)));
  if (file < 0) {
    reason = Failure(current(), errno);
    there_.pop_back();
    return -1;
  }
  last_name_ = name;
  last_number_ = number;
  ++begun_;
  return file;
}

void CaptureFiles::Discard() {
  unlinkat(folder_descriptor_, there_.back().c_str(), 0);
  there_.pop_back();
  --begun_;
}

std::string CaptureFiles::current() const {
  const bool separate = !folder_.empty() && folder_.back() != '/';
  return folder_ + (separate ? "/" : "") + (there_.empty() ? "" : there_.back());
}

std::string CaptureFiles::NameAt(int64_t time_ns) const {
  if (!base_.empty()) return StampedName(base_, time_ns);
  return PatternName(target_.pattern, target_.device_name, time_ns);
}

// Adds an empty name for the next file.
bool CaptureFiles::RemoveOldest(std::string& reason) {
  const bool bounded = target_.loop && target_.file_count > 0;
  if (!bounded) there_.clear();
  if (bounded && there_.size() >= target_.file_count) {
    // Somebody may have removed it.
    if (unlinkat(folder_descriptor_, there_.front().c_str(), 0) != 0 && errno != ENOENT) {
      reason = Failure(folder_ + "/" + there_.front(), errno);
      return false;
    }
    there_.pop_front();
  }
  there_.emplace_back();
  return true;
}

}  // namespace simulator
