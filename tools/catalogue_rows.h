// The catalogue as rows of texts, for each of the documents that are made of it.
#pragma once

#include <string>
#include <vector>

namespace tools {

/// A name of an enumeration, and the number behind it.
struct NamedNumber {
  std::string name;
  std::string number;
};

/// What the file, the bridge and a client need to know of a parameter.
struct Row {
  std::string name;
  std::string meaning;  ///< empty where the name has to say it
  std::string className;
  std::string typeId;
  std::string byDefault;
  std::string limits;              ///< in words; empty for an enumeration
  std::vector<NamedNumber> names;  ///< of an enumeration
  bool travels;                    ///< on the bridge; else it is in the file only
};

/// A group, or a list of entries that each have all of the rows.
struct Group {
  std::string name;
  std::string entry;  ///< what the file calls an entry; empty unless it is a list
  std::vector<Row> rows;
};

/// All groups in the order of the file, as the objects are built.
std::vector<Group> catalogueRows();

}  // namespace tools
