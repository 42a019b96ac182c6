// Prints docs/catalogue.md: every parameter with what the file, the bridge and a client need to
// know of it, taken from the objects as they are built. `./dev catalogue` runs it.
#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>

#include "lparams/catalogue/catalogue.h"
#include "lparams/values/values.h"
#include "lparams/values/visit.h"

namespace LPARAMS::Server {
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

std::string code(std::string_view text) {
  return text.empty() ? "empty" : std::string("`").append(text).append("`");
}

struct ClassName {
  std::string operator()(const BoolParam&) const { return "BoolParam"; }
  std::string operator()(const PortParam&) const { return "PortParam"; }
  std::string operator()(const UIntParam&) const { return "UIntParam"; }
  std::string operator()(const EnumParam&) const { return "EnumParam"; }
  std::string operator()(const StStParam&) const { return "StStParam"; }
  std::string operator()(const QcdSParam&) const { return "QcdSParam"; }
};

struct Limits {
  std::string operator()(const EnumParam& param) const {
    std::string names;
    for (const Variant* row = param.variants; row->name != nullptr; ++row) {
      if (!names.empty()) names += ", ";
      names += code(row->name) + " " + std::to_string(row->value);
    }
    return names;
  }
  std::string operator()(const Param& param) const { return legalValues(param); }
};

bool travels(const ParamGroup& group, const Param* param) {
  return std::ranges::find(group.wireParams, param) != group.wireParams.end();
}

void printGroup(const ParamGroup& group) {
  std::cout << "| # | Name | Meaning | Class | Type identifier | Default | Limits, or names and "
               "numbers | Where |\n|---|---|---|---|---|---|---|---|\n";
  int row = 0;
  for (Param* param : group.fileParams) {
    std::cout << "| " << ++row << " | " << code(param->name) << " | " << meaningOf(*param) << " | "
              << visit(*param, ClassName()) << " | " << param->getTypeId() << " | "
              << code(valueText(*param)) << " | " << visit(*param, Limits()) << " | "
              << (travels(group, param) ? "file and bridge" : "file only") << " |\n";
  }
}

}  // namespace

void printCatalogue() {
  std::cout << PREFACE;
  const Catalogue catalogue;
  for (const ParamGroup* group : catalogue.groups()) {
    std::cout << "\n## " << group->name << "\n\n";
    if (group == catalogue.USERS) {
      std::cout << "A list, which travels as a count and its entries. Of each entry, a `"
                << USER_t::GROUP_NAME << "`:\n\n";
      printGroup(USER_t());
    } else {
      printGroup(*group);
    }
  }
}

}  // namespace LPARAMS::Server

int main() {
  try {
    LPARAMS::Server::printCatalogue();
  } catch (const std::exception& error) {
    std::cerr << "print_catalogue: " << error.what() << '\n';
    return 1;
  }
  return std::cout.flush() ? 0 : 1;
}
