#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/error.h"
#include "system/filestamp.h"

// Archives as places of `.gas` files. A file in one has a path as others have: the archive's,
// and behind a separator the folders in it and its name.
namespace kestrel {

// Why nothing can be had from an archive: it does not open, or the library stopped working.
class ArchiveFailure : public RunTimeError {
  public:
    using RunTimeError::RunTimeError;
};

// True for a file that is named as archives are ("*.ds*"), on a host that reads them.
bool isArchive(std::wstring_view path);

// The archive that `path` leads into; empty where it leads into none. Either slash separates.
std::wstring archiveOf(std::wstring_view path);

// The path of a file in an archive, there called `name`. Either slash separates.
std::wstring pathInArchive(std::wstring_view archive, std::wstring_view name);

// `path`, and where it leads into an archive as pathInArchive() writes it.
std::wstring sourcePath(std::wstring_view path);

// The stamp of the file at `path`, or of the archive that it is in.
std::optional<FileStamp> sourceStamp(std::wstring_view path);

}  // namespace kestrel
