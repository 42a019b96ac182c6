#include "client/notice_report.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <vector>

#include "client/glob.h"
#include "client/values.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::Notice;
using bridge::NoticedChange;
using Json = CatalogueView::Json;

/// One thing of a notice.
struct Part {
  const char* what;                       // for programs
  const char* words;                      // for people
  std::string name = {};                  // of a parameter, user or group; empty if it has none
  const NoticedChange* change = nullptr;  // of a parameter's values
};

Part partOf(const NoticedChange& change) {
  const std::string& name = change.value.name;
  switch (change.kind) {
    case NoticedChange::Value:
      return {"changed", "", name, &change};
    case NoticedChange::LongValue:
      return {"changed", "changed, too long to be shown", name};
    case NoticedChange::UserAdded:
      return {"added", "added", name};
    case NoticedChange::UserRemoved:
      return {"removed", "removed", name};
    case NoticedChange::UserOrder:
      return {"reordered", "has another order", name};
  }
  return {"unknown", "changed in a way that this program does not know", name};
}

Part partOf(const Notice& notice) {
  switch (notice.what) {
    case Notice::Written:
      return {"written", "written, nothing has changed", notice.group};
    case Notice::WrittenInPart:
      return {"broken-off", "the write broke off", notice.group};
    case Notice::Saved:
      return {"saved", "saved"};
    case Notice::NothingToSave:
      return {"nothing-to-save", "saved, nothing had to be written"};
    case Notice::NotSaved:
      return {"not-saved", "not saved"};
    case Notice::Refused:
      return {"refused", "refused"};
    case Notice::DegradationBegan:
      return {"degraded", "degraded, saves are refused"};
    case Notice::DegradationEnded:
      return {"not-degraded", "no longer degraded"};
    case Notice::AgentEnds:
      return {"end", "the agent ends"};
  }
  return {"unknown", "something that this program does not know"};
}

std::vector<Part> partsOf(const Notice& notice, const std::string& glob) {
  const auto isAskedFor = [&](const std::string& name) {
    return glob.empty() || (!name.empty() && matchesName(glob, name));
  };
  std::vector<Part> parts;
  for (const NoticedChange& change : notice.changes) {
    if (isAskedFor(change.value.name)) parts.push_back(partOf(change));
  }
  // Any of these may be asked for.
  if (notice.more > 0) parts.push_back({"more", "", notice.group});
  const bool saysMore = notice.what != Notice::Written || (notice.changes.empty() && parts.empty());
  if (saysMore && isAskedFor(notice.group)) parts.push_back(partOf(notice));
  return parts;
}

/// ISO 8601, UTC, to the millisecond.
std::string timeOf(const Notice& notice) {
  constexpr uint64_t YEAR_9999 = 253'402'300'799;  // its last second
  const uint64_t seconds = notice.time / 1000;
  std::tm fields{};
  const auto time = static_cast<std::time_t>(seconds);
  if (seconds > YEAR_9999 || ::gmtime_r(&time, &fields) == nullptr) return "-";
  std::array<char, 32> text{};
  const size_t size = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &fields);
  std::array<char, 16> fraction{};
  (void)std::snprintf(fraction.data(), fraction.size(), ".%03uZ",
                      static_cast<unsigned>(notice.time % 1000));
  return std::string(text.data(), size) + fraction.data();
}

std::string wordsOf(const Part& part, const Notice& notice) {
  if (part.change != nullptr) {
    const bridge::NamedValue& value = part.change->value;
    return shownValue(value, value.before) + " -> " + shownValue(value, value.running);
  }
  if (part.words[0] == '\0') return std::to_string(notice.more) + " more changes";
  return part.words;
}

Json valueOf(const NoticedChange& change, const std::optional<std::string>& value,
             const CatalogueView& catalogue) {
  if (!value) return {};
  const Json* const param = catalogue.find(change.value.name);
  return param == nullptr ? Json(*value) : typedValue(*param, *value);
}

}  // namespace

std::string linesOf(const Notice& notice, const std::string& glob) {
  const std::string time = timeOf(notice);
  const std::string who = "   (" + text::escaped(notice.program) + ", uid " +
                          std::to_string(notice.uid) + ", pid " + std::to_string(notice.pid) +
                          ")\n";
  std::string lines;
  for (const Part& part : partsOf(notice, glob)) {
    lines += time + " ";
    if (!part.name.empty()) lines += text::escaped(part.name) + ": ";
    lines += wordsOf(part, notice);
    const bool ofAll = part.change == nullptr && part.what == partOf(notice).what;
    if (ofAll && !notice.text.empty()) lines += ": " + text::escaped(notice.text);
    lines += who;
  }
  return lines;
}

std::string jsonLinesOf(const Notice& notice, const std::string& glob,
                        const CatalogueView& catalogue) {
  std::string lines;
  for (const Part& part : partsOf(notice, glob)) {
    Json line = {{"time", timeOf(notice)}, {"what", part.what}};
    if (!part.name.empty()) line["name"] = part.name;
    if (part.change != nullptr) {
      line["before"] = valueOf(*part.change, part.change->value.before, catalogue);
      line["after"] = valueOf(*part.change, part.change->value.running, catalogue);
      if (part.change->value.secret) line["secret"] = true;
    }
    if (std::string_view(part.what) == "more") line["changes"] = notice.more;
    if (!notice.group.empty()) line["revision"] = notice.revision;
    if (notice.reason != bridge::Reason::None) line["reason"] = notice.reason;
    if (!notice.text.empty()) line["text"] = notice.text;
    line["program"] = notice.program;
    line["uid"] = notice.uid;
    line["pid"] = notice.pid;
    lines += line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
  }
  return lines;
}

}  // namespace client
