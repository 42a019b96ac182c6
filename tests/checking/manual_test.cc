// The examples in docs/checking-files.md.
#include <gmock/gmock.h>

#include <fstream>
#include <string>
#include <vector>

#include "tests/agent/state/scratch_directory.h"
#include "tests/checking/checked_lines.h"

namespace checking {
namespace {

/// The cells of a table's row if all of them are code.
std::vector<std::string> codeCells(const std::string& row) {
  std::vector<std::string> cells;
  for (size_t at = 0; (at = row.find("| `", at)) != std::string::npos;) {
    const size_t end = row.find("` |", at);
    if (end == std::string::npos) break;
    std::string cell = row.substr(at + 3, end - at - 3);
    for (size_t bar; (bar = cell.find("\\|")) != std::string::npos;) cell.erase(bar, 1);
    cells.push_back(cell);
    at = end + 2;
  }
  return cells;
}

TEST(CheckManual, SaysWhatIsPrinted) {
  std::ifstream manual(SOURCE_DIR "/docs/checking-files.md");
  int rows = 0;
  for (std::string line; std::getline(manual, line);) {
    const std::vector<std::string> cells = codeCells(line);
    if (cells.size() != 3) continue;
    ++rows;
    std::string text = agent_testing::exampleSettings();
    const size_t at = text.find(cells[0] + "\n");
    ASSERT_NE(at, std::string::npos) << cells[0];
    text.replace(at, cells[0].size(), cells[1]);
    EXPECT_THAT(checking_testing::linesOf(text), testing::Contains(cells[2])) << cells[1];
  }
  EXPECT_GE(rows, 15);
}

}  // namespace
}  // namespace checking
