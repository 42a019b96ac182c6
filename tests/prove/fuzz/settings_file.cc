// The text of a settings file: what the module, its fast and its plain reader, the inspection and
// the check make of it.
#include <algorithm>
#include <sstream>
#include <streambuf>

#include "checking/check.h"
#include "inspection/inspection.h"
#include "inspection/settings_completeness.h"
#include "tests/prove/fuzz/settings_text.h"
#include "tests/prove/fuzz/target.h"

namespace fuzz {
namespace {

using namespace LPARAMS::Server;

/// Gives out a text a few bytes at a time, so that keys and values go on behind the buffer.
class Pieces final : public std::streambuf {
 public:
  Pieces(const std::string& text, size_t size) : text_(text), size_(size) {}

 protected:
  int_type underflow() override {
    if (at_ == text_.size()) return traits_type::eof();
    const size_t size = std::min(size_, text_.size() - at_);
    char* const begin = const_cast<char*>(text_.data()) + at_;
    setg(begin, begin, begin + size);
    at_ += size;
    return traits_type::to_int_type(*begin);
  }

 private:
  const std::string& text_;
  const size_t size_;
  size_t at_ = 0;
};

std::string inWords(const Load& made) {
  std::string words = made.whole ? "whole" : "not whole";
  words += ", " + std::to_string(made.unread) + " unread";
  for (const std::string& report : made.reports) words += "\n  " + report;
  return words + "\n" + made.text;
}

void requireSame(const Load& fast, const Load& other, const std::string& which) {
  if (fast == other) return;
  found("the fast reader: " + inWords(fast) + "\n" + which + ": " + inWords(other));
}

/// The one that takes every byte through the stream.
Load loadPlainly(const std::string& text) {
  Catalogue settings;
  std::istringstream is(text);
  std::ostringstream tied;
  is.tie(&tied);
  return load(is, settings);
}

Load loadInPieces(const std::string& text, size_t size) {
  Catalogue settings;
  Pieces pieces(text, size);
  std::istream is(&pieces);
  return load(is, settings);
}

void requireToReadAll(const std::string& text, const Load& made) {
  const std::string_view unread = std::string_view(text).substr(text.size() - made.unread);
  const bool all = std::ranges::all_of(unread, [](unsigned char byte) { return byte <= ' '; });
  if (!made.whole || !all) found("a complete text is not read to its end: " + inWords(made));
}

void requireCheckToAgree(const checking::Checked& checked, const Load& made) {
  require(checked.usable == made.whole, "the check and the load differ in whether it is usable");
  require(textOf(*checked.settings) == made.text, "the check has other values than the load");
  const auto reported = std::ranges::count_if(checked.remarks, &inspection::Remark::reported);
  const size_t ofTheFile = made.whole ? 0 : 1;  // is reported by the load of the whole file
  if (static_cast<size_t>(reported) == made.reports.size() + ofTheFile) return;
  found("the check has " + std::to_string(reported) + " reports, the load has " + inWords(made));
}

}  // namespace

void tryOnce(std::string_view input) {
  const std::string text(input);
  const checking::Checked checked = checking::check(text);
  const std::string incomplete = inspection::incompleteBecause(text);
  if (isEndless(text)) {
    require(!incomplete.empty(), "the agent would load a text that is read for ever");
    return;
  }
  Catalogue settings;
  Load fast = load(text, settings);
#ifdef PLANTED
  if (text.find("IKE_PORT=501") != text.npos) fast.text[0] = '!';
#endif
  requireSame(fast, loadPlainly(text), "the plain reader");
  const size_t size = 1 + (text.size() * 7 + static_cast<unsigned char>(text.back())) % 61;
  requireSame(fast, loadInPieces(text, size), "in pieces");
  if (incomplete.empty()) requireToReadAll(text, fast);
  if (checked.form == checking::Checked::SettingsFile) requireCheckToAgree(checked, fast);
  Catalogue restarted;
  requireToSurvive(settings, restarted);
}

std::vector<std::string> seeds() {
  std::vector<std::string> texts;
  forEachSetting([&](Catalogue& whole, ParamGroup& group) {
    texts.push_back("/ROOT=\n" + textOf(group) + "end=\n");
    if (texts.size() % 50 == 1) texts.push_back(textOf(whole));
  });
  Catalogue many;
  addUsers(many, 5);
  texts.push_back("\xEF\xBB\xBF" + textOf(many));
  texts.emplace_back(
      "/ROOT=\n/IKE=\nIKE_PORT=70000\nIKE_PORT=x\nFOO=1\n/BAR=\nA=1\nend=\nend=\nend=\n");
  return texts;
}

}  // namespace fuzz
