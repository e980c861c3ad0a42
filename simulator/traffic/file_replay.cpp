#include "traffic/file_replay.h"

#include <stdio_ext.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>

namespace simulator {
namespace {

constexpr int64_t kSecond = 1'000'000'000;
// In 2067. A file may claim any time; the sum of three up to this one does not overflow.
constexpr int64_t kLatestNs = std::numeric_limits<int64_t>::max() / 3;

int64_t TimeOf(const pcap_pkthdr& header) {
  const int64_t seconds = std::clamp<int64_t>(header.ts.tv_sec, 0, kLatestNs / kSecond - 1);
  return seconds * kSecond + std::clamp<int64_t>(header.ts.tv_usec, 0, kSecond);
}

}  // namespace

// The file is opened here, for libpcap reads it with the standard library: mapping it (m) saves one
// copy of the bytes. If the file is cut short meanwhile, the process ends, and with it the capture.
bool FileReplay::OpenFile(std::string& reason) {
  pcap_.reset();
  FILE* file = fopen(source_.file.c_str(), "rbme");
  if (file == nullptr) {
    reason = "cannot read " + source_.file + ": " + strerror(errno);
    return false;
  }
  __fsetlocking(file, FSETLOCKING_BYCALLER);  // no other thread reads it
  char error[PCAP_ERRBUF_SIZE] = "";
  pcap_.reset(pcap_fopen_offline_with_tstamp_precision(file, PCAP_TSTAMP_PRECISION_NANO, error));
  if (pcap_ == nullptr) {
    fclose(file);
    reason = "cannot read " + source_.file + ": " + error;
    return false;
  }
  if (pcap_datalink(pcap_.get()) == DLT_EN10MB) return true;
  reason = source_.file + " has no Ethernet frames";
  return false;
}

bool FileReplay::Open(const PortSource& source, uint8_t port, int64_t rate, int64_t start_ns,
                      std::string& reason) {
  source_ = source;
  port_ = port;
  rate_ = source.rate >= 0 ? source.rate : rate;
  start_ns_ = start_ns;
  return OpenFile(reason);
}

// Begins again, one mean interval of the frames later. Frames may not be in the order of their
// times. False at the end.
bool FileReplay::Rewind() {
  if (!source_.repeat || round_count_ == 0) return false;
  const int64_t span = std::max<int64_t>(0, last_ns_ - first_ns_);
  const int64_t gap =
      round_count_ > 1 && span > 0 ? span / static_cast<int64_t>(round_count_ - 1) : 1'000'000;
  shift_ns_ = std::min(shift_ns_ + span + gap, kLatestNs);
  round_count_ = 0;
  return OpenFile(reason_);
}

int64_t FileReplay::DueTime(int64_t file_ns) {
  if (source_.pace == Pace::kRate) return TimeOfFrame(start_ns_, count_, rate_);
  if (source_.pace == Pace::kFast) return file_ns + shift_ns_;
  return start_ns_ + file_ns - first_ns_ + shift_ns_;
}

void FileReplay::Shift(int64_t by_ns) {
  if (keeps_times()) return;
  start_ns_ += by_ns;
  due_ns_ += by_ns;
  frame_.time_ns += by_ns;
}

Supply FileReplay::Read() {
  pcap_pkthdr* header = nullptr;
  const u_char* bytes = nullptr;
  int result = pcap_next_ex(pcap_.get(), &header, &bytes);
  if (result == PCAP_ERROR_BREAK && Rewind()) result = pcap_next_ex(pcap_.get(), &header, &bytes);
  if (result == PCAP_ERROR_BREAK && reason_.empty()) return Supply::kEnded;
  if (result != 1) {
    if (reason_.empty()) reason_ = source_.file + ": " + pcap_geterr(pcap_.get());
    return Supply::kFailed;
  }
  const int64_t file_ns = TimeOf(*header);
  if (count_ == 0) first_ns_ = file_ns;
  last_ns_ = file_ns;
  due_ns_ = DueTime(file_ns);
  const uint32_t wire_length = std::max(header->caplen, header->len);
  frame_ = {bytes, header->caplen, wire_length, port_, true, false, due_ns_};
  ++count_;
  ++round_count_;
  has_frame_ = true;
  return Supply::kFrame;
}

Supply FileReplay::Next(int64_t now_ns, const StreamClock& clock, RawFrame& frame) {
  const bool fast = source_.pace == Pace::kFast;
  if (source_.pace == Pace::kRate && rate_ == 0) {
    return clock.end_ns <= now_ns ? Supply::kEnded : Supply::kLater;
  }
  if (!has_frame_) {
    const Supply supply = Read();
    if (supply != Supply::kFrame) return supply;
  }
  if (fast ? clock.end_ns <= now_ns : due_ns_ > clock.end_ns) return Supply::kEnded;
  if (!fast && due_ns_ > now_ns) return Supply::kLater;
  frame = frame_;
  has_frame_ = false;
  return Supply::kFrame;
}

}  // namespace simulator
