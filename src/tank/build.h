#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tank/launcher.h"

// Starting the archive builder.
namespace kestrel {

// What an archive is built from. Source and target are not quoted; the four
// texts about it stand between quotes, and a flag is its option or empty.
struct BuildRequest {
    std::wstring source;
    std::wstring target;
    std::wstring copyright;
    std::wstring build;
    std::wstring title;
    std::wstring author;
    std::int16_t priority = 0;
    std::wstring devFlag;
    std::wstring multiPlayerFlag;
    std::wstring protectedFlag;
    std::wstring extra;  // a spare option, empty
};

inline constexpr std::wstring_view kFlagDev = L"-flagdev";
inline constexpr std::wstring_view kFlagMultiPlayer = L"-flagmpxfer";
inline constexpr std::wstring_view kFlagProtected = L"-flagprotected";

// The number of the error that gExecZeltor() reports: 2000 above the base of the
// errors of objects.
inline constexpr int kLaunchError = -2147219504;  // 800407D0

// `text` trimmed, between quotes.
std::wstring quoted(std::wstring_view text);

// True when the whole of `text`, but for blanks around it, reads as a decimal
// number.
bool isNumber(std::wstring_view text) noexcept;

// `text` as a number, rounded to the even one at a half; 0 when it is none.
// Throws RunTimeError (overflow) for one that has no place in 16 bits.
std::int16_t priorityOf(std::wstring_view text);

// `options` without the empty ones, joined by blanks. A dash at the very end is
// dropped.
std::wstring joinOptions(std::vector<std::wstring> options);

// The request's options, each with its value, in their order; the ones of flags that are
// off are left out.
std::vector<std::wstring> zeltorWords(const BuildRequest& request);

// The whole command line, not quoted but for the four texts.
std::wstring zeltorCommandLine(const BuildRequest& request, std::wstring_view builder);

// What a builder that gets one line would cut: those of its own path, the source and the target
// that hold blanks. None where it gets words.
std::vector<std::wstring> valuesToBeCut(const BuildRequest& request, const std::wstring& builder);

// Empties the request's spare option and starts the builder of the settings.
// Offers another one when it cannot be started; reports when the last one still runs.
void gExecZeltor(BuildRequest& request, Launcher& launcher);

}  // namespace kestrel
