#include "journal/journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace corvane {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

// Removes the bytes just written from the end, unless another program's bytes follow them.
bool TakeBack(int file, size_t size) {
  struct stat facts;
  const off_t end = lseek(file, 0, SEEK_CUR);
  return fstat(file, &facts) == 0 && facts.st_size == end &&
         ftruncate(file, end - static_cast<off_t>(size)) == 0;
}

// One write for each line, so that lines of concurrent programs do not mix; more writes only when
// the disk has no room for the whole line.
bool Append(int file, const std::string& line) {
  size_t done = 0;
  while (done < line.size()) {
    const ssize_t written = write(file, &line[done], line.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) break;
    done += static_cast<size_t>(written);
  }
  if (done == line.size()) return true;
  const int error = errno;
  if (done > 0) TakeBack(file, done);
  errno = error;
  return false;
}

}  // namespace

std::string HexArgument(const char* name, const void* bytes, size_t size) {
  std::string text = std::string(" ") + name + "=";
  for (size_t i = 0; i < size; ++i) {
    const uint8_t byte = static_cast<const uint8_t*>(bytes)[i];
    text += {kDigits[byte >> 4], kDigits[byte & 0xF]};
  }
  return text;
}

std::string QuotedArgument(const char* name, std::string_view text) {
  std::string quoted = std::string(" ") + name + "=\"";
  for (const char character : text) {
    const auto byte = static_cast<uint8_t>(character);
    if (character == '"' || character == '\\') quoted += '\\';
    if (byte >= 0x20 && byte != 0x7F) {
      quoted += character;
    } else {
      quoted += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
    }
  }
  return quoted + '"';
}

std::string TimeArgument(int64_t ns) {
  std::string time = std::to_string(ns / 1000);
  return " time=" + time.insert(time.size() - 6, ".") + " pid=" + std::to_string(getpid());
}

bool WriteJournal(const std::string& path, const std::string& line) {
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
  const int file = open(path.c_str(), flags, 0666);
  if (file < 0) return false;
  const bool ok = Append(file, line);
  const int error = errno;
  close(file);
  errno = error;
  return ok;
}

}  // namespace corvane
