// Following a path to what it stands for.
#include "cli/shell/target.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "cli/shell/problem.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // as the kernel has it

// The number of `path` in the folder of the program's own descriptors, or -1.
int descriptorOf(const fs::path& path) {
  const std::string folder = path.parent_path().string(), name = path.filename().string();
  const bool own = folder == "/dev/fd" || folder == "/proc/self/fd" ||
                   folder == "/proc/" + std::to_string(::getpid()) + "/fd";
  const bool digits =
      !name.empty() && name.size() < 7 &&
      std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
  return own && digits ? std::atoi(name.c_str()) : -1;
}

// `path` with the links of its folders followed, but not itself.
fs::path inItsFolder(const fs::path& path, std::error_code& error) {
  const fs::path whole = fs::absolute(path, error);
  return fs::weakly_canonical(whole.parent_path(), error) / whole.filename();
}

// What `path` stands for in the end: links are followed, also to a file that is yet to be made.
fs::path followed(const fs::path& path, std::error_code& error) {
  fs::path at = inItsFolder(path, error);
  for (int links = 0; !error && descriptorOf(at) < 0; ++links) {
    struct stat status {};
    if (::lstat(at.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return at;
    if (links == kMostLinks) {
      error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
      break;
    }
    const fs::path link = fs::read_symlink(at, error);
    at = inItsFolder(at.parent_path() / link, error);
  }
  return at;
}

// 0, or why the file cannot be written. The mode counts for root as well, whom the system would
// let write anything: who has taken the permission away did so on purpose.
int whyReadOnly(const std::string& path, const struct stat& status) {
  if ((status.st_mode & 0222) == 0) return EACCES;
  return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 ? 0 : errno;
}

bool hasIdentity(const struct stat& status) {
  return S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode);
}

}  // namespace

void cannotWrite(const std::string& path, int error) {
  throw Problem(path + ": cannot be written: " + std::strerror(error), kFailed);
}

bool Identity::operator==(const Identity& other) const {
  if (status && other.status) {
    return hasIdentity(*status) && status->st_dev == other.status->st_dev &&
           status->st_ino == other.status->st_ino;
  }
  return !status && !other.status && !path.empty() && path == other.path;
}

Identity identityOf(const std::string& path) {
  std::error_code error;
  Identity identity{{}, followed(path, error).string()};
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) identity.status = status;
  return identity;
}

Identity identityOf(int descriptor) {
  Identity identity;
  struct stat status {};
  if (::fstat(descriptor, &status) == 0) identity.status = status;
  return identity;
}

Target targetOf(const std::string& path) {
  std::error_code error;
  const fs::path end = followed(path, error);
  if (error) cannotWrite(path, error.value());
  Target target;
  target.path = path;
  target.descriptor = descriptorOf(end);
  if (target.descriptor >= 0) {
    target.kind = TargetKind::kDescriptor;
    target.identity = identityOf(target.descriptor);
    const int flags = ::fcntl(target.descriptor, F_GETFL);
    if (flags < 0 || (flags & O_ACCMODE) == O_RDONLY) cannotWrite(path, EBADF);
    return target;
  }
  target.file = end.string();
  target.identity = {{}, target.file};
  if (end.filename().empty()) cannotWrite(path, EISDIR);
  struct stat status {};
  if (::stat(target.file.c_str(), &status) != 0) {
    // A folder that is missing is said when the file is made: it may be made before.
    if (errno != ENOENT && errno != ENOTDIR) cannotWrite(path, errno);
    return target;
  }
  target.identity.status = status;
  if (S_ISDIR(status.st_mode)) cannotWrite(path, EISDIR);
  if (!S_ISREG(status.st_mode)) target.kind = TargetKind::kStream;
  if (const int why = whyReadOnly(target.file, status); why != 0) cannotWrite(path, why);
  return target;
}

}  // namespace cli
