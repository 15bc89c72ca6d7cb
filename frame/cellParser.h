// The cells of a text whose rows are lines, as RFC 4180 has them: parted by a delimiter, in quotes
// where they hold one, a line end or a quote. Blanks around cells and quotes are no part of a cell;
// a line ends with LF, CR or both.
#ifndef FRAME_CELLPARSER_H_
#define FRAME_CELLPARSER_H_

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace survmeth::frame {

// What takes the cells, in their order.
class CellTaker {
 public:
  static constexpr int kEndOfText = -1;

  CellTaker() = default;
  CellTaker(const CellTaker&) = delete;
  CellTaker& operator=(const CellTaker&) = delete;
  virtual ~CellTaker() = default;
  // The text stands until the call returns. Blanks may follow it; those before it are left out.
  virtual void takeCell(std::string_view text) = 0;
  // `end` is the character that ended the line. CR and LF end a line each, of which the second has
  // no cell; so has a line of blanks alone.
  virtual void takeLineEnd(int end) = 0;
};

// Takes the text in blocks of any length. What the taker throws is thrown on.
class CellParser {
 public:
  // The taker must outlive the parser.
  explicit CellParser(CellTaker& taker);

  // Before the first block; a comma else. Neither a quote nor a line end.
  void setDelimiter(char delimiter);

  // False where a quote is out of place: the parser stands still behind the cells before it.
  // Cost linear; cells without quotes that end in their block are not copied.
  [[nodiscard]] bool parse(std::string_view block);
  // The end of the text; false within quotes.
  [[nodiscard]] bool finish();

  // Whether the cell at hand began with a quote.
  bool isQuoted() const { return state_ == State::kQuoted || state_ == State::kQuoteSeen; }

 private:
  enum class State {
    kRowStart,   // no cell of the row has begun, nor a delimiter
    kCellStart,  // behind a delimiter
    kPlain,
    kQuoted,
    kQuoteSeen,  // behind a quote within quotes, which may have ended the cell
  };
  // What a character may be outside quotes.
  enum class Sign : unsigned char { kText, kBlank, kQuote, kDelimiter, kLineEnd };

  Sign signOf(char c) const { return signs_[static_cast<unsigned char>(c)]; }
  bool isEnd(char c) const { return signOf(c) >= Sign::kDelimiter; }
  void set(char c, Sign sign) { signs_[static_cast<unsigned char>(c)] = sign; }
  bool step(std::string_view block, std::size_t& at);
  void start(std::string_view block, std::size_t& at);
  bool plain(std::string_view block, std::size_t& at);
  void quoted(std::string_view block, std::size_t& at);
  bool quoteSeen(std::string_view block, std::size_t& at);
  void give(std::string_view text);
  void end(char c);

  CellTaker& taker_;
  std::array<Sign, 256> signs_{};
  State state_ = State::kRowStart;
  std::string held_;    // of the cell at hand, from blocks before or within quotes
  bool blank_ = false;  // a blank stands behind the quote that may have ended the cell
};

}  // namespace survmeth::frame

#endif  // FRAME_CELLPARSER_H_
