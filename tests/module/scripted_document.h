// A markup parser that reads no file: the document is a tree that the test writes down.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace host {

/// An element with, at most, an attribute "Name". Texts are handed out without a terminator.
struct Element {
  std::string tag;
  std::string name;
  std::string text;
  std::vector<Element> children;
};

/// What the parser finds in any file. Loading and releasing it are recorded; releasing it wipes the
/// texts that were handed out.
struct ScriptedDocument {
  std::vector<Element> elements;
  /// What loading it answers. The elements are there all the same.
  bool loads = true;
  /// Called before the file is read, and before an element's text is handed out; may throw.
  std::function<void()> onLoad;
  std::function<void(const Element&)> onContent;
};

/// The one document of the process.
ScriptedDocument& document();

}  // namespace host
