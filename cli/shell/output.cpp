// Files under a temporary name first, then renamed all together.
#include "cli/shell/output.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/shell/leftovers.h"
#include "cli/shell/problem.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

std::string unwritten(const std::string& path, int error) {
  return path + ": cannot be written: " + std::strerror(error);
}

// What has been made so far, taken away again unless it is kept.
class Pending {
 public:
  Pending() = default;
  ~Pending() {
    for (File& file : files_) file.leftover.remove();
    // Innermost first; a folder that something else has been put into meanwhile stays.
    for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) folder->remove();
  }
  Pending(const Pending&) = delete;
  Pending& operator=(const Pending&) = delete;

  void makeFolder(const std::string& path) {
    std::vector<fs::path> absent;
    for (fs::path at = fs::path(path).lexically_normal();
         !at.empty() && !fs::exists(at) && at != at.parent_path(); at = at.parent_path()) {
      absent.push_back(at);
    }
    for (auto each = absent.rbegin(); each != absent.rend(); ++each) {
      if (each->filename().empty()) continue;
      const HeldSignals held;
      if (::mkdir(each->c_str(), 0777) == 0) {
        folders_.push_back(Leftover::folder(each->string()));
      } else if (errno != EEXIST) {
        cannotWrite(path, errno);
      }
    }
    if (!fs::is_directory(path)) cannotWrite(path, ENOTDIR);
  }

  void makeFile(const Target& target, std::string_view contents) {
    std::string temporary = fs::path(target.file).parent_path() / "survmeth.XXXXXX";
    int descriptor = -1;
    {
      const HeldSignals held;
      descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
      if (descriptor < 0) cannotWrite(target.path, errno);
      files_.push_back({Leftover::file(temporary), temporary, target.file, target.path});
    }
    int error = writeAll(descriptor, contents);
    if (error == 0) error = giveMode(descriptor, target);
    if (::close(descriptor) != 0 && error == 0) error = errno;
    if (error != 0) cannotWrite(target.path, error);
  }

  void keep() {
    while (!files_.empty()) {
      File& file = files_.back();
      const HeldSignals held;
      if (::rename(file.temporary.c_str(), file.place.c_str()) != 0) {
        cannotWrite(file.path, errno);
      }
      file.leftover.keep();
      files_.pop_back();
    }
    for (Leftover& folder : folders_) folder.keep();
    folders_.clear();
  }

 private:
  struct File {
    Leftover leftover;
    std::string temporary, place, path;
  };

  // mkostemp makes the file for its owner only. One that replaces another is as that was; a new one
  // is a file like any other.
  static int giveMode(int descriptor, const Target& target) {
    mode_t mode = 0;
    if (target.identity.status) {
      const struct stat& before = *target.identity.status;
      mode = before.st_mode & 0777;
      // Only root may give a file away; the group can be kept by its members.
      if (::fchown(descriptor, before.st_uid, before.st_gid) != 0 &&
          ::fchown(descriptor, static_cast<uid_t>(-1), before.st_gid) != 0) {
        mode &= ~static_cast<mode_t>(0070);
      }
    } else {
      const mode_t mask = ::umask(0);
      ::umask(mask);
      mode = 0666 & ~mask;
    }
    return ::fchmod(descriptor, mode) == 0 ? 0 : errno;
  }

  std::vector<File> files_;
  std::vector<Leftover> folders_;
};

// Into what is not a file of its own; 0 or the error.
int writeStream(const Target& target, std::string_view contents) {
  if (target.kind == TargetKind::kDescriptor) return writeAll(target.descriptor, contents);
  // Opening a FIFO waits for its reader.
  const int descriptor = ::open(target.file.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) return errno;
  const int error = writeAll(descriptor, contents);
  const bool closed = ::close(descriptor) == 0;
  return error == 0 && !closed ? errno : error;
}

}  // namespace

int writeAll(int descriptor, std::string_view text) {
  const IgnoredPipeSignal ignored;
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      struct pollfd ready = {descriptor, POLLOUT, 0};
      ::poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

void Output::input(const std::string& file) {
  inputs_.push_back(file == "-" ? identityOf(STDIN_FILENO) : identityOf(file));
  if (inputs_.back() == identityOf(STDOUT_FILENO)) {
    throw Problem("standard output goes into the input " + (file == "-" ? "standard input" : file) +
                  "; expected another place");
  }
}

void Output::reserve(const std::string& option, const std::string& path) {
  Reserved wanted{option, path, targetOf(path)};
  const Identity& identity = wanted.target.identity;
  const auto refuse = [&wanted](const std::string& what) {
    throw Problem(wanted.option + ": " + wanted.path + " is " + what + "; expected another place");
  };
  for (const Identity& input : inputs_) {
    if (identity == input) refuse(inputs_.size() == 1 ? "the input" : "an input");
  }
  if (wanted.target.kind != TargetKind::kDescriptor) {
    if (identity == identityOf(STDOUT_FILENO)) refuse("where standard output goes");
    for (const Reserved& other : reserved_) {
      if (identity == other.target.identity) refuse("also the file of " + other.option);
    }
  }
  reserved_.push_back(std::move(wanted));
}

// As it stands now: a file may have been made since the path was reserved.
const Target& Output::targetAt(const std::string& path) {
  const auto same = std::find_if(reserved_.begin(), reserved_.end(),
                                 [&path](const Reserved& each) { return each.path == path; });
  if (same == reserved_.end()) {
    reserve("output", path);
    return reserved_.back().target;
  }
  same->target = targetOf(path);
  return same->target;
}

void Output::file(const std::string& path, std::string contents) {
  files_.push_back({path, std::move(contents), {}});
}

void Output::figure(const std::string& path, std::function<std::string()> draw) {
  files_.push_back({path, {}, std::move(draw)});
}

void Output::folder(const std::string& path) { folders_.push_back(path); }

Output::Shortfall Output::write() {
  Shortfall shortfall{std::move(lacks_), false};
  std::vector<std::pair<Target, std::string>> streams;
  Pending pending;
  for (const std::string& path : folders_) pending.makeFolder(path);
  for (File& file : files_) {
    const Target target = targetAt(file.path);
    if (file.draw) {
      try {
        file.contents = file.draw();
      } catch (const std::runtime_error& failure) {
        shortfall.messages.emplace_back(failure.what());
        continue;
      }
    }
    if (target.kind == TargetKind::kFile) {
      pending.makeFile(target, file.contents);
    } else {
      streams.emplace_back(target, std::move(file.contents));
    }
  }
  for (const auto& [target, contents] : streams) {
    const int error = writeStream(target, contents);
    // A reader that has seen enough is no reason to withhold the files.
    if (error == EPIPE) {
      shortfall.messages.push_back(unwritten(target.path, error));
    } else if (error != 0) {
      cannotWrite(target.path, error);
    }
  }
  pending.keep();
  if (const int error = writeAll(STDOUT_FILENO, text_); error == EPIPE) {
    shortfall.pipeClosed = true;
  } else if (error != 0) {
    shortfall.messages.push_back(unwritten("standard output", error));
  }
  return shortfall;
}

}  // namespace cli
