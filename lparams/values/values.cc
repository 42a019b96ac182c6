#include "lparams/values/values.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

#include "lparams/values/visit.h"

namespace LPARAMS::Server {
namespace {

using Lock = basekit::ObjectLevelLockable::Lock;

// For each class: the legal values in words, whether a value is one, the value as a text, and the
// value that a text stands for, legal or not.

struct InWords {
  std::string operator()(const BoolParam&) const { return "0 or 1"; }

  template <typename T, int TypeId>
  std::string operator()(const NumericParam<T, TypeId>& param) const {
    return "a whole number from " + std::to_string(param.min) + " to " + std::to_string(param.max);
  }

  std::string operator()(const EnumParam& param) const {
    std::string names = "one of ";
    for (const Variant* row = param.variants; row->name != nullptr; ++row) {
      if (row != param.variants) names += ", ";
      names += row->name;
    }
    return names;
  }

  template <int TypeId>
  std::string operator()(const SimpleParam<std::string, TypeId>&) const {
    return "one line of text without control characters";
  }
};

bool isLegalIn(const BoolParam&, bool) { return true; }

template <typename T, int TypeId>
bool isLegalIn(const NumericParam<T, TypeId>& param, T value) {
  return value >= param.min && value <= param.max;
}

bool isLegalIn(const EnumParam& param, int value) {
  return findVariant(param.variants, value) != nullptr;
}

template <int TypeId>
bool isLegalIn(const SimpleParam<std::string, TypeId>&, const std::string& value) {
  return !hasControlBytes(value);
}

struct AsText {
  std::string operator()(const BoolParam& param) const { return param.value ? "1" : "0"; }

  template <typename T, int TypeId>
  std::string operator()(const NumericParam<T, TypeId>& param) const {
    return std::to_string(param.value);
  }

  std::string operator()(const EnumParam& param) const {
    const Variant* const variant = findVariant(param.variants, param.value);
    return variant != nullptr ? variant->name : std::to_string(param.value);
  }

  template <int TypeId>
  std::string operator()(const SimpleParam<std::string, TypeId>& param) const {
    return param.value;
  }
};

std::optional<bool> parse(const BoolParam&, const std::string& text) {
  if (text == "1" || equalNames(text, "true")) return true;
  if (text == "0" || equalNames(text, "false")) return false;
  return {};
}

template <typename T, int TypeId>
std::optional<T> parse(const NumericParam<T, TypeId>&, const std::string& text) {
  T number = 0;
  const char* const end = text.data() + text.size();
  const auto [parsed, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || parsed != end) return {};
  return number;
}

std::optional<int> parse(const EnumParam& param, const std::string& text) {
  for (const Variant* row = param.variants; row->name != nullptr; ++row) {
    if (equalNames(text, row->name)) return row->value;
  }
  return {};
}

template <int TypeId>
std::optional<std::string> parse(const SimpleParam<std::string, TypeId>&, const std::string& text) {
  return text;
}

}  // namespace

std::string_view meaningOf(const Param& param) { return meaningBehind(param.name); }

std::string legalValues(const Param& param) { return visit(param, InWords()); }

bool isLegal(Param& param) {
  const Lock lock(param);
  return visit(param, [](const auto& typed) { return isLegalIn(typed, typed.value); });
}

std::string valueText(Param& param) {
  const Lock lock(param);
  return visit(param, AsText());
}

bool setValue(Param& param, const std::string& text) {
  const Lock lock(param);
  return visit(param, [&](auto& typed) {
    const auto value = parse(typed, text);
    if (!value || !isLegalIn(typed, *value)) return false;
    typed.value = *value;
    return true;
  });
}

bool isSecret(const Param& param) { return param.getTypeId() == TYPE_SECRET; }

bool hasControlBytes(std::string_view text) { return std::ranges::any_of(text, isControlByte); }

}  // namespace LPARAMS::Server
