#include "text/utc.h"

namespace text {

std::string utc(std::time_t time) {
  std::tm fields{};
  if (::gmtime_r(&time, &fields) == nullptr) return "(no time)";
  char text[64];
  (void)std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &fields);
  return text;
}

}  // namespace text
