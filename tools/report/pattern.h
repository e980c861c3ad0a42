// Line patterns: literal text with placeholders, enough for every line that is not plain
// "label : value".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace report {

// What a placeholder takes from a line.
struct Capture {
  std::string_view name;  // of the pattern
  std::string_view text;  // of the line
};

// True when the whole text fits the pattern; the captures are then in the order of the pattern.
// {#name} takes a whole number, {=name} one printable word, {*name} the longest text, maybe empty.
// One blank of the pattern fits any number of blanks in the text.
bool MatchPattern(std::string_view pattern, std::string_view text, std::vector<Capture>& captures);

// The same without captures.
bool Fits(std::string_view pattern, std::string_view text);

// True for a number without fraction, which may have a sign.
bool IsWholeNumber(std::string_view text);

}  // namespace report
