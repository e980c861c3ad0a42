// Line patterns: literal text with placeholders, enough to describe every line that is no plain
// "label : value".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace report {

// What a placeholder took out of a line.
struct Capture {
  std::string_view name;  // of the pattern
  std::string_view text;  // of the line
};

// True when the whole text fits the pattern; the captures are then in the order of the pattern.
// {#name} takes a whole number, {=name} one printable word, {*name} the longest text, maybe empty.
// Runs of blanks in the text fit one blank of the pattern.
bool MatchPattern(std::string_view pattern, std::string_view text, std::vector<Capture>& captures);

// The same without a wish for the captures.
bool Fits(std::string_view pattern, std::string_view text);

// True for a number without fraction, which may have a sign.
bool IsWholeNumber(std::string_view text);

}  // namespace report
