// What the program relies on in patterns, whichever argtable3 stands behind them; the help pages
// show the rest.
#include <argtable3.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(Argtable3, PatternsMatchTheWholeValue) {
  const struct {
    const char* pattern;
    int flags;
    std::vector<const char*> accepted, refused;
  } rows[] = {
      {"^on|off$", 2, {"on", "off"}, {"onx", "xoff", "offon", "ON"}},
      {"^on|off$", 2 | ARG_REX_ICASE, {"ON", "oFf"}, {"ONX"}},
      {"^[0x]*[0-1a-fA-F]{8}", 0, {"0x000000ff", "000000ff"}, {"0x1000000ff", "0x00"}},
#ifdef arg_rexn  // defined by our own library, which compiles a pattern only to use it
      {"(", 0, {}, {"("}},
#endif
  };
  for (const auto& [pattern, flags, accepted, refused] : rows) {
    arg_rex* rex = arg_rex0(nullptr, "mode", pattern, "<mode>", flags, "Mode");
    void* table[] = {rex, arg_end(20)};
    const auto errors = [&table](const char* value) {
      const char* words[] = {"leaf", "--mode", value};
      return arg_parse(3, const_cast<char**>(words), table);
    };
    for (const char* value : refused) EXPECT_EQ(errors(value), 1) << value;
    for (const char* value : accepted) EXPECT_EQ(errors(value), 0) << value;
    arg_freetable(table, 2);
  }
}

}  // namespace
