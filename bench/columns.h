// Columns of doubles, and the file that holds them one after the other: what both sides of a
// comparison read.
#ifndef BENCH_COLUMNS_H_
#define BENCH_COLUMNS_H_

#include <cstddef>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

namespace survmeth::bench {

using Column = std::vector<double>;
using Columns = std::vector<Column>;

inline void writeColumns(const Columns& columns, const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  bool written = file != nullptr;
  for (const Column& column : columns) {
    written =
        written && std::fwrite(column.data(), sizeof(double), column.size(), file) == column.size();
  }
  if (file != nullptr) written = std::fclose(file) == 0 && written;
  if (!written) throw std::runtime_error("cannot write " + path);
}

inline Columns readColumns(const std::string& path, std::size_t count) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) throw std::runtime_error("cannot read " + path);
  std::fseek(file, 0, SEEK_END);
  const std::size_t rows = static_cast<std::size_t>(std::ftell(file)) / sizeof(double) / count;
  std::rewind(file);
  Columns columns(count, Column(rows));
  bool read = true;
  for (Column& column : columns) {
    read = read && std::fread(column.data(), sizeof(double), rows, file) == rows;
  }
  std::fclose(file);
  if (!read || rows == 0) throw std::runtime_error("cannot read " + path);
  return columns;
}

}  // namespace survmeth::bench

#endif  // BENCH_COLUMNS_H_
