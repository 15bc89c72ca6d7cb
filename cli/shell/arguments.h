// What the library that parses the arguments does not say, or not well.
#ifndef CLI_SHELL_ARGUMENTS_H_
#define CLI_SHELL_ARGUMENTS_H_

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cli {

// The message about the first argument without a value ("--out ''", "--out=", ""), which the
// library would take for an option that is not given; empty if there is none.
std::string emptyValue(const CLI::App& app, const std::vector<std::string>& arguments);

// The message about the first flag with a value ("--json=no"), which the library would take for the
// flag; empty if there is none.
std::string valueOfFlag(const CLI::App& app, const std::vector<std::string>& arguments);

// The message about the first file or option that has to be there and is not; empty if all are.
std::string lackingArgument(const CLI::App& app);

// The message about the first option that wants a value and stands before another one, or last;
// empty if none does.
std::string lackingValue(const CLI::App& app, const std::vector<std::string>& arguments);

// The message about an option that stands more often than it may; empty if none does.
std::string repeatedOption(const CLI::App& app);

// The command line as a shell would take it again.
std::string callOf(const std::vector<std::string>& arguments);

}  // namespace cli

#endif  // CLI_SHELL_ARGUMENTS_H_
