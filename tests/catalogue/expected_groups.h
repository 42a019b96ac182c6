// What the catalogue has to be, written out independently of it.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "lparams/params/param_group.h"
#include "lparams/params/variant.h"

namespace LPARAMS::Server {

enum class Kind { Enum, Port, UInt, Bool, Line, Secret };

/// One row of a table of named values, and such a table.
struct ExpectedVariant {
  int value;
  std::string name;
};

struct ExpectedTable {
  const char* title;
  const Variant* table;
  std::vector<ExpectedVariant> rows;
};

/// One value in both encodings: behind the "=" of its line, and on the wire as hexadecimal pairs.
struct Forms {
  std::string text;
  std::string bytes;
};

struct ExpectedParam {
  Kind kind;
  const char* name;
  Forms initial;
  Forms changed;  ///< a value away from the default
  unsigned min = 0;
  unsigned max = 0;
  const Variant* variants = nullptr;
  bool onWire = true;
};

/// Which of a parameter's values a text or record is to hold.
using ChooseForm = std::function<const Forms&(const ExpectedParam&)>;
inline const Forms& initially(const ExpectedParam& param) { return param.initial; }
inline const Forms& whenChanged(const ExpectedParam& param) { return param.changed; }

/// The default of every parameter but those that are named here.
ChooseForm initiallyBut(std::map<std::string, Forms> others);

struct ExpectedGroup {
  const char* name;
  std::unique_ptr<ParamGroup> (*make)();  ///< a new group at its defaults
  std::vector<ExpectedParam> params;      ///< in the order of the file

  /// The group's block in the file.
  std::string text(int indent, const ChooseForm& choose) const;
  /// The group's bytes on the wire.
  std::string record(const ChooseForm& choose) const;
  /// What a client shows of the group: "NAME.PARAM=value" lines of what is on the wire.
  std::string shown(const std::string& groupName, const ChooseForm& choose) const;
};

/// The groups of the root but the user list, in its order, and the user entry.
const std::vector<ExpectedGroup>& expectedGroups();

/// Every table of named values that the catalogue uses.
const std::vector<ExpectedTable>& expectedTables();

const ExpectedGroup& expectedGroup(const std::string& name);

/// The names of what is on the wire of the group, as messages list them: "A, B, C".
std::string expectedNamesOf(const std::string& group);

/// The report of a load that has found so many of the group's members.
std::string missingReport(const std::string& group, size_t loaded);

/// The whole settings file, with an entry of the user list for each of `users`.
std::string expectedFile(const ChooseForm& choose, const std::vector<ChooseForm>& users = {});

/// Calls check(expected, group) with a new group for each of the catalogue, at its defaults.
template <typename Check>
void forEachGroup(Check check) {
  for (const ExpectedGroup& expected : expectedGroups()) {
    SCOPED_TRACE(expected.name);
    const auto group = expected.make();
    check(expected, *group);
  }
}

/// Calls check(expected, param) with every parameter of the catalogue.
template <typename Check>
void forEachParam(Check check) {
  forEachGroup([&](const ExpectedGroup& expectedGroup, ParamGroup& group) {
    for (const ExpectedParam& expected : expectedGroup.params) {
      SCOPED_TRACE(expected.name);
      Param* param = group.getParam(expected.name);
      ASSERT_NE(param, nullptr);
      check(expected, *param);
    }
  });
}

}  // namespace LPARAMS::Server
