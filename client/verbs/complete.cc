// What a word of the command line could become, for shells.
#include <algorithm>
#include <iostream>

#include "client/offers.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"

namespace client {
namespace {

constexpr unsigned PATIENCE = 2;  // seconds that somebody waits behind a key

bool takesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

/// What the help calls the argument; behind a ":" are its limits.
std::string kindOf(const CLI::Option& option) {
  const std::string name = option.nonpositional() ? option.get_type_name() : option.get_name(true);
  return name.substr(0, name.find(':'));
}

/// The words in front of the last one, as far as they say what that is.
class Walk {
 public:
  explicit Walk(CLI::App& app) : path_{&app} {}

  void take(const std::string& word) {
    if (waiting_ != nullptr) {
      remember(word);
    } else if (onlyArguments_ || !word.starts_with('-') || word == "-") {
      takeArgument(word);
    } else if (word == "--") {
      onlyArguments_ = true;
    } else {
      takeOption(word);
    }
  }

  /// The verbs, or the verbs of a verb, that may follow.
  std::vector<const CLI::App*> verbs() const {
    if (arguments_ > 0) return {};
    const auto any = [](const CLI::App*) { return true; };
    return std::as_const(*path_.front()).get_subcommands(any);
  }

  /// The option whose value follows; null if none does.
  const CLI::Option* waiting() const { return waiting_; }

  /// The option with this name, of the verb or before it.
  const CLI::Option* find(const std::string& name) const {
    for (CLI::App* const app : path_) {
      const CLI::Option* const option = std::as_const(*app).get_option_no_throw(name);
      if (option != nullptr && option->nonpositional()) return option;
    }
    return nullptr;
  }

  std::vector<std::string> options() const {
    std::vector<std::string> names;
    if (onlyArguments_) return names;
    for (CLI::App* const app : path_) {
      for (const CLI::Option* option : std::as_const(*app).get_options()) {
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
      }
    }
    return names;
  }

  /// The argument that follows; null if there is none.
  const CLI::Option* argument() const {
    int before = arguments_;
    for (const CLI::Option* option : std::as_const(*path_.front()).get_options()) {
      if (!option->get_positional()) continue;
      before -= option->get_items_expected_max();
      if (before < 0) return option;
    }
    return nullptr;
  }

  /// Options of the command line itself, in the form "--socket=PATH".
  const std::vector<std::string>& general() const { return general_; }

 private:
  void remember(const std::string& value) {
    if (std::as_const(*path_.back()).get_option_no_throw(option_) == waiting_) {
      general_.push_back(option_ + "=" + value);
    }
    waiting_ = nullptr;
  }

  void takeOption(const std::string& word) {
    option_ = word.substr(0, word.find('='));
    waiting_ = find(option_);
    if (waiting_ != nullptr && !takesValue(*waiting_)) waiting_ = nullptr;
    if (waiting_ != nullptr && option_ != word) remember(word.substr(option_.size() + 1));
  }

  void takeArgument(const std::string& word) {
    const auto isMeant = [&](const CLI::App* verb) { return verb->get_name() == word; };
    const auto found = path_.front()->get_subcommands(isMeant);
    if (arguments_ == 0 && !found.empty()) {
      path_.insert(path_.begin(), found.front());
    } else {
      ++arguments_;
    }
  }

  std::vector<CLI::App*> path_;  // the innermost verb first, the command line last
  int arguments_ = 0;            // of the last one
  bool onlyArguments_ = false;   // "--" was there
  std::string option_;
  const CLI::Option* waiting_ = nullptr;
  std::vector<std::string> general_;
};

/// Has the command line take its options, and the environment.
void place(CLI::App& app, Context& context, std::vector<std::string> options) {
  app.require_subcommand(0);
  try {
    app.parse(options);
  } catch (const CLI::ParseError&) {
    // The command will say what is wrong.
  }
  context.timeout = std::min(context.timeout, PATIENCE);
}

Offer offerFor(const Walk& walk, CLI::App& app, Context& context, const std::string& word) {
  const auto valueOf = [&](const CLI::Option& option, const std::string& begin) {
    place(app, context, walk.general());
    return Offers(context).of(kindOf(option), begin);
  };
  if (walk.waiting() != nullptr) return valueOf(*walk.waiting(), word);
  const size_t equals = word.find('=');
  if (word.starts_with("--") && equals != std::string::npos) {
    const CLI::Option* const option = walk.find(word.substr(0, equals));
    if (option == nullptr || !takesValue(*option)) return {};
    const std::string kept = word.substr(0, equals + 1);
    Offer offer = valueOf(*option, word.substr(equals + 1));
    for (std::string& one : offer.words) one.insert(0, kept);
    offer.kept.insert(0, kept);
    return offer;
  }
  Offer offer;
  if (word.starts_with('-')) {
    offer.words = walk.options();
  } else if (!walk.verbs().empty()) {
    for (const CLI::App* verb : walk.verbs()) offer.words.push_back(verb->get_name());
  } else if (walk.argument() != nullptr) {
    return valueOf(*walk.argument(), word);
  }
  std::erase_if(offer.words, [&](const std::string& one) { return !one.starts_with(word); });
  return offer;
}

}  // namespace

void complete(CLI::App& app, Context& context, const std::vector<std::string>& words) {
  Walk walk(app);
  for (size_t i = 0; i + 1 < words.size(); ++i) walk.take(words[i]);
  const Offer offer = offerFor(walk, app, context, words.back());
  if (offer.file) {
    std::cout << "files\n" << offer.kept << '\n';
    return;
  }
  std::cout << "words\n";
  for (const std::string& one : offer.words) std::cout << one << '\n';
}

}  // namespace client
