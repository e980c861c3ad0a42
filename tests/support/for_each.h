// Many runs at a time.
#pragma once

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

// Runs work(0), work(1) and so on up to the count, several at a time.
template <class Work>
void ForEach(size_t count, Work work) {
  std::atomic<size_t> next = 0;
  const auto serve = [&] {
    for (size_t job; (job = next++) < count;) work(job);
  };
  std::vector<std::jthread> threads;
  // A command waits most of its time, for the disk or for five seconds.
  const unsigned processors = std::max(2U, std::thread::hardware_concurrency());
  while (threads.size() < 8 * processors) threads.emplace_back(serve);
}
