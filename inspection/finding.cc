#include "inspection/finding.h"

namespace inspection {

std::string_view inWords(Finding::Kind kind) {
  switch (kind) {
    case Finding::UnknownName:
      return "the group has no such parameter or block; its value was ignored";
    case Finding::BlockNotClosed:
      return "the block is not closed before the end of the file; what was read of it is kept";
    case Finding::MembersMissing:
      return "the group has fewer members in the file than it should; those missing keep their "
             "values";
    case Finding::OtherRoot:
      return "the file does not begin with the root block; nothing was loaded";
    case Finding::NotToItsEnd:
      return "the file could not be loaded to its end; what was read is kept";
    case Finding::UnreadableValue:
      return "the value cannot be read; the parameter kept its value";
    case Finding::NoSuchName:
      return "the value has no such name; the parameter took its default";
    case Finding::ExtraText:
      return "the value is followed by more text, which was ignored";
    case Finding::OtherValue:
      return "the parameter took another value than the file has";
    case Finding::GivenTwice:
      return "this is given once more; the later one counts";
    case Finding::SecondUser:
      return "another user has the same name";
    case Finding::NamelessUser:
      return "the user has no name";
    case Finding::TooManyUsers:
      return "there are more users than a write may leave";
    case Finding::LineTaken:
      return "the line became a part of one before it";
    case Finding::LostBehindEnd:
      return "the character behind the end of the block was lost";
    case Finding::ControlCharacters:
      return "the text holds control characters, which no write may add";
    case Finding::LongText:
      return "the text is longer than a write may make it";
    case Finding::Edited:
      return "the settings file has another value than what was saved last";
    case Finding::NotReadBack:
      return "the settings file cannot hold the value; the next start takes another one";
  }
  return "?";
}

std::vector<std::pair<const char*, std::string>> fieldsOf(const Finding& finding) {
  std::vector<std::pair<const char*, std::string>> fields;
  const auto addNumber = [&](const char* name, size_t number) {
    if (number != 0) fields.emplace_back(name, std::to_string(number));
  };
  const auto addText = [&](const char* name, const std::optional<std::string>& text) {
    if (text) fields.emplace_back(name, *text);
  };
  addNumber("line", finding.place.line);
  addNumber("column", finding.place.column);
  if (!finding.path.empty()) fields.emplace_back("parameter", finding.path);
  addText("text", finding.given);
  addText("was", finding.was);
  if (!finding.expected.empty()) {
    fields.emplace_back(finding.kind == Finding::MembersMissing ? "missing" : "expected",
                        finding.expected);
  }
  addText("value", finding.taken);
  if (!finding.similar.empty()) fields.emplace_back("similar", finding.similar);
  addNumber("other-line", finding.otherLine);
  return fields;
}

void Findings::add(Finding finding) {
  ++count;
  if (finding.reported) ++reported;
  if (keepNext()) first.push_back(std::move(finding));
}

}  // namespace inspection
