// What every command that prints reports has in common.
#ifndef CLI_OUTPUTS_H_
#define CLI_OUTPUTS_H_

#include <cstddef>

namespace CLI {
class App;
}

namespace cli {

// Adds --digits.
void addDigits(CLI::App& app, int& digits);

// As wide as the terminal, or 0, as tables want, where nobody's screen ends.
std::size_t terminalWidth();

}  // namespace cli

#endif  // CLI_OUTPUTS_H_
