// An editor, and the file that it edits.
#pragma once

#include <string>

namespace client {

/// A file in a directory of its own that nobody else can look into. Both are removed at the end,
/// unless they are to be kept.
class EditedFile {
 public:
  EditedFile();
  ~EditedFile();

  EditedFile(const EditedFile&) = delete;
  EditedFile& operator=(const EditedFile&) = delete;

  const std::string& path() const { return path_; }

  void write(const std::string& text) const;

  /// Has the user's editor edit it: $VISUAL, $EDITOR, "editor" or "vi". Throws Failure if the
  /// editor fails.
  void edit() const;

  /// What is in it now.
  std::string read() const;

  void keep() { kept_ = true; }

 private:
  std::string directory_;
  std::string path_;
  bool kept_ = false;
};

}  // namespace client
