#include "checking/check.h"

#include <algorithm>
#include <utility>

#include "checking/forms.h"
#include "inspection/settings_completeness.h"
#include "lparams/params/block_grammar.h"

namespace checking {
namespace {

using namespace LPARAMS::Server;

/// The first line that is neither empty nor a comment, without its indentation.
std::string_view firstLine(std::string_view text) {
  for (text = withoutIndent(text); text.starts_with('#'); text = withoutIndent(text)) {
    text.remove_prefix(std::min(text.find('\n'), text.size()));
  }
  return text.substr(0, text.find('\n'));
}

bool isAssignment(std::string_view line) {
  return line.substr(0, line.find(KEY_MARK)).find_first_of(".[") != std::string_view::npos &&
         line.find(KEY_MARK) != std::string_view::npos;
}

}  // namespace

void Checked::add(inspection::Remark remark) {
  if (remarks.size() < kept) {
    remarks.push_back(std::move(remark));
  } else {
    ++leftOut;
  }
}

Checked check(std::string_view text, size_t kept) {
  const std::string_view line = firstLine(inspection::withoutByteOrderMark(text));
  const char first = line.empty() ? '\0' : line.front();
  auto* const checkForm = first == '<'                                ? checkLegacy
                          : first == '{'                              ? checkDocument
                          : first != BLOCK_MARK && isAssignment(line) ? checkDocument
                                                                      : checkSettingsFile;
  Checked checked = checkForm(text, kept);
  inspection::sortByPlace(checked.remarks);
  return checked;
}

}  // namespace checking
