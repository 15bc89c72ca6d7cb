// One pass over the file: libcsv finds the cells, a sink parses the wanted ones into columns.
#include "frame/reader.h"

#include <csv.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string_view>
#include <unordered_set>

#include "frame/growing.h"
#include "frame/place.h"
#include "text/utf8.h"
#include "text/words.h"

namespace survmeth::frame {
namespace {

using text::counted;
using text::isUtf8;
using text::nearestFirst;
using text::quote;

constexpr std::size_t kChunk = 1 << 18;

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// What libcsv's callbacks feed. An exception must not cross the C code: it is kept and thrown
// again once the parser has returned.
class Sink {
 public:
  Sink(Frame& table, const Choose& choose, const Missing& missing)
      : table_(table), choose_(choose), missing_(missing) {}

  static void cell(void* text, std::size_t length, void* sink) {
    static_cast<Sink*>(sink)->guarded([&](Sink& self) {
      self.onCell({static_cast<const char*>(text), length});
    });
  }
  static void lineEnd(int end, void* sink) {
    static_cast<Sink*>(sink)->guarded([end](Sink& self) { self.onLineEnd(end); });
  }

  void rethrow() const {
    if (error_) std::rethrow_exception(error_);
  }

  bool sawHeader() const { return !header_.empty(); }
  std::size_t line() const { return line_; }
  std::string_view columnAt() const {
    return cells_ < header_.size() ? std::string_view(header_[cells_]) : std::string_view();
  }

  void finish() {
    table_.rowsRead = rowsRead_;
    table_.rows = rows_;
    for (const Growing& each : growing_) each.check(table_.source);
    for (Growing& each : growing_) table_.columns.push_back(each.taken());
  }

 private:
  template <typename Action>
  void guarded(Action action) {
    if (error_) return;
    try {
      action(*this);
    } catch (...) {
      error_ = std::current_exception();
    }
  }

  void onCell(std::string_view raw) {
    if (cells_ == 0) recordLine_ = line_;
    if (!raw.empty() && std::memchr(raw.data(), '\n', raw.size()) != nullptr) {
      line_ += static_cast<std::size_t>(std::count(raw.begin(), raw.end(), '\n'));
    }
    afterReturn_ = false;
    const std::string_view text = trimmed(raw);
    if (!headerDone_) {
      header_.emplace_back(text);
    } else if (cells_ < takers_.size()) {
      for (const std::size_t taker : takers_[cells_]) {
        if (!growing_[taker].take(text, recordLine_, table_.source)) complete_ = false;
      }
    }
    ++cells_;
  }

  // `end` is the character that ended the line, or -1 at the end of the file.
  void onLineEnd(int end) {
    if (cells_ > 0) {
      if (headerDone_) {
        onRow();
      } else {
        onHeader();
      }
      cells_ = 0;
      complete_ = true;
    }
    if (end == '\r' || (end == '\n' && !afterReturn_)) ++line_;
    afterReturn_ = end == '\r';
  }

  void onHeader() {
    headerDone_ = true;
    takers_.resize(header_.size());
    std::unordered_set<std::string_view> seen;
    for (const std::string& name : header_) {
      if (!isUtf8(name)) {
        throw Unreadable({table_.source, recordLine_, {}}, "a column name is not UTF-8",
                         "text in UTF-8 encoding");
      }
      if (!name.empty() && !seen.insert(name).second) {
        throw Unreadable({table_.source, recordLine_, {}}, "two columns are named " + quote(name),
                         "a different name for each");
      }
    }
    for (const Wanted& wanted : choose_(header_)) {
      const std::string& name = wanted.name;
      const auto found = std::find(header_.begin(), header_.end(), name);
      if (name.empty() || found == header_.end()) {
        throw Unreadable({table_.source, recordLine_, {}}, "there is no column " + quote(name),
                         "one of " + nearestFirst(name, header_));
      }
      takers_[static_cast<std::size_t>(found - header_.begin())].push_back(growing_.size());
      growing_.emplace_back(wanted, missing_);
    }
    nextLine_ = line_ + 1;
  }

  void onRow() {
    if (cells_ != header_.size()) {
      throw Unreadable({table_.source, recordLine_, {}},
                       "the row has " + counted(cells_, "cell", "cells"),
                       counted(header_.size(), "cell", "cells") + ", as in the header");
    }
    ++rowsRead_;
    if (!complete_) return;
    for (Growing& each : growing_) each.keep();
    if (recordLine_ != nextLine_ || rows_ == 0) table_.lines.steps.emplace_back(rows_, recordLine_);
    nextLine_ = recordLine_ + 1;
    ++rows_;
  }

