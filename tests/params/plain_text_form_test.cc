// The ways past the stream's own operations lead to the same place: files with every kind of damage
// are loaded and saved with them and without, and nobody can tell which is which.
#include "tests/params/plain_text_form.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <streambuf>

#include "lparams/catalogue/ike_group.h"
#include "lparams/catalogue/user_list.h"
#include "lparams/params/mask_param.h"
#include "lparams/storage/change_detection.h"
#include "tests/params/variant_tables.h"
#include "tests/support/param_forms.h"
#include "tests/support/recording_load_log.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using namespace std::string_view_literals;

// There is only one thread for the sanitizer of threads to watch, and that takes a minute.
#if defined(__SANITIZE_THREAD__)
constexpr unsigned DAMAGED_FILES = 300;
#else
constexpr unsigned DAMAGED_FILES = 3000;
#endif

/// A parameter of every class, a group of the catalogue and the list of users.
struct Root : ParamGroup {
  Root() : ParamGroup("ROOT") {
    add(ike);
    add(users);
  }

  BoolParam flag{*this, "FLAG", true};
  PortParam port{*this, "PORT", Default{500}, Range{1, 65535}};
  UIntParam count{*this, "COUNT", Default{60}, Range{5, 4294967290}};
  SimpleParam<int, TYPE_INT> number{*this, "NUMBER", -3};
  SimpleParam<std::string, TYPE_STRING> word{*this, "WORD", "word"};
  StStParam line{*this, "LINE", " a line "};
  QcdSParam secret{*this, "SECRET", ""};
  EnumParam enumeration{*this, "ENUM", 1, FLAGS};
  MaskParam mask{*this, "MASK", 5, FLAGS};
  IKE_t ike;
  ParamVector<USER_t> users{"USERS"};
};

std::string wholeText() {
  Root root;
  for (const char* name : {"first", "second user", ""}) listAdd(root.users)->NAME.value = name;
  std::ostringstream os;
  plainSave(root, os, 0);
  return os.str();
}

/// Damages the text in the way that the generator says.
void damage(std::string& text, std::mt19937& random) {
  const auto below = [&random](size_t limit) { return limit == 0 ? 0 : random() % limit; };
  const auto lineAt = [&text](size_t at) {
    const size_t begin = at == 0 ? 0 : text.rfind('\n', at - 1) + 1;
    return std::pair(begin, std::min(text.find('\n', begin), text.size()) - begin);
  };
  constexpr std::string_view TELLING = "=\n\r\t /|-+0123456789xeE\0\x80\xff"sv;
  const size_t at = below(text.size());
  switch (random() % 8) {
    case 0:
      if (!text.empty()) text[at] = static_cast<char>(random());
      break;
    case 1:
      if (!text.empty()) text[at] = TELLING[below(TELLING.size())];
      break;
    case 2:
      text.insert(at, std::string(1 + below(12), TELLING[below(TELLING.size())]));
      break;
    case 3:
      text.resize(at);
      break;
    case 4:
      text.erase(at, below(40));
      break;
    case 5:
      text.insert(below(text.size()), text.substr(at, below(200)));
      break;
    case 6: {  // a line moves to another place
      const auto [begin, size] = lineAt(at);
      const std::string line = text.substr(begin, size + 1);
      text.erase(begin, size + 1);
      text.insert(lineAt(below(text.size())).first, line);
      break;
    }
    case 7: {  // a value becomes another one
      static const char* const VALUES[] = {"",           "2",       "-1",  "65536",
                                           "007",        "+5",      "4 x", "4294967295",
                                           "4294967296", "two|ONE", "|",   "99999999999999999999",
                                           "\t12",       "1\r",     "0x1f"};
      const auto [begin, size] = lineAt(at);
      const size_t equals = text.find('=', begin);
      if (equals >= begin + size) break;
      text.replace(equals + 1, begin + size - equals - 1, VALUES[below(std::size(VALUES))]);
      break;
    }
  }
}

/// Hands out the text in pieces, so that a value may end with the buffer or go on in the next one.
class PiecewiseBuffer : public std::streambuf {
 public:
  PiecewiseBuffer(std::string text, size_t pieceSize) : text_(std::move(text)), size_(pieceSize) {}

 private:
  int_type underflow() override {
    if (next_ == text_.size()) return traits_type::eof();
    const size_t size = std::min(size_, text_.size() - next_);
    setg(&text_[next_], &text_[next_], &text_[next_] + size);
    next_ += size;
    return traits_type::to_int_type(*gptr());
  }

  std::string text_;
  const size_t size_;
  size_t next_ = 0;
};

/// Has no buffer: every byte comes on its own.
class UnbufferedSink : public std::streambuf {
 public:
  std::string text;

 private:
  int_type overflow(int_type c) override {
    text += traits_type::to_char_type(c);
    return c;
  }
};

/// What can be seen of a load.
struct Outcome {
  bool result;
  std::vector<std::string> reports;
  std::string text;

  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* os) {
  *os << "result " << outcome.result << "\n";
  for (const std::string& report : outcome.reports) *os << report << "\n";
  *os << outcome.text;
}

Outcome loadPlainly(const std::string& text) {
  ActiveLoadLog log;
  Root root;
  std::istringstream is(text);
  const bool result = plainLoad(root, is);
  std::ostringstream saved;
  plainSave(root, saved, 0);
  return {result, log.reports, saved.str()};
}

Outcome load(const std::string& text, size_t pieceSize) {
  ActiveLoadLog log;
  Root root;
  PiecewiseBuffer buffer(text, pieceSize);
  std::istream is(&buffer);
  const bool result = root.load(is);
  UnbufferedSink sink;
  std::ostream unbuffered(&sink);
  root.save(unbuffered, 0);
  EXPECT_EQ(savedText(root), sink.text);
  std::string inMemory(pieceSize, '?');  // of a former text, longer or shorter than this one
  raw_settings_(root, inMemory);
  EXPECT_EQ(inMemory, sink.text);
  return {result, log.reports, sink.text};
}

TEST(PlainTextForm, DamagedFilesLoadAndSaveTheSameWithoutTheFastWays) {
  const std::string whole = wholeText();
  constexpr size_t PIECE_SIZES[] = {1, 7, 64, 1'000'000};
  for (unsigned seed = 0; seed < DAMAGED_FILES && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::string text = whole.substr(whole.find('=') + 1);
    for (auto damages = random() % 5; damages > 0; --damages) damage(text, random);
    const Outcome expected = loadPlainly(text);
    EXPECT_EQ(load(text, PIECE_SIZES[seed % std::size(PIECE_SIZES)]), expected) << inQuotes(text);
  }
}

}  // namespace
}  // namespace LPARAMS::Server
