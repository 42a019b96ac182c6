// Documents that name settings: what they say, and where.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspection/finding.h"

namespace documents {

using inspection::Place;

/// A value that a document names.
struct Value {
  /// How the document gives it. Only JSON tells; elsewhere everything is a text.
  enum Kind {
    Text,
    Number,  ///< the text is as JSON has it
    Flag,    ///< the text is "true" or "false"
    Kept,    ///< null: the parameter stays what it is
  };

  std::string name;  ///< in full: IKE.IKE_PORT, USERS[bob].PMP_TIMEOUT
  std::string text;
  Place place;
  Kind kind = Text;
};

/// A user that a document names, with fields or without.
struct User {
  std::string name;
  Place place;
};

struct Mistake {
  Place place;
  std::string text;  ///< one line that is fit to be shown, without the place; holds no secret
};

/// What a document names, in its order, and all that is wrong with its form. Names and values are
/// not looked at: which of them there are is the catalogue's, and the agent's, to say.
class Document {
 public:
  enum Form { Json, Lines, SettingsFile };

  /// A hostile document would have millions of mistakes.
  static constexpr size_t KEPT_MISTAKES = 100;

  explicit Document(Form form, size_t kept = KEPT_MISTAKES) : form(form), kept(kept) {}

  void addMistake(Place place, std::string text);

  Form form;
  std::vector<Value> values = {};
  std::vector<User> users = {};
  std::vector<Mistake> mistakes = {};  ///< the first ones
  size_t mistakeCount = 0;
  size_t kept;  ///< upper limit of the mistakes
};

/// Upper limit of a document, in bytes: that of a settings file.
inline constexpr size_t MAX_SIZE = 16 * 1024 * 1024;

/// Reads a document in one of three forms, which is told by its first character: "{" begins JSON,
/// "/" the settings file's own format, everything else lines GROUP.NAME=VALUE.
///
/// JSON: {"IKE": {"IKE_PORT": 500}, "USERS": {"bob": {"PMP_TIMEOUT": 20}}}. Lines: "#" begins a
/// comment, empty lines are left out. The settings file: what it leaves out is not named.
///
/// Takes time and memory in proportion to the text. Thread-safe.
Document read(std::string_view text, size_t keptMistakes = Document::KEPT_MISTAKES);

/// The list that users are in.
inline constexpr std::string_view USERS = "USERS";

/// A user's parameter: USERS[bob].PMP_TIMEOUT.
std::string userParameter(std::string_view user, std::string_view member);

}  // namespace documents
