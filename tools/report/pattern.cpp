#include "pattern.h"

#include <algorithm>

namespace report {

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsWord(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7f'; });
}

bool Admits(char kind, std::string_view text) {
  if (kind == '#') return IsWholeNumber(text);
  return kind == '*' || IsWord(text);
}

size_t SkipBlanks(std::string_view text, size_t at) {
  while (at < text.size() && text[at] == ' ') ++at;
  return at;
}

// The most characters that a placeholder can take.
size_t Reach(char kind, std::string_view text) {
  return kind == '*' ? text.size() : std::min(text.find(' '), text.size());
}

bool MatchPlaceholder(std::string_view pattern, std::string_view text,
                      std::vector<Capture>& captures) {
  const size_t end = pattern.find('}');
  const char kind = pattern[1];
  const std::string_view name = pattern.substr(2, end - 2);
  const std::string_view rest = pattern.substr(end + 1);
  // At the end of the pattern a placeholder takes everything or nothing: no need to search.
  const size_t least = rest.empty() ? text.size() : 0;
  for (size_t length = Reach(kind, text) + 1; length-- > least;) {
    const std::string_view taken = text.substr(0, length);
    const bool next_fits = rest.empty() || (length < text.size() && text[length] == rest[0]);
    if (!next_fits || !Admits(kind, taken)) continue;
    captures.push_back({name, taken});
    if (MatchPattern(rest, text.substr(length), captures)) return true;
    captures.pop_back();
  }
  return false;
}

}  // namespace

bool IsWholeNumber(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

bool MatchPattern(std::string_view pattern, std::string_view text, std::vector<Capture>& captures) {
  size_t at = 0;
  for (size_t p = 0; p < pattern.size(); ++p) {
    if (pattern[p] == '{') return MatchPlaceholder(pattern.substr(p), text.substr(at), captures);
    if (at >= text.size() || text[at] != pattern[p]) return false;
    at = pattern[p] == ' ' ? SkipBlanks(text, at) : at + 1;
  }
  return at == text.size();
}

bool Fits(std::string_view pattern, std::string_view text) {
  std::vector<Capture> captures;
  return MatchPattern(pattern, text, captures);
}

}  // namespace report
