#pragma once

#include <span>

// What codepage.cpp asks the system.
namespace kestrel {

// The number of the page that the system's programs use, whether or not it is an 8-bit one.
unsigned systemCodePage();

// Puts the characters of the bytes 80 to FF of the page `number` into `high`; that of a
// byte without one stays as it is.
void readCodePage(unsigned number, std::span<wchar_t, 128> high);

}  // namespace kestrel
