#include <sys/stat.h>

#include "bridge/named_values.h"
#include "tests/client/verbs/client_test.h"
#include "tests/module/child_process.h"
#include "tests/support/another_user.h"

namespace system_testing {
namespace {

class Apply : public Client {
 protected:
  /// The document as a file.
  std::string file(const std::string& text) const {
    host::writeFile(path, text);
    return path;
  }

  Outcome apply(const std::string& text, std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"apply", file(text)});
    return ctl(options);
  }

  /// Every group's revision.
  std::string revisions() const {
    const BridgeClient client = connect();
    const auto values = bridge::decodeNamedValues(client.call("get", "").output).value();
    std::string text;
    for (const auto& [group, revision] : values.revisions) {
      text += group + " " + std::to_string(revision) + "\n";
    }
    return text;
  }

  const std::string path = directory.path + "document";
};

/// The same in each form.
const char* const DOCUMENTS[] = {
    "{\"IKE\": {\"IKE_PORT\": 501, \"CRL_PROCESSING\": 1, \"PERSISTENT_SA\": true},\n"
    " \"USERS\": {\"bob\": {\"PMP_TIMEOUT\": 21}, \"eve\": {}}}",
    "# a comment\nIKE.IKE_PORT=501\nIKE.CRL_PROCESSING=crl_enable\nIKE.PERSISTENT_SA=true\n"
    "USERS[bob].PMP_TIMEOUT=21\nUSERS[eve].NAME=eve\n",
    "/ROOT=\n/IKE=\nIKE_PORT=501\nCRL_PROCESSING=CRL_ENABLE\nPERSISTENT_SA=1\nend=\n/USERS=\n"
    "/USER=\nNAME=bob\nPMP_TIMEOUT=21\nend=\n/USER=\nNAME=eve\nend=\nend=\nend=\n"};

TEST_F(Apply, DoesWhatADocumentOfEachFormSaysAndNothingTheSecondTime) {
  for (const char* document : DOCUMENTS) {
    EXPECT_EQ(apply(document, {"--diff"}),
              printed("USERS[eve]: added\n"
                      "IKE.IKE_PORT: 500 -> 501\n"
                      "IKE.CRL_PROCESSING: CRL_ENABLE_SOFT -> CRL_ENABLE\n"
                      "IKE.PERSISTENT_SA: 0 -> 1\n"
                      "USERS[bob].PMP_TIMEOUT: 10 -> 21\n"
                      "5 changes made, not saved\n"));
    EXPECT_EQ(out({"user", "list"}), "alice\nbob\neve\n");
    const std::string before = revisions();
    EXPECT_EQ(apply(document, {"--diff"}), printed("nothing to change\n"));
    EXPECT_EQ(revisions(), before);
    EXPECT_EQ(ctl({"apply", file("IKE.IKE_PORT=500\nIKE.CRL_PROCESSING=CRL_ENABLE_SOFT\n"
                                 "IKE.PERSISTENT_SA=0\nUSERS[bob].PMP_TIMEOUT=10\n")})
                  .exitCode,
              0);
    (void)out({"user", "del", "eve"});
  }
}

TEST_F(Apply, WritesNoGroupThatStaysAsItIs) {
  const std::string before = revisions();
  EXPECT_EQ(apply("IKE.IKE_PORT=0500\nLOG.WALL_ON=true\n"), printed("1 change made, not saved\n"));
  const std::string after = revisions();
  const size_t logLine = before.find("LOG ");
  EXPECT_EQ(after.substr(0, logLine), before.substr(0, logLine)) << "IKE is written";
  EXPECT_NE(after, before);
}

TEST_F(Apply, CheckTellsWhatWouldChangeAndChangesNothing) {
  const std::string revisionsBefore = revisions();
  const std::string before = out({"show", "--secrets"});
  for (const char* document : DOCUMENTS) {
    EXPECT_EQ(apply(document, {"--check"}), printed("5 changes to make\n"));
    EXPECT_THAT(apply(document, {"--check", "--diff", "--exclusive"}).out,
                HasSubstr("USERS[alice]: removed\nUSERS[eve]: added\nIKE.IKE_PORT: 500 -> 501\n"));
  }
  EXPECT_EQ(out({"show", "--secrets"}), before);
  EXPECT_EQ(revisions(), revisionsBefore);
  EXPECT_EQ(ctl({"apply", "--check", file("IKE.IKE_PORT=500\n")}), printed("nothing to change\n"));
}

