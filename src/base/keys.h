#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Keys of list rows and tree nodes: "K" and an index.
namespace kestrel {

// The number behind the leading "K" of `key`; 0 when there is none. Read at 32
// bits, so that rows beyond 32,767 keep their own number. Part of the product's interface; no
// window asks for it.
std::int32_t gintKeyIndex(std::wstring_view key);

// "K" and `index` in decimal.
std::wstring makeKey(std::size_t index);

}  // namespace kestrel
