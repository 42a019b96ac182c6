// The text form of plain values: what a line of the settings file holds behind its "=".
//
// Numbers are plain decimal in both directions, whatever the locale, flags and width of the stream.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

namespace LPARAMS::Server {

/// Appends bytes as they are.
void putText(std::ostream& os, std::string_view text);

/// Appends the indentation of a nesting level: four spaces per level.
void putIndent(std::ostream& os, int indent);

/// Ends a line and hands it on to the file: every line is written on its own.
void endLine(std::ostream& os);

// Each putValue appends a value, each extractValue skips white space and reads one as formatted
// input in the "C" locale does: the longest number, the flags 0 and 1, or one word. What cannot be
// read leaves the stream in the fail state and `value` as it was.

void putValue(std::ostream& os, bool value);
void putValue(std::ostream& os, unsigned short value);
void putValue(std::ostream& os, unsigned int value);
void putValue(std::ostream& os, int value);
void putValue(std::ostream& os, const std::string& value);

void extractValue(std::istream& is, bool& value);
void extractValue(std::istream& is, unsigned short& value);
void extractValue(std::istream& is, unsigned int& value);
void extractValue(std::istream& is, int& value);
void extractValue(std::istream& is, std::string& value);

/// The rest of the line; its newline is consumed. Empty at the end of the input.
std::string restOfLine(std::istream& is);

/// The next key: everything up to the next "=", which is consumed. Empty at the end of the input.
std::string nextKey(std::istream& is);

}  // namespace LPARAMS::Server