TEST_F(Apply, AllMistakesAreToldWithTheirPlacesAndNothingIsWritten) {
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{}, std::vector<std::string>{"--check"}}) {
    EXPECT_EQ(
        apply("{\"IKE\": {\"IKE_PROT\": 1,\n"
              "  \"NATT_PORT\": 0, \"CRL_PROCESSING\": 77, \"PERSISTENT_SA\": 2,\n"
              "  \"QCD_SECRET\": 5, \"WNDSIZE_INITIATOR\": true},\n"
              " \"UPDATE\": {\"PATH\": true, \"PATH\": \"x\"},\n"
              " \"LOG\": {\"WALL_ON\": [1], \"LANGUAGE\": \"\\u0007\"},\n"
              " \"USERS\": {\"a\\tb\": {}, \"eve\": {\"PMP_TIMEOUT\": 1},\n"
              "  \"bob\": {\"NAME\": \"x\"}, \"\": {}}}",
              options),
        failed(65, path + ":1:10: IKE.IKE_PROT: no such parameter; did you mean IKE.IKE_PORT?\n" +
                       path + ":2:3: IKE.NATT_PORT: \"0\" is not a whole number from 1 to 65535\n" +
                       path +
                       ":2:19: IKE.CRL_PROCESSING: \"77\" is not one of CRL_DISABLE, "
                       "CRL_ENABLE, CRL_ENABLE_SOFT\n" +
                       path + ":2:41: IKE.PERSISTENT_SA: \"2\" is not 0 or 1\n" + path +
                       ":3:3: IKE.QCD_SECRET: the value is no text; write it in quotes\n" + path +
                       ":3:20: IKE.WNDSIZE_INITIATOR: \"true\" is not a whole number from 1 to "
                       "16\n" +
                       path + ":4:13: UPDATE.PATH: true is no text; write it in quotes\n" + path +
                       ":4:27: UPDATE.PATH: given twice (first in line 4)\n" + path +
                       ":5:21: LOG.WALL_ON: expected a value, not an array\n" + path +
                       ":5:26: LOG.LANGUAGE: \"\\x07\" is not one of LOG_LANG_ENG, "
                       "LOG_LANG_RUS\n" +
                       path +
                       ":6:12: USERS[a\\x09b]: \"a\\x09b\" is not one line of text without "
                       "control characters\n" +
                       path +
                       ":6:32: USERS[eve].PMP_TIMEOUT: \"1\" is not a whole number from 5 "
                       "to 4294967295\n" +
                       path +
                       ":7:11: USERS[bob].NAME: \"x\" is not the name that the user goes "
                       "by here; \"user rename\" renames\n" +
                       path + ":7:25: USERS: a user needs a name\n" + "nothing was written"));
  }
  EXPECT_EQ(out({"list", "--unsaved"}), "");
}

TEST_F(Apply, MistakesOfTheStandardInputHaveTheirPlacesToo) {
  EXPECT_EQ(ctlWith("IKE.IKE_PORT=1\nnonsense\nIKE.NATT_PORT=x\n", {"apply", "-"}),
            failed(65,
                   "the standard input:2:1: this is no assignment; write GROUP.NAME=VALUE\n"
                   "the standard input:3:1: IKE.NATT_PORT: \"x\" is not a whole number from 1 to "
                   "65535\n"
                   "nothing was written"));
  EXPECT_EQ(ctlWith("", {"apply", "--exclusive", "-"}),
            failed(65, "the standard input: the document is empty\nnothing was written"));
  EXPECT_EQ(out({"list", "--unsaved"}), "");
}

TEST_F(Apply, WhatCannotBeReadIsAnError) {
  EXPECT_EQ(ctl({"apply", directory.path + "none"}).exitCode, 74);
  host::writeFile(directory.path + "1.conf", "IKE.IKE_PORT=501\n");
  ASSERT_EQ(::mkdir((directory.path + "2.conf").c_str(), 0700), 0);
  EXPECT_EQ(ctl({"apply", directory.path}),
            failed(74, "cannot read " + directory.path + "2.conf: Is a directory"));
  EXPECT_EQ(out({"list", "--unsaved"}), "");
}

