// What the parser's cells become: the wanted columns of the rows that are complete.
#ifndef FRAME_SINK_H_
#define FRAME_SINK_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "frame/cellParser.h"
#include "frame/frame.h"
#include "frame/growing.h"
#include "frame/place.h"
#include "frame/wanted.h"

namespace survmeth::frame {

// A wanted column that the header does not name.
class NoColumn : public Unreadable {
 public:
  // `expected` says which there are.
  NoColumn(const Place& place, const std::string& name, const std::string& expected);
  const std::string& name() const { return name_; }
  const std::string& expected() const { return expected_; }

 private:
  std::string name_, expected_;
};

// Rows without any text are blank: before the header and at the end of the file they are no rows,
// as spreadsheets leave them behind; between rows of data they are rows of missing cells.
class Sink : public CellTaker {
 public:
  // All of these outlive it. What is set in `manner` before the first cell holds.
  Sink(Frame& table, const Choose& choose, Manner& manner)
      : table_(table), choose_(choose), manner_(manner) {}

  void takeCell(std::string_view raw) override;
  void takeLineEnd(int end) override;

  bool sawHeader() const { return headerDone_; }
  // Where the cell stands that comes next.
  std::size_t line() const { return line_; }
  std::string_view columnAt() const;

  // The end of the file. Throws Unreadable for the cells that no column should hold.
  void finish();

 private:
  void onHeader();
  void beginRow();
  void give(std::string_view text);
  void endRow();
  void addRemarks();
  void addDecimalRemark();
  void addDateRemark();
  void addGroupRemark();

  Frame& table_;
  const Choose& choose_;
  Manner& manner_;
  std::vector<Growing> growing_;
  std::vector<std::string> header_;
  std::size_t named_ = 0;                         // cells of the header up to the last name
  std::vector<std::vector<std::size_t>> takers_;  // of each file column: who wants it
  std::vector<std::size_t> blankRows_;            // lines of those since the last row with text
  std::size_t line_ = 1, recordLine_ = 1, nextLine_ = 0;
  std::size_t cells_ = 0, rows_ = 0, rowsRead_ = 0;
  bool headerDone_ = false, complete_ = true, afterReturn_ = false;
  bool hasText_ = false;    // the current row has
  bool isTooLong_ = false;  // it has text behind the header's last cell
};

}  // namespace survmeth::frame

#endif  // FRAME_SINK_H_
