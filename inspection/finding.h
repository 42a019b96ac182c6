// What a look at the text of a settings file finds.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace inspection {

/// A place in a text. Both count from 1, columns in bytes; 0 is nowhere.
struct Place {
  size_t line = 0;
  size_t column = 0;
};

/// One thing that a load does not take as the text has it. Holds no secret: its texts can be shown
/// to everybody. They may hold control characters.
struct Finding {
  enum Kind {
    // What the module's load reports, one finding for each report.
    UnknownName,
    BlockNotClosed,
    MembersMissing,  ///< also found where a second line hides from the load that one is missing
    OtherRoot,
    NotToItsEnd,
    UnreadableValue,
    NoSuchName,
    ExtraText,
    // What it does in silence.
    OtherValue,
    GivenTwice,
    SecondUser,
    NamelessUser,
    TooManyUsers,
    LineTaken,
    LostBehindEnd,
    ControlCharacters,
    LongText,
    // Of settings that are compared with others.
    Edited,
    NotReadBack,
  };

  Kind kind;
  bool reported = false;  ///< by the module's load
  Place place = {};
  std::string path = {};                  ///< such as IKE.IKE_PORT, USERS[bob].PMP_TIMEOUT or LOG
  std::optional<std::string> given = {};  ///< what the text says
  std::optional<std::string> was = {};    ///< the value before
  std::optional<std::string> taken = {};  ///< the value that the load takes
  std::string expected = {};              ///< legal values, or the names of what is missing
  std::string similar = {};               ///< a name that may have been meant
  size_t otherLine = 0;  ///< the line that it repeats, became a part of, or takes in as the last
};

/// What the kind means, in words.
std::string_view inWords(Finding::Kind kind);

/// What the finding says beside that: names and values, without what it leaves open.
std::vector<std::pair<const char*, std::string>> fieldsOf(const Finding& finding);

/// The first findings, and how many there are.
struct Findings {
  /// A text of one line each would have millions of them.
  static constexpr size_t KEPT = 100;

  size_t kept = KEPT;  ///< upper limit of those
  std::vector<Finding> first = {};
  size_t count = 0;
  size_t reported = 0;  ///< how many of them the module's load reports

  void add(Finding finding);

  /// Whether the next one would be among the first.
  bool keepNext() const { return first.size() < kept; }
};

}  // namespace inspection