TEST_F(Apply, ExclusiveTakesTheRestToItsDefaults) {
  setLines({"IKE.QCD_SECRET=s3cret", "LOG.WALL_ON=1"});
  EXPECT_EQ(apply("{\"LOG\": {\"WALL_ON\": true}, \"USERS\": {\"bob\": {\"PMP_TIMEOUT\": 21}}}",
                  {"--exclusive"})
                .exitCode,
            0);
  EXPECT_EQ(out({"list", "--changed"}),
            "NAME                    VALUE  DEFAULT  SAVED  LEGAL\n"
            "USERS[bob].NAME         bob    \"\"       bob    one line of text\n"
            "USERS[bob].PMP_TIMEOUT  21     10       10     5 to 4294967295\n");
  EXPECT_EQ(out({"user", "list"}), "bob\n");
  EXPECT_EQ(out({"get", "IKE.QCD_SECRET"}), "\n");
  EXPECT_EQ(apply("{\"LOG\": {\"WALL_ON\": true}, \"USERS\": {\"bob\": {\"PMP_TIMEOUT\": 21}}}",
                  {"--exclusive"}),
            printed("nothing to change\n"));
}

TEST_F(Apply, RemovesTheUsersItIsToldTo) {
  const std::vector<std::string> options = {"--diff", "--remove-user", "bob", "--remove-user=-x"};
  EXPECT_EQ(apply("{\"USERS\": {\"-y\": {}}}", options),
            printed("USERS[bob]: removed\nUSERS[-y]: added\n2 changes made, not saved\n"));
  EXPECT_EQ(apply("{\"USERS\": {\"-y\": {}}}", options), printed("nothing to change\n"));
  EXPECT_EQ(apply("{\"USERS\": {}}", {"--diff", "--only-users"}),
            printed("USERS[alice]: removed\nUSERS[-y]: removed\n2 changes made, not saved\n"));
  EXPECT_EQ(out({"get", "IKE.EXCHANGE_TIMEOUT"}), "90\n") << "another group is changed";
  EXPECT_EQ(
      apply("{\"USERS\": {\"eve\": {}}}", {"--remove-user", "eve"}),
      failed(65,
             path + ":1:12: USERS[eve]: named, and to be removed as well\nnothing was written"));
}

TEST_F(Apply, JsonTellsWhetherSomethingWasUnsavedBefore) {
  const auto unsaved = [&](const std::string& document, const std::vector<std::string>& options) {
    return json::parse(apply(document, options).out)["unsaved"];
  };
  EXPECT_EQ(unsaved("IKE.IKE_PORT=501", {"--json"}), false);
  EXPECT_EQ(unsaved("IKE.IKE_PORT=501", {"--json", "--check", "--save"}), true);
  EXPECT_EQ(unsaved("IKE.IKE_PORT=501", {"--json", "--save"}), true);
  EXPECT_EQ(unsaved("IKE.IKE_PORT=501", {"--json", "--save"}), false);
}

TEST_F(Apply, WhatIsNullOrHiddenStays) {
  setLines({"IKE.QCD_SECRET=s3cret", "IKE.IKE_PORT=501"});
  (void)apply("{\"IKE\": {\"QCD_SECRET\": null, \"IKE_PORT\": null}}", {"--exclusive"});
  EXPECT_EQ(out({"get", "IKE.QCD_SECRET", "IKE.IKE_PORT"}), "s3cret\n501\n");
  (void)apply("IKE.QCD_SECRET=(hidden)\n", {"--exclusive"});
  EXPECT_EQ(out({"get", "IKE.QCD_SECRET", "IKE.IKE_PORT"}), "s3cret\n500\n");
}

TEST_F(Apply, AnUnknownNameIsRefusedWithNullToo) {
  const auto refused = apply("{\"IKE\": {\"IKE_PORT\": 501, \"NO\": null}}");
  EXPECT_EQ(refused.exitCode, 65);
  EXPECT_THAT(refused.err, testing::HasSubstr("IKE.NO: no such parameter"));
  EXPECT_EQ(out({"get", "IKE.IKE_PORT"}), "500\n");
}

TEST_F(Apply, SecretsAreHidden) {
  setLines({"IKE.QCD_SECRET=s3cret"});
  EXPECT_EQ(apply("IKE.QCD_SECRET=0ther\n", {"--check", "--diff"}),
            printed("IKE.QCD_SECRET: (hidden) -> (hidden)\n1 change to make\n"));
  const json report = json::parse(apply("IKE.QCD_SECRET=0ther\n", {"--json"}).out);
  EXPECT_EQ(report["changes"], json::parse("[{\"name\": \"IKE.QCD_SECRET\", \"before\": null, "
                                           "\"after\": null, \"secret\": true}]"));
}

