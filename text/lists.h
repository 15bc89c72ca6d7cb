// Lists in an option: items separated by commas, as in a line of CSV. An item with a comma in it
// stands in quotes, a quote inside those is doubled: "g, group",age. Space around items is dropped.
#ifndef TEXT_LISTS_H_
#define TEXT_LISTS_H_

#include <string>
#include <vector>

namespace survmeth::text {

// The items of `list`, each of at least one character; space around them is dropped. Throws
// std::invalid_argument for an empty item, one that stands there twice unless it may, and a quoted
// one that does not end in a quote before the comma or the end; `items` says what they are ("column
// names").
std::vector<std::string> listItems(const std::string& list, const std::string& items,
                                   bool mayRepeat = false);

// "sex, rx".
std::string joined(const std::vector<std::string>& items);

}  // namespace survmeth::text

#endif  // TEXT_LISTS_H_
