// Labels of metrics.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace report {

// Names and values in the order in which they are written.
using Labels = std::vector<std::pair<std::string, std::string>>;

// True when the text format takes it for a label's name.
bool IsLabelName(std::string_view name);

// The value of the label; null when there is none.
const std::string* FindLabel(const Labels& labels, std::string_view name);

// With one label more, or with this value for the one of that name.
Labels WithLabel(Labels labels, const std::string& name, const std::string& value);

// With those of the others whose names are not there.
Labels WithOthers(Labels labels, const Labels& others);

// As the text format has them, `{a="b",c="d"}`; empty without any. Bytes that are no UTF-8 become
// U+FFFD.
std::string ToText(const Labels& labels);

}  // namespace report
