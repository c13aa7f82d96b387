#include <wx/frame.h>

#include "ui/common/reportlist.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

class Report : public UiTest {
  protected:
    Report() : frame(new wxFrame(nullptr, wxID_ANY, "list")) {
        list = new ReportList(frame, "lvwRows", {{L"Name", 50, 0}, {L"Value", 50, 1}},
                              [this](std::size_t position, std::size_t column) {
                                  return rows.at(position).at(column);
                              });
        list->onSelect = [this] { ++selections; };
        show(*frame);
        list->fill(rows.size());
        settle();
    }

    void clickHeader(int column) {
        wxListEvent event(wxEVT_LIST_COL_CLICK, list->GetId());
        event.SetEventObject(list);
        event.m_col = column;
        list->ProcessWindowEvent(event);
    }

    std::wstring shownNames() const {
        std::wstring text;
        for (const auto& row : list->shot(L"").rows) text += row[0] + L" ";
        return text;
    }

    std::vector<std::vector<std::wstring>> rows{
        {L"b", L"2"}, {L"C", L"1"}, {L"a", L"2"}, {L"B", L"3"}};
    wxFrame* frame;
    ReportList* list;
    int selections = 0;
};

TEST_F(Report, EveryHeaderClickFlipsTheOrderWhateverTheColumn) {
    EXPECT_EQ(shownNames(), L"b C a B ");
    EXPECT_FALSE(list->shot(L"").sorted);
    for (const auto& [column, names] : {std::pair(0, L"a B b C "), std::pair(1, L"B b a C ")}) {
        clickHeader(column);
        EXPECT_EQ(shownNames(), names) << "column " << column;
        const ListShot shot = list->shot(L"tag");
        EXPECT_EQ(shot.sortKey, static_cast<std::size_t>(column));
        EXPECT_EQ(shot.sortOrder, column);
        EXPECT_TRUE(shot.sorted);
    }
}

TEST_F(Report, SelectionFollowsItsRowThroughSorting) {
    list->selectRow(1);
    EXPECT_EQ(selections, 0) << "the program's own selection tells nobody";
    clickHeader(0);
    EXPECT_EQ(list->selected(), 1U);
    EXPECT_EQ(list->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED), 3);
    EXPECT_FALSE(list->selectRow(4));
    EXPECT_EQ(list->selected(), 1U);
}

TEST_F(Report, KeepsItsOrderWithALimitAndANewContent) {
    clickHeader(0);
    list->limit([](RowOrder order) {
        std::erase(order, 1U);
        return order;
    });
    EXPECT_EQ(shownNames(), L"a B b ");
    clickHeader(0);
    EXPECT_EQ(shownNames(), L"b B a ") << "a click keeps the limit";
    rows = {{L"y", L""}, {L"z", L""}};
    list->fill(rows.size());
    EXPECT_EQ(shownNames(), L"z y ");
    EXPECT_FALSE(list->selected().has_value());
}

TEST_F(Report, HundredThousandRowsAreNoEffort) {
    rows.clear();
    for (int i = 0; i < 100'000; ++i)
        rows.push_back({L"row" + std::to_wstring(i * 7919 % 100'000), L""});
    list->fill(rows.size());
    clickHeader(0);
    EXPECT_EQ(list->shot(L"").rows.front()[0], L"row0");
    EXPECT_TRUE(list->selectPosition(50'000));
    EXPECT_EQ(list->selected(), 50'000U);
    list->fill(0);
    EXPECT_EQ(list->GetItemCount(), 0);
}

}  // namespace
}  // namespace kestrel::test
