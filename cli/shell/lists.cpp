#include "cli/shell/lists.h"

#include <algorithm>

#include "cli/shell/problem.h"

namespace cli {
namespace {

// One item, from `at` on; leaves `at` on the comma behind it, or at the end.
std::string itemAt(const std::string& option, const std::string& list, std::size_t& at) {
  while (at < list.size() && list[at] == ' ') ++at;
  std::string item;
  if (at == list.size() || list[at] != '"') {
    const std::size_t comma = std::min(list.find(',', at), list.size());
    item = list.substr(at, comma - at);
    item.erase(item.find_last_not_of(' ') + 1);
    at = comma;
    return item;
  }
  bool closed = false;
  for (++at; at < list.size() && !closed; ++at) {
    if (list[at] != '"') {
      item += list[at];
    } else if (at + 1 < list.size() && list[at + 1] == '"') {
      item += list[at++];
    } else {
      closed = true;
    }
  }
  while (at < list.size() && list[at] == ' ') ++at;
  if (!closed || (at < list.size() && list[at] != ',')) {
    throw Problem(option + ": a quote in " + quote(list) + " is not closed before " +
                  (at < list.size() ? "the text goes on" : "the end") +
                  "; expected quotes around a whole item, each quote inside it doubled");
  }
  return item;
}

}  // namespace

std::vector<std::string> listItems(const std::string& option, const std::string& list,
                                   const std::string& items) {
  std::vector<std::string> found;
  for (std::size_t at = 0; at <= list.size(); ++at) {
    const std::string item = itemAt(option, list, at);
    if (item.empty()) {
      throw Problem(option + ": " + quote(list) + " has an empty item; expected " + items +
                    " separated by commas");
    }
    if (std::find(found.begin(), found.end(), item) != found.end()) {
      throw Problem(option + ": " + quote(item) + " stands there twice");
    }
    found.push_back(item);
  }
  return found;
}

std::vector<std::string> columnNames(const std::string& option, const std::string& list) {
  return listItems(option, list, "column names");
}

}  // namespace cli
