#include "cli/help.h"

namespace kestrel::cli {

const std::string_view kHelp = R"(Usage: kestrel-cli COMMAND [OPTION]...

Looks into the .gas definition files of a game's mods, and converts them.

Commands:
  list FILE                   the templates of FILE: name and kind of each
  show FILE NAME              the template NAME as tab-delimited text
       --listed                 ... as it stands in the file
  chain FILE NAME             the templates that NAME specializes, and their files
       --in PLACE               search the .gas files of PLACE too: a folder, or an
                                archive; FILE may be ARCHIVE/FOLDER/NAME.gas
  convert FOLDER              the .gas files of FOLDER to .tab files beside them
       --single FILE            ... to one FILE ("" for FOLDER/Converted.tab)
       --title, --author, --build, --copyright TEXT
                                a line of the header
  check FILE...               every statement that loading ignores or cuts
  dump FILE                   the templates as JSON, one object a line
  tank list ARCHIVE           what an archive holds: path, size, packed size, format and
                              CRC of each file; folders end in "\"
       --json                   ... one object a line
  tank find ARCHIVE TEXT      the same of those whose name holds TEXT
  tank test ARCHIVE           reads every file in it
  tank extract ARCHIVE [NAME...]
                              writes all files, or those at the paths NAME, folders whole
       --to FOLDER              ... into FOLDER; else the current one
       --flat                   ... without the folders' paths
       --existing skip|replace|stop
                                what becomes of files that are there; else stop.
                                Replaced ones are kept as .bak

  --codepage N                the 8-bit code page of the files: 874, 1250 to 1258
  --help                      shows this
  --version                   shows the version

NAME is the "doc" of a template, its "name", or what "list" shows.
The code page is that of the language, or the one that KESTREL_CODEPAGE names.
Options may stand anywhere; "--" ends them.

Exit codes: 0 fine, 1 failed (check: something was found; chain: it does not end;
convert: a file was left out; tank: nothing was found, or a file could not be read
or written), 2 wrong usage.
)";

}  // namespace kestrel::cli
