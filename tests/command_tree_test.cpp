// The command line: help of every node, the dispatcher, the getters.
#include "shell/command_tree.h"

#include <argtable3.h>
#include <gtest/gtest.h>

#include "device/status.h"
#include "shell/command_table.h"
#include "support/simulation.h"

namespace {

// Every node's words below the root, the root's own first.
void CollectPaths(const CommandNode& node, const std::string& words,
                  std::vector<std::string>& paths) {
  paths.push_back(words);
  if (node.children == nullptr) return;
  for (const CommandNode* const* child = node.children; *child != nullptr; ++child) {
    CollectPaths(**child, words.empty() ? (*child)->name : words + " " + (*child)->name, paths);
  }
}

std::string GoldenFile(std::string words) {
  for (char& c : words) c = c == ' ' ? '-' : c;
  return std::string(CORVANE_GOLDEN) + "/help/" + (words.empty() ? "root" : words) + ".txt";
}

// With CORVANE_UPDATE_GOLDEN set the files are written instead; read what changed before you
// commit.
TEST(Help, OfEveryNodeIsAsItWas) {
  std::vector<std::string> paths;
  CollectPaths(BuildCommandTree(), "", paths);
  EXPECT_EQ(paths.size(), 1U + 10 + 38);
  const Simulation simulation("");
  for (const std::string& words : paths) {
    const Result help = simulation.Run(words + " help");
    EXPECT_EQ(help.status, 0) << words;
    EXPECT_EQ(help.err, "");
    if (getenv("CORVANE_UPDATE_GOLDEN") != nullptr) WriteFile(GoldenFile(words), help.out);
    EXPECT_EQ(help.out, ReadFile(GoldenFile(words))) << words;
  }
  EXPECT_TRUE(simulation.Calls().empty());
}

// What the program answers with a node's help: words, the node, status.
struct UsageCase {
  const char* words;
  const char* node;
  int status;
};

TEST(Dispatcher, AnswersWhatItCannotRunWithUsage) {
  const UsageCase cases[] = {
      {"", "", 255},
      {"unknown", "", 255},
      {"List", "", 255},
      {"features", "features", 255},
      {"features sho", "features", 255},
      {"--device 1 features show", "", 255},
      {"help features", "", 0},
      {"dpi enable help", "dpi enable", 0},
      {"dpi enable --device 0 help", "dpi enable", 255},
      {"features show stray", "features show", 255},
      {"features show --device", "features show", 255},
      {"features show -d 0 -d 1", "features show", 255},
      {"features show --device=", "features show", 255},
      {"features set --inline yes", "features set", 255},
      {"features set --inline onx", "features set", 255},
      {"features set --inline offon", "features set", 255},
      {"features set --slicing many", "features set", 255},
      {"features set --firmware_mode 1Gx", "features set", 255},
      {"timing config --tssource gpsx", "timing config", 255},
      {"dpi enable --dpihex 254a1d8f90041235bed4054a1d8f9004", "dpi enable", 255},
      {"dpi enable --dpitxt short", "dpi enable", 255},
      {"dpi enable --dpimask 0x1234", "dpi enable", 255},
      {"update", "update", 255},
      {"update --firmware a --firmware b", "update", 255},
  };
  const Simulation simulation("");
  for (const UsageCase& c : cases) {
    const Result result = simulation.Run(c.words);
    EXPECT_EQ(result.status, c.status) << c.words;
    EXPECT_EQ(result.out, ReadFile(GoldenFile(c.node))) << c.words;
    EXPECT_EQ(result.err, "") << c.words;
  }
  EXPECT_TRUE(simulation.Calls().empty());
}

TEST(Dispatcher, ALeafWithoutParametersIgnoresFurtherWords) {
  const Simulation simulation("[[device]]\ntype = 11\nmac = \"00:1a:2b:3c:4d:5e\"\n");
  const Result result = simulation.Run("list --nonsense help");
  EXPECT_EQ(result.out, "Found 1 corvanes\n0 : 11 Corvane-M7 00:1a:2b:3c:4d:5e\n");
  EXPECT_EQ(result.status, 0);
}

// Nodes and what they hold are never freed: remembered here, they are no leaks.
template <class Object>
Object* Kept(Object* object) {
  static auto& kept = *new std::vector<const void*>;
  kept.push_back(object);
  return object;
}

// A leaf of its own for the getters, parsed once.
class Getters : public testing::Test {
 protected:
  void Parse(std::vector<const char*> words) {
    words.insert(words.begin(), "leaf");
    ASSERT_EQ(arg_parse(static_cast<int>(words.size()), const_cast<char**>(words.data()),
                        leaf_->argtable),
              0);
  }

  const NamedArg* const params_[6] = {
      Kept(MakeNamedArg("flag", arg_lit0(nullptr, "flag", ""))),
      Kept(MakeNamedArg("number", arg_int0(nullptr, "number", "<n>", ""))),
      Kept(MakeNamedArg("real", arg_dbl0(nullptr, "real", "<x>", ""))),
      Kept(MakeNamedArg("key", arg_file0("o", "option", "<file>", ""))),
      Kept(MakeNamedArg("switch", OptionalSwitch(nullptr, "switch", ""))),
      nullptr};
  const CommandNode* const leaf_ = Kept(MakeNode("leaf", nullptr, nullptr, params_, nullptr));
};

TEST_F(Getters, ReadTheFirstValue) {
  Parse({"--flag", "--number", "0x10", "--real=-50.29", "-o", "a.b", "--switch", "oFF"});
  EXPECT_TRUE(IsGiven(*leaf_, "flag"));
  EXPECT_EQ(Count(*leaf_, "flag"), 1);
  EXPECT_EQ(Integer(*leaf_, "number", 5), 16);
  EXPECT_EQ(Real(*leaf_, "real", 0.0), -50.29);
  EXPECT_EQ(Text(*leaf_, "key", nullptr), "a.b");
  EXPECT_EQ(OnOff(*leaf_, "switch"), 0);
}

TEST_F(Getters, FallBackWhenNotGivenOrUnknown) {
  Parse({});
  for (const char* key : {"number", "option", ""}) {
    EXPECT_FALSE(IsGiven(*leaf_, key));
    EXPECT_EQ(Count(*leaf_, key), 0);
    EXPECT_EQ(Integer(*leaf_, key, 5), 5);
    EXPECT_EQ(Real(*leaf_, key, 0.5), 0.5);
    EXPECT_EQ(OnOff(*leaf_, key), kNotGiven);
  }
  EXPECT_EQ(Text(*leaf_, "key", "x"), "x");
  EXPECT_EQ(Text(*leaf_, "key", nullptr), std::nullopt);
  EXPECT_EQ(Text(*leaf_, "option", nullptr), std::nullopt);
  EXPECT_EQ(OnOff(*params_[4]), kNotGiven);
}

TEST(Nodes, NeedAName) {
  EXPECT_EQ(MakeNode(nullptr, "text", nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(MakeNamedArg(nullptr, Kept(arg_lit0(nullptr, "flag", ""))), nullptr);
  EXPECT_EQ(MakeNamedArg("key", nullptr), nullptr);
  const CommandNode* bare = Kept(MakeNode("bare", nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(bare->description, "");
  char word[] = "bare";
  char* argv[] = {word, nullptr};
  EXPECT_EQ(Dispatch(*bare, 1, argv, "corvane"), kRejected);
}

}  // namespace
