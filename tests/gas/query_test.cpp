#include "gas/query.h"

#include <gtest/gtest.h>

#include "support/gasprinters.h"
#include "support/recordinghost.h"

namespace kestrel {
namespace {

using Fields = std::vector<std::pair<std::wstring, std::wstring>>;

GasTemplate record(std::wstring name, const Fields& fields) {
    GasTemplate result;
    result.Name = std::move(name);
    for (const auto& [key, value] : fields) result.Properties.push_back({key, value, {}, false, 0});
    return result;
}

class Query : public testing::Test {
  protected:
    test::RecordingHost host_;
    const std::vector<GasTemplate> templates_{
        record(L"Alpha", {{L"name", L"a"}, {L"doc", L"Alpha"}, {L"specializes", L"b"}}),
        record(L"", {{L"name", L"hidden"}, {L"specializes", L"c"}}),
        record(L"Template2", {{L"name", L"b"}, {L"specializes", L"c"}, {L"mass", L"1.0"}}),
        record(L"Gamma", {{L"name", L"c"}, {L"doc", L"Gamma"}, {L"mass", L"1"}}),
        record(L"Template4", {{L"template_name", L"old"}, {L"specializes", L"x"}}),
        record(L"Template5", {{L"name", L"loop"}, {L"specializes", L"loop"}}),
        record(L"Template6", {{L"name", L"p"}, {L"specializes", L"q"}}),
        record(L"Quill", {{L"name", L"q"}, {L"doc", L"Quill"}, {L"specializes", L"p"}}),
        record(L"axe", {{L"name", L"axe_1"}, {L"doc", L"axe"}, {L"specializes", L"axe"}}),
        record(L"Template9", {{L"name", L"d"}, {L"specializes", L"Gamma"}}),
        record(L"Template8", {{L"name", L"p"}, {L"mass", L"second"}, {L"mass", L"third"}}),
    };
};

TEST_F(Query, FindsTheFirstRecordThatMatchesExactly) {
    const struct {
        const wchar_t* key;
        const wchar_t* value;
        const wchar_t* found;
    } cases[] = {
        {L"name", L"b", L"Template2"},
        {L"name", L"B", L""},
        {L"Name", L"b", L""},
        {L"name", L" b ", L""},
        {L"name", L"p", L"Template6"},
        {L"mass", L"1", L"Gamma"},
        {L"mass", L"third", L"Template8"},
        {L"name", L"hidden", L""},
        {L"", L"  Template4 ", L"Template4"},
        {L"", L"template4", L""},
        {L"", L"", L""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(gudtSearchForTemplate(templates_, c.key, c.value).Name, c.found)
            << test::shown(c.key) << " " << test::shown(c.value);
    }
    EXPECT_EQ(gstrFindPropertyVal(templates_[10], L"mass"), L"second");
    EXPECT_EQ(gstrFindPropertyVal(templates_[10], L"Mass"), L"");
    EXPECT_EQ(gstrFindPropertyVal(templates_[1], L"name"), L"") << "no name, no record";
}

TEST_F(Query, FollowsTheChainOfOneFile) {
    const struct {
        const wchar_t* name;
        const wchar_t* history;
    } cases[] = {
        {L"a", L"Alpha|b|Gamma|"}, {L"Alpha", L"Alpha|b|Gamma|"},
        {L"c", L"Gamma|"},         {L"old", L"old|x"},
        {L"nowhere", L"nowhere|"}, {L"A", L"A|"},
        {L"hidden", L"hidden|"},   {L"loop", L"loop"},
        {L"axe_1", L"axe"},        {L"p", L"p|Quill"},
        {L"Quill", L"Quill|p"},    {L"", L"|"},
        {L"d", L"d|Gamma|"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(gstrGetTemplateHistory(templates_, c.name), c.history) << test::shown(c.name);
    }
}

}  // namespace
}  // namespace kestrel
