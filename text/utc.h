// Times for people.
#pragma once

#include <ctime>
#include <string>

namespace text {

/// ISO 8601: "2026-11-22T18:00:00Z"; "(no time)" of one beyond all calendars.
std::string utc(std::time_t time);

}  // namespace text
