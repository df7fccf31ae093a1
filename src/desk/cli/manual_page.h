#pragma once

#include <string>

namespace CLI {
class App;
}

namespace pathstat::desk {

// What is installed beside a program is made of the same description of its words and options as its --help, so that
// they can't differ.

/// The manual page of a program, for man.
std::string manual_page(const CLI::App& app, const std::string& version);

/// Completion for bash: subcommands, options and their values, and files by what each place takes.
std::string bash_completion(const CLI::App& app);

}  // namespace pathstat::desk