TEST_F(Apply, JsonIsForPrograms) {
  const json report = json::parse(apply(DOCUMENTS[0], {"--json", "--check"}).out);
  EXPECT_EQ(report["changed"], true);
  EXPECT_EQ(report["check"], true);
  EXPECT_EQ(report["saved"], false);
  EXPECT_EQ(report["message"], "5 changes to make");
  EXPECT_EQ(report["added"], json::parse("[\"eve\"]"));
  EXPECT_EQ(report["changes"][0],
            json::parse("{\"name\": \"IKE.IKE_PORT\", \"before\": 500, \"after\": 501}"));
  EXPECT_EQ(report["changes"].size(), 4U);
  EXPECT_EQ(json::parse(apply("IKE.IKE_PORT=500", {"--json"}).out)["changed"], false);
}

TEST_F(Apply, DetailedExitCodeTellsWhetherSomethingChanges) {
  EXPECT_EQ(apply(DOCUMENTS[0], {"--check", "--detailed-exitcode"}).exitCode, 2);
  EXPECT_EQ(apply(DOCUMENTS[0], {"--detailed-exitcode"}).exitCode, 2);
  EXPECT_EQ(apply(DOCUMENTS[0], {"--detailed-exitcode"}).exitCode, 0);
  EXPECT_EQ(apply(DOCUMENTS[0], {"--check", "--detailed-exitcode"}).exitCode, 0);
  EXPECT_EQ(apply("IKE.NO=1", {"--detailed-exitcode"}).exitCode, 65);
}

TEST_F(Apply, SavesWithAMessage) {
  EXPECT_EQ(apply("IKE.IKE_PORT=501", {"--save", "--message", "why"}),
            printed("1 change made and saved\n"));
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("IKE_PORT=501\n"));
  (void)out({"set", "IKE.NATT_PORT=4501"});
  EXPECT_EQ(apply("IKE.IKE_PORT=501", {"--save"}), printed("nothing to change; saved\n"));
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("NATT_PORT=4501\n"));
  EXPECT_EQ(apply("IKE.IKE_PORT=502", {"--save", "--check"}), printed("1 change to make\n"));
  EXPECT_EQ(apply("IKE.IKE_PORT=502", {"--message", "why"}),
            failed(64, "a message is for what is saved: add --save"));
}

TEST_F(Apply, SavesOnlyWhatIsNotSavedIfAskedTo) {
  const auto saved = [&] { return out({"history"}); };
  EXPECT_EQ(apply("IKE.IKE_PORT=501", {"--ensure-saved", "--message", "why"}),
            printed("1 change made and saved\n"));
  EXPECT_THAT(saved(), HasSubstr("why\n    IKE.IKE_PORT: 500 -> 501\n"));
  (void)out({"set", "IKE.NATT_PORT=4501"});
  const std::string before = saved();
  EXPECT_EQ(apply("IKE.IKE_PORT=501", {"--ensure-saved"}), printed("nothing to change; saved\n"));
  EXPECT_EQ(saved(), before);
  EXPECT_THAT(host::readFile(settingsPath), Not(HasSubstr("NATT_PORT=4501\n")));
  // It is there, but not saved.
  EXPECT_EQ(apply("IKE.NATT_PORT=4501", {"--ensure-saved"}), printed("nothing to change; saved\n"));
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("NATT_PORT=4501\n"));
  (void)out({"user", "add", "eve"});
  EXPECT_EQ(apply("USERS[eve].NAME=eve", {"--ensure-saved"}),
            printed("nothing to change; saved\n"));
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("NAME=eve\n"));
  EXPECT_EQ(apply("IKE.IKE_PORT=502", {"--ensure-saved", "--check"}),
            printed("1 change to make\n"));
}

class ApplySeveral : public Apply {
 protected:
  /// Writes a file of the directory that is applied.
  std::string part(const std::string& name, const std::string& text) const {
    host::writeFile(parts + name, text);
    return parts + name;
  }

  void SetUp() override {
    Apply::SetUp();
    ASSERT_EQ(::mkdir(parts.c_str(), 0700), 0);
  }

