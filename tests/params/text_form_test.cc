// Numbers and words in the settings file are the same whatever the stream and the process are set
// to: the agent's code may hand over any stream and may have any global locale.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <locale>
#include <sstream>

#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/mask_param.h"
#include "lparams/params/numeric_param.h"
#include "lparams/params/text_reader.h"
#include "lparams/params/text_writer.h"
#include "tests/params/variant_tables.h"
#include "tests/support/param_forms.h"
#include "tests/support/recording_load_log.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using namespace std::string_literals;

/// A parameter of every class that has a text form.
struct EveryClass : ParamGroup {
  EveryClass() : ParamGroup("ALL") {}
  BoolParam flag{*this, "FLAG", false};
  PortParam port{*this, "PORT", Default{1}, Range{0, 65535}};
  UIntParam count{*this, "COUNT", Default{2}, Range{0, 4294967295}};
  SimpleParam<int, 4> number{*this, "NUMBER", -3};
  SimpleParam<std::string, 6> word{*this, "WORD", "word"};
  StStParam line{*this, "LINE", "line"};
  EnumParam enumeration{*this, "ENUM", 1, FLAGS};
  MaskParam mask{*this, "MASK", 1, FLAGS};
};

constexpr const char* CHANGED_TEXT =
    "/ALL=\n"
    "    FLAG=1\n"
    "    PORT=65432\n"
    "    COUNT=4294967210\n"
    "    NUMBER=-1234567\n"
    "    WORD=other\n"
    "    LINE=1,234 a \n"
    "    ENUM=FOUR\n"
    "    MASK=ONE|FOUR\n"
    "end=\n";

/// Groups digits, prints its own point and its own words for a bool.
class OddNumbers : public std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  char do_decimal_point() const override { return ','; }
  std::string do_truename() const override { return "ja"; }
  std::string do_falsename() const override { return "nein"; }
};

std::locale oddLocale() { return {std::locale::classic(), new OddNumbers}; }

/// The global locale of the process is another one for as long as this lives.
class GlobalLocale {
 public:
  explicit GlobalLocale(const std::locale& locale) : before_(std::locale::global(locale)) {}
  ~GlobalLocale() { std::locale::global(before_); }

 private:
  std::locale before_;
};

using Manipulate = void (*)(std::ios&);

struct StreamRow {
  const char* description;
  Manipulate manipulate;
};

const StreamRow STREAMS[] = {
    {"hexadecimal", [](std::ios& s) { s.flags(std::ios::hex | std::ios::showbase); }},
    {"octal", [](std::ios& s) { s.flags(std::ios::oct | std::ios::showbase); }},
    {"no base", [](std::ios& s) { s.unsetf(std::ios::basefield); }},
    {"words for a bool", [](std::ios& s) { s.setf(std::ios::boolalpha); }},
    {"sign and capitals",
     [](std::ios& s) { s.setf(std::ios::showpos | std::ios::uppercase | std::ios::showpoint); }},
    {"white space not skipped", [](std::ios& s) { s.unsetf(std::ios::skipws); }},
    {"flushed by itself", [](std::ios& s) { s.setf(std::ios::unitbuf); }},
    {"tied to another stream",
     [](std::ios& s) {
       static std::ostringstream other;
       s.tie(&other);
     }},
    {"grouping locale", [](std::ios& s) { s.imbue(oddLocale()); }},
    {"all at once",
     [](std::ios& s) {
       s.imbue(oddLocale());
       s.flags(std::ios::hex | std::ios::boolalpha | std::ios::showbase | std::ios::internal);
       s.fill('*');
       s.width(2);
       s.precision(1);
     }},
};

/// Saves a group with values away from its defaults.
void saveChanged(std::ostream& os) {
  EveryClass group;
  group.flag.value = true;
  group.port.value = 65432;
  group.count.value = 4294967210;
  group.number.value = -1234567;
  group.word.value = "other";
  group.line.value = "1,234 a ";
  group.enumeration.value = 4;
  group.mask.value = 5;
  EXPECT_TRUE(group.save(os, 0));
}

/// Loads what saveChanged has saved and expects the same values and no report.
void loadChanged(std::istream& is) {
  ActiveLoadLog log;
  EveryClass group;
  is.ignore(5);  // the head up to its "="
  EXPECT_TRUE(group.load(is));
  EXPECT_EQ(savedText(group), CHANGED_TEXT);
  EXPECT_EQ(log.reports, std::vector<std::string>{});
}

