// What is wrong with a file of settings, whichever form it has.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "inspection/remark.h"
#include "lparams/catalogue/catalogue.h"

namespace checking {

struct Checked {
  enum Form {
    SettingsFile,
    Legacy,    ///< XML, of an earlier version
    Document,  ///< JSON, or lines GROUP.NAME=VALUE
  };

  /// A hostile text would have millions of remarks.
  static constexpr size_t KEPT = 100'000;

  Checked(Form form, size_t kept) : form(form), kept(kept) {}

  void add(inspection::Remark remark);

  Form form;
  bool usable = true;  ///< false if a load would break off, or an import take nothing
  std::vector<inspection::Remark> remarks = {};  ///< in the order of their places
  size_t kept;                                   ///< upper limit of the remarks
  size_t leftOut = 0;                            ///< more remarks
  /// What a load or an import would make of the text; of a document there is nothing.
  std::unique_ptr<LPARAMS::Server::Catalogue> settings = {};
};

/// Which form the text has is told by its beginning: "<" begins XML, "{" JSON, a name with a "." or
/// "[" an assignment; everything else is a settings file.
///
/// Takes time and memory in proportion to the text. Thread-safe.
Checked check(std::string_view text, size_t kept = Checked::KEPT);

}  // namespace checking
