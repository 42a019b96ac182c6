// Whether a load takes what a text says.
#pragma once

#include <charconv>
#include <cstdint>
#include <string_view>

#include "lparams/params/variant.h"
#include "lparams/values/visit.h"

namespace inspection {

/// Whether a value that could be read is the one that the text says, in whatever spelling.
struct IsAsGiven {
  std::string_view given;

  bool operator()(const LPARAMS::Server::BoolParam&) const { return true; }

  template <typename T, int TypeId>
  bool operator()(const LPARAMS::Server::NumericParam<T, TypeId>& param) const {
    std::string_view digits = given;
    if (digits.starts_with('+')) digits.remove_prefix(1);
    int64_t number = 0;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return parsed.ec == std::errc() && number == static_cast<int64_t>(param.value);
  }

  bool operator()(const LPARAMS::Server::EnumParam& param) const {
    const LPARAMS::Server::Variant* const taken = findVariant(param.variants, param.value);
    return taken != nullptr && LPARAMS::Server::equalNames(given, taken->name);
  }

  template <int TypeId>
  bool operator()(const LPARAMS::Server::SimpleParam<std::string, TypeId>&) const {
    return true;
  }
};

}  // namespace inspection
