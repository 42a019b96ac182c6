#include "schema/schema.h"

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/catalogue/expected_groups.h"

namespace schema {
namespace {

using namespace LPARAMS::Server;
using Json = nlohmann::ordered_json;

const char* typeName(Kind kind) {
  switch (kind) {
    case Kind::Bool:
      return "0";
    case Kind::Port:
      return "1";
    case Kind::UInt:
      return "2";
    case Kind::Enum:
      return "4";
    case Kind::Line:
      return "6";
    case Kind::Secret:
      return "10";
  }
  return "";
}

std::string asText(const Json& value) {
  if (value.is_boolean()) return value.get<bool>() ? "1" : "0";
  return value.is_string() ? value.get<std::string>() : value.dump();
}

void expectParam(const Json& param, const ExpectedParam& expected) {
  SCOPED_TRACE(expected.name);
  EXPECT_EQ(param["name"], expected.name);
  EXPECT_EQ(param["type"].dump(), typeName(expected.kind));
  EXPECT_EQ(asText(param["default"]), expected.initial.text);
  EXPECT_EQ(param["where"], expected.onWire ? "bridge" : "file");
  EXPECT_TRUE(param["meaning"].is_string());
  const bool isNumber = expected.kind == Kind::Port || expected.kind == Kind::UInt;
  ASSERT_EQ(param.contains("min"), isNumber);
  ASSERT_EQ(param.contains("max"), isNumber);
  if (isNumber) {
    EXPECT_EQ(param["min"], expected.min);
    EXPECT_EQ(param["max"], expected.max);
  }
  ASSERT_EQ(param.contains("values"), expected.kind == Kind::Enum);
  if (expected.kind != Kind::Enum) return;
  size_t row = 0;
  for (const Json& value : param["values"]) {
    ASSERT_NE(expected.variants[row].name, nullptr);
    EXPECT_EQ(value["name"], expected.variants[row].name);
    EXPECT_EQ(value["number"], expected.variants[row].value);
    ++row;
  }
  EXPECT_EQ(expected.variants[row].name, nullptr) << "some are missing";
}

TEST(Schema, SaysWhatTheIndependentTableSays) {
  const Json groups = Json::parse(ownSchema())["groups"];
  ASSERT_EQ(groups.size(), expectedGroups().size());
  for (size_t i = 0; i < groups.size(); ++i) {
    const ExpectedGroup& expected = expectedGroups()[i];
    SCOPED_TRACE(expected.name);
    const bool isUsers = std::string(expected.name) == USER_t::GROUP_NAME;
    EXPECT_EQ(groups[i]["name"], isUsers ? "USERS" : expected.name);
    EXPECT_EQ(groups[i]["list"], isUsers);
    ASSERT_EQ(groups[i]["params"].size(), expected.params.size());
    for (size_t row = 0; row < expected.params.size(); ++row) {
      expectParam(groups[i]["params"][row], expected.params[row]);
    }
  }
}

/// The schema with a value changed before its hash is taken: catalogues of other builds.
std::string hashWith(const std::function<void(Catalogue&)>& change) {
  Catalogue catalogue;
  change(catalogue);
  return schemaOf(catalogue)["catalogue"];
}

TEST(Schema, AnotherCatalogueHasAnotherHash) {
  const std::string own = hashWith([](Catalogue&) {});
  EXPECT_EQ(own, ownHash());
  EXPECT_EQ(own.size(), 32U);
  EXPECT_EQ(own.find_first_not_of("0123456789abcdef"), std::string::npos);
  const std::vector<std::function<void(Catalogue&)>> changes = {
      [](Catalogue& other) { other.IKE->fileParams.pop_back(); },
      [](Catalogue& other) { other.IKE->wireParams.pop_back(); },
      [](Catalogue& other) { other.IKE->fileParams.reverse(); },
      [](Catalogue& other) { other.LOG->FACILITY.value = 1; },
      [](Catalogue& other) { other.LOG->fileParams.swap(other.POLICY->fileParams); },
  };
  for (const auto& change : changes) EXPECT_NE(hashWith(change), own);
}

TEST(Schema, TheHashLeavesMeaningsOut) {
  // A parameter beside the catalogue, with the name of one inside it and another meaning.
  const auto hashWithMeaning = [](Label label) {
    return hashWith([&](Catalogue& other) {
      other.POLICY->fileParams.clear();
      other.POLICY->wireParams.clear();
      static std::vector<std::unique_ptr<BoolParam>> kept;  // the group holds the address
      kept.push_back(std::make_unique<BoolParam>(*other.POLICY, label, true));
    });
  };
  EXPECT_EQ(hashWithMeaning(Label("FLAG\0what it means")), hashWithMeaning(Label("FLAG\0")));
  EXPECT_NE(hashWithMeaning(Label("FLAG\0")), hashWithMeaning(Label("OTHER\0")));
}

}  // namespace
}  // namespace schema
