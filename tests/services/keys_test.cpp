#include "services/keys.h"

#include <gtest/gtest.h>

namespace kestrel {
namespace {

TEST(Keys, Index) {
    const struct {
        const wchar_t* key;
        std::int32_t index;
    } cases[] = {
        {L"K0", 0},
        {L"K2147483647", 2147483647},
        {L"K2147483648", 0},
        {L"K99999999999999999999", 0},
        {L"", 0},
        {L"root", 0},
        {L"K12x", 12},
        {L"K-3", 0},
    };
    for (const auto& c : cases) EXPECT_EQ(gintKeyIndex(c.key), c.index) << c.key;
    EXPECT_EQ(makeKey(0), L"K0");
    EXPECT_EQ(makeKey(1234567), L"K1234567");
}

}  // namespace
}  // namespace kestrel
