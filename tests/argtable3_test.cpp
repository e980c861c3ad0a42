// Pins what the program relies on in <argtable3.h>, whichever library stands behind it.
#include <argtable3.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

template <typename Print>
std::string Printed(Print print) {
  char* text = nullptr;
  size_t size = 0;
  FILE* fp = open_memstream(&text, &size);
  print(fp);
  fclose(fp);
  std::string result(text, size);
  free(text);
  return result;
}

// Owns the options of one test and the words they were parsed from.
struct Table {
  explicit Table(std::vector<void*> options) : entries(std::move(options)) {
    entries.push_back(arg_end(20));
  }
  Table(const Table&) = delete;
  ~Table() { arg_freetable(entries.data(), entries.size()); }

  int Parse(const std::vector<std::string>& arguments) {
    words = arguments;
    words.insert(words.begin(), "leaf");  // argtable skips it
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    return arg_parse(static_cast<int>(words.size()), argv.data(), entries.data());
  }
  std::string Glossary() {
    return Printed([&](FILE* fp) { arg_print_glossary_gnu(fp, entries.data()); });
  }

  std::vector<void*> entries;
  std::vector<std::string> words;
};

TEST(Argtable3, GlossaryShowsSyntaxInItsColumn) {
  Table table({arg_str0("d", "device", "<n>", "text"), arg_str0("ab", nullptr, "<n>", "text"),
               arg_str0(nullptr, nullptr, "<n>", "text"), arg_lit0("x", "hidden", nullptr),
               arg_lit0(nullptr, "loop,again", "text"),
               arg_lit0(nullptr, "twenty-five-in-all!", "text"),
               arg_lit0(nullptr, "twenty-six-and-over!", "text")});
  EXPECT_EQ(table.Glossary(),
            "  -d, --device=<n>          text\n"
            "  -a, -b <n>                text\n"
            "  <n>                       text\n"
            "      --loop, --again       text\n"
            "      --twenty-five-in-all! text\n"
            "      --twenty-six-and-over! \n"
            "                            text\n\n");
}

TEST(Argtable3, GlossaryWrapsItsText) {
  const std::string margin(28, ' '), full(52, 'w');
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},
      {" abc\n", "abc\n"},
      {full, full + "\n"},
      {full + " \t x", full + "\n" + margin + "x\n"},
      {full + "\n", full + "\n" + margin + "\n"},
      {"\n" + full + " x", "\n" + margin + full + "\n" + margin + "x\n"},
      {full + "xy", full + "\n" + margin + "xy\n"},
      {"one two  " + full, "one two\n" + margin + full + "\n"},
      {"Delay between two refreshes in ms (defaults to 1000).",
       "Delay between two refreshes in ms (defaults to\n" + margin + "1000).\n"},
  };
  for (const auto& [text, printed] : rows) {
    EXPECT_EQ(Table({arg_lit0("x", nullptr, text.c_str())}).Glossary(),
              "  -x                        " + printed + "\n");
  }
}

TEST(Argtable3, PatternMatchesTheWholeValue) {
  const struct {
    const char* pattern;
    int flags;
    std::vector<std::string> accepted, refused;
  } rows[] = {
      {"^on|off$", 0, {"on", "off"}, {"onx", "xoff", "offon", "ON"}},
      {"^on|off$", ARG_REX_ICASE, {"ON", "oFf"}, {"ONX"}},
      {"^on|off$", 2, {"on"}, {"ON"}},
      {"^on|off$", 3, {"ON"}, {"offon"}},
      {"^[0x]*[0-1a-fA-F]{8}", 0, {"0x000000ff", "000000ff"}, {"0x1000000ff", "0x00"}},
#ifdef arg_rexn  // defined by our own library, which compiles a pattern only to use it
      {"(", 0, {}, {"("}},
#endif
  };
  for (const auto& row : rows) {
    arg_rex* rex = arg_rex0(nullptr, "mode", row.pattern, "<mode>", row.flags, "Mode");
    Table table({rex});
    for (const auto& value : row.refused) EXPECT_EQ(table.Parse({"--mode", value}), 1) << value;
    for (const auto& value : row.accepted) {
      EXPECT_EQ(table.Parse({"--mode", value}), 0) << value;
      EXPECT_EQ(rex->sval[0], table.words[2].data());
    }
  }
}

TEST(Argtable3, PatternCountsItsOccurrences) {
  Table table({arg_rex0(nullptr, "mode", "a|b", nullptr, 0, "Mode"),
               arg_rex1("m", nullptr, "a", "<must>", 0, "Must")});
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"-m", "a", "--mode=b", "--mode=a"}, "--mode=a|b\n"},
      {{"-m", "a", "--mode=c"}, "--mode=a|b\n"},
      {{"--mode=b"}, "-m <must>\n"},
  };
  for (const auto& [words, named] : rows) {
    EXPECT_EQ(table.Parse(words), 1);
    auto* end = static_cast<struct arg_end*>(table.entries.back());
    const std::string error = Printed([&](FILE* fp) { arg_print_errors(fp, end, "leaf"); });
    EXPECT_TRUE(error.ends_with(named)) << error;
  }
  EXPECT_EQ(table.Parse({"-m", "a", "--mode=b"}), 0);
}

TEST(Argtable3, CommandLinesAreReadAlike) {
  using Words = std::vector<std::string>;
  arg_int* count = arg_int0("n", "count", "<n>", "Count");
  Table table({count, arg_str0("d", "device", "<n>", "Device"), arg_lit0(nullptr, "loop", "")});
  const std::pair<Words, int> accepted[] = {
      {{"--count=0x10"}, 16}, {{"--count", "0b11"}, 3},      {{"--count=1KB"}, 1024},
      {{"--count=-5"}, -5},   {{"--co=3", "--dev", "x"}, 3}, {{"-n", "4", "--"}, 4},
  };
  for (const auto& [words, value] : accepted) {
    EXPECT_EQ(table.Parse(words), 0) << words[0];
    EXPECT_EQ(count->ival[0], value) << words[0];
  }
  const Words refused[] = {{"--count=5x"},   {"--count=99999999999"}, {"--device="},
                           {"--device", ""}, {"--", "--count=1"},     {"stray"},
                           {"--unknown"},    {"--loop", "--loop"}};
  for (const auto& words : refused) EXPECT_GT(table.Parse(words), 0) << words[0];
}

}  // namespace
