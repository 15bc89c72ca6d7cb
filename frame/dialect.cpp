#include "frame/dialect.h"

#include <csv.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <string>

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
struct Evidence {
  const Choose& choose;
  const Missing& missing;
  std::vector<std::string> header;
  std::vector<bool> asked;  // of each column of the file
  std::size_t cell = 0;
  bool inHeader = true;
  std::size_t points = 0, commas = 0, eitherPoint = 0, eitherComma = 0;

  static void onCell(void* text, std::size_t length, void* self) {
    static_cast<Evidence*>(self)->take(trimmed({static_cast<const char*>(text), length}));
  }
  static void onLineEnd(int, void* self) {
    auto& evidence = *static_cast<Evidence*>(self);
    if (evidence.inHeader && !evidence.header.empty()) evidence.endHeader();
    evidence.cell = 0;
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
  csv_parser parser;
  if (csv_init(&parser, 0) != 0) throw std::bad_alloc();
  const std::unique_ptr<csv_parser, void (*)(csv_parser*)> release(&parser, csv_free);
  csv_set_delim(&parser, static_cast<unsigned char>(delimiter));
  Evidence evidence{choose, missing, {}, {}};
  csv_parse(&parser, start.data(), start.size(), Evidence::onCell, Evidence::onLineEnd, &evidence);
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
