#include "tests/prove/fuzz/settings_text.h"

#include <iterator>
#include <set>
#include <sstream>

#include "lparams/params/text_stream.h"
#include "lparams/storage/settings_reader.h"
#include "lparams/values/values.h"
#include "lparams/values/visit.h"
#include "tests/prove/fuzz/target.h"
#include "tests/support/recording_load_log.h"

namespace fuzz {

using namespace LPARAMS::Server;

namespace {

/// Texts of values that are legal, or so near that it hardly matters.
std::vector<std::string> valuesOf(Param& param) {
  std::vector<std::string> values;
  visit(param, [&](auto& known) {
    using Class = std::remove_cvref_t<decltype(known)>;
    if constexpr (requires { known.variants; }) {
      for (const Variant* row = known.variants; row->name != nullptr; ++row) {
        values.emplace_back(row->name);
      }
    } else if constexpr (std::is_same_v<Class, BoolParam>) {
      values = {"0", "1"};
    } else if constexpr (requires { known.min; }) {
      values = {std::to_string(known.min), std::to_string(known.max)};
    } else {
      values = {"", "a", " two words ", "x=y", "end=", std::string(300, 'l')};
    }
  });
  return values;
}

template <typename Visit>
void forEachParam(ParamGroup& group, Visit visit) {
  for (Param* param : group.fileParams) visit(*param);
}

Param& memberAt(ParamGroup& group, size_t index) {
  return **std::next(group.fileParams.begin(), static_cast<std::ptrdiff_t>(index));
}

}  // namespace

Load load(std::istream& is, Catalogue& settings) {
  testing_support::ActiveLoadLog log;
  Load made;
  made.whole = readSettings(settings, is, log);
  made.text = textOf(settings);
  made.reports = std::move(log.reports);
  is.clear();
  made.unread = static_cast<size_t>(
      std::distance(std::istreambuf_iterator<char>(is), std::istreambuf_iterator<char>()));
  return made;
}

Load load(const std::string& text, Catalogue& settings) {
  std::istringstream is(text);
  return load(is, settings);
}

bool isEndless(std::string_view text) {
  return text.find_first_not_of("=\xEF\xBB\xBF") == std::string_view::npos;
}

std::string textOf(ParamGroup& settings) {
  TextStream stream(4096);
  (void)settings.save(stream, 0);
  return stream.take();
}

void requireToSurvive(ParamGroup& settings, Catalogue& restarted) {
  const std::string saved = textOf(settings);
  const Load start = load(saved, restarted);
  if (!start.whole) found("what was saved is not read to its end:\n" + saved);
  for (const std::string& report : start.reports) {
    found("what was saved is loaded with a report: " + report + "\n" + saved);
  }
  if (start.text != saved) found("the next save writes\n" + start.text + "after\n" + saved);
}

void addUsers(Catalogue& settings, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    listAdd(settings.userList)->NAME.value = "user" + std::to_string(i);
  }
}

void forEachSetting(const std::function<void(Catalogue& settings, ParamGroup& group)>& visit) {
  Catalogue names;
  for (size_t group = 0; group < names.groups().size(); ++group) {
    const bool isList = names.groups()[group] == names.USERS;
    {
      Catalogue defaults;
      visit(defaults, *defaults.groups()[group]);
    }
    USER_t user;
    ParamGroup& members = isList ? static_cast<ParamGroup&>(user) : *names.groups()[group];
    for (size_t member = 0; member < members.fileParams.size(); ++member) {
      for (const std::string& value : valuesOf(memberAt(members, member))) {
        Catalogue settings;
        ParamGroup* owner = settings.groups()[group];
        if (isList) {
          addUsers(settings, 2);
          owner = settings.userList.items.front();
        }
        (void)setValue(memberAt(*owner, member), value);
        visit(settings, *settings.groups()[group]);
      }
    }
  }
}

std::vector<std::string> names() {
  std::set<std::string> all{"ROOT", "USER", "end"};
  const auto add = [&](ParamGroup& group) {
    all.insert(group.name);
    forEachParam(group, [&](Param& param) {
      all.insert(param.name);
      for (const std::string& value : valuesOf(param)) {
        if (value.size() < 40) all.insert(value);
      }
    });
  };
  Catalogue settings;
  for (ParamGroup* group : settings.groups()) {
    if (group == settings.USERS) {
      all.insert(group->name);
    } else {
      add(*group);
    }
  }
  USER_t user;
  add(user);
  all.erase("");
  return {all.begin(), all.end()};
}

}  // namespace fuzz
