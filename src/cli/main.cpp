#include <cstdio>
#include <iostream>

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
    return cli::run(cli::system::commandLine(count, values), out, std::cerr,
                    cli::system::errorIsTerminal());
}
