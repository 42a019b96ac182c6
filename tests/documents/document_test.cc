// What documents say in each of their forms, with places, and what is wrong with them.
#include "documents/document.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/agent/state/scratch_directory.h"
#include "tests/documents/document_lines.h"

using documents_testing::mistakesIn;
using documents_testing::usersIn;
using documents_testing::valuesIn;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace documents {
namespace {

using namespace std::string_literals;

TEST(Document, JsonNamesValuesAndUsers) {
  const Document document = read(
      "{\"IKE\": {\"IKE_PORT\": 501,\n"
      "  \"QCD_SECRET\": null, \"PERSISTENT_SA\": true},\n"
      " \"USERS\": {\"bob\": {\"PMP_TIMEOUT\": 20, \"LSP_FILE\": \"a b\"}, \"eve\": {}}}\n");
  EXPECT_EQ(document.form, Document::Json);
  EXPECT_THAT(mistakesIn(document), IsEmpty());
  EXPECT_THAT(valuesIn(document),
              ElementsAre("1:10 IKE.IKE_PORT=501 number", "2:3 IKE.QCD_SECRET= kept",
                          "2:23 IKE.PERSISTENT_SA=true flag",
                          "3:20 USERS[bob].PMP_TIMEOUT=20 number", "3:39 USERS[bob].LSP_FILE=a b"));
  EXPECT_THAT(usersIn(document), ElementsAre("3:12 bob", "3:59 eve"));
}

TEST(Document, JsonNumbersAreGivenAsTheyStandThere) {
  EXPECT_THAT(valuesIn(read("{\"A\": {\"B\": -1, \"C\": 1.50, \"D\": 18446744073709551615}}")),
              ElementsAre("1:8 A.B=-1 number", "1:17 A.C=1.50 number",
                          "1:28 A.D=18446744073709551615 number"));
}

TEST(Document, LinesNameValuesAndUsers) {
  const Document document = read(
      "# a comment\n\nIKE.IKE_PORT=501\nIKE.QCD_SECRET= a=b \nUSERS[bob].PMP_TIMEOUT=20\n"
      "USERS[a].b=c].LSP_FILE=\xff\nUSERS[bob].LSP_FILE=");
  EXPECT_EQ(document.form, Document::Lines);
  EXPECT_THAT(mistakesIn(document), IsEmpty());
  EXPECT_THAT(valuesIn(document),
              ElementsAre("3:1 IKE.IKE_PORT=501", "4:1 IKE.QCD_SECRET= a=b ",
                          "5:1 USERS[bob].PMP_TIMEOUT=20", "6:1 USERS[a].b=c].LSP_FILE=\xff",
                          "7:1 USERS[bob].LSP_FILE="));
  EXPECT_THAT(usersIn(document), ElementsAre("5:1 bob", "6:1 a].b=c"));
}

TEST(Document, AUsersNameInLinesEndsWhereAParameterIsNamed) {
  const Document document = read(
      "USERS[a=b].AZ_09=x\nUSERS[c=d].A@=x\nUSERS[e=f].A[=x\nUSERS[g=h].A/=x\n"
      "USERS[i=j].A:=x\nUSERS[k=l].a=x\n");
  std::vector<std::string> names;
  for (const Value& value : document.values) names.push_back(value.name);
  EXPECT_THAT(names, ElementsAre("USERS[a=b].AZ_09", "USERS[c", "USERS[e", "USERS[g", "USERS[i",
                                 "USERS[k"));
}

TEST(Document, SettingsFileNamesOnlyWhatItHolds) {
  const Document document = read(
      "/ROOT=\n    /IKE=\n        IKE_PORT=501\n        CRL_PROCESSING=crl_enable\n    end=\n"
      "    /USERS=\n        /USER=\n            PMP_TIMEOUT=20\n            NAME=bob\n"
      "        end=\n        /USER=\n            NAME=eve\n        end=\n    end=\nend=\n");
  EXPECT_EQ(document.form, Document::SettingsFile);
  EXPECT_THAT(mistakesIn(document), IsEmpty());
  EXPECT_THAT(valuesIn(document),
              ElementsAre("3:18 IKE.IKE_PORT=501", "4:24 IKE.CRL_PROCESSING=CRL_ENABLE",
                          "8:25 USERS[bob].PMP_TIMEOUT=20", "9:18 USERS[bob].NAME=bob",
                          "12:18 USERS[eve].NAME=eve"));
  EXPECT_THAT(usersIn(document), ElementsAre("7:10 bob", "11:10 eve"));
}

TEST(Document, SettingsFileOfSavesHasNoMistakes) {
  const Document document = read(agent_testing::exampleSettings());
  EXPECT_THAT(mistakesIn(document), IsEmpty());
  EXPECT_GT(document.values.size(), 80U);
}

TEST(Document, ByteOrderMarkIsNoPartOfIt) {
  EXPECT_THAT(valuesIn(read("\xEF\xBB\xBF{\"A\": {\"B\": 1}}")), ElementsAre("1:11 A.B=1 number"));
  EXPECT_THAT(valuesIn(read("\xEF\xBB\xBFIKE.B=1")), ElementsAre("1:1 IKE.B=1"));
  EXPECT_THAT(mistakesIn(read("\xEF\xBB\xBF/ROOT=\nend=\n")), IsEmpty());
}

TEST(Document, AllMistakesOfJsonAreTold) {
  EXPECT_THAT(mistakesIn(read("{\n \"IKE\": {\"IKE_PORT\": 1,\n \"IKE_PORT\": 2,\n"
                              " \"NATT_PORT\": [1, {\"A\": []}],\n \"WNDSIZE\": {\"A\": {}}},\n"
                              " \"LOG\": 5,\n \"POLICY\": [],\n \"IKE\": {},\n"
                              " \"USERS\": {\"bob\": null,\n  \"eve\": {\"NAME\": {}},\n"
                              "  \"bob\": {}}}")),
              ElementsAre("3:2 IKE.IKE_PORT: given twice (first in line 2)",
                          "4:15 IKE.NATT_PORT: expected a value, not an array",
                          "5:13 IKE.WNDSIZE: expected a value, not an object",
                          "6:9 LOG: expected an object, not a value",
                          "7:12 POLICY: expected an object, not an array",
                          "8:2 IKE: given twice (first in line 2)",
                          "9:19 USERS[bob]: expected an object, not a value",
                          "10:19 USERS[eve].NAME: expected a value, not an object",
                          "11:3 USERS[bob]: given twice (first in line 9)"));
}

TEST(Document, WhatIsNoJsonIsToldWithItsPlaceAndWithoutValues) {
  struct Case {
    std::string text;
    std::string mistake;
  };
  const Case cases[] = {
      {"{", "1:2 this is not JSON: unexpected end of input; expected string literal"},
      {"{\"A\": {\"B\": 1\n\"C\": 2}}",
       "2:1 this is not JSON: unexpected string literal; expected '}'"},
      {"{\"A\": {\"B\": sEcret}}", "1:13 this is not JSON: invalid literal"},
      {"{\"A\": {\"B\": \"sEcret", "1:13 this is not JSON: invalid string: missing closing quote"},
      {"{\"A\": {}} sEcret", "1:11 this is not JSON: invalid literal"},
      {"{\"A\": {}}{}", "1:10 this is not JSON: unexpected '{'; expected end of input"},
      {"{\"A\": {\"B\": \"\xff\"}}",
       "1:13 this is not JSON: invalid string: ill-formed UTF-8 byte"},
      {"{\"A\": {\"B\": 1e999}}", "1:13 this is not JSON: a number is too large"},
      {"{\"A\": {\"B\": \"a\nb\"}}",
       "1:13 this is not JSON: invalid string: control character U+000A (LF) must be escaped to "
       "\\u000A or \\n"},
  };
  for (const Case& each : cases) {
    EXPECT_THAT(mistakesIn(read(each.text)), ElementsAre(each.mistake)) << each.text;
  }
}

TEST(Document, AllMistakesOfLinesAreToldWithoutValues) {
  EXPECT_THAT(mistakesIn(read("IKE.IKE_PORT=1\nsecret\nIKE.IKE_PORT=2\nUSERS[bob]\n"
                              "I\x1bKE=2\nI\x1bKE=2\n")),
              ElementsAre("2:1 this is no assignment; write GROUP.NAME=VALUE",
                          "3:1 IKE.IKE_PORT: given twice (first in line 1)",
                          "4:1 this is no assignment; write GROUP.NAME=VALUE",
                          "6:1 (4 bytes, not shown): given twice (first in line 5)"));
}

TEST(Document, AllMistakesOfSettingsFilesAreTold) {
  const Document document = read(
      "/ROOT=\n/IKE=\nIKE_PORT=70000\nIKE_PROT=1\nEXCHANGE_TIMEOUT=1\nCRL_PROCESSING=no\n"
      "NATT_PORT=4500 and\nIKE_PORT=1\nend=\n/USERS=\n/USER=\nLSP_FILE=a\nend=\n/USER=\n"
      "NAME=bob\nend=\n/USER=\nNAME=bob\nend=\nend=\nend=\n");
  EXPECT_THAT(
      mistakesIn(document),
      ElementsAre("3:10 IKE.IKE_PORT: \"70000\" is not a number from 1 to 65535; the load would "
                  "keep 500",
                  "4:1 IKE.IKE_PROT: no such parameter or block; the load would ignore it; did you "
                  "mean IKE_PORT?",
                  "5:18 IKE.EXCHANGE_TIMEOUT: 1 is below 5; the load would take 5",
                  "6:16 IKE.CRL_PROCESSING: \"no\" is not one of CRL_DISABLE, CRL_ENABLE, "
                  "CRL_ENABLE_SOFT; the load would take CRL_DISABLE",
                  "7:11 IKE.NATT_PORT: \"4500 and\" is not a number from 1 to 65535; the load "
                  "would take 4500",
                  "8:1 IKE.IKE_PORT: a second time (first in line 3); the later one counts",
                  "18:1 a second user \"bob\" (first in line 15)",
                  "11:2 USERS: a user needs a name"));
}

TEST(Document, SettingsFilesThatBreakOffAreMistaken) {
  for (const std::string text : {"/ROOT=\n/IKE=\nIKE_PORT=1\n", "/IKE=\nIKE_PORT=1\nend=\n", "/",
                                 "/=====", "/ROOT=\nend=\nmore\n"}) {
    EXPECT_THAT(mistakesIn(read(text)), Contains(HasSubstr("this is no whole settings file: ")))
        << text;
  }
  EXPECT_THAT(mistakesIn(read("/ROOT=\n/IKE=\nQCD_SECRET=a\0b\nend=\nend=\n"s)),
              Contains(HasSubstr("it holds a zero byte")));
}

/// Who makes a document by a program that fails does not want everything to go to its default.
TEST(Document, EmptyOnesAreMistaken) {
  for (const std::string text : {"", "\n \n", "\xEF\xBB\xBF"}) {
    EXPECT_THAT(mistakesIn(read(text)), ElementsAre("0:0 the document is empty"));
  }
  EXPECT_THAT(mistakesIn(read("{}")), IsEmpty());
  EXPECT_THAT(mistakesIn(read("# nothing\n")), IsEmpty());
}

}  // namespace
}  // namespace documents
