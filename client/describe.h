// What is known of a parameter without an agent.
#pragma once

#include <iosfwd>
#include <string>

namespace client {

/// Prints what each parameter of the name means, its legal values, its default and where it is
/// kept. The name is that of a parameter, with or without its group ("USERS" for the fields of a
/// user), or of a whole group. Throws Failure if there is none.
void describe(std::ostream& out, const std::string& name);

}  // namespace client
