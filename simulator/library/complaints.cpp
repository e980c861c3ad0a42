#include "library/complaints.h"

#include <cstdio>
#include <set>

namespace simulator {

bool Complain(const std::string& text) {
  fprintf(stderr, "corvane-simulator: %s\n", text.c_str());
  return false;
}

bool ComplainOnce(const std::string& text) {
  static std::set<std::string, std::less<>> told;
  return told.insert(text).second && Complain(text);
}

}  // namespace simulator
