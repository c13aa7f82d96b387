#include <cstdio>
#include <ostream>

#include "cli/output.h"
#include "cli/run.h"
#include "cli/system.h"
#include "services/program.h"
#include "system/filesystem.h"
#include "system/process.h"

int main(int count, char** values) {
    namespace cli = kestrel::cli;
    kestrel::settleProcess();
    kestrel::gProgram().folder = kestrel::filesystem::userFolder();
    cli::system::prepareStreams();
    cli::OutputBuffer buffer(stdout, cli::system::isTerminal(stdout));
    std::ostream out(&buffer);
    // Messages are visible as they are, and progress moves the cursor.
    cli::OutputBuffer messages(stderr, false);
    std::ostream err(&messages);
    err << std::unitbuf;
    const int code = cli::run(cli::system::commandLine(count, values), out, err,
                              cli::system::isTerminal(stderr));
    cli::system::passInterruptOn();
    return code;
}
