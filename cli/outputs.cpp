#include "cli/outputs.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <variant>

#include "cli/figures.h"

namespace cli {

namespace analysis = survmeth::analysis;

void addDigits(CLI::App& app, int& digits) {
  addShared(
      app,
      {.name = "digits",
       .type = analysis::Type::kNumber,
       .valueName = "N",
       .help = "Significant digits of printed estimates (default 5)",
       .range = {.least = 1, .most = 17, .whole = true, .expected = "a whole number from 1 to 17"}},
      [&digits](const analysis::Setting& setting) {
        digits = static_cast<int>(std::get<double>(setting));
      });
}

std::size_t terminalWidth() {
  struct winsize size {};
  if (isatty(STDOUT_FILENO) != 1 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return 0;
  return size.ws_col;
}

}  // namespace cli
