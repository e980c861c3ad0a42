// Reads reports of the utility line by line. One grammar serves all of them: a title ends with a
// colon and opens an object, tabs show what belongs to it, "label : value" sets a member; lines.h
// lists the exceptions.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "value.h"

namespace report {

class ReportParser {
 public:
  // Calls done with each report as soon as it is complete.
  explicit ReportParser(std::function<void(const Json&)> done);

  // Reads one line without its line end. Returns null, or the reason why it cannot be read; such a
  // line changes nothing.
  const char* ReadLine(std::string_view line);

  // Call it at the end of the input: hands over the last report.
  void Finish();

  // True when a report has said that something failed.
  bool failed() const { return failed_; }

 private:
  using Path = Json::json_pointer;

  const char* Read(size_t depth, std::string_view text);
  bool ReadMessage(std::string_view text);
  const char* ReadSpecial(const struct SpecialLine& line, std::vector<struct Capture>& values,
                          size_t depth);
  const char* ReadElement(const struct SpecialLine& line, const std::vector<struct Capture>& values,
                          size_t depth);
  const char* ReadLabel(size_t depth, std::string_view text);
  const char* SetMembers(size_t depth, const Json& members);
  const char* OpenTitle(size_t depth, const std::string& key);
  bool MakeRoom(size_t depth, const Path& path);
  Path Enclosing(size_t depth);
  void BeginReport();

  std::function<void(const Json&)> done_;
  Json report_ = Json::object();
  Json messages_ = Json::object();     // lists by their keys
  std::vector<Path> open_ = {Path()};  // by depth: the object that lines of that depth belong to
  Path title_;                         // the last title without indentation
  bool failed_ = false;
};

}  // namespace report
