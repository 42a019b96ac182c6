// The examples of the client's document, run as they stand there.
#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "tests/system/system_test.h"

namespace system_testing {
namespace {

constexpr const char* DOCUMENT = "docs/client.md";

/// A command, and the lines that the document says it prints.
struct Example {
  std::string command;
  std::string output;
};

/// The commands behind "$ " in the blocks of consoles, in their order.
std::vector<Example> examplesOf(const std::string& document) {
  std::vector<Example> examples;
  std::istringstream lines(document);
  bool inBlock = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("```")) {
      inBlock = line == "```console";
    } else if (inBlock && line.starts_with("$ ")) {
      examples.push_back({line.substr(2), ""});
    } else if (inBlock) {
      examples.back().output += line + "\n";
    }
  }
  return examples;
}

/// Whether the text is the pattern, in which "..." stands for anything.
bool matches(std::string_view pattern, std::string_view text) {
  constexpr std::string_view ANYTHING = "...";
  size_t at = pattern.find(ANYTHING);
  if (at == std::string_view::npos) return pattern == text;
  if (!text.starts_with(pattern.substr(0, at))) return false;
  text.remove_prefix(at);
  for (;;) {
    pattern.remove_prefix(at + ANYTHING.size());
    at = pattern.find(ANYTHING);
    if (at == std::string_view::npos) return text.ends_with(pattern);
    const size_t found = text.find(pattern.substr(0, at));
    if (found == std::string_view::npos) return false;
    text.remove_prefix(found + at);
  }
}

/// What the command prints, on both streams, and how it ends unless it succeeds.
std::string run(const std::string& command, const std::string& directory,
                const std::string& socketPath) {
  const std::string script = "cd '" + directory +
                             "' && export PATH='" PRODUCTS_DIR "':$PATH LPARAMS_SOCKET='" +
                             socketPath + "' EDITOR=true && { " + command +
                             "\n} 2>&1 </dev/null; status=$?; "
                             "[ $status -eq 0 ] || echo \"[$status]\"";
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(script.c_str(), "re"), ::pclose);
  if (pipe == nullptr) return "cannot be run";
  std::string output;
  std::array<char, 4096> chunk{};
  while (const size_t got = std::fread(chunk.data(), 1, chunk.size(), pipe.get())) {
    output.append(chunk.data(), got);
  }
  return output;
}

class ClientDocument : public SystemTest {};

TEST_F(ClientDocument, ExamplesPrintWhatItSays) {
  host::writeFile(settingsPath, sourceFile("examples/localsettings.ini"));
  host::writeFile(directory.path + "localsettings.ini", sourceFile("examples/localsettings.ini"));
  start();
  const auto examples = examplesOf(sourceFile(DOCUMENT));
  EXPECT_GT(examples.size(), 30U);
  for (const Example& example : examples) {
    const std::string output = run(example.command, directory.path, socketPath);
    EXPECT_TRUE(matches(example.output, output)) << "$ " << example.command << "\nprints\n"
                                                 << output << "instead of\n"
                                                 << example.output;
  }
}

TEST(ClientDocumentPattern, MatchesAnythingWhereThePointsAre) {
  EXPECT_TRUE(matches("a\n", "a\n"));
  EXPECT_FALSE(matches("a\n", "ab\n"));
  EXPECT_TRUE(matches("a...c\n", "abc\n"));
  EXPECT_TRUE(matches("a...\n...c\n", "ab\nxc\n"));
  EXPECT_FALSE(matches("a...c\n", "abd\n"));
  EXPECT_FALSE(matches("a...b...c\n", "axc\n"));
}

}  // namespace
}  // namespace system_testing
