#include "cli/shell/lists.h"

#include <stdexcept>

#include "cli/shell/problem.h"
#include "text/lists.h"

namespace cli {

std::vector<std::string> listItems(const std::string& option, const std::string& list,
                                   const std::string& items) {
  try {
    return survmeth::text::listItems(list, items);
  } catch (const std::invalid_argument& wrong) {
    throw Problem(option + ": " + wrong.what());
  }
}

std::vector<std::string> columnNames(const std::string& option, const std::string& list) {
  return listItems(option, list, "column names");
}

}  // namespace cli
