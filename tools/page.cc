#include <ostream>
#include <stdexcept>

#include "tools/documents.h"

namespace tools {
namespace page {
namespace {

constexpr std::string_view PLACE = "<!-- groups -->\n";

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '&') {
      result += "&amp;";
    } else if (c == '<') {
      result += "&lt;";
    } else if (c == '>') {
      result += "&gt;";
    } else if (c == '"') {
      result += "&quot;";
    } else {
      result += c;
    }
  }
  return result;
}

std::string code(const std::string& text) {
  return text.empty() ? "empty" : "<code>" + escaped(text) + "</code>";
}

std::string limitsOf(const Row& row) {
  std::string limits = escaped(row.limits);
  for (const NamedNumber& one : row.names) {
    if (!limits.empty()) limits += ", ";
    limits += code(one.name) + " " + one.number;
  }
  return limits;
}

/// What the client calls it.
std::string fullName(const Group& group, const Row& row) {
  return group.name + (group.entry.empty() ? "." : "[USER].") + row.name;
}

void printRow(std::ostream& output, const Group& group, const Row& row) {
  const std::string id = escaped(group.name + "." + row.name);
  output << "<tr id=\"" << id << "\"><th scope=\"row\"><a href=\"#" << id << "\">"
         << escaped(fullName(group, row)) << "</a></th><td>" << escaped(row.meaning) << "</td><td>"
         << code(row.byDefault) << "</td><td>" << limitsOf(row) << "</td><td>"
         << (row.travels ? "file and bridge" : "file only") << "</td><td>" << escaped(row.className)
         << " " << row.typeId << "</td></tr>\n";
}

void printGroup(std::ostream& output, const Group& group) {
  const std::string name = escaped(group.name);
  output << "<section id=\"" << name << "\">\n<h2>" << name << "</h2>\n";
  if (!group.entry.empty()) output << "<p>A list; each user has all of these.</p>\n";
  output << "<table>\n<thead><tr><th scope=\"col\">Name</th><th scope=\"col\">Meaning</th>"
            "<th scope=\"col\">Default</th><th scope=\"col\">Limits, or names and numbers</th>"
            "<th scope=\"col\">Where</th><th scope=\"col\">Class and type identifier</th></tr>"
            "</thead>\n<tbody>\n";
  for (const Row& row : group.rows) printRow(output, group, row);
  output << "</tbody>\n</table>\n</section>\n";
}

}  // namespace
}  // namespace page

void printPage(std::ostream& output, const std::string& frame, const std::vector<Group>& groups) {
  const size_t place = frame.find(page::PLACE);
  if (place == std::string::npos) throw std::runtime_error("the frame has no place for the groups");
  output << frame.substr(0, place);
  for (const Group& group : groups) page::printGroup(output, group);
  output << frame.substr(place + page::PLACE.size());
}

}  // namespace tools
