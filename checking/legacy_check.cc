#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <utility>

#include "checking/forms.h"
#include "inspection/line_counter.h"
#include "lparams/storage/legacy_document.h"
#include "lparams/values/values.h"
#include "markup/text_document.h"
#include "markup/tree.h"
#include "text/escape.h"
#include "text/similar.h"

namespace checking {
namespace {

using namespace LPARAMS::Server;
using inspection::Place;
using inspection::Remark;
using inspection::Severity;
using text::inQuotes;

using Node = rapidxml::xml_node<>;
using Names = std::span<const std::string_view>;

constexpr std::array MODULES = {LEGACY_USER_MODULE, LEGACY_IKE_MODULE};
constexpr std::array USER_PARAMS = {LEGACY_CERT_SUBJECT, LEGACY_LOG_LEVEL, LEGACY_SOURCE_TYPE,
                                    LEGACY_SOURCE};
constexpr std::array IKE_PARAMS = {LEGACY_NATT_POLICY};

// What earlier versions wrote.
constexpr std::string_view LOG_LEVELS = "0, 1, 2, 3";
constexpr std::string_view NATT_POLICIES = "0, 1, 2, 3, 101, 102, 103";
constexpr std::string_view SOURCE_TYPES = "1, 2";

std::string nameOf(const Node& node) { return {node.name(), node.name_size()}; }

/// The part of the element that the import takes: its first run of text, or CDATA section.
const Node& contentOf(const Node& param) {
  const Node* const first = param.first_node();
  const bool isSection =
      param.value_size() == 0 && first != nullptr && first->type() == rapidxml::node_cdata;
  return isSection ? *first : param;
}

bool isAmong(const std::string& number, std::string_view list) {
  const bool isWord = !number.empty() && number.find_first_not_of("0123456789") == number.npos;
  return isWord && (std::string(", ").append(list) + ",").find(", " + number + ",") != list.npos;
}

/// The text as the content of an element.
std::string escapedMarkup(std::string_view content) {
  std::string escaped;
  for (const char c : content) {
    if (c == '&') {
      escaped += "&amp;";
    } else if (c == '<') {
      escaped += "&lt;";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

void import(std::unique_ptr<markup::Tree> tree, Catalogue& settings) {
  markup::TextDocument document(std::move(tree));
  importLegacyDocument(document, *settings.POLICY, *settings.IKE);
  std::ostringstream text;
  (void)settings.save(text, 0);  // a number without a name becomes the default then
}

/// What the import makes of this parameter alone. Numbers are short.
std::string imported(std::string_view module, const std::string& name, std::string_view content) {
  std::string text = "<LocalSettings><Module Name='";
  text.append(module).append("'><Param Name='").append(name).append("'>");
  text.append(escapedMarkup(content.substr(0, MAX_SHOWN)))
      .append("</Param></Module></LocalSettings>");
  Catalogue settings;
  import(markup::parse(std::move(text)), settings);
  return name == LEGACY_LOG_LEVEL ? valueText(settings.POLICY->PMP_LOGLEVEL)
                                  : valueText(settings.IKE->NATT_POLICY);
}

class LegacyCheck {
 public:
  LegacyCheck(const markup::Tree& tree, std::string_view text, Checked& checked)
      : tree_(tree), lines_(text), checked_(checked) {}

  void look() {
    forEachElement(tree_.document, LEGACY_SETTINGS, [&](const Node& settings) {
      forEachElement(settings, LEGACY_MODULE, [&](const Node& module) { lookAtModule(module); });
    });
    if (!takesAnything_) warn({}, "", "the import would take nothing from the document");
  }

 private:
  void warn(Place place, std::string_view parameter, std::string message) {
    checked_.add({.severity = Severity::Warning,
                  .place = place,
                  .parameter = std::string(parameter),
                  .message = std::move(message)});
  }

  /// REQUIRES: parts are asked for in the order of the text. One that is empty is nowhere in it.
  Place placeOf(const Node& node) {
    const char* const part = node.value_size() > 0 ? node.value() : node.name();
    return lines_.placeOf(tree_.offsetOf(part));
  }

  template <typename Visit>
  void forEachElement(const Node& parent, std::string_view tag, Visit visit) {
    for (const Node* node = parent.first_node(); node != nullptr; node = node->next_sibling()) {
      if (node->type() != rapidxml::node_element) continue;
      if (nameOf(*node) == tag) {
        visit(*node);
      } else {
        warnOfUnknown(*node, "element", nameOf(*node), Names(&tag, 1));
      }
    }
  }

  void warnOfUnknown(const Node& node, const std::string& what, const std::string& name,
                     Names known) {
    const std::string similar = text::similar(name, {known.begin(), known.end()});
    warn(lines_.placeOf(tree_.offsetOf(node.name())), "",
         "the import knows no " + what + " " + inQuotes(name.substr(0, MAX_SHOWN)) +
             ", and leaves it out" + (similar.empty() ? "" : "; did you mean " + similar + "?"));
  }

  /// The element's attribute "Name" if it is among those that are known.
  std::optional<std::string> knownName(const Node& node, const std::string& what, Names known) {
    const auto* const attribute = node.first_attribute(LEGACY_NAME.data(), LEGACY_NAME.size());
    std::string name;
    if (attribute != nullptr) name.assign(attribute->value(), attribute->value_size());
    if (std::ranges::find(known, name) != known.end()) return name;
    warnOfUnknown(node, what, name, known);
    return std::nullopt;
  }

  void lookAtModule(const Node& module) {
    const auto name = knownName(module, "module", MODULES);
    if (!name) return;
    const Names known = *name == LEGACY_USER_MODULE ? Names(USER_PARAMS) : Names(IKE_PARAMS);
    places_.clear();
    forEachElement(module, LEGACY_PARAM, [&](const Node& param) {
      if (const auto found = knownName(param, "parameter", known)) {
        lookAtParam(*name, *found, param);
      }
    });
    lookAtSource();
  }

  void lookAtParam(const std::string& module, const std::string& name, const Node& param) {
    const Node& content = contentOf(param);
    const Place place = placeOf(content);
    const auto [first, isNew] = places_.emplace(name, place);
    if (!isNew) {
      warn(place, name,
           "a second time (first in line " + std::to_string(first->second.line) +
               "); the later one counts");
    }
    if (param.first_node() != nullptr && param.first_node()->next_sibling() != nullptr) {
      warn(place, name, "the import would take the first text of the element only");
    }
    const std::string value(content.value(), content.value_size());
    if (name == LEGACY_LOG_LEVEL) {
      lookAtNumber(module, name, value, LOG_LEVELS, place);
    } else if (name == LEGACY_NATT_POLICY) {
      lookAtNumber(module, name, value, NATT_POLICIES, place);
    } else if (name == LEGACY_SOURCE_TYPE) {
      sourceType_ = value;
    } else {
      if (name == LEGACY_CERT_SUBJECT) takesAnything_ = true;
      lookAtText(name, value, place);
    }
  }

  void lookAtNumber(const std::string& module, const std::string& name, const std::string& value,
                    std::string_view known, Place place) {
    takesAnything_ = true;
    if (isAmong(value, known)) return;
    const std::string taken = imported(module, name, value);
    checked_.add({.place = place,
                  .parameter = name,
                  .message = inQuotes(value.substr(0, MAX_SHOWN)) + " is not one of " +
                             std::string(known) + "; the import would take " + taken,
                  .given = value.substr(0, MAX_SHOWN),
                  .taken = taken});
  }

  void lookAtText(const std::string& name, const std::string& value, Place place) {
    if (!hasControlBytes(value)) return;
    const bool isLost = value.find('\n') != std::string::npos;
    checked_.add({.severity = isLost ? Severity::Error : Severity::Warning,
                  .place = place,
                  .parameter = name,
                  .message = inQuotes(value.substr(0, MAX_SHOWN)) +
                             (isLost ? " holds a line end, which a settings file cannot"
                                     : " holds control characters, which no write may add"),
                  .given = value.substr(0, MAX_SHOWN),
                  .loses = isLost});
  }

  /// The two are taken together.
  void lookAtSource() {
    const auto type = places_.find(LEGACY_SOURCE_TYPE);
    const auto source = places_.find(LEGACY_SOURCE);
    const bool hasType = type != places_.end();
    const bool hasSource = source != places_.end();
    if (hasType && !isAmong(sourceType_, SOURCE_TYPES)) {
      const std::string given = sourceType_.substr(0, MAX_SHOWN);
      checked_.add({.place = type->second,
                    .parameter = type->first,
                    .message = inQuotes(given) + " is not one of " + std::string(SOURCE_TYPES) +
                               "; the import would leave it out, and " + std::string(LEGACY_SOURCE),
                    .given = given});
    } else if (hasType && !hasSource) {
      warn(type->second, type->first,
           "has no effect without " + std::string(LEGACY_SOURCE) + " in the same module");
    } else if (hasSource && !hasType) {
      warn(source->second, source->first,
           "has no effect without " + std::string(LEGACY_SOURCE_TYPE) + " in the same module");
    } else if (hasType) {
      takesAnything_ = true;
    }
  }

  const markup::Tree& tree_;
  inspection::LineCounter lines_;
  Checked& checked_;
  bool takesAnything_ = false;

  // Of the module that is looked at.
  std::map<std::string, Place, std::less<>> places_;  // of the parameters, the first of a name
  std::string sourceType_;
};

Remark unusable(Place place, const std::string& reason) {
  return {.place = place, .message = "the import would take nothing: " + reason};
}

}  // namespace

Checked checkLegacy(std::string_view text, size_t kept) {
  Checked checked(Checked::Legacy, kept);
  checked.usable = false;
  std::unique_ptr<markup::Tree> tree;
  try {
    tree = markup::parse(std::string(text));
  } catch (const markup::ParseError& error) {
    const bool isPlace = error.offset != std::string::npos;
    const Place place = isPlace ? inspection::LineCounter(text).placeOf(error.offset) : Place();
    checked.add(unusable(place, error.reason));
    return checked;
  }
  const Node* const top = tree->document.first_node();
  const std::string first = top == nullptr ? "" : nameOf(*top);
  if (first != LEGACY_SETTINGS) {
    checked.add(unusable({1, 1}, "the first element is " + inQuotes(first.substr(0, MAX_SHOWN)) +
                                     ", not " + inQuotes(LEGACY_SETTINGS)));
    return checked;
  }
  checked.usable = true;
  LegacyCheck(*tree, text, checked).look();
  if (const size_t zero = text.find('\0'); zero != std::string_view::npos) {
    checked.add({.place = inspection::LineCounter(text).placeOf(zero),
                 .message = "the document ends at a zero byte; what follows is left out"});
  }
  checked.settings = std::make_unique<Catalogue>();
  import(std::move(tree), *checked.settings);
  return checked;
}

}  // namespace checking
