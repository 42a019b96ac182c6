// The name of a parameter together with what it means.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace LPARAMS::Server {

/// What a row of the catalogue is called: one literal with the name, a zero, and the meaning, one
/// sentence without a full stop or nothing:
///
///     Label("IKE_PORT\0" "IKE port number")
///
/// A parameter keeps the address of the name alone, so the meaning costs it nothing.
class Label {
 public:
  template <size_t N>
  consteval explicit Label(const char (&literal)[N]) : text_(literal) {
    const std::string_view text(literal, N - 1);
    const size_t zero = text.find('\0');
    if (zero == std::string_view::npos) throw std::invalid_argument("no zero behind the name");
    if (zero == 0) throw std::invalid_argument("no name before the zero");
    if (text.find('\0', zero + 1) != std::string_view::npos) {
      throw std::invalid_argument("text behind the meaning");
    }
  }

  constexpr const char* name() const { return text_; }

 private:
  const char* text_;
};

/// The meaning behind a parameter's name; empty if none is stated. REQUIRES: the name is a Label's,
/// as those of the catalogue are.
constexpr std::string_view meaningBehind(const char* name) {
  return name + std::string_view(name).size() + 1;
}

}  // namespace LPARAMS::Server
