// Where the path of an output leads. Only regular files are ever replaced; what stands for
// something else (a device, a FIFO, an open descriptor such as /dev/stdout or a process
// substitution) is written to.
#ifndef CLI_SHELL_TARGET_H_
#define CLI_SHELL_TARGET_H_

#include <sys/stat.h>

#include <optional>
#include <string>

namespace cli {

// Tells whether two paths are one file: device and number where it exists, else the path without
// links and dots. Devices and terminals are nobody's own and have no identity.
struct Identity {
  std::optional<struct stat> status;
  std::string path;

  bool operator==(const Identity& other) const;
};
Identity identityOf(const std::string& path);
Identity identityOf(int descriptor);

enum class TargetKind { kFile, kStream, kDescriptor };

struct Target {
  std::string path;  // as it was given, for messages
  TargetKind kind = TargetKind::kFile;
  std::string file;     // kFile: the file itself, links followed; it need not exist
  int descriptor = -1;  // kDescriptor
  Identity identity;    // status: of what stands there now
};

// Throws a Problem (kFailed): a folder, no permission to write, links in a circle, a descriptor
// that is not open.
Target targetOf(const std::string& path);

// "path: cannot be written: why", exit code kFailed.
[[noreturn]] void cannotWrite(const std::string& path, int error);

}  // namespace cli

#endif  // CLI_SHELL_TARGET_H_
