#include "client/values.h"

#include <charconv>
#include <cstdint>

#include "client/failure.h"
#include "client/quote.h"
#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"
#include "text/escape.h"

namespace client {
namespace {

using namespace LPARAMS::Server;

// For each kind of parameter: its value as a text, how a text is parsed and stored (false if it is
// not legal), and the legal texts in words.

std::string textOf(const BoolParam& param) { return param.value ? "1" : "0"; }

bool parse(BoolParam& param, const std::string& text) {
  const bool isTrue = text == "1" || equalNames(text, "true");
  if (!isTrue && text != "0" && !equalNames(text, "false")) return false;
  param.value = isTrue;
  return true;
}

std::string legalTexts(const BoolParam&) { return "0, 1, false or true"; }

template <typename T, int TypeId>
std::string textOf(const NumericParam<T, TypeId>& param) {
  return std::to_string(param.value);
}

template <typename T, int TypeId>
bool parse(NumericParam<T, TypeId>& param, const std::string& text) {
  uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [parsed, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || parsed != end) return false;
  if (number < param.min || number > param.max) return false;
  param.value = static_cast<T>(number);
  return true;
}

template <typename T, int TypeId>
std::string legalTexts(const NumericParam<T, TypeId>& param) {
  return "a whole number from " + std::to_string(param.min) + " to " + std::to_string(param.max);
}

std::string textOf(const EnumParam& param) {
  const Variant* const variant = findVariant(param.variants, param.value);
  return variant != nullptr ? variant->name : std::to_string(param.value);
}

bool parse(EnumParam& param, const std::string& text) {
  for (const Variant* row = param.variants; row->name != nullptr; ++row) {
    if (equalNames(text, row->name)) {
      param.value = row->value;
      return true;
    }
  }
  return false;
}

std::string legalTexts(const EnumParam& param) {
  std::string names = "one of ";
  for (const Variant* row = param.variants; row->name != nullptr; ++row) {
    if (row != param.variants) names += ", ";
    names += row->name;
  }
  return names;
}

template <int TypeId>
std::string textOf(const SimpleParam<std::string, TypeId>& param) {
  return param.value;
}

/// A newline would write settings of its own into the settings file.
template <int TypeId>
bool parse(SimpleParam<std::string, TypeId>& param, const std::string& text) {
  if (hasControlBytes(text)) return false;
  param.value = text;
  return true;
}

template <int TypeId>
std::string legalTexts(const SimpleParam<std::string, TypeId>&) {
  return "one line of text without control characters";
}

/// Calls the visitor with the parameter as what it is.
template <typename Visitor>
auto visit(Param& param, Visitor visitor) {
  switch (param.getTypeId()) {
    case TYPE_BOOL:
      return visitor(dynamic_cast<BoolParam&>(param));
    case TYPE_USHORT:
      return visitor(dynamic_cast<PortParam&>(param));
    case TYPE_UINT:
      return visitor(dynamic_cast<UIntParam&>(param));
    case TYPE_INT:
      return visitor(dynamic_cast<EnumParam&>(param));
    case TYPE_STRING:
      return visitor(dynamic_cast<StStParam&>(param));
    case TYPE_SECRET:
      return visitor(dynamic_cast<QcdSParam&>(param));
    default:
      throw std::logic_error(std::string("no text form for ") + param.name);
  }
}

}  // namespace

Assignment parseAssignment(const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos) {
    // The text is not shown: it may be a misspelt secret.
    throw Failure(ExitCode::Usage, "an assignment has no \"=\"; write NAME=VALUE");
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

bool isSecret(const Param& param) { return param.getTypeId() == TYPE_SECRET; }

std::string valueText(Param& param) {
  return visit(param, [](const auto& typed) { return textOf(typed); });
}

void setValue(Param& param, const std::string& text, const std::string& fullName) {
  visit(param, [&](auto& typed) {
    if (parse(typed, text)) return;
    const std::string value = isSecret(param) ? "the value" : text::inQuotes(text);
    throw Failure(ExitCode::Usage, fullName + ": " + value + " is not " + legalTexts(typed));
  });
}

}  // namespace client
