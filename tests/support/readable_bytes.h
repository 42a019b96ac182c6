// Arbitrary bytes in a form that a failed test can print.
#pragma once

#include <string>
#include <string_view>

namespace testing_support {

/// The bytes between quotes, everything but printable ASCII escaped: \n, \r, \t, \xNN.
std::string inQuotes(std::string_view bytes);

/// The bytes as pairs of hexadecimal digits with a blank between: "F4 01 00 00".
std::string hex(std::string_view bytes);

/// The bytes that pairs of hexadecimal digits stand for; white space between pairs does not count.
std::string unhex(std::string_view pairs);

}  // namespace testing_support
