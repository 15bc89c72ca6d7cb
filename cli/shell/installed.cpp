#include "cli/shell/installed.h"

#ifdef __APPLE__
#include <mach-o/dyld.h>

#include <cstdint>
#endif

#include <filesystem>
#include <system_error>

#include "cli/shell/problem.h"
#include "cli/version.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

fs::path program() {
  std::error_code error;
#ifdef __APPLE__
  std::uint32_t size = 0;
  _NSGetExecutablePath(nullptr, &size);
  std::string path(size, '\0');
  _NSGetExecutablePath(path.data(), &size);
  return fs::canonical(path.c_str(), error);
#else
  return fs::read_symlink("/proc/self/exe", error);
#endif
}

}  // namespace

std::string sharedFolder() {
  const fs::path at = program();
  if (at.empty()) {
    throw Problem("the system does not say where this program is; expected --cases", kFailed);
  }
  return (at.parent_path() / kSharedFromProgram).lexically_normal().string();
}

}  // namespace cli