  const std::string parts = directory.path + "settings.d/";
};

TEST_F(ApplySeveral, AreOneChangeAndTheLastValueHolds) {
  const std::string first = part("1", "IKE.IKE_PORT=501\nUSERS[eve].PMP_TIMEOUT=7\n");
  const std::string second =
      part("2", "{\"IKE\": {\"IKE_PORT\": 502}, \"USERS\": {\"eve\": {\"PMP_TIMEOUT\": 8}}}");
  const std::string third = part("3", "USERS[mia].PMP_TIMEOUT=9\nLOG.WALL_ON=1\n");
  EXPECT_EQ(ctl({"apply", "--diff", "--save", "--message", "three", first, second, third}),
            printed("USERS[eve]: added\n"
                    "USERS[mia]: added\n"
                    "IKE.IKE_PORT: 500 -> 502\n"
                    "USERS[eve].PMP_TIMEOUT: - -> 8\n"
                    "USERS[mia].PMP_TIMEOUT: - -> 9\n"
                    "LOG.WALL_ON: 0 -> 1\n"
                    "6 changes made and saved\n"));
  const json history = json::parse(out({"history", "--json"}));
  EXPECT_EQ(ctl({"apply", "--ensure-saved", first, second, third}),
            printed("nothing to change; saved\n"));
  EXPECT_EQ(json::parse(out({"history", "--json"})), history);
  EXPECT_EQ(ctl({"apply", third, second, first}), printed("2 changes made, not saved\n"));
  EXPECT_EQ(out({"get", "IKE.IKE_PORT", "USERS[eve].PMP_TIMEOUT"}), "501\n7\n");
}

TEST_F(ApplySeveral, NullLeavesWhatThereIsAndNotWhatAnEarlierOneSays) {
  EXPECT_EQ(
      ctl({"apply", part("1", "IKE.IKE_PORT=501\n"), part("2", "{\"IKE\": {\"IKE_PORT\": null}}")}),
      printed("nothing to change\n"));
}

TEST_F(ApplySeveral, ADirectoryIsItsFilesInTheOrderOfTheirNames) {
  (void)part("20-b.conf", "IKE.IKE_PORT=502\n");
  (void)part("10-a.conf", "IKE.IKE_PORT=501\nLOG.WALL_ON=1\n");
  (void)part("9.conf", "IKE.IKE_PORT=503\n");
  (void)part("30.conf.dpkg-old", "IKE.IKE_PORT=504\n");
  (void)part("40.conf~", "nonsense");
  (void)part(".50.conf", "nonsense");
  EXPECT_EQ(ctl({"apply", parts}), printed("2 changes made, not saved\n"));
  EXPECT_EQ(out({"get", "IKE.IKE_PORT", "LOG.WALL_ON"}), "503\n1\n");
}

