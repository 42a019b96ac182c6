#include "bridge/named_values.h"

#include <utility>

#include "bridge/bytes.h"

namespace bridge {
namespace {

// Those of integers and strings, beside those of what is made of them.
using bridge::put;
using bridge::take;

enum ValueFlags : uint8_t { RUNNING = 1, SAVED = 2, DEFAULT = 4, SECRET = 8, BEFORE = 16 };

/// The texts of a value and their flags, in the order of the bytes.
template <typename Value, typename Visit>
void forEachText(Value& value, Visit visit) {
  visit(RUNNING, value.running);
  visit(SAVED, value.saved);
  visit(DEFAULT, value.byDefault);
  visit(BEFORE, value.before);
}

void put(std::string& out, const std::vector<GroupRevision>& revisions) {
  put(out, static_cast<uint32_t>(revisions.size()));
  for (const GroupRevision& of : revisions) {
    put(out, of.group);
    put(out, of.revision);
  }
}

/// One by one: an announced count reserves nothing.
bool take(std::string_view& bytes, std::vector<GroupRevision>& revisions) {
  uint32_t count = 0;
  if (!take(bytes, count)) return false;
  for (; count > 0; --count) {
    GroupRevision of;
    if (!take(bytes, of.group) || !take(bytes, of.revision)) return false;
    revisions.push_back(std::move(of));
  }
  return true;
}

}  // namespace

void put(std::string& out, const NamedValue& value) {
  int flags = value.secret ? SECRET : 0;
  forEachText(value, [&](ValueFlags flag, const auto& text) { flags |= text ? flag : 0; });
  put(out, value.name);
  put(out, static_cast<uint8_t>(flags));
  forEachText(value, [&](ValueFlags, const auto& text) {
    if (text) put(out, *text);
  });
}

bool take(std::string_view& bytes, NamedValue& value) {
  uint8_t flags = 0;
  if (!take(bytes, value.name) || !take(bytes, flags)) return false;
  value.secret = (flags & SECRET) != 0;
  bool whole = true;
  forEachText(value, [&](ValueFlags flag, auto& text) {
    if ((flags & flag) != 0) whole = whole && take(bytes, text.emplace());
  });
  return whole;
}

namespace {

void put(std::string& out, const Change& change) {
  put(out, change.kind);
  put(out, change.name);
  if (change.kind == Change::Set) put(out, change.value);
}

bool take(std::string_view& bytes, Change& change) {
  uint8_t kind = 0;
  if (!take(bytes, kind) || kind < Change::Set || kind > Change::RemoveUser) return false;
  change.kind = static_cast<Change::Kind>(kind);
  if (!take(bytes, change.name)) return false;
  return change.kind != Change::Set || take(bytes, change.value);
}

template <typename Item>
void putAll(std::string& out, const std::vector<Item>& items) {
  for (const Item& item : items) put(out, item);
}

template <typename Item>
bool takeAll(std::string_view bytes, std::vector<Item>& items, size_t limit = SIZE_MAX) {
  while (!bytes.empty()) {
    if (items.size() == limit || !take(bytes, items.emplace_back())) return false;
  }
  return true;
}

}  // namespace

std::string encode(const Names& names) {
  std::string out;
  putAll(out, names);
  return out;
}

std::string encode(const NamedValues& values) {
  std::string out;
  put(out, values.revisions);
  putAll(out, values.values);
  return out;
}

std::string encode(const NamedChanges& changes) {
  std::string out;
  put(out, changes.revisions);
  putAll(out, changes.changes);
  return out;
}

std::optional<Names> decodeNames(std::string_view bytes) {
  Names names;
  if (!takeAll(bytes, names, MAX_NAMED_ITEMS)) return std::nullopt;
  return names;
}

std::optional<NamedValues> decodeNamedValues(std::string_view bytes) {
  NamedValues values;
  if (!take(bytes, values.revisions) || !takeAll(bytes, values.values)) return std::nullopt;
  return values;
}

std::optional<NamedChanges> decodeNamedChanges(std::string_view bytes) {
  NamedChanges changes;
  if (!take(bytes, changes.revisions) || !takeAll(bytes, changes.changes, MAX_NAMED_ITEMS))
    return std::nullopt;
  return changes;
}

}  // namespace bridge
