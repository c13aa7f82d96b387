#include <cstdio>
#include <ostream>

#include "cli/output.h"
#include "cli/run.h"
#include "cli/system.h"
#include "services/process.h"

int main(int count, char** values) {
    namespace cli = kestrel::cli;
    kestrel::settleProcess();
    cli::system::prepareStreams();
    cli::OutputBuffer buffer(stdout);
    std::ostream out(&buffer);
    cli::OutputBuffer messages(stderr);
    std::ostream err(&messages);
    err << std::unitbuf;
    return cli::run(cli::system::commandLine(count, values), out, err,
                    cli::system::errorIsTerminal());
}
