#include "frame/dialect.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "frame/cellParser.h"
#include "frame/trimmed.h"

namespace survmeth::frame {
namespace {

constexpr std::size_t kRows = 50;  // below the header, that are looked at for the delimiter
constexpr std::array<char, 3> kDelimiters = {'\t', ';', ','};
constexpr std::array<const char*, 3> kNames = {"tabs", "semicolons", "commas"};
using Counts = std::array<std::size_t, kDelimiters.size()>;

// How often each delimiter stands in the first rows that are not blank, outside quotes. The last
// row is left out where the text may go on, unless it is the header.
std::vector<Counts> countsOf(std::string_view text) {
  std::vector<Counts> rows;
  Counts row{};
  bool inQuotes = false, isBlank = true;
  for (const char c : text) {
    if (c == '"') inQuotes = !inQuotes;
    if (!inQuotes && (c == '\n' || c == '\r')) {
      if (!isBlank) rows.push_back(row);
      if (rows.size() > kRows) return rows;
      row = {};
      isBlank = true;
      continue;
    }
    isBlank = false;
    if (inQuotes) continue;
    for (std::size_t i = 0; i < kDelimiters.size(); ++i) row[i] += c == kDelimiters[i] ? 1 : 0;
  }
  if (rows.empty()) rows.push_back(row);
  return rows;
}

// Which of kDelimiters.
std::size_t delimiterOf(const std::vector<Counts>& rows) {
  const Counts& header = rows.front();
  std::size_t best = kDelimiters.size();
  for (std::size_t i = 0; i < kDelimiters.size(); ++i) {
    const bool fits = rows.size() > 1 && header[i] > 0 &&
                      std::all_of(rows.begin(), rows.end(),
                                  [&](const Counts& row) { return row[i] == header[i]; });
    if (fits && (best == kDelimiters.size() || header[i] > header[best])) best = i;
  }
  if (best < kDelimiters.size()) return best;
  const auto [tabs, semicolons, commas] = header;
  if (tabs > commas && tabs >= semicolons) return 0;
  return semicolons > commas ? 1 : 2;
}

// What the cells of the wanted columns say about the decimal mark.
struct Evidence : CellTaker {
  Evidence(const Choose& choose_, const Missing& missing_) : choose(choose_), missing(missing_) {}

  const Choose& choose;
  const Missing& missing;
  std::vector<std::string> header;
  std::vector<bool> asked;  // of each column of the file
  std::size_t cell = 0;
  bool inHeader = true;
  std::size_t points = 0, commas = 0, eitherPoint = 0, eitherComma = 0;

  void takeCell(std::string_view raw) override { take(trimmed(raw)); }
  void takeLineEnd(int) override {
    if (inHeader && !header.empty()) endHeader();
    cell = 0;
  }

  // Blank rows before the header are no header.
  void endHeader() {
    if (std::all_of(header.begin(), header.end(), [](const auto& name) { return name.empty(); })) {
      header.clear();
      return;
    }
    inHeader = false;
    std::vector<Wanted> wanted;
    try {
      wanted = choose(header);
    } catch (...) {
      return;  // whoever reads the header in earnest is refused
    }
    for (const std::string& name : header) {
      asked.push_back(std::any_of(wanted.begin(), wanted.end(), [&](const Wanted& want) {
        return want.cells != Cells::kText && want.name == name;
      }));
    }
  }

  void take(std::string_view text) {
    if (inHeader) {
      header.emplace_back(text);
    } else if (cell < asked.size() && asked[cell] && !missing(text)) {
      const MarkEvidence mark = evidenceOf(text);
      points += mark == MarkEvidence::kPoint ? 1 : 0;
      commas += mark == MarkEvidence::kComma ? 1 : 0;
      eitherPoint += mark == MarkEvidence::kEitherPoint ? 1 : 0;
      eitherComma += mark == MarkEvidence::kEitherComma ? 1 : 0;
    }
    ++cell;
  }
};

NumberStyle styleOf(std::string_view start, char delimiter, const Choose& choose,
                    const Missing& missing) {
  // No cell can hold a comma: nothing but the point is possible.
  const char sign = delimiter == ',' ? '"' : ',';
  if (start.find(sign) == std::string_view::npos) return {};
  Evidence evidence(choose, missing);
  CellParser parser(evidence);
  parser.setDelimiter(delimiter);
  // A quote out of place is refused by whoever reads in earnest.
  static_cast<void>(parser.parse(start));
  if (evidence.points > 0) return {'.', evidence.commas == 0};
  if (evidence.commas > 0) return {',', true};
  const bool bySemicolons =
      delimiter == ';' && evidence.eitherComma > 0 && evidence.eitherPoint == 0;
  return {bySemicolons ? ',' : '.', false};
}

}  // namespace

Dialect dialectOf(std::string_view start, const Choose& choose, const Reading& reading) {
  Dialect dialect;
  dialect.delimiter = reading.delimiter;
  std::string separators;
  if (reading.delimiter == 0) {
    const std::vector<Counts> rows = countsOf(start);
    const std::size_t chosen = delimiterOf(rows);
    dialect.delimiter = kDelimiters[chosen];
    separators = "cells are separated by " + std::string(kNames[chosen]);
    std::string others;
    for (std::size_t i = 0; i < kDelimiters.size(); ++i) {
      if (i != chosen && rows.front()[i] > 0) {
        others += (others.empty() ? "" : " and ") + std::string(kNames[i]);
      }
    }
    if (!others.empty()) {
      dialect.remark =
          Remark{"delimiter", separators + ", though the header holds " + others + " too", {}};
    }
  }
  if (reading.decimal != 0) {
    dialect.numbers = {reading.decimal, true};
  } else {
    dialect.numbers = styleOf(start, dialect.delimiter, choose, reading.missing);
    if (dialect.numbers.decimal == ',') {
      dialect.found =
          separators + (separators.empty() ? "" : " and ") + "numbers have a decimal comma";
    }
  }
  return dialect;
}

}  // namespace survmeth::frame
