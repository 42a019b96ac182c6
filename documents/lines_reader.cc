#include "documents/lines_reader.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "editing/shown_name.h"
#include "inspection/settings_completeness.h"

namespace documents {
namespace {

constexpr std::string_view USERS_HEAD = "USERS[";

bool isMember(std::string_view word) {
  return !word.empty() && std::ranges::all_of(word, [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  });
}

/// The name in front of the "=" that ends it. A user's own name may hold any byte: it ends at the
/// first "]" behind which a parameter is named.
std::string_view nameIn(std::string_view line) {
  if (line.starts_with(USERS_HEAD)) {
    for (size_t at = line.find("]."); at != std::string_view::npos; at = line.find("].", at + 1)) {
      const size_t equals = line.find('=', at);
      if (equals == std::string_view::npos) break;
      if (isMember(line.substr(at + 2, equals - at - 2))) return line.substr(0, equals);
    }
  }
  return line.substr(0, line.find('='));
}

class LinesReader {
 public:
  explicit LinesReader(size_t keptMistakes) : document(Document::Lines, keptMistakes) {}

  void read(std::string_view line, size_t number) {
    const std::string_view name = nameIn(line);
    if (name.empty() || name.size() == line.size()) {
      // The text is not shown: it may be a misspelt secret.
      document.addMistake({number, 1}, "this is no assignment; write GROUP.NAME=VALUE");
      return;
    }
    const auto [first, isNew] = lines_.emplace(name, number);
    if (!isNew) {
      document.addMistake({number, 1}, editing::shownName(name) + ": given twice (first in line " +
                                           std::to_string(first->second) + ")");
      return;
    }
    document.values.push_back(
        {std::string(name), std::string(line.substr(name.size() + 1)), {number, 1}});
    addUser(name, number);
  }

  Document document;

 private:
  void addUser(std::string_view name, size_t number) {
    const size_t end = name.rfind("].");
    if (!name.starts_with(USERS_HEAD) || end == std::string_view::npos) return;
    const std::string_view user = name.substr(USERS_HEAD.size(), end - USERS_HEAD.size());
    if (users_.insert(user).second) document.users.push_back({std::string(user), {number, 1}});
  }

  std::map<std::string_view, size_t> lines_;  // by name
  std::set<std::string_view> users_;
};

}  // namespace

Document readLines(std::string_view text, size_t keptMistakes) {
  LinesReader reader(keptMistakes);
  std::string_view rest = inspection::withoutByteOrderMark(text);
  for (size_t number = 1; !rest.empty(); ++number) {
    const size_t length = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, length);
    if (!line.empty() && line.front() != '#') reader.read(line, number);
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
  return std::move(reader.document);
}

}  // namespace documents
