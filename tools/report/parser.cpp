#include "parser.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "lines.h"
#include "pattern.h"

namespace report {

namespace {

constexpr size_t kDeepest = 3;         // no report indents more; bounds the recursion of outputs
constexpr size_t kLongestLabel = 100;  // the longest of a report has less than half as many
constexpr size_t kMostMembers = 1024;  // because a member is searched one by one

constexpr const char* kUnknown = "cannot be read";
constexpr const char* kRepeated = "was said before";
constexpr const char* kUntitled = "is indented, but belongs to no title";
constexpr const char* kTooMany = "is one too many";

bool IsLabel(std::string_view label) {
  const bool printable =
      std::all_of(label.begin(), label.end(), [](char c) { return c >= ' ' && c < '\x7f'; });
  return printable && label.size() <= kLongestLabel && !KeyOf(label).empty();
}

template <size_t kCount>
bool IsAmong(std::string_view text, const std::string_view (&patterns)[kCount]) {
  return std::any_of(std::begin(patterns), std::end(patterns),
                     [text](std::string_view pattern) { return Fits(pattern, text); });
}

Json ReadMember(std::string_view label, std::string_view value) {
  if (IsAmong(label, kTextLabels)) return {{KeyOf(label), value}};
  if (IsAmong(label, kListLabels)) return {{KeyOf(label), ReadList(value)}};
  for (const StateLabel& state : kStateLabels) {
    if (label != state.label) continue;
    const bool known = !ReadValue(value).is_null();
    return {{KeyOf(label), known ? Json(value) : Json()}, {state.key, known && value != state.off}};
  }
  if (label == kUnitInWords) label = kUnitInBrackets;
  const size_t bracket = label.find(" (");
  const Json read = ReadValue(value);
  if (bracket != std::string_view::npos && label.ends_with(')') && read.is_number()) {
    const Unit* unit = FindUnit(label.substr(bracket + 2, label.size() - bracket - 3));
    if (unit != nullptr) return {{KeyOf(label.substr(0, bracket)), WithUnit(read, unit->name)}};
  }
  return {{KeyOf(label), read}};
}

// The captures as members.
Json MembersOf(const std::vector<Capture>& values) {
  Json members = Json::object();
  for (const Capture& value : values) {
    members[Json::json_pointer("/" + std::string(value.name))] = ReadValue(Trim(value.text));
  }
  return members;
}

// Null for a text that is not a message.
const MessageLine* FindMessage(std::string_view text) {
  for (const MessageLine& line : kMessageLines) {
    if (Fits(line.pattern, text)) return &line;
  }
  return nullptr;
}

const MessageKeys& KeysOf(MessageKind kind) {
  return kMessageKeys[static_cast<size_t>(kind)];
}

// No line of a report can set such a member.
bool IsReserved(std::string_view key) {
  return key == kFormatKey ||
         std::ranges::any_of(kMessageKeys, [key](const auto& keys) { return key == keys.list; });
}

}  // namespace

ReportParser::ReportParser(std::function<void(const Json&)> done) : done_(std::move(done)) {}

const char* ReportParser::ReadLine(std::string_view line) {
  const size_t depth = std::min(line.find_first_not_of('\t'), line.size());
  const std::string_view text = Trim(line.substr(depth));
  if (text.empty()) {
    open_.resize(std::min<size_t>(open_.size(), 1));
    return nullptr;
  }
  if (line[depth] == ' ') return kUnknown;
  if (depth > kDeepest) return kUntitled;
  const char* problem = Read(depth, text);
  if (problem == nullptr && depth == 0 && IsAmong(text, kLastLines)) Finish();
  return problem;
}

void ReportParser::Finish() {
  Json report = Json::object();
  for (const MessageKeys& keys : kMessageKeys) {
    if (messages_.contains(keys.list)) report[keys.list] = std::move(messages_[keys.list]);
  }
  report.update(report_);
  BeginReport();
  if (!report.empty()) done_(report);
}

void ReportParser::BeginReport() {
  report_ = Json::object();
  messages_ = Json::object();
  open_ = {Path()};
  title_ = Path();
}

const char* ReportParser::Read(size_t depth, std::string_view text) {
  if (depth == 0 && ReadMessage(text)) return nullptr;
  if (depth >= open_.size()) return kUntitled;
  std::vector<Capture> values;
  for (const SpecialLine& line : kSpecialLines) {
    values.clear();
    if (MatchPattern(line.pattern, text, values)) return ReadSpecial(line, values, depth);
  }
  return ReadLabel(depth, text);
}

bool ReportParser::ReadMessage(std::string_view text) {
  const MessageLine* line = FindMessage(text);
  if (line == nullptr) return false;
  if (line->begins) Finish();
  messages_[KeysOf(line->kind).list].push_back(text);
  failed_ = failed_ || line->kind == MessageKind::kFailure;
  return true;
}

const char* ReportParser::ReadSpecial(const SpecialLine& line, std::vector<Capture>& values,
                                      size_t depth) {
  if (line.kind == LineKind::kMessage) {
    const MessageLine* message = FindMessage(values.back().text);
    if (message == nullptr) return kUnknown;
    values.back().name = KeysOf(message->kind).text;
  }
  const auto is_error = [](const Capture& value) { return value.name == "error"; };
  failed_ = failed_ || std::ranges::any_of(values, is_error);
  if (line.kind == LineKind::kReport && depth == 0) Finish();
  const bool element = line.kind != LineKind::kValues && line.kind != LineKind::kReport;
  return element ? ReadElement(line, values, depth) : SetMembers(depth, MembersOf(values));
}

// The first member identifies an element within its array.
const char* ReportParser::ReadElement(const SpecialLine& line, const std::vector<Capture>& values,
                                      size_t depth) {
  const bool open = line.kind == LineKind::kOpen;
  if (open && depth != 0) return kUnknown;
  const Json element = MembersOf(values);
  Path array = (open ? title_ : Enclosing(depth)) / std::string(line.array);
  if (report_.contains(array)) {
    const Json& present = report_[array];
    if (!present.is_array()) return kRepeated;
    if (present.size() >= kMostMembers) return kTooMany;
    const bool repeated = std::any_of(present.begin(), present.end(), [&](const Json& other) {
      return other.is_object() && other.front() == element.front();
    });
    if (repeated && depth > 0) return kRepeated;
    if (repeated) {
      Finish();
      array = Path() / std::string(line.array);
    }
  }
  Json& elements = report_[array];
  elements.push_back(element);
  const Path path = array / (elements.size() - 1);
  open_.resize(depth + 1);
  if (line.kind == LineKind::kHeading) open_.push_back(path);
  if (open) open_ = {path};
  return nullptr;
}

const char* ReportParser::ReadLabel(size_t depth, std::string_view text) {
  const size_t colon = text.find(':');
  if (colon == std::string_view::npos) return kUnknown;
  const std::string_view label = Trim(text.substr(0, colon));
  const std::string_view rest = text.substr(colon + 1);
  if (!IsLabel(label) || (!rest.empty() && rest[0] != ' ')) return kUnknown;
  const std::string_view value = Trim(rest);
  const bool may_be_empty = IsAmong(label, kTextLabels) || IsAmong(label, kListLabels);
  if (value.empty() && !may_be_empty) return OpenTitle(depth, KeyOf(label));
  return SetMembers(depth, ReadMember(label, value));
}

const char* ReportParser::SetMembers(size_t depth, const Json& members) {
  open_.resize(depth + 1);
  if (report_[open_[depth]].size() >= kMostMembers) return kTooMany;
  for (const auto& [key, value] : members.items()) {
    if (!MakeRoom(depth, open_[depth] / key)) return kRepeated;
  }
  report_[open_[depth]].update(members);
  return nullptr;
}

const char* ReportParser::OpenTitle(size_t depth, const std::string& key) {
  const Path path = Enclosing(depth) / key;
  if (report_[path.parent_pointer()].size() >= kMostMembers) return kTooMany;
  if (!MakeRoom(depth, path)) return kRepeated;
  report_[path] = Json::object();
  open_.resize(depth + 1);
  open_.push_back(path);
  if (depth == 0) title_ = path;
  return nullptr;
}

// When a member of the report itself comes again, the next report begins; a deeper one is an error.
bool ReportParser::MakeRoom(size_t depth, const Path& path) {
  const bool top = path.parent_pointer().empty();
  if (top && IsReserved(path.back())) return false;
  if (!report_.contains(path)) return true;
  if (depth == 0 && top) Finish();
  return depth == 0 && top;
}

// The object around a title or heading of this depth. One without indentation closes all others.
ReportParser::Path ReportParser::Enclosing(size_t depth) {
  if (depth == 0) open_ = {Path()};
  return open_[depth];
}

}  // namespace report
