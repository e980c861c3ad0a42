// The command line: help of every node, the dispatcher, the getters.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "line/node.h"
#include "shell/command_table.h"
#include "support/simulation.h"

using namespace corvane;

namespace {

// Expects the words to print the node's page.
void ExpectHelp(const Simulation& simulation, const std::string& words, std::string node,
                int status) {
  const Result result = simulation.Run(words);
  std::replace(node.begin(), node.end(), ' ', '-');
  const std::string page = CORVANE_GOLDEN "/help/" + (node.empty() ? "root" : node) + ".txt";
  if (getenv("CORVANE_UPDATE_GOLDEN") != nullptr) WriteFile(page, result.out);
  EXPECT_EQ(result.out, ReadFile(page)) << words;
  EXPECT_EQ(result.err, "") << words;
  EXPECT_EQ(result.status, status) << words;
  EXPECT_TRUE(simulation.Calls().empty()) << words;
}

// Expects the pages of the node and all below it; returns their number.
int ExpectPages(const Simulation& simulation, const CommandNode& node, const std::string& words) {
  ExpectHelp(simulation, words + " help", words, 0);
  int pages = 1;
  for (const CommandNode* child : node.children) {
    pages += ExpectPages(simulation, *child, words + (words.empty() ? "" : " ") + child->name);
  }
  return pages;
}

// With CORVANE_UPDATE_GOLDEN set the files are written instead; read what changed before you
// commit.
TEST(Help, OfEveryNodeIsAsItWas) {
  const Simulation simulation("");
  const int pages = ExpectPages(simulation, BuildCommandTree(), "");
  const std::filesystem::directory_iterator files(CORVANE_GOLDEN "/help");
  EXPECT_EQ(std::distance(begin(files), end(files)), pages);
  ExpectHelp(simulation, "help features", "", 0);
}

TEST(Dispatcher, AnswersWhatItCannotRunWithUsage) {
  // A node, and the words behind it.
  const std::pair<std::string, std::vector<const char*>> cases[] = {
      {"", {"", "unknown", "List", "--device 1 features show"}},
      {"features", {"", "sho"}},
      {"features show", {"stray", "--device", "-d 0 -d 1", "--device="}},
      {"features set",
       {"--inline offon", "--inline xoff", "--slicing many", "--slicing=5x",
        "--slicing=99999999999", "-- --slicing=1", "--inline on --inline on", "--firmware_mode 1Gx",
        "--firmware_mode=", "--unknown"}},
      {"directcapture start", {"--loop --loop", "--loop=1"}},
      {"timing config", {"--tssource gpsx"}},
      {"dpi enable",
       {"-d 0 help", "--dpihex 254a1d8f90041235bed4054a1d8f9004", "--dpitxt short",
        "--dpimask 0x1234", "--dpimask 0x1000000ff"}},
      {"update", {"", "--firmware a --firmware b"}},
  };
  const Simulation simulation("");
  for (const auto& [node, endings] : cases) {
    for (const char* words : endings) ExpectHelp(simulation, node + " " + words, node, 255);
  }
}

// What no command makes use of: keys that a leaf does not have, and makers of nothing.
TEST(Getters, FallBackWhereThereIsNothing) {
  static const CommandNode& leaf = *MakeNode("leaf", nullptr, {}, {}, nullptr);  // never freed
  EXPECT_FALSE(IsGiven(leaf, "none"));
  EXPECT_EQ(Integer(leaf, "none", 5), 5);
  EXPECT_EQ(Real(leaf, "none", 0.5), 0.5);
  EXPECT_EQ(OnOff(leaf, "none"), kNotGiven);
  EXPECT_EQ(Text(leaf, "none", "x"), "x");
  EXPECT_EQ(Text(leaf, "none", nullptr), std::nullopt);
  EXPECT_EQ(leaf.description, "");
  EXPECT_EQ(MakeNode(nullptr, "text", {}, {}, nullptr), nullptr);
  EXPECT_EQ(MakeNamedArg("key", nullptr), nullptr);
}

}  // namespace
