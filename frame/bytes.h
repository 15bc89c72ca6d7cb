// Bytes that come block by block, and what can be wrong with them.
#ifndef FRAME_BYTES_H_
#define FRAME_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace survmeth::frame {

// Large enough that the system's calls cost nothing, small enough for the cache.
inline constexpr std::size_t kBlock = 1 << 18;

// What is wrong with a file, without its place: whoever reads it knows the line.
class Damage : public std::runtime_error {
 public:
  Damage(const std::string& what, std::string expected)
      : std::runtime_error(what), expected_(std::move(expected)) {}
  const std::string& expected() const { return expected_; }

 private:
  std::string expected_;
};

class Bytes {
 public:
  Bytes() = default;
  Bytes(const Bytes&) = delete;
  Bytes& operator=(const Bytes&) = delete;
  virtual ~Bytes() = default;
  // The next block, which stands until the next call; empty at the end.
  virtual std::string_view next() = 0;
  // How many bytes of the file itself are read.
  virtual std::uint64_t done() const = 0;
};

// Of an open file, which is left open. Throws Unreadable with `source`.
class FileBytes : public Bytes {
 public:
  FileBytes(std::FILE* file, std::string source)
      : file_(file), source_(std::move(source)), buffer_(kBlock) {}
  std::string_view next() override;
  std::uint64_t done() const override { return done_; }

 private:
  std::FILE* file_;
  std::string source_;
  std::vector<char> buffer_;
  std::uint64_t done_ = 0;
  bool atEnd_ = false;
};

// Of memory that outlives it.
class MemoryBytes : public Bytes {
 public:
  explicit MemoryBytes(std::string_view bytes, std::size_t block = kBlock)
      : bytes_(bytes), block_(block) {}
  std::string_view next() override;
  std::uint64_t done() const override { return done_; }

 private:
  std::string_view bytes_;
  std::size_t block_;
  std::uint64_t done_ = 0;
};

}  // namespace survmeth::frame

#endif  // FRAME_BYTES_H_
