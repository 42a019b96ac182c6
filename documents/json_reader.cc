#include "documents/json_reader.h"

#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "editing/shown_name.h"
#include "inspection/line_counter.h"
#include "inspection/settings_completeness.h"
#include "inspection/text_source.h"
#include "text/escape.h"

namespace documents {
namespace {

using Json = nlohmann::json;

/// What the library says, without what it has read last: that may be a secret.
std::string withoutTokens(const std::string& message) {
  const size_t begin = message.find(" - ");
  if (begin == std::string::npos) return "a number is too large";
  const std::string reason = message.substr(begin + 3);
  return reason.substr(0, reason.find("; last read: "));
}

/// Takes the events of the library's parser. Objects nest without recursion there.
class JsonReader final : public nlohmann::json_sax<Json> {
 public:
  JsonReader(std::string_view text, const inspection::TextSource& source, size_t keptMistakes)
      : document(Document::Json, keptMistakes),
        text_(text),
        source_(source),
        lines_(text),
        end_(source.position()) {}

  bool null() override { return take(Value::Kept, {}); }
  bool boolean(bool value) override { return take(Value::Flag, value ? "true" : "false"); }
  bool number_integer(number_integer_t value) override {
    return take(Value::Number, std::to_string(value));
  }
  bool number_unsigned(number_unsigned_t value) override {
    return take(Value::Number, std::to_string(value));
  }
  bool number_float(number_float_t /*value*/, const string_t& text) override {
    return take(Value::Number, text);
  }
  bool string(string_t& value) override { return take(Value::Text, std::move(value)); }
  bool binary(binary_t& /*value*/) override { return true; }  // JSON has none

  bool start_object(size_t /*size*/) override {
    const Place place = next();
    if (isIgnored()) return open();
    if (path_.size() >= depthOfValues()) {
      return ignore(place, name() + ": expected a value, not an object");
    }
    if (path_.size() == 2) document.users.push_back({path_[1], keyPlace_});
    known_.emplace_back();
    return true;
  }

  bool end_object() override { return close(); }

  bool start_array(size_t /*size*/) override {
    const Place place = next();
    return isIgnored() ? open() : ignore(place, expected() + ", not an array");
  }

  bool end_array() override { return close(); }

  bool key(string_t& key) override {
    const Place place = next();
    if (isIgnored()) return true;
    path_.resize(known_.size() - 1);
    path_.push_back(key);
    keyPlace_ = place;
    const auto [first, isNew] = known_.back().emplace(std::move(key), place.line);
    if (!isNew) {
      document.addMistake(
          place, name() + ": given twice (first in line " + std::to_string(first->second) + ")");
    }
    return true;
  }

  bool parse_error(size_t /*position*/, const std::string& /*token*/,
                   const Json::exception& error) override {
    document.addMistake(next(), "this is not JSON: " + text::escaped(withoutTokens(error.what())));
    return false;
  }

  Document document;

 private:
  /// The place of the token that was read last.
  Place next() {
    const size_t begin = text_.find_first_not_of(" \t\r\n,:", end_);
    end_ = source_.position();
    return lines_.placeOf(std::min(begin, text_.size()));
  }

  bool isIgnored() const { return ignored_ > 0; }

  bool open() {
    ++ignored_;
    return true;
  }

  /// Leaves out what is between the brackets.
  bool ignore(Place place, std::string mistake) {
    document.addMistake(place, std::move(mistake));
    return open();
  }

  bool close() {
    (void)next();
    if (isIgnored()) {
      --ignored_;
    } else {
      known_.pop_back();
      path_.resize(known_.empty() ? 0 : known_.size() - 1);
    }
    return true;
  }

  /// How many keys lead to a value.
  size_t depthOfValues() const { return !path_.empty() && path_[0] == USERS ? 3 : 2; }

  /// The name that the keys make up.
  std::string name() const {
    std::string name = path_.empty() ? "the document" : path_[0];
    if (path_.size() > 1 && path_[0] == USERS) name.append("[").append(path_[1]).append("]");
    const size_t member = depthOfValues() - 1;
    if (path_.size() > member) name.append(".").append(path_[member]);
    return editing::shownName(name);
  }

  std::string expected() const {
    const bool isValue = path_.size() == depthOfValues();
    return name() + ": expected " + (isValue ? "a value" : "an object");
  }

  /// Every kind of value ends here.
  bool take(Value::Kind kind, std::string text) {
    const Place place = next();
    if (isIgnored()) return true;
    if (path_.size() != depthOfValues()) {
      document.addMistake(place, expected() + ", not a value");
      return true;
    }
    std::string name =
        path_[0] == USERS ? userParameter(path_[1], path_[2]) : path_[0] + "." + path_[1];
    document.values.push_back({std::move(name), std::move(text), keyPlace_, kind});
    return true;
  }

  const std::string_view text_;
  const inspection::TextSource& source_;
  inspection::LineCounter lines_;
  size_t end_;  // of the token before; behind a number one more, which is no part of the next

  std::vector<std::string> path_;  // the keys that lead to what is read
  Place keyPlace_;                 // of the last of them
  // The keys of the objects that are open, and their lines.
  std::vector<std::map<std::string, size_t>> known_;
  size_t ignored_ = 0;  // how many brackets are open within what is left out
};

}  // namespace

Document readJson(std::string_view text, size_t keptMistakes) {
  inspection::TextSource source(text);
  source.moveTo(text.size() - inspection::withoutByteOrderMark(text).size());
  JsonReader reader(text, source, keptMistakes);
  (void)Json::sax_parse(source, &reader);
  return std::move(reader.document);
}

}  // namespace documents
