// The report's tables, under the command line's names.
#ifndef CLI_SHELL_TEXT_TABLE_H_
#define CLI_SHELL_TEXT_TABLE_H_

#include "report/textTable.h"
#include "text/utf8.h"

namespace cli {

using survmeth::report::Heading;
using survmeth::report::kRight;
using survmeth::report::TextTable;
using survmeth::report::underlined;
using survmeth::text::printable;

}  // namespace cli

#endif  // CLI_SHELL_TEXT_TABLE_H_
