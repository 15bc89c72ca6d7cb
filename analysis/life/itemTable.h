// Tables of several rows for each group that are read as one: not parted into blocks.
#ifndef ANALYSIS_LIFE_ITEM_TABLE_H_
#define ANALYSIS_LIFE_ITEM_TABLE_H_

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "report/build.h"

namespace survmeth::analysis {

// As many rows for each group as it has items; `groups` has a label for each.
template <class Item>
class ItemTable {
 public:
  ItemTable(std::string id, std::string caption, const std::vector<std::vector<Item>>& items,
            const report::Column& groups)
      : table_(report::tableOf(std::move(id), std::move(caption), {})) {
    std::vector<std::string> labels;
    for (std::size_t g = 0; g < items.size(); ++g) {
      labels.insert(labels.end(), items[g].size(), groups.labels()[g]);
      items_.insert(items_.end(), items[g].begin(), items[g].end());
    }
    table_.columns.push_back(report::labelColumn(groups.key, groups.heading, std::move(labels)));
  }
  // A member of each item, or what a function says of it.
  template <class Cell>
  ItemTable& add(const char* key, std::string heading, report::Kind kind, Cell cell) {
    table_.columns.push_back(report::columnOf(key, std::move(heading), kind, items_, cell));
    return *this;
  }
  // Members `lower` and `upper`.
  ItemTable& limits(const std::string& level, report::Kind kind) {
    add(report::key::kLower, level + " lower", kind, &Item::lower);
    return add(report::key::kUpper, level + " upper", kind, &Item::upper);
  }
  report::Table made() { return std::move(table_); }

 private:
  report::Table table_;
  std::vector<Item> items_;
};

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_ITEM_TABLE_H_