  Frame& table_;
  const Choose& choose_;
  const Missing& missing_;
  std::vector<Growing> growing_;
  std::vector<std::string> header_;
  std::vector<std::vector<std::size_t>> takers_;  // of each file column: who wants it
  std::size_t line_ = 1, recordLine_ = 1, nextLine_ = 0;
  std::size_t cells_ = 0, rows_ = 0, rowsRead_ = 0;
  bool headerDone_ = false, complete_ = true, afterReturn_ = false;
  std::exception_ptr error_;
};

struct Closer {
  void operator()(std::FILE* file) const {
    if (file != nullptr && file != stdin) std::fclose(file);
  }
};

// The commonest of tab, comma and semicolon in the first line, outside quotes.
unsigned char separatorOf(std::string_view text) {
  std::size_t tabs = 0, commas = 0, semicolons = 0;
  bool inQuotes = false, inHeader = false;
  for (const char c : text) {
    if (c == '"') inQuotes = !inQuotes;
    if (inQuotes) continue;
    if (c == '\n' || c == '\r') {
      if (inHeader) break;
      continue;
    }
    inHeader = true;
    tabs += c == '\t' ? 1 : 0;
    commas += c == ',' ? 1 : 0;
    semicolons += c == ';' ? 1 : 0;
  }
  if (tabs > commas && tabs >= semicolons) return '\t';
  return semicolons > commas ? ';' : ',';
}

// Fills the buffer as far as the file goes; a pipe gives less at a time than is asked for.
std::size_t fill(std::FILE* file, std::vector<char>& buffer, const std::string& source) {
  errno = 0;
  const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file);
  if (std::ferror(file) != 0)
    throw Unreadable(source + ": cannot be read: " + std::strerror(errno));
  return count;
}

// Takes a byte-order mark off and refuses what is not text.
std::string_view textStart(std::string_view chunk, const std::string& source) {
  if (chunk.starts_with("\xFE\xFF") || chunk.starts_with("\xFF\xFE")) {
    throw Unreadable({source, 0, {}}, "the file is UTF-16", "text in UTF-8 encoding");
  }
  if (const std::size_t at = chunk.find('\0'); at != std::string_view::npos) {
    const auto line =
        1 + std::count(chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(at), '\n');
    throw Unreadable({source, static_cast<std::size_t>(line), {}}, "the file is not text",
                     "comma- or tab-separated text");
  }
  if (chunk.starts_with("\xEF\xBB\xBF")) chunk.remove_prefix(3);
  return chunk;
}

void parse(std::FILE* file, std::uint64_t size, Sink& sink, const std::string& source,
           const ReadProgress& progress) {
  csv_parser parser;
  if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0) throw std::bad_alloc();
  const std::unique_ptr<csv_parser, void (*)(csv_parser*)> release(&parser, csv_free);

  std::uint64_t done = 0;
  std::vector<char> buffer(kChunk);
  bool first = true;
  const auto refuse = [&]() {
    if (csv_error(&parser) == CSV_ENOMEM) throw std::bad_alloc();
    const Place place{source, sink.line(), sink.columnAt()};
    if (parser.quoted != 0) {
      throw Unreadable(place, "the quoted cell that begins here is not closed",
                       "a closing quote followed by a separator or the end of the line");
    }
    throw Unreadable(place, "a quote stands inside a cell that is not quoted",
                     "such a cell in quotes, with each quote inside it doubled");
  };
  for (;;) {
    const std::size_t count = fill(file, buffer, source);
    std::string_view chunk(buffer.data(), count);
    if (first) {
      chunk = textStart(chunk, source);
      csv_set_delim(&parser, separatorOf(chunk));
      first = false;
    }
    const std::size_t parsed =
        csv_parse(&parser, chunk.data(), chunk.size(), Sink::cell, Sink::lineEnd, &sink);
    sink.rethrow();
    if (parsed != chunk.size()) refuse();
    done += count;
    if (progress) progress(done, size);
    if (count < buffer.size()) break;
  }
  const int unfinished = csv_fini(&parser, Sink::cell, Sink::lineEnd, &sink);
  sink.rethrow();
  if (unfinished != 0) refuse();
}

}  // namespace

Frame readFrame(const std::string& file, const std::vector<Wanted>& wanted, const Missing& missing,
                const ReadProgress& progress) {
  return readFrame(
      file, [&wanted](const std::vector<std::string>&) { return wanted; }, missing, progress);
}

Frame readFrame(const std::string& file, const Choose& choose, const Missing& missing,
                const ReadProgress& progress) {
  Frame table;
  table.fromFile = true;
  table.source = file == "-" ? "standard input" : file;
  const std::unique_ptr<std::FILE, Closer> input(file == "-" ? stdin
                                                             : std::fopen(file.c_str(), "rb"));
  if (!input) throw Unreadable(table.source + ": cannot be opened: " + std::strerror(errno));
  struct stat status {};
  std::uint64_t size = 0;
  if (fstat(fileno(input.get()), &status) == 0) {
    if (S_ISDIR(status.st_mode)) {
      throw Unreadable({table.source, 0, {}}, "this is a folder", "a CSV or TSV file");
    }
    if (S_ISREG(status.st_mode)) size = static_cast<std::uint64_t>(status.st_size);
  }
  Sink sink(table, choose, missing);
  parse(input.get(), size, sink, table.source, progress);
  if (!sink.sawHeader()) {
    throw Unreadable({table.source, 0, {}}, "the file is empty", "a header line and rows of data");
  }
  sink.finish();
  return table;
}

}  // namespace survmeth::frame
