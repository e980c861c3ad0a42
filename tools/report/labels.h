// Labels of metrics.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace report {

// Names and values in the order in which they are written.
using Labels = std::vector<std::pair<std::string, std::string>>;

// True when the text format accepts it as the name of a label.
bool IsLabelName(std::string_view name);

// The value of the label; null when there is none.
const std::string* FindLabel(const Labels& labels, std::string_view name);

// The labels with one more, or with this value if the name is there already.
Labels WithLabel(Labels labels, const std::string& name, const std::string& value);

// The labels, and those of the others whose names are missing.
Labels WithOthers(Labels labels, const Labels& others);

// As the text format has them, `{a="b",c="d"}`; empty without any. Bytes that are not UTF-8
// become U+FFFD.
std::string ToText(const Labels& labels);

}  // namespace report
