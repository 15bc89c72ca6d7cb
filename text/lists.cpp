#include "text/lists.h"

#include <algorithm>
#include <stdexcept>

#include "text/words.h"

namespace survmeth::text {
namespace {

// One item, from `at` on; leaves `at` on the comma behind it, or at the end.
std::string itemAt(const std::string& list, std::size_t& at) {
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
    throw std::invalid_argument(
        "a quote in " + quote(list) + " is not closed before " +
        (at < list.size() ? "the text goes on" : "the end") +
        "; expected quotes around a whole item, each quote inside it doubled");
  }
  return item;
}

}  // namespace

std::vector<std::string> listItems(const std::string& list, const std::string& items,
                                   bool mayRepeat) {
  std::vector<std::string> found;
  for (std::size_t at = 0; at <= list.size(); ++at) {
    const std::string item = itemAt(list, at);
    if (item.empty()) {
      throw std::invalid_argument(quote(list) + " has an empty item; expected " + items +
                                  " separated by commas");
    }
    if (!mayRepeat && std::find(found.begin(), found.end(), item) != found.end()) {
      throw std::invalid_argument(quote(item) + " stands there twice");
    }
    found.push_back(item);
  }
  return found;
}

std::string joined(const std::vector<std::string>& items) {
  std::string text;
  for (const std::string& item : items) text += (text.empty() ? "" : ", ") + item;
  return text;
}

}  // namespace survmeth::text
