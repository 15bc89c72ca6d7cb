// Lists in an option, with the option's name in the message.
#ifndef CLI_SHELL_LISTS_H_
#define CLI_SHELL_LISTS_H_

#include <string>
#include <vector>

namespace cli {

std::vector<std::string> listItems(const std::string& option, const std::string& list,
                                   const std::string& items);
std::vector<std::string> columnNames(const std::string& option, const std::string& list);

}  // namespace cli

#endif  // CLI_SHELL_LISTS_H_
