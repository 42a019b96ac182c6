// What a look at a file finds, in words.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspection/finding.h"

namespace inspection {

/// Error: the load loses or replaces what the text says, or refuses the text. Warning: it takes the
/// text, but not as it is written, or it is probably not what was meant.
enum class Severity { Warning, Error };

/// "warning" or "error".
std::string_view nameOf(Severity severity);

/// One thing that is wrong with a text. Holds no secret. The message is fit for a terminal; the
/// other texts may hold any bytes.
struct Remark {
  Severity severity = Severity::Error;
  Place place = {};
  std::string parameter = {};  ///< its full name, or that of the group or user
  std::string message = {};    ///< what is wrong, what a load would do, and what may be meant
  std::optional<std::string> given = {};
  std::optional<std::string> taken = {};  ///< what the load would take
  bool named = true;                      ///< whether a line begins with the parameter's name
  bool reported = false;                  ///< by the module's load
  bool loses = true;                      ///< what the text says is not what a save would write
};

Remark remarkOf(const Finding& finding);

/// The remark in one line without its end, such as "settings.ini:5:18: error: IKE.IKE_PORT:
/// MESSAGE". The name of the file may hold any bytes.
std::string lineOf(std::string_view file, const Remark& remark);

/// Puts them in the order of their places; what has none comes last.
void sortByPlace(std::vector<Remark>& remarks);

}  // namespace inspection
