// A table of names for enumerations and masks.
#pragma once

#include "lparams/params/variant.h"

namespace testing_support {

inline constexpr LPARAMS::Server::Variant FLAGS[] = {
    {1, "ONE"}, {2, "TWO"}, {4, "FOUR"}, {0, nullptr}};

}  // namespace testing_support
