#include "inspection/inspector.h"

#include <algorithm>
#include <utility>

#include "inspection/as_given.h"
#include "lparams/params/text_reader.h"
#include "lparams/storage/settings_reader.h"
#include "lparams/values/values.h"
#include "lparams/values/visit.h"
#include "text/shortened.h"
#include "text/similar.h"

namespace inspection {
namespace {

using namespace LPARAMS::Server;

constexpr std::string_view NAMELESS =
    "USERS[]";  // the path of an entry whose name is not known yet
constexpr std::string_view NAME_OF_USER = "NAME";
constexpr size_t MAX_SHOWN_NAME = 64;  // bytes of a user's
constexpr size_t MAX_MISSING = 10;     // names that a finding tells

bool hasText(const Param& param) {
  return param.getTypeId() == TYPE_STRING || param.getTypeId() == TYPE_SECRET;
}

std::vector<std::string> namesOf(const EnumParam& param) {
  std::vector<std::string> names;
  for (const Variant* row = param.variants; row->name != nullptr; ++row) {
    names.emplace_back(row->name);
  }
  return names;
}

std::string shownUser(const std::string& name, size_t index) {
  if (name.empty()) return std::to_string(index);
  return name.size() <= MAX_SHOWN_NAME ? name : name.substr(0, MAX_SHOWN_NAME) + "...";
}

}  // namespace

Inspector::Inspector(std::string_view text, Catalogue& settings, size_t maxUsers,
                     Findings& findings, std::vector<Taken>* taken)
    : text_(text),
      settings_(settings),
      findings_(findings),
      taken_(taken),
      maxUsers_(maxUsers),
      shown_(settings),
      source_(text),
      followed_(text),
      lines_(text) {}

bool Inspector::load() {
  told_ = std::min(text_.find(KEY_MARK, beginOfHead()), text_.size() - 1) + 1;
  WatchedGroup watched(settings_, *this);
  // cppcheck-suppress danglingLifetime ; the blocks are of no use after the load
  blocks_.push_back({settings_, {}, lines_.placeOf(beginOfHead()), &watched.members});
  const bool loaded = readSettings(settings_, source_, *this);
  if (loaded) followToEnd();
  if (!loaded) fileFailed({});
  if (loaded) addMissing(false);
  return loaded;
}

/// Of the root's: the first key that is not empty.
size_t Inspector::beginOfHead() const {
  const size_t behindMark = text_.starts_with(BYTE_ORDER_MARK) ? BYTE_ORDER_MARK.size() : 0;
  return text_.find_first_not_of(KEY_MARK, behindMark);
}

/// Of the key that the load has just taken. Between it and what was told before there are only ends
/// of unknown blocks.
size_t Inspector::beginOfKey() {
  followed_.moveTo(told_);
  Key key;
  while (follower_.next(key)) {
    if (key.name == END_KEY) {
      follower_.finishEnd();
      continue;
    }
    const size_t end = followed_.eof() ? text_.size() : followed_.position() - 1;
    return end - key.name.size();
  }
  return text_.size();
}

/// Follows a block to its end, which the load has reached.
void Inspector::followToEnd() {
  followed_.moveTo(told_);
  told_ = source_.position();
  size_t mark = std::string_view::npos;
  Key key;
  while (followed_.position() < told_ && follower_.next(key)) {
    mark = followed_.position();
    follower_.finishEnd();
  }
  if (mark < text_.size() && static_cast<unsigned char>(text_[mark]) > ' ') {
    add({.kind = Finding::LostBehindEnd,
         .place = lines_.placeOf(mark),
         .path = blocks_.back().path});
  }
}

bool Inspector::load(WatchedMember& watched, std::istream& is) {
  const Place place = lines_.placeOf(beginOfKey());
  told_ = source_.position();
  if (watched.first) {
    add({.kind = Finding::GivenTwice,
         .place = place,
         .path = pathOf(watched.name),
         .otherLine = watched.first->line});
  } else {
    watched.first = place;
  }
  behindSecret_ = false;
  if (blocks_.back().path == NAMELESS && watched.name == NAME_OF_USER) userName_ = place;
  switch (watched.getTypeId()) {
    case TYPE_GROUP:
      return loadBlock(static_cast<ParamGroup&>(watched.member), place, is);
    case TYPE_USER_LIST:
      return loadUsers(static_cast<ParamGroup&>(watched.member), place, is);
    default:
      return loadValue(watched.member, is);
  }
}

bool Inspector::loadBlock(ParamGroup& group, Place head, std::istream& is) {
  const bool isUser = group.name == std::string_view(USER_t::GROUP_NAME);
  const size_t before = findings_.first.size();
  userName_ = head;
  if (isUser) addTaken(group, nullptr, head);
  const bool loaded =
      loadMembers({group, isUser ? std::string(NAMELESS) : pathOf(group.name), head, nullptr}, is);
  if (isUser) lookAtUser(static_cast<const USER_t&>(group), head, before);
  return loaded;
}

/// The entries are made by a list of their own, which has them watched.
bool Inspector::loadUsers(ParamGroup& users, Place head, std::istream& is) {
  WatchedUsers watched(users.name, *this);
  const bool loaded = loadMembers({watched, users.name, head, nullptr}, is);
  auto& items = settings_.USERS->items;
  items.insert(items.end(), watched.items.begin(), watched.items.end());
  watched.items.clear();
  return loaded;
}

bool Inspector::loadMembers(Block block, std::istream& is) {
  WatchedGroup watched(block.group, *this);
  block.members = &watched.members;
  blocks_.push_back(std::move(block));
  const bool loaded = blocks_.back().group.load(is);
  if (loaded) followToEnd();
  if (loaded) addMissing(false);
  lastHead_ = blocks_.back().head;
  blocks_.pop_back();
  return loaded;
}

bool Inspector::loadValue(Param& param, std::istream& is) {
  const size_t begin = source_.position();
  param_ = &param;
  valuePlace_ = lines_.placeOf(begin);
  given_ = text_.substr(begin, text_.find('\n', begin) - begin);
  unreadable_ = false;
  const size_t before = findings_.first.size();
  const bool loaded = param.load(is);
  addTaken(blocks_.back().group, &param, valuePlace_);
  const size_t end = told_ = source_.position();
  if (!unreadable_) lookAtSilence(param, begin, end);
  for (size_t i = before; i < findings_.first.size(); ++i) {
    Finding& finding = findings_.first[i];
    if (!hasText(param)) finding.taken = shown_.text(valueText(param));
  }
  lookAtLines(begin, end);
  behindSecret_ = isSecret(param);
  return loaded;
}

/// What the load has changed, or taken though no write may add it, without a report.
void Inspector::lookAtSilence(Param& param, size_t begin, size_t end) {
  if (hasText(param)) {
    if (hasControlBytes(given_)) addValue(Finding::ControlCharacters, false);
    if (given_.size() > MAX_TEXT_SIZE) addValue(Finding::LongText, false);
    return;
  }
  std::string_view given = given_;
  if (param.getTypeId() != TYPE_INT) {
    const size_t first = text_.find_first_not_of(WHITE_SPACE, begin);
    given = text_.substr(first, end - first);
  }
  if (!visit(std::as_const(param), IsAsGiven{given})) addValue(Finding::OtherValue, false);
}

/// A value that is missing takes the next line that is not empty in its place.
void Inspector::lookAtLines(size_t begin, size_t end) {
  const size_t lineEnd = begin + given_.size();
  if (lineEnd + 1 >= end) return;
  const size_t taken = text_.find_first_not_of(WHITE_SPACE, lineEnd);
  if (taken >= end) return;
  const std::string_view line = text_.substr(taken, end - taken);
  add({.kind = Finding::LineTaken,
       .place = lines_.placeOf(taken),
       .path = pathOfKnown(line.substr(0, line.find(KEY_MARK))),
       .otherLine = valuePlace_.line});
}

/// Tells a name that is taken or missing, and puts the name into what was found in the entry.
void Inspector::lookAtUser(const USER_t& user, Place head, size_t firstFinding) {
  const auto addUser = [&](Finding::Kind kind, Place place) -> Finding {
    return {.kind = kind, .place = place, .path = std::string(NAMELESS)};
  };
  const auto [first, isNew] = users_.emplace(user.NAME.value, userName_.line);
  if (user.NAME.value.empty()) {
    add(addUser(Finding::NamelessUser, userName_));
  } else if (!isNew) {
    Finding second = addUser(Finding::SecondUser, userName_);
    second.otherLine = first->second;
    add(std::move(second));
  }
  const auto* const list = static_cast<WatchedUsers*>(&blocks_.back().group);
  const size_t users = settings_.USERS->items.size() + list->items.size();
  if (users == maxUsers_ + 1) {
    Finding tooMany = addUser(Finding::TooManyUsers, head);
    tooMany.expected = "at most " + std::to_string(maxUsers_);
    add(std::move(tooMany));
  }
  const std::string name = shownUser(user.NAME.value, users - 1);
  for (size_t i = firstFinding; i < findings_.first.size(); ++i) {
    std::string& path = findings_.first[i].path;
    if (path.starts_with(NAMELESS)) path.insert(NAMELESS.size() - 1, name);
  }
}

void Inspector::addTaken(ParamGroup& owner, Param* param, Place place) {
  if (taken_ != nullptr) taken_->push_back({&owner, param, place});
}

void Inspector::addMissing(bool reported) {
  Block& block = blocks_.back();
  if (!reported && block.missingReported) return;
  block.missingReported = true;
  std::string names;
  size_t count = 0;
  for (const WatchedMember& member : *block.members) {
    if (member.first) continue;
    if (++count > MAX_MISSING) break;
    names += (count > 1 ? ", " : "") + std::string(member.name);
  }
  if (count > MAX_MISSING) names += ", ...";
  if (!reported && count == 0) return;
  add({.kind = Finding::MembersMissing,
       .reported = reported,
       .place = block.head,
       .path = block.path,
       .expected = names});
}

void Inspector::addValue(Finding::Kind kind, bool reported) {
  Finding finding{.kind = kind,
                  .reported = reported,
                  .place = valuePlace_,
                  .path = pathOf(param_->name),
                  .given = isSecret(*param_)  ? HIDDEN
                           : hasText(*param_) ? shown_.value(given_)
                                              : shown_.text(given_)};
  if (!hasText(*param_)) finding.expected = legalValues(*param_);
  if (param_->getTypeId() == TYPE_INT && kind == Finding::NoSuchName && findings_.keepNext()) {
    finding.similar = text::similar(given_, namesOf(static_cast<const EnumParam&>(*param_)));
  }
  add(std::move(finding));
}

std::string Inspector::pathOf(std::string_view member) const {
  const std::string& block = blocks_.back().path;
  return block.empty() ? std::string(member) : block + "." + std::string(member);
}

/// The path of the innermost block's member with that name; of the block if it has none.
std::string Inspector::pathOfKnown(std::string_view key) const {
  const std::string_view name = keyOf(key).name;
  for (const WatchedMember& member : *blocks_.back().members) {
    if (name == member.name) return pathOf(name);
  }
  return blocks_.back().path;
}

/// The member of the innermost block that the key may have been meant to name.
std::string Inspector::similarMember(std::string_view key) const {
  std::vector<std::string> names;
  for (const WatchedMember& member : *blocks_.back().members) names.emplace_back(member.name);
  return text::similar(key.substr(0, key.find_last_not_of(" \t") + 1), names);
}

void Inspector::unknownParam(const std::string& key, const std::string& group) {
  const size_t begin = beginOfKey();
  told_ = source_.position();
  const Place place = lines_.placeOf(begin);
  const std::string shown = behindSecret_ ? text::notShown(key) : shown_.name(key);
  const bool nested = group != blocks_.back().group.name;
  Finding unknown{.kind = Finding::UnknownName,
                  .reported = true,
                  .place = place,
                  .path = pathOf(nested ? shown_.name(group) + "." + shown : shown)};
  const size_t lineEnd = key.rfind('\n');
  if (lineEnd != std::string::npos) {
    unknown.otherLine = place.line + static_cast<size_t>(std::ranges::count(key, '\n'));
  } else if (!nested && !behindSecret_ && findings_.keepNext()) {
    unknown.similar = similarMember(key);
  }
  add(std::move(unknown));
  if (lineEnd == std::string::npos) return;
  const std::string_view joined = withoutIndent(std::string_view(key).substr(lineEnd));
  add({.kind = Finding::LineTaken,
       .place = lines_.placeOf(begin + key.size() - joined.size()),
       .path = pathOfKnown(joined),
       .otherLine = place.line});
}

void Inspector::paramFailed(const std::string& key, const std::string& /*group*/) {
  add({.kind = Finding::BlockNotClosed, .reported = true, .place = lastHead_, .path = pathOf(key)});
}

void Inspector::paramsMissing(int /*missing*/, int /*total*/, const std::string& /*group*/) {
  addMissing(true);
}

void Inspector::rootMismatch(const std::string& key, const std::string& rootName) {
  add({.kind = Finding::OtherRoot,
       .reported = true,
       .place = blocks_.back().head,
       .given = shown_.name(key),
       .expected = "/" + rootName + "="});
}

void Inspector::fileFailed(const std::string& /*fileName*/) {
  add({.kind = Finding::NotToItsEnd, .reported = true});
}

void Inspector::badValue(const std::string& /*param*/, const std::string& /*text*/) {
  unreadable_ = true;
  addValue(param_->getTypeId() == TYPE_INT ? Finding::NoSuchName : Finding::UnreadableValue, true);
}

void Inspector::extraText(const std::string& /*param*/, const std::string& /*text*/) {
  addValue(Finding::ExtraText, true);
}

}  // namespace inspection
