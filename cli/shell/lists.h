// Lists in an option: items separated by commas, as in a line of CSV. An item with a comma in it
// stands in quotes, a quote inside those is doubled: "g, group",age. Space around items is dropped.
#ifndef CLI_SHELL_LISTS_H_
#define CLI_SHELL_LISTS_H_

#include <string>
#include <vector>

namespace cli {

// The items of `list`. Refuses empty ones, one that stands there twice, and a quoted one that does
// not end in a quote before the comma or the end. `option` holds the list, of what `items` says
// ("column names").
std::vector<std::string> listItems(const std::string& option, const std::string& list,
                                   const std::string& items);

// The names in a list of columns.
std::vector<std::string> columnNames(const std::string& option, const std::string& list);

}  // namespace cli

#endif  // CLI_SHELL_LISTS_H_