TEST_F(ApplySeveral, ADirectoryThatCannotBeListedIsAnError) {
  if (const auto reason = testing_support::whyRightsStay(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
  ASSERT_EQ(chmod(parts.c_str(), 0), 0);
  host::runInChild([&] {
    testing_support::dropRights();
    EXPECT_EQ(ctl({"apply", "--exclusive", parts}),
              failed(74, "cannot read " + parts + ": Permission denied"));
  });
  ASSERT_EQ(chmod(parts.c_str(), 0700), 0);
}

TEST_F(ApplySeveral, AnEmptyDirectoryWantsNothing) {
  EXPECT_EQ(ctl({"apply", parts}), printed("nothing to change\n"));
  EXPECT_EQ(ctl({"apply", "--ensure-saved", parts}), printed("nothing to change; saved\n"));
  EXPECT_EQ(ctl({"apply", "--exclusive", parts}),
            failed(65, parts + ": no file *.conf, and so nothing that would stay"));
  EXPECT_EQ(ctl({"apply", "--only-users", parts}).exitCode, 65);
  EXPECT_EQ(out({"user", "list"}), "alice\nbob\n");
}

TEST_F(ApplySeveral, AllMistakesOfAllAreToldWithTheirPlacesAndNothingIsWritten) {
  (void)part("1.conf", "LOG.WALL_ON=1\nIKE.IKE_PORT=0\n");
  (void)part("2.conf", "nonsense\nIKE.IKE_PORT=501\nIKE.NATT_PORT=0\n");
  (void)part("3.conf", "LOG.WALL_ON=0\n");
  (void)part("4.conf", "/ROOT=\n/IKE=\nIKE_PROT=1\nend=\nend=\n");
  const Outcome outcome = ctl({"apply", "--save", parts});
  EXPECT_EQ(outcome.exitCode, 65);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(
      outcome.err,
      testing::StartsWith("lparamsctl: " + parts +
                          "1.conf:2:1: IKE.IKE_PORT: \"0\" is not a whole number from 1 to 65535\n"
                          "lparamsctl: " +
                          parts +
                          "2.conf:1:1: this is no assignment; write GROUP.NAME=VALUE\n"
                          "lparamsctl: " +
                          parts +
                          "2.conf:3:1: IKE.NATT_PORT: \"0\" is not a whole number from 1 to 65535\n"
                          "lparamsctl: " +
                          parts + "4.conf:3:1: "));
  EXPECT_THAT(outcome.err, testing::EndsWith("\nlparamsctl: nothing was written\n"));
  EXPECT_EQ(out({"list", "--unsaved"}), "");
}

TEST_F(ApplySeveral, WhatOnlyAllTogetherCannotBeIsToldToo) {
  stop();
  start({{"--max-users", "3"}});
  const std::string first = part("1", "USERS[eve].PMP_TIMEOUT=7\n");
  const std::string second = part("2", "USERS[mia].PMP_TIMEOUT=7\n");
  const Outcome outcome = ctl({"apply", first, second});
  EXPECT_EQ(outcome.exitCode, 65);
  EXPECT_THAT(outcome.err, HasSubstr("nothing was written\n"));
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(out({"user", "list"}), "alice\nbob\n");
}

TEST_F(ApplySeveral, WhatAllTogetherCannotBeIsToldWhereItIsNamed) {
  const std::string first = part("1", "# who comes\nUSERS[eve].PMP_TIMEOUT=7\n");
  const std::string second = part("2", "USERS[mia].PMP_TIMEOUT=7\n");
  EXPECT_EQ(ctl({"apply", "--remove-user", "eve", first, second}),
            failed(65, first + ":2:1: USERS[eve]: named, and to be removed as well\n"
                               "nothing was written"));
}

TEST_F(Apply, WhatCouldNotBeSavedIsToldAllTheSame) {
  host::writeFile(settingsPath, "/ROOT=\nend=\n");  // somebody else's change
  const Outcome outcome = apply("IKE.IKE_PORT=501", {"--save", "--diff"});
  EXPECT_EQ(outcome.exitCode, 74);
  EXPECT_EQ(outcome.out, "IKE.IKE_PORT: 500 -> 501\n1 change made, not saved\n");
  EXPECT_THAT(outcome.err, HasSubstr("saving failed: "));
}

TEST_F(Apply, ValuesOfAnyBytesAndNamesOfAnyBytesArrive) {
  (void)out({"user", "add", "a].b=c: d"});
  EXPECT_EQ(apply("USERS[a].b=c: d].LSP_FILE= =# \nUSERS[a].b=c: d].PMP_TIMEOUT=1\n"),
            failed(65, path + ":2:1: USERS[a].b=c: d].PMP_TIMEOUT: \"1\" is not a whole number "
                              "from 5 to 4294967295\nnothing was written"));
  EXPECT_EQ(apply("USERS[a].b=c: d].LSP_FILE= \xff=# \nUSERS[\xc2\x9b].LSP_FILE=\nIKE.NO=1\n"),
            failed(65, path +
                           ":1:1: USERS[a].b=c: d].LSP_FILE: \" \\xff=# \" does not show what it "
                           "is; --bytes takes it all the same\n" +
                           path +
                           ":2:1: USERS[\\xc2\\x9b]: the name does not show what it is; --bytes "
                           "takes it all the same\n" +
                           path + ":3:1: IKE.NO: no such parameter\nnothing was written"));
  EXPECT_EQ(apply("USERS[a].b=c: d].LSP_FILE= \xff=# \n", {"--bytes"}).exitCode, 0);
  EXPECT_EQ(apply("USERS[a].b=c: d].LSP_FILE= \xff=# \n"), printed("nothing to change\n"));
  EXPECT_EQ(out({"get", "USERS[a].b=c: d].LSP_FILE"}), " \xff=# \n");
}

}  // namespace
}  // namespace system_testing
