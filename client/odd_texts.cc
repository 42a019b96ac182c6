#include "client/odd_texts.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "editing/shown_name.h"
#include "text/escape.h"

namespace client {

using bridge::Change;
using bridge::NamedValues;

bool showsAsItIs(const std::string& text) {
  const bool ascii =
      std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  return ascii || text::escaped(text) == text;
}

std::string oddTexts(const std::vector<Change>& steps, const NamedValues& now) {
  std::map<std::string_view, const bridge::NamedValue*> present;
  for (const bridge::NamedValue& value : now.values) present.emplace(value.name, &value);
  constexpr const char* ODD = " does not show what it is; --bytes takes it all the same\n";
  std::string odd;
  for (const Change& step : steps) {
    if (step.kind == Change::AddUser && !showsAsItIs(step.name)) {
      const std::string user = "USERS[" + step.name + "]";
      if (present.contains(user + ".NAME")) continue;  // moves to another place
      odd += editing::shownName(user) + ": the name" + ODD;
    }
    if (step.kind != Change::Set || showsAsItIs(step.value)) continue;
    const auto found = present.find(step.name);
    const bool isThere = found != present.end();
    if (isThere && found->second->running == step.value) continue;
    const bool secret = isThere && found->second->secret;
    odd += editing::shownName(step.name) + ": " +
           (secret ? "the value" : text::inQuotes(step.value)) + ODD;
  }
  return odd;
}

}  // namespace client
