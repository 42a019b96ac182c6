// lparamsctl: reads and changes the agent's settings from the command line.
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <string_view>

#include "client/command_line.h"
#include "client/failure.h"

namespace {

/// Values of the JSON library need memory to be destroyed, and cannot say that there is none. There
/// may be none for an exception either.
[[noreturn]] void endInWords() noexcept {
  try {
    if (const auto thrown = std::current_exception()) std::rethrow_exception(thrown);
  } catch (const std::bad_alloc&) {
    // As without an exception.
  } catch (...) {
    std::abort();
  }
  constexpr std::string_view MESSAGE = "lparamsctl: there is no memory\n";
  (void)!::write(STDERR_FILENO, MESSAGE.data(), MESSAGE.size());
  std::_Exit(programs::EXIT_UNAVAILABLE);
}

/// Runs before the values of the libraries are made, which need memory, too.
[[gnu::constructor(101)]] void explainTheEnd() { std::set_terminate(endInWords); }

}  // namespace

int main(int argc, char** argv) {
  int status = programs::EXIT_UNAVAILABLE;
  std::string message;
  try {
    return client::runCommandLine(argc, argv);
  } catch (const client::Failure& failure) {
    status = failure.status;
    message = failure.what();
  } catch (const std::exception& error) {
    message = error.what();
  }
  std::cout.flush();  // what was done before, if anything
  std::istringstream lines(message);
  for (std::string line; std::getline(lines, line);) std::cerr << "lparamsctl: " << line << '\n';
  return status;
}
