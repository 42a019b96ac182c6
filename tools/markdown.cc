#include <ostream>
#include <string_view>

#include "tools/documents.h"

namespace tools {
namespace markdown {
namespace {

constexpr std::string_view PREFACE = R"(# The catalogue

Every setting of the store, as the program prints it: `./dev catalogue` writes this file anew and a
test compares it. How to add a row: [README](../README.md).

- **#** counts the rows of a group in file order. The order on the bridge is the same, without the
  rows that are in the file only.
- **Class** and **type identifier** decide the encodings: on the bridge as in
  [its protocol](bridge-protocol.md), in the file as in
  [numeric_param.h](../lparams/params/numeric_param.h) (BoolParam, PortParam, UIntParam),
  [enum_param.h](../lparams/params/enum_param.h) and
  [line_string_param.h](../lparams/params/line_string_param.h) (StStParam, QcdSParam).
- **Limits** are inclusive. The agent refuses a write of any other value, unless it runs with
  `--accept-any`. A load of the settings file moves a number that is out of its limits to the nearer
  one. A negative number counts from above the largest of its type (2 or 4 bytes, unsigned): `-1`
  ends at the upper limit. What is too large for the type is reported, and the setting keeps its
  value. The numbers behind the names are what the bridge carries.
- **Meaning** is empty where the name has to say it.
)";

std::string code(const std::string& text) { return text.empty() ? "empty" : "`" + text + "`"; }

std::string limitsOf(const Row& row) {
  std::string limits = row.limits;
  for (const NamedNumber& one : row.names) {
    if (!limits.empty()) limits += ", ";
    limits += code(one.name) + " " + one.number;
  }
  return limits;
}

void printGroup(std::ostream& output, const Group& group) {
  output << "| # | Name | Meaning | Class | Type identifier | Default | Limits, or names and "
            "numbers | Where |\n|---|---|---|---|---|---|---|---|\n";
  int number = 0;
  for (const Row& row : group.rows) {
    output << "| " << ++number << " | " << code(row.name) << " | " << row.meaning << " | "
           << row.className << " | " << row.typeId << " | " << code(row.byDefault) << " | "
           << limitsOf(row) << " | " << (row.travels ? "file and bridge" : "file only") << " |\n";
  }
}

}  // namespace
}  // namespace markdown

void printMarkdown(std::ostream& output, const std::vector<Group>& groups) {
  output << markdown::PREFACE;
  for (const Group& group : groups) {
    output << "\n## " << group.name << "\n\n";
    if (!group.entry.empty()) {
      output << "A list, which travels as a count and its entries. Of each entry, a `"
             << group.entry << "`:\n\n";
    }
    markdown::printGroup(output, group);
  }
}

}  // namespace tools
