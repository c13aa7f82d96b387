#include <algorithm>
#include <cstdio>

#include "base/bytes.h"
#include "check.h"
#include "contenders.h"

namespace kestrel::bench {
namespace {

bool sameInformation(const GasTemplate& a, const GasTemplate& b) {
    return a.Name == b.Name && a.Kind == b.Kind && a.Properties == b.Properties;
}

bool agrees(const Contender& contender, Input& input) {
    const Records given = contender.records(input);
    const Records& expected = input.records();
    const auto [own, other] = std::ranges::mismatch(expected, given, sameInformation);
    if (own == expected.end() && other == given.end()) return true;
    std::fprintf(stderr, "%.*s gives other records: %zu for %zu, first at %td (%s)\n",
                 static_cast<int>(contender.name.size()), contender.name.data(), given.size(),
                 expected.size(), own - expected.begin(),
                 own == expected.end() ? "" : toUtf8(own->Name).c_str());
    return false;
}

}  // namespace

bool recordsAgree(Input& input) {
    return std::ranges::all_of(contenders(), [&](const Contender& contender) {
        return contender.records == nullptr || agrees(contender, input);
    });
}

}  // namespace kestrel::bench
