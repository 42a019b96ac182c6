// The base of every parameter.
#pragma once

#include <iosfwd>

#include "lparams/params/command_stream.h"
#include "platform/lockable.h"

namespace LPARAMS::Server {

// Type identifiers. A client tells the kinds of value apart by them: do not change a number.
// 3 and 9 are not in use.
inline constexpr int TYPE_BOOL = 0;
inline constexpr int TYPE_USHORT = 1;
inline constexpr int TYPE_UINT = 2;
inline constexpr int TYPE_INT = 4;  // and enumerations
inline constexpr int TYPE_MASK = 5;
inline constexpr int TYPE_STRING = 6;
inline constexpr int TYPE_GROUP = 7;
inline constexpr int TYPE_USER_LIST = 8;
inline constexpr int TYPE_SECRET = 10;

/// A setting: a name, a recursive lock, and two encodings, a text line for the settings file (save
/// and load) and bytes for the command bridge (write and read).
///
/// save, load, write and read of a parameter hold its lock from start to end, so they may be called
/// from any thread. The order of the virtual operations and of the fields is part of the interface.
/// Neither copyable nor movable: groups hold addresses.
class Param : public basekit::ObjectLevelLockable {
 public:
  virtual ~Param() = default;

  /// The kind of value, one of the TYPE_ constants. Takes no lock.
  virtual int getTypeId() const = 0;

  /// Appends the parameter's lines to the text, `indent` levels deep. The base writes the head of a
  /// line (four spaces per level, name, "="), takes no lock and returns true.
  virtual bool save(std::ostream& os, int indent);

  /// Reads the value from the text behind the "=" and consumes the rest of its line. Returns false
  /// only if the input ended inside a block; what cannot be read goes to the load log. The base
  /// finishes the line after a value has been extracted: it clears a failure, drops the rest of the
  /// line, reports it, takes no lock and returns true.
  virtual bool load(std::istream& is);

  /// Appends the value to the reply; returns true.
  virtual bool write(CommandStreamOut& out) = 0;

  /// Takes the value from the command; returns true. Nothing is checked but the stream's end:
  /// throws COMMAND_STREAM_ERROR there, with the value unchanged.
  virtual bool read(CommandStreamIn& in) = 0;

  /// Static storage; never null.
  const char* const name;

 protected:
  explicit Param(const char* name) : name(name) {}
};

}  // namespace LPARAMS::Server
