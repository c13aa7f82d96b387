#pragma once

#include <string_view>

#include "view/viewtext.h"

namespace kestrel {

// Asks for a file and writes the text into it. One block of a file that holds more is put
// in its place there, if the user agrees; never where the file does not hold it any more
// as it was loaded, and `loaded` is then the text. A `.gas` file is kept beside it as
// ".bak" when it is replaced for the first time in this run. Asks once more before it
// replaces a write-protected file, or an open file that another program has changed since
// it was loaded. Reloads the open file when that was written. True when the text was
// written.
bool saveViewedText(ViewedText& viewed, const OpenFile& openFile);

// Asks for a file and writes the bytes into it, to replace one as above.
void saveBytes(std::string_view bytes);

}  // namespace kestrel
