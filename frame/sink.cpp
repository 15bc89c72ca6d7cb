#include "frame/sink.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "frame/trimmed.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::frame {

using text::counted;
using text::quote;

namespace {

// A column that is wanted twice is spoken of once.
bool isIn(const Remark& remark, const Growing& column) {
  return std::find(remark.names.begin(), remark.names.end(), column.name()) != remark.names.end();
}

}  // namespace

NoColumn::NoColumn(const Place& place, const std::string& name, const std::string& expected)
    : Unreadable(place, "there is no column " + quote(name), expected),
      name_(name),
      expected_(expected) {}

std::string_view Sink::columnAt() const {
  return headerDone_ && cells_ < header_.size() ? std::string_view(header_[cells_])
                                                : std::string_view();
}

void Sink::takeCell(std::string_view raw) {
  if (cells_ == 0) recordLine_ = line_;
  if (!raw.empty() && std::memchr(raw.data(), '\n', raw.size()) != nullptr) {
    line_ += static_cast<std::size_t>(std::count(raw.begin(), raw.end(), '\n'));
  }
  afterReturn_ = false;
  const std::string_view text = trimmed(raw);
  if (!headerDone_) {
    header_.push_back(manner_.encoding.utf8(text, {table_.source, recordLine_, {}}, "column name"));
    hasText_ = hasText_ || !text.empty();
  } else if (hasText_) {
    give(text);
  } else if (!text.empty()) {
    beginRow();
    give(text);
  }
  ++cells_;
}

// The row has text: the blank rows before it are rows, and its cells so far are missing.
void Sink::beginRow() {
  const std::size_t line = std::exchange(recordLine_, 0), cells = std::exchange(cells_, 0);
  for (const std::size_t blank : std::exchange(blankRows_, {})) {
    recordLine_ = blank;
    for (Growing& each : growing_) complete_ = each.take({}, blank) && complete_;
    endRow();
  }
  recordLine_ = line;
  hasText_ = true;
  for (; cells_ < cells; ++cells_) give({});
}

void Sink::give(std::string_view text) {
  if (cells_ >= takers_.size()) {
    isTooLong_ = isTooLong_ || !text.empty();
    return;
  }
  for (const std::size_t taker : takers_[cells_]) {
    if (!growing_[taker].take(text, recordLine_)) complete_ = false;
  }
}

void Sink::takeLineEnd(int end) {
  if (cells_ > 0) {
    if (!headerDone_) {
      if (hasText_) {
        onHeader();
      } else {
        header_.clear();
      }
    } else if (!hasText_) {
      blankRows_.push_back(recordLine_);
    } else {
      if (isTooLong_ || cells_ < named_) {
        throw Unreadable({table_.source, recordLine_, {}},
                         "the row has " + counted(cells_, "cell", "cells"),
                         counted(header_.size(), "cell", "cells") + ", as in the header");
      }
      // Cells without a name need not be there, and nobody wants them.
      endRow();
    }
    cells_ = 0;
    hasText_ = false;
  }
  if (end == '\r' || (end == '\n' && !afterReturn_)) ++line_;
  afterReturn_ = end == '\r';
}

void Sink::onHeader() {
  headerDone_ = true;
  takers_.resize(header_.size());
  std::unordered_set<std::string_view> seen;
  for (std::size_t i = 0; i < header_.size(); ++i) {
    const std::string& name = header_[i];
    if (name.empty()) continue;
    named_ = i + 1;
    if (seen.insert(name).second) continue;
    throw Unreadable({table_.source, recordLine_, {}}, "two columns are named " + quote(name),
                     "a different name for each");
  }
  for (const Wanted& wanted : choose_(header_)) {
    const auto found = std::find(header_.begin(), header_.end(), wanted.name);
    if (wanted.name.empty() || found == header_.end()) {
      throw NoColumn({table_.source, recordLine_, {}}, wanted.name,
                     "one of " + text::nearestFirst(wanted.name, header_));
    }
    takers_[static_cast<std::size_t>(found - header_.begin())].push_back(growing_.size());
    growing_.emplace_back(wanted, manner_);
  }
  nextLine_ = line_ + 1;
}

void Sink::endRow() {
  ++rowsRead_;
  if (!std::exchange(complete_, true)) return;
  for (Growing& each : growing_) each.keep();
  if (recordLine_ != nextLine_ || rows_ == 0) table_.lines.steps.emplace_back(rows_, recordLine_);
  nextLine_ = recordLine_ + 1;
  ++rows_;
}

void Sink::finish() {
  table_.rowsRead = rowsRead_;
  table_.rows = rows_;
  for (const Growing& each : growing_) each.check();
  addRemarks();
  for (Growing& each : growing_) table_.columns.push_back(each.taken());
}

void Sink::addRemarks() {
  if (auto remark = manner_.encoding.remark()) table_.remarks.push_back(std::move(*remark));
  addDecimalRemark();
  addGroupRemark();
  addDateRemark();
}

void Sink::addDecimalRemark() {
  if (manner_.found.empty()) return;
  Remark remark{"decimalComma", {}, {}};
  for (const Growing& each : growing_) {
    if (each.marked().count == 0 || isIn(remark, each)) continue;
    const OddCells::Cell& cell = each.marked().first.front();
    if (remark.names.empty()) {
      remark.text =
          manner_.found + ", such as " + quote(cell.text) + " in line " + std::to_string(cell.line);
    }
    remark.names.push_back(each.name());
  }
  if (!remark.names.empty()) table_.remarks.push_back(std::move(remark));
}

void Sink::addGroupRemark() {
  Remark remark{"thousandsMarks", {}, {}};
  for (const Growing& each : growing_) {
    if (each.grouped().count == 0 || isIn(remark, each)) continue;
    const OddCells::Cell& cell = each.grouped().first.front();
    remark.text += (remark.names.empty() ? "marks of thousands are left out of numbers: " : ", ") +
                   quote(cell.text) + " in line " + std::to_string(cell.line) + " is " +
                   text::exact(readNumeral(cell.text, manner_.numbers).value);
    remark.names.push_back(each.name());
  }
  if (!remark.names.empty()) table_.remarks.push_back(std::move(remark));
}

void Sink::addDateRemark() {
  Remark remark{"dates", {}, {}};
  for (const Growing& each : growing_) {
    if (!each.isDate() || isIn(remark, each)) continue;
    remark.text += (remark.names.empty() ? "the dates of " : ", ") + quote(each.name());
    remark.names.push_back(each.name());
  }
  remark.text += " are read as days since 1970-01-01";
  if (!remark.names.empty()) table_.remarks.push_back(std::move(remark));
}

}  // namespace survmeth::frame
