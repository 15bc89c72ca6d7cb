// One pass over the text: a parser finds the cells, a sink makes columns of the wanted ones.
#include "frame/reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "frame/cellParser.h"
#include "frame/choose.h"
#include "frame/dialect.h"
#include "frame/sink.h"
#include "frame/textSource.h"
#include "text/words.h"

namespace survmeth::frame {
namespace {

struct Closer {
  void operator()(std::FILE* file) const {
    if (file != nullptr && file != stdin) std::fclose(file);
  }
};

class Parser {
 public:
  Parser(Frame& table, const Choose& choose, const Reading& reading)
      : table_(table),
        choose_(choose),
        reading_(reading),
        manner_{table.source, reading.missing, {}, {}, {}},
        sink_(table, choose, manner_),
        cells_(sink_) {}

  void run(std::unique_ptr<Bytes> bytes, std::uint64_t size, const ReadProgress& progress) {
    TextSource text(std::move(bytes));
    bool isFirst = true;
    for (;;) {
      const std::string_view block = next(text);
      if (block.empty()) break;
      if (std::exchange(isFirst, false)) begin(text, block);
      parse(block);
      if (progress) progress(text.done(), size);
    }
    if (!cells_.finish()) refuse();
    if (!sink_.sawHeader()) {
      throw Unreadable({table_.source, 0, {}}, "the file is empty",
                       "a header line and rows of data");
    }
    sink_.finish();
    if (auto remark = text.remark()) table_.remarks.push_back(std::move(*remark));
  }

 private:
  std::string_view next(TextSource& text) {
    try {
      return text.next();
    } catch (const Damage& damage) {
      // Before the first line there is no line to speak of.
      const std::size_t line = sink_.sawHeader() ? sink_.line() : 0;
      throw Unreadable({table_.source, line, {}}, damage.what(), damage.expected());
    }
  }

  void begin(const TextSource& text, std::string_view block) {
    if (text.saysUtf8()) manner_.encoding.mustBeUtf8();
    if (block.find('\0') != std::string_view::npos) return;
    Dialect dialect = dialectOf(block, choose_, reading_);
    manner_.numbers = dialect.numbers;
    manner_.found = std::move(dialect.found);
    if (dialect.remark) table_.remarks.push_back(std::move(*dialect.remark));
    cells_.setDelimiter(dialect.delimiter);
  }

  void parse(std::string_view block) {
    const auto* zero = static_cast<const char*>(std::memchr(block.data(), 0, block.size()));
    if (zero != nullptr) {
      const std::string_view before =
          block.substr(0, static_cast<std::size_t>(zero - block.data()));
      const auto lines = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
      throw Unreadable({table_.source, sink_.line() + lines, {}},
                       "the file is not text: a byte of 0 stands here",
                       "comma- or tab-separated text");
    }
    if (!cells_.parse(block)) refuse();
  }

  [[noreturn]] void refuse() {
    const Place place{table_.source, sink_.line(), sink_.columnAt()};
    if (cells_.isQuoted()) {
      throw Unreadable(place, "the quoted cell that begins here is not closed",
                       "a closing quote followed by a separator or the end of the line");
    }
    throw Unreadable(place, "a quote stands inside a cell that is not quoted",
                     "such a cell in quotes, with each quote inside it doubled");
  }

  Frame& table_;
  const Choose& choose_;
  const Reading& reading_;
  Manner manner_;
  Sink sink_;
  CellParser cells_;
};

Frame read(std::unique_ptr<Bytes> bytes, const std::string& source, std::uint64_t size,
           const Choose& choose, const Reading& reading, const ReadProgress& progress) {
  Frame table;
  table.fromFile = true;
  table.source = source;
  Parser(table, choose, reading).run(std::move(bytes), size, progress);
  return table;
}

// Where the condition first names a column.
std::size_t placeOf(const Expression& expression, const std::string& name) {
  constexpr auto kNowhere = static_cast<std::size_t>(-1);
  if (expression.kind == Expression::Kind::kName && expression.text == name) return expression.at;
  std::size_t first = kNowhere;
  for (const Expression& argument : expression.arguments) {
    first = std::min(first, placeOf(argument, name));
  }
  return first;
}

// With the rows chosen, where there is a condition. `read` reads columns.
template <typename Read>
Frame readChosen(const Choose& choose, const Reading& reading, const Read& read) {
  if (reading.where.empty()) return read(choose);
  const Condition condition = parseCondition(reading.where);
  std::vector<Wanted> wanted;
  const auto chooseMore = [&](const std::vector<std::string>& header) {
    wanted = choose(header);
    return wantedFor(condition, wanted);
  };
  try {
    const Frame all = read(chooseMore);
    return chosenRows(all, condition, wanted);
  } catch (const NoColumn& none) {
    const auto isName = [&](const Wanted& each) { return each.name == none.name(); };
    if (std::any_of(wanted.begin(), wanted.end(), isName)) throw;
    throw ExpressionError(
        condition.text, placeOf(condition.expression, none.name()),
        "there is no column " + text::quote(none.name()) + "; expected " + none.expected());
  }
}

}  // namespace

Frame readFrame(const std::string& file, const Choose& choose, const Reading& reading,
                const ReadProgress& progress) {
  const std::string source = file == "-" ? "standard input" : file;
  return readChosen(choose, reading, [&](const Choose& columns) {
    const std::unique_ptr<std::FILE, Closer> input(file == "-" ? stdin
                                                               : std::fopen(file.c_str(), "rb"));
    if (!input) throw Unreadable(source + ": cannot be opened: " + std::strerror(errno));
    struct stat status {};
    std::uint64_t size = 0;
    if (fstat(fileno(input.get()), &status) == 0) {
      if (S_ISDIR(status.st_mode)) {
        throw Unreadable({source, 0, {}}, "this is a folder", "a CSV or TSV file");
      }
      if (S_ISREG(status.st_mode)) size = static_cast<std::uint64_t>(status.st_size);
    }
    return read(std::make_unique<FileBytes>(input.get(), source), source, size, columns, reading,
                progress);
  });
}

Frame readFrame(const std::string& file, const std::vector<Wanted>& wanted, const Reading& reading,
                const ReadProgress& progress) {
  return readFrame(
      file, [&wanted](const std::vector<std::string>&) { return wanted; }, reading, progress);
}

Frame readText(std::string_view bytes, const std::string& source, const Choose& choose,
               const Reading& reading) {
  return readChosen(choose, reading, [&](const Choose& columns) {
    return read(std::make_unique<MemoryBytes>(bytes), source, bytes.size(), columns, reading, {});
  });
}

}  // namespace survmeth::frame
