// Pins what the program relies on in <argtable3.h>, whichever library stands behind it.
#include <argtable3.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/simulation.h"

namespace {

using Words = std::vector<const char*>;

// Owns the options of one test.
struct Table {
  explicit Table(std::vector<void*> options) : entries(std::move(options)) {
    entries.push_back(arg_end(20));
  }
  Table(const Table&) = delete;
  ~Table() { arg_freetable(entries.data(), entries.size()); }

  int Parse(Words words) {
    words.insert(words.begin(), "leaf");  // argtable skips it
    return arg_parse(static_cast<int>(words.size()), const_cast<char**>(words.data()),
                     entries.data());
  }

  std::string Glossary() {
    char* text = nullptr;
    size_t size = 0;
    FILE* fp = open_memstream(&text, &size);
    arg_print_glossary_gnu(fp, entries.data());
    fclose(fp);
    const std::unique_ptr<char, decltype(&free)> owner(text, free);
    return text;
  }

  std::vector<void*> entries;
};

TEST(Argtable3, GlossaryIsAlignedAndWrapped) {
  std::vector<void*> options = {arg_str0("d", "device", "<n>", "text"),
                                arg_str0("ab", nullptr, "<n>", "text"),
                                arg_str0(nullptr, nullptr, "<n>", "text"),
                                arg_lit0("x", "hidden", nullptr),
                                arg_lit0(nullptr, "loop,again", "text"),
                                arg_rex0(nullptr, "mode", "a|b", nullptr, 0, "text"),
                                arg_lit0(nullptr, "twenty-five-in-all!", "text"),
                                arg_lit0(nullptr, "twenty-six-and-over!", "text")};
  const std::string full(52, 'w');
  const std::string texts[] = {"",          " abc\n",           full,        full + " \t x",
                               full + "\n", "\n" + full + " x", full + "xy", "one two  " + full};
  for (const std::string& text : texts) options.push_back(arg_lit0("x", nullptr, text.c_str()));
  EXPECT_EQ(Table(options).Glossary(), ReadFile(CORVANE_GOLDEN "/glossary.txt"));
}

TEST(Argtable3, PatternMatchesTheWholeValue) {
  const struct {
    const char* pattern;
    int flags;
    Words accepted, refused;
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
    Table table({rex});
    for (const char* value : refused) EXPECT_EQ(table.Parse({"--mode", value}), 1) << value;
    for (const char* value : accepted) {
      EXPECT_EQ(table.Parse({"--mode", value}), 0) << value;
      EXPECT_EQ(rex->sval[0], value);
    }
  }
}

TEST(Argtable3, CommandLinesAreReadAlike) {
  arg_int* count = arg_int0("n", "count", "<n>", "Count");
  Table table({count, arg_str0("d", "device", "<n>", "Device"), arg_lit0(nullptr, "loop", ""),
               arg_rex1("m", nullptr, "a", "<a>", 0, "Must")});
  const std::pair<Words, int> accepted[] = {
      {{"-m", "a", "--count=0x10"}, 16},        {{"-m", "a", "--count", "0b11"}, 3},
      {{"-ma", "--count=1KB"}, 1024},           {{"-m", "a", "--count=-5"}, -5},
      {{"--co=3", "--dev", "x", "-m", "a"}, 3}, {{"-n", "4", "-m", "a", "--"}, 4},
  };
  for (const auto& [words, value] : accepted) {
    EXPECT_EQ(table.Parse(words), 0) << value;
    EXPECT_EQ(count->ival[0], value);
  }
  for (const Words& words : std::initializer_list<Words>{{"-ma", "--count=5x"},
                                                         {"-ma", "--count=99999999999"},
                                                         {"-ma", "--device="},
                                                         {"-ma", "--device", ""},
                                                         {"-ma", "stray"},
                                                         {"-ma", "--", "--count=1"},
                                                         {"-ma", "--unknown"},
                                                         {"-ma", "--loop", "--loop"},
                                                         {"-ma", "-ma"},
                                                         {"-m"},
                                                         {}}) {
    EXPECT_GT(table.Parse(words), 0) << (words.empty() ? "" : words.back());
  }
}

}  // namespace
