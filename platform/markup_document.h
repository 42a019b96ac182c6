// The agent's parser of markup (XML) documents, and its helpers for counted strings. The agent's
// executable defines and exports the functions; a module only calls them.
#pragma once

#include <string>
#include <utility>

// The agent exports what is declared here to the modules that it loads.
#pragma GCC visibility push(default)

/// A run of characters inside the parser's buffer, not terminated. Valid until the document is
/// released. Both pointers are null where there is no text.
struct ChPair {
  const char* begin = nullptr;
  const char* end = nullptr;
};

/// What the parser throws at a document that it cannot read.
class TTT {
 public:
  explicit TTT(std::string message = {}) : message_(std::move(message)) {}
  const std::string& message() const { return message_; }

 private:
  std::string message_;
};

/// A parsed document: a tree of elements with attributes and text. Not thread-safe; one thread uses
/// a document at a time. Everything that it hands out lives until release().
class MLDoc {
 public:
  /// An element of the document. The empty token stands for the document itself.
  struct Token {
    const void* element = nullptr;
  };

  /// An attribute of an element.
  struct Attribute {
    ChPair name;
    ChPair value;
  };

  /// Walks the children of the element that `current` holds when the iterator is built. `current`
  /// then receives each child found, so a walk on a deeper level needs a token of its own.
  class ChildIterator {
   public:
    ChildIterator(MLDoc* document, Token& current);

    /// Moves to the next child element named `tag` (case-sensitive), stores it in the token and
    /// returns true; returns false when there is none.
    bool operator()(const ChPair& tag);

   private:
    MLDoc* document_;
    Token& current_;
    Token parent_;
    Token last_;
  };

  MLDoc() = default;
  /// Releases the document.
  virtual ~MLDoc();

  MLDoc(const MLDoc&) = delete;
  MLDoc& operator=(const MLDoc&) = delete;

  /// Parses the file. Returns whether it could be read; an unread document has no children.
  /// Throws TTT at a document that is not well formed.
  bool load(const char* path);

  /// The value of the element's attribute `name` (case-sensitive); an empty range if it has none.
  ChPair getAttributeValue(const Token& element, const ChPair& name);

  /// The element's text; an empty range if it has none.
  ChPair content(Token& element);

  /// The text read as a decimal integer, 0 if it is not one.
  int getInt(const ChPair& text) const;

  /// Frees the tree and the buffer. May be called more than once.
  void release();

  /// Called with each thing that the parser finds odd but can read. Does nothing unless overridden.
  virtual void warn(const TTT& /*what*/, const Token* /*element*/,
                    const Attribute* /*attribute*/) const {}

 protected:
  void* tree_ = nullptr;  // owned; the parser's own representation
};

/// True when the two counted strings are equal.
bool streq(const char* left, unsigned leftLength, const char* right, unsigned rightLength);

/// Reads [begin, end) as a decimal integer into `out`. Returns false, with `out` unchanged, if the
/// text is not one as a whole or does not fit.
bool strtoint(const char* begin, const char* end, int& out);

#pragma GCC visibility pop
