// Where the program's own files are: beside the program, in a build tree and wherever an installed
// tree was moved to.
#ifndef CLI_SHELL_INSTALLED_H_
#define CLI_SHELL_INSTALLED_H_

#include <string>

namespace cli {

// The folder share/survmeth of the tree that the running program stands in. Throws a Problem
// (kFailed) where the system does not say which program runs.
std::string sharedFolder();

}  // namespace cli

#endif  // CLI_SHELL_INSTALLED_H_
