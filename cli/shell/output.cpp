// Files under a temporary name first, then renamed all together.
#include "cli/shell/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "cli/shell/problem.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& path, int error) {
  throw Problem(path + ": cannot be written: " + std::strerror(error), kFailed);
}

// Writes all of `text`; errno tells why not.
bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// What has been made so far, taken away again unless it is kept.
class Pending {
 public:
  ~Pending() {
    for (const auto& [temporary, path] : files_) ::unlink(temporary.c_str());
    // Innermost first; a folder that something else has been put into meanwhile stays.
    for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
      ::rmdir(folder->c_str());
    }
  }

  void makeFolder(const std::string& path) {
    std::vector<fs::path> absent;
    for (fs::path at = fs::path(path).lexically_normal();
         !at.empty() && !fs::exists(at) && at != at.parent_path(); at = at.parent_path()) {
      absent.push_back(at);
    }
    for (auto each = absent.rbegin(); each != absent.rend(); ++each) {
      if (each->filename().empty()) continue;
      if (::mkdir(each->c_str(), 0777) != 0 && errno != EEXIST) fail(path, errno);
      folders_.push_back(each->string());
    }
    if (!fs::is_directory(path)) fail(path, ENOTDIR);
  }

  void makeFile(const std::string& path, std::string_view contents) {
    if (fs::is_directory(path)) fail(path, EISDIR);
    std::string temporary = path + ".XXXXXX";
    const int descriptor = ::mkstemp(temporary.data());
    if (descriptor < 0) fail(path, errno);
    files_.emplace_back(temporary, path);
    // mkstemp makes the file for its owner only; results are files like any other.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    const bool written = writeAll(descriptor, contents) && ::fchmod(descriptor, 0666 & ~mask) == 0;
    const int error = errno;
    if (::close(descriptor) != 0 && written) fail(path, errno);
    if (!written) fail(path, error);
  }

  void keep() {
    while (!files_.empty()) {
      const auto& [temporary, path] = files_.back();
      if (::rename(temporary.c_str(), path.c_str()) != 0) fail(path, errno);
      files_.pop_back();
    }
    folders_.clear();
  }

 private:
  std::vector<std::pair<std::string, std::string>> files_;  // temporary and final name
  std::vector<std::string> folders_;
};

}  // namespace

void Output::file(const std::string& path, std::string contents) {
  const auto same = std::find_if(files_.begin(), files_.end(),
                                 [&path](const auto& each) { return each.first == path; });
  if (same != files_.end()) {
    same->second = std::move(contents);
  } else {
    files_.emplace_back(path, std::move(contents));
  }
}

void Output::folder(const std::string& path) { folders_.push_back(path); }

void Output::write() {
  Pending pending;
  for (const std::string& path : folders_) pending.makeFolder(path);
  for (const auto& [path, contents] : files_) pending.makeFile(path, contents);
  if (!writeAll(STDOUT_FILENO, text_)) fail("standard output", errno);
  pending.keep();
}

}  // namespace cli
