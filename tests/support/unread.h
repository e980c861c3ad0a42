// corvane-report's reading, in the test's own process.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "metrics.h"
#include "output.h"
#include "parser.h"

// The lines that cannot be read; sentences of nmea are no report. Whatever the text is, its reports
// come out as JSON.
inline std::vector<std::string> Unread(std::string_view text) {
  using namespace report;
  std::vector<std::string> unread;
  Metrics metrics({});
  ReportParser parser([&metrics](const Json& json) {
    metrics.Add(json);
    EXPECT_TRUE(Json::accept(ToLine(json, "")) && Json::accept(ToJson(json)));
  });
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!line.starts_with('$') && parser.ReadLine(line) != nullptr) unread.emplace_back(line);
  }
  parser.Finish();
  metrics.Text();
  return unread;
}
