// lparamsctl: reads and changes the agent's settings from the command line.
#include <exception>
#include <iostream>
#include <sstream>
#include <string>

#include "client/command_line.h"
#include "client/failure.h"

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
