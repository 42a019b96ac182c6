#include "tests/client/client_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "tests/support/readable_bytes.h"

namespace client_testing {
namespace {

constexpr const char* PROGRAM = PRODUCTS_DIR "/lparamsctl";
constexpr unsigned DEADLINE = 100;  // seconds; only a client that hangs sees it

struct Close {
  void operator()(FILE* file) const { (void)std::fclose(file); }
};
using File = std::unique_ptr<FILE, Close>;

File checked(FILE* file) {
  if (file == nullptr) throw std::system_error(errno, std::generic_category(), "temporary file");
  return File(file);
}

File fileOf(const std::string& text) {
  File file = checked(std::tmpfile());
  (void)std::fwrite(text.data(), 1, text.size(), file.get());
  std::rewind(file.get());
  return file;
}

std::string textOf(const File& file) {
  std::string text;
  std::rewind(file.get());
  for (int c; (c = std::fgetc(file.get())) != EOF;) text += static_cast<char>(c);
  return text;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> environment(const std::string& variable) {
  std::vector<std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (!std::string_view(*entry).starts_with("LPARAMS_SOCKET=")) variables.emplace_back(*entry);
  }
  if (!variable.empty()) variables.push_back(variable);
  return variables;
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const Outcome& outcome) {
  return os << "exit code " << outcome.exitCode << ", output "
            << testing_support::inQuotes(outcome.out) << ", errors "
            << testing_support::inQuotes(outcome.err);
}

Outcome printed(std::string out) { return {0, std::move(out), ""}; }

Outcome failed(int exitCode, const std::string& message) {
  std::string err = "lparamsctl: ";
  for (const char c : message) err += c == '\n' ? "\nlparamsctl: " : std::string(1, c);
  return {exitCode, "", err + "\n"};
}

Outcome runClient(std::vector<std::string> arguments, const Surroundings& surroundings) {
  const File in = surroundings.inputPath.empty()
                      ? fileOf(surroundings.in)
                      : checked(std::fopen(surroundings.inputPath.c_str(), "r"));
  const File out =
      checked(surroundings.outputPath != nullptr ? std::fopen(surroundings.outputPath, "r+")
                                                 : std::tmpfile());
  const File err = checked(std::tmpfile());
  arguments.insert(arguments.begin(), PROGRAM);
  const std::vector<char*> argv = pointersTo(arguments);
  std::vector<std::string> variables = environment(surroundings.variable);
  const std::vector<char*> envp = pointersTo(variables);

  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) {
    (void)dup2(fileno(in.get()), STDIN_FILENO);
    (void)dup2(fileno(out.get()), STDOUT_FILENO);
    (void)dup2(fileno(err.get()), STDERR_FILENO);
    (void)setsid();  // without the terminal of whoever runs the tests
    (void)alarm(DEADLINE);
    (void)execve(PROGRAM, argv.data(), envp.data());
    _exit(127);
  }
  int status = 0;
  (void)waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
          surroundings.outputPath != nullptr ? "" : textOf(out), textOf(err)};
}

}  // namespace client_testing
