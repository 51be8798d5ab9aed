// The subcommands. Each reads its words (after the subcommand's name) and
// returns the exit status; failures the command cannot word itself escape as
// exceptions, which main reports.
#ifndef QVCL_COMMANDS_H
#define QVCL_COMMANDS_H

#include "Tool.h"

namespace qvcl {

int runIconv(Arguments& arguments, int argc, char** argv);
int runEncodings(Arguments& arguments, int argc, char** argv);
int runAlnum(Arguments& arguments, int argc, char** argv);
int runMd5sum(Arguments& arguments, int argc, char** argv);
int runSha1sum(Arguments& arguments, int argc, char** argv);
int runSha256sum(Arguments& arguments, int argc, char** argv);
int runIni(Arguments& arguments, int argc, char** argv);
int runSockerr(Arguments& arguments, int argc, char** argv);
int runRegsvr(Arguments& arguments, int argc, char** argv);
// qvcl3-regsvr, the tool's name before qvcl: usage 1, a module that does not
// load 2, one without the entry point 3, an entry point that fails 4.
int runLegacyRegsvr(int argc, char** argv);

} // namespace qvcl

#endif
