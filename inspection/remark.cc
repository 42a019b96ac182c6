#include "inspection/remark.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "lparams/values/values.h"
#include "text/escape.h"

namespace inspection {
namespace {

using text::inQuotes;

std::optional<int64_t> numberIn(std::string_view digits) {
  int64_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [parsed, error] = std::from_chars(digits.data(), end, number);
  if (error != std::errc() || parsed != end) return {};
  return number;
}

/// "a number from 5 to 600", "0 or 1", "one of A, B".
std::string withoutWhole(const std::string& expected) {
  constexpr std::string_view LONG = "a whole number";
  return expected.starts_with(LONG) ? "a number" + expected.substr(LONG.size()) : expected;
}

std::string wouldTake(const Finding& finding) {
  return finding.taken ? "; the load would take " + text::escaped(*finding.taken) : "";
}

std::string didYouMean(const Finding& finding) {
  return finding.similar.empty() ? "" : "; did you mean " + finding.similar + "?";
}

std::string isNotExpected(const Finding& finding) {
  return inQuotes(finding.given.value_or("")) + " is not " + withoutWhole(finding.expected);
}

/// Of a value that could be read.
std::string otherValue(const Finding& finding) {
  const std::string given = finding.given.value_or("");
  const auto number = numberIn(given);
  const auto taken = numberIn(finding.taken.value_or(""));
  if (number && taken && *number >= 0) {
    return given + (*number < *taken ? " is below " : " is above ") + *finding.taken;
  }
  if (!finding.expected.starts_with("one of ")) return isNotExpected(finding);
  return inQuotes(given) + " is more than one name";
}

std::string missing(const Finding& finding) {
  const std::string lacks = "the file lacks " + finding.expected;
  if (finding.path.empty()) {
    return lacks + "; an agent would serve the defaults, and refuse to save them";
  }
  const bool one = finding.expected.find(", ") == std::string::npos;
  return lacks + "; the load would keep the " + (one ? "default" : "defaults");
}

std::string joined(const Finding& finding) {
  const size_t more = finding.otherLine - finding.place.line;
  const std::string lines = more == 1 ? "the next" : "the next " + std::to_string(more);
  return "no \"=\"; this line and " + lines + " are read as one name";
}

/// Of a text whose value stays as it is; one that is secret is not shown.
std::string theText(const Finding& finding) {
  const bool shown = finding.given && *finding.given != LPARAMS::Server::HIDDEN;
  return shown ? inQuotes(*finding.given) : "the text";
}

std::string userIn(const std::string& path) {
  const size_t open = path.find('[') + 1;
  return inQuotes(std::string_view(path).substr(open, path.rfind(']') - open));
}

std::string lineText(size_t line) { return "line " + std::to_string(line); }

/// Of a key that is empty.
bool isNameless(const Finding& finding) {
  return finding.path.empty() || finding.path.ends_with('.');
}

std::string messageOf(const Finding& finding) {
  switch (finding.kind) {
    case Finding::UnknownName:
      if (finding.otherLine != 0) return joined(finding);
      if (isNameless(finding)) return "no name; the load would ignore what stands here";
      return "no such parameter or block; the load would ignore it" + didYouMean(finding);
    case Finding::BlockNotClosed:
      return "the block is not closed before the end of the file";
    case Finding::MembersMissing:
      return missing(finding);
    case Finding::OtherRoot:
      return "the file begins with " + inQuotes(finding.given.value_or("")) + ", not with " +
             inQuotes(finding.expected) + "; the load would take nothing";
    case Finding::NotToItsEnd:
      return "the load would not come to the end of the file";
    case Finding::UnreadableValue:
      return isNotExpected(finding) + "; the load would keep " +
             text::escaped(finding.taken.value_or(""));
    case Finding::NoSuchName:
    case Finding::ExtraText:
      return isNotExpected(finding) + wouldTake(finding) + didYouMean(finding);
    case Finding::OtherValue:
      return otherValue(finding) + wouldTake(finding);
    case Finding::GivenTwice:
      return "a second time (first in " + lineText(finding.otherLine) + "); the later one counts";
    case Finding::SecondUser:
      return "a second user " + userIn(finding.path) + " (first in " + lineText(finding.otherLine) +
             ")";
    case Finding::NamelessUser:
      return "the user has no name";
    case Finding::TooManyUsers:
      return "more users than a write may leave (" + finding.expected + ")";
    case Finding::LineTaken:
      return "this line is read as a part of " + lineText(finding.otherLine);
    case Finding::LostBehindEnd:
      return "the character behind \"end=\" is lost; the line should end there";
    case Finding::ControlCharacters:
      return theText(finding) + " holds control characters, which no write may add";
    case Finding::LongText:
      return theText(finding) + " is longer than a write may make it (at most " +
             std::to_string(LPARAMS::Server::MAX_TEXT_SIZE) + " bytes)";
    case Finding::Edited:
    case Finding::NotReadBack:
      break;
  }
  return std::string(inWords(finding.kind));
}

bool isError(const Finding& finding) {
  switch (finding.kind) {
    case Finding::MembersMissing:
      return finding.path.empty();  // an agent would be degraded
    case Finding::OtherValue:
    case Finding::GivenTwice:
    case Finding::SecondUser:
    case Finding::NamelessUser:
    case Finding::TooManyUsers:
    case Finding::ControlCharacters:
    case Finding::LongText:
    case Finding::Edited:
      return false;
    default:
      return true;
  }
}

/// Whether a save would not write what the text says.
bool isLost(Finding::Kind kind) {
  switch (kind) {
    case Finding::MembersMissing:
    case Finding::SecondUser:
    case Finding::NamelessUser:
    case Finding::TooManyUsers:
    case Finding::ControlCharacters:
    case Finding::LongText:
    case Finding::Edited:
      return false;
    default:
      return true;
  }
}

}  // namespace

std::string_view nameOf(Severity severity) {
  return severity == Severity::Error ? "error" : "warning";
}

Remark remarkOf(const Finding& finding) {
  const bool hasNoName =
      finding.kind == Finding::UnknownName && (finding.otherLine != 0 || isNameless(finding));
  return {.severity = isError(finding) ? Severity::Error : Severity::Warning,
          .place = finding.place,
          .parameter = finding.path,
          .message = messageOf(finding),
          .given = finding.given,
          .taken = finding.taken,
          .named = !hasNoName && finding.kind != Finding::SecondUser,
          .reported = finding.reported,
          .loses = isLost(finding.kind)};
}

std::string lineOf(std::string_view file, const Remark& remark) {
  std::string line = text::escaped(file) + ":";
  if (remark.place.line != 0) {
    line += std::to_string(remark.place.line) + ":" + std::to_string(remark.place.column) + ":";
  }
  line.append(" ").append(nameOf(remark.severity)).append(": ");
  if (remark.named && !remark.parameter.empty()) line += text::escaped(remark.parameter) + ": ";
  return line + remark.message;
}

void sortByPlace(std::vector<Remark>& remarks) {
  std::ranges::stable_sort(remarks, {}, [](const Remark& remark) {
    // A line 0 is none.
    return std::pair(remark.place.line - 1, remark.place.column);
  });
}

}  // namespace inspection
