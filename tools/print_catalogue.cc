// Prints docs/catalogue.md: every parameter with what the file, the bridge and a client need to
// know of it, taken from the objects as they are built. `./dev catalogue` runs it.
#include <algorithm>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "lparams/catalogue/admin_group.h"
#include "lparams/catalogue/ike_group.h"
#include "lparams/catalogue/log_group.h"
#include "lparams/catalogue/policy_group.h"
#include "lparams/catalogue/update_group.h"
#include "lparams/catalogue/user_entry.h"

namespace LPARAMS::Server {
namespace {

constexpr std::string_view PREFACE = R"(# The catalogue

Every setting of the store, as the program prints it: `./dev catalogue` writes this file anew and a
test compares it. How to add a row: [README](../README.md).

- **#** counts the rows of a group in file order. The order on the bridge is the same, without the
  rows that are in the file only.
- **Class** and **type identifier** decide the encodings: `lparams/params/` has a header per class.
- **Limits** are inclusive. A load of the settings file moves a number to the nearer one; the bridge
  takes every value as it stands, so a client checks before it sends. The numbers behind the names
  are what the bridge carries.
)";

std::string code(std::string_view text) {
  return text.empty() ? "empty" : std::string("`").append(text).append("`");
}

template <typename Numeric>
std::string rangeOf(const Param& param) {
  const auto& number = static_cast<const Numeric&>(param);
  return std::to_string(number.min) + " to " + std::to_string(number.max);
}

std::string namesOf(const Param& param) {
  std::string names;
  for (const Variant* row = static_cast<const EnumParam&>(param).variants; row->name != nullptr;
       ++row) {
    if (!names.empty()) names += ", ";
    names += code(row->name) + " " + std::to_string(row->value);
  }
  return names;
}

/// What a reader of the catalogue wants to know of a class.
struct Kind {
  std::string className;
  std::string limits;
};

/// The type identifier stands for the class.
Kind kindOf(const Param& param) {
  switch (param.getTypeId()) {
    case TYPE_BOOL:
      return {"BoolParam", "0, 1"};
    case TYPE_USHORT:
      return {"PortParam", rangeOf<PortParam>(param)};
    case TYPE_UINT:
      return {"UIntParam", rangeOf<UIntParam>(param)};
    case TYPE_INT:
      return {"EnumParam", namesOf(param)};
    case TYPE_MASK:
      return {"MaskParam", "any of " + namesOf(param)};
    case TYPE_STRING:
      return {"StStParam", "one line of text"};
    case TYPE_SECRET:
      return {"QcdSParam", "one line of text, a secret"};
    default:
      throw std::logic_error(std::string("add the class of this one here: ") + param.name);
  }
}

/// The value as the settings file has it behind the "=".
std::string textOf(Param& param) {
  std::ostringstream line;
  (void)param.save(line, 0);
  const std::string text = std::move(line).str();
  const size_t begin = text.find('=') + 1;
  return text.substr(begin, text.size() - begin - 1);
}

bool travels(const ParamGroup& group, const Param* param) {
  return std::ranges::find(group.wireParams, param) != group.wireParams.end();
}

void printGroup(const ParamGroup& group, std::string_view remark) {
  std::cout << "\n## " << group.name << "\n\n" << remark << "\n\n";
  std::cout << "| # | Name | Class | Type identifier | Default | Limits, or names and numbers | "
               "Where |\n|---|---|---|---|---|---|---|\n";
  int row = 0;
  for (Param* param : group.fileParams) {
    const Kind kind = kindOf(*param);
    std::cout << "| " << ++row << " | " << code(param->name) << " | " << kind.className << " | "
              << param->getTypeId() << " | " << code(textOf(*param)) << " | " << kind.limits
              << " | " << (travels(group, param) ? "file and bridge" : "file only") << " |\n";
  }
}

}  // namespace

void printCatalogue() {
  std::cout << PREFACE;
  printGroup(IKE_t(), "Key exchange and IPsec.");
  printGroup(LOG_t(), "Logging.");
  printGroup(UPDATE_t(), "Software update.");
  printGroup(POLICY_t(), "The source of the system policy, and the policy-management client.");
  printGroup(ADMIN_t(), "Administration.");
  printGroup(USER_t(), "An entry of the list `USERS`, which travels as a count and its entries.");
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
