#include "frame/cellParser.h"

#include <algorithm>

namespace survmeth::frame {

CellParser::CellParser(CellTaker& taker) : taker_(taker) {
  set(' ', Sign::kBlank);
  set('\t', Sign::kBlank);
  set('"', Sign::kQuote);
  set('\n', Sign::kLineEnd);
  set('\r', Sign::kLineEnd);
  set(',', Sign::kDelimiter);
}

void CellParser::setDelimiter(char delimiter) {
  set(',', Sign::kText);
  set(delimiter, Sign::kDelimiter);
}

bool CellParser::parse(std::string_view block) {
  std::size_t at = 0;
  while (at < block.size()) {
    if (!step(block, at)) return false;
  }
  return true;
}

bool CellParser::finish() {
  if (state_ == State::kQuoted) return false;
  if (state_ == State::kRowStart) return true;
  give({});
  taker_.takeLineEnd(CellTaker::kEndOfText);
  state_ = State::kRowStart;
  return true;
}

bool CellParser::step(std::string_view block, std::size_t& at) {
  switch (state_) {
    case State::kRowStart:
    case State::kCellStart:
      start(block, at);
      return true;
    case State::kPlain:
      return plain(block, at);
    case State::kQuoted:
      quoted(block, at);
      return true;
    case State::kQuoteSeen:
      break;
  }
  return quoteSeen(block, at);
}

void CellParser::start(std::string_view block, std::size_t& at) {
  while (at < block.size() && signOf(block[at]) == Sign::kBlank) ++at;
  if (at == block.size()) return;
  const Sign sign = signOf(block[at]);
  if (sign == Sign::kQuote) {
    state_ = State::kQuoted;
    ++at;
  } else if (sign == Sign::kLineEnd && state_ == State::kRowStart) {
    taker_.takeLineEnd(block[at++]);
  } else {
    state_ = State::kPlain;
  }
}

bool CellParser::plain(std::string_view block, std::size_t& at) {
  const std::size_t begin = at;
  while (at < block.size() && signOf(block[at]) < Sign::kQuote) ++at;
  const std::string_view text = block.substr(begin, at - begin);
  if (at == block.size()) {
    held_ += text;
    return true;
  }
  if (!isEnd(block[at])) return false;
  give(text);
  end(block[at++]);
  return true;
}

void CellParser::quoted(std::string_view block, std::size_t& at) {
  const std::size_t quote = std::min(block.find('"', at), block.size());
  held_ += block.substr(at, quote - at);
  at = quote;
  if (at == block.size()) return;
  ++at;
  state_ = State::kQuoteSeen;
  blank_ = false;
}

bool CellParser::quoteSeen(std::string_view block, std::size_t& at) {
  const char c = block[at];
  if (signOf(c) == Sign::kBlank) {
    blank_ = true;
  } else if (isEnd(c)) {
    give({});
    end(c);
  } else if (c == '"' && !blank_) {
    held_ += c;
    state_ = State::kQuoted;
  } else {
    return false;
  }
  ++at;
  return true;
}

// The cell is what is held and, behind it, `text`.
void CellParser::give(std::string_view text) {
  if (held_.empty()) {
    taker_.takeCell(text);
    return;
  }
  held_ += text;
  taker_.takeCell(held_);
  held_.clear();
}

void CellParser::end(char c) {
  if (signOf(c) == Sign::kDelimiter) {
    state_ = State::kCellStart;
    return;
  }
  state_ = State::kRowStart;
  taker_.takeLineEnd(c);
}

}  // namespace survmeth::frame
