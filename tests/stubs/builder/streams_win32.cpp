#include <fcntl.h>
#include <io.h>

// What the builder writes leaves as it is.
[[maybe_unused]] const int kModes = ::_setmode(1, _O_BINARY) + ::_setmode(2, _O_BINARY);