TEST(TextForm, SavedTextDoesNotDependOnTheStreamsState) {
  for (const StreamRow& row : STREAMS) {
    SCOPED_TRACE(row.description);
    std::ostringstream os;
    row.manipulate(os);
    saveChanged(os);
    EXPECT_EQ(os.str(), CHANGED_TEXT);
  }
}

TEST(TextForm, LoadedValuesDoNotDependOnTheStreamsState) {
  for (const StreamRow& row : STREAMS) {
    SCOPED_TRACE(row.description);
    std::istringstream is(CHANGED_TEXT);
    row.manipulate(is);
    loadChanged(is);
  }
}

TEST(TextForm, TheGlobalLocaleChangesNothing) {
  const GlobalLocale odd(oddLocale());
  std::ostringstream os;
  saveChanged(os);
  EXPECT_EQ(os.str(), CHANGED_TEXT);
  std::istringstream is(CHANGED_TEXT);
  loadChanged(is);
}

TEST(TextForm, GroupedDigitsAreNotOneNumberInAnyLocale) {
  ActiveLoadLog log;
  EveryClass group;
  std::istringstream is("10.485.760\n");
  is.imbue(oddLocale());
  EXPECT_TRUE(group.count.load(is));
  EXPECT_EQ(group.count.value, 10u);
  EXPECT_EQ(log.reports, std::vector<std::string>{"extraText(COUNT, \".485.760\")"});
}

TEST(TextForm, AStreamForBothDirectionsTakesAndGives) {
  std::stringstream both;
  saveChanged(both);
  saveChanged(both);
  loadChanged(both);
  loadChanged(both);
  EXPECT_EQ(both.get(), std::char_traits<char>::eof());
}

TEST(TextForm, AFileTakesAndGives) {
  const std::string path = testing::TempDir() + "text_form_test_" + std::to_string(getpid());
  {
    std::ofstream file(path);
    for (int i = 0; i < 100; ++i) saveChanged(file);  // more than the stream's buffer
  }
  std::ifstream file(path);
  for (int i = 0; i < 100; ++i) loadChanged(file);
  std::remove(path.c_str());
}

TEST(TextForm, TheStreamGetsItsStateBack) {
  std::istringstream is(CHANGED_TEXT);
  const std::locale locale = oddLocale();
  is.imbue(locale);
  is.flags(std::ios::hex | std::ios::boolalpha);
  is.width(2);
  loadChanged(is);
  EXPECT_EQ(is.flags(), std::ios::hex | std::ios::boolalpha);
  EXPECT_EQ(is.width(), 2);
  EXPECT_EQ(is.getloc(), locale);
}

TEST(TextForm, AFailedExtractionLeavesTheTargetAndTheFailure) {
  std::istringstream is("99999999999");
  unsigned int value = 7;
  extractValue(is, value);
  EXPECT_EQ(value, 7u);
  EXPECT_TRUE(is.fail());
}

TEST(TextForm, NothingIsReadOnceTheStreamHasFailed) {
  std::istringstream is("text");
  TextReader reader(is);
  EXPECT_EQ(reader.restOfLine(), "text");
  EXPECT_FALSE(reader.failed());
  EXPECT_EQ(reader.restOfLine(), "");
  EXPECT_TRUE(reader.failed());
  EXPECT_EQ(reader.upTo('='), "");
}

// The stream may hold a text that goes on behind the place where the lines are put.
TEST(TextForm, NothingIsWrittenBehindThePutPositionButTheLines) {
  EveryClass group;
  std::ostringstream expected;
  EXPECT_TRUE(group.save(expected, 1));
  const std::string before(expected.str().size() + 100, '#');
  std::ostringstream os(before);
  EXPECT_TRUE(group.save(os, 1));
  EXPECT_EQ(os.str(), expected.str() + std::string(100, '#'));

  std::ostringstream appended(before, std::ios::ate);
  EXPECT_TRUE(group.save(appended, 1));
  EXPECT_EQ(appended.str(), before + expected.str());
}

TEST(TextForm, ALineOfAnyLengthIsHandedOverAsItIs) {
  for (const size_t length : {0, 200, 240, 250, 251, 252, 253, 256, 300, 100'000}) {
    SCOPED_TRACE(length);
    const std::string value(length, 'v');
    std::ostringstream os;
    putLine(os, 1, "N", "=", value);
    EXPECT_EQ(os.str(), "    N=" + value + "\n");
  }
}

}  // namespace
}  // namespace LPARAMS::Server
